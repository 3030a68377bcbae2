extern "C" {
#include "examples/c/recovery.h"
}
#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/recovering_shop.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The recovery of examples/c at the real velno-register: what its journal holds in the end is what was sold.
 */
class TestRecovery : public LibraryTest
{
    Q_OBJECT

private slots:
    void nothingIsLostOrDoubled_data();
    void nothingIsLostOrDoubled();
    void unreadableAnswerIsLookedInto_data();
    void unreadableAnswerIsLookedInto();
    void busyRegisterIsWaitedFor();
    void dyingRegisterIsGivenUpAndComesBack();
    void absentRegisterIsGivenUp();
    void lostKeysAreAgreedOnAnew();
    void keysSurviveACut();
    void failedPairingLeavesTheStepPending();
    void noteTellsTheNextProcess_data();
    void noteTellsTheNextProcess();
    void reportIsMadeOnce_data();
    void reportIsMadeOnce();
    void refusedNumberDoesNotTellOfTheReport();
    void reportOfAnotherRegisterIsNotMade();
};

namespace {

QList<qint64> listed(const VelnoEcrSaleTotals &totals)
{
    QList<qint64> list;
    for (int i = totalToPay; i <= changeGiven; ++i)
        list << told(totals, i);
    return list << totals.number;
}

/** What an action sends to the register. */
struct Command
{
    QString name;
    bool openAfter; ///< a sale is open once it is done, so that a cut of the power cancels one
};

struct Action
{
    const char *name;
    int (*run)(Sale *);
    QList<Command> commands;
    bool pays = false;
};

int addTwo(Sale *sale)
{
    VelnoSaleItemList list = {};
    list.count = 2;
    list.items[0] = item("Peynir", 18000, 500);
    list.items[1] = item("Zeytin", 9000, 1000, 2);
    return saleAddItems(sale, &list);
}

int addInvoice(Sale *sale)
{
    VelnoInvoice invoice = {};
    invoice.invoiceType = 1;
    invoice.mode = 1;
    qstrncpy(invoice.idNumber, "11111111111", sizeof invoice.idNumber);
    return saleEndWithInvoice(sale, &invoice);
}

struct Script
{
    const char *name;
    QList<Action> actions;
    QList<qint64> totals; ///< of the receipt; empty when it is cancelled
    QStringList lines;
};

const QList<Command> keysToStart{{u"state"_s, false}, {u"change-state"_s, true}, {u"sale-state"_s, true}};
const QList<Command> keysToPay{{u"state"_s, true}, {u"change-state"_s, true}, {u"sale-state"_s, true}};
const QList<Command> keysToEnd{{u"state"_s, true}, {u"change-state"_s, false}, {u"receipt"_s, false}};

const QList<Script> &scripts()
{
    static const QList<Script> list{
        {"receipt",
         {{"start", [](Sale *s) { return saleStart(s, 0); }, keysToStart},
          {"item", addOne<1250>, {{u"item"_s, true}}},
          {"items", addTwo, {{u"items"_s, true}}},
          {"medical",
           [](Sale *s) { return saleSetMedical(s, 500, 10000000146); },
           {{u"medical"_s, true}, {u"state"_s, true}, {u"sale-state"_s, true}}},
          {"delete last", saleDeleteLast, {{u"delete"_s, true}}},
          {"card", [](Sale *s) { return salePay(s, 1, 4000); }, keysToPay, true},
          {"cash", [](Sale *s) { return salePay(s, 0, 10000); }, keysToPay, true},
          {"end", [](Sale *s) { return saleEnd(s, 0); }, keysToEnd, true}},
         {10750, 101, 10000, 4000, 3250, 2},
         {u"Ekmek"_s, u"Peynir"_s, u"-Zeytin"_s}},
        {"paid by its end",
         {{"start", [](Sale *s) { return saleStart(s, 0); }, keysToStart},
          {"item", addOne<1250>, {{u"item"_s, true}}},
          {"end", [](Sale *s) { return saleEnd(s, 1); }, keysToEnd, true}},
         {1250, 12, 0, 1250, 0, 1},
         {u"Ekmek"_s}},
        {"invoice",
         {{"start", [](Sale *s) { return saleStart(s, 1); }, keysToStart},
          {"item", addOne<1250>, {{u"item"_s, true}}},
          {"second item", addOne<2000>, {{u"item"_s, true}}},
          {"delete", [](Sale *s) { return saleDelete(s, 0); }, {{u"delete"_s, true}}},
          {"end with invoice",
           addInvoice,
           {{u"end-invoice"_s, false}, {u"state"_s, false}, {u"receipt"_s, false}},
           true}},
         {2000, 20, 2000, 0, 0, 1},
         {u"-Ekmek"_s, u"Ayran"_s}},
        {"cancelled",
         {{"start", [](Sale *s) { return saleStart(s, 0); }, keysToStart},
          {"item", addOne<1250>, {{u"item"_s, true}}},
          {"cancel", saleCancel, keysToEnd}},
         {},
         {}},
    };
    return list;
}

/** Works the script off as a cashier does; what has to be paid again is paid again, and counted. */
int work(Shop &shop, const QList<Action> &actions, const QString &disturbed, const QString &fault)
{
    const auto firstPayment = std::ranges::find_if(actions, &Action::pays) - actions.begin();
    bool calm = fault.isEmpty();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        const Action &action = actions.at(i);
        if (!calm && QLatin1StringView(action.name) == disturbed)
            calm = shop.disturb(fault);
        const int code = action.run(shop.sale.get());
        if (code == saleBegunAgain && ++shop.paidAgain < 3)
            i = firstPayment - 1;
        else if (code != 0)
            return code;
    }
    return 0;
}

} // namespace

