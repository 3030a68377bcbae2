// SPDX-License-Identifier: Apache-2.0
using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Runtime.Versioning;
using System.Threading;
using System.Threading.Tasks;
using Velno;
using Velno.Native;

/// <summary>
/// What test_csharp.py asks of the binding: `layout`, `functions` and `assembly` print what it is made of; the
/// others do what their names say, and end with 1 when something is not as it should be.
/// </summary>
internal static class Checks
{
    public static int Main(string[] arguments)
    {
        switch (arguments[0])
        {
        case "layout":
            return Layout();
        case "functions":
            return Functions();
        case "assembly":
            return OwnAssembly();
        case "values":
            return Values();
        case "till":
            return Receipts(arguments[1], arguments[2], arguments[3]);
        case "alone":
            return Alone(arguments[1], arguments[2], arguments[3]);
        case "register":
            return Commands(arguments[1], arguments[2]);
        case "queries":
            return Queries(arguments[1], arguments[2]);
        case "sales":
            return Sales(arguments[1], arguments[2]);
        default:
            return 64;
        }
    }

    private static Type[] Native()
    {
        Type[] all = typeof(Velnoext).Assembly.GetTypes();
        return all.Where(one => one.Namespace == "Velno.Native" && !one.IsNested).ToArray();
    }

    /// <summary>Each as an expression in C, and its value; an array's elements have a number.</summary>
    private static int Layout()
    {
        foreach (Type type in Native().Where(one => one.IsValueType && !one.IsEnum))
        {
            Console.WriteLine("sizeof(" + type.Name + ")=" + Marshal.SizeOf(type));
            foreach (FieldInfo field in type.GetFields())
            {
                IntPtr place = Marshal.OffsetOf(type, field.Name);
                Console.WriteLine("offsetof(" + type.Name + ", " + field.Name + ")=" + place);
            }
        }
        foreach (Type type in Native().Where(one => one.IsEnum))
            foreach (object value in Enum.GetValues(type))
                Console.WriteLine(type.Name + "_" + value + "=" + (int)value);
        return 0;
    }

    /// <summary>Names and numbers of parameters. Each must be found in its library.</summary>
    private static int Functions()
    {
        Loading.Load();
        foreach (Type type in new[] { typeof(Velnoext), typeof(Velnotill) })
            foreach (MethodInfo method in type.GetMethods(BindingFlags.Static | BindingFlags.Public))
            {
                Marshal.Prelink(method);
                Console.WriteLine(method.Name + " " + method.GetParameters().Length);
            }
        return 0;
    }

    /// <summary>Its name, those that it refers to, and the platform that it is for.</summary>
    private static int OwnAssembly()
    {
        Assembly own = typeof(Till).Assembly;
        Console.WriteLine(own.FullName);
        foreach (AssemblyName other in own.GetReferencedAssemblies())
            Console.WriteLine(other.FullName);
        Console.WriteLine(own.GetCustomAttribute<TargetFrameworkAttribute>().FrameworkName);
        return 0;
    }

    private static void Expect(bool holds, string what)
    {
        if (holds)
            return;
        Console.Error.WriteLine("not so: " + what);
        Environment.Exit(1);
    }

    private static T Throws<T>(Action action, string what)
        where T : Exception
    {
        try
        {
            action();
        }
        catch (T problem)
        {
            return problem;
        }
        Expect(false, what);
        return null;
    }

    private static Receipt Bread(decimal price = 12.50m)
    {
        var item = new Item("Ekmek", price) { Section = 1 };
        return new Receipt { Items = { item }, Payments = { Payment.Cash() } };
    }

    private static int Values()
    {
        string json =
            new Receipt {
                Items = { new Item("Çay \"\\\n", 12.500m) { Quantity = 1.250m, Unit = "kilogram", Section = 2,
                                                            Percentage = -10, Discount = 0.05m } },
                Payments = { Payment.Cash(20m), Payment.Card() },
                Total = 1m,
                ReenterCash = true,
            }
                .ToJson();
        Expect(
            json
                == "{\"items\":[{\"name\":\"Çay \\\"\\\\\\u000a\",\"price\":\"12.5\",\"quantity\":\"1.25\","
                       + "\"unit\":\"kilogram\",\"section\":2,\"percentage\":-10,\"discount\":\"0.05\"}],"
                       + "\"payments\":[{\"cash\":\"20\"},{\"card\":\"rest\"}],\"total\":\"1\","
                       + "\"reenterCash\":true}",
            json);
        foreach (string wrong in new[] { "4100", "0.0.0.0", "0.0.0.0:0", "0.0.0.0:65536", ":4100", "" })
            Throws<ArgumentException>(() => new Till("UB1234567890", wrong, 5, "nowhere/ledger"), wrong);
        Throws<ArgumentException>(() => new Till("UB\0", "0.0.0.0:1", 5, "nowhere/ledger"),
                                  "a zero in a text");
        var problem = Throws<TillException>(() => new Till("UB1234567890", "0.0.0.0:1", 5, "nowhere/ledger"),
                                            "no folder");
        Expect(problem.Result == VelnoTillResult.LedgerFailed, problem.Message);
        return 0;
    }

