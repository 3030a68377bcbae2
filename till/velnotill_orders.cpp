// SPDX-License-Identifier: Apache-2.0

#include "till/arguments.h"
#include "till/open_till.h"
#include "till/receipt_json.h"

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

using HandOver = Outcome (Till::*)(const QString &key, Kind kind, const QByteArray &json);

/** A function that wants its outcome, or may. */
enum class Wanted { No, Yes };

/** Judges what every function about one order is handed. @return a VelnoTillResult */
int checkOrder(const char *key, const VelnoTillOutcome *outcome, Wanted wanted)
{
    if (!key || (wanted == Wanted::Yes && !outcome))
        return refused(VelnoTillResult_NullArgument);
    if (!nameFrom(key))
        return refused(VelnoTillResult_BadArgument,
                       u"key: 1 to 200 bytes of UTF-8 without control characters"_s);
    if (outcome && !hasRoom(*outcome))
        return refused(VelnoTillResult_BadArgument,
                       u"outcome: size %1 is not that of VelnoTillOutcome"_s.arg(outcome->size));
    return VelnoTillResult_Done;
}

/** Fills the caller's outcome when there is an order in it. @return the result */
int handOut(const Outcome &outcome, VelnoTillOutcome *room)
{
    if (room && (outcome.result == Result::Done || outcome.result == Result::Interrupted))
        fill(room, outcome.order);
    return judged(outcome);
}

int handOver(HandOver function, VelnoTill *till, const char *key, Kind kind, const char *json,
             VelnoTillOutcome *outcome, Wanted wanted)
{
    return withTill(till, [&] {
        if (!json)
            return refused(VelnoTillResult_NullArgument);
        if (const int result = checkOrder(key, outcome, wanted); result != VelnoTillResult_Done)
            return result;
        return handOut((till->till.*function)(*nameFrom(key), kind, json), outcome);
    });
}

template <typename Value>
int check(const char *json, Judged<Value> (*read)(const QByteArray &json))
{
    return guarded([&] {
        if (!json)
            return refused(VelnoTillResult_NullArgument);
        const QStringList faults = read(json).faults;
        return faults.isEmpty() ? int(VelnoTillResult_Done)
                                : refused(VelnoTillResult_BadContent, faults.join(u'\n'));
    });
}

} // namespace

int velnotill_check_receipt(const char *json)
{
    return check(json, readReceipt);
}

int velnotill_check_slip(const char *json)
{
    return check(json, readSlip);
}

int velnotill_accept(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome)
{
    return handOver(&Till::accept, till, key, Kind::Receipt, json, outcome, Wanted::No);
}

int velnotill_sell(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome)
{
    return handOver(&Till::perform, till, key, Kind::Receipt, json, outcome, Wanted::Yes);
}

int velnotill_z_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome)
{
    return handOver(&Till::perform, till, key, Kind::ZReport, "", outcome, Wanted::Yes);
}

int velnotill_x_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome)
{
    return handOver(&Till::perform, till, key, Kind::XReport, "", outcome, Wanted::Yes);
}

int velnotill_print_slip(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome)
{
    return handOver(&Till::perform, till, key, Kind::Slip, json, outcome, Wanted::Yes);
}

int velnotill_work(VelnoTill *till)
{
    return withTill(till, [&] { return judged({till->till.workOff(), {}, {}}); });
}

int velnotill_answer(VelnoTill *till, const char *key, int answer, const char *person,
                     VelnoTillOutcome *outcome)
{
    return withTill(till, [&] {
        if (!person)
            return refused(VelnoTillResult_NullArgument);
        if (const int result = checkOrder(key, outcome, Wanted::No); result != VelnoTillResult_Done)
            return result;
        if (answer < VelnoTillAnswer_Paid || answer > VelnoTillAnswer_Drop)
            return refused(VelnoTillResult_BadArgument, u"answer: %1; accepted: %2 to %3"_s.arg(answer)
                                                            .arg(VelnoTillAnswer_Paid)
                                                            .arg(VelnoTillAnswer_Drop));
        const std::optional<QString> name = nameFrom(person, longestPerson);
        if (!name)
            return refused(VelnoTillResult_BadArgument,
                           u"person: 1 to 100 bytes of UTF-8 without control characters"_s);
        return handOut(till->till.answer(*nameFrom(key), Answer(answer), *name), outcome);
    });
}

int velnotill_find(VelnoTill *till, const char *key, VelnoTillOutcome *outcome)
{
    return withTill(till, [&] {
        if (const int result = checkOrder(key, outcome, Wanted::Yes); result != VelnoTillResult_Done)
            return result;
        return handOut(till->till.find(*nameFrom(key)), outcome);
    });
}
