// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import com.sun.jna.Pointer;
import java.math.BigDecimal;
import java.time.Duration;
import java.util.List;
import java.util.stream.IntStream;
import velno.low.Loading;
import velno.low.Velnoext.VelnoEcrSaleTotals;
import velno.low.Velnoext.VelnoEcrState;
import velno.low.Velnoext.VelnoReceiptRef;
import velno.low.Velnoext.VelnoResult;
import velno.low.Velnoext.VelnoSaleItem;

/**
 * Single commands to a register that is connected. interrupt() on another thread ends a call that waits;
 * connect() then connects afresh. What fails throws a RegisterException. What a lost answer leaves behind
 * is the caller's to find out: a Till does that by itself.
 */
public final class Register implements AutoCloseable {
    interface Command {
        int call(int timeout);
    }

    interface OutputCommand {
        int call(int timeout, Pointer output);
    }

    interface ListCommand {
        int call(int timeout, Pointer list, Pointer count);
    }

    private static final int MOST_ACQUIRERS = 256;
    private static final int SERIAL_ROOM = 64;
    private static final Object TOGETHER = new Object(); // the library has one active register and one cause

    private final byte[] name;
    private final byte[] address;
    private final short port;
    private final int app;
    private final int connectTimeout;
    private final int timeout;

    public Register(String serial, String listen, int app) {
        this(serial, listen, app, Duration.ofSeconds(30), Duration.ofSeconds(5));
    }

    /** Waits for the register to connect to ADDRESS:PORT, and pairs with it if need be. */
    public Register(String serial, String listen, int app, Duration connectTimeout, Duration timeout) {
        this.name = Values.bytes(serial, "serial");
        this.port = (short)Values.port(listen);
        this.address = Values.address(listen);
        this.app = app;
        this.connectTimeout = Values.milliseconds(connectTimeout, "connectTimeout");
        this.timeout = Values.milliseconds(timeout, "timeout");
        connect();
    }

    /** Connects afresh, without pairing again: after CONNECTION_FAILED. */
    public void connect() {
        synchronized (TOGETHER) {
            check("velnoext_initialize",
                  Loading.EXT.velnoext_initialize(app, name, address, port, connectTimeout));
        }
    }

    /** Ends the connection; the keys stay. */
    @Override
    public void close() {
        synchronized (TOGETHER) {
            if (Loading.EXT.velnoext_set_active_device(name) == 0)
                Loading.EXT.velnoext_close();
        }
    }

    /** Closes, and drops the keys: for a register that has lost its own. */
    public void forget() {
        synchronized (TOGETHER) {
            check("velnoext_forget_device", Loading.EXT.velnoext_forget_device(name));
        }
    }

    /** Ends the call that is under way in this process. From any thread; never blocks. */
    public void interrupt() {
        Loading.EXT.velnoext_interrupt();
    }

    /** Starts a sale. Closing it without end() cancels it. */
    public Sale startSale() {
        run("velnoext_start_sale", Loading.EXT::velnoext_start_sale);
        return new Sale(this);
    }

    /** Starts a sale that is to end with endWithInvoice(). */
    public Sale startSaleWithInvoice() {
        run("velnoext_start_sale_with_invoice", Loading.EXT::velnoext_start_sale_with_invoice);
        return new Sale(this);
    }

    /** @param flag  the register defines what it means */
    public void printSlip(Slip slip, boolean flag) {
        run("velnoext_print_slip", wait -> {
            slip.send();
            return Loading.EXT.velnoext_print_slip(wait, (byte)(flag ? 1 : 0));
        });
    }

    public void login() {
        run("velnoext_login", Loading.EXT::velnoext_login);
    }

    public void logout() {
        run("velnoext_logout", Loading.EXT::velnoext_logout);
    }

    public boolean hasPaper() {
        try {
            run("velnoext_check_printer_paper", Loading.EXT::velnoext_check_printer_paper);
            return true;
        } catch (RegisterException problem) {
            if (problem.result() != VelnoResult.NO_PAPER)
                throw problem;
            return false;
        }
    }

