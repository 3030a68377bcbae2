// SPDX-License-Identifier: Apache-2.0
import com.sun.jna.NativeLibrary;
import java.lang.reflect.Field;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.math.BigDecimal;
import java.nio.file.Path;
import java.time.Duration;
import java.util.List;
import java.util.stream.Collectors;
import velno.Line;
import velno.Outcome;
import velno.Receipt;
import velno.Reference;
import velno.Register;
import velno.RegisterException;
import velno.Sale;
import velno.Section;
import velno.Slip;
import velno.Till;
import velno.TillException;
import velno.low.Loading;
import velno.low.Velnoext;
import velno.low.Velnoext.VelnoCause;
import velno.low.Velnoext.VelnoDetail;
import velno.low.Velnoext.VelnoEcrState;
import velno.low.Velnoext.VelnoInvoiceType;
import velno.low.Velnoext.VelnoItemType;
import velno.low.Velnotill;
import velno.low.Velnotill.VelnoTillAnswer;
import velno.low.Velnotill.VelnoTillResult;
import velno.low.Velnotill.VelnoTillState;

/**
 * What test_java.py asks of the binding: `layout` and `functions` print what it is made of; the others do
 * what their names say, and end with 1 when something is not as it should be.
 */
public final class Checks {
    public static void main(String[] arguments) throws Exception {
        switch (arguments[0]) {
            case "layout" -> layout();
            case "functions" -> functions();
            case "values" -> values();
            case "till" -> receipts(arguments[1], arguments[2], Path.of(arguments[3]));
            case "alone" -> alone(arguments[1], arguments[2], Path.of(arguments[3]));
            case "register" -> commands(arguments[1], arguments[2]);
            case "queries" -> queries(arguments[1], arguments[2]);
            case "sales" -> sales(arguments[1], arguments[2]);
            default -> System.exit(64);
        }
    }

    /** Class, name and number of each offset, size and value. */
    private static void layout() throws Exception {
        for (Class<?> header : List.of(Velnoext.class, Velnotill.class)) {
            for (Class<?> one : header.getClasses()) {
                for (Field field : one.getFields()) {
                    if (field.isEnumConstant())
                        print(one, field, one.getField("value").get(field.get(null)));
                    else if (Modifier.isStatic(field.getModifiers()) && !one.isInterface())
                        print(one, field, field.get(null));
                }
            }
        }
    }

    private static void print(Class<?> one, Field field, Object number) {
        System.out.println(one.getSimpleName() + " " + field.getName() + " " + number);
    }

    /** Name and number of parameters of each, which must be in its library. */
    private static void functions() {
        print(Velnoext.Functions.class, Loading.EXT, "libvelnoext.so.0");
        print(Velnotill.Functions.class, Loading.TILL, "libvelnotill.so.0");
    }

    private static void print(Class<?> functions, Object loaded, String name) {
        NativeLibrary library =
            NativeLibrary.getInstance(System.getenv("VELNO_LIBRARY") + "/" + name);
        for (Method method : functions.getMethods()) {
            library.getFunction(method.getName());
            System.out.println(method.getName() + " " + method.getParameterCount());
        }
    }

    private static void expect(boolean holds, String what) {
        if (!holds) {
            System.err.println("not so: " + what);
            System.exit(1);
        }
    }

    private static <T extends Exception> T thrown(Class<T> kind, Runnable action) {
        try {
            action.run();
        } catch (RuntimeException problem) {
            expect(kind.isInstance(problem), problem.toString());
            return kind.cast(problem);
        }
        expect(false, "nothing is thrown");
        return null;
    }

    private static BigDecimal lira(String amount) {
        return new BigDecimal(amount);
    }

    private static Receipt bread(String price) {
        return new Receipt().item("Ekmek", lira(price), 1).restInCash();
    }

    private static void values() {
        String json = new Receipt()
                          .item("Çay \"\\\n", lira("12.500"), 2, lira("1E+1"), "kilogram", -10)
                          .remark("Afiyet")
                          .cash(lira("20"))
                          .card(lira("0.05"))
                          .restByCard()
                          .total(lira("100"))
                          .toJson();
        expect(
            json.equals(
                "{\"items\":[{\"name\":\"Çay \\\"\\\\\\u000a\",\"price\":\"12.5\",\"section\":2,"
                + "\"quantity\":\"10\",\"unit\":\"kilogram\",\"percentage\":-10},"
                + "{\"name\":\"Afiyet\",\"price\":0}],"
                + "\"payments\":[{\"cash\":\"20\"},{\"card\":\"0.05\"},{\"card\":\"rest\"}],"
                + "\"total\":\"100\"}"),
            json);
        thrown(IllegalArgumentException.class, () -> bread("1E+1000000"));
        for (String wrong : List.of("4100", "0.0.0.0", "0.0.0.0:0", "0.0.0.0:65536", ":4100", ""))
            thrown(IllegalArgumentException.class,
                   () -> new Till("UB1234567890", wrong, 5, Path.of("nowhere/ledger")));
        thrown(IllegalArgumentException.class,
               () -> new Till("UB\0", "0.0.0.0:1", 5, Path.of("nowhere/ledger")));
        TillException problem =
            thrown(TillException.class,
                   () -> new Till("UB1234567890", "0.0.0.0:1", 5, Path.of("nowhere/ledger")));
        expect(problem.result() == VelnoTillResult.LEDGER_FAILED, problem.getMessage());
    }

