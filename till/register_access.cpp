// SPDX-License-Identifier: Apache-2.0

#include "till/register_access.h"

namespace Velno::Receipts {

namespace {

// A cable that is pulled or a power that is cut explains a failure or two in a row.
constexpr int failuresOfLostKeys = 3;
constexpr int mostFailures = 8;

} // namespace

bool leavesOpen(int code)
{
    return code == VelnoResult_ConnectionFailed || code == VelnoResult_ReplyUnreadable ||
           code == VelnoResult_NotAuthentic || code == VelnoResult_MalformedReply;
}

bool isLost(int code)
{
    return code == VelnoResult_NotReady || leavesOpen(code);
}

bool isHindrance(const Reply &reply)
{
    return reply.code == VelnoResult_WrongState || reply.code == VelnoResult_NoPaper ||
           reply.cause == VelnoCause_PaperOut || reply.cause == VelnoCause_DisplayBusy;
}

int RegisterAccess::noted(int code)
{
    m_last = {code, code == 0 ? 0 : velnoext_cause()}; // before any other call
    if (code == VelnoResult_NotReady || code == VelnoResult_ConnectionFailed)
        m_isConnected = false;
    return code;
}

RegisterAccess::Reach RegisterAccess::reach()
{
    if (m_isConnected && m_isReplaced) {
        const Reach reached = compareNumbers();
        if (reached != Reach::Here || m_isConnected)
            return reached;
    }
    for (int failures = 0; !m_isConnected && failures < mostFailures; ++failures) {
        if (m_place.isStopping)
            return Reach::Stopped;
        if (failures == failuresOfLostKeys && m_place.rules.hold(Rule::ForgetLostKeys))
            forgetKeys();
        if (const Reach reached = connect(); reached != Reach::Here)
            return reached;
        const Reach reached = logIn();
        if (reached != Reach::Here || m_isConnected)
            return reached;
    }
    return m_isConnected ? Reach::Here : Reach::Away;
}

RegisterAccess::Reach RegisterAccess::connect()
{
    m_place.tell(Stage::Connecting);
    const Meeting &meeting = m_place.meeting;
    ask(velnoext_set_answer_limit, meeting.answerLimit);
    const int code = ask(velnoext_initialize, meeting.appNo, meeting.serial.constData(),
                         meeting.address.constData(), meeting.port, meeting.connectTimeout);
    if (code != 0)
        return m_place.isStopping ? Reach::Stopped : Reach::Away;
    ++m_connections;
    m_isConnected = true;
    return Reach::Here;
}

/** The session may have ended with the register's power. Behind Here the connection may be lost again. */
RegisterAccess::Reach RegisterAccess::logIn()
{
    const int code = ask(velnoext_login, answerTimeout);
    if (code == 0)
        return compareNumbers();
    const bool isRefused = m_isConnected && !leavesOpen(code);
    m_isConnected = false;
    return isRefused ? Reach::Away : Reach::Here;
}

RegisterAccess::Reach RegisterAccess::compareNumbers()
{
    m_isReplaced = false;
    const int known = m_place.ledger.highest().first;
    if (known == 0 || !m_place.rules.hold(Rule::WatchRegisterNumbers))
        return Reach::Here;
    int z = 0;
    int code = ask(velnoext_current_z, answerTimeout, &z);
    for (int refusals = 1; code == VelnoResult_Refused && refusals < mostRefusals; ++refusals) {
        if (!m_place.clock.pause(1 << refusals))
            return Reach::Stopped;
        code = ask(velnoext_current_z, answerTimeout, &z);
    }
    m_isReplaced = code == 0 && z < known;
    if (code == 0)
        return m_isReplaced ? Reach::Replaced : Reach::Here;
    const bool isRefused = m_isConnected && !leavesOpen(code);
    m_isConnected = false; // the numbers are still to be compared
    return isRefused ? Reach::Away : Reach::Here;
}

void RegisterAccess::forgetKeys()
{
    m_place.tell(Stage::Pairing);
    ask(velnoext_forget_device, m_place.meeting.serial.constData());
}

} // namespace Velno::Receipts
