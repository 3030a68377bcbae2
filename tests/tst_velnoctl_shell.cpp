// SPDX-License-Identifier: Apache-2.0

#include "tests/support/terminal.h"
#include "tests/support/velnoctl_client.h"

#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnoctl's shell, with a terminal of its own. */
class TestVelnoctlShell : public QObject
{
    Q_OBJECT

private slots:
    void completesNames();
    void remembersLines();
    void takesTurkishLetters_data();
    void takesTurkishLetters();
    void followsTheSizeOfTheTerminal();
    void goesOnAfterFailures();
    void connectsAgain();
    void ends_data();
    void ends();
    void endsAfterTheCommandUnderWay();
    void ctrlCClearsAHalfTypedLine_data();
    void ctrlCClearsAHalfTypedLine();
    void ctrlCLeavesASilentRegister();
};

void TestVelnoctlShell::completesNames()
{
    Device device;
    device.answers = {{15, plain(qint64(500))}, {0, plain(1, QVector<int>{})}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("sale-l\t\n"); // one name
    QVERIFY(terminal.waitFor("sale limit 5.00 TL"));
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("lo\t\t"); // log, then a choice
    QVERIFY(terminal.waitFor("login  logout"));
    terminal.type("\x15help stat\t\n"); // Ctrl-U: another line; help's argument is a name, too
    QVERIFY(terminal.waitFor("by number and name"));
    terminal.type("nothing\t\x15state\n"); // completes to nothing
    QVERIFY(terminal.waitFor("state 1 (idle)"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
}

void TestVelnoctlShell::remembersLines()
{
    Device device;
    device.answers = {{12, plain(true, 4)}, {15, plain(qint64(500))}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("Z 4"));
    terminal.type("sale-limit\n");
    QVERIFY(terminal.waitFor("5.00 TL"));
    terminal.type("\x10\x10\n"); // Ctrl-P twice: the line before the last
    QVERIFY(terminal.waitFor("Z 4"));
    terminal.type("\x1b[A\x1b[A\n"); // the arrow up twice: now the one before is sale-limit
    QVERIFY(terminal.waitFor("5.00 TL"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
    QCOMPARE(device.codes(), (QList{12, 15, 12, 15}));
}

void TestVelnoctlShell::takesTurkishLetters_data()
{
    QTest::addColumn<QByteArray>("locale");
    QTest::newRow("UTF-8") << QByteArray("C.UTF-8");
    QTest::newRow("of a bare system") << QByteArray("C");
    QTest::newRow("not installed") << QByteArray("xx_XX.UTF-8");
}

void TestVelnoctlShell::takesTurkishLetters()
{
    QFETCH(const QByteArray, locale);
    const QByteArray before = qgetenv("LC_ALL");
    const auto restore = qScopeGuard([&before] { qputenv("LC_ALL", before); });
    qputenv("LC_ALL", locale); // which the program inherits
    Device device;
    device.answers = {{4, no}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("item 7 \"Çay Şekeri ğı\"\n");
    QVERIFY(terminal.waitFor("(code 8, refused)"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
    const QList<QByteArray> sold = device.commands();
    QCOMPARE(sold.size(), 1);
    QVERIFY2(sold.first().contains(plain(QByteArray("Çay Şekeri ğı"))), sold.first().toHex(' ').constData());
}

void TestVelnoctlShell::followsTheSizeOfTheTerminal()
{
    Terminal terminal(Client::program(), target(4100) + QStringList{u"shell"_s});
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("expl");
    QVERIFY(terminal.waitFor("expl"));
    terminal.resize(40);
    QVERIFY(terminal.waitFor("velnoctl> expl"));           // drawn anew
    terminal.type("ain 1" + QByteArray(30, ' ') + "\x01"); // wraps now; Ctrl-A: to its beginning
    QVERIFY(terminal.waitFor("\x1b[A"));                   // which is a row above
    terminal.type("\n");
    QVERIFY(terminal.waitFor("(code 1, not-ready)"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
}

void TestVelnoctlShell::goesOnAfterFailures()
{
    const QTemporaryDir folder;
    const QString file = fileWith(folder, "z\npaper\nz\n");
    Device device;
    device.answers = {{8, no}, {12, plain(true, 4)}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("stat\n");
    QVERIFY(
        terminal.waitFor("\"stat\" is no command; did you mean \"state\"?\r\nhelp shows all commands.\r\n"));
    terminal.type("\n  \n# nothing\nhelp\n");
    QVERIFY(terminal.waitFor("ends the shell"));
    QVERIFY(!terminal.shown().contains("waiting"));
    terminal.type("paper\n");
    QVERIFY(terminal.waitFor("The printer has no paper. (code 9, no-paper)"));
    terminal.type("run " + file.toUtf8() + '\n');
    QVERIFY(terminal.waitFor("Z 4"));
    QVERIFY(terminal.waitFor(":2: paper: The printer has no paper."));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
    QCOMPARE(device.codes(), (QList{8, 12, 8}));
}

void TestVelnoctlShell::connectsAgain()
{
    Device device;
    device.answers = {{12, plain(true, 4)}}; // another command finds the connection closed
    device.meet(2);
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("Z 4"));
    terminal.type("paper\n");
    QVERIFY(terminal.waitFor("(code 2, connection-failed)"));
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("waiting for UB1234567890"));
    QVERIFY(terminal.waitFor("Z 4"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
    QCOMPARE(device.contacts, 4); // paired once only
}

void TestVelnoctlShell::ends_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("code");

    QTest::newRow("quit") << QByteArray("quit\n") << 0;
    QTest::newRow("Ctrl-D") << QByteArray("\x04") << 0;
    QTest::newRow("Ctrl-C") << QByteArray("\x03") << 130;
}

void TestVelnoctlShell::ends()
{
    QFETCH(const QByteArray, keys);
    QFETCH(const int, code);
    Device device;
    device.answers = {{12, plain(true, 4)}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("Z 4"));
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type(keys);
    QCOMPARE(terminal.waitForExit(), code);
    QVERIFY(terminal.isAsBefore());
}

void TestVelnoctlShell::endsAfterTheCommandUnderWay()
{
    Device device;
    device.answers = {{12, plain(true, 4)}};
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("waiting for UB1234567890"));
    terminal.type("\x04"); // Ctrl-D
    device.meet();
    QCOMPARE(terminal.waitForExit(), 0);
    QVERIFY(terminal.shown().contains("Z 4"));
    QVERIFY(terminal.isAsBefore());
}

void TestVelnoctlShell::ctrlCClearsAHalfTypedLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("at its end") << QByteArray("z-report") << QByteArray();
    QTest::newRow("in its middle") << QByteArray("z-report") << QByteArray("\x1b[D"); // the arrow left
    QTest::newRow("Turkish letters") << QByteArray("item 5 Çığ") << QByteArray();
    QTest::newRow("longer than a row") << "text " + QByteArray(200, 'x') + "yz" << QByteArray();
}

void TestVelnoctlShell::ctrlCClearsAHalfTypedLine()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, key);
    Device device;
    device.answers = {{12, plain(true, 4)}};
    device.meet();
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    QVERIFY(terminal.waitFor("velnoctl> "));
    // What velnoctl has not read the terminal forgets at Ctrl-C. From here on velnoctl shows what it has
    // read.
    QTRY_VERIFY_WITH_TIMEOUT(!terminal.isAsBefore(), longestWait);
    terminal.type(text);
    QVERIFY(terminal.waitFor(text.right(2)));
    terminal.type(key);
    QVERIFY(terminal.waitFor(key.isEmpty() ? "" : "\b"));
    terminal.type("\x03");
    QVERIFY(terminal.waitFor("^C"));
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("z\n");
    QVERIFY(terminal.waitFor("Z 4"));
    QVERIFY(terminal.waitFor("velnoctl> "));
    terminal.type("\x03"); // there is nothing to clear
    QCOMPARE(terminal.waitForExit(), 130);
    QCOMPARE(device.codes(), QList{12});
    QVERIFY(!terminal.shown().contains("is no command"));
    QVERIFY(terminal.isAsBefore());
}

void TestVelnoctlShell::ctrlCLeavesASilentRegister()
{
    Device device;
    device.isMute = true;
    device.answers = {{12, plain(true, 4)}};
    device.meet(2);
    Terminal terminal(Client::program(), target(device.port) + QStringList{u"shell"_s});
    terminal.type("z\n");
    QTRY_COMPARE_WITH_TIMEOUT(device.codes(), QList{12}, longestWait);
    terminal.type("\x03");
    QVERIFY(terminal.waitFor("velnoctl: z: interrupted while it was under way"));
    QVERIFY(terminal.waitFor("velnoctl> "));
    device.isMute = false;
    terminal.type("z\n"); // over a new connection
    QVERIFY(terminal.waitFor("Z 4"));
    terminal.type("quit\n");
    QCOMPARE(terminal.waitForExit(), 0);
    QCOMPARE(device.contacts, 4);
    QVERIFY(terminal.isAsBefore());
}

QTEST_GUILESS_MAIN(TestVelnoctlShell)
#include "tst_velnoctl_shell.moc"
