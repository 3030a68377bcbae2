// SPDX-License-Identifier: Apache-2.0
import java.math.BigDecimal;
import java.nio.file.Path;
import java.time.Duration;
import velno.Outcome;
import velno.Receipt;
import velno.Till;
import velno.VelnoException;
import velno.low.Velnotill.VelnoTillStage;

/**
 * A market's sale that comes through lost answers: java Market SERIAL ADDRESS:PORT LEDGER KEY
 *
 * Each run with another key sells one basket; one with the same key sells nothing more.
 * Against the simulated register, which loses the answers to the start and to both payments:
 *
 *     velno-register --serial UB1234567890 --connect 127.0.0.1:4100 --fault 'lost-answer=change-state*3'
 */
public final class Market {
    private static Receipt basket() {
        return new Receipt()
            .item("Tam Buğday Ekmeği", new BigDecimal("12.50"), 1, new BigDecimal(2), "piece", 0)
            .item("Domates", new BigDecimal("39.90"), 2, new BigDecimal("1.250"), "kilogram", 0)
            .item("Ayran", new BigDecimal("15.00"), 3, new BigDecimal(3), "piece", -10)
            .cash(new BigDecimal("50.00"))
            .restByCard()
            .reenterCash();
    }

    private static void tell(VelnoTillStage stage, Outcome order) {
        System.out.println("  " + order.key() + ": " + stage);
    }

    public static void main(String[] arguments) {
        if (arguments.length != 4) {
            System.err.println("Usage: java Market SERIAL ADDRESS:PORT LEDGER KEY");
            System.exit(64);
        }
        try (Till till = new Till(arguments[0], arguments[1], 5, Path.of(arguments[2]), Market::tell,
                                  Duration.ofSeconds(10), Duration.ofSeconds(120), Duration.ofSeconds(30))) {
            Runtime.getRuntime().addShutdownHook(new Thread(till::close)); // Ctrl-C
            till.work();                                                   // what an earlier run has left
            Outcome order = till.sell(basket(), arguments[3]);
            System.out.println(order.message());
        } catch (VelnoException problem) {
            System.err.println(problem.getMessage());
            System.exit(1);
        }
    }
}
