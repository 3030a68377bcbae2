// SPDX-License-Identifier: Apache-2.0
using System;
using Velno.Native;

namespace Velno
{
    /// <summary>Whatever the libraries refuse or fail at.</summary>
    public abstract class VelnoException : Exception
    {
        protected VelnoException(string message) : base(message) {}
    }

    /// <summary>
    /// A function of velnoext.h has failed. Causes that have no name are numbers of the register's own.
    /// </summary>
    public class RegisterException : VelnoException
    {
        internal RegisterException(string function, int result, int cause, int detail)
            : base(Words(function, result, cause, detail))
        {
            Result = (VelnoResult)result;
            Cause = (VelnoCause)cause;
            Detail = (VelnoDetail)detail;
        }

        public VelnoResult Result { get; }
        public VelnoCause Cause { get; }
        public VelnoDetail Detail { get; }

        /// <summary>Three lines for people: what, cause and cure.</summary>
        public string CauseText => Text.Of(Velnoext.velnoext_cause_text((int)Cause));

        /// <summary>For logs: lower-case words joined by hyphens.</summary>
        public string CauseName => Text.Of(Velnoext.velnoext_cause_name((int)Cause));

        private static string Words(string function, int result, int cause, int detail)
        {
            string words = function + ": " + FirstLine(Velnoext.velnoext_result_text(result)) + " ("
                           + Text.Of(Velnoext.velnoext_result_name(result)) + ", " + result + ")";
            if (cause != 0)
                words += " " + FirstLine(Velnoext.velnoext_cause_text(cause)) + " ("
                         + Text.Of(Velnoext.velnoext_cause_name(cause)) + ", " + cause + ")";
            return detail == 0 ? words : words + " " + Text.Of(Velnoext.velnoext_detail_text(detail));
        }

        private static string FirstLine(IntPtr text) { return Text.Of(text).Split('\n')[0]; }
    }

    /// <summary>
    /// A function of velnotill.h has failed; the message tells more, faults have a line each.
    /// </summary>
    public class TillException : VelnoException
    {
        internal TillException(int result, string problem) : base(problem)
        {
            Result = (VelnoTillResult)result;
        }

        public VelnoTillResult Result { get; }

        /// <summary>Throws what a function has returned; on the thread that has called it.</summary>
        internal static void Check(int result)
        {
            if (result != 0)
                throw new TillException(result, Text.Of(Velnotill.velnotill_problem()));
        }
    }
}
