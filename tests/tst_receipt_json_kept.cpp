// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"

#include "tests/support/receipt_values.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;
using namespace TestSupport;

namespace {

/** The same by another writer. */
QByteArray rewritten(const QByteArray &json, QJsonDocument::JsonFormat format)
{
    return QJsonDocument::fromJson(json).toJson(format);
}

/** Two lines, two payments, everything else once. */
Receipt wholeReceipt()
{
    Receipt receipt;
    receipt.items = {{u"Peynir"_s, 39990, 350, -10, 0, 3, 1}, {u"Zeytin"_s, 6400, 2000, 0, 150, 8, 0}};
    receipt.medical = Medical{500, 11'111'111'111ULL};
    receipt.invoice = Invoice{2, false, u"11111111111"_s, u"A-1"_s, false};
    receipt.payments = {{Tender::Cash, 10000}, {Tender::Card, std::nullopt}};
    receipt.total = 25445;
    receipt.slip =
        Slip{u"UTF-8"_s, {{u"Masa"_s, u"7"_s, 0, false, false, 0}, {u"x"_s, {}, 0, false, false, 0}}};
    return receipt;
}

using Change = void (*)(Receipt &);

} // namespace

Q_DECLARE_METATYPE(Change)

/** What is kept of a receipt, and compared with what comes under the same key. */
class TestReceiptJsonKept : public QObject
{
    Q_OBJECT

private slots:
    void whatIsWrittenIsRead();
    void sameContentIsWrittenInTheSameWay();
    void firstDifferenceIsNamed_data();
    void firstDifferenceIsNamed();
    void differencesOfRandomReceiptsAreFound();
    void slipsAreCompared();
};

void TestReceiptJsonKept::whatIsWrittenIsRead()
{
    QRandomGenerator random(2026);
    for (int i = 0; i < 3000; ++i) {
        const Receipt receipt = randomReceipt(random);
        const QByteArray json = toJson(receipt);
        QCOMPARE(rewritten(json, QJsonDocument::Compact), json);
        const Judged<Receipt> read = readReceipt(json);
        QVERIFY2(read.faults.isEmpty(), qPrintable(read.faults.join(u'\n') + QString::fromUtf8(json)));
        QVERIFY2(read.value == receipt, json.constData());
        QCOMPARE(toJson(read.value), json);
        const Slip slip = randomSlip(random);
        const QByteArray slipJson = toJson(slip);
        QCOMPARE(rewritten(slipJson, QJsonDocument::Compact), slipJson);
        const Judged<Slip> readAgain = readSlip(slipJson);
        QVERIFY2(readAgain.faults.isEmpty(), qPrintable(readAgain.faults.join(u'\n')));
        QVERIFY(readAgain.value == slip);
    }
}

void TestReceiptJsonKept::sameContentIsWrittenInTheSameWay()
{
    const Judged<Receipt> one = readReceipt(
        R"({"items":[{"name":"\u00c7ay","price":1250,"quantity":2,"section":1,"unit":"piece","percentage":0,)"
        R"("discount":"0.0"}],"payments":[{"cash":"rest"}],"total":2500,"reenterCash":false,)"
        R"("slip":{"encoding":"UTF-8","lines":[{"text":"a","size":0,"styleA":false}]}})"_ba);
    const Judged<Receipt> other = readReceipt(
        R"({"payments":[{"cash":"rest"}], "items":[{"section":1,"price":"12.5","quantity":"2.000","name":"Çay"}],)"
        R"("slip":{"lines":["a"],"encoding":"UTF-8"},"total":"25.00"})"_ba);
    QCOMPARE(one.faults + other.faults, QStringList());
    QCOMPARE(toJson(one.value), toJson(other.value));
    QCOMPARE(firstDifference(toJson(one.value), toJson(other.value)), QString());
}

void TestReceiptJsonKept::firstDifferenceIsNamed_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("words");

