// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/item_stream.h"
#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QtEndian>

/**
 * One command: a request and its reply over the active register's connection, encrypted and authenticated.
 * The lock is the caller's. What a plaintext holds is in the tables of protocol_table.h.
 */
namespace Velno::Ext {

/** Encrypts a plaintext for the active register into a GMP3 frame; empty when that fails. */
QByteArray prepareTlvElements(const QByteArray &plaintext);

/** Checks, authenticates and decrypts a frame of the active register. @return 0, 11 or 12 */
int parseTlvElements(const QByteArray &frame, QByteArray *plaintext);

/** Sends the request and waits for the reply, which is written on success alone. @return 0, 2, 11 or 12 */
int send_and_receive_encrypted(unsigned int timeout, QIODevice *device, const QByteArray &request,
                               QByteArray *reply);

/** Why no register can be asked; 0 when one can. */
int causeOfNotReady();

/**
 * What every command starts with.
 *
 * @param pointers  that its caller has to give, in the order in which they are asked for
 * @return 0; 1: not initialised or not paired; 2: not connected; 3: as checkPointers()
 */
int beginCommand(std::initializer_list<Required> pointers = {});

using GMP::itemBytes;

/** A request: the command's code, most often alone, and its items. */
template <typename... Items>
QByteArray requestOf(VelnoExtMessage code, const Items &...items)
{
    if constexpr (sizeof...(items) > 0)
        return itemBytes(qint32(code), items...);
    QByteArray bytes(sizeof(qint32), Qt::Uninitialized); // as the stream writes it, at a tenth of the cost
    qToBigEndian(qint32(code), bytes.data());
    return bytes;
}

/** Reads the items of a reply one after the other. They count only while result() is 0. */
class ReplyReader
{
public:
    explicit ReplyReader(const QByteArray &reply);

    template <typename Item>
    ReplyReader &operator>>(Item &item)
    {
        m_stream >> item;
        return *this;
    }
    /** Memory is taken only for items that are there, whatever number is announced. */
    ReplyReader &operator>>(QVector<int> &list);
    ReplyReader &operator>>(VelnoEcrSaleTotals &totals);

    /** Whether all items that were asked for were there. */
    bool isComplete() const;

    /** @return 0, or 5 once an item was missing; sets the cause then */
    Result result() const;

private:
    QDataStream m_stream;
};

/** Runs a request against the active register. @return 0, 2, 11 or 12 */
int runCommand(unsigned int timeout, const QByteArray &request, QByteArray *reply);

/** Runs a request and reads its reply, which begins with these items. @return 0, 2, 5, 11 or 12 */
template <typename... Items>
int runAndRead(unsigned int timeout, const QByteArray &request, Items &...items)
{
    QByteArray reply;
    if (const int result = runCommand(timeout, request, &reply); result != Success)
        return result;
    ReplyReader reader(reply);
    (reader >> ... >> items);
    return reader.result();
}

/** Runs a request whose reply is a flag. @return 0; `otherwise`, 8 or 9, when it is false; 2, 5, 11 or 12 */
int runFlagCommand(unsigned int timeout, const QByteArray &request, Result otherwise = Refused);

/** Sends a request of which no answer is expected. @return 0, 2 or 11 */
int sendCommand(const QByteArray &request);

} // namespace Velno::Ext
