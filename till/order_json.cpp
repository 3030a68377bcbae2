// SPDX-License-Identifier: Apache-2.0

#include "till/order_json.h"

#include "till/money.h"
#include "till/questions.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

QJsonValue timeAsJson(const QDateTime &time)
{
    return time.isValid() ? QJsonValue(time.toUTC().toString(Qt::ISODateWithMs)) : QJsonValue();
}

QJsonValue referenceAsJson(const VelnoReceiptRef &reference)
{
    if (reference.second == 0)
        return {};
    return QJsonObject{{u"z"_s, reference.first}, {u"number"_s, reference.second}};
}

QJsonValue totalsAsJson(const Order &order)
{
    if (order.state != State::Closed || order.kind != Kind::Receipt)
        return {};
    const auto total = [&order](VelnoTotal which) { return liraText(order.totals.values[which]); };
    return QJsonObject{{u"toPay"_s, total(VelnoTotal_ToPay)},   {u"tax"_s, total(VelnoTotal_Tax)},
                       {u"cash"_s, total(VelnoTotal_Cash)},     {u"card"_s, total(VelnoTotal_Card)},
                       {u"change"_s, total(VelnoTotal_Change)}, {u"lines"_s, int(order.totals.number)}};
}

QJsonObject inBothLanguages(const Order &order, QString (*text)(const Order &, Language))
{
    return {{u"en"_s, text(order, Language::English)}, {u"tr"_s, text(order, Language::Turkish)}};
}

QJsonArray historyAsJson(const QList<Event> &history)
{
    QJsonArray lines;
    for (const Event &event : history) {
        lines << QJsonObject{{u"time"_s, timeAsJson(event.time)},
                             {u"state"_s, nameOf(stateWords(), event.state)},
                             {u"code"_s, event.code},
                             {u"cause"_s, event.cause},
                             {u"text"_s, event.text},
                             {u"person"_s, event.person.isEmpty() ? QJsonValue() : QJsonValue(event.person)}};
    }
    return lines;
}

} // namespace

QJsonObject orderAsJson(const Order &order, const QList<Event> &history)
{
    const bool isAsked = order.question != Question::None;
    const bool isAnswered = order.answer != Answer::None;
    return {{u"key"_s, order.key},
            {u"kind"_s, nameOf(kindWords(), order.kind)},
            {u"state"_s, nameOf(stateWords(), order.state)},
            {u"message"_s, inBothLanguages(order, message)},
            {u"question"_s, isAsked ? QJsonValue(nameOf(questionWords(), order.question)) : QJsonValue()},
            {u"answer"_s, isAnswered ? QJsonValue(nameOf(answerWords(), order.answer)) : QJsonValue()},
            {u"reference"_s, referenceAsJson(order.reference)},
            {u"totals"_s, totalsAsJson(order)},
            {u"paper"_s, nameOf(paperWords(), order.paper)},
            {u"slipUnsure"_s, order.slipUnsure},
            {u"giveBack"_s, liraText(order.giveBack)},
            {u"z"_s, order.z != 0 ? QJsonValue(order.z) : QJsonValue()},
            {u"code"_s, order.code},
            {u"cause"_s, order.cause},
            {u"acceptedAt"_s, timeAsJson(order.acceptedAt)},
            {u"changedAt"_s, timeAsJson(order.changedAt)},
            {u"content"_s, QJsonDocument::fromJson(order.content).object()},
            {u"history"_s, historyAsJson(history)}};
}

} // namespace Velno::Receipts
