#define _POSIX_C_SOURCE 199309L /* nanosleep */

#include "recovery.h"

#include <string.h>
#include <time.h>

enum { mostLooks = 150, mostOpenings = 32, refused = 8 };

/* Looking at the register ------------------------------------------------------------------------------- */

typedef enum Found {
    FoundBusy,      /* cannot be told now */
    FoundNoSale,    /* no sale is open; no receipt was asked for */
    FoundOpen,      /* a sale is open, the one that was asked for if one was */
    FoundClosed,    /* the receipt is printed and counts */
    FoundCancelled, /* the receipt counts for nothing */
    FoundOther      /* that, and somebody else's sale is open */
} Found;

typedef struct View
{
    Found found;
    VelnoReceiptRef open; /* of the open sale */
    VelnoEcrSaleTotals totals;
} View;

static int isSame(const VelnoReceiptRef *left, const VelnoReceiptRef *right)
{
    return left->first == right->first && left->second == right->second;
}

/* A no to receipt data means "not closed", unless the register says no to everything. */
static int askForReceipt(const Sale *sale, View *view)
{
    VelnoReceiptRef receipt = sale->receipt, known = sale->known;
    VelnoEcrSaleTotals ignored;
    const Found otherwise = view->found == FoundOpen ? FoundOther : FoundCancelled;
    int code = velnoext_receipt_data(answerTimeout, &receipt, &view->totals);
    view->found = code == 0 ? FoundClosed : otherwise;
    if (code == refused)
        code = known.first == 0 ? 0 : velnoext_receipt_data(answerTimeout, &known, &ignored);
    return code;
}

static int lookOnce(const Sale *sale, View *view)
{
    int state, first;
    int code = velnoext_ecr_state(answerTimeout, &state);
    if (code != 0)
        return code;
    view->found =
        state == VelnoEcrState_Idle || state == VelnoEcrState_IdleOtherScreen ? FoundNoSale : FoundBusy;
    if (state == VelnoEcrState_SaleOpen) {
        code = velnoext_sale_state(answerTimeout, &first, &view->totals, &view->open);
        if (code != 0)
            return code == 6 ? 0 : code; /* it has just ended: busy, look again */
        view->found = FoundOpen;
    }
    if (view->found == FoundBusy || sale->receipt.first == 0)
        return 0;
    if (view->found == FoundOpen && isSame(&view->open, &sale->receipt))
        return 0;
    return askForReceipt(sale, view);
}

static void waitAMoment(void)
{
    const struct timespec moment = {0, 200000000};
    nanosleep(&moment, NULL);
}

/* Until it is known how the sale stands. */
static int look(const Sale *sale, View *view, int *failures)
{
    int looks;
    for (looks = 0; looks < mostLooks; ++looks) {
        int code = lookOnce(sale, view);
        if (code == 0 && view->found != FoundBusy)
            return 0;
        if (code == 0) {
            tell(sale->reg, "The register is busy.");
            waitAMoment();
        } else if ((code = prepareToRepeat(sale->reg, code, failures)) != 0) {
            return code;
        }
    }
    return 6;
}

/* What the register's answer means ---------------------------------------------------------------------- */

static int isPayment(StepKind kind)
{
    return kind == StepPay || kind == StepEnd || kind == StepEndWithInvoice;
}

/* What the register will tell once it has taken the step, as far as that can be said before. */
static VelnoEcrSaleTotals expected(const Step *step, VelnoEcrSaleTotals totals)
{
    switch (step->kind) {
    case StepItem:
        totals.number += 1;
        break;
    case StepItems:
        totals.number += step->what.items.count;
        break;
    case StepDeleteLast:
    case StepDelete:
        totals.number -= 1;
        break;
    case StepPay:
        totals.values[step->what.payment.type == 0 ? paidInCash : paidByCard] += step->what.payment.amount;
        break;
    default:
        break;
    }
    return totals;
}

static int stepMatches(const VelnoEcrSaleTotals *left, const VelnoEcrSaleTotals *right)
{
    return left->number == right->number && left->values[paidInCash] == right->values[paidInCash] &&
           left->values[paidByCard] == right->values[paidByCard];
}

static int sendStep(Step *step, VelnoEcrSaleTotals *totals)
{
    switch (step->kind) {
    case StepItem:
        return velnoext_add_sale_item(answerTimeout, &step->what.item, totals);
    case StepItems:
        return velnoext_add_multiple_sale_items(answerTimeout, &step->what.items, totals);
    case StepMedical:
        return velnoext_add_medical_contribution(answerTimeout, step->what.medical.amount,
                                                 step->what.medical.identityNo);
    case StepDeleteLast:
        return velnoext_delete_last_sale_item(answerTimeout, totals);
    case StepDelete:
        return velnoext_delete_sale_item(answerTimeout, step->what.index, totals);
    case StepPay:
        return velnoext_add_payment(step->what.payment.type, step->what.payment.amount);
    case StepEnd:
        return velnoext_end_sale(step->what.payment.type);
    case StepEndWithInvoice:
        return velnoext_end_sale_with_invoice(&step->what.invoice);
    case StepCancel:
        return velnoext_cancel_sale(answerTimeout);
    }
    return 4;
}

