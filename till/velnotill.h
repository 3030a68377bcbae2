// SPDX-License-Identifier: Apache-2.0

/**
 * velnotill: one call, one receipt. Hand over a whole receipt under a key of your own, and get exactly one
 * fiscal receipt, however often the same is handed over and whatever happens in between: a lost answer, a cut
 * of the register's power, the end of this process at any moment.
 *
 * It stands on libvelnoext (velnoext.h) and keeps a ledger, a file in which every receipt is on record before
 * the register hears of it. What can be known is found out by the library itself; what cannot be known is a
 * question to a person, never a guess. docs/receipts.md is for whoever writes a till; docs/receipt-json.md
 * has the fields of a receipt; docs/recovery.md tells how it comes through.
 *
 * Orders: a receipt, a Z report, an X report and a slip are orders. Each has a key, which the application
 * makes: 1 to 200 bytes of UTF-8 without control characters, the number of the sale in its own books for
 * instance. The same key with the same content is the same order and is never done twice; the same key with
 * another content is a conflict. An order is on record until velnotill_prune() forgets it.
 *
 * Threads: every function may be called from any thread, at any time. Orders are worked off one at a time, in
 * the order in which they were accepted, on the threads of the calls that want their outcome; the library has
 * no thread of its own that works on orders. A call blocks until its order is settled, waits for the register
 * or needs a person; velnotill_interrupt() ends that. Do not call from an exit handler, not from a signal
 * handler but for velnotill_interrupt(), and not in a child after fork(). When the process ends no thread may
 * be inside any more: velnotill_close() waits for that.
 *
 * The process: one till at a time. While it is open leave the functions of velnoext.h alone that speak to
 * registers: connections belong to the till. It needs no Qt of its own, and a Qt application object may come
 * and go; but Qt's SQLite driver (Debian: libqt6sql6-sqlite) must be installed. Once loaded the library stays
 * loaded.
 *
 * Pointers are borrowed for the call only and belong to the caller. Texts are UTF-8 with a terminating zero.
 * What is handed out as `char **` belongs to the caller, who gives it back to velnotill_free_text(). Outputs
 * are written on success alone unless a function says otherwise.
 *
 * Structures begin with `size`, which the caller sets to the structure's own: so they can grow. 101 when it
 * is smaller than at first. Of a larger one than the library knows it leaves the rest zero; in the settings
 * there must be zeros.
 *
 *     VelnoTillSettings settings = {
 *         .size = sizeof settings, .appNo = 5, .port = 4100, .serial = "UB1234567890",
 *         .address = "0.0.0.0", .ledger = "/var/lib/till/UB1234567890.ledger"};
 *     VelnoTillOutcome outcome = {.size = sizeof outcome};
 *     VelnoTill *till = NULL;
 *     if (velnotill_open(&till, &settings) != 0
 *         || velnotill_sell(till, "sale 4711", json, &outcome) != 0)
 *         fprintf(stderr, "%s\n", velnotill_problem());
 *     else if (outcome.state == VelnoTillState_Closed)
 *         printf("receipt %d of Z %d\n", outcome.reference.second, outcome.reference.first);
 *
 * Every function that returns int returns a VelnoTillResult. After another one than 0 velnotill_problem()
 * tells more, in words.
 */
#ifndef VELNOTILL_H
#define VELNOTILL_H

#include "velnoext.h"

#if defined(__GNUC__)
#define VELNOTILL_API __attribute__((visibility("default")))
#else
#define VELNOTILL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What a call came to. From 100 on nothing was looked up or done. */
typedef enum VelnoTillResult {
    VelnoTillResult_Done = 0, /**< the order is there: its state says what has become of it */
    VelnoTillResult_BadContent =
        1,                        /**< what was handed over has faults; velnotill_problem() tells them all */
    VelnoTillResult_Conflict = 2, /**< the key is on record with another content; nothing was done */
    VelnoTillResult_LedgerFailed =
        3,                        /**< the ledger cannot be opened, read or written; nothing more was done */
    VelnoTillResult_Unknown = 4,  /**< no order has this key */
    VelnoTillResult_NotAsked = 5, /**< the order does not wait for this answer */
    VelnoTillResult_Interrupted = 6, /**< the order stays as it is and goes on when it is asked for again */
    VelnoTillResult_NullArgument = 100,
    VelnoTillResult_BadArgument = 101, /**< a key, name, answer, setting, size or mask that is none */
    VelnoTillResult_NotOpen = 102,     /**< the till is not open, or not any more */
    VelnoTillResult_AlreadyOpen = 103, /**< this process has a till open */
    VelnoTillResult_InCallback = 104,  /**< a callback may call velnotill_interrupt() and texts alone */
    VelnoTillResult_NoMemory = 105
} VelnoTillResult;

