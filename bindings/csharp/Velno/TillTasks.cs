// SPDX-License-Identifier: Apache-2.0
using System.Threading;
using System.Threading.Tasks;
using Velno.Native;

namespace Velno
{
    public static class TillTasks
    {
        /// <summary>Sells a receipt on a thread of its own. A cancelled token interrupts it.</summary>
        public static async Task<Outcome> SellAsync(this Till till, Receipt receipt, string key,
                                                    CancellationToken cancel = default(CancellationToken))
        {
            Task<Outcome> selling = Task.Run(() => till.Sell(receipt, key), cancel);
            while (cancel.CanBeCanceled && !selling.IsCompleted)
            {
                await Task.WhenAny(selling, Task.Delay(50)).ConfigureAwait(false);
                if (cancel.IsCancellationRequested)
                    till.Interrupt(); // once is not enough: it touches a call that is under way only
            }
            try
            {
                return await selling.ConfigureAwait(false);
            }
            catch (TillException problem) when (problem.Result == VelnoTillResult.Interrupted)
            {
                cancel.ThrowIfCancellationRequested();
                throw;
            }
        }
    }
}
