// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/connection_helper.h"
#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QTcpSocket>

namespace Velno::Ext {

namespace {

/** False when the process may not have another thread. */
bool startWorker()
{
    LibraryState &state = library();
    if (!state.connectionThread) {
        velno_network_set_receiver([](QTcpSocket *socket) { setConnection(socket); });
        state.connectionThread = state.connector ? ConnectionThread::none() : ConnectionThread::start();
    }
    return state.connectionThread != nullptr;
}

/** Ends a register's connection, and with the last one the library's thread. */
void closeDevice(const QByteArray &serialNo)
{
    LibraryState &state = library();
    onConnectionThread([&serialNo] { ConnectionHelper::closeConnection(serialNo); });
    if (state.connections.empty())
        state.connectionThread.reset();
    if (state.activeDevice == serialNo)
        state.activeDevice.clear();
}

/** velnoext_close() under the lock. */
void closeActive()
{
    LibraryState &state = library();
    const QByteArray serialNo = state.activeDevice;
    if (isSpecialApplication())
        state.pairingRecords.remove(serialNo);
    closeDevice(serialNo);
}

} // namespace

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
    if (const int result = checkPointers({{serialNo, 0x300}, {address, 0x301}}); result != Success)
        return result;
    if (const int result = checkSerialNo(serialNo); result != Success)
        return result;
    state.appNo = appNo;
    if (!startWorker())
        return failedBy(NotReady, VelnoCause_NoThread);
    int result = NotReady;
    onConnectionThread([&] { result = ConnectionHelper::connectToDevice(serialNo, address, port, timeout); });
    return result;
}

int velnoext_set_active_device(const char *serialNo)
{
    LibraryState &state = library();
    const PublicCall call;
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
    if (const int result = checkPointers({{buffer, 0x300}}); result != Success)
        return result;
    if (state.activeDevice.isEmpty())
        return failedBy(NotReady, VelnoCause_NoActiveDevice);
    qstrcpy(buffer, state.activeDevice.constData());
    return Success;
}

int velnoext_forget_device(const char *serialNo)
{
    LibraryState &state = library();
    const PublicCall call;
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
        if (state.connections.empty())
            return;
        state.activeDevice = state.connections.begin()->first;
        closeActive();
    }
}
