#pragma once

#include "till/clock.h"
#include "till/ledger.h"
#include "till/progress.h"
#include "till/rules.h"

#include <QMutex>

#include <atomic>

namespace Velno::Receipts {

/** Where the register is met, as for velnoext_initialize(), and how long it is waited for. */
struct Meeting
{
    unsigned appNo = 0;
    QByteArray serial; ///< 12 characters
    QByteArray address;
    quint16 port = 0;
    unsigned connectTimeout = 10'000; ///< ms for it to connect
    unsigned answerLimit = 120'000;   ///< ms for an answer, in which a cashier or a customer may have to act
    unsigned patience = 30'000;       ///< ms for a register that is busy, before the order waits
};

/** What handing something over came to. The numbers are those of velnotill.h. */
enum class Result {
    Done = 0,         ///< the order is there; its state says what has become of it
    BadContent = 1,   ///< faults in words
    Conflict = 2,     ///< the key is known, with another content
    LedgerFailed = 3, ///< it cannot be read or written; nothing more was done
    Unknown = 4,      ///< no order has this key
    NotAsked = 5,     ///< the order does not wait for this answer
    Interrupted = 6,  ///< the order stays as it is and goes on when it is asked for again
    NoSuchAnswer = 7,
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
 * that want their outcome.
 */
class Till
{
public:
    /** @param clock  must outlive the till, like the rules */
    Till(const Meeting &meeting, Clock &clock, const Rules &rules = {});
    ~Till();
    Q_DISABLE_COPY_MOVE(Till)

    /** To be called first. @return empty, or in words why the ledger cannot be used */
    QString open(const LedgerPlace &place);

    void setListener(Listener listener);

    /** Puts an order on record and does nothing more about it. @param json  UTF-8; of reports empty */
    Outcome accept(const QString &key, Kind kind, const QByteArray &json);

    /** accept(), then works off what was accepted until this order is settled, waits or needs a person. */
    Outcome perform(const QString &key, Kind kind, const QByteArray &json);

    /** Works off everything that can go on. Done: nothing can now; Interrupted, LedgerFailed. */
    Result workOff();

    Outcome find(const QString &key);
    QList<Order> list(const QList<State> &states);
    QList<Event> history(const Order &order);

    /**
     * A person's answer: to the question of an order that needs one, or Drop to one that is not settled. It
     * is on record with the name and the time when this returns; perform() or workOff() act upon it.
     */
    Outcome answer(const QString &key, Answer answer, const QString &person);

    /** Forgets settled orders that have not changed since. @return how many; -1: the ledger failed */
    int prune(const QDateTime &unchangedSince);

    /** Ends the work under way soon; from any thread, and from a signal handler. A call without work under
     * way is not touched. */
    void interrupt() noexcept;

private:
    Meeting m_meeting;
    Clock &m_clock;
    Rules m_rules;
};

} // namespace Velno::Receipts
