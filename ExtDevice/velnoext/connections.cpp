#include "ExtDevice/velnoext/connections.h"

#include "ExtDevice/network/local_interfaces.h"
#include "ExtDevice/network/socket_waits.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/connection_helper.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <QThread>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>

namespace Velno::Ext {

namespace {

constexpr int disconnectTimeout = 30'000;
constexpr unsigned int relayAnswerTimeout = 5000;
constexpr int noConnection = 6;     // as the transport says it
constexpr int closedConnection = 5; // likewise

/** Lets the wait for a register end that vanished from the network without closing. */
void watchForVanishedPeer(QTcpSocket &socket)
{
    const auto descriptor = int(socket.socketDescriptor());
    const auto set = [descriptor](int level, int option, int value) {
        setsockopt(descriptor, level, option, &value, sizeof value);
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 30);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set(IPPROTO_TCP, TCP_KEEPCNT, 3);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, 60'000);
}

void prepareSocket(QTcpSocket &socket)
{
    watchForVanishedPeer(socket);
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    // A register that talks without being asked cannot fill the memory.
    socket.setReadBufferSize(largestPayload + 4);
}

/** The relay's answer, which may come in pieces. @return 0 or the status of the transport */
int readAnswer(unsigned int handle, QByteArray *answer)
{
    const QDeadlineTimer deadline{qint64(relayAnswerTimeout)};
    int received = 0;
    while (received < answer->size()) {
        int count = int(answer->size()) - received;
        if (const int status = velno_network_read(handle, unsigned(deadline.remainingTime()),
                                                  answer->data() + received, &count);
            status != 0)
            return status;
        if (count <= 0)
            return closedConnection;
        received += count;
    }
    return 0;
}

/** Names the register. @return 0, or why the relay does not lead to it */
int nameToRelay(unsigned int handle, const QByteArray &serialNo)
{
    const int size = int(serialNo.size());
    int status = velno_network_write(handle, relayAnswerTimeout, serialNo.constData(), size);
    QByteArray answer(size, Qt::Uninitialized);
    if (status == 0)
        status = readAnswer(handle, &answer);
    if (status != 0)
        return status == closedConnection ? VelnoCause_RelayUnknownRegister : VelnoCause_RelaySilent;
    return answer == serialNo ? VelnoCause_None : VelnoCause_RelayWrongAnswer;
}

/** Why the relay could not be reached, by the status of the transport. */
int causeOfNoRelay(int status)
{
    return status == noConnection ? VelnoCause_RelayNotAnswering : VelnoCause_RelayUnreachable;
}

/** False when the process may not have another thread. */
bool startWorker()
{
    LibraryState &state = library();
    if (!state.connectionThread) {
        velno_network_set_receiver([](QTcpSocket *socket) { setConnection(socket); });
        state.connectionThread = ConnectionThread::start();
    }
    return state.connectionThread != nullptr;
}

/** Ends a register's connection, and with the last one the library's thread. */
void closeDevice(const QByteArray &serialNo)
{
    LibraryState &state = library();
    onConnectionThread(
        [&serialNo] {
            ConnectionHelper::closeConnection(serialNo);
            return true;
        },
        false);
    if (state.connections.isEmpty())
        state.connectionThread.reset();
    if (state.activeDevice == serialNo)
        state.activeDevice.clear();
}

/** velnoext_close() under the lock. */
void closeActive()
{
    LibraryState &state = library();
    const QByteArray serialNo = state.activeDevice;
    forgetFailure();
    if (isSpecialApplication())
        state.pairingRecords.remove(serialNo);
    closeDevice(serialNo);
}

} // namespace

bool send_to_device(QIODevice *connection, const QByteArray &payload)
{
    return onConnectionThread([&] { return ConnectionHelper::send(connection, payload); }, false);
}

bool get_from_device(unsigned int timeout, QIODevice *connection, QByteArray *payload)
{
    return onConnectionThread([&] { return ConnectionHelper::receive(timeout, connection, payload); }, false);
}

void closeConnection()
{
    if (library().activeDevice.isEmpty())
        return;
    onConnectionThread(
        [] {
            ConnectionHelper::closeConnection(library().activeDevice);
            return true;
        },
        false);
}

void disconnectFromDevice(QIODevice *device)
{
    auto *const socket = qobject_cast<QTcpSocket *>(device);
    if (!socket)
        return;
    socket->setParent(nullptr);
    closeSocket(*socket, QDeadlineTimer(disconnectTimeout));
}

void setConnection(QIODevice *device)
{
    LibraryState &state = library();
    if (state.activeDevice.isEmpty()) {
        disconnectFromDevice(device);
        device->deleteLater();
        return;
    }
    closeConnection();
    state.connections.insert(state.activeDevice, device);
    if (auto *const socket = qobject_cast<QTcpSocket *>(device))
        prepareSocket(*socket);
    QCoreApplication *const application = QCoreApplication::instance();
    if (application && QThread::currentThread() == application->thread())
        device->setParent(application);
    device->setObjectName(isSpecialApplication() ? QStringLiteral("__--dcn--__")
                                                 : QString::fromLatin1(state.activeDevice.constData()));
}

int connectToTsm(const QByteArray &serialNo, unsigned int timeout, unsigned int *handle)
{
    const unsigned short port = library().appNo == 999999 ? 50900 : 50902;
    unsigned int opened = 0;
    const int status = velno_network_connect(VELNO_TSM_RELAY_ADDRESS, port, timeout, &opened);
    if (status != 0) {
        failedBy(ConnectionFailed, causeOfWait(causeOfNoRelay(status)));
        return noConnection;
    }
    if (const int cause = nameToRelay(opened, serialNo); cause != VelnoCause_None) {
        velno_network_disconnect(opened);
        failedBy(ConnectionFailed, causeOfWait(cause));
        return noConnection;
    }
    *handle = opened;
    return 0;
}

int causeOfWait(int seen)
{
    if (library().interruption.isRequested())
        return VelnoCause_Interrupted;
    return isWaitOver() ? int(VelnoCause_AnswerLimitPassed) : seen;
}

QByteArray macAddress()
{
    static QByteArray address;
    if (!address.isEmpty())
        return address;
    if (const QList<LocalInterface> interfaces = localInterfaces(); !interfaces.isEmpty())
        address = interfaces.constFirst().hardwareAddress.toLatin1();
    return address;
}

bool isValidId(const QByteArray &id)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    if (id.size() != 11 || id.at(0) == '0' || !std::all_of(id.cbegin(), id.cend(), isDigit))
        return false;
    const auto digit = [&id](int index) { return id.at(index) - '0'; };
    const int odd = digit(0) + digit(2) + digit(4) + digit(6) + digit(8);
    const int even = digit(1) + digit(3) + digit(5) + digit(7);
    // A negative difference leaves a negative remainder, which no digit equals: such numbers are refused.
    return (odd + even + digit(9)) % 10 == digit(10) && (7 * odd - even) % 10 == digit(9);
}

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_error_detail(void)
{
    return library().errorDetail;
}

