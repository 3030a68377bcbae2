#include "ExtDevice/gmp3/log.h"
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
    forgetFailure();
    if (ms == 0)
        return failed(BadValue, 0x414);
    library().answerLimit = ms;
    return Success;
}

void velnoext_set_log(void (*line)(const char *text, void *context), void *context)
{
    const PublicCall call; // no line is under way to the receiver before, nor will one be
    Velno::GMP::setLogReceiver(line, context);
}
