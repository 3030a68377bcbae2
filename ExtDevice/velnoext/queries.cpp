// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/queries.h"

#include "ExtDevice/velnoext/command_exchange.h"

#include <algorithm>

namespace Velno::Ext {

namespace {

constexpr qsizetype serialBufferSize = 17; // what callers of velnoext_ecr_serialno() provide

/** A command whose reply is a flag. */
int askFlag(VelnoExtMessage code, unsigned int timeout, Result otherwise)
{
    const PublicCall call;
    if (const int result = beginCommand(); result != Success)
        return result;
    return runFlagCommand(timeout, requestOf(code), otherwise);
}

/** A command whose reply is one number. */
template <typename Number>
int askNumber(VelnoExtMessage code, unsigned int timeout, Number *output, int nullDetail)
{
    const PublicCall call;
    if (const int result = beginCommand({{output, nullDetail}}); result != Success)
        return result;
    Number number = 0;
    const int result = runAndRead(timeout, requestOf(code), number);
    if (result == Success)
        *output = number;
    return result;
}

} // namespace

int velnoext_ecr_state_impl(unsigned int timeout, int *state, QVector<int> *list, int *extra)
{
    if (const int result = beginCommand({{state, 0x302}}); result != Success)
        return result;
    QByteArray reply;
    if (const int result = runCommand(timeout, requestOf(VelnoExtMessage_EcrState), &reply);
        result != Success)
        return result;
    ReplyReader reader(reply);
    qint32 value = -1;
    reader >> value >> *list;
    if (extra && value == VelnoEcrState_SaleOpen)
        reader >> *extra;
    if (reader.result() != Success)
        return ReplyUnreadable;
    *state = value;
    return Success;
}

bool isIdle(int state)
{
    return state == VelnoEcrState_Idle || state == VelnoEcrState_IdleOtherScreen;
}

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_login(unsigned int timeout)
{
    return askFlag(VelnoExtMessage_Login, timeout, Refused);
}

int velnoext_logout(unsigned int timeout)
{
    return askFlag(VelnoExtMessage_Logout, timeout, Refused);
}

int velnoext_check_printer_paper(unsigned int timeout)
{
    return askFlag(VelnoExtMessage_CheckPrinterPaper, timeout, NoPaper);
}

int velnoext_ecr_state(unsigned int timeout, int *state)
{
    const PublicCall call;
    QVector<int> list;
    return velnoext_ecr_state_impl(timeout, state, &list, nullptr);
}

int velnoext_ecr_serialno(char *buffer)
{
    const PublicCall call;
    const Velno::GMP::MatchExt &record = activeRecord();
    if (const int cause = causeOfNotReady(); cause != VelnoCause_None && cause != VelnoCause_KeysAbsent)
        return failedBy(NotReady, cause);
    if (record.registerData.isEmpty())
        return failedBy(NotReady, VelnoCause_KeysAbsent);
    if (!buffer)
        return failed(NullArgument, 0x300);
    // The identity came from the register, of whatever length; the caller's room is known to be 17 bytes.
    const qsizetype longest = serialBufferSize - 1;
    std::copy_n(record.registerData.cbegin(), std::min(record.registerData.size(), longest), buffer);
    // Its place follows the terminal's identity: applications rely on what stands there today.
    buffer[std::min(record.terminalId.size(), longest)] = '\0';
    return Success;
}

int velnoext_current_z(unsigned int timeout, int *z)
{
    const PublicCall call;
    if (const int result = beginCommand({{z, 0x30B}}); result != Success)
        return result;
    bool accepted = false;
    qint32 number = 0;
    const QByteArray request = requestOf(VelnoExtMessage_CurrentZ);
    if (const int result = runAndRead(timeout, request, accepted, number); result != Success)
        return result;
    *z = number; // the register tells it also when it refuses
    return accepted ? Success : failedBy(Refused, VelnoCause_SaidNo);
}

int velnoext_last_z_datetime(unsigned int timeout, int *value)
{
    return askNumber(VelnoExtMessage_LastZDateTime, timeout, value, 0x30C);
}

int velnoext_ecr_datetime(unsigned int timeout, int *value)
{
    return askNumber(VelnoExtMessage_EcrDateTime, timeout, value, 0x30C);
}

int velnoext_sale_limit(unsigned int timeout, long long *limit)
{
    return askNumber(VelnoExtMessage_SaleLimit, timeout, limit, 0x310);
}
