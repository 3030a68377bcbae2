// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"

#include "tests/support/receipt_rows.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;
using namespace TestSupport;

namespace {

void addRows(const QList<JsonRow> &rows)
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("faults");
    for (const JsonRow &row : rows)
        QTest::newRow(row.name) << row.json << row.faults;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/** What is read of it is what was written, and is written in the same way. */
template <typename Value>
void checkRoundTrip(const Value &value, Judged<Value> (*read)(const QByteArray &))
{
    const QByteArray json = toJson(value);
    const QJsonDocument document = QJsonDocument::fromJson(json);
    QCOMPARE(document.toJson(QJsonDocument::Compact),
             json); // as it stands in the ledgers of earlier versions
    const Judged<Value> again = read(document.toJson());
    QCOMPARE(again.faults, QStringList());
    QVERIFY(again.value == value);
    QCOMPARE(toJson(again.value), json);
}

template <typename Value>
void checkVerdict(Judged<Value> (*read)(const QByteArray &))
{
    QFETCH(const QByteArray, json);
    QFETCH(const QStringList, faults);
    const Judged<Value> judged = read(json);
    QCOMPARE(judged.faults, faults);
    if (faults.isEmpty())
        checkRoundTrip(judged.value, read);
    else
        QVERIFY(judged.value == Value());
}

} // namespace

class TestReceiptJson : public QObject
{
    Q_OBJECT

private slots:
    void goodReceiptsAreRead_data() { addRows(goodReceipts()); }
    void goodReceiptsAreRead() { checkVerdict(readReceipt); }
    void everyFaultOfAnItemIsNamed_data() { addRows(badItems()); }
    void everyFaultOfAnItemIsNamed() { checkVerdict(readReceipt); }
    void everyFaultOfAReceiptIsNamed_data() { addRows(badReceipts()); }
    void everyFaultOfAReceiptIsNamed() { checkVerdict(readReceipt); }
    void goodSlipsAreRead_data() { addRows(goodSlips()); }
    void goodSlipsAreRead() { checkVerdict(readSlip); }
    void everyFaultOfASlipIsNamed_data() { addRows(badSlips()); }
    void everyFaultOfASlipIsNamed() { checkVerdict(readSlip); }

    void everyFieldIsRead();
    void whatIsNotStatedIsTheUsual();
    void ofARemarkItsNameAloneCounts();
    void examplesAreGood_data();
    void examplesAreGood();
    void whatIsNoJsonIsRefused();
    void identityNumbersAreInNoMessage();
    void faultsDoNotGrowWithoutBound();
    void largestReceiptIsReadAgain();
};

