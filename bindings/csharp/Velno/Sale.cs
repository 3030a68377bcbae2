// SPDX-License-Identifier: Apache-2.0
using System;
using System.Globalization;
using System.Linq;
using Velno.Native;

namespace Velno
{
    /// <summary>An open sale.</summary>
    public sealed unsafe class Sale : IDisposable
    {
        private const int MostAtOnce = 10;
        private const int IdBytes = 11;
        private const int ReferenceBytes = 16;
        private readonly Register register;
        private bool isOver;

        internal Sale(Register register) { this.register = register; }

        /// <summary>Adds one line; the section decides the tax.</summary>
        public Totals Add(string name, decimal price, decimal quantity = 1, int section = 1,
                          VelnoItemType unit = VelnoItemType.Piece, int percentage = 0, decimal discount = 0)
        {
            return Add(new Line(name, price) { Quantity = quantity, Section = section, Unit = unit,
                                               Percentage = percentage, Discount = discount });
        }

        public Totals Add(Line line)
        {
            VelnoSaleItem item = line.InC();
            VelnoSaleItem* at = &item;
            return register.RunForTotals("velnoext_add_sale_item",
                                         (wait, totals) => Velnoext.velnoext_add_sale_item(wait, at, totals));
        }

        /// <summary>Adds one to ten lines at once, all or none.</summary>
        public Totals AddAll(params Line[] lines)
        {
            if (lines.Length < 1 || lines.Length > MostAtOnce)
                throw new ArgumentException(lines.Length + " lines; accepted: 1 to " + MostAtOnce, "lines");
            var list = new VelnoSaleItemList { count = (ushort)lines.Length };
            for (int i = 0; i < lines.Length; ++i)
                (&list.items0)[i] = lines[i].InC();
            VelnoSaleItemList* at = &list;
            return register.RunForTotals("velnoext_add_multiple_sale_items",
                                         (wait, totals) =>
                                             Velnoext.velnoext_add_multiple_sale_items(wait, at, totals));
        }

        public Totals DeleteLast()
        {
            return register.RunForTotals("velnoext_delete_last_sale_item",
                                         Velnoext.velnoext_delete_last_sale_item);
        }

        /// <summary>Takes out the line of this index, from 0; the others keep theirs.</summary>
        public Totals Delete(int index)
        {
            return register.RunForTotals("velnoext_delete_sale_item",
                                         (wait, totals) =>
                                             Velnoext.velnoext_delete_sale_item(wait, index, totals));
        }

        /// <summary>Adds a medical contribution.</summary>
        /// <param name="person">11 digits; "11111111111" stands for anybody</param>
        public void AddMedical(decimal amount, string person)
        {
            if (person.Length != IdBytes || !person.All(letter => letter >= '0' && letter <= '9'))
                throw new ArgumentException("accepted are 11 digits", "person");
            long kurus = Text.Kurus(amount, "amount");
            ulong number = ulong.Parse(person, CultureInfo.InvariantCulture);
            register.Run("velnoext_add_medical_contribution",
                         wait => Velnoext.velnoext_add_medical_contribution(wait, kurus, number));
        }

        /// <summary>How it stands; an error of keys before is told here.</summary>
        public Totals State() { return State(out _); }

        /// <param name="receipt">of the receipt of this sale, for Register.ReceiptTotals()</param>
        public Totals State(out Reference receipt)
        {
            int first;
            VelnoReceiptRef reference;
            int* firstAt = &first;
            VelnoReceiptRef* at = &reference;
            Totals told = register.RunForTotals("velnoext_sale_state",
                                                (wait, totals) =>
                                                    Velnoext.velnoext_sale_state(wait, firstAt, totals, at));
            receipt = new Reference(at->first, at->second);
            return told;
        }

        /// <summary>The banks of its card payments.</summary>
        public int[] Acquirers()
        {
            return register.Numbers("velnoext_acquirers_of_sale", Velnoext.velnoext_acquirers_of_sale);
        }

        /// <summary>
        /// Pays an amount in cash, or by card. What the register does not take is not in the totals.
        /// </summary>
        public Totals Pay(decimal amount, bool card = false)
        {
            long kurus = Text.Kurus(amount, "amount");
            register.Run("velnoext_add_payment", wait => Velnoext.velnoext_add_payment(card ? 1 : 0, kurus));
            return State();
        }

        /// <summary>
        /// Ends it; what is left is paid in cash, or by card. Look at the register's state behind it.
        /// </summary>
        public void End(bool card = false)
        {
            isOver = true;
            register.Run("velnoext_end_sale", wait => Velnoext.velnoext_end_sale(card ? 1 : 0));
        }

        /// <summary>
        /// Ends it with an invoice; what is left is paid in cash, or by card. Look at the register's state
        /// behind it.
        /// </summary>
        /// <param name="person">an identity number of 11 digits; or</param>
        /// <param name="company">a tax number of 10</param>
        /// <param name="reference">with a paper invoice the form's number, 6 to 16 characters</param>
        /// <param name="deliveryNote">the invoice takes its place</param>
        public void EndWithInvoice(VelnoInvoiceType kind, string person = "", string company = "",
                                   string reference = "", bool card = false, bool deliveryNote = false)
        {
            if ((person == "") == (company == ""))
                throw new ArgumentException("an invoice has a person or a company", "person");
            var invoice = new VelnoInvoice {
                invoiceType = (uint)kind,
                idKind = (uint)(person == "" ? VelnoIdKind.Company : VelnoIdKind.Person),
                mode = (int)(card ? VelnoInvoiceMode.RestByCard : VelnoInvoiceMode.RestInCash),
                flag = deliveryNote ? 1 : 0,
            };
            Text.Into(invoice.idNumber, IdBytes, person + company, "person or company");
            Text.Into(invoice.reference, ReferenceBytes, reference, "reference");
            VelnoInvoice* at = &invoice;
            isOver = true;
            register.Run("velnoext_end_sale_with_invoice",
                         wait => Velnoext.velnoext_end_sale_with_invoice(at));
        }

        public void Cancel()
        {
            isOver = true;
            register.Run("velnoext_cancel_sale", Velnoext.velnoext_cancel_sale);
        }

        /// <summary>
        /// Cancels it unless its end was asked for; over a new connection behind a lost answer.
        /// </summary>
        public void Dispose()
        {
            if (isOver)
                return;
            try
            {
                Cancel();
            }
            catch (RegisterException problem) when (problem.Result == VelnoResult.ConnectionFailed
                                                    || problem.Result == VelnoResult.NotReady)
            {
                register.Connect();
                Cancel();
            }
        }
    }
}
