// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "translations/spoken.h"
#include "velnoctl/numbers.h"
#include "velnoext.h"

#include <any>
#include <type_traits>

/** The kinds of arguments. A new one is a row in Kinds, and in the list of argument_kinds.cpp. */
namespace VelnoCtl {

/** A kind of argument: its name in a command's usage, what is accepted, and how it is read. */
struct ArgumentKind
{
    const char *name;
    const char *accepted;                  ///< given to Spoken::tr()
    std::any (*read)(const QString &text); ///< empty when the text is not accepted
};

/** A kind whose arguments have values of this type. */
template <typename Value>
struct KindOf : ArgumentKind
{
};

/** The kind that has the name; the program ends when there is none. */
const ArgumentKind *kindNamed(const QString &name);

enum class Means { Cash, Card };

/** Which of a text's two styles are on. */
struct Style
{
    bool a = false;
    bool b = false;
};

/** A line of the open sale. */
struct Line
{
    std::optional<int> index; ///< as the register counts; none: the last
};

std::optional<QString> somethingFrom(const QString &text); ///< any text but an empty one
std::optional<Means> meansFrom(const QString &text);
std::optional<Line> lineFrom(const QString &text);
std::optional<Style> styleFrom(const QString &text);
std::optional<int> answerFrom(const QString &text); ///< a VelnoTillAnswer
std::optional<bool> flagFrom(const QString &text);
std::optional<QString> faultFrom(const QString &text); ///< a word of visible ASCII characters

/** A text in UTF-8 that fits into a field of a structure whole: it is never cut in the middle of a letter. */
template <qsizetype Longest>
std::optional<QByteArray> fieldFrom(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    return bytes.size() <= Longest ? std::optional(bytes) : std::nullopt;
}

template <auto Read>
std::any readAs(const QString &text)
{
    const auto value = Read(text);
    return value ? std::any(*value) : std::any();
}

/** A kind that is read by this function, into the type that it returns. */
template <auto Read>
constexpr auto kindReadBy(const char *name, const char *accepted)
{
    using Value = typename std::invoke_result_t<decltype(Read), const QString &>::value_type;
    return KindOf<Value>{{name, accepted, readAs<Read>}};
}

/** Refused is what velnoext.h cannot take; what it takes and finds wrong ends with its code 4. */
namespace Kinds {

inline constexpr auto code =
    kindReadBy<numberFrom<int>>("CODE", Spoken::later("a result code, for example 8"));
inline constexpr auto detail =
    kindReadBy<numberFrom<int>>("DETAIL", Spoken::later("an error detail, for example 0x402"));
inline constexpr auto file =
    kindReadBy<somethingFrom>("FILE", Spoken::later("the path of a file, or - for standard input"));
inline constexpr auto command = kindReadBy<somethingFrom>("COMMAND", Spoken::later("the name of a command"));
inline constexpr auto price =
    kindReadBy<kurusFrom>("PRICE", Spoken::later("lira for one unit, up to two decimals: 12.50 or 12,50"));
inline constexpr auto amount =
    kindReadBy<kurusFrom>("AMOUNT", Spoken::later("lira, up to two decimals: 12.50 or 12,50"));
inline constexpr auto quantity = kindReadBy<thousandthsFrom>(
    "QUANTITY", Spoken::later("up to three decimals: 1.250 or 1,250; at most 2147483.647"));
inline constexpr auto name = kindReadBy<fieldFrom<sizeof(VelnoSaleItem::name) - 1>>(
    "NAME", Spoken::later("up to 52 bytes of UTF-8, in quotes when there are blanks"));
inline constexpr auto section = kindReadBy<numberFrom<signed char>>(
    "SECTION", Spoken::later("a whole number, -128 to 127; a register's sections are 1 to 8"));
inline constexpr auto percent = kindReadBy<numberFrom<int>>(
    "PERCENT", Spoken::later("a whole number: -10 for a discount, 10 for a surcharge"));
inline constexpr auto type =
    kindReadBy<numberFrom<int>>("TYPE", Spoken::later("a whole number; a register knows 0 to 7"));
inline constexpr auto line = kindReadBy<lineFrom>(
    "LINE", Spoken::later("last, or a whole number: the line's index as the register counts"));
inline constexpr auto identity = kindReadBy<numberFrom<quint64>>(
    "IDENTITY", Spoken::later("a whole number; identity numbers have 11 digits, 11111111111 is anybody's"));
inline constexpr auto means =
    kindReadBy<meansFrom>("MEANS", Spoken::later("cash (the key F10) or card (the key F11)"));
inline constexpr auto invoice = kindReadBy<numberFrom<quint32>>(
    "INVOICE",
    Spoken::later(
        "a whole number from 0 on; a register knows 0 to 2. Not given: 0 with a reference, otherwise 2"));
inline constexpr auto idKind = kindReadBy<numberFrom<quint32>>(
    "KIND", Spoken::later("a whole number from 0 on; 0 for a person's number, 1 for a tax number"));
inline constexpr auto id = kindReadBy<fieldFrom<sizeof(VelnoInvoice::idNumber)>>(
    "ID", Spoken::later("up to 12 bytes; 11 digits of a person, 10 of a tax number"));
inline constexpr auto reference = kindReadBy<fieldFrom<sizeof(VelnoInvoice::reference)>>(
    "REFERENCE", Spoken::later("6 to 16 characters with type 0; up to 17 with another"));
inline constexpr auto mode =
    kindReadBy<numberFrom<int>>("MODE", Spoken::later("a whole number; a register knows 1 and 2"));
inline constexpr auto flag =
    kindReadBy<flagFrom>("FLAG", Spoken::later("yes or no; the register defines what it means"));
inline constexpr auto receipt = kindReadBy<pairFrom>(
    "RECEIPT", Spoken::later("two whole numbers with a slash between, as sale-state told them: 12/1"));
inline constexpr auto receiptFile = kindReadBy<somethingFrom>(
    "FILE.json", Spoken::later("the path of a file with a receipt as docs/receipt-json.md has it"));
inline constexpr auto key = kindReadBy<somethingFrom>(
    "KEY", Spoken::later("the sale's name in the ledger, 1 to 200 bytes without control characters"));
inline constexpr auto fault = kindReadBy<faultFrom>(
    "FAULT", Spoken::later("NAME, NAME=VALUE or none; the simulator's --help lists them"));
inline constexpr auto answer = kindReadBy<answerFrom>("ANSWER", Spoken::later("paid, sell-again or drop"));
inline constexpr auto person = kindReadBy<somethingFrom>(
    "PERSON", Spoken::later("who answers, up to 100 bytes; not given: the user's name"));
inline constexpr auto encoding = kindReadBy<somethingFrom>(
    "ENCODING", Spoken::later("the name of an encoding, for example UTF-8 or windows-1254"));
inline constexpr auto text =
    kindReadBy<somethingFrom>("TEXT", Spoken::later("a text, in quotes when there are blanks"));
inline constexpr auto left =
    kindReadBy<somethingFrom>("LEFT", Spoken::later("a text, in quotes when there are blanks"));
inline constexpr auto right =
    kindReadBy<somethingFrom>("RIGHT", Spoken::later("a text, in quotes when there are blanks"));
inline constexpr auto size =
    kindReadBy<numberFrom<int>>("SIZE", Spoken::later("a whole number; a register knows 0 to 5"));
inline constexpr auto style = kindReadBy<styleFrom>("STYLE", Spoken::later("a, b or ab"));
inline constexpr auto count =
    kindReadBy<numberFrom<quint32>>("COUNT", Spoken::later("a whole number from 0 on; up to 20 are taken"));
inline constexpr auto hex =
    kindReadBy<bytesFrom>("HEX", Spoken::later("two hexadecimal digits for each byte, for example 0000000C"));

} // namespace Kinds

} // namespace VelnoCtl
