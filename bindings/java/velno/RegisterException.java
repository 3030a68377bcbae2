// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Pointer;
import velno.low.Loading;
import velno.low.Velnoext.VelnoResult;

/** A function of velnoext.h has failed. */
public class RegisterException extends VelnoException {
    private static final long serialVersionUID = 1;
    private final int result;
    private final int cause;
    private final int detail;

    RegisterException(String function, int result, int cause, int detail) {
        super(words(function, result, cause, detail));
        this.result = result;
        this.cause = cause;
        this.detail = detail;
    }

    public VelnoResult result() {
        return VelnoResult.of(result);
    }

    /** A VelnoCause, or a number of the register's own. */
    public int causeNumber() {
        return cause;
    }

    /** For logs: lower-case words joined by hyphens. */
    public String causeName() {
        return Values.text(Loading.EXT.velnoext_cause_name(cause));
    }

    /** Three lines for people: what, cause and cure. */
    public String causeText() {
        return Values.text(Loading.EXT.velnoext_cause_text(cause));
    }

    /** A VelnoDetail: which argument is meant. */
    public int detail() {
        return detail;
    }

    private static String words(String function, int result, int cause, int detail) {
        String words = function + ": " + firstLine(Loading.EXT.velnoext_result_text(result)) + " ("
                       + Values.text(Loading.EXT.velnoext_result_name(result)) + ", " + result + ")";
        if (cause != 0)
            words += " " + firstLine(Loading.EXT.velnoext_cause_text(cause)) + " ("
                     + Values.text(Loading.EXT.velnoext_cause_name(cause)) + ", " + cause + ")";
        return detail == 0 ? words : words + " " + Values.text(Loading.EXT.velnoext_detail_text(detail));
    }

    private static String firstLine(Pointer text) {
        return Values.text(text).split("\n")[0];
    }
}
