#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/printing.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <cstring>
#include <limits>

using namespace Velno::Ext;
using namespace TestSupport;

namespace {

constexpr int largestInt = std::numeric_limits<int>::max();
constexpr int smallestInt = std::numeric_limits<int>::min();

VelnoTextStyle plainStyle = {0, 0, 0};

/** NULL for a null text, which is not the same as an empty one. */
const char *pointerTo(const QByteArray &text)
{
    return text.isNull() ? nullptr : text.constData();
}

QVector<QByteArray> slip()
{
    return library().slipContent;
}

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

class TestPrinting : public LibraryTest
{
    Q_OBJECT

private slots:
    void structureHasItsLayout();
    void encodingsAreLookedUp_data();
    void encodingsAreLookedUp();
    void encodingMayChange();
    void textsAreChecked_data();
    void textsAreChecked();
    void textsStartWithTheirStyle_data();
    void textsStartWithTheirStyle();
    void textsAreTakenWhole_data();
    void textsAreTakenWhole();
    void justifiedTextsAreChecked_data();
    void justifiedTextsAreChecked();
    void justifiedTextsAreOneLine_data();
    void justifiedTextsAreOneLine();
    void lineFeedsComeInFives_data();
    void lineFeedsComeInFives();
    void lineFeedsNeedAnEncodingFirst_data();
    void lineFeedsNeedAnEncodingFirst();
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

void TestPrinting::encodingsAreLookedUp_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    for (const char *const known : {"UTF-8", "utf-8", "windows-1254", "ISO-8859-9", "UTF-16LE", "latin1"})
        QTest::newRow(known) << QByteArray(known) << 0 << 0;
    QTest::newRow("NULL") << QByteArray() << 3 << 0x30D;
    QTest::newRow("empty") << QByteArray("") << 4 << 0x411;
    QTest::newRow("unknown") << QByteArray("velno-1") << 4 << 0x411;
    QTest::newRow("very long") << QByteArray(100'000, 'U') << 4 << 0x411;
}

void TestPrinting::encodingsAreLookedUp()
{
    QFETCH(const QByteArray, name);
    QFETCH(const int, result);
    library().errorDetail = 0x300; // of a call before
    QCOMPARE(velnoext_printer_set_encoding(pointerTo(name)), result);
    QTEST(velnoext_error_detail(), "detail");
    QCOMPARE(slip(), result == 0 ? QVector<QByteArray>{'@' + name} : QVector<QByteArray>());
    QCOMPARE(velnoext_printer_add_text("x", &plainStyle), result == 0 ? 0 : 8);
}

void TestPrinting::encodingMayChange()
{
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text("a", &plainStyle), 0);
    QCOMPARE(velnoext_printer_set_encoding("velno-1"), 4); // the one before stays
    QCOMPARE(velnoext_printer_add_text("b", &plainStyle), 0);
    QCOMPARE(velnoext_printer_set_encoding("windows-1254"), 0);
    QCOMPARE(slip(), (QVector<QByteArray>{"@UTF-8",
                                          "\x04"
                                          "a",
                                          "\x04"
                                          "b",
                                          "@windows-1254"}));
}

void TestPrinting::textsAreChecked_data()
{
    QTest::addColumn<bool>("encoded");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("styled");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    const QByteArray none; // becomes NULL
    for (const bool encoded : {false, true}) {
        const auto row = [encoded](const char *name, const QByteArray &text, bool styled, int result,
                                   int detail) {
            QTest::addRow("%s%s", name, encoded ? "" : ", no encoding")
                << encoded << text << styled << result << detail;
        };
        row("good", "a", true, encoded ? 0 : 8, 0);
        row("no text", none, true, 3, 0x30E);
        row("empty text", "", true, 3, 0x30E);
        row("no style", "a", false, 3, 0x30F);
        row("neither", none, false, 3, 0x30E);
        row("empty text and no style", "", false, 3, 0x30E);
    }
}

void TestPrinting::textsAreChecked()
{
    QFETCH(const bool, encoded);
    QFETCH(const QByteArray, text);
    QFETCH(const bool, styled);
    QFETCH(const int, result);
    if (encoded)
        QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    const QVector<QByteArray> before = slip();
    library().errorDetail = 0x300;
    QCOMPARE(velnoext_printer_add_text(pointerTo(text), styled ? &plainStyle : nullptr), result);
    QTEST(velnoext_error_detail(), "detail");
    QCOMPARE(slip().size(), before.size() + (result == 0 ? 1 : 0));
}

void TestPrinting::textsStartWithTheirStyle_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("styleA");
    QTest::addColumn<int>("styleB");
    QTest::addColumn<int>("attribute");

    const auto row = [](int size, int styleA, int styleB, int attribute) {
        QTest::addRow("%d %d %d", size, styleA, styleB) << size << styleA << styleB << attribute;
    };
    row(0, 0, 0, 4);
    row(0, 1, 0, 5);
    row(0, 0, 1, 6);
    row(0, 1, 1, 7);
    row(0, 255, 128, 7);
    row(1, 0, 0, 8);
    row(2, 1, 0, 17);
    row(5, 1, 1, 131);
    row(6, 1, 0, 1); // cut to 8 bits
    row(29, 0, 0, 0);
    row(30, 0, 1, 2);
    row(31, 0, 0, 0);
    row(32, 0, 0, 4); // the shift begins again
    row(34, 0, 0, 16);
    row(-1, 0, 0, 0);
    row(-32, 0, 0, 4);
    row(largestInt, 1, 1, 3);
    row(smallestInt, 1, 1, 7);
}

