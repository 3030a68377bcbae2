// SPDX-License-Identifier: Apache-2.0

/**
 * How long a call goes on after velnoext_interrupt(), for each kind of wait: the longest of 1,000 rounds
 * counts.
 */
#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_socket.h"

#include <QTcpSocket>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int rounds = 1000;
constexpr double goal = 100; // ms
constexpr unsigned int noLimit = 0xFFFFFFFF;
constexpr char serial[] = "UB1234567890";
// Longer than it takes a call to begin its wait; every other request comes while it still begins.
constexpr auto timeToBegin = std::chrono::milliseconds(2);

unsigned short freePort()
{
    return BareListener().port();
}

/** A call that waits until it is interrupted, and who keeps it waiting. */
struct Wait
{
    const char *name;
    std::function<void()> prepare;
    std::function<int()> call;
    int result;
};

unsigned short port = 0;
std::optional<BareSocket> peer;
std::atomic<bool> mayInterrupt =
    false; ///< the call has come to the wait that is measured, or is about to begin

int listen()
{
    return velnoext_initialize(14242, serial, "127.0.0.1", port, noLimit);
}

/** A register that is paired already as far as the library knows, and says nothing. */
void connectSilentRegister()
{
    peer.reset();
    Velno::GMP::MatchExt record;
    record.registerData = serial;
    record.randomDFC10D = record.randomDFC10E = QByteArray(16, 'r');
    record.hmacKey = record.aesKey = QByteArray(32, 'k');
    record.kcvIv = QByteArray(16, 'i');
    Velno::Ext::library().pairingRecords[serial] = record;
    std::thread connecting([] { peer.emplace(BareSocket::connectTo(port)); });
    require(listen() == 0, "the register connects");
    connecting.join();
}

int listenForAnybody()
{
    mayInterrupt = true;
    return listen();
}

int askForZ()
{
    mayInterrupt = true;
    int z = 0;
    return velnoext_current_z(noLimit, &z);
}

/** A register that does not read, and a system that takes nothing more for it. */
void connectFullRegister()
{
    connectSilentRegister();
    static const std::string bytes(64 * 1024, 'x');
    auto *const socket = qobject_cast<QTcpSocket *>(Velno::Ext::connectionOf(serial));
    require(socket, "the register's socket");
    const auto descriptor = int(socket->socketDescriptor());
    while (::send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
    }
}

int sendData()
{
    mayInterrupt = true;
    return velnoext_send_data("x", 1);
}

/** From a first connection that is told so, and then left, the library waits for the key exchange. */
int pairWithNobody()
{
    velnoext_forget_device(serial);
    std::thread connecting([] {
        BareSocket::connectTo(port).readFrame();
        mayInterrupt = true;
    });
    const int result = listen();
    connecting.join();
    return result;
}

/** A register that comes for the key exchange and stays silent. */
int pairWithSilence()
{
    velnoext_forget_device(serial);
    std::thread connecting([] {
        BareSocket::connectTo(port).readFrame();
        peer.emplace(BareSocket::connectTo(port));
        mayInterrupt = true;
    });
    const int result = listen();
    connecting.join();
    return result;
}

double milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

/** One round. @return ms from the request that ended the call to its return */
double interruptOnce(const Wait &wait, int round)
{
    wait.prepare();
    mayInterrupt = false;
    std::atomic<bool> hasReturned = false;
    Clock::time_point returned;
    std::thread caller([&] {
        const int result = wait.call();
        returned = Clock::now();
        require(result == wait.result, wait.name);
        hasReturned = true;
    });
    while (!mayInterrupt)
        std::this_thread::yield();
    if (round % 2 == 0)
        std::this_thread::sleep_for(timeToBegin);
    // A request before the call is under way has no effect, so it is made until one has.
    while (!Velno::Ext::library().interruption.isRequested() && !hasReturned)
        velnoext_interrupt();
    const Clock::time_point asked = Clock::now();
    caller.join();
    return std::max(0.0, milliseconds(returned - asked));
}

bool measure(const Wait &wait)
{
    std::vector<double> times;
    times.reserve(size_t(rounds));
    for (int round = 0; round < rounds; ++round)
        times.push_back(interruptOnce(wait, round));
    std::sort(times.begin(), times.end());
    std::printf("%-44s median %7.3f ms, longest of %d %7.3f ms (goal: at most %.0f)\n", wait.name,
                times[rounds / 2], rounds, times.back(), goal);
    return times.back() <= goal;
}

} // namespace

int main()
{
    velnoext_set_log([](const char *, void *) {}, nullptr);
    port = freePort();
    const auto nothing = [] { velnoext_forget_device(serial); };
    const Wait waits[] = {
        {"a register to connect", nothing, listenForAnybody, 2},
        {"a register to come for the key exchange", [] {}, pairWithNobody, 10},
        {"its answer in the key exchange", [] { peer.reset(); }, pairWithSilence, 10},
        {"its answer to a command", connectSilentRegister, askForZ, 2},
        {"bytes to leave for one that does not read", connectFullRegister, sendData, 2},
    };
    bool isGood = true;
    for (const Wait &wait : waits)
        isGood = measure(wait) && isGood;
    velnoext_close_all();
    return isGood ? 0 : 1;
}
