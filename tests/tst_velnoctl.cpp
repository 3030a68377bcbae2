#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/velnoctl_client.h"

#include <QDeadlineTimer>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

constexpr quint16 relayPort = 50902;
constexpr char waiting[] = "waiting for UB1234567890 on 127.0.0.1:";

const QByteArray yes = plain(true);
const QByteArray no = plain(false);

QByteArray text(const char *found)
{
    return found;
}

/** As velnoctl tells a cause, the lines behind the first indented. */
QByteArray causeInWords(int cause)
{
    QByteArrayList lines = text(velnoext_cause_text(cause)).split('\n');
    lines[0] += " (cause " + QByteArray::number(cause) + ", " + text(velnoext_cause_name(cause)) + ')';
    return lines.join("\n  ") + '\n';
}

} // namespace

class TestVelnoctl : public QObject
{
    Q_OBJECT

private slots:
    void resultsForPeopleAndPrograms_data();
    void resultsForPeopleAndPrograms();
    void commandsShareOneConnection();
    void failuresEndWithTheirCode_data();
    void failuresEndWithTheirCode();
    void refusedZKeepsItsNumber();
    void nothingRunsAfterAFailure();
    void libraryNoiseStaysOffTheResults();
    void unreachableRegister();
    void portInUse();
    void meetsARegisterAtTheRelay();
    void wrongUsageSendsNothing_data();
    void wrongUsageSendsNothing();
    void wrongUsageAsJson();
    void explainsEveryCode_data();
    void explainsEveryCode();
    void explainsDetails();
    void explainsCauses_data();
    void explainsCauses();
    void explainsInTurkish();
    void helpFitsAScreen();
    void helpAndVersionNameTheAnchors_data();
    void helpAndVersionNameTheAnchors();
    void helpOfOneCommand();
    void scriptRuns();
    void scriptMayBeginWithAByteOrderMark_data();
    void scriptMayBeginWithAByteOrderMark();
    void scriptNamesItsFileWhateverItIsCalled();
    void scriptStopsAtTheFirstFailure();
    void wrongScriptsSendNothing_data();
    void wrongScriptsSendNothing();
    void scriptWordsAreThoseOfAShell_data();
    void scriptWordsAreThoseOfAShell();
    void inputIsRunLineByLine();
    void inputStopsAtTheFirstFailure_data();
    void inputStopsAtTheFirstFailure();
    void shellWithoutTerminalReadsAScript();
    void interruptedWhileWaiting_data();
    void interruptedWhileWaiting();
    void interruptedWhilePairing();
    void interruptedWhileARegisterIsSilent();
    void interruptedTwiceEndsAtOnce();
    void interruptedWhileAScriptIsRead();
    void answerLimitLeavesASilentRegister();
    void interruptedWhileIdleClosesTheConnection();
    void resultsThatCannotBeWritten_data();
    void resultsThatCannotBeWritten();
    void readerThatWentAway();
    void usesThePublicFunctionsAlone();
};

void TestVelnoctl::resultsForPeopleAndPrograms_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QJsonObject>("values");

    const auto row = [](const char *name, const char *command, int code, const QByteArray &reply,
                        const char *words, const QJsonObject &values) {
        QTest::newRow(name) << QString::fromLatin1(command) << code << reply << QByteArray(words) << values;
    };
    const auto state = [&row](int number, const char *words, const char *name) {
        row(qPrintable(u"state %1"_s.arg(number)), "state", 0, plain(number, QVector<int>{}), words,
            {{u"state"_s, number}, {u"name"_s, QString::fromLatin1(name)}});
    };
    state(1, "state 1 (idle)", "idle");
    state(5, "state 5 (sale open)", "sale open");
    state(7, "state 7 (idle, another screen)", "idle, another screen");
    state(3, "state 3 (unnamed)", "unnamed");
    row("z", "z", 12, plain(true, 17), "Z 17", {{u"z"_s, 17}});
    row("last z", "last-z", 17, plain(1795276800), "last Z 2026-11-21 19:00:00 (1795276800)",
        {{u"seconds"_s, 1795276800}, {u"local"_s, u"2026-11-21 19:00:00"_s}});
    row("last z never", "last-z", 17, plain(0), "last Z never",
        {{u"seconds"_s, 0}, {u"local"_s, QJsonValue::Null}});
    row("clock", "datetime", 18, plain(0), "clock 1970-01-01 03:00:00 (0)",
        {{u"seconds"_s, 0}, {u"local"_s, u"1970-01-01 03:00:00"_s}});
    const auto limit = [&row](const char *name, qint64 kurus, const char *words) {
        row(name, "sale-limit", 15, plain(kurus), words, {{u"kurus"_s, kurus}});
    };
    limit("limit", 123456, "sale limit 1234.56 TL");
    limit("no limit", 0, "sale limit 0.00 TL");
    limit("small limit", 5, "sale limit 0.05 TL");
    limit("negative limit", -105, "sale limit -1.05 TL");
    limit("highest limit", std::numeric_limits<qint64>::max(), "sale limit 92233720368547758.07 TL");
    limit("lowest limit", std::numeric_limits<qint64>::min(), "sale limit -92233720368547758.08 TL");
    row("paper", "paper", 8, yes, "paper present", {{u"paper"_s, true}});
    row("login", "login", 1, yes, "logged in", {});
    row("logout", "logout", 2, yes, "logged out", {});
    row("serial", "serial", -1, {}, "serial number UB1234567890", {{u"serial"_s, u"UB1234567890"_s}});
}