/** What an order is. */
typedef enum VelnoTillKind {
    VelnoTillKind_Receipt = 0,
    VelnoTillKind_ZReport = 1,
    VelnoTillKind_XReport = 2,
    VelnoTillKind_Slip = 3
} VelnoTillKind;

/** Where an order stands. Closed, cancelled and refused are settled: nothing more is done about it. Only when
 * a receipt that was taken for cancelled turns out to count does a person come to be asked, CountedTwice. */
typedef enum VelnoTillState {
    VelnoTillState_Accepted = 0, /**< on record; nothing has been done about it that is known */
    VelnoTillState_Open = 1,   /**< its fiscal receipt is open on the register, and its reference is known */
    VelnoTillState_Closed = 2, /**< done: the receipt counts, the report is made, the slip is printed */
    VelnoTillState_Cancelled = 3, /**< not done, because a person dropped it */
    VelnoTillState_Refused = 4,   /**< not done, because the register refuses it; code and cause tell why */
    VelnoTillState_Waiting = 5, /**< the register is away or busy: hand it over again, or velnotill_work() */
    VelnoTillState_NeedsPerson = 6 /**< cannot be known: a person must answer the question */
} VelnoTillState;

/** What a person is asked about an order that needs one. */
typedef enum VelnoTillQuestion {
    VelnoTillQuestion_None = 0,
    VelnoTillQuestion_ReceiptUnknown = 1, /**< the register does not tell whether the receipt was closed */
    VelnoTillQuestion_MoneyTaken = 2, /**< it cancelled it when something had been paid, or may have been */
    VelnoTillQuestion_PaymentRefused = 3, /**< a part is paid, the rest is refused; the sale is open */
    VelnoTillQuestion_NotOurs = 4,        /**< the register tells of it what nobody has entered */
    VelnoTillQuestion_OtherRegister = 5,  /**< its numbers are below those of the ledger */
    VelnoTillQuestion_CountedTwice = 6,   /**< a receipt that was taken for cancelled counts, too */
    VelnoTillQuestion_SlipPrinted = 7     /**< whether a slip came out */
} VelnoTillQuestion;

/** What a person answers. Sell-again and drop are meant to follow what velnotill_message() asks for first. */
typedef enum VelnoTillAnswer {
    VelnoTillAnswer_None = 0,
    VelnoTillAnswer_Paid = 1,      /**< it was done: nothing more is to be */
    VelnoTillAnswer_SellAgain = 2, /**< it was not done: do it */
    VelnoTillAnswer_Drop = 3       /**< it was not done, and is not wanted any more */
} VelnoTillAnswer;

/** What is known of the paper of a closed receipt. */
typedef enum VelnoTillPaper {
    VelnoTillPaper_Unknown = 0, /**< not closed */
    VelnoTillPaper_Printed = 1,
    VelnoTillPaper_Unsure = 2 /**< closed, and may not have been printed: the cashier has to look */
} VelnoTillPaper;

/** What is under way, for a cashier's display. */
typedef enum VelnoTillStage {
    VelnoTillStage_Accepted = 0,
    VelnoTillStage_Connecting = 1,
    VelnoTillStage_Pairing = 2, /**< the register has lost its keys and is paired anew */
    VelnoTillStage_Starting = 3,
    VelnoTillStage_Entering = 4, /**< the lines */
    VelnoTillStage_CashPayment = 5,
    VelnoTillStage_CardPayment = 6, /**< the customer is asked for a card */
    VelnoTillStage_Closing = 7,
    VelnoTillStage_Looking = 8,        /**< an answer was lost: the register is asked what became of it */
    VelnoTillStage_Busy = 9,           /**< the register is busy, or out of paper */
    VelnoTillStage_EnteringAgain = 10, /**< the register has cancelled it; it is entered once more */
    VelnoTillStage_Printing = 11,
    VelnoTillStage_Reporting = 12,
    VelnoTillStage_Settled = 13 /**< the order has come to the state that it carries */
} VelnoTillStage;

/** An open till. */
typedef struct VelnoTill VelnoTill;

#pragma pack(push, 4)

