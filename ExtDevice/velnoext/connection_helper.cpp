// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connection_helper.h"

#include "ExtDevice/network/socket_io.h"
#include "ExtDevice/network/wait_time.h"
#include "ExtDevice/velnoext/library_state.h"

#include <QScopeGuard>
#include <QTcpSocket>
#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Velno::Ext {

namespace {

constexpr int sendTimeout = 2000;
constexpr int disconnectTimeout = 30'000;
constexpr qsizetype lengthSize = 4;

/** What nobody waits for any longer must not come in later. */
void closeWhenGivenUp(QIODevice *device)
{
    auto *const socket = qobject_cast<QTcpSocket *>(device);
    if (socket && isWaitOver())
        socket->abort();
}

/** A late reply to an earlier request must not be taken for the reply to the next one. */
bool discardUnread(QIODevice &device)
{
    std::array<char, 4096> unwanted;
    const QDeadlineTimer deadline(sendTimeout);
    while (receiveAtOnce(device, unwanted.data(), unwanted.size()) > 0) {
        // It never stops talking: nothing that follows could be told from an answer.
        if (isWaitOver() || deadline.hasExpired())
            return brokenBy(VelnoCause_EndlessBytes);
    }
    return true;
}

bool sendFrame(QIODevice &device, const QByteArray &payload)
{
    if (isWaitOver() || !device.isOpen())
        return brokenBy(VelnoCause_ClosedBeforeSending);
    if (!discardUnread(device))
        return false;
    if (!isConnected(device))
        return brokenBy(VelnoCause_ClosedBeforeSending);
    QByteArray frame;
    frame.reserve(lengthSize + payload.size());
    frame.resize(lengthSize);
    qToBigEndian(quint32(payload.size()), frame.data());
    frame += payload;
    if (!write(device, frame.constData(), frame.size()))
        return brokenBy(VelnoCause_WriteRefused);
    if (writeOut(device, QDeadlineTimer(sendTimeout)))
        return true;
    return brokenBy(isConnected(device) ? VelnoCause_NotSentInTime : VelnoCause_ClosedBeforeSending);
}

/** Adds the bytes that come next. */
bool readMore(QIODevice &device, QByteArray *bytes, quint32 timeout)
{
    std::array<char, 2048> run; // no reply of today is as long
    // The cashier may have to act before the register answers, so the first byte has all the time.
    const QDeadlineTimer deadline = deadlineAfter(bytes->isEmpty() ? noTimeLimit : timeout);
    const qint64 count = receive(device, run.data(), run.size(), deadline);
    if (count == 0)
        return brokenBy(isConnected(device) ? VelnoCause_SilentRegister : VelnoCause_ClosedWhileWaiting);
    bytes->append(run.data(), qsizetype(count));
    return true;
}

/** How many bytes the first frame has, as far as they tell. */
qint64 frameSize(const QByteArray &bytes)
{
    return lengthSize + (bytes.size() < lengthSize ? 0 : qint64(qFromBigEndian<quint32>(bytes.constData())));
}

/** Takes the first frame off the bytes, which are read on as far as needed. */
bool takeFrame(QIODevice &device, quint32 timeout, QByteArray *bytes, QByteArray *payload)
{
    while (bytes->size() < frameSize(*bytes)) {
        if (frameSize(*bytes) > lengthSize + largestPayload)
            return brokenBy(VelnoCause_AnswerTooLong);
        if (!readMore(device, bytes, timeout))
            return false;
    }
    const auto size = qsizetype(frameSize(*bytes));
    *payload = bytes->mid(lengthSize, size - lengthSize);
    bytes->remove(0, size);
    return true;
}

/** One payload that is no keep-alive; written on success alone. */
bool receiveAnswer(QIODevice &device, quint32 timeout, QByteArray *answer)
{
    const QByteArray keepAlive = "\xDE\xAD\xBE\xEF"_ba;
    QByteArray bytes;
    QByteArray payload;
    const auto giveBack = qScopeGuard([&] {
        if (device.isOpen())
            std::for_each(bytes.crbegin(), bytes.crend(), [&](char byte) { device.ungetChar(byte); });
    });
    do {
        if (isWaitOver() || !device.isOpen())
            return brokenBy(VelnoCause_ClosedWhileWaiting);
        if (!takeFrame(device, timeout, &bytes, &payload))
            return false;
    } while (payload == keepAlive);
    *answer = payload;
    return true;
}

} // namespace

void disconnectFromDevice(QIODevice *device)
{
    auto *const socket = qobject_cast<QTcpSocket *>(device);
    if (!socket)
        return;
    socket->setParent(nullptr);
    closeSocket(*socket, QDeadlineTimer(disconnectTimeout));
}

void ConnectionHelper::closeConnection(const QByteArray &serialNo)
{
    const auto entry = library().connections.extract(serialNo);
    if (!entry.empty())
        disconnectFromDevice(entry.mapped().get());
}

bool ConnectionHelper::send(QIODevice *s, const QByteArray &data)
{
    const bool sent = s ? sendFrame(*s, data) : brokenBy(VelnoCause_ClosedBeforeSending);
    if (!sent)
        closeWhenGivenUp(s);
    return sent;
}

bool ConnectionHelper::receive(quint32 timeout, QIODevice *s, QByteArray *data)
{
    const WaitScope scope(deadlineAfter(library().answerLimit));
    const bool received = s ? receiveAnswer(*s, timeout, data) : brokenBy(VelnoCause_ClosedWhileWaiting);
    if (!received)
        closeWhenGivenUp(s);
    return received;
}

} // namespace Velno::Ext
