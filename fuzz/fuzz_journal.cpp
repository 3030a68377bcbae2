// SPDX-License-Identifier: Apache-2.0

// A journal of which anything may have become on the disk: the file's bytes, or what stands in its tables.
#include "fuzz/fuzz_input.h"
#include "simulator/fiscal/journal_file.h"

#include <QCoreApplication>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

namespace {

using namespace Qt::StringLiterals;

QString folder()
{
    static const QTemporaryDir directory;
    return directory.path();
}

/** A number, small or large, a text or nothing. */
QVariant valueFrom(Fuzz::Input &input)
{
    switch (input.byte() % 5) {
    case 0:
        return input.byte();
    case 1:
        return qlonglong(input.number<std::int64_t>());
    case 2:
        return QString::fromUtf8(input.chunk());
    case 3:
        return input.chunk();
    default:
        return {};
    }
}

/** One row into one of the tables, or another value for a counter. A row that SQLite refuses is left out. */
void change(QSqlDatabase &database, Fuzz::Input &input)
{
    struct Table
    {
        const char *name;
        int columns;
    };
    constexpr Table tables[] = {{"counters", 2}, {"receipts", 18}, {"lines", 13},
                                {"payments", 6}, {"taxes", 5},     {"z_reports", 11}};
    static const QStringList counters{u"z"_s, u"last_z"_s, u"grand_total"_s};
    const std::uint8_t which = input.byte();
    const Table &table = tables[which % std::size(tables)];
    QStringList marks(table.columns, u"?"_s);
    QSqlQuery query(database);
    query.prepare(u"REPLACE INTO %1 VALUES (%2)"_s.arg(QLatin1StringView(table.name), marks.join(u',')));
    const bool isCounter = which % std::size(tables) == 0;
    query.bindValue(0, isCounter ? QVariant(counters.at(which / 6 % 3)) : QVariant(1));
    for (int i = 1; i < table.columns; ++i)
        query.bindValue(i, valueFrom(input));
    query.exec();
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    FUZZ_EXPECT(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size());
}

/** The bytes of a new one, which is made where the path leads. */
QByteArray freshJournal(const QString &path)
{
    {
        Simulator::JournalFile journal;
        FUZZ_EXPECT(journal.open(path).isEmpty());
    }
    QFile file(path);
    FUZZ_EXPECT(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void fill(const QString &path, Fuzz::Input &input)
{
    static const QByteArray fresh = freshJournal(path);
    write(path, fresh);
    const QString name = u"fuzz"_s;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        database.setDatabaseName(path);
        FUZZ_EXPECT(database.open());
        QSqlQuery(database).exec(u"PRAGMA synchronous = OFF"_s);
        database.transaction();
        while (!input.atEnd())
            change(database, input);
        FUZZ_EXPECT(database.commit());
    }
    QSqlDatabase::removeDatabase(name);
}

/** What a register does with the journal that it has found. */
void use(const QString &path)
{
    Simulator::JournalFile journal;
    if (!journal.open(path).isEmpty())
        return;
    FUZZ_EXPECT(journal.z() >= 1 && journal.lastZ() >= 0 && journal.grandTotal() >= 0);
    journal.isNew();
    journal.find({1, 1});
    const auto day = journal.day(journal.z());
    FUZZ_EXPECT(!day || day->total >= 0);
    const Simulator::ReceiptRef receipt = journal.begin(true, 1'790'000'000);
    if (receipt.number != 0)
        journal.cancel(receipt, 1'790'000'001);
    Simulator::ZReport report;
    report.z = journal.z();
    if (day)
        report.day = *day;
    journal.close(report);
    journal.setLastZ(1'790'000'002);
    journal.setZ(7);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    const QString path = folder() + u"/journal"_s;
    for (const QString &part : {path, path + u"-wal"_s, path + u"-shm"_s})
        QFile::remove(part);
    Fuzz::Input input(data, size);
    if (input.byte() % 2 == 0)
        fill(path, input);
    else
        write(path, input.rest());
    use(path);
    use(path); // also what the first use has left
    return 0;
}
