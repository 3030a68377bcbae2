// SPDX-License-Identifier: Apache-2.0
package velno;

import com.sun.jna.Pointer;
import java.math.BigDecimal;
import java.nio.ByteBuffer;
import java.nio.CharBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.time.Duration;
import java.util.Arrays;
import velno.low.Loading;

/** Texts, amounts and times as the libraries take them: nothing is cut, nothing is rounded. */
final class Values {
    private static final BigDecimal HIGHEST_AMOUNT = new BigDecimal("9999999999.99");
    private static final BigDecimal HIGHEST_QUANTITY = new BigDecimal("2147483.647");

    private Values() {
    }

    /** UTF-8 with a zero behind it. */
    static byte[] bytes(String text, String what) {
        if (text.indexOf('\0') >= 0)
            throw new IllegalArgumentException(what + ": a zero character would end it");
        try {
            ByteBuffer encoded = StandardCharsets.UTF_8.newEncoder().encode(CharBuffer.wrap(text));
            return Arrays.copyOf(Arrays.copyOf(encoded.array(), encoded.limit()), encoded.limit() + 1);
        } catch (CharacterCodingException problem) {
            throw new IllegalArgumentException(what + ": half a letter", problem);
        }
    }

    /** UTF-8 for a field of so many bytes. */
    static byte[] field(String text, int room, String what) {
        byte[] bytes = bytes(text, what);
        if (bytes.length - 1 > room)
            throw new IllegalArgumentException(what + ": " + (bytes.length - 1) + " bytes in UTF-8; at most "
                                               + room + " fit: " + text);
        return Arrays.copyOf(bytes, bytes.length - 1);
    }

    /** Lira in kuruş. */
    static long kurus(BigDecimal lira, String what) {
        return parts(lira, 2, HIGHEST_AMOUNT, what);
    }

    /** Units in thousandths. */
    static int thousandths(BigDecimal quantity, String what) {
        return (int)parts(quantity, 3, HIGHEST_QUANTITY, what);
    }

    private static long parts(BigDecimal value, int decimals, BigDecimal highest, String what) {
        boolean fits = value.signum() >= 0 && value.compareTo(highest) <= 0;
        if (!fits || value.signum() > 0 && value.stripTrailingZeros().scale() > decimals)
            throw new IllegalArgumentException(what + ": " + value + "; accepted: 0 to " + highest
                                               + ", up to " + decimals + " decimals");
        return value.movePointRight(decimals).longValueExact();
    }

    static BigDecimal lira(long kurus) {
        return BigDecimal.valueOf(kurus, 2);
    }

    /** Of "0.0.0.0:4100", "[::]:4100" or Till.RELAY, whose port is the library's. */
    static int port(String listen) {
        if (listen.equals(Till.RELAY))
            return 1;
        String digits = listen.substring(listen.lastIndexOf(':') + 1);
        if (listen.lastIndexOf(':') < 1 || !digits.matches("[0-9]{1,5}") || Integer.parseInt(digits) < 1
            || Integer.parseInt(digits) > 65535)
            throw new IllegalArgumentException(
                "listen: \"" + listen + "\"; accepted: ADDRESS:PORT, as \"0.0.0.0:4100\", or Till.RELAY");
        return Integer.parseInt(digits);
    }

    static byte[] address(String listen) {
        String address = listen.equals(Till.RELAY) ? listen : listen.substring(0, listen.lastIndexOf(':'));
        return bytes(address.replaceAll("[\\[\\]]", ""), "listen");
    }

    static int milliseconds(Duration time, String what) {
        if (time.toMillis() < 1 || time.toMillis() > 4_000_000_000L)
            throw new IllegalArgumentException(what + ": " + time + "; accepted: 1 ms to 46 days");
        return (int)time.toMillis();
    }

    static String text(Pointer text) {
        return Loading.text(text);
    }
}
