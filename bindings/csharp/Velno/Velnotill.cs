// SPDX-License-Identifier: Apache-2.0
// velnotill.h for C#. Made by scripts/generate from the header: do not edit.

using System;
using System.Runtime.InteropServices;

namespace Velno.Native
{
    /// <summary>What a call came to. From 100 on nothing was looked up or done.</summary>
    public enum VelnoTillResult
    {
        /// <summary>the order is there: its state says what has become of it</summary>
        Done = 0,
        /// <summary>what was handed over has faults; velnotill_problem() tells them all</summary>
        BadContent = 1,
        /// <summary>the key is on record with another content; nothing was done</summary>
        Conflict = 2,
        /// <summary>the ledger cannot be opened, read or written; nothing more was done</summary>
        LedgerFailed = 3,
        /// <summary>no order has this key</summary>
        Unknown = 4,
        /// <summary>the order does not wait for this answer</summary>
        NotAsked = 5,
        /// <summary>the order stays as it is and goes on when it is asked for again</summary>
        Interrupted = 6,
        NullArgument = 100,
        /// <summary>a key, name, answer, setting, size or mask that is none</summary>
        BadArgument = 101,
        /// <summary>the till is not open, or not any more</summary>
        NotOpen = 102,
        /// <summary>this process has a till open</summary>
        AlreadyOpen = 103,
        /// <summary>a callback may call velnotill_interrupt() and texts alone</summary>
        InCallback = 104,
        NoMemory = 105,
    }

    /// <summary>What an order is.</summary>
    public enum VelnoTillKind
    {
        Receipt = 0,
        ZReport = 1,
        XReport = 2,
        Slip = 3,
    }

    /// <summary>
    /// Where an order stands. Closed, cancelled and refused are settled: nothing more is done about it.
    /// Only when a receipt that was taken for cancelled turns out to count does a person come to be
    /// asked, CountedTwice.
    /// </summary>
    public enum VelnoTillState
    {
        /// <summary>on record; nothing has been done about it that is known</summary>
        Accepted = 0,
        /// <summary>its fiscal receipt is open on the register, and its reference is known</summary>
        Open = 1,
        /// <summary>done: the receipt counts, the report is made, the slip is printed</summary>
        Closed = 2,
        /// <summary>not done, because a person dropped it</summary>
        Cancelled = 3,
        /// <summary>not done, because the register refuses it; code and cause tell why</summary>
        Refused = 4,
        /// <summary>the register is away or busy: hand it over again, or velnotill_work()</summary>
        Waiting = 5,
        /// <summary>cannot be known: a person must answer the question</summary>
        NeedsPerson = 6,
    }

    /// <summary>What a person is asked about an order that needs one.</summary>
    public enum VelnoTillQuestion
    {
        None = 0,
        /// <summary>the register does not tell whether the receipt was closed</summary>
        ReceiptUnknown = 1,
        /// <summary>it cancelled it when something had been paid, or may have been</summary>
        MoneyTaken = 2,
        /// <summary>a part is paid, the rest is refused; the sale is open</summary>
        PaymentRefused = 3,
        /// <summary>the register tells of it what nobody has entered</summary>
        NotOurs = 4,
        /// <summary>its numbers are below those of the ledger</summary>
        OtherRegister = 5,
        /// <summary>a receipt that was taken for cancelled counts, too</summary>
        CountedTwice = 6,
        /// <summary>whether a slip came out</summary>
        SlipPrinted = 7,
    }

    /// <summary>
    /// What a person answers. Sell-again and drop are meant to follow what velnotill_message() asks for
    /// first.
    /// </summary>
    public enum VelnoTillAnswer
    {
        None = 0,
        /// <summary>it was done: nothing more is to be</summary>
        Paid = 1,
        /// <summary>it was not done: do it</summary>
        SellAgain = 2,
        /// <summary>it was not done, and is not wanted any more</summary>
        Drop = 3,
    }

    /// <summary>What is known of the paper of a closed receipt.</summary>
    public enum VelnoTillPaper
    {
        /// <summary>not closed</summary>
        Unknown = 0,
        Printed = 1,
        /// <summary>closed, and may not have been printed: the cashier has to look</summary>
        Unsure = 2,
    }

