// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/money.h"
#include "simulator/fiscal/paper.h"
#include "simulator/fiscal/receipt_text.h"
#include "simulator/fiscal/receipt_writer.h"
#include "simulator/fiscal/slip.h"
#include "tests/support/full_disk.h"
#include "tests/support/till_at_hand.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** What the simulated register prints. */
class TestReceipts : public QObject
{
    Q_OBJECT

private slots:
    void linesAreWrapped_data();
    void linesAreWrapped();
    void twoSidesNeverExceedThePaper_data();
    void twoSidesNeverExceedThePaper();
    void aReceiptReadsLikeOne();
    void discountsAndDeletionsAreShown();
    void remarksAreWrapped();
    void anInvoiceNamesItsCustomer_data();
    void anInvoiceNamesItsCustomer();
    void onlyASaleWithInvoiceTakesOne();
    void aCancelledReceiptSaysSo();
    void reportsTellTheDay();
    void reportsWaitForTheSale();
    void slipLinesAreSet_data();
    void slipLinesAreSet();
    void slipsFollowTheEncodingNamedLast();
    void slipsAreBounded();
    void paperRunsOutAfterSoManyPrints();
    void nothingIsWiderThanThePaper();
    void noAmountIsCut_data();
    void noAmountIsCut();
    void registersMayShareAFolder();
    void halfAPrintIsNone();
};

namespace {

const QByteArray separator = "__@£#$__"_ba;

QString printed(const TillAtHand &till)
{
    return till.prints.isEmpty() ? QString() : till.prints.last().lines().join(u'\n') + u'\n';
}

/** Without the spaces between the words. */
QString squeezed(const QString &text)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        line = line.simplified();
    return lines.join(u'\n');
}

} // namespace

void TestReceipts::linesAreWrapped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("nothing") << QString() << QStringList{QString()};
    QTest::newRow("as wide as the paper") << u"12345"_s << QStringList{u"12345"_s};
    QTest::newRow("two words") << u"123 456"_s << QStringList{u"123"_s, u"456"_s};
    QTest::newRow("space at the edge") << u"12345 6"_s << QStringList{u"12345"_s, u"6"_s};
    QTest::newRow("a long word") << u"1234567"_s << QStringList{u"12345"_s, u"67"_s};
    QTest::newRow("space in front") << u" 1234567"_s << QStringList{u" 1234"_s, u"567"_s};
}

void TestReceipts::linesAreWrapped()
{
    QFETCH(const QString, text);
    QFETCH(const QStringList, lines);
    QCOMPARE(wrapped(text, 5), lines);
}

void TestReceipts::twoSidesNeverExceedThePaper_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<QString>("line");

    QTest::newRow("both short") << u"a"_s << u"b"_s << u"a"_s + QString(40, u' ') + u'b';
    QTest::newRow("left too long") << QString(50, u'a') << u"bb"_s << QString(39, u'a') + u" bb"_s;
    QTest::newRow("right too long") << u"a"_s << QString(50, u'b') << QString(42, u'b');
    QTest::newRow("nothing") << QString() << QString() << QString(42, u' ');
}

void TestReceipts::twoSidesNeverExceedThePaper()
{
    QFETCH(const QString, left);
    QFETCH(const QString, right);
    QFETCH(const QString, line);
    QCOMPARE(twoSided(left, right), line);
}

