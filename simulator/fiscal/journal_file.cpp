// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/journal_file.h"

#include "simulator/common/private_file.h"
#include "translations/spoken.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <algorithm>
#include <initializer_list>
#include <limits>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int applicationId = 0x564C4E4F; // "VLNO" in the file's header
constexpr int layoutVersion = 1;

enum Status { Open = 0, Closed = 1, Cancelled = 2 };

constexpr qint64 mostInt = std::numeric_limits<qint32>::max();
// More money than any shop takes, and room above it for two such sums and every receipt to come.
constexpr qint64 mostMoney = std::numeric_limits<qint64>::max() / 4;

const QStringList &layout()
{
    static const QStringList statements{
        u"CREATE TABLE counters (name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID"_s,
        u"CREATE TABLE receipts (z INTEGER, number INTEGER, status INTEGER NOT NULL, opened INTEGER NOT NULL,"
        " closed INTEGER, with_invoice INTEGER NOT NULL, total INTEGER, tax INTEGER, cash INTEGER,"
        " card INTEGER, change INTEGER, items INTEGER, contribution INTEGER, patient INTEGER,"
        " invoice_type INTEGER, invoice_reference TEXT, customer TEXT, delivers INTEGER,"
        " PRIMARY KEY (z, number)) WITHOUT ROWID"_s,
        u"CREATE TABLE lines (z INTEGER, number INTEGER, line INTEGER, name TEXT, price INTEGER,"
        " quantity INTEGER, type INTEGER, section INTEGER, tax_rate INTEGER, gross INTEGER,"
        " percentage INTEGER, adjustment INTEGER, deleted INTEGER,"
        " PRIMARY KEY (z, number, line)) WITHOUT ROWID"_s,
        u"CREATE TABLE payments (z INTEGER, number INTEGER, payment INTEGER, card INTEGER, amount INTEGER,"
        " acquirer INTEGER, PRIMARY KEY (z, number, payment)) WITHOUT ROWID"_s,
        u"CREATE TABLE taxes (z INTEGER, number INTEGER, rate INTEGER, total INTEGER, tax INTEGER,"
        " PRIMARY KEY (z, number, rate)) WITHOUT ROWID"_s,
        u"CREATE TABLE z_reports (z INTEGER PRIMARY KEY, time INTEGER, receipts INTEGER, invoices INTEGER,"
        " cancelled INTEGER, total INTEGER, tax INTEGER, cash INTEGER, card INTEGER, contributions INTEGER,"
        " grand_total INTEGER)"_s,
        u"PRAGMA application_id = %1"_s.arg(applicationId),
        u"PRAGMA user_version = %1"_s.arg(layoutVersion),
    };
    return statements;
}

/** A value and its place in a statement. Places have names, since for one without Qt makes up a name each
 * time a value is put there, which costs more than all the rest. */
struct Value
{
    QString place;
    QVariant value;
};

bool run(QSqlQuery &query, std::initializer_list<Value> values)
{
    for (const auto &[place, value] : values)
        query.bindValue(place, value);
    return query.exec();
}

/** @return false for what no sum of this program's can be */
bool readMoney(const QVariant &value, qint64 &money)
{
    bool isNumber = false;
    money = value.toLongLong(&isNumber);
    return isNumber && money >= 0 && money <= mostMoney;
}

/** The one number that a question has for an answer; nothing when the database cannot be read. */
std::optional<qint64> number(const QSqlDatabase &database, const QString &question)
{
    QSqlQuery query(database);
    if (!query.exec(question) || !query.next())
        return std::nullopt;
    return query.value(0).toLongLong();
}

} // namespace

/** Prepared once: a sale on record takes a dozen of them. */
struct JournalFile::Statements
{
    explicit Statements(const QSqlDatabase &opened)
        : database(opened)
    {
    }

    QSqlQuery prepared(const QString &text) const
    {
        QSqlQuery query(database);
        query.setForwardOnly(true);
        query.prepare(text);
        return query;
    }

