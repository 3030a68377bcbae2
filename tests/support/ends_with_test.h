// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <csignal>
#include <functional>
#include <sys/prctl.h>
#include <unistd.h>

namespace TestSupport {

/**
 * For QProcess::setChildProcessModifier(): the program is killed when the thread that starts it ends, in
 * whatever way. One that outlived a test that crashed would keep the test's output open, and whoever reads
 * that would wait for its end.
 *
 * @param prepare  called as well, in the child before the program starts
 */
inline std::function<void()> endsWithTest(std::function<void()> prepare = {})
{
    return [test = getpid(), prepare = std::move(prepare)] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != test)
            _exit(1); // it has ended before it could be watched
        if (prepare)
            prepare();
    };
}

} // namespace TestSupport
