#include "ExtDevice/velnoext/library_state.h"

#include <QThread>

namespace Velno::Ext {

namespace {

// Qt takes the first thread that uses it for the one that an application object belongs on. That is to be the
// thread that loads this library, and not the library's own.
[[maybe_unused]] const QThread *const loadingThread = QThread::currentThread();

std::atomic<Interruption *> ofCalls = nullptr; // a signal handler must not make the state

LibraryState *makeState()
{
    auto *const state = new LibraryState;
    ofCalls = &state->interruption;
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
}

Interruption *interruptionOfCalls()
{
    return ofCalls;
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

void forgetFailure()
{
    library().errorDetail = 0;
    library().cause = VelnoCause_None;
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
    if (!serialNo)
        return failed(NullArgument, 0x300);
    if (qstrnlen(serialNo, serialNoSize + 1) != serialNoSize)
        return failed(BadValue, 0x400);
    return Success;
}

} // namespace Velno::Ext