    QSqlDatabase database;
    QSqlQuery counter = prepared(u"REPLACE INTO counters VALUES (:name, :value)"_s);
    QSqlQuery nextNumber = prepared(u"SELECT coalesce(max(number), 0) + 1 FROM receipts WHERE z = :z"_s);
    QSqlQuery begin = prepared(u"INSERT INTO receipts (z, number, status, opened, with_invoice)"
                               " VALUES (:z, :number, 0, :opened, :with_invoice)"_s);
    QSqlQuery close = prepared(
        u"UPDATE receipts SET status = 1, closed = :closed, total = :total, tax = :tax, cash = :cash,"
        " card = :card, change = :change, items = :items, contribution = :contribution, patient = :patient,"
        " invoice_type = :invoice_type, invoice_reference = :invoice_reference, customer = :customer,"
        " delivers = :delivers WHERE z = :z AND number = :number AND status = 0"_s);
    QSqlQuery cancel = prepared(u"UPDATE receipts SET status = 2, closed = :closed"
                                " WHERE z = :z AND number = :number AND status = 0"_s);
    QSqlQuery line =
        prepared(u"INSERT INTO lines VALUES (:z, :number, :line, :name, :price, :quantity, :type, :section,"
                 " :tax_rate, :gross, :percentage, :adjustment, :deleted)"_s);
    QSqlQuery payment =
        prepared(u"INSERT INTO payments VALUES (:z, :number, :payment, :card, :amount, :acquirer)"_s);
    QSqlQuery tax = prepared(u"INSERT INTO taxes VALUES (:z, :number, :rate, :total, :tax)"_s);
    QSqlQuery report = prepared(
        u"INSERT INTO z_reports VALUES (:z, :time, :receipts, :invoices, :cancelled, :total, :tax, :cash,"
        " :card, :contributions, :grand_total)"_s);
    QSqlQuery find = prepared(u"SELECT total, tax, cash, card, change, items FROM receipts"
                              " WHERE z = :z AND number = :number AND status = 1"_s);
};

JournalFile::JournalFile()
    : m_connection(QUuid::createUuid().toString())
{
}

JournalFile::~JournalFile()
{
    m_statements.reset();
    m_database = {};
    QSqlDatabase::removeDatabase(m_connection);
}

QString JournalFile::open(const QString &file)
{
    QString problem = connect(file);
    if (problem.isEmpty())
        problem = resume();
    return problem.isEmpty() ? QString() : Spoken::tr("the journal %1 cannot be used: %2").arg(file, problem);
}

/** Takes up what an earlier program left. Returns what was wrong, or nothing. */
QString JournalFile::resume()
{
    m_statements = std::make_unique<Statements>(m_database);
    if (!readCounters() || isMade(z()) || !day(z()))
        return Spoken::tr("it is damaged");
    // A sale that was open when the program ended belongs to no session any more: it is cancelled.
    return execute({u"UPDATE receipts SET status = 2, closed = opened WHERE status = 0"_s});
}

/** Returns what was wrong, or nothing. */
QString JournalFile::connect(const QString &file)
{
    // Before SQLite creates it: what SQLite lays beside it gets the same permissions.
    if (QFile created(file); !created.exists())
        createPrivate(created); // when that fails, so does opening it
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    m_database.setDatabaseName(file);
    m_database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=0"_s);
    if (!m_database.open())
        return m_database.lastError().text();
    if (const QString problem =
            set({u"PRAGMA locking_mode = EXCLUSIVE"_s, u"BEGIN EXCLUSIVE"_s, u"COMMIT"_s});
        !problem.isEmpty())
        return problem;
    const auto id = number(m_database, u"PRAGMA application_id"_s);
    const auto version = number(m_database, u"PRAGMA user_version"_s);
    const auto tables = number(m_database, u"SELECT count(*) FROM sqlite_master"_s);
    const bool ours = id == applicationId && version == layoutVersion;
    if (!ours && (id != 0 || tables != 0))
        return Spoken::tr("it is no journal of this program");
    tighten(file);
    // Not sooner: the mode is written into the file. In it what a transaction wrote survives the program's
    // end without waiting for the disk.
    const QString problem = set({u"PRAGMA journal_mode = WAL"_s, u"PRAGMA synchronous = NORMAL"_s});
    return ours || !problem.isEmpty() ? problem : execute(layout());
}

