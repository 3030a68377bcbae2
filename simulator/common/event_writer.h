// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

#include <streambuf>

namespace Simulator {

/** Foreign bytes as one word: what is no visible ASCII character, and the backslash, as \\x and two digits.
 */
QString printable(const QByteArray &bytes);

/** What an event tells: names, each with a text, a number or a list of texts. */
using EventFields = QList<QPair<const char *, QVariant>>;

/**
 * Writes events on standard output, one a line, flushed: words for people, or one JSON object each, with the
 * time. docs/simulated-register.md and docs/relay.md describe them.
 */
class EventWriter
{
public:
    /** @param serial  of the one of several registers whose events these are, told in each; empty: not told
     */
    explicit EventWriter(bool json, const QByteArray &serial = {})
        : m_json(json)
        , m_serial(serial)
    {
    }
    void write(const char *event, EventFields fields = {}) const;

private:
    bool m_json;
    QByteArray m_serial;
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