void TestReceipts::aReceiptReadsLikeOne()
{
    TillAtHand till(12);
    till.keys("E");
    QCOMPARE(till.add({bread, {24000, 1250, 0, 0, 3, "Ayran", 1}}), NotRefused);
    till.keys("400$#");
    const QDateTime then = QDateTime::fromSecsSinceEpoch(TillAtHand::time);
    const QString expected = u"               VELNO MARKET\n"
                             "           ÇINAR CADDESİ NO: 1\n"
                             "            KADIKÖY / İSTANBUL\n"
                             "         KADIKÖY V.D. 1234567890\n"
                             "\n"
                             "TARİH: %1              SAAT: %2\n"
                             "FİŞ NO: 0001\n"
                             "\n"
                             "2 AD X 12,50\n"
                             "Ekmek                  %1           *25,00\n"
                             "1,250 KG X 240,00\n"
                             "Ayran                  %10         *300,00\n"
                             "------------------------------------------\n"
                             "TOPKDV                              *27,52\n"
                             "TOPLAM                             *325,00\n"
                             "------------------------------------------\n"
                             "NAKİT                              *400,00\n"
                             "PARA ÜSTÜ                           *75,00\n"
                             "------------------------------------------\n"
                             "KDV %1 TOPLAM *25,00             KDV *0,25\n"
                             "KDV %10 TOPLAM *300,00          KDV *27,27\n"
                             "------------------------------------------\n"
                             "Z NO: 0012                    EKÜ NO: 0001\n"
                             "             MF UB 1234567890\n"_s;
    QString exact = expected;
    exact.replace(u"SAAT: %2"_s, u"SAAT: "_s + then.toString(u"HH:mm"_s));
    exact.replace(u"TARİH: %1"_s, u"TARİH: "_s + then.toString(u"dd.MM.yyyy"_s));
    QCOMPARE(printed(till), exact);
    QCOMPARE(till.prints.last().kind, "receipt");
}