void TestPrinting::textsStartWithTheirStyle()
{
    QFETCH(const int, size);
    QFETCH(const int, styleA);
    QFETCH(const int, styleB);
    QFETCH(const int, attribute);
    VelnoTextStyle style = {size, static_cast<unsigned char>(styleA), static_cast<unsigned char>(styleB)};
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text("a", &style), 0);
    QCOMPARE(slip().last(), char(attribute) + QByteArray("a"));
}

void TestPrinting::textsAreTakenWhole_data()
{
    QTest::addColumn<QByteArray>("text");

    for (const int size : {1, 511, 512, 513, 5000})
        QTest::addRow("%d bytes", size) << QByteArray(size, 't');
    QTest::newRow("any bytes") << hex("FF80010A") + "@x";
}

void TestPrinting::textsAreTakenWhole()
{
    QFETCH(const QByteArray, text);
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text(text.constData(), &plainStyle), 0);
    QCOMPARE(slip().last(), '\x04' + text);
}

void TestPrinting::justifiedTextsAreChecked_data()
{
    QTest::addColumn<bool>("encoded");
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QByteArray>("right");
    QTest::addColumn<bool>("styled");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    const QByteArray none; // becomes NULL
    for (const bool encoded : {false, true}) {
        const auto row = [encoded](const char *name, const QByteArray &left, const QByteArray &right,
                                   bool styled, int result, int detail) {
            QTest::addRow("%s%s", name, encoded ? "" : ", no encoding")
                << encoded << left << right << styled << result << detail;
        };
        row("good", "a", "b", true, encoded ? 0 : 8, 0);
        row("no left", none, "b", true, 3, 0x30E);
        row("empty left", "", "b", true, 3, 0x30E);
        row("no right", "a", none, true, 3, 0x30E);
        row("empty right", "a", "", true, 3, 0x30E);
        row("no style", "a", "b", false, 3, 0x30F);
        row("nothing", none, none, false, 3, 0x30E);
        row("empty right and no style", "a", "", false, 3, 0x30E);
    }
}

void TestPrinting::justifiedTextsAreChecked()
{
    QFETCH(const bool, encoded);
    QFETCH(const QByteArray, left);
    QFETCH(const QByteArray, right);
    QFETCH(const bool, styled);
    QFETCH(const int, result);
    if (encoded)
        QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    const QVector<QByteArray> before = slip();
    library().errorDetail = 0x300;
    QCOMPARE(velnoext_printer_add_justified_text(pointerTo(left), pointerTo(right),
                                                 styled ? &plainStyle : nullptr),
             result);
    QTEST(velnoext_error_detail(), "detail");
    QCOMPARE(slip().size(), before.size() + (result == 0 ? 1 : 0));
}

void TestPrinting::justifiedTextsAreOneLine_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("styleA");
    QTest::addColumn<int>("styleB");
    QTest::addColumn<QByteArray>("line");

    const QByteArray rest = "A" + hex("5F5F 40 C2A3 23 24 5F5F") + "B";
    QTest::newRow("plain") << 0 << 0 << 0 << hex("14") + rest;
    QTest::newRow("A") << 0 << 1 << 0 << hex("15") + rest;
    QTest::newRow("B") << 0 << 0 << 1 << hex("16") + rest;
    QTest::newRow("both") << 0 << 255 << 2 << hex("17") + rest;
    QTest::newRow("size does not matter") << 3 << 0 << 0 << hex("14") + rest;
    QTest::newRow("nor a mad one") << smallestInt << 1 << 1 << hex("17") + rest;
}

void TestPrinting::justifiedTextsAreOneLine()
{
    QFETCH(const int, size);
    QFETCH(const int, styleA);
    QFETCH(const int, styleB);
    QFETCH(const QByteArray, line);
    VelnoTextStyle style = {size, static_cast<unsigned char>(styleA), static_cast<unsigned char>(styleB)};
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_justified_text("A", "B", &style), 0);
    QCOMPARE(slip(), (QVector<QByteArray>{"@UTF-8", line}));
}

void TestPrinting::lineFeedsComeInFives_data()
{
    QTest::addColumn<unsigned int>("count");
    QTest::addColumn<QVector<int>>("texts"); // how many line feeds each has

    QTest::newRow("0") << 0U << QVector<int>{};
    QTest::newRow("1") << 1U << QVector<int>{1};
    QTest::newRow("5") << 5U << QVector<int>{5};
    QTest::newRow("6") << 6U << QVector<int>{5, 1};
    QTest::newRow("12") << 12U << QVector<int>{5, 5, 2};
    QTest::newRow("20") << 20U << QVector<int>{5, 5, 5, 5};
}

void TestPrinting::lineFeedsComeInFives()
{
    QFETCH(const unsigned int, count);
    QFETCH(const QVector<int>, texts);
    QVector<QByteArray> lines{"@UTF-8"};
    for (const int feeds : texts)
        lines << '\x06' + QByteArray(feeds, '\n');
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    library().errorDetail = 0x300;
    QCOMPARE(velnoext_printer_add_line_feed(count), 0);
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(slip(), lines);
}

void TestPrinting::lineFeedsNeedAnEncodingFirst_data()
{
    QTest::addColumn<unsigned int>("count");
    QTest::newRow("0") << 0U;
    QTest::newRow("20") << 20U;
    QTest::newRow("21") << 21U;
    QTest::newRow("most") << std::numeric_limits<unsigned int>::max();
}

void TestPrinting::lineFeedsNeedAnEncodingFirst()
{
    QFETCH(const unsigned int, count);
    QCOMPARE(velnoext_printer_add_line_feed(count), 8);
    QCOMPARE(velnoext_error_detail(), 0);
    QVERIFY(slip().isEmpty());
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_line_feed(count), count > 20 ? 4 : 0);
    QCOMPARE(velnoext_error_detail(), count > 20 ? 0x413 : 0);
    QCOMPARE(slip().size(), count == 20 ? 5 : 1);
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