    /** Null for a number of the register's own. */
    public VelnoEcrState state() {
        return VelnoEcrState.of(number("velnoext_ecr_state", Loading.EXT::velnoext_ecr_state));
    }

    public int currentZ() {
        return number("velnoext_current_z", Loading.EXT::velnoext_current_z);
    }

    /** When the last Z report was made; the register's number, the simulated one's seconds since 1970. */
    public int lastZTime() {
        return number("velnoext_last_z_datetime", Loading.EXT::velnoext_last_z_datetime);
    }

    /** A number like lastZTime(). */
    public int clock() {
        return number("velnoext_ecr_datetime", Loading.EXT::velnoext_ecr_datetime);
    }

    /** The highest amount of one sale. */
    public BigDecimal saleLimit() {
        Memory limit = new Memory(Long.BYTES);
        run("velnoext_sale_limit", wait -> Loading.EXT.velnoext_sale_limit(wait, limit));
        return Values.lira(limit.getLong(0));
    }

    /** The serial number that it gave when it was paired. Asks nobody. */
    public String ownSerial() {
        Memory buffer = new Memory(SERIAL_ROOM);
        buffer.clear();
        run("velnoext_ecr_serialno", wait -> Loading.EXT.velnoext_ecr_serialno(buffer));
        return Values.text(buffer);
    }

    /** The banks that it takes cards for, by their numbers. */
    public List<Integer> acquirers() {
        return numbers("velnoext_active_acquirers", Loading.EXT::velnoext_active_acquirers);
    }

    /** What it knows of a section (department), 1 to 8. */
    public Section section(int number) {
        VelnoSaleItem item = new VelnoSaleItem();
        item.section(number == (byte)number ? (byte)number : 0);
        run("velnoext_section_data", wait -> Loading.EXT.velnoext_section_data(wait, item.at));
        return new Section(Values.text(item.at.share(VelnoSaleItem.NAME)), item.quantity());
    }

    public void xReport() {
        run("velnoext_x_report", wait -> Loading.EXT.velnoext_x_report());
    }

    public void zReport() {
        run("velnoext_z_report", wait -> Loading.EXT.velnoext_z_report());
    }

    /** The totals of a receipt that has been closed. */
    public Totals receiptTotals(Reference reference) {
        VelnoReceiptRef numbers = new VelnoReceiptRef();
        numbers.first(reference.z());
        numbers.second(reference.number());
        return totals("velnoext_receipt_data",
                      (wait, totals) -> Loading.EXT.velnoext_receipt_data(wait, numbers.at, totals));
    }

    void run(String function, Command command) {
        synchronized (TOGETHER) {
            check("velnoext_set_active_device", Loading.EXT.velnoext_set_active_device(name));
            check(function, command.call(timeout));
        }
    }

    Totals totals(String function, OutputCommand command) {
        VelnoEcrSaleTotals totals = new VelnoEcrSaleTotals();
        run(function, wait -> command.call(wait, totals.at));
        return Totals.of(totals);
    }

    List<Integer> numbers(String function, ListCommand command) {
        Memory list = new Memory((long)MOST_ACQUIRERS * Integer.BYTES);
        Memory count = new Memory(Integer.BYTES);
        count.setInt(0, MOST_ACQUIRERS);
        run(function, wait -> command.call(wait, list, count));
        return IntStream.of(list.getIntArray(0, count.getInt(0))).boxed().toList();
    }

    private int number(String function, OutputCommand command) {
        Memory number = new Memory(Integer.BYTES);
        run(function, wait -> command.call(wait, number));
        return number.getInt(0);
    }

    static void check(String function, int result) {
        if (result != 0)
            throw new RegisterException(function, result, Loading.EXT.velnoext_cause(),
                                        Loading.EXT.velnoext_error_detail());
    }
}
