// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/argument_kinds.h"

#include <QList>
#include <QString>

#include <utility>
#include <vector>

namespace VelnoCtl {

/** One argument of a command's row. */
struct Argument
{
    QString key; ///< typed as key=VALUE, in any order behind the others; empty: known by its place
    const ArgumentKind *kind;
    bool isOptional;

    /** As it is typed, NAME or key=NAME. */
    QString usage() const;
};

/** What a command is given: for each argument of its row its value, unless an optional one was left out. */
class Arguments
{
public:
    Arguments() = default;

    /** Nothing is given yet. @param row  no two arguments of one kind */
    explicit Arguments(const QList<Argument> &row);

    /** Reads what was typed for an argument of the row. @return false: it is not accepted, nothing changes */
    bool read(const ArgumentKind &kind, const QString &text);

    bool has(const ArgumentKind &kind) const { return entry(kind).has_value(); }

    /**
     * An argument's value. Where the row has no argument of this kind, or an optional one was left out, row
     * and function disagree: std::logic_error ends the program before it sells something for nothing.
     */
    template <typename Value>
    const Value &value(const KindOf<Value> &kind) const
    {
        return std::any_cast<const Value &>(given(kind));
    }

    /** The same of an optional argument; `usual` when it was left out. */
    template <typename Value>
    Value value(const KindOf<Value> &kind, const std::type_identity_t<Value> &usual) const
    {
        return has(kind) ? value(kind) : usual;
    }

    /** The same arguments again, as they stood behind each +. */
    const std::vector<Arguments> &repeated() const { return m_repeated; }
    Arguments &repeat(const QList<Argument> &row) { return m_repeated.emplace_back(row); }

private:
    using Entry = std::pair<const ArgumentKind *, std::any>;

    const std::any &entry(const ArgumentKind &kind) const;
    const std::any &given(const ArgumentKind &kind) const;

    std::vector<Entry> m_entries;
    std::vector<Arguments> m_repeated;
};

/** The arguments in the order of a command's row, each KIND or key=KIND, in [brackets] when it is optional.
 */
QList<Argument> argumentsOf(const char *row);

} // namespace VelnoCtl
