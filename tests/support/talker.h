// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/test_support.h"

#include <QByteArray>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

/** Registers that hold an answer up, and calls that wait for them without a limit. */
namespace TestSupport {

inline constexpr unsigned int forEver = 0xFFFFFFFF;
inline const QByteArray keepAlive = hex("00000004DEADBEEF");

/** Looks again and again until it is so. @return false when it has not become so in time */
bool waitUntil(const std::function<bool()> &isSo);

/** A register on a thread of its own that connects, hears something, and then never stops talking. */
class Talker
{
public:
    /** @param opening  said once, @param again  said every millisecond until the library closes */
    Talker(quint16 port, const QByteArray &opening, const QByteArray &again)
        : m_thread([=, this] { talk(port, opening, again); })
    {
    }
    ~Talker()
    {
        m_stop = true;
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Talker)

    std::atomic<bool> isTalking = false;
    std::atomic<bool> isClosed = false; ///< by the library

private:
    void talk(quint16 port, const QByteArray &opening, const QByteArray &again);

    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

int connectTo(quint16 port);
int loginWithoutLimit();

/** What a peer does that holds an answer up for ever. */
struct Nuisance
{
    const char *name;
    QByteArray opening;
    QByteArray again;
};

inline const std::vector<Nuisance> nuisances{
    {"keep-alives for ever", {}, keepAlive},
    {"a byte a time", hex("00080000"), "x"},
    {"half a keep-alive", keepAlive.first(6), {}},
    {"silence", {}, {}},
};

/** The columns "opening" and "again", and a row for each. */
void addNuisanceRows();

/** Field 1 of an FF8E62, which is no answer to the first question, in a good frame. */
QByteArray wrongKind();

} // namespace TestSupport