void TestRecovery::nothingIsLostOrDoubled_data()
{
    QTest::addColumn<int>("script");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("cancelled");
    QTest::addColumn<int>("paidAgain");
    for (int i = 0; i < scripts().size(); ++i)
        for (const Script &script = scripts().at(i); const Action &action : script.actions)
            for (const Command &command : action.commands)
                for (const char *fault : {"lost-answer", "power-cut", "close"}) {
                    const bool cut = qstrcmp(fault, "power-cut") == 0 && command.openAfter;
                    const bool cancels = script.totals.isEmpty();
                    const bool asWanted = cancels && &action == &script.actions.last();
                    const QString whole = QLatin1StringView(fault) + u'=' + command.name;
                    QTest::addRow("%s, %s: %s", script.name, action.name, qPrintable(whole))
                        << i << QString::fromLatin1(action.name) << whole
                        << (cancels ? 1 : 0) + (cut && !asWanted ? 1 : 0) << (cut && action.pays ? 1 : 0);
                }
}

void TestRecovery::nothingIsLostOrDoubled()
{
    QFETCH(const int, script);
    QFETCH(const QString, action);
    QFETCH(const QString, fault);
    const Script &wanted = scripts().at(script);
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    QCOMPARE(work(shop, wanted.actions, action, fault), 0);
    QVERIFY(shop.timesNoticed() > 0); // it did go off
    const bool sold = !wanted.totals.isEmpty();
    const bool ended = sold ? shop.sale->status == SaleClosed
                            : shop.sale->status == SaleCancelled || shop.sale->status == SaleDoubtful;
    QVERIFY(ended);
    const Entry last{shop.sale->receipt.first, shop.sale->receipt.second, 1, wanted.totals, wanted.lines};
    if (sold)
        QCOMPARE(listed(shop.sale->totals), wanted.totals);
    shop.close();
    QCOMPARE(shop.closed(), sold ? QList{last} : QList<Entry>());
    QTEST(int(shop.cancelled().size()), "cancelled");
    QTEST(shop.paidAgain, "paidAgain");
    if (sold)
        QCOMPARE(shop.noted.last(), u"closed %1 %2"_s.arg(last.z).arg(last.number));
}

