// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/outcome.h"
#include "till/system_clock.h"
#include "till/till.h"

#include <exception>
#include <mutex>
#include <new>

/** What velnotill_open() hands out. */
struct VelnoTill
{
    explicit VelnoTill(const Velno::Receipts::Meeting &meeting);

    /** Calls the listener, if there is one. */
    void tell(const Velno::Receipts::Order &order, Velno::Receipts::Stage stage);

    Velno::Receipts::SystemClock clock;
    Velno::Receipts::Till till;
    std::mutex listenerMutex; // guards the two below, also while the listener is called
    VelnoTillListener listener = nullptr;
    void *context = nullptr;
};

/** The one till of the process, and who is inside its functions. */
namespace Velno::Receipts {

/** Notes the words of velnotill_problem(). @return the result */
int refused(int result, const QString &words);

/** The same with the result's own sentence. */
int refused(int result);

/** The same for NoMemory, without taking any. */
int refusedForMemory() noexcept;

/** The same with the words that came with an outcome; done is no problem. */
int judged(const Outcome &outcome);

/** Hands out a text as velnotill_free_text() takes it back. @return Done or NoMemory */
int handOutText(const QByteArray &words, char **text);

/** Keeps the place of the process's till, from before it is opened until it is closed. @return 0 or
 * AlreadyOpen */
int reservePlace();
void leavePlace();

/** Hands the till out: from now on calls with it are let in. */
void letIn(VelnoTill *till);

/** Lets nobody in any more, and waits until all are out. @return 0 or NotOpen */
int shutOut(VelnoTill *till);

/** Interrupts a till that is open. From a signal handler, too. */
void interruptOpen(const VelnoTill *till) noexcept;

/** A call inside a till's functions. */
class Inside
{
public:
    explicit Inside(const VelnoTill *till);
    ~Inside();
    Q_DISABLE_COPY_MOVE(Inside)

    int refusal() const { return m_refusal; } ///< 0: it has been let in

private:
    int m_refusal;
};

/** A function of the application that is being called: until it returns this thread may call no other. */
class InCallback
{
public:
    InCallback();
    ~InCallback();
    Q_DISABLE_COPY_MOVE(InCallback)

    static bool isNow();
};

/** Runs what a function of velnotill.h does. @return its result; no exception leaves it */
template <typename Work>
int guarded(Work work)
{
    try {
        return InCallback::isNow() ? refused(VelnoTillResult_InCallback) : work();
    } catch (const std::exception &) {
        return refusedForMemory(); // nothing else is thrown here
    }
}

/** The same for a function that takes an open till. */
template <typename Work>
int withTill(VelnoTill *till, Work work)
{
    return guarded([&] {
        const Inside inside(till);
        return inside.refusal() == 0 ? work() : refused(inside.refusal());
    });
}

} // namespace Velno::Receipts
