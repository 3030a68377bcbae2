// SPDX-License-Identifier: Apache-2.0
// velnoext.h for Java. Made by scripts/generate from the header: do not edit.
package velno.low;

import com.sun.jna.Callback;
import com.sun.jna.Library;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;

/** What velnoext.h declares. */
public final class Velnoext {
    private Velnoext() {
    }

    public static final int VELNOEXT_VERSION_MAJOR = 0;

    public static final int VELNOEXT_VERSION_MINOR = 2;

    public static final int VELNOEXT_VERSION_PATCH = 0;

    /** The version as one number, for comparisons: #if VELNOEXT_VERSION >= 200 is 0.2.0 or later. */
    public static final int VELNOEXT_VERSION = 200;

    /** The commands by their number, the first item of every request. */
    public enum VelnoExtMessage {
        ECR_STATE(0),
        LOGIN(1),
        LOGOUT(2),
        CHANGE_STATE(3),
        ADD_SALE_ITEM(4),
        DELETE_SALE_ITEM(5),
        SALE_STATE(6),
        RECEIPT_DATA(7),
        CHECK_PRINTER_PAPER(8),
        MEDICAL_CONTRIBUTION(9),
        SECTION_DATA(10),
        PRINT_REPORT(11),
        CURRENT_Z(12),
        PRINT_SLIP(13),
        END_SALE_WITH_INVOICE(14),
        SALE_LIMIT(15),
        ADD_MULTIPLE_SALE_ITEMS(16),
        LAST_Z_DATE_TIME(17),
        ECR_DATE_TIME(18),
        ACTIVE_ACQUIRERS(19),
        SALE_ACQUIRERS(20);

        public final int value;

