// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_rows.h"

#include <array>
#include <charconv>
#include <limits>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

using Int = std::numeric_limits<int>;
using Long = std::numeric_limits<qint64>;

/** A column of whole numbers, and what may stand in it. */
template <typename Row>
struct Column
{
    const char *name;
    qint64 least;
    qint64 most;
    qint64 (*of)(const Row &);
    void (*take)(Row &, qint64);
};

qint64 milliseconds(const QDateTime &time)
{
    return time.toMSecsSinceEpoch();
}

QDateTime time(qint64 milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

/** Numbers of an order that stay as it was accepted. */
constexpr std::array<Column<Order>, 3> fixedNumbers{{
    {"number", 1, Long::max(), [](const Order &o) { return o.number; },
     [](Order &o, qint64 v) { o.number = v; }},
    {"kind", 0, int(Kind::Slip), [](const Order &o) { return qint64(o.kind); },
     [](Order &o, qint64 v) { o.kind = Kind(v); }},
    {"accepted_at", Long::min(), Long::max(), [](const Order &o) { return milliseconds(o.acceptedAt); },
     [](Order &o, qint64 v) { o.acceptedAt = time(v); }},
}};

/** What of an order changes while it is worked off. The register's own numbers may be any. */
constexpr std::array<Column<Order>, 21> changing{{
    {"state", 0, int(State::NeedsPerson), [](const Order &o) { return qint64(o.state); },
     [](Order &o, qint64 v) { o.state = State(v); }},
    {"question", 0, int(Question::SlipPrinted), [](const Order &o) { return qint64(o.question); },
     [](Order &o, qint64 v) { o.question = Question(v); }},
    {"answer", 0, int(Answer::Drop), [](const Order &o) { return qint64(o.answer); },
     [](Order &o, qint64 v) { o.answer = Answer(v); }},
    {"first", Int::min(), Int::max(), [](const Order &o) { return qint64(o.reference.first); },
     [](Order &o, qint64 v) { o.reference.first = int(v); }},
    {"second", Int::min(), Int::max(), [](const Order &o) { return qint64(o.reference.second); },
     [](Order &o, qint64 v) { o.reference.second = int(v); }},
    {"payment_sent", 0, 1, [](const Order &o) { return qint64(o.paymentSent); },
     [](Order &o, qint64 v) { o.paymentSent = v != 0; }},
    {"is_sent", 0, 1, [](const Order &o) { return qint64(o.isSent); },
     [](Order &o, qint64 v) { o.isSent = v != 0; }},
    {"z", Int::min(), Int::max(), [](const Order &o) { return qint64(o.z); },
     [](Order &o, qint64 v) { o.z = int(v); }},
    {"z_era", 1, Int::max(), [](const Order &o) { return qint64(o.era); },
     [](Order &o, qint64 v) { o.era = int(v); }},
    {"to_pay", Long::min(), Long::max(), [](const Order &o) { return qint64(o.totals.values[0]); },
     [](Order &o, qint64 v) { o.totals.values[0] = v; }},
    {"tax", Long::min(), Long::max(), [](const Order &o) { return qint64(o.totals.values[1]); },
     [](Order &o, qint64 v) { o.totals.values[1] = v; }},
    {"cash", Long::min(), Long::max(), [](const Order &o) { return qint64(o.totals.values[2]); },
     [](Order &o, qint64 v) { o.totals.values[2] = v; }},
    {"card", Long::min(), Long::max(), [](const Order &o) { return qint64(o.totals.values[3]); },
     [](Order &o, qint64 v) { o.totals.values[3] = v; }},
    {"change", Long::min(), Long::max(), [](const Order &o) { return qint64(o.totals.values[4]); },
     [](Order &o, qint64 v) { o.totals.values[4] = v; }},
    {"lines", Int::min(), Int::max(), [](const Order &o) { return qint64(o.totals.number); },
     [](Order &o, qint64 v) { o.totals.number = int(v); }},
    {"paper", 0, int(Paper::Unsure), [](const Order &o) { return qint64(o.paper); },
     [](Order &o, qint64 v) { o.paper = Paper(v); }},
    {"slip_unsure", 0, 1, [](const Order &o) { return qint64(o.slipUnsure); },
     [](Order &o, qint64 v) { o.slipUnsure = v != 0; }},
    {"give_back", Long::min(), Long::max(), [](const Order &o) { return o.giveBack; },
     [](Order &o, qint64 v) { o.giveBack = v; }},
    {"code", Int::min(), Int::max(), [](const Order &o) { return qint64(o.code); },
     [](Order &o, qint64 v) { o.code = int(v); }},
    {"cause", Int::min(), Int::max(), [](const Order &o) { return qint64(o.cause); },
     [](Order &o, qint64 v) { o.cause = int(v); }},
    {"changed_at", Long::min(), Long::max(), [](const Order &o) { return milliseconds(o.changedAt); },
     [](Order &o, qint64 v) { o.changedAt = time(v); }},
}};

constexpr std::array<Column<Event>, 4> numbersOfEvents{{
    {"time", Long::min(), Long::max(), [](const Event &e) { return milliseconds(e.time); },
     [](Event &e, qint64 v) { e.time = time(v); }},
    {"state", 0, int(State::NeedsPerson), [](const Event &e) { return qint64(e.state); },
     [](Event &e, qint64 v) { e.state = State(v); }},
    {"code", Int::min(), Int::max(), [](const Event &e) { return qint64(e.code); },
     [](Event &e, qint64 v) { e.code = int(v); }},
    {"cause", Int::min(), Int::max(), [](const Event &e) { return qint64(e.cause); },
     [](Event &e, qint64 v) { e.cause = int(v); }},
}};

constexpr std::array<Column<Attempt>, 5> numbersOfAttempts{{
    {"era", 1, Int::max(), [](const Attempt &a) { return qint64(a.era); },
     [](Attempt &a, qint64 v) { a.era = int(v); }},
    {"first", Int::min(), Int::max(), [](const Attempt &a) { return qint64(a.reference.first); },
     [](Attempt &a, qint64 v) { a.reference.first = int(v); }},
    {"second", Int::min(), Int::max(), [](const Attempt &a) { return qint64(a.reference.second); },
     [](Attempt &a, qint64 v) { a.reference.second = int(v); }},
    {"order_number", 1, Long::max(), [](const Attempt &a) { return a.order; },
     [](Attempt &a, qint64 v) { a.order = v; }},
    {"fate", 0, int(Fate::GivenUp), [](const Attempt &a) { return qint64(a.fate); },
     [](Attempt &a, qint64 v) { a.fate = Fate(v); }},
}};

constexpr auto fixed = "key, kind, content, accepted_at"_L1;

template <typename Row, size_t count>
QString names(const std::array<Column<Row>, count> &columns, const QString &separator)
{
    QStringList list;
    for (const auto &column : columns)
        list << QString::fromLatin1(column.name);
    return list.join(separator);
}

template <typename Row, size_t count>
QVariantList values(const Row &row, const std::array<Column<Row>, count> &columns)
{
    QVariantList list;
    list.reserve(qsizetype(count));
    for (const auto &column : columns)
        list << column.of(row);
    return list;
}

/** The columns' numbers as one text, such as [7,-1,0]. Of a row with a column for each, Qt would ask for the
 * name, the type and the table of them all, which takes longer than all the rest of reading it. */
template <typename... Columns>
QString numbersAsText(const Columns &...columns)
{
    return u"json_array(%1)"_s.arg(QStringList{names(columns, u", "_s)...}.join(u", "_s));
}

/** Reads such a text. */
class Numbers
{
public:
    explicit Numbers(const QVariant &text)
        : m_text(text.toString().toLatin1())
    {
    }

    /** The next ones are those of these columns. @return false: one of them holds what was never written */
    template <typename Row, size_t count>
    bool take(const std::array<Column<Row>, count> &columns, Row &row)
    {
        for (const auto &column : columns) {
            const auto value = next();
            if (!value || *value < column.least || *value > column.most)
                return false;
            column.take(row, *value);
        }
        return true;
    }

private:
    std::optional<qint64> next();

    QByteArray m_text;
    qsizetype m_before = 0; ///< where the bracket or the comma in front of the next one is
};

std::optional<qint64> Numbers::next()
{
    qint64 value = 0;
    if (m_before >= m_text.size())
        return std::nullopt;
    const auto [end, error] = std::from_chars(m_text.cbegin() + m_before + 1, m_text.cend(), value);
    const bool isWhole = error == std::errc() && end != m_text.cend() && (*end == ',' || *end == ']');
    m_before = end - m_text.cbegin();
    return isWhole ? std::optional(value) : std::nullopt;
}

} // namespace

