// SPDX-License-Identifier: Apache-2.0
package velno;

import java.util.ArrayList;
import java.util.List;
import velno.low.Loading;
import velno.low.Velnoext.VelnoTextStyle;

/** A slip of free text that is collected line by line, for Register.printSlip(). */
public final class Slip {
    private final List<Runnable> lines = new ArrayList<>();

    public Slip text(String text) {
        return text(text, 0, false, false);
    }

    /** @param size  0 to 5; what the styles look like the register defines */
    public Slip text(String text, int size, boolean styleA, boolean styleB) {
        if (size < 0 || size > 5)
            throw new IllegalArgumentException("size: " + size + "; accepted: 0 to 5");
        byte[] bytes = printable(text, "text");
        VelnoTextStyle style = style(size, styleA, styleB);
        lines.add(()
                      -> Register.check("velnoext_printer_add_text",
                                        Loading.EXT.velnoext_printer_add_text(bytes, style.at)));
        return this;
    }

    /** A text at each end of a line. */
    public Slip pair(String left, String right) {
        byte[] first = printable(left, "left");
        byte[] second = printable(right, "right");
        VelnoTextStyle style = style(0, false, false);
        lines.add(
            ()
                -> Register.check("velnoext_printer_add_justified_text",
                                  Loading.EXT.velnoext_printer_add_justified_text(first, second, style.at)));
        return this;
    }

    /** 1 to 20 line feeds. */
    public Slip feed(int count) {
        if (count < 1 || count > 20)
            throw new IllegalArgumentException("feed: " + count + "; accepted: 1 to 20");
        lines.add(()
                      -> Register.check("velnoext_printer_add_line_feed",
                                        Loading.EXT.velnoext_printer_add_line_feed(count)));
        return this;
    }

    /** Hands it to the library, in whose one slip it must not meet others. */
    void send() {
        Register.check("velnoext_printer_set_encoding",
                       Loading.EXT.velnoext_printer_set_encoding(Values.bytes("UTF-8", "encoding")));
        lines.forEach(Runnable::run);
    }

    private static byte[] printable(String text, String what) {
        if (text.isEmpty())
            throw new IllegalArgumentException(what + ": a text of a slip must not be empty");
        return Values.bytes(text, what);
    }

    private static VelnoTextStyle style(int size, boolean styleA, boolean styleB) {
        VelnoTextStyle style = new VelnoTextStyle();
        style.size(size);
        style.styleA((byte)(styleA ? 1 : 0));
        style.styleB((byte)(styleB ? 1 : 0));
        return style;
    }
}