/** Where the register is met, as for velnoext_initialize(), and how long it is waited for. */
typedef struct VelnoTillSettings
{
    unsigned int size;           /**< of this structure */
    unsigned int appNo;          /**< number of the application */
    unsigned int port;           /**< TCP port to listen on; not used with the relay */
    unsigned int connectTimeout; /**< ms for the register to connect; 0: 10,000 */
    unsigned int answerLimit;    /**< ms for an answer, in which somebody may have to act; 0: 120,000 */
    unsigned int patience;       /**< ms for a register that is busy, before the order waits; 0: 30,000 */
    const char *serial;          /**< 12 characters */
    const char *address;         /**< to listen on, an IP address; "255.255.255.255" for the relay */
    const char *ledger;          /**< path of the ledger, which is made when it is not there, for its owner
                                  *   alone. It belongs to this register, and to one process at a time */
} VelnoTillSettings;

/** An order as it is on record; 116 bytes. */
typedef struct VelnoTillOutcome
{
    unsigned int size;         /**< of this structure */
    int kind;                  /**< a VelnoTillKind */
    int state;                 /**< a VelnoTillState */
    int question;              /**< a VelnoTillQuestion */
    int answer;                /**< a VelnoTillAnswer that has been given and not yet been acted upon */
    int paper;                 /**< a VelnoTillPaper */
    int slipUnsure;            /**< 1: the slip, or that behind the receipt, may not have been printed */
    int code;                  /**< the code of velnoext.h behind refused and waiting */
    int cause;                 /**< velnoext_cause() with it */
    int z;                     /**< of a Z report: the register's number before it; 0: not asked yet */
    VelnoReceiptRef reference; /**< of the receipt it is entered on, or was closed on; 0, 0: none */
    VelnoEcrSaleTotals totals; /**< of a closed receipt, see VelnoTotal */
    long long giveBack;        /**< cash in kuruş that was taken on receipts which the register cancelled and
                                *   that is on none: the cashier gives it back, or keeps it for this sale */
    long long acceptedAt;      /**< ms since 1970, UTC */
    long long changedAt;       /**< ms since 1970, UTC */
} VelnoTillOutcome;

/** A line of an order's history. Its texts live until the callback returns. */
typedef struct VelnoTillEvent
{
    unsigned int size;  /**< of this structure, set by the library */
    int state;          /**< a VelnoTillState: the order's behind it */
    int code;           /**< of velnoext.h */
    int cause;          /**< velnoext_cause() with it */
    long long time;     /**< ms since 1970, UTC */
    const char *text;   /**< what happened, in English, for whoever looks into it */
    const char *person; /**< who answered; empty: the program */
} VelnoTillEvent;

#pragma pack(pop)

VELNOEXT_SIZE_IS(VelnoTillSettings, 24 + 3 * sizeof(void *));
VELNOEXT_OFFSET_IS(VelnoTillSettings, patience, 20);
VELNOEXT_OFFSET_IS(VelnoTillSettings, serial, 24);
VELNOEXT_SIZE_IS(VelnoTillOutcome, 116);
VELNOEXT_OFFSET_IS(VelnoTillOutcome, state, 8);
VELNOEXT_OFFSET_IS(VelnoTillOutcome, reference, 40);
VELNOEXT_OFFSET_IS(VelnoTillOutcome, totals, 48);
VELNOEXT_OFFSET_IS(VelnoTillOutcome, giveBack, 92);
VELNOEXT_SIZE_IS(VelnoTillEvent, 24 + 2 * sizeof(void *));
VELNOEXT_OFFSET_IS(VelnoTillEvent, time, 16);
VELNOEXT_OFFSET_IS(VelnoTillEvent, text, 24);

/* The till ---------------------------------------------------------------------------------------------- */

/**
 * Opens a register's ledger. Asks no register: orders do.
 *
 * @param till      receives the till
 * @param settings  only read
 * @return 0; 3: the ledger cannot be used (another process has it, it belongs to another register, it is of a
 *         later version, Qt's SQLite driver is missing, the disk...); 100; 101: a setting is none; 103; 104
 */
VELNOTILL_API int velnotill_open(VelnoTill **till, const VelnoTillSettings *settings);

/**
 * Closes a till: interrupts the work under way, waits for every call that is inside, and closes ledger and
 * connection. Nothing is lost: what was accepted goes on when the ledger is open again.
 *
 * @return 0; 100; 102; 104
 */
VELNOTILL_API int velnotill_close(VelnoTill *till);

