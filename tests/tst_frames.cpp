// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "tests/support/engine_session.h"
#include "tests/support/exact_bytes.h"
#include "tests/support/test_support.h"

#include <QTest>

using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

namespace {

/** The frame with its length and CRC made right again. */
QByteArray sealed(const QByteArray &inner)
{
    const quint16 crc = qChecksum(inner);
    const auto size = inner.size() + 2;
    return QByteArray{}.append(char(size >> 8)).append(char(size & 0xFF)) + inner + char(crc >> 8) +
           char(crc & 0xFF);
}

} // namespace

/** The clear frame: how it is made and judged, and what is kept of it. */
class TestFrames : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void frameHasLengthIdentityElementAndCrc_data();
    void frameHasLengthIdentityElementAndCrc();
    void rawFrameHoldsTheBodyAsItIs();
    void frameThatDoesNotFitIsEmpty();
    void checkJudgesInOrder_data();
    void checkJudgesInOrder();
    void shortFramesAreRefused_data();
    void shortFramesAreRefused();
    void everyPrefixIsRefused();
    void everyFlippedByteIsRefused();
    void crcLineIsUpperCaseHexadecimal();
    void checkWithoutParseStoresNothing();
    void messageIsTheFirstKnownElement();
    void fieldsAreMergedAndRandomsKept();
    void failedCheckStoresNothing();
    void storeIsBounded();
    void manySmallElementsAreSplit();
    void addReplacesTheFirstOfItsTag();
    void initEmptiesOnlyTheStore();
};

void TestFrames::init()
{
    clearSession();
}

void TestFrames::frameHasLengthIdentityElementAndCrc_data()
{
    QTest::addColumn<bool>("response");
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("inner");

    const QByteArray body = hex("DF820803000001");
    QTest::newRow("request") << false << QByteArray("AB1234567890")
                             << "AB1234567890" + hex("FF8A6007") + body;
    QTest::newRow("response") << true << QByteArray("AB1234567890")
                              << "AB1234567890" + hex("FF8E6007") + body;
    QTest::newRow("13 characters") << false << QByteArray("AB12345678901")
                                   << "AB1234567890" + hex("FF8A6007") + body;
    QTest::newRow("3 characters") << false << QByteArray("AB1") << "AB1         " + hex("FF8A6007") + body;
    QTest::newRow("none") << false << QByteArray() << QByteArray(12, ' ') + hex("FF8A6007") + body;
}

void TestFrames::frameHasLengthIdentityElementAndCrc()
{
    QFETCH(const bool, response);
    QFETCH(const QByteArray, identity);
    QFETCH(const QByteArray, inner);
    const QByteArray frame = GMP3::frame(response, PairingStart, hex("DF820803000001"), identity.constData());
    QCOMPARE(frame, sealed(inner));
    QCOMPARE(checkFrame(frame, identity.size() < 12 ? nullptr : identity.constData(), true), 0);
    QCOMPARE(gmp3_message.message, PairingStart);
    QCOMPARE(gmp3_message.isResponse, response);
}

void TestFrames::rawFrameHoldsTheBodyAsItIs()
{
    QCOMPARE(qChecksum(QByteArrayView("123456789")), quint16(0x906E));
    const QByteArray frame = GMP3::frame(false, None, "abc", serial);
    QCOMPARE(frame, hex("0011") + serial + "abc" + frame.last(2));
    QCOMPARE(frame, sealed(QByteArray(serial) + "abc"));
    QCOMPARE(GMP3::frame(true, None, "abc", serial), frame);
}

void TestFrames::frameThatDoesNotFitIsEmpty()
{
    QCOMPARE(GMP3::frame(false, None, QByteArray(65535 - 14, 'x'), serial).size(), 65537);
    QCOMPARE(GMP3::frame(false, None, QByteArray(65535 - 13, 'x'), serial), QByteArray());
    QCOMPARE(GMP3::frame(false, PairingStart, QByteArray(65535 - 14 - 6, 'x'), serial).size(), 65537);
    QCOMPARE(GMP3::frame(false, PairingStart, QByteArray(65535 - 14 - 5, 'x'), serial), QByteArray());
    QCOMPARE(GMP3::frame(false, PairingStart, QByteArray(65536, 'x'), serial), QByteArray());
}

