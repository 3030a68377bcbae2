// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/day_totals.h"
#include "simulator/fiscal/money.h"
#include "simulator/fiscal/sections.h"
#include "tests/support/till_at_hand.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** What the simulated register counts: money, lines, payments, and that the sums of all of them agree. */
class TestSaleModel : public QObject
{
    Q_OBJECT

private slots:
    void lineTotalsRoundHalfUp_data();
    void lineTotalsRoundHalfUp();
    void hostileNumbersHaveNoLineTotal_data();
    void hostileNumbersHaveNoLineTotal();
    void percentagesRoundAwayFromZero_data();
    void percentagesRoundAwayFromZero();
    void taxIsContained_data();
    void taxIsContained();
    void moneyIsWrittenTheTurkishWay_data();
    void moneyIsWrittenTheTurkishWay();
    void sectionNamesFitAnApplication();
    void theManualShowsSectionsAndUnits();
    void itemsAreAdjusted_data();
    void itemsAreAdjusted();
    void itemsAreRefusedAndChangeNothing_data();
    void itemsAreRefusedAndChangeNothing();
    void severalItemsAreAllOrNothing();
    void linesAreBounded();
    void namesAreReadAsTheyWereMeant_data();
    void namesAreReadAsTheyWereMeant();
    void deletedLinesKeepTheirPlace();
    void theMedicalContributionIsTaxFree();
    void theMedicalContributionIsChecked_data();
    void theMedicalContributionIsChecked();
    void paymentsAreChecked_data();
    void paymentsAreChecked();
    void paymentsAreBoundedButTheRestIsTaken();
    void itemsStayAsTheyAreOncePaid();
    void theSaleLimitHolds();
    void randomSalesAddUp();
};

namespace {

constexpr qint64 longest = std::numeric_limits<qint64>::max();
constexpr qint64 lowest = std::numeric_limits<qint64>::min();
constexpr qint32 mostInt = std::numeric_limits<qint32>::max();
constexpr qint32 leastInt = std::numeric_limits<qint32>::min();
constexpr qint64 patient = 11'111'111'111;

/** One item that costs so much. */
Sale saleOf(qint64 amount, qint64 limit = 0)
{
    Sale sale(limit);
    sale.add({{amount, 1000, 0, 0, 3, "Su", 0}});
    return sale;
}

} // namespace

void TestSaleModel::lineTotalsRoundHalfUp_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");
    QTest::addColumn<qint64>("total");

    QTest::newRow("one unit") << qint64(1250) << 1000 << qint64(1250);
    QTest::newRow("below the half") << qint64(1) << 499 << qint64(0);
    QTest::newRow("the half") << qint64(1) << 500 << qint64(1);
    QTest::newRow("one and the half") << qint64(1) << 1500 << qint64(2);
    QTest::newRow("weighed") << qint64(3999) << 1234 << qint64(4935);
    QTest::newRow("for nothing") << qint64(0) << 1000 << qint64(0);
    QTest::newRow("largest amount") << largestAmount << 1000 << largestAmount;
    QTest::newRow("largest quantity") << qint64(1) << largestQuantity << qint64(100000);
}

void TestSaleModel::lineTotalsRoundHalfUp()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    QFETCH(const qint64, total);
    QCOMPARE(lineTotal(price, quantity), std::optional(total));
}

void TestSaleModel::hostileNumbersHaveNoLineTotal_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");

    QTest::newRow("highest price") << longest << 1000;
    QTest::newRow("lowest price") << lowest << 1000;
    QTest::newRow("negative price") << qint64(-1) << 1000;
    QTest::newRow("price too high") << largestAmount + 1 << 1;
    QTest::newRow("no quantity") << qint64(1) << 0;
    QTest::newRow("negative quantity") << qint64(1) << -1;
    QTest::newRow("lowest quantity") << qint64(1) << leastInt;
    QTest::newRow("quantity too high") << qint64(1) << largestQuantity + 1;
    QTest::newRow("highest quantity") << qint64(1) << mostInt;
    QTest::newRow("total too high") << largestAmount << 1001;
    QTest::newRow("all at their highest") << largestAmount << largestQuantity;
}

void TestSaleModel::hostileNumbersHaveNoLineTotal()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    QCOMPARE(lineTotal(price, quantity), std::nullopt);
}

