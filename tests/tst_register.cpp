// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/file.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/register/faults.h"
#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QSslCertificate>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;

/** How velno-register is started: its options, help, credentials and exit codes. */
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
    void foreignCredentialsAreToldOf();
    void itEndsWithATestThatCrashes();
};

namespace {

// Set in the process of itEndsWithATestThatCrashes() that crashes.
constexpr const char *insideVariable = "VELNO_TEST_CRASH";

Outcome run(const QStringList &arguments)
{
    return outcomeOf(SimulatedRegister::program(), arguments);
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
    const Outcome help = run({u"--help"_s});
    QCOMPARE(help.exitCode, 0);
    const QString listed = faultsInManual(QFINDTESTDATA("../docs/simulated-register.md"),
                                          u"^\\| `([^`]+)` \\| ([^|]+) \\| [^|]+ \\| [^|]+ \\|$"_s);
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
    const Outcome shown = run({option});
    QCOMPARE(shown.exitCode, 0);
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
    checkWrongUsage(SimulatedRegister::program(), arguments, message);
}

void TestRegister::missingCredentialsAreRefused()
{
    const QTemporaryDir empty;
    const Outcome refused = run({u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s,
                                 u"--credentials"_s, empty.path()});
    QCOMPARE(refused.exitCode, 64);
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
    const Outcome refused = run(arguments + QStringList{u"--fault"_s, u"expired-certificate"_s});
    QCOMPARE(refused.exitCode, 64);
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

void TestRegister::foreignCredentialsAreToldOf()
{
    const QTemporaryDir folder;
    const auto lay = [&folder](const auto &credentials) {
        return Velno::writeData(folder.filePath(u"client.crt"_s), credentials.certificate) &&
               Velno::writeData(folder.filePath(u"client.key"_s), credentials.key);
    };
    const QString commands = folder.filePath(u"commands"_s);
    QVERIFY(Velno::writeData(commands, "quit\n"));
    const auto errors = [&] {
        const QString target = u"127.0.0.1:%1"_s.arg(TestSupport::freePort());
        const QStringList arguments{u"--serial"_s, u"UB1234567890"_s,  u"--connect"_s,
                                    target,        u"--credentials"_s, folder.path()};
        return outcomeOf(SimulatedRegister::program(), arguments,
                         [&commands](QProcess &process) { process.setStandardInputFile(commands); })
            .errors;
    };
    QVERIFY(lay(TestSupport::selfSigned()));
    QVERIFY2(errors().contains("\nvelno-register: applications of this build do not believe " +
                               folder.filePath(u"client.crt"_s).toUtf8() +
                               " and end the pairing with 5001 (self-signed certificate)\n"),
             errors());
    QVERIFY(lay(TestSupport::developmentRegister()));
    QVERIFY2(!errors().contains("believe"), errors());
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