/** One that an earlier program, or somebody else, has left open to others. */
void JournalFile::tighten(const QString &file)
{
    if (const QString log = file + u"-wal"_s; QFile::exists(log))
        makePrivate(log); // SQLite has made it as open as the journal was
    if (isPrivate(file))
        return;
    const QString outcome = makePrivate(file) ? u"now it is its owner's alone"_s
                                              : u"that cannot be changed: it is somebody else's"_s;
    m_warning = u"the journal %1 was open to others; %2"_s.arg(file, outcome);
}

/** One after the other. Returns what was wrong, or nothing. */
QString JournalFile::set(const QStringList &statements)
{
    QSqlQuery query(m_database);
    for (const QString &text : statements)
        if (!query.exec(text))
            return query.lastError().text();
    return {};
}

/** All or nothing. Returns what was wrong, or nothing. */
QString JournalFile::execute(const QStringList &statements)
{
    const QString problem = set(QStringList{u"BEGIN"_s} + statements + QStringList{u"COMMIT"_s});
    if (!problem.isEmpty())
        m_database.rollback();
    return problem;
}

template <typename Change>
bool JournalFile::inTransaction(Change change)
{
    if (!m_database.transaction())
        return false;
    if (change() && m_database.commit())
        return true;
    m_database.rollback();
    return false;
}

/** @return false also when a counter is what this program never writes */
bool JournalFile::readCounters()
{
    const auto counter = [this](const char *name, qint64 least, qint64 most) {
        auto value =
            number(m_database, u"SELECT coalesce((SELECT value FROM counters WHERE name = '%1'), %2)"_s
                                   .arg(QLatin1StringView(name))
                                   .arg(least));
        if (value && (*value < least || *value > most))
            value.reset();
        return value;
    };
    const auto z = counter("z", 1, mostInt);
    const auto lastZ = counter("last_z", 0, mostInt);
    const auto grandTotal = counter("grand_total", 0, mostMoney);
    if (!z || !lastZ || !grandTotal)
        return false;
    setCounters({qint32(*z), *lastZ, *grandTotal});
    return true;
}

bool JournalFile::isNew() const
{
    return number(m_database, u"SELECT (SELECT count(*) FROM receipts)"
                              " + (SELECT count(*) FROM z_reports)"_s) == 0;
}

bool JournalFile::writeCounter(const QString &name, qint64 value)
{
    return run(m_statements->counter, {{u":name"_s, name}, {u":value"_s, value}});
}

/** True also when that cannot be read. */
bool JournalFile::isMade(qint32 z) const
{
    return number(m_database, u"SELECT count(*) FROM z_reports WHERE z = %1"_s.arg(z)) != 0;
}

bool JournalFile::setZ(qint32 z)
{
    if (isMade(z) || !writeCounter(u"z"_s, z))
        return false;
    setCounters({z, lastZ(), grandTotal()});
    return true;
}

bool JournalFile::setLastZ(qint64 time)
{
    if (!writeCounter(u"last_z"_s, time))
        return false;
    setCounters({z(), time, grandTotal()});
    return true;
}

