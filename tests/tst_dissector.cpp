// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/crc.h"
#include "tests/support/capture.h"
#include "tests/support/recorded_sale.h"
#include "tests/support/tshark.h"

#include <QRandomGenerator>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** What Wireshark's dissector shows of a pairing and a sale that the real programs made. */
class TestDissector : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cryptographyStandsUpToPublishedFigures();
    void pairingIsShownByName();
    void certificateIsReadByWireshark();
    void applicationHashIsDecrypted();
    void saleIsDecryptedItemByItem();
    void answersFindTheirRequests();
    void timesAreThoseOfTheCapture();
    void anyPortIsRecognised();
    void streamsCutAnywhereAreJoined_data();
    void streamsCutAnywhereAreJoined();
    void relaysNamesAreShown();
    void withoutKeysNothingIsDecrypted_data();
    void withoutKeysNothingIsDecrypted();
    void keysAreFoundByMac();
    void wrongCrcIsNoted();
    void wrongMacIsNoted();
    void wrongItemsAreNoted();
    void damagedFramesHurtNobody();
    void garbageHurtsNobody();

private:
    Tshark shark(const QByteArray &capture) const { return Tshark(capture, m_sale.keyLog); }
    QList<Piece> damaged(qsizetype piece, const std::function<void(QByteArray &)> &damage) const;
    qsizetype firstCommand() const;

    Recording m_sale;
};

