extern "C" {
#include "examples/c/recovery.h"
}
#include "tests/support/library_test.h"
#include "tests/support/recovering_shop.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The recovery of examples/c where the register does not tell what became of a step, or tells of what
 * somebody else has done. */
class TestRecoveryDoubts : public LibraryTest
{
    Q_OBJECT

private slots:
    void refusalLeavesTheSaleAsItWas();
    void refusedReceiptIsNotTakenForCancelled();
    void passingRefusalIsNotTakenForCancelled_data();
    void passingRefusalIsNotTakenForCancelled();
    void firstSaleIsLeftToAPerson_data();
    void firstSaleIsLeftToAPerson();
    void nobodyDecidesWhoIsNotAsked();
    void lineRefusedWhileEnteredAgainIsKept_data();
    void lineRefusedWhileEnteredAgainIsKept();
    void saleThatIsNotWholeAgainCanBeCancelled();
    void outcomeIsNotedAtOnce_data();
    void outcomeIsNotedAtOnce();
    void outcomeIsNotKnownBeforeItIsNoted_data();
    void outcomeIsNotKnownBeforeItIsNoted();
    void stepIsNotRepeatedUnseen_data();
    void stepIsNotRepeatedUnseen();
    void refusedStepIsNotRepeatedUnseen();
    void paymentBySomebodyElseIsNoticed();
    void itemOfSomebodyElseIsNoticed();
    void openSaleOfSomebodyElseIsLeft();
    void saleIsFoundOpenInSpiteOfAnError();
    void saleOnAnUnnotedNumberIsNotSold();
};

void TestRecoveryDoubts::refusalLeavesTheSaleAsItWas()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(saleDeleteLast(sale), 8);
    QCOMPARE(sale->cause, int(VelnoCause_NothingThere));
    QCOMPARE(saleEnd(sale, 0), 8); // of a sale without items
    const VelnoSaleItem wrong = item("Ekmek", 1250, 1000, 9);
    QCOMPARE(saleAddItem(sale, &wrong), 4);
    QCOMPARE(addOne<1250>(sale), 0);
    QCOMPARE(salePay(sale, 1, 1251), 8); // by card, more than there is to pay
    QCOMPARE(salePay(sale, 0, 0), 4);
    QCOMPARE(salePay(sale, 1, 250), 0); // the register's error is past
    QCOMPARE(addOne<2000>(sale), 8);    // something has been paid
    QCOMPARE(sale->taken, 2);
    QCOMPARE(sale->count, 2);
    QCOMPARE(saleEnd(sale, 0), 0);
    QCOMPARE(saleEnd(sale, 0), 6);
    QCOMPARE(addOne<1250>(sale), 6);
    shop.close();
    QCOMPARE(shop.receipts, (QList<Entry>{{1, 1, 1, {1250, 12, 1000, 250, 0, 1}, {u"Ekmek"_s}}}));
}

/** A no to everything is no news of a receipt. */
void TestRecoveryDoubts::refusedReceiptIsNotTakenForCancelled()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(saleStart(sale, 0), 0);
        QCOMPARE(addOne<1250>(sale), 0);
        QVERIFY(i == 0 || shop.reg.setFault(u"refuse=receipt"_s));
        QCOMPARE(saleEnd(sale, 0), i == 0 ? 0 : personMustLook);
    }
    QCOMPARE(sale->status, SaleOpen); // as far as anybody knows
    QCOMPARE(saleStart(sale, 0), saleUnsettled);
    QCOMPARE(saleCancel(sale), saleUnsettled);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 0);
    QCOMPARE(sale->status, SaleClosed);
    shop.close();
    QCOMPARE(shop.receipts.size(), 2);
    QCOMPARE(shop.closed().size(), 2);
}

void TestRecoveryDoubts::passingRefusalIsNotTakenForCancelled_data()
{
    QTest::addColumn<bool>("isFirst");
    QTest::newRow("first sale, nothing to compare with") << true;
    QTest::newRow("behind another sale") << false;
}

/** A single no, in answer to the question whether the sale that has just been ended is closed. */
void TestRecoveryDoubts::passingRefusalIsNotTakenForCancelled()
{
    QFETCH(const bool, isFirst);
    Shop shop;
    QVERIFY(isFirst ? shop.opens() : shop.opensWithAKnownReceipt());
    const VelnoSaleItem provoking = item("!refuse=receipt", 700);
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    QCOMPARE(saleAddItem(shop.sale.get(), &provoking), 0);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    QCOMPARE(shop.sale->status, SaleClosed);
    shop.close();
    QCOMPARE(shop.receipts.size(), 1);
    QCOMPARE(shop.closed().size(), 1);
}

void TestRecoveryDoubts::firstSaleIsLeftToAPerson_data()
{
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("cancelled by a cut") << false;
    QTest::newRow("closed, and the register refuses to tell") << true;
}