void TestVelnoctl::resultsForPeopleAndPrograms()
{
    QFETCH(const QString, command);
    QFETCH(const int, code);
    QFETCH(const QByteArray, reply);
    QFETCH(const QByteArray, words);
    QFETCH(QJsonObject, values);
    values.insert(u"command"_s, command);
    values.insert(u"code"_s, 0);
    values.insert(u"result"_s, u"success"_s);
    for (const bool isJson : {false, true}) {
        Device device;
        device.answers.insert(code, reply);
        device.meet();
        Client client(target(device.port) + QStringList(isJson ? u"--json"_s : command) +
                      (isJson ? QStringList{command} : QStringList()));
        QCOMPARE(client.exitCode(), 0);
        QVERIFY(client.out.endsWith('\n') && client.out.count('\n') == 1);
        if (isJson)
            QCOMPARE(object(client.out), values);
        else
            QCOMPARE(client.out.trimmed(), words);
        QCOMPARE(device.codes(), code < 0 ? QList<int>() : QList{code});
        QVERIFY2(client.err.contains(waiting), client.err.constData());
        QVERIFY(client.err.contains("UB1234567890 is connected\n"));
    }
}

void TestVelnoctl::commandsShareOneConnection()
{
    Device device;
    device.answers = {{1, yes}, {0, plain(1, QVector<int>{})}, {12, plain(true, 4)}, {2, yes}};
    device.meet();
    Client client(target(device.port) + QStringList{u"login"_s, u"state"_s, u"z"_s, u"logout"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "logged in\nstate 1 (idle)\nZ 4\nlogged out\n");
    QCOMPARE(device.codes(), (QList{1, 0, 12, 2}));
    QCOMPARE(device.contacts, 3);
    QCOMPARE(client.err.count(waiting), 1);
    QCOMPARE(
        client.err.count("velnoctl: built for development, trusts the Velno Development authority only\n"),
        1);
}

void TestVelnoctl::failuresEndWithTheirCode_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("cause");

    const auto row = [](const char *name, const char *command, int number, const QByteArray &reply, int code,
                        int cause) {
        QTest::newRow(name) << QString::fromLatin1(command) << number << reply << code << cause;
    };
    row("login refused", "login", 1, no, 8, VelnoCause_SaidNo);
    row("logout refused", "logout", 2, no, 8, VelnoCause_SaidNo);
    row("no paper", "paper", 8, no, 9, VelnoCause_PrinterEmpty);
    row("short state", "state", 0, plain(1), 5, VelnoCause_AnswerTooShort);
    row("short clock", "datetime", 18, yes, 5, VelnoCause_AnswerTooShort);
    row("short last z", "last-z", 17, yes, 5, VelnoCause_AnswerTooShort);
    row("short limit", "sale-limit", 15, plain(1), 5, VelnoCause_AnswerTooShort);
    row("closed", "z", 12, {}, 2, VelnoCause_ClosedWhileWaiting);
}

void TestVelnoctl::failuresEndWithTheirCode()
{
    QFETCH(const QString, command);
    QFETCH(const int, number);
    QFETCH(const QByteArray, reply);
    QFETCH(const int, code);
    QFETCH(const int, cause);
    const QByteArrayList lines = text(velnoext_result_text(code)).split('\n');
    for (const bool isJson : {false, true}) {
        Device device;
        device.answers.insert(number, reply);
        device.meet();
        Client client(target(device.port) + (isJson ? QStringList{u"--json"_s} : QStringList()) +
                      QStringList{command});
        QCOMPARE(client.exitCode(), code);
        QVERIFY2(client.err.contains("velnoctl: " + command.toLatin1() + ": " + lines.at(0)),
                 client.err.constData());
        QVERIFY2(client.err.contains("\n  " + causeInWords(cause)), client.err.constData());
        if (!isJson) {
            QCOMPARE(client.out, QByteArray());
            continue;
        }
        QCOMPARE(client.out.count('\n'), 1);
        const QJsonObject failure = object(client.out);
        QCOMPARE(failure.value(u"command"_s).toString(), command);
        QCOMPARE(failure.value(u"code"_s).toInt(), code);
        QCOMPARE(failure.value(u"result"_s).toString().toLatin1(), text(velnoext_result_name(code)));
        QCOMPARE(failure.value(u"sentence"_s).toString().toLatin1(), lines.at(0));
        QCOMPARE("Cause: " + failure.value(u"cause"_s).toString().toLatin1(), lines.at(1));
        QCOMPARE("Cure: " + failure.value(u"cure"_s).toString().toLatin1(), lines.at(2));
        QCOMPARE(failure.value(u"causeCode"_s).toInt(), cause);
        QCOMPARE(failure.value(u"causeName"_s).toString().toLatin1(), text(velnoext_cause_name(cause)));
        QCOMPARE(failure.value(u"causeText"_s).toString().toLatin1(), text(velnoext_cause_text(cause)));
        QVERIFY(!failure.contains(u"where"_s) && !failure.contains(u"detail"_s));
    }
}

