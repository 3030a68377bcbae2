// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "simulator/fiscal/sections.h"
#include "tests/support/library_test.h"
#include "tests/support/shop.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno;

/** The real velno-register sells what an application asks for through the device library. */
class TestSelling : public LibraryTest
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
    void aSaleIsCancelledWithoutPaper();
    void withoutASaleThereIsNone();
    void sectionsAreTold();
    void slipsAreTypeset();
    void reportsCloseTheDay();
    void theSaleLimitHolds();
    void withoutPaperNothingIsSold();
    void theStateCanBeSet();
};

namespace {

QList<int> listed(int (*ask)(unsigned int, int *, int *))
{
    QList<int> list(10);
    int count = int(list.size());
    return ask(patience, list.data(), &count) == 0 ? list.first(count) : QList<int>{-1};
}

} // namespace

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

QTEST_GUILESS_MAIN(TestSelling)
#include "tst_selling.moc"
