#include "velnoctl/arguments.h"

#include "velnoctl/commands.h"
#include "velnoctl/numbers.h"
#include "velnoext.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

template <typename Number>
bool isNumber(const QString &text)
{
    return numberFrom<Number>(text).has_value();
}

template <auto Parse>
bool parses(const QString &text)
{
    return Parse(text).has_value();
}

bool isAnything(const QString &text)
{
    return !text.isEmpty();
}

/** Whether a text fits into a field of a structure whole; UTF-8 is never cut in the middle of a letter. */
template <qsizetype Longest>
bool fits(const QString &text)
{
    return text.toUtf8().size() <= Longest;
}

bool isCommand(const QString &text)
{
    return commandNamed(text) != nullptr;
}

bool isMeans(const QString &text)
{
    return text == "cash"_L1 || text == "card"_L1;
}

bool isLine(const QString &text)
{
    return text == "last"_L1 || isNumber<int>(text);
}

bool isStyle(const QString &text)
{
    return text == "a"_L1 || text == "b"_L1 || text == "ab"_L1;
}

bool isFlag(const QString &text)
{
    return text == "yes"_L1 || text == "no"_L1;
}

constexpr qsizetype longestName = sizeof(VelnoSaleItem::name) - 1;
constexpr qsizetype longestIdNumber = sizeof(VelnoInvoice::idNumber);
constexpr qsizetype longestReference = sizeof(VelnoInvoice::reference);

// Refused is what velnoext.h cannot take; what it takes and finds wrong ends with its code 4.
constexpr std::array kinds{
    ArgumentKind{"CODE", "a result code, for example 8", isNumber<int>},
    ArgumentKind{"DETAIL", "an error detail, for example 0x402", isNumber<int>},
    ArgumentKind{"FILE", "the path of a file, or - for standard input", isAnything},
    ArgumentKind{"COMMAND", "the name of a command", isCommand},
    ArgumentKind{"PRICE", "lira for one unit, up to two decimals: 12.50 or 12,50", parses<kurusFrom>},
    ArgumentKind{"AMOUNT", "lira, up to two decimals: 12.50 or 12,50", parses<kurusFrom>},
    ArgumentKind{"QUANTITY", "up to three decimals: 1.250 or 1,250; at most 2147483.647",
                 parses<thousandthsFrom>},
    ArgumentKind{"NAME", "up to 52 bytes of UTF-8, in quotes when there are blanks", fits<longestName>},
    ArgumentKind{"SECTION", "a whole number, -128 to 127; a register's sections are 1 to 8",
                 isNumber<signed char>},
    ArgumentKind{"PERCENT", "a whole number: -10 for a discount, 10 for a surcharge", isNumber<int>},
    ArgumentKind{"TYPE", "a whole number; a register knows 0 to 7", isNumber<int>},
    ArgumentKind{"LINE", "last, or a whole number: the line's index as the register counts", isLine},
    ArgumentKind{"IDENTITY", "a whole number; identity numbers have 11 digits, 11111111111 is anybody's",
                 isNumber<quint64>},
    ArgumentKind{"MEANS", "cash (the key F10) or card (the key F11)", isMeans},
    ArgumentKind{
        "INVOICE",
        "a whole number from 0 on; a register knows 0 to 2. Not given: 0 with a reference, otherwise 2",
        isNumber<quint32>},
    ArgumentKind{"KIND", "a whole number from 0 on; 0 for a person's number, 1 for a tax number",
                 isNumber<quint32>},
    ArgumentKind{"ID", "up to 12 bytes; 11 digits of a person, 10 of a tax number", fits<longestIdNumber>},
    ArgumentKind{"REFERENCE", "6 to 16 characters with type 0; up to 17 with another",
                 fits<longestReference>},
    ArgumentKind{"MODE", "a whole number; a register knows 1 and 2", isNumber<int>},
    ArgumentKind{"FLAG", "yes or no; the register defines what it means", isFlag},
    ArgumentKind{"RECEIPT", "two whole numbers with a slash between, as sale-state told them: 12/1",
                 parses<pairFrom>},
    ArgumentKind{"ENCODING", "the name of an encoding, for example UTF-8 or windows-1254", isAnything},
    ArgumentKind{"TEXT", "a text, in quotes when there are blanks", isAnything},
    ArgumentKind{"LEFT", "a text, in quotes when there are blanks", isAnything},
    ArgumentKind{"RIGHT", "a text, in quotes when there are blanks", isAnything},
    ArgumentKind{"SIZE", "a whole number; a register knows 0 to 5", isNumber<int>},
    ArgumentKind{"STYLE", "a, b or ab", isStyle},
    ArgumentKind{"COUNT", "a whole number from 0 on; up to 20 are taken", isNumber<quint32>},
    ArgumentKind{"HEX", "two hexadecimal digits for each byte, for example 0000000C", parses<bytesFrom>},
};

const ArgumentKind *kindNamed(const QString &name)
{
    const auto *const found =
        std::ranges::find(kinds, name, [](const ArgumentKind &kind) { return QLatin1StringView(kind.name); });
    if (found == kinds.end())
        qFatal("no such kind of argument: %s", qPrintable(name));
    return found;
}

} // namespace

QString Argument::usage() const
{
    return (key.isEmpty() ? QString() : key + u'=') + QLatin1StringView(kind->name);
}

QList<Argument> argumentsOf(const Command &command)
{
    QList<Argument> arguments;
    for (QString word : QString(QLatin1StringView(command.arguments)).split(u' ', Qt::SkipEmptyParts)) {
        const bool isOptional = word.startsWith(u'[');
        word.remove(u'[').remove(u']');
        const qsizetype equals = word.indexOf(u'=');
        arguments << Argument{word.left(qMax(equals, qsizetype(0))), kindNamed(word.sliced(equals + 1)),
                              isOptional};
    }
    return arguments;
}

} // namespace VelnoCtl
