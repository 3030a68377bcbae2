// SPDX-License-Identifier: Apache-2.0
package velno;

import velno.low.Loading;
import velno.low.Velnotill.VelnoTillResult;

/** A function of velnotill.h has failed; the message tells more, faults have a line each. */
public class TillException extends VelnoException {
    private static final long serialVersionUID = 1;
    private final int result;

    TillException(int result, String problem) {
        super(problem);
        this.result = result;
    }

    public VelnoTillResult result() {
        return VelnoTillResult.of(result);
    }

    /** Throws what a function has returned; on the thread that has called it. */
    static void check(int result) {
        if (result != 0)
            throw new TillException(result, Values.text(Loading.TILL.velnotill_problem()));
    }
}