    /// <summary>What is under way, for a cashier's display.</summary>
    public enum VelnoTillStage
    {
        Accepted = 0,
        Connecting = 1,
        /// <summary>the register has lost its keys and is paired anew</summary>
        Pairing = 2,
        Starting = 3,
        /// <summary>the lines</summary>
        Entering = 4,
        CashPayment = 5,
        /// <summary>the customer is asked for a card</summary>
        CardPayment = 6,
        Closing = 7,
        /// <summary>an answer was lost: the register is asked what became of it</summary>
        Looking = 8,
        /// <summary>the register is busy, or out of paper</summary>
        Busy = 9,
        /// <summary>the register has cancelled it; it is entered once more</summary>
        EnteringAgain = 10,
        Printing = 11,
        Reporting = 12,
        /// <summary>the order has come to the state that it carries</summary>
        Settled = 13,
    }

    /// <summary>
    /// Where the register is met, as for velnoext_initialize(), and how long it is waited for.
    /// </summary>
    [StructLayout(LayoutKind.Sequential, Pack = 4)]
    public unsafe struct VelnoTillSettings
    {
        /// <summary>of this structure</summary>
        public uint size;
        /// <summary>number of the application</summary>
        public uint appNo;
        /// <summary>TCP port to listen on; not used with the relay</summary>
        public uint port;
        /// <summary>ms for the register to connect; 0: 10,000</summary>
        public uint connectTimeout;
        /// <summary>ms for an answer, in which somebody may have to act; 0: 120,000</summary>
        public uint answerLimit;
        /// <summary>ms for a register that is busy, before the order waits; 0: 30,000</summary>
        public uint patience;
        /// <summary>12 characters</summary>
        public IntPtr serial;
        /// <summary>to listen on, an IP address; "255.255.255.255" for the relay</summary>
        public IntPtr address;
        /// <summary>
        /// path of the ledger, which is made when it is not there, for its owner alone. It belongs to
        /// this register, and to one process at a time
        /// </summary>
        public IntPtr ledger;
    }

    /// <summary>An order as it is on record; 116 bytes.</summary>
    [StructLayout(LayoutKind.Explicit, Size = 116, Pack = 4)]
    public unsafe struct VelnoTillOutcome
    {
        /// <summary>of this structure</summary>
        [FieldOffset(0)] public uint size;
        /// <summary>a VelnoTillKind</summary>
        [FieldOffset(4)] public int kind;
        /// <summary>a VelnoTillState</summary>
        [FieldOffset(8)] public int state;
        /// <summary>a VelnoTillQuestion</summary>
        [FieldOffset(12)] public int question;
        /// <summary>a VelnoTillAnswer that has been given and not yet been acted upon</summary>
        [FieldOffset(16)] public int answer;
        /// <summary>a VelnoTillPaper</summary>
        [FieldOffset(20)] public int paper;
        /// <summary>1: the slip, or that behind the receipt, may not have been printed</summary>
        [FieldOffset(24)] public int slipUnsure;
        /// <summary>the code of velnoext.h behind refused and waiting</summary>
        [FieldOffset(28)] public int code;
        /// <summary>velnoext_cause() with it</summary>
        [FieldOffset(32)] public int cause;
        /// <summary>of a Z report: the register's number before it; 0: not asked yet</summary>
        [FieldOffset(36)] public int z;
        /// <summary>of the receipt it is entered on, or was closed on; 0, 0: none</summary>
        [FieldOffset(40)] public VelnoReceiptRef reference;
        /// <summary>of a closed receipt, see VelnoTotal</summary>
        [FieldOffset(48)] public VelnoEcrSaleTotals totals;
        /// <summary>
        /// cash in kuruş that was taken on receipts which the register cancelled and that is on none:
        /// the cashier gives it back, or keeps it for this sale
        /// </summary>
        [FieldOffset(92)] public long giveBack;
        /// <summary>ms since 1970, UTC</summary>
        [FieldOffset(100)] public long acceptedAt;
        /// <summary>ms since 1970, UTC</summary>
        [FieldOffset(108)] public long changedAt;
    }

