// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"

using namespace Velno::Ext;

void velnoext_interrupt(void)
{
    if (Velno::Interruption *const interruption = interruptionOfCalls())
        interruption->request();
}

int velnoext_set_answer_limit(unsigned int ms)
{
    const PublicCall call;
    if (ms == 0)
        return failed(BadValue, 0x414);
    library().answerLimit = ms;
    return Success;
}

void velnoext_set_log(void (*line)(const char *text, void *context), void *context)
{
    const QMutexLocker lock(&library().connectionMutex); // no line is on its way to the one before
    setLog(line, context);
}
