// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import java.nio.file.Path;
import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import java.util.function.BiConsumer;
import velno.low.Loading;
import velno.low.Velnotill.VelnoTillAnswer;
import velno.low.Velnotill.VelnoTillListener;
import velno.low.Velnotill.VelnoTillOutcome;
import velno.low.Velnotill.VelnoTillResult;
import velno.low.Velnotill.VelnoTillSettings;
import velno.low.Velnotill.VelnoTillStage;
import velno.low.Velnotill.VelnoTillVisitor;
import velno.low.Velnotill;

/**
 * Whole receipts under a key: one call, one receipt, through lost answers and power cuts. A method that
 * has to do with the register blocks until the order is settled, waits or needs a person; interrupt() ends
 * that. Every method may be called from any thread. What fails throws a TillException.
 */
public final class Till implements AutoCloseable {
    /** `listen`, for registers that are reached through the relay server. */
    public static final String RELAY = "255.255.255.255";

    private interface Order {
        int call(byte[] key, Pointer outcome);
    }

    private final Pointer till;
    private final VelnoTillListener listener; // must live as long as the till
    private boolean isClosed;

    public Till(String serial, String listen, int app, Path ledger) {
        this(serial, listen, app, ledger, null, Duration.ofSeconds(10), Duration.ofSeconds(120),
             Duration.ofSeconds(30));
    }

    /**
     * Asks no register: orders do. `listen` is ADDRESS:PORT of this computer, where the register connects,
     * `ledger` a file that is made when it is not there. `progress` may be null; it is called on the
     * thread that works, may call interrupt() and message() alone, and what it throws goes to standard
     * error. The times are for the register to connect, for an answer, and for a register that is busy.
     */
    public Till(String serial, String listen, int app, Path ledger,
                BiConsumer<VelnoTillStage, Outcome> progress, Duration connectTimeout, Duration answerLimit,
                Duration patience) {
        VelnoTillSettings settings = new VelnoTillSettings();
        settings.size((int)VelnoTillSettings.BYTES);
        settings.appNo(app);
        settings.port(Values.port(listen));
        settings.connectTimeout(Values.milliseconds(connectTimeout, "connectTimeout"));
        settings.answerLimit(Values.milliseconds(answerLimit, "answerLimit"));
        settings.patience(Values.milliseconds(patience, "patience"));
        Memory name = memory(Values.bytes(serial, "serial"));
        Memory address = memory(Values.address(listen));
        Memory path = memory(Values.bytes(ledger.toString(), "ledger"));
        settings.serial(name);
        settings.address(address);
        settings.ledger(path);
        Memory opened = new Memory(Native.POINTER_SIZE);
        try {
            TillException.check(Loading.TILL.velnotill_open(opened, settings.at));
        } finally {
            java.lang.ref.Reference.reachabilityFence(List.of(name, address, path));
        }
        till = opened.getPointer(0);
        listener =
            progress == null ? null : (key, stage, outcome, context) -> tell(progress, key, stage, outcome);
        if (listener != null)
            TillException.check(Loading.TILL.velnotill_set_listener(till, listener, null));
    }

    /** Interrupts what is under way and closes the ledger, which keeps all that was accepted. */
    @Override
    public void close() {
        if (isClosed)
            return;
        int result = Loading.TILL.velnotill_close(till);
        if (result != VelnoTillResult.NOT_OPEN.value) // another thread was first
            TillException.check(result);
        isClosed = true;
    }

    /** Ends the work under way soon. From any thread; never blocks. */
    public void interrupt() {
        Loading.TILL.velnotill_interrupt(till);
    }

    /** Sells a receipt, once, however often the same is handed over. The outcome's state tells the rest. */
    public Outcome sell(Receipt receipt, String key) {
        return sell(receipt.toJson(), key);
    }

    /** The same of JSON, see docs/receipt-json.md. */
    public Outcome sell(String json, String key) {
        byte[] content = Values.bytes(json, "json");
        return ordered(key, (name, outcome) -> Loading.TILL.velnotill_sell(till, name, content, outcome));
    }

