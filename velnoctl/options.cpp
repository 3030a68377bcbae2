// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/options.h"

#include "ExtDevice/gmp3/trust_anchors.h"
#include "velnoctl/commands.h"
#include "velnoctl/nearest.h"
#include "velnoext.h"

#include <QCommandLineParser>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>

#include <arpa/inet.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr char relayAddress[] = "255.255.255.255"; // as velnoext_initialize() takes it
constexpr qsizetype serialSize = 12;

struct OptionRow
{
    const char *name;
    const char *value; ///< empty for a switch
    const char *help;
    const char *accepted;
    bool (*take)(const QString &value, Options &options);
};

bool takeNumber(const QString &text, quint32 least, quint32 *number)
{
    static const QRegularExpression digits(u"\\A[0-9]{1,10}\\z"_s);
    bool isNumber = false;
    const quint32 value = text.toUInt(&isNumber);
    if (!isNumber || !digits.match(text).hasMatch() || value < least)
        return false;
    *number = value;
    return true;
}

bool takeSerial(const QString &text, Options &options)
{
    static const QRegularExpression rule(u"\\A[!-~]+\\z"_s);
    options.serial = text.toLatin1();
    return text.size() == serialSize && rule.match(text).hasMatch();
}

bool takeListen(const QString &text, Options &options)
{
    // Not of IPv6: every run pairs first, which takes IPv4.
    static const QRegularExpression rule(u"\\A([0-9.]+):([0-9]{1,5})\\z"_s);
    const QRegularExpressionMatch match = rule.match(text);
    const uint port = match.captured(2).toUInt();
    options.address = match.captured(1).toLatin1();
    options.port = quint16(port);
    in_addr room;
    return port >= 1 && port <= 65535 && options.address != relayAddress &&
           inet_pton(AF_INET, options.address.constData(), &room) == 1;
}

bool takeApp(const QString &text, Options &options)
{
    return takeNumber(text, 1, &options.app);
}

bool takeTimeout(const QString &text, Options &options)
{
    return takeNumber(text, 0, &options.timeout);
}

bool takeAnswerLimit(const QString &text, Options &options)
{
    quint32 limit = 0;
    if (!takeNumber(text, 1, &limit))
        return false;
    options.answerLimit = limit;
    return true;
}

bool takeLanguage(const QString &text, Options &options)
{
    options.language = text.toLatin1();
    return text == "en"_L1 || text == "tr"_L1;
}

bool takeRelay(const QString &, Options &options)
{
    if (!options.address.isEmpty())
        return false;
    options.address = relayAddress;
    options.isRelay = true;
    return true;
}

bool takeLedger(const QString &text, Options &options)
{
    options.ledger = text;
    return !text.isEmpty();
}

bool takeControl(const QString &text, Options &options)
{
    options.control = Simulator::controlAddressFrom(text);
    return options.control.has_value();
}

bool takeJson(const QString &, Options &options)
{
    options.isJson = true;
    return true;
}

bool takeHelp(const QString &, Options &options)
{
    options.isHelp = true;
    return true;
}

bool takeVersion(const QString &, Options &options)
{
    options.isVersion = true;
    return true;
}

// In the order of the help, which sets them in two columns.
constexpr std::array rows{
    OptionRow{"serial", "NO", "the register's 12 characters", "exactly 12 characters without a blank",
              takeSerial},
    OptionRow{"listen", "ADDR:PORT", "where the register connects",
              "a local IPv4 address and a port of 1 to 65535, for example 0.0.0.0:4100", takeListen},
    OptionRow{"app", "N", "number of the application", "1 to 4294967295", takeApp},
    OptionRow{"relay", "", "meet it at the relay server", "one of --listen and --relay", takeRelay},
    OptionRow{"timeout", "MS", "default 30000", "0 to 4294967295 ms, where 4294967295 means no limit",
              takeTimeout},
    OptionRow{"answer-limit", "MS", "for a whole answer, default none",
              "1 to 4294967295 ms, where 4294967295 means no limit", takeAnswerLimit},
    OptionRow{"json", "", "results as one object a line", "", takeJson},
    OptionRow{"language", "LANG", "of explanations, en or tr", "en or tr", takeLanguage},
    OptionRow{"ledger", "FILE", "of receipts", "the path of a file", takeLedger},
    OptionRow{
        "control", "ADDR", "of a simulator, for fault",
        "a port of 127.0.0.1, ADDR:PORT or the path of a Unix socket, as the simulator's `ready` tells it",
        takeControl},
};
// These are not in the help.
constexpr std::array helpRows{
    OptionRow{"help", "", "", "", takeHelp},
    OptionRow{"version", "", "", "", takeVersion},
};

constexpr int optionColumn = 15;
constexpr int halfWidth = 46;

