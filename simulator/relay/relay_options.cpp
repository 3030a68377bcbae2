// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay_options.h"

#include "simulator/common/numbers.h"
#include "translations/spoken.h"

#include <QCommandLineParser>
#include <QSet>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

struct Names
{
    QCommandLineOption help{{u"h"_s, u"help"_s}, Spoken::tr("This text.")};
    QCommandLineOption version{{u"v"_s, u"version"_s}, Spoken::tr("Version and trust anchors.")};
    QCommandLineOption listen{u"listen"_s, Spoken::tr("Address to listen on; 127.0.0.1 without it."),
                              u"ADDR"_s, u"127.0.0.1"_s};
    QCommandLineOption applications{
        u"app-ports"_s,
        Spoken::tr("Ports for application 999999 and for all others; 50900,50902 without it."), u"A,B"_s,
        u"50900,50902"_s};
    QCommandLineOption registers{
        u"register-port"_s, Spoken::tr("Port where registers wait; 50910 without it."), u"N"_s, u"50910"_s};
    QCommandLineOption control{
        u"control"_s,
        Spoken::tr("Takes the lines of standard input there, too: a port of 127.0.0.1, ADDR:PORT or a path."),
        u"ADDRESS"_s};
    QCommandLineOption json{u"json"_s, Spoken::tr("Events as JSON, one object a line.")};
    QCommandLineOption fault{u"fault"_s, Spoken::tr("Do something wrong, see below. May be repeated."),
                             u"NAME[=VALUE]"_s};
};

std::optional<quint16> portFrom(const QString &text)
{
    const auto port = numberBetween(text, 0, 65535);
    return port ? std::optional(quint16(*port)) : std::nullopt;
}

std::optional<QList<quint16>> portsFrom(const QString &text)
{
    const QStringList parts = text.split(u',');
    const auto first = portFrom(parts.first());
    const auto second = portFrom(parts.last());
    return parts.size() == 2 && first && second ? std::optional(QList{*first, *second}) : std::nullopt;
}

/** Of ports that are not 0, so that the system chooses. */
bool areDifferent(QList<quint16> ports)
{
    ports.removeAll(0);
    return QSet(ports.cbegin(), ports.cend()).size() == ports.size();
}

/** Fills the options; returns what was wrong and what is accepted, or nothing. */
QString fill(const QCommandLineParser &parser, const Names &names, RelayOptions &options)
{
    const auto wrong = [&parser](const QCommandLineOption &option, const QString &accepted) {
        return Spoken::tr("--%1 \"%2\": accepted is %3")
            .arg(option.names().last(), parser.value(option), accepted);
    };
    if (!parser.positionalArguments().isEmpty())
        return Spoken::tr("\"%1\" is no option").arg(parser.positionalArguments().first());
    if (!options.address.setAddress(parser.value(names.listen)))
        return wrong(names.listen,
                     Spoken::tr("an address of this computer such as 127.0.0.1, 0.0.0.0 or ::1"));
    const auto applicationPorts = portsFrom(parser.value(names.applications));
    if (!applicationPorts)
        return wrong(names.applications,
                     Spoken::tr("two ports of 0 to 65535, such as 50900,50902; 0 is any free one"));
    const auto registerPort = portFrom(parser.value(names.registers));
    if (!registerPort)
        return wrong(names.registers, Spoken::tr("a port of 0 to 65535; 0 is any free one"));
    options.applicationPorts = *applicationPorts;
    options.registerPort = *registerPort;
    if (!areDifferent(options.applicationPorts + QList{options.registerPort}))
        return Spoken::tr("--app-ports and --register-port: accepted are three different ports");
    options.control = controlAddressFrom(parser.value(names.control));
    if (parser.isSet(names.control) && !options.control)
        return wrong(names.control, controlAddressRule());
    for (const QString &fault : parser.values(names.fault))
        if (const QString error = options.faults.switchOn(fault); !error.isEmpty())
            return u"--fault: "_s + error;
    options.json = parser.isSet(names.json);
    return {};
}

QString anchors()
{
    return Spoken::tr("Trust anchors: none; it passes on what others say and believes nobody.\n");
}

QString helpText(const QCommandLineParser &parser, const QString &program)
{
    QString text = parser.helpText();
    text.replace(program, u"velno-relay"_s);
    return text + Spoken::tr("\nFaults:\n") + faultHelp(relayFaultTable()) +
           Spoken::tr("\nOn standard input: fault NAME[=VALUE], fault none, quit.\n"
                      "Exit status: 0 told to stop, 64 wrong usage, 69 a port cannot be had.\n") +
           anchors() + Spoken::tr("Example: velno-relay --listen 127.0.0.1 --json\n");
}

} // namespace

ParsedCommandLine<RelayOptions> parseRelayCommandLine(const QStringList &arguments)
{
    const Names names;
    QCommandLineParser parser;
    parser.setApplicationDescription(Spoken::tr("A relay: registers wait at it, and applications that name "
                                                "one by its serial number are joined to it."));
    parser.addOptions({names.help, names.version, names.listen, names.applications, names.registers,
                       names.control, names.json, names.fault});
    ParsedCommandLine<RelayOptions> line;
    const bool parsed = parser.parse(arguments);
    if (parsed && parser.isSet(names.help)) {
        line.outcome = line.Shown;
        line.text = helpText(parser, arguments.first());
        return line;
    }
    if (parsed && parser.isSet(names.version)) {
        line.outcome = line.Shown;
        line.text = versionText("velno-relay", anchors());
        return line;
    }
    line.text = parsed ? fill(parser, names, line.options) : parser.errorText();
    if (!line.text.isEmpty())
        line.outcome = line.WrongUsage;
    return line;
}

} // namespace Simulator
