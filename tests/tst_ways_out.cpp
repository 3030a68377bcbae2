#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QSemaphore>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <sys/socket.h>
#include <thread>
#include <vector>

using namespace Velno::Ext;
using namespace TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr unsigned int forEver = 0xFFFFFFFF;
const QByteArray keepAlive = hex("00000004DEADBEEF");

/** Looks again and again until it is so. @return false when it has not become so in time */
bool waitUntil(const std::function<bool()> &isSo)
{
    const QDeadlineTimer deadline{qint64(patience)};
    while (!isSo()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(1ms); // between two looks
    }
    return true;
}

/** Whether this computer listens on the port, as the system tells without connecting. */
bool isListening(quint16 port)
{
    QFile sockets(QStringLiteral("/proc/self/net/tcp"));
    if (!sockets.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted = ':' + QByteArray::number(port, 16).rightJustified(4, '0').toUpper() + ' ';
    for (const QByteArray &line : sockets.readAll().split('\n')) {
        if (line.contains(wanted) && line.contains(":0000 0A "))
            return true;
    }
    return false;
}

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
    void talk(quint16 port, const QByteArray &opening, const QByteArray &again)
    {
        QTcpSocket socket;
        do {
            socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        } while (!m_stop && !socket.waitForConnected(int(patience)));
        while (!m_stop && !socket.waitForReadyRead(50) && isOpen(socket)) {
        }
        socket.write(opening);
        while (!m_stop && isOpen(socket)) {
            socket.write(again);
            socket.waitForBytesWritten(int(patience));
            isTalking = true;
            socket.waitForReadyRead(1);
            socket.readAll();
        }
        isClosed = !isOpen(socket);
    }
    static bool isOpen(const QTcpSocket &socket) { return socket.state() == QAbstractSocket::ConnectedState; }

    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

int connectTo(quint16 port)
{
    return velnoext_initialize(5, serial, "127.0.0.1", port, forEver);
}

int login()
{
    return velnoext_login(forEver);
}

/** What a peer does that holds an answer up for ever. */
struct Nuisance
{
    const char *name;
    QByteArray opening;
    QByteArray again;
};

const std::vector<Nuisance> nuisances{
    {"keep-alives for ever", {}, keepAlive},
    {"a byte a time", hex("00080000"), "x"},
    {"half a keep-alive", keepAlive.first(6), {}},
    {"silence", {}, {}},
};

/** Field 1 of an FF8E62, which is no answer to the first question, in a good frame. */
QByteArray wrongKind()
{
    return HandMadeRegister::frameOf(Velno::GMP::PairingKeyExchange, {{hex("DFEF06"), "00"}});
}

} // namespace

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

    void answerLimitEndsTheWait_data();
    void answerLimitEndsTheWait();
    void answerLimitEndsAPairing_data();
    void answerLimitEndsAPairing();
    void answersWithinTheLimitCount();
    void answerLimitOfNothingIsRefused();

    void forgottenRegisterIsPairedAnew();
    void forgettingLeavesOthersAlone();
    void forgettingNeedsAKnownRegister();

    void logGoesToTheFunctionThatIsSet();
};

void TestWaysOut::listeningEnds()
{
    const quint16 port = freePort();
    QCOMPARE(interrupted([=] { return connectTo(port); }, [=] { return isListening(port); }), 2);
    QVERIFY(!isListening(port));
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 1);
}