void TestReceiptJson::everyFieldIsRead()
{
    const Judged<Receipt> judged = readReceipt(R"({
        "items": [
            {"name":"Peynir","price":"399.90","quantity":"0.350","unit":"kilogram","section":3,"percentage":-10},
            {"name":"Zeytin","price":6400,"quantity":2,"unit":"hour","section":8,"discount":"1.5"}],
        "medical": {"amount":"5","person":"10000000146"},
        "invoice": {"type":"archived","company":"0000000001","reference":"A-1","deliveryNote":true},
        "payments": [{"cash":"100.00"},{"card":50},{"card":"rest"}],
        "total": "254.45", "reenterCash": true,
        "slip": {"encoding":"ISO-8859-9","lines":["a",{"left":"b","right":"c","styleB":true},
                 {"text":"d","size":2,"styleA":true},{"feed":3}]}})"_ba);
    QCOMPARE(judged.faults, QStringList());
    const Receipt &receipt = judged.value;
    QCOMPARE(receipt.items,
             (QList<Item>{{u"Peynir"_s, 39990, 350, -10, 0, 3, 1}, {u"Zeytin"_s, 6400, 2000, 0, 150, 8, 7}}));
    QCOMPARE(receipt.medical, (Medical{500, 10'000'000'146ULL}));
    QCOMPARE(receipt.invoice, (Invoice{2, true, u"0000000001"_s, u"A-1"_s, true}));
    QCOMPARE(receipt.payments,
             (QList<Payment>{{Tender::Cash, 10000}, {Tender::Card, 50}, {Tender::Card, std::nullopt}}));
    QCOMPARE(receipt.total, std::optional<qint64>(25445));
    QVERIFY(receipt.reenterCash);
    const QList<SlipLine> lines{{u"a"_s, std::nullopt, 0, false, false, 0},
                                {u"b"_s, u"c"_s, 0, false, true, 0},
                                {u"d"_s, std::nullopt, 2, true, false, 0},
                                {QString(), std::nullopt, 0, false, false, 3}};
    QCOMPARE(receipt.slip, (Slip{u"ISO-8859-9"_s, lines}));
    checkRoundTrip(receipt, readReceipt);
}

void TestReceiptJson::whatIsNotStatedIsTheUsual()
{
    const Judged<Receipt> judged = readReceipt(
        R"({"items":[{"name":"Ekmek","price":1250,"section":2}],"payments":[{"cash":"rest"}]})"_ba);
    QCOMPARE(judged.faults, QStringList());
    QCOMPARE(judged.value.items, (QList<Item>{{u"Ekmek"_s, 1250, 1000, 0, 0, 2, 0}}));
    QVERIFY(!judged.value.medical && !judged.value.invoice && !judged.value.slip && !judged.value.total);
    QVERIFY(!judged.value.reenterCash);
    QCOMPARE(toJson(judged.value),
             R"({"items":[{"name":"Ekmek","price":"12.50","quantity":"1","section":2,"unit":"piece"}],)"
             R"("payments":[{"cash":"rest"}]})"_ba);
}

void TestReceiptJson::ofARemarkItsNameAloneCounts()
{
    const QByteArray bread = R"({"items":[{"name":"Ekmek","price":1,"section":1},{"name":"x","price":0%1}],)"
                             R"("payments":[{"cash":"rest"}]})"_ba;
    const Judged<Receipt> bare = readReceipt(QByteArray(bread).replace("%1", ""));
    const Judged<Receipt> full =
        readReceipt(QByteArray(bread).replace("%1", R"(,"section":5,"quantity":"2","unit":"hour")"));
    QCOMPARE(bare.faults, QStringList());
    QCOMPARE(full.faults, QStringList());
    QCOMPARE(bare.value.items.at(1), (Item{u"x"_s, 0, 1000, 0, 0, 1, 0}));
    QVERIFY(full.value == bare.value);
}

void TestReceiptJson::examplesAreGood_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("items");

    QTest::newRow("a market's") << contentOf(QStringLiteral(VELNO_SOURCE "/examples/receipt.json")) << 5;
    const QByteArray manual = contentOf(QStringLiteral(VELNO_SOURCE "/docs/receipt-json.md"));
    const qsizetype from = manual.indexOf("```json\n") + 8;
    QTest::newRow("the manual's") << manual.mid(from, manual.indexOf("```", from) - from) << 2;
}

void TestReceiptJson::examplesAreGood()
{
    QFETCH(const QByteArray, json);
    QFETCH(const int, items);
    const Judged<Receipt> judged = readReceipt(json);
    QCOMPARE(judged.faults, QStringList());
    QCOMPARE(judged.value.items.size(), items);
    checkRoundTrip(judged.value, readReceipt);
}

void TestReceiptJson::whatIsNoJsonIsRefused()
{
    const QStringList words{u"line 1, column 11: this is no JSON; accepted: a value"_s};
    QCOMPARE(readReceipt(R"({"items": })"_ba).faults, words);
    QCOMPARE(readSlip(R"({"items": })"_ba).faults, words);
}

void TestReceiptJson::identityNumbersAreInNoMessage()
{
    const QByteArray number = "12345678901"_ba;
    for (const QByteArray &written : {number, '"' + number + '"', R"({"number":")" + number + R"("})"}) {
        const QByteArray json =
            R"({"items":[],"payments":[{"card":"rest"}],"medical":{"amount":1,"person":)" + written +
            R"(},"invoice":{"type":"paper","reference":"ABC123","company":)" + written + "}}";
        const QStringList faults = readReceipt(json).faults;
        QCOMPARE(faults.size(), 2);
        QVERIFY(!faults.join(u' ').contains(QString::fromLatin1(number)));
    }
}

void TestReceiptJson::faultsDoNotGrowWithoutBound()
{
    QByteArray json = "{"_ba;
    for (int i = 0; i < 40'000; ++i)
        json += "\"field" + QByteArray::number(i) + "\":0,";
    json += "\"last\":0}";
    QElapsedTimer timer;
    timer.start();
    const QStringList faults = readReceipt(json).faults;
    QCOMPARE(faults.size(), 1001);
    QCOMPARE(faults.last(), u"and 39003 faults more"_s);
    // Each name once against each of 40,000 others would take minutes.
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void TestReceiptJson::largestReceiptIsReadAgain()
{
    Receipt receipt;
    const Item item{QString(52, u'"'), 1'000'000, 1'001, 0, 1, 8, 5};
    receipt.items = QList<Item>(500, item);
    receipt.payments = QList<Payment>(100, {Tender::Cash, 999'999'999'999});
    receipt.payments.last().amount.reset();
    receipt.slip =
        Slip{u"UTF-8"_s, QList<SlipLine>(2000, {QString(7, u'\\'), QString(6, u'"'), 0, true, true, 0})};
    checkRoundTrip(receipt, readReceipt);
}

QTEST_APPLESS_MAIN(TestReceiptJson)
#include "tst_receipt_json.moc"