/**
 * Ends the work under way soon, so that its call returns 6. A call that has no work under way, or still waits
 * for its turn, is not touched. From any thread, from callbacks, and from a signal handler. Never blocks.
 */
VELNOTILL_API void velnotill_interrupt(VelnoTill *till);

/**
 * Is told what goes on with an order: the one that is worked on, and, with VelnoTillStage_Settled, another
 * one that comes to another state by it. Called on the thread that works, which goes on when it returns; may
 * call velnotill_interrupt() and the functions for texts, and no other.
 *
 * @param key      lives until it returns
 * @param stage    a VelnoTillStage
 * @param outcome  the order as it is on record; lives until it returns
 * @param context  as handed to velnotill_set_listener()
 */
typedef void (*VelnoTillListener)(const char *key, int stage, const VelnoTillOutcome *outcome, void *context);

/** Sets who is told; NULL: nobody. The one before is told no more once this has returned. @return 0; 100;
 * 102; 104 */
VELNOTILL_API int velnotill_set_listener(VelnoTill *till, VelnoTillListener listener, void *context);

/* Orders ------------------------------------------------------------------------------------------------ */

/** Judges a receipt in JSON without a register or a ledger. @return 0; 1: velnotill_problem() has a line for
 *  each fault, with the path to it ("items[3].section: 9; accepted: 1 to 8"); 100; 104 */
VELNOTILL_API int velnotill_check_receipt(const char *json);

/** The same of a slip. */
VELNOTILL_API int velnotill_check_slip(const char *json);

/**
 * Puts a receipt on record and does nothing more: velnotill_sell() or velnotill_work() sell it. When this has
 * returned 0 the receipt survives a cut of this computer's power.
 *
 * @param outcome  filled with 0; may be NULL
 * @return 0, also when it is on record already; 1: faults; 2: conflict, velnotill_problem() names the first
 *         difference; 3; 100; 101: the key; 102; 104
 */
VELNOTILL_API int velnotill_accept(VelnoTill *till, const char *key, const char *json,
                                   VelnoTillOutcome *outcome);

/**
 * Sells a receipt: puts it on record and works off what was accepted until this one is settled, waits or
 * needs a person. Of a receipt that is on record only what is left is done; of a settled one nothing.
 *
 * @param json     the receipt, see docs/receipt-json.md
 * @param outcome  filled with 0 and 6. **0 is not "sold"**: state tells
 * @return 0; 1; 2; 3; 6; 100; 101: the key; 102; 104
 */
VELNOTILL_API int velnotill_sell(VelnoTill *till, const char *key, const char *json,
                                 VelnoTillOutcome *outcome);

/** Makes a Z report, which ends the day, once for each key. @return as velnotill_sell(), 1 apart */
VELNOTILL_API int velnotill_z_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);

/** Makes an X report, the totals of the day so far. @return as velnotill_sell(), 1 apart */
VELNOTILL_API int velnotill_x_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);

/** Prints a slip of free text. @param json  the slip, see docs/receipt-json.md. @return as velnotill_sell()
 */
VELNOTILL_API int velnotill_print_slip(VelnoTill *till, const char *key, const char *json,
                                       VelnoTillOutcome *outcome);

/** Works off every order that can go on: at the start of a shift for instance, and when a register is back.
 *  @return 0: nothing can go on now; 3; 6; 100; 102; 104 */
VELNOTILL_API int velnotill_work(VelnoTill *till);

/**
 * A person's answer to the question of an order that needs one; VelnoTillAnswer_Drop also to an order that is
 * not settled. It is on record with name and time when this returns; velnotill_work(), or handing the order
 * over again, acts upon it.
 *
 * @param answer   a VelnoTillAnswer
 * @param person   who answers: 1 to 100 bytes of UTF-8 without control characters
 * @param outcome  filled with 0; may be NULL
 * @return 0; 3; 4; 5; 100; 101: the key, the answer, or the name; 102; 104
 */
VELNOTILL_API int velnotill_answer(VelnoTill *till, const char *key, int answer, const char *person,
                                   VelnoTillOutcome *outcome);

/* The ledger -------------------------------------------------------------------------------------------- */

/** How an order stands. Asks no register. @return 0; 3; 4; 100; 101: the key; 102; 104 */
VELNOTILL_API int velnotill_find(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);

/** Called for an order; key and outcome live until it returns. May call texts and interrupt alone. */
typedef void (*VelnoTillVisitor)(const char *key, const VelnoTillOutcome *outcome, void *context);