void TestFrames::checkJudgesInOrder_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("log");

    const QByteArray good = GMP3::frame(true, PairingStart, hex("DF820803000001"), serial);
    QByteArray tooLong = good;
    tooLong[1] = char(tooLong.at(1) + 1);
    const QByteArray other = "No Serial Match!\n";
    const QByteArray fieldsOnly = GMP3::frame(true, None, hex("DF820803000001"), serial);
    QTest::newRow("good") << good << QByteArray(serial) << 0 << QByteArray();
    QTest::newRow("a longer identity, same 12") << good << QByteArray("UB12345678901") << 0 << QByteArray();
    QTest::newRow("length one too large") << tooLong << QByteArray(serial) << 4000 << QByteArray();
    QTest::newRow("length one too small") << good + 'x' << QByteArray(serial) << 4000 << QByteArray();
    QTest::newRow("other identity") << good << QByteArray("UB1234567891") << 4002 << other;
    QTest::newRow("short identity, padded header")
        << GMP3::frame(true, PairingStart, hex("DF820803000001"), "AB1") << QByteArray("AB1") << 4002
        << other;
    QTest::newRow("short identity, zero in the header")
        << sealed("AB1" + QByteArray(9, '\0') + hex("FF8E6003DF8201")) << QByteArray("AB1") << 0
        << QByteArray();
    QTest::newRow("fields without message") << fieldsOnly << QByteArray(serial) << 4003 << QByteArray();
    QTest::newRow("no payload") << GMP3::frame(true, None, {}, serial) << QByteArray(serial) << 4003
                                << QByteArray();
    QTest::newRow("message of length 0")
        << GMP3::frame(true, None, hex("FF8E6000"), serial) << QByteArray(serial) << 4003 << QByteArray();
    QTest::newRow("payload that is no elements")
        << GMP3::frame(true, None, hex("FF8E6085"), serial) << QByteArray(serial) << 4003 << QByteArray();
}

void TestFrames::checkJudgesInOrder()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const QByteArray, identity);
    QFETCH(const int, result);
    QFETCH(const QByteArray, log);
    gmp3_message.message = PairingConfirm;
    const LogCapture capture;
    QCOMPARE(checkFrame(frame, identity.constData(), true), result);
    QCOMPARE(capture.text(), log);
    QCOMPARE(gmp3_message.message, result == 0 ? PairingStart : None);
}

void TestFrames::shortFramesAreRefused_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("result");

    QTest::newRow("nothing") << QByteArray() << 4000;
    QTest::newRow("one byte") << hex("00") << 4000;
    QTest::newRow("a length of nothing") << hex("0000") << 4001;
    QTest::newRow("a length of one") << hex("0001AA") << 4001;
    QTest::newRow("a length that lies") << hex("0005AA") << 4000;
    QTest::newRow("a CRC of nothing") << sealed({}) << 4002;
    QTest::newRow("11 characters and a CRC") << sealed("UB123456789") << 4002;
    QTest::newRow("11 characters and a wrong CRC") << hex("000D") + "UB123456789" + hex("0000") << 4001;
}

void TestFrames::shortFramesAreRefused()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const int, result);
    const ExactBytes exact(frame);
    const LogCapture capture;
    for (const bool parse : {true, false}) {
        QCOMPARE(checkFrame(exact.view(), serial, parse), result);
        QCOMPARE(checkFrame(exact.view(), nullptr, parse), result);
    }
    QCOMPARE(GMP3::check(nullptr, 0, serial, true), 4000);
    QCOMPARE(GMP3::check(exact.view().constData(), -1, serial, true), 4000);
}

void TestFrames::everyPrefixIsRefused()
{
    const QByteArray good = GMP3::frame(true, PairingStart, hex("DF820803000001"), serial);
    for (qsizetype size = 0; size < good.size(); ++size)
        QCOMPARE(checkFrame(ExactBytes(good.first(size)).view(), serial, true), 4000);
}

void TestFrames::everyFlippedByteIsRefused()
{
    const QByteArray good = GMP3::frame(true, PairingStart, hex("DF820803000001"), serial);
    const LogCapture capture;
    for (qsizetype i = 0; i < good.size(); ++i) {
        QByteArray damaged = good;
        damaged[i] = char(damaged.at(i) ^ 0x10);
        QCOMPARE(checkFrame(ExactBytes(damaged).view(), serial, true), i < 2 ? 4000 : 4001);
    }
}

void TestFrames::crcLineIsUpperCaseHexadecimal()
{
    const QByteArray frame = hex("000B") + "123456789" + hex("1A2B");
    const LogCapture capture;
    QCOMPARE(checkFrame(frame, nullptr, false), 4001);
    std::cout << 255 << std::endl; // the stream stays as the line left it
    QCOMPARE(capture.text(), QByteArray("CRC is not equal: 1A2B!=906E\nFF\n"));
}

void TestFrames::checkWithoutParseStoresNothing()
{
    gmp3_message.message = PairingStart;
    QCOMPARE(checkFrame(GMP3::frame(true, PairingStart, hex("DF820803000001"), serial), nullptr, false), 0);
    QCOMPARE(gmp3_message.message, None);
    QVERIFY(gmp3_message.fields.isEmpty());
}

