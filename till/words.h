// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"
#include "till/progress.h"

#include <span>

/** A name and a text for every number of velnotill.h. */
namespace Velno::Receipts {

enum class Language { English, Turkish };

/** Turkish for "tr", English for all else. */
Language languageOf(const char *name);

struct Word
{
    int number;
    const char *name; ///< lower-case words joined by hyphens, the same in every language
    const char *english;
    const char *turkish; ///< UTF-8

    const char *in(Language language) const { return language == Language::Turkish ? turkish : english; }
};

/** One row for each number, in ascending order. Questions and papers have no text of their own here: what is
 * told of them depends on the order, see message.h. */
std::span<const Word> resultWords();
std::span<const Word> kindWords();
std::span<const Word> stateWords();
std::span<const Word> questionWords();
std::span<const Word> answerWords();
std::span<const Word> paperWords();
std::span<const Word> stageWords();

/** The row of a number; of one that is none a row with the name "unknown". */
const Word &wordOf(std::span<const Word> words, int number);

template <typename Number>
QString nameOf(std::span<const Word> words, Number number)
{
    return QLatin1StringView(wordOf(words, int(number)).name);
}

} // namespace Velno::Receipts
