// SPDX-License-Identifier: Apache-2.0

#include "till/ledger.h"

#include "till/ledger_inside.h"

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr int atOnce = 100; // orders in memory, of as many as a ledger holds

bool isClosed(const Attempt &attempt)
{
    return attempt.fate == Fate::Closed;
}

std::optional<qint64> readNumber(const Statement &row)
{
    return row.value(0).toLongLong();
}

/** The mask of a statement that asks for states. */
int maskOf(const QList<State> &states)
{
    return std::accumulate(states.begin(), states.end(), 0,
                           [](int mask, State state) { return mask | 1 << int(state); });
}

auto inOrder(const VelnoReceiptRef &reference)
{
    return std::pair(int(reference.first), int(reference.second));
}

/** The order on record with what save() writes of another one. */
Order changed(const Order &before, const Order &order)
{
    Order after = order;
    after.key = before.key;
    after.kind = before.kind;
    after.content = before.content;
    after.acceptedAt = before.acceptedAt;
    return after;
}

const VelnoReceiptRef &higher(const VelnoReceiptRef &one, const VelnoReceiptRef &other)
{
    return inOrder(one) < inOrder(other) ? other : one;
}

} // namespace

Ledger::Ledger()
    : m_broken(u"it is not open"_s)
{
}

Ledger::~Ledger() = default;

QString Ledger::problem() const
{
    const QMutexLocker lock(&m_mutex);
    return m_problem;
}

// Reading -----------------------------------------------------------------------------------------------

bool Ledger::isUsable() const
{
    m_problem = m_broken.isEmpty() ? QString() : u"the ledger cannot be read: %1"_s.arg(m_broken);
    return m_broken.isEmpty();
}

void Ledger::giveUp(const QString &why) const
{
    m_broken = why;
    isUsable();
}

/** All of them, or those up to the last that is wanted; none when it fails. */
template <typename Row>
QList<Row> Ledger::rows(Statement Inside::*which, const QVariantList &values,
                        std::optional<Row> (*read)(const Statement &), bool (*isLast)(const Row &)) const
{
    if (!isUsable())
        return {};
    QList<Row> list;
    Statement &statement = (*m_inside).*which;
    if (!statement.run(values)) {
        giveUp(m_inside->database.problem());
        return {};
    }
    bool goesOn = true;
    while (goesOn && statement.next()) {
        const auto row = read(statement);
        if (row)
            list << *row;
        else
            giveUp(u"it is damaged"_s);
        goesOn = row && !(isLast && isLast(*row));
    }
    if (statement.isBroken())
        giveUp(m_inside->database.problem());
    statement.finish();
    return m_broken.isEmpty() ? list : QList<Row>();
}

std::optional<Order> Ledger::find(const QString &key) const
{
    const QMutexLocker lock(&m_mutex);
    if (m_atHand && m_atHand->key == key && isUsable())
        return m_atHand;
    return keptAtHand(rows<Order>(&Inside::orderOfKey, {key}, readOrder));
}

std::optional<Order> Ledger::at(qint64 number) const
{
    const QMutexLocker lock(&m_mutex);
    if (m_atHand && m_atHand->number == number && isUsable())
        return m_atHand;
    return keptAtHand(rows<Order>(&Inside::orderOfNumber, {number}, readOrder));
}

/** The one that was found, if there was one. */
std::optional<Order> Ledger::keptAtHand(const QList<Order> &found) const
{
    if (found.isEmpty())
        return std::nullopt;
    m_atHand = found.first();
    return m_atHand;
}

std::optional<Order> Ledger::next() const
{
    QMutexLocker lock(&m_mutex);
    const qint64 number = firstOf({State::Accepted, State::Open, State::Waiting});
    lock.unlock();
    return number == 0 ? std::nullopt : at(number);
}

QList<Order> Ledger::list(const QList<State> &states, int most, qint64 behind) const
{
    const QMutexLocker lock(&m_mutex);
    const bool unsettled = std::none_of(states.begin(), states.end(), isSettled);
    return rows<Order>(unsettled ? &Inside::unsettledOfStates : &Inside::ordersOfStates,
                       {maskOf(states), behind, most}, readOrder);
}

bool Ledger::hasUnsettled() const
{
    const QMutexLocker lock(&m_mutex);
    return firstOf({State::Accepted, State::Open, State::Waiting, State::NeedsPerson}) != 0;
}

