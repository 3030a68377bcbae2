// SPDX-License-Identifier: Apache-2.0

#include "till/outcome.h"

#include "till/progress.h"
#include "till/till.h"

#include <cstring>

namespace Velno::Receipts {

namespace {

// The numbers inside are those that are handed out.
template <typename Inside, typename Outside>
constexpr bool same(Inside inside, Outside outside)
{
    return int(inside) == int(outside);
}

static_assert(same(Result::Done, VelnoTillResult_Done));
static_assert(same(Result::BadContent, VelnoTillResult_BadContent));
static_assert(same(Result::Conflict, VelnoTillResult_Conflict));
static_assert(same(Result::LedgerFailed, VelnoTillResult_LedgerFailed));
static_assert(same(Result::Unknown, VelnoTillResult_Unknown));
static_assert(same(Result::NotAsked, VelnoTillResult_NotAsked));
static_assert(same(Result::Interrupted, VelnoTillResult_Interrupted));

static_assert(same(Kind::Receipt, VelnoTillKind_Receipt));
static_assert(same(Kind::ZReport, VelnoTillKind_ZReport));
static_assert(same(Kind::XReport, VelnoTillKind_XReport));
static_assert(same(Kind::Slip, VelnoTillKind_Slip));

static_assert(same(State::Accepted, VelnoTillState_Accepted));
static_assert(same(State::Open, VelnoTillState_Open));
static_assert(same(State::Closed, VelnoTillState_Closed));
static_assert(same(State::Cancelled, VelnoTillState_Cancelled));
static_assert(same(State::Refused, VelnoTillState_Refused));
static_assert(same(State::Waiting, VelnoTillState_Waiting));
static_assert(same(State::NeedsPerson, VelnoTillState_NeedsPerson));

static_assert(same(Question::None, VelnoTillQuestion_None));
static_assert(same(Question::ReceiptUnknown, VelnoTillQuestion_ReceiptUnknown));
static_assert(same(Question::MoneyTaken, VelnoTillQuestion_MoneyTaken));
static_assert(same(Question::PaymentRefused, VelnoTillQuestion_PaymentRefused));
static_assert(same(Question::NotOurs, VelnoTillQuestion_NotOurs));
static_assert(same(Question::OtherRegister, VelnoTillQuestion_OtherRegister));
static_assert(same(Question::CountedTwice, VelnoTillQuestion_CountedTwice));
static_assert(same(Question::SlipPrinted, VelnoTillQuestion_SlipPrinted));

static_assert(same(Answer::None, VelnoTillAnswer_None));
static_assert(same(Answer::Paid, VelnoTillAnswer_Paid));
static_assert(same(Answer::SellAgain, VelnoTillAnswer_SellAgain));
static_assert(same(Answer::Drop, VelnoTillAnswer_Drop));

static_assert(same(Paper::Unknown, VelnoTillPaper_Unknown));
static_assert(same(Paper::Printed, VelnoTillPaper_Printed));
static_assert(same(Paper::Unsure, VelnoTillPaper_Unsure));

static_assert(same(Stage::Accepted, VelnoTillStage_Accepted));
static_assert(same(Stage::Connecting, VelnoTillStage_Connecting));
static_assert(same(Stage::Pairing, VelnoTillStage_Pairing));
static_assert(same(Stage::Starting, VelnoTillStage_Starting));
static_assert(same(Stage::Entering, VelnoTillStage_Entering));
static_assert(same(Stage::CashPayment, VelnoTillStage_CashPayment));
static_assert(same(Stage::CardPayment, VelnoTillStage_CardPayment));
static_assert(same(Stage::Closing, VelnoTillStage_Closing));
static_assert(same(Stage::Looking, VelnoTillStage_Looking));
static_assert(same(Stage::Busy, VelnoTillStage_Busy));
static_assert(same(Stage::EnteringAgain, VelnoTillStage_EnteringAgain));
static_assert(same(Stage::Printing, VelnoTillStage_Printing));
static_assert(same(Stage::Reporting, VelnoTillStage_Reporting));
static_assert(same(Stage::Settled, VelnoTillStage_Settled));

constexpr unsigned largestOutcome = 4096; // beyond, the size was never set

long long milliseconds(const QDateTime &time)
{
    return time.isValid() ? time.toMSecsSinceEpoch() : 0;
}

} // namespace

bool hasRoom(const VelnoTillOutcome &outcome)
{
    return outcome.size >= sizeof(VelnoTillOutcome) && outcome.size <= largestOutcome;
}

void fill(VelnoTillOutcome *outcome, const Order &order)
{
    const unsigned size = outcome->size;
    std::memset(outcome, 0, size);
    outcome->size = size;
    outcome->kind = int(order.kind);
    outcome->state = int(order.state);
    outcome->question = int(order.question);
    outcome->answer = int(order.answer);
    outcome->paper = int(order.paper);
    outcome->slipUnsure = order.slipUnsure ? 1 : 0;
    outcome->code = order.code;
    outcome->cause = order.cause;
    outcome->z = order.z;
    outcome->reference = order.reference;
    outcome->totals = order.totals;
    outcome->giveBack = order.giveBack;
    outcome->acceptedAt = milliseconds(order.acceptedAt);
    outcome->changedAt = milliseconds(order.changedAt);
}

Order orderFrom(const VelnoTillOutcome &outcome)
{
    Order order;
    order.kind = Kind(outcome.kind);
    order.state = State(outcome.state);
    order.question = Question(outcome.question);
    order.answer = Answer(outcome.answer);
    order.paper = Paper(outcome.paper);
    order.slipUnsure = outcome.slipUnsure != 0;
    order.code = outcome.code;
    order.cause = outcome.cause;
    order.z = outcome.z;
    order.reference = outcome.reference;
    order.totals = outcome.totals;
    order.giveBack = outcome.giveBack;
    return order;
}

} // namespace Velno::Receipts
