#include "recovery.h"

#include <string.h>

enum { mostOpenings = 32, refused = 8 };

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
    case StepFind:
        break;
    }
    return 4;
}

static int answersWithTotals(StepKind kind)
{
    return kind == StepItem || kind == StepItems || kind == StepDeleteLast || kind == StepDelete;
}

static int isEnd(StepKind kind)
{
    return kind == StepEnd || kind == StepEndWithInvoice;
}

/* A cancel is the last step that anybody wants; what stands before it is not wanted any more. */
static int isToBeCancelled(const Sale *sale)
{
    return sale->count > sale->taken && sale->steps[sale->count - 1].kind == StepCancel;
}

static int note(const Sale *sale, SaleStatus status, const VelnoEcrSaleTotals *totals)
{
    return sale->note && sale->note(sale->context, status, &sale->receipt, totals) != 0 ? saleNotNoted : 0;
}

/* Until a payment is noted its outcome stays open. */
static int stepTaken(Sale *sale, const VelnoEcrSaleTotals *totals)
{
    const StepKind kind = sale->steps[sale->taken].kind;
    if ((isPayment(kind) || kind == StepFind) && note(sale, SaleOpen, totals) != 0)
        return saleNotNoted;
    sale->totals = *totals;
    sale->sent = 0;
    ++sale->taken;
    return 0;
}

/* A line that stood on the receipt before is the customer's; the step that is new is its caller's to repeat.
 */
static int stepRefused(Sale *sale, int code)
{
    sale->sent = 0;
    if (sale->taken < sale->count - 1 && isToBeCancelled(sale))
        return 0;
    if (sale->taken < sale->owed) {
        sale->reason = code;
        return saleStuck;
    }
    sale->count = sale->taken;
    return code;
}

/* All that was entered is wanted once more, but what was paid has to be taken by a person. */
static void beginAgain(Sale *sale)
{
    const int entered = sale->taken > sale->owed ? sale->taken : sale->owed;
    int i, kept = 0;
    sale->owed = 0;
    for (i = 0; i < sale->count; ++i) {
        if (isPayment(sale->steps[i].kind)) {
            sale->paymentsLost = 1;
        } else {
            sale->steps[kept++] = sale->steps[i];
            sale->owed += i < entered;
        }
    }
    sale->count = kept;
    sale->taken = sale->startSent = 0;
    sale->status = SaleWanted;
    sale->receipt.first = sale->receipt.second = 0;
    tell(sale->reg, "The register has cancelled the sale; it is entered again.");
}

/* The sale is open still. A register works off what comes on one connection in its order: what was answered
 * behind a step on the same one proves that the step is not on its way any more. */
static int concludeOpen(Sale *sale, const View *view)
{
    const Step *const step = &sale->steps[sale->taken];
    const VelnoEcrSaleTotals after = expected(step, sale->totals);
    const int asBefore = stepMatches(&view->totals, &sale->totals);
    const int sameConnection = sale->sentOn == sale->reg->connections;
    if (step->kind == StepFind)
        return stepTaken(sale, &view->totals);
    if (!asBefore && !stepMatches(&view->totals, &after)) {
        if (sale->taken < sale->owed && !isToBeCancelled(sale))
            return saleNotOurs; /* still pending: only a cancel makes that good */
        sale->totals = view->totals;
        return stepRefused(sale, saleNotOurs);
    }
    /* A contribution leaves no trace in those sums, but a second one takes the place of the first. */
    if (step->kind == StepMedical ? sale->answer == 0 : !asBefore)
        return stepTaken(sale, &view->totals);
    if (sameConnection && !leavesOpen(sale->answer))
        return stepRefused(sale, sale->answer == 0 ? refused : sale->answer);
    sale->sent = 0;
    return 0;
}

static void finish(Sale *sale, SaleStatus status)
{
    sale->status = status;
    sale->taken = sale->count;
    sale->sent = sale->undecided = sale->paymentsLost = 0;
}

static int concludeClosed(Sale *sale, const VelnoEcrSaleTotals *totals)
{
    const StepKind kind = sale->steps[sale->taken].kind;
    const int asLeft = totals->number == sale->totals.number &&
                       totals->values[totalToPay] == sale->totals.values[totalToPay];
    if (note(sale, SaleClosed, totals) != 0)
        return saleNotNoted;
    sale->totals = *totals;
    sale->known = sale->receipt;
    finish(sale, SaleClosed);
    return kind == StepFind || (isEnd(kind) && asLeft) ? 0 : saleNotOurs;
}

static int concludeCancelled(Sale *sale, SaleStatus status)
{
    const int isWanted = isToBeCancelled(sale) || sale->steps[sale->taken].kind == StepFind;
    if (note(sale, status, &sale->totals) != 0)
        return saleNotNoted;
    sale->sent = sale->undecided = 0;
    if (isWanted)
        finish(sale, status);
    else
        beginAgain(sale);
    return 0;
}

/* Steps ------------------------------------------------------------------------------------------------- */

static int lookFor(Sale *sale, int cancelAnswered, View *view, int *failures)
{
    Question question;
    int code;
    question.receipt = sale->receipt;
    question.known = sale->known;
    question.cancelAnswered = cancelAnswered;
    code = look(sale->reg, &question, view, failures);
    if (code == notTold)
        sale->reason = view->reason;
    sale->undecided = code == personMustLook;
    return code;
}

