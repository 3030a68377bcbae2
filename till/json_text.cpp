// SPDX-License-Identifier: Apache-2.0

#include "till/json_text.h"

#include <algorithm>

namespace Velno::Receipts {

namespace {

constexpr char firstPrintable = ' ';

/** What stands for a character that must not stand in a text itself. */
QByteArray escaped(char character)
{
    constexpr char named[] = "\b\f\n\r\t\"\\";
    constexpr char names[] = "bfnrt\"\\";
    for (size_t i = 0; i + 1 < sizeof named; ++i)
        if (character == named[i])
            return QByteArray("\\") + names[i];
    return "\\u" + QByteArray::number(character, 16).rightJustified(4, '0');
}

bool needsEscape(char character)
{
    const bool isControl = static_cast<unsigned char>(character) < firstPrintable;
    return isControl || character == '"' || character == '\\';
}

} // namespace

/** Puts a comma behind a value that stands in front. */
void JsonText::separate()
{
    const char last = m_bytes.isEmpty() ? '{' : m_bytes.back();
    if (last != '{' && last != '[' && last != ':')
        m_bytes += ',';
}

void JsonText::begin(char bracket)
{
    separate();
    m_bytes += bracket;
}

void JsonText::beginList(const char *name)
{
    this->name(name);
    m_bytes += '[';
}

void JsonText::name(const char *name)
{
    separate();
    m_bytes.append('"').append(name).append("\":");
}

void JsonText::text(const QString &text)
{
    separate();
    m_bytes += '"';
    const QByteArray characters = text.toUtf8();
    for (auto at = characters.cbegin(); at != characters.cend();) {
        const auto end = std::find_if(at, characters.cend(), needsEscape);
        m_bytes.append(at, end - at);
        at = end;
        if (at != characters.cend())
            m_bytes += escaped(*at++);
    }
    m_bytes += '"';
}

void JsonText::text(const char *name, const QString &text)
{
    this->name(name);
    this->text(text);
}

void JsonText::number(const char *name, qint64 number)
{
    this->name(name);
    m_bytes += QByteArray::number(number);
}

void JsonText::yes(const char *name)
{
    this->name(name);
    m_bytes += "true";
}

} // namespace Velno::Receipts
