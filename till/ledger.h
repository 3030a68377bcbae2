#pragma once

#include "till/order.h"

#include <QList>
#include <QSqlDatabase>

#include <memory>
#include <optional>

namespace Velno::Receipts {

/** Where a ledger is. */
struct LedgerPlace
{
    QString file;
    QByteArray serial; ///< of the register that it belongs to, 12 characters
    QString vfs;       ///< name of an SQLite file system; empty: the computer's
};

/** What must be on the disk when a call returns. */
enum class Durability {
    Flushed, ///< this, and all before it, survives a cut of this computer's power
    Written, ///< it survives the end of this process; the next flush takes it along
};

/**
 * What must not be forgotten, in an SQLite database: every order with its state, its history and the fiscal
 * receipts that it was entered on. One process at a time has it open. Each change is one transaction: whole
 * or not there, and true only when it is. Every function may be called from any thread; they take turns.
 */
class Ledger
{
public:
    Ledger();
    ~Ledger();
    Q_DISABLE_COPY_MOVE(Ledger)

    /** Opens the file, or makes it for its owner alone. @return empty, or in words why it cannot be used */
    QString open(const LedgerPlace &place);

    /** Why the last call failed, in words; empty when it did not. */
    QString problem() const;

    std::optional<Order> find(const QString &key) const;
    std::optional<Order> at(qint64 number) const;

    /** Orders of these states, as accepted. No more than `most`. */
    QList<Order> list(const QList<State> &states, int most = 1000) const;

    /** Puts a new order on record and gives it its number. @return false: it is not there */
    bool accept(Order *order, const Event &event, Durability durability = Durability::Flushed);

    /** Writes what has become of an order, with the attempt on its reference when it has one. */
    bool save(const Order &order, const Event &event, Durability durability);

    QList<Event> history(qint64 order) const;

    /** Notes a receipt that an order is entered on, or what became of it. Part of the next save() of that
     * order. */
    void note(const Attempt &attempt);
    QList<Attempt> attempts(qint64 order) const;
    QList<Attempt> doubts() const; ///< those probably cancelled, of this era

    /** The receipt that was closed last on this era's register; 0, 0: none. */
    VelnoReceiptRef lastClosed() const;
    /** The highest reference of this era, and no lower Z number than a Z report's; 0, 0: none. */
    VelnoReceiptRef highest() const;

    int era() const { return m_era; }
    bool beginEra(); ///< a person has said that another register has taken the place, flushed

    /** Forgets settled orders that have not changed since. @return how many; -1 on failure */
    int prune(const QDateTime &unchangedSince);

private:
    struct Statements;

    QSqlDatabase m_database;
    std::unique_ptr<Statements> m_statements;
    QString m_problem;
    int m_era = 1;
};

} // namespace Velno::Receipts
