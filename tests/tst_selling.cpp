#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "simulator/fiscal/sections.h"
#include "simulator/register/provoked_faults.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace Velno;

/** The real velno-register sells what an application asks for through the device library. */
class TestSelling : public QObject
{
    Q_OBJECT

private slots:
    void aSaleFromStartToEnd();
    void itemsAreAddedAtOnceAndDeleted();
    void aSaleStartsFromTheMenuToo_data();
    void aSaleStartsFromTheMenuToo();
    void aSaleWithInvoice();
    void aSaleIsCancelled();
    void paymentsInParts();
    void refusedKeysAreInTheEventsAndInNobodysWay();
    void aRefusedPaymentDoesNotCloseTheSaleOtherwise();
    void aSaleIsCancelledWhateverWasRefused_data();
    void aSaleIsCancelledWhateverWasRefused();
    void aSaleIsCancelledWithoutPaper();
    void refusalsAreNamedInWordsToo();
    void withoutASaleThereIsNone();
    void sectionsAreTold();
    void slipsAreTypeset();
    void reportsCloseTheDay();
    void theSaleLimitHolds();
    void withoutPaperNothingIsSold();
    void theStateCanBeSet();
    void faultsOfSales_data();
    void faultsOfSales();
    void theSaleProvokesItsFaults_data();
    void theSaleProvokesItsFaults();
    void provokedFaultsWaitForTheirOwnCommands();
    void aFaultMayBeForSoManyTimes();
    void theManualListsWhatProvokes();
    void itemsNamedLikeNoFaultAreWarnedOf();
    void whatWasProvokedIsForgotten();
    void whatIsProvokedAgainWaitsOnce();
    void aKilledRegisterRemembers_data();
    void aKilledRegisterRemembers();
    void aCutOfThePowerKeepsWhatWasClosed();
    void printsBecomeFiles();
    void booksAreTheirOwnersAlone();
    void foreignFilesStayAsTheyAre();
    void unusableFilesAreRefused_data();
    void unusableFilesAreRefused();
    void cleanup();
};

namespace {

constexpr unsigned int patience = 30'000;
constexpr int cash = 0;
constexpr int card = 1;
constexpr unsigned long long patient = 11'111'111'111;

/** A register and the library, connected. */
class Shop
{
public:
    explicit Shop(const QStringList &arguments = {})
        : reg(port, arguments)
    {
        connected = connect();
    }

    int connect() { return velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience); }

    /** What the printer prints next. */
    QString printed()
    {
        const QJsonObject event = reg.waitFor(u"printed"_s);
        return event.value(u"lines"_s).toVariant().toStringList().join(u'\n') + u'\n';
    }

    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg;
    int connected = -1;
};

VelnoSaleItem itemOf(long long price, const QByteArray &name = "Ekmek", signed char section = 1)
{
    VelnoSaleItem item{};
    item.price = price;
    item.quantity = 1000;
    item.section = section;
    memcpy(item.name, name.constData(), size_t(qMin<qsizetype>(name.size(), 52)));
    return item;
}

int addItem(long long price, const QByteArray &name = "Ekmek", signed char section = 1)
{
    VelnoSaleItem item = itemOf(price, name, section);
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &item, &totals);
}

int addItemInList(long long price, const QByteArray &name)
{
    VelnoSaleItemList list{};
    list.count = 1;
    list.items[0] = itemOf(price, name);
    VelnoEcrSaleTotals totals{};
    return velnoext_add_multiple_sale_items(patience, &list, &totals);
}

int deleteLast()
{
    VelnoEcrSaleTotals totals{};
    return velnoext_delete_last_sale_item(patience, &totals);
}

QList<long long> valuesOf(const VelnoEcrSaleTotals &totals)
{
    QList<long long> values(totals.values, totals.values + 5);
    return values << totals.number;
}

/** What sale-state tells: the code alone unless it is 0. */
struct SaleState
{
    int code = -1;
    QList<long long> totals;
    VelnoReceiptRef ref{};
};

SaleState saleState()
{
    SaleState state;
    int first = 0;
    VelnoEcrSaleTotals totals{};
    state.code = velnoext_sale_state(patience, &first, &totals, &state.ref);
    state.totals = valuesOf(totals);
    return state;
}

int receipt(VelnoReceiptRef ref, QList<long long> *values = nullptr)
{
    VelnoEcrSaleTotals totals{};
    const int code = velnoext_receipt_data(patience, &ref, &totals);
    if (values)
        *values = valuesOf(totals);
    return code;
}

int state()
{
    int number = -1;
    return velnoext_ecr_state(patience, &number) == 0 ? number : -1;
}

int endWithInvoice()
{
    VelnoInvoice invoice{};
    memcpy(invoice.idNumber, "11111111111", 11);
    memcpy(invoice.reference, "A123456", 7);
    invoice.mode = 1;
    return velnoext_end_sale_with_invoice(&invoice);
}

int printSlip()
{
    VelnoTextStyle style{};
    velnoext_printer_set_encoding("UTF-8");
    velnoext_printer_add_text("Merhaba", &style);
    return velnoext_print_slip(patience, false);
}

