// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/symbol_names.h"
#include "tests/support/velnoctl_client.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The pages that show a receipt: what it prints, and what is told of it, is what stands there. */
class TestSalesPage : public QObject
{
    Q_OBJECT

private slots:
    void eachSalePrintsWhatThePageShows();
    void firstReceiptIsThatOfThePage_data();
    void firstReceiptIsThatOfThePage();
};

namespace {

/** The blocks of code: a receipt begins with "{", all else is printed. */
QStringList blocks()
{
    const QString page = QString::fromUtf8(fileText(VELNO_SOURCE "/docs", "sales.md"));
    QStringList parts = page.split("\n```"_L1);
    QStringList blocks;
    for (qsizetype i = 1; i < parts.size(); i += 2)
        blocks << parts[i].section(u'\n', 1);
    return blocks;
}

QByteArray printed(const QString &folder)
{
    QByteArray text;
    const QDir prints(folder);
    for (const QString &name : prints.entryList({u"*.txt"_s}, QDir::Files, QDir::Name))
        text += fileText(qPrintable(folder), qPrintable(name));
    return text;
}

/** The day and the hour are those of the print. */
QString withoutTime(QString text)
{
    static const QRegularExpression time(u"TARİH: .*"_s);
    return text.replace(time, u"TARİH"_s);
}

} // namespace

void TestSalesPage::eachSalePrintsWhatThePageShows()
{
    const quint16 port = freePort();
    const QTemporaryDir folder;
    const QString prints = folder.filePath(u"prints"_s);
    QVERIFY(QDir().mkdir(prints));
    SimulatedRegister reg(port, {u"--receipts"_s, prints});
    const QStringList options = target(port) + QStringList{u"--ledger"_s, folder.filePath(u"ledger"_s)};
    int sales = 0;
    for (const QString &block : blocks()) {
        if (block.startsWith(u'{')) {
            const QString file = fileWith(folder, block.toUtf8());
            const Outcome sold = outcomeOf(
                Client::program(), options + QStringList{u"receipt"_s, file, u"key=%1"_s.arg(++sales)});
            QVERIFY2(sold.exitCode == 0, sold.errors.constData());
        } else if (block.contains("Z RAPORU"_L1)) {
            QCOMPARE(outcomeOf(Client::program(), options + QStringList{u"z-report"_s}).exitCode, 0);
        }
        if (!block.startsWith(u'{'))
            QVERIFY2(printed(prints).contains(block.toUtf8()), qPrintable(block));
    }
    QCOMPARE(sales, 5);
}

void TestSalesPage::firstReceiptIsThatOfThePage_data()
{
    QTest::addColumn<QByteArray>("page");
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << QByteArray("README.md") << u"en"_s;
    QTest::newRow("Turkish") << QByteArray("docs/tr/quick-start.md") << u"tr"_s;
}

void TestSalesPage::firstReceiptIsThatOfThePage()
{
    QFETCH(const QByteArray, page);
    QFETCH(const QString, language);
    const QByteArray text = fileText(VELNO_SOURCE, page.constData());
    const QStringList receipts = matches(text, "^(\\{\"items\".*)$");
    QCOMPARE(receipts.size(), 1);
    const quint16 port = freePort();
    const QTemporaryDir folder;
    const QString prints = folder.filePath(u"prints"_s);
    QVERIFY(QDir().mkdir(prints));
    SimulatedRegister reg(port, {u"--receipts"_s, prints});
    const QStringList arguments{u"--language"_s, language,
                                u"--ledger"_s,   folder.filePath(u"ledger"_s),
                                u"receipt"_s,    fileWith(folder, receipts.first().toUtf8()),
                                u"key=4711"_s};
    const Outcome sold = outcomeOf(Client::program(), target(port) + arguments);
    QVERIFY2(!sold.output.isEmpty() && text.contains("```\n" + sold.output + "```\n"),
             sold.output.constData());
    const QString print = withoutTime(QString::fromUtf8(printed(prints)));
    QVERIFY(!print.isEmpty() && withoutTime(QString::fromUtf8(text)).contains(u"```\n%1```\n"_s.arg(print)));
}

QTEST_GUILESS_MAIN(TestSalesPage)
#include "tst_sales_page.moc"
