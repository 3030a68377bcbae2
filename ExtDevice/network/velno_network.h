// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

QT_FORWARD_DECLARE_CLASS(QTcpSocket)

/**
 * TCP connections under 32-bit handles.
 *
 * Every function returns 0 for success, else a status of its own table; on failure outputs are untouched.
 * A handle is never 0. Time-outs are milliseconds; FFFFFFFF waits without limit, anything else above
 * 2,147,483,647 counts as that. "Open" means that the peer has not closed the connection. A socket found
 * closed is deleted at once and its handle forgotten. Of what a peer sends and nobody reads at most 64 KiB
 * are taken from the system. Nothing is logged.
 *
 * Waits end early as interruption.h has it: accepting then returns 8, connecting and writing 7, reading 6.
 *
 * No lock: all calls that share a handle must come from the thread that created it.
 */
extern "C" {

/**
 * Opens a connection to a host name or address. The socket deletes itself once control returns to an event
 * loop after the peer has closed it; its handle is then answered as an unknown one.
 *
 * @return 0; 4: null handle; 2: null host; 3: port 0; 6: refused or timed out; 7: any other socket error
 */
[[nodiscard]] int velno_network_connect(const char *host, unsigned short port, unsigned int timeout,
                                        unsigned int *handle);

/**
 * Listens on a local IPv4 or IPv6 address, accepts one connection and stops listening.
 *
 * @param timeout  ms; -1 waits without limit
 * @return 0; 2: null address; 3: port 0; 4: null handle; 5: no valid address; 6: address in use;
 *         7: nobody connected in time; 8: listening or waiting failed otherwise
 */
[[nodiscard]] int velno_network_accept(const char *address, unsigned short port, int timeout,
                                       unsigned int *handle);

/**
 * Sends all bytes.
 *
 * @return 0; 4: handle 0; 2: null data; 3: no bytes; 5: unknown or closed; 6: the socket refused the write;
 *         7: not written out in time
 */
[[nodiscard]] int velno_network_write(unsigned int handle, unsigned int timeout, const char *data, int size);

/**
 * Reads what has arrived, waiting only when nothing has. Bytes that came before the peer closed are read.
 *
 * @param size  in: room in the buffer; out: number of bytes read, often fewer than the room (-1 when the
 *              socket reports a failed read)
 * @return 0; 4: handle 0; 2: null buffer; 3: null size or no room; 5: unknown or closed; 6: nothing came in
 * time
 */
[[nodiscard]] int velno_network_read(unsigned int handle, unsigned int timeout, char *buffer, int *size);

/**
 * The local address as Latin-1 text without a terminating zero.
 *
 * @param size  in: room, at least one byte more than the text; out: length of the text
 * @return 0; 4: handle 0; 2: null buffer; 3: null size or no room; 6: unknown; 5: closed, or the room is too
 * small
 */
[[nodiscard]] int velno_network_local_address(unsigned int handle, char *buffer, int *size);

/**
 * Closes the connection and forgets the handle, waiting up to 10 s for the last bytes to leave.
 *
 * @return 0; 2: handle 0; 3: unknown, or it was closed already (it is forgotten all the same)
 */
int velno_network_disconnect(unsigned int handle);

/**
 * Hands a connection, open, to the receiver registered below, which owns it from then on; its handle is
 * forgotten here.
 *
 * @return 0; 1: unknown handle, or nobody has registered (the connection then stays here)
 */
[[nodiscard]] int velno_set_connection(unsigned int handle);

/** Takes over a connection; called on the thread that called velno_set_connection(). */
using VelnoConnectionReceiver = void (*)(QTcpSocket *socket);

/** Registers who receives handed-over connections; null for nobody. Returns the receiver before. */
VelnoConnectionReceiver velno_network_set_receiver(VelnoConnectionReceiver receiver);
}
