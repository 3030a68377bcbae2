// SPDX-License-Identifier: Apache-2.0

#include "till/till.h"

#include "till/receipt_json.h"
#include "till/receipt_work.h"
#include "till/report_work.h"

#include <QMutex>
#include <QScopeGuard>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype longestKey = 200;    // bytes
constexpr qsizetype longestPerson = 100; // bytes
constexpr int slice = 10;                // ms

/** A clock whose pauses end soon when somebody wants the work to stop. */
class StoppableClock final : public Clock
{
public:
    StoppableClock(Clock &clock, const std::atomic<bool> &isStopping)
        : m_clock(clock)
        , m_isStopping(isStopping)
    {
    }

    QDateTime now() override { return m_clock.now(); }

    bool pause(int milliseconds) override
    {
        for (int left = milliseconds; left > 0 && !m_isStopping; left -= slice)
            if (!m_clock.pause(std::min(left, slice)))
                return false;
        return !m_isStopping;
    }

private:
    Clock &m_clock;
    const std::atomic<bool> &m_isStopping;
};

/** What is wrong with a name of at most so many bytes; empty when nothing is. */
QString faultOfName(const QString &what, const QString &text, qsizetype longest)
{
    const bool isPrintable = std::none_of(text.cbegin(), text.cend(),
                                          [](QChar c) { return c.category() == QChar::Other_Control; });
    const qsizetype size = text.toUtf8().size();
    if (size >= 1 && size <= longest && isPrintable)
        return {};
    return u"%1: %2; accepted: 1 to %3 bytes of UTF-8 without control characters"_s.arg(
        what, isPrintable ? u"%1 bytes"_s.arg(size) : u"control characters"_s, QString::number(longest));
}

/** The receipt that was accepted last, which mostly is the one that is worked on next. For any thread. */
class LastReceipt
{
public:
    void keep(const QByteArray &content, const Receipt &receipt)
    {
        const QMutexLocker lock(&m_mutex);
        m_content = content;
        m_receipt = receipt;
    }

    Receipt of(const QByteArray &content) const
    {
        const QMutexLocker lock(&m_mutex);
        return content == m_content ? m_receipt : readReceipt(content).value;
    }

private:
    mutable QMutex m_mutex;
    QByteArray m_content;
    Receipt m_receipt;
};

/** In the one way in which it is kept. */
template <typename Value>
Judged<QByteArray> rewritten(const Judged<Value> &judged)
{
    return {judged.faults.isEmpty() ? toJson(judged.value) : QByteArray(), judged.faults};
}

Judged<QByteArray> readContent(Kind kind, const QByteArray &json, LastReceipt *last)
{
    if (kind == Kind::Receipt) {
        const Judged<Receipt> receipt = readReceipt(json);
        const Judged<QByteArray> content = rewritten(receipt);
        if (content.faults.isEmpty())
            last->keep(content.value, receipt.value);
        return content;
    }
    if (kind == Kind::Slip)
        return rewritten(readSlip(json));
    return {Order().content, json.isEmpty() ? QStringList() : QStringList{u"a report has no content"_s}};
}

QString nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Receipt:
        return u"receipt"_s;
    case Kind::ZReport:
        return u"Z report"_s;
    case Kind::XReport:
        return u"X report"_s;
    case Kind::Slip:
        return u"slip"_s;
    }
    return {};
}

QString differenceOf(const Order &order, Kind kind, const QByteArray &content)
{
    if (order.kind != kind)
        return u"kind: %1, before %2"_s.arg(nameOf(kind), nameOf(order.kind));
    return firstDifference(content, order.content);
}

} // namespace

struct Till::Inside
{
    Inside(const Meeting &where, Clock &time, const Rules &inForce)
        : meeting(where)
        , rules(inForce)
        , clock(time, isStopping)
    {
    }

