#include "ExtDevice/velnoext/connections.h"

#include "ExtDevice/network/local_interfaces.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/connection_helper.h"
#include "ExtDevice/velnoext/quiet_dispatcher.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpSocket>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <clocale>
#include <memory>
#include <openssl/crypto.h>
#include <string>

namespace Velno::Ext {

namespace {

constexpr int disconnectTimeout = 30'000;
constexpr int threadTimeout = 1000;
constexpr unsigned int relayAnswerTimeout = 5000;
constexpr int noConnection = 6; // as the transport says it

bool isTcpSocketOpen(const QTcpSocket &socket)
{
    return socket.state() == QAbstractSocket::ConnectedState ||
           socket.state() == QAbstractSocket::ClosingState;
}

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

/** The relay's answer, which may come in pieces. */
QByteArray readAnswer(unsigned int handle, int size)
{
    QByteArray answer(size, Qt::Uninitialized);
    const QDeadlineTimer deadline{qint64(relayAnswerTimeout)};
    int received = 0;
    while (received < size) {
        int count = size - received;
        if (velno_network_read(handle, unsigned(deadline.remainingTime()), answer.data() + received,
                               &count) != 0 ||
            count <= 0)
            return {};
        received += count;
    }
    return answer;
}

bool namedToRelay(unsigned int handle, const QByteArray &serialNo)
{
    const int size = int(serialNo.size());
    return velno_network_write(handle, relayAnswerTimeout, serialNo.constData(), size) == 0 &&
           readAnswer(handle, size) == serialNo;
}

/** False, and nothing is kept, when the process may not have another thread. */
bool startWorker()
{
    LibraryState &state = library();
    if (state.helper)
        return true;
    velno_network_set_receiver([](QTcpSocket *socket) { setConnection(socket); });
    auto thread = std::make_unique<QThread>();
    auto *const dispatcher = new QuietDispatcher;
    thread->setEventDispatcher(dispatcher);
    // wait() returns before the system clears up behind the thread, and the process may be ending by then.
    QObject::connect(thread.get(), &QThread::finished, OPENSSL_thread_stop);
    thread->start();
    if (!thread->isRunning()) { // a call to it would wait for ever
        delete dispatcher;      // as the thread would at its end
        return false;
    }
    state.connectionThread = thread.release();
    state.helper = new ConnectionHelper;
    state.helper->moveToThread(state.connectionThread);
    return true;
}

void stopWorker()
{
    LibraryState &state = library();
    if (state.connectionThread) {
        state.connectionThread->quit();
        // Deleting a thread that still runs would end the process; it is idle here, so it does end.
        const bool ended = state.connectionThread->wait(threadTimeout);
        delete state.helper;
        if (ended)
            delete state.connectionThread;
    }
    state.helper = nullptr;
    state.connectionThread = nullptr;
    delete state.application;
    state.application = nullptr;
}

void ensureApplication()
{
    static int argumentCount = 0;
    if (QCoreApplication::instance())
        return;
    // Qt sets the process's locale from the environment, which would change how the host writes its numbers.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    library().application = new QCoreApplication(argumentCount, nullptr);
    std::setlocale(LC_ALL, before.c_str());
}

/** velnoext_close() under the lock. */
void closeActive()
{
    LibraryState &state = library();
    state.errorDetail = 0;
    if (state.helper)
        ensureApplication(); // the host's may be gone by now, and no thread takes calls without one
    closeConnection();
    if (isSpecialApplication())
        state.pairingRecords.remove(state.activeDevice);
    if (state.connections.isEmpty())
        stopWorker();
    state.activeDevice.clear();
}

} // namespace

QObject *workerObject()
{
    return library().helper;
}

bool send_to_device(QIODevice *connection, const QByteArray &payload)
{
    return onConnectionThread([&] { return library().helper->send(connection, payload); }, false);
}

bool get_from_device(unsigned int timeout, QIODevice *connection, QByteArray *payload)
{
    return onConnectionThread([&] { return library().helper->receive(timeout, connection, payload); }, false);
}

void closeConnection()
{
    if (library().activeDevice.isEmpty())
        return;
    onConnectionThread(
        [] {
            library().helper->closeConnection(library().activeDevice);
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
    if (socket->state() == QAbstractSocket::ConnectedState)
        socket->disconnectFromHost();
    else if (socket->state() == QAbstractSocket::ConnectingState)
        socket->abort();
    if (isTcpSocketOpen(*socket) && !socket->waitForDisconnected(disconnectTimeout))
        socket->abort();
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
    if (velno_network_connect(VELNO_TSM_RELAY_ADDRESS, port, timeout, &opened) != 0)
        return noConnection;
    if (!namedToRelay(opened, serialNo)) {
        velno_network_disconnect(opened);
        return noConnection;
    }
    *handle = opened;
    return 0;
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

const char *velnoext_version(void)
{
    return "0";
}

int velnoext_error_detail(void)
{
    return library().errorDetail;
}

int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address, unsigned short port,
                        unsigned int timeout)
{
    LibraryState &state = library();
    const QMutexLocker lock(&state.connectionMutex);
    state.errorDetail = 0;
    if (!serialNo)
        return failed(NullArgument, 0x300);
    if (!address)
        return failed(NullArgument, 0x301);
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    ensureApplication();
    state.appNo = appNo;
    if (!startWorker())
        return NotReady;
    return onConnectionThread([&] { return state.helper->connectToDevice(serialNo, address, port, timeout); },
                              int(NotReady));
}

int velnoext_set_active_device(const char *serialNo)
{
    LibraryState &state = library();
    const QMutexLocker lock(&state.connectionMutex);
    state.errorDetail = 0;
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    if (!state.connections.contains(serialNo))
        return NotReady;
    state.activeDevice = serialNo;
    return Success;
}

int velnoext_active_device(char *buffer)
{
    LibraryState &state = library();
    const QMutexLocker lock(&state.connectionMutex);
    state.errorDetail = 0;
    if (!buffer)
        return failed(NullArgument, 0x300);
    if (state.activeDevice.isEmpty())
        return NotReady;
    qstrcpy(buffer, state.activeDevice.constData());
    return Success;
}

void velnoext_close(void)
{
    const QMutexLocker lock(&library().connectionMutex);
    closeActive();
}

void velnoext_close_all(void)
{
    LibraryState &state = library();
    // One register per turn of the lock, so that calls of other threads can pass in between.
    for (;;) {
        const QMutexLocker lock(&state.connectionMutex);
        state.errorDetail = 0;
        if (state.connections.isEmpty())
            return;
        state.activeDevice = state.connections.constBegin().key();
        closeActive();
    }
}