void TestReceipts::discountsAndDeletionsAreShown()
{
    TillAtHand till;
    till.keys("E");
    ItemRequest reduced = bread;
    reduced.percentage = -10;
    ItemRequest raised = bread;
    raised.percentage = 20;
    ItemRequest cheaper = bread;
    cheaper.amount = 300;
    QCOMPARE(till.add({reduced, raised, cheaper}), NotRefused);
    QCOMPARE(till.remove(1), NotRefused);
    QCOMPARE(till.setMedicalContribution(150, 11'111'111'111), NotRefused);
    till.keys("5##");
    const QString text = squeezed(printed(till));
    for (const QString &line :
         {u"İNDİRİM %10 *-2,50"_s, u"ARTIRIM %20 *5,00"_s, u"SATIR İPTAL *-30,00"_s, u"İNDİRİM *-3,00"_s,
          u"İLAÇ KATILIM PAYI *1,50"_s, u"T.C. KİMLİK NO: 11111111111"_s, u"TOPLAM *46,00"_s,
          u"KREDİ KARTI MARMARA BANK *5,00"_s, u"KREDİ KARTI EGE BANK *41,00"_s})
        QVERIFY2(text.contains(u'\n' + line + u'\n'), qPrintable(line + u" in\n"_s + text));
    QCOMPARE(till.saleAcquirers(), (QList<qint32>{11, 23}));
}

void TestReceipts::remarksAreWrapped()
{
    TillAtHand till;
    till.keys("E");
    QCOMPARE(till.add({bread, {0, 0, 0, 0, 0, "Afiyet olsun, yine bekleriz, iyi gunler dileriz", 0}}),
             NotRefused);
    till.keys("$");
    QVERIFY(printed(till).contains(u"\nAfiyet olsun, yine bekleriz, iyi gunler\ndileriz\n"_s));
}

void TestReceipts::anInvoiceNamesItsCustomer_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("idKind");
    QTest::addColumn<QString>("reference");
    QTest::addColumn<bool>("delivers");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("on paper, to a person")
        << int(Invoice::OnPaper) << int(Invoice::Person) << u"A123456"_s << true
        << QStringList{u"TÜR: FATURA"_s, u"FATURA NO: A123456"_s, u"T.C. KİMLİK NO: 1234567890"_s,
                       u"İRSALİYE YERİNE GEÇER"_s};
    QTest::newRow("electronic, to a company")
        << int(Invoice::Electronic) << int(Invoice::Company) << QString() << false
        << QStringList{u"TÜR: e-FATURA"_s, u"VERGİ NO: 1234567890"_s};
    QTest::newRow("archived") << int(Invoice::Archived) << int(Invoice::Company) << u"GIB1"_s << false
                              << QStringList{u"TÜR: e-ARŞİV FATURA"_s, u"FATURA NO: GIB1"_s};
}

void TestReceipts::anInvoiceNamesItsCustomer()
{
    QFETCH(const int, type);
    QFETCH(const int, idKind);
    QFETCH(const QString, reference);
    QFETCH(const bool, delivers);
    QFETCH(const QStringList, lines);
    TillAtHand till;
    till.keys("M3");
    till.add({bread});
    const Invoice invoice{Invoice::Type(type), Invoice::IdKind(idKind), reference, u"1234567890"_s, delivers};
    QCOMPARE(till.closeWithInvoice(invoice, PaymentKind::Card), NotRefused);
    const QString text = squeezed(printed(till));
    for (const QString &line : QStringList{u"BİLGİ FİŞİ"_s, u"MALİ DEĞERİ YOKTUR"_s} + lines)
        QVERIFY2(text.contains(u'\n' + line + u'\n'), qPrintable(line));
    QCOMPARE(text.contains(u"İRSALİYE"_s), delivers);
    QCOMPARE(text.contains(u"FATURA NO"_s), !reference.isEmpty());
    QCOMPARE(till.prints.last().kind, "invoice");
    QCOMPARE(till.day().invoices, 1);
    QCOMPARE(till.day().card, 2500);
}

void TestReceipts::onlyASaleWithInvoiceTakesOne()
{
    TillAtHand till;
    QCOMPARE(till.closeWithInvoice({}, PaymentKind::Cash), NoSale);
    till.keys("E");
    till.add({bread});
    QCOMPARE(till.closeWithInvoice({}, PaymentKind::Cash), NoInvoiceSale);
    till.keys("C1M3");
    QCOMPARE(till.closeWithInvoice({}, PaymentKind::Cash), NothingSold);
    till.add({bread});
    till.keys("$");
    QCOMPARE(till.error(), int(WrongKey));
    QVERIFY(till.saleIsOpen());
    QCOMPARE(till.closeWithInvoice({}, PaymentKind::Cash), NotRefused);
}

void TestReceipts::aCancelledReceiptSaysSo()
{
    TillAtHand till;
    till.keys("E");
    till.add({bread});
    till.keys("C1");
    const QString text = squeezed(printed(till));
    QVERIFY(text.contains(u"\nFİŞ İPTAL\nMALİ DEĞERİ YOKTUR\n"_s));
    QCOMPARE(till.prints.last().kind, "cancelled");
    QCOMPARE(till.day().cancelled, 1);
    QCOMPARE(till.day().receipts, 0);
}

void TestReceipts::reportsTellTheDay()
{
    TillAtHand till(7);
    till.keys("E");
    till.add({bread});
    till.keys("$EC1");
    QCOMPARE(till.printX(), NotRefused);
    const QString x = squeezed(printed(till));
    QVERIFY(x.contains(u"\nX RAPORU\nMALİ DEĞERİ YOKTUR\n"_s));
    QVERIFY(x.contains(u"\nKÜMÜLATİF TOPLAM *0,00\n"_s));
    QCOMPARE(till.z(), 7);
    QCOMPARE(till.printZ(), NotRefused);
    const QString z = squeezed(printed(till));
    for (const QString &line :
         {u"GÜNLÜK MALİ Z RAPORU"_s, u"KDV %1 TOPLAM *25,00 KDV *0,25"_s, u"FİŞ SAYISI 1"_s,
          u"FATURALI SATIŞ 0"_s, u"İPTAL FİŞ SAYISI 1"_s, u"NAKİT *25,00"_s, u"KREDİ KARTI *0,00"_s,
          u"TOPKDV *0,25"_s, u"GÜNLÜK TOPLAM *25,00"_s, u"KÜMÜLATİF TOPLAM *25,00"_s,
          u"Z NO: 0007 EKÜ NO: 0001"_s})
        QVERIFY2(z.contains(u'\n' + line + u'\n'), qPrintable(line));
    QVERIFY(!z.contains(u"YOKTUR"_s));
    QCOMPARE(till.z(), 8);
    QCOMPARE(till.lastZ(), TillAtHand::time);
    QCOMPARE(till.day(), DayTotals());
    till.keys("E");
    QCOMPARE(till.reference(), (ReceiptRef{8, 1}));
}

void TestReceipts::reportsWaitForTheSale()
{
    TillAtHand till;
    till.keys("E");
    QCOMPARE(till.printX(), SaleStillOpen);
    QCOMPARE(till.printZ(), SaleStillOpen);
    QCOMPARE(till.printSlip({}, false), SaleStillOpen);
    QVERIFY(till.prints.isEmpty());
    QCOMPARE(till.z(), 1);
    till.keys("C1M");
    QCOMPARE(till.printX(), NotRefused);
}

void TestReceipts::slipLinesAreSet_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QStringList>("text");

    const QByteArray wide = "\x08"_ba + "abc"_ba;
    QTest::newRow("plain") << "\x04 abc"_ba << QStringList{u" abc"_s};
    QTest::newRow("bold") << "\x06"_ba + "abc"_ba << QStringList{u"abc"_s};
    QTest::newRow("in the middle") << "\x05"_ba + "abc"_ba << QStringList{QString(19, u' ') + u"abc"_s};
    QTest::newRow("twice as wide") << wide << QStringList{u"a b c"_s};
    QTest::newRow("three times as wide") << "\x10"_ba + "abc"_ba << QStringList{u"a  b  c"_s};
    QTest::newRow("wide and in the middle")
        << "\x09"_ba + "abc"_ba << QStringList{QString(18, u' ') + u"a b c"_s};
    QTest::newRow("wide and long") << "\x08"_ba + QByteArray(22, 'a')
                                   << QStringList{u"a "_s.repeated(21).chopped(1), u"a"_s};
    QTest::newRow("the largest size") << "\x80"_ba + "abc"_ba << QStringList{u"a  b  c"_s};
    QTest::newRow("no size at all") << QByteArray("\0abc", 4) << QStringList{u"abc"_s};
    QTest::newRow("nothing at all") << QByteArray() << QStringList{QString()};
    QTest::newRow("feeds") << "\x06\n\n\n"_ba << QStringList{QString(), QString(), QString()};
    QTest::newRow("feed within") << "\x04"_ba + "a\nb"_ba << QStringList{u"a"_s, u"b"_s};
    QTest::newRow("commands to a printer") << "\x04"_ba + "a\x1B[m"_ba << QStringList{u"a [m"_s};
    QTest::newRow("both edges") << "\x14"_ba + "a"_ba + separator + "b"_ba
                                << QStringList{u"a"_s + QString(40, u' ') + u'b'};
    QTest::newRow("both edges, bold, in the middle")
        << "\x17"_ba + "a"_ba + separator + "b"_ba << QStringList{u"a"_s + QString(40, u' ') + u'b'};
    QTest::newRow("both edges without a separator") << "\x14"_ba + "ab"_ba << QStringList{u"ab"_s};
    QTest::newRow("no encoding of that name") << "@home"_ba << QStringList{u"h  o  m  e"_s};
    QTest::newRow("an encoding") << "@ISO-8859-9"_ba << QStringList();
}

