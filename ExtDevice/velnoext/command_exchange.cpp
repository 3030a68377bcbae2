// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/command_exchange.h"

#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/velnoext/connections.h"

#include <algorithm>
#include <iterator>

namespace Velno::Ext {

using namespace Velno::GMP;

namespace {

QIODevice *activeConnection()
{
    return connectionOf(library().activeDevice);
}

/** beginCommand() for the two functions that only some applications may use. */
int beginRaw(std::initializer_list<Required> pointers)
{
    const int result = beginCommand();
    if (result != NotReady && !isSpecialApplication())
        return failedBy(NotReady, VelnoCause_RawNotAllowed);
    return result == Success ? checkPointers(pointers) : result;
}

} // namespace

QByteArray prepareTlvElements(const QByteArray &plaintext)
{
    return seal(activeRecord(), plaintext);
}

int parseTlvElements(const QByteArray &frame, QByteArray *plaintext)
{
    const int status = unseal(activeRecord(), frame, plaintext);
    switch (status) {
    case 0:
        return Success;
    case MacWrong:
        return failedBy(NotAuthentic, VelnoCause_MacWrong);
    case NothingDecrypted:
        return failedBy(NotAuthentic, VelnoCause_DecryptedToNothing);
    case EnvelopeOfNoKeys:
    case ElementsWrong:
        return failedBy(MalformedReply, VelnoCause_ElementsWrong);
    default:
        return failedBy(MalformedReply, status);
    }
}

int send_and_receive_encrypted(unsigned int timeout, QIODevice *device, const QByteArray &request,
                               QByteArray *reply)
{
    const QByteArray frame = prepareTlvElements(request);
    if (frame.isEmpty())
        return failedBy(NotAuthentic, VelnoCause_NotEncrypted);
    QByteArray answer;
    if (!send_to_device(device, frame) || !get_from_device(timeout, device, &answer))
        return ConnectionFailed;
    QByteArray plaintext;
    if (const int result = parseTlvElements(answer, &plaintext); result != Success)
        return result;
    if (plaintext == request) // sent back, whatever way its elements were packed anew
        return failedBy(MalformedReply, VelnoCause_RequestReflected);
    *reply = plaintext;
    return Success;
}

int causeOfNotReady()
{
    if (!library().connectionThread)
        return VelnoCause_NotInitialised;
    if (library().activeDevice.isEmpty())
        return VelnoCause_NoActiveDevice;
    return activeRecord().aesKey.isEmpty() ? VelnoCause_KeysAbsent : VelnoCause_None;
}

int beginCommand(std::initializer_list<Required> pointers)
{
    if (const int cause = causeOfNotReady(); cause != VelnoCause_None)
        return failedBy(NotReady, cause);
    if (!library().connections.contains(library().activeDevice))
        return failedBy(ConnectionFailed, VelnoCause_NotConnected);
    return checkPointers(pointers);
}

ReplyReader &ReplyReader::operator>>(bool &flag)
{
    qint8 number = 0;
    *this >> number;
    flag = number != 0;
    return *this;
}

ReplyReader &ReplyReader::operator>>(QByteArray &bytes)
{
    return give(takeBytes(&m_rest), bytes);
}

ReplyReader &ReplyReader::operator>>(QVector<int> &list)
{
    return give(takeNumbers(&m_rest), list);
}

ReplyReader &ReplyReader::operator>>(VelnoEcrSaleTotals &totals)
{
    // The structure's numbers need not be aligned as references promise.
    for (size_t i = 0; i < std::size(totals.values); ++i) {
        qint64 value = 0;
        *this >> value;
        totals.values[i] = value;
    }
    qint32 number = 0;
    *this >> number;
    totals.number = number;
    return *this;
}

Result ReplyReader::result() const
{
    if (isComplete())
        return Success;
    failedBy(ReplyUnreadable, VelnoCause_AnswerTooShort);
    return ReplyUnreadable;
}

int runCommand(unsigned int timeout, const QByteArray &request, QByteArray *reply)
{
    return send_and_receive_encrypted(timeout, activeConnection(), request, reply);
}

int runFlagCommand(unsigned int timeout, const QByteArray &request, Result otherwise)
{
    bool flag = false;
    if (const int result = runAndRead(timeout, request, flag); result != Success)
        return result;
    if (flag)
        return Success;
    return failedBy(otherwise, otherwise == NoPaper ? VelnoCause_PrinterEmpty : VelnoCause_SaidNo);
}

int sendCommand(const QByteArray &request)
{
    const QByteArray frame = prepareTlvElements(request);
    if (frame.isEmpty())
        return failedBy(NotAuthentic, VelnoCause_NotEncrypted);
    return send_to_device(activeConnection(), frame) ? Success : ConnectionFailed;
}

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_send_data(const char *data, int length)
{
    const PublicCall call;
    if (const int result = beginRaw({{data, 0x300}}); result != Success)
        return result;
    if (length < 0)
        return failedBy(BadValue, VelnoCause_NegativeLength);
    return sendCommand(QByteArray::fromRawData(data, length));
}

int velnoext_get_data(const char *frame, int frameLength, char *output, int *outputLength)
{
    const PublicCall call;
    if (const int result = beginRaw({{frame, 0x300}, {output, 0x301}, {outputLength, 0x302}});
        result != Success)
        return result;
    if (frameLength < 0)
        return failedBy(BadValue, VelnoCause_NegativeLength);
    QByteArray plaintext;
    const int result = parseTlvElements(QByteArray::fromRawData(frame, frameLength), &plaintext);
    if (result != Success)
        return result;
    if (*outputLength < plaintext.size())
        return failedBy(BadValue, VelnoCause_RoomTooSmall);
    std::copy(plaintext.cbegin(), plaintext.cend(), output);
    *outputLength = int(plaintext.size());
    return Success;
}
