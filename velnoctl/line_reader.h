// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace VelnoCtl {

/** Lines of a file, a pipe or a terminal, as they come. The descriptor stays the caller's. */
class LineReader
{
public:
    static constexpr qsizetype longestLine = 4096; ///< bytes

    enum Outcome { Line, End, Interrupted, TooLong, Unreadable };

    /** @param stop  a descriptor that, once readable, ends the wait for input; -1 for none */
    explicit LineReader(int input, int stop = -1);

    /** The next line without its end, the first one also without UTF-8's byte order mark; only for Line. */
    Outcome next(QByteArray *line);

    int lineNumber() const { return m_lineNumber; } ///< of the line that next() spoke of, from 1

private:
    bool takeLine(QByteArray *line);

    int m_input;
    int m_stop;
    int m_lineNumber = 0;
    bool m_atEnd = false;
    QByteArray m_buffer;
};

} // namespace VelnoCtl