/** Of these states, none of which is settled: one with a reference, or the first. @return its number; 0: none
 */
qint64 Ledger::firstOf(const QList<State> &states) const
{
    return rows<qint64>(&Inside::firstUnsettled, {maskOf(states)}, readNumber).value(0);
}

bool Ledger::forEach(const QList<State> &states, const std::function<void(const Order &)> &visit) const
{
    qint64 last = 0;
    for (;;) {
        const QList<Order> some = list(states, atOnce, last);
        if (some.isEmpty())
            break;
        std::for_each(some.begin(), some.end(), visit);
        last = some.constLast().number;
    }
    const QMutexLocker lock(&m_mutex);
    return m_broken.isEmpty();
}

QList<Event> Ledger::history(qint64 order) const
{
    const QMutexLocker lock(&m_mutex);
    return rows<Event>(&Inside::historyOfOrder, {order}, readEvent);
}

QList<Attempt> Ledger::attempts(qint64 order) const
{
    const QMutexLocker lock(&m_mutex);
    return rows<Attempt>(&Inside::attemptsOfOrder, {order}, readAttempt);
}

QList<Attempt> Ledger::doubts() const
{
    const QMutexLocker lock(&m_mutex);
    return m_standing.doubts;
}

VelnoReceiptRef Ledger::lastClosed() const
{
    const QMutexLocker lock(&m_mutex);
    return m_standing.lastClosed;
}

VelnoReceiptRef Ledger::highest() const
{
    const QMutexLocker lock(&m_mutex);
    return m_standing.highest;
}

int Ledger::era() const
{
    const QMutexLocker lock(&m_mutex);
    return m_era;
}

/** @return false: it cannot be read */
bool Ledger::readStanding(Standing *standing) const
{
    const QVariantList era{m_era};
    Standing found;
    const auto doubts = rows<Attempt>(&Inside::doubts, era, readAttempt);
    const auto latest = rows<Attempt>(&Inside::fromTheHighest, era, readAttempt, isClosed);
    for (const Attempt &attempt : latest + doubts) // these in the order of their references
        found.take(attempt);
    const auto report = rows<qint64>(&Inside::highestZ, era, readNumber);
    found.highest = higher(found.highest, {int(report.value(0)), 0});
    if (m_broken.isEmpty())
        *standing = found;
    return m_broken.isEmpty();
}

void Ledger::Standing::take(const Attempt &attempt)
{
    const auto isSame = [&](const Attempt &doubt) {
        return inOrder(doubt.reference) == inOrder(attempt.reference);
    };
    doubts.removeIf(isSame);
    if (attempt.fate == Fate::ProbablyCancelled)
        doubts << attempt;
    if (attempt.fate == Fate::Closed)
        lastClosed = higher(lastClosed, attempt.reference);
    highest = higher(highest, attempt.reference);
}

// Changes -----------------------------------------------------------------------------------------------

/** All that `write` writes, or nothing of it. */
bool Ledger::change(Durability durability, const std::function<bool()> &write)
{
    if (!isUsable() || !begin(durability))
        return false;
    if (write() && commit())
        return true;
    m_atHand.reset(); // only where the disk has failed may it be otherwise
    if (m_problem.isEmpty())
        m_problem = u"the ledger cannot be written: %1"_s.arg(m_inside->database.problem());
    m_inside->rollBack.run(); // SQLite may have done so by itself
    return false;
}

bool Ledger::begin(Durability durability)
{
    Database &database = m_inside->database;
    bool good = true;
    if (m_durability != durability) {
        // What SQLite has been told last counts; it takes it between two transactions alone.
        good = database.run(durability == Durability::Flushed ? u"PRAGMA synchronous = FULL"_s
                                                              : u"PRAGMA synchronous = NORMAL"_s);
        m_durability = good ? std::optional(durability) : std::nullopt;
    }
    if (good && m_isLogSuspect) {
        // After a flush that failed the system may hold for written what is not on the disk, and what follows
        // in the log would be lost with it. So all that counts goes to the database itself, and the log
        // begins anew, without the transaction that failed.
        good = foldLog();
        m_isLogSuspect = !good;
    }
    good = good && m_inside->begin.run();
    if (!good)
        m_problem = u"the ledger cannot be written: %1"_s.arg(database.problem());
    return good;
}

