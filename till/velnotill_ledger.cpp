// SPDX-License-Identifier: Apache-2.0

#include "till/arguments.h"
#include "till/open_till.h"
#include "till/order_json.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

constexpr int mostStates = VelnoTillState_NeedsPerson + 1;

/** Finds an order and works on it. @return a VelnoTillResult */
template <typename Work>
int withOrder(VelnoTill *till, const char *key, Work work)
{
    const std::optional<QString> name = nameFrom(key);
    if (!name)
        return refused(VelnoTillResult_BadArgument,
                       u"key: 1 to 200 bytes of UTF-8 without control characters"_s);
    const Outcome found = till->till.find(*name);
    return found.result == Result::Done ? work(found.order) : judged(found);
}

/** Reads an order's history and works on it. @return a VelnoTillResult */
template <typename Work>
int withHistory(VelnoTill *till, const Order &order, Work work)
{
    const QList<Event> history = till->till.history(order);
    return history.isEmpty() ? refused(VelnoTillResult_LedgerFailed) : work(history);
}

void show(const Event &event, VelnoTillHistorian historian, void *context)
{
    const QByteArray text = event.text.toUtf8();
    const QByteArray person = event.person.toUtf8();
    VelnoTillEvent line{};
    line.size = sizeof line;
    line.state = int(event.state);
    line.code = event.code;
    line.cause = event.cause;
    line.time = event.time.toMSecsSinceEpoch();
    line.text = text.constData();
    line.person = person.constData();
    const InCallback inCallback;
    historian(&line, context);
}

void show(const Order &order, VelnoTillVisitor visitor, void *context)
{
    VelnoTillOutcome outcome{};
    outcome.size = sizeof outcome;
    fill(&outcome, order);
    const InCallback inCallback;
    visitor(order.key.toUtf8().constData(), &outcome, context);
}

} // namespace

int velnotill_list(VelnoTill *till, unsigned int states, VelnoTillVisitor visitor, void *context)
{
    return withTill(till, [&] {
        if (!visitor)
            return refused(VelnoTillResult_NullArgument);
        if (states == 0 || states > VELNOTILL_ALL_STATES)
            return refused(VelnoTillResult_BadArgument,
                           u"states: %1; accepted: 1 to %2"_s.arg(states).arg(VELNOTILL_ALL_STATES));
        QList<State> wanted;
        for (int state = 0; state < mostStates; ++state) {
            if (states & (1u << state))
                wanted << State(state);
        }
        const bool isRead =
            till->till.forEach(wanted, [&](const Order &order) { show(order, visitor, context); });
        return isRead ? int(VelnoTillResult_Done) : refused(VelnoTillResult_LedgerFailed);
    });
}

int velnotill_history(VelnoTill *till, const char *key, VelnoTillHistorian historian, void *context)
{
    return withTill(till, [&] {
        if (!key || !historian)
            return refused(VelnoTillResult_NullArgument);
        return withOrder(till, key, [&](const Order &order) {
            return withHistory(till, order, [&](const QList<Event> &history) {
                for (const Event &event : history)
                    show(event, historian, context);
                return int(VelnoTillResult_Done);
            });
        });
    });
}

int velnotill_json(VelnoTill *till, const char *key, char **text)
{
    return withTill(till, [&] {
        if (!key || !text)
            return refused(VelnoTillResult_NullArgument);
        return withOrder(till, key, [&](const Order &order) {
            return withHistory(till, order, [&](const QList<Event> &history) {
                const QJsonObject json = orderAsJson(order, history);
                return handOutText(QJsonDocument(json).toJson(QJsonDocument::Compact), text);
            });
        });
    });
}

int velnotill_prune(VelnoTill *till, unsigned int seconds, int *count)
{
    return withTill(till, [&] {
        const int forgotten = till->till.prune(till->clock.now().addSecs(-qint64(seconds)));
        if (forgotten < 0)
            return refused(VelnoTillResult_LedgerFailed);
        if (count)
            *count = forgotten;
        return int(VelnoTillResult_Done);
    });
}