QString orderColumns()
{
    static const QString columns =
        numbersAsText(fixedNumbers, changing) + u", key, content, json_type(content)"_s;
    return columns;
}

std::optional<Order> readOrder(const Statement &row)
{
    Numbers numbers(row.value(0));
    Order order;
    order.key = row.value(1).toString();
    order.content = row.value(2).toString().toUtf8();
    const bool isWhole = numbers.take(fixedNumbers, order) && numbers.take(changing, order) &&
                         !order.key.isEmpty() && row.value(3).toString() == u"object";
    return isWhole ? std::optional(order) : std::nullopt;
}

QString insertOrder()
{
    const qsizetype count = qsizetype(changing.size()) + 4; // with these four
    return u"INSERT INTO orders (%1, %2) VALUES (%3)"_s.arg(fixed, names(changing, u", "_s),
                                                            QStringList(count, u"?"_s).join(u", "_s));
}

QVariantList wholeOrder(const Order &order)
{
    return QVariantList{order.key, int(order.kind), QString::fromUtf8(order.content),
                        milliseconds(order.acceptedAt)} +
           changingOrder(order);
}

QString updateOrder()
{
    return u"UPDATE orders SET %1 = ? WHERE number = ?"_s.arg(names(changing, u" = ?, "_s));
}

