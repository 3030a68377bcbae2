// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/clock.h"
#include "till/ledger.h"
#include "till/meeting.h"
#include "till/progress.h"
#include "till/rules.h"

#include <atomic>

namespace Velno::Receipts {

/** The library's code and cause of one call. */
struct Reply
{
    int code = 0;
    int cause = 0;
};

/** Whether a code leaves open what the register has done. */
bool leavesOpen(int code);

/** The same, or there was no connection to send it on: to be looked into, and perhaps sent again. */
bool isLost(int code);

/** Somebody has to put paper in, or to act on the register; then it takes the same step. */
bool isHindrance(const Reply &reply);

/** What the work on orders needs: one register, one ledger, time, and somebody who is told. */
struct Workplace
{
    const Meeting &meeting;
    const Rules &rules;
    Clock &clock;
    Ledger &ledger;
    const std::atomic<bool> &isStopping;            ///< somebody wants the work to end soon
    std::function<void(Stage)> tell;                ///< what goes on with the order at hand
    std::function<void(const Order &)> tellOfOther; ///< that another one has come to another state
};

/** The register behind velnoext.h, connected again whenever its connection is lost. */
class RegisterAccess
{
public:
    enum class Reach {
        Here,
        Away,     ///< not to be connected, or it refuses the login; last() tells why
        Replaced, ///< its Z number is below those of the ledger: another register, or another fiscal memory
        Stopped,
    };

    static constexpr unsigned answerTimeout = 5000; ///< ms of silence in the rest of an answer
    static constexpr int mostRefusals = 10;         ///< in a row, before one is final

    explicit RegisterAccess(Workplace &place)
        : m_place(place)
    {
    }

    /**
     * Connects unless it is connected, with the pairing that a first contact needs; logs in and compares its
     * Z number. When the connection is made three times in a row and ends behind each, the keys are forgotten
     * and it is paired anew. Another register stays one until a person has said so: its number is asked for
     * again each time.
     */
    Reach reach();

    /** Asks with a function of velnoext.h. @return its code; 1 and 2 end the connection */
    template <typename Function, typename... Arguments>
    int ask(Function function, Arguments... arguments)
    {
        return noted(function(arguments...));
    }

    const Reply &last() const { return m_last; }

    /** Grows with each connection: what was sent on one of them is done or lost on the next. */
    int connections() const { return m_connections; }

private:
    Reach connect();
    Reach logIn();
    Reach compareNumbers();
    void forgetKeys();
    int noted(int code);

    Workplace &m_place;
    Reply m_last;
    int m_connections = 0;
    bool m_isConnected = false;
    bool m_isReplaced = false; ///< as the numbers said on this connection
};

} // namespace Velno::Receipts
