// SPDX-License-Identifier: Apache-2.0
using System;
using Velno.Native;

namespace Velno
{
    /// <summary>A line of a sale. With price 0 the name is a remark on the receipt.</summary>
    public sealed unsafe class Line
    {
        private const int NameBytes = 52;

        public Line(string name, decimal price)
        {
            Name = name;
            Price = price;
        }

        public string Name { get; }

        /// <summary>Of one unit.</summary>
        public decimal Price { get; }

        public decimal Quantity { get; set; } = 1;

        /// <summary>1 to 8: it decides the tax.</summary>
        public int Section { get; set; } = 1;

        public VelnoItemType Unit { get; set; } = VelnoItemType.Piece;

        /// <summary>-10: ten percent off.</summary>
        public int Percentage { get; set; }

        /// <summary>Counts while Percentage is 0.</summary>
        public decimal Discount { get; set; }

        internal VelnoSaleItem InC()
        {
            if (Section < 1 || Section > 8)
                throw new ArgumentException(Section + "; accepted: 1 to 8", "section");
            var item = new VelnoSaleItem {
                price = Text.Kurus(Price, "price"),
                quantity = Text.Thousandths(Quantity, "quantity"),
                percentage = Percentage,
                amount = Text.Kurus(Discount, "discount"),
                section = (sbyte)Section,
                type = (int)Unit,
            };
            Text.Into(item.name, NameBytes, Name, "name");
            return item;
        }
    }
}