static int answersWithTotals(StepKind kind)
{
    return kind == StepItem || kind == StepItems || kind == StepDeleteLast || kind == StepDelete;
}

static int stepTaken(Sale *sale, const VelnoEcrSaleTotals *totals)
{
    sale->totals = *totals;
    ++sale->taken;
    return 0;
}

static int stepRefused(Sale *sale, int code)
{
    Step *const step = &sale->steps[sale->taken];
    --sale->count;
    memmove(step, step + 1, (size_t)(sale->count - sale->taken) * sizeof *step);
    return code;
}

/* All that was entered is wanted once more, but what was paid has to be taken by a person. */
static void beginAgain(Sale *sale)
{
    int i, kept = 0;
    for (i = 0; i < sale->count; ++i) {
        if (isPayment(sale->steps[i].kind))
            sale->paymentsLost = 1;
        else
            sale->steps[kept++] = sale->steps[i];
    }
    sale->count = kept;
    sale->taken = 0;
    sale->status = SaleWanted;
    sale->receipt.first = sale->receipt.second = 0;
    tell(sale->reg, "The register has cancelled the sale; it is entered again.");
}

/* The sale is open still. A register works off what comes on one connection in its order: what was answered
 * behind a step on the same one proves that the step is not on its way any more. */
static int concludeOpen(Sale *sale, const View *view, int code, int sameConnection)
{
    const Step *const step = &sale->steps[sale->taken];
    const VelnoEcrSaleTotals after = expected(step, sale->totals);
    const int asBefore = stepMatches(&view->totals, &sale->totals);
    if (!asBefore && !stepMatches(&view->totals, &after)) {
        sale->totals = view->totals;
        return stepRefused(sale, saleNotOurs);
    }
    /* A contribution leaves no trace in those sums, but a second one takes the place of the first. */
    if (step->kind == StepMedical ? code == 0 : !asBefore)
        return stepTaken(sale, &view->totals);
    if (sameConnection && !leavesOpen(code))
        return stepRefused(sale, code == 0 ? refused : code);
    return 0;
}

static int concludeClosed(Sale *sale, const View *view)
{
    const StepKind kind = sale->steps[sale->taken].kind;
    const int asLeft = view->totals.number == sale->totals.number &&
                       view->totals.values[totalToPay] == sale->totals.values[totalToPay];
    sale->status = SaleClosed;
    sale->known = sale->receipt;
    stepTaken(sale, &view->totals);
    return (kind == StepEnd || kind == StepEndWithInvoice) && asLeft ? 0 : saleNotOurs;
}

static int concludeCancelled(Sale *sale)
{
    if (sale->steps[sale->taken].kind == StepCancel) {
        sale->status = SaleCancelled;
        ++sale->taken;
    } else {
        beginAgain(sale);
    }
    return 0;
}

/* @return 0: the step is taken, or to be sent again */
static int conclude(Sale *sale, const View *view, int code, int sameConnection)
{
    switch (view->found) {
    case FoundOpen:
        return concludeOpen(sale, view, code, sameConnection);
    case FoundClosed:
        return concludeClosed(sale, view);
    case FoundCancelled:
        return concludeCancelled(sale);
    default:
        return stepRefused(sale, saleNotOurs);
    }
}

/* Steps ------------------------------------------------------------------------------------------------- */

/* Looks what became of the step that was sent. @return 0: it is taken, or to be sent again */
static int settleStep(Sale *sale, int *failures)
{
    View view;
    const int code = look(sale, &view, failures);
    if (code != 0)
        return code; /* still not known: sent once more, it could be done twice */
    sale->sent = 0;
    return conclude(sale, &view, sale->answer, sale->sentOn == sale->reg->connections);
}

/* Sends the next step, unless that has been done. @return 0: it is taken, or to be sent again */
static int takeStep(Sale *sale, int *failures)
{
    VelnoEcrSaleTotals totals = sale->totals;
    int code;
    if (sale->sent)
        return settleStep(sale, failures);
    sale->sentOn = sale->reg->connections;
    sale->answer = code = sendStep(&sale->steps[sale->taken], &totals);
    if (code == 0 && answersWithTotals(sale->steps[sale->taken].kind))
        return stepTaken(sale, &totals);
    if (code == 3 || code == 4)
        return stepRefused(sale, code); /* nothing was sent */
    sale->sent = 1;
    if ((code == 1 || leavesOpen(code)) && (code = prepareToRepeat(sale->reg, code, failures)) != 0)
        return code;
    return settleStep(sale, failures);
}

static int isEmpty(const VelnoEcrSaleTotals *totals)
{
    return totals->number == 0 && totals->values[totalToPay] == 0;
}

