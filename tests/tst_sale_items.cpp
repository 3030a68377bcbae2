// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/sale.h"
#include "tests/support/library_test.h"
#include "tests/support/sale_calls.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <limits>

using namespace TestSupport;
using namespace Velno::Ext;

namespace {

constexpr quint64 anybody = 11111111111;
constexpr quint64 largestTotal = std::numeric_limits<quint64>::max();

} // namespace

/** Items and contributions: which are sent, which are refused. */
class TestSaleItems : public LibraryTest
{
    Q_OBJECT

private slots:
    void itemsAreChecked_data();
    void itemsAreChecked();
    void extremeItems_data();
    void extremeItems();
    void listsAreChecked_data();
    void listsAreChecked();
    void namesAreCut_data();
    void namesAreCut();
    void lineTotalsAreRounded_data();
    void lineTotalsAreRounded();
    void contributionsNeedAPerson_data();
    void contributionsNeedAPerson();
    void anyIndexIsSent_data();
    void anyIndexIsSent();
};

void TestSaleItems::itemsAreChecked_data()
{
    QTest::addColumn<VelnoSaleItem>("item");
    QTest::addColumn<int>("single"); // the details, 0 for none
    QTest::addColumn<int>("listed");

    VelnoSaleItem plainItem = {};
    plainItem.price = 1000;
    plainItem.quantity = 1000;
    plainItem.section = 1;
    const auto row = [plainItem](const char *name, auto change, int single, int listed) {
        VelnoSaleItem item = plainItem;
        change(item);
        QTest::newRow(name) << item << single << listed;
    };
    const auto both = [row](const char *name, auto change, int detail) { row(name, change, detail, detail); };
    using Item = VelnoSaleItem;
    both(
        "plain", [](Item &) {}, 0);
    both(
        "negative price", [](Item &item) { item.price = -1; }, 0);
    both(
        "section -128", [](Item &item) { item.section = -128; }, 0x406);
    both(
        "section -1", [](Item &item) { item.section = -1; }, 0x406);
    both(
        "section 0", [](Item &item) { item.section = 0; }, 0x406);
    both(
        "section 8", [](Item &item) { item.section = 8; }, 0);
    both(
        "section 9", [](Item &item) { item.section = 9; }, 0x406);
    both(
        "section 127", [](Item &item) { item.section = 127; }, 0x406);
    both(
        "percentage -100", [](Item &item) { item.percentage = -100; }, 0);
    both(
        "percentage -101", [](Item &item) { item.percentage = -101; }, 0x407);
    both(
        "lowest percentage", [](Item &item) { item.percentage = smallestInt; }, 0x407);
    both(
        "highest percentage", [](Item &item) { item.percentage = largestInt; }, 0);
    both(
        "amount 1", [](Item &item) { item.amount = 1; }, 0);
    both(
        "amount as the total", [](Item &item) { item.amount = 1000; }, 0);
    both(
        "amount above the total", [](Item &item) { item.amount = 1001; }, 0x408);
    both(
        "negative amount", [](Item &item) { item.amount = -1; }, 0x408);
    both(
        "amount with a percentage", [](Item &item) { item.amount = 9999, item.percentage = 1; }, 0);
    both(
        "negative amount with a percentage", [](Item &item) { item.amount = -1, item.percentage = -1; }, 0);
    both(
        "type 7", [](Item &item) { item.type = 7; }, 0);
    both(
        "type 8", [](Item &item) { item.type = 8; }, 0x409);
    both(
        "type -1", [](Item &item) { item.type = -1; }, 0x409);
    both(
        "lowest type", [](Item &item) { item.type = smallestInt; }, 0x409);
    both(
        "section before percentage", [](Item &item) { item.section = 0, item.percentage = -101; }, 0x406);
    both(
        "percentage before type", [](Item &item) { item.percentage = -101, item.type = 8; }, 0x407);
    both(
        "amount before type", [](Item &item) { item.amount = 1001, item.type = 8; }, 0x408);
    both(
        "section before amount", [](Item &item) { item.section = 9, item.amount = 1001; }, 0x406);
    row(
        "no price", [](Item &item) { item.price = 0; }, 0, 0x405);
    row(
        "no price, no section", [](Item &item) { item.price = 0, item.section = 0; }, 0, 0x405);
    row(
        "no price, any amount", [](Item &item) { item.price = 0, item.amount = -5; }, 0, 0x405);
    row(
        "no price, percentage", [](Item &item) { item.price = 0, item.percentage = -101, item.type = 8; },
        0x407, 0x405);
    row(
        "no price, type", [](Item &item) { item.price = 0, item.type = 8; }, 0x409, 0x405);
}