bool Ledger::commit()
{
    if (m_inside->commit.run())
        return true;
    m_isLogSuspect = m_inside->database.isDiskError();
    return false;
}

bool Ledger::accept(Order *order, const Event &event, Durability durability)
{
    const QMutexLocker lock(&m_mutex);
    qint64 number = 0;
    order->era = m_era;
    const bool done = change(durability, [&] {
        if (!m_inside->insertOrder.run(wholeOrder(*order)))
            return false;
        number = m_inside->insertOrder.insertedRow();
        return writeEvent(number, event);
    });
    if (done) {
        order->number = number;
        m_atHand = *order;
    }
    return done;
}

bool Ledger::save(const Order &order, const Event &event, Durability durability)
{
    const QMutexLocker lock(&m_mutex);
    const QList<Attempt> notes = std::exchange(m_notes, {});
    Standing standing = m_standing;
    const bool done = change(durability, [&] {
        Statement &update = m_inside->updateOrder;
        if (!update.run(changingOrder(order) << order.number))
            return false;
        if (update.rowsChanged() != 1) {
            m_problem = u"order %1 is not on record"_s.arg(order.number);
            return false;
        }
        return writeEvent(order.number, event) && writeAttempts(notes, &standing) &&
               (order.z == 0 || readStanding(&standing));
    });
    if (!done)
        return false;
    m_standing = standing;
    if (m_atHand && m_atHand->number == order.number)
        m_atHand = changed(*m_atHand, order);
    return true;
}

bool Ledger::writeEvent(qint64 order, const Event &event)
{
    return m_inside->insertEvent.run(QVariantList{order, order} + wholeEvent(event));
}

bool Ledger::writeAttempts(const QList<Attempt> &attempts, Standing *standing)
{
    for (const Attempt &attempt : attempts) {
        Statement &insert = m_inside->insertAttempt;
        if (!insert.run(wholeAttempt(attempt)))
            return false;
        if (insert.rowsChanged() != 1) {
            m_problem = u"receipt %1 of Z %2 is another order's"_s.arg(attempt.reference.second)
                            .arg(attempt.reference.first);
            return false;
        }
        if (attempt.era == m_era)
            standing->take(attempt);
    }
    return true;
}

void Ledger::note(const Attempt &attempt)
{
    const QMutexLocker lock(&m_mutex);
    if (inOrder(attempt.reference) != inOrder({0, 0}))
        m_notes << attempt;
}

bool Ledger::beginEra()
{
    const QMutexLocker lock(&m_mutex);
    if (!change(Durability::Flushed,
                [this] { return m_inside->database.run(u"UPDATE register SET era = era + 1"_s); }))
        return false;
    ++m_era;
    m_standing = {};
    return true;
}

int Ledger::prune(const QDateTime &unchangedSince)
{
    const QMutexLocker lock(&m_mutex);
    int count = 0;
    m_atHand.reset(); // it may be among them
    const bool done = change(Durability::Flushed, [&] { return forget(unchangedSince, &count); });
    return done ? count : -1;
}

/** What doubts(), lastClosed() and highest() answer stays. Doubts have their order with them: a person may
 * have to be asked about it. */
bool Ledger::forget(const QDateTime &unchangedSince, int *count)
{
    Database &database = m_inside->database;
    Statement orders(database, u"DELETE FROM orders WHERE NOT (%1) AND changed_at < ?"
                               " AND NOT (z_era = ? AND z > 0 AND z = ?) AND number NOT IN"
                               " (SELECT order_number FROM attempts WHERE era = ? AND fate = 3)"_s.arg(
                                   unsettledCondition()));
    Statement attempts(database, u"DELETE FROM attempts WHERE order_number NOT IN (SELECT number FROM orders)"
                                 " AND NOT (era = ? AND (first, second) IN (VALUES (?, ?), (?, ?)))"_s);
    const VelnoReceiptRef closed = m_standing.lastClosed;
    const VelnoReceiptRef highest = m_standing.highest;
    if (!orders.run({unchangedSince.toMSecsSinceEpoch(), m_era, int(highest.first), m_era}))
        return false;
    *count = orders.rowsChanged();
    return attempts.run(
               {m_era, int(closed.first), int(closed.second), int(highest.first), int(highest.second)}) &&
           database.run(u"DELETE FROM history WHERE order_number NOT IN (SELECT number FROM orders)"_s);
}

} // namespace Velno::Receipts
