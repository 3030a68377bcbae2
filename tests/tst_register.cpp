#include "ExtDevice/encoding/file.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/register/faults.h"
#include "tests/support/peer.h"
#include "tests/support/refusal_check.h"
#include "tests/support/simulated_register.h"
#include "tests/support/terminal.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;
using TestSupport::Peer;

/** velno-register as a program: its options, help, exit codes, events, standard input and hostile peers. */
class TestRegister : public QObject
{
    Q_OBJECT

private slots:
    void faultValuesAreStrict_data();
    void faultValuesAreStrict();
    void helpAndManualListTheSameFaults();
    void helpAndVersionNameTheAnchors_data();
    void helpAndVersionNameTheAnchors();
    void wrongUsageIsRefused_data();
    void wrongUsageIsRefused();
    void missingCredentialsAreRefused();
    void unusableCredentialsAreRefused_data();
    void unusableCredentialsAreRefused();
    void whatCannotBeReachedIsToldOnce();
    void eventsAreWordsWithoutJson();
    void eventsOfAPairing();
    void itConnectsAgainAfterAPairing();
    void onceEndsWithTheVerdict_data();
    void onceEndsWithTheVerdict();
    void anotherApplicationIsRefused();
    void standardInputChangesFaults();
    void standardInputRefusesNonsense_data();
    void standardInputRefusesNonsense();
    void standardInputIsReadAgainInFront();
    void itStopsWhateverItIsDoing_data();
    void itStopsWhateverItIsDoing();
    void hostilePeersAreRefused_data();
    void hostilePeersAreRefused();
    void ipv6TargetsWork();
    void targetsAreToldAsTheyWereTyped();
    void itEndsWithATestThatCrashes();
};