int velnoext_cause(void)
{
    return library().cause;
}

int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address, unsigned short port,
                        unsigned int timeout)
{
    LibraryState &state = library();
    const PublicCall call;
    forgetFailure();
    if (!serialNo)
        return failed(NullArgument, 0x300);
    if (!address)
        return failed(NullArgument, 0x301);
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    state.appNo = appNo;
    if (!startWorker())
        return failedBy(NotReady, VelnoCause_NoThread);
    return onConnectionThread(
        [&] { return ConnectionHelper::connectToDevice(serialNo, address, port, timeout); }, int(NotReady));
}

int velnoext_set_active_device(const char *serialNo)
{
    LibraryState &state = library();
    const PublicCall call;
    forgetFailure();
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    if (!state.connections.contains(serialNo))
        return failedBy(NotReady, VelnoCause_NotConnected);
    state.activeDevice = serialNo;
    return Success;
}

int velnoext_active_device(char *buffer)
{
    LibraryState &state = library();
    const PublicCall call;
    forgetFailure();
    if (!buffer)
        return failed(NullArgument, 0x300);
    if (state.activeDevice.isEmpty())
        return failedBy(NotReady, VelnoCause_NoActiveDevice);
    qstrcpy(buffer, state.activeDevice.constData());
    return Success;
}

int velnoext_forget_device(const char *serialNo)
{
    LibraryState &state = library();
    const PublicCall call;
    forgetFailure();
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    const bool connected = state.connections.contains(serialNo);
    const bool paired = !state.pairingRecords.take(serialNo).aesKey.isEmpty();
    if (!connected && !paired)
        return failedBy(NotReady, VelnoCause_KeysAbsent);
    closeDevice(serialNo);
    return Success;
}

void velnoext_close(void)
{
    const PublicCall call;
    closeActive();
}

void velnoext_close_all(void)
{
    LibraryState &state = library();
    // One register per turn of the lock, so that calls of other threads can pass in between.
    for (;;) {
        const PublicCall call;
        forgetFailure();
        if (state.connections.isEmpty())
            return;
        state.activeDevice = state.connections.constBegin().key();
        closeActive();
    }
}
