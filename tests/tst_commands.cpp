// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "simulator/fiscal/fiscal_model.h"
#include "simulator/register/command_table.h"
#include "simulator/register/faults.h"
#include "tests/support/library_calls.h"
#include "tests/support/peer.h"
#include "tests/support/refusal_check.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QDataStream>
#include <QDateTime>
#include <QFile>
#include <QTest>

#include <iterator>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

/** The real velno-register as the device library meets it, over TCP: what it answers, and what it refuses. */
class TestCommands : public LibraryTest
{
    Q_OBJECT

private slots:
    void firstContactPairs();
    void aPairedRegisterComesBack();
    void eventsOfACommand();
    void theModelAnswers();
    void theOptionsSetTheModel();
    void linesSetTheModel();
    void aSessionIsOpenedAndEnded();
    void anUnpairedContactForgetsTheKeys();
    void theRegisterWaitsForAnApplicationThatHoldsKeys();
    void atARelayItSaysItsName();
    void onceWaitsForThePairing();
    void theManualListsStatesAndCommands();
    void commandsAreAnsweredInTurn();
    void anApplicationThatReadsNothingIsLeft();
    void anApplicationThatNeverTookTheConnectionIsLeft();
    void hostileFramesAreRefused_data();
    void hostileFramesAreRefused();
    void hostileCommandsAreRefused_data();
    void hostileCommandsAreRefused();
};

namespace {

QByteArray withLength(const QByteArray &frame)
{
    QByteArray prefix;
    QDataStream(&prefix, QIODevice::WriteOnly) << quint32(frame.size());
    return prefix + frame;
}

/** Elements as an application frames them. */
QByteArray framed(const QByteArray &elements, const char *identity = serial)
{
    return withLength(GMP3::frame(true, None, elements, identity));
}

QByteArray sealedCipher(const MatchExt &record, const QByteArray &cipher)
{
    return framed(tlvElement("\xDF\xE0\x02", cipher) + tlvElement("\xDF\xE0\x03", GMP3_HMAC(record, cipher)));
}

QByteArray sealed(const MatchExt &record, const QByteArray &plaintext)
{
    return sealedCipher(record, GMP3_cipher(record, true, plaintext));
}

QByteArray withByteChanged(QByteArray bytes, qsizetype fromEnd)
{
    bytes[bytes.size() - fromEnd] = char(bytes.at(bytes.size() - fromEnd) ^ 1);
    return bytes;
}

} // namespace

void TestCommands::firstContactPairs()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QVERIFY(!reg.waitFor(u"connected"_s).isEmpty());
    QVERIFY(!reg.waitFor(u"unpaired"_s).isEmpty());
    QVERIFY(!reg.waitFor(u"disconnected"_s).isEmpty());
    QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
    QVERIFY(!reg.waitFor(u"connected"_s).isEmpty());
    QCOMPARE(agreedKeys().registerData, QByteArray(serial));
}

void TestCommands::aPairedRegisterComesBack()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const QByteArray first = agreedKeys().aesKey;
    velnoext_close();
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(agreedKeys().aesKey, first);
}

void TestCommands::eventsOfACommand()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--no-paper"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_login(patience), 0);
    const QJsonObject login = reg.waitFor(u"answered"_s);
    QCOMPARE(login.value(u"command"_s), u"login"_s);
    QCOMPARE(login.value(u"accepted"_s), true);
    const QJsonObject asked = reg.events().at(reg.events().size() - 2);
    QCOMPARE(asked.value(u"event"_s), u"command"_s);
    QCOMPARE(asked.value(u"command"_s), u"login"_s);
    QCOMPARE(velnoext_check_printer_paper(patience), 9);
    const QJsonObject paper = reg.waitFor(u"answered"_s);
    QCOMPARE(paper.value(u"command"_s), u"paper"_s);
    QCOMPARE(paper.value(u"accepted"_s), false);
}

void TestCommands::theModelAnswers()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    int number = -1;
    long long limit = -1;
    QCOMPARE(velnoext_ecr_state(patience, &number), 0);
    QCOMPARE(number, 1);
    QCOMPARE(velnoext_check_printer_paper(patience), 0);
    QCOMPARE(velnoext_current_z(patience, &number), 0);
    QCOMPARE(number, 1);
    QCOMPARE(velnoext_last_z_datetime(patience, &number), 0);
    QCOMPARE(number, 0);
    QCOMPARE(velnoext_sale_limit(patience, &limit), 0);
    QCOMPARE(limit, 1'200'000);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    QCOMPARE(velnoext_ecr_datetime(patience, &number), 0);
    QVERIFY(number >= before && number <= QDateTime::currentSecsSinceEpoch());
}