    private static int Receipts(string serial, string listen, string ledger)
    {
        int stages = 0;
        Till within = null;
        using (var till = within =
                   new Till(serial, listen, 5, ledger,
                            (stage, order) =>
                            {
                                ++stages;
                                Expect(Throws<TillException>(within.Dispose, "in callback").Result
                                           == VelnoTillResult.InCallback,
                                       "a callback may not close");
                            }))
        {
            Outcome sold = till.SellAsync(Bread(), "ş 1").Result;
            Expect(sold.IsClosed && sold.Totals.ToPay == 12.50m && sold.Totals.Lines == 1, sold.Message());
            Expect(sold.Reference.ToString() == "1/1", "reference");
            Expect(sold.Message("tr").Contains("fiş 1 kapandı"), sold.Message("tr"));
            Expect(stages > 3 && sold.AcceptedAt <= sold.ChangedAt, "stages and times");
            Expect(till.Sell(Bread(), "ş 1").Reference.ToString() == "1/1", "sold once");
            Expect(Throws<TillException>(() => till.Sell(Bread(13m), "ş 1"), "conflict").Message
                       == "items[0].price: 13.00, before 12.50",
                   "the first difference");
            var unknown = Throws<TillException>(() => till.Find("none"), "unknown");
            Expect(unknown.Result == VelnoTillResult.Unknown, unknown.Message);
            Expect(till.Accept(Bread(), "2").State == VelnoTillState.Accepted, "accepted");
            Outcome dropped = till.Answer("2", VelnoTillAnswer.Drop, "Ayşe");
            Expect(dropped.Answer == VelnoTillAnswer.Drop, "answer");
            till.Work();
            Expect(till.Find("2").State == VelnoTillState.Cancelled, "dropped");
            Expect(till.XReport("x").IsClosed && till.ZReport("z").IsClosed, "reports");
            Expect(till.PrintSlip("{\"encoding\":\"UTF-8\",\"lines\":[\"a\"]}", "slip").IsClosed, "slip");
            Expect(string.Join(" ", till.Orders().Select(one => one.Key)) == "ş 1 2 x z slip", "orders");
            string record = till.Record("ş 1");
            Expect(record.Contains("\"closed\""), record);
            int pruned = till.Prune(TimeSpan.Zero);
            Expect(pruned == 4, pruned + " pruned"); // the last Z report stays: its number is still needed
            till.Dispose();
            Expect(Throws<TillException>(till.Work, "closed").Result == VelnoTillResult.NotOpen, "not open");
        }
        return 0;
    }

    /// <summary>No register comes: a cancelled token, and Interrupt(), end the wait.</summary>
    private static int Alone(string serial, string listen, string ledger)
    {
        var cancel = new CancellationTokenSource();
        using (var till = new Till(serial, listen, 5, ledger, (stage, order) => cancel.Cancel(),
                                   TimeSpan.FromSeconds(1000)))
        {
            // Cancelled when it is on record and waits: before that nothing would be left of it.
            Task<Outcome> selling = till.SellAsync(Bread(), "1", cancel.Token);
            var problem = Throws<AggregateException>(() => selling.Wait(), "cancelled");
            Expect(problem.InnerException is OperationCanceledException, problem.InnerException.ToString());
            Expect(till.Find("1").State == VelnoTillState.Accepted, "stays on record");
        }
        var nobody = Throws<RegisterException>(
            () => new Register(serial, listen, 5, TimeSpan.FromMilliseconds(300)), "nobody comes");
        Expect(nobody.Cause == VelnoCause.NobodyConnected, nobody.Message);
        return 0;
    }

