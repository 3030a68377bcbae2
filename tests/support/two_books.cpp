// SPDX-License-Identifier: Apache-2.0

#include "tests/support/two_books.h"

#include "till/ledger.h"

#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <functional>

using namespace Velno::Receipts;
using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

/** Calls for each row; true when all could be read. */
template <typename Take>
bool each(const QSqlDatabase &database, const QString &question, Take take)
{
    QSqlQuery query(database);
    if (!query.exec(question))
        return false;
    while (query.next())
        take(query);
    return !query.lastError().isValid();
}

Reference referenceIn(const QSqlQuery &row)
{
    return {row.value(0).toInt(), row.value(1).toInt()};
}

bool read(const QSqlDatabase &database, JournalBook &book)
{
    const bool receipts =
        each(database, u"SELECT z, number, total, cash, card, change FROM receipts WHERE status = 1"_s,
             [&](const QSqlQuery &row) {
                 book.closed[referenceIn(row)] = {row.value(2).toLongLong(),
                                                  row.value(3).toLongLong(),
                                                  row.value(4).toLongLong(),
                                                  row.value(5).toLongLong(),
                                                  {}};
             });
    const bool lines =
        each(database,
             u"SELECT z, number, name, price, quantity, section, deleted FROM lines"
             " ORDER BY z, number, line"_s,
             [&](const QSqlQuery &row) {
                 if (const auto found = book.closed.find(referenceIn(row)); found != book.closed.end())
                     found->lines << u"%1 %2 %3 %4%5"_s.arg(
                         row.value(2).toString(), row.value(3).toString(), row.value(4).toString(),
                         row.value(5).toString(), row.value(6).toBool() ? u" deleted"_s : QString());
             });
    const bool reports =
        each(database, u"SELECT z, receipts, total, cash, card FROM z_reports"_s, [&](const QSqlQuery &row) {
            book.reports[row.value(0).toInt()] = {row.value(1).toLongLong(), row.value(2).toLongLong(),
                                                  row.value(3).toLongLong(), row.value(4).toLongLong()};
        });
    return receipts && lines && reports;
}

} // namespace

JournalBook readJournal(const QString &file)
{
    const QString connection = u"journal, to compare"_s;
    JournalBook book;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, connection);
        database.setDatabaseName(file);
        if (!database.open() || !read(database, book))
            book.problem = u"the journal cannot be read: %1"_s.arg(database.lastError().text());
    }
    QSqlDatabase::removeDatabase(connection);
    return book;
}

LedgerBook readLedger(const QString &file, const QByteArray &serial)
{
    LedgerBook book;
    Ledger ledger;
    book.problem = ledger.open({file, serial, {}});
    const QList<State> states{State::Accepted, State::Open,    State::Closed,     State::Cancelled,
                              State::Refused,  State::Waiting, State::NeedsPerson};
    for (const Order &order : ledger.list(states, 1'000'000))
        book.orders[order.key] = order;
    if (book.problem.isEmpty())
        book.problem = ledger.problem();
    return book;
}

namespace {

QString inWords(const Sold &sold)
{
    return u"%1, cash %2, card %3, change %4: %5"_s.arg(sold.total)
        .arg(sold.cash)
        .arg(sold.card)
        .arg(sold.change)
        .arg(sold.lines.join(u"; "));
}

/** @param day  receives what the receipt adds to its Z report */
QString disagreement(const Wanted &one, const Order &order, const JournalBook &journal, QList<qint64> &day)
{
    const auto found = journal.closed.constFind({order.reference.first, order.reference.second});
    if (found == journal.closed.constEnd())
        return u"it is not sold"_s;
    const Sold &wanted = one.sold;
    if (*found != wanted)
        return u"sold is %1, wanted %2"_s.arg(inWords(*found), inWords(wanted));
    // By value: the numbers of the packed structure are not aligned as references promise.
    const auto at = [&order](VelnoTotal place) { return qint64(order.totals.values[place]); };
    const Sold told{at(VelnoTotal_ToPay), at(VelnoTotal_Cash), at(VelnoTotal_Card), at(VelnoTotal_Change),
                    wanted.lines};
    if (!one.isByWord && (told != wanted || order.totals.number != wanted.lines.size()))
        return u"told is %1, wanted %2"_s.arg(inWords(told), inWords(wanted));
    day = {1, found->total, found->cash - found->change, found->card};
    return {};
}

} // namespace

QString disagreement(const QList<Wanted> &wanted, const JournalBook &journal, const LedgerBook &ledger)
{
    if (!journal.problem.isEmpty() || !ledger.problem.isEmpty())
        return journal.problem + ledger.problem;
    if (ledger.orders.size() != wanted.size())
        return u"%1 orders of %2 are on record"_s.arg(ledger.orders.size()).arg(wanted.size());
    QSet<Reference> sold;
    QMap<int, QList<qint64>> days;
    for (const Wanted &one : wanted) {
        const Order order = ledger.orders.value(one.key);
        if (order.state != (one.isRefused ? State::Refused : State::Closed))
            return u"%1: its state is %2"_s.arg(one.key).arg(int(order.state));
        if (order.kind == Kind::ZReport && !journal.reports.contains(order.z))
            return u"%1: its report is not made"_s.arg(one.key);
        if (order.kind == Kind::ZReport || one.isRefused)
            continue;
        QList<qint64> day;
        if (const QString words = disagreement(one, order, journal, day); !words.isEmpty())
            return one.key + u": "_s + words;
        const Reference reference{order.reference.first, order.reference.second};
        if (sold.contains(reference))
            return u"%1: its receipt is another's, too"_s.arg(one.key);
        sold << reference;
        QList<qint64> &sum = days[reference.first];
        sum.resize(day.size());
        std::transform(sum.cbegin(), sum.cend(), day.cbegin(), sum.begin(), std::plus());
    }
    if (journal.closed.size() != sold.size())
        return u"%1 receipts are sold that nobody wanted"_s.arg(journal.closed.size() - sold.size());
    for (auto report = journal.reports.begin(); report != journal.reports.end(); ++report)
        if (report.value() != days.value(report.key(), QList<qint64>(4)))
            return u"the report of Z %1 is not the sum of its receipts"_s.arg(report.key());
    return {};
}

} // namespace TestSupport