QList<int> listed(int (*ask)(unsigned int, int *, int *))
{
    QList<int> list(10);
    int count = int(list.size());
    return ask(patience, list.data(), &count) == 0 ? list.first(count) : QList<int>{-1};
}

int medical()
{
    return velnoext_add_medical_contribution(patience, 100, patient);
}

QString squeezed(const QString &text)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        line = line.simplified();
    return lines.join(u'\n');
}

} // namespace

void TestSelling::cleanup()
{
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
}

void TestSelling::aSaleFromStartToEnd()
{
    Shop shop({u"--z"_s, u"12"_s});
    QCOMPARE(shop.connected, 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(state(), 5);
    VelnoSaleItem item = itemOf(1250);
    item.quantity = 2000;
    VelnoEcrSaleTotals totals{};
    QCOMPARE(velnoext_add_sale_item(patience, &item, &totals), 0);
    QCOMPARE(valuesOf(totals), (QList<long long>{2500, 25, 0, 0, 0, 1}));
    QCOMPARE(velnoext_add_medical_contribution(patience, 150, patient), 0);
    QCOMPARE(velnoext_add_payment(cash, 3000), 0);
    const SaleState before = saleState();
    QCOMPARE(before.code, 0);
    QCOMPARE(before.totals, (QList<long long>{2650, 25, 3000, 0, 350, 1}));
    QCOMPARE(before.ref.first, 12);
    QCOMPARE(before.ref.second, 1);
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(state(), 1);
    const QString text = squeezed(shop.printed());
    for (const QString &line :
         {u"FİŞ NO: 0001"_s, u"2 AD X 12,50"_s, u"Ekmek %1 *25,00"_s, u"İLAÇ KATILIM PAYI *1,50"_s,
          u"TOPLAM *26,50"_s, u"NAKİT *30,00"_s, u"PARA ÜSTÜ *3,50"_s})
        QVERIFY2(text.contains(u'\n' + line + u'\n'), qPrintable(line + u" in\n"_s + text));
    QList<long long> closed;
    QCOMPARE(receipt(before.ref, &closed), 0);
    QCOMPARE(closed, before.totals);
}

void TestSelling::itemsAreAddedAtOnceAndDeleted()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    VelnoSaleItemList list{};
    list.count = 10;
    for (int i = 0; i < 10; ++i)
        list.items[i] = itemOf(100 * (i + 1));
    VelnoEcrSaleTotals totals{};
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &totals), 0);
    QCOMPARE(totals.values[0], 5500);
    QCOMPARE(totals.number, 10);
    QCOMPARE(velnoext_delete_last_sale_item(patience, &totals), 0);
    QCOMPARE(totals.values[0], 4500);
    QCOMPARE(velnoext_delete_sale_item(patience, 0, &totals), 0);
    QCOMPARE(totals.values[0], 4400);
    QCOMPARE(totals.number, 8);
    for (int index : {0, 9, 10, -1, 0x7FFFFFFF})
        QCOMPARE(velnoext_delete_sale_item(patience, index, &totals), 8);
    QCOMPARE(saleState().totals.first(), 4400);
    list.items[9].quantity = 0; // what the library lets pass
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &totals), 8);
    QCOMPARE(saleState().totals.first(), 4400);
}

void TestSelling::aSaleStartsFromTheMenuToo_data()
{
    QTest::addColumn<bool>("withInvoice");
    QTest::newRow("plain") << false;
    QTest::newRow("with invoice") << true;
}

void TestSelling::aSaleStartsFromTheMenuToo()
{
    QFETCH(const bool, withInvoice);
    Shop shop({u"--state"_s, u"7"_s});
    QCOMPARE(state(), 7);
    QCOMPARE(withInvoice ? velnoext_start_sale_with_invoice(patience) : velnoext_start_sale(patience), 0);
    QCOMPARE(state(), 5);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(endWithInvoice(), withInvoice ? 0 : 8);
    QCOMPARE(velnoext_start_sale(patience), withInvoice ? 0 : 6);
}

void TestSelling::aSaleWithInvoice()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale_with_invoice(patience), 0);
    QCOMPARE(addItem(12'000, "Defter", 6), 0);
    const VelnoReceiptRef ref = saleState().ref;
    VelnoInvoice invoice{};
    invoice.invoiceType = 2;
    invoice.idKind = 1;
    memcpy(invoice.idNumber, "0000000001", 10);
    invoice.mode = 2;
    invoice.flag = 1;
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), 0);
    const QString text = squeezed(shop.printed());
    for (const QString &line : {u"TÜR: e-ARŞİV FATURA"_s, u"VERGİ NO: 0000000001"_s,
                                u"İRSALİYE YERİNE GEÇER"_s, u"KREDİ KARTI MARMARA BANK *120,00"_s})
        QVERIFY2(text.contains(u'\n' + line + u'\n'), qPrintable(line));
    QList<long long> closed;
    QCOMPARE(receipt(ref, &closed), 0);
    QCOMPARE(closed, (QList<long long>{12'000, 1091, 0, 12'000, 0, 1}));
    QCOMPARE(state(), 1);
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), 8);
}