    private static void receipts(String serial, String listen, Path ledger) {
        int[] stages = {0};
        Duration time = Duration.ofSeconds(20);
        try (Till till = new Till(serial, listen, 5, ledger,
                                  (stage, order) -> ++stages[0], time, time, time)) {
            Outcome sold = till.sell(bread("12.50"), "ş 1");
            expect(sold.isClosed() && sold.totals().toPay().equals(lira("12.50")), sold.message());
            expect(sold.reference().equals(new Reference(1, 1)), "reference");
            expect(sold.message("tr").contains("fiş 1 kapandı") && stages[0] > 3, sold.message("tr"));
            expect(!sold.changedAt().isBefore(sold.acceptedAt()), "times");
            expect(till.sell(bread("12.5"), "ş 1").reference().number() == 1, "sold once");
            TillException conflict = thrown(TillException.class, () -> till.sell(bread("13"), "ş 1"));
            expect(conflict.getMessage().equals("items[0].price: 13.00, before 12.50"),
                   conflict.getMessage());
            expect(thrown(TillException.class, () -> till.find("none")).result()
                       == VelnoTillResult.UNKNOWN,
                   "unknown");
            expect(till.accept(bread("1"), "2").state() == VelnoTillState.ACCEPTED, "accepted");
            expect(till.answer("2", VelnoTillAnswer.DROP, "Ayşe").answer() == VelnoTillAnswer.DROP,
                   "answer");
            till.work();
            expect(till.find("2").state() == VelnoTillState.CANCELLED, "dropped");
            expect(till.xReport("x").isClosed() && till.zReport("z").isClosed(), "reports");
            expect(till.printSlip("{\"encoding\":\"UTF-8\",\"lines\":[\"a\"]}", "slip").isClosed(),
                   "slip");
            String keys = till.orders().stream().map(Outcome::key).collect(Collectors.joining(" "));
            expect(keys.equals("ş 1 2 x z slip"), keys);
            expect(till.record("ş 1").contains("\"closed\""), "record");
            expect(till.prune(Duration.ZERO) == 4,
                   "prune"); // the last Z report stays: its number is still needed
            till.close();
            expect(thrown(TillException.class, till::work).result() == VelnoTillResult.NOT_OPEN,
                   "not open");
        }
    }

    /** No register comes: interrupt() ends the wait. */
    private static void alone(String serial, String listen, Path ledger) throws InterruptedException {
        Duration time = Duration.ofSeconds(1000);
        try (Till till = new Till(serial, listen, 5, ledger, null, time, time, time)) {
            TillException[] problem = {null};
            Thread seller = new Thread(
                () -> problem[0] = thrown(TillException.class, () -> till.sell(bread("1"), "1")));
            seller.start();
            while (seller.isAlive()) { // the first may come before the call
                till.interrupt();
                seller.join(20);
            }
            expect(problem[0].result() == VelnoTillResult.INTERRUPTED, problem[0].getMessage());
            expect(till.orders().size() <= 1, "on record once");
        }
        RegisterException nobody = thrown(
            RegisterException.class,
            () -> new Register(serial, listen, 5, Duration.ofMillis(300), Duration.ofSeconds(1)));
        expect(nobody.causeNumber() == VelnoCause.NOBODY_CONNECTED.value, nobody.getMessage());
        expect(nobody.causeName().equals("nobody-connected"), nobody.causeName());
    }

