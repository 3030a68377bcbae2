// SPDX-License-Identifier: Apache-2.0

#include "till/arguments.h"

#include <QStringDecoder>

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr unsigned serialSize = 12;
constexpr unsigned largestPort = 65'535;
constexpr unsigned largestSettings = 4096; // beyond, the size was never set
constexpr char relayAddress[] = "255.255.255.255";

/** What a later header has behind ours must be zero: it cannot be obeyed. */
bool isSizeKnown(const VelnoTillSettings &settings)
{
    if (settings.size < sizeof settings || settings.size > largestSettings)
        return false;
    const char *const bytes = reinterpret_cast<const char *>(&settings);
    return std::all_of(bytes + sizeof settings, bytes + settings.size, [](char byte) { return byte == 0; });
}

bool isSerial(const char *text)
{
    const std::string_view serial(text);
    return serial.size() == serialSize &&
           std::ranges::all_of(serial, [](char sign) { return sign > ' ' && sign <= '~'; });
}

bool isAddress(const char *text)
{
    // An IPv6 address may name an interface behind a %.
    const std::string address(text, std::strcspn(text, "%"));
    in_addr four;
    in6_addr six;
    return inet_pton(AF_INET, text, &four) == 1 || inet_pton(AF_INET6, address.c_str(), &six) == 1;
}

QString problemOf(const VelnoTillSettings &settings)
{
    if (!isSerial(settings.serial))
        return u"serial: it has 12 characters"_s;
    if (!isAddress(settings.address))
        return u"address: an IP address of this computer, 0.0.0.0, or 255.255.255.255 for the relay"_s;
    const bool isRelay = std::strcmp(settings.address, relayAddress) == 0;
    if (!isRelay && (settings.port == 0 || settings.port > largestPort))
        return u"port: %1; accepted: 1 to %2"_s.arg(settings.port).arg(largestPort);
    return settings.ledger[0] == '\0' ? u"ledger: the path of a file"_s : QString();
}

} // namespace

std::optional<QString> nameFrom(const char *text, unsigned longest)
{
    const size_t size = strnlen(text, longest + 1);
    if (size == 0 || size > longest)
        return std::nullopt;
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString name = decoder.decode(QByteArrayView(text, qsizetype(size)));
    const bool isClean =
        std::ranges::all_of(name, [](QChar c) { return c.category() != QChar::Other_Control; });
    return decoder.hasError() || !isClean ? std::nullopt : std::optional(name);
}

int readSettings(const VelnoTillSettings &settings, Place *place, QString *problem)
{
    if (!isSizeKnown(settings)) {
        *problem = u"size: %1 is not that of VelnoTillSettings"_s.arg(settings.size);
        return VelnoTillResult_BadArgument;
    }
    if (!settings.serial || !settings.address || !settings.ledger) {
        *problem = u"serial, address and ledger are needed"_s;
        return VelnoTillResult_NullArgument;
    }
    *problem = problemOf(settings);
    if (!problem->isEmpty())
        return VelnoTillResult_BadArgument;
    const auto orUsual = [](unsigned given, unsigned usual) { return given == 0 ? usual : given; };
    const Meeting usual;
    place->meeting = {settings.appNo,
                      settings.serial,
                      settings.address,
                      quint16(settings.port),
                      orUsual(settings.connectTimeout, usual.connectTimeout),
                      orUsual(settings.answerLimit, usual.answerLimit),
                      orUsual(settings.patience, usual.patience)};
    place->ledger = {QString::fromLocal8Bit(settings.ledger), settings.serial, {}};
    return VelnoTillResult_Done;
}

} // namespace Velno::Receipts
