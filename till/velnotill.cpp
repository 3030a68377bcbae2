// SPDX-License-Identifier: Apache-2.0

#include "till/velnotill.h"

#include "till/arguments.h"
#include "till/open_till.h"

#include <memory>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

/** Opens the ledger and hands the till out. @return a VelnoTillResult */
int openLedger(const Place &place, VelnoTill **till)
{
    auto opened = std::make_unique<VelnoTill>(place.meeting);
    if (const QString problem = opened->till.open(place.ledger); !problem.isEmpty())
        return refused(VelnoTillResult_LedgerFailed, problem);
    *till = opened.release();
    letIn(*till);
    return VelnoTillResult_Done;
}

} // namespace

int velnotill_open(VelnoTill **till, const VelnoTillSettings *settings)
{
    return guarded([&] {
        if (!till || !settings)
            return refused(VelnoTillResult_NullArgument);
        Place place;
        QString problem;
        if (const int result = readSettings(*settings, &place, &problem); result != VelnoTillResult_Done)
            return refused(result, problem);
        if (reservePlace() != VelnoTillResult_Done)
            return refused(VelnoTillResult_AlreadyOpen);
        const int result = openLedger(place, till);
        if (result != VelnoTillResult_Done)
            leavePlace();
        return result;
    });
}

int velnotill_close(VelnoTill *till)
{
    return guarded([&] {
        if (!till)
            return refused(VelnoTillResult_NullArgument);
        if (shutOut(till) != VelnoTillResult_Done)
            return refused(VelnoTillResult_NotOpen);
        delete till;
        leavePlace();
        return int(VelnoTillResult_Done);
    });
}

void velnotill_interrupt(VelnoTill *till)
{
    interruptOpen(till);
}

int velnotill_set_listener(VelnoTill *till, VelnoTillListener listener, void *context)
{
    return withTill(till, [&] {
        const std::lock_guard lock(till->listenerMutex);
        till->listener = listener;
        till->context = context;
        return int(VelnoTillResult_Done);
    });
}