/* Looks what became of the step that was sent. @return 0: it is taken, or to be sent again */
static int settleStep(Sale *sale, int *failures)
{
    const int cancelAnswered = sale->steps[sale->taken].kind == StepCancel && sale->answer == 0;
    View view;
    const int code = lookFor(sale, cancelAnswered, &view, failures);
    if (code != 0)
        return code; /* still not known: sent once more, it could be done twice */
    if (view.found == FoundClosed)
        return concludeClosed(sale, &view.totals);
    if (view.found == FoundCancelled)
        return concludeCancelled(sale, cancelAnswered ? SaleCancelled : SaleDoubtful);
    return concludeOpen(sale, &view);
}

static void sendOnlyTheCancel(Sale *sale)
{
    sale->steps[sale->taken] = sale->steps[sale->count - 1];
    sale->count = sale->taken + 1;
    sale->owed = 0;
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
    sale->cause = velnoext_cause(); /* before any other call */
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

/* What has been entered before stays wanted; a sale that was only to begin is not begun. */
static int startRefused(Sale *sale, int code)
{
    if (sale->count == 0)
        sale->status = SaleNone;
    sale->reason = code;
    return sale->count == 0 ? code : saleStuck;
}

/* Nothing is sold on a receipt whose number is not noted: it is all that a process leaves behind. */
static int useOpened(Sale *sale, const View *view)
{
    if (!sale->startSent)
        return startRefused(sale, 6);
    if (!isEmpty(&view->totals))
        return startRefused(sale, saleNotOurs);
    sale->receipt = view->open;
    if (note(sale, SaleOpen, &view->totals) != 0) {
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
    int start, code;
    if (isToBeCancelled(sale) && !sale->startSent) {
        finish(sale, SaleCancelled);
        return 0;
    }
    if ((code = lookFor(sale, 0, &view, failures)) != 0)
        return code;
    if (view.found == FoundOpen)
        return useOpened(sale, &view);
    if (isToBeCancelled(sale)) {
        finish(sale, SaleCancelled);
        return 0;
    }
    sale->startSent = 1;
    start = sale->withInvoice ? velnoext_start_sale_with_invoice(answerTimeout)
                              : velnoext_start_sale(answerTimeout);
    sale->cause = velnoext_cause();
    if (start == 1 || leavesOpen(start))
        return prepareToRepeat(sale->reg, start, failures);
    if ((code = lookFor(sale, 0, &view, failures)) != 0)
        return code;
    if (view.found == FoundOpen)
        return useOpened(sale, &view);
    return start == 0 ? 0 : startRefused(sale, start);
}

int saleIsPending(const Sale *sale)
{
    return sale->status == SaleWanted || (sale->status == SaleOpen && sale->taken < sale->count);
}

int saleGoOn(Sale *sale)
{
    int failures = 0, openings = 0;
    while (saleIsPending(sale)) {
        int code;
        if (!sale->sent && isToBeCancelled(sale))
            sendOnlyTheCancel(sale);
        if (sale->status == SaleOpen)
            code = takeStep(sale, &failures);
        else
            code = ++openings == mostOpenings ? startRefused(sale, 7) : openSale(sale, &failures);
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
    sale->status = SaleNone;
    sale->receipt.first = sale->receipt.second = 0;
    sale->count = sale->taken = sale->owed = sale->sent = 0;
    sale->startSent = sale->paymentsLost = sale->undecided = 0;
}

/* There is always room to end or cancel. */
static int hasRoom(const Sale *sale, StepKind kind)
{
    return sale->count < mostSteps - (isEnd(kind) ? 1 : 2);
}

static int want(Sale *sale, const Step *step)
{
    if (saleIsPending(sale))
        return saleUnsettled;
    if (sale->status != SaleOpen)
        return 6;
    if (!hasRoom(sale, step->kind))
        return saleFull;
    sale->steps[sale->count++] = *step;
    return saleGoOn(sale);
}

int saleStart(Sale *sale, int withInvoice)
{
    const int isStarting = sale->status == SaleWanted && sale->count == 0;
    if (saleIsPending(sale) && !isStarting)
        return saleUnsettled;
    if (sale->status == SaleOpen)
        return 6;
    if (!isStarting)
        forget(sale);
    sale->status = SaleWanted;
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
    if (sale->undecided)
        return saleUnsettled;
    if (sale->status != SaleOpen && sale->status != SaleWanted)
        return 6;
    if (!isToBeCancelled(sale))
        sale->steps[sale->count++] = stepOf(StepCancel);
    return saleGoOn(sale);
}

int saleDecide(Sale *sale, int wasClosed)
{
    const VelnoEcrSaleTotals totals = sale->totals;
    int code;
    if (!sale->undecided)
        return 6;
    code = wasClosed ? concludeClosed(sale, &totals) : concludeCancelled(sale, SaleCancelled);
    return code != 0 ? code : saleGoOn(sale);
}

int saleFind(Sale *sale, const VelnoReceiptRef *receipt)
{
    forget(sale);
    memset(&sale->totals, 0, sizeof sale->totals);
    sale->status = SaleOpen;
    sale->receipt = *receipt;
    sale->steps[sale->count++] = stepOf(StepFind);
    sale->sent = 1;
    sale->answer = 0;
    return saleGoOn(sale);
}

/* Reports ----------------------------------------------------------------------------------------------- */

int makeZReport(Register *reg, int z)
{
    int failures = 0, code;
    do {
        int current;
        code = velnoext_current_z(answerTimeout, &current);
        if (code == refused)
            return notTold; /* an earlier attempt may have made it */
        if (code == 0 && current != z)
            return current > z ? 0 : saleNotOurs;
        if (code == 0)
            code = velnoext_z_report();
    } while (code != 0 && (code = prepareToRepeat(reg, code, &failures)) == 0);
    return code;
}