void TestRecoveryDoubts::firstSaleIsLeftToAPerson()
{
    QFETCH(const bool, isClosed);
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    if (isClosed)
        QVERIFY(shop.reg.setFault(u"refuse=receipt"_s));
    else
        QVERIFY(shop.disturb(u"power-cut=item"_s));
    QCOMPARE(isClosed ? saleEnd(sale, 0) : addOne<2000>(sale), personMustLook);
    QCOMPARE(saleGoOn(sale), personMustLook); // asking again does not help
    QCOMPARE(shop.noted, QStringList{u"open 1 1"_s});
    QCOMPARE(saleDecide(sale, isClosed), 0);
    QCOMPARE(sale->status, isClosed ? SaleClosed : SaleOpen);
    QCOMPARE(shop.noted.at(1), isClosed ? u"closed 1 1"_s : u"cancelled 1 1"_s);
    QVERIFY(shop.reg.setFault(u"none"_s));
    if (!isClosed)
        QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines,
             isClosed ? QStringList{u"Ekmek"_s} : (QStringList{u"Ekmek"_s, u"Ayran"_s}));
}

void TestRecoveryDoubts::nobodyDecidesWhoIsNotAsked()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleDecide(sale, 1), 6);
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QCOMPARE(saleDecide(sale, 0), 6);
    QCOMPARE(sale->status, SaleOpen);
    QCOMPARE(saleEnd(sale, 0), 0);
    QCOMPARE(saleDecide(sale, 0), 6);
    QCOMPARE(sale->status, SaleClosed);
}

void TestRecoveryDoubts::lineRefusedWhileEnteredAgainIsKept_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("reason");
    QTest::newRow("the line is refused") << u"refuse=item"_s << 8;
    QTest::newRow("the sale is not begun again") << u"refuse=change-state"_s << 6;
}

/** The refusal is not that of the new line, which somebody would type once more; and the old one is not lost.
 */
void TestRecoveryDoubts::lineRefusedWhileEnteredAgainIsKept()
{
    QFETCH(const QString, fault);
    QFETCH(const int, reason);
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QVERIFY(shop.disturb(u"power-cut=item"_s, Shop::enteredAgain, fault));
    QCOMPARE(addOne<2000>(sale), saleStuck);
    QCOMPARE(sale->reason, reason);
    QVERIFY(saleIsPending(sale));
    QCOMPARE(addOne<2000>(sale), saleUnsettled);
    QCOMPARE(saleGoOn(sale), saleStuck);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 0);
    QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines, (QStringList{u"Ekmek"_s, u"Ayran"_s}));
}

void TestRecoveryDoubts::saleThatIsNotWholeAgainCanBeCancelled()
{
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QVERIFY(shop.disturb(u"power-cut=item"_s, Shop::enteredAgain, u"refuse=item"_s));
    QCOMPARE(addOne<2000>(sale), saleStuck);
    QCOMPARE(saleCancel(sale), 0);
    QCOMPARE(sale->status, SaleCancelled);
    QCOMPARE(saleCancel(sale), 6);
    QCOMPARE(shop.noted, (QStringList{u"open 1 2"_s, u"doubtful 1 2"_s, u"open 1 3"_s, u"cancelled 1 3"_s}));
    shop.close();
    QCOMPARE(shop.closed().size(), 0);
    QCOMPARE(shop.cancelled().size(), 2);
}

void TestRecoveryDoubts::outcomeIsNotedAtOnce_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QStringList>("noted");
    const QString begun = u"open 1 2"_s;
    QTest::newRow("closed") << QString() << QStringList{begun, u"open 1 2"_s, u"closed 1 2"_s};
    // The register does not open a sale any more, so nothing comes behind it.
    QTest::newRow("cancelled by a cut") << u"power-cut=item"_s << QStringList{begun, u"doubtful 1 2"_s};
}

void TestRecoveryDoubts::outcomeIsNotedAtOnce()
{
    QFETCH(const QString, fault);
    QFETCH(const QStringList, noted);
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    if (fault.isEmpty()) {
        QCOMPARE(addOne<1250>(sale), 0);
        QCOMPARE(salePay(sale, 0, 500), 0);
        QCOMPARE(saleEnd(sale, 0), 0);
    } else {
        QVERIFY(shop.disturb(fault, Shop::enteredAgain, u"refuse=change-state"_s));
        QCOMPARE(addOne<1250>(sale), saleStuck);
    }
    QCOMPARE(shop.noted, noted);
}

void TestRecoveryDoubts::outcomeIsNotKnownBeforeItIsNoted_data()
{
    QTest::addColumn<QString>("step");
    QTest::newRow("payment") << u"pay"_s;
    QTest::newRow("end") << u"end"_s;
    QTest::newRow("cancel") << u"cancel"_s;
}

void TestRecoveryDoubts::outcomeIsNotKnownBeforeItIsNoted()
{
    QFETCH(const QString, step);
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    shop.takesNotes = false;
    const auto take = [&] {
        return step == u"pay" ? salePay(sale, 0, 500) : step == u"end" ? saleEnd(sale, 1) : saleCancel(sale);
    };
    QCOMPARE(take(), saleNotNoted);
    QCOMPARE(saleGoOn(sale), saleNotNoted);
    QVERIFY(saleIsPending(sale));
    shop.takesNotes = true;
    QCOMPARE(saleGoOn(sale), 0);
    QCOMPARE(told(sale->totals, paidInCash), step == u"pay" ? 500 : 0);
    QCOMPARE(sale->status, step == u"pay" ? SaleOpen : step == u"end" ? SaleClosed : SaleCancelled);
    QCOMPARE(shop.noted.size(), 2);
}

