#pragma once

#include <QList>
#include <QString>

namespace VelnoCtl {

struct Command;

/** A kind of argument: its name in a command's usage, and what is accepted. */
struct ArgumentKind
{
    const char *name;
    const char *accepted;
    bool (*matches)(const QString &text);
};

/** One argument of a command. */
struct Argument
{
    QString key; ///< typed as key=VALUE, in any order behind the others; empty: known by its place
    const ArgumentKind *kind;
    bool isOptional;

    /** As it is typed, NAME or key=NAME. */
    QString usage() const;
};

/** The arguments in the order of the command's row; every kind named there exists. */
QList<Argument> argumentsOf(const Command &command);

} // namespace VelnoCtl
