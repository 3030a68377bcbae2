#pragma once

#include "ExtDevice/velnoext/library_state.h"

#include <functional>

/** Who is connected and active, and the way to the thread that owns the sockets. */
namespace Velno::Ext {

/**
 * Runs a function on connectionThread and waits for its result. velnoext_interrupt() ends its waits.
 *
 * @return `otherwise` while the library is not initialised
 */
template <typename Function, typename Value>
Value onConnectionThread(Function function, Value otherwise)
{
    ConnectionThread *const thread = library().connectionThread.get();
    if (!thread)
        return otherwise;
    Value result = otherwise;
    const auto work = [&] {
        const WaitScope scope(library().interruption);
        result = function();
    };
    thread->run(std::ref(work));
    return result;
}

/** Sends one frame. @return false also while not initialised */
bool send_to_device(QIODevice *connection, const QByteArray &payload);

/** Receives one payload; see ConnectionHelper::receive(). @return false also while not initialised */
bool get_from_device(unsigned int timeout, QIODevice *connection, QByteArray *payload);

/**
 * Takes over a connection as that of the active register, in place of the one before. Without an active
 * register it is closed and dropped.
 */
void setConnection(QIODevice *device);

/** Closes the active register's connection, if any. */
void closeConnection();

/** Closes a TCP connection, waiting up to 30 s for it; one that is only being opened is aborted. */
void disconnectFromDevice(QIODevice *device);

/**
 * Opens a connection through the relay server: names the register to it and expects the name back.
 *
 * @return 0; 6: nobody there, or the relay does not know the register; sets the cause then
 */
int connectToTsm(const QByteArray &serialNo, unsigned int timeout, unsigned int *handle);

/** The cause of a wait that brought nothing: an interruption or the answer limit goes before what was seen.
 */
int causeOfWait(int seen);

/** This terminal's identity: the hardware address of its first network interface, 12 hexadecimal digits. */
QByteArray macAddress();

/** Whether an 11-digit identity number of a person is valid by its two check digits. */
bool isValidId(const QByteArray &id);

} // namespace Velno::Ext
