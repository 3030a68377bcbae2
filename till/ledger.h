// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"

#include <QList>
#include <QMutex>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

namespace Velno::Receipts {

class Statement;

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
 * receipts that it was entered on. One process at a time has it open. Every function may be called from any
 * thread; they take turns. Needs a QCoreApplication no more than Qt's SQLite driver does.
 *
 * Each change is one transaction: whole or not there, and true only when it is. After false it is not there;
 * only where the disk has failed in the midst of a flush may the next open() find it, after all.
 *
 * What cannot be read, or holds what was never written, is given as nothing, and from then on no change is
 * taken: what has not been read must not be acted upon as if it were not there.
 */
class Ledger
{
public:
    Ledger();
    ~Ledger();
    Q_DISABLE_COPY_MOVE(Ledger)

    /**
     * Opens the file, or makes it, for its owner alone: one that others may read is taken away from them. A
     * symbolic link is not followed. What is no ledger, of another register or of a later version stays as it
     * is.
     *
     * @return empty, or in words why it cannot be used
     */
    QString open(const LedgerPlace &place);

    /** Why the last of the calls below failed, in words; empty when it did not. */
    QString problem() const;

    std::optional<Order> find(const QString &key) const;
    std::optional<Order> at(qint64 number) const;

    /** Orders of these states, as accepted, of those behind the one of this number. No more than `most`. */
    QList<Order> list(const QList<State> &states, int most = 1000, qint64 behind = 0) const;

    /** Visits the orders of these states, as accepted, without holding anybody up and however many there are.
     *  @return false: the ledger has failed, and some or all were not visited */
    bool forEach(const QList<State> &states, const std::function<void(const Order &)> &visit) const;

    bool hasUnsettled() const; ///< whether something is to be done about an order, or a person is asked

    /** The order to be worked on next, if there is one: the first of those that are accepted, open or
     * waiting. One with a reference goes before those without: its sale may be open, and no other can begin.
     */
    std::optional<Order> next() const;

    /** Puts a new order on record and gives it its number and this era. @return false: it is not there */
    bool accept(Order *order, const Event &event, Durability durability = Durability::Flushed);

    /** Writes what has become of an order, one line of its history, and every attempt noted since the last
     * save(). Key, kind, content and when it was accepted stay as they are. */
    bool save(const Order &order, const Event &event, Durability durability);

    QList<Event> history(qint64 order) const;

    /** Notes a receipt that an order is entered on, or what became of it. Part of the next save(), of
     * whichever order; forgotten when that fails; 0, 0 is none. A receipt is one order's for ever: save()
     * refuses to give it to another. */
    void note(const Attempt &attempt);
    QList<Attempt> attempts(qint64 order) const;
    QList<Attempt> doubts() const; ///< those probably cancelled, of this era

    /** The receipt that was closed last on this era's register; 0, 0: none. */
    VelnoReceiptRef lastClosed() const;
    /** The highest reference of this era, and no lower Z number than a Z report's; 0, 0: none. */
    VelnoReceiptRef highest() const;

    int era() const;
    bool beginEra(); ///< a person has said that another register has taken the place, flushed

    /** Forgets settled orders that have not changed since, flushed; not those with doubts, nor the last Z
     * report of this era. @return how many; -1 on failure */
    int prune(const QDateTime &unchangedSince);

private:
    struct Inside;

    /** What is asked for each receipt, of this era, as it is on record. */
    struct Standing
    {
        void take(const Attempt &attempt);

        QList<Attempt> doubts;
        VelnoReceiptRef lastClosed = {0, 0};
        VelnoReceiptRef highest = {0, 0};
    };

    QString connect(const LedgerPlace &place);
    QString takeOver(const LedgerPlace &place);
    bool keepLog();
    bool foldLog();
    QString readRegister(const QByteArray &serial);
    bool create(const QByteArray &serial, qint64 version);

    qint64 firstOf(const QList<State> &states) const;
    std::optional<Order> keptAtHand(const QList<Order> &found) const;

    bool isUsable() const;
    void giveUp(const QString &why) const;
    template <typename Row>
    QList<Row> rows(Statement Inside::*which, const QVariantList &values,
                    std::optional<Row> (*read)(const Statement &),
                    bool (*isLast)(const Row &) = nullptr) const;
    bool readStanding(Standing *standing) const;

    bool change(Durability durability, const std::function<bool()> &write);
    bool begin(Durability durability);
    bool commit();
    bool forget(const QDateTime &unchangedSince, int *count);
    bool writeEvent(qint64 order, const Event &event);
    bool writeAttempts(const QList<Attempt> &attempts, Standing *standing);

    mutable QMutex m_mutex;           ///< of all that follows
    std::unique_ptr<Inside> m_inside; ///< nothing: it is not open
    mutable QString m_problem;
    mutable QString m_broken;              ///< why nothing is read and taken; empty: it is
    mutable std::optional<Order> m_atHand; ///< the order that was read or written last, as it is on record
    QList<Attempt> m_notes;
    Standing m_standing;
    std::optional<Durability> m_durability; ///< of the transaction before
    bool m_isLogSuspect = false; ///< a flush has failed: nobody knows what of the log is on the disk
    int m_era = 1;
};

} // namespace Velno::Receipts