void TestSaleModel::percentagesRoundAwayFromZero_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<int>("percentage");
    QTest::addColumn<qint64>("share");

    QTest::newRow("discount") << qint64(1000) << -10 << qint64(-100);
    QTest::newRow("surcharge") << qint64(1000) << 10 << qint64(100);
    QTest::newRow("half of a discount") << qint64(50) << -1 << qint64(-1);
    QTest::newRow("half of a surcharge") << qint64(50) << 1 << qint64(1);
    QTest::newRow("below the half") << qint64(49) << -1 << qint64(0);
    QTest::newRow("all of the largest") << largestAmount << -100 << -largestAmount;
}

void TestSaleModel::percentagesRoundAwayFromZero()
{
    QFETCH(const qint64, amount);
    QFETCH(const int, percentage);
    QFETCH(const qint64, share);
    QCOMPARE(percentageOf(amount, percentage), share);
}

void TestSaleModel::taxIsContained_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<int>("rate");
    QTest::addColumn<qint64>("tax");

    QTest::newRow("twenty") << qint64(12000) << 20 << qint64(2000);
    QTest::newRow("ten") << qint64(1100) << 10 << qint64(100);
    QTest::newRow("one") << qint64(2500) << 1 << qint64(25);
    QTest::newRow("none") << qint64(2500) << 0 << qint64(0);
    QTest::newRow("below the half") << qint64(2) << 20 << qint64(0);
    QTest::newRow("the half") << qint64(3) << 20 << qint64(1);
    QTest::newRow("largest") << largestAmount << 20 << qint64(1'666'666'667);
}

void TestSaleModel::taxIsContained()
{
    QFETCH(const qint64, amount);
    QFETCH(const int, rate);
    QFETCH(const qint64, tax);
    QCOMPARE(taxWithin(amount, rate), tax);
}

void TestSaleModel::moneyIsWrittenTheTurkishWay_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << qint64(0) << u"0,00"_s;
    QTest::newRow("kuruş") << qint64(5) << u"0,05"_s;
    QTest::newRow("hundreds") << qint64(99999) << u"999,99"_s;
    QTest::newRow("thousands") << qint64(100000) << u"1.000,00"_s;
    QTest::newRow("discount") << qint64(-123456) << u"-1.234,56"_s;
    QTest::newRow("small discount") << qint64(-5) << u"-0,05"_s;
    QTest::newRow("largest") << largestAmount << u"99.999.999,99"_s;
}

void TestSaleModel::moneyIsWrittenTheTurkishWay()
{
    QFETCH(const qint64, amount);
    QFETCH(const QString, text);
    QCOMPARE(moneyText(amount), text);
}

void TestSaleModel::sectionNamesFitAnApplication()
{
    QCOMPARE(sectionTable().size(), size_t(8));
    int number = 0;
    for (const Section &section : sectionTable()) {
        QCOMPARE(section.number, ++number);
        QCOMPARE(findSection(number), &section);
        QCOMPARE_LE(QString::fromUtf16(section.name).toUtf8().size(), 52);
        QVERIFY(section.taxRate >= 0 && section.taxRate <= 20);
    }
    QVERIFY(!findSection(0));
    QVERIFY(!findSection(9));
    QVERIFY(!findSection(-1));
}

void TestSaleModel::theManualShowsSectionsAndUnits()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll()).simplified();
    for (const Section &section : sectionTable()) {
        const QString row = u"| %1 | %2 | %3 % |"_s.arg(section.number)
                                .arg(QString::fromUtf16(section.name))
                                .arg(section.taxRate);
        QVERIFY2(manual.contains(row), qPrintable(row));
    }
    for (int type = 0; type <= 7; ++type) {
        const QString unit = u" %1 %2"_s.arg(type).arg(QString::fromUtf16(unitName(type)));
        QVERIFY2(manual.contains(unit), qPrintable(unit));
    }
    QVERIFY(!unitName(8));
    QVERIFY(!unitName(-1));
}