void TestRecovery::unreadableAnswerIsLookedInto_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::newRow("cut short: 5") << QByteArray("!short-reply");
    QTest::newRow("not authentic: 11") << QByteArray("!bad-mac");
    QTest::newRow("malformed: 12") << QByteArray("!no-mac");
}

void TestRecovery::unreadableAnswerIsLookedInto()
{
    QFETCH(const QByteArray, fault);
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    const VelnoSaleItem provoking = item(fault.constData(), 700);
    QCOMPARE(saleAddItem(shop.sale.get(), &provoking), 0);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    QCOMPARE(shop.place().connections, 1); // the connection is as good as before
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines, QStringList{QString::fromLatin1(fault)});
}

void TestRecovery::busyRegisterIsWaitedFor()
{
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    QVERIFY(shop.disturb(u"state=4"_s, "The register is busy."));
    QCOMPARE(addOne<1250>(shop.sale.get()), 0);
    QCOMPARE(shop.timesNoticed(), 1);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines, QStringList{u"Ekmek"_s});
}

void TestRecovery::dyingRegisterIsGivenUpAndComesBack()
{
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QVERIFY(shop.reg.setFault(u"power-cut=item"_s));
    QCOMPARE(addOne<1250>(sale), 2);
    QVERIFY(saleIsPending(sale));
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 0);
    QCOMPARE(addOne<2000>(sale), 0);
    QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines, (QStringList{u"Ekmek"_s, u"Ayran"_s}));
}

void TestRecovery::absentRegisterIsGivenUp()
{
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    shop.place().patience = brief;
    shop.close();
    QCOMPARE(addOne<1250>(shop.sale.get()), 2);
    QCOMPARE(saleGoOn(shop.sale.get()), 2);
    QCOMPARE(shop.sale->count, 1);
    QCOMPARE(shop.sale->taken, 0);
}

void TestRecovery::lostKeysAreAgreedOnAnew()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    QVERIFY(shop.disturb(u"forget-pairing"_s, Shop::pairingAnew));
    QCOMPARE(addOne<2000>(sale), 0); // of the same sale
    QCOMPARE(shop.timesNoticed(), 1);
    QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.pairings(), 2);
    QCOMPARE(shop.receipts.size(), 1);
    QCOMPARE(shop.closed().first().lines, (QStringList{u"Ekmek"_s, u"Ayran"_s}));
}

void TestRecovery::keysSurviveACut()
{
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    QVERIFY(shop.disturb(u"power-cut=item"_s));
    QCOMPARE(addOne<1250>(shop.sale.get()), 0);
    shop.close();
    QCOMPARE(shop.pairings(), 1);
}

/** Pairing anew ends with 10, and from then on there is nothing to ask with: 1. */
void TestRecovery::failedPairingLeavesTheStepPending()
{
    Shop shop;
    QVERIFY(shop.opens());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QVERIFY(shop.disturb(u"forget-pairing"_s, Shop::pairingAnew, u"result-code=03"_s));
    QCOMPARE(addOne<1250>(sale), 10);
    QVERIFY(saleIsPending(sale));
    int state = 0;
    QCOMPARE(velnoext_ecr_state(5000, &state), 1);
    QCOMPARE(saleGoOn(sale), 10);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(saleGoOn(sale), 0);
    QCOMPARE(saleEnd(sale, 0), 0);
    shop.close();
    QCOMPARE(shop.closed().size(), 1);
    QCOMPARE(shop.closed().first().lines, QStringList{u"Ekmek"_s});
}

void TestRecovery::noteTellsTheNextProcess_data()
{
    QTest::addColumn<QString>("fate");
    QTest::addColumn<int>("found");
    QTest::newRow("open still") << u"none"_s << int(SaleOpen);
    QTest::newRow("closed") << u"end"_s << int(SaleClosed);
    QTest::newRow("cancelled") << u"cancel"_s << int(SaleDoubtful);
    QTest::newRow("closed, and its answer lost") << u"lost-answer=change-state"_s << int(SaleClosed);
    QTest::newRow("closed, and then the power cut") << u"power-cut=change-state"_s << int(SaleClosed);
    QTest::newRow("power cut before it was closed") << u"power-cut=state"_s << int(SaleDoubtful);
}

