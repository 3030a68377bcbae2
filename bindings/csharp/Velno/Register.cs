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
        private delegate int NumberCommand(uint timeout, int* number);

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

        public void Login() => Run("velnoext_login", Velnoext.velnoext_login);

        public void Logout() => Run("velnoext_logout", Velnoext.velnoext_logout);

        public VelnoEcrState State() => (VelnoEcrState)Number("velnoext_ecr_state",
                                                              Velnoext.velnoext_ecr_state);

        public int CurrentZ() => Number("velnoext_current_z", Velnoext.velnoext_current_z);

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

        private int Number(string function, NumberCommand command)
        {
            int number;
            int* at = &number;
            Run(function, wait => command(wait, at));
            return number;
        }

        private static void Check(string function, int result)
        {
            if (result != 0)
                throw new RegisterException(function, result, Velnoext.velnoext_cause(),
                                            Velnoext.velnoext_error_detail());
        }
    }
}
