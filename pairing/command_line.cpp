// SPDX-License-Identifier: Apache-2.0

#include "pairing/command_line.h"

#include "ExtDevice/gmp3/trust_anchors.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int wrongUsage = 64;
constexpr int outputLost = 74;

/** Options that the application object takes; with one or two dashes. */
constexpr std::array qtSwitches{"reverse", "widgetcount"};
constexpr std::array qtOptions{"display",       "geometry", "platform",        "platformpluginpath",
                               "platformtheme", "plugin",   "qwindowgeometry", "qwindowicon",
                               "qwindowtitle",  "session",  "style",           "stylesheet"};

template <typename Names>
bool isOneOf(const QString &name, const Names &names)
{
    return std::ranges::any_of(names,
                               [&name](const char *known) { return name == QLatin1StringView(known); });
}

/** How many words Qt takes for this one and its value; 0 when it does not know it. */
int wordsOfQt(const QString &word)
{
    if (!word.startsWith(u'-'))
        return 0;
    const QString option = word.sliced(word.startsWith("--"_L1) ? 2 : 1);
    if (isOneOf(option, qtSwitches))
        return 1;
    const QString name = option.section(u'=', 0, 0);
    if (!isOneOf(name, qtOptions))
        return 0;
    return name == option ? 2 : 1;
}

int show(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const bool isShown = std::fputs(bytes.constData(), stdout) != EOF && std::fflush(stdout) != EOF;
    return isShown ? 0 : outputLost;
}

QString helpText()
{
    return u"Usage: velno-pairing [OPTION]...\n"
           "Opens the window that pairs a cash register with an application, and tests it.\n\n"
           "  --help            this text\n"
           "  --version         the version, and whom this build trusts\n"
           "  -platform, -style and Qt's other options\n\n"
           "Environment: VELNO_TRACE_STATUS=1 repeats each status text on standard error.\n"
           "Exit status: 0 the window was closed, 64 wrong usage, 74 this could not be written.\n"_s +
           Velno::GMP::trustAnchorsInWords() + u"Example: velno-pairing -style Fusion\n"_s;
}

int refuse(const QString &word)
{
    const QString text = u"velno-pairing: \"%1\" is no option; velno-pairing --help shows all\n"_s.arg(word);
    std::fputs(text.toUtf8().constData(), stderr);
    return wrongUsage;
}

} // namespace

std::optional<int> shownInsteadOfAWindow(int argc, const char *const *argv)
{
    for (int i = 1; i < argc; ++i) {
        const QString word = QString::fromLocal8Bit(argv[i]);
        if (word == "--help"_L1 || word == "-h"_L1)
            return show(helpText());
        if (word == "--version"_L1 || word == "-v"_L1)
            return show(u"velno-pairing " VELNO_VERSION "\n"_s + Velno::GMP::trustAnchorsInWords());
        const int taken = wordsOfQt(word);
        if (taken == 0)
            return refuse(word);
        i += taken - 1;
    }
    return std::nullopt;
}