        VelnoExtMessage(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoExtMessage of(int value) {
            for (VelnoExtMessage one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * States of a register. 1, 5 and 7 have a meaning for this library; the others are those of the
     * simulated register, and a register may answer numbers of its own.
     */
    public enum VelnoEcrState {
        /** switched on a moment ago */
        STARTING(0),
        /** a sale may be started */
        IDLE(1),
        /** waits for a cashier */
        LOCKED(2),
        /** somebody uses its menu */
        MENU(3),
        /** a payment is being made */
        PAYING(4),
        /** a sale is open: items, payments and its end are expected */
        SALE_OPEN(5),
        /** prints a report */
        REPORTING(6),
        /** a sale may be started */
        IDLE_OTHER_SCREEN(7),
        /** out of order */
        OUT_OF_SERVICE(8);

        public final int value;

        VelnoEcrState(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoEcrState of(int value) {
            for (VelnoEcrState one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** The result codes; what each means stands at the head of this file. */
    public enum VelnoResult {
        SUCCESS(0),
        NOT_READY(1),
        CONNECTION_FAILED(2),
        NULL_ARGUMENT(3),
        BAD_VALUE(4),
        REPLY_UNREADABLE(5),
        WRONG_STATE(6),
        STEP_NOT_TAKEN(7),
        REFUSED(8),
        NO_PAPER(9),
        PAIRING_FAILED(10),
        NOT_AUTHENTIC(11),
        MALFORMED_REPLY(12),
        NO_APPLICATION_HASH(13);

        public final int value;

        VelnoResult(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoResult of(int value) {
            for (VelnoResult one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * What velnoext_error_detail() names: 0x3.. a NULL pointer (result 3), 0x4.. a bad value (result
     * 4). Several functions share a detail; velnoext_detail_text() names each with its argument.
     */
    public enum VelnoDetail {
        NONE(0),
        /** serial number, buffer, data or frame */
        NULL_SERIAL_NO_OR_BUFFER(768),
        NULL_ADDRESS_OR_OUTPUT(769),
        NULL_STATE_OR_LENGTH(770),
        NULL_FIRST(771),
        NULL_TOTALS(772),
        NULL_RECEIPT(773),
        NULL_ITEM(774),
        NULL_ITEM_LIST(775),
        NULL_INVOICE(776),
        NULL_LIST(777),
        NULL_COUNT(778),
        NULL_Z(779),
        NULL_DATE_TIME(780),
        NULL_ENCODING(781),
        /** or empty */
        NULL_TEXT(782),
        NULL_STYLE(783),
        NULL_LIMIT(784),
        NULL_LANGUAGE(785),
        BAD_SERIAL_NO(1024),
        BAD_PORT(1026),
        BAD_PERSON_ID(1027),
        BAD_TAX_NUMBER(1028),
        BAD_PRICE(1029),
        BAD_SECTION(1030),
        BAD_PERCENTAGE(1031),
        BAD_AMOUNT(1032),
        BAD_ITEM_TYPE(1033),
        BAD_ITEM_COUNT(1034),
        BAD_INVOICE_TYPE(1035),
        BAD_ID_KIND(1036),
        BAD_INVOICE_MODE(1037),
        BAD_REFERENCE(1038),
        BAD_RECEIPT_FIRST(1039),
        BAD_RECEIPT_SECOND(1040),
        BAD_ENCODING(1041),
        BAD_PAYMENT_AMOUNT(1042),
        BAD_LINE_FEEDS(1043),
        BAD_ANSWER_LIMIT(1044),
        BAD_LANGUAGE(1045);

        public final int value;

        VelnoDetail(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoDetail of(int value) {
            for (VelnoDetail one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * Why a call failed, as velnoext_cause() tells it. In brackets the results that it comes with.
     * Numbers below 6000 are those that the pairing window shows behind "Eşleme hatası: ". With result
     * 10 they tell where the pairing ended; with other results they tell the same fault outside a
     * pairing. What a register gives as its reason is added to a base: 10000 + its error, 20000 + its
     * state, 30000 + what its display says, each from 0 to 9999. The numbers are the register's; those
     * named here are the simulated register's, whose error is a sum of bits. With result 6 the state
     * is told, or behind the keys of velnoext_cancel_sale() an error that came with it; otherwise of
     * several reasons the error, else the state, else the display. More causes may be added: treat one
     * that is not known as its result.
     */
    public enum VelnoCause {
        NONE(0),
        /** the address to listen on is no IP address (4) */
        ADDRESS_INVALID(1005),
        /** another program listens there (2, 10) */
        PORT_IN_USE(1006),
        /** no register connected in time (2, 10) */
        NOBODY_CONNECTED(1007),
        /** a foreign address, or a port that needs privileges (2, 10) */
        CANNOT_LISTEN(1008),
        /** the connection was closed before (2, 10) */
        CLOSED_BEFORE_SENDING(2005),
        /** the system took no bytes (2, 10) */
        WRITE_REFUSED(2006),
        /** the register takes no bytes (2, 10) */
        NOT_SENT_IN_TIME(2007),
        /** a frame of no length (10) */
        EMPTY_FRAME(3003),
        /** closed in place of an answer (2, 10) */
        CLOSED_WHILE_WAITING(3005),
        /** no answer, or not the rest of one, in time (2, 10) */
        SILENT_REGISTER(3006),
        /** the announced length is wrong or too large (10, 12) */
        FRAME_LENGTH(4000),
        /** damaged on its way (10, 12) */
        FRAME_CRC(4001),
        /** another register answers (10, 12) */
        FRAME_SERIAL(4002),
        /** no message in it (10) */
        FRAME_MESSAGE(4003),
        /** a result code other than "00" (10) */
        PAIRING_REFUSED(5000),
        /** none, expired, too weak, of an unknown authority (10) */
        CERTIFICATE_NOT_TRUSTED(5001),
        /** or a Diffie-Hellman group that this build does not know (10) */
        SIGNATURE_INVALID(5002),
        /** refused the connection, or silent for 2 s (2) */
        RELAY_NOT_ANSWERING(6001),
        /** this computer has no way to it (2) */
        RELAY_UNREACHABLE(6002),
        /** closed when the serial number was named (2) */
        RELAY_UNKNOWN_REGISTER(6003),
        /** no answer to the serial number within 5 s (2) */
        RELAY_SILENT(6004),
        /** another answer than the serial number (2) */
        RELAY_WRONG_ANSWER(6005),
        /** the connection was gone before it could be used (2) */
        HAND_OVER_FAILED(6010),
        /** by velnoext_interrupt() (2, 10) */
        INTERRUPTED(7001),
        /** that of velnoext_set_answer_limit() (2) */
        ANSWER_LIMIT_PASSED(7002),
        /** (1) */
        NOT_INITIALISED(7003),
        /** (1) */
        NO_ACTIVE_DEVICE(7004),
        /** (1, 2) */
        NOT_CONNECTED(7005),
        /** the register is not paired (1) */
        KEYS_ABSENT(7006),
        /** not with this application number (1) */
        RAW_NOT_ALLOWED(7007),
        /** the system gives no further thread (1) */
        NO_THREAD(7008),
        /** of the slip (8) */
        NO_ENCODING(7009),
        /** the detail names it (3) */
        NULL_ARGUMENT(7010),
        /** the detail names it (4) */
        BAD_ARGUMENT(7011),
        /** for the result (4) */
        ROOM_TOO_SMALL(7012),
        /** (4) */
        NEGATIVE_LENGTH(7013),
        /** the program's own file (13) */
        PROGRAM_UNREADABLE(7014),
        /** no bytes to send, or too many (11) */
        NOT_ENCRYPTED(7015),
        /** authentic, but an item is missing (5) */
        ANSWER_TOO_SHORT(8001),
        /** more than 52 bytes (5) */
        SECTION_NAME_TOO_LONG(8002),
        /** other keys, or changed on its way (11) */
        MAC_WRONG(8003),
        /** (11) */
        DECRYPTED_TO_NOTHING(8004),
        /** one is missing, or unknown (12) */
        ELEMENTS_WRONG(8005),
        /** the answer equals the request (12) */
        REQUEST_REFLECTED(8006),
        /** announces more than 1 MiB (2) */
        ANSWER_TOO_LONG(8007),
        /** a flood that nobody asked for (2) */
        ENDLESS_BYTES(8008),
        /** and no more than that (8) */
        SAID_NO(9001),
        /** (9) */
        PRINTER_EMPTY(9002),
        /** nothing is told of the display (7) */
        DISPLAY_EMPTY(9003),
        /** an error, state or display below 0 or above 9999 (6, 7, 8) */
        OTHER_NUMBER(9004),
        /** base of the register's error (6, 7, 8) */
        OF_ERROR(10000),
        /** a key that means nothing now */
        WRONG_KEY(10001),
        /** one that the register does not take */
        WRONG_VALUE(10002),
        /** sale limit, or more than a receipt holds */
        OVER_LIMIT(10004),
        /** items stay as they are */
        PAYMENT_BEGUN(10008),
        PAPER_OUT(10016),
        /** no such item, an empty receipt, no sale */
        NOTHING_THERE(10032),
        /** it cannot be written */
        NO_JOURNAL(10064),
        /** base of the register's state, see VelnoEcrState (6, 8) */
        OF_STATE(20000),
        /** base of what the display says (7) */
        OF_DISPLAY(30000),
        /** an amount is typed, or a question asked */
        DISPLAY_BUSY(30002);

        public final int value;

        VelnoCause(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoCause of(int value) {
            for (VelnoCause one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** Units of an item's quantity, as the simulated register prints them. */
    public enum VelnoItemType {
        /** AD */
        PIECE(0),
        /** KG */
        KILOGRAM(1),
        /** GR */
        GRAM(2),
        /** LT */
        LITRE(3),
        /** MT */
        METRE(4),
        /** M2 */
        SQUARE_METRE(5),
        /** M3 */
        CUBIC_METRE(6),
        /** SA */
        HOUR(7);

        public final int value;

        VelnoItemType(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoItemType of(int value) {
            for (VelnoItemType one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * The places of VelnoEcrSaleTotals.values, as the simulated register tells them; all in kuruş.
     * Cash + card - change is what has been paid.
     */
    public enum VelnoTotal {
        /** all items and the medical contribution, tax contained */
        TO_PAY(0),
        /** the tax within it */
        TAX(1),
        /** paid in cash, as handed over */
        CASH(2),
        /** paid by card */
        CARD(3),
        /** what of the cash goes back */
        CHANGE(4);

        public final int value;

        VelnoTotal(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoTotal of(int value) {
            for (VelnoTotal one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /**
     * The keys that pay and end a sale: `type` of velnoext_add_payment() and velnoext_end_sale(). What
     * they stand for is set on the register; on the simulated one F10 is cash and F11 a card.
     */
    public enum VelnoPaymentKey {
        /** cash on the simulated register */
        F10(0),
        /** card on the simulated register */
        F11(1);

        public final int value;

        VelnoPaymentKey(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoPaymentKey of(int value) {
            for (VelnoPaymentKey one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** Kinds of invoice, as the simulated register takes them. */
    public enum VelnoInvoiceType {
        /** on a printed form, whose number the reference is */
        PAPER(0),
        /** e-invoice */
        ELECTRONIC(1),
        /** e-archive */
        ARCHIVED(2);

        public final int value;

        VelnoInvoiceType(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoInvoiceType of(int value) {
            for (VelnoInvoiceType one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** Whose number an invoice carries. */
    public enum VelnoIdKind {
        /** identity number, 11 digits */
        PERSON(0),
        /** tax number, 10 digits */
        COMPANY(1);

        public final int value;

        VelnoIdKind(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoIdKind of(int value) {
            for (VelnoIdKind one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** How what is left to pay is taken when an invoice ends the sale, as the simulated register does. */
    public enum VelnoInvoiceMode {
        REST_IN_CASH(1),
        REST_BY_CARD(2);

        public final int value;

        VelnoInvoiceMode(int value) {
            this.value = value;
        }

        /** Null for a number that has no name. */
        public static VelnoInvoiceMode of(int value) {
            for (VelnoInvoiceMode one : values())
                if (one.value == value)
                    return one;
            return null;
        }
    }

    /** One line of a sale; 84 bytes. Set what is not used to 0. */
    public static final class VelnoSaleItem {
        public static final long BYTES = 84;
        public final Pointer at;

        public VelnoSaleItem() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoSaleItem(Pointer at) {
            this.at = at;
        }

        public static final long PRICE = 0;

        /** of one unit, in kuruş; with 0 the line is a remark on the receipt */
        public long price() {
            return at.getLong(PRICE);
        }

        public void price(long value) {
            at.setLong(PRICE, value);
        }

        public static final long QUANTITY = 8;

        /** in thousandths: 1000 is one unit */
        public int quantity() {
            return at.getInt(QUANTITY);
        }

        public void quantity(int value) {
            at.setInt(QUANTITY, value);
        }

        public static final long PERCENTAGE = 12;

        /**
         * Adjustment in percent of the line total: below 0 a discount (-10: ten percent off), above 0
         * a surcharge; 0 for none. -100 or more; the simulated register takes up to 100.
         */
        public int percentage() {
            return at.getInt(PERCENTAGE);
        }

        public void percentage(int value) {
            at.setInt(PERCENTAGE, value);
        }

        public static final long AMOUNT = 16;

        /**
         * Discount in kuruş, which counts while percentage is 0: a positive amount makes the line
         * cheaper, and there is no surcharge by amount; 0 for none. Not negative, and at most the line
         * total, which is price times quantity / 1000, rounded half up, and counts as 0 when that is
         * negative.
         */
        public long amount() {
            return at.getLong(AMOUNT);
        }

        public void amount(long value) {
            at.setLong(AMOUNT, value);
        }

        public static final long NAME = 24;

        /**
         * The bytes before the first zero, at most 52 of them; need not end with a zero. They are
         * passed on as they are: UTF-8 for the simulated register, which reads what is no UTF-8 as
         * ISO-8859-9. Cut a longer name between two characters.
         */
        public byte[] name() {
            return at.getByteArray(NAME, 53);
        }

        public void name(byte[] value) {
            if (value.length > 53)
                throw new IllegalArgumentException("name: more than 53");
            at.write(NAME, value, 0, value.length);
        }

        public static final long SECTION = 77;

        /** section (department) of the register, 1 to 8: it decides the tax rate */
        public byte section() {
            return at.getByte(SECTION);
        }

        public void section(byte value) {
            at.setByte(SECTION, value);
        }

        public static final long TYPE = 80;

        /** unit of the quantity, 0 to 7, see VelnoItemType */
        public int type() {
            return at.getInt(TYPE);
        }

        public void type(int value) {
            at.setInt(TYPE, value);
        }
    }

    /**
     * What the register has added up for the open sale; 44 bytes. The register defines what each
     * number is.
     */
    public static final class VelnoEcrSaleTotals {
        public static final long BYTES = 44;
        public final Pointer at;

        public VelnoEcrSaleTotals() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoEcrSaleTotals(Pointer at) {
            this.at = at;
        }

        public static final long VALUES = 0;

        /** in the order in which the register tells them, see VelnoTotal */
        public long[] values() {
            return at.getLongArray(VALUES, 5);
        }

        public void values(long[] value) {
            if (value.length > 5)
                throw new IllegalArgumentException("values: more than 5");
            at.write(VALUES, value, 0, value.length);
        }

        public static final long NUMBER = 40;

        /** told behind them; the simulated register's number of items that are not deleted */
        public int number() {
            return at.getInt(NUMBER);
        }

        public void number(int value) {
            at.setInt(NUMBER, value);
        }
    }

    /** Several lines at once; 844 bytes. */
    public static final class VelnoSaleItemList {
        public static final long BYTES = 844;
        public final Pointer at;

        public VelnoSaleItemList() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoSaleItemList(Pointer at) {
            this.at = at;
        }

        public static final long COUNT = 0;

        /** how many of the items are meant, 1 to 10 */
        public short count() {
            return at.getShort(COUNT);
        }

        public void count(short value) {
            at.setShort(COUNT, value);
        }

        public static final long ITEMS = 4;

        public VelnoSaleItem items(int index) {
            return new VelnoSaleItem(at.share(ITEMS + index * VelnoSaleItem.BYTES, VelnoSaleItem.BYTES));
        }
    }

    /**
     * Two numbers by which the register knows a receipt; 8 bytes. Both are non-zero for a receipt that
     * exists.
     */
    public static final class VelnoReceiptRef {
        public static final long BYTES = 8;
        public final Pointer at;

        public VelnoReceiptRef() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoReceiptRef(Pointer at) {
            this.at = at;
        }

        public static final long FIRST = 0;

        /** the simulated register's: number of the Z report that the receipt counts towards */
        public int first() {
            return at.getInt(FIRST);
        }

        public void first(int value) {
            at.setInt(FIRST, value);
        }

        public static final long SECOND = 4;

        /** and the receipt's number among those of that report */
        public int second() {
            return at.getInt(SECOND);
        }

        public void second(int value) {
            at.setInt(SECOND, value);
        }
    }

    /** What a sale's invoice says of the customer; 48 bytes. */
    public static final class VelnoInvoice {
        public static final long BYTES = 48;
        public final Pointer at;

        public VelnoInvoice() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoInvoice(Pointer at) {
            this.at = at;
        }

        public static final long INVOICE_TYPE = 0;

        /** 0, 1 or 2, see VelnoInvoiceType */
        public int invoiceType() {
            return at.getInt(INVOICE_TYPE);
        }

        public void invoiceType(int value) {
            at.setInt(INVOICE_TYPE, value);
        }

        public static final long ID_KIND = 4;

        /** of idNumber, see VelnoIdKind; 0: a person's, 11 digits; 1: a tax number, 10 */
        public int idKind() {
            return at.getInt(ID_KIND);
        }

        public void idKind(int value) {
            at.setInt(ID_KIND, value);
        }

        public static final long ID_NUMBER = 8;

        /** the bytes before the first zero; 11111111111 stands for any person */
        public byte[] idNumber() {
            return at.getByteArray(ID_NUMBER, 12);
        }

        public void idNumber(byte[] value) {
            if (value.length > 12)
                throw new IllegalArgumentException("idNumber: more than 12");
            at.write(ID_NUMBER, value, 0, value.length);
        }

        public static final long REFERENCE = 20;

        /** the bytes before the first zero; with invoiceType 0 there must be 6 to 16 */
        public byte[] reference() {
            return at.getByteArray(REFERENCE, 17);
        }

        public void reference(byte[] value) {
            if (value.length > 17)
                throw new IllegalArgumentException("reference: more than 17");
            at.write(REFERENCE, value, 0, value.length);
        }

        public static final long MODE = 40;

        /** 1 or 2, see VelnoInvoiceMode */
        public int mode() {
            return at.getInt(MODE);
        }

        public void mode(int value) {
            at.setInt(MODE, value);
        }

        public static final long FLAG = 44;

        /** not 0: the invoice takes the place of the delivery note (simulated register) */
        public int flag() {
            return at.getInt(FLAG);
        }

        public void flag(int value) {
            at.setInt(FLAG, value);
        }
    }

    /** How a text is printed; 8 bytes. The register defines what the two styles look like. */
    public static final class VelnoTextStyle {
        public static final long BYTES = 8;
        public final Pointer at;

        public VelnoTextStyle() {
            Memory memory = new Memory(BYTES);
            memory.clear();
            at = memory;
        }

        public VelnoTextStyle(Pointer at) {
            this.at = at;
        }

        public static final long SIZE = 0;

        /** 0 to 5, 0 being the smallest; it is sent as the bit 4 << size of a byte */
        public int size() {
            return at.getInt(SIZE);
        }

        public void size(int value) {
            at.setInt(SIZE, value);
        }

        public static final long STYLE_A = 4;

        /** 0 or not */
        public byte styleA() {
            return at.getByte(STYLE_A);
        }

        public void styleA(byte value) {
            at.setByte(STYLE_A, value);
        }

        public static final long STYLE_B = 5;

        /** 0 or not */
        public byte styleB() {
            return at.getByte(STYLE_B);
        }

        public void styleB(byte value) {
            at.setByte(STYLE_B, value);
        }
    }

    public interface velnoext_set_log_line extends Callback {
        void invoke(Pointer text, Pointer context);
    }

    /** The functions of velnoext.h, see Loading. */
    public interface Functions extends Library {
        /**
         * The interface's version, "0". The text lives as long as the library. Never blocks.
         * const char *velnoext_version(void);
         */
        Pointer velnoext_version();

        /**
         * The version of the library in use, "0.2.0" for instance; compare with VELNOEXT_VERSION_MAJOR
         * and its neighbours, which are those of the header. The text lives as long as the library.
         * Never blocks.
         * const char *velnoext_library_version(void);
         */
        Pointer velnoext_library_version();

        /**
         * Connects a register, pairs with it if need be, and makes it the active one. A register that
         * is connected already is connected afresh; others stay connected. A register that is not yet
         * paired is met three times on the port given: to be told so, to agree on keys and to stay.
         * One that is paired is met once. On failure the active register is the one before, other
         * registers stay connected, and the library's thread goes on until velnoext_close().
         * appNo: number of the application, under which it is known to whoever runs the registers'
         * service and gave it out: the one that a technician types into the pairing window as
         * "Uygulama no". It does not leave this computer; any other number than the two special ones
         * behaves alike. 999999 takes the relay's port 50900, others 50902. With 999999 and 14242 (the
         * pairing tool itself) velnoext_close() forgets the keys, and the raw pass-through is open.
         * The last call's number holds for all registers
         * serialNo: 12 characters
         * address: local address to listen on, "0.0.0.0" for all; "255.255.255.255" for the relay. A
         * register that is not yet paired must come over IPv4: keys are agreed on at the port of every
         * local IPv4 address, whatever is named here. Afterwards an IPv6 address will do, too
         * port: TCP port to listen on; ignored with the relay
         * timeout: ms to wait for each direct connection of the register but that of the key exchange,
         * which may take 30 s; not used with the relay, which has 2 s to accept and 5 s to answer
         * Returns 0; 1: the library's thread cannot be started; 2: nobody connected in time, the port
         * cannot be listened on, the relay refused or does not know the register, the register left;
         * 3: NULL (detail 0x300 serialNo, 0x301 address); 4: serialNo is not 12 characters long
         * (0x400), port is 0 (0x402), the address is none (0); 10: pairing failed; 13: the executable
         * cannot be read
         * int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address,
         * unsigned short port, unsigned int timeout);
         */
        int velnoext_initialize(int appNo, byte[] serialNo, byte[] address, short port, int timeout);

        /**
         * Makes another connected register the active one. Asks nobody.
         * serialNo: 12 characters
         * Returns 0; 1: not connected (the active register stays); 3: NULL (0x300); 4: not 12
         * characters (0x400)
         * int velnoext_set_active_device(const char *serialNo);
         */
        int velnoext_set_active_device(byte[] serialNo);

        /**
         * The serial number of the active register. Asks nobody.
         * buffer: room for 13 bytes: 12 characters and a zero
         * Returns 0; 1: there is none; 3: NULL (0x300)
         * int velnoext_active_device(char *buffer);
         */
        int velnoext_active_device(Pointer buffer);

        /**
         * What the last call complained about: 0x300 + n for a pointer, 0x400 + n for a value,
         * otherwise 0. Every call that has to do with registers begins with setting it to 0, closing
         * included: ask right after the failed call, before another thread calls. Never blocks.
         * int velnoext_error_detail(void);
         */
        int velnoext_error_detail();

        /**
         * The finest reason known of the last call that failed, see VelnoCause: 0 after one that
         * succeeded. Set to 0 and read as velnoext_error_detail(): ask right after the failed call,
         * before another thread calls. Never blocks.
         * int velnoext_cause(void);
         */
        int velnoext_cause();

        /**
         * Closes the active register's connection; afterwards no register is active. When it was the
         * last connection, the library returns to the state before velnoext_initialize(), keys apart.
         * Harmless when nothing is open. Blocks until what was sent has left this computer's buffers,
         * at most 30 s.
         * void velnoext_close(void);
         */
        void velnoext_close();

        /**
         * Closes every connection as velnoext_close() does. Does nothing when there is none: what a
         * first velnoext_initialize() that failed has left is ended by velnoext_close().
         * void velnoext_close_all(void);
         */
        void velnoext_close_all();

        /**
         * Forgets a register: closes its connection as velnoext_close() does and drops its keys, so
         * that the next velnoext_initialize() pairs with it anew. For a register that has lost its
         * keys, or was paired elsewhere since: it ends the connection at every command. Other
         * registers stay as they are; when it was the active one, none is.
         * serialNo: 12 characters
         * Returns 0; 1: neither connected nor paired; 3: NULL (0x300); 4: not 12 characters (0x400)
         * int velnoext_forget_device(const char *serialNo);
         */
        int velnoext_forget_device(byte[] serialNo);

        /**
         * Ends the call that is under way on another thread, or was when the signal came, whatever it
         * waits for: a register to connect, a pairing, bytes to leave, an answer. That call returns
         * within 100 ms, with 2, or with 10 when it was exchanging keys, and the register's connection
         * is closed: a late answer could be taken for that to the next command. What the register has
         * done must be asked of it, as after every lost answer. A call that was just done returns what
         * it would have. From any thread, and from a signal handler. Never blocks. Without a call
         * under way it does nothing; it touches no later call, nor one that still waits for its turn.
         * void velnoext_interrupt(void);
         */
        void velnoext_interrupt();

        /**
         * Limits the whole wait for an answer: keep-alives, pauses between its bytes and all. When the
         * limit has passed the call returns 2 and the register's connection is closed, as after
         * velnoext_interrupt(). It holds for each of the three answers of a key exchange, too, with
         * all that comes in its place; the call then returns 10.
         * ms: for all answers from now on; 0xFFFFFFFF, no limit, at the start
         * Returns 0; 4: 0 ms (0x414)
         * int velnoext_set_answer_limit(unsigned int ms);
         */
        int velnoext_set_answer_limit(int ms);

        /**
         * Sends the lines that tell what goes wrong in a pairing, or with the frame of an answer, to a
         * function in place of standard output.
         * line: called with one line without its line feed, on the thread of the call that is under
         * way or on the library's own: it must not call the library, velnoext_interrupt() apart. The
         * text lives until it returns. NULL: standard output, as at the start
         * context: handed to it; borrowed until another function is set
         * void velnoext_set_log(void (*line)(const char *text, void *context), void *context);
         */
        void velnoext_set_log(velnoext_set_log_line line, Pointer context);

        /**
         * Chooses the language of all texts, for the whole process; names stay as they are. Takes no
         * lock; texts that were handed out before stay valid.
         * language: "en" (as at the start) or "tr"
         * Returns 0; 3: NULL (0x311); 4: no such language (0x415). Detail and cause are set on failure
         * alone, so that those of a failed call can be told in both languages
         * int velnoext_set_language(const char *language);
         */
        int velnoext_set_language(byte[] language);

        /**
         * A code's name, lower-case words joined by hyphens: "success", "no-paper"; otherwise
         * "unknown".
         * const char *velnoext_result_name(int code);
         */
        Pointer velnoext_result_name(int code);

        /**
         * What a code means: exactly three lines, separated by '\n', none behind the last. The first
         * is the sentence that says what happened; the second begins with "Cause: ", the third with
         * "Cure: " (in Turkish "Neden: " and "Çözüm: ").
         * const char *velnoext_result_text(int code);
         */
        Pointer velnoext_result_text(int code);

        /**
         * Which argument velnoext_error_detail() means, in one line. Several functions share a detail:
         * the text then names each with its argument.
         * const char *velnoext_detail_text(int detail);
         */
        Pointer velnoext_detail_text(int detail);

        /**
         * A cause's name, like that of a code: "port-in-use", "register-paper-out". A register's
         * number that is not known has the name of its base: "register-error", "register-state",
         * "register-display"; all else "unknown".
         * const char *velnoext_cause_name(int cause);
         */
        Pointer velnoext_cause_name(int cause);

        /**
         * What a cause means: three lines as velnoext_result_text(). Also for the codes of the pairing
         * window.
         * const char *velnoext_cause_text(int cause);
         */
        Pointer velnoext_cause_text(int cause);

        /**
         * Encrypts bytes, frames them and sends them to the active register. Waits for no answer. What
         * the register answers on this connection must not meet another command, which would take it
         * for its own answer: velnoext_initialize() connects afresh before the next one.
         * data: borrowed; needs no terminating zero
         * length: bytes, 1 to 65,471
         * Returns 0; 1: not initialised, not paired, or another application number; 2: not connected,
         * or not sent within 2 s; 3: NULL (0x300); 4: negative length; 11: nothing to encrypt, or too
         * much
         * int velnoext_send_data(const char *data, int length);
         */
        int velnoext_send_data(byte[] data, int length);

        /**
         * Checks and decrypts a frame of the active register that the caller received by means of its
         * own. Sends nothing.
         * frame: from its 2-byte length on, without the 4 bytes that precede it on a connection
         * output: receives the plain bytes, no terminating zero
         * outputLength: in: room; out: bytes written
         * Returns 0; 1: as for velnoext_send_data(); 2: not connected; 3: NULL (0x300 frame, 0x301
         * output, 0x302 outputLength); 4: negative frameLength, or the room is too small; 11: not
         * authentic; 12: malformed
         * int velnoext_get_data(const char *frame, int frameLength, char *output, int *outputLength);
         */
        int velnoext_get_data(byte[] frame, int frameLength, Pointer output, Pointer outputLength);

        /**
         * Opens the application's session on the register: it then knows that an application works
         * with it. The session belongs to the register, which keeps it when the connection ends;
         * logging in twice does no harm. This library asks for no login before any command, and the
         * simulated register neither; one in the field may want it before it sells or reports, so log
         * in once after connecting.
         * Returns 0; 8: refused, by the simulated register while it starts or is out of service
         * int velnoext_login(unsigned int timeout);
         */
        int velnoext_login(int timeout);

        /**
         * Ends the session.
         * Returns 0; 8: refused, by the simulated register while a sale is open
         * int velnoext_logout(unsigned int timeout);
         */
        int velnoext_logout(int timeout);

        /**
         * Whether the printer has paper.
         * Returns 0: it has; 9: it has none
         * int velnoext_check_printer_paper(unsigned int timeout);
         */
        int velnoext_check_printer_paper(int timeout);

        /**
         * The register's state, see VelnoEcrState.
         * Returns 0; 3: NULL (0x302)
         * int velnoext_ecr_state(unsigned int timeout, int *state);
         */
        int velnoext_ecr_state(int timeout, Pointer state);

        /**
         * The serial number that the active register gave when it was paired. Asks nobody. A zero is
         * written at the index of this terminal's identity's length, not behind the copied bytes: with
         * the usual 12 characters on both sides the result is an ordinary text.
         * buffer: room for at least 17 bytes
         * Returns 0; 1: not initialised, no active register, not paired; 3: NULL (0x300)
         * int velnoext_ecr_serialno(char *buffer);
         */
        int velnoext_ecr_serialno(Pointer buffer);

        /**
         * The number of the current Z report.
         * z: written also when the register refused
         * Returns 0; 3: NULL (0x30B); 8: refused
         * int velnoext_current_z(unsigned int timeout, int *z);
         */
        int velnoext_current_z(int timeout, Pointer z);

        /**
         * When the last Z report was made, as the register's number; the simulated register's is
         * seconds since 1970.
         * Returns 0; 3: NULL (0x30C)
         * int velnoext_last_z_datetime(unsigned int timeout, int *value);
         */
        int velnoext_last_z_datetime(int timeout, Pointer value);

        /**
         * The register's clock, a number like that of the last Z report.
         * Returns 0; 3: NULL (0x30C)
         * int velnoext_ecr_datetime(unsigned int timeout, int *value);
         */
        int velnoext_ecr_datetime(int timeout, Pointer value);

        /**
         * The highest amount that one sale may reach, in kuruş.
         * Returns 0; 3: NULL (0x310)
         * int velnoext_sale_limit(unsigned int timeout, long long *limit);
         */
        int velnoext_sale_limit(int timeout, Pointer limit);

        /**
         * Starts a sale: reads the register's state, then has the keys that start one pressed.
         * Returns 0; 6: the state is neither 1 nor 7 (nothing was started), or it is not 5 afterwards;
         * 7: the register did not take the step or tells an error of its own
         * int velnoext_start_sale(unsigned int timeout);
         */
        int velnoext_start_sale(int timeout);

        /**
         * Starts a sale that is to end with an invoice, see velnoext_end_sale_with_invoice().
         * Returns as above
         * int velnoext_start_sale_with_invoice(unsigned int timeout);
         */
        int velnoext_start_sale_with_invoice(int timeout);

        /**
         * How the open sale stands.
         * first: the first number of the register's list; written as soon as it has been read, also
         * when the rest of the answer cannot be read (5)
         * totals: the running totals
         * receipt: names the receipt of this sale, for velnoext_receipt_data()
         * Returns 0; 3: NULL (0x303 first, 0x304 totals, 0x305 receipt); 6: no sale is open; 7: the
         * register's list is empty; 8: refused
         * int velnoext_sale_state(unsigned int timeout, int *first, VelnoEcrSaleTotals *totals,
         * VelnoReceiptRef *receipt);
         */
        int velnoext_sale_state(int timeout, Pointer first, Pointer totals, Pointer receipt);

        /**
         * Adds one line to the open sale. With price 0 neither section nor amount is looked at.
         * item: only read
         * totals: the running totals with this line
         * Returns 0; 3: NULL (0x306 item, 0x304 totals); 4: section is not 1 to 8 (0x406), percentage
         * is below -100 (0x407), amount is negative or exceeds the line total (0x408), type is not 0
         * to 7 (0x409); 6: no sale is open; 7: the register did not take the step; 8: refused, or the
         * register tells an error of its own
         * int velnoext_add_sale_item(unsigned int timeout, VelnoSaleItem *item, VelnoEcrSaleTotals
         * *totals);
         */
        int velnoext_add_sale_item(int timeout, Pointer item, Pointer totals);

        /**
         * Adds up to ten lines to the open sale at once. When one is not valid none is sent.
         * list: only read
         * totals: the running totals with all lines
         * Returns 0; 3: NULL (0x307 list, 0x304 totals); 4: count is not 1 to 10 (0x40A), an item's
         * price is 0 (0x405), or an item is not valid, as for velnoext_add_sale_item(); 6, 7, 8:
         * likewise
         * int velnoext_add_multiple_sale_items(unsigned int timeout, VelnoSaleItemList *list,
         * VelnoEcrSaleTotals *totals);
         */
        int velnoext_add_multiple_sale_items(int timeout, Pointer list, Pointer totals);

        /**
         * Adds a medical contribution to the open sale.
         * amount: in kuruş; with 0 the identity number is neither looked at nor sent
         * identityNo: 11-digit identity number of the person; 11111111111 stands for anybody
         * Returns 0; 4: the identity number is not valid (0x403); 6: no sale is open; 7: the register
         * did not take the step or tells an error of its own; 8: refused
         * int velnoext_add_medical_contribution(unsigned int timeout, long long amount, unsigned long
         * long identityNo);
         */
        int velnoext_add_medical_contribution(int timeout, long amount, long identityNo);

        /**
         * Takes the last line out of the open sale.
         * totals: the running totals without it
         * Returns 0; 3: NULL (0x304); 6: no sale is open; 7: the register did not take the step; 8:
         * refused, or the register tells an error of its own
         * int velnoext_delete_last_sale_item(unsigned int timeout, VelnoEcrSaleTotals *totals);
         */
        int velnoext_delete_last_sale_item(int timeout, Pointer totals);

        /**
         * Takes the line of this index out of the open sale.
         * index: as the register counts its lines; the simulated one from 0, the first line added. A
         * deleted line keeps its index, so that the others keep theirs
         * totals: the running totals without it
         * Returns as above
         * int velnoext_delete_sale_item(unsigned int timeout, int index, VelnoEcrSaleTotals *totals);
         */
        int velnoext_delete_sale_item(int timeout, int index, Pointer totals);

        /**
         * Pays an amount of the open sale. Does not wait for an answer.
         * type: see VelnoPaymentKey; 0: with the key F10 of the register; any other value: with its
         * key F11
         * amount: in kuruş, 1 to 999,999,999,999; a larger one is not refused but loses its last
         * digits, as the register takes 12
         * Returns 0: the keys are sent; 4: amount is 0 or negative (0x412), which is looked at before
         * all else; 6: no sale is open; 7: the register did not take the step before; 8: the register
         * is not ready for keys
         * int velnoext_add_payment(int type, long long amount);
         */
        int velnoext_add_payment(int type, long amount);

        /**
         * Ends the open sale. Does not wait for an answer.
         * type: as for velnoext_add_payment()
         * Returns 0: the key is sent; 6, 7, 8: as for velnoext_add_payment()
         * int velnoext_end_sale(int type);
         */
        int velnoext_end_sale(int type);

        /**
         * Cancels the open sale and waits until the register is idle. Payments that the register
         * refused, and a printer without paper, are no hindrance to the simulated register; without
         * paper it prints nothing of it.
         * Returns 0; 6: no sale is open, or the register's state is not 1 afterwards; 7, 8: as for
         * velnoext_add_payment()
         * int velnoext_cancel_sale(unsigned int timeout);
         */
        int velnoext_cancel_sale(int timeout);

        /**
         * Ends the open sale with an invoice. The register is not asked for its state before.
         * invoice: only read
         * Returns 0; 3: NULL (0x308); 4: invoiceType is above 2 (0x40B), idKind above 1 (0x40C), mode
         * not 1 or 2 (0x40D), reference not 6 to 16 bytes long with invoiceType 0 (0x40E), idNumber
         * not valid as a person's (0x403) or as a tax number (0x404); 8: refused
         * int velnoext_end_sale_with_invoice(VelnoInvoice *invoice);
         */
        int velnoext_end_sale_with_invoice(Pointer invoice);

        /**
         * The totals of a receipt, also of one that has been printed.
         * receipt: as velnoext_sale_state() told it; only read
         * Returns 0; 3: NULL (0x305 receipt, 0x304 totals); 4: first (0x40F) or second (0x410) is 0;
         * 8: refused
         * int velnoext_receipt_data(unsigned int timeout, VelnoReceiptRef *receipt, VelnoEcrSaleTotals
         * *totals);
         */
        int velnoext_receipt_data(int timeout, Pointer receipt, Pointer totals);

        /**
         * The acquirers (banks) that the register can take cards for, by their numbers.
         * list: room for *count numbers
         * count: in: room; out: how many were written, or -1 when the room is too small
         * Returns 0; 3: NULL (0x309 list, 0x30A count); 4: the room is too small (detail 0)
         * int velnoext_active_acquirers(unsigned int timeout, int *list, int *count);
         */
        int velnoext_active_acquirers(int timeout, Pointer list, Pointer count);

        /**
         * The acquirers of the sale's payments.
         * Returns as above
         * int velnoext_acquirers_of_sale(unsigned int timeout, int *list, int *count);
         */
        int velnoext_acquirers_of_sale(int timeout, Pointer list, Pointer count);

        /**
         * What the register knows of a section (department).
         * item: in: section, 1 to 8; out: name, ended with a zero, and in quantity a number that the
         * register defines, the simulated one as the section's tax rate in per cent; nothing else is
         * written
         * Returns 0; 3: NULL (0x306); 4: section is not 1 to 8 (0x406); 5 also: the name is longer
         * than 52 bytes
         * int velnoext_section_data(unsigned int timeout, VelnoSaleItem *item);
         */
        int velnoext_section_data(int timeout, Pointer item);

        /**
         * Sets the encoding of the texts that follow on the slip. May be called again between texts.
         * name: as Qt knows it, for example "UTF-8", "windows-1254" or "ISO-8859-9"
         * Returns 0; 3: NULL (0x30D); 4: no encoding of this name is known (0x411)
         * int velnoext_printer_set_encoding(const char *name);
         */
        int velnoext_printer_set_encoding(byte[] name);

        /**
         * Adds a text to the slip. It needs no line feed of its own at its end.
         * text: of any length, in the encoding that was set
         * style: only read
         * Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set
         * for this slip
         * int velnoext_printer_add_text(const char *text, VelnoTextStyle *style);
         */
        int velnoext_printer_add_text(byte[] text, Pointer style);

        /**
         * Adds up to 20 line feeds to the slip.
         * Returns 0; 4: more than 20 (0x413); 8: no encoding has been set
         * int velnoext_printer_add_line_feed(unsigned int count);
         */
        int velnoext_printer_add_line_feed(int count);

        /**
         * Adds a line to the slip of which one text stands at the left and another at the right end.
         * style: only read; its size does not matter
         * Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set
         * for this slip
         * int velnoext_printer_add_justified_text(const char *left, const char *right, VelnoTextStyle
         * *style);
         */
        int velnoext_printer_add_justified_text(byte[] left, byte[] right, Pointer style);

        /**
         * Prints the slip. Once it is on its way it is gone from the library, printed or not, and the
         * next one begins with its encoding; only when there is no connection to send it on does it
         * stay.
         * timeout: ms of silence allowed in the rest of the answer once its first byte has come
         * flag: sent with the slip; the register defines what it means
         * Returns 0; 1: not initialised, no active register, not paired (the slip stays); 2: not
         * connected (it stays), sending or receiving failed (it is gone); 5: the answer is too short;
         * 8: refused; 11: not authentic, or the slip is larger than about 65,000 bytes; 12: malformed
         * int velnoext_print_slip(unsigned int timeout, bool flag);
         */
        int velnoext_print_slip(int timeout, byte flag);

        /**
         * Prints an X report, the totals of the day so far, on an idle register. Asks for the
         * register's state first; 2000 ms of silence are allowed in the rest of each answer.
         * Returns 0; 6: the register's state is neither 1 nor 7; 8: refused; 1, 2, 5, 11, 12 as for
         * the queries
         * int velnoext_x_report(void);
         */
        int velnoext_x_report();

        /**
         * Prints a Z report, which ends the day. As velnoext_x_report(), but in any state: the
         * register decides.
         * int velnoext_z_report(void);
         */
        int velnoext_z_report();
    }
}
