// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/command_line.h"

#include "translations/spoken.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int wrongUsage = 64;
constexpr int unavailable = 69;

} // namespace

QString versionText(const char *program, const QString &anchors)
{
    return QLatin1StringView(program) + u" " VELNO_VERSION "\n"_s + anchors;
}

int showText(const QString &text)
{
    std::fputs(qPrintable(text), stdout);
    return 0;
}

int showWrongUsage(const char *program, const QString &text)
{
    std::fprintf(stderr, "%s: %s\n%s\n", program, qPrintable(text),
                 qPrintable(Spoken::tr("%1 --help shows all options.").arg(QLatin1StringView(program))));
    return wrongUsage;
}

int showUnavailable(const char *program, const QString &text)
{
    std::fprintf(stderr, "%s: %s\n", program, qPrintable(text));
    return unavailable;
}

} // namespace Simulator
