// SPDX-License-Identifier: Apache-2.0
using System;
using System.Collections.Generic;
using Velno.Native;

namespace Velno
{
    /// <summary>
    /// Whole receipts under a key: one call, one receipt, through lost answers and power cuts. A method that
    /// has to do with the register blocks until the order is settled, waits or needs a person; Interrupt()
    /// ends that. Every method may be called from any thread. What fails throws a TillException.
    /// </summary>
    public sealed unsafe class Till : IDisposable
    {
        /// <summary>`listen`, for registers that are reached through the relay server.</summary>
        public const string Relay = "255.255.255.255";

        private delegate int Order(IntPtr till, byte[] key, VelnoTillOutcome* outcome);

        static Till() { Loading.Load(); }

        private readonly IntPtr till;
        private readonly VelnoTillListener listener; // must live as long as the till
        private bool isClosed;

        /// <summary>
        /// Asks no register: orders do. `listen` is ADDRESS:PORT of this computer, where the register
        /// connects, `ledger` a file that is made when it is not there. `progress` is called on the thread
        /// that works; it may call Interrupt() and Message() alone, and what it throws goes to standard
        /// error.
        /// </summary>
        public Till(string serial, string listen, uint app, string ledger,
                    Action<VelnoTillStage, Outcome> progress = null, TimeSpan? connectTimeout = null,
                    TimeSpan? answerLimit = null, TimeSpan? patience = null)
        {
            byte[] address = Text.Place(listen, out ushort port);
            byte[] name = Text.Bytes(serial, "serial");
            byte[] path = Text.Bytes(ledger, "ledger");
            IntPtr opened = IntPtr.Zero;
            fixed(byte* addressAt = address, nameAt = name, pathAt = path)
            {
                var settings = new VelnoTillSettings {
                    size = (uint)sizeof(VelnoTillSettings),
                    appNo = app,
                    port = port,
                    connectTimeout =
                        Text.Milliseconds(connectTimeout ?? TimeSpan.FromSeconds(10), "connectTimeout"),
                    answerLimit = Text.Milliseconds(answerLimit ?? TimeSpan.FromSeconds(120), "answerLimit"),
                    patience = Text.Milliseconds(patience ?? TimeSpan.FromSeconds(30), "patience"),
                    serial = (IntPtr)nameAt,
                    address = (IntPtr)addressAt,
                    ledger = (IntPtr)pathAt,
                };
                TillException.Check(Velnotill.velnotill_open(&opened, &settings));
            }
            till = opened;
            if (progress == null)
                return;
            listener = (key, stage, outcome, context) => Tell(progress, Text.Of(key), stage, *outcome);
            TillException.Check(Velnotill.velnotill_set_listener(till, listener, IntPtr.Zero));
        }

        /// <summary>
        /// Interrupts what is under way and closes the ledger, which keeps all that was accepted.
        /// </summary>
        public void Dispose()
        {
            if (isClosed)
                return;
            int result = Velnotill.velnotill_close(till);
            if (result != (int)VelnoTillResult.NotOpen) // another thread was first
                TillException.Check(result);
            isClosed = true;
        }

        /// <summary>
        /// Ends the work under way soon. From any thread, Console.CancelKeyPress too; never blocks.
        /// </summary>
        public void Interrupt() { Velnotill.velnotill_interrupt(till); }

        /// <summary>
        /// Sells a receipt, once, however often the same is handed over. State tells the rest.
        /// </summary>
        public Outcome Sell(string json, string key)
        {
            byte[] content = Text.Bytes(json, "json");
            return Ordered(key, (at, name, outcome) => Velnotill.velnotill_sell(at, name, content, outcome));
        }

        public Outcome Sell(Receipt receipt, string key) { return Sell(receipt.ToJson(), key); }

        /// <summary>Puts a receipt on record, where it survives a power cut, and does nothing more.</summary>
        public Outcome Accept(string json, string key)
        {
            byte[] content = Text.Bytes(json, "json");
            return Ordered(key,
                           (at, name, outcome) => Velnotill.velnotill_accept(at, name, content, outcome));
        }

        public Outcome Accept(Receipt receipt, string key) { return Accept(receipt.ToJson(), key); }

        public Outcome PrintSlip(string json, string key)
        {
            byte[] content = Text.Bytes(json, "json");
            return Ordered(key,
                           (at, name, outcome) => Velnotill.velnotill_print_slip(at, name, content, outcome));
        }

        public Outcome ZReport(string key) => Ordered(key, Velnotill.velnotill_z_report);

        public Outcome XReport(string key) => Ordered(key, Velnotill.velnotill_x_report);

        /// <summary>
        /// Works off every order that can go on: when the program starts, and when a register is back.
        /// </summary>
        public void Work()
        {
            int result = Velnotill.velnotill_work(till);
            GC.KeepAlive(this); // and with it the listener, which the library calls
            TillException.Check(result);
        }

        /// <summary>
        /// A person's answer to the question of an order. Work(), or handing it over again, acts upon it.
        /// </summary>
        public Outcome Answer(string key, VelnoTillAnswer answer, string person)
        {
            byte[] who = Text.Bytes(person, "person");
            return Ordered(key, (at, name, outcome) =>
                                    Velnotill.velnotill_answer(at, name, (int)answer, who, outcome));
        }

        /// <summary>How an order stands. Asks no register.</summary>
        public Outcome Find(string key) => Ordered(key, Velnotill.velnotill_find);

        /// <summary>Orders as accepted; `states` is a sum of 1 &lt;&lt; state.</summary>
        public IList<Outcome> Orders(uint states = Velnotill.VELNOTILL_ALL_STATES)
        {
            var found = new List<Outcome>();
            VelnoTillVisitor visitor = (key, outcome, context) =>
                found.Add(new Outcome(Text.Of(key), *outcome));
            TillException.Check(Velnotill.velnotill_list(till, states, visitor, IntPtr.Zero));
            GC.KeepAlive(visitor);
            return found;
        }

        /// <summary>An order with its content and history as JSON, see docs/receipts.md.</summary>
        public string Record(string key)
        {
            IntPtr text;
            TillException.Check(Velnotill.velnotill_json(till, Text.Bytes(key, "key"), &text));
            return Outcome.Taken(text);
        }

        /// <summary>Forgets settled orders that have not changed for so long. Tells how many.</summary>
        public int Prune(TimeSpan age)
        {
            int count;
            TillException.Check(Velnotill.velnotill_prune(till, checked((uint)age.TotalSeconds), &count));
            return count;
        }

        private Outcome Ordered(string key, Order order)
        {
            var outcome = new VelnoTillOutcome { size = (uint)sizeof(VelnoTillOutcome) };
            int result = order(till, Text.Bytes(key, "key"), &outcome);
            GC.KeepAlive(this); // and with it the listener, which the library calls
            TillException.Check(result);
            return new Outcome(key, outcome);
        }

        /// <summary>No exception may go through the library.</summary>
        private static void Tell(Action<VelnoTillStage, Outcome> progress, string key, int stage,
                                 VelnoTillOutcome outcome)
        {
            try
            {
                progress((VelnoTillStage)stage, new Outcome(key, outcome));
            }
            catch (Exception problem)
            {
                Console.Error.WriteLine("velno: the progress callback has thrown: " + problem);
            }
        }
    }
}
