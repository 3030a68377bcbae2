#pragma once

#include <span>

/** The words for result codes and details: what velnoext_result_name() and its neighbours look up. */
namespace Velno::Ext {

struct ResultText
{
    int code;
    const char *name;
    const char *text; ///< three lines: what happened, "Cause: ...", "Cure: ..."
};

struct DetailText
{
    int detail;
    const char *text; ///< one line; a detail that several functions share names each argument
};

/** Every code, in ascending order without a gap. */
std::span<const ResultText> resultTexts();

/** Every detail, in ascending order. */
std::span<const DetailText> detailTexts();

} // namespace Velno::Ext
