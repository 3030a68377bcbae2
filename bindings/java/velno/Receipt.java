// SPDX-License-Identifier: Apache-2.0
package velno;

import java.math.BigDecimal;
import java.util.ArrayList;
import java.util.List;

/**
 * A receipt as its fields are most often used. Whoever needs a medical contribution, an invoice or a slip
 * hands over JSON, see docs/receipt-json.md. What is wrong with it is told by the library, all at once.
 */
public final class Receipt {
    private final List<String> items = new ArrayList<>();
    private final List<String> payments = new ArrayList<>();
    private final StringBuilder more = new StringBuilder();

    /** A line of it; the section decides the tax. */
    public Receipt item(String name, BigDecimal price, int section) {
        return item(name, price, section, BigDecimal.ONE, "piece", 0);
    }

    /**
     * The unit is "piece", "kilogram" and the others of docs/receipt-json.md; below 0 per cent is a
     * discount.
     */
    public Receipt item(String name, BigDecimal price, int section, BigDecimal quantity, String unit,
                        int percentage) {
        items.add("{\"name\":" + quoted(name) + ",\"price\":" + number(price) + ",\"section\":" + section
                  + ",\"quantity\":" + number(quantity) + ",\"unit\":" + quoted(unit)
                  + (percentage == 0 ? "" : ",\"percentage\":" + percentage) + "}");
        return this;
    }

    /** A line that is not sold. */
    public Receipt remark(String text) {
        items.add("{\"name\":" + quoted(text) + ",\"price\":0}");
        return this;
    }

    public Receipt cash(BigDecimal amount) {
        payments.add("{\"cash\":" + number(amount) + "}");
        return this;
    }

    public Receipt card(BigDecimal amount) {
        payments.add("{\"card\":" + number(amount) + "}");
        return this;
    }

    /** What is left to pay; the last payment alone. */
    public Receipt restInCash() {
        payments.add("{\"cash\":\"rest\"}");
        return this;
    }

    /** What is left to pay; the last payment alone. */
    public Receipt restByCard() {
        payments.add("{\"card\":\"rest\"}");
        return this;
    }

    /** What the register has to come to. */
    public Receipt total(BigDecimal total) {
        more.append(",\"total\":").append(number(total));
        return this;
    }

    /** Cash may be entered again without asking, when a power cut has cancelled the receipt. */
    public Receipt reenterCash() {
        more.append(",\"reenterCash\":true");
        return this;
    }

    public String toJson() {
        return "{\"items\":[" + String.join(",", items) + "],\"payments\":[" + String.join(",", payments)
            + "]" + more + "}";
    }

    private static String number(BigDecimal value) {
        BigDecimal shortest = value.signum() == 0 ? BigDecimal.ZERO : value.stripTrailingZeros();
        if (shortest.precision() - shortest.scale() > 30 || shortest.scale() > 30)
            throw new IllegalArgumentException(value + " is no amount or quantity");
        return quoted(shortest.toPlainString());
    }

    private static String quoted(String value) {
        StringBuilder text = new StringBuilder("\"");
        for (char letter : value.toCharArray()) {
            if (letter == '"' || letter == '\\')
                text.append('\\').append(letter);
            else if (letter < ' ')
                text.append(String.format("\\u%04x", (int)letter));
            else
                text.append(letter);
        }
        return text.append('"').toString();
    }
}
