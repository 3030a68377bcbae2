// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/interruption.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/test_support.h"

#include <QTcpServer>
#include <QTest>

#include <array>
#include <atomic>
#include <csignal>
#include <future>
#include <poll.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace TestSupport;
using Velno::Interruption;
using Velno::WaitScope;

namespace {

constexpr unsigned int patience = 10'000; // ms
constexpr QDeadlineTimer noEnd{QDeadlineTimer::Forever};

/** A pipe that says nothing until it is told to. */
class Pipe
{
public:
    Pipe()
    {
        if (pipe(m_ends.data()) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    int readEnd() const { return m_ends[0]; }
    void speak() const { QCOMPARE(write(m_ends[1], "x", 1), 1); }

private:
    std::array<int, 2> m_ends;
};

bool waitsForEver(const Pipe &pipe)
{
    return Velno::waitFor(pipe.readEnd(), POLLIN, noEnd);
}

Interruption *asked = nullptr;

void ask(int)
{
    asked->request();
}

} // namespace

class TestInterruption : public QObject
{
    Q_OBJECT

private slots:
    void waitEndsWhenItIsAsked();
    void laterWaitsOfTheCallEndAtOnce();
    void requestWithoutACallTouchesNoLaterOne();
    void requestOfACallThatEndedTouchesNoLaterOne();
    void requestsFromManyThreadsEndTheCallUnderWay();
    void signalHandlerMayAsk();
    void signalAloneEndsNoWait();
    void scopesEndWaitsByTheEarliest();
    void threadWithoutAScopeIsNotConcerned();
    void everyWaitOfTheTransportEnds_data();
    void everyWaitOfTheTransportEnds();
};

void TestInterruption::waitEndsWhenItIsAsked()
{
    Interruption interruption;
    const Pipe pipe;
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    auto asking = std::async(std::launch::async, [&] { interruption.request(); });
    QVERIFY(!waitsForEver(pipe)); // the test's own time-out is the other way for this to end
    QVERIFY(interruption.isRequested());
    QVERIFY(Velno::isWaitOver());
}

void TestInterruption::laterWaitsOfTheCallEndAtOnce()
{
    Interruption interruption;
    const Pipe pipe;
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    interruption.request();
    QVERIFY(!waitsForEver(pipe));
    pipe.speak();
    QVERIFY(!waitsForEver(pipe));
}

void TestInterruption::requestWithoutACallTouchesNoLaterOne()
{
    Interruption interruption;
    const Pipe pipe;
    interruption.request();
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    QVERIFY(!interruption.isRequested());
    pipe.speak();
    QVERIFY(waitsForEver(pipe));
}

void TestInterruption::requestOfACallThatEndedTouchesNoLaterOne()
{
    Interruption interruption;
    const Pipe pipe;
    {
        const Interruption::Call call(interruption);
        interruption.request();
    }
    QVERIFY(!interruption.isRequested());
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    // The wake-up of the call before is still there; this wait has to go on behind it.
    QVERIFY(!Velno::waitFor(pipe.readEnd(), POLLIN, QDeadlineTimer(20)));
    QVERIFY(!Velno::isWaitOver());
    pipe.speak();
    QVERIFY(waitsForEver(pipe));
}

void TestInterruption::requestsFromManyThreadsEndTheCallUnderWay()
{
    Interruption interruption;
    const Pipe pipe;
    std::atomic<bool> done = false;
    std::vector<std::thread> askers;
    for (int i = 0; i < 8; ++i)
        askers.emplace_back([&] {
            while (!done)
                interruption.request();
        });
    int ended = 0;
    for (int i = 0; i < 1000; ++i) {
        const Interruption::Call call(interruption);
        const WaitScope scope(interruption);
        ended += !waitsForEver(pipe); // whoever asks last, a request for this call gets through
    }
    done = true;
    for (std::thread &asker : askers)
        asker.join();
    QCOMPARE(ended, 1000);
}

void TestInterruption::signalHandlerMayAsk()
{
    Interruption interruption;
    const Pipe pipe;
    asked = &interruption;
    std::signal(SIGUSR1, ask);
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    const pthread_t waiting = pthread_self();
    auto signalling = std::async(std::launch::async, [&] { pthread_kill(waiting, SIGUSR1); });
    QVERIFY(!waitsForEver(pipe));
    signalling.get();
    std::signal(SIGUSR1, SIG_DFL);
    asked = nullptr;
}

void TestInterruption::signalAloneEndsNoWait()
{
    Interruption interruption;
    const Pipe pipe;
    struct sigaction ignoring = {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGUSR1, &ignoring, nullptr); // without SA_RESTART: poll() returns
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    const pthread_t waiting = pthread_self();
    auto signalling = std::async(std::launch::async, [&] {
        for (int i = 0; i < 20; ++i)
            pthread_kill(waiting, SIGUSR1);
        pipe.speak();
    });
    QVERIFY(waitsForEver(pipe));
    signalling.get();
    std::signal(SIGUSR1, SIG_DFL);
}

void TestInterruption::scopesEndWaitsByTheEarliest()
{
    const Pipe pipe;
    {
        const WaitScope outer{QDeadlineTimer(10)};
        const WaitScope inner{noEnd};
        QVERIFY(!waitsForEver(pipe));
        QVERIFY(Velno::isWaitOver());
    }
    QVERIFY(!Velno::isWaitOver());
    const WaitScope outer{noEnd};
    {
        const WaitScope inner{QDeadlineTimer(10)};
        QVERIFY(!waitsForEver(pipe));
    }
    pipe.speak();
    QVERIFY(waitsForEver(pipe));
}

void TestInterruption::threadWithoutAScopeIsNotConcerned()
{
    Interruption interruption;
    const Pipe pipe;
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    interruption.request();
    pipe.speak();
    QVERIFY(std::async(std::launch::async, [&] { return waitsForEver(pipe); }).get());
}

void TestInterruption::everyWaitOfTheTransportEnds_data()
{
    QTest::addColumn<QByteArray>("wait");
    QTest::addColumn<int>("status");

    QTest::newRow("accept") << QByteArray("accept") << 8;
    QTest::newRow("connect") << QByteArray("connect") << 7;
    QTest::newRow("read") << QByteArray("read") << 6;
    QTest::newRow("write") << QByteArray("write") << 7;
}

void TestInterruption::everyWaitOfTheTransportEnds()
{
    QFETCH(const QByteArray, wait);
    constexpr unsigned int noLimit = 0xFFFFFFFF;
    QTcpServer silent;
    silent.setListenBacklogSize(1);
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    const quint16 port = silent.serverPort();
    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("127.0.0.1", port, patience, &handle), 0);
    // Nobody accepts: the system leaves those unanswered that find the line of waiting ones full.
    std::vector<unsigned int> line;
    unsigned int next = 0;
    while (wait == "connect" && velno_network_connect("127.0.0.1", port, 200, &next) == 0)
        line.push_back(next);

    Interruption interruption;
    const Interruption::Call call(interruption);
    const WaitScope scope(interruption);
    QByteArray bytes(64 << 20, 'x'); // more than the system takes for somebody who does not read
    int size = int(bytes.size());
    auto asking = std::async(std::launch::async, [&] { interruption.request(); });
    int status = 0;
    if (wait == "accept")
        status = velno_network_accept("127.0.0.1", freePort(), -1, &next);
    else if (wait == "connect")
        status = velno_network_connect("127.0.0.1", port, noLimit, &next);
    else if (wait == "read")
        status = velno_network_read(handle, noLimit, bytes.data(), &size);
    else
        status = velno_network_write(handle, noLimit, bytes.constData(), size);
    asking.get();
    QTEST(status, "status");
    velno_network_disconnect(handle); // at once, whatever is left to send
    for (const unsigned int waiting : line)
        velno_network_disconnect(waiting);
}

QTEST_GUILESS_MAIN(TestInterruption)
#include "tst_interruption.moc"