namespace {

// Set in the process of itEndsWithATestThatCrashes() that crashes.
constexpr const char *insideVariable = "VELNO_TEST_CRASH";

const QByteArray appHash(32, '\x5A');

struct Run
{
    int code = -1;
    QByteArray output;
    QByteArray errors;
};

/** Without a display. */
Run run(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
        environment.remove(name);
    process.setProcessEnvironment(environment);
    process.start(SimulatedRegister::program(), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

int pairOnce(quint16 port)
{
    MatchExt record;
    const int code =
        GMP3_KeyExchange_Server(record, port, SimulatedRegister::serial, "001A2B3C4D5E", appHash);
    GMP3::disconnect();
    return code;
}

QByteArray request(MessageTag kind, const char *serial = SimulatedRegister::serial)
{
    return GMP3::frame(false, kind, Velno::tlvElement(fieldTag(ProtocolVersion), "1.0.0.0"), serial);
}

QByteArray withLastByteWrong(QByteArray frame)
{
    frame.back() = char(frame.back() ^ 1);
    return frame;
}

} // namespace

void TestRegister::faultValuesAreStrict_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("accepted");
    const auto rows = [](bool accepted, std::initializer_list<const char *> texts) {
        for (const char *text : texts)
            QTest::newRow(*text ? text : "nothing") << QString::fromLatin1(text) << accepted;
    };
    rows(true, {"garbage",        "mute=1",           "mute=3",
                "segments=1",     "segments=4096",    "delay=600000",
                "result-code=00", "result-code=99@3", "wrong-kind=1",
                "mute=state",     "close=datetime",   "mute=sale-limit",
                "refuse=login",   "refuse=logout",    "refuse=paper",
                "refuse=z",       "keep-alives=1",    "keep-alives=1000",
                "stale-reply",    "refuse=receipt*1", "lost-answer=item*1000",
                "close=state*2"});
    rows(false, {"",
                 "=",
                 "nonsense",
                 "Garbage",
                 "garbage=",
                 "garbage=1",
                 "mute",
                 "mute=",
                 "mute=0",
                 "mute=4",
                 "mute=1@1",
                 "mute=State",
                 "mute=13",
                 "close=state ",
                 "close=login@1",
                 "refuse",
                 "refuse=",
                 "refuse=1",
                 "refuse=state",
                 "refuse=sale-limit",
                 "refuse=receipt*",
                 "refuse=receipt*0",
                 "refuse=receipt*1001",
                 "refuse=receipt*2*2",
                 "refuse=*2",
                 "mute=1*2",
                 "keep-alives=0",
                 "keep-alives=1001",
                 "stale-reply=5",
                 "segments=0",
                 "segments=4097",
                 "delay=-1",
                 "delay=+1",
                 "delay= 1",
                 "delay=1.5",
                 "delay=0x10",
                 "delay=600001",
                 "delay=99999999999999999999",
                 "result-code=5",
                 "result-code=100",
                 "result-code=ab",
                 "result-code=05@",
                 "result-code=05@0",
                 "result-code=05@4",
                 "result-code=@1",
                 "result-code=005"});
}

void TestRegister::faultValuesAreStrict()
{
    QFETCH(const QString, typed);
    QFETCH(const bool, accepted);
    Simulator::Faults faults;
    QCOMPARE(faults.switchOn(typed).isEmpty(), accepted);
    QCOMPARE(faults.names(), accepted ? QStringList{typed} : QStringList{});
}

void TestRegister::helpAndManualListTheSameFaults()
{
    const Run help = run({u"--help"_s});
    QCOMPARE(help.code, 0);
    QFile manual(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    static const QRegularExpression line(u"^\\| `([^`]+)` \\| ([^|]+) \\| [^|]+ \\| [^|]+ \\|$"_s,
                                         QRegularExpression::MultilineOption);
    QString listed;
    auto match = line.globalMatch(QString::fromUtf8(manual.readAll()).section(u"## Faults"_s, 1));
    while (match.hasNext()) {
        const auto row = match.next();
        listed += u"  "_s + row.captured(1).leftJustified(24) + row.captured(2) + u'\n';
    }
    QCOMPARE(listed, Simulator::faultHelp(Simulator::faultTable()));
    QVERIFY2(help.output.contains(listed.toUtf8()), help.output);
    QVERIFY(help.output.endsWith("velno-register --serial UB1234567890 --connect 127.0.0.1:4100\n"));
}

void TestRegister::helpAndVersionNameTheAnchors_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("help") << u"--help"_s;
    QTest::newRow("version") << u"--version"_s;
}

void TestRegister::helpAndVersionNameTheAnchors()
{
    QFETCH(const QString, option);
    const Run shown = run({option});
    QCOMPARE(shown.code, 0);
    if (option == u"--version")
        QVERIFY2(shown.output.startsWith("velno-register " VELNO_VERSION "\n"), shown.output);
    QVERIFY2(shown.output.contains(trustAnchorsInWords().toUtf8()), shown.output);
    const auto certificates = QSslCertificate::fromData(trustAnchors());
    QVERIFY(!certificates.isEmpty());
    for (const QSslCertificate &certificate : certificates)
        for (const QString &name : certificate.subjectInfo(QSslCertificate::CommonName))
            QVERIFY2(shown.output.contains("CN=" + name.toUtf8()), shown.output);
}

void TestRegister::wrongUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const QStringList good{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s};
    const QByteArray serial = "exactly 12 characters, beginning with UB or VELNO";
    const QByteArray target = "port of 1 to 65535";
    const auto row = [&](const char *name, const QStringList &arguments, const QByteArray &message) {
        QTest::newRow(name) << arguments << message;
    };
    const auto withSerial = [](const QString &no) {
        return QStringList{u"--serial"_s, no, u"--connect"_s, u"127.0.0.1:4100"_s};
    };
    const auto withTarget = [](const QString &to) {
        return QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, to};
    };
    row("nothing", {}, "--serial is missing");
    row("no target", {u"--serial"_s, u"UB1234567890"_s}, "--connect is missing");
    row("serial too short", withSerial(u"UB123"_s), serial);
    row("serial too long", withSerial(u"UB12345678901"_s), serial);
    row("serial of another kind", withSerial(u"AB1234567890"_s), serial);
    row("serial outside ASCII", withSerial(u"UB123456789ş"_s), serial);
    row("no port", withTarget(u"127.0.0.1"_s), target);
    row("port 0", withTarget(u"127.0.0.1:0"_s), target);
    row("port 65536", withTarget(u"127.0.0.1:65536"_s), target);
    row("port of letters", withTarget(u"127.0.0.1:abc"_s), target);
    row("IPv6 without brackets", withTarget(u"::1:4100"_s), target);
    row("IPv4 in brackets", withTarget(u"[127.0.0.1]:4100"_s), target);
    row("no host", withTarget(u":4100"_s), target);
    row("relay without a port", {u"--serial"_s, u"UB1234567890"_s, u"--relay"_s, u"127.0.0.1"_s}, target);
    row("relay and target", good + QStringList{u"--relay"_s, u"127.0.0.1:50910"_s}, "exclude each other");
    row("state of no register", good + QStringList{u"--state"_s, u"9"_s}, "accepted is N: 0 to 8");
    row("negative Z", good + QStringList{u"--z"_s, u"-1"_s}, "accepted is N: 1 to 2147483647");
    row("clock of words", good + QStringList{u"--clock"_s, u"now"_s}, "accepted is SECONDS: 0 to");
    row("limit with a comma", good + QStringList{u"--sale-limit"_s, u"12,50"_s}, "accepted is KURUS: 0 to");
    row("short hash", good + QStringList{u"--app-hash"_s, u"00"_s}, "64 hexadecimal digits");
    row("hash of other letters", good + QStringList{u"--app-hash"_s, QString(64, u'g')},
        "64 hexadecimal digits");
    row("unknown fault", good + QStringList{u"--fault"_s, u"nonsense"_s}, "accepted are wrong-authority, ");
    row("bad value", good + QStringList{u"--fault"_s, u"mute=9"_s},
        "accepted is WHEN: a step, 1 to 3, or COMMAND or COMMAND*N: state, ");
    row("unknown option", good + QStringList{u"--nonsense"_s}, "nonsense");
    row("a word too many", good + QStringList{u"word"_s}, "\"word\" is no option");
}

