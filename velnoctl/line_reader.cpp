// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/line_reader.h"

#include "velnoctl/wait_for_input.h"

#include <cerrno>
#include <unistd.h>

namespace VelnoCtl {

namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF"); // some editors begin UTF-8 with it

} // namespace

LineReader::LineReader(int input, int stop)
    : m_input(input)
    , m_stop(stop)
{
}

bool LineReader::takeLine(QByteArray *line)
{
    qsizetype end = m_buffer.indexOf('\n');
    if (end < 0 && m_atEnd && !m_buffer.isEmpty())
        end = m_buffer.size(); // the last line may lack its end
    if (end < 0)
        return false;
    *line = m_buffer.first(end);
    m_buffer.remove(0, end + 1);
    if (m_lineNumber == 1 && line->startsWith(byteOrderMark))
        line->remove(0, byteOrderMark.size());
    if (line->endsWith('\r'))
        line->chop(1);
    return true;
}

LineReader::Outcome LineReader::next(QByteArray *line)
{
    ++m_lineNumber;
    for (;;) {
        if (takeLine(line))
            return line->size() <= longestLine ? Line : TooLong;
        if (m_atEnd)
            return End;
        if (m_buffer.size() > longestLine)
            return TooLong;
        if (waitForInput(m_input, m_stop) == Waited::Stop)
            return Interrupted;
        char bytes[longestLine];
        const ssize_t count = ::read(m_input, bytes, sizeof bytes);
        if (count < 0 && errno != EINTR)
            return Unreadable;
        if (count == 0)
            m_atEnd = true;
        m_buffer.append(bytes, qMax(count, ssize_t(0)));
    }
}

} // namespace VelnoCtl
