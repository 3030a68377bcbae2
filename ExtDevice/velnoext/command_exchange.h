// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/item_stream.h"
#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <concepts>
#include <utility>

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
    return itemBytes(qint32(code), items...);
}

/** Reads the items of a reply, which must outlive it, one after the other. They count only while result() is
 * 0; a number that is not there is 0. */
class ReplyReader
{
public:
    explicit ReplyReader(const QByteArray &reply)
        : m_rest(reply)
    {
    }

    template <std::integral Number>
    ReplyReader &operator>>(Number &number)
    {
        return give(GMP::takeNumber<Number>(&m_rest), number);
    }
    ReplyReader &operator>>(bool &flag);
    ReplyReader &operator>>(QByteArray &bytes);
    ReplyReader &operator>>(QVector<int> &list);
    ReplyReader &operator>>(VelnoEcrSaleTotals &totals);

    /** Whether all items that were asked for were there. */
    bool isComplete() const { return m_isComplete; }

    /** @return 0, or 5 once an item was missing; sets the cause then */
    Result result() const;

private:
    template <typename Item>
    ReplyReader &give(std::optional<Item> taken, Item &item)
    {
        if (!taken) {
            m_isComplete = false;
            m_rest = {}; // what follows is not there either
        }
        item = std::move(taken).value_or(Item());
        return *this;
    }

    QByteArrayView m_rest;
    bool m_isComplete = true;
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
