// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/velnoctl_client.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** Slips and raw bytes of velnoctl. */
class TestVelnoctlSlips : public QObject
{
    Q_OBJECT

private slots:
    void slipIsPrintedInItsEncoding_data();
    void slipIsPrintedInItsEncoding();
    void textsThatAnEncodingLacksAreRefused_data();
    void textsThatAnEncodingLacksAreRefused();
    void slipNeedsNoRegisterBeforeItIsPrinted();
    void nextSlipBeginsWithItsOwnEncoding();
    void rawBytesGoThere();
    void rawBytesComeBack();
    void lateAnswerToRawBytesIsNotTheNextCommands();
};

void TestVelnoctlSlips::slipIsPrintedInItsEncoding_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("UTF-8") << u"UTF-8"_s << QByteArray("A\u00C7I\u011EIZ");
    QTest::newRow("Windows") << u"windows-1254"_s << QByteArray("A\xC7I\xD0IZ");
    QTest::newRow("DOS") << u"IBM857"_s << QByteArray("A\x80I\xA6IZ");
}

void TestVelnoctlSlips::slipIsPrintedInItsEncoding()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, text);
    Device device;
    device.answers = {{13, yes}};
    device.meet();
    Client client(
        target(device.port) +
        QStringList{u"encoding"_s, name, u"text"_s, u"A\u00C7I\u011EIZ"_s, u"size=1"_s, u"style=ab"_s} +
        QStringList{u"text"_s, u"a"_s, u"justified"_s, u"Masa no"_s, u"A\u00C7I\u011EIZ"_s, u"style=b"_s,
                    u"feed"_s, u"6"_s, u"print"_s, u"flag=yes"_s});
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QCOMPARE(client.out, "texts of the slip in " + name.toLatin1() + "\n" +
                             QByteArray("added to the slip\n").repeated(4) + "slip printed\n");
    const QByteArray separator("__@\u00A3#$__");
    const QByteArray lines = plain(6, '@' + name.toLatin1(), QByteArray("\x0B") + text,
                                   QByteArray("\x04"
                                              "a"),
                                   "\x16" + QByteArray("Masa no") + separator + text,
                                   QByteArray("\x06\n\n\n\n\n"), QByteArray("\x06\n"));
    QCOMPARE(device.commands(), QList{plain(13, true, lines)});
}

void TestVelnoctlSlips::textsThatAnEncodingLacksAreRefused_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("a letter") << QStringList{u"ISO-8859-1"_s, u"text"_s, u"5 \u20BA"_s};
    QTest::newRow("at the left") << QStringList{u"ISO-8859-1"_s, u"justified"_s, u"5 \u20BA"_s, u"b"_s};
    QTest::newRow("at the right") << QStringList{u"ISO-8859-1"_s, u"justified"_s, u"b"_s, u"5 \u20BA"_s};
    QTest::newRow("zero bytes") << QStringList{u"UTF-16"_s, u"text"_s, u"5 \u20BA"_s};
}

void TestVelnoctlSlips::textsThatAnEncodingLacksAreRefused()
{
    QFETCH(const QStringList, words);
    for (const bool isJson : {false, true}) {
        Device device;
        device.meet();
        Client client(target(device.port) + (isJson ? QStringList{u"--json"_s} : QStringList()) +
                      QStringList{u"encoding"_s} + words + QStringList{u"print"_s});
        QCOMPARE(client.exitCode(), 64);
        QVERIFY2(client.err.contains("\"5 \u20BA\" cannot be written in " + words.first().toLatin1()),
                 client.err.constData());
        QCOMPARE(device.contacts, 0);
        if (isJson)
            QCOMPARE(object(client.out.split('\n').at(1)).value(u"result"_s).toString(), u"wrong-usage"_s);
    }
}

void TestVelnoctlSlips::slipNeedsNoRegisterBeforeItIsPrinted()
{
    Client client(target(freePort()) + wordsOf(u"encoding UTF-8 text a justified a b feed 20 feed 21"_s));
    QCOMPARE(client.exitCode(), 4);
    QVERIFY2(client.err.contains(velnoext_detail_text(0x413)), client.err.constData());
    QVERIFY(!client.err.contains("waiting"));
}

void TestVelnoctlSlips::nextSlipBeginsWithItsOwnEncoding()
{
    Device device;
    device.answers = {{13, yes}};
    device.meet();
    Client client(target(device.port) + wordsOf(u"encoding ISO-8859-1 text a print text \u20BA"_s));
    QCOMPARE(client.exitCode(), 8); // not that the letter cannot be written
    QCOMPARE(device.codes(), QList{13});
}

void TestVelnoctlSlips::rawBytesGoThere()
{
    Device device;
    device.answers = {{12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + wordsOf(u"--app 14242 send 0000000Cff"_s));
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QCOMPARE(client.out, "sent 5 bytes\n");
    QTRY_COMPARE_WITH_TIMEOUT(device.commands(), QList{QByteArray::fromHex("0000000CFF")}, longestWait);
}

void TestVelnoctlSlips::rawBytesComeBack()
{
    Device device;
    device.answers = {{12, plain(true, 4)}};
    device.meet();
    Client client(target(device.port) + wordsOf(u"--app 14242 --json run -"_s));
    client.say("z\n"); // the keys are there now
    QVERIFY(client.printed("\n"));
    const QByteArray frame = device.sealed(QByteArray::fromHex("00AB12"));
    client.say("get " + frame.toHex() + "\n");
    QVERIFY(client.printed("{\"code\":0,\"command\":\"get\",\"hex\":\"00AB12\",\"result\":\"success\"}\n"));
    QByteArray damaged = device.sealed("x");
    damaged[20] = char(damaged.at(20) ^ 1);
    client.say("get " + damaged.toHex() + "\n");
    QVERIFY2(client.exitCode() == 12, client.out + client.err);
}

void TestVelnoctlSlips::lateAnswerToRawBytesIsNotTheNextCommands()
{
    const QByteArray raw = QByteArray::fromHex("CAFE");
    Device device;
    // What it answers to the raw bytes comes late: with the answer to the command behind them.
    device.setAnswer([&device, raw](const QByteArray &payload) {
        const QByteArray four = HandMadeDevice::framed(device.sealed(plain(true, 4)));
        if (device.opened(payload) == raw)
            return QList{QByteArray()};
        const QByteArray late = HandMadeDevice::framed(device.sealed(plain(true, 99)));
        return device.contacts == 3 ? QList{late + four} : QList{four};
    });
    device.meet(2);
    Client client(target(device.port) + wordsOf(u"--app 14242 send CAFE send CAFE z z"_s));
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QCOMPARE(client.out, "sent 2 bytes\nsent 2 bytes\nZ 4\nZ 4\n");
    QCOMPARE(device.contacts, 4); // connected afresh once, and not paired again
    QVERIFY2(client.err.contains("(afresh, since what it answers to send"), client.err.constData());
}

QTEST_GUILESS_MAIN(TestVelnoctlSlips)
#include "tst_velnoctl_slips.moc"