    const auto row = [](const char *words, Change change) {
        QTest::newRow(words) << change << QString::fromUtf8(words);
    };
    row("items[1].price: 13.00, before 64.00", [](Receipt &receipt) { receipt.items[1].price = 1300; });
    row("items[0].name: Süt, before Peynir", [](Receipt &receipt) {
        receipt.items[0].name = u"Süt"_s;
        receipt.items[0].price = 1;
        receipt.total = 1;
    });
    row("items[0].price: 0.01, before 399.90", [](Receipt &receipt) {
        receipt.items[0].section = 1;
        receipt.items[0].price = 1;
    });
    row("items[0].quantity: 0.4, before 0.35", [](Receipt &receipt) { receipt.items[0].quantity = 400; });
    row("items[0].percentage: missing, before -10",
        [](Receipt &receipt) { receipt.items[0].percentage = 0; });
    row("items[1].discount: missing, before 1.50", [](Receipt &receipt) { receipt.items[1].discount = 0; });
    row("items[0].section: 4, before 3", [](Receipt &receipt) { receipt.items[0].section = 4; });
    row("items[1].unit: hour, before piece", [](Receipt &receipt) { receipt.items[1].unit = 7; });
    row("items: a list of 3, before a list of 2",
        [](Receipt &receipt) { receipt.items << receipt.items.first(); });
    row("items: a list of 1, before a list of 2", [](Receipt &receipt) { receipt.items.removeLast(); });
    row("items: missing, before a list of 2", [](Receipt &receipt) { receipt.items.clear(); });
    row("medical.amount: 0.01, before 5.00", [](Receipt &receipt) { receipt.medical->amount = 1; });
    row("medical.person: another one than before",
        [](Receipt &receipt) { receipt.medical->person = 10'000'000'146ULL; });
    row("medical: missing, before an object", [](Receipt &receipt) { receipt.medical.reset(); });
    row("invoice.type: electronic, before archived", [](Receipt &receipt) { receipt.invoice->type = 1; });
    row("invoice.person: another one than before", [](Receipt &receipt) {
        receipt.invoice->isCompany = true;
        receipt.invoice->idNumber = u"0000000001"_s;
    });
    row("invoice.reference: missing, before A-1",
        [](Receipt &receipt) { receipt.invoice->reference.clear(); });
    row("invoice.deliveryNote: true, before missing",
        [](Receipt &receipt) { receipt.invoice->deliveryNote = true; });
    row("payments[0].cash: 99.00, before 100.00",
        [](Receipt &receipt) { receipt.payments[0].amount = 9900; });
    row("payments[1].card: 50.00, before rest", [](Receipt &receipt) { receipt.payments[1].amount = 5000; });
    row("payments[0].cash: missing, before 100.00",
        [](Receipt &receipt) { receipt.payments[0].tender = Tender::Card; });
    row("total: 254.46, before 254.45", [](Receipt &receipt) { receipt.total = 25446; });
    row("total: missing, before 254.45", [](Receipt &receipt) { receipt.total.reset(); });
    row("reenterCash: true, before missing", [](Receipt &receipt) { receipt.reenterCash = true; });
    row("slip.encoding: ISO-8859-9, before UTF-8",
        [](Receipt &receipt) { receipt.slip->encoding = u"ISO-8859-9"_s; });
    row("slip.lines[0].right: 8, before 7", [](Receipt &receipt) { receipt.slip->lines[0].right = u"8"_s; });
    row("slip.lines[1]: an object, before x", [](Receipt &receipt) { receipt.slip->lines[1].size = 1; });
    row("slip: missing, before an object", [](Receipt &receipt) { receipt.slip.reset(); });
}

void TestReceiptJsonKept::firstDifferenceIsNamed()
{
    QFETCH(const Change, change);
    QFETCH(const QString, words);
    const QByteArray before = toJson(wholeReceipt());
    Receipt now = wholeReceipt();
    QCOMPARE(firstDifference(toJson(now), before), QString());
    change(now);
    QCOMPARE(firstDifference(toJson(now), before), words);
}

/** No two receipts that differ are taken for the same, also after one of them has been on a disk. */
void TestReceiptJsonKept::differencesOfRandomReceiptsAreFound()
{
    QRandomGenerator random(7);
    for (int i = 0; i < 2000; ++i) {
        const Receipt one = randomReceipt(random);
        const Receipt other = randomReceipt(random);
        const QByteArray kept = rewritten(toJson(one), QJsonDocument::Indented);
        QCOMPARE(firstDifference(toJson(one), kept), QString());
        QCOMPARE(firstDifference(toJson(other), kept).isEmpty(), one == other);
    }
}

void TestReceiptJsonKept::slipsAreCompared()
{
    const Slip slip = *wholeReceipt().slip;
    Slip other = slip;
    QCOMPARE(firstDifference(toJson(other), toJson(slip)), QString());
    other.lines << SlipLine{QString(), {}, 0, false, false, 3};
    QCOMPARE(firstDifference(toJson(other), toJson(slip)), u"lines: a list of 3, before a list of 2"_s);
    other = slip;
    other.lines[1] = SlipLine{QString(), {}, 0, false, false, 3};
    QCOMPARE(firstDifference(toJson(other), toJson(slip)), u"lines[1]: an object, before x"_s);
}

QTEST_APPLESS_MAIN(TestReceiptJsonKept)
#include "tst_receipt_json_kept.moc"
