extern "C" {
#include "examples/c/recovery.h"
}
#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
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
    void dyingRegisterIsGivenUpAndComesBack();
    void absentRegisterIsGivenUp();
    void lostKeysAreAgreedOnAnew();
    void keysSurviveACut();
    void failedPairingLeavesTheStepPending();
    void paymentBySomebodyElseIsNoticed();
    void itemOfSomebodyElseIsNoticed();
    void openSaleOfSomebodyElseIsLeft();
    void saleIsFoundOpenInSpiteOfAnError();
    void saleOnAnUnnotedNumberIsNotSold();
    void noteTellsTheNextProcess_data();
    void noteTellsTheNextProcess();
    void reportIsMadeOnce_data();
    void reportIsMadeOnce();
    void refusedNumberDoesNotTellOfTheReport();
    void reportOfAnotherRegisterIsNotMade();
};

namespace {

/** A row of the journal. */
struct Entry
{
    int z = 0;
    int number = 0;
    int status = 0; ///< 1 closed, 2 cancelled
    QList<qint64> totals;
    QStringList lines; ///< a deleted one begins with a minus

    bool operator==(const Entry &) const = default;
};

QStringList linesOf(const QSqlDatabase &database, const Entry &entry)
{
    QSqlQuery query(database);
    QStringList lines;
    query.exec(
        u"SELECT name, deleted FROM lines WHERE z = %1 AND number = %2 ORDER BY line"_s.arg(entry.z).arg(
            entry.number));
    while (query.next())
        lines << (query.value(1).toBool() ? u"-"_s : QString()) + query.value(0).toString();
    return lines;
}

QList<Entry> receiptsIn(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    QList<Entry> entries;
    query.exec(u"SELECT z, number, status, total, tax, cash, card, change, items FROM receipts"
               " ORDER BY z, number"_s);
    while (query.next()) {
        Entry entry{query.value(0).toInt(), query.value(1).toInt(), query.value(2).toInt(), {}, {}};
        for (int i = 3; i < 9; ++i)
            entry.totals << query.value(i).toLongLong();
        entry.lines = linesOf(database, entry);
        entries << entry;
    }
    return entries;
}

QList<int> reportsIn(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    QList<int> receipts;
    query.exec(u"SELECT receipts FROM z_reports ORDER BY z"_s);
    while (query.next())
        receipts << query.value(0).toInt();
    return receipts;
}

/** By value: nothing may refer to a number inside of a packed structure. */
qint64 told(const VelnoEcrSaleTotals &totals, int index)
{
    return totals.values[index];
}

QList<qint64> listed(const VelnoEcrSaleTotals &totals)
{
    QList<qint64> list;
    for (int i = totalToPay; i <= changeGiven; ++i)
        list << told(totals, i);
    return list << totals.number;
}

VelnoSaleItem item(const char *name, long long price, int quantity = 1000, signed char section = 1)
{
    VelnoSaleItem made = {};
    qstrncpy(made.name, name, sizeof made.name);
    made.price = price;
    made.quantity = quantity;
    made.section = section;
    return made;
}

/** A register that is disturbed once, and an application that notes what it opens and what it has sold. */
class Shop
{
public:
    Shop()
        : m_port(freePort())
        , reg(m_port, {u"--journal"_s, journal()})
        , sale(std::make_unique<Sale>())
    {
        m_place.serial = TestSupport::serial;
        m_place.address = "127.0.0.1";
        m_place.port = m_port;
        m_place.patience = patience;
        m_place.notice = [](void *shop, const char *text) { static_cast<Shop *>(shop)->hear(text); };
        m_place.context = this;
        sale->reg = &m_place;
        sale->note = [](void *shop, SaleStatus status, const VelnoReceiptRef *ref,
                        const VelnoEcrSaleTotals *) { return static_cast<Shop *>(shop)->take(status, *ref); };
        sale->context = this;
    }
    ~Shop() { velnoext_close_all(); }
    Q_DISABLE_COPY_MOVE(Shop)

    bool opens() { return reg.isReady() && connectRegister(&m_place) == 0; }

    /** Sells something, so that there is a receipt to ask counter-questions with; it is not counted below. */
    bool opensWithAKnownReceipt()
    {
        const VelnoSaleItem known = item("Gazete", 300);
        const bool sold = opens() && saleStart(sale.get(), 0) == 0 && saleAddItem(sale.get(), &known) == 0 &&
                          saleEnd(sale.get(), 0) == 0;
        m_isKnown = true;
        noted.clear();
        return sold;
    }

    /** Goes off at this command until the application has noticed; then another one does, if any. */
    bool disturb(const QString &fault, const QByteArray &noticed = connecting, const QString &next = {})
    {
        m_awaited = noticed;
        m_noticed = 0;
        m_next = next;
        return reg.setFault(fault);
    }

    static constexpr char connecting[] = "The connection is lost; connecting again.";
    static constexpr char pairingAnew[] = "The register has lost its keys; pairing anew.";
    static constexpr char enteredAgain[] = "The register has cancelled the sale; it is entered again.";

    Register &place() { return m_place; }
    int timesNoticed() const { return m_noticed; }
    int pairings() const
    {
        return int(std::ranges::count(reg.events(), u"paired"_s,
                                      [](const QJsonObject &event) { return event[u"event"_s].toString(); }));
    }

