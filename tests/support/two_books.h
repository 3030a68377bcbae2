// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QStringList>

/** What the register's journal and the till's ledger say of the same sales; both programs have to be away. */
namespace TestSupport {

/** A receipt as it is wanted, and as it stands in the journal. */
struct Sold
{
    qint64 total = 0;
    qint64 cash = 0;
    qint64 card = 0;
    qint64 change = 0;
    QStringList lines; ///< name, price, quantity, section

    bool operator==(const Sold &) const = default;
};

using Reference = std::pair<int, int>; ///< Z and number

/** An order as it is handed over. */
struct Wanted
{
    QString key;
    QByteArray json; ///< empty: a Z report
    Sold sold;
    bool isRefused = false;
    bool isByWord = false; ///< a person has said that it was sold: the till was told no totals
};

struct JournalBook
{
    QMap<Reference, Sold> closed;
    QMap<int, QList<qint64>> reports; ///< of a Z: receipts, total, cash, card
    QString problem;                  ///< it cannot be read
};

JournalBook readJournal(const QString &file);

struct LedgerBook
{
    QMap<QString, Velno::Receipts::Order> orders; ///< by their keys
    QString problem;
};

LedgerBook readLedger(const QString &file, const QByteArray &serial);

/** Whether each order was done once, both books say so, and the register's reports add up. @return empty, or
 * in words what is wrong */
QString disagreement(const QList<Wanted> &wanted, const JournalBook &journal, const LedgerBook &ledger);

} // namespace TestSupport
