// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/velnoext/library_state.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

using namespace Velno;
using namespace Velno::Ext;
using namespace Velno::GMP;
using namespace TestSupport;

class TestCommandExchange : public LibraryTest
{
    Q_OBJECT

private slots:
    void damagedReplies_data();
    void damagedReplies();
    void closedConnectionIsReported();
    void rawPassThroughIsForTwoApplications_data();
    void rawPassThroughIsForTwoApplications();
    void rawDataIsSent();
    void rawDataIsOpened();
};

void TestCommandExchange::damagedReplies_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("result");

    const HandMadeDevice device;
    const QByteArray cipher = GMP3_cipher(device.record, true, plain(true));
    const QByteArray mac = GMP3_HMAC(device.record, cipher);
    QByteArray otherMac = mac;
    otherMac[31] = char(otherMac.at(31) ^ 1);
    const QByteArray cipherElement = tlvElement(hex("DFE002"), cipher);
    const QByteArray macElement = tlvElement(hex("DFE003"), mac);
    const auto row = [&](const char *name, const QByteArray &run, int result) {
        QTest::newRow(name) << device.withElements(run) << result;
    };
    row("whole", cipherElement + macElement, 0);
    row("other order", macElement + cipherElement, 0);
    row("the later one counts", tlvElement(hex("DFE003"), otherMac) + cipherElement + macElement, 0);
    row("no MAC", cipherElement, 12);
    row("no cipher text", macElement, 12);
    row("nothing", {}, 12);
    row("empty MAC", cipherElement + hex("DFE00300"), 12);
    row("empty cipher text", hex("DFE00200") + macElement, 12);
    row("third element", cipherElement + macElement + tlvElement(hex("DFE005"), "0"), 12);
    row("cut element", cipherElement + macElement.chopped(1), 12);
    row("other MAC", cipherElement + tlvElement(hex("DFE003"), otherMac), 11);
    row("short MAC", cipherElement + tlvElement(hex("DFE003"), mac.first(31)), 11);
    row("long MAC", cipherElement + tlvElement(hex("DFE003"), mac + 'x'), 11);
    const QByteArray half = cipher.first(15); // no whole block: authentic, but nothing comes of it
    row("half a block",
        tlvElement(hex("DFE002"), half) + tlvElement(hex("DFE003"), GMP3_HMAC(device.record, half)), 11);

    QTest::newRow("other register") << HandMadeDevice(otherSerial).sealed(plain(true)) << 12;
    const QByteArray whole = device.sealed(plain(true));
    for (qsizetype i = 0; i < whole.size(); ++i) {
        QByteArray flipped = whole;
        flipped[i] = char(flipped.at(i) ^ 0x10);
        QTest::addRow("byte %lld flipped", qint64(i)) << flipped << 12;
    }
    for (const qsizetype size : {1, 2, 13, 14, 15, 16, 40})
        QTest::addRow("%lld bytes", qint64(size)) << whole.first(size) << 12;
}

void TestCommandExchange::damagedReplies()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const int, result);
    const LogCapture capture;
    static HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([frame](const QByteArray &) { return QList{HandMadeDevice::framed(frame)}; });
    const auto format = std::cout.flags();
    QCOMPARE(velnoext_login(patience), result);
    QCOMPARE(std::cout.flags(), format); // the stream is the application's
    device.answerPlain(plain(true, 3));
    QCOMPARE(velnoext_login(patience), 0); // nothing is broken for the next command
    velnoext_close_all();
    device.stop();
}

void TestCommandExchange::closedConnectionIsReported()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerByClosing();
    QCOMPARE(velnoext_login(0xFFFFFFFF), 2);
    QCOMPARE(velnoext_login(patience), 2);
    QVERIFY(library().connections.contains(serial));
    QVERIFY(!library().pairingRecords.value(serial).aesKey.isEmpty());
}

void TestCommandExchange::rawPassThroughIsForTwoApplications_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<bool>("allowed");

    QTest::newRow("5") << 5U << false;
    QTest::newRow("14241") << 14241U << false;
    QTest::newRow("14242") << 14242U << true;
    QTest::newRow("999999") << 999999U << true;
}

void TestCommandExchange::rawPassThroughIsForTwoApplications()
{
    QFETCH(const unsigned int, appNo);
    QFETCH(const bool, allowed);
    HandMadeDevice device;
    QCOMPARE(velnoext_send_data("x", 1), 1);
    QCOMPARE(connectPaired(device, serial, appNo), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_send_data("x", 1), allowed ? 0 : 1);
    QCOMPARE(velnoext_send_data(nullptr, 1), allowed ? 3 : 1);
    const QByteArray frame = device.sealed("abc");
    char output[8] = {};
    int size = sizeof output;
    QCOMPARE(velnoext_get_data(frame.constData(), int(frame.size()), output, &size), allowed ? 0 : 1);
    QCOMPARE(size, allowed ? 3 : 8);
    QCOMPARE(velnoext_initialize(appNo, serial, "127.0.0.1", freePort(), brief), 2);
    QCOMPARE(velnoext_send_data(nullptr, 1), allowed ? 2 : 1);
    QCOMPARE(velnoext_get_data(nullptr, 1, nullptr, nullptr), allowed ? 2 : 1);
}

void TestCommandExchange::rawDataIsSent()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, 14242), 0);
    // Silent to the raw data: an answer to it that came late would pass for the login's.
    device.setAnswer([&device](const QByteArray &payload) {
        const bool login = device.opened(payload) == plain(1);
        return QList{login ? HandMadeDevice::framed(device.sealed(plain(true))) : QByteArray()};
    });
    QCOMPARE(velnoext_send_data(nullptr, -1), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(velnoext_send_data("x", -1), 4);
    QCOMPARE(velnoext_send_data("x", 0), 11);
    const QByteArray large(65536, 'x');
    QCOMPARE(velnoext_send_data(large.constData(), 65536), 11);
    QCOMPARE(velnoext_send_data(large.constData(), 65472), 11); // with its padding more than a frame holds
    QCOMPARE(velnoext_send_data(large.constData(), 65471), 0);
    QCOMPARE(velnoext_send_data("a\0b", 3), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(device.commands(), (QList{large.first(65471), QByteArray("a\0b", 3), plain(1)}));
}

void TestCommandExchange::rawDataIsOpened()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, 999999), 0);
    const QByteArray frame = device.sealed("abcd");
    const auto size = int(frame.size());
    char output[] = "........";
    int room = 8;
    const auto call = [&](const char *data, int length, char *out, int *outSize) {
        return velnoext_get_data(data, length, out, outSize);
    };
    QCOMPARE(call(nullptr, size, nullptr, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(call(frame.constData(), -1, nullptr, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x301);
    QCOMPARE(call(frame.constData(), size, output, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x302);
    QCOMPARE(call(frame.constData(), -1, output, &room), 4);
    const LogCapture capture;
    QCOMPARE(call(frame.constData(), size - 1, output, &room), 12);
    QCOMPARE(call(frame.constData(), 0, output, &room), 12);
    for (int small : {3, 0, -1}) {
        const int before = small;
        QCOMPARE(call(frame.constData(), size, output, &small), 4);
        QCOMPARE(small, before);
    }
    QCOMPARE(output, "........");
    room = 4;
    QCOMPARE(call(frame.constData(), size, output, &room), 0);
    QCOMPARE(room, 4);
    QCOMPARE(output, "abcd....");
}

QTEST_GUILESS_MAIN(TestCommandExchange)
#include "tst_command_exchange.moc"