    /** Ends the register and reads what is on record. */
    void close()
    {
        reg.say("quit");
        QCOMPARE(reg.waitForExit(), 0);
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"audit"_s);
            database.setDatabaseName(journal());
            QVERIFY(database.open());
            receipts = receiptsIn(database).sliced(m_isKnown ? 1 : 0);
            reports = reportsIn(database);
        }
        QSqlDatabase::removeDatabase(u"audit"_s);
    }

    QList<Entry> closed() const { return withStatus(1); }
    QList<Entry> cancelled() const { return withStatus(2); }

private:
    QTemporaryDir m_folder;
    quint16 m_port;
    Register m_place = {};
    QByteArray m_awaited;
    int m_noticed = 0;
    QString m_next;
    bool m_isKnown = false;

    QString journal() const { return m_folder.filePath(u"journal"_s); }

    void hear(const QByteArray &text)
    {
        if (text != m_awaited || ++m_noticed > 1)
            return;
        reg.setFault(u"none"_s);
        if (!m_next.isEmpty())
            reg.setFault(m_next);
    }

    int take(SaleStatus status, const VelnoReceiptRef &ref)
    {
        if (takesNotes)
            noted << wordFor(status) + u" %1 %2"_s.arg(ref.first).arg(ref.second);
        return takesNotes ? 0 : 1;
    }

    static QString wordFor(SaleStatus status)
    {
        return status == SaleOpen        ? u"open"_s
               : status == SaleClosed    ? u"closed"_s
               : status == SaleCancelled ? u"cancelled"_s
                                         : u"doubtful"_s;
    }

    QList<Entry> withStatus(int status) const
    {
        QList<Entry> entries;
        for (const Entry &entry : receipts)
            if (entry.status == status)
                entries << entry;
        return entries;
    }

public:
    SimulatedRegister reg;
    std::unique_ptr<Sale> sale;
    QStringList noted; ///< as they would stand in the books
    bool takesNotes = true;
    int paidAgain = 0;     ///< how often the application was told to take the payments again
    QList<Entry> receipts; ///< on record, after close()
    QList<int> reports;    ///< receipts in each Z report, likewise
};

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

template <int price>
int addOne(Sale *sale)
{
    const VelnoSaleItem one = item(price == 1250 ? "Ekmek" : "Ayran", price);
    return saleAddItem(sale, &one);
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

void TestRecovery::refusalLeavesTheSaleAsItWas()
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
void TestRecovery::refusedReceiptIsNotTakenForCancelled()
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

void TestRecovery::passingRefusalIsNotTakenForCancelled_data()
{
    QTest::addColumn<bool>("isFirst");
    QTest::newRow("first sale, nothing to compare with") << true;
    QTest::newRow("behind another sale") << false;
}

/** A single no, in answer to the question whether the sale that has just been ended is closed. */
void TestRecovery::passingRefusalIsNotTakenForCancelled()
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

void TestRecovery::firstSaleIsLeftToAPerson_data()
{
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("cancelled by a cut") << false;
    QTest::newRow("closed, and the register refuses to tell") << true;
}

void TestRecovery::firstSaleIsLeftToAPerson()
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

void TestRecovery::nobodyDecidesWhoIsNotAsked()
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

void TestRecovery::lineRefusedWhileEnteredAgainIsKept_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("reason");
    QTest::newRow("the line is refused") << u"refuse=item"_s << 8;
    QTest::newRow("the sale is not begun again") << u"refuse=change-state"_s << 6;
}

/** The refusal is not that of the new line, which somebody would type once more; and the old one is not lost.
 */
void TestRecovery::lineRefusedWhileEnteredAgainIsKept()
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

void TestRecovery::saleThatIsNotWholeAgainCanBeCancelled()
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

void TestRecovery::outcomeIsNotedAtOnce_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QStringList>("noted");
    const QString begun = u"open 1 2"_s;
    QTest::newRow("closed") << QString() << QStringList{begun, u"open 1 2"_s, u"closed 1 2"_s};
    // The register does not open a sale any more, so nothing comes behind it.
    QTest::newRow("cancelled by a cut") << u"power-cut=item"_s << QStringList{begun, u"doubtful 1 2"_s};
}

void TestRecovery::outcomeIsNotedAtOnce()
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

void TestRecovery::outcomeIsNotKnownBeforeItIsNoted_data()
{
    QTest::addColumn<QString>("step");
    QTest::newRow("payment") << u"pay"_s;
    QTest::newRow("end") << u"end"_s;
    QTest::newRow("cancel") << u"cancel"_s;
}

void TestRecovery::outcomeIsNotKnownBeforeItIsNoted()
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

void TestRecovery::stepIsNotRepeatedUnseen_data()
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
void TestRecovery::stepIsNotRepeatedUnseen()
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

void TestRecovery::refusedStepIsNotRepeatedUnseen()
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

void TestRecovery::paymentBySomebodyElseIsNoticed()
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

void TestRecovery::itemOfSomebodyElseIsNoticed()
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

void TestRecovery::saleIsFoundOpenInSpiteOfAnError()
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

void TestRecovery::openSaleOfSomebodyElseIsLeft()
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

void TestRecovery::saleOnAnUnnotedNumberIsNotSold()
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