/** Every state, for velnotill_list(). */
#define VELNOTILL_ALL_STATES 0x7Fu

/** Those that are not settled, for velnotill_list(): accepted, open, waiting, needs-person. */
#define VELNOTILL_UNSETTLED_STATES 0x63u

/**
 * Calls the visitor for each order of these states, as accepted.
 *
 * @param states  the sum of 1u << state for each state that is meant
 * @return 0; 3: some or all were not shown; 100; 101: no state, or one that is none; 102; 104
 */
VELNOTILL_API int velnotill_list(VelnoTill *till, unsigned int states, VelnoTillVisitor visitor,
                                 void *context);

/** Called for a line of a history. May call texts and interrupt alone. */
typedef void (*VelnoTillHistorian)(const VelnoTillEvent *event, void *context);

/** Calls the function for everything that happened to an order, from the first on. @return 0; 3; 4; 100;
 *  101: the key; 102; 104 */
VELNOTILL_API int velnotill_history(VelnoTill *till, const char *key, VelnoTillHistorian historian,
                                    void *context);

/**
 * An order with its content and history as one JSON object, see docs/receipts.md: for a log, or a screen.
 *
 * @param text  receives the text, for velnotill_free_text()
 * @return 0; 3; 4; 100; 101: the key; 102; 104; 105
 */
VELNOTILL_API int velnotill_json(VelnoTill *till, const char *key, char **text);

/**
 * Forgets settled orders that have not changed for so long. A key that is forgotten is a new one: choose an
 * age at which nobody hands it over any more. Nothing else ever forgets an order.
 *
 * @param seconds  age; 0 means any. Whatever their age these stay: the last Z report, and orders with a
 *                 receipt that may yet turn out to count
 * @param count    receives how many; may be NULL
 * @return 0; 3; 100; 102; 104
 */
VELNOTILL_API int velnotill_prune(VelnoTill *till, unsigned int seconds, int *count);

/* Words ------------------------------------------------------------------------------------------------- */

/* For people, and for logs. Names are lower-case words joined by hyphens, the same in every language, and
 * "unknown" for a number that is none. Texts are UTF-8, in English for "en", NULL and what is unknown, in
 * Turkish for "tr". Both live as long as the library, are never NULL and never block. */

/**
 * What a cashier is told of an order: how it stands, with receipt number and amounts, what is to be done, and
 * the question with its answers when there is one. Several lines; none is empty.
 *
 * @param outcome   as a function has filled it
 * @param language  "en" or "tr"
 * @param text      receives the text, for velnotill_free_text()
 * @return 0; 100; 101: the outcome's size; 105
 */
VELNOTILL_API int velnotill_message(const VelnoTillOutcome *outcome, const char *language, char **text);

/** What the last call on this thread that returned another code than 0 complained about, in English; faults
 *  have a line each. Empty before. Lives until the next such call on this thread. Never NULL. */
VELNOTILL_API const char *velnotill_problem(void);

/** The name of a VelnoTillResult: "done", "conflict". */
VELNOTILL_API const char *velnotill_result_name(int result);

/** A VelnoTillResult in a sentence. */
VELNOTILL_API const char *velnotill_result_text(int result, const char *language);

/** The name of a VelnoTillKind: "receipt", "z-report". */
VELNOTILL_API const char *velnotill_kind_name(int kind);

/** The name of a VelnoTillState: "closed", "needs-person". */
VELNOTILL_API const char *velnotill_state_name(int state);

/** A VelnoTillState in a sentence, as a cashier is told it. */
VELNOTILL_API const char *velnotill_state_text(int state, const char *language);

/** The name of a VelnoTillQuestion: "none", "receipt-unknown". */
VELNOTILL_API const char *velnotill_question_name(int question);

/** The name of a VelnoTillAnswer: "none", "paid", "sell-again", "drop". */
VELNOTILL_API const char *velnotill_answer_name(int answer);

/** The name of a VelnoTillPaper: "unknown", "printed", "unsure". */
VELNOTILL_API const char *velnotill_paper_name(int paper);

/** The name of a VelnoTillStage: "card-payment". */
VELNOTILL_API const char *velnotill_stage_name(int stage);

/** A VelnoTillStage in a few words, for a cashier's display: "card payment under way". */
VELNOTILL_API const char *velnotill_stage_text(int stage, const char *language);

/** Frees what was handed out as `char **`; NULL is nothing. */
VELNOTILL_API void velnotill_free_text(char *text);

#ifdef __cplusplus
}
#endif

#endif