QVariantList changingOrder(const Order &order)
{
    return values(order, changing);
}

QString eventColumns()
{
    return numbersAsText(numbersOfEvents) + u", text, person"_s;
}

std::optional<Event> readEvent(const Statement &row)
{
    Event event;
    if (!Numbers(row.value(0)).take(numbersOfEvents, event))
        return std::nullopt;
    event.text = row.value(1).toString();
    event.person = row.value(2).toString();
    return event;
}

QString insertEvent()
{
    return u"INSERT INTO history (order_number, line, %1, text, person) VALUES (?,"
           " (SELECT coalesce(max(line), 0) + 1 FROM history WHERE order_number = ?), ?, ?, ?, ?, ?, ?)"_s
               .arg(names(numbersOfEvents, u", "_s));
}

QVariantList wholeEvent(const Event &event)
{
    // A text that is null would be no text to the database.
    return values(event, numbersOfEvents)
           << (event.text.isNull() ? u""_s : event.text) << (event.person.isNull() ? u""_s : event.person);
}

QString attemptColumns()
{
    static const QString columns = numbersAsText(numbersOfAttempts);
    return columns;
}

std::optional<Attempt> readAttempt(const Statement &row)
{
    Attempt attempt;
    return Numbers(row.value(0)).take(numbersOfAttempts, attempt) ? std::optional(attempt) : std::nullopt;
}

QString insertAttempt()
{
    return u"INSERT INTO attempts (%1) VALUES (?, ?, ?, ?, ?) ON CONFLICT (era, first, second)"
           " DO UPDATE SET fate = excluded.fate WHERE order_number = excluded.order_number"_s.arg(
               names(numbersOfAttempts, u", "_s));
}

QVariantList wholeAttempt(const Attempt &attempt)
{
    return values(attempt, numbersOfAttempts);
}

} // namespace Velno::Receipts
