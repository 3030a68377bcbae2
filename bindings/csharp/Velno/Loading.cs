// SPDX-License-Identifier: Apache-2.0
using System;
using System.IO;
using System.Runtime.InteropServices;

namespace Velno.Native
{
    /// <summary>Finds the shared libraries. Till and Register do so by themselves.</summary>
    public static class Loading
    {
        private const int Now = 2;

        [DllImport("libdl.so.2", EntryPoint = "dlopen")]
        private static extern IntPtr Open(byte[] path, int flags);

        [DllImport("libdl.so.2", EntryPoint = "dlerror")]
        private static extern IntPtr Problem();

        /// <summary>
        /// From the folder that VELNO_LIBRARY names and nowhere else, or where the loader looks; the runtime
        /// then finds them by their names. Must come before the first call of Velnoext or Velnotill. Once is
        /// enough.
        /// </summary>
        public static void Load()
        {
            OpenOrThrow("libvelnoext.so.0"); // the other one needs it
            OpenOrThrow("libvelnotill.so.0");
        }

        private static void OpenOrThrow(string name)
        {
            string folder = Environment.GetEnvironmentVariable("VELNO_LIBRARY");
            string path = string.IsNullOrEmpty(folder) ? name : Path.Combine(folder, name);
            if (Open(Text.Bytes(path, "VELNO_LIBRARY"), Now) == IntPtr.Zero)
                throw new DllNotFoundException(
                    path + " cannot be loaded: " + Text.Of(Problem())
                    + ". Install the package libvelnoext0, or set "
                    + "VELNO_LIBRARY to the folder that holds libvelnoext.so.0 and libvelnotill.so.0.");
        }
    }
}
