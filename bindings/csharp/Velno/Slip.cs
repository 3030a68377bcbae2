// SPDX-License-Identifier: Apache-2.0
using System;
using System.Collections.Generic;
using Velno.Native;

namespace Velno
{
    /// <summary>A slip of free text that is collected line by line, for Register.PrintSlip().</summary>
    public sealed unsafe class Slip
    {
        private readonly List<Action> lines = new List<Action>();

        /// <param name="text">of any length</param>
        /// <param name="size">0 to 5; what the styles look like the register defines</param>
        public void Add(string text, int size = 0, bool styleA = false, bool styleB = false)
        {
            if (size < 0 || size > 5)
                throw new ArgumentException(size + "; accepted: 0 to 5", "size");
            byte[] bytes = Printable(text, "text");
            VelnoTextStyle style = Style(size, styleA, styleB);
            Collect("velnoext_printer_add_text", () =>
                                                 {
                                                     VelnoTextStyle used = style;
                                                     return Velnoext.velnoext_printer_add_text(bytes, &used);
                                                 });
        }

        /// <summary>A text at each end of a line.</summary>
        public void AddPair(string left, string right, bool styleA = false, bool styleB = false)
        {
            byte[] first = Printable(left, "left");
            byte[] second = Printable(right, "right");
            VelnoTextStyle style = Style(0, styleA, styleB);
            Collect("velnoext_printer_add_justified_text",
                    () =>
                    {
                        VelnoTextStyle used = style;
                        return Velnoext.velnoext_printer_add_justified_text(first, second, &used);
                    });
        }

        /// <param name="count">1 to 20 line feeds</param>
        public void Feed(int count = 1)
        {
            if (count < 1 || count > 20)
                throw new ArgumentException(count + "; accepted: 1 to 20", "count");
            Collect("velnoext_printer_add_line_feed",
                    () => Velnoext.velnoext_printer_add_line_feed((uint)count));
        }

        /// <summary>Hands it to the library, in whose one slip it must not meet others.</summary>
        internal void Send()
        {
            Register.Check("velnoext_printer_set_encoding",
                           Velnoext.velnoext_printer_set_encoding(Text.Bytes("UTF-8", "encoding")));
            foreach (Action line in lines)
                line();
        }

        private void Collect(string function, Func<int> line)
        {
            lines.Add(() => Register.Check(function, line()));
        }

        private static byte[] Printable(string text, string what)
        {
            if (text == "")
                throw new ArgumentException("a text of a slip must not be empty", what);
            return Text.Bytes(text, what);
        }

        private static VelnoTextStyle Style(int size, bool styleA, bool styleB)
        {
            return new VelnoTextStyle { size = size, styleA = (byte)(styleA ? 1 : 0),
                                        styleB = (byte)(styleB ? 1 : 0) };
        }
    }
}
