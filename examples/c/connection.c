#include "connection.h"

/* A cable that is pulled or a power that is cut explains a failure or two in a row. */
enum { application = 5, mostFailures = 8, failuresOfLostKeys = 3 };

void tell(const Register *reg, const char *text)
{
    if (reg->notice)
        reg->notice(reg->context, text);
}

int leavesOpen(int code)
{
    return code == 2 || code == 5 || code == 11 || code == 12;
}

static void forgetKeys(const Register *reg)
{
    tell(reg, "The register has lost its keys; pairing anew.");
    velnoext_forget_device(reg->serial);
}

/* A register without its keys connects, and ends the connection at the first command. */
int connectRegister(Register *reg)
{
    int failures, code = 0;
    for (failures = 0; failures < mostFailures; ++failures) {
        if (failures == failuresOfLostKeys)
            forgetKeys(reg);
        code = velnoext_initialize(application, reg->serial, reg->address, reg->port, reg->patience);
        if (code != 0)
            return code; /* it has been waited for */
        ++reg->connections;
        code = velnoext_login(answerTimeout); /* the session may have ended with the register's power */
        if (!leavesOpen(code))
            return code;
    }
    return code;
}

int prepareToRepeat(Register *reg, int code, int *failures)
{
    const int disconnected = code == 1 || code == 2; /* 1: an attempt to connect has failed before */
    if (!(leavesOpen(code) || disconnected) || ++*failures == mostFailures)
        return code;
    if (!disconnected)
        return 0;
    tell(reg, "The connection is lost; connecting again.");
    return connectRegister(reg);
}