namespace {

constexpr qsizetype payloadLengthSize = 4;

/** Makes the CRC of a command's frame right again. */
void putCrc(QByteArray &bytes)
{
    const QByteArrayView covered = QByteArrayView(bytes).sliced(payloadLengthSize + 2).chopped(2);
    qToBigEndian(Velno::crc16(covered), bytes.data() + bytes.size() - 2);
}

/** All values of a field, in whatever packets they are. */
QByteArrayList valuesOf(const Tshark &tshark, const QString &field)
{
    return tshark.fields(field, {field}).join(',').split(',');
}

QByteArray noise(QRandomGenerator &random, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

} // namespace

void TestDissector::initTestCase()
{
    m_sale = record(smallSale());
    QVERIFY2(m_sale.exitCode == 0, m_sale.errors.constData());
    QCOMPARE(m_sale.keyLog.count('\n'), 1);
}

void TestDissector::cryptographyStandsUpToPublishedFigures()
{
    const Tshark empty(captureOf({}));
    QCOMPARE(empty.run({u"-X"_s, u"lua_script:"_s + QString::fromUtf8(VELNO_VECTORS)}),
             QByteArray("checked\n"));
}

void TestDissector::pairingIsShownByName()
{
    const QByteArrayList lines =
        shark(captureOf(m_sale.pieces))
            .fields(u"velno.message"_s,
                    {u"velno.identity"_s, u"velno.message"_s, u"velno.side"_s, u"velno.result_code"_s,
                     u"velno.registers_brand"_s, u"velno.protocol_version"_s, u"velno.sequence_number"_s});
    QCOMPARE(lines, (QByteArrayList{"UB1234567890|PairingStart|request|||1.0.0.0|000001",
                                    "UB1234567890|PairingStart|answer|00|DALMORIVEN|1.0.0.0|000001",
                                    "UB1234567890|PairingKeyExchange|request||DALMORIVEN||000001",
                                    "UB1234567890|PairingKeyExchange|answer|00|||000001",
                                    "UB1234567890|PairingConfirm|request||DALMORIVEN||000001",
                                    "UB1234567890|PairingConfirm|answer|00|||000001"}));
}

void TestDissector::certificateIsReadByWireshark()
{
    const Tshark tshark = shark(captureOf(m_sale.pieces));
    const QByteArrayList names = tshark.fields(u"velno.registers_certificate"_s, {u"x509sat.uTF8String"_s});
    QCOMPARE(names.size(), 1);
    QVERIFY2(names[0].contains("Velno Development Sub CA"), names[0].constData());
    QVERIFY2(names[0].contains("Velno Development Register"), names[0].constData());
    QCOMPARE(tshark.fields(u"velno.malformed"_s, {u"frame.number"_s}), QByteArrayList());
}

void TestDissector::applicationHashIsDecrypted()
{
    const Tshark tshark = shark(captureOf(m_sale.pieces));
    const QByteArrayList hashes = tshark.fields(u"velno.application_hash"_s, {u"velno.application_hash"_s});
    QCOMPARE(hashes, QByteArrayList{m_sale.applicationHash.toHex()});
}

void TestDissector::saleIsDecryptedItemByItem()
{
    const Tshark tshark = shark(captureOf(m_sale.pieces));
    QCOMPARE(valuesOf(tshark, u"velno.command.code"_s).join(' '), QByteArray("0 3 4 0 3 0 3 0"));
    QCOMPARE(valuesOf(tshark, u"velno.item.answer_wanted"_s).join(' '), QByteArray("1 0 0"));
    QCOMPARE(tshark.fields(u"velno.command.code == 4"_s,
                           {u"velno.item.price"_s, u"velno.item.quantity"_s, u"velno.item.section"_s,
                            u"velno.item.name"_s, u"velno.item.type"_s}),
             QByteArrayList{"1250|2000|1|Ekmek|0"});
    QCOMPARE(tshark.fields(u"velno.command == \"item\" && velno.side == \"answer\""_s,
                           {u"velno.item.accepted"_s, u"velno.item.total"_s, u"velno.item.tax"_s,
                            u"velno.item.items"_s}),
             QByteArrayList{"1|2500|25|1"});
    QCOMPARE(tshark.fields(u"velno.malformed || velno.crc.wrong || velno.mac.wrong || velno.no_keys"_s,
                           {u"frame.number"_s}),
             QByteArrayList());
}

void TestDissector::answersFindTheirRequests()
{
    const Tshark tshark = shark(captureOf(m_sale.pieces));
    const auto pairs = [&tshark](const QString &one, const QString &other) {
        QByteArrayList lines =
            tshark
                .run({u"-2"_s, u"-Y"_s, u"velno.request_in || velno.answer_in"_s, u"-T"_s, u"fields"_s,
                      u"-E"_s, u"separator=|"_s, u"-E"_s, u"occurrence=l"_s, u"-e"_s, one, u"-e"_s, other})
                .split('\n');
        lines.removeIf([](const QByteArray &line) { return line.startsWith('|') || line.endsWith('|'); });
        lines.removeAll({});
        return lines;
    };
    const QByteArrayList answers = pairs(u"velno.request_in"_s, u"frame.number"_s);
    QCOMPARE(answers, pairs(u"frame.number"_s, u"velno.answer_in"_s));
    QCOMPARE_GE(answers.size(), 9); // three of the pairing, two states, opening, item, two more states
    // Keys for a payment have no answer, and take none from the command behind them.
    QCOMPARE(tshark.fields(u"velno.item.answer_wanted == 0 && velno.answer_in"_s, {u"frame.number"_s}),
             QByteArrayList());
}

void TestDissector::timesAreThoseOfTheCapture()
{
    QList<Piece> pieces = m_sale.pieces;
    qint64 time = 1'800'000'000'000'000;
    for (Piece &piece : pieces)
        piece.time = time += piece.fromRegister ? 250'000 : 7;
    const QByteArrayList times =
        shark(captureOf(pieces)).fields(u"velno.response_time"_s, {u"velno.response_time"_s});
    QVERIFY(!times.isEmpty());
    QCOMPARE(times, QByteArrayList(times.size(), "0.250000000"));
}

void TestDissector::anyPortIsRecognised()
{
    const QByteArrayList usual = shark(captureOf(m_sale.pieces)).fields(u"velno"_s, {u"_ws.col.Info"_s});
    const QByteArrayList other =
        shark(captureOf(m_sale.pieces, {50000, 31234})).fields(u"velno"_s, {u"_ws.col.Info"_s});
    QVERIFY(usual.size() > 10);
    QCOMPARE(other, usual);
}

void TestDissector::streamsCutAnywhereAreJoined_data()
{
    QTest::addColumn<int>("segment");
    for (const int segment : {1, 3, 17, 100, 1000})
        QTest::addRow("%d bytes", segment) << segment;
}

void TestDissector::streamsCutAnywhereAreJoined()
{
    QFETCH(const int, segment);
    Tshark cut = shark(captureOf(m_sale.pieces, {}, segment));
    if (segment < 18) // less than tells what it is
        cut.decodeAsOurs();
    const Tshark whole = shark(captureOf(m_sale.pieces));
    for (const QString &field : {u"velno.message"_s, u"velno.command"_s, u"velno.crc"_s})
        QCOMPARE(valuesOf(cut, field), valuesOf(whole, field));
}

void TestDissector::relaysNamesAreShown()
{
    QList<Piece> pieces{{-1, true, "UB1234567890", 0}, {-1, false, "UB1234567890", 0}};
    for (Piece piece : m_sale.pieces) {
        piece.connection = -1;
        pieces << piece;
    }
    const Tshark tshark = shark(captureOf(pieces));
    QCOMPARE(tshark.fields(u"velno.greeting"_s, {u"velno.greeting"_s}), QByteArrayList(2, "UB1234567890"));
    QCOMPARE(tshark.fields(u"velno.command.code == 4"_s, {u"velno.item.name"_s}), QByteArrayList{"Ekmek"});
}

void TestDissector::withoutKeysNothingIsDecrypted_data()
{
    QTest::addColumn<QByteArray>("keyLog");
    QTest::addColumn<QByteArray>("note");

    QTest::newRow("no key log") << QByteArray() << "no key log is set"_ba;
    QTest::newRow("nothing in it") << "# VELNO_KEYS follow\n"_ba
                                   << "The key log has no keys of this register"_ba;
    QTest::newRow("keys of another") << QByteArray(m_sale.keyLog).replace("UB1234567890", "UB1234567891")
                                     << "The key log has no keys of this register"_ba;
    QTest::newRow("half a line") << m_sale.keyLog.first(100) << "The key log has no keys of this register"_ba;
}

void TestDissector::withoutKeysNothingIsDecrypted()
{
    QFETCH(const QByteArray, keyLog);
    QFETCH(const QByteArray, note);
    const Tshark tshark(captureOf(m_sale.pieces), keyLog);
    QCOMPARE(tshark.fields(u"velno.command"_s, {u"frame.number"_s}), QByteArrayList());
    QCOMPARE(tshark.fields(u"velno.mac.wrong"_s, {u"frame.number"_s}), QByteArrayList());
    const QByteArray words = tshark.inWords(u"velno.no_keys"_s);
    QVERIFY2(words.contains(note), words.constData());
    QCOMPARE(tshark.fields(u"velno.message"_s, {u"frame.number"_s}).size(), 6);
}

void TestDissector::keysAreFoundByMac()
{
    QByteArray others;
    for (const char *digit : {"A", "B", "C"})
        others += "VELNO_KEYS UB1234567890 " + QByteArray(digit).repeated(32) + ' ' +
                  QByteArray(digit).repeated(32) + ' ' + QByteArray(digit).repeated(64) + ' ' +
                  QByteArray(digit).repeated(64) + '\n';
    const QByteArray capture = captureOf(m_sale.pieces);
    const QByteArrayList sold{"Ekmek"};
    const QString item = u"velno.command.code == 4"_s;
    QCOMPARE(Tshark(capture, others + m_sale.keyLog).fields(item, {u"velno.item.name"_s}), sold);
    QCOMPARE(Tshark(capture, m_sale.keyLog + others).fields(item, {u"velno.item.name"_s}), sold);
    QVERIFY(!Tshark(capture, others).fields(u"velno.mac.wrong"_s, {u"frame.number"_s}).isEmpty());
}

void TestDissector::wrongCrcIsNoted()
{
    const QList<Piece> pieces = damaged(1, [](QByteArray &bytes) { bytes.back() = char(bytes.back() ^ 1); });
    const Tshark tshark = shark(captureOf(pieces));
    QCOMPARE(tshark.fields(u"velno.crc.wrong"_s, {u"velno.message"_s, u"velno.side"_s}).size(), 1);
    QVERIFY(tshark.inWords(u"velno.crc.wrong"_s).contains("Wrong CRC, it should be "));
}

void TestDissector::wrongMacIsNoted()
{
    const QList<Piece> pieces = damaged(firstCommand(), [](QByteArray &bytes) {
        bytes[bytes.size() - 5] = char(bytes[bytes.size() - 5] ^ 1); // of the MAC, in front of the CRC
        putCrc(bytes);
    });
    const Tshark tshark = shark(captureOf(pieces));
    QCOMPARE(tshark.fields(u"velno.mac.wrong"_s, {u"velno.side"_s}), QByteArrayList{"request"});
    QCOMPARE(tshark.fields(u"velno.crc.wrong"_s, {u"velno.side"_s}), QByteArrayList());
}

/** Keys of a register that sends something else than its commands' items: here each answer to the wrong one.
 */
void TestDissector::wrongItemsAreNoted()
{
    QList<Piece> pieces = m_sale.pieces;
    const qsizetype first = firstCommand();
    const QByteArray shortAnswer = pieces.at(first + 1).bytes; // to "state"
    qsizetype item = first;
    while (item < pieces.size() && pieces.at(item).bytes.size() <= pieces.at(first).bytes.size())
        ++item;
    for (qsizetype i = first + 2; i < pieces.size(); ++i) {
        if (pieces.at(i).fromRegister)
            pieces[i].bytes = shortAnswer;
    }
    const Tshark tshark = shark(captureOf(pieces));
    QVERIFY(!tshark.fields(u"velno.malformed && velno.command == \"item\""_s, {u"frame.number"_s}).isEmpty());
}

void TestDissector::damagedFramesHurtNobody()
{
    QRandomGenerator random(7);
    QList<Piece> pieces;
    int connection = 0;
    for (const Piece &piece : m_sale.pieces) {
        for (int i = 0; i < 60; ++i) {
            Piece damaged = piece;
            damaged.connection = ++connection;
            const int at = i < 20 ? i : int(random.bounded(damaged.bytes.size()));
            if (at < damaged.bytes.size())
                damaged.bytes[at] = char(damaged.bytes[at] ^ (1 << random.bounded(8)));
            pieces << damaged;
            damaged.connection = ++connection;
            damaged.bytes = piece.bytes.first(random.bounded(piece.bytes.size()));
            pieces << damaged;
        }
    }
    Tshark tshark = shark(captureOf(pieces));
    tshark.decodeAsOurs();
    const QByteArray words = tshark.inWords(u"velno.malformed || velno.crc.wrong || velno.mac.wrong"_s);
    QVERIFY2(!words.startsWith("failed: "), words.constData());
    QVERIFY(words.contains("Wrong CRC"));
    QVERIFY(words.contains("An element is wrong or cut short"));
    QVERIFY(words.contains("No frame of this protocol begins here"));
}

void TestDissector::garbageHurtsNobody()
{
    QRandomGenerator random(11);
    QList<Piece> pieces;
    for (int connection = 0; connection < 300; ++connection)
        pieces << Piece{connection, true, noise(random, int(random.bounded(1, 3000))), 0};
    // Elements within elements, lengths that lead nowhere, and very many of the smallest.
    pieces << Piece{1000, true,
                    QByteArray::fromHex("0FFE") + QByteArray("UB1234567890") + QByteArray(4082, '\xFF'), 0};
    pieces << Piece{1001, true,
                    QByteArray::fromHex("0FFE") + QByteArray("UB1234567890") + QByteArray(4082, '\x01'), 0};
    pieces << Piece{1002, true, QByteArray::fromHex("00000004DEADBEEF").repeated(5000), 0};
    pieces << Piece{1003, true, QByteArray(40'000, '\0'), 0};
    Tshark tshark = shark(captureOf(pieces));
    tshark.decodeAsOurs();
    const QByteArray words = tshark.inWords();
    QVERIFY2(!words.startsWith("failed: "), words.left(4000).constData());
    const Tshark heuristic = shark(captureOf(pieces));
    QCOMPARE_LE(heuristic.fields(u"velno && !velno.keep_alive"_s, {u"frame.number"_s}).size(), 2);
}

QList<Piece> TestDissector::damaged(qsizetype piece, const std::function<void(QByteArray &)> &damage) const
{
    QList<Piece> pieces = m_sale.pieces;
    damage(pieces[piece].bytes);
    return pieces;
}

/** The first piece that is a command. */
qsizetype TestDissector::firstCommand() const
{
    for (qsizetype i = 1; i < m_sale.pieces.size(); ++i) {
        if (m_sale.pieces.at(i).bytes.startsWith(QByteArray(2, '\0')))
            return i;
    }
    return -1;
}

QTEST_GUILESS_MAIN(TestDissector)
#include "tst_dissector.moc"
