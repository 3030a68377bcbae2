// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/journal_file.h"
#include "simulator/fiscal/journal_in_memory.h"
#include "tests/support/till_at_hand.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** The simulated register's journals, in a file and in memory, beside each other. */
class TestJournalKinds : public QObject
{
    Q_OBJECT

private slots:
    void bothKindsKeepTheSame_data();
    void bothKindsKeepTheSame();
    void aJournalInMemoryCanBeFull();
};

namespace {

/** What happens to a journal, drawn from a seed, and what it says of it. */
class Chronicle
{
public:
    Chronicle(Journal &journal, quint32 seed)
        : m_journal(journal)
        , m_random(seed)
    {
    }

    /** Does something, often what must be refused. */
    QString goOn()
    {
        const bool isDone = change();
        const ReceiptRef ref = anyReceipt();
        const auto found = m_journal.find(ref); // nothing is another answer than a receipt without a value
        const SaleTotals sums = found.value_or(SaleTotals());
        const DayTotals day = m_journal.day(ref.z).value_or(DayTotals());
        const qint64 taxed = day.taxGroups.empty() ? 0 : day.taxGroups.rbegin()->second.total;
        QString text;
        for (const qint64 number : {qint64(isDone),
                                    qint64(m_journal.isNew()),
                                    qint64(m_journal.z()),
                                    m_journal.lastZ(),
                                    m_journal.grandTotal(),
                                    qint64(found.has_value()),
                                    sums.total,
                                    sums.tax,
                                    sums.cash,
                                    sums.card,
                                    sums.change,
                                    qint64(sums.items),
                                    qint64(day.receipts),
                                    qint64(day.invoices),
                                    qint64(day.cancelled),
                                    day.total,
                                    day.tax,
                                    day.cash,
                                    day.card,
                                    day.contributions,
                                    qint64(day.taxGroups.size()),
                                    taxed})
            text += QString::number(number) + u' ';
        return text;
    }

private:
    ReceiptRef anyReceipt() { return {m_random.bounded(1, 5), m_random.bounded(0, 12)}; }

    Receipt anySale()
    {
        const bool hasInvoice = m_random.bounded(3) == 0;
        Receipt receipt{anyReceipt(), Sale(), 0, m_time, hasInvoice, {}};
        if (hasInvoice)
            receipt.invoice = Invoice{Invoice::Electronic, Invoice::Person, {}, u"12345678901"_s, false};
        receipt.sale.add({m_random.bounded(2) ? bread : water, water});
        receipt.sale.removeLast();
        receipt.sale.setMedicalContribution(m_random.bounded(2) * 300, 11'111'111'111);
        receipt.sale.pay(PaymentKind::Card, 100, 1);
        receipt.sale.pay(PaymentKind::Cash, 5000, 0);
        return receipt;
    }

    bool change()
    {
        ++m_time;
        switch (m_random.bounded(10)) {
        case 0:
            return m_journal.close(ZReport{m_random.bounded(1, 5), m_time, {}, m_time * 100});
        case 1:
            return m_journal.setZ(m_random.bounded(1, 6));
        case 2:
            return m_journal.setLastZ(m_time);
        case 3:
        case 4:
            return m_journal.cancel(anyReceipt(), m_time);
        case 5:
        case 6:
        case 7:
            return m_journal.close(anySale());
        default:
            return m_journal.begin(m_random.bounded(2) == 0, m_time).number > 0;
        }
    }

    Journal &m_journal;
    QRandomGenerator m_random;
    qint64 m_time = 1000;
};

} // namespace

void TestJournalKinds::bothKindsKeepTheSame_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 5; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestJournalKinds::bothKindsKeepTheSame()
{
    QFETCH(const quint32, seed);
    const QTemporaryDir folder;
    JournalFile file;
    QCOMPARE(file.open(folder.filePath(u"journal"_s)), QString());
    JournalInMemory memory;
    Chronicle inFile(file, seed);
    Chronicle inMemory(memory, seed);
    for (int i = 0; i < 300; ++i)
        QCOMPARE(inMemory.goOn(), inFile.goOn());
}

void TestJournalKinds::aJournalInMemoryCanBeFull()
{
    JournalInMemory journal;
    const ReceiptRef open = journal.begin(false, 1);
    QCOMPARE(open, (ReceiptRef{1, 1}));
    journal.setWritable(false);
    QCOMPARE(journal.begin(false, 2), ReceiptRef());
    QVERIFY(!journal.close(Receipt{open, Sale(), 1, 2, false, {}}));
    QVERIFY(!journal.cancel(open, 2));
    QVERIFY(!journal.close(ZReport{1, 2, {}, 100}));
    QVERIFY(!journal.setZ(7));
    QVERIFY(!journal.setLastZ(2));
    QCOMPARE(journal.day(1), std::optional(DayTotals()));
    QCOMPARE(journal.z(), 1);
    QCOMPARE(journal.lastZ(), 0);
    QCOMPARE(journal.grandTotal(), 0);
    journal.setWritable(true);
    QVERIFY(journal.cancel(open, 2));
    QCOMPARE(journal.begin(false, 3), (ReceiptRef{1, 2}));
}

QTEST_GUILESS_MAIN(TestJournalKinds)
#include "tst_journal_kinds.moc"
