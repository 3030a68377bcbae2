// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/register_options.h"

#include "ExtDevice/gmp3/key_log.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/common/numbers.h"
#include "simulator/fiscal/paper.h"
#include "simulator/register/credentials.h"
#include "simulator/register/model_settings.h"
#include "translations/spoken.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHostAddress>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

QList<QCommandLineOption> settingOptions()
{
    QList<QCommandLineOption> options;
    for (const SettingRow &row : settingTable())
        options.emplaceBack(QString::fromLatin1(row.name), Spoken::tr(row.help),
                            QString::fromLatin1(row.value));
    return options;
}

/** Of a register that trusts a development authority, otherwise empty. They lie beside the folder of the
 * programs, in the build folder as where they are installed. */
QString developmentCredentials()
{
    return Velno::GMP::trustsDevelopmentAuthority() ? QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                                                      u"/../development-authority/register"_s)
                                                    : QString();
}

struct Names
{
    QCommandLineOption help{{u"h"_s, u"help"_s}, Spoken::tr("This text.")};
    QCommandLineOption version{{u"v"_s, u"version"_s}, Spoken::tr("Version and trust anchors.")};
    QCommandLineOption serial{
        u"serial"_s, Spoken::tr("Serial number: 12 characters, beginning with UB or VELNO. Required."),
        u"NO"_s};
    QCommandLineOption connect{
        u"connect"_s, Spoken::tr("Where the other side listens: 127.0.0.1:4100, [::1]:4100, till:4100."),
        u"ADDR:PORT"_s};
    QCommandLineOption relay{u"relay"_s,
                             Spoken::tr("Where a relay keeps waiting registers; instead of --connect."),
                             u"ADDR:PORT"_s};
    QCommandLineOption credentials{
        u"credentials"_s,
        Velno::GMP::trustsDevelopmentAuthority()
            ? Spoken::tr(
                  "Folder with client.crt and client.key; without it those of the development authority.")
            : Spoken::tr("Folder with client.crt and client.key. Required."),
        u"DIR"_s, developmentCredentials()};
    QCommandLineOption appHash{u"app-hash"_s,
                               Spoken::tr("SHA-256 of the one application to accept, 64 hexadecimal digits."),
                               u"HEX"_s};
    QCommandLineOption noPaper{u"no-paper"_s, Spoken::tr("The printer has no paper.")};
    QList<QCommandLineOption> settings = settingOptions();
    QCommandLineOption journal{u"journal"_s,
                               Spoken::tr("Keeps receipts and reports in this file; without it in memory."),
                               u"FILE"_s};
    QCommandLineOption keyLog{
        u"key-log"_s, Spoken::tr("Appends the keys of each pairing to this file, for a look into the wire."),
        u"FILE"_s};
    QCommandLineOption receipts{
        u"receipts"_s, Spoken::tr("Writes what is printed to this folder, a file for each print."), u"DIR"_s};
    QCommandLineOption receiptsAs{
        u"receipts-as"_s, Spoken::tr("What these files are: text, png, or text,png."), u"KINDS"_s, u"text"_s};
    QCommandLineOption showReceipts{u"show-receipts"_s,
                                    Spoken::tr("Shows what is printed on standard error.")};
    QCommandLineOption sales{u"sales"_s, Spoken::tr("End after N closed receipts."), u"N"_s};
    QCommandLineOption speed{
        u"speed"_s,
        Spoken::tr("Takes as long as a real register and cashier (real), or FACTOR times as fast."),
        u"FACTOR"_s};
    QCommandLineOption registers{
        u"registers"_s, Spoken::tr("Plays N registers: serial numbers and ports count up from those given."),
        u"N"_s};
    QCommandLineOption control{
        u"control"_s,
        Spoken::tr("Takes the lines of standard input there, too: a port of 127.0.0.1, ADDR:PORT or a path."),
        u"ADDRESS"_s};
    QCommandLineOption json{u"json"_s, Spoken::tr("Events as JSON, one object a line.")};
    QCommandLineOption once{u"once"_s, Spoken::tr("End after one pairing: 0 paired, 1 not.")};
    QCommandLineOption fault{u"fault"_s, Spoken::tr("Do something wrong, see below. May be repeated."),
                             u"NAME[=VALUE]"_s};
};

