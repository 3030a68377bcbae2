// SPDX-License-Identifier: Apache-2.0
using System;
using Velno.Native;

namespace Velno
{
    /// <summary>Two numbers by which the register knows a receipt; 0 and 0: none.</summary>
    public struct Reference
    {
        public Reference(int z, int number)
        {
            Z = z;
            Number = number;
        }

        public int Z { get; }
        public int Number { get; }

        public override string ToString() => Z + "/" + Number;
    }

    /// <summary>What the register has added up, in lira.</summary>
    public class Totals
    {
        internal unsafe Totals(VelnoEcrSaleTotals totals)
        {
            ToPay = Text.Lira(totals.values[(int)VelnoTotal.ToPay]);
            Tax = Text.Lira(totals.values[(int)VelnoTotal.Tax]);
            Cash = Text.Lira(totals.values[(int)VelnoTotal.Cash]);
            Card = Text.Lira(totals.values[(int)VelnoTotal.Card]);
            Change = Text.Lira(totals.values[(int)VelnoTotal.Change]);
            Lines = totals.number;
        }

        public decimal ToPay { get; }
        public decimal Tax { get; }
        public decimal Cash { get; }
        public decimal Card { get; }
        public decimal Change { get; }
        public int Lines { get; }
    }

    /// <summary>An order as it is on record. Having one does not mean "sold": State tells.</summary>
    public class Outcome
    {
        private VelnoTillOutcome told;

        internal Outcome(string key, VelnoTillOutcome told)
        {
            Key = key;
            this.told = told;
        }

        public string Key { get; }
        public VelnoTillKind Kind => (VelnoTillKind)told.kind;
        public VelnoTillState State => (VelnoTillState)told.state;
        public VelnoTillQuestion Question => (VelnoTillQuestion)told.question;
        public VelnoTillAnswer Answer => (VelnoTillAnswer)told.answer;
        public VelnoTillPaper Paper => (VelnoTillPaper)told.paper;
        public bool SlipUnsure => told.slipUnsure != 0;

        /// <summary>Behind refused and waiting.</summary>
        public VelnoResult Code => (VelnoResult)told.code;
        public VelnoCause Cause => (VelnoCause)told.cause;
        public Reference Reference => new Reference(told.reference.first, told.reference.second);

        /// <summary>Of a closed receipt.</summary>
        public Totals Totals => new Totals(told.totals);

        /// <summary>Cash that was taken on cancelled receipts, and stands on none.</summary>
        public decimal GiveBack => Text.Lira(told.giveBack);
        public DateTime AcceptedAt => Time(told.acceptedAt);
        public DateTime ChangedAt => Time(told.changedAt);
        public bool IsClosed => State == VelnoTillState.Closed;

        /// <summary>What a cashier is told, in "en" or "tr".</summary>
        public unsafe string Message(string language = "en")
        {
            IntPtr text;
            fixed(VelnoTillOutcome* outcome = &told) TillException.Check(
                Velnotill.velnotill_message(outcome, Text.Bytes(language, "language"), &text));
            return Taken(text);
        }

        /// <summary>A text that was handed out, which is given back.</summary>
        internal static string Taken(IntPtr text)
        {
            string words = Text.Of(text);
            Velnotill.velnotill_free_text(text);
            return words;
        }

        private static DateTime Time(long milliseconds)
        {
            return new DateTime(1970, 1, 1, 0, 0, 0, DateTimeKind.Utc).AddMilliseconds(milliseconds);
        }
    }
}
