// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace VelnoCtl {

/** What velnoctl ends with besides 0 and the library's result codes 1 to 13. */
enum ExitStatus {
    /** Base of an order's state, see VelnoTillState: accepted 20, open 21, cancelled 23, refused 24, waiting
     *  25, needs-person 26. Closed is 0. */
    OrderStands = 20,
    /** Base of a VelnoTillResult: conflict 32, ledger-failed 33, unknown-key 34, not-asked 35. Faults of a
     *  receipt are wrong usage. */
    OrderNotTaken = 30,
    WrongUsage = 64,  ///< nothing was sent because of it
    Unavailable = 69, ///< the simulator at --control did not answer
    OutputLost = 74,  ///< a result could not be written
    Interrupted = 130 ///< Ctrl-C or SIGTERM
};

} // namespace VelnoCtl
