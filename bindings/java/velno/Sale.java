// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import java.math.BigDecimal;
import java.util.List;
import velno.low.Loading;
import velno.low.Velnoext.VelnoIdKind;
import velno.low.Velnoext.VelnoInvoice;
import velno.low.Velnoext.VelnoInvoiceMode;
import velno.low.Velnoext.VelnoInvoiceType;
import velno.low.Velnoext.VelnoItemType;
import velno.low.Velnoext.VelnoReceiptRef;
import velno.low.Velnoext.VelnoResult;
import velno.low.Velnoext.VelnoSaleItem;
import velno.low.Velnoext.VelnoSaleItemList;

/** An open sale. */
public final class Sale implements AutoCloseable {
    private static final int MOST_AT_ONCE = 10;
    private static final int ID_BYTES = 11;
    private static final int REFERENCE_BYTES = 16;
    private final Register register;
    private boolean isOver;

    Sale(Register register) {
        this.register = register;
    }

    /** Adds one line; the section, 1 to 8, decides the tax. */
    public Totals add(String name, BigDecimal price, int section) {
        return add(new Line(name, price, section));
    }

    public Totals add(String name, BigDecimal price, int section, BigDecimal quantity, VelnoItemType unit,
                      int percentage) {
        return add(new Line(name, price, section, quantity, unit, percentage, BigDecimal.ZERO));
    }

    public Totals add(Line line) {
        VelnoSaleItem item = new VelnoSaleItem();
        line.into(item);
        return register.totals("velnoext_add_sale_item",
                               (wait, totals) -> Loading.EXT.velnoext_add_sale_item(wait, item.at, totals));
    }

    /** Adds one to ten lines at once, all or none. */
    public Totals addAll(List<Line> lines) {
        if (lines.isEmpty() || lines.size() > MOST_AT_ONCE)
            throw new IllegalArgumentException(lines.size() + " lines; accepted: 1 to " + MOST_AT_ONCE);
        VelnoSaleItemList list = new VelnoSaleItemList();
        list.count((short)lines.size());
        for (int i = 0; i < lines.size(); ++i)
            lines.get(i).into(list.items(i));
        return register.totals(
            "velnoext_add_multiple_sale_items",
            (wait, totals) -> Loading.EXT.velnoext_add_multiple_sale_items(wait, list.at, totals));
    }

    public Totals deleteLast() {
        return register.totals("velnoext_delete_last_sale_item", Loading.EXT::velnoext_delete_last_sale_item);
    }

    /** Takes out the line of this index, from 0; the others keep theirs. */
    public Totals delete(int index) {
        return register.totals("velnoext_delete_sale_item",
                               (wait, totals) -> Loading.EXT.velnoext_delete_sale_item(wait, index, totals));
    }

    /** Adds a medical contribution. @param person  11 digits; "11111111111" stands for anybody */
    public void addMedical(BigDecimal amount, String person) {
        if (!person.matches("[0-9]{11}"))
            throw new IllegalArgumentException("person: accepted are 11 digits");
        long kurus = Values.kurus(amount, "amount");
        register.run(
            "velnoext_add_medical_contribution",
            wait -> Loading.EXT.velnoext_add_medical_contribution(wait, kurus, Long.parseLong(person)));
    }

    /** How it stands; an error of keys before is told here. */
    public Totals state() {
        return stateAndReference().totals();
    }

    public SaleState stateAndReference() {
        Memory first = new Memory(Integer.BYTES);
        VelnoReceiptRef reference = new VelnoReceiptRef();
        Totals told = register.totals(
            "velnoext_sale_state",
            (wait, totals) -> Loading.EXT.velnoext_sale_state(wait, first, totals, reference.at));
        return new SaleState(told, new Reference(reference.first(), reference.second()));
    }

    /** The banks of its card payments. */
    public List<Integer> acquirers() {
        return register.numbers("velnoext_acquirers_of_sale", Loading.EXT::velnoext_acquirers_of_sale);
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

    /**
     * Ends it with an invoice to a person; what is left is paid in cash, or by card. Look at the register's
     * state behind it.
     *
     * @param identity  11 digits
     * @param reference  with a paper invoice the form's number, 6 to 16 characters; otherwise empty
     * @param deliveryNote  the invoice takes its place
     */
    public void endWithInvoiceToPerson(VelnoInvoiceType kind, String identity, String reference,
                                       boolean byCard, boolean deliveryNote) {
        endWithInvoice(kind, VelnoIdKind.PERSON, identity, reference, byCard, deliveryNote);
    }

    /** The same to a company. @param taxNumber  10 digits */
    public void endWithInvoiceToCompany(VelnoInvoiceType kind, String taxNumber, String reference,
                                        boolean byCard, boolean deliveryNote) {
        endWithInvoice(kind, VelnoIdKind.COMPANY, taxNumber, reference, byCard, deliveryNote);
    }

    private void endWithInvoice(VelnoInvoiceType kind, VelnoIdKind whose, String number, String reference,
                                boolean byCard, boolean deliveryNote) {
        VelnoInvoice invoice = new VelnoInvoice();
        invoice.invoiceType(kind.value);
        invoice.idKind(whose.value);
        invoice.idNumber(Values.field(number, ID_BYTES, "number"));
        invoice.reference(Values.field(reference, REFERENCE_BYTES, "reference"));
        invoice.mode((byCard ? VelnoInvoiceMode.REST_BY_CARD : VelnoInvoiceMode.REST_IN_CASH).value);
        invoice.flag(deliveryNote ? 1 : 0);
        isOver = true;
        register.run("velnoext_end_sale_with_invoice",
                     wait -> Loading.EXT.velnoext_end_sale_with_invoice(invoice.at));
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