ReceiptRef JournalFile::begin(bool withInvoice, qint64 time)
{
    QSqlQuery &next = m_statements->nextNumber;
    if (!run(next, {{u":z"_s, z()}}) || !next.next())
        return {};
    const ReceiptRef ref{z(), next.value(0).toInt()};
    next.finish();
    const bool isBegun = run(m_statements->begin, {{u":z"_s, ref.z},
                                                   {u":number"_s, ref.number},
                                                   {u":opened"_s, time},
                                                   {u":with_invoice"_s, withInvoice}});
    return isBegun ? ref : ReceiptRef();
}

bool JournalFile::close(const Receipt &receipt)
{
    return inTransaction([&] { return writeReceipt(receipt); });
}

bool JournalFile::writeReceipt(const Receipt &receipt)
{
    if (!writeSums(receipt))
        return false;
    int index = 0;
    for (const SaleLine &line : receipt.sale.lines())
        if (!writeLine(receipt.ref, index++, line))
            return false;
    index = 0;
    for (const Payment &payment : receipt.sale.payments())
        if (!writePayment(receipt.ref, index++, payment))
            return false;
    for (const auto &[rate, group] : receipt.sale.taxGroups())
        if (!writeTax(receipt.ref, rate, group))
            return false;
    return true;
}

bool JournalFile::writeSums(const Receipt &receipt)
{
    const SaleTotals sums = receipt.sale.totals();
    const auto &invoice = receipt.invoice;
    const bool isDone = run(m_statements->close,
                            {{u":closed"_s, receipt.closed},
                             {u":total"_s, sums.total},
                             {u":tax"_s, sums.tax},
                             {u":cash"_s, sums.cash},
                             {u":card"_s, sums.card},
                             {u":change"_s, sums.change},
                             {u":items"_s, sums.items},
                             {u":contribution"_s, receipt.sale.medicalContribution()},
                             {u":patient"_s, receipt.sale.patient()},
                             {u":invoice_type"_s, invoice ? QVariant(int(invoice->type)) : QVariant()},
                             {u":invoice_reference"_s, invoice ? QVariant(invoice->reference) : QVariant()},
                             {u":customer"_s, invoice ? QVariant(invoice->idNumber) : QVariant()},
                             {u":delivers"_s, invoice ? QVariant(invoice->delivers) : QVariant()},
                             {u":z"_s, receipt.ref.z},
                             {u":number"_s, receipt.ref.number}});
    return isDone && m_statements->close.numRowsAffected() == 1;
}

bool JournalFile::writeLine(const ReceiptRef &ref, int index, const SaleLine &line)
{
    return run(m_statements->line, {{u":z"_s, ref.z},
                                    {u":number"_s, ref.number},
                                    {u":line"_s, index},
                                    {u":name"_s, line.name},
                                    {u":price"_s, line.price},
                                    {u":quantity"_s, line.quantity},
                                    {u":type"_s, line.type},
                                    {u":section"_s, line.section},
                                    {u":tax_rate"_s, line.taxRate},
                                    {u":gross"_s, line.gross},
                                    {u":percentage"_s, line.percentage},
                                    {u":adjustment"_s, line.adjustment},
                                    {u":deleted"_s, line.deleted}});
}

bool JournalFile::writePayment(const ReceiptRef &ref, int index, const Payment &payment)
{
    return run(m_statements->payment, {{u":z"_s, ref.z},
                                       {u":number"_s, ref.number},
                                       {u":payment"_s, index},
                                       {u":card"_s, payment.kind == PaymentKind::Card},
                                       {u":amount"_s, payment.amount},
                                       {u":acquirer"_s, payment.acquirer}});
}

bool JournalFile::writeTax(const ReceiptRef &ref, int rate, const TaxGroup &group)
{
    return run(m_statements->tax, {{u":z"_s, ref.z},
                                   {u":number"_s, ref.number},
                                   {u":rate"_s, rate},
                                   {u":total"_s, group.total},
                                   {u":tax"_s, group.tax}});
}

bool JournalFile::cancel(const ReceiptRef &ref, qint64 time)
{
    return run(m_statements->cancel, {{u":closed"_s, time}, {u":z"_s, ref.z}, {u":number"_s, ref.number}}) &&
           m_statements->cancel.numRowsAffected() == 1;
}

