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

/** NULL for a null text, which is not the same as an empty one. */
const char *pointerTo(const QByteArray &text)
{
    return text.isNull() ? nullptr : text.constData();
}

} // namespace

/** What a slip is composed of, before a register sees it. */
class TestSlipTexts : public LibraryTest
{
    Q_OBJECT

private slots:
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
};

void TestSlipTexts::encodingsAreLookedUp_data()
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

void TestSlipTexts::encodingsAreLookedUp()
{
    QFETCH(const QByteArray, name);
    QFETCH(const int, result);
    library().errorDetail = 0x300; // of a call before
    QCOMPARE(velnoext_printer_set_encoding(pointerTo(name)), result);
    QTEST(velnoext_error_detail(), "detail");
    QCOMPARE(slip(), result == 0 ? QVector<QByteArray>{'@' + name} : QVector<QByteArray>());
    QCOMPARE(velnoext_printer_add_text("x", &plainStyle), result == 0 ? 0 : 8);
}

void TestSlipTexts::encodingMayChange()
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

void TestSlipTexts::textsAreChecked_data()
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

void TestSlipTexts::textsAreChecked()
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

void TestSlipTexts::textsStartWithTheirStyle_data()
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

void TestSlipTexts::textsStartWithTheirStyle()
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

void TestSlipTexts::textsAreTakenWhole_data()
{
    QTest::addColumn<QByteArray>("text");

    for (const int size : {1, 511, 512, 513, 5000})
        QTest::addRow("%d bytes", size) << QByteArray(size, 't');
    QTest::newRow("any bytes") << hex("FF80010A") + "@x";
}

void TestSlipTexts::textsAreTakenWhole()
{
    QFETCH(const QByteArray, text);
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_text(text.constData(), &plainStyle), 0);
    QCOMPARE(slip().last(), '\x04' + text);
}

void TestSlipTexts::justifiedTextsAreChecked_data()
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

void TestSlipTexts::justifiedTextsAreChecked()
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

void TestSlipTexts::justifiedTextsAreOneLine_data()
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

void TestSlipTexts::justifiedTextsAreOneLine()
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

void TestSlipTexts::lineFeedsComeInFives_data()
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

void TestSlipTexts::lineFeedsComeInFives()
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

void TestSlipTexts::lineFeedsNeedAnEncodingFirst_data()
{
    QTest::addColumn<unsigned int>("count");
    QTest::newRow("0") << 0U;
    QTest::newRow("20") << 20U;
    QTest::newRow("21") << 21U;
    QTest::newRow("most") << std::numeric_limits<unsigned int>::max();
}

void TestSlipTexts::lineFeedsNeedAnEncodingFirst()
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

QTEST_GUILESS_MAIN(TestSlipTexts)
#include "tst_slip_texts.moc"