void TestSaleModel::itemsAreAdjusted_data()
{
    QTest::addColumn<qint32>("percentage");
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<qint64>("total");

    QTest::newRow("not at all") << 0 << qint64(0) << qint64(2500);
    QTest::newRow("discount of ten per cent") << -10 << qint64(0) << qint64(2250);
    QTest::newRow("surcharge of ten per cent") << 10 << qint64(0) << qint64(2750);
    QTest::newRow("all of it") << -100 << qint64(0) << qint64(0);
    QTest::newRow("twice as much") << 100 << qint64(0) << qint64(5000);
    QTest::newRow("amount") << 0 << qint64(300) << qint64(2200);
    QTest::newRow("the whole amount") << 0 << qint64(2500) << qint64(0);
    QTest::newRow("percentage beside an amount") << -10 << longest << qint64(2250);
}

void TestSaleModel::itemsAreAdjusted()
{
    QFETCH(const qint32, percentage);
    QFETCH(const qint64, amount);
    QFETCH(const qint64, total);
    ItemRequest item = bread;
    item.percentage = percentage;
    item.amount = amount;
    Sale sale;
    QCOMPARE(sale.add({item}), NotRefused);
    QCOMPARE(sale.totals().total, total);
    QCOMPARE(sale.totals().tax, taxWithin(total, 1));
    QCOMPARE(sale.totals().items, 1);
}

void TestSaleModel::itemsAreRefusedAndChangeNothing_data()
{
    QTest::addColumn<ItemRequest>("item");
    QTest::addColumn<int>("refusal");

    const auto row = [](const char *name, Refusal refusal, auto change) {
        ItemRequest item = bread;
        change(item);
        QTest::newRow(name) << item << int(refusal);
    };
    row("negative price", BadPrice, [](ItemRequest &i) { i.price = -1; });
    row("lowest price", BadPrice, [](ItemRequest &i) { i.price = lowest; });
    row("highest price", BadPrice, [](ItemRequest &i) { i.price = longest; });
    row("no quantity", BadPrice, [](ItemRequest &i) { i.quantity = 0; });
    row("lowest quantity", BadPrice, [](ItemRequest &i) { i.quantity = leastInt; });
    row("section 0", BadSection, [](ItemRequest &i) { i.section = 0; });
    row("section 9", BadSection, [](ItemRequest &i) { i.section = 9; });
    row("section -128", BadSection, [](ItemRequest &i) { i.section = -128; });
    row("discount above all", BadPercentage, [](ItemRequest &i) { i.percentage = -101; });
    row("surcharge too high", BadPercentage, [](ItemRequest &i) { i.percentage = 101; });
    row("lowest percentage", BadPercentage, [](ItemRequest &i) { i.percentage = leastInt; });
    row("amount above the total", BadDiscount, [](ItemRequest &i) { i.amount = 2501; });
    row("negative amount", BadDiscount, [](ItemRequest &i) { i.amount = -1; });
    row("lowest amount", BadDiscount, [](ItemRequest &i) { i.amount = lowest; });
    row("type 8", BadUnit, [](ItemRequest &i) { i.type = 8; });
    row("type -1", BadUnit, [](ItemRequest &i) { i.type = -1; });
    row("more than a receipt holds", OverLargestAmount,
        [](ItemRequest &i) { i = {largestAmount, 1000, 0, 0, 1, "Villa", 0}; });
}

void TestSaleModel::itemsAreRefusedAndChangeNothing()
{
    QFETCH(const ItemRequest, item);
    QFETCH(const int, refusal);
    Sale sale = saleOf(700);
    const SaleTotals before = sale.totals();
    QCOMPARE(int(sale.add({item})), refusal);
    QCOMPARE(sale.totals(), before);
    QCOMPARE(sale.lines().size(), 1);
}

void TestSaleModel::severalItemsAreAllOrNothing()
{
    Sale sale;
    QCOMPARE(sale.add({}), NoItem);
    ItemRequest wrong = bread;
    wrong.section = 9;
    QCOMPARE(sale.add({bread, wrong}), BadSection);
    QCOMPARE(sale.totals(), SaleTotals());
    QCOMPARE(sale.add({bread, {0, 0, 0, 0, 0, "ikram", 0}}), NotRefused);
    QCOMPARE(sale.totals().items, 2);
    QCOMPARE(sale.totals().total, 2500);
}

