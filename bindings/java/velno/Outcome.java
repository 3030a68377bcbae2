// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import java.math.BigDecimal;
import java.time.Instant;
import velno.low.Loading;
import velno.low.Velnoext.VelnoResult;
import velno.low.Velnotill.VelnoTillAnswer;
import velno.low.Velnotill.VelnoTillKind;
import velno.low.Velnotill.VelnoTillOutcome;
import velno.low.Velnotill.VelnoTillPaper;
import velno.low.Velnotill.VelnoTillQuestion;
import velno.low.Velnotill.VelnoTillState;

/** An order as it is on record. Having one does not mean "sold": state() tells. */
public final class Outcome {
    private final String key;
    private final VelnoTillOutcome told;

    /** Copies what is told. */
    Outcome(String key, VelnoTillOutcome told) {
        this.key = key;
        this.told = new VelnoTillOutcome();
        this.told.at.write(0, told.at.getByteArray(0, (int)VelnoTillOutcome.BYTES), 0,
                           (int)VelnoTillOutcome.BYTES);
    }

    public String key() {
        return key;
    }

    public VelnoTillKind kind() {
        return VelnoTillKind.of(told.kind());
    }

    public VelnoTillState state() {
        return VelnoTillState.of(told.state());
    }

    public boolean isClosed() {
        return state() == VelnoTillState.CLOSED;
    }

    public VelnoTillQuestion question() {
        return VelnoTillQuestion.of(told.question());
    }

    public VelnoTillAnswer answer() {
        return VelnoTillAnswer.of(told.answer());
    }

    public VelnoTillPaper paper() {
        return VelnoTillPaper.of(told.paper());
    }

    public boolean isSlipUnsure() {
        return told.slipUnsure() != 0;
    }

    /** Behind refused and waiting. */
    public VelnoResult code() {
        return VelnoResult.of(told.code());
    }

    /** With it: a VelnoCause, or a number of the register's own. */
    public int cause() {
        return told.cause();
    }

    /** Of the receipt that it is entered on, or was closed on; 0, 0: none. */
    public Reference reference() {
        return new Reference(told.reference().first(), told.reference().second());
    }

    /** Of a closed receipt. */
    public Totals totals() {
        return Totals.of(told.totals());
    }

    /** Cash that was taken on cancelled receipts, and stands on none. */
    public BigDecimal giveBack() {
        return Values.lira(told.giveBack());
    }

    public Instant acceptedAt() {
        return Instant.ofEpochMilli(told.acceptedAt());
    }

    public Instant changedAt() {
        return Instant.ofEpochMilli(told.changedAt());
    }

    /** What a cashier is told, in English. */
    public String message() {
        return message("en");
    }

    /** What a cashier is told, in "en" or "tr". */
    public String message(String language) {
        Memory text = new Memory(Native.POINTER_SIZE);
        TillException.check(
            Loading.TILL.velnotill_message(told.at, Values.bytes(language, "language"), text));
        return taken(text);
    }

    /** A text that was handed out, which is given back. */
    static String taken(Memory place) {
        Pointer text = place.getPointer(0);
        try {
            return Values.text(text);
        } finally {
            Loading.TILL.velnotill_free_text(text);
        }
    }
}