void TestCommands::theOptionsSetTheModel()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--state"_s, u"7"_s, u"--z"_s, u"42"_s, u"--last-z"_s, u"1700000001"_s,
                                 u"--clock"_s, u"1700000002"_s, u"--sale-limit"_s, u"5000000000"_s,
                                 u"--no-paper"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    int number = -1;
    long long limit = -1;
    QCOMPARE(velnoext_ecr_state(patience, &number), 0);
    QCOMPARE(number, 7);
    QCOMPARE(velnoext_current_z(patience, &number), 0);
    QCOMPARE(number, 42);
    QCOMPARE(velnoext_last_z_datetime(patience, &number), 0);
    QCOMPARE(number, 1'700'000'001);
    QCOMPARE(velnoext_ecr_datetime(patience, &number), 0);
    QCOMPARE(number, 1'700'000'002);
    QCOMPARE(velnoext_sale_limit(patience, &limit), 0);
    QCOMPARE(limit, 5'000'000'000);
    QCOMPARE(velnoext_check_printer_paper(patience), 9);
}

void TestCommands::linesSetTheModel()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    reg.say("paper off");
    const QJsonObject paper = reg.waitFor(u"set"_s);
    QCOMPARE(paper.value(u"name"_s), u"paper"_s);
    QCOMPARE(paper.value(u"value"_s), u"off"_s);
    QCOMPARE(velnoext_check_printer_paper(patience), 9);
    reg.say("paper on");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_check_printer_paper(patience), 0);
    reg.say("state 8");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    int number = -1;
    QCOMPARE(velnoext_ecr_state(patience, &number), 0);
    QCOMPARE(number, 8);
    QCOMPARE(velnoext_current_z(patience, &number), 8);
    QCOMPARE(number, 1); // told also when it refuses
    reg.say("state 9");
    QVERIFY(reg.waitFor(u"error"_s).value(u"message"_s).toString().endsWith(u"accepted is N: 0 to 8"_s));
}

void TestCommands::aSessionIsOpenedAndEnded()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_login(patience), 0);
    reg.say("state 5");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    int number = -1;
    QCOMPARE(velnoext_ecr_state(patience, &number), 0);
    QCOMPARE(number, 5);
    QCOMPARE(velnoext_logout(patience), 8);
    reg.say("state 1");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_logout(patience), 0);
}

void TestCommands::anUnpairedContactForgetsTheKeys()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const MatchExt held = agreedKeys();
    velnoext_close();
    Peer peer(port);
    QVERIFY(peer.accept());
    QVERIFY(peer.send(sealed(held, QByteArray(4, '\0')))); // the keys are good
    QCOMPARE(reg.waitFor(u"answered"_s).value(u"command"_s), u"state"_s);
    QVERIFY(peer.send(framed(tlvElement("\xDF\xE0\x05", "0"))));
    QVERIFY(!reg.waitFor(u"unpaired"_s).isEmpty());
    QVERIFY(peer.send(sealed(held, QByteArray(4, '\0'))));
    const QString reason = reg.waitFor(u"refused"_s).value(u"reason"_s).toString();
    QVERIFY2(reason.contains(u"holds no keys"_s), qPrintable(reason));
    QVERIFY(peer.waitForClose());
}

