// SPDX-License-Identifier: Apache-2.0

#include "till/open_till.h"

#include "till/words.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <thread>

namespace Velno::Receipts {

namespace {

struct Door
{
    std::mutex mutex; // guards all below
    std::condition_variable somebodyLeft;
    bool isReserved = false;
    const VelnoTill *open = nullptr;
    int inside = 0;
};

/** Never destroyed: at exit another thread may still be inside. */
Door &door()
{
    static auto *const theDoor = new Door;
    return *theDoor;
}

// For signal handlers, which can take no lock.
std::atomic<VelnoTill *> interruptible = nullptr;
std::atomic<int> interrupting = 0;

constexpr std::chrono::milliseconds askAgain{20}; // the work that is meant may only be about to begin

thread_local QByteArray problemWords;
thread_local int callbacks = 0;

} // namespace

int refused(int result, const QString &words)
{
    problemWords = words.toUtf8();
    return result;
}

int refused(int result)
{
    return refused(result, QString::fromUtf8(wordOf(resultWords(), result).english));
}

int refusedForMemory() noexcept
{
    const char *const words = wordOf(resultWords(), VelnoTillResult_NoMemory).english;
    problemWords = QByteArray::fromRawData(words, qsizetype(std::strlen(words)));
    return VelnoTillResult_NoMemory;
}

int judged(const Outcome &outcome)
{
    const int result = int(outcome.result);
    if (outcome.result == Result::Done)
        return result;
    return outcome.words.isEmpty() ? refused(result) : refused(result, outcome.words.join(u'\n'));
}

int reservePlace()
{
    const std::lock_guard lock(door().mutex);
    if (door().isReserved)
        return VelnoTillResult_AlreadyOpen;
    door().isReserved = true;
    return VelnoTillResult_Done;
}

void leavePlace()
{
    const std::lock_guard lock(door().mutex);
    door().isReserved = false;
}

void letIn(VelnoTill *till)
{
    const std::lock_guard lock(door().mutex);
    door().open = till;
    interruptible = till;
}

int shutOut(VelnoTill *till)
{
    std::unique_lock lock(door().mutex);
    if (door().open != till)
        return VelnoTillResult_NotOpen;
    door().open = nullptr;
    while (door().inside > 0) {
        interruptOpen(till);
        door().somebodyLeft.wait_for(lock, askAgain);
    }
    interruptible = nullptr;
    while (interrupting > 0)
        std::this_thread::yield(); // a handler that has just begun: it ends in no time
    return VelnoTillResult_Done;
}

void interruptOpen(const VelnoTill *till) noexcept
{
    ++interrupting;
    VelnoTill *const open = interruptible;
    if (open && open == till)
        open->till.interrupt();
    --interrupting;
}

Inside::Inside(const VelnoTill *till)
    : m_refusal(till ? VelnoTillResult_NotOpen : VelnoTillResult_NullArgument)
{
    const std::lock_guard lock(door().mutex);
    if (!till || door().open != till)
        return;
    ++door().inside;
    m_refusal = VelnoTillResult_Done;
}

Inside::~Inside()
{
    if (m_refusal != VelnoTillResult_Done)
        return;
    const std::lock_guard lock(door().mutex);
    --door().inside;
    door().somebodyLeft.notify_all();
}

InCallback::InCallback()
{
    ++callbacks;
}

InCallback::~InCallback()
{
    --callbacks;
}

bool InCallback::isNow()
{
    return callbacks > 0;
}

} // namespace Velno::Receipts

using namespace Velno::Receipts;

VelnoTill::VelnoTill(const Meeting &meeting)
    : till(meeting, clock)
{
    till.setListener([this](const Order &order, Stage stage) { tell(order, stage); });
}

void VelnoTill::tell(const Order &order, Stage stage)
{
    const std::lock_guard lock(listenerMutex);
    if (!listener)
        return;
    VelnoTillOutcome outcome{};
    outcome.size = sizeof outcome;
    fill(&outcome, order);
    const InCallback inCallback;
    listener(order.key.toUtf8().constData(), int(stage), &outcome, context);
}

const char *velnotill_problem(void)
{
    return problemWords.isNull() ? "" : problemWords.constData();
}
