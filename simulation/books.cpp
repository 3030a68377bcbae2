// SPDX-License-Identifier: Apache-2.0

#include "simulation/books.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;
using namespace Simulator;

namespace Simulation {

namespace {

/** Calls `take` for each row. */
template <typename Take>
void read(const QString &question, Books *books, const QSqlDatabase &database, Take take)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!query.exec(question))
        books->problem = query.lastError().text();
    while (query.next())
        take(query);
}

BookedReceipt readReceipt(const QSqlQuery &row)
{
    BookedReceipt receipt;
    receipt.ref = {row.value(0).toInt(), row.value(1).toInt()};
    receipt.totals = {row.value(2).toLongLong(), row.value(3).toLongLong(), row.value(4).toLongLong(),
                      row.value(5).toLongLong(), row.value(6).toLongLong(), row.value(7).toInt()};
    receipt.contribution = row.value(8).toLongLong();
    receipt.invoiceType = row.value(9).isNull() ? -1 : row.value(9).toInt();
    receipt.customer = row.value(10).toString();
    return receipt;
}

SaleLine readLine(const QSqlQuery &row)
{
    SaleLine line;
    line.name = row.value(2).toString();
    line.price = row.value(3).toLongLong();
    line.quantity = row.value(4).toInt();
    line.type = row.value(5).toInt();
    line.section = row.value(6).toInt();
    line.gross = row.value(7).toLongLong();
    line.adjustment = row.value(8).toLongLong();
    return line;
}

/** Rows of receipts come in the order of the receipts. */
class Finder
{
public:
    explicit Finder(QList<BookedReceipt> &receipts)
        : m_receipts(receipts)
    {
    }

    BookedReceipt *of(const QSqlQuery &row)
    {
        const ReceiptRef ref{row.value(0).toInt(), row.value(1).toInt()};
        while (m_at < m_receipts.size() && m_receipts.at(m_at).ref != ref)
            ++m_at;
        return m_at < m_receipts.size() ? &m_receipts[m_at] : nullptr;
    }

private:
    QList<BookedReceipt> &m_receipts;
    qsizetype m_at = 0;
};

} // namespace

Books booksOf(const FiscalModel &model)
{
    const QSqlDatabase database = QSqlDatabase::database(model.journalConnection());
    Books books;
    read(u"SELECT z, number, total, tax, cash, card, change, items, contribution, invoice_type, customer"
         " FROM receipts WHERE status = 1 ORDER BY z, number"_s,
         &books, database, [&](const QSqlQuery &row) { books.receipts << readReceipt(row); });
    Finder lines(books.receipts);
    read(u"SELECT z, number, name, price, quantity, type, section, gross, adjustment FROM lines"
         " WHERE NOT deleted ORDER BY z, number, line"_s,
         &books, database, [&](const QSqlQuery &row) {
             if (BookedReceipt *const receipt = lines.of(row))
                 receipt->lines << readLine(row);
         });
    Finder payments(books.receipts);
    read(u"SELECT z, number, card, amount FROM payments ORDER BY z, number, payment"_s, &books, database,
         [&](const QSqlQuery &row) {
             if (BookedReceipt *const receipt = payments.of(row))
                 receipt->payments << Payment{row.value(2).toBool() ? PaymentKind::Card : PaymentKind::Cash,
                                              row.value(3).toLongLong(), 0};
         });
    read(u"SELECT z, receipts, total, cash, card FROM z_reports ORDER BY z"_s, &books, database,
         [&](const QSqlQuery &row) {
             books.reports << BookedReport{row.value(0).toInt(), row.value(1).toLongLong(),
                                           row.value(2).toLongLong(), row.value(3).toLongLong(),
                                           row.value(4).toLongLong()};
         });
    return books;
}

BookedReport sumOf(const Books &books, qint32 z)
{
    BookedReport sum{z, 0, 0, 0, 0};
    for (const BookedReceipt &receipt : books.receipts) {
        if (receipt.ref.z != z)
            continue;
        ++sum.receipts;
        sum.total += receipt.totals.total;
        sum.cash += receipt.totals.cash - receipt.totals.change;
        sum.card += receipt.totals.card;
    }
    return sum;
}

} // namespace Simulation
