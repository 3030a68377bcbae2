// SPDX-License-Identifier: Apache-2.0

#include "tests/support/open_till.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QTest>

#include <future>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnotill.h without a register: calls that meet, and those that come too late. */
class TestVelnotillCalls : public QObject
{
    Q_OBJECT

private slots:
    void oneTillInAProcess();
    void closedTillIsNotOpen();
    void callbacksMayCallNoFunction();
    void interruptEndsTheWaitForARegister();
    void closeEndsTheWaitOfOthers();
    void problemBelongsToTheThread();
    void lackOfMemoryIsToldAndDoesNoHarm();
};

namespace {

/** While it lives this process gets hardly any more memory. */
class LittleMemory
{
public:
    LittleMemory()
    {
        getrlimit(RLIMIT_AS, &m_before);
        QFile file(u"/proc/self/statm"_s);
        if (!file.open(QIODevice::ReadOnly))
            return;
        const auto pages = rlim_t(file.readAll().split(' ').constFirst().toULongLong());
        rlimit little = m_before;
        little.rlim_cur = pages * rlim_t(sysconf(_SC_PAGESIZE)) + room;
        setrlimit(RLIMIT_AS, &little);
    }
    ~LittleMemory() { setrlimit(RLIMIT_AS, &m_before); }
    Q_DISABLE_COPY_MOVE(LittleMemory)

    static constexpr rlim_t room = 8 * 1024 * 1024;

private:
    rlimit m_before{};
};

} // namespace

void TestVelnotillCalls::oneTillInAProcess()
{
    OpenTill till(freePort());
    OpenTill second(freePort());
    QVERIFY(till && !second);
    QCOMPARE(second.openAgain(), int(VelnoTillResult_AlreadyOpen));
    till.close();
    QCOMPARE(second.openAgain(), int(VelnoTillResult_Done));
}

void TestVelnotillCalls::closedTillIsNotOpen()
{
    OpenTill till(freePort());
    VelnoTill *const handle = till;
    VelnoTillOutcome outcome = emptyOutcome();
    QCOMPARE(till.close(), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_close(handle), int(VelnoTillResult_NotOpen));
    QCOMPARE(velnotill_sell(handle, "a", aReceipt, &outcome), int(VelnoTillResult_NotOpen));
    QCOMPARE(velnotill_work(handle), int(VelnoTillResult_NotOpen));
    QCOMPARE(velnotill_prune(handle, 0, nullptr), int(VelnoTillResult_NotOpen));
    velnotill_interrupt(handle);
}

void TestVelnotillCalls::callbacksMayCallNoFunction()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    struct
    {
        VelnoTill *till;
        QList<int> results;
    } seen = {till, {}};
    velnotill_list(
        till, VELNOTILL_ALL_STATES,
        [](const char *key, const VelnoTillOutcome *outcome, void *context) {
            auto *const s = static_cast<decltype(seen) *>(context);
            VelnoTillOutcome found = *outcome;
            VelnoTill *other = nullptr;
            char *text = nullptr;
            s->results = {velnotill_find(s->till, key, &found), velnotill_close(s->till),
                          velnotill_open(&other, nullptr), velnotill_check_receipt(aReceipt),
                          velnotill_message(outcome, "en", &text)};
            velnotill_free_text(text);
            velnotill_interrupt(s->till);
        },
        &seen);
    QCOMPARE(seen.results,
             (QList<int>{VelnoTillResult_InCallback, VelnoTillResult_InCallback, VelnoTillResult_InCallback,
                         VelnoTillResult_InCallback, VelnoTillResult_Done}));
    QCOMPARE(till.close(), int(VelnoTillResult_Done)); // behind it, all is as before
}

void TestVelnotillCalls::interruptEndsTheWaitForARegister()
{
    OpenTill till(freePort());
    till.close();
    till.settings().connectTimeout = 0xFFFFFFFF;
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    std::promise<void> connecting;
    velnotill_set_listener(
        till,
        [](const char *, int stage, const VelnoTillOutcome *, void *context) {
            if (stage == VelnoTillStage_Connecting)
                static_cast<std::promise<void> *>(context)->set_value();
        },
        &connecting);
    VelnoTillOutcome outcome = emptyOutcome();
    auto selling =
        std::async(std::launch::async, [&] { return velnotill_sell(till, "a", aReceipt, &outcome); });
    connecting.get_future().wait();
    while (selling.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
        velnotill_interrupt(till); // the first may come before the wait
    QCOMPARE(selling.get(), int(VelnoTillResult_Interrupted));
    QCOMPARE(outcome.state, int(VelnoTillState_Accepted));
    velnotill_interrupt(till); // nothing is under way
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Done));
}

void TestVelnotillCalls::closeEndsTheWaitOfOthers()
{
    OpenTill till(freePort());
    till.close();
    till.settings().connectTimeout = 0xFFFFFFFF;
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    VelnoTill *const handle = till;
    std::vector<std::future<int>> sellers;
    for (const char *const key : {"a", "b", "c"})
        sellers.push_back(std::async(std::launch::async, [handle, key] {
            VelnoTillOutcome outcome = emptyOutcome();
            return velnotill_sell(handle, key, aReceipt, &outcome);
        }));
    QTRY_COMPARE_WITH_TIMEOUT(keysOf(till, VELNOTILL_ALL_STATES).size(), 3, 20'000);
    QCOMPARE(till.close(), int(VelnoTillResult_Done));
    for (auto &seller : sellers)
        QCOMPARE(seller.get(), int(VelnoTillResult_Interrupted));
}

void TestVelnotillCalls::problemBelongsToTheThread()
{
    QCOMPARE(velnotill_close(nullptr), int(VelnoTillResult_NullArgument));
    QByteArray elsewhere = "none";
    std::thread([&elsewhere] { elsewhere = problem(); }).join();
    QCOMPARE(elsewhere, "");
    QCOMPARE(problem(), "A pointer is NULL.");
    QCOMPARE(velnotill_check_slip(aSlip), int(VelnoTillResult_Done));
    QCOMPARE(problem(), "A pointer is NULL."); // of the last that failed
}

/** An exception that leaves a function of a C library ends the program of whoever has called it. */
void TestVelnotillCalls::lackOfMemoryIsToldAndDoesNoHarm()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("NOT TESTED: a sanitizer ends a program that lacks memory");
#endif
    OpenTill till(freePort());
    const QByteArray huge(8 * qsizetype(LittleMemory::room), ' ');
    velnotill_sell(nullptr, nullptr, nullptr, nullptr); // words of another refusal
    int checked = 0;
    int accepted = 0;
    QByteArray words;
    {
        const LittleMemory little;
        checked = velnotill_check_receipt(huge.constData());
        words = problem();
        accepted = velnotill_accept(till, "a", huge.constData(), nullptr);
    }
    QCOMPARE(checked, int(VelnoTillResult_NoMemory));
    QCOMPARE(words, "There is no memory."_ba);
    QCOMPARE(accepted, int(VelnoTillResult_NoMemory));
    QCOMPARE(keysOf(till, VELNOTILL_ALL_STATES), QStringList());
    QCOMPARE(velnotill_check_receipt(huge.constData()), int(VelnoTillResult_BadContent));
    QCOMPARE(velnotill_accept(till, "a", aReceipt, nullptr), int(VelnoTillResult_Done));
}

QTEST_GUILESS_MAIN(TestVelnotillCalls)
#include "tst_velnotill_calls.moc"
