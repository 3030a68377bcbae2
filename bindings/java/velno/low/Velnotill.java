// SPDX-License-Identifier: Apache-2.0
// velnotill.h for Java. Made by scripts/generate from the header: do not edit.
package velno.low;

import com.sun.jna.Callback;
import com.sun.jna.Library;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import velno.low.Velnoext.*;

/** What velnotill.h declares. */
public final class Velnotill {
    private Velnotill() {
    }

    /** Every state, for velnotill_list(). */
    public static final int VELNOTILL_ALL_STATES = 127;

    /** Those that are not settled, for velnotill_list(): accepted, open, waiting, needs-person. */
    public static final int VELNOTILL_UNSETTLED_STATES = 99;

    /** What a call came to. From 100 on nothing was looked up or done. */
    public enum VelnoTillResult {
        /** the order is there: its state says what has become of it */
        DONE(0),
        /** what was handed over has faults; velnotill_problem() tells them all */
        BAD_CONTENT(1),
        /** the key is on record with another content; nothing was done */
        CONFLICT(2),
        /** the ledger cannot be opened, read or written; nothing more was done */
        LEDGER_FAILED(3),
        /** no order has this key */
        UNKNOWN(4),
        /** the order does not wait for this answer */
        NOT_ASKED(5),
        /** the order stays as it is and goes on when it is asked for again */
        INTERRUPTED(6),
        NULL_ARGUMENT(100),
        /** a key, name, answer, setting, size or mask that is none */
        BAD_ARGUMENT(101),
        /** the till is not open, or not any more */
        NOT_OPEN(102),
        /** this process has a till open */
        ALREADY_OPEN(103),
        /** a callback may call velnotill_interrupt() and texts alone */
        IN_CALLBACK(104),
        NO_MEMORY(105);

        public final int value;

