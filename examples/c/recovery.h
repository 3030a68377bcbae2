/*
 * Sales of which none is lost and none doubled, whatever happens to answers, connections and power: each step
 * is noted before it is sent, and when it is not certain whether the register took it the register is looked
 * at before anything is repeated. docs/recovery.md says what is asked and what is concluded.
 */
#ifndef RECOVERY_H
#define RECOVERY_H

#include "connection.h"

/** Results of the functions below, beside the codes of velnoext.h. */
enum {
    saleBegunAgain = 100, /**< the register had cancelled the sale; it stands there again, but unpaid */
    saleNotOurs = 101,    /**< somebody else has worked on the register: a person must look */
    saleNotNoted = 102,   /**< the receipt's number could not be noted, so nothing is sold on it */
    saleFull = 103        /**< there is no room for another step */
};

/** The values of VelnoEcrSaleTotals, as the register defines them. */
enum { totalToPay, taxWithin, paidInCash, paidByCard, changeGiven };

typedef enum StepKind {
    StepItem,
    StepItems,
    StepMedical,
    StepDeleteLast,
    StepDelete,
    StepPay,
    StepEnd,
    StepEndWithInvoice,
    StepCancel
} StepKind;

/** Something that is to be done to an open sale. */
typedef struct Step
{
    StepKind kind;
    union {
        VelnoSaleItem item;
        VelnoSaleItemList items;
        VelnoInvoice invoice;
        int index; /* of the line to delete */
        struct
        {
            long long amount;
            unsigned long long identityNo;
        } medical;
        struct
        {
            int type; /* of StepPay and StepEnd: 0 cash, 1 card */
            long long amount;
        } payment;
    } what;
} Step;

typedef enum SaleStatus { SaleNone, SaleWanted, SaleOpen, SaleClosed, SaleCancelled } SaleStatus;

enum { mostSteps = 200 };

/** One sale, on the register and in the application's memory. */
typedef struct Sale
{
    Register *reg;
    VelnoReceiptRef known; /**< a receipt that is certainly closed, to ask a counter-question; 0, 0: none */

    /** Must put the receipt's number where the end of this process cannot reach it. @return 0: it is there */
    int (*note)(void *context, const VelnoReceiptRef *receipt);
    void *context;

    SaleStatus status;
    VelnoReceiptRef receipt;   /**< once the sale is open */
    VelnoEcrSaleTotals totals; /**< as the register told them last */

    Step steps[mostSteps];
    int count;        /**< of the steps that are wanted */
    int taken;        /**< how many of them the register has taken */
    int sent;         /**< the one behind them has been sent, and it is not known yet what became of it */
    int answer;       /**< the code that it ended with */
    int sentOn;       /**< over which of the register's connections it went */
    int withInvoice;  /**< begun as a sale with invoice */
    int startSent;    /**< an open sale without items may be this one */
    int paymentsLost; /**< what had been paid was cancelled with the sale */
} Sale;

/*
 * Each of these returns 0 when the register has done it and the code when it has refused it, which leaves the
 * sale as it was; besides: saleBegunAgain, when payments have to be taken anew, and saleNotOurs. After 2, 5,
 * 11 and 12, and whenever `sent` is set, it is not known yet: saleGoOn() or the next step looks, and goes on.
 * With `sent` the code is that of a look, not of the step: a register may be busy, or refuse to tell.
 */

/** Starts a sale. `sale` holds reg, known, note and context, all else is set here. 6: another sale is open */
int saleStart(Sale *sale, int withInvoice);
int saleAddItem(Sale *sale, const VelnoSaleItem *item);
int saleAddItems(Sale *sale, const VelnoSaleItemList *items);
int saleSetMedical(Sale *sale, long long amount, unsigned long long identityNo);
int saleDeleteLast(Sale *sale);
int saleDelete(Sale *sale, int index);
int salePay(Sale *sale, int type, long long amount);
int saleEnd(Sale *sale, int type);
int saleEndWithInvoice(Sale *sale, const VelnoInvoice *invoice);
int saleCancel(Sale *sale);
int saleGoOn(Sale *sale);

/**
 * For a process that has just begun and finds the note of a receipt: looks what became of it. `sale` holds
 * reg, known, note and context; its status says what was found. One that is still open holds lines that
 * nobody remembers: it can be cancelled.
 */
int saleFind(Sale *sale, const VelnoReceiptRef *receipt);

/**
 * Makes the Z report that is numbered z, exactly once.
 *
 * @param z  what velnoext_current_z() told before the first attempt
 * @return 0: it is made; 8: refused; others: not known, to be called again with the same number
 */
int makeZReport(Register *reg, int z);

#endif
