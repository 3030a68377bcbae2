// SPDX-License-Identifier: Apache-2.0
using System;
using Velno;
using Velno.Native;

/// <summary>
/// A market's sale that comes through lost answers: mono Market.exe SERIAL ADDRESS:PORT LEDGER KEY
///
/// Each run with another key sells one basket; one with the same key sells nothing more, and tells how it is.
/// Against the simulated register, which loses the answers to the start and to both payments:
///
///     velno-register --serial UB1234567890 --connect 127.0.0.1:4100 --fault 'lost-answer=change-state*3'
/// </summary>
internal static class Market
{
    private static Receipt Basket()
    {
        return new Receipt {
            Items = { new Item("Tam Buğday Ekmeği", 12.50m) { Quantity = 2, Section = 1 },
                      new Item("Domates", 39.90m) { Quantity = 1.250m, Unit = "kilogram", Section = 2 },
                      new Item("Ayran", 15.00m) { Quantity = 3, Section = 3, Percentage = -10 } },
            Payments = { Payment.Cash(50.00m), Payment.Card() },
            ReenterCash = true,
        };
    }

    private static void Tell(VelnoTillStage stage, Outcome order)
    {
        Console.WriteLine("  " + order.Key + ": " + stage);
    }

    public static int Main(string[] arguments)
    {
        if (arguments.Length != 4)
        {
            Console.Error.WriteLine("Usage: Market.exe SERIAL ADDRESS:PORT LEDGER KEY");
            return 64;
        }
        try
        {
            using (var till = new Till(arguments[0], arguments[1], 5, arguments[2], Tell))
            {
                Console.CancelKeyPress += (sender, pressed) =>
                {
                    pressed.Cancel = true;
                    till.Interrupt();
                };
                till.Work(); // what an earlier run has left
                Outcome order = till.Sell(Basket(), arguments[3]);
                Console.WriteLine(order.Message());
                return order.IsClosed ? 0 : 2;
            }
        }
        catch (VelnoException problem)
        {
            Console.Error.WriteLine(problem.Message);
            return 1;
        }
    }
}
