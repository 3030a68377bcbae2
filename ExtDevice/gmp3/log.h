// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ostream>
#include <sstream>

/** Where the protocol engine says in single lines what went wrong: standard output, or a receiver. */
namespace Velno::GMP {

/** Takes one line, without its line feed. The text lives for the call only. */
using LogReceiver = void (*)(const char *text, void *context);

/**
 * Sends the lines that follow to the receiver; null: to standard output, as at the start. No lock: while no
 * conversation is under way.
 */
void setLogReceiver(LogReceiver receiver, void *context);

/**
 * One line: what is streamed into it goes out when it ends, and is flushed.
 *
 * Standard output is used as the stream that it is, so a change of its number format lasts: what reads these
 * logs is used to that. A receiver's line begins with the usual format.
 */
class LogLine
{
public:
    LogLine();
    ~LogLine();
    LogLine(const LogLine &) = delete;
    LogLine &operator=(const LogLine &) = delete;

    template <typename Value>
    LogLine &operator<<(const Value &value)
    {
        m_stream << value;
        return *this;
    }
    /** For std::hex and its like. */
    LogLine &operator<<(std::ios_base &(*manipulator)(std::ios_base &))
    {
        m_stream << manipulator;
        return *this;
    }

private:
    std::ostringstream m_text; ///< of a line for the receiver
    std::ostream &m_stream;
};

} // namespace Velno::GMP