    /** Puts a receipt on record, where it survives a power cut, and does nothing more. */
    public Outcome accept(Receipt receipt, String key) {
        byte[] content = Values.bytes(receipt.toJson(), "json");
        return ordered(key, (name, outcome) -> Loading.TILL.velnotill_accept(till, name, content, outcome));
    }

    /** Prints a slip of free text, once; see docs/receipt-json.md. */
    public Outcome printSlip(String json, String key) {
        byte[] content = Values.bytes(json, "json");
        return ordered(key,
                       (name, outcome) -> Loading.TILL.velnotill_print_slip(till, name, content, outcome));
    }

    /** Makes a Z report, which ends the day, once for each key. */
    public Outcome zReport(String key) {
        return ordered(key, (name, outcome) -> Loading.TILL.velnotill_z_report(till, name, outcome));
    }

    public Outcome xReport(String key) {
        return ordered(key, (name, outcome) -> Loading.TILL.velnotill_x_report(till, name, outcome));
    }

    /** Works off every order that can go on: when the program starts, and when a register is back. */
    public void work() {
        checkAlive(Loading.TILL.velnotill_work(till));
    }

    /** A person's answer to the question of an order. work(), or handing it over again, acts upon it. */
    public Outcome answer(String key, VelnoTillAnswer answer, String person) {
        byte[] who = Values.bytes(person, "person");
        return ordered(
            key, (name, outcome) -> Loading.TILL.velnotill_answer(till, name, answer.value, who, outcome));
    }

    /** How an order stands. Asks no register. */
    public Outcome find(String key) {
        return ordered(key, (name, outcome) -> Loading.TILL.velnotill_find(till, name, outcome));
    }

    /** Every order, as accepted. */
    public List<Outcome> orders() {
        List<Outcome> found = new ArrayList<>();
        VelnoTillVisitor visitor =
            (key, outcome,
             context) -> found.add(new Outcome(Values.text(key), new VelnoTillOutcome(outcome)));
        TillException.check(Loading.TILL.velnotill_list(till, Velnotill.VELNOTILL_ALL_STATES, visitor, null));
        return found;
    }

    /** An order with its content and history as JSON, see docs/receipts.md. */
    public String record(String key) {
        Memory text = new Memory(Native.POINTER_SIZE);
        TillException.check(Loading.TILL.velnotill_json(till, Values.bytes(key, "key"), text));
        return Outcome.taken(text);
    }

    /** Forgets settled orders that have not changed for so long, and tells how many. */
    public int prune(Duration age) {
        if (age.isNegative() || age.toSeconds() >> 32 != 0)
            throw new IllegalArgumentException("age: " + age + "; accepted: 0 seconds to 136 years");
        Memory count = new Memory(Integer.BYTES);
        TillException.check(Loading.TILL.velnotill_prune(till, (int)age.toSeconds(), count));
        return count.getInt(0);
    }

    private Outcome ordered(String key, Order order) {
        VelnoTillOutcome outcome = new VelnoTillOutcome();
        outcome.size((int)VelnoTillOutcome.BYTES);
        checkAlive(order.call(Values.bytes(key, "key"), outcome.at));
        return new Outcome(key, outcome);
    }

    /** What the library came to when it may have called the listener, which had to live until then. */
    private void checkAlive(int result) {
        java.lang.ref.Reference.reachabilityFence(this);
        TillException.check(result);
    }

    private static Memory memory(byte[] bytes) {
        Memory memory = new Memory(bytes.length);
        memory.write(0, bytes, 0, bytes.length);
        return memory;
    }

    /** No exception may go through the library. */
    private static void tell(BiConsumer<VelnoTillStage, Outcome> progress, Pointer key, int stage,
                             Pointer outcome) {
        try {
            progress.accept(VelnoTillStage.of(stage),
                            new Outcome(Values.text(key), new VelnoTillOutcome(outcome)));
        } catch (RuntimeException problem) {
            System.err.println("velno: the progress callback has thrown: " + problem);
        }
    }
}