void TestVelnoctl::refusedZKeepsItsNumber()
{
    Device device;
    device.answers.insert(12, plain(false, 17));
    device.meet();
    Client client(target(device.port) + QStringList{u"--json"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 8);
    QCOMPARE(object(client.out).value(u"code"_s).toInt(), 8);
    QCOMPARE(object(client.out).value(u"z"_s).toInt(), 17);
    QVERIFY2(client.err.contains("said all the same: Z 17\n"), client.err.constData());
}

void TestVelnoctl::nothingRunsAfterAFailure()
{
    Device device;
    device.answers = {{1, yes}, {8, no}, {12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"login"_s, u"paper"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 9);
    QCOMPARE(client.out, "logged in\n");
    QCOMPARE(device.codes(), (QList{1, 8}));
}

void TestVelnoctl::libraryNoiseStaysOffTheResults()
{
    Device device;
    device.setAnswer([&device](const QByteArray &) {
        QByteArray damaged = device.sealed(yes);
        damaged.back() = char(damaged.back() ^ 1);
        return QList{HandMadeDevice::framed(damaged)};
    });
    device.meet();
    Client client(target(device.port) + QStringList{u"login"_s});
    QCOMPARE(client.exitCode(), 12);
    QCOMPARE(client.out, QByteArray());
    QVERIFY2(client.err.contains("\n  Log: CRC is not equal"), client.err.constData());
}

void TestVelnoctl::unreachableRegister()
{
    const quint16 port = TestSupport::freePort();
    for (const bool isJson : {false, true}) {
        Client client(target(port) + QStringList{u"--timeout"_s, u"50"_s} +
                      (isJson ? QStringList{u"--json"_s} : QStringList()) + QStringList{u"state"_s, u"z"_s});
        QCOMPARE(client.exitCode(), 2);
        QVERIFY(client.err.contains(waiting + QByteArray::number(port) + " …\n"));
        QVERIFY(client.err.contains("velnoctl: connecting UB1234567890 on 127.0.0.1:"));
        QVERIFY2(client.err.endsWith("\n  " + causeInWords(VelnoCause_NobodyConnected)),
                 client.err.constData());
        QCOMPARE(object(client.out).value(u"command"_s).toString(), isJson ? u"connect"_s : QString());
        QCOMPARE(object(client.out).value(u"code"_s).toInt(), isJson ? 2 : 0);
        QCOMPARE(client.out.count('\n'), isJson ? 1 : 0);
    }
}

void TestVelnoctl::portInUse()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost, 0));
    Client client(target(other.serverPort()) + QStringList{u"state"_s});
    QCOMPARE(client.exitCode(), 2);
    QVERIFY2(client.err.endsWith("\n  " + causeInWords(VelnoCause_PortInUse)), client.err.constData());
}

void TestVelnoctl::meetsARegisterAtTheRelay()
{
    Device device;
    device.answers.insert(12, plain(true, 17));
    // The port is fixed: tests of another build on this computer may hold it for a while.
    QTRY_VERIFY_WITH_TIMEOUT(QTcpServer().listen(QHostAddress::LocalHost, relayPort), longestWait);
    device.playRelay(relayPort);
    device.meet();
    Client client({u"--serial"_s, u"UB1234567890"_s, u"--relay"_s, u"--app"_s, u"5"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "Z 17\n");
    QVERIFY2(client.err.endsWith("waiting for UB1234567890 at the relay …\n"
                                 "(it is paired first, which takes three connections)\n"
                                 "UB1234567890 is connected\n"),
             client.err.constData()); // and no line of the library's log
}

void TestVelnoctl::wrongUsageSendsNothing_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("complaint");

    const auto row = [](const char *name, const char *arguments, const char *complaint) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts)
                            << QByteArray(complaint);
    };
    const char *const listen = "--serial UB1234567890 --app 5 --listen";
    const auto place = [&row, listen](const char *name, const char *where) {
        row(name, qPrintable(u"%1 %2 state"_s.arg(QLatin1String(listen), QLatin1String(where))),
            "accepted is a local IPv4 address and a port");
    };
    row("nothing", "", "no command is given\nvelnoctl --help shows all commands");
    row("no command", "--serial UB1234567890 --listen 127.0.0.1:PORT --app 5", "no command is given");
    row("unknown command", "TARGET stat",
        "\"stat\" is no command; did you mean \"state\"?\nvelnoctl --help shows all commands and options.\n");
    row("letters swapped", "TARGET lgoin", "\"lgoin\" is no command; did you mean \"login\"?\n");
    row("letter too many", "TARGET ppaper", "\"ppaper\" is no command; did you mean \"paper\"?\n");
    row("written otherwise", "TARGET Start_Sale",
        "\"Start_Sale\" is no command; did you mean \"start-sale\"?\n");
    row("as near to two", "TARGET gext", "did you mean \"text\" or \"get\"?\n");
    row("the beginning of two", "TARGET start", "did you mean \"start-sale\" or \"start-invoice-sale\"?\n");
    row("near to none", "TARGET refund", "\"refund\" is no command\n");
    row("one wrong letter is all of it", "TARGET y", "\"y\" is no command\n");
    row("second command unknown", "TARGET state stat", "\"stat\" is no command");
    row("command of the shell", "TARGET quit", "quit cannot stand on the command line, only in the shell\n");
    row("argument too many", "TARGET state 5", "\"5\" is no command");
    row("option behind", "TARGET state --json", "\"--json\": options stand in front of the first command");
    row("no file", "TARGET run", "run: FILE is missing; accepted is the path of a file, or - for");
    row("file not there", "TARGET run /nowhere/day.velno", "/nowhere/day.velno: ");
    row("file is a folder", "TARGET run /", "/: ");
    row("no code", "explain", "explain: CODE is missing; accepted is a result code, for example 8");
    row("code is no number", "explain no-paper",
        "explain: \"no-paper\" is no CODE; accepted is a result code");
    row("detail is no number", "explain 4 0xZZ",
        "explain: \"0xZZ\" is no DETAIL; accepted is an error detail");
    row("no such help", "help stat",
        "help: \"stat\" is no COMMAND; accepted is the name of a command; did you mean \"state\"?\n");
    row("unknown option", "--loud state", "\"--loud\" is no option\n");
    row("unknown letter", "-x state", "\"-x\" is no option\n");
    row("misspelt option", "--lisen 127.0.0.1:PORT state",
        "\"--lisen\" is no option; did you mean \"--listen\"?\n");
    row("value missing", "state --serial", "--serial");
    row("no serial", "--listen 127.0.0.1:PORT --app 5 state", "--serial is missing; accepted is exactly 12");
    row("short serial", "--serial UB123456789 --listen 127.0.0.1:PORT --app 5 state",
        "--serial \"UB123456789\": accepted is exactly 12 characters");
    row("long serial", "--serial UB12345678901 --listen 127.0.0.1:PORT --app 5 state",
        "accepted is exactly 12");
    row("no place", "--serial UB1234567890 --app 5 state", "neither --listen nor --relay is given");
    row("two places", "TARGET --relay state", "--relay: accepted is one of --listen and --relay");
    place("no port", "127.0.0.1");
    place("port 0", "127.0.0.1:0");
    place("port 65536", "127.0.0.1:65536");
    place("a name", "localhost:4100");
    place("half an address", "127.0.0:4100");
    place("number above 255", "127.0.0.256:4100");
    place("IPv6, which cannot pair", "[::1]:4100");
    place("IPv6 without brackets", "::1:4100");
    place("IPv4 in brackets", "[127.0.0.1]:4100");
    place("the relay's address", "255.255.255.255:4100");
    row("no app", "--serial UB1234567890 --listen 127.0.0.1:PORT state",
        "--app is missing; accepted is 1 to");
    row("app 0", "TARGET --app 0 state", "--app \"0\": accepted is 1 to 4294967295");
    row("app too large", "TARGET --app 4294967296 state", "--app \"4294967296\": accepted is");
    row("app with a sign", "TARGET --app +5 state", "--app \"+5\": accepted is");
    row("no time for an answer", "TARGET --answer-limit 0 state", "--answer-limit \"0\": accepted is 1 to");
    row("unknown language", "TARGET --language de state", "--language \"de\": accepted is en or tr\n");
    row("timeout in words", "TARGET --timeout soon state", "--timeout \"soon\": accepted is 0 to");
    row("negative timeout", "TARGET --timeout=-1 state", "--timeout \"-1\": accepted is 0 to");
}

