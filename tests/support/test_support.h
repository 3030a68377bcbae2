// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <chrono>
#include <iostream>
#include <sstream>

/** What the test programs share. */
namespace TestSupport {

/** Bytes from hexadecimal digits; spaces are ignored. */
inline QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

/** A TCP port that nobody listens on at this moment, and that no other test program is given. */
quint16 freePort();

/** For a port that is built into a program: a connection that had it as its own keeps it for a minute behind
 * its end. */
constexpr std::chrono::minutes portIsFreeAgain{2};

/** Collects what the engine logs on standard output while it lives. */
class LogCapture
{
public:
    LogCapture()
        : m_before(std::cout.rdbuf(m_text.rdbuf()))
        , m_flags(std::cout.flags())
    {
    }
    ~LogCapture()
    {
        std::cout.rdbuf(m_before);
        std::cout.flags(m_flags);
    }
    Q_DISABLE_COPY_MOVE(LogCapture)

    QByteArray text() const { return QByteArray::fromStdString(m_text.str()); }

private:
    std::ostringstream m_text;
    std::streambuf *m_before;
    std::ios_base::fmtflags m_flags;
};

} // namespace TestSupport