void TestRecoveryDoubts::stepIsNotRepeatedUnseen_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<bool>("isPayment");
    QTest::addColumn<int>("code"); // of the look
    const QString silence = u"refuse=sale-state"_s;
    QTest::newRow("payment") << QStringList{silence} << true << int(notTold);
    QTest::newRow("item, answer lost")
        << QStringList{silence, u"lost-answer=item"_s} << false << int(notTold);
    QTest::newRow("item, no look authentic") << QStringList{u"bad-mac"_s} << false << 11;
}

/** What became of it nobody can see for a while. */
void TestRecoveryDoubts::stepIsNotRepeatedUnseen()
{
    QFETCH(const QStringList, faults);
    QFETCH(const bool, isPayment);
    QFETCH(const int, code);
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    for (const QString &fault : faults)
        QVERIFY(shop.reg.setFault(fault));
    QCOMPARE(isPayment ? salePay(sale, 0, 500) : addOne<2000>(sale), code);
    QCOMPARE(saleGoOn(sale), code);
    QVERIFY(saleIsPending(sale));
    QCOMPARE(addOne<1250>(sale), saleUnsettled);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 0);
    QVERIFY(!saleIsPending(sale));
    QCOMPARE(told(sale->totals, paidInCash), isPayment ? 500 : 0);
    QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines,
             isPayment ? QStringList{u"Ekmek"_s} : (QStringList{u"Ekmek"_s, u"Ayran"_s}));
}

void TestRecoveryDoubts::refusedStepIsNotRepeatedUnseen()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QVERIFY(shop.reg.setFault(u"refuse=sale-state"_s));
    QCOMPARE(salePay(sale, 1, 1251), notTold); // by card, more than there is to pay
    QCOMPARE(sale->reason, 8);                 // the look was refused, too
    QVERIFY(saleIsPending(sale));
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 8);
    QVERIFY(!saleIsPending(sale));
    QCOMPARE(saleEnd(sale, 0), 0);
}

void TestRecoveryDoubts::paymentBySomebodyElseIsNoticed()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QCOMPARE(velnoext_add_payment(1, 100), 0); // as on the register's own keyboard
    QCOMPARE(salePay(sale, 0, 500), saleNotOurs);
    QCOMPARE(told(sale->totals, paidByCard), 100);
    QCOMPARE(told(sale->totals, paidInCash), 500);
    QCOMPARE(velnoext_end_sale(0), 0);
    QCOMPARE(saleEnd(sale, 0), 0); // it is what was wanted, and as it was left
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
}

void TestRecoveryDoubts::itemOfSomebodyElseIsNoticed()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    VelnoSaleItem other = item("Gazete", 300);
    VelnoEcrSaleTotals totals;
    QCOMPARE(velnoext_add_sale_item(5000, &other, &totals), 0);
    QCOMPARE(saleEnd(sale, 0), saleNotOurs);
    QCOMPARE(sale->status, SaleClosed);
    QCOMPARE(told(sale->totals, totalToPay), 1550);
}

void TestRecoveryDoubts::saleIsFoundOpenInSpiteOfAnError()
{
    Shop shop;
    QVERIFY(shop.opens());
    QVERIFY(shop.reg.setFault(u"error=64"_s));
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    QCOMPARE(addOne<1250>(shop.sale.get()), 8);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(addOne<2000>(shop.sale.get()), 0);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    shop.close();
    QCOMPARE(shop.receipts.size(), 1);
    QCOMPARE(shop.closed().first().lines, QStringList{u"Ayran"_s});
}

void TestRecoveryDoubts::openSaleOfSomebodyElseIsLeft()
{
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(velnoext_start_sale(5000), 0);
    QCOMPARE(saleStart(shop.sale.get(), 0), 6);
    int state = 0;
    QCOMPARE(velnoext_ecr_state(5000, &state), 0);
    QCOMPARE(state, int(VelnoEcrState_SaleOpen));
    QVERIFY(shop.noted.isEmpty());
}

void TestRecoveryDoubts::saleOnAnUnnotedNumberIsNotSold()
{
    Shop shop;
    QVERIFY(shop.opens());
    shop.takesNotes = false;
    QCOMPARE(saleStart(shop.sale.get(), 0), saleNotNoted);
    QCOMPARE(addOne<1250>(shop.sale.get()), saleUnsettled);
    shop.takesNotes = true;
    QCOMPARE(saleGoOn(shop.sale.get()), 0);
    QCOMPARE(addOne<1250>(shop.sale.get()), 0);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    shop.close();
    QCOMPARE(shop.receipts.size(), 1);
    QCOMPARE(shop.closed().size(), 1);
}

QTEST_GUILESS_MAIN(TestRecoveryDoubts)
#include "tst_recovery_doubts.moc"
