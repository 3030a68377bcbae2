#include "simulator/command_line.h"

#include <cstdio>

namespace Simulator {

namespace {

constexpr int wrongUsage = 64;

} // namespace

int showHelp(const QString &text)
{
    std::fputs(qPrintable(text), stdout);
    return 0;
}

int showWrongUsage(const char *program, const QString &text)
{
    std::fprintf(stderr, "%s: %s\n%s --help shows all options.\n", program, qPrintable(text), program);
    return wrongUsage;
}

} // namespace Simulator
