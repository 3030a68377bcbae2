// SPDX-License-Identifier: Apache-2.0
using System;
using Velno.Native;

namespace Velno
{
    /// <summary>An open sale.</summary>
    public sealed unsafe class Sale : IDisposable
    {
        private const int NameBytes = 52;
        private readonly Register register;
        private bool isOver;

        internal Sale(Register register) { this.register = register; }

        /// <summary>Adds one line; the section decides the tax.</summary>
        public Totals Add(string name, decimal price, decimal quantity = 1, int section = 1,
                          VelnoItemType unit = VelnoItemType.Piece, int percentage = 0, decimal discount = 0)
        {
            if (section < 1 || section > 8)
                throw new ArgumentException(section + "; accepted: 1 to 8", "section");
            var item = new VelnoSaleItem {
                price = Text.Kurus(price, "price"),
                quantity = Text.Thousandths(quantity, "quantity"),
                percentage = percentage,
                amount = Text.Kurus(discount, "discount"),
                section = (sbyte)section,
                type = (int)unit,
            };
            Text.Into(item.name, NameBytes, name, "name");
            VelnoSaleItem* at = &item;
            return register.RunForTotals("velnoext_add_sale_item",
                                         (wait, totals) => Velnoext.velnoext_add_sale_item(wait, at, totals));
        }

        public Totals DeleteLast()
        {
            return register.RunForTotals("velnoext_delete_last_sale_item",
                                         Velnoext.velnoext_delete_last_sale_item);
        }

        /// <summary>How it stands; an error of keys before is told here.</summary>
        public Totals State()
        {
            int first;
            VelnoReceiptRef reference;
            int* firstAt = &first;
            VelnoReceiptRef* at = &reference;
            return register.RunForTotals("velnoext_sale_state",
                                         (wait, totals) =>
                                             Velnoext.velnoext_sale_state(wait, firstAt, totals, at));
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
