// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/patience.h"
#include "till/register_access.h"

namespace Velno::Receipts {

/** Of what the register is asked. */
struct Doubt
{
    VelnoReceiptRef receipt = {0, 0}; ///< 0, 0: whether any sale is open
    VelnoReceiptRef known = {0, 0};   ///< one that is certainly closed, for counter-questions; 0, 0: none
    bool cancelAnswered = false;      ///< the register has answered that it cancelled this one
    bool isEnded =
        true; ///< its end may have been sent; otherwise a no needs no counter-question to be likely
    bool isBrief = false;      ///< one no is enough, as it will be asked about again
    bool isLikelyOpen = false; ///< so that asking for the open sale alone may do
};

enum class Found {
    NoSale, ///< no sale is open; no receipt was asked for
    Open,   ///< a sale is open: the one that was asked for, or any if none was
    Closed, ///< the receipt counts
    Cancelled,
    ProbablyCancelled,
};

/** How a look ended. */
enum class Looked {
    Told,     ///< what was found
    Away,     ///< the register cannot be reached, or is not understood
    Busy,     ///< it is in another state than selling and idle, for longer than there is patience
    Silent,   ///< it refuses to tell of its open sale
    Unproven, ///< it says no to the receipt, and nothing proves that this no is news of it
    Replaced, ///< it is another register
    Stopped,
};

struct View
{
    Found found = Found::NoSale;
    VelnoReceiptRef open = {0, 0};  ///< of the open sale
    VelnoEcrSaleTotals totals = {}; ///< of what was found open or closed
};

bool isSame(const VelnoReceiptRef &left, const VelnoReceiptRef &right);
bool isNone(const VelnoReceiptRef &reference);
bool isEmpty(const VelnoEcrSaleTotals &totals); ///< nothing stands on the sale

/**
 * Asks the register how things stand, until it is known; docs/recovery.md says what the answers prove.
 * Changes nothing on it, so a look does no harm. Takes half a second for a cancelled receipt.
 */
class Look
{
public:
    Look(Workplace &place, RegisterAccess &reg)
        : m_place(place)
        , m_register(reg)
        , m_patience(place.clock, place.meeting.patience)
    {
    }

    Looked at(const Doubt &doubt, View *view);

private:
    enum class Glance;
    int glance(const Doubt &doubt, View *view, Glance *glance);
    int askForState(View *view, Glance *glance);
    int askForSale(View *view, Glance *glance);
    int askForReceipt(const Doubt &doubt, View *view, Glance *glance);
    std::optional<Looked> weigh(Glance glance);
    bool pauseBehind(Glance glance);
    std::optional<Looked> afterFailure(int code);

    Workplace &m_place;
    RegisterAccess &m_register;
    int m_failures = 0;
    int m_refusals = 0;
    int m_agreed = 0;
    int m_enough = 0; ///< how often question and counter-question have to agree
    Patience m_patience;
};

} // namespace Velno::Receipts
