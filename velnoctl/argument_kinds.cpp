// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/argument_kinds.h"

#include "velnotill.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr std::array<const ArgumentKind *, 34> kinds{
    &Kinds::code,     &Kinds::detail, &Kinds::file,    &Kinds::command,  &Kinds::price, &Kinds::amount,
    &Kinds::quantity, &Kinds::name,   &Kinds::section, &Kinds::percent,  &Kinds::type,  &Kinds::line,
    &Kinds::identity, &Kinds::means,  &Kinds::invoice, &Kinds::idKind,   &Kinds::id,    &Kinds::reference,
    &Kinds::mode,     &Kinds::flag,   &Kinds::receipt, &Kinds::encoding, &Kinds::text,  &Kinds::left,
    &Kinds::right,    &Kinds::size,   &Kinds::style,   &Kinds::count,    &Kinds::hex,   &Kinds::receiptFile,
    &Kinds::key,      &Kinds::answer, &Kinds::person,  &Kinds::fault};

} // namespace

const ArgumentKind *kindNamed(const QString &name)
{
    const auto *const found = std::ranges::find(
        kinds, name, [](const ArgumentKind *kind) { return QLatin1StringView(kind->name); });
    if (found == kinds.end())
        qFatal("no such kind of argument: %s", qPrintable(name));
    return *found;
}

std::optional<QString> somethingFrom(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

std::optional<Means> meansFrom(const QString &text)
{
    if (text == "cash"_L1)
        return Means::Cash;
    return text == "card"_L1 ? std::optional(Means::Card) : std::nullopt;
}

std::optional<Line> lineFrom(const QString &text)
{
    if (text == "last"_L1)
        return Line();
    const std::optional<int> index = numberFrom<int>(text);
    return index ? std::optional(Line{index}) : std::nullopt;
}

std::optional<Style> styleFrom(const QString &text)
{
    if (text != "a"_L1 && text != "b"_L1 && text != "ab"_L1)
        return std::nullopt;
    return Style{text.contains(u'a'), text.contains(u'b')};
}

std::optional<int> answerFrom(const QString &text)
{
    for (int answer = VelnoTillAnswer_Paid; answer <= VelnoTillAnswer_Drop; ++answer) {
        if (text == QLatin1StringView(velnotill_answer_name(answer)))
            return answer;
    }
    return std::nullopt;
}

std::optional<bool> flagFrom(const QString &text)
{
    if (text == "yes"_L1)
        return true;
    return text == "no"_L1 ? std::optional(false) : std::nullopt;
}

std::optional<QString> faultFrom(const QString &text)
{
    const bool isWord = std::ranges::all_of(text, [](QChar c) { return c > u' ' && c <= u'~'; });
    return isWord ? somethingFrom(text) : std::nullopt;
}

} // namespace VelnoCtl
