// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

namespace Velno::Receipts {

/** Writes JSON in UTF-8 from front to end, without spaces. Whoever calls sees to it that it is whole. Names
 * are ASCII that needs no escapes. */
class JsonText
{
public:
    void beginObject() { begin('{'); }
    void endObject() { m_bytes += '}'; }
    void beginList(const char *name);
    void endList() { m_bytes += ']'; }

    void name(const char *name); ///< of the value that comes next
    void text(const QString &text);
    void text(const char *name, const QString &text);
    void number(const char *name, qint64 number);
    void yes(const char *name);

    const QByteArray &bytes() const { return m_bytes; }

private:
    void begin(char bracket);
    void separate();

    QByteArray m_bytes;
};

} // namespace Velno::Receipts
