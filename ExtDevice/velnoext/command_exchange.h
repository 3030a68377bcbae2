#pragma once

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QDataStream>

/**
 * One command: a request and its reply over the active register's connection, encrypted and authenticated.
 * The lock is the caller's. A plaintext is a run of QDataStream items in its version 12.
 */
namespace Velno::Ext {

/** The stream version that registers speak. */
constexpr int streamVersion = QDataStream::Qt_4_6;

/** Encrypts a plaintext for the active register into a GMP3 frame; empty when that fails. */
QByteArray prepareTlvElements(const QByteArray &plaintext);

/** Checks, authenticates and decrypts a frame of the active register. @return 0, 11 or 12 */
int parseTlvElements(const QByteArray &frame, QByteArray *plaintext);

/** Sends the request and waits for the reply, which is written on success alone. @return 0, 2, 11 or 12 */
int send_and_receive_encrypted(unsigned int timeout, QIODevice *device, const QByteArray &request,
                               QByteArray *reply);

/** What every command starts with. @return 0; 1: not initialised or not paired; 2: not connected */
int beginCommand();

/** The command's code alone, as most requests are. */
QByteArray requestOf(VelnoExtMessage code);

/** Runs a request against the active register. @return 0, 2, 11 or 12 */
int runCommand(unsigned int timeout, const QByteArray &request, QByteArray *reply);

} // namespace Velno::Ext
