// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/library_state.h"

#include <functional>

/** The connections of the registers, and the way to the thread that makes and ends them. */
namespace Velno::Ext {

/**
 * Runs a function on connectionThread and waits for its end. velnoext_interrupt() ends its waits.
 *
 * @return false, without running it, while the library is not initialised
 */
bool onConnectionThread(const std::function<void()> &work);

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

} // namespace Velno::Ext
