// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/texts.h"

#include "ExtDevice/velnoext/library_state.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace Velno::Ext {

namespace {

std::atomic<Language> chosenLanguage = Language::English;

/** The row of a number, or null. */
const Words *find(std::span<const Words> rows, int number)
{
    const auto found = std::ranges::lower_bound(rows, number, {}, &Words::number);
    return found != rows.end() && found->number == number ? &*found : nullptr;
}

const Words &resultOf(int code)
{
    const Words *const row = find(resultTexts(), code);
    return row ? *row : otherResult();
}

const Words &detailOf(int detail)
{
    const Words *const row = find(detailTexts(), detail);
    return row ? *row : otherDetail(detail);
}

const Words &causeOf(int cause)
{
    const Words *const row = find(causeTexts(), cause);
    return row ? *row : otherCause(cause);
}

const char *inChosenLanguage(const Words &words)
{
    return words.texts.in(chosenLanguage);
}

} // namespace

} // namespace Velno::Ext

using namespace Velno::Ext;

const char *velnoext_result_name(int code)
{
    return resultOf(code).name;
}

const char *velnoext_result_text(int code)
{
    return inChosenLanguage(resultOf(code));
}

const char *velnoext_detail_text(int detail)
{
    return inChosenLanguage(detailOf(detail));
}

const char *velnoext_cause_name(int cause)
{
    return causeOf(cause).name;
}

const char *velnoext_cause_text(int cause)
{
    return inChosenLanguage(causeOf(cause));
}

int velnoext_set_language(const char *language)
{
    if (!language)
        return failed(NullArgument, 0x311);
    if (std::strcmp(language, "tr") == 0)
        chosenLanguage = Language::Turkish;
    else if (std::strcmp(language, "en") == 0)
        chosenLanguage = Language::English;
    else
        return failed(BadValue, 0x415);
    return Success;
}