constexpr int mostRegisters = 10'000;
constexpr int mostSales = 1'000'000'000;
constexpr int lastPort = 65535;

bool isSerial(const QString &text)
{
    static const QRegularExpression rule(u"\\A(UB|VELNO)[!-~]*\\z"_s);
    return text.size() == 12 && rule.match(text).hasMatch();
}

/** Fills host and port from HOST:PORT or [IPV6]:PORT. */
bool parseTarget(const QString &text, RegisterOptions &options)
{
    static const QRegularExpression rule(u"\\A(?:\\[([^\\[\\]]+)\\]|([^\\[\\]:\\s]+)):([0-9]{1,5})\\z"_s);
    const QRegularExpressionMatch match = rule.match(text);
    const uint port = match.captured(3).toUInt();
    const QString bracketed = match.captured(1);
    if (!match.hasMatch() || port < 1 || port > 65535)
        return false;
    if (!bracketed.isEmpty() && QHostAddress(bracketed).protocol() != QAbstractSocket::IPv6Protocol)
        return false;
    options.host = bracketed.isEmpty() ? match.captured(2) : bracketed;
    options.port = quint16(port);
    return true;
}

bool isWritableFolder(const QString &path)
{
    const QFileInfo folder(path);
    return !path.isEmpty() && folder.isDir() && folder.isWritable();
}

bool isHash(const QString &text)
{
    static const QRegularExpression rule(u"\\A[0-9A-Fa-f]{64}\\z"_s);
    return rule.match(text).hasMatch();
}

/** Fills in where to go; returns what was wrong and what is accepted, or nothing. */
QString fillTarget(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    const QString accepted = Spoken::tr("ADDR:PORT with a port of 1 to 65535, an IPv6 address as [::1]:4100");
    options.throughRelay = parser.isSet(names.relay);
    if (options.throughRelay && parser.isSet(names.connect))
        return Spoken::tr("--connect and --relay exclude each other; accepted is one of them");
    if (!options.throughRelay && !parser.isSet(names.connect))
        return Spoken::tr("--connect is missing; accepted is %1, or --relay").arg(accepted);
    const QCommandLineOption &given = options.throughRelay ? names.relay : names.connect;
    if (parseTarget(parser.value(given), options))
        return {};
    return Spoken::tr("--%1 \"%2\": accepted is %3")
        .arg(given.names().first(), parser.value(given), accepted);
}

/** Fills in what the model is to be; returns what was wrong and what is accepted, or nothing. */
QString fillModel(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    options.paper = !parser.isSet(names.noPaper);
    options.journal = parser.value(names.journal);
    if (parser.isSet(names.journal) && options.journal.isEmpty())
        return Spoken::tr("--journal \"\": accepted is the name of a file");
    for (const SettingRow &row : settingTable()) {
        const QString name = QString::fromLatin1(row.name);
        if (!parser.isSet(name))
            continue;
        const auto setting = readSetting(row, parser.value(name));
        if (!setting)
            return Spoken::tr("--%1 \"%2\": accepted is %3").arg(name, parser.value(name), settingRule(row));
        options.settings << *setting;
    }
    return {};
}

/** Fills in where prints go; returns what was wrong and what is accepted, or nothing. */
QString fillReceipts(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    const QString folder = parser.value(names.receipts);
    const QStringList kinds = parser.value(names.receiptsAs).split(u',');
    const auto isKind = [](const QString &kind) { return kind == u"text" || kind == u"png"; };
    options.receipts.folder = folder;
    options.receipts.show = parser.isSet(names.showReceipts);
    options.receipts.asText = kinds.contains(u"text"_s);
    options.pictures = kinds.contains(u"png"_s);
    if (!std::ranges::all_of(kinds, isKind))
        return Spoken::tr("--receipts-as \"%1\": accepted is text, png or text,png")
            .arg(parser.value(names.receiptsAs));
    if (parser.isSet(names.receiptsAs) && !parser.isSet(names.receipts))
        return Spoken::tr("--receipts-as needs --receipts, the folder for them");
    if (!parser.isSet(names.receipts) || isWritableFolder(folder))
        return {};
    return Spoken::tr("--receipts \"%1\": accepted is a folder that can be written to").arg(folder);
}

