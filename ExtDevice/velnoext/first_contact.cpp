// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/connection_helper.h"
#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/key_log_wish.h"
#include "ExtDevice/velnoext/relay_route.h"
#include "ExtDevice/velnoext/terminal_identity.h"

#include <QFile>
#include <QScopedValueRollback>

#include <cstring>

using namespace Qt::StringLiterals;

namespace Velno::Ext {

using namespace Velno::GMP;

namespace {

constexpr unsigned int relayTimeout = 2000;
constexpr char relayAddress[] = "255.255.255.255";
constexpr int firstBadNetworkStatus = 6; // statuses below it complain about an argument
constexpr int listeningCauses = 1000;    // + the status is the cause, as it is the code of a pairing

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
        QFile file(QFile::symLinkTarget(u"/proc/self/exe"_s));
        if (file.open(QIODevice::ReadOnly))
            hash = sha256Sum(file);
    }
    return hash;
}

/** Tells the register, on its first connection, that this side holds no keys for it. */
bool announceUnpaired(const QByteArray &serialNo)
{
    return send_to_device(connectionOf(serialNo), frameOfNoKeys(activeRecord().registerData));
}

int exchangeKeys(const Route &route, const QByteArray &hash)
{
    const QByteArray terminalId = macAddress();
    const auto pairOver = [&](auto connection) {
        return GMP3_KeyExchange_Server(activeRecord(), connection, route.serialNo.constData(),
                                       terminalId.constData(), hash, library().answerLimit);
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
    if (result == Success)
        logKeysWhenWished(activeRecord());
    else
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

/** connectOn() for a register in this process. */
int connectInMemory(const QByteArray &serialNo)
{
    LibraryState &state = library();
    MatchExt &record = state.pairingRecords[serialNo];
    const bool paired = !record.aesKey.isEmpty();
    std::unique_ptr<QIODevice> connection;
    if (const int result = state.connector(serialNo, &record, &connection); result != Success) {
        if (!paired)
            state.pairingRecords.remove(serialNo);
        return result;
    }
    state.activeDevice = serialNo;
    setConnection(connection.release());
    return Success;
}

} // namespace

int ConnectionHelper::connectToDevice(const QByteArray &serialNo, const char *address, quint16 port,
                                      quint32 timeout)
{
    const bool throughRelay = address && std::strncmp(address, relayAddress, sizeof relayAddress - 1) == 0;
    if (!throughRelay && port == 0)
        return failed(BadValue, 0x402);
    closeConnection(serialNo);
    if (library().connector)
        return connectInMemory(serialNo);
    return connectOn({throughRelay, serialNo, address, port, timeout});
}

} // namespace Velno::Ext