void TestFrames::messageIsTheFirstKnownElement()
{
    const QByteArray payload =
        hex("DF8208030000FF") + hex("FF8A6207DF820803000007") + hex("FF8E6307DF820803000008");
    QCOMPARE(checkFrame(GMP3::frame(true, None, payload, serial), serial, true), 0);
    QCOMPARE(gmp3_message.message, PairingKeyExchange);
    QVERIFY(!gmp3_message.isResponse);
    QCOMPARE(GMP3::TLV_value(hex("DF8208")), hex("000007"));
}

void TestFrames::fieldsAreMergedAndRandomsKept()
{
    const QByteArray e(16, 'E');
    const QByteArray d(16, 'D');
    deliver(tlvElement(hex("DFC10E"), e) + tlvElement(hex("DF8208"), "one"), PairingStart, true);
    QCOMPARE(gmp3_message.responderRandom, e);
    QCOMPARE(GMP3::TLV_value(hex("DFC10E")), e);
    // An element without a value is skipped: the earlier value stays.
    deliver(tlvElement(hex("DFC10D"), d) + tlvElement(hex("DF8208"), "two") + hex("DFC10E00"), PairingConfirm,
            true);
    QCOMPARE(gmp3_message.requesterRandom, d);
    QCOMPARE(gmp3_message.responderRandom, e);
    QCOMPARE(GMP3::TLV_value(hex("DF8208")), QByteArray("two"));
    QCOMPARE(gmp3_message.fields.size(), 3);
}

void TestFrames::failedCheckStoresNothing()
{
    gmp3_message.responderRandom = "kept";
    const QByteArray body = tlvElement(hex("DFC10E"), QByteArray(16, 'E'));
    const LogCapture capture;
    QCOMPARE(checkFrame(GMP3::frame(true, PairingStart, body, serial), "UB9999999999", true), 4002);
    QCOMPARE(checkFrame(GMP3::frame(true, None, body, serial), serial, true), 4003);
    QVERIFY(gmp3_message.fields.isEmpty());
    QCOMPARE(gmp3_message.responderRandom, QByteArray("kept"));
}

void TestFrames::storeIsBounded()
{
    for (int message = 0; message < 20; ++message) {
        QByteArray body;
        for (int i = 0; i < 500; ++i) {
            const int number = message * 500 + i;
            body += tlvElement(hex("DF") + char(0x80 | number >> 7) + char(number & 0x7F), "x");
        }
        deliver(body, PairingStart, true);
    }
    QCOMPARE(gmp3_message.fields.size(), 1024);
    deliver(tlvElement(hex("DF8000"), "new"), PairingStart, true); // what is there can still be replaced
    QCOMPARE(GMP3::TLV_value(hex("DF8000")), QByteArray("new"));
}

void TestFrames::manySmallElementsAreSplit()
{
    deliver(hex("010178").repeated(21000), PairingStart, true);
    QCOMPARE(gmp3_message.fields, QVector<QByteArray>{hex("010178")});
}

void TestFrames::addReplacesTheFirstOfItsTag()
{
    const QByteArray tag = hex("DF8208");
    QVERIFY(GMP3::TLV_add(tag, "one", true));
    QVERIFY(GMP3::TLV_add(tag, "two", false));
    QCOMPARE(GMP3::TLV_value(tag), QByteArray("one"));
    QVERIFY(!GMP3::TLV_add(tag, "three", true));
    QCOMPARE(GMP3::TLV_value(tag), QByteArray("three"));
    QCOMPARE(gmp3_message.fields.size(), 2);
    QCOMPARE(GMP3::TLV_value(hex("DF82")), QByteArray());
    QCOMPARE(GMP3::TLV_value({}), QByteArray());
    QVERIFY(GMP3::TLV_add(hex("DF8209"), {}, true)); // an element without value is never found again
    QVERIFY(GMP3::TLV_add(hex("DF8209"), "x", true));
    QCOMPARE(GMP3::TLV_value(hex("DF8209")), QByteArray("x"));
}

void TestFrames::initEmptiesOnlyTheStore()
{
    GMP3::TLV_add(hex("DF8208"), "one", true);
    gmp3_message.message = PairingStart;
    gmp3_message.isResponse = true;
    gmp3_message.appHash = "hash";
    gmp3_message.aesKey = "key";
    GMP3::init(77);
    QCOMPARE(connection_handle, 77U);
    QVERIFY(gmp3_message.fields.isEmpty());
    QCOMPARE(gmp3_message.message, None);
    QVERIFY(gmp3_message.isResponse);
    QCOMPARE(gmp3_message.appHash, QByteArray("hash"));
    QCOMPARE(gmp3_message.aesKey, QByteArray("key"));
}

QTEST_GUILESS_MAIN(TestFrames)
#include "tst_frames.moc"