void TestSaleItems::itemsAreChecked()
{
    QFETCH(VelnoSaleItem, item);
    QFETCH(const int, single);
    QFETCH(const int, listed);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale() + someTotals());
    const QByteArray bytes = plain(qint64(item.price), item.quantity, item.percentage, qint64(item.amount),
                                   qint8(item.section), QByteArray(""), item.type);
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), single == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), single);
    QCOMPARE(device.commands(), single == 0 ? QList{plain(4) + bytes} : QList<QByteArray>());
    QCOMPARE(out.untouched(), single != 0);

    Outputs listOut;
    device.forgetCommands();
    VelnoSaleItemList list = listOf({goodItem(), item, goodItem()});
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &listOut.totals), listed == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), listed);
    const QByteArray request = plain(16, qint16(3)) + goodItemBytes() + bytes + goodItemBytes();
    QCOMPARE(device.commands(), listed == 0 ? QList{request} : QList<QByteArray>());
    QCOMPARE(listOut.untouched(), listed != 0);
}

void TestSaleItems::extremeItems_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<bool>("passes");

    const auto row = [](const char *name, qint64 price, qint32 quantity, qint64 amount, bool passes) {
        QTest::newRow(name) << price << quantity << amount << passes;
    };
    row("largest price", largest, 1000, largest, true);
    row("largest price, negative amount", largest, 1000, -1, false);
    row("largest price, smallest amount", largest, 1000, smallest, false);
    row("largest of both", largest, largestInt, largest, true);
    row("largest price, smallest quantity", largest, smallestInt, 1, false);
    row("largest price, smallest quantity, no amount", largest, smallestInt, 0, true);
    row("smallest price, largest quantity", smallest, largestInt, largest, false);
    row("smallest of both", smallest, smallestInt, largest, true);
    row("smallest price", smallest, 1000, 1, false);
    row("smallest price, as its amount", smallest, 1000, smallest, false);
    row("negative total", 100, -1000, 1, false);
    row("negative total, negative amount", 100, -1000, -150, false);
    // Read without their signs these amounts fit.
    row("2^64 - 2, negative amount", largest, 2000, -2, false);
    row("far beyond 2^64, negative amount", largest, largestInt, -1, false);
    row("far beyond 2^64, smallest amount", smallest, smallestInt, smallest, false);
    row("no quantity", largest, 0, 1, false);
    row("less than half", 1, 499, 1, false);
    row("half", 1, 500, 1, true);
}

void TestSaleItems::extremeItems()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    QFETCH(const qint64, amount);
    QFETCH(const bool, passes);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale() + someTotals());
    VelnoSaleItem item = {};
    item.price = price;
    item.quantity = quantity;
    item.amount = amount;
    item.section = 1;
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), passes ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), passes ? 0 : 0x408);
    const QByteArray request = plain(4, price, quantity, 0, amount, qint8(1), QByteArray(""), 0);
    QCOMPARE(device.commands(), passes ? QList{request} : QList<QByteArray>());
}

void TestSaleItems::listsAreChecked_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("faulty"); // index of an item that has every fault
    QTest::addColumn<int>("detail");

    QTest::newRow("0") << 0 << -1 << 0x40A;
    QTest::newRow("1") << 1 << -1 << 0;
    QTest::newRow("10") << 10 << -1 << 0;
    QTest::newRow("11") << 11 << -1 << 0x40A;
    QTest::newRow("65535") << 65535 << -1 << 0x40A;
    QTest::newRow("count before items") << 11 << 0 << 0x40A;
    QTest::newRow("first item") << 10 << 0 << 0x405;
    QTest::newRow("last item") << 10 << 9 << 0x405;
    QTest::newRow("item behind the count") << 9 << 9 << 0;
}

void TestSaleItems::listsAreChecked()
{
    QFETCH(const int, count);
    QFETCH(const int, faulty);
    QFETCH(const int, detail);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale() + someTotals());
    VelnoSaleItemList list = listOf(QList<VelnoSaleItem>(10, goodItem()));
    list.count = quint16(count);
    if (faulty >= 0)
        list.items[faulty] = {0, 0, -101, 0, "", 0, -1};
    Outputs out;
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &out.totals), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    QCOMPARE(out.untouched(), detail != 0);
    if (detail == 0)
        QCOMPARE(device.commands(), QList{plain(16, qint16(count)) + goodItemBytes().repeated(count)});
    else
        QVERIFY(device.commands().isEmpty());
}

