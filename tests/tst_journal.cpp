// SPDX-License-Identifier: Apache-2.0

#include "tests/support/full_disk.h"
#include "tests/support/till_at_hand.h"

#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** What the simulated register remembers when it starts again. */
class TestJournal : public QObject
{
    Q_OBJECT

private slots:
    void aNewJournalBeginsWithTheNumberChosen();
    void closedReceiptsAreStillThere();
    void theOpenSaleIsCancelled();
    void theDayGoesOn();
    void reportsAndCountersAreStillThere();
    void aReportIsMadeOnce();
    void aReportMadeBeforeIsPassedOver();
    void linesAndPaymentsAreOnRecord();
    void unknownReceiptsAreNotFound_data();
    void unknownReceiptsAreNotFound();
    void foreignFilesAreRefused_data();
    void foreignFilesAreRefused();
    void damagedJournalsAreRefused_data();
    void damagedJournalsAreRefused();
    void theLargestSumsAreStillAdded();
    void aForeignDatabaseStaysAsItIs();
    void aFullDiskIsNoDamage();
    void aJournalServesOneRegister();
    void whatCannotBeWrittenDoesNotHappen();
};

namespace {

/** A register's whole life with a journal, from its start to its end. */
class Life : public Till
{
public:
    explicit Life(const QString &file, qint32 firstZ = 0)
        : Till("UB1234567890", [] { return TillAtHand::time; })
        , problem(open(file))
    {
        if (problem.isEmpty() && firstZ != 0)
            setZ(firstZ);
    }

    void sell(const ItemRequest &item, int closing)
    {
        press({'E'});
        add({item});
        press({closing});
    }

    const QString problem;
};

QVariantList row(const QString &file, const QString &question)
{
    QVariantList values;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"look"_s);
        database.setDatabaseName(file);
        database.open();
        QSqlQuery query(question, database);
        query.next();
        for (int i = 0; query.isValid() && !query.isNull(i) && query.value(i).isValid(); ++i)
            values << query.value(i);
    }
    QSqlDatabase::removeDatabase(u"look"_s);
    return values;
}

} // namespace

void TestJournal::aNewJournalBeginsWithTheNumberChosen()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file, 42);
        QCOMPARE(life.problem, QString());
        QVERIFY(life.isNew());
        QCOMPARE(life.z(), 42);
        QCOMPARE(life.lastZ(), 0);
        QCOMPARE(life.day(), DayTotals());
    }
    Life life(file);
    QVERIFY(life.isNew());
    QCOMPARE(life.z(), 42);
    life.sell(bread, keyF10);
    QVERIFY(!life.isNew());
}

void TestJournal::closedReceiptsAreStillThere()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file, 3);
        life.sell(bread, keyF10);
        life.sell(water, keyF11);
    }
    const Life life(file);
    QVERIFY(!life.isNew());
    QCOMPARE(life.receipt({3, 1}), std::optional(SaleTotals{2500, 25, 2500, 0, 0, 1}));
    QCOMPARE(life.receipt({3, 2}), std::optional(SaleTotals{500, 45, 0, 500, 0, 1}));
    QVERIFY(!life.receipt({3, 3}));
}

void TestJournal::theOpenSaleIsCancelled()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file);
        life.sell(bread, keyF10);
        life.press({'E'});
        life.add({water});
        life.press({'1', keyF10});
        QCOMPARE(life.reference(), (ReceiptRef{1, 2}));
    }
    Life life(file);
    QVERIFY(!life.saleIsOpen());
    QVERIFY(!life.receipt({1, 2}));
    QCOMPARE(life.day().receipts, 1);
    QCOMPARE(life.day().cancelled, 1);
    QCOMPARE(life.day().total, 2500);
    life.press({'E'});
    QCOMPARE(life.reference(), (ReceiptRef{1, 3}));
}

