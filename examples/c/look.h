/*
 * Looking at the register: whether a sale is open, which one, and what became of a receipt. A look changes
 * nothing, so it does no harm. docs/recovery.md says what the answers prove.
 */
#ifndef LOOK_H
#define LOOK_H

#include "connection.h"

/** Results of a look, beside 0 and the codes of a connection that cannot be had. */
enum {
    notTold = 105,       /**< the register is busy, or refuses to tell: look again later */
    personMustLook = 106 /**< it says no to the receipt, and nothing proves that this no is news of it */
};

typedef enum Found {
    FoundNoSale,   /**< no sale is open; no receipt was asked for */
    FoundOpen,     /**< a sale is open: the one that was asked for, or any if none was */
    FoundClosed,   /**< the receipt counts; whether it is printed is another matter */
    FoundCancelled /**< the receipt counts for nothing: certainly with cancelAnswered, else probably */
} Found;

typedef struct Question
{
    VelnoReceiptRef receipt; /**< of which it is asked; 0, 0: whether any sale is open */
    VelnoReceiptRef known;   /**< one that is certainly closed, for counter-questions; 0, 0: none */
    int cancelAnswered;      /**< the register has answered that it cancelled this one */
} Question;

typedef struct View
{
    Found found;
    VelnoReceiptRef open;      /**< of the open sale */
    VelnoEcrSaleTotals totals; /**< of what was found open or closed; otherwise not set */
    int reason;                /**< the register's code behind notTold */
} View;

/**
 * Until it is known how things stand. Takes a second for a cancelled receipt, half a minute at a busy
 * register.
 *
 * @param failures  as for prepareToRepeat()
 * @return 0, notTold, personMustLook, or the code with which the connection was given up
 */
int look(Register *reg, const Question *question, View *view, int *failures);

#endif
