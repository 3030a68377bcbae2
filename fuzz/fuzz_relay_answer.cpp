// SPDX-License-Identifier: Apache-2.0

// What the device library hears from a relay that it has named a register to. It needs the relay's fixed
// port: run it in a network of its own, as scripts/fuzz and the tests do.
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/relay_route.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/loopback.h"

#include <QCoreApplication>

#include <semaphore>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr quint16 relayPort = 50902;
const QByteArray serial = "UB1234567890"_ba;

/** A relay on a thread of its own: says the same to whoever comes, and goes when the other side does. */
class Relay
{
public:
    Relay()
        : m_listener(relayPort)
        , m_thread([this] { run(); })
    {
        m_thread.detach(); // it lives until the process ends
    }

    /** To the next one who comes. */
    void setAnswers(const QList<QByteArray> &answers)
    {
        m_answers = answers;
        m_given.release();
    }

    void waitUntilDone() { m_done.acquire(); }

private:
    [[noreturn]] void run()
    {
        for (;;) {
            m_given.acquire();
            const Fuzz::Descriptor application = m_listener.accept();
            for (const QByteArray &answer : std::as_const(m_answers))
                application.send(answer);
            application.endWriting();
            while (!application.hasEnded())
                std::this_thread::yield();
            m_done.release();
        }
    }

    Fuzz::Listener m_listener;
    QList<QByteArray> m_answers;
    std::binary_semaphore m_given{0};
    std::binary_semaphore m_done{0};
    std::thread m_thread;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    static Relay *const relay = new Relay; // for as long as its thread
    Fuzz::Input input(data, size);
    QList<QByteArray> answers;
    while (!input.atEnd())
        answers << (input.byte() % 2 == 0 ? input.chunk() : serial.left(input.byte() % 16));
    relay->setAnswers(answers);

    unsigned int handle = 0;
    const int status = Velno::Ext::connectToTsm(serial, 5000, &handle);
    FUZZ_EXPECT((status == 0) == answers.join().startsWith(serial) && (status == 0) == (handle != 0));
    if (status == 0)
        velno_network_disconnect(handle);
    relay->waitUntilDone();
    return 0;
}