// With nothing to say it waits as long as its application does; without keys it gives up after 10 s, and so
// it does in the middle of a key exchange.
void TestCommands::theRegisterWaitsForAnApplicationThatHoldsKeys()
{
    Peer strangers;
    SimulatedRegister unpaired(strangers.port());
    Peer relay;
    SimulatedRegister halfway({u"--relay"_s, u"127.0.0.1:%1"_s.arg(relay.port())});
    QVERIFY(relay.accept());
    QCOMPARE(relay.read(12), QByteArray(serial));
    QVERIFY(relay.send("\x01\x40half a frame"));
    const quint16 port = TestSupport::freePort();
    SimulatedRegister paired(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QVERIFY(!paired.waitFor(u"paired"_s).isEmpty());
    QVERIFY(!paired.waitFor(u"connected"_s).isEmpty());

    QVERIFY(strangers.accept());
    QCOMPARE(unpaired.waitFor(u"disconnected"_s).value(u"reason"_s), u"the other side is silent"_s);
    QCOMPARE(halfway.waitFor(u"disconnected"_s).value(u"reason"_s), u"the other side is silent"_s);
    QCOMPARE(velnoext_login(patience), 0); // it has been silent for longer
}

void TestCommands::atARelayItSaysItsName()
{
    Peer relay;
    SimulatedRegister reg({u"--relay"_s, u"127.0.0.1:%1"_s.arg(relay.port())});
    QVERIFY(reg.isReady());
    for (int round = 0; round < 3; ++round) { // a relay that closes is tried again
        QVERIFY(relay.accept());
        QCOMPARE(relay.read(12), QByteArray(serial));
        relay.close();
    }
    QVERIFY(relay.accept());
    QCOMPARE(relay.read(12), QByteArray(serial));
    QVERIFY(relay.send(framed(tlvElement("\xDF\xE0\x05", "0"))));
    QVERIFY(!reg.waitFor(u"unpaired"_s).isEmpty());
}

// Telling a register that it is not paired is no pairing.
void TestCommands::onceWaitsForThePairing()
{
    const quint16 port = TestSupport::freePort(); // which stays ours when the peer stops to listen
    Peer peer(port);
    SimulatedRegister reg(port, {u"--once"_s});
    QVERIFY(peer.accept());
    QVERIFY(peer.send(framed(tlvElement("\xDF\xE0\x05", "0"))));
    QVERIFY(!reg.waitFor(u"unpaired"_s).isEmpty());
    peer.close();
    QVERIFY(peer.accept());
    QVERIFY(peer.send(framed({})));
    QVERIFY(!reg.waitFor(u"refused"_s).isEmpty());
    peer.close();
    peer.stopListening();
    MatchExt record;
    QCOMPARE(GMP3_KeyExchange_Server(record, port, serial, "001A2B3C4D5E", QByteArray(32, '\x5A')), 0);
    GMP3::disconnect();
    QCOMPARE(reg.waitForExit(), 0);
}

void TestCommands::theManualListsStatesAndCommands()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll());
    for (const Simulator::StateRow &row : Simulator::stateTable()) {
        const QString line = u"\n| %1 | %2 |"_s.arg(int(row.state)).arg(QLatin1StringView(row.name));
        QVERIFY2(manual.contains(line), qPrintable(line));
    }
    for (const Simulator::CommandRow &row : Simulator::commandTable()) {
        const QString line = u"\n| %1 | `%2` |"_s.arg(row.code).arg(QLatin1StringView(row.name));
        QVERIFY2(manual.contains(line), qPrintable(line));
    }
}

// Also when the next command has come before the answer to the last has left.
void TestCommands::commandsAreAnsweredInTurn()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const MatchExt record = agreedKeys();
    velnoext_close();
    QVERIFY(reg.setFault(u"delay=20"_s));
    Peer peer(port);
    QVERIFY(peer.accept());
    QByteArray bytes;
    for (const char code : {'\x0C', '\x0F', '\0'})
        bytes += sealed(record, QByteArray(3, '\0') + code);
    QVERIFY(peer.send(bytes));
    QStringList order;
    for (int i = 0; i < 3; ++i) {
        order << reg.waitFor(u"command"_s).value(u"command"_s).toString();
        order << reg.waitFor(u"answered"_s).value(u"command"_s).toString();
    }
    QCOMPARE(order, (QStringList{u"z"_s, u"z"_s, u"sale-limit"_s, u"sale-limit"_s, u"state"_s, u"state"_s}));
}

void TestCommands::anApplicationThatReadsNothingIsLeft()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"keep-alives=1000"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const MatchExt record = agreedKeys();
    velnoext_close();
    Peer peer(port);
    QVERIFY(peer.accept());
    peer.stopReading();
    const QByteArray command = sealed(record, QByteArray(4, '\0'));
    QVERIFY(peer.send(command));
    QJsonObject event = reg.waitFor(u"answered"_s);
    do {
        QVERIFY(peer.send(command)); // each asks for 8 kB
        event = reg.waitForAny({u"answered"_s, u"disconnected"_s});
    } while (event.value(u"event"_s) == u"answered"_s);
    QCOMPARE(event.value(u"reason"_s), u"the other side does not read its answers"_s);
}

void TestCommands::anApplicationThatNeverTookTheConnectionIsLeft()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    velnoext_close();
    Peer peer(port);
    QVERIFY(peer.accept());
    peer.stopListening();
    if (!peer.vanish())
        QSKIP("NOT TESTED: the system does not let this process close a connection without a word");
    constexpr unsigned int lessThanTheUsualWait = 20'000;
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, lessThanTheUsualWait), 0);
    QCOMPARE(velnoext_login(patience), 0);
}

