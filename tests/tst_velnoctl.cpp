// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/velnoctl_client.h"

#include <QDeadlineTimer>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
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

} // namespace

/** velnoctl in front of a register: its results, how it fails, how it is interrupted. */
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
    nm.start(QString::fromUtf8(VELNO_NM), {u"-D"_s, u"--undefined-only"_s, Client::program()});
    QVERIFY(nm.waitForFinished());
    const QString wanted = QString::fromLatin1(nm.readAllStandardOutput());
    QVERIFY(wanted.contains("velnoext_initialize"_L1));
    QVERIFY(wanted.contains("velnotill_sell"_L1));
    static const QRegularExpression isPublic(u"\\Avelno(ext|till)_|\\AVELNO(EXT|TILL)_"_s);
    static const QRegularExpression ofThisProject(u"\\b\\w*velno\\w*"_s,
                                                  QRegularExpression::CaseInsensitiveOption);
    for (auto all = ofThisProject.globalMatch(wanted); all.hasNext();) {
        const QString name = all.next().captured();
        QVERIFY2(isPublic.match(name).hasMatch(), qPrintable(name));
    }
}

QTEST_GUILESS_MAIN(TestVelnoctl)
#include "tst_velnoctl.moc"
