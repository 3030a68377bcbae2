#pragma once

namespace VelnoCtl {

/** What velnoctl ends with besides 0 and the library's result codes 1 to 13. */
enum ExitStatus {
    WrongUsage = 64,  ///< nothing was sent because of it
    OutputLost = 74,  ///< a result could not be written
    Interrupted = 130 ///< Ctrl-C or SIGTERM
};

} // namespace VelnoCtl
