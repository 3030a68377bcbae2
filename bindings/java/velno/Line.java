// SPDX-License-Identifier: Apache-2.0
package velno;

import java.math.BigDecimal;
import velno.low.Velnoext.VelnoItemType;
import velno.low.Velnoext.VelnoSaleItem;

/**
 * A line of a sale. With price 0 the name is a remark on the receipt.
 *
 * @param price  of one unit
 * @param section  1 to 8: it decides the tax
 * @param percentage  -10: ten percent off
 * @param discount  counts while percentage is 0
 */
public record Line(String name, BigDecimal price, int section, BigDecimal quantity, VelnoItemType unit,
                   int percentage, BigDecimal discount) {
    private static final int NAME_BYTES = 52;

    /** One piece. */
    public Line(String name, BigDecimal price, int section) {
        this(name, price, section, BigDecimal.ONE, VelnoItemType.PIECE, 0, BigDecimal.ZERO);
    }

    void into(VelnoSaleItem item) {
        if (section < 1 || section > 8)
            throw new IllegalArgumentException("section: " + section + "; accepted: 1 to 8");
        item.name(Values.field(name, NAME_BYTES, "name"));
        item.price(Values.kurus(price, "price"));
        item.quantity(Values.thousandths(quantity, "quantity"));
        item.section((byte)section);
        item.type(unit.value);
        item.percentage(percentage);
        item.amount(Values.kurus(discount, "discount"));
    }
}