    private static int Commands(string serial, string listen)
    {
        using (var register = new Register(serial, listen, 5))
        {
            register.Login();
            using (Sale sale = register.StartSale())
            {
                sale.Add("Domates", 39.90m, 1.250m, 2, VelnoItemType.Kilogram);
                Expect(sale.Add("Ekmek", 12.50m).Lines == 2 && sale.DeleteLast().Lines == 1, "lines");
                Throws<ArgumentException>(() => sale.Add("Ekmek", 12.505m), "half a kuruş");
                Throws<ArgumentException>(() => sale.Add(new string('ş', 27), 1m), "a name too long");
                Throws<ArgumentException>(() => sale.Add("Ekmek", 1m, 1, 257), "section");
                Expect(sale.Pay(100m).Change == 50.12m, "change");
                sale.End();
            }
            Expect(register.State() == VelnoEcrState.Idle && register.CurrentZ() == 1, "idle");
            Expect(register.ReceiptTotals(new Reference(1, 1)).Cash == 100m, "on record");
            using (register.StartSale()) {}
            Throws<RegisterException>(
                () =>
                { using (Sale sale = register.StartSale()) sale.Add("!lost-answer=item", 1m); },
                "lost");
            Expect(register.State() == VelnoEcrState.Idle, "cancelled over a new connection");
            register.XReport();
            register.ZReport();
        }
        return 0;
    }

    private static int Queries(string serial, string listen)
    {
        using (var register = new Register(serial, listen, 5))
        {
            Expect(register.CurrentZ() == 12 && register.LastZTime() == 1000 && register.Clock() >= 2000,
                   "numbers");
            Expect(register.SaleLimit() == 1234.56m, "limit");
            Expect(register.Acquirers().SequenceEqual(new[] { 11, 23, 35 }), "acquirers");
            Section drinks = register.Section(3);
            Expect(drinks.Name == "İÇECEK" && drinks.Number == 10, drinks.Name);
            foreach (int wrong in new[] { 0, 9, 257, int.MaxValue })
                Expect(Throws<RegisterException>(() => register.Section(wrong), "section").Detail
                           == VelnoDetail.BadSection,
                       "section " + wrong);
            Expect(register.OwnSerial() == serial && !register.HasPaper(), "serial and paper");
        }
        return 0;
    }

    private static int Sales(string serial, string listen)
    {
        using (var register = new Register(serial, listen, 5))
        {
            var slip = new Slip();
            slip.Add("İYİ GÜNLER", 0, true);
            slip.Feed(2);
            slip.AddPair("Masa", "7");
            Throws<ArgumentException>(() => slip.Add(""), "an empty text");
            Throws<ArgumentException>(() => slip.Add("a", 6), "size");
            Throws<ArgumentException>(() => slip.Feed(21), "feeds");
            register.PrintSlip(slip);
            Reference receipt;
            using (Sale sale = register.StartSale())
            {
                sale.Add("Domates", 39.90m, 1.250m, 2, VelnoItemType.Kilogram);
                var ayran = new Line("Ayran", 15m) { Quantity = 3, Section = 3, Percentage = -10 };
                Expect(sale.AddAll(ayran, new Line("Su", 5m) { Discount = 1m }).ToPay == 94.38m, "added");
                Expect(sale.DeleteLast().Lines == 2 && sale.Delete(0).ToPay == 40.50m, "deleted");
                Throws<ArgumentException>(() => sale.AddAll(), "no line");
                Throws<ArgumentException>(() => sale.AddMedical(1m, "1111111111"), "ten digits");
                sale.AddMedical(2.50m, "11111111111");
                sale.Pay(20m);
                Expect(sale.Pay(3m, true).Card == 3m, "card");
                Expect(sale.State(out receipt).Cash == 20m && receipt.ToString() == "1/1", "reference");
                Expect(sale.Acquirers().SequenceEqual(new[] { 11 }), "acquirers of the sale");
                sale.End(true);
            }
            Expect(register.ReceiptTotals(receipt).Card == 23m, "closed");
            using (Sale sale = register.StartSaleWithInvoice())
            {
                sale.Add(new Line("Defter", 120m) { Quantity = 10, Section = 6 });
                Throws<ArgumentException>(() => sale.EndWithInvoice(VelnoInvoiceType.Paper), "nobody");
                Throws<ArgumentException>(
                    () => sale.EndWithInvoice(VelnoInvoiceType.Paper, "11111111111", "0000000001"), "both");
                sale.EndWithInvoice(VelnoInvoiceType.Electronic, company: "0000000001", card: true);
            }
            Expect(register.State() == VelnoEcrState.Idle, "idle");
        }
        return 0;
    }
}