void TestSaleModel::linesAreBounded()
{
    Sale sale;
    for (int i = 0; i < Sale::mostLines; ++i)
        QCOMPARE(sale.add({bread}), NotRefused);
    QCOMPARE(sale.add({bread}), ReceiptFull);
    QCOMPARE(sale.totals().items, Sale::mostLines);
}

void TestSaleModel::namesAreReadAsTheyWereMeant_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");

    QTest::newRow("plain") << "Ekmek"_ba << u"Ekmek"_s;
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("UTF-8") << u"Çay şekeri"_s.toUtf8() << u"Çay şekeri"_s;
    QTest::newRow("ISO-8859-9") << "KOL\xDD"_ba << u"KOLİ"_s;
    QTest::newRow("cut within a character") << (QByteArray(51, 'a') + '\xC3') << QString(51, u'a');
    QTest::newRow("longer than a name") << QByteArray(60, 'a') << QString(52, u'a');
    QTest::newRow("commands to a printer") << "a\x1B@\nb"_ba << u"a @ b"_s;
    QTest::newRow("spaces around") << "  a  "_ba << u"a"_s;
}

void TestSaleModel::namesAreReadAsTheyWereMeant()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, name);
    Sale sale;
    ItemRequest item = bread;
    item.name = bytes;
    QCOMPARE(sale.add({item}), NotRefused);
    QCOMPARE(sale.lines().first().name, name);
}

void TestSaleModel::deletedLinesKeepTheirPlace()
{
    Sale sale;
    QCOMPARE(sale.removeLast(), NoItem);
    for (qint64 price : {100, 200, 300})
        sale.add({{price, 1000, 0, 0, 1, "a", 0}});
    QCOMPARE(sale.remove(0), NotRefused);
    QCOMPARE(sale.totals().total, 500);
    QCOMPARE(sale.totals().items, 2);
    QCOMPARE(sale.remove(0), NoItem);
    QCOMPARE(sale.removeLast(), NotRefused);
    QCOMPARE(sale.totals().total, 200);
    QCOMPARE(sale.removeLast(), NotRefused);
    QVERIFY(sale.isEmpty());
    QCOMPARE(sale.removeLast(), NoItem);
    for (int index : {-1, 3, mostInt, leastInt})
        QCOMPARE(sale.remove(index), NoItem);
    QCOMPARE(sale.lines().size(), 3);
}

void TestSaleModel::theMedicalContributionIsTaxFree()
{
    Sale sale = saleOf(1100);
    QCOMPARE(sale.setMedicalContribution(500, patient), NotRefused);
    QCOMPARE(sale.totals().total, 1600);
    QCOMPARE(sale.totals().tax, 100);
    QCOMPARE(sale.setMedicalContribution(700, patient), NotRefused);
    QCOMPARE(sale.totals().total, 1800);
    QCOMPARE(sale.patient(), patient);
    QCOMPARE(sale.setMedicalContribution(0, -1), NotRefused);
    QCOMPARE(sale.totals().total, 1100);
    QCOMPARE(sale.patient(), 0);
}

