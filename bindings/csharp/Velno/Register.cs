// SPDX-License-Identifier: Apache-2.0
using System;
using Velno.Native;

namespace Velno
{
    /// <summary>
    /// Single commands to a register that is connected. Interrupt() on another thread ends a call that waits;
    /// Connect() then connects afresh. What fails throws a RegisterException. What a lost answer leaves
    /// behind is the caller's to find out: a Till does that by itself.
    /// </summary>
    public sealed unsafe class Register : IDisposable
    {
        internal delegate int Command(uint timeout);
        internal delegate int TotalsCommand(uint timeout, VelnoEcrSaleTotals* totals);
        internal delegate int NumbersCommand(uint timeout, int* list, int* count);
        private delegate int NumberCommand(uint timeout, int* number);

        private const int MostAcquirers = 256;
        private const int SerialRoom = 64;

        // The library has one active register and one cause: what belongs to a call must stay with it.
        private static readonly object Together = new object();

        static Register() { Loading.Load(); }

        private readonly byte[] name;
        private readonly byte[] address;
        private readonly ushort port;
        private readonly uint app;
        private readonly uint connectTimeout;
        private readonly uint timeout;

        /// <summary>
        /// Waits for the register to connect to ADDRESS:PORT, and pairs with it if need be.
        /// </summary>
        public Register(string serial, string listen, uint app, TimeSpan? connectTimeout = null,
                        TimeSpan? timeout = null)
        {
            name = Text.Bytes(serial, "serial");
            address = Text.Place(listen, out port);
            this.app = app;
            this.connectTimeout =
                Text.Milliseconds(connectTimeout ?? TimeSpan.FromSeconds(30), "connectTimeout");
            this.timeout = Text.Milliseconds(timeout ?? TimeSpan.FromSeconds(5), "timeout");
            Connect();
        }

        /// <summary>Connects afresh, without pairing again: after ConnectionFailed.</summary>
        public void Connect()
        {
            lock (Together) Check("velnoext_initialize",
                                  Velnoext.velnoext_initialize(app, name, address, port, connectTimeout));
        }

        /// <summary>Ends the connection; the keys stay.</summary>
        public void Dispose()
        {
            lock (Together) if (Velnoext.velnoext_set_active_device(name) == 0) Velnoext.velnoext_close();
        }

        /// <summary>Closes, and drops the keys: for a register that has lost its own.</summary>
        public void Forget()
        {
            lock (Together) Check("velnoext_forget_device", Velnoext.velnoext_forget_device(name));
        }

        /// <summary>Ends the call that is under way in this process. From any thread; never blocks.</summary>
        public void Interrupt() { Velnoext.velnoext_interrupt(); }

        /// <summary>Starts a sale. Disposing of it without End() cancels it.</summary>
        public Sale StartSale()
        {
            Run("velnoext_start_sale", Velnoext.velnoext_start_sale);
            return new Sale(this);
        }

        /// <summary>Starts a sale that is to end with EndWithInvoice().</summary>
        public Sale StartSaleWithInvoice()
        {
            Run("velnoext_start_sale_with_invoice", Velnoext.velnoext_start_sale_with_invoice);
            return new Sale(this);
        }

        /// <param name="flag">the register defines what it means</param>
        public void PrintSlip(Slip slip, bool flag = false)
        {
            Run("velnoext_print_slip", wait =>
                                       {
                                           slip.Send();
                                           return Velnoext.velnoext_print_slip(wait, flag);
                                       });
        }

        public void Login() => Run("velnoext_login", Velnoext.velnoext_login);

        public void Logout() => Run("velnoext_logout", Velnoext.velnoext_logout);

        public bool HasPaper()
        {
            try
            {
                Run("velnoext_check_printer_paper", Velnoext.velnoext_check_printer_paper);
            }
            catch (RegisterException problem) when (problem.Result == VelnoResult.NoPaper)
            {
                return false;
            }
            return true;
        }

        public VelnoEcrState State() => (VelnoEcrState)Number("velnoext_ecr_state",
                                                              Velnoext.velnoext_ecr_state);

        public int CurrentZ() => Number("velnoext_current_z", Velnoext.velnoext_current_z);

        /// <summary>
        /// When the last Z report was made; the register's number, the simulated one's seconds since 1970.
        /// </summary>
        public int LastZTime() => Number("velnoext_last_z_datetime", Velnoext.velnoext_last_z_datetime);

        /// <summary>A number like LastZTime().</summary>
        public int Clock() => Number("velnoext_ecr_datetime", Velnoext.velnoext_ecr_datetime);

        /// <summary>The highest amount of one sale.</summary>
        public decimal SaleLimit()
        {
            long limit;
            long* at = &limit;
            Run("velnoext_sale_limit", wait => Velnoext.velnoext_sale_limit(wait, at));
            return Text.Lira(limit);
        }

        /// <summary>The serial number that it gave when it was paired. Asks nobody.</summary>
        public string OwnSerial()
        {
            var buffer = new byte[SerialRoom];
            Run("velnoext_ecr_serialno",
                wait =>
                { fixed(byte* at = buffer) return Velnoext.velnoext_ecr_serialno((IntPtr)at); });
            fixed(byte* at = buffer) return Text.Of((IntPtr)at);
        }

        /// <summary>The banks that it takes cards for, by their numbers.</summary>
        public int[] Acquirers() => Numbers("velnoext_active_acquirers", Velnoext.velnoext_active_acquirers);

        /// <summary>What it knows of a section (department), 1 to 8.</summary>
        public Section Section(int number)
        {
            var item = new VelnoSaleItem { section = (sbyte)(number == (sbyte)number ? number : 0) };
            VelnoSaleItem* at = &item;
            Run("velnoext_section_data", wait => Velnoext.velnoext_section_data(wait, at));
            return new Section(Text.Of((IntPtr)at->name), at->quantity);
        }

        public void XReport() => Run("velnoext_x_report", wait => Velnoext.velnoext_x_report());

        public void ZReport() => Run("velnoext_z_report", wait => Velnoext.velnoext_z_report());

        /// <summary>The totals of a receipt that has been closed.</summary>
        public Totals ReceiptTotals(Reference reference)
        {
            var numbers = new VelnoReceiptRef { first = reference.Z, second = reference.Number };
            VelnoReceiptRef* at = &numbers;
            return RunForTotals("velnoext_receipt_data",
                                (wait, totals) => Velnoext.velnoext_receipt_data(wait, at, totals));
        }

        internal void Run(string function, Command command)
        {
            lock (Together)
            {
                Check("velnoext_set_active_device", Velnoext.velnoext_set_active_device(name));
                Check(function, command(timeout));
            }
        }

        internal Totals RunForTotals(string function, TotalsCommand command)
        {
            VelnoEcrSaleTotals totals;
            VelnoEcrSaleTotals* at = &totals;
            Run(function, wait => command(wait, at));
            return new Totals(totals);
        }

        internal int[] Numbers(string function, NumbersCommand command)
        {
            var list = new int[MostAcquirers];
            int count = list.Length;
            int* countAt = &count;
            Run(function, wait =>
                          { fixed(int* listAt = list) return command(wait, listAt, countAt); });
            var numbers = new int[count];
            Array.Copy(list, numbers, count);
            return numbers;
        }

        private int Number(string function, NumberCommand command)
        {
            int number;
            int* at = &number;
            Run(function, wait => command(wait, at));
            return number;
        }

        internal static void Check(string function, int result)
        {
            if (result != 0)
                throw new RegisterException(function, result, Velnoext.velnoext_cause(),
                                            Velnoext.velnoext_error_detail());
        }
    }
}