    /// <summary>A line of an order's history. Its texts live until the callback returns.</summary>
    [StructLayout(LayoutKind.Sequential, Pack = 4)]
    public unsafe struct VelnoTillEvent
    {
        /// <summary>of this structure, set by the library</summary>
        public uint size;
        /// <summary>a VelnoTillState: the order's behind it</summary>
        public int state;
        /// <summary>of velnoext.h</summary>
        public int code;
        /// <summary>velnoext_cause() with it</summary>
        public int cause;
        /// <summary>ms since 1970, UTC</summary>
        public long time;
        /// <summary>what happened, in English, for whoever looks into it</summary>
        public IntPtr text;
        /// <summary>who answered; empty: the program</summary>
        public IntPtr person;
    }

    /// <summary>
    /// Is told what goes on with an order: the one that is worked on, and, with VelnoTillStage_Settled,
    /// another one that comes to another state by it. Called on the thread that works, which goes on
    /// when it returns; may call velnotill_interrupt() and the functions for texts, and no other.
    /// key: lives until it returns
    /// stage: a VelnoTillStage
    /// outcome: the order as it is on record; lives until it returns
    /// context: as handed to velnotill_set_listener()
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public unsafe delegate void VelnoTillListener(
        IntPtr key, int stage, VelnoTillOutcome* outcome, IntPtr context);