bool JournalFile::close(const ZReport &report)
{
    qint32 next = 0;
    if (!inTransaction([&] { return writeReport(report, next); }))
        return false;
    setCounters({next, report.time, report.grandTotal});
    return true;
}

bool JournalFile::writeReport(const ZReport &report, qint32 &next)
{
    const DayTotals &day = report.day;
    if (!run(m_statements->report, {{u":z"_s, report.z},
                                    {u":time"_s, report.time},
                                    {u":receipts"_s, day.receipts},
                                    {u":invoices"_s, day.invoices},
                                    {u":cancelled"_s, day.cancelled},
                                    {u":total"_s, day.total},
                                    {u":tax"_s, day.tax},
                                    {u":cash"_s, day.cash},
                                    {u":card"_s, day.card},
                                    {u":contributions"_s, day.contributions},
                                    {u":grand_total"_s, report.grandTotal}}))
        return false;
    // Where its operator has set the number back, the reports behind this one may have been made already.
    const auto last = number(m_database, u"SELECT min(z) FROM z_reports AS made WHERE z >= %1 AND NOT EXISTS"
                                         " (SELECT 1 FROM z_reports WHERE z = made.z + 1)"_s.arg(report.z));
    next = qint32(last.value_or(report.z)) + 1;
    return last && writeCounter(u"z"_s, next) && writeCounter(u"last_z"_s, report.time) &&
           writeCounter(u"grand_total"_s, report.grandTotal);
}

std::optional<DayTotals> JournalFile::day(qint32 z) const
{
    QSqlQuery sums(m_database);
    const auto cancelled =
        number(m_database, u"SELECT count(*) FROM receipts WHERE status = 2 AND z = %1"_s.arg(z));
    if (!cancelled ||
        !sums.exec(u"SELECT count(*), count(invoice_type), coalesce(sum(total), 0), coalesce(sum(tax), 0),"
                   " coalesce(sum(cash - change), 0), coalesce(sum(card), 0), coalesce(sum(contribution), 0)"
                   " FROM receipts WHERE status = 1 AND z = %1"_s.arg(z)) ||
        !sums.next())
        return std::nullopt;
    DayTotals day;
    day.receipts = sums.value(0).toInt();
    day.invoices = sums.value(1).toInt();
    day.cancelled = qint32(*cancelled);
    bool good = true;
    int column = 2;
    for (qint64 *sum : {&day.total, &day.tax, &day.cash, &day.card, &day.contributions})
        good = readMoney(sums.value(column++), *sum) && good;
    return good && readTaxes(z, day.taxGroups) ? std::optional(day) : std::nullopt;
}

bool JournalFile::readTaxes(qint32 z, TaxGroups &groups) const
{
    QSqlQuery taxes(m_database);
    if (!taxes.exec(u"SELECT rate, sum(total), sum(tax) FROM taxes WHERE z = %1 GROUP BY rate"_s.arg(z)))
        return false;
    while (taxes.next()) {
        TaxGroup &group = groups[taxes.value(0).toInt()];
        if (!readMoney(taxes.value(1), group.total) || !readMoney(taxes.value(2), group.tax))
            return false;
    }
    return !taxes.lastError().isValid();
}

std::optional<SaleTotals> JournalFile::find(const ReceiptRef &ref) const
{
    QSqlQuery &query = m_statements->find;
    if (!run(query, {{u":z"_s, ref.z}, {u":number"_s, ref.number}}) || !query.next())
        return std::nullopt;
    const SaleTotals totals{query.value(0).toLongLong(), query.value(1).toLongLong(),
                            query.value(2).toLongLong(), query.value(3).toLongLong(),
                            query.value(4).toLongLong(), query.value(5).toInt()};
    query.finish();
    return totals;
}

} // namespace Simulator