void TestRegister::wrongUsageIsRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    const Run refused = run(arguments);
    QCOMPARE(refused.code, 64);
    QVERIFY2(refused.errors.contains(message), refused.errors);
    QCOMPARE(refused.output, QByteArray());
}

void TestRegister::missingCredentialsAreRefused()
{
    const QTemporaryDir empty;
    const Run refused = run({u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s,
                             u"--credentials"_s, empty.path()});
    QCOMPARE(refused.code, 64);
    QVERIFY2(refused.errors.contains("readable client.crt"), refused.errors);
}

void TestRegister::unusableCredentialsAreRefused_data()
{
    QTest::addColumn<QByteArray>("certificate");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("message"); ///< empty: they are good

    const auto rsa = TestSupport::selfSigned();
    const auto other = TestSupport::selfSigned();
    const auto curve = TestSupport::selfSigned("EC");
    QTest::newRow("good") << rsa.certificate << rsa.key << QByteArray();
    QTest::newRow("no certificate") << "nonsense"_ba << rsa.key
                                    << "client.crt holds no certificate; accepted is one in PEM form"_ba;
    QTest::newRow("no key") << rsa.certificate << rsa.certificate << "client.key holds no private key"_ba;
    QTest::newRow("a key under a password") << rsa.certificate << TestSupport::encryptedKey(rsa.key, "secret")
                                            << "PEM form, without a password"_ba;
    QTest::newRow("no RSA key") << curve.certificate << curve.key
                                << "a key of the kind EC; accepted is RSA"_ba;
    QTest::newRow("another key") << rsa.certificate << other.key << "client.key does not fit "_ba;
}

void TestRegister::unusableCredentialsAreRefused()
{
    QFETCH(const QByteArray, certificate);
    QFETCH(const QByteArray, key);
    QFETCH(const QByteArray, message);
    const QTemporaryDir folder;
    const auto lay = [&](const QString &name) {
        return Velno::writeData(folder.filePath(name + u".crt"_s), certificate) &&
               Velno::writeData(folder.filePath(name + u".key"_s), key);
    };
    QVERIFY(lay(u"client"_s));
    // Where the client's are good, the fault's are looked at, and are not there.
    const QStringList arguments{u"--serial"_s,       u"UB1234567890"_s,  u"--connect"_s,
                                u"127.0.0.1:4100"_s, u"--credentials"_s, folder.path()};
    const Run refused = run(arguments + QStringList{u"--fault"_s, u"expired-certificate"_s});
    QCOMPARE(refused.code, 64);
    QVERIFY2(refused.errors.contains("--credentials: "), refused.errors);
    QVERIFY2(refused.errors.contains(message.isEmpty() ? "readable expired.crt"_ba : message),
             refused.errors);
    const auto good = TestSupport::developmentRegister();
    QVERIFY(lay(u"expired"_s));
    QVERIFY(Velno::writeData(folder.filePath(u"client.crt"_s), good.certificate));
    QVERIFY(Velno::writeData(folder.filePath(u"client.key"_s), good.key));
    SimulatedRegister reg(TestSupport::freePort(), {u"--credentials"_s, folder.path()});
    QVERIFY(reg.isReady());
    reg.say("fault expired-certificate");
    const QJsonObject outcome = reg.waitForAny({u"fault"_s, u"error"_s});
    QVERIFY(outcome.value(u"message"_s).toString().toUtf8().contains(message.mid(message.indexOf('.'))));
    QCOMPARE(outcome.value(u"event"_s).toString(), message.isEmpty() ? u"fault"_s : u"error"_s);
}

