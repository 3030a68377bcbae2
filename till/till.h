// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/clock.h"
#include "till/ledger.h"
#include "till/meeting.h"
#include "till/progress.h"
#include "till/rules.h"

#include <QByteArray>
#include <QStringList>

#include <memory>

namespace Velno::Receipts {

/** What handing something over came to. The numbers are those of velnotill.h. */
enum class Result {
    Done = 0,         ///< the order is there; its state says what has become of it
    BadContent = 1,   ///< faults in words
    Conflict = 2,     ///< the key is known, with another content
    LedgerFailed = 3, ///< it cannot be read or written; nothing more was done
    Unknown = 4,      ///< no order has this key
    NotAsked = 5,     ///< the order does not wait for this answer
    Interrupted = 6,  ///< the order stays as it is and goes on when it is asked for again
};

struct Outcome
{
    Result result = Result::Done;
    Order order;       ///< as it is on record, with Done and Interrupted
    QStringList words; ///< faults, the difference, or what is wrong with the ledger
};

/**
 * A till: one register, one ledger, one receipt under one key. Every function may be called from any thread.
 * Orders are worked off one at a time, in the order in which they were accepted, on the threads of the calls
 * that want their outcome; one that needs a person lets others pass. One till in a process.
 */
class Till
{
public:
    /** @param clock  must outlive the till */
    Till(const Meeting &meeting, Clock &clock, const Rules &rules = {});
    ~Till();
    Q_DISABLE_COPY_MOVE(Till)

    /** To be called first. @return empty, or in words why the ledger cannot be used */
    QString open(const LedgerPlace &place);

    /** Who hears what goes on, on the thread that works; must not call the till but to interrupt it. */
    void setListener(Listener listener);

    /** Puts an order on record and does nothing more about it. @param json  UTF-8; of reports empty */
    Outcome accept(const QString &key, Kind kind, const QByteArray &json);

    /** accept(), then works off what was accepted until this order is settled, waits or needs a person. */
    Outcome perform(const QString &key, Kind kind, const QByteArray &json);

    /** Works off everything that can go on. Done: nothing can now; otherwise Interrupted or LedgerFailed. */
    Result workOff();

    Outcome find(const QString &key);
    /** As Ledger::forEach(). */
    bool forEach(const QList<State> &states, const std::function<void(const Order &)> &visit);
    /** From the first on; none: the ledger failed. */
    QList<Event> history(const Order &order);

    /**
     * A person's answer: to the question of an order that needs one, or Drop to one that is not settled. It
     * is on record with the name and the time when this returns; perform() or workOff() act upon it.
     */
    Outcome answer(const QString &key, Answer answer, const QString &person);

    /** Forgets settled orders that have not changed since. @return how many; -1: the ledger failed */
    int prune(const QDateTime &unchangedSince);

    /** Ends the work under way soon; from any thread, and from a signal handler. Without work it does
     * nothing. */
    void interrupt() noexcept;

private:
    struct Inside;
    std::unique_ptr<Inside> m;
};

} // namespace Velno::Receipts
