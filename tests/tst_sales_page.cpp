// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/registers_key.h"
#include "tests/support/simulated_register.h"
#include "tests/support/symbol_names.h"
#include "tests/support/velnoctl_client.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** docs/sales.md: what its receipts print is what stands there. */
class TestSalesPage : public QObject
{
    Q_OBJECT

private slots:
    void eachSalePrintsWhatThePageShows();
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

} // namespace

void TestSalesPage::eachSalePrintsWhatThePageShows()
{
    NEEDS_A_REGISTERS_KEY();
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

QTEST_GUILESS_MAIN(TestSalesPage)
#include "tst_sales_page.moc"