void TestRegister::whatCannotBeReachedIsToldOnce()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(reg.waitFor(u"unreachable"_s).value(u"reason"_s), u"Connection refused"_s);
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, port));
        QVERIFY(!reg.waitFor(u"connected"_s).isEmpty());
    }
    QCOMPARE(reg.waitFor(u"unreachable"_s).value(u"reason"_s), u"Connection refused"_s);
    // As long as another one needs to tell it, this one does not repeat it.
    SimulatedRegister other(TestSupport::freePort());
    QVERIFY(!other.waitFor(u"unreachable"_s).isEmpty());
    reg.say("quit");
    QCOMPARE(reg.waitForExit(), 0);
    int told = 0;
    int connections = 0;
    for (const QJsonObject &event : reg.events()) {
        told += event.value(u"event"_s) == u"unreachable"_s;
        connections += event.value(u"event"_s) == u"connected"_s;
    }
    QVERIFY2(told == 2, qPrintable(u"told %1 times, connected %2 times"_s.arg(told).arg(connections)));
}

void TestRegister::eventsAreWordsWithoutJson()
{
    QProcess process;
    process.start(SimulatedRegister::program(), {u"--serial"_s, u"VELNO1234567"_s, u"--connect"_s,
                                                 u"127.0.0.1:%1"_s.arg(TestSupport::freePort())});
    QVERIFY(process.waitForReadyRead());
    QVERIFY(process.readLine().startsWith("ready VELNO1234567 127.0.0.1:"));
    process.write("fault mute=1\nquit\n");
    QVERIFY(process.waitForFinished());
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.endsWith("fault mute=1\nstopped\n"), output);
    QCOMPARE(process.exitCode(), 0);
}

void TestRegister::eventsOfAPairing()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(pairOnce(port), 0);
    QVERIFY(!reg.waitFor(u"disconnected"_s).isEmpty());
    QStringList seen;
    for (const QJsonObject &event : reg.events()) {
        if (event.value(u"event"_s) == u"unreachable"_s)
            continue; // before the tool had come to listen
        QStringList words;
        for (const QString &field : {u"event"_s, u"kind"_s, u"code"_s, u"serial"_s})
            if (event.contains(field))
                words << event.value(field).toString();
        seen << words.join(u' ');
    }
    QCOMPARE(seen, (QStringList{u"ready UB1234567890"_s, u"connected"_s, u"request PairingStart"_s,
                                u"result PairingStart 00"_s, u"request PairingKeyExchange"_s,
                                u"result PairingKeyExchange 00"_s, u"request PairingConfirm"_s,
                                u"result PairingConfirm 00"_s, u"paired UB1234567890"_s, u"disconnected"_s}));
}

void TestRegister::itConnectsAgainAfterAPairing()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    for (int round = 0; round < 5; ++round) {
        QCOMPARE(pairOnce(port), 0);
        QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
    }
}

void TestRegister::onceEndsWithTheVerdict_data()
{
    QTest::addColumn<QStringList>("fault");
    QTest::addColumn<int>("toolCode");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("paired") << QStringList{} << 0 << 0;
    QTest::newRow("refused") << QStringList{u"--fault"_s, u"wrong-key-check"_s} << 5000 << 1;
    QTest::newRow("given up by the tool") << QStringList{u"--fault"_s, u"bad-signature"_s} << 5002 << 1;
}