    Outcome failed() { return {Result::LedgerFailed, {}, {ledger.problem()}}; }
    void tell(const Order &order, Stage stage) const;
    std::unique_ptr<OrderWork> workFor(Order &order);
    WorkEnd workOn(Order &order);
    Result work(qint64 wanted);

    const Meeting meeting;
    const Rules rules;
    std::atomic<bool> isWorking = false;
    std::atomic<bool> isStopping = false;
    StoppableClock clock;
    Ledger ledger;
    Listener listener;
    Workplace place{meeting,
                    rules,
                    clock,
                    ledger,
                    isStopping,
                    [](Stage) {},
                    [this](const Order &order) { tell(order, Stage::Settled); }};
    RegisterAccess reg{place};
    LastReceipt lastReceipt;
    QMutex accepting;
    QMutex working;
    bool mayHaveStarted = false; ///< a sale may be open whose reference is not on record
};

Till::Till(const Meeting &meeting, Clock &clock, const Rules &rules)
    : m(std::make_unique<Inside>(meeting, clock, rules))
{
}

Till::~Till()
{
    if (velnoext_set_active_device(m->meeting.serial.constData()) == 0)
        velnoext_close();
}

QString Till::open(const LedgerPlace &place)
{
    const QString problem = m->ledger.open(place);
    if (!problem.isEmpty())
        return problem;
    // Also with a reference on record: that it was cancelled, and another sale started, was perhaps not
    // flushed.
    m->mayHaveStarted = m->ledger.hasUnsettled();
    return m->ledger.problem();
}

void Till::setListener(Listener listener)
{
    const QMutexLocker lock(&m->working);
    m->listener = std::move(listener);
}

Outcome Till::accept(const QString &key, Kind kind, const QByteArray &json)
{
    if (const QString fault = faultOfName(u"key"_s, key, longestKey); !fault.isEmpty())
        return {Result::BadContent, {}, {fault}};
    const QMutexLocker lock(&m->accepting);
    const std::optional<Order> known = m->ledger.find(key);
    if (known && known->kind == kind && known->content == json) // judged when it was accepted
        return {Result::Done, *known, {}};
    const Judged<QByteArray> content = readContent(kind, json, &m->lastReceipt);
    if (!content.faults.isEmpty())
        return {Result::BadContent, {}, content.faults};
    if (known) {
        const QString difference = differenceOf(*known, kind, content.value);
        return difference.isEmpty() ? Outcome{Result::Done, *known, {}}
                                    : Outcome{Result::Conflict, {}, {difference}};
    }
    if (!m->ledger.problem().isEmpty())
        return m->failed();
    Order order;
    order.key = key;
    order.kind = kind;
    order.content = content.value;
    order.acceptedAt = order.changedAt = m->clock.now();
    const bool isFlushed = m->rules.hold(Rule::AcceptIsFlushed);
    if (!m->ledger.accept(&order, {order.acceptedAt, State::Accepted, 0, 0, u"accepted"_s, {}},
                          isFlushed ? Durability::Flushed : Durability::Written))
        return m->failed();
    return {Result::Done, order, {}};
}

Outcome Till::perform(const QString &key, Kind kind, const QByteArray &json)
{
    Outcome outcome = accept(key, kind, json);
    const bool isKnown = isSettled(outcome.order.state) && m->rules.hold(Rule::SameKeySameOutcome);
    if (outcome.result != Result::Done || isKnown || outcome.order.state == State::NeedsPerson)
        return outcome;
    if (isSettled(outcome.order.state)) {
        outcome.order.state = State::Accepted;
        outcome.order.reference = {0, 0};
        m->ledger.save(outcome.order, {}, Durability::Flushed);
    }
    const Result result = m->work(outcome.order.number);
    if (result == Result::LedgerFailed)
        return m->failed();
    outcome = find(key);
    if (outcome.result == Result::Done && result != Result::Done)
        outcome.result = result;
    return outcome;
}

Result Till::workOff()
{
    return m->work(0);
}

void Till::Inside::tell(const Order &order, Stage stage) const
{
    if (listener)
        listener(order, stage);
}

