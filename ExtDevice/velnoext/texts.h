// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/velnoext.h"

#include <span>

/**
 * All words of the library, in every language: what velnoext_result_text() and its neighbours look up. One
 * row for each number; the rows of results, details and causes stand in a file each.
 */
namespace Velno::Ext {

enum class Language { English, Turkish };

/** A text in every language: UTF-8, the English one plain ASCII. */
struct Texts
{
    const char *english;
    const char *turkish;

    const char *in(Language language) const { return language == Language::Turkish ? turkish : english; }
};

struct Words
{
    int number;
    const char *name; ///< lower-case words joined by hyphens, the same in every language; null for a detail
    /** Of results and causes three lines: what happened, "Cause: ..." ("Neden: ..."), "Cure: ..." ("Çözüm:
     *  ..."). Of a detail one line; a detail that several functions share names each argument. */
    Texts texts;
};

/** Every result code, in ascending order without a gap. */
std::span<const Words> resultTexts();

/** Every detail, in ascending order. */
std::span<const Words> detailTexts();

/** Every cause of VelnoCause that happens by itself, and what the numbers of the simulated register mean; in
 *  ascending order. */
std::span<const Words> causeTexts();

/** What can be said of a number that has no row of its own. */
const Words &otherResult();
const Words &otherDetail(int detail);
const Words &otherCause(int cause);

} // namespace Velno::Ext
