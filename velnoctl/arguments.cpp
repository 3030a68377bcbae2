#include "velnoctl/arguments.h"

#include "velnoctl/commands.h"

#include <algorithm>
#include <array>

namespace VelnoCtl {

namespace {

bool isNumber(const QString &text)
{
    return numberFrom(text).has_value();
}

bool isAnything(const QString &text)
{
    return !text.isEmpty();
}

bool isCommand(const QString &text)
{
    return commandNamed(text) != nullptr;
}

constexpr std::array kinds{
    ArgumentKind{"CODE", "a result code, for example 8", isNumber},
    ArgumentKind{"DETAIL", "an error detail, for example 0x402", isNumber},
    ArgumentKind{"FILE", "the path of a file, or - for standard input", isAnything},
    ArgumentKind{"COMMAND", "the name of a command", isCommand},
};

} // namespace

const ArgumentKind &argumentKind(const QString &name)
{
    const auto *const found =
        std::ranges::find(kinds, name, [](const ArgumentKind &kind) { return QLatin1StringView(kind.name); });
    if (found == kinds.end())
        qFatal("no such kind of argument: %s", qPrintable(name));
    return *found;
}

std::optional<int> numberFrom(const QString &text)
{
    const bool isHex = text.startsWith(QLatin1StringView("0x"), Qt::CaseInsensitive);
    bool isNumber = false;
    const int number = isHex ? text.sliced(2).toInt(&isNumber, 16) : text.toInt(&isNumber, 10);
    return isNumber ? std::optional(number) : std::nullopt;
}

} // namespace VelnoCtl