void TestReceipts::slipLinesAreSet()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QStringList, text);
    QCOMPARE(slipText({line}, false), text + QStringList{centred(u"MALİ DEĞERİ YOKTUR"_s)});
    QCOMPARE(slipText({line}, true).size(), text.size() + shopHead().size() + 2);
}

void TestReceipts::slipsFollowTheEncodingNamedLast()
{
    const QByteArray koli = "\x04KOL\xDD"_ba;
    const QStringList text = slipText(
        {"@ISO-8859-9"_ba, koli, "@IBM857"_ba, "\x04KOL\x98"_ba, "@UTF-8"_ba, "\x04KOL\xC4\xB0"_ba}, false);
    QCOMPARE(text.size(), 4);
    QCOMPARE(text.at(0), u"KOLİ"_s);
    QCOMPARE(text.at(2), u"KOLİ"_s);
    QVERIFY(slipText({koli}, false).at(0) != u"KOLİ"_s);
}

void TestReceipts::slipsAreBounded()
{
    const QByteArray feeds = "\x06"_ba + QByteArray(longestSlip, '\n');
    QCOMPARE(slipText({feeds}, false).size(), longestSlip + 1);
    QVERIFY(slipText({feeds, "\x04"_ba}, false).isEmpty());
    TillAtHand till;
    QCOMPARE(till.printSlip({feeds, "\x04"_ba}, false), SlipTooLong);
    QVERIFY(till.prints.isEmpty());
    QCOMPARE(till.printSlip({feeds}, true), SlipTooLong);
    QCOMPARE(till.printSlip({"\x04"_ba}, true), NotRefused);
    QCOMPARE(till.prints.last().kind, "slip");
}

