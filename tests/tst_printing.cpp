// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <limits>

using namespace TestSupport;
using namespace Velno::Ext;

namespace {

constexpr int largestInt = std::numeric_limits<int>::max();
constexpr int smallestInt = std::numeric_limits<int>::min();

/** A slip of an encoding and one text, and the request that prints it. */
void composeSlip()
{
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text("ab", &plainStyle), 0);
}

QByteArray slipRequest(bool flag)
{
    return hex("0000000D") + plain(flag) + hex("00000015 00000002 00000006 405554462D38 00000003 046162");
}

bool slipIsGone()
{
    return slip().isEmpty() && velnoext_printer_add_text("x", &plainStyle) == 8;
}

struct Report
{
    const char *name;
    int (*run)();
    QByteArray request;
};

const Report reports[] = {{"X", velnoext_x_report, hex("0000000B00")},
                          {"Z", velnoext_z_report, hex("0000000B01")}};

} // namespace

/** Slips and reports on their way to the printer. */
class TestPrinting : public LibraryTest
{
    Q_OBJECT

private slots:
    void structureHasItsLayout();
    void slipsArePrinted_data();
    void slipsArePrinted();
    void everyKindOfLineIsPrinted();
    void slipsStayWhileThereIsNoConnection();
    void slipsAreGoneOnceSent_data();
    void slipsAreGoneOnceSent();
    void hugeSlipsAreNotSent();
    void slipsOutliveTheirConnection();
    void reportsArePrinted_data();
    void reportsArePrinted();
    void reportsNeedAState_data();
    void reportsNeedAState();
    void reportsFailAsCommandsDo_data();
    void reportsFailAsCommandsDo();
};

void TestPrinting::structureHasItsLayout()
{
    QCOMPARE(sizeof(VelnoTextStyle), size_t(8));
    QCOMPARE(offsetof(VelnoTextStyle, size), size_t(0));
    QCOMPARE(offsetof(VelnoTextStyle, styleA), size_t(4));
    QCOMPARE(offsetof(VelnoTextStyle, styleB), size_t(5));
}

void TestPrinting::slipsArePrinted_data()
{
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");

    QTest::newRow("printed") << false << plain(true) << 0;
    QTest::newRow("printed with the flag") << true << plain(true) << 0;
    QTest::newRow("more than is read") << true << plain(true, 5) << 0;
    QTest::newRow("refused") << false << plain(false) << 8;
}

void TestPrinting::slipsArePrinted()
{
    QFETCH(const bool, flag);
    QFETCH(const QByteArray, reply);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    composeSlip();
    QTEST(velnoext_print_slip(patience, flag), "result");
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands(), QList{slipRequest(flag)});
    QVERIFY(slipIsGone());
    device.forgetCommands();
    QCOMPARE(velnoext_print_slip(patience, flag), reply.startsWith('\x01') ? 0 : 8);
    QCOMPARE(device.commands(), QList{plain(13, flag) + hex("00000004 00000000")}); // a slip of no lines
}

void TestPrinting::everyKindOfLineIsPrinted()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    VelnoTextStyle bold = {1, 1, 0};
    QCOMPARE(velnoext_printer_set_encoding("ISO-8859-9"), 0);
    QCOMPARE(velnoext_printer_add_text("Fi\xFE", &bold), 0);
    QCOMPARE(velnoext_printer_add_justified_text("Masa", "7", &bold), 0);
    QCOMPARE(velnoext_printer_add_line_feed(6), 0);
    QCOMPARE(velnoext_print_slip(patience, true), 0);
    const QByteArray lines = hex("00000005"
                                 "0000000B 4049534F2D383835392D39"
                                 "00000004 09 4669FE"
                                 "0000000F 15 4D617361 5F5F40C2A323245F5F 37"
                                 "00000006 06 0A0A0A0A0A"
                                 "00000002 06 0A");
    QCOMPARE(device.commands(), QList{plain(13, true, lines)});
}

void TestPrinting::slipsStayWhileThereIsNoConnection()
{
    composeSlip();
    const QVector<QByteArray> composed = slip();
    QCOMPARE(velnoext_print_slip(patience, false), 1);
    QCOMPARE(slip(), composed);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    library().activeDevice = otherSerial;
    QCOMPARE(velnoext_print_slip(patience, false), 1);
    library().activeDevice = serial;
    closeConnection(); // and stays active
    QCOMPARE(velnoext_print_slip(patience, false), 2);
    QCOMPARE(slip(), composed);
    QCOMPARE(velnoext_printer_add_line_feed(0), 0); // the encoding stays too
    device.stop();
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_print_slip(patience, false), 0);
    QCOMPARE(device.commands(), QList{slipRequest(false)});
}

void TestPrinting::slipsAreGoneOnceSent_data()
{
    QTest::addColumn<QList<QByteArray>>("frames");
    QTest::addColumn<int>("result");

    for (const BrokenAnswer &broken : brokenAnswers(plain(true)))
        QTest::newRow(broken.name) << broken.frames << broken.result;
}