std::unique_ptr<OrderWork> Till::Inside::workFor(Order &order)
{
    switch (order.kind) {
    case Kind::Receipt:
        return std::make_unique<ReceiptWork>(place, reg, order, lastReceipt.of(order.content),
                                             mayHaveStarted);
    case Kind::ZReport:
        return std::make_unique<ZReportWork>(place, reg, order, mayHaveStarted);
    case Kind::XReport:
        return std::make_unique<XReportWork>(place, reg, order, mayHaveStarted);
    case Kind::Slip:
        break;
    }
    return std::make_unique<SlipWork>(place, reg, order, mayHaveStarted);
}

WorkEnd Till::Inside::workOn(Order &order)
{
    place.tell = [this, &order](Stage stage) { tell(order, stage); };
    const std::unique_ptr<OrderWork> work = workFor(order);
    const WorkEnd end = work->run();
    mayHaveStarted = work->mayHaveStarted();
    place.tell(Stage::Settled);
    place.tell = [](Stage) {};
    return end;
}

/** Works off what was accepted, until the order of this number is done; 0: everything. */
Result Till::Inside::work(qint64 wanted)
{
    const QMutexLocker lock(&working);
    isStopping = false;
    isWorking = true;
    const auto atEnd = qScopeGuard([this] { isWorking = false; });
    for (;;) {
        std::optional<Order> found = ledger.next();
        if (!found)
            return ledger.problem().isEmpty() ? Result::Done : Result::LedgerFailed;
        Order &order = *found;
        const bool isInTheWay = !isNone(order.reference);
        if (wanted != 0 && order.number > wanted && !isInTheWay) // somebody else has done it meanwhile
            return Result::Done;
        switch (workOn(order)) {
        case WorkEnd::Settled:
        case WorkEnd::NeedsPerson:
            break;
        case WorkEnd::Waiting:
            return Result::Done;
        case WorkEnd::Stopped:
            return Result::Interrupted;
        case WorkEnd::LedgerFailed:
            return Result::LedgerFailed;
        }
        if (order.number == wanted)
            return Result::Done;
    }
}

Outcome Till::find(const QString &key)
{
    const std::optional<Order> order = m->ledger.find(key);
    if (order)
        return {Result::Done, *order, {}};
    if (!m->ledger.problem().isEmpty())
        return m->failed();
    return {Result::Unknown, {}, {u"no order has the key \"%1\""_s.arg(key)}};
}

bool Till::forEach(const QList<State> &states, const std::function<void(const Order &)> &visit)
{
    return m->ledger.forEach(states, visit);
}

QList<Event> Till::history(const Order &order)
{
    return m->ledger.history(order.number);
}

Outcome Till::answer(const QString &key, Answer answer, const QString &person)
{
    if (const QString fault = faultOfName(u"person"_s, person, longestPerson); !fault.isEmpty())
        return {Result::BadContent, {}, {fault}};
    const QMutexLocker lock(&m->working);
    Outcome outcome = find(key);
    if (outcome.result != Result::Done)
        return outcome;
    Order &order = outcome.order;
    const bool isDrop = answer == Answer::Drop && !isSettled(order.state);
    if (answer == Answer::None || (order.state != State::NeedsPerson && !isDrop))
        return {Result::NotAsked, order, {u"the order does not wait for this answer"_s}};
    order.answer = answer;
    order.state = State::Waiting;
    order.changedAt = m->clock.now();
    const Event event{order.changedAt, order.state, 0, 0, textOf(answer), person};
    return m->ledger.save(order, event, Durability::Flushed) ? outcome : m->failed();
}

int Till::prune(const QDateTime &unchangedSince)
{
    return m->ledger.prune(unchangedSince);
}

void Till::interrupt() noexcept
{
    if (!m->isWorking)
        return;
    m->isStopping = true;
    velnoext_interrupt();
}

} // namespace Velno::Receipts
