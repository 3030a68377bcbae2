// SPDX-License-Identifier: Apache-2.0

#include "till/look.h"

namespace Velno::Receipts {

namespace {

constexpr int enoughRounds = 10;
constexpr int mostFailures = 8;

bool isRefusal(int code)
{
    return code == VelnoResult_WrongState || code == VelnoResult_StepNotTaken || code == VelnoResult_Refused;
}

} // namespace

/** What one round of questions says. */
enum class Look::Glance {
    Settled,
    Busy,
    Refused,   ///< it refused to tell of its open sale
    NotProven, ///< it refused to tell of the receipt, perhaps as it does of others
    NotClosed, ///< likewise, and told of the known one
};

bool isSame(const VelnoReceiptRef &left, const VelnoReceiptRef &right)
{
    return left.first == right.first && left.second == right.second;
}

bool isNone(const VelnoReceiptRef &reference)
{
    return reference.first == 0 && reference.second == 0;
}

bool isEmpty(const VelnoEcrSaleTotals &totals)
{
    return totals.number == 0 && totals.values[VelnoTotal_ToPay] == 0;
}

int Look::askForState(View *view, Glance *glance)
{
    int state = 0;
    if (const int code = m_register.ask(velnoext_ecr_state, RegisterAccess::answerTimeout, &state); code != 0)
        return code;
    view->found = Found::NoSale;
    const bool isIdle = state == VelnoEcrState_Idle || state == VelnoEcrState_IdleOtherScreen;
    *glance = isIdle || !m_place.rules.hold(Rule::WaitForBusyRegister) ? Glance::Settled : Glance::Busy;
    return state == VelnoEcrState_SaleOpen ? askForSale(view, glance) : 0;
}

int Look::askForSale(View *view, Glance *glance)
{
    int first = 0;
    const int code = m_register.ask(velnoext_sale_state, RegisterAccess::answerTimeout, &first, &view->totals,
                                    &view->open);
    view->found = Found::Open;
    *glance = code == 0                        ? Glance::Settled
              : code == VelnoResult_WrongState ? Glance::Busy // it has just ended
                                               : Glance::Refused;
    return isRefusal(code) ? 0 : code;
}

int Look::askForReceipt(const Doubt &doubt, View *view, Glance *glance)
{
    VelnoReceiptRef receipt = doubt.receipt;
    int code = m_register.ask(velnoext_receipt_data, RegisterAccess::answerTimeout, &receipt, &view->totals);
    const bool isAnswered = code == 0 || doubt.cancelAnswered || !m_place.rules.hold(Rule::CounterQuestion);
    view->found = code == 0              ? Found::Closed
                  : doubt.cancelAnswered ? Found::Cancelled
                                         : Found::ProbablyCancelled;
    const bool isRefused = code == VelnoResult_Refused;
    if (isRefused && !isAnswered && !isNone(doubt.known)) {
        VelnoReceiptRef known = doubt.known;
        VelnoEcrSaleTotals ignored;
        code = m_register.ask(velnoext_receipt_data, RegisterAccess::answerTimeout, &known, &ignored);
    }
    const bool isKnownNeeded = doubt.isEnded && m_place.rules.hold(Rule::KnownReceiptNeeded);
    if (isRefused && isNone(doubt.known) && !isKnownNeeded)
        code = 0;
    *glance = isAnswered ? Glance::Settled : code == 0 ? Glance::NotClosed : Glance::NotProven;
    return isRefusal(code) ? 0 : code;
}

int Look::glance(const Doubt &doubt, View *view, Glance *glance)
{
    if (doubt.isLikelyOpen) {
        const int code = askForSale(view, glance);
        if (code != 0 || (*glance == Glance::Settled && isSame(view->open, doubt.receipt)))
            return code;
    }
    const int code = askForState(view, glance);
    if (code != 0 || *glance != Glance::Settled || isNone(doubt.receipt))
        return code;
    if (view->found == Found::Open && isSame(view->open, doubt.receipt))
        return 0;
    return askForReceipt(doubt, view, glance);
}

/** A single no may be in passing. While a refusal lasts, the counter-question between two questions meets it
 * too; so each agreement in a row needs a refusal of its own, which began and ended just there. */
std::optional<Looked> Look::weigh(Glance glance)
{
    if (glance == Glance::Settled)
        return Looked::Told;
    if (glance == Glance::NotClosed)
        return ++m_agreed == m_enough ? std::optional(Looked::Told) : std::nullopt;
    m_agreed = 0;
    if (glance == Glance::Busy)
        return m_patience.isOver() ? std::optional(Looked::Busy) : std::nullopt;
    if (++m_refusals < RegisterAccess::mostRefusals)
        return std::nullopt;
    return glance == Glance::Refused ? Looked::Silent : Looked::Unproven;
}

/** Ever longer, so that the questions meet short hindrances and long ones. */
bool Look::pauseBehind(Glance glance)
{
    if (glance == Glance::Busy) {
        m_place.tell(Stage::Busy);
        return m_patience.pause();
    }
    return m_place.clock.pause(1 << (glance == Glance::NotClosed ? m_agreed - 1 : m_refusals));
}

std::optional<Looked> Look::afterFailure(int code)
{
    m_agreed = 0;
    if (m_place.isStopping)
        return Looked::Stopped;
    return !isLost(code) || ++m_failures == mostFailures ? std::optional(Looked::Away) : std::nullopt;
}

Looked Look::at(const Doubt &doubt, View *view)
{
    m_failures = m_refusals = m_agreed = 0;
    m_enough = m_place.rules.hold(Rule::TenRounds) && !doubt.isBrief ? enoughRounds : 1;
    m_patience = Patience(m_place.clock, m_place.meeting.patience);
    for (;;) {
        switch (m_register.reach()) {
        case RegisterAccess::Reach::Here:
            break;
        case RegisterAccess::Reach::Away:
            return Looked::Away;
        case RegisterAccess::Reach::Replaced:
            return Looked::Replaced;
        case RegisterAccess::Reach::Stopped:
            return Looked::Stopped;
        }
        Glance seen = Glance::Busy;
        if (const int code = glance(doubt, view, &seen); code != 0) {
            if (const auto end = afterFailure(code))
                return *end;
            continue;
        }
        if (const auto end = weigh(seen))
            return *end;
        if (!pauseBehind(seen))
            return Looked::Stopped;
    }
}

} // namespace Velno::Receipts