/** The library forgets the keys as well: the register is paired again. */
void TestRecovery::noteTellsTheNextProcess()
{
    QFETCH(const QString, fate);
    QFETCH(const int, found);
    Shop shop;
    QVERIFY(shop.opensWithAKnownReceipt());
    Sale *const sale = shop.sale.get();
    QCOMPARE(saleStart(sale, 0), 0);
    QCOMPARE(addOne<1250>(sale), 0);
    const VelnoReceiptRef receipt = sale->receipt;
    if (fate.contains(u'='))
        QVERIFY(shop.reg.setFault(fate));
    if (fate == u"cancel")
        QCOMPARE(velnoext_cancel_sale(5000), 0);
    else if (fate != u"none")
        velnoext_end_sale(0); // whatever it says: this process ends now
    if (fate.contains(u'='))
        shop.reg.waitFor(u"disconnected"_s);
    velnoext_close_all();
    Velno::Ext::library().pairingRecords.clear();
    QVERIFY(shop.reg.setFault(u"none"_s));

    QVERIFY(shop.opens());
    const auto next = std::make_unique<Sale>();
    next->reg = &shop.place();
    next->known = sale->known;
    QCOMPARE(saleFind(next.get(), &receipt), 0);
    QCOMPARE(int(next->status), found);
    if (found != SaleDoubtful)
        QCOMPARE(told(next->totals, totalToPay), 1250);
    if (found == SaleOpen)
        QCOMPARE(saleCancel(next.get()), 0);
    QVERIFY(found != SaleOpen || next->status == SaleCancelled);
    shop.close();
    QCOMPARE(shop.closed().size(), found == SaleClosed ? 1 : 0);
    QCOMPARE(shop.cancelled().size(), found == SaleClosed ? 0 : 1);
}

void TestRecovery::reportIsMadeOnce_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *command : {"z", "state", "report"})
        for (const char *fault : {"lost-answer", "power-cut", "close"})
            QTest::addRow("%s=%s", fault, command)
                << QString::fromLatin1("%1=%2").arg(QLatin1StringView(fault), QLatin1StringView(command));
}

void TestRecovery::reportIsMadeOnce()
{
    QFETCH(const QString, fault);
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(saleStart(shop.sale.get(), 0), 0);
    QCOMPARE(addOne<1250>(shop.sale.get()), 0);
    QCOMPARE(saleEnd(shop.sale.get(), 0), 0);
    int z = 0;
    QCOMPARE(velnoext_current_z(5000, &z), 0);
    QVERIFY(shop.disturb(fault));
    QCOMPARE(makeZReport(&shop.place(), z), 0);
    QVERIFY(shop.timesNoticed() > 0);
    QCOMPARE(makeZReport(&shop.place(), z), 0); // it is made, so nothing is done
    shop.close();
    QCOMPARE(shop.reports, QList<int>{1});
}

/** Behind a report of which the answer was lost, a no is no answer to whether it was made. */
void TestRecovery::refusedNumberDoesNotTellOfTheReport()
{
    Shop shop;
    QVERIFY(shop.opens());
    int z = 0;
    QCOMPARE(velnoext_current_z(5000, &z), 0);
    QVERIFY(shop.disturb(u"lost-answer=report"_s, Shop::connecting, u"refuse=z"_s));
    QCOMPARE(makeZReport(&shop.place(), z), notTold);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(makeZReport(&shop.place(), z), 0);
    shop.close();
    QCOMPARE(shop.reports.size(), 1);
}

void TestRecovery::reportOfAnotherRegisterIsNotMade()
{
    Shop shop;
    QVERIFY(shop.opens());
    QCOMPARE(makeZReport(&shop.place(), 5), saleNotOurs); // this one is at its first
    shop.close();
    QVERIFY(shop.reports.isEmpty());
}

QTEST_GUILESS_MAIN(TestRecovery)
#include "tst_recovery.moc"
