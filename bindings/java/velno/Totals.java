// SPDX-License-Identifier: Apache-2.0
package velno;

import java.math.BigDecimal;
import velno.low.Velnoext.VelnoEcrSaleTotals;

/** What the register has added up, in lira. */
public record Totals(BigDecimal toPay, BigDecimal tax, BigDecimal cash, BigDecimal card, BigDecimal change,
                     int lines) {
    static Totals of(VelnoEcrSaleTotals told) {
        long[] kurus = told.values();
        return new Totals(Values.lira(kurus[0]), Values.lira(kurus[1]), Values.lira(kurus[2]),
                          Values.lira(kurus[3]), Values.lira(kurus[4]), told.number());
    }
}