/** Fills in how many registers there are; returns what was wrong and what is accepted, or nothing. */
QString fillRegisters(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    const QString given = parser.value(names.registers);
    const auto count = numberBetween(given, 1, mostRegisters);
    if (!parser.isSet(names.registers))
        return {};
    if (!count)
        return Spoken::tr("--registers \"%1\": accepted is 1 to %2").arg(given).arg(mostRegisters);
    options.registers = int(*count);
    const int last = options.registers - 1;
    if (serialBehind(options.serial, last).isEmpty())
        return Spoken::tr("--registers %1: --serial must end in digits that can be counted up so far")
            .arg(given);
    if (!options.throughRelay && options.port + last > lastPort)
        return Spoken::tr("--registers %1: each has a port of its own, from %2 up to %3 at most")
            .arg(given)
            .arg(options.port)
            .arg(lastPort);
    for (const QCommandLineOption &single : {names.journal, names.once})
        if (last > 0 && parser.isSet(single))
            return Spoken::tr("--registers %1: --%2 is for one register alone")
                .arg(given, single.names().first());
    return {};
}

/** Fills in when the program ends and how long things take; returns what was wrong, or nothing. */
QString fillTimes(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    const auto sales = numberBetween(parser.value(names.sales), 1, mostSales);
    if (parser.isSet(names.sales) && !sales)
        return Spoken::tr("--sales \"%1\": accepted is 1 to %2")
            .arg(parser.value(names.sales))
            .arg(mostSales);
    options.sales = int(sales.value_or(0));
    const auto pace = Pace::from(parser.value(names.speed));
    if (parser.isSet(names.speed) && !pace)
        return Spoken::tr("--speed \"%1\": accepted is %2").arg(parser.value(names.speed), Pace::rule());
    options.pace = pace.value_or(Pace());
    return {};
}

/** Fills in where keys go; returns what was wrong, or nothing. */
QString fillKeyLog(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    options.keyLog = parser.value(names.keyLog);
    if (!parser.isSet(names.keyLog))
        return {};
    if (options.keyLog.isEmpty())
        return Spoken::tr("--key-log \"\": accepted is the name of a file");
    const QString problem = Velno::GMP::keyLogProblem(options.keyLog);
    return problem.isEmpty() ? QString() : u"--key-log: "_s + problem;
}

/** Fills the options; returns what was wrong and what is accepted, or nothing. */
QString fill(const QCommandLineParser &parser, const Names &names, RegisterOptions &options)
{
    const auto wrong = [&parser](const QCommandLineOption &option, const QString &accepted) {
        const QString name = option.names().last();
        return parser.isSet(option)
                   ? Spoken::tr("--%1 \"%2\": accepted is %3").arg(name, parser.value(option), accepted)
                   : Spoken::tr("--%1 is missing; accepted is %2").arg(name, accepted);
    };
    if (!parser.positionalArguments().isEmpty())
        return Spoken::tr("\"%1\" is no option").arg(parser.positionalArguments().first());
    if (!isSerial(parser.value(names.serial)))
        return wrong(names.serial, Spoken::tr("exactly 12 characters, beginning with UB or VELNO"));
    options.serial = parser.value(names.serial).toLatin1();
    for (const auto filled : {fillTarget, fillRegisters, fillTimes})
        if (const QString problem = filled(parser, names, options); !problem.isEmpty())
            return problem;
    if (const QString problem = fillModel(parser, names, options); !problem.isEmpty())
        return problem;
    if (parser.isSet(names.appHash) && !isHash(parser.value(names.appHash)))
        return wrong(names.appHash, Spoken::tr("64 hexadecimal digits"));
    for (const QString &fault : parser.values(names.fault))
        if (const QString error = options.faults.switchOn(fault); !error.isEmpty())
            return u"--fault: "_s + error;
    options.control = controlAddressFrom(parser.value(names.control));
    if (parser.isSet(names.control) && !options.control)
        return wrong(names.control, controlAddressRule());
    options.credentials = parser.value(names.credentials);
    if (options.credentials.isEmpty())
        return wrong(names.credentials, Spoken::tr("a folder with client.crt and client.key"));
    if (const QString problem = credentialsProblem(options.credentials, options.faults); !problem.isEmpty())
        return u"--credentials: "_s + problem;
    if (const QString problem = fillReceipts(parser, names, options); !problem.isEmpty())
        return problem;
    if (const QString problem = fillKeyLog(parser, names, options); !problem.isEmpty())
        return problem;
    options.appHash = QByteArray::fromHex(parser.value(names.appHash).toLatin1());
    options.json = parser.isSet(names.json);
    options.once = parser.isSet(names.once);
    return {};
}

