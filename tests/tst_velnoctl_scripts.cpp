// SPDX-License-Identifier: Apache-2.0

#include "tests/support/registers_key.h"
#include "tests/support/velnoctl_client.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** Commands of velnoctl from a script or from its input. */
class TestVelnoctlScripts : public QObject
{
    Q_OBJECT

private slots:
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
};

void TestVelnoctlScripts::scriptRuns()
{
    NEEDS_A_REGISTERS_KEY();
    const QTemporaryDir folder;
    Device device;
    device.answers = {{1, yes}, {12, plain(true, 4)}, {2, yes}};
    device.meet();
    const QString file = fileWith(folder, "# morning\r\n\r\nlogin\r\n  z   # the report\r\n\tlogout");
    Client client(target(device.port) + QStringList{u"run"_s, file, u"z"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "logged in\nZ 4\nlogged out\nZ 4\n");
}

void TestVelnoctlScripts::scriptMayBeginWithAByteOrderMark_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::newRow("comment") << QByteArray("# morning\n");
    QTest::newRow("command") << QByteArray("explain 1\n");
    QTest::newRow("nothing") << QByteArray("\n");
}

void TestVelnoctlScripts::scriptMayBeginWithAByteOrderMark()
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

void TestVelnoctlScripts::scriptNamesItsFileWhateverItIsCalled()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"a %1 %2 day"_s);
    QVERIFY(QFile::rename(fileWith(folder, "\nstat\n"), file));
    Client client(target(4100) + QStringList{u"run"_s, file});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains("velnoctl: " + file.toUtf8() + ":2: \"stat\" is no command"),
             client.err.constData());
}

void TestVelnoctlScripts::scriptStopsAtTheFirstFailure()
{
    NEEDS_A_REGISTERS_KEY();
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

void TestVelnoctlScripts::wrongScriptsSendNothing_data()
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

void TestVelnoctlScripts::wrongScriptsSendNothing()
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

void TestVelnoctlScripts::scriptWordsAreThoseOfAShell_data()
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

void TestVelnoctlScripts::scriptWordsAreThoseOfAShell()
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

void TestVelnoctlScripts::inputIsRunLineByLine()
{
    NEEDS_A_REGISTERS_KEY();
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

void TestVelnoctlScripts::inputStopsAtTheFirstFailure_data()
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

void TestVelnoctlScripts::inputStopsAtTheFirstFailure()
{
    NEEDS_A_REGISTERS_KEY();
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

void TestVelnoctlScripts::shellWithoutTerminalReadsAScript()
{
    NEEDS_A_REGISTERS_KEY();
    Device device;
    device.answers = {{8, no}, {12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"shell"_s});
    client.say("z\npaper\nz\n");
    QCOMPARE(client.exitCode(), 9);
    QCOMPARE(client.out, "Z 4\n");
    QVERIFY(!client.err.contains("velnoctl>"));
}

QTEST_GUILESS_MAIN(TestVelnoctlScripts)
#include "tst_velnoctl_scripts.moc"
