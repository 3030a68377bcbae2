// SPDX-License-Identifier: Apache-2.0

#include "till/position.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

constexpr Payment cash(qint64 amount)
{
    return {Tender::Cash, amount};
}

constexpr Payment card(qint64 amount)
{
    return {Tender::Card, amount};
}

constexpr Payment restInCash{Tender::Cash, {}};
constexpr Payment restByCard{Tender::Card, {}};

/** Three lines of 10.00. */
Receipt paidBy(const QList<Payment> &payments)
{
    Receipt receipt;
    receipt.items = QList<Item>(3, Item{u"Ekmek"_s, 1000});
    receipt.payments = payments;
    return receipt;
}

VelnoEcrSaleTotals totals(int lines, qint64 inCash, qint64 byCard, qint64 change = 0)
{
    return {{lines * 1000, 0, inCash, byCard, change}, lines};
}

} // namespace

/** What the register's numbers say of how far a receipt has come. */
class TestPosition : public QObject
{
    Q_OBJECT

private slots:
    void momentIsRecognised_data();
    void momentIsRecognised();
    void adjustmentsCount_data();
    void adjustmentsCount();
    void closedReceiptIsCompared_data();
    void closedReceiptIsCompared();
    void sumsAreJudgedBeforeAnythingIsPaid_data();
    void sumsAreJudgedBeforeAnythingIsPaid();
    void whatIsTakenOnceDependsOnTheReceipt();
};

void TestPosition::momentIsRecognised_data()
{
    QTest::addColumn<QList<Payment>>("payments");
    QTest::addColumn<VelnoEcrSaleTotals>("told");
    QTest::addColumn<int>("lines"); // -1: it fits no moment
    QTest::addColumn<int>("taken");

    const QList<Payment> mixed = {cash(500), card(500), cash(500), restByCard};
    QTest::newRow("begun") << mixed << totals(0, 0, 0) << 0 << 0;
    QTest::newRow("one line") << mixed << totals(1, 0, 0) << 1 << 0;
    QTest::newRow("all lines") << mixed << totals(3, 0, 0) << 3 << 0;
    QTest::newRow("one payment") << mixed << totals(3, 500, 0) << 3 << 1;
    QTest::newRow("two payments") << mixed << totals(3, 500, 500) << 3 << 2;
    QTest::newRow("all that have an amount") << mixed << totals(3, 1000, 500) << 3 << 3;
    QTest::newRow("more than is paid") << mixed << totals(3, 1500, 500) << -1 << 0;
    QTest::newRow("payments in another order") << mixed << totals(3, 0, 500) << -1 << 0;
    QTest::newRow("another amount") << mixed << totals(3, 499, 0) << -1 << 0;
    QTest::newRow("a payment before the last line") << mixed << totals(2, 500, 0) << -1 << 0;
    QTest::newRow("a line too many") << mixed << totals(4, 0, 0) << -1 << 0;
    QTest::newRow("fewer than none") << mixed << totals(-1, 0, 0) << -1 << 0;
    QTest::newRow("rounded up") << mixed << VelnoEcrSaleTotals{{1002}, 1} << 1 << 0;
    QTest::newRow("rounded down") << mixed << VelnoEcrSaleTotals{{998}, 1} << 1 << 0;
    QTest::newRow("a dearer line") << mixed << VelnoEcrSaleTotals{{1003}, 1} << -1 << 0;
    QTest::newRow("a cheaper line") << mixed << VelnoEcrSaleTotals{{997}, 1} << -1 << 0;
    QTest::newRow("a sum of no receipt")
        << mixed << VelnoEcrSaleTotals{{std::numeric_limits<qint64>::min()}, 1} << -1 << 0;
}

void TestPosition::momentIsRecognised()
{
    QFETCH(const QList<Payment>, payments);
    QFETCH(const VelnoEcrSaleTotals, told);
    QFETCH(const int, lines);
    QFETCH(const int, taken);
    const std::optional<Position> position = positionOf(paidBy(payments), told);
    QCOMPARE(position.has_value(), lines >= 0);
    if (!position)
        return;
    QCOMPARE(position->lines, lines);
    QCOMPARE(position->payments, taken);
}

void TestPosition::adjustmentsCount_data()
{
    QTest::addColumn<int>("percentage");
    QTest::addColumn<qint64>("discount");
    QTest::addColumn<qint64>("medical");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<bool>("isIts");

    QTest::newRow("none") << 0 << qint64(0) << qint64(0) << qint64(1500) << true;
    QTest::newRow("percentage") << -10 << qint64(0) << qint64(0) << qint64(1350) << true;
    QTest::newRow("surcharge") << 10 << qint64(0) << qint64(0) << qint64(1650) << true;
    QTest::newRow("discount") << 0 << qint64(200) << qint64(0) << qint64(1300) << true;
    QTest::newRow("adjustment is missing") << 0 << qint64(200) << qint64(0) << qint64(1500) << false;
    QTest::newRow("with medical contribution") << 0 << qint64(0) << qint64(700) << qint64(2200) << true;
    QTest::newRow("before the medical contribution") << 0 << qint64(0) << qint64(700) << qint64(1500) << true;
    QTest::newRow("half a medical contribution") << 0 << qint64(0) << qint64(700) << qint64(1850) << false;
}