void TestPrinting::slipsAreGoneOnceSent()
{
    QFETCH(const QList<QByteArray>, frames);
    const LogCapture capture;
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([frames](const QByteArray &) { return frames; });
    composeSlip();
    QTEST(velnoext_print_slip(patience, false), "result");
    QVERIFY(slipIsGone());
    QCOMPARE(velnoext_printer_add_line_feed(1), 8);
    QCOMPARE(velnoext_printer_add_justified_text("a", "b", &plainStyle), 8);
    QVERIFY(slip().isEmpty());
    if (!frames.isEmpty())
        return;
    composeSlip();
    QCOMPARE(velnoext_print_slip(patience, false), 2); // the connection is listed, but it is closed
    QVERIFY(library().connections.contains(serial));
    QVERIFY(slipIsGone());
}

void TestPrinting::hugeSlipsAreNotSent()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    const QByteArray text(70'000, 't');
    QCOMPARE(velnoext_printer_add_text(text.constData(), &plainStyle), 0);
    QCOMPARE(velnoext_print_slip(patience, false), 11);
    QVERIFY(slipIsGone());
    QVERIFY(device.commands().isEmpty());
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text(text.first(65'000).constData(), &plainStyle), 0);
    QCOMPARE(velnoext_print_slip(patience, false), 0);
    QCOMPARE(device.commands().size(), 1);
    QCOMPARE(device.commands().constFirst().size(), 4 + 1 + 4 + 4 + 4 + 6 + 4 + 65'001);
}

void TestPrinting::slipsOutliveTheirConnection()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    composeSlip();
    velnoext_close_all();
    device.stop();
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_print_slip(patience, true), 0);
    QCOMPARE(device.commands(), QList{slipRequest(true)});
}

void TestPrinting::reportsArePrinted_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("forX");
    QTest::newRow("idle") << 1 << true;
    QTest::newRow("idle, other screen") << 7 << true;
    for (const int state : {smallestInt, -1, 0, 2, 5, 6, 8, largestInt})
        QTest::addRow("state %d", state) << state << false;
}

void TestPrinting::reportsArePrinted()
{
    QFETCH(const int, state);
    QFETCH(const bool, forX);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const Report &report : reports) {
        const bool printed = forX || report.run == velnoext_z_report;
        library().errorDetail = 0x300;
        for (const bool accepted : {true, false}) {
            device.forgetCommands();
            device.answerInTurn({plain(state, QVector<int>{3}), plain(accepted)});
            QCOMPARE(report.run(), printed ? (accepted ? 0 : 8) : 6);
            QCOMPARE(velnoext_error_detail(), 0);
            const QList<QByteArray> asked{plain(0)};
            QCOMPARE(device.commands(), printed ? asked + QList{report.request} : asked);
        }
    }
}

void TestPrinting::reportsNeedAState_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("no list") << plain(1);
    QTest::newRow("cut list") << plain(1, 2, 7);
    QTest::newRow("announced list") << plain(1, 0xFFFFFFFFU, 7);
    QTest::newRow("cut state") << hex("000001");
}

void TestPrinting::reportsNeedAState()
{
    QFETCH(const QByteArray, state);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(state);
    for (const Report &report : reports)
        QCOMPARE(report.run(), 5);
    QCOMPARE(device.commands(), (QList{plain(0), plain(0)}));
}

void TestPrinting::reportsFailAsCommandsDo_data()
{
    QTest::addColumn<bool>("behindTheState");
    QTest::addColumn<QList<QByteArray>>("frames");
    QTest::addColumn<int>("result");

    for (const bool behind : {false, true}) {
        const QByteArray reply = behind ? plain(true) : plain(1, QVector<int>());
        for (const BrokenAnswer &broken : brokenAnswers(reply))
            QTest::addRow("%s%s", broken.name, behind ? " at last" : "")
                << behind << broken.frames << broken.result;
    }
}

void TestPrinting::reportsFailAsCommandsDo()
{
    QFETCH(const bool, behindTheState);
    QFETCH(const QList<QByteArray>, frames);
    QFETCH(const int, result);
    const LogCapture capture;
    for (const Report &report : reports) {
        QCOMPARE(report.run(), 1);
        HandMadeDevice device;
        QCOMPARE(connectPaired(device), 0);
        const QByteArray idle = HandMadeDevice::framed(device.sealed(plain(1, QVector<int>())));
        device.setAnswer([&device, behindTheState, frames, idle](const QByteArray &payload) {
            return behindTheState && device.opened(payload) == plain(0) ? QList{idle} : frames;
        });
        QCOMPARE(report.run(), result);
        closeConnection();
        QCOMPARE(report.run(), 2);
        velnoext_close();
        library().pairingRecords.clear();
    }
}

QTEST_GUILESS_MAIN(TestPrinting)
#include "tst_printing.moc"