void TestCommands::hostileFramesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray cipher = tlvElement("\xDF\xE0\x02", QByteArray(32, 'c'));
    const QByteArray mac = tlvElement("\xDF\xE0\x03", QByteArray(32, 'm'));
    const auto row = [](const char *name, const QByteArray &bytes, const QString &reason) {
        QTest::newRow(name) << bytes << reason;
    };
    const QString noCommand = u"holds no encrypted command"_s;
    row("announces 65538", QByteArray("\0\1\0\2", 4), u"announces more than 65537"_s);
    row("announces 131071", QByteArray("\0\1\xFF\xFF", 4), u"announces more than 65537"_s);
    row("announces nothing", QByteArray(4, '\0'), u"length"_s);
    row("garbage of the right length", withLength(QByteArray(100, '\xA5')), u"length"_s);
    row("wrong CRC", withByteChanged(framed(cipher + mac), 1), u"CRC"_s);
    row("other serial", framed(cipher + mac, "UB0000000000"), u"another serial number"_s);
    row("no elements", framed({}), noCommand);
    row("an element cut short", framed((cipher + mac).chopped(1)), noCommand);
    row("no MAC", framed(cipher), noCommand);
    row("no command", framed(mac), noCommand);
    row("MAC first", framed(mac + cipher), noCommand);
    row("one element more", framed(cipher + mac + tlvElement("\xDF\xE0\x04", "x")), noCommand);
    row("twice the command", framed(cipher + cipher + mac), noCommand);
    row("another tag", framed(tlvElement("\xDF\xE0\x06", "0")), noCommand);
    row("not paired, but 1", framed(tlvElement("\xDF\xE0\x05", "1")), noCommand);
    row("not paired, and more", framed(tlvElement("\xDF\xE0\x05", "0") + cipher), noCommand);
    row("many empty elements", framed(QByteArray("\xDF\xE0\x02\x00", 4).repeated(16'000)), noCommand);
    row("keep-alive", withLength(QByteArray("\xDE\xAD\xBE\xEF", 4)), u"length"_s);
    row("without keys", framed(cipher + mac), u"holds no keys"_s);
}

void TestCommands::hostileFramesAreRefused()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, reason);
    TestSupport::checkRefused(bytes, reason);
}

void TestCommands::hostileCommandsAreRefused_data()
{
    QTest::addColumn<QByteArray>("plaintext");
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("reason");
    const QByteArray state(4, '\0');
    QTest::newRow("MAC of one byte wrong") << state << u"mac"_s << u"MAC is wrong"_s;
    QTest::newRow("MAC cut short") << state << u"short mac"_s << u"MAC is wrong"_s;
    QTest::newRow("command of one byte wrong") << state << u"cipher"_s << u"MAC is wrong"_s;
    QTest::newRow("no whole block") << state << u"block"_s << u"cannot be decrypted"_s;
    QTest::newRow("nothing but padding") << state << u"padding"_s << u"cannot be decrypted"_s;
    QTest::newRow("one byte") << QByteArray(1, '\0') << QString() << u"shorter than its number"_s;
    QTest::newRow("three bytes") << QByteArray(3, '\0') << QString() << u"shorter than its number"_s;
    QTest::newRow("five bytes") << QByteArray(5, '\0') << QString() << u"state carries more"_s;
    QTest::newRow("a long one") << QByteArray(60'000, '\0') << QString() << u"state carries more"_s;
    QTest::newRow("unknown number") << QByteArray("\0\0\0\x63", 4) << QString() << u"command 99 is unknown"_s;
    QTest::newRow("negative number") << QByteArray(4, '\xFF') << QString() << u"command -1 is unknown"_s;
}

void TestCommands::hostileCommandsAreRefused()
{
    QFETCH(const QByteArray, plaintext);
    QFETCH(const QString, damage);
    QFETCH(const QString, reason);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const MatchExt record = agreedKeys();
    velnoext_close();
    const QByteArray cipher = GMP3_cipher(record, true, plaintext);
    const QByteArray mac = GMP3_HMAC(record, cipher);
    const auto elements = [](const QByteArray &first, const QByteArray &second) {
        return framed(tlvElement("\xDF\xE0\x02", first) + tlvElement("\xDF\xE0\x03", second));
    };
    QByteArray iv(16, '\0');
    for (qsizetype i = 0; i < iv.size(); ++i)
        iv[i] = char(record.randomDFC10D.at(i) ^ record.randomDFC10E.at(i));
    const QHash<QString, QByteArray> frames{
        {QString(), sealed(record, plaintext)},
        {u"mac"_s, elements(cipher, withByteChanged(mac, 1))},
        {u"short mac"_s, elements(cipher, mac.chopped(1))},
        {u"cipher"_s, elements(withByteChanged(cipher, 1), mac)},
        {u"block"_s, sealedCipher(record, cipher.chopped(1))},
        {u"padding"_s, sealedCipher(record, AES_CBC_Cipher(true, record.aesKey, QByteArray(32, '\x20'), iv))},
    };
    Peer peer(port);
    QVERIFY(peer.accept());
    QVERIFY(peer.send(frames.value(damage)));
    const QString given = reg.waitFor(u"refused"_s).value(u"reason"_s).toString();
    QVERIFY2(given.contains(reason), qPrintable(given));
    QVERIFY(peer.waitForClose());
    peer.stopListening();
    QCOMPARE(initialize("127.0.0.1", port, patience), 0); // it still holds its keys
    QCOMPARE(velnoext_login(patience), 0);
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_commands.moc"
