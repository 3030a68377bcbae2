// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QPair>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <streambuf>

namespace Simulator {

/** Foreign bytes as one word: what is no visible ASCII character, and the backslash, as \\x and two digits.
 */
QString printable(const QByteArray &bytes);

/**
 * Writes events on standard output, one a line, flushed: words for people, or one JSON object each.
 * docs/simulated-register.md and docs/relay.md describe them.
 */
class EventWriter
{
public:
    using Field = QPair<const char *, QVariant>; ///< a text, a number or a list of texts

    explicit EventWriter(bool json)
        : m_json(json)
    {
    }
    void write(const char *event, std::initializer_list<Field> fields = {}) const;

private:
    bool m_json;
};

/**
 * Moves what is written to std::cout to standard error while it lives: the protocol engine logs there, and
 * standard output belongs to the events.
 */
class LogsToStandardError
{
public:
    LogsToStandardError();
    ~LogsToStandardError();
    Q_DISABLE_COPY_MOVE(LogsToStandardError)

private:
    std::streambuf *m_before;
};

} // namespace Simulator
