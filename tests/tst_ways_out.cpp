// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/listening.h"
#include "tests/support/registers_key.h"
#include "tests/support/talker.h"
#include "tests/support/test_support.h"

#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <functional>
#include <future>
#include <thread>
#include <vector>

using namespace TestSupport;
using namespace Velno::Ext;
using namespace std::chrono_literals;

namespace {

/** Makes the call, interrupts it once the condition holds, and returns its result. */
int interrupted(const std::function<int()> &call, const std::function<bool()> &condition)
{
    auto interrupting = std::async(std::launch::async, [&] {
        const bool isSo = waitUntil(condition);
        velnoext_interrupt(); // also when it is not so: the call must end for the test to fail
        return isSo;
    });
    const int result = call();
    return interrupting.get() ? result : -1;
}

} // namespace

/** Every wait of the device library ends when it is interrupted. */
class TestWaysOut : public LibraryTest
{
    Q_OBJECT

private slots:
    void init() { velnoext_set_answer_limit(forEver); }

    void listeningEnds();
    void listeningForTheKeyExchangeEnds();
    void listeningForTheDataConnectionEnds();
    void silentPairingEnds();
    void waitForAnAnswerEnds_data();
    void waitForAnAnswerEnds();
    void restOfAnAnswerIsNotWaitedFor();
    void sendingEnds();
    void closingEnds();
    void lateAnswerIsNotTakenForTheNext();
    void commandOfTwoQuestionsAsksNoSecond();
    void interruptWithoutACallTouchesNoLaterOne();
    void interruptTouchesNoCallThatWaitsItsTurn();
    void otherRegistersStayConnected();
    void interruptsFromEightThreads();
};

void TestWaysOut::listeningEnds()
{
    const quint16 port = freePort();
    QCOMPARE(interrupted([=] { return connectTo(port); }, [=] { return isListenedOn(port); }), 2);
    QVERIFY(!isListenedOn(port));
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 1);
}

