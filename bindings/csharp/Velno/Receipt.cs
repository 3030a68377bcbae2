// SPDX-License-Identifier: Apache-2.0
using System.Collections.Generic;
using System.Globalization;
using System.Text;

namespace Velno
{
    /// <summary>A line of a receipt. With price 0 the name is a remark.</summary>
    public class Item
    {
        public Item(string name, decimal price)
        {
            Name = name;
            Price = price;
        }

        public string Name { get; set; }
        public decimal Price { get; set; }
        public decimal Quantity { get; set; } = 1;

        /// <summary>"piece", "kilogram" and the others of docs/receipt-json.md.</summary>
        public string Unit { get; set; } = "piece";

        /// <summary>1 to 8; decides the tax, and is needed with a price.</summary>
        public int Section { get; set; }

        /// <summary>Below 0 a discount, above a surcharge.</summary>
        public int Percentage { get; set; }
        public decimal Discount { get; set; }
    }

    public class Payment
    {
        private readonly string kind;
        private readonly decimal? amount;

        private Payment(string kind, decimal? amount)
        {
            this.kind = kind;
            this.amount = amount;
        }

        /// <summary>An amount; null: what is left to pay.</summary>
        public static Payment Cash(decimal? amount = null) => new Payment("cash", amount);

        /// <summary>An amount; null: what is left to pay.</summary>
        public static Payment Card(decimal? amount = null) => new Payment("card", amount);

        internal string ToJson() => "{\"" + kind + "\":"
                                    + (amount.HasValue ? Json.Number(amount.Value) : "\"rest\"") + "}";
    }

    /// <summary>
    /// A receipt as its fields are most often used. Whoever needs a medical contribution, an invoice or a
    /// slip hands over JSON, see docs/receipt-json.md. What is wrong with it is told by the library, all at
    /// once.
    /// </summary>
    public class Receipt
    {
        public List<Item> Items { get; } = new List<Item>();
        public List<Payment> Payments { get; } = new List<Payment>();

        /// <summary>What the register has to come to; null: not stated.</summary>
        public decimal? Total { get; set; }

        /// <summary>
        /// Cash may be entered again without asking, when a power cut has cancelled the receipt.
        /// </summary>
        public bool ReenterCash { get; set; }

        public string ToJson()
        {
            var text = new StringBuilder("{\"items\":[");
            text.Append(string.Join(",", Items.ConvertAll(Line)));
            text.Append("],\"payments\":[");
            text.Append(string.Join(",", Payments.ConvertAll(one => one.ToJson())));
            text.Append("]");
            if (Total.HasValue)
                text.Append(",\"total\":" + Json.Number(Total.Value));
            if (ReenterCash)
                text.Append(",\"reenterCash\":true");
            return text.Append("}").ToString();
        }

        private static string Line(Item item)
        {
            var fields = new List<string> { Json.Field("name", Json.Quoted(item.Name)),
                                            Json.Field("price", Json.Number(item.Price)) };
            if (item.Quantity != 1)
                fields.Add(Json.Field("quantity", Json.Number(item.Quantity)));
            if (item.Unit != "piece")
                fields.Add(Json.Field("unit", Json.Quoted(item.Unit)));
            if (item.Section != 0)
                fields.Add(Json.Field("section", item.Section.ToString(CultureInfo.InvariantCulture)));
            if (item.Percentage != 0)
                fields.Add(Json.Field("percentage", item.Percentage.ToString(CultureInfo.InvariantCulture)));
            if (item.Discount != 0)
                fields.Add(Json.Field("discount", Json.Number(item.Discount)));
            return "{" + string.Join(",", fields) + "}";
        }
    }

    internal static class Json
    {
        /// <summary>A decimal keeps zeros at its end: 12.500m is written as 12.5.</summary>
        public static string Number(decimal value)
        {
            return Quoted(value.ToString("0.############################", CultureInfo.InvariantCulture));
        }

        public static string Field(string name, string value) { return "\"" + name + "\":" + value; }

        public static string Quoted(string value)
        {
            var text = new StringBuilder("\"");
            foreach (char letter in value ?? "")
            {
                if (letter == '"' || letter == '\\')
                    text.Append('\\').Append(letter);
                else if (letter < ' ')
                    text.Append("\\u").Append(((int)letter).ToString("x4", CultureInfo.InvariantCulture));
                else
                    text.Append(letter);
            }
            return text.Append('"').ToString();
        }
    }
}
