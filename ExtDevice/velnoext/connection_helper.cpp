#include "ExtDevice/velnoext/connection_helper.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/direct_io.h"
#include "ExtDevice/network/socket_waits.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/network/wait_time.h"
#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/number_format.h"

#include <QFile>
#include <QScopedValueRollback>
#include <QTcpSocket>
#include <QtEndian>

#include <array>
#include <cstring>
#include <poll.h>

namespace Velno::Ext {

using namespace Velno::GMP;

namespace {

constexpr int sendTimeout = 2000;
constexpr unsigned int relayTimeout = 2000;
constexpr char relayAddress[] = "255.255.255.255";
constexpr int lengthSize = 4;
constexpr int firstBadNetworkStatus = 6; // statuses below it complain about an argument
constexpr int listeningCauses = 1000;    // + the status is the cause, as it is the code of a pairing

// Frames ------------------------------------------------------------------------------------------------

/** Whether anything can be sent: a socket that is closed can only warn about it. */
bool isOpen(const QIODevice &device)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    return device.isOpen() && (!socket || isConnected(*socket));
}

/** Notes why the connection failed. @return false */
bool brokenBy(VelnoCause cause)
{
    library().cause = causeOfWait(cause);
    return false;
}

/** Waits until there are more bytes than were there before. */
bool waitForMore(QIODevice &device, const QDeadlineTimer &deadline)
{
    auto *const socket = qobject_cast<QTcpSocket *>(&device);
    if (!socket)
        return device.waitForReadyRead(int(deadline.remainingTime()));
    return isConnected(*socket) && waitFor(int(socket->socketDescriptor()), POLLIN, deadline) &&
           socket->waitForReadyRead(0);
}

/** Whether unread bytes, or a close, are waiting; a look that costs less than a wait of no time. */
bool hasNews(QIODevice &device)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    return !socket || waitUntilReadable(*socket, QDeadlineTimer(0));
}

/** What nobody waits for any longer must not come in later. */
void closeWhenGivenUp(QIODevice *device)
{
    auto *const socket = qobject_cast<QTcpSocket *>(device);
    if (socket && isWaitOver())
        socket->abort();
}

/**
 * A late reply to an earlier request must not be taken for the reply to the next one. It may still be in the
 * kernel, so a look without waiting follows each read.
 */
bool discardUnread(QIODevice &device)
{
    const QDeadlineTimer deadline(sendTimeout);
    while (hasNews(device)) {
        const bool more = device.bytesAvailable() > 0 || waitForMore(device, QDeadlineTimer(0));
        if (!more)
            break;
        device.skip(device.bytesAvailable());
        if (deadline.hasExpired())
            return brokenBy(VelnoCause_EndlessBytes); // it never stops talking: nothing that follows could be
                                                      // told from an answer
    }
    return true;
}

/** Hands a frame to the kernel, what it does not take at once to the device. */
bool write(QIODevice &device, const QByteArray &frame)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    const qint64 sent = socket ? sendDirectly(*socket, frame.constData(), frame.size()) : 0;
    const qint64 left = frame.size() - sent;
    return left == 0 || device.write(frame.constData() + sent, left) == left;
}

bool writeOut(QIODevice &device)
{
    auto *const socket = qobject_cast<QTcpSocket *>(&device);
    if (socket ? Velno::writeOut(*socket, QDeadlineTimer(sendTimeout)) : device.bytesToWrite() == 0)
        return true;
    return brokenBy(isOpen(device) ? VelnoCause_NotSentInTime : VelnoCause_ClosedBeforeSending);
}

/** @param timeout  ms for each wait */
bool waitForBytes(QIODevice &device, qint64 count, quint32 timeout)
{
    while (device.bytesAvailable() < count) {
        if (!waitForMore(device, deadlineAfter(timeout)))
            return device.bytesAvailable() >= count;
    }
    return true;
}

