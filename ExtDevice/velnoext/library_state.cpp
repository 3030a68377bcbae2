// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"

#include "ExtDevice/gmp3/log.h"

#include <QObject>

#include <iostream>

namespace Velno::Ext {

namespace {

// Qt takes the first thread that uses it for the one that an application object belongs on. That is to be the
// thread that loads this library, and not the library's own.
//
// Never deleted, because Qt counts who uses its record of that thread, and takes the thread itself off twice
// when it ends before the process: at its end and at exit. The record would be freed while Qt's plugins still
// use it. Marked as used, so that the one pointer to it stays where leak detectors see it.
[[gnu::used]] const QObject *const onLoadingThread = new QObject;

std::atomic<Interruption *> ofCalls = nullptr; // a signal handler must not make the state

/** std::cout belongs to the application: the engine, left to itself, would change how it writes numbers. */
void print(const char *text, void *)
{
    std::cout << text << std::endl;
}

LibraryState *makeState()
{
    auto *const state = new LibraryState;
    ofCalls = &state->interruption;
    setLog(nullptr, nullptr);
    return state;
}

} // namespace

LibraryState &library()
{
    // Never destroyed: at exit the worker thread may still be running on it.
    static LibraryState *const state = makeState();
    return *state;
}

PublicCall::PublicCall()
    : m_lock(&library().connectionMutex)
    , m_call(library().interruption)
{
    library().errorDetail = 0;
    library().cause = VelnoCause_None;
}

Interruption *interruptionOfCalls()
{
    return ofCalls;
}

void setLog(void (*line)(const char *text, void *context), void *context)
{
    Velno::GMP::setLogReceiver(line ? line : print, context);
}

int failed(Result result, int detail)
{
    library().errorDetail = detail;
    return failedBy(result, result == NullArgument ? VelnoCause_NullArgument : VelnoCause_BadArgument);
}

int failedBy(Result result, int cause)
{
    library().cause = cause;
    return result;
}

int causeOfWait(int seen)
{
    if (library().interruption.isRequested())
        return VelnoCause_Interrupted;
    return isWaitOver() ? int(VelnoCause_AnswerLimitPassed) : seen;
}

bool brokenBy(int seen)
{
    library().cause = causeOfWait(seen);
    return false;
}

int checkPointers(std::initializer_list<Required> pointers)
{
    for (const auto &[pointer, detail] : pointers) {
        if (!pointer)
            return failed(NullArgument, detail);
    }
    return Success;
}

QIODevice *connectionOf(const QByteArray &serialNo)
{
    const auto entry = library().connections.find(serialNo);
    return entry == library().connections.end() ? nullptr : entry->second.get().data();
}

Velno::GMP::MatchExt &activeRecord()
{
    return library().pairingRecords[library().activeDevice];
}

bool isSpecialApplication()
{
    return library().appNo == 999999 || library().appNo == 14242;
}

int checkSerialNo(const char *serialNo)
{
    if (const int result = checkPointers({{serialNo, 0x300}}); result != Success)
        return result;
    if (qstrnlen(serialNo, serialNoSize + 1) != serialNoSize)
        return failed(BadValue, 0x400);
    return Success;
}

} // namespace Velno::Ext