void TestSaleItems::namesAreCut_data()
{
    QTest::addColumn<QByteArray>("storage");
    QTest::addColumn<QByteArray>("sent");

    const QByteArray letters(53, 'n');
    QTest::newRow("empty") << QByteArray() << hex("00000000");
    QTest::newRow("short") << QByteArray("a") << hex("0000000161");
    QTest::newRow("52 and a zero") << letters.first(52) << hex("00000034") + letters.first(52);
    QTest::newRow("no zero") << letters << hex("00000034") + letters.first(52);
    QTest::newRow("behind a zero") << QByteArray("ab\0cd", 5) << hex("000000026162");
    QTest::newRow("any bytes") << hex("FF80C59E") << hex("00000004FF80C59E");
}

void TestSaleItems::namesAreCut()
{
    QFETCH(const QByteArray, storage);
    QFETCH(const QByteArray, sent);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale() + someTotals());
    VelnoSaleItem item = {};
    item.section = -1; // would show if a name were read on into its neighbour
    std::copy(storage.cbegin(), storage.cend(), item.name);
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), 0);
    QCOMPARE(device.commands(), QList{plain(4, qint64(0), 0, 0, qint64(0), qint8(-1)) + sent + plain(0)});
}

void TestSaleItems::lineTotalsAreRounded_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");
    QTest::addColumn<quint64>("total");

    const auto row = [](const char *name, qint64 price, qint32 quantity, quint64 total) {
        QTest::newRow(name) << price << quantity << total;
    };
    row("whole", 1250, 2000, 2500);
    row("nothing", 0, 1000, 0);
    row("no quantity", 1250, 0, 0);
    row("below half", 1, 499, 0);
    row("half", 1, 500, 1);
    row("half above an even number", 5, 500, 3);
    row("just below half", 3, 1499, 4);
    row("two negatives", -1250, -2000, 2500);
    row("negative", -1, 1000, 0);
    row("negative half", -1, 500, 0);
    // Numbers of which double precision would lose the last bits.
    row("half of the largest", largest, 500, quint64(1) << 62);
    row("largest", largest, 1000, quint64(largest));
    // Adding a half to an odd number beyond 2^63 has no bit left for the half.
    row("odd beyond 2^63", (qint64(1) << 62) + 1, 2000, (quint64(1) << 63) + 2);
    row("2^64 - 2", largest, 2000, largestTotal - 1);
    row("beyond 2^64", largest, 2001, largestTotal);
    row("far beyond", largest, largestInt, largestTotal);
    row("far below", largest, smallestInt, 0);
    row("smallest of both", smallest, smallestInt, largestTotal);
}

void TestSaleItems::lineTotalsAreRounded()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    VelnoSaleItem item = {};
    item.price = price;
    item.quantity = quantity;
    QTEST(lineTotal(item), "total");
}

void TestSaleItems::contributionsNeedAPerson_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<quint64>("identityNo");
    QTest::addColumn<QByteArray>("sent"); // empty: refused

    const QByteArray head = hex("00000009");
    const auto row = [](const char *name, qint64 amount, quint64 identityNo, const QByteArray &sent) {
        QTest::newRow(name) << amount << identityNo << sent;
    };
    row("nobody needed", 0, 5, head + hex("0000000000000000"));
    row("person", 1, 10000000146, head + plain(qint64(1), qint64(10000000146)));
    row("anybody", largest, anybody, head + plain(largest, qint64(anybody)));
    row("negative amount", -1, anybody, head + plain(qint64(-1), qint64(anybody)));
    row("no number", 1, 0, {});
    row("10 digits", 1, 1111111111, {});
    row("check digit", 1, 10000000147, {});
    row("nearly anybody", 1, 11111111112, {});
    row("12 digits", 1, 111111111111, {});
    row("negative amount without person", -1, 1, {});
    row("largest", 1, largestTotal, {});
    row("10000000146 modulo 2^63", 1, (quint64(1) << 63) + 10000000146, {});
}

void TestSaleItems::contributionsNeedAPerson()
{
    QFETCH(const qint64, amount);
    QFETCH(const quint64, identityNo);
    QFETCH(const QByteArray, sent);
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), 1);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale());
    const bool refused = sent.isEmpty();
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), refused ? 4 : 0);
    QCOMPARE(velnoext_error_detail(), refused ? 0x403 : 0);
    QCOMPARE(device.commands(), refused ? QList<QByteArray>() : QList{sent});
    closeConnection();
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), 2);
}

void TestSaleItems::anyIndexIsSent_data()
{
    QTest::addColumn<int>("index");
    for (const int index : {smallestInt, -1, 0, 1, largestInt})
        QTest::addRow("%d", index) << index;
}

void TestSaleItems::anyIndexIsSent()
{
    QFETCH(const int, index);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + openSale() + someTotals());
    Outputs out;
    QCOMPARE(velnoext_delete_sale_item(patience, index, &out.totals), 0);
    QCOMPARE(device.commands(), QList{plain(5, index)});
}

QTEST_GUILESS_MAIN(TestSaleItems)
#include "tst_sale_items.moc"
