// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import com.sun.jna.Pointer;
import java.time.Duration;
import velno.low.Loading;
import velno.low.Velnoext.VelnoEcrSaleTotals;
import velno.low.Velnoext.VelnoEcrState;
import velno.low.Velnoext.VelnoReceiptRef;

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

    public void login() {
        run("velnoext_login", Loading.EXT::velnoext_login);
    }

    public void logout() {
        run("velnoext_logout", Loading.EXT::velnoext_logout);
    }

    /** Null for a number of the register's own. */
    public VelnoEcrState state() {
        return VelnoEcrState.of(number("velnoext_ecr_state", Loading.EXT::velnoext_ecr_state));
    }

    public int currentZ() {
        return number("velnoext_current_z", Loading.EXT::velnoext_current_z);
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

    private int number(String function, OutputCommand command) {
        Memory number = new Memory(Integer.BYTES);
        run(function, wait -> command.call(wait, number));
        return number.getInt(0);
    }

    private static void check(String function, int result) {
        if (result != 0)
            throw new RegisterException(function, result, Loading.EXT.velnoext_cause(),
                                        Loading.EXT.velnoext_error_detail());
    }
}