void TestJournal::theDayGoesOn()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    DayTotals before;
    {
        Life life(file);
        life.sell(bread, keyF10);
        life.sell(water, keyF11);
        life.press({'M', '3'});
        life.add({water, bread});
        life.setMedicalContribution(300, 11'111'111'111);
        QCOMPARE(
            life.closeWithInvoice({Invoice::OnPaper, Invoice::Company, u"A12345"_s, u"1234567890"_s, true},
                                  PaymentKind::Card),
            NotRefused);
        life.press({'E', 'C', '1'});
        before = life.day();
        QCOMPARE(before.receipts, 3);
        QCOMPARE(before.invoices, 1);
        QCOMPARE(before.contributions, 300);
        QCOMPARE(before.taxGroups.size(), size_t(2));
    }
    QCOMPARE(Life(file).day(), before);
}

void TestJournal::reportsAndCountersAreStillThere()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file, 5);
        life.sell(bread, keyF10);
        QCOMPARE(life.printZ(), NotRefused);
        life.sell(water, keyF10);
        QCOMPARE(life.printZ(), NotRefused);
    }
    {
        Life life(file);
        QCOMPARE(life.z(), 7);
        QCOMPARE(life.lastZ(), TillAtHand::time);
        QCOMPARE(life.day(), DayTotals());
        QVERIFY(life.receipt({5, 1}));
        life.sell(bread, keyF10);
        QVERIFY(life.receipt({7, 1}));
    }
    QCOMPARE(row(file, u"SELECT receipts, total, cash, grand_total FROM z_reports WHERE z = 6"_s),
             (QVariantList{1, 500, 500, 3000}));
}

void TestJournal::aReportIsMadeOnce()
{
    Life life({}, 5);
    QVERIFY(life.setZ(6));
    QCOMPARE(life.printZ(), NotRefused);
    QVERIFY(!life.setZ(6));
    QVERIFY(!life.setZ(0));
    QVERIFY(!life.setZ(-1));
    QCOMPARE(life.z(), 7);
    life.press({'E'});
    QVERIFY(!life.setZ(9));
    life.press({'C', '1'});
    QVERIFY(life.setZ(0x7FFFFFFF));
    QCOMPARE(life.printZ(), ZNumbersUsedUp);
    QCOMPARE(life.z(), 0x7FFFFFFF);
}

void TestJournal::aReportMadeBeforeIsPassedOver()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file, 5);
        QCOMPARE(life.printZ(), NotRefused);
        QCOMPARE(life.printZ(), NotRefused);
        life.sell(water, keyF10);
        QVERIFY(life.setZ(4));
        life.sell(bread, keyF10);
        QCOMPARE(life.printZ(), NotRefused);
        QCOMPARE(life.z(), 7);
        QCOMPARE(life.day().total, 500);
    }
    Life life(file);
    QCOMPARE(life.problem, QString());
    QCOMPARE(life.z(), 7);
    QCOMPARE(life.day().total, 500);
    QCOMPARE(life.printZ(), NotRefused);
    QCOMPARE(life.z(), 8);
    QCOMPARE(life.day(), DayTotals());
}

void TestJournal::linesAndPaymentsAreOnRecord()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file);
        life.press({'E'});
        life.add({bread, water});
        life.remove(0);
        life.press({'3', keyF11, keyF10});
    }
    QCOMPARE(row(file, u"SELECT name, price, quantity, section, gross, deleted FROM lines WHERE line = 0"_s),
             (QVariantList{u"Ekmek"_s, 1250, 2000, 1, 2500, 1}));
    QCOMPARE(row(file, u"SELECT name, deleted FROM lines WHERE line = 1"_s), (QVariantList{u"Su"_s, 0}));
    QCOMPARE(row(file, u"SELECT card, amount, acquirer FROM payments WHERE payment = 0"_s),
             (QVariantList{1, 300, 11}));
    QCOMPARE(row(file, u"SELECT card, amount, acquirer FROM payments WHERE payment = 1"_s),
             (QVariantList{0, 200, 0}));
    QCOMPARE(row(file, u"SELECT rate, total, tax FROM taxes"_s), (QVariantList{10, 500, 45}));
}