void TestVelnoctl::wrongUsageSendsNothing()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QByteArray, complaint);
    Device device;
    arguments.replaceInStrings(u"PORT"_s, QString::number(device.port));
    if (arguments.removeAll(u"TARGET"_s) > 0)
        arguments = target(device.port) + arguments;
    device.meet();
    Client client(arguments);
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains(complaint), client.err.constData());
    QVERIFY(client.err.startsWith("velnoctl: "));
    QVERIFY(client.err.endsWith("velnoctl --help shows all commands and options.\n"));
    QVERIFY(!client.err.contains("waiting"));
    QCOMPARE(client.out, QByteArray());
    QCOMPARE(device.contacts, 0);
}

void TestVelnoctl::wrongUsageAsJson()
{
    Client client({u"--json"_s, u"stat"_s});
    QCOMPARE(client.exitCode(), 64);
    const QJsonObject failure = object(client.out);
    QCOMPARE(failure.value(u"code"_s).toInt(), 64);
    QCOMPARE(failure.value(u"result"_s).toString(), u"wrong-usage"_s);
    QCOMPARE(failure.value(u"sentence"_s).toString(), u"\"stat\" is no command; did you mean \"state\"?"_s);
    QVERIFY(client.err.endsWith("velnoctl --help shows all commands and options.\n"));
}

void TestVelnoctl::explainsEveryCode_data()
{
    QTest::addColumn<int>("code");
    for (int code = -1; code <= 14; ++code)
        QTest::addRow("%d", code) << code;
}

void TestVelnoctl::explainsEveryCode()
{
    QFETCH(const int, code);
    const QByteArrayList lines = text(velnoext_result_text(code)).split('\n');
    Client client({u"explain"_s, QString::number(code)});
    QCOMPARE(client.exitCode(), 0);
    const QByteArray name = text(velnoext_result_name(code));
    QCOMPARE(client.out, lines.at(0) + " (code " + QByteArray::number(code) + ", " + name + ")\n  " +
                             lines.at(1) + "\n  " + lines.at(2) + '\n');
    QCOMPARE(client.err, QByteArray());
}

void TestVelnoctl::explainsDetails()
{
    Client words({u"explain"_s, u"4"_s, u"0x402"_s, u"explain"_s, u"3"_s, u"780"_s});
    QCOMPARE(words.exitCode(), 0);
    QVERIFY(words.out.contains("\n  Detail 0x402: " + text(velnoext_detail_text(0x402)) + '\n'));
    QVERIFY(words.out.contains("\n  Detail 0x30C: " + text(velnoext_detail_text(0x30C)) + '\n'));
    Client json({u"--json"_s, u"explain"_s, u"4"_s, u"0x402"_s});
    QCOMPARE(json.exitCode(), 0);
    const QJsonObject explained = object(json.out).value(u"explained"_s).toObject();
    QCOMPARE(explained.value(u"code"_s).toInt(), 4);
    QCOMPARE(explained.value(u"detail"_s).toInt(), 0x402);
    QCOMPARE(explained.value(u"detailText"_s).toString().toLatin1(), text(velnoext_detail_text(0x402)));
}

