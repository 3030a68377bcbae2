// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"

#include "tests/support/program_run.h"
#include "tests/support/receipt_rows.h"
#include "tests/support/receipt_values.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;
using namespace TestSupport;

namespace {

const QString folder = QStringLiteral(VELNO_SCHEMA_FOLDER);
const QString receiptSchema = folder + u"/receipt.schema.json"_s;
const QString slipSchema = folder + u"/slip.schema.json"_s;

/** What another's validator says of these texts, in a line for each. Empty: it did not come to its end. */
QByteArrayList verdicts(const QString &schema, const QByteArrayList &texts)
{
    QTemporaryFile file;
    if (!file.open())
        return {};
    for (const QByteArray &text : texts)
        file.write(text.toHex() + '\n');
    file.close();
    const QStringList arguments{QStringLiteral(VELNO_VERDICTS), schema};
    const Outcome outcome =
        outcomeOf(QStringLiteral(VELNO_SYSTEM_PYTHON), arguments,
                  [&file](QProcess &process) { process.setStandardInputFile(file.fileName()); });
    if (outcome.exitCode != 0) {
        qWarning("%s", outcome.errors.constData());
        return {};
    }
    QByteArrayList lines = outcome.output.trimmed().split('\n');
    lines.removeIf([](const QByteArray &line) { return line == "example good"; });
    return lines;
}

/** The schema says of each row what the row wants it to say. */
void checkRows(const QString &schema, const QList<JsonRow> &rows)
{
    QByteArrayList texts;
    for (const JsonRow &row : rows)
        texts << row.json;
    const QByteArrayList said = verdicts(schema, texts);
    QCOMPARE(said.size(), rows.size());
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const QByteArray words = QByteArray(rows.at(i).name) + ": " + said.at(i);
        QVERIFY2(said.at(i).startsWith("bad ") == rows.at(i).schemaKnows, words.constData());
        QVERIFY2(said.at(i) == "good" || said.at(i).startsWith("bad "), words.constData());
    }
}

bool isGood(const QString &schema, const QByteArray &text)
{
    return schema == receiptSchema ? readReceipt(text).faults.isEmpty() : readSlip(text).faults.isEmpty();
}

/** Examples stand in the schema as what may be copied from it. */
QByteArrayList examplesOf(const QString &schema)
{
    QFile file(schema);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArrayList texts;
    const QJsonArray examples =
        QJsonDocument::fromJson(file.readAll()).object().value("examples"_L1).toArray();
    for (const QJsonValue &example : examples)
        texts << QJsonDocument(example.toObject()).toJson(QJsonDocument::Compact);
    return texts;
}

/** Every text that one of its places is replaced in by something else. */
QByteArrayList damaged(const QByteArray &text)
{
    const QByteArrayList others{"0"_ba,    "-1"_ba,       "1.5"_ba,      "9999999999999"_ba,
                                "\"\""_ba, "\"0.00\""_ba, "\"rest\""_ba, "null"_ba,
                                "true"_ba, "[]"_ba,       "{}"_ba};
    QByteArrayList texts;
    for (qsizetype colon = text.indexOf(':'); colon >= 0; colon = text.indexOf(':', colon + 1)) {
        const qsizetype end = text.indexOf(text.mid(colon + 1, 1) == "\"" ? '"' : ',', colon + 2);
        for (const QByteArray &other : others)
            texts << text.first(colon + 1) + other + text.mid(text.at(colon + 1) == '"' ? end + 1 : end);
    }
    texts.removeIf([](const QByteArray &one) { return QJsonDocument::fromJson(one).isNull(); });
    return texts;
}

} // namespace

/** The schemas, which a POS author's own tools read, and the reader, which decides, do not contradict each
 * other: what a schema refuses the reader refuses, and what is good for the reader is good for the schema. */
class TestReceiptSchema : public QObject
{
    Q_OBJECT

private slots:
    void schemaKnowsWhatItCan_data();
    void schemaKnowsWhatItCan();
    void examplesAreGood_data();
    void examplesAreGood();
    void whatIsGoodForTheReaderIsGoodForTheSchema();
    void whatTheSchemaRefusesTheReaderRefuses_data();
    void whatTheSchemaRefusesTheReaderRefuses();
};

void TestReceiptSchema::schemaKnowsWhatItCan_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QList<JsonRow>>("rows");

    QTest::newRow("good receipts") << receiptSchema << goodReceipts();
    QTest::newRow("bad items") << receiptSchema << badItems();
    QTest::newRow("bad receipts") << receiptSchema << badReceipts();
    QTest::newRow("good slips") << slipSchema << goodSlips();
    QTest::newRow("bad slips") << slipSchema << badSlips();
}

void TestReceiptSchema::schemaKnowsWhatItCan()
{
    QFETCH(const QString, schema);
    QFETCH(const QList<JsonRow>, rows);
    checkRows(schema, rows);
}

void TestReceiptSchema::examplesAreGood_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QByteArray>("text");

    for (const QString &schema : {receiptSchema, slipSchema}) {
        const QByteArrayList examples = examplesOf(schema);
        QVERIFY(!examples.isEmpty());
        for (qsizetype i = 0; i < examples.size(); ++i)
            QTest::addRow("%s %d", qPrintable(schema.section(u'/', -1)), int(i)) << schema << examples.at(i);
    }
    QFile file(QStringLiteral(VELNO_EXAMPLE));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QTest::newRow("a market's receipt") << receiptSchema << file.readAll();
}

void TestReceiptSchema::examplesAreGood()
{
    QFETCH(const QString, schema);
    QFETCH(const QByteArray, text);
    QVERIFY(isGood(schema, text));
    QCOMPARE(verdicts(schema, {text}), QByteArrayList{"good"_ba});
}

void TestReceiptSchema::whatIsGoodForTheReaderIsGoodForTheSchema()
{
    QRandomGenerator random(12);
    QByteArrayList texts;
    for (int i = 0; i < 300; ++i)
        texts << toJson(randomReceipt(random));
    QCOMPARE(verdicts(receiptSchema, texts), QByteArrayList(300, "good"_ba));
}

void TestReceiptSchema::whatTheSchemaRefusesTheReaderRefuses_data()
{
    examplesAreGood_data();
}

void TestReceiptSchema::whatTheSchemaRefusesTheReaderRefuses()
{
    QFETCH(const QString, schema);
    QFETCH(const QByteArray, text);
    const QByteArrayList texts = damaged(text);
    const QByteArrayList said = verdicts(schema, texts);
    QCOMPARE(said.size(), texts.size());
    int bad = 0;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (said.at(i) == "good")
            continue;
        ++bad;
        QVERIFY2(!isGood(schema, texts.at(i)), (texts.at(i) + '\n' + said.at(i)).constData());
    }
    QVERIFY(bad > 10);
}

QTEST_GUILESS_MAIN(TestReceiptSchema)
#include "tst_receipt_schema.moc"