void TestJournal::unknownReceiptsAreNotFound_data()
{
    QTest::addColumn<qint32>("z");
    QTest::addColumn<qint32>("number");

    QTest::newRow("zeros") << 0 << 0;
    QTest::newRow("another Z") << 2 << 1;
    QTest::newRow("another number") << 1 << 2;
    QTest::newRow("negative") << -1 << -1;
    QTest::newRow("highest") << 0x7FFFFFFF << 0x7FFFFFFF;
}

void TestJournal::unknownReceiptsAreNotFound()
{
    QFETCH(const qint32, z);
    QFETCH(const qint32, number);
    Life life({});
    life.sell(bread, keyF10);
    QVERIFY(life.receipt({1, 1}));
    QVERIFY(!life.receipt({z, number}));
}

void TestJournal::foreignFilesAreRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a text") << u"text"_s;
    QTest::newRow("another database") << u"database"_s;
    QTest::newRow("a folder") << u"folder"_s;
    QTest::newRow("in no folder") << u"nowhere"_s;
}

void TestJournal::foreignFilesAreRefused()
{
    QFETCH(const QString, kind);
    const QTemporaryDir folder;
    QString path = folder.filePath(u"file"_s);
    if (kind == u"text"_s) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("no database ").repeated(100));
    }
    if (kind == u"database"_s)
        row(path, u"CREATE TABLE mine (a)"_s);
    if (kind == u"folder"_s)
        path = folder.path();
    if (kind == u"nowhere"_s)
        path = folder.filePath(u"no/such/file"_s);
    const QString problem = Life(path).problem;
    QVERIFY2(problem.startsWith(u"the journal %1 cannot be used: "_s.arg(path)), qPrintable(problem));
}

void TestJournal::damagedJournalsAreRefused_data()
{
    QTest::addColumn<QString>("damage");
    const auto counter = [](const char *row, const char *name, const char *value) {
        QTest::newRow(row) << u"REPLACE INTO counters VALUES ('%1', %2)"_s.arg(QLatin1StringView(name),
                                                                               QLatin1StringView(value));
    };
    counter("Z 0", "z", "0");
    counter("Z below 0", "z", "-5");
    counter("Z over 32 bits", "z", "4294967299");
    counter("Z no number", "z", "'many'");
    counter("Z of a report that has been made", "z", "1");
    counter("last Z below 0", "last_z", "-1");
    counter("last Z over 32 bits", "last_z", "1099511627776");
    counter("grand total below 0", "grand_total", "-1");
    counter("grand total at the end of 64 bits", "grand_total", "9223372036854775807");
    counter("grand total over 64 bits", "grand_total", "1e300");
    QTest::newRow("no counters") << u"DROP TABLE counters"_s;
    QTest::newRow("no receipts") << u"DROP TABLE receipts"_s;
    QTest::newRow("no reports") << u"DROP TABLE z_reports"_s;
    QTest::newRow("no taxes") << u"DROP TABLE taxes"_s;
    QTest::newRow("receipts without tax") << u"ALTER TABLE receipts DROP COLUMN tax"_s;
    for (const char *sum : {"total", "tax", "cash", "card", "contribution"}) {
        const QString update = u"UPDATE receipts SET %1 = %2 WHERE z = 2"_s.arg(QLatin1StringView(sum));
        QTest::addRow("%s below 0", sum) << update.arg(u"-1 - change"_s);
        QTest::addRow("%s at the end of 64 bits", sum) << update.arg(u"9223372036854775807"_s);
    }
    QTest::newRow("totals over 64 bits")
        << u"INSERT INTO receipts (z, number, status, opened, with_invoice, total)"
           " VALUES (2, 7, 1, 1, 0, 9223372036854775807), (2, 8, 1, 1, 0, 9223372036854775807)"_s;
    QTest::newRow("tax group below 0") << u"UPDATE taxes SET total = -1 WHERE z = 2"_s;
    QTest::newRow("tax at the end of 64 bits") << u"UPDATE taxes SET tax = 9223372036854775807"_s;
    QTest::newRow("taxes over 64 bits")
        << u"INSERT INTO taxes VALUES (2, 7, 1, 9223372036854775807, 1), (2, 8, 1, 9223372036854775807, 1)"_s;
}