void TestVelnoctl::explainsCauses_data()
{
    QTest::addColumn<int>("cause");
    for (const int cause : {1000, 1006, 5002, 7001, 10016, 20005, 30002, 99999})
        QTest::addRow("%d", cause) << cause;
}

void TestVelnoctl::explainsCauses()
{
    QFETCH(const int, cause);
    Client client({u"explain"_s, QString::number(cause)});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, causeInWords(cause));
    Client json({u"--json"_s, u"explain"_s, QString::number(cause)});
    QCOMPARE(json.exitCode(), 0);
    const QJsonObject explained = object(json.out).value(u"explained"_s).toObject();
    QCOMPARE(explained, (QJsonObject{{u"causeCode"_s, cause},
                                     {u"causeName"_s, QLatin1String(velnoext_cause_name(cause))},
                                     {u"causeText"_s, QLatin1String(velnoext_cause_text(cause))}}));
}

void TestVelnoctl::explainsInTurkish()
{
    const auto shown = [](const QStringList &arguments) {
        Client client(QStringList{u"--language"_s, u"tr"_s} + arguments);
        return client.exitCode() == 0 ? client.out : QByteArray();
    };
    const auto restore = qScopeGuard([] { velnoext_set_language("en"); });
    QCOMPARE(velnoext_set_language("tr"), 0);
    QCOMPARE(shown({u"explain"_s, u"1006"_s}), causeInWords(1006));
    QVERIFY(causeInWords(1006).contains("\n  Çözüm: "));
    const QByteArrayList lines = text(velnoext_result_text(8)).split('\n');
    QCOMPARE(shown({u"explain"_s, u"8"_s}),
             lines.at(0) + " (code 8, refused)\n  " + lines.at(1) + "\n  " + lines.at(2) + '\n');
    const QJsonObject explained =
        object(shown({u"--json"_s, u"explain"_s, u"8"_s})).value(u"explained"_s).toObject();
    QCOMPARE("Neden: " + explained.value(u"cause"_s).toString().toUtf8(), lines.at(1));
    QCOMPARE("Çözüm: " + explained.value(u"cure"_s).toString().toUtf8(), lines.at(2));
}

void TestVelnoctl::helpFitsAScreen()
{
    QByteArray shown;
    for (const QString &way : {u"--help"_s, u"-h"_s, u"help"_s}) {
        Client client({way});
        QCOMPARE(client.exitCode(), 0);
        QVERIFY(shown.isEmpty() || shown == client.out);
        shown = client.out;
    }
    const QByteArrayList lines = shown.split('\n');
    QVERIFY2(lines.size() <= 30, QByteArray::number(lines.size()).constData());
    for (const QByteArray &line : lines)
        QVERIFY2(line.size() <= 100, line.constData());
    for (const char *word : {"Reading ",
                             "state z last-z datetime sale-limit paper serial",
                             "login logout forget\n",
                             "start-sale start-invoice-sale sale-state item items medical",
                             "pay end-sale end-invoice cancel receipt",
                             "encoding text justified feed print x-report z-report\n",
                             "send get\n",
                             "run shell explain help commands version\n",
                             "velnoctl help COMMAND ",
                             "  --serial NO ",
                             "  --listen ADDR:PORT ",
                             "  --relay ",
                             "  --app N ",
                             "  --timeout MS ",
                             "  --json ",
                             "  --answer-limit MS ",
                             "  --language LANG ",
                             " 64 wrong usage",
                             "74 ",
                             " 130 ",
                             "Example: velnoctl --serial"})
        QVERIFY2(shown.contains(word), word);
}

void TestVelnoctl::helpAndVersionNameTheAnchors_data()
{
    QTest::addColumn<QString>("word");
    for (const char *const word : {"--help", "--version", "-v", "help", "version"})
        QTest::newRow(word) << QString::fromLatin1(word);
}

void TestVelnoctl::helpAndVersionNameTheAnchors()
{
    QFETCH(const QString, word);
    Client client({word});
    QCOMPARE(client.exitCode(), 0);
    QVERIFY2(client.out.contains(Velno::GMP::trustAnchorsInWords().trimmed().toUtf8()),
             client.out.constData());
    QCOMPARE(client.out.startsWith("velnoctl " VELNO_VERSION ", libvelnoext " VELNO_VERSION "\n"),
             !word.contains(u'h'));
}

void TestVelnoctl::helpOfOneCommand()
{
    Client client({u"help"_s, u"run"_s, u"help"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 0);
    QVERIFY(client.out.startsWith("Usage: run FILE\n  a script"));
    QVERIFY(client.out.contains("\n  FILE                    the path of a file, or - for standard input\n"));
    QVERIFY(client.out.contains("\nUsage: z\n  the number of the current Z report\n"));
}

void TestVelnoctl::scriptRuns()
{
    const QTemporaryDir folder;
    Device device;
    device.answers = {{1, yes}, {12, plain(true, 4)}, {2, yes}};
    device.meet();
    const QString file = fileWith(folder, "# morning\r\n\r\nlogin\r\n  z   # the report\r\n\tlogout");
    Client client(target(device.port) + QStringList{u"run"_s, file, u"z"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "logged in\nZ 4\nlogged out\nZ 4\n");
}

void TestVelnoctl::scriptMayBeginWithAByteOrderMark_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::newRow("comment") << QByteArray("# morning\n");
    QTest::newRow("command") << QByteArray("explain 1\n");
    QTest::newRow("nothing") << QByteArray("\n");
}

void TestVelnoctl::scriptMayBeginWithAByteOrderMark()
{
    QFETCH(const QByteArray, first);
    const QTemporaryDir folder;
    const QByteArray script = "\xEF\xBB\xBF" + first + "explain 2\n";
    Client file(target(4100) + QStringList{u"run"_s, fileWith(folder, script)});
    QCOMPARE(file.exitCode(), 0);
    Client input(target(4100) + QStringList{u"run"_s, u"-"_s});
    input.say(script);
    QCOMPARE(input.exitCode(), 0);
    QCOMPARE(input.out, file.out);
    QVERIFY(file.out.contains("(code 2, "));
}

void TestVelnoctl::scriptNamesItsFileWhateverItIsCalled()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"a %1 %2 day"_s);
    QVERIFY(QFile::rename(fileWith(folder, "\nstat\n"), file));
    Client client(target(4100) + QStringList{u"run"_s, file});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains("velnoctl: " + file.toUtf8() + ":2: \"stat\" is no command"),
             client.err.constData());
}

