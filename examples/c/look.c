#define _POSIX_C_SOURCE 199309L /* nanosleep */

#include "look.h"

#include <string.h>
#include <time.h>

/* How often question and counter-question must agree, and how often a refusal is passed over. */
enum { enoughRounds = 10, mostRefusals = 10, mostBusyLooks = 150, busyPause = 200 };

enum { wrongState = 6, notTaken = 7, refused = 8, lookAgain = -1 };

/* What a single look says. */
typedef enum Glance {
    Settled,   /* what was found */
    Busy,      /* nothing, now */
    Refused,   /* the register refused to tell of its open sale */
    NotProven, /* it refused to tell of the receipt, perhaps as it does of others */
    NotClosed  /* likewise, and told of the known one */
} Glance;

typedef struct Tally
{
    int busy, refusals, agreed;
} Tally;

static int isSame(const VelnoReceiptRef *left, const VelnoReceiptRef *right)
{
    return left->first == right->first && left->second == right->second;
}

static int isRefusal(int code)
{
    return code == wrongState || code == notTaken || code == refused;
}

static int askForState(View *view, Glance *glance)
{
    int state, first;
    int code = velnoext_ecr_state(answerTimeout, &state);
    if (code != 0)
        return code;
    view->found = FoundNoSale;
    view->reason = wrongState;
    *glance = state == VelnoEcrState_Idle || state == VelnoEcrState_IdleOtherScreen ? Settled : Busy;
    if (state != VelnoEcrState_SaleOpen)
        return 0;
    code = velnoext_sale_state(answerTimeout, &first, &view->totals, &view->open);
    view->found = FoundOpen;
    view->reason = code;
    *glance = code == 0 ? Settled : code == wrongState ? Busy : Refused; /* 6: it has just ended */
    return isRefusal(code) ? 0 : code;
}

static int askForReceipt(const Question *question, View *view, Glance *glance)
{
    VelnoReceiptRef receipt = question->receipt, known = question->known;
    VelnoEcrSaleTotals ignored;
    int code = velnoext_receipt_data(answerTimeout, &receipt, &view->totals);
    const int isAnswered = code == 0 || question->cancelAnswered;
    view->found = code == 0 ? FoundClosed : FoundCancelled;
    view->reason = code;
    if (code == refused && !isAnswered && known.first != 0)
        code = velnoext_receipt_data(answerTimeout, &known, &ignored);
    *glance = isAnswered ? Settled : code == 0 ? NotClosed : NotProven;
    return code == refused ? 0 : code;
}

static int lookOnce(const Question *question, View *view, Glance *glance)
{
    const int code = askForState(view, glance);
    if (code != 0 || *glance != Settled || question->receipt.first == 0)
        return code;
    if (view->found == FoundOpen && isSame(&view->open, &question->receipt))
        return 0;
    return askForReceipt(question, view, glance);
}

/* A single no may be in passing. While a refusal lasts, the counter-question between two questions meets it
 * too; so each agreement in a row needs a refusal of its own, which began and ended just there. */
static int weigh(Tally *tally, Glance glance)
{
    if (glance == Settled)
        return 0;
    if (glance == NotClosed)
        return ++tally->agreed == enoughRounds ? 0 : lookAgain;
    tally->agreed = 0;
    if (glance == Busy)
        return ++tally->busy == mostBusyLooks ? notTold : lookAgain;
    if (++tally->refusals < mostRefusals)
        return lookAgain;
    return glance == Refused ? notTold : personMustLook;
}

/* Ever longer, so that the questions meet short hindrances and long ones. */
static void pauseBetweenLooks(const Register *reg, const Tally *tally, Glance glance)
{
    struct timespec moment = {0, 0};
    const int milliseconds = glance == Busy        ? busyPause
                             : glance == NotClosed ? 1 << (tally->agreed - 1)
                                                   : 1 << tally->refusals;
    if (glance == Busy)
        tell(reg, "The register is busy.");
    moment.tv_nsec = milliseconds * 1000000L;
    nanosleep(&moment, NULL);
}

int look(Register *reg, const Question *question, View *view, int *failures)
{
    Tally tally = {0, 0, 0};
    memset(view, 0, sizeof *view);
    for (;;) {
        Glance glance = Busy;
        int code = lookOnce(question, view, &glance);
        if (code != 0) {
            tally.agreed = 0;
            if ((code = prepareToRepeat(reg, code, failures)) != 0)
                return code;
            continue;
        }
        code = weigh(&tally, glance);
        if (code != lookAgain)
            return code;
        pauseBetweenLooks(reg, &tally, glance);
    }
}