        VelnoTillResult(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillResult of(int value) {
            for (VelnoTillResult one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** What an order is. */
    public enum VelnoTillKind {
        RECEIPT(0),
        Z_REPORT(1),
        X_REPORT(2),
        SLIP(3);

        public final int value;

        VelnoTillKind(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillKind of(int value) {
            for (VelnoTillKind one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * Where an order stands. Closed, cancelled and refused are settled: nothing more is done about it.
     * Only when a receipt that was taken for cancelled turns out to count does a person come to be
     * asked, CountedTwice.
     */
    public enum VelnoTillState {
        /** on record; nothing has been done about it that is known */
        ACCEPTED(0),
        /** its fiscal receipt is open on the register, and its reference is known */
        OPEN(1),
        /** done: the receipt counts, the report is made, the slip is printed */
        CLOSED(2),
        /** not done, because a person dropped it */
        CANCELLED(3),
        /** not done, because the register refuses it; code and cause tell why */
        REFUSED(4),
        /** the register is away or busy: hand it over again, or velnotill_work() */
        WAITING(5),
        /** cannot be known: a person must answer the question */
        NEEDS_PERSON(6);

        public final int value;

        VelnoTillState(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillState of(int value) {
            for (VelnoTillState one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** What a person is asked about an order that needs one. */
    public enum VelnoTillQuestion {
        NONE(0),
        /** the register does not tell whether the receipt was closed */
        RECEIPT_UNKNOWN(1),
        /** it cancelled it when something had been paid, or may have been */
        MONEY_TAKEN(2),
        /** a part is paid, the rest is refused; the sale is open */
        PAYMENT_REFUSED(3),
        /** the register tells of it what nobody has entered */
        NOT_OURS(4),
        /** its numbers are below those of the ledger */
        OTHER_REGISTER(5),
        /** a receipt that was taken for cancelled counts, too */
        COUNTED_TWICE(6),
        /** whether a slip came out */
        SLIP_PRINTED(7);

        public final int value;

        VelnoTillQuestion(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillQuestion of(int value) {
            for (VelnoTillQuestion one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * What a person answers. Sell-again and drop are meant to follow what velnotill_message() asks for
     * first.
     */
    public enum VelnoTillAnswer {
        NONE(0),
        /** it was done: nothing more is to be */
        PAID(1),
        /** it was not done: do it */
        SELL_AGAIN(2),
        /** it was not done, and is not wanted any more */
        DROP(3);

        public final int value;

        VelnoTillAnswer(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillAnswer of(int value) {
            for (VelnoTillAnswer one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** What is known of the paper of a closed receipt. */
    public enum VelnoTillPaper {
        /** not closed */
        UNKNOWN(0),
        PRINTED(1),
        /** closed, and may not have been printed: the cashier has to look */
        UNSURE(2);

        public final int value;

        VelnoTillPaper(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillPaper of(int value) {
            for (VelnoTillPaper one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** What is under way, for a cashier's display. */
    public enum VelnoTillStage {
        ACCEPTED(0),
        CONNECTING(1),
        /** the register has lost its keys and is paired anew */
        PAIRING(2),
        STARTING(3),
        /** the lines */
        ENTERING(4),
        CASH_PAYMENT(5),
        /** the customer is asked for a card */
        CARD_PAYMENT(6),
        CLOSING(7),
        /** an answer was lost: the register is asked what became of it */
        LOOKING(8),
        /** the register is busy, or out of paper */
        BUSY(9),
        /** the register has cancelled it; it is entered once more */
        ENTERING_AGAIN(10),
        PRINTING(11),
        REPORTING(12),
        /** the order has come to the state that it carries */
        SETTLED(13);

        public final int value;

        VelnoTillStage(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTillStage of(int value) {
            for (VelnoTillStage one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** Where the register is met, as for velnoext_initialize(), and how long it is waited for. */
    public static final class VelnoTillSettings {
        public static final long BYTES = Native.POINTER_SIZE == 8 ? 48 : 36;
        public final Pointer at;

        public VelnoTillSettings() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoTillSettings(Pointer at) {
            this.at = at;
        }

        public static final long SIZE = 0;

        /** of this structure */
        public int size() {
            return at.getInt(SIZE);
        }

        public void size(int value) {
            at.setInt(SIZE, value);
        }

        public static final long APP_NO = 4;

        /** number of the application */
        public int appNo() {
            return at.getInt(APP_NO);
        }

        public void appNo(int value) {
            at.setInt(APP_NO, value);
        }

        public static final long PORT = 8;

        /** TCP port to listen on; not used with the relay */
        public int port() {
            return at.getInt(PORT);
        }

        public void port(int value) {
            at.setInt(PORT, value);
        }

        public static final long CONNECT_TIMEOUT = 12;

        /** ms for the register to connect; 0: 10,000 */
        public int connectTimeout() {
            return at.getInt(CONNECT_TIMEOUT);
        }

        public void connectTimeout(int value) {
            at.setInt(CONNECT_TIMEOUT, value);
        }

        public static final long ANSWER_LIMIT = 16;

        /** ms for an answer, in which somebody may have to act; 0: 120,000 */
        public int answerLimit() {
            return at.getInt(ANSWER_LIMIT);
        }

        public void answerLimit(int value) {
            at.setInt(ANSWER_LIMIT, value);
        }

        public static final long PATIENCE = 20;

        /** ms for a register that is busy, before the order waits; 0: 30,000 */
        public int patience() {
            return at.getInt(PATIENCE);
        }

        public void patience(int value) {
            at.setInt(PATIENCE, value);
        }

        public static final long SERIAL = 24;

        /** 12 characters */
        public Pointer serial() {
            return at.getPointer(SERIAL);
        }

        public void serial(Pointer value) {
            at.setPointer(SERIAL, value);
        }

        public static final long ADDRESS = Native.POINTER_SIZE == 8 ? 32 : 28;

        /** to listen on, an IP address; "255.255.255.255" for the relay */
        public Pointer address() {
            return at.getPointer(ADDRESS);
        }

        public void address(Pointer value) {
            at.setPointer(ADDRESS, value);
        }

        public static final long LEDGER = Native.POINTER_SIZE == 8 ? 40 : 32;

        /**
         * path of the ledger, which is made when it is not there, for its owner alone. It belongs to
         * this register, and to one process at a time
         */
        public Pointer ledger() {
            return at.getPointer(LEDGER);
        }

        public void ledger(Pointer value) {
            at.setPointer(LEDGER, value);
        }
    }

    /** An order as it is on record; 116 bytes. */
    public static final class VelnoTillOutcome {
        public static final long BYTES = 116;
        public final Pointer at;

        public VelnoTillOutcome() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoTillOutcome(Pointer at) {
            this.at = at;
        }

        public static final long SIZE = 0;

        /** of this structure */
        public int size() {
            return at.getInt(SIZE);
        }

        public void size(int value) {
            at.setInt(SIZE, value);
        }

        public static final long KIND = 4;

        /** a VelnoTillKind */
        public int kind() {
            return at.getInt(KIND);
        }

        public void kind(int value) {
            at.setInt(KIND, value);
        }

        public static final long STATE = 8;

        /** a VelnoTillState */
        public int state() {
            return at.getInt(STATE);
        }

        public void state(int value) {
            at.setInt(STATE, value);
        }

        public static final long QUESTION = 12;

        /** a VelnoTillQuestion */
        public int question() {
            return at.getInt(QUESTION);
        }

        public void question(int value) {
            at.setInt(QUESTION, value);
        }

        public static final long ANSWER = 16;

        /** a VelnoTillAnswer that has been given and not yet been acted upon */
        public int answer() {
            return at.getInt(ANSWER);
        }

        public void answer(int value) {
            at.setInt(ANSWER, value);
        }

        public static final long PAPER = 20;

        /** a VelnoTillPaper */
        public int paper() {
            return at.getInt(PAPER);
        }

        public void paper(int value) {
            at.setInt(PAPER, value);
        }

        public static final long SLIP_UNSURE = 24;

        /** 1: the slip, or that behind the receipt, may not have been printed */
        public int slipUnsure() {
            return at.getInt(SLIP_UNSURE);
        }

        public void slipUnsure(int value) {
            at.setInt(SLIP_UNSURE, value);
        }

        public static final long CODE = 28;

        /** the code of velnoext.h behind refused and waiting */
        public int code() {
            return at.getInt(CODE);
        }

        public void code(int value) {
            at.setInt(CODE, value);
        }

        public static final long CAUSE = 32;

        /** velnoext_cause() with it */
        public int cause() {
            return at.getInt(CAUSE);
        }

        public void cause(int value) {
            at.setInt(CAUSE, value);
        }

        public static final long Z = 36;

        /** of a Z report: the register's number before it; 0: not asked yet */
        public int z() {
            return at.getInt(Z);
        }

        public void z(int value) {
            at.setInt(Z, value);
        }

        public static final long REFERENCE = 40;

        /** of the receipt it is entered on, or was closed on; 0, 0: none */
        public VelnoReceiptRef reference() {
            return new VelnoReceiptRef(at.share(REFERENCE, VelnoReceiptRef.BYTES));
        }

        public static final long TOTALS = 48;

        /** of a closed receipt, see VelnoTotal */
        public VelnoEcrSaleTotals totals() {
            return new VelnoEcrSaleTotals(at.share(TOTALS, VelnoEcrSaleTotals.BYTES));
        }

        public static final long GIVE_BACK = 92;

        /**
         * cash in kuruş that was taken on receipts which the register cancelled and that is on none:
         * the cashier gives it back, or keeps it for this sale
         */
        public long giveBack() {
            return at.getLong(GIVE_BACK);
        }

        public void giveBack(long value) {
            at.setLong(GIVE_BACK, value);
        }

        public static final long ACCEPTED_AT = 100;

        /** ms since 1970, UTC */
        public long acceptedAt() {
            return at.getLong(ACCEPTED_AT);
        }

        public void acceptedAt(long value) {
            at.setLong(ACCEPTED_AT, value);
        }

        public static final long CHANGED_AT = 108;

        /** ms since 1970, UTC */
        public long changedAt() {
            return at.getLong(CHANGED_AT);
        }

        public void changedAt(long value) {
            at.setLong(CHANGED_AT, value);
        }
    }

    /** A line of an order's history. Its texts live until the callback returns. */
    public static final class VelnoTillEvent {
        public static final long BYTES = Native.POINTER_SIZE == 8 ? 40 : 32;
        public final Pointer at;

        public VelnoTillEvent() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoTillEvent(Pointer at) {
            this.at = at;
        }

        public static final long SIZE = 0;

        /** of this structure, set by the library */
        public int size() {
            return at.getInt(SIZE);
        }

        public void size(int value) {
            at.setInt(SIZE, value);
        }

        public static final long STATE = 4;

        /** a VelnoTillState: the order's behind it */
        public int state() {
            return at.getInt(STATE);
        }

        public void state(int value) {
            at.setInt(STATE, value);
        }

        public static final long CODE = 8;

        /** of velnoext.h */
        public int code() {
            return at.getInt(CODE);
        }

        public void code(int value) {
            at.setInt(CODE, value);
        }

        public static final long CAUSE = 12;

        /** velnoext_cause() with it */
        public int cause() {
            return at.getInt(CAUSE);
        }

        public void cause(int value) {
            at.setInt(CAUSE, value);
        }

        public static final long TIME = 16;

        /** ms since 1970, UTC */
        public long time() {
            return at.getLong(TIME);
        }

        public void time(long value) {
            at.setLong(TIME, value);
        }

        public static final long TEXT = 24;

        /** what happened, in English, for whoever looks into it */
        public Pointer text() {
            return at.getPointer(TEXT);
        }

        public void text(Pointer value) {
            at.setPointer(TEXT, value);
        }

        public static final long PERSON = Native.POINTER_SIZE == 8 ? 32 : 28;

        /** who answered; empty: the program */
        public Pointer person() {
            return at.getPointer(PERSON);
        }

        public void person(Pointer value) {
            at.setPointer(PERSON, value);
        }
    }

    /**
     * Is told what goes on with an order: the one that is worked on, and, with VelnoTillStage_Settled,
     * another one that comes to another state by it. Called on the thread that works, which goes on
     * when it returns; may call velnotill_interrupt() and the functions for texts, and no other.
     * key: lives until it returns
     * stage: a VelnoTillStage
     * outcome: the order as it is on record; lives until it returns
     * context: as handed to velnotill_set_listener()
     */
    public interface VelnoTillListener extends Callback {
        void invoke(Pointer key, int stage, Pointer outcome, Pointer context);
    }

    /** Called for an order; key and outcome live until it returns. May call texts and interrupt alone. */
    public interface VelnoTillVisitor extends Callback {
        void invoke(Pointer key, Pointer outcome, Pointer context);
    }

    /** Called for a line of a history. May call texts and interrupt alone. */
    public interface VelnoTillHistorian extends Callback {
        void invoke(Pointer event, Pointer context);
    }

    /** The functions of velnotill.h, see Loading. */
    public interface Functions extends Library {
        /**
         * Opens a register's ledger. Asks no register: orders do.
         * till: receives the till
         * settings: only read
         * Returns 0; 3: the ledger cannot be used (another process has it, it belongs to another
         * register, it is of a later version, Qt's SQLite driver is missing, the disk...); 100; 101: a
         * setting is none; 103; 104
         * int velnotill_open(VelnoTill **till, const VelnoTillSettings *settings);
         */
        int velnotill_open(Pointer till, Pointer settings);

        /**
         * Closes a till: interrupts the work under way, waits for every call that is inside, and
         * closes ledger and connection. Nothing is lost: what was accepted goes on when the ledger is
         * open again.
         * Returns 0; 100; 102; 104
         * int velnotill_close(VelnoTill *till);
         */
        int velnotill_close(Pointer till);

        /**
         * Ends the work under way soon, so that its call returns 6. A call that has no work under way,
         * or still waits for its turn, is not touched. From any thread, from callbacks, and from a
         * signal handler. Never blocks.
         * void velnotill_interrupt(VelnoTill *till);
         */
        void velnotill_interrupt(Pointer till);

        /**
         * Sets who is told; NULL: nobody. The one before is told no more once this has returned.
         * Returns 0; 100; 102; 104
         * int velnotill_set_listener(VelnoTill *till, VelnoTillListener listener, void *context);
         */
        int velnotill_set_listener(Pointer till, VelnoTillListener listener, Pointer context);

        /**
         * Judges a receipt in JSON without a register or a ledger.
         * Returns 0; 1: velnotill_problem() has a line for each fault, with the path to it
         * ("items[3].section: 9; accepted: 1 to 8"); 100; 104
         * int velnotill_check_receipt(const char *json);
         */
        int velnotill_check_receipt(byte[] json);

        /**
         * The same of a slip.
         * int velnotill_check_slip(const char *json);
         */
        int velnotill_check_slip(byte[] json);

        /**
         * Puts a receipt on record and does nothing more: velnotill_sell() or velnotill_work() sell
         * it. When this has returned 0 the receipt survives a cut of this computer's power.
         * outcome: filled with 0; may be NULL
         * Returns 0, also when it is on record already; 1: faults; 2: conflict, velnotill_problem()
         * names the first difference; 3; 100; 101: the key; 102; 104
         * int velnotill_accept(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome
         * *outcome);
         */
        int velnotill_accept(Pointer till, byte[] key, byte[] json, Pointer outcome);

        /**
         * Sells a receipt: puts it on record and works off what was accepted until this one is
         * settled, waits or needs a person. Of a receipt that is on record only what is left is done;
         * of a settled one nothing.
         * json: the receipt, see docs/receipt-json.md
         * outcome: filled with 0 and 6. **0 is not "sold"**: state tells
         * Returns 0; 1; 2; 3; 6; 100; 101: the key; 102; 104
         * int velnotill_sell(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome
         * *outcome);
         */
        int velnotill_sell(Pointer till, byte[] key, byte[] json, Pointer outcome);

        /**
         * Makes a Z report, which ends the day, once for each key.
         * Returns as velnotill_sell(), 1 apart
         * int velnotill_z_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
         */
        int velnotill_z_report(Pointer till, byte[] key, Pointer outcome);

        /**
         * Makes an X report, the totals of the day so far.
         * Returns as velnotill_sell(), 1 apart
         * int velnotill_x_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
         */
        int velnotill_x_report(Pointer till, byte[] key, Pointer outcome);

        /**
         * Prints a slip of free text.
         * json: the slip, see docs/receipt-json.md.
         * Returns as velnotill_sell()
         * int velnotill_print_slip(VelnoTill *till, const char *key, const char *json,
         * VelnoTillOutcome *outcome);
         */
        int velnotill_print_slip(Pointer till, byte[] key, byte[] json, Pointer outcome);

        /**
         * Works off every order that can go on: at the start of a shift for instance, and when a
         * register is back.
         * Returns 0: nothing can go on now; 3; 6; 100; 102; 104
         * int velnotill_work(VelnoTill *till);
         */
        int velnotill_work(Pointer till);

        /**
         * A person's answer to the question of an order that needs one; VelnoTillAnswer_Drop also to
         * an order that is not settled. It is on record with name and time when this returns;
         * velnotill_work(), or handing the order over again, acts upon it.
         * answer: a VelnoTillAnswer
         * person: who answers: 1 to 100 bytes of UTF-8 without control characters
         * outcome: filled with 0; may be NULL
         * Returns 0; 3; 4; 5; 100; 101: the key, the answer, or the name; 102; 104
         * int velnotill_answer(VelnoTill *till, const char *key, int answer, const char *person,
         * VelnoTillOutcome *outcome);
         */
        int velnotill_answer(Pointer till, byte[] key, int answer, byte[] person, Pointer outcome);

        /**
         * How an order stands. Asks no register.
         * Returns 0; 3; 4; 100; 101: the key; 102; 104
         * int velnotill_find(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
         */
        int velnotill_find(Pointer till, byte[] key, Pointer outcome);

        /**
         * Calls the visitor for each order of these states, as accepted.
         * states: the sum of 1u << state for each state that is meant
         * Returns 0; 3: some or all were not shown; 100; 101: no state, or one that is none; 102; 104
         * int velnotill_list(VelnoTill *till, unsigned int states, VelnoTillVisitor visitor, void
         * *context);
         */
        int velnotill_list(Pointer till, int states, VelnoTillVisitor visitor, Pointer context);

        /**
         * Calls the function for everything that happened to an order, from the first on.
         * Returns 0; 3; 4; 100; 101: the key; 102; 104
         * int velnotill_history(VelnoTill *till, const char *key, VelnoTillHistorian historian, void
         * *context);
         */
        int velnotill_history(Pointer till, byte[] key, VelnoTillHistorian historian, Pointer context);

        /**
         * An order with its content and history as one JSON object, see docs/receipts.md: for a log,
         * or a screen.
         * text: receives the text, for velnotill_free_text()
         * Returns 0; 3; 4; 100; 101: the key; 102; 104; 105
         * int velnotill_json(VelnoTill *till, const char *key, char **text);
         */
        int velnotill_json(Pointer till, byte[] key, Pointer text);

        /**
         * Forgets settled orders that have not changed for so long. A key that is forgotten is a new
         * one: choose an age at which nobody hands it over any more. Nothing else ever forgets an
         * order.
         * seconds: age; 0 means any. Whatever their age these stay: the last Z report, and orders with
         * a receipt that may yet turn out to count
         * count: receives how many; may be NULL
         * Returns 0; 3; 100; 102; 104
         * int velnotill_prune(VelnoTill *till, unsigned int seconds, int *count);
         */
        int velnotill_prune(Pointer till, int seconds, Pointer count);

        /**
         * What a cashier is told of an order: how it stands, with receipt number and amounts, what is
         * to be done, and the question with its answers when there is one. Several lines; none is
         * empty.
         * outcome: as a function has filled it
         * language: "en" or "tr"
         * text: receives the text, for velnotill_free_text()
         * Returns 0; 100; 101: the outcome's size; 105
         * int velnotill_message(const VelnoTillOutcome *outcome, const char *language, char **text);
         */
        int velnotill_message(Pointer outcome, byte[] language, Pointer text);

        /**
         * What the last call on this thread that returned another code than 0 complained about, in
         * English; faults have a line each. Empty before. Lives until the next such call on this
         * thread. Never NULL.
         * const char *velnotill_problem(void);
         */
        Pointer velnotill_problem();

        /**
         * The name of a VelnoTillResult: "done", "conflict".
         * const char *velnotill_result_name(int result);
         */
        Pointer velnotill_result_name(int result);

        /**
         * A VelnoTillResult in a sentence.
         * const char *velnotill_result_text(int result, const char *language);
         */
        Pointer velnotill_result_text(int result, byte[] language);

        /**
         * The name of a VelnoTillKind: "receipt", "z-report".
         * const char *velnotill_kind_name(int kind);
         */
        Pointer velnotill_kind_name(int kind);

        /**
         * The name of a VelnoTillState: "closed", "needs-person".
         * const char *velnotill_state_name(int state);
         */
        Pointer velnotill_state_name(int state);

        /**
         * A VelnoTillState in a sentence, as a cashier is told it.
         * const char *velnotill_state_text(int state, const char *language);
         */
        Pointer velnotill_state_text(int state, byte[] language);

        /**
         * The name of a VelnoTillQuestion: "none", "receipt-unknown".
         * const char *velnotill_question_name(int question);
         */
        Pointer velnotill_question_name(int question);

        /**
         * The name of a VelnoTillAnswer: "none", "paid", "sell-again", "drop".
         * const char *velnotill_answer_name(int answer);
         */
        Pointer velnotill_answer_name(int answer);

        /**
         * The name of a VelnoTillPaper: "unknown", "printed", "unsure".
         * const char *velnotill_paper_name(int paper);
         */
        Pointer velnotill_paper_name(int paper);

        /**
         * The name of a VelnoTillStage: "card-payment".
         * const char *velnotill_stage_name(int stage);
         */
        Pointer velnotill_stage_name(int stage);

        /**
         * A VelnoTillStage in a few words, for a cashier's display: "card payment under way".
         * const char *velnotill_stage_text(int stage, const char *language);
         */
        Pointer velnotill_stage_text(int stage, byte[] language);

        /**
         * Frees what was handed out as `char **`; NULL is nothing.
         * void velnotill_free_text(char *text);
         */
        void velnotill_free_text(Pointer text);
    }
}