void TestVelnoctl::scriptStopsAtTheFirstFailure()
{
    const QTemporaryDir folder;
    Device device;
    device.answers = {{1, yes}, {8, no}, {12, plain(true, 4)}};
    device.meet();
    const QString file = fileWith(folder, "login\n\npaper\nz\n");
    Client client(target(device.port) + QStringList{u"--json"_s, u"run"_s, file, u"z"_s});
    QCOMPARE(client.exitCode(), 9);
    QCOMPARE(device.codes(), (QList{1, 8}));
    QVERIFY2(client.err.contains("velnoctl: " + file.toUtf8() + ":3: paper: "), client.err.constData());
    QCOMPARE(object(client.out.split('\n').at(1)).value(u"where"_s).toString(), file + ":3"_L1);
}

void TestVelnoctl::wrongScriptsSendNothing_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QByteArray>("complaint");

    const auto row = [](const char *name, const QByteArray &script, const char *complaint) {
        QTest::newRow(name) << script << QByteArray(complaint);
    };
    row("unknown command", "login\nstate\nstat\n", ":3: \"stat\" is no command; did you mean \"state\"?\n");
    row("last line", "login\nstat", ":2: \"stat\" is no command");
    row("two commands", "state z\n", ":1: \"z\" is one word too many: state is the whole command");
    row("argument", "explain 4 0x402 5\n", ":1: \"5\" is one word too many: explain CODE [DETAIL]");
    row("argument missing", "explain\n", ":1: explain: CODE is missing");
    row("script in a script", "run other\n",
        ":1: run cannot stand in a script, only on the command line and in the shell\n");
    row("shell in a script", "shell\n", ":1: shell cannot stand in a script, only on the command line\n");
    row("quit", "quit\n", ":1: quit cannot stand in a script, only in the shell\n");
    row("open quote", "\nexplain '4\n", ":2: the quote ' at byte 9 is not closed\n");
    row("open double quote", "explain \"4\n", ":1: the quote \" at byte 9 is not closed\n");
    row("quote of the other kind", "'it' \"isn't\n", ":1: the quote \" at byte 6 is not closed\n");
    row("quote behind Turkish letters", "text \xC3\x87 \"\n", ":1: the quote \" at byte 9 is not closed\n");
    row("lone backslash", "state \\\n", ":1: byte 7 is a backslash with nothing behind it\n");
    row("lone backslash in a quote", "text \"\\\n", ":1: byte 7 is a backslash with nothing behind it\n");
    row("no comment in a word", "explain 4#\n", ":1: explain: \"4#\" is no CODE");
    row("no comment in quotes", "explain '4 # '\n", ":1: explain: \"4 # \" is no CODE");
    row("no comment behind an escaped blank", "explain 4\\ #5\n", ":1: explain: \"4 #5\" is no CODE");
    const char *const noUtf8 = " is no UTF-8, which every line has to be\n";
    const auto foreign = [&row, noUtf8](const char *name, const QByteArray &script, const char *where) {
        row(name, script, (QByteArray(where) + noUtf8).constData());
    };
    foreign("ISO-8859-9",
            "explain 4 \xC7"
            "ay\n",
            ":1: byte 11 (0xC7)");
    foreign("ISO-8859-9 behind UTF-8", "state\nexplain \xC4\x9F\xDD\n", ":2: byte 11 (0xDD)");
    foreign("letter cut short", "explain 4 \xC4\n", ":1: byte 11 (0xC4)");
    foreign("rest of a letter", "explain 4 \x9F\n", ":1: byte 11 (0x9F)");
    foreign("in an open quote", "explain '4 \xFF\n", ":1: byte 12 (0xFF)");
    row("zero byte", QByteArray("state\0\n", 7), ":1: byte 6 is a zero byte, which no line may hold\n");
    row("long line", "state\n" + QByteArray(4097, ' ') + "\n", ":2: the line is longer than 4096 bytes");
    row("endless line", QByteArray(100'000, 'x'), ":1: the line is longer than 4096 bytes");
}

void TestVelnoctl::wrongScriptsSendNothing()
{
    QFETCH(const QByteArray, script);
    QFETCH(const QByteArray, complaint);
    const QTemporaryDir folder;
    const QString file = fileWith(folder, script);
    Device device;
    device.meet();
    Client client(target(device.port) + QStringList{u"state"_s, u"run"_s, file});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains("velnoctl: " + file.toUtf8() + complaint), client.err.constData());
    QCOMPARE(client.out, QByteArray());
    QCOMPARE(device.contacts, 0);
}

