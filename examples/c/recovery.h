/*
 * Sales of which none is lost and none doubled, whatever happens to answers, connections and power: each step
 * is noted before it is sent, and when it is not certain whether the register took it the register is looked
 * at before anything is repeated. docs/recovery.md says what is asked and what is concluded.
 */
#ifndef RECOVERY_H
#define RECOVERY_H

#include "look.h"

/** Results of the functions below, beside the codes of velnoext.h and those of look.h. */
enum {
    saleBegunAgain = 100, /**< the register had cancelled the sale; it stands there again, but unpaid */
    saleNotOurs = 101,    /**< somebody else has worked on the register: a person must look */
    saleNotNoted = 102,   /**< what became of the receipt could not be noted */
    saleFull = 103,       /**< there is no room for another step */
    saleUnsettled = 104,  /**< an earlier step is not settled; nothing has been done about this one */
    saleStuck = 107 /**< while it was entered again the register refused a line (`reason`): not dropped */
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
    StepCancel,
    StepFind /* sends nothing */
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

typedef enum SaleStatus {
    SaleNone,
    SaleWanted, /**< to be started, or to be started again */
    SaleOpen,
    SaleClosed,
    SaleCancelled,
    SaleDoubtful /**< probably cancelled; to be asked about once more behind the next receipt that is closed
                  */
} SaleStatus;

enum { mostSteps = 200 };

/** One sale, on the register and in the application's memory. */
typedef struct Sale
{
    Register *reg;
    VelnoReceiptRef known; /**< a receipt that is certainly closed, to ask a counter-question; 0, 0: none */

    /**
     * Must put where the end of this process cannot reach it what is known of a receipt, before anything
     * follows from it: SaleOpen when it is begun (before its first line) and with each payment; SaleClosed,
     * SaleCancelled and SaleDoubtful once. `totals` are those told last. May be called again with the same.
     *
     * @return 0: it is there
     */
    int (*note)(void *context, SaleStatus status, const VelnoReceiptRef *receipt,
                const VelnoEcrSaleTotals *totals);
    void *context;

    SaleStatus status;
    VelnoReceiptRef receipt;   /**< once the sale is open */
    VelnoEcrSaleTotals totals; /**< as the register told them last */
    int reason;                /**< the register's code behind notTold and saleStuck */

    Step steps[mostSteps];
    int count;        /**< of the steps that are wanted */
    int taken;        /**< how many of them the register has taken */
    int owed;         /**< how many it had taken before it cancelled the sale: none of them is dropped */
    int sent;         /**< the one behind those taken has been sent: it is not known what became of it */
    int answer;       /**< the code that it ended with */
    int cause;        /**< velnoext_cause() of the last step or start that was refused */
    int sentOn;       /**< over which of the register's connections it went */
    int undecided;    /**< a person must say whether the receipt was closed */
    int withInvoice;  /**< begun as a sale with invoice */
    int startSent;    /**< an open sale without items may be this one */
    int paymentsLost; /**< what had been paid was cancelled with the sale */
} Sale;

/*
 * Each of these does one step and returns 0 when the register has done it. Otherwise saleIsPending() tells
 * which of two things the code means:
 *
 * - Not pending: it is the register's answer to this very step, which was not done and is not wanted any
 *   more; the sale is as it was. Only saleBegunAgain (the step is done, or was a payment: payments have to be
 *   taken anew), saleNotOurs and saleNotNoted may have changed it.
 * - Pending: the step stays wanted and will be done once, by saleGoOn(), when the register can be reached,
 *   has become idle, and so on. Until then other steps get saleUnsettled and are not taken over. The two ways
 *   out beside saleGoOn() are saleCancel() and, after personMustLook, saleDecide().
 */
int saleIsPending(const Sale *sale);

/** Starts a sale. `sale` holds reg, known, note and context; the rest is 0 or an earlier sale. 6: another one
 * is open
 */
int saleStart(Sale *sale, int withInvoice);
int saleAddItem(Sale *sale, const VelnoSaleItem *item);
int saleAddItems(Sale *sale, const VelnoSaleItemList *items);
int saleSetMedical(Sale *sale, long long amount, unsigned long long identityNo);
int saleDeleteLast(Sale *sale);
int saleDelete(Sale *sale, int index);
int salePay(Sale *sale, int type, long long amount);
int saleEnd(Sale *sale, int type);
int saleEndWithInvoice(Sale *sale, const VelnoInvoice *invoice);
int saleGoOn(Sale *sale);

/** What is pending is not sent any more. 6: there is no sale to cancel */
int saleCancel(Sale *sale);

/**
 * What a person found after personMustLook: whether the receipt was closed (on paper, or on the register).
 * Then goes on: a sale that was not is entered again. 6: nobody has asked
 */
int saleDecide(Sale *sale, int wasClosed);

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
 * @return 0: it is made; 8: refused; saleNotOurs: the register's number is smaller, so it is another
 * register; others: not known, to be called again with the same number
 */
int makeZReport(Register *reg, int z);

#endif
