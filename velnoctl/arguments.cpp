// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/arguments.h"

#include <algorithm>
#include <stdexcept>

namespace VelnoCtl {

QString Argument::usage() const
{
    return (key.isEmpty() ? QString() : key + u'=') + QLatin1StringView(kind->name);
}

Arguments::Arguments(const QList<Argument> &row)
{
    for (const Argument &argument : row)
        m_entries.emplace_back(argument.kind, std::any());
}

bool Arguments::read(const ArgumentKind &kind, const QString &text)
{
    std::any value = kind.read(text);
    if (!value.has_value())
        return false;
    std::ranges::find(m_entries, &kind, &Entry::first)->second = std::move(value);
    return true;
}

const std::any &Arguments::entry(const ArgumentKind &kind) const
{
    const auto found = std::ranges::find(m_entries, &kind, &Entry::first);
    if (found == m_entries.end())
        throw std::logic_error(std::string("the command's row has no ") + kind.name);
    return found->second;
}

const std::any &Arguments::given(const ArgumentKind &kind) const
{
    const std::any &value = entry(kind);
    if (!value.has_value())
        throw std::logic_error(std::string("the command was given no ") + kind.name);
    return value;
}

QList<Argument> argumentsOf(const char *row)
{
    QList<Argument> arguments;
    for (QString word : QString(QLatin1StringView(row)).split(u' ', Qt::SkipEmptyParts)) {
        const bool isOptional = word.startsWith(u'[');
        word.remove(u'[').remove(u']');
        const qsizetype equals = word.indexOf(u'=');
        arguments << Argument{word.left(qMax(equals, qsizetype(0))), kindNamed(word.sliced(equals + 1)),
                              isOptional};
    }
    return arguments;
}

} // namespace VelnoCtl