void TestVelnoctl::scriptWordsAreThoseOfAShell_data()
{
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("plain") << QByteArray("explain 4 0x402");
    QTest::newRow("tabs") << QByteArray("\texplain\t4\t0x402\t");
    QTest::newRow("quotes") << QByteArray("'explain' \"4\" 0x'402'");
    QTest::newRow("backslash") << QByteArray("expl\\ain 4 0x402");
    QTest::newRow("comment") << QByteArray("explain 4 0x402 # a quote ' and \" more");
    QTest::newRow("comment behind an escape") << QByteArray("explain 4 '0x'402\t#\\");
    QTest::newRow("comment in another encoding") << QByteArray("explain 4 0x402 # \xC7 \" '");
    QTest::newRow("longest line") << "explain 4 0x402" + QByteArray(4096 - 15, ' ');
}

void TestVelnoctl::scriptWordsAreThoseOfAShell()
{
    QFETCH(const QByteArray, line);
    const QTemporaryDir folder;
    Client expected({u"explain"_s, u"4"_s, u"0x402"_s});
    QCOMPARE(expected.exitCode(), 0);
    Client client(target(4100) + QStringList{u"run"_s, fileWith(folder, line + '\n')});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, expected.out);
    QVERIFY(!client.err.contains("waiting"));
}

void TestVelnoctl::inputIsRunLineByLine()
{
    Device device;
    device.answers = {{1, yes}, {12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"run"_s, u"-"_s});
    client.say("login\n");
    QVERIFY(client.printed("logged in\n"));
    client.say("# a comment\n\nz\n");
    QVERIFY(client.printed("Z 4\n"));
    client.say("explain 0"); // no line end
    QCOMPARE(client.exitCode(), 0);
    QVERIFY(client.out.contains("code 0, success"));
    QCOMPARE(device.codes(), (QList{1, 12}));
}

void TestVelnoctl::inputStopsAtTheFirstFailure_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("complaint");

    QTest::newRow("failure") << QByteArray("login\npaper\nz\n") << 9
                             << QByteArray("standard input:2: paper: ");
    QTest::newRow("unknown") << QByteArray("login\nstat\nz\n") << 64
                             << QByteArray("standard input:2: \"stat\" is no command");
    QTest::newRow("input in input") << QByteArray("login\nrun -\nz\n") << 64
                                    << QByteArray("standard input:2: run - belongs on the command line");
    QTest::newRow("long line") << "login\n" + QByteArray(5000, ' ') << 64
                               << QByteArray("standard input:2: the line is longer than 4096 bytes");
    QTest::newRow("quit") << QByteArray("login\nquit\nz\n") << 0 << QByteArray("UB1234567890 is connected");
}

void TestVelnoctl::inputStopsAtTheFirstFailure()
{
    QFETCH(const QByteArray, input);
    QFETCH(const int, code);
    QFETCH(const QByteArray, complaint);
    Device device;
    device.answers = {{1, yes}, {8, no}, {12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"run"_s, u"-"_s});
    client.say(input);
    QCOMPARE(client.exitCode(), code);
    QVERIFY2(client.err.contains(complaint), client.err.constData());
    QCOMPARE(client.out, "logged in\n");
    QVERIFY(!device.codes().contains(12));
}

void TestVelnoctl::shellWithoutTerminalReadsAScript()
{
    Device device;
    device.answers = {{8, no}, {12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"shell"_s});
    client.say("z\npaper\nz\n");
    QCOMPARE(client.exitCode(), 9);
    QCOMPARE(client.out, "Z 4\n");
    QVERIFY(!client.err.contains("velnoctl>"));
}

void TestVelnoctl::interruptedWhileWaiting_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void TestVelnoctl::interruptedWhileWaiting()
{
    QFETCH(const int, signal);
    const quint16 port = freePort();
    Client client(target(port) + QStringList{u"state"_s, u"z"_s});
    QVERIFY(client.told(waiting));
    client.raise(signal);
    QCOMPARE(client.exitCode(), 130);
    QVERIFY2(client.err.endsWith("velnoctl: state: interrupted while waiting for UB1234567890 on 127.0.0.1:" +
                                 QByteArray::number(port) + "; nothing was sent\n"),
             client.err.constData());
}

void TestVelnoctl::interruptedWhilePairing()
{
    const quint16 port = freePort();
    Client client(target(port) + QStringList{u"state"_s});
    QVERIFY(client.told(waiting));
    const auto wasAsked = [port](QTcpSocket &socket) {
        const QDeadlineTimer deadline(longestWait);
        do {
            socket.abort();
            socket.connectToHost(QHostAddress::LocalHost, port);
        } while (!socket.waitForConnected(longestWait) && !deadline.hasExpired()); // nobody listens yet
        return socket.waitForReadyRead(longestWait);
    };
    QTcpSocket first;
    QVERIFY(wasAsked(first)); // told that it is not paired
    QVERIFY(first.state() != QTcpSocket::ConnectedState || first.waitForDisconnected(longestWait));
    QTcpSocket silent;
    QVERIFY(wasAsked(silent));
    client.raise(SIGINT);
    QCOMPARE(client.exitCode(), 130);
    QVERIFY2(
        client.err.contains("velnoctl: state: interrupted while pairing with UB1234567890 on 127.0.0.1:"),
        client.err.constData());
    QVERIFY(client.err.endsWith("; nothing was sent\n"));
}

