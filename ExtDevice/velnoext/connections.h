#pragma once

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/thread_handover.h"

#include <QMetaObject>
#include <QThread>

/** Who is connected and active, and the way to the thread that owns the sockets. */
namespace Velno::Ext {

/** A thread's object to invoke on, or null while not initialised. */
QObject *workerObject();

/**
 * Runs a function on connectionThread and waits for its result: at once when this is that thread, since
 * waiting for oneself would never end.
 *
 * @return `otherwise` when the library is not initialised or the thread cannot be reached
 */
template <typename Function, typename Value>
Value onConnectionThread(Function function, Value otherwise)
{
    QObject *const worker = workerObject();
    if (!worker)
        return otherwise;
    if (QThread::currentThread() == worker->thread())
        return function();
    Value result = otherwise;
    const auto work = [&] {
        takeFrom(&library());
        result = function();
        giveTo(&library());
    };
    giveTo(&library());
    const bool invoked =
        QMetaObject::invokeMethod(worker, HandedOver<decltype(work)>{&work}, Qt::BlockingQueuedConnection);
    takeFrom(&library());
    return invoked ? result : otherwise;
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
 * @return 0; 6: nobody there, or the relay does not know the register
 */
int connectToTsm(const QByteArray &serialNo, unsigned int timeout, unsigned int *handle);

/** This terminal's identity: the hardware address of its first network interface, 12 hexadecimal digits. */
QByteArray macAddress();

/** Whether an 11-digit identity number of a person is valid by its two check digits. */
bool isValidId(const QByteArray &id);

} // namespace Velno::Ext