/** Waits for a frame and takes its payload if all of it is there at once, as it nearly always is. */
bool takeWholeFrame(const QTcpSocket &socket, QByteArray *payload)
{
    std::array<char, 2048> bytes; // no reply of today is as long
    if (!waitUntilReadable(socket, deadlineAfter(noTimeLimit)))
        return false;
    const qint64 there = peekDirectly(socket, bytes.data(), qint64(bytes.size()));
    if (there < lengthSize)
        return false;
    const qint64 length = qFromBigEndian<quint32>(bytes.data());
    if (length > there - lengthSize)
        return false;
    receiveDirectly(socket, bytes.data(), lengthSize + length);
    *payload = QByteArray(bytes.data() + lengthSize, qsizetype(length));
    return true;
}

/** Notes why no more of an answer came. @return false */
bool stoppedWithin(const QIODevice &device)
{
    return brokenBy(isOpen(device) ? VelnoCause_SilentRegister : VelnoCause_ClosedWhileWaiting);
}

/** One frame's payload, keep-alives included. */
bool receivePayload(QIODevice &device, quint32 timeout, QByteArray *payload)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    if (socket && takeWholeFrame(*socket, payload))
        return true;
    // The cashier may have to act before the register answers, so the first byte has all the time.
    if (!waitForBytes(device, 1, noTimeLimit) || !waitForBytes(device, lengthSize, timeout))
        return stoppedWithin(device);
    const QByteArray prefix = device.peek(lengthSize);
    if (prefix.size() < lengthSize)
        return stoppedWithin(device);
    const qint64 length = qFromBigEndian<quint32>(prefix.constData());
    if (length > largestPayload)
        return brokenBy(VelnoCause_AnswerTooLong);
    if (!waitForBytes(device, length + lengthSize, timeout))
        return stoppedWithin(device);
    device.skip(lengthSize);
    *payload = device.read(length);
    return true;
}

bool sendFrame(QIODevice &device, const QByteArray &payload)
{
    if (isWaitOver() || !device.isOpen())
        return brokenBy(VelnoCause_ClosedBeforeSending);
    if (!discardUnread(device))
        return false;
    if (!isOpen(device))
        return brokenBy(VelnoCause_ClosedBeforeSending);
    QByteArray frame;
    frame.reserve(lengthSize + payload.size());
    frame.resize(lengthSize);
    qToBigEndian(quint32(payload.size()), frame.data());
    frame += payload;
    return (write(device, frame) || brokenBy(VelnoCause_WriteRefused)) && writeOut(device);
}

/** One payload that is no keep-alive; written on success alone. */
bool receiveAnswer(QIODevice &device, quint32 timeout, QByteArray *answer)
{
    const QByteArray keepAlive = QByteArrayLiteral("\xDE\xAD\xBE\xEF");
    QByteArray payload;
    do {
        if (isWaitOver() || !device.isOpen())
            return brokenBy(VelnoCause_ClosedWhileWaiting);
        if (!receivePayload(device, timeout, &payload))
            return false;
    } while (payload == keepAlive);
    *answer = payload;
    return true;
}

// Connecting --------------------------------------------------------------------------------------------

/** Where a register is to be met. */
struct Route
{
    bool throughRelay;
    QByteArray serialNo;
    const char *address;
    quint16 port;
    quint32 timeout;

    /** @return a Result */
    int connect(unsigned int *handle) const
    {
        if (throughRelay)
            return connectToTsm(serialNo, relayTimeout, handle) == 0 ? Success : int(ConnectionFailed);
        const int status = velno_network_accept(address, port, int(timeout), handle);
        if (status == 0)
            return Success;
        return failedBy(status < firstBadNetworkStatus ? BadValue : ConnectionFailed,
                        causeOfWait(listeningCauses + status));
    }
};

