// SPDX-License-Identifier: Apache-2.0
using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Velno
{
    /// <summary>Texts and amounts as the libraries take them: nothing is cut, nothing is rounded.</summary>
    internal static class Text
    {
        private static readonly UTF8Encoding Utf8 = new UTF8Encoding(false, true); // refuses half a letter

        /// <summary>UTF-8 with a zero behind it.</summary>
        public static byte[] Bytes(string text, string what)
        {
            if (text == null)
                throw new ArgumentNullException(what);
            if (text.IndexOf('\0') >= 0)
                throw new ArgumentException("a zero character would end it", what);
            byte[] bytes = new byte[Utf8.GetByteCount(text) + 1];
            Utf8.GetBytes(text, 0, text.Length, bytes, 0);
            return bytes;
        }

        /// <summary>Into a field of so many bytes, which is zero.</summary>
        public static unsafe void Into(byte* field, int room, string text, string what)
        {
            byte[] bytes = Bytes(text, what);
            if (bytes.Length - 1 > room)
                throw new ArgumentException(
                    (bytes.Length - 1) + " bytes in UTF-8; at most " + room + " fit: " + text, what);
            Marshal.Copy(bytes, 0, (IntPtr)field, bytes.Length - 1);
        }

        /// <summary>A text that belongs to a library.</summary>
        public static string Of(IntPtr text)
        {
            if (text == IntPtr.Zero)
                return "";
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
                ++length;
            byte[] bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        /// <summary>Lira in kuruş.</summary>
        public static long Kurus(decimal lira, string what)
        {
            return Parts(lira, 100, 999999999999, what, "0.00 to 9999999999.99, up to two decimals");
        }

        /// <summary>Units in thousandths.</summary>
        public static int Thousandths(decimal quantity, string what)
        {
            return (int)Parts(quantity, 1000, int.MaxValue, what,
                              "0.001 to 2147483.647, up to three decimals");
        }

        private static long Parts(decimal value, int parts, long highest, string what, string accepted)
        {
            if (value < 0 || value > highest / (decimal)parts
                || value * parts != decimal.Truncate(value * parts))
                throw new ArgumentException(value + "; accepted: " + accepted, what);
            return (long)(value * parts);
        }

        public static decimal Lira(long kurus) { return kurus / 100m; }

        /// <summary>Address and port of "0.0.0.0:4100", "[::]:4100" or Till.Relay.</summary>
        public static byte[] Place(string listen, out ushort port)
        {
            port = 1;
            if (listen == Till.Relay)
                return Bytes(listen, "listen");
            int colon = listen.LastIndexOf(':');
            if (colon < 1 || !ushort.TryParse(listen.Substring(colon + 1), out port) || port == 0)
                throw new ArgumentException(
                    "\"" + listen + "\"; accepted: ADDRESS:PORT, as \"0.0.0.0:4100\", or Till.Relay",
                    "listen");
            return Bytes(listen.Substring(0, colon).Trim('[', ']'), "listen");
        }

        public static uint Milliseconds(TimeSpan time, string what)
        {
            if (time.TotalMilliseconds < 1 || time.TotalMilliseconds > 4e9)
                throw new ArgumentException(time + "; accepted: 1 ms to 46 days", what);
            return (uint)time.TotalMilliseconds;
        }
    }
}
