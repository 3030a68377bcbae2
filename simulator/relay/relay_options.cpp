// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay_options.h"

#include "simulator/common/numbers.h"

#include <QCommandLineParser>
#include <QSet>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

struct Names
{
    QCommandLineOption help{{u"h"_s, u"help"_s}, u"This text."_s};
    QCommandLineOption version{{u"v"_s, u"version"_s}, u"Version and trust anchors."_s};
    QCommandLineOption listen{u"listen"_s, u"Address to listen on; 127.0.0.1 without it."_s, u"ADDR"_s,
                              u"127.0.0.1"_s};
    QCommandLineOption applications{
        u"app-ports"_s, u"Ports for application 999999 and for all others; 50900,50902 without it."_s,
        u"A,B"_s, u"50900,50902"_s};
    QCommandLineOption registers{u"register-port"_s, u"Port where registers wait; 50910 without it."_s,
                                 u"N"_s, u"50910"_s};
    QCommandLineOption control{
        u"control"_s,
        u"Takes the lines of standard input there, too: a port of 127.0.0.1, ADDR:PORT or a path."_s,
        u"ADDRESS"_s};
    QCommandLineOption json{u"json"_s, u"Events as JSON, one object a line."_s};
    QCommandLineOption fault{u"fault"_s, u"Do something wrong, see below. May be repeated."_s,
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
        return u"--%1 \"%2\": accepted is %3"_s.arg(option.names().last(), parser.value(option), accepted);
    };
    if (!parser.positionalArguments().isEmpty())
        return u"\"%1\" is no option"_s.arg(parser.positionalArguments().first());
    if (!options.address.setAddress(parser.value(names.listen)))
        return wrong(names.listen, u"an address of this computer such as 127.0.0.1, 0.0.0.0 or ::1"_s);
    const auto applicationPorts = portsFrom(parser.value(names.applications));
    if (!applicationPorts)
        return wrong(names.applications,
                     u"two ports of 0 to 65535, such as 50900,50902; 0 is any free one"_s);
    const auto registerPort = portFrom(parser.value(names.registers));
    if (!registerPort)
        return wrong(names.registers, u"a port of 0 to 65535; 0 is any free one"_s);
    options.applicationPorts = *applicationPorts;
    options.registerPort = *registerPort;
    if (!areDifferent(options.applicationPorts + QList{options.registerPort}))
        return u"--app-ports and --register-port: accepted are three different ports"_s;
    options.control = controlAddressFrom(parser.value(names.control));
    if (parser.isSet(names.control) && !options.control)
        return wrong(names.control, controlAddressRule());
    for (const QString &fault : parser.values(names.fault))
        if (const QString error = options.faults.switchOn(fault); !error.isEmpty())
            return u"--fault: "_s + error;
    options.json = parser.isSet(names.json);
    return {};
}

const QString anchors = u"Trust anchors: none; it passes on what others say and believes nobody.\n"_s;

QString helpText(const QCommandLineParser &parser, const QString &program)
{
    QString text = parser.helpText();
    text.replace(program, u"velno-relay"_s);
    return text + u"\nFaults:\n"_s + faultHelp(relayFaultTable()) +
           u"\nOn standard input: fault NAME[=VALUE], fault none, quit.\n"
           "Exit status: 0 told to stop, 64 wrong usage, 69 a port cannot be had.\n"_s +
           anchors + u"Example: velno-relay --listen 127.0.0.1 --json\n"_s;
}

} // namespace

ParsedCommandLine<RelayOptions> parseRelayCommandLine(const QStringList &arguments)
{
    const Names names;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"A relay: registers wait at it, and applications that name one by its serial number are joined to it."_s);
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
        line.text = versionText("velno-relay", anchors);
        return line;
    }
    line.text = parsed ? fill(parser, names, line.options) : parser.errorText();
    if (!line.text.isEmpty())
        line.outcome = line.WrongUsage;
    return line;
}

} // namespace Simulator