void TestReceipts::paperRunsOutAfterSoManyPrints()
{
    TillAtHand till;
    till.setPaper(2);
    QCOMPARE(till.printX(), NotRefused);
    QVERIFY(till.hasPaper());
    till.keys("E");
    till.add({bread});
    till.keys("$");
    QVERIFY(!till.hasPaper());
    QCOMPARE(till.printX(), PaperOut);
    QCOMPARE(till.printZ(), PaperOut);
    QCOMPARE(till.printSlip({}, false), PaperOut);
    QCOMPARE(till.prints.size(), 2);
    till.setPaper(Till::endlessPaper);
    QCOMPARE(till.printZ(), NotRefused);
}

void TestReceipts::nothingIsWiderThanThePaper()
{
    TillAtHand till(2'000'000'000);
    ItemRequest long1{1'000'000, 999'999, 20, 0, 7, QByteArray(52, 'W'), 7};
    till.keys("M3");
    QCOMPARE(till.add({long1, {0, 0, 0, 0, 0, QByteArray(52, 'W'), 0}}), NotRefused);
    QCOMPARE(till.remove(0), NotRefused);
    till.add({long1});
    QCOMPARE(till.setMedicalContribution(99'999'999, 99'999'999'999), NotRefused);
    till.closeWithInvoice({Invoice::OnPaper, Invoice::Person, QString(16, u'W'), QString(11, u'9'), true},
                          PaymentKind::Card);
    till.printX();
    till.printZ();
    till.printSlip({"\x04"_ba + QByteArray(500, 'W'), "\x14"_ba + QByteArray(100, 'a') + separator + "b"},
                   true);
    QCOMPARE(till.prints.size(), 4);
    for (const Print &print : std::as_const(till.prints)) {
        const QStringList lines = print.lines();
        for (const QString &line : lines)
            QVERIFY2(line.size() <= paperWidth, qPrintable(line));
    }
}

void TestReceipts::noAmountIsCut_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<QString>("lines");

    QTest::newRow("the longest line")
        << qint64(99'999'999) << u"KDV %10 TOPLAM *999.999,99 KDV *90.909,09\n"_s;
    QTest::newRow("one kuruş more") << qint64(100'000'000)
                                    << u"KDV %10 TOPLAM *1.000.000,00\nKDV *90.909,09\n"_s;
    QTest::newRow("the largest") << largestAmount << u"KDV %10 TOPLAM *99.999.999,99\nKDV *9.090.909,09\n"_s;
}

void TestReceipts::noAmountIsCut()
{
    QFETCH(const qint64, price);
    QFETCH(const QString, lines);
    TillAtHand till;
    till.keys("E");
    QCOMPARE(till.add({{price, 1000, 0, 0, 3, "Su", 0}}), NotRefused);
    till.keys("$");
    QVERIFY2(squeezed(printed(till)).contains(lines), qPrintable(printed(till)));
    QCOMPARE(till.printZ(), NotRefused);
    QVERIFY2(squeezed(printed(till)).contains(lines), qPrintable(printed(till)));
}

void TestReceipts::registersMayShareAFolder()
{
    const QTemporaryDir folder;
    ReceiptWriter one({folder.path()});
    ReceiptWriter other({folder.path()});
    const Print print{"receipt", 1, 1, [] { return QStringList(u"abc"_s); }};
    QCOMPARE(one.write(print), QString());
    QCOMPARE(other.write(print), QString());
    QCOMPARE(one.write(print), QString());
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files),
             (QStringList{u"000001-receipt-Z1-1.txt"_s, u"000002-receipt-Z1-1.txt"_s,
                          u"000003-receipt-Z1-1.txt"_s}));
}

void TestReceipts::halfAPrintIsNone()
{
    const QTemporaryDir folder;
    ReceiptWriter writer({folder.path()});
    const Print print{"slip", 1, 0, [] { return QStringList(100, QString(paperWidth, u'a')); }};
    {
        const FullDisk full(1024);
        const QString problem = writer.write(print);
        QVERIFY2(problem.contains(u"000001-slip-Z1.txt cannot be written"_s), qPrintable(problem));
    }
    QVERIFY(QDir(folder.path()).isEmpty());
    QCOMPARE(writer.write(print), QString());
    QVERIFY(!QDir(folder.path()).isEmpty());
}

QTEST_GUILESS_MAIN(TestReceipts)
#include "tst_receipts.moc"