constexpr int helpWidth = 80;

QString helpText(const QCommandLineParser &parser, const QString &program)
{
    QString text = parser.helpText();
    text.replace(program, u"velno-register"_s);
    text.replace(u"  -z <N> "_s, u"  --z <N>"_s); // Qt writes a name of one letter with one dash
    const QString words =
        Spoken::tr(
            "Faults; a STEP of a pairing is 1 (start), 2 (key exchange) or 3 (confirmation), a COMMAND "
            "is %1; WHEN is one of both; with *N behind it a COMMAND is disturbed N times only:")
            .arg(commandNames(false).join(", "_L1));
    return text + u'\n' + wrapped(words, helpWidth).join(u'\n') + u'\n' + faultHelp(faultTable()) +
           Spoken::tr("Items provoke faults, too: by the name !NAME[=VALUE], or by their price.\n"
                      "\nOn standard input: fault NAME[=VALUE], fault none, quit,\n  ") +
           settingLines().join(", "_L1) +
           Spoken::tr(".\n"
                      "Exit status: 0 told to stop or --sales done, 64 wrong usage, 69 no --control there, "
                      "or nothing draws;\n  with --once 0 paired, 1 not.\n") +
           Velno::GMP::trustAnchorsInWords() +
           Spoken::tr("Example: velno-register --serial UB1234567890 --connect 127.0.0.1:4100\n");
}

} // namespace

QByteArray serialBehind(const QByteArray &serial, int places)
{
    qsizetype first = serial.size(); // of the digits at its end
    while (first > 0 && serial[first - 1] >= '0' && serial[first - 1] <= '9')
        --first;
    const qsizetype digits = serial.size() - first;
    const QByteArray number = QByteArray::number(serial.sliced(first).toLongLong() + places);
    if (places > 0 && number.size() > digits)
        return {};
    return places == 0 ? serial : serial.first(first) + number.rightJustified(digits, '0');
}

CommandLine parseCommandLine(const QStringList &arguments)
{
    const Names names;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        Spoken::tr("A simulated cash register: connects again and again, pairs, and obeys the application."));
    parser.addOptions({names.help, names.version, names.serial, names.connect, names.relay, names.credentials,
                       names.appHash, names.noPaper});
    parser.addOptions(names.settings);
    parser.addOptions({names.journal, names.keyLog, names.receipts, names.receiptsAs, names.showReceipts,
                       names.speed, names.registers, names.control, names.json, names.once, names.sales,
                       names.fault});
    CommandLine line;
    const bool parsed = parser.parse(arguments);
    if (parsed && parser.isSet(names.help)) {
        line.outcome = CommandLine::Shown;
        line.text = helpText(parser, arguments.first());
        return line;
    }
    if (parsed && parser.isSet(names.version)) {
        line.outcome = CommandLine::Shown;
        line.text = versionText("velno-register", Velno::GMP::trustAnchorsInWords());
        return line;
    }
    line.text = parsed ? fill(parser, names, line.options) : parser.errorText();
    if (!line.text.isEmpty())
        line.outcome = CommandLine::WrongUsage;
    return line;
}

} // namespace Simulator