/* Nothing is sold on a receipt whose number is not noted: it is all that a process leaves behind. */
static int useOpened(Sale *sale, const View *view)
{
    if (!sale->startSent)
        return 6;
    if (!isEmpty(&view->totals))
        return saleNotOurs;
    sale->receipt = view->open;
    if (sale->note && sale->note(sale->context, &sale->receipt) != 0) {
        sale->receipt.first = sale->receipt.second = 0;
        return saleNotNoted;
    }
    sale->totals = view->totals;
    sale->status = SaleOpen;
    return 0;
}

/* Starts the sale, unless an earlier attempt has. @return 0: it is open, or to be looked at again */
static int openSale(Sale *sale, int *failures)
{
    View view;
    int code = look(sale, &view, failures);
    if (code != 0)
        return code;
    if (view.found == FoundOpen)
        return useOpened(sale, &view);
    sale->startSent = 1;
    code = sale->withInvoice ? velnoext_start_sale_with_invoice(answerTimeout)
                             : velnoext_start_sale(answerTimeout);
    if (code == 0)
        return 0;
    if (code == 1 || leavesOpen(code))
        return prepareToRepeat(sale->reg, code, failures);
    if (look(sale, &view, failures) == 0 && view.found == FoundOpen)
        return useOpened(sale, &view);
    return code;
}

int saleGoOn(Sale *sale)
{
    int failures = 0, openings = 0;
    while (sale->status == SaleWanted || (sale->status == SaleOpen && sale->taken < sale->count)) {
        int code;
        if (sale->status == SaleOpen)
            code = takeStep(sale, &failures);
        else
            code = ++openings == mostOpenings ? saleNotOurs : openSale(sale, &failures);
        if (code != 0)
            return code;
    }
    if (!sale->paymentsLost)
        return 0;
    sale->paymentsLost = 0;
    return saleBegunAgain;
}

static void forget(Sale *sale)
{
    sale->status = SaleWanted;
    sale->receipt.first = sale->receipt.second = 0;
    sale->count = sale->taken = sale->startSent = sale->paymentsLost = sale->sent = 0;
}

static int want(Sale *sale, const Step *step)
{
    if (sale->status != SaleWanted && sale->status != SaleOpen)
        return 6;
    if (sale->count == mostSteps)
        return saleFull;
    sale->steps[sale->count++] = *step;
    return saleGoOn(sale);
}

int saleStart(Sale *sale, int withInvoice)
{
    forget(sale);
    sale->withInvoice = withInvoice;
    return saleGoOn(sale);
}

static Step stepOf(StepKind kind)
{
    Step step;
    memset(&step, 0, sizeof step);
    step.kind = kind;
    return step;
}

int saleAddItem(Sale *sale, const VelnoSaleItem *item)
{
    Step step = stepOf(StepItem);
    step.what.item = *item;
    return want(sale, &step);
}

int saleAddItems(Sale *sale, const VelnoSaleItemList *items)
{
    Step step = stepOf(StepItems);
    step.what.items = *items;
    return want(sale, &step);
}

int saleSetMedical(Sale *sale, long long amount, unsigned long long identityNo)
{
    Step step = stepOf(StepMedical);
    step.what.medical.amount = amount;
    step.what.medical.identityNo = identityNo;
    return want(sale, &step);
}

int saleDeleteLast(Sale *sale)
{
    const Step step = stepOf(StepDeleteLast);
    return want(sale, &step);
}

int saleDelete(Sale *sale, int index)
{
    Step step = stepOf(StepDelete);
    step.what.index = index;
    return want(sale, &step);
}

int salePay(Sale *sale, int type, long long amount)
{
    Step step = stepOf(StepPay);
    step.what.payment.type = type;
    step.what.payment.amount = amount;
    return want(sale, &step);
}

int saleEnd(Sale *sale, int type)
{
    Step step = stepOf(StepEnd);
    step.what.payment.type = type;
    return want(sale, &step);
}

int saleEndWithInvoice(Sale *sale, const VelnoInvoice *invoice)
{
    Step step = stepOf(StepEndWithInvoice);
    step.what.invoice = *invoice;
    return want(sale, &step);
}

int saleCancel(Sale *sale)
{
    const Step step = stepOf(StepCancel);
    return want(sale, &step);
}

int saleFind(Sale *sale, const VelnoReceiptRef *receipt)
{
    View view;
    int failures = 0, code;
    forget(sale);
    sale->receipt = *receipt;
    code = look(sale, &view, &failures);
    if (code != 0)
        return code;
    sale->totals = view.totals;
    sale->status = view.found == FoundOpen     ? SaleOpen
                   : view.found == FoundClosed ? SaleClosed
                                               : SaleCancelled;
    return view.found == FoundOther ? saleNotOurs : 0;
}

/* Reports ----------------------------------------------------------------------------------------------- */

int makeZReport(Register *reg, int z)
{
    int failures = 0, code;
    do {
        int current;
        code = velnoext_current_z(answerTimeout, &current);
        if (code == 0 && current != z)
            return 0; /* an earlier attempt has made it */
        if (code == 0)
            code = velnoext_z_report();
    } while (code != 0 && (code = prepareToRepeat(reg, code, &failures)) == 0);
    return code;
}
