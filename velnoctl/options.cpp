// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/options.h"

#include "ExtDevice/gmp3/trust_anchors.h"
#include "translations/spoken.h"
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
    const char *help;  ///< this and the next are given to Spoken::tr(), and may be empty
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
    OptionRow{"serial", "NO", Spoken::later("the register's 12 characters"),
              Spoken::later("exactly 12 characters without a blank"), takeSerial},
    OptionRow{"listen", "ADDR:PORT", Spoken::later("where the register connects"),
              Spoken::later("a local IPv4 address and a port of 1 to 65535, for example 0.0.0.0:4100"),
              takeListen},
    OptionRow{"app", "N", Spoken::later("number of the application"), Spoken::later("1 to 4294967295"),
              takeApp},
    OptionRow{"relay", "", Spoken::later("meet it at the relay server"),
              Spoken::later("one of --listen and --relay"), takeRelay},
    OptionRow{"timeout", "MS", Spoken::later("default 30000"),
              Spoken::later("0 to 4294967295 ms, where 4294967295 means no limit"), takeTimeout},
    OptionRow{"answer-limit", "MS", Spoken::later("for a whole answer, default none"),
              Spoken::later("1 to 4294967295 ms, where 4294967295 means no limit"), takeAnswerLimit},
    OptionRow{"json", "", Spoken::later("results as one object a line"), "", takeJson},
    OptionRow{"language", "LANG", Spoken::later("en or tr, not the locale's"), Spoken::later("en or tr"),
              takeLanguage},
    OptionRow{"ledger", "FILE", Spoken::later("of receipts"), Spoken::later("the path of a file"),
              takeLedger},
    OptionRow{"control", "ADDR", Spoken::later("of a simulator, for fault"),
              Spoken::later("a port of 127.0.0.1, ADDR:PORT or the path of a Unix socket, as the simulator's "
                            "`ready` tells it"),
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
        const QString cell = u"  "_s + usage + Spoken::tr(row.help);
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
    return Spoken::tr("--%1 is missing; accepted is %2")
        .arg(QLatin1StringView(name), Spoken::tr(row->accepted));
}

/** @return false: something is no option, or lacks its value */
bool parse(QCommandLineParser &parser, const QStringList &arguments)
{
    // A word behind the first command is that command's, also one that begins with a minus.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    for (const OptionRow &row : rows)
        parser.addOption(asParserOption(row));
    parser.addOption(QCommandLineOption(QStringList{u"h"_s, u"help"_s}));
    parser.addOption(QCommandLineOption(QStringList{u"v"_s, u"version"_s}));
    return parser.parse(arguments);
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
    return Spoken::tr("\"%1\" is no option").arg(option) + didYouMean(option, names);
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
    const QString accepted = Spoken::tr(row.accepted);
    return value.isNull() ? Spoken::tr("--%1: accepted is %2").arg(name, accepted)
                          : Spoken::tr("--%1 \"%2\": accepted is %3").arg(name, value, accepted);
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
        return Spoken::tr("the relay");
    return u"%1:%2"_s.arg(QString::fromLatin1(address)).arg(port);
}

Languages languagesAskedFor(const QStringList &arguments)
{
    QCommandLineParser parser;
    parse(parser, arguments); // what is wrong is said later, in one of these
    const bool isJson = parser.isSet(u"json"_s);
    Options options;
    if (!parser.isSet(u"language"_s) || !takeLanguage(parser.value(u"language"_s), options))
        options.language = isJson ? "en"_ba : Spoken::languageOfUser();
    return {isJson ? "en"_ba : options.language, options.language};
}

QString parseOptions(const QStringList &arguments, Options *options)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments))
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
        return Spoken::tr("neither --listen nor --relay is given; accepted is one of them");
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
    return Spoken::tr("Usage: velnoctl [OPTION]... COMMAND...\n"
                      "Drives a cash register through velnoext.h. Several commands run in order over one\n"
                      "connection, up to the first that fails.\n\n") +
           commandsOverview(CommandLine) +
           Spoken::tr("\n  velnoctl commands       what each does, in a line\n"
                      "  velnoctl help COMMAND   its arguments, what is accepted, an example\n\n") +
           optionHelp() +
           Spoken::tr("\nExit status: 0 done, 1-13 the library's result code (see explain), 20-35 a receipt\n"
                      "is not closed, 64 wrong usage, 69 no simulator, 74 a result could not be\n"
                      "written, 130 Ctrl-C or SIGTERM.\n") +
           Velno::GMP::trustAnchorsInWords() +
           Spoken::tr("Example: velnoctl --serial UB1234567890 --listen 0.0.0.0:4100 --app 5 state z\n");
}

} // namespace VelnoCtl