/** SHA-256 of this program's executable file, made once; empty when it cannot be read. */
QByteArray applicationHash()
{
    static QByteArray hash;
    if (hash.isEmpty()) {
        QFile file(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
        if (file.open(QIODevice::ReadOnly))
            hash = sha256Sum(file);
    }
    return hash;
}

/** Tells the register, on its first connection, that this side holds no keys for it. */
bool announceUnpaired(const QByteArray &serialNo)
{
    return send_to_device(library().connections.value(serialNo), frameOfNoKeys(activeRecord().registerData));
}

int exchangeKeys(const Route &route, const QByteArray &hash)
{
    const QByteArray terminalId = macAddress();
    const auto pairOver = [&](auto connection) {
        return keepingNumberFormat([&] {
            return GMP3_KeyExchange_Server(activeRecord(), connection, route.serialNo.constData(),
                                           terminalId.constData(), hash, library().answerLimit);
        });
    };
    if (!route.throughRelay) {
        const int result = pairOver(route.port);
        // The session keeps the connection that it accepted; it must end on the thread that it began on.
        if (connection_handle != 0)
            velno_network_disconnect(connection_handle);
        connection_handle = 0;
        return result == 0 ? Success : failedBy(PairingFailed, causeOfWait(result));
    }
    unsigned int handle = 0;
    if (route.connect(&handle) != Success)
        return ConnectionFailed;
    const int result = pairOver(quint32(handle));
    return result == 0 ? Success : failedBy(PairingFailed, causeOfWait(result));
}

/** Gives the active register its connection; one that nobody takes is closed. */
bool handOver(unsigned int handle)
{
    if (velno_set_connection(handle) == 0)
        return true;
    velno_network_disconnect(handle);
    return brokenBy(VelnoCause_HandOverFailed);
}

/** From the first connection to the keys; leaves no record behind when the register did not follow. */
int pairOn(unsigned int firstConnection, const Route &route)
{
    if (!handOver(firstConnection))
        return ConnectionFailed;
    const QByteArray hash = applicationHash();
    if (hash.isEmpty()) {
        closeConnection();
        return failedBy(NoApplicationHash, VelnoCause_ProgramUnreadable);
    }
    activeRecord().registerData = route.serialNo;
    const bool announced = announceUnpaired(route.serialNo);
    closeConnection();
    const int result = announced ? exchangeKeys(route, hash) : ConnectionFailed;
    if (result != Success)
        library().pairingRecords.remove(route.serialNo);
    return result;
}

int connectDataConnection(unsigned int handle)
{
    if (handOver(handle))
        return Success;
    // Also of a register that was paired: it is then paired again next time.
    library().pairingRecords.remove(library().activeDevice);
    return ConnectionFailed;
}

int connectOn(const Route &route)
{
    const bool paired = !library().pairingRecords[route.serialNo].aesKey.isEmpty();
    unsigned int handle = 0;
    if (const int result = route.connect(&handle); result != Success)
        return result;

    QScopedValueRollback active(library().activeDevice, route.serialNo);
    if (!paired) {
        if (const int result = pairOn(handle, route); result != Success)
            return result;
        if (const int result = route.connect(&handle); result != Success) {
            library().pairingRecords.remove(route.serialNo);
            return result;
        }
    }
    const int result = connectDataConnection(handle);
    if (result == Success)
        active.commit();
    return result;
}

} // namespace

int ConnectionHelper::connectToDevice(const QByteArray &serialNo, const char *address, quint16 port,
                                      quint32 timeout)
{
    const bool throughRelay = address && std::strncmp(address, relayAddress, sizeof relayAddress - 1) == 0;
    if (!throughRelay && port == 0)
        return failed(BadValue, 0x402);
    closeConnection(serialNo);
    return connectOn({throughRelay, serialNo, address, port, timeout});
}

void ConnectionHelper::closeConnection(const QByteArray &serialNo)
{
    const QPointer<QIODevice> device = library().connections.take(serialNo);
    if (!device)
        return;
    disconnectFromDevice(device);
    delete device.data();
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