void TestWaysOut::listeningForTheKeyExchangeEnds()
{
    const quint16 port = freePort();
    const Talker first(port, {}, {}); // the announcement is all that it comes for
    const auto isWaiting = [&] { return bool(first.isClosed) && isListening(port); };
    QCOMPARE(interrupted([=] { return connectTo(port); }, isWaiting), 10);
    QVERIFY(!isListening(port));
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::listeningForTheDataConnectionEnds()
{
    HandMadeDevice device;
    const quint16 port = freePort();
    std::atomic<bool> isConfirmed = false;
    device.pairAndServe(port, 0, [&isConfirmed](HandMadeRegister &self, const Request &request, int) {
        isConfirmed = request.kind == Velno::GMP::PairingConfirm;
        return QList{HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    // The listener of the key exchange is long gone by then.
    const auto isWaiting = [&] { return isConfirmed && isListening(port); };
    QCOMPARE(interrupted([=] { return connectTo(port); }, isWaiting), 2);
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::silentPairingEnds()
{
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
    QTest::addColumn<QByteArray>("opening");
    QTest::addColumn<QByteArray>("again");

    for (const Nuisance &nuisance : nuisances)
        QTest::newRow(nuisance.name) << nuisance.opening << nuisance.again;
}

void TestWaysOut::waitForAnAnswerEnds()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    library().pairingRecords[serial] = HandMadeDevice().record;
    const quint16 port = freePort();
    const Talker talker(port, opening, again);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(interrupted(login, [&] { return bool(talker.isTalking); }), 2);
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
    QCOMPARE(interrupted(login, isAnswered), 2);
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
    QCOMPARE(interrupted(login, isQueued), 2);
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
    QCOMPARE(interrupted(login, [&] { return !first.commands().isEmpty(); }), 2);
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

void TestWaysOut::answerLimitEndsTheWait_data()
{
    waitForAnAnswerEnds_data();
}

void TestWaysOut::answerLimitEndsTheWait()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    library().pairingRecords[serial] = HandMadeDevice().record;
    const quint16 port = freePort();
    const Talker talker(port, opening, again);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(velnoext_set_answer_limit(50), 0);
    QCOMPARE(velnoext_login(forEver), 2); // without the limit it never returns
    QVERIFY(waitUntil([&] { return bool(talker.isClosed); }));
    QCOMPARE(velnoext_login(forEver), 2);
}

void TestWaysOut::answerLimitEndsAPairing_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::addColumn<QByteArray>("again");

    QTest::newRow("wrong kinds for ever") << QByteArray() << wrongKind();
    QTest::newRow("a byte a time") << hex("0800") << QByteArray("x");
    QTest::newRow("silence") << QByteArray() << QByteArray();
}

void TestWaysOut::answerLimitEndsAPairing()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    const quint16 port = freePort();
    QCOMPARE(velnoext_set_answer_limit(200), 0);
    auto connecting = std::async(std::launch::async, [=] { return connectTo(port); });
    {
        const Talker announced(port, {}, {});
        QVERIFY(waitUntil([&] { return bool(announced.isClosed); }));
    }
    const Talker talker(port, opening, again);
    QCOMPARE(connecting.get(), 10); // at once wrong kinds and bytes are heard for ever, silence for 10 s
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestWaysOut::answersWithinTheLimitCount()
{
    HandMadeDevice device;
    QCOMPARE(velnoext_set_answer_limit(patience), 0);
    const quint16 port = freePort();
    device.pairAndServe(port);
    QCOMPARE(connectTo(port), 0);
    const QByteArray answer = HandMadeDevice::framed(device.sealed(plain(true)));
    device.setAnswer([answer](const QByteArray &) { return QList{keepAlive + keepAlive, answer}; });
    QCOMPARE(velnoext_login(patience), 0);
}

void TestWaysOut::answerLimitOfNothingIsRefused()
{
    QCOMPARE(velnoext_set_answer_limit(0), 4);
    QCOMPARE(velnoext_error_detail(), 0x414);
    QCOMPARE(library().answerLimit, forEver);
    QCOMPARE(velnoext_set_answer_limit(1), 0);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestWaysOut::forgottenRegisterIsPairedAnew()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_forget_device(serial), 0);
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 1);
    QVERIFY(!library().connectionThread); // it was the last
    QCOMPARE(velnoext_forget_device(serial), 1);
    const quint16 port = freePort();
    device.stop();
    device.contacts = 0;
    device.pairAndServe(port);
    QCOMPARE(connectTo(port), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, int(patience)); // told so, keys, data
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestWaysOut::forgettingLeavesOthersAlone()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    QCOMPARE(connectPaired(second, otherSerial), 0);
    second.answerPlain(plain(true));
    QCOMPARE(velnoext_forget_device(serial), 0);
    QCOMPARE(velnoext_login(patience), 0); // the other one is still active
    QCOMPARE(velnoext_set_active_device(serial), 1);
    QVERIFY(!library().pairingRecords.contains(serial));
}

void TestWaysOut::forgettingNeedsAKnownRegister()
{
    QCOMPARE(velnoext_forget_device(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(velnoext_forget_device("UB123"), 4);
    QCOMPARE(velnoext_error_detail(), 0x400);
    QCOMPARE(velnoext_forget_device(serial), 1);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestWaysOut::logGoesToTheFunctionThatIsSet()
{
    HandMadeDevice device;
    HandMadeDevice stranger{otherSerial};
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer(
        [&](const QByteArray &) { return QList{HandMadeDevice::framed(stranger.sealed(plain(true)))}; });
    QByteArray told;
    const LogCapture standardOutput;
    velnoext_set_log([](const char *text, void *context) { *static_cast<QByteArray *>(context) += text; },
                     &told);
    QCOMPARE(velnoext_login(patience), 12);
    QCOMPARE(told, QByteArray("No Serial Match!"));
    QCOMPARE(standardOutput.text(), QByteArray());
    velnoext_set_log(nullptr, nullptr);
    QCOMPARE(velnoext_login(patience), 12);
    QCOMPARE(told, QByteArray("No Serial Match!"));
    QCOMPARE(standardOutput.text(), QByteArray("No Serial Match!\n"));
}

QTEST_GUILESS_MAIN(TestWaysOut)
#include "tst_ways_out.moc"
