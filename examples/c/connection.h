/*
 * A register that is connected again whenever its connection is lost: what every question to it needs that
 * must have an answer in the end.
 */
#ifndef CONNECTION_H
#define CONNECTION_H

#include <velnoext.h>

enum { answerTimeout = 5000 }; /* ms of silence in the rest of an answer */

/** Where a register is, and who hears of what happens to it. Set what is not used to 0. */
typedef struct Register
{
    const char *serial;  /**< 12 characters */
    const char *address; /**< as for velnoext_initialize() */
    unsigned short port;
    unsigned int patience;                           /**< ms to wait for it to connect */
    void (*notice)(void *context, const char *text); /**< is told in a line what goes on; may be NULL */
    void *context;
    int connections; /**< grows with each one: what was sent on one of them is done or lost on the next */
} Register;

/**
 * Connects it, with the pairing that a first contact needs, and logs in. When that fails three times in a row
 * behind a connection that was made, the keys are forgotten and it is paired anew.
 *
 * @return 0 or the library's code
 */
int connectRegister(Register *reg);

/** Whether a code leaves open what the register has done: 2, 5, 11 and 12. */
int leavesOpen(int code);

/**
 * To be called after a call that failed: connects again if the connection was lost.
 *
 * @param failures  counts them; to be 0 at first
 * @return 0: the same may be asked again; otherwise it is no use: the code to give up with
 */
int prepareToRepeat(Register *reg, int code, int *failures);

/** Tells the listener, if there is one. */
void tell(const Register *reg, const char *text);

#endif
