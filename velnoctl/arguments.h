#pragma once

#include <QString>

#include <optional>

namespace VelnoCtl {

/** A kind of argument: its name in a command's usage, and what is accepted. */
struct ArgumentKind
{
    const char *name;
    const char *accepted;
    bool (*matches)(const QString &text);
};

/** The kind of this name; every name in the table of commands has one. */
const ArgumentKind &argumentKind(const QString &name);

/** A whole number in decimal or, behind 0x, in hexadecimal digits. */
std::optional<int> numberFrom(const QString &text);

} // namespace VelnoCtl