void TestSelling::aSaleIsCancelled()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    const VelnoReceiptRef ref = saleState().ref;
    QCOMPARE(velnoext_add_payment(card, 40), 0);
    QCOMPARE(receipt(ref), 8); // not closed yet
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QVERIFY(squeezed(shop.printed()).contains(u"\nFİŞ İPTAL\n"_s));
    QCOMPARE(receipt(ref), 8);
    QCOMPARE(state(), 1);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(saleState().ref.second, ref.second + 1);
}

void TestSelling::paymentsInParts()
{
    Shop shop;
    QCOMPARE(listed(velnoext_active_acquirers), (QList<int>{11, 23, 35}));
    QCOMPARE(listed(velnoext_acquirers_of_sale), QList<int>());
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100'000), 0);
    QCOMPARE(velnoext_add_payment(card, 10'001), 0);
    QCOMPARE(velnoext_add_payment(card, 1), 0);
    QCOMPARE(velnoext_add_payment(cash, 20'000), 0);
    QCOMPARE(saleState().totals, (QList<long long>{100'000, 990, 20'000, 10'002, 0, 1}));
    QCOMPARE(listed(velnoext_acquirers_of_sale), (QList<int>{11, 23}));
    QCOMPARE(addItem(100), 8); // items stay as they are
    QCOMPARE(deleteLast(), 8);
    QCOMPARE(velnoext_add_medical_contribution(patience, 100, patient), 7);
    QCOMPARE(velnoext_end_sale(card), 0);
    const QString text = squeezed(shop.printed());
    QVERIFY(text.contains(u"\nKREDİ KARTI TOROS BANK *699,98\n"_s));
    QCOMPARE(listed(velnoext_acquirers_of_sale), (QList<int>{11, 23, 35}));
}

namespace {

/** The next outcome of keys that were refused. */
QString refusedKeys(Shop &shop)
{
    QJsonObject done;
    do
        done = shop.reg.waitFor(u"done"_s);
    while (done.value(u"accepted"_s).toBool());
    return done.value(u"reason"_s).toString();
}

} // namespace

void TestSelling::refusedKeysAreInTheEventsAndInNobodysWay()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(velnoext_end_sale(cash), 0); // sent; nothing is on the receipt
    QCOMPARE(refusedKeys(shop), u"nothing-sold"_s);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(saleState().code, 0);
    QCOMPARE(velnoext_add_payment(card, 101), 0); // sent; more than is left
    QCOMPARE(refusedKeys(shop), u"card-over-rest"_s);
    QCOMPARE(saleState().totals.at(3), 0);
    QCOMPARE(velnoext_add_payment(card, 100), 0);
    QCOMPARE(saleState().totals.at(3), 100);
    QCOMPARE(velnoext_end_sale(card), 0);
    QCOMPARE(state(), 1);
    QCOMPARE(velnoext_start_sale_with_invoice(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(velnoext_end_sale(cash), 0); // sent; an invoice is needed
    QCOMPARE(refusedKeys(shop), u"invoice-needed"_s);
    QCOMPARE(endWithInvoice(), 0);
}

void TestSelling::aRefusedPaymentDoesNotCloseTheSaleOtherwise()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(velnoext_add_payment(card, 101), 0); // refused
    QCOMPARE(velnoext_end_sale(cash), 0);         // of an application that does not look
    QCOMPARE(refusedKeys(shop), u"card-over-rest"_s);
    QCOMPARE(refusedKeys(shop), u"error-displayed"_s);
    QCOMPARE(state(), 5);
    QCOMPARE(saleState().totals.at(2), 0);
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(state(), 1);
}

void TestSelling::aSaleIsCancelledWhateverWasRefused_data()
{
    QTest::addColumn<QByteArray>("line"); ///< said to the register
    QTest::addColumn<int>("paid");        ///< before
    QTest::addColumn<int>("refused");     ///< by card
    QTest::addColumn<QString>("reason");

    QTest::newRow("too much for a card") << "z 0"_ba << 0 << 101 << u"card-over-rest"_s;
    QTest::newRow("too much behind a payment") << "z 0"_ba << 40 << 61 << u"card-over-rest"_s;
    QTest::newRow("without paper") << "paper off"_ba << 0 << 100 << u"no-paper"_s;
    QTest::newRow("without paper, partly paid") << "paper off"_ba << 40 << 1 << u"no-paper"_s;
    QTest::newRow("by a fault") << "fault refuse=change-state*1"_ba << 0 << 100 << u"fault-refuse"_s;
}

void TestSelling::aSaleIsCancelledWhateverWasRefused()
{
    QFETCH(const QByteArray, line);
    QFETCH(const int, paid);
    QFETCH(const int, refused);
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    if (paid > 0)
        QCOMPARE(velnoext_add_payment(card, paid), 0);
    QCOMPARE(saleState().totals.at(3), paid); // the keys have been pressed
    shop.reg.say(line);
    QVERIFY(!shop.reg.waitForAny({u"set"_s, u"fault"_s, u"error"_s}).isEmpty());
    QCOMPARE(velnoext_add_payment(card, refused), 0);
    QTEST(refusedKeys(shop), "reason");
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QCOMPARE(state(), 1);
}

void TestSelling::aSaleIsCancelledWithoutPaper()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    shop.reg.say("paper off");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QCOMPARE(state(), 1);
}

void TestSelling::refusalsAreNamedInWordsToo()
{
    const quint16 port = TestSupport::freePort();
    QProcess process;
    process.start(SimulatedRegister::program(), {u"--serial"_s, QLatin1StringView(SimulatedRegister::serial),
                                                 u"--connect"_s, u"127.0.0.1:%1"_s.arg(port)});
    QCOMPARE(velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience), 0);
    QCOMPARE(addItem(100), 6);
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.contains("\nanswered item false no-sale no sale is open\n"), output);
}

void TestSelling::withoutASaleThereIsNone()
{
    Shop shop;
    QCOMPARE(addItem(100), 6);
    QCOMPARE(addItemInList(100, "a"), 6);
    QCOMPARE(deleteLast(), 6);
    QCOMPARE(velnoext_add_medical_contribution(patience, 100, patient), 6);
    QCOMPARE(saleState().code, 6);
    QCOMPARE(velnoext_add_payment(cash, 100), 6);
    QCOMPARE(velnoext_end_sale(cash), 6);
    QCOMPARE(velnoext_cancel_sale(patience), 6);
    QCOMPARE(endWithInvoice(), 8);
    QCOMPARE(receipt({1, 1}), 8);
    QCOMPARE(receipt({-1, 0x7FFFFFFF}), 8);
}

void TestSelling::sectionsAreTold()
{
    Shop shop;
    for (const Simulator::Section &section : Simulator::sectionTable()) {
        VelnoSaleItem item{};
        item.section = static_cast<signed char>(section.number);
        QCOMPARE(velnoext_section_data(patience, &item), 0);
        QCOMPARE(QString::fromUtf8(item.name), QString::fromUtf16(section.name));
        QCOMPARE(item.quantity, section.taxRate);
    }
}

void TestSelling::slipsAreTypeset()
{
    Shop shop;
    VelnoTextStyle plain{};
    VelnoTextStyle middle{1, 1, 0};
    QCOMPARE(velnoext_printer_set_encoding("ISO-8859-9"), 0);
    QCOMPARE(velnoext_printer_add_text("S\xDDPAR\xDD\xDE", &middle), 0);
    QCOMPARE(velnoext_printer_add_line_feed(2), 0);
    QCOMPARE(velnoext_printer_set_encoding("UTF-8"), 0);
    QCOMPARE(velnoext_printer_add_justified_text("Masa", "7", &plain), 0);
    QCOMPARE(velnoext_printer_add_text("Afiyet olsun", &plain), 0);
    QCOMPARE(velnoext_print_slip(patience, false), 0);
    const QString text = shop.printed();
    QCOMPARE(text, QString(14, u' ') + u"S İ P A R İ Ş\n\n\n"_s + u"Masa"_s + QString(37, u' ') +
                       u"7\nAfiyet olsun\n            MALİ DEĞERİ YOKTUR\n"_s);
    QCOMPARE(printSlip(), 0);
    velnoext_printer_set_encoding("UTF-8");
    QCOMPARE(velnoext_print_slip(patience, true), 0);
    QVERIFY(!shop.printed().contains(u"VELNO MARKET"_s));
    QVERIFY(shop.printed().contains(u"VELNO MARKET"_s));
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(printSlip(), 8);
}

void TestSelling::reportsCloseTheDay()
{
    Shop shop({u"--z"_s, u"7"_s, u"--clock"_s, u"1790000000"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(2500), 0);
    QCOMPARE(velnoext_x_report(), 6);
    QCOMPARE(velnoext_z_report(), 8);
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(velnoext_x_report(), 0);
    QCOMPARE(velnoext_z_report(), 0);
    shop.printed();
    QVERIFY(squeezed(shop.printed()).contains(u"\nX RAPORU\n"_s));
    const QString z = squeezed(shop.printed());
    QVERIFY(z.contains(u"\nGÜNLÜK TOPLAM *25,00\n"_s));
    int number = 0;
    QCOMPARE(velnoext_current_z(patience, &number), 0);
    QCOMPARE(number, 8);
    QCOMPARE(velnoext_last_z_datetime(patience, &number), 0);
    QCOMPARE(number, 1'790'000'000);
    QCOMPARE(receipt({7, 1}), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(saleState().ref.first, 8);
    QCOMPARE(saleState().ref.second, 1);
}

void TestSelling::theSaleLimitHolds()
{
    Shop shop({u"--sale-limit"_s, u"1000"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(1000), 0);
    QCOMPARE(addItem(1), 8);
    QCOMPARE(velnoext_add_medical_contribution(patience, 1, patient), 7);
    QCOMPARE(saleState().totals.first(), 1000);
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    shop.reg.say("sale-limit 0");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(5'000'000'000), 0);
}

void TestSelling::withoutPaperNothingIsSold()
{
    Shop shop({u"--fault"_s, u"paper-out-after=1"_s});
    QCOMPARE(velnoext_x_report(), 0);
    QCOMPARE(velnoext_check_printer_paper(patience), 9);
    QCOMPARE(velnoext_start_sale(patience), 6);
    QCOMPARE(velnoext_x_report(), 8);
    QCOMPARE(printSlip(), 8);
    const auto say = [&shop](const char *line) {
        shop.reg.say(line);
        return !shop.reg.waitFor(u"set"_s).isEmpty();
    };
    QVERIFY(say("paper on"));
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QVERIFY(say("paper off"));
    QCOMPARE(addItem(100), 8);
    QCOMPARE(medical(), 7);
    QCOMPARE(velnoext_end_sale(cash), 0); // sent
    QCOMPARE(state(), 5);
    QCOMPARE(saleState().totals.first(), 100);
    QVERIFY(say("paper on"));
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(state(), 1);
}

void TestSelling::theStateCanBeSet()
{
    Shop shop({u"--state"_s, u"5"_s});
    QCOMPARE(addItem(100), 0);
    const auto say = [&shop](const char *line) {
        shop.reg.say(line);
        return !shop.reg.waitFor(u"set"_s).isEmpty();
    };
    QVERIFY(say("state 2"));
    QCOMPARE(addItem(100), 6);
    QCOMPARE(velnoext_z_report(), 8);
    QVERIFY(say("state 5"));
    QCOMPARE(saleState().totals.first(), 100);
    QVERIFY(say("state 7"));
    QCOMPARE(state(), 7);
    QCOMPARE(saleState().code, 6);
    QVERIFY(say("paper off"));
    shop.reg.say("state 5");
    QVERIFY(!shop.reg.waitFor(u"error"_s).isEmpty());
    QCOMPARE(state(), 7);
}

void TestSelling::faultsOfSales_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QList<int>>("codes");

    // starting, an item, medical, sale state, paying, cancelling
    QTest::newRow("no fault") << u"none"_s << QList<int>{0, 0, 0, 0, 0, 0};
    QTest::newRow("idle") << u"state=1"_s << QList<int>{6, 6, 6, 6, 6, 6};
    QTest::newRow("out of service") << u"state=8"_s << QList<int>{6, 6, 6, 6, 6, 6};
    QTest::newRow("error") << u"error=3"_s << QList<int>{7, 8, 7, 0, 8, 8};
    QTest::newRow("paid") << u"error=8"_s << QList<int>{7, 8, 7, 0, 0, 0};
    QTest::newRow("over the limit") << u"sale-limit"_s << QList<int>{0, 8, 7, 0, 0, 0};
    QTest::newRow("no start, no payment") << u"refuse=change-state"_s << QList<int>{6, 0, 0, 0, 0, 6};
}

void TestSelling::faultsOfSales()
{
    QFETCH(const QString, fault);
    QFETCH(const QList<int>, codes);
    Shop shop;
    QVERIFY(shop.reg.setFault(fault));
    QCOMPARE(velnoext_start_sale(patience), codes.at(0));
    shop.reg.say("state 5");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(addItem(100), codes.at(1));
    QCOMPARE(velnoext_add_medical_contribution(patience, 100, patient), codes.at(2));
    QCOMPARE(saleState().code, codes.at(3));
    QCOMPARE(velnoext_add_payment(cash, 1), codes.at(4));
    QCOMPARE(velnoext_cancel_sale(patience), codes.at(5));
}

namespace {

/** What an item provokes, and the code of what comes behind it. */
struct Provoked
{
    const char *fault;
    int item; ///< the code of adding it
    int (*then)();
    int code; ///< the code of what is done then
};

int nothing()
{
    return 0;
}

int receiptOfClosedSale()
{
    const VelnoReceiptRef ref = saleState().ref;
    velnoext_end_sale(cash);
    return receipt(ref);
}

int printAfterTheSale()
{
    velnoext_end_sale(cash);
    return printSlip();
}

int reportAfterTheSale()
{
    velnoext_end_sale(cash);
    return velnoext_x_report();
}

int paperAfterTheSale()
{
    velnoext_end_sale(cash);
    return velnoext_check_printer_paper(patience);
}

int cancel()
{
    return velnoext_cancel_sale(patience);
}

int saleStateCode()
{
    return saleState().code;
}

// "items" provokes with an item in a list; the invoice needs a sale with invoice.
const Provoked provoked[] = {
    {"refuse=item", 8, nothing, 0},
    {"refuse=items", 8, nothing, 0},
    {"refuse=delete", 0, deleteLast, 8},
    {"refuse=medical", 0, medical, 8},
    {"refuse=change-state", 0, cancel, 6},
    {"refuse=end-invoice", 0, endWithInvoice, 8},
    {"refuse=sale-state", 0, saleStateCode, 8},
    {"refuse=receipt", 0, receiptOfClosedSale, 8},
    {"refuse=print", 0, printAfterTheSale, 8},
    {"refuse=report", 0, reportAfterTheSale, 8},
    {"error=64", 8, nothing, 0},
    {"state=1", 6, nothing, 0},
    {"sale-limit", 8, nothing, 0},
    {"paper-out-after=1", 0, paperAfterTheSale, 9},
    {"delay=3000", 0, nothing, 0},
    {"short-reply", 5, nothing, 0},
    {"bad-mac", 11, nothing, 0},
    {"no-mac", 12, nothing, 0},
    {"close=item", 2, nothing, 0},
    {"lost-answer=item", 2, nothing, 0},
    {"lost-answer=items", 2, nothing, 0},
    {"lost-answer=delete", 0, deleteLast, 2},
    {"lost-answer=medical", 0, medical, 2},
    {"lost-answer=change-state", 0, cancel, 2},
    {"lost-answer=end-invoice", 0, endWithInvoice, 2},
    {"power-cut=item", 2, nothing, 0},
    {"power-cut=change-state", 0, cancel, 2},
    {"power-cut=end-invoice", 0, endWithInvoice, 2},
};

} // namespace

void TestSelling::theSaleProvokesItsFaults_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<qint64>("price");
    QTest::addColumn<int>("index");

    QCOMPARE(std::size(provoked), Simulator::provocationTable().size());
    int index = 0;
    for (const Simulator::ProvocationRow &row : Simulator::provocationTable()) {
        QCOMPARE(provoked[index].fault, row.fault);
        QTest::addRow("%s by price", row.fault) << "Ekmek"_ba << row.price << index;
        QTest::addRow("%s by name", row.fault) << '!' + QByteArray(row.fault) << qint64(100) << index;
        ++index;
    }
}

void TestSelling::theSaleProvokesItsFaults()
{
    QFETCH(const QByteArray, name);
    QFETCH(const qint64, price);
    QFETCH(const int, index);
    const Provoked &row = provoked[index];
    const QByteArray fault = row.fault;
    Shop shop;
    const bool withInvoice = fault.endsWith("=end-invoice");
    QCOMPARE(withInvoice ? velnoext_start_sale_with_invoice(patience) : velnoext_start_sale(patience), 0);
    QCOMPARE(fault.endsWith("=items") ? addItemInList(price, name) : addItem(price, name), row.item);
    QCOMPARE(shop.reg.waitFor(u"provoked"_s).value(u"fault"_s), QString::fromLatin1(fault));
    if (row.item == 2)
        QCOMPARE(shop.connect(), 0);
    QCOMPARE(row.then(), row.code);
    if (row.code == 2)
        QCOMPARE(shop.connect(), 0);

    // It goes off once: the next sale is like any other.
    if (saleState().code == 0)
        QCOMPARE(velnoext_cancel_sale(patience), 0);
    shop.reg.say("paper on");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(deleteLast(), 0);
    QCOMPARE(velnoext_cancel_sale(patience), 0);
}

void TestSelling::provokedFaultsWaitForTheirOwnCommands()
{
    Shop shop({u"--fault"_s, u"refuse=delete"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=medical"), 0);
    QCOMPARE(addItem(100, "!refuse=medical"), 0);
    QCOMPARE(addItem(100, "!refuse=sale-state"), 0);
    QCOMPARE(addItem(100, "!refuse=item"), 8);
    QCOMPARE(deleteLast(), 8); // as the register was told before
    QCOMPARE(medical(), 8);
    QCOMPARE(medical(), 0);
    QCOMPARE(saleStateCode(), 8);
    QCOMPARE(saleStateCode(), 0);
    QCOMPARE(deleteLast(), 8);
}

void TestSelling::aFaultMayBeForSoManyTimes()
{
    Shop shop({u"--fault"_s, u"refuse=receipt*2"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=sale-state*2"), 0);
    QCOMPARE(saleStateCode(), 8);
    QCOMPARE(saleStateCode(), 8);
    const VelnoReceiptRef ref = saleState().ref;
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(receipt(ref), 8);
    QCOMPARE(receipt(ref), 8);
    QCOMPARE(shop.reg.waitFor(u"spent"_s).value(u"fault"_s), u"refuse=receipt*2"_s);
    QCOMPARE(receipt(ref), 0);
    QVERIFY(shop.reg.setFault(u"lost-answer=receipt*1"_s));
    QCOMPARE(receipt(ref), 2);
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(receipt(ref), 0);
}

void TestSelling::theManualListsWhatProvokes()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll());
    for (const Simulator::ProvocationRow &row : Simulator::provocationTable()) {
        const QString price = u"%1.%2,%3"_s.arg(row.price / 100'000)
                                  .arg(row.price / 100 % 1000)
                                  .arg(int(row.price % 100), 2, 10, QLatin1Char('0'));
        const QString line = u"\n| %1 | `%2` |\n"_s.arg(price, QLatin1StringView(row.fault));
        QVERIFY2(manual.contains(line), qPrintable(line));
    }
}

void TestSelling::itemsNamedLikeNoFaultAreWarnedOf()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    const auto warning = [&shop](const QByteArray &name) {
        const int code = addItem(100, name);
        const QString message =
            shop.reg.waitForAny({u"warning"_s, u"answered"_s}).value(u"message"_s).toString();
        return code == 0 ? message : u"code %1"_s.arg(code);
    };
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty()); // of state
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty()); // of the start
    const QString refuze = warning("!refuze=item");
    QVERIFY2(refuze.startsWith(u"the item !refuze=item provokes nothing: \"refuze\" is no fault that an item "
                               "provokes; accepted are "_s),
             qPrintable(refuze));
    QVERIFY2(refuze.contains(u", !refuse=COMMAND, "_s) && !refuze.contains(u"!wrong-authority"_s),
             qPrintable(refuze));
    for (const QByteArray &name : {"!wrong-authority"_ba, "!forget-pairing"_ba, "!"_ba, "!! Kampanya"_ba}) {
        QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
        QVERIFY2(warning(name).contains(u"is no fault that an item provokes"_s), name);
    }
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QVERIFY(warning("!refuse=state").contains(u"\"state\" is no value of refuse; accepted is COMMAND"_s));
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QVERIFY(warning("!refuse\nstopped").startsWith(u"the item !refuse\\x0astopped provokes nothing"_s));
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QCOMPARE(warning("Ekmek!"), QString());
}

void TestSelling::whatWasProvokedIsForgotten()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=delete"), 0);
    QCOMPARE(addItem(100, "!wrong-authority"), 0); // none of commands
    QCOMPARE(addItem(100, "!nonsense"), 0);
    QCOMPARE(addItem(100, "!forget-pairing"), 0); // nor of one that has been read
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(deleteLast(), 0);
    int provocations = 0;
    for (const QJsonObject &event : shop.reg.events())
        provocations += event.value(u"event"_s) == u"provoked"_s;
    QVERIFY(shop.reg.setFault(u"none"_s));
    for (const QJsonObject &event : shop.reg.events())
        provocations += event.value(u"event"_s) == u"provoked"_s;
    QCOMPARE(provocations, 1);
}

void TestSelling::whatIsProvokedAgainWaitsOnce()
{
    // An application may ask for items without end, and none of what they provoke may come to go off.
    Simulator::ProvokedFaults provoked;
    for (int i = 0; i < 1000; ++i)
        provoked.add({u"refuse=print"_s, u"mute=report"_s});
    provoked.add({u"refuse=print"_s});
    QCOMPARE(provoked.waiting(), QStringList({u"mute=report"_s, u"refuse=print"_s}));
    provoked.take(*Simulator::commandByName(u"print"_s), Simulator::Faults());
    QCOMPARE(provoked.waiting(), QStringList{u"mute=report"_s});
}

void TestSelling::aKilledRegisterRemembers_data()
{
    QTest::addColumn<int>("steps"); ///< of the second sale, until the register is killed
    QTest::addColumn<int>("closed");
    QTest::addColumn<int>("cancelled");

    QTest::newRow("between sales") << 0 << 1 << 0;
    QTest::newRow("as a sale is opened") << 1 << 1 << 1;
    QTest::newRow("with an item") << 2 << 1 << 1;
    QTest::newRow("partly paid") << 3 << 1 << 1;
    QTest::newRow("as it is closed") << 4 << 2 << 0;
}

void TestSelling::aKilledRegisterRemembers()
{
    QFETCH(const int, steps);
    const QTemporaryDir folder;
    const QStringList journal{u"--journal"_s, folder.filePath(u"journal"_s)};
    VelnoReceiptRef first{};
    {
        Shop shop(journal + QStringList{u"--z"_s, u"30"_s});
        QCOMPARE(velnoext_start_sale(patience), 0);
        QCOMPARE(addItem(2500), 0);
        first = saleState().ref;
        QCOMPARE(velnoext_end_sale(cash), 0);
        shop.printed();
        if (steps > 0)
            QCOMPARE(velnoext_start_sale(patience), 0);
        if (steps > 1)
            QCOMPARE(addItem(700), 0);
        if (steps > 2)
            QCOMPARE(velnoext_add_payment(cash, 300), 0);
        if (steps > 3) {
            QCOMPARE(velnoext_end_sale(cash), 0);
            shop.printed();
        }
        shop.reg.raise(SIGKILL);
        shop.reg.waitForExit();
    }
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
    Shop shop(journal + QStringList{u"--z"_s, u"1"_s});
    QCOMPARE(shop.connected, 0);
    QCOMPARE(state(), 1);
    QList<long long> values;
    QCOMPARE(receipt(first, &values), 0);
    QCOMPARE(values, (QList<long long>{2500, 25, 2500, 0, 0, 1}));
    QFETCH(const int, closed);
    QFETCH(const int, cancelled);
    QCOMPARE(receipt({30, 2}), closed == 2 ? 0 : 8);
    QCOMPARE(velnoext_z_report(), 0);
    const QString z = squeezed(shop.printed());
    QVERIFY(z.contains(u"\nFİŞ SAYISI %1\n"_s.arg(closed)));
    QVERIFY(z.contains(u"\nİPTAL FİŞ SAYISI %1\n"_s.arg(cancelled)));
    QVERIFY(z.contains(u"\nGÜNLÜK TOPLAM *%1,00\n"_s.arg(closed == 2 ? 32 : 25)));
    QVERIFY(z.contains(u"\nZ NO: 0030 EKÜ NO: 0001\n"_s));
}

void TestSelling::aCutOfThePowerKeepsWhatWasClosed()
{
    Shop shop;
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(700), 0);
    const VelnoReceiptRef ref = saleState().ref;
    QVERIFY(shop.reg.setFault(u"power-cut=change-state"_s));
    QCOMPARE(velnoext_end_sale(cash), 0); // not answered anyway
    QVERIFY(!shop.reg.waitFor(u"power-cut"_s).isEmpty());
    QVERIFY(shop.reg.setFault(u"power-cut=sale-state"_s));
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(receipt(ref), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(700), 0);
    QCOMPARE(saleState().code, 2);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(state(), 1);
    QCOMPARE(saleState().code, 6);
}

void TestSelling::printsBecomeFiles()
{
    const QTemporaryDir folder;
    const QDir files(folder.filePath(u"of %1 and %4"_s));
    QVERIFY(files.mkpath(u"."_s));
    QString text;
    {
        Shop shop({u"--receipts"_s, files.path(), u"--z"_s, u"3"_s});
        QCOMPARE(velnoext_start_sale(patience), 0);
        QCOMPARE(addItem(2500), 0);
        QCOMPARE(velnoext_end_sale(cash), 0);
        text = shop.printed();
        QCOMPARE(printSlip(), 0);
        shop.printed();
        QCOMPARE(files.entryList(QDir::Files),
                 (QStringList{u"000001-receipt-Z3-1.txt"_s, u"000002-slip-Z3.txt"_s}));
    }
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
    QFile first(files.filePath(u"000001-receipt-Z3-1.txt"_s));
    QVERIFY(first.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(first.readAll()), text);
    Shop shop({u"--receipts"_s, files.path()});
    QCOMPARE(velnoext_z_report(), 0);
    shop.printed();
    QCOMPARE(files.entryList(QDir::Files).last(), u"000003-z-report-Z1.txt"_s);
}

void TestSelling::booksAreTheirOwnersAlone()
{
    constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    constexpr auto everybody = owner | QFile::ReadGroup | QFile::ReadOther;
    const QTemporaryDir folder;
    const QString journal = folder.filePath(u"journal"_s);
    const QDir receipts(folder.filePath(u"receipts"_s));
    QVERIFY(receipts.mkpath(u"."_s));
    const quint16 port = TestSupport::freePort();
    const QStringList arguments{u"--serial"_s,   QLatin1StringView(SimulatedRegister::serial),
                                u"--connect"_s,  u"127.0.0.1:%1"_s.arg(port),
                                u"--journal"_s,  journal,
                                u"--receipts"_s, receipts.path()};
    {
        ChildProgram reg(SimulatedRegister::program(), arguments, [] { ::umask(0); });
        QCOMPARE(velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience), 0);
        QCOMPARE(velnoext_x_report(), 0);
        QVERIFY(!reg.waitFor(u"printed"_s).isEmpty());
        const QFileInfoList files =
            QDir(folder.path()).entryInfoList(QDir::Files) + receipts.entryInfoList(QDir::Files);
        QCOMPARE_GE(files.size(), 3); // the journal, what SQLite lays beside it, and the report
        for (const QFileInfo &file : files)
            QVERIFY2(file.permissions() == owner, qPrintable(file.filePath()));
        reg.say("quit");
        QCOMPARE(reg.waitForExit(), 0);
        for (const QJsonObject &event : reg.events())
            QVERIFY(event.value(u"event"_s) != u"warning"_s);
    }
    QVERIFY(QFile::setPermissions(journal, everybody));
    ChildProgram reg(SimulatedRegister::program(), arguments);
    QCOMPARE(reg.waitFor(u"warning"_s).value(u"message"_s),
             u"the journal %1 was open to others; now it is its owner's alone"_s.arg(journal));
    QCOMPARE(QFile::permissions(journal), owner);
}

void TestSelling::foreignFilesStayAsTheyAre()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"notes"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(QByteArray(5000, 'x')) > 0);
    file.close();
    QVERIFY(file.setPermissions(file.permissions() | QFile::ReadOther));
    QProcess process;
    process.start(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:9"_s, u"--journal"_s, path});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 64);
    QVERIFY(QFile::permissions(path) & QFile::ReadOther);
}

void TestSelling::unusableFilesAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("journal in no folder") << QStringList{u"--journal"_s, u"/no/such/folder/file"_s}
                                          << "the journal /no/such/folder/file cannot be used"_ba;
    QTest::newRow("journal without a name")
        << QStringList{u"--journal"_s, QString()} << "the name of a file"_ba;
    QTest::newRow("receipts in no folder")
        << QStringList{u"--receipts"_s, u"/no/such/folder"_s} << "a folder that can be written to"_ba;
}

void TestSelling::unusableFilesAreRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    QProcess process;
    process.start(SimulatedRegister::program(),
                  QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:9"_s} +
                      arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 64);
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains(message), errors);
}

QTEST_GUILESS_MAIN(TestSelling)
#include "tst_selling.moc"