/** One line of 1.5 pieces at 10.00. */
void TestPosition::adjustmentsCount()
{
    QFETCH(const int, percentage);
    QFETCH(const qint64, discount);
    QFETCH(const qint64, medical);
    QFETCH(const qint64, total);
    Receipt receipt = paidBy({restInCash});
    receipt.items = {Item{u"Peynir"_s, 1000, 1500, percentage, discount}};
    if (medical != 0)
        receipt.medical = Medical{medical, 11'111'111'111};
    QTEST(positionOf(receipt, VelnoEcrSaleTotals{{total}, 1}).has_value(), "isIts");
}

void TestPosition::closedReceiptIsCompared_data()
{
    QTest::addColumn<QList<Payment>>("payments");
    QTest::addColumn<VelnoEcrSaleTotals>("told");
    QTest::addColumn<bool>("isIts");

    const QList<Payment> mixed = {cash(500), restByCard};
    QTest::newRow("rest by card") << mixed << totals(3, 500, 2500) << true;
    QTest::newRow("rest in cash") << QList{card(500), restInCash} << totals(3, 2500, 500) << true;
    QTest::newRow("the whole in cash") << QList{restInCash} << totals(3, 3000, 0) << true;
    QTest::newRow("with change") << QList{cash(5000)} << totals(3, 5000, 0, 2000) << true;
    QTest::newRow("exactly") << QList{cash(1000), card(2000)} << totals(3, 1000, 2000) << true;
    QTest::newRow("a line is missing") << mixed << totals(2, 500, 1500) << false;
    QTest::newRow("a line too many") << mixed << totals(4, 500, 3500) << false;
    QTest::newRow("another line") << QList{restInCash} << VelnoEcrSaleTotals{{3007, 0, 3007}, 3} << false;
    QTest::newRow("paid the other way") << mixed << totals(3, 3000, 0) << false;
    QTest::newRow("another amount in cash") << QList{cash(5000)} << totals(3, 4000, 0, 1000) << false;
    QTest::newRow("the change is wrong") << QList{cash(5000)} << totals(3, 5000, 0, 1000) << false;
}

void TestPosition::closedReceiptIsCompared()
{
    QFETCH(const QList<Payment>, payments);
    QFETCH(const VelnoEcrSaleTotals, told);
    QFETCH(const bool, isIts);
    QCOMPARE(isClosedAs(paidBy(payments), told), isIts);
}

void TestPosition::sumsAreJudgedBeforeAnythingIsPaid_data()
{
    QTest::addColumn<QList<Payment>>("payments");
    QTest::addColumn<qint64>("total"); // -1: nobody has added it up
    QTest::addColumn<QString>("fault");

    QTest::newRow("covered") << QList{cash(3000)} << qint64(-1) << QString();
    QTest::newRow("with change") << QList{cash(5000)} << qint64(-1) << QString();
    QTest::newRow("the rest is taken") << QList{cash(500), restInCash} << qint64(-1) << QString();
    QTest::newRow("as added up") << QList{restInCash} << qint64(3000) << QString();
    QTest::newRow("a kuruş is missing")
        << QList{cash(2999)} << qint64(-1) << u"30.00 are to be paid, the payments are 29.99"_s;
    QTest::newRow("a card has no change")
        << QList{card(3001)} << qint64(-1) << u"30.00 are to be paid, by card are 30.01"_s;
    QTest::newRow("added up otherwise")
        << QList{restInCash} << qint64(2999) << u"the register comes to 30.00, the receipt says 29.99"_s;
}

void TestPosition::sumsAreJudgedBeforeAnythingIsPaid()
{
    QFETCH(const QList<Payment>, payments);
    QFETCH(const qint64, total);
    QFETCH(const QString, fault);
    Receipt receipt = paidBy(payments);
    if (total >= 0)
        receipt.total = total;
    QCOMPARE(faultOfTotals(receipt, totals(3, 0, 0)), fault);
}

void TestPosition::whatIsTakenOnceDependsOnTheReceipt()
{
    Receipt receipt = paidBy({cash(500), restByCard});
    QVERIFY(isForOnce(receipt, Tender::Card));
    QVERIFY(isForOnce(receipt, Tender::Cash));
    receipt.reenterCash = true;
    QVERIFY(isForOnce(receipt, Tender::Card));
    QVERIFY(!isForOnce(receipt, Tender::Cash));
    QCOMPARE(amountsOf(receipt), 1);
    QCOMPARE(endTender(receipt), Tender::Card);
}

QTEST_GUILESS_MAIN(TestPosition)
#include "tst_position.moc"