    private static void commands(String serial, String listen) {
        try (Register register = new Register(serial, listen, 5)) {
            register.login();
            try (Sale sale = register.startSale()) {
                sale.add("Domates", lira("39.90"), 2, lira("1.250"), VelnoItemType.KILOGRAM, 0);
                expect(sale.add("Ekmek", lira("12.50"), 1).lines() == 2
                           && sale.deleteLast().lines() == 1,
                       "lines");
                thrown(IllegalArgumentException.class, () -> sale.add("Ekmek", lira("12.505"), 1));
                thrown(IllegalArgumentException.class, () -> sale.add("Ekmek", lira("-1"), 1));
                thrown(IllegalArgumentException.class, () -> sale.add("ş".repeat(27), lira("1"), 1));
                thrown(IllegalArgumentException.class, () -> sale.add("Ekmek", lira("1"), 257));
                expect(sale.pay(lira("100"), false).change().equals(lira("50.12")), "change");
                sale.end(false);
            }
            expect(register.state() == VelnoEcrState.IDLE && register.currentZ() == 1, "idle");
            expect(register.receiptTotals(new Reference(1, 1)).cash().equals(lira("100.00")),
                   "on record");
            register.startSale().close();
            thrown(RegisterException.class, () -> {
                try (Sale sale = register.startSale()) {
                    sale.add("!lost-answer=item", lira("1"), 1);
                }
            });
            expect(register.state() == VelnoEcrState.IDLE, "cancelled over a new connection");
            register.xReport();
            register.zReport();
        }
    }

    private static void queries(String serial, String listen) {
        try (Register register = new Register(serial, listen, 5)) {
            expect(register.currentZ() == 12 && register.lastZTime() == 1000 && register.clock() >= 2000,
                   "numbers");
            expect(register.saleLimit().equals(lira("1234.56")), "limit");
            expect(register.acquirers().equals(List.of(11, 23, 35)), "acquirers");
            expect(register.section(3).equals(new Section("İÇECEK", 10)), register.section(3).name());
            for (int wrong : List.of(0, 9, 257, Integer.MAX_VALUE))
                expect(thrown(RegisterException.class, () -> register.section(wrong)).detail()
                           == VelnoDetail.BAD_SECTION.value,
                       "section " + wrong);
            expect(register.ownSerial().equals(serial) && !register.hasPaper(), "serial and paper");
        }
    }

    private static void sales(String serial, String listen) {
        try (Register register = new Register(serial, listen, 5)) {
            printSlip(register);
            Reference receipt;
            try (Sale sale = register.startSale()) {
                fill(sale);
                sale.pay(lira("20"), false);
                expect(sale.pay(lira("3"), true).card().equals(lira("3.00")), "card");
                receipt = sale.stateAndReference().reference();
                expect(receipt.equals(new Reference(1, 1)), "reference");
                expect(sale.acquirers().equals(List.of(11)), "acquirers of the sale");
                sale.end(true);
            }
            expect(register.receiptTotals(receipt).card().equals(lira("23.00")), "closed");
            sellWithInvoice(register);
            expect(register.state() == VelnoEcrState.IDLE, "idle");
        }
    }

    private static void printSlip(Register register) {
        Slip slip = new Slip().text("İYİ GÜNLER", 0, true, false).feed(2).pair("Masa", "7");
        thrown(IllegalArgumentException.class, () -> slip.text(""));
        thrown(IllegalArgumentException.class, () -> slip.text("a", 6, false, false));
        thrown(IllegalArgumentException.class, () -> slip.feed(21));
        register.printSlip(slip, false);
    }

    private static void fill(Sale sale) {
        sale.add("Domates", lira("39.90"), 2, lira("1.250"), VelnoItemType.KILOGRAM, 0);
        Line ayran = new Line("Ayran", lira("15"), 3, lira("3"), VelnoItemType.PIECE, -10, lira("0"));
        Line water = new Line("Su", lira("5"), 1, lira("1"), VelnoItemType.PIECE, 0, lira("1"));
        expect(sale.addAll(List.of(ayran, water)).toPay().equals(lira("94.38")), "added");
        expect(sale.deleteLast().lines() == 2, "the last one deleted");
        expect(sale.delete(0).toPay().equals(lira("40.50")), "the first one deleted");
        thrown(IllegalArgumentException.class, () -> sale.addAll(List.of()));
        thrown(IllegalArgumentException.class, () -> sale.addMedical(lira("1"), "1111111111"));
        sale.addMedical(lira("2.50"), "11111111111");
    }

    private static void sellWithInvoice(Register register) {
        try (Sale sale = register.startSaleWithInvoice()) {
            sale.add("Defter", lira("120"), 6, lira("10"), VelnoItemType.PIECE, 0);
            VelnoInvoiceType paper = VelnoInvoiceType.PAPER;
            thrown(IllegalArgumentException.class,
                   () -> sale.endWithInvoiceToPerson(paper, "1".repeat(12), "", false, false));
            sale.endWithInvoiceToCompany(VelnoInvoiceType.ELECTRONIC, "0000000001", "", true, false);
        }
    }
}
