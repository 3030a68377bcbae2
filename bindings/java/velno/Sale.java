// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import java.math.BigDecimal;
import velno.low.Loading;
import velno.low.Velnoext.VelnoItemType;
import velno.low.Velnoext.VelnoReceiptRef;
import velno.low.Velnoext.VelnoResult;
import velno.low.Velnoext.VelnoSaleItem;

/** An open sale. */
public final class Sale implements AutoCloseable {
    private static final int NAME_BYTES = 52;
    private final Register register;
    private boolean isOver;

    Sale(Register register) {
        this.register = register;
    }

    /** Adds one line; the section, 1 to 8, decides the tax. */
    public Totals add(String name, BigDecimal price, int section) {
        return add(name, price, section, BigDecimal.ONE, VelnoItemType.PIECE, 0);
    }

    public Totals add(String name, BigDecimal price, int section, BigDecimal quantity, VelnoItemType unit,
                      int percentage) {
        if (section < 1 || section > 8)
            throw new IllegalArgumentException("section: " + section + "; accepted: 1 to 8");
        VelnoSaleItem item = new VelnoSaleItem();
        item.name(Values.field(name, NAME_BYTES, "name"));
        item.price(Values.kurus(price, "price"));
        item.quantity(Values.thousandths(quantity, "quantity"));
        item.section((byte)section);
        item.type(unit.value);
        item.percentage(percentage);
        return register.totals("velnoext_add_sale_item",
                               (wait, totals) -> Loading.EXT.velnoext_add_sale_item(wait, item.at, totals));
    }

    public Totals deleteLast() {
        return register.totals("velnoext_delete_last_sale_item", Loading.EXT::velnoext_delete_last_sale_item);
    }

    /** How it stands; an error of keys before is told here. */
    public Totals state() {
        Memory first = new Memory(Integer.BYTES);
        VelnoReceiptRef reference = new VelnoReceiptRef();
        return register.totals(
            "velnoext_sale_state",
            (wait, totals) -> Loading.EXT.velnoext_sale_state(wait, first, totals, reference.at));
    }

    /** Pays an amount. What the register does not take is not in the totals. */
    public Totals pay(BigDecimal amount, boolean byCard) {
        long kurus = Values.kurus(amount, "amount");
        register.run("velnoext_add_payment", wait -> Loading.EXT.velnoext_add_payment(byCard ? 1 : 0, kurus));
        return state();
    }

    /** Ends it; what is left is paid in cash, or by card. Look at the register's state behind it. */
    public void end(boolean byCard) {
        isOver = true;
        register.run("velnoext_end_sale", wait -> Loading.EXT.velnoext_end_sale(byCard ? 1 : 0));
    }

    public void cancel() {
        isOver = true;
        register.run("velnoext_cancel_sale", Loading.EXT::velnoext_cancel_sale);
    }

    /** Cancels it unless its end was asked for; over a new connection behind a lost answer. */
    @Override
    public void close() {
        if (isOver)
            return;
        try {
            cancel();
        } catch (RegisterException problem) {
            if (problem.result() != VelnoResult.CONNECTION_FAILED
                && problem.result() != VelnoResult.NOT_READY)
                throw problem;
            register.connect();
            cancel();
        }
    }
}