void TestJournal::damagedJournalsAreRefused()
{
    QFETCH(const QString, damage);
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file);
        life.sell(bread, keyF10);
        QCOMPARE(life.printZ(), NotRefused);
        life.sell(water, keyF10);
    }
    QCOMPARE(Life(file).problem, QString());
    row(file, damage);
    QCOMPARE(Life(file).problem, u"the journal %1 cannot be used: it is damaged"_s.arg(file));
}

void TestJournal::theLargestSumsAreStillAdded()
{
    constexpr qint64 most = std::numeric_limits<qint64>::max() / 4;
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    Life(file).sell(bread, keyF10);
    row(file, u"REPLACE INTO counters VALUES ('grand_total', %1)"_s.arg(most));
    row(file, u"UPDATE receipts SET total = %1"_s.arg(most));
    {
        Life life(file);
        QCOMPARE(life.problem, QString());
        life.sell(water, keyF10);
        QCOMPARE(life.day().total, most + 500);
        QCOMPARE(life.printZ(), NotRefused);
    }
    QCOMPARE(row(file, u"SELECT grand_total FROM z_reports"_s), QVariantList{most + most + 500});
}

void TestJournal::aForeignDatabaseStaysAsItIs()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"file"_s));
    row(file.fileName(), u"CREATE TABLE mine (a)"_s);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    QVERIFY(!before.isEmpty());
    QVERIFY(!Life(file.fileName()).problem.isEmpty());
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), before);
}

void TestJournal::aFullDiskIsNoDamage()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life life(file);
        life.sell(bread, keyF10);
    }
    {
        const FullDisk full(0);
        QCOMPARE(Life(file).problem, QString()); // nothing needs to be written yet
    }
    Life(file).press({'E'});
    {
        const FullDisk full(0);
        const QString problem = Life(file).problem;
        QVERIFY2(problem.contains(u" I/O "_s) || problem.contains(u" full"_s), qPrintable(problem));
    }
    QCOMPARE(Life(file).problem, QString());
}

void TestJournal::aJournalServesOneRegister()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    {
        Life first(file);
        QCOMPARE(first.problem, QString());
        const QString problem = Life(file).problem;
        QVERIFY2(problem.contains(u"locked"_s), qPrintable(problem));
        first.sell(bread, keyF10);
        QVERIFY(first.receipt({1, 1}));
    }
    QCOMPARE(Life(file).problem, QString());
}

void TestJournal::whatCannotBeWrittenDoesNotHappen()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    Life life(file);
    life.sell(bread, keyF10);
    life.press({'E'});
    life.add({water});
    const DayTotals before = life.day();
    {
        const FullDisk full(1024);
        life.press({keyF10});
        QCOMPARE(life.tellError(), int(NoJournal));
        QVERIFY(life.saleIsOpen());
        QCOMPARE(life.totals().cash, 0);
        life.press({'C', '1'});
        QCOMPARE(life.tellError(), int(NoJournal));
        QVERIFY(life.saleIsOpen());
        QCOMPARE(life.day(), before);
    }
    life.press({keyF10});
    QCOMPARE(life.tellError(), int(NoError));
    QVERIFY(life.receipt({1, 2}));
    {
        const FullDisk full(1024);
        QCOMPARE(life.printZ(), JournalUnwritable);
        QCOMPARE(life.z(), 1);
        life.press({'E'});
        QCOMPARE(life.tellError(), int(NoJournal));
        QVERIFY(!life.saleIsOpen());
    }
    QCOMPARE(life.printZ(), NotRefused);
    QCOMPARE(life.z(), 2);
}

QTEST_GUILESS_MAIN(TestJournal)
#include "tst_journal.moc"