void TestSaleModel::theMedicalContributionIsChecked_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<qint64>("identity");
    QTest::addColumn<int>("refusal");

    QTest::newRow("negative") << qint64(-1) << patient << int(BadContribution);
    QTest::newRow("lowest") << lowest << patient << int(BadContribution);
    QTest::newRow("too much") << largestAmount + 1 << patient << int(BadContribution);
    QTest::newRow("too much with the items") << largestAmount << patient << int(OverLargestAmount);
    QTest::newRow("ten digits") << qint64(1) << qint64(9'999'999'999) << int(BadPatient);
    QTest::newRow("twelve digits") << qint64(1) << qint64(100'000'000'000) << int(BadPatient);
    QTest::newRow("negative identity") << qint64(1) << lowest << int(BadPatient);
}

void TestSaleModel::theMedicalContributionIsChecked()
{
    QFETCH(const qint64, amount);
    QFETCH(const qint64, identity);
    QFETCH(const int, refusal);
    Sale sale = saleOf(1100);
    QCOMPARE(int(sale.setMedicalContribution(amount, identity)), refusal);
    QCOMPARE(sale.totals(), saleOf(1100).totals());
}

void TestSaleModel::paymentsAreChecked_data()
{
    QTest::addColumn<bool>("card");
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<int>("refusal");
    QTest::addColumn<qint64>("change");

    QTest::newRow("part in cash") << false << qint64(400) << int(NotRefused) << qint64(0);
    QTest::newRow("all in cash") << false << qint64(1000) << int(NotRefused) << qint64(0);
    QTest::newRow("more in cash") << false << qint64(1500) << int(NotRefused) << qint64(500);
    QTest::newRow("all by card") << true << qint64(1000) << int(NotRefused) << qint64(0);
    QTest::newRow("more by card") << true << qint64(1001) << int(CardOverRest) << qint64(0);
    QTest::newRow("nothing") << false << qint64(0) << int(BadPayment) << qint64(0);
    QTest::newRow("negative") << false << qint64(-1) << int(BadPayment) << qint64(0);
    QTest::newRow("highest") << false << longest << int(BadPayment) << qint64(0);
}

void TestSaleModel::paymentsAreChecked()
{
    QFETCH(const bool, card);
    QFETCH(const qint64, amount);
    QFETCH(const int, refusal);
    QFETCH(const qint64, change);
    Sale sale = saleOf(1000);
    const auto kind = card ? PaymentKind::Card : PaymentKind::Cash;
    QCOMPARE(int(sale.pay(kind, amount, 11)), refusal);
    QCOMPARE(sale.totals().change, change);
    QCOMPARE(sale.payments().size(), refusal == NotRefused ? 1 : 0);
    if (refusal == NotRefused && amount >= 1000)
        QCOMPARE(sale.pay(PaymentKind::Cash, 1, 0), NothingLeft);
    QCOMPARE(Sale().pay(kind, 1, 11), NothingSold);
    QCOMPARE(Sale().settle(kind, 11), NothingSold);
}

void TestSaleModel::paymentsAreBoundedButTheRestIsTaken()
{
    Sale sale = saleOf(1000);
    for (int i = 0; i < Sale::mostPayments; ++i)
        QCOMPARE(sale.pay(PaymentKind::Cash, 1, 0), NotRefused);
    QCOMPARE(sale.pay(PaymentKind::Cash, 1, 0), TooManyPayments);
    QCOMPARE(sale.settle(PaymentKind::Card, 11), NotRefused);
    QCOMPARE(sale.remaining(), 0);
    QCOMPARE(sale.totals().card, 1000 - Sale::mostPayments);
}

void TestSaleModel::itemsStayAsTheyAreOncePaid()
{
    Sale sale = saleOf(1000);
    sale.pay(PaymentKind::Cash, 1, 0);
    QCOMPARE(sale.add({bread}), ItemsStay);
    QCOMPARE(sale.removeLast(), ItemsStay);
    QCOMPARE(sale.remove(0), ItemsStay);
    QCOMPARE(sale.setMedicalContribution(1, patient), ItemsStay);
    QCOMPARE(sale.totals().total, 1000);
}

void TestSaleModel::theSaleLimitHolds()
{
    Sale sale = saleOf(1000, 3500);
    QCOMPARE(sale.add({bread}), NotRefused);
    QCOMPARE(sale.add({{1, 1000, 0, 0, 1, "a", 0}}), OverSaleLimit);
    QCOMPARE(sale.setMedicalContribution(1, patient), OverSaleLimit);
    QCOMPARE(sale.totals().total, 3500);
}

/** Whatever is done to sales in whatever order: nothing is lost, nothing doubled, and every sum is another's.
 */
void TestSaleModel::randomSalesAddUp()
{
    const quint32 seed = qEnvironmentVariableIsSet("VELNO_TEST_SEED")
                             ? quint32(qEnvironmentVariableIntValue("VELNO_TEST_SEED"))
                             : QRandomGenerator::global()->generate() & 0x7FFFFFFF;
    qInfo("VELNO_TEST_SEED=%u repeats this", seed);
    RandomShop shop(seed);
    for (int day = 1; day <= 5; ++day) {
        for (int sale = 0; sale < 60; ++sale)
            QCOMPARE(shop.sellOne(), QString());
        QCOMPARE(shop.endDay(), QString());
    }
}

QTEST_GUILESS_MAIN(TestSaleModel)
#include "tst_sale_model.moc"