void TestVelnoctl::interruptedWhileARegisterIsSilent()
{
    Device device;
    device.isMute = true;
    device.meet();
    Client client(target(device.port) + QStringList{u"--json"_s, u"z"_s, u"state"_s});
    QTRY_COMPARE_WITH_TIMEOUT(device.codes(), QList{12}, longestWait);
    client.raise(SIGINT);
    QCOMPARE(client.exitCode(), 130);
    const QByteArray sentence = "interrupted while it was under way; whether the register carried it out is "
                                "not known: docs/recovery.md tells how to find out";
    QVERIFY2(client.err.endsWith("velnoctl: z: " + sentence + '\n'), client.err.constData());
    QCOMPARE(client.out.count('\n'), 1);
    QCOMPARE(object(client.out), (QJsonObject{{u"command"_s, u"z"_s},
                                              {u"code"_s, 130},
                                              {u"result"_s, u"interrupted"_s},
                                              {u"sentence"_s, QString::fromUtf8(sentence)}}));
}

void TestVelnoctl::interruptedTwiceEndsAtOnce()
{
    const QTemporaryDir folder;
    const QByteArray pipe = folder.filePath(u"results"_s).toLocal8Bit();
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    const int ends = open(pipe.constData(), O_RDWR | O_CLOEXEC);
    const auto close = qScopeGuard([ends] { ::close(ends); });
    // Results that nobody reads: from some point on it waits in the writing of one.
    Client client(QStringList(100, u"commands"_s), u">'%1'"_s.arg(QString::fromLocal8Bit(pipe)));
    const auto isFull = [ends] {
        pollfd room{ends, POLLOUT, 0};
        return poll(&room, 1, 0) == 0;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isFull(), longestWait);
    client.raise(SIGINT);
    client.raise(SIGTERM); // taken behind the other, and not one with it
    QCOMPARE(client.exitCode(), 130);
    QCOMPARE(client.err, "velnoctl: interrupted while ending\n");
}

void TestVelnoctl::interruptedWhileAScriptIsRead()
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(u"day.velno"_s);
    QCOMPARE(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    Client client(target(4100) + QStringList{u"run"_s, pipe});
    // Opens once velnoctl does, which then reads what does not come.
    const int writer = open(pipe.toLocal8Bit().constData(), O_WRONLY | O_CLOEXEC);
    const auto close = qScopeGuard([writer] { ::close(writer); });
    client.raise(SIGINT);
    QCOMPARE(client.exitCode(), 130);
    QCOMPARE(client.err, "velnoctl: interrupted while reading a script\n");
}

void TestVelnoctl::answerLimitLeavesASilentRegister()
{
    Device device;
    device.isMute = true;
    device.meet();
    Client client(target(device.port) + QStringList{u"--json"_s, u"--answer-limit"_s, u"3000"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 2);
    QCOMPARE(device.codes(), QList{12});
    QCOMPARE(object(client.out).value(u"causeCode"_s).toInt(), int(VelnoCause_AnswerLimitPassed));
}

void TestVelnoctl::interruptedWhileIdleClosesTheConnection()
{
    Device device;
    device.answers = {{1, yes}};
    device.meet();
    Client client(target(device.port) + QStringList{u"run"_s, u"-"_s, u"z"_s});
    client.say("login\n");
    QVERIFY(client.printed("logged in\n"));
    client.raise(SIGTERM);
    QVERIFY(client.told("interrupted; nothing was under way\n"));
    QCOMPARE(client.exitCode(), 130);
    QCOMPARE(device.codes(), QList{1}); // the z behind it was not run
}

void TestVelnoctl::resultsThatCannotBeWritten_data()
{
    QTest::addColumn<QString>("redirection");
    QTest::newRow("full disk") << u">/dev/full"_s;
    QTest::newRow("closed") << u">&-"_s;
    QTest::newRow("everything closed") << u"<&- >&-"_s;
    QTest::newRow("open for reading alone") << u"1</dev/null"_s;
}

void TestVelnoctl::resultsThatCannotBeWritten()
{
    QFETCH(const QString, redirection);
    Client client({u"explain"_s, u"0"_s, u"explain"_s, u"1"_s}, redirection);
    QCOMPARE(client.exitCode(), 74);
    QCOMPARE(client.err.count("the result cannot be written: "), 1);
}

void TestVelnoctl::readerThatWentAway()
{
    Client client(target(4100) + QStringList{u"run"_s, u"-"_s},
                  u"| { head -c 1 >/dev/null; exec <&-; echo gone >&2; }"_s);
    client.say("explain 0\n");
    QVERIFY(client.told("gone"));
    client.say("explain 1\n");
    QCOMPARE(client.exitCode(), 74);
    QVERIFY2(client.err.contains("the result cannot be written: "), client.err.constData());
}

void TestVelnoctl::usesThePublicFunctionsAlone()
{
    QProcess nm;
    nm.start(QStringLiteral(VELNO_NM), {u"-D"_s, u"--undefined-only"_s, Client::program()});
    QVERIFY(nm.waitForFinished());
    const QString wanted = QString::fromLatin1(nm.readAllStandardOutput());
    QVERIFY(wanted.contains("velnoext_initialize"_L1));
    static const QRegularExpression ofThisProject(u"\\b\\w*velno\\w*"_s,
                                                  QRegularExpression::CaseInsensitiveOption);
    for (auto all = ofThisProject.globalMatch(wanted); all.hasNext();) {
        const QString name = all.next().captured();
        QVERIFY2(name.startsWith("velnoext_"_L1) || name.startsWith("VELNOEXT_"_L1), qPrintable(name));
    }
}

QTEST_GUILESS_MAIN(TestVelnoctl)
#include "tst_velnoctl.moc"