QString optionHelp()
{
    QString text;
    bool isLeft = true;
    for (const OptionRow &row : rows) {
        const QString usage =
            QString(u"--"_s + QLatin1StringView(row.name) + u' ' + QLatin1StringView(row.value))
                .leftJustified(isLeft ? optionColumn : optionColumn + 5);
        const QString cell = u"  "_s + usage + QLatin1StringView(row.help);
        text += isLeft ? cell.leftJustified(halfWidth) : cell + u'\n';
        isLeft = !isLeft;
    }
    return text.trimmed().prepend("  "_L1) + u'\n';
}

QCommandLineOption asParserOption(const OptionRow &row)
{
    return {QString(QLatin1StringView(row.name)), {}, QString(QLatin1StringView(row.value))};
}

QString missingOption(const char *name)
{
    const auto *const row = std::ranges::find(rows, QLatin1StringView(name),
                                              [](const OptionRow &r) { return QLatin1StringView(r.name); });
    return u"--%1 is missing; accepted is %2"_s.arg(QLatin1StringView(name),
                                                    QLatin1StringView(row->accepted));
}

/** What the parser could not take. */
QString unreadOption(const QCommandLineParser &parser)
{
    const QStringList unknown = parser.unknownOptionNames();
    if (unknown.isEmpty())
        return parser.errorText();
    QStringList names;
    for (const OptionRow &row : rows)
        names << u"--"_s + QLatin1StringView(row.name);
    for (const OptionRow &row : helpRows)
        names << u"--"_s + QLatin1StringView(row.name);
    const QString option = (unknown.first().size() > 1 ? u"--"_s : u"-"_s) + unknown.first();
    return u"\"%1\" is no option"_s.arg(option) + didYouMean(option, names);
}

/** @return what was wrong with this option */
QString takeOption(const QCommandLineParser &parser, const OptionRow &row, Options &options)
{
    const QString name(QLatin1StringView(row.name));
    if (!parser.isSet(name))
        return {};
    const QString value = row.value[0] == '\0' ? QString() : parser.value(name);
    if (row.take(value, options))
        return {};
    const QLatin1StringView accepted(row.accepted);
    return value.isNull() ? u"--%1: accepted is %2"_s.arg(name, accepted)
                          : u"--%1 \"%2\": accepted is %3"_s.arg(name, value, accepted);
}

} // namespace

QString Options::ledgerFile() const
{
    if (!ledger.isEmpty())
        return ledger;
    // A serial number may hold signs that a path is made of.
    return u"%1/velno/%2.ledger"_s.arg(
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
        QString::fromLatin1(QUrl::toPercentEncoding(QString::fromLatin1(serial), {}, ".~")));
}

QString Options::place() const
{
    if (isRelay)
        return u"the relay"_s;
    return u"%1:%2"_s.arg(QString::fromLatin1(address)).arg(port);
}

QString parseOptions(const QStringList &arguments, Options *options)
{
    QCommandLineParser parser;
    // A word behind the first command is that command's, also one that begins with a minus.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    for (const OptionRow &row : rows)
        parser.addOption(asParserOption(row));
    parser.addOption(QCommandLineOption(QStringList{u"h"_s, u"help"_s}));
    parser.addOption(QCommandLineOption(QStringList{u"v"_s, u"version"_s}));
    if (!parser.parse(arguments))
        return unreadOption(parser);
    for (const OptionRow &row : helpRows)
        takeOption(parser, row, *options);
    for (const OptionRow &row : rows) {
        const QString wrong = takeOption(parser, row, *options);
        if (!wrong.isEmpty())
            return wrong;
    }
    options->words = parser.positionalArguments();
    return {};
}

QString missingTarget(const Options &options)
{
    if (options.serial.isEmpty())
        return missingOption("serial");
    if (options.address.isEmpty())
        return u"neither --listen nor --relay is given; accepted is one of them"_s;
    return options.app == 0 ? missingOption("app") : QString();
}

QString missingControl()
{
    return missingOption("control");
}

QString versionText()
{
    return u"velnoctl " VELNO_VERSION
           ", libvelnoext %1\n"_s.arg(QString::fromUtf8(velnoext_library_version())) +
           Velno::GMP::trustAnchorsInWords();
}

QString helpText()
{
    return u"Usage: velnoctl [OPTION]... COMMAND...\n"
           "Drives a cash register through velnoext.h. Several commands run in order over one\n"
           "connection, up to the first that fails.\n\n"_s +
           commandsOverview(CommandLine) +
           u"\n  velnoctl commands       what each does, in a line\n"
           "  velnoctl help COMMAND   its arguments, what is accepted, an example\n\n"_s +
           optionHelp() +
           u"\nExit status: 0 done, 1-13 the library's result code (see explain), 20-35 a receipt\n"
           "is not closed, 64 wrong usage, 69 no simulator, 74 a result could not be\n"
           "written, 130 Ctrl-C or SIGTERM.\n"_s +
           Velno::GMP::trustAnchorsInWords() +
           u"Example: velnoctl --serial UB1234567890 --listen 0.0.0.0:4100 --app 5 state z\n"_s;
}

} // namespace VelnoCtl