    /// <summary>
    /// Called for an order; key and outcome live until it returns. May call texts and interrupt alone.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public unsafe delegate void VelnoTillVisitor(
        IntPtr key, VelnoTillOutcome* outcome, IntPtr context);

    /// <summary>Called for a line of a history. May call texts and interrupt alone.</summary>
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public unsafe delegate void VelnoTillHistorian(
        VelnoTillEvent* @event, IntPtr context);

    /// <summary>The functions of velnotill.h.</summary>
    public static unsafe class Velnotill
    {
        private const string Library = "libvelnotill.so.0";

        /// <summary>Every state, for velnotill_list().</summary>
        public const int VELNOTILL_ALL_STATES = 127;

        /// <summary>
        /// Those that are not settled, for velnotill_list(): accepted, open, waiting, needs-person.
        /// </summary>
        public const int VELNOTILL_UNSETTLED_STATES = 99;

        /// <summary>
        /// Opens a register's ledger. Asks no register: orders do.
        /// till: receives the till
        /// settings: only read
        /// Returns 0; 3: the ledger cannot be used (another process has it, it belongs to another
        /// register, it is of a later version, Qt's SQLite driver is missing, the disk...); 100; 101: a
        /// setting is none; 103; 104
        /// int velnotill_open(VelnoTill **till, const VelnoTillSettings *settings);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_open(IntPtr* till, VelnoTillSettings* settings);

        /// <summary>
        /// Closes a till: interrupts the work under way, waits for every call that is inside, and
        /// closes ledger and connection. Nothing is lost: what was accepted goes on when the ledger is
        /// open again.
        /// Returns 0; 100; 102; 104
        /// int velnotill_close(VelnoTill *till);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_close(IntPtr till);

        /// <summary>
        /// Ends the work under way soon, so that its call returns 6. A call that has no work under way,
        /// or still waits for its turn, is not touched. From any thread, from callbacks, and from a
        /// signal handler. Never blocks.
        /// void velnotill_interrupt(VelnoTill *till);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnotill_interrupt(IntPtr till);

        /// <summary>
        /// Sets who is told; NULL: nobody. The one before is told no more once this has returned.
        /// Returns 0; 100; 102; 104
        /// int velnotill_set_listener(VelnoTill *till, VelnoTillListener listener, void *context);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_set_listener(
            IntPtr till,
            VelnoTillListener listener,
            IntPtr context);

        /// <summary>
        /// Judges a receipt in JSON without a register or a ledger.
        /// Returns 0; 1: velnotill_problem() has a line for each fault, with the path to it
        /// ("items[3].section: 9; accepted: 1 to 8"); 100; 104
        /// int velnotill_check_receipt(const char *json);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_check_receipt(byte[] json);

        /// <summary>
        /// The same of a slip.
        /// int velnotill_check_slip(const char *json);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_check_slip(byte[] json);

        /// <summary>
        /// Puts a receipt on record and does nothing more: velnotill_sell() or velnotill_work() sell
        /// it. When this has returned 0 the receipt survives a cut of this computer's power.
        /// outcome: filled with 0; may be NULL
        /// Returns 0, also when it is on record already; 1: faults; 2: conflict, velnotill_problem()
        /// names the first difference; 3; 100; 101: the key; 102; 104
        /// int velnotill_accept(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome
        /// *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_accept(
            IntPtr till,
            byte[] key,
            byte[] json,
            VelnoTillOutcome* outcome);

        /// <summary>
        /// Sells a receipt: puts it on record and works off what was accepted until this one is
        /// settled, waits or needs a person. Of a receipt that is on record only what is left is done;
        /// of a settled one nothing.
        /// json: the receipt, see docs/receipt-json.md
        /// outcome: filled with 0 and 6. **0 is not "sold"**: state tells
        /// Returns 0; 1; 2; 3; 6; 100; 101: the key; 102; 104
        /// int velnotill_sell(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome
        /// *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_sell(
            IntPtr till,
            byte[] key,
            byte[] json,
            VelnoTillOutcome* outcome);

        /// <summary>
        /// Makes a Z report, which ends the day, once for each key.
        /// Returns as velnotill_sell(), 1 apart
        /// int velnotill_z_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_z_report(IntPtr till, byte[] key, VelnoTillOutcome* outcome);

        /// <summary>
        /// Makes an X report, the totals of the day so far.
        /// Returns as velnotill_sell(), 1 apart
        /// int velnotill_x_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_x_report(IntPtr till, byte[] key, VelnoTillOutcome* outcome);

        /// <summary>
        /// Prints a slip of free text.
        /// json: the slip, see docs/receipt-json.md.
        /// Returns as velnotill_sell()
        /// int velnotill_print_slip(VelnoTill *till, const char *key, const char *json,
        /// VelnoTillOutcome *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_print_slip(
            IntPtr till,
            byte[] key,
            byte[] json,
            VelnoTillOutcome* outcome);

        /// <summary>
        /// Works off every order that can go on: at the start of a shift for instance, and when a
        /// register is back.
        /// Returns 0: nothing can go on now; 3; 6; 100; 102; 104
        /// int velnotill_work(VelnoTill *till);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_work(IntPtr till);

        /// <summary>
        /// A person's answer to the question of an order that needs one; VelnoTillAnswer_Drop also to
        /// an order that is not settled. It is on record with name and time when this returns;
        /// velnotill_work(), or handing the order over again, acts upon it.
        /// answer: a VelnoTillAnswer
        /// person: who answers: 1 to 100 bytes of UTF-8 without control characters
        /// outcome: filled with 0; may be NULL
        /// Returns 0; 3; 4; 5; 100; 101: the key, the answer, or the name; 102; 104
        /// int velnotill_answer(VelnoTill *till, const char *key, int answer, const char *person,
        /// VelnoTillOutcome *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_answer(
            IntPtr till,
            byte[] key,
            int answer,
            byte[] person,
            VelnoTillOutcome* outcome);

        /// <summary>
        /// How an order stands. Asks no register.
        /// Returns 0; 3; 4; 100; 101: the key; 102; 104
        /// int velnotill_find(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_find(IntPtr till, byte[] key, VelnoTillOutcome* outcome);

        /// <summary>
        /// Calls the visitor for each order of these states, as accepted.
        /// states: the sum of 1u &lt;&lt; state for each state that is meant
        /// Returns 0; 3: some or all were not shown; 100; 101: no state, or one that is none; 102; 104
        /// int velnotill_list(VelnoTill *till, unsigned int states, VelnoTillVisitor visitor, void
        /// *context);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_list(
            IntPtr till,
            uint states,
            VelnoTillVisitor visitor,
            IntPtr context);

        /// <summary>
        /// Calls the function for everything that happened to an order, from the first on.
        /// Returns 0; 3; 4; 100; 101: the key; 102; 104
        /// int velnotill_history(VelnoTill *till, const char *key, VelnoTillHistorian historian, void
        /// *context);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_history(
            IntPtr till,
            byte[] key,
            VelnoTillHistorian historian,
            IntPtr context);

        /// <summary>
        /// An order with its content and history as one JSON object, see docs/receipts.md: for a log,
        /// or a screen.
        /// text: receives the text, for velnotill_free_text()
        /// Returns 0; 3; 4; 100; 101: the key; 102; 104; 105
        /// int velnotill_json(VelnoTill *till, const char *key, char **text);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_json(IntPtr till, byte[] key, IntPtr* text);

        /// <summary>
        /// Forgets settled orders that have not changed for so long. A key that is forgotten is a new
        /// one: choose an age at which nobody hands it over any more. Nothing else ever forgets an
        /// order.
        /// seconds: age; 0 means any. Whatever their age these stay: the last Z report, and orders with
        /// a receipt that may yet turn out to count
        /// count: receives how many; may be NULL
        /// Returns 0; 3; 100; 102; 104
        /// int velnotill_prune(VelnoTill *till, unsigned int seconds, int *count);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_prune(IntPtr till, uint seconds, int* count);

        /// <summary>
        /// What a cashier is told of an order: how it stands, with receipt number and amounts, what is
        /// to be done, and the question with its answers when there is one. Several lines; none is
        /// empty.
        /// outcome: as a function has filled it
        /// language: "en" or "tr"
        /// text: receives the text, for velnotill_free_text()
        /// Returns 0; 100; 101: the outcome's size; 105
        /// int velnotill_message(const VelnoTillOutcome *outcome, const char *language, char **text);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnotill_message(
            VelnoTillOutcome* outcome,
            byte[] language,
            IntPtr* text);

        /// <summary>
        /// What the last call on this thread that returned another code than 0 complained about, in
        /// English; faults have a line each. Empty before. Lives until the next such call on this
        /// thread. Never NULL.
        /// const char *velnotill_problem(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_problem();

        /// <summary>
        /// The name of a VelnoTillResult: "done", "conflict".
        /// const char *velnotill_result_name(int result);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_result_name(int result);

        /// <summary>
        /// A VelnoTillResult in a sentence.
        /// const char *velnotill_result_text(int result, const char *language);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_result_text(int result, byte[] language);

        /// <summary>
        /// The name of a VelnoTillKind: "receipt", "z-report".
        /// const char *velnotill_kind_name(int kind);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_kind_name(int kind);

        /// <summary>
        /// The name of a VelnoTillState: "closed", "needs-person".
        /// const char *velnotill_state_name(int state);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_state_name(int state);

        /// <summary>
        /// A VelnoTillState in a sentence, as a cashier is told it.
        /// const char *velnotill_state_text(int state, const char *language);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_state_text(int state, byte[] language);

        /// <summary>
        /// The name of a VelnoTillQuestion: "none", "receipt-unknown".
        /// const char *velnotill_question_name(int question);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_question_name(int question);

        /// <summary>
        /// The name of a VelnoTillAnswer: "none", "paid", "sell-again", "drop".
        /// const char *velnotill_answer_name(int answer);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_answer_name(int answer);

        /// <summary>
        /// The name of a VelnoTillPaper: "unknown", "printed", "unsure".
        /// const char *velnotill_paper_name(int paper);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_paper_name(int paper);

        /// <summary>
        /// The name of a VelnoTillStage: "card-payment".
        /// const char *velnotill_stage_name(int stage);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_stage_name(int stage);

        /// <summary>
        /// A VelnoTillStage in a few words, for a cashier's display: "card payment under way".
        /// const char *velnotill_stage_text(int stage, const char *language);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnotill_stage_text(int stage, byte[] language);

        /// <summary>
        /// Frees what was handed out as `char **`; NULL is nothing.
        /// void velnotill_free_text(char *text);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnotill_free_text(IntPtr text);
    }
}