void TestRegister::onceEndsWithTheVerdict()
{
    QFETCH(const QStringList, fault);
    QFETCH(const int, toolCode);
    QFETCH(const int, exitCode);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, QStringList{u"--once"_s} + fault);
    QCOMPARE(pairOnce(port), toolCode);
    QCOMPARE(reg.waitForExit(), exitCode);
    QCOMPARE(reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestRegister::anotherApplicationIsRefused()
{
    const quint16 port = TestSupport::freePort();
    {
        SimulatedRegister reg(port, {u"--app-hash"_s, QString::fromLatin1(appHash.toHex())});
        QCOMPARE(pairOnce(port), 0);
    }
    SimulatedRegister reg(port, {u"--app-hash"_s, QString(64, u'0')});
    QCOMPARE(pairOnce(port), 5000);
    QCOMPARE(reg.waitFor(u"refused"_s).value(u"reason"_s), u"result code 03"_s);
}

void TestRegister::standardInputChangesFaults()
{
    SimulatedRegister reg(TestSupport::freePort(), {u"--fault"_s, u"garbage"_s});
    QCOMPARE(reg.events().first().value(u"faults"_s).toVariant().toStringList(), QStringList{u"garbage"_s});
    const auto active = [&reg](const QByteArray &line) {
        reg.say(line);
        return reg.waitFor(u"fault"_s).value(u"active"_s).toVariant().toStringList();
    };
    QCOMPARE(active("fault delay=5"), (QStringList{u"delay=5"_s, u"garbage"_s}));
    QCOMPARE(active("fault delay=7"), (QStringList{u"delay=7"_s, u"garbage"_s}));
    QCOMPARE(active("fault none"), QStringList());
}

void TestRegister::standardInputRefusesNonsense_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown fault") << QByteArray("fault nonsense") << u"accepted are wrong-authority, "_s;
    QTest::newRow("bad value") << QByteArray("fault segments=0") << u"N: 1 to 4096"_s;
    QTest::newRow("unknown command") << QByteArray("nonsense") << u"accepted are fault NAME"_s;
    QTest::newRow("settings are named too") << QByteArray("nonsense") << u"paper off, z N, "_s;
    QTest::newRow("bad setting") << QByteArray("z -1") << u"accepted is N: 1 to 2147483647"_s;
    QTest::newRow("no UTF-8") << QByteArray("\xFF\xFE\x01") << u"accepted are fault NAME"_s;
}

void TestRegister::standardInputRefusesNonsense()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, message);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    reg.say(line);
    const QString answer = reg.waitFor(u"error"_s).value(u"message"_s).toString();
    QVERIFY2(answer.contains(message), qPrintable(answer));
    QCOMPARE(pairOnce(port), 0);
}

/** Job control: behind another program it cannot read the terminal, brought to the front it does. */
void TestRegister::standardInputIsReadAgainInFront()
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(u"pipe"_s);
    QCOMPARE(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    const quint16 port = TestSupport::freePort();
    TestSupport::Terminal terminal(u"/bin/bash"_s, {u"--norc"_s, u"--noprofile"_s, u"-i"_s});
    terminal.type(SimulatedRegister::program().toUtf8() +
                  " --serial UB1234567890 --connect 127.0.0.1:" + QByteArray::number(port) + " &\n");
    QVERIFY(terminal.waitFor("ready UB1234567890"));
    terminal.type("echo $((1000 + 1)); cat " + pipe.toUtf8() + "\n");
    QVERIFY(terminal.waitFor("1001"));
    terminal.type("echo $((1000 + 2))\n"); // which nobody reads before cat has ended
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, port));
    QVERIFY(terminal.waitFor("connected")); // since then it has tried
    QVERIFY(QFile(pipe).open(QIODevice::WriteOnly));
    QVERIFY(terminal.waitFor("1002"));

    terminal.type("fg; echo $((1000 + 3))\n");
    QVERIFY(terminal.waitFor("velno-register --serial")); // what is in front now
    terminal.type("paper off\n");
    QVERIFY(terminal.waitFor("set paper off"));
    terminal.type("quit\n");
    QVERIFY(terminal.waitFor("1003"));
    terminal.type("exit\n");
    QCOMPARE(terminal.waitForExit(), 0);
}

void TestRegister::itStopsWhateverItIsDoing_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("until");
    QTest::addColumn<int>("signal");
    for (const auto &[how, signal] :
         {std::pair("quit", 0), std::pair("SIGTERM", SIGTERM), std::pair("SIGINT", SIGINT)}) {
        QTest::addRow("connecting, %s", how) << QString() << u"ready"_s << signal;
        QTest::addRow("connected, %s", how) << QString() << u"connected"_s << signal;
        QTest::addRow("mute, %s", how) << u"mute=1"_s << u"request"_s << signal;
        QTest::addRow("delaying an answer, %s", how) << u"delay=600000"_s << u"request"_s << signal;
        QTest::addRow("in the middle of a pairing, %s", how) << u"delay=1"_s << u"result"_s << signal;
    }
}