void TestWaysOut::listeningForTheKeyExchangeEnds()
{
    const quint16 port = freePort();
    const Talker first(port, {}, {}); // the announcement is all that it comes for
    const auto isWaiting = [&] { return bool(first.isClosed) && isListenedOn(port); };
    QCOMPARE(interrupted([=] { return connectTo(port); }, isWaiting), 10);
    QVERIFY(!isListenedOn(port));
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::listeningForTheDataConnectionEnds()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    std::atomic<bool> isConfirmed = false;
    device.pairAndServe(port, 0, [&isConfirmed](HandMadeRegister &self, const Request &request, int) {
        isConfirmed = request.kind == Velno::GMP::PairingConfirm;
        return QList{HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    // The listener of the key exchange is long gone by then.
    const auto isWaiting = [&] { return isConfirmed && isListenedOn(port); };
    QCOMPARE(interrupted([=] { return connectTo(port); }, isWaiting), 2);
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::silentPairingEnds()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    std::atomic<bool> isAsked = false;
    device.pairAndServe(port, 0, [&isAsked](HandMadeRegister &, const Request &, int) {
        isAsked = true;
        return QList<QByteArray>();
    });
    QCOMPARE(interrupted([=] { return connectTo(port); }, [&] { return bool(isAsked); }), 10);
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::waitForAnAnswerEnds_data()
{
    addNuisanceRows();
}

void TestWaysOut::waitForAnAnswerEnds()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    library().pairingRecords[serial] = HandMadeDevice().record;
    const quint16 port = freePort();
    const Talker talker(port, opening, again);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(interrupted(loginWithoutLimit, [&] { return bool(talker.isTalking); }), 2);
    QVERIFY(waitUntil([&] { return bool(talker.isClosed); }));
    QCOMPARE(velnoext_login(brief), 2);              // the connection is gone
    QCOMPARE(velnoext_set_active_device(serial), 0); // and stays listed, as after every 2
}

void TestWaysOut::restOfAnAnswerIsNotWaitedFor()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray answer = HandMadeDevice::framed(device.sealed(plain(true)));
    device.setAnswer([answer](const QByteArray &) { return QList{answer.first(7)}; });
    const auto isAnswered = [&] { return !device.commands().isEmpty(); };
    QCOMPARE(interrupted(loginWithoutLimit, isAnswered), 2);
}

void TestWaysOut::sendingEnds()
{
    HandMadeDevice device;
    QSemaphore readsOn;
    QCOMPARE(connectPaired(device, serial, 14242), 0);
    device.setAnswer([&readsOn](const QByteArray &) {
        readsOn.acquire(); // until then it reads nothing
        return QList<QByteArray>();
    });
    const QByteArray bytes(65'000, 'x');
    std::atomic<int> sent = 0;
    const auto sendUntilItFails = [&] {
        int result = 0;
        while ((result = velnoext_send_data(bytes.constData(), int(bytes.size()))) == 0)
            ++sent;
        return result;
    };
    const auto isStuck = [&, before = -1]() mutable {
        // As many as a moment ago: the system takes no more.
        const bool same = sent == before && sent > 0;
        before = sent;
        std::this_thread::sleep_for(100ms);
        return same;
    };
    const int result = interrupted(sendUntilItFails, isStuck);
    readsOn.release();
    QCOMPARE(result, 2);
    QCOMPARE(velnoext_send_data("x", 1), 2);
}

void TestWaysOut::closingEnds()
{
    HandMadeDevice device;
    QSemaphore readsOn;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([&readsOn](const QByteArray &) {
        readsOn.acquire();
        return QList<QByteArray>();
    });
    QVERIFY(send_to_device(connection(), "go"));
    QVERIFY(!send_to_device(connection(), QByteArray(32 << 20, 'x'))); // closing waits for the rest
    std::atomic<bool> isClosing = false;
    const auto close = [&] {
        isClosing = true;
        velnoext_close();
        return 0;
    };
    const auto isUnderWay = [&] { return bool(isClosing); };
    // The call may begin a moment later than it says, so it is asked until it ends.
    std::atomic<bool> isDone = false;
    auto asking = std::async(std::launch::async, [&] {
        while (!isDone)
            velnoext_interrupt();
    });
    QCOMPARE(interrupted(close, isUnderWay), 0);
    isDone = true;
    readsOn.release();
    QVERIFY(!library().connectionThread);
}

void TestWaysOut::lateAnswerIsNotTakenForTheNext()
{
    HandMadeDevice device;
    library().pairingRecords[serial] = device.record;
    const quint16 port = freePort();
    device.serve(port, 2);
    QCOMPARE(connectTo(port), 0);
    QSemaphore answers;
    std::atomic<bool> isAsked = false;
    const QByteArray late = HandMadeDevice::framed(device.sealed(plain(true, 17)));
    device.setAnswer([&, late](const QByteArray &) {
        isAsked = true;
        answers.acquire();
        return QList{late};
    });
    int z = -1;
    const auto currentZ = [&z] { return velnoext_current_z(forEver, &z); };
    QCOMPARE(interrupted(currentZ, [&] { return bool(isAsked); }), 2);
    QCOMPARE(z, -1);
    answers.release(); // 17 leaves now, for a connection that is closed
    device.answerPlain(plain(true, 18));
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(velnoext_current_z(patience, &z), 0);
    QCOMPARE(z, 18);
}

void TestWaysOut::commandOfTwoQuestionsAsksNoSecond()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray idle = HandMadeDevice::framed(device.sealed(plain(1, QVector<int>())));
    device.setAnswer([idle](const QByteArray &) {
        velnoext_interrupt(); // while the state is asked for: no key may be pressed behind it
        return QList{idle};
    });
    QCOMPARE(velnoext_start_sale(patience), 2);
    QCOMPARE(device.commands().size(), 1);
}

void TestWaysOut::interruptWithoutACallTouchesNoLaterOne()
{
    HandMadeDevice device;
    velnoext_interrupt();
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    velnoext_interrupt();
    QCOMPARE(velnoext_login(patience), 0);
}

void TestWaysOut::interruptTouchesNoCallThatWaitsItsTurn()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(second, otherSerial), 0);
    QCOMPARE(connectPaired(first), 0);
    second.answerPlain(plain(true));
    first.setAnswer([](const QByteArray &) { return QList{QByteArray()}; });
    std::future<int> next;
    const auto isQueued = [&] {
        if (first.commands().isEmpty())
            return false;
        std::promise<void> begun;
        next = std::async(std::launch::async, [&begun] {
            begun.set_value();
            const int found = velnoext_set_active_device(otherSerial);
            return found == 0 ? velnoext_login(patience) : found;
        });
        begun.get_future().wait();
        return true;
    };
    QCOMPARE(interrupted(loginWithoutLimit, isQueued), 2);
    QCOMPARE(next.get(), 0);
}

void TestWaysOut::otherRegistersStayConnected()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(second, otherSerial), 0);
    QCOMPARE(connectPaired(first), 0);
    second.answerPlain(plain(true));
    first.setAnswer([](const QByteArray &) { return QList{QByteArray()}; });
    QCOMPARE(interrupted(loginWithoutLimit, [&] { return !first.commands().isEmpty(); }), 2);
    QCOMPARE(velnoext_set_active_device(otherSerial), 0);
    QCOMPARE(velnoext_login(patience), 0);
}

void TestWaysOut::interruptsFromEightThreads()
{
    HandMadeDevice device;
    std::atomic<bool> isDone = false;
    std::vector<std::thread> askers;
    for (int i = 0; i < 8; ++i)
        askers.emplace_back([&isDone] {
            while (!isDone) {
                velnoext_interrupt();
                std::this_thread::yield();
            }
        });
    device.answerPlain(plain(true));
    library().pairingRecords[serial] = device.record;
    const quint16 port = freePort();
    int surprises = 0;
    for (int i = 0; i < 50; ++i) {
        // Anew each time: a register that connects just as nobody listens any more may never hear of it.
        device.serve(port, 1'000'000);
        const int connected = velnoext_initialize(5, serial, "127.0.0.1", port, 20);
        const int asked = velnoext_login(patience);
        surprises += (connected != 0 && connected != 2) || asked < 0 || asked > 2;
        velnoext_close();
    }
    isDone = true;
    for (std::thread &asker : askers)
        asker.join();
    QCOMPARE(surprises, 0);
    device.serve(port, 1);
    QCOMPARE(connectTo(port), 0); // nothing of it lasts
    QCOMPARE(velnoext_login(patience), 0);
}

QTEST_GUILESS_MAIN(TestWaysOut)
#include "tst_ways_out.moc"