void TestRegister::itStopsWhateverItIsDoing()
{
    QFETCH(const QString, fault);
    QFETCH(const QString, until);
    QFETCH(const int, signal);
    Peer peer;
    const bool connecting = until == u"ready";
    SimulatedRegister reg(connecting ? TestSupport::freePort() : peer.port(),
                          fault.isEmpty() ? QStringList{} : QStringList{u"--fault"_s, fault});
    QVERIFY(reg.isReady());
    if (!connecting) {
        QVERIFY(peer.accept());
        QVERIFY(peer.send(request(PairingStart)));
        QVERIFY(!reg.waitFor(until).isEmpty());
    }
    signal == 0 ? reg.say("quit") : reg.raise(signal);
    QCOMPARE(reg.waitForExit(), 0);
    QCOMPARE(reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestRegister::hostilePeersAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray start = request(PairingStart);
    QTest::newRow("announces 65535") << QByteArray(64, '\xFF') << u"announces more than 4096"_s;
    QTest::newRow("announces 4097") << QByteArray("\x10\x01", 2) << u"announces more than 4096"_s;
    QTest::newRow("announces two bytes") << QByteArray("\0\2xy", 4) << u"frame"_s;
    QTest::newRow("wrong CRC") << withLastByteWrong(start) << u"CRC"_s;
    QTest::newRow("other serial") << request(PairingStart, "UB0000000000") << u"another serial number"_s;
    QTest::newRow("no message") << GMP3::frame(false, None, QByteArray("\xDF\x82\x08\x01\x01"),
                                               SimulatedRegister::serial)
                                << u"holds no message"_s;
    QTest::newRow("unknown kind") << request(Message8A64) << u"no pairing request"_s;
    QTest::newRow("a response") << GMP3::frame(true, PairingStart,
                                               Velno::tlvElement(fieldTag(ResultCode), "00"),
                                               SimulatedRegister::serial)
                                << u"no pairing request"_s;
    QTest::newRow("second step first") << request(PairingKeyExchange) << u"before its turn"_s;
    QTest::newRow("third step first") << request(PairingConfirm) << u"before its turn"_s;
    QTest::newRow("third step second") << start + request(PairingConfirm) << u"before its turn"_s;
    QTest::newRow("no public key, no check value")
        << start + request(PairingKeyExchange) + request(PairingConfirm) << u"result code 02"_s;
}

void TestRegister::hostilePeersAreRefused()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, reason);
    TestSupport::checkRefused(bytes, reason);
}

void TestRegister::ipv6TargetsWork()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHostIPv6))
        QSKIP("THIS MACHINE HAS NO IPv6 LOOPBACK: IPv6 TARGETS ARE NOT TESTED");
    QProcess process;
    process.start(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"[::1]:%1"_s.arg(server.serverPort())});
    QVERIFY(server.waitForNewConnection(30'000));
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readLine().startsWith("ready UB1234567890 [::1]:"));
}

void TestRegister::targetsAreToldAsTheyWereTyped()
{
    QProcess process;
    process.start(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"[fe80::1%1]:4100"_s});
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(process.readLine(), "ready UB1234567890 [fe80::1%1]:4100 none\n");
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
}

void TestRegister::itEndsWithATestThatCrashes()
{
    if (qEnvironmentVariableIsSet(insideVariable)) {
        const SimulatedRegister reg(TestSupport::freePort());
        std::puts(QByteArray("register " + QByteArray::number(reg.processId())).constData());
        std::fflush(stdout);
        ::raise(SIGKILL);
    }

    QProcess inside;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(insideVariable), u"1"_s);
    inside.setProcessEnvironment(environment);
    inside.start(QCoreApplication::applicationFilePath(), {QLatin1String(QTest::currentTestFunction())});
    QVERIFY(inside.waitForFinished());
    QCOMPARE(inside.exitStatus(), QProcess::CrashExit);
    const QString output = QString::fromUtf8(inside.readAllStandardOutput());
    const auto said =
        QRegularExpression(u"^register (\\d+)$"_s, QRegularExpression::MultilineOption).match(output);
    QVERIFY2(said.hasMatch(), qPrintable(output));
    // One that has ended may be listed still, but without a command line.
    const auto isAlive = [file = u"/proc/%1/cmdline"_s.arg(said.captured(1))] {
        QFile commandLine(file);
        return commandLine.open(QIODevice::ReadOnly) && !commandLine.readAll().isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!isAlive(), 30'000);
}

QTEST_GUILESS_MAIN(TestRegister)
#include "tst_register.moc"
