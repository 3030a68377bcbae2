#include "simulator/register/faults.h"

#include "simulator/common/numbers.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr FaultRow whilePairing(Fault fault, const char *name, const char *help)
{
    return {fault, name, nullptr, 0, 0, help, Disturbs::KeyExchange};
}

constexpr FaultRow atCommands(Fault fault, const char *name, const char *help)
{
    return {fault, name, nullptr, 0, 0, help, Disturbs::Commands};
}

constexpr std::array registerFaults{
    whilePairing(Fault::WrongAuthority, "wrong-authority", "certificate of an authority that nobody trusts"),
    whilePairing(Fault::ExpiredCertificate, "expired-certificate",
                 "expired.crt and expired.key of the credentials folder"),
    whilePairing(Fault::NoCertificate, "no-certificate", "leaves the certificate out"),
    whilePairing(Fault::BadSignature, "bad-signature", "one bit of the signature is wrong"),
    whilePairing(Fault::NoSignature, "no-signature",
                 "cannot read its private key: result code 01, no signature"),
    FaultRow{Fault::ResultCode, "result-code", "NN[@STEP]", 0, 99, "answers with this result code",
             Disturbs::KeyExchange, Takes::ResultCode},
    FaultRow{Fault::WrongKind, "wrong-kind", "N", 1, 1000, "first N answers are of another kind",
             Disturbs::KeyExchange},
    FaultRow{Fault::RequestInstead, "request-instead", "N", 1, 1000, "first N answers are requests",
             Disturbs::KeyExchange},
    FaultRow{Fault::BadCrc, "bad-crc", nullptr, 0, 0, "one bit of the CRC is wrong"},
    FaultRow{Fault::BadLength, "bad-length", nullptr, 0, 0,
             "announces one byte more than it sends, then closes"},
    FaultRow{Fault::OtherSerial, "other-serial", nullptr, 0, 0, "answers under another serial number"},
    whilePairing(Fault::NoMessageTag, "no-message-tag", "fields without a message around them"),
    whilePairing(Fault::Oversize, "oversize", "announces a frame longer than 4096 bytes"),
    FaultRow{Fault::Segments, "segments", "N", 1, 4096, "N bytes per TCP segment"},
    FaultRow{Fault::Delay, "delay", "MS", 1, 600'000, "waits before each answer"},
    FaultRow{Fault::Mute, "mute", "WHEN", 1, 3, "does not answer this, stays connected", Disturbs::All,
             Takes::StepOrCommand},
    FaultRow{Fault::Close, "close", "WHEN", 1, 3, "closes instead of answering this", Disturbs::All,
             Takes::StepOrCommand},
    whilePairing(Fault::WrongKeyCheck, "wrong-key-check", "finds another key check value: result code 02"),
    whilePairing(Fault::WrongAppHash, "wrong-app-hash", "finds another application hash: result code 03"),
    whilePairing(Fault::SmallDhKey, "small-dh-key", "offers a 1024-bit Diffie-Hellman group"),
    FaultRow{Fault::Garbage, "garbage", nullptr, 0, 0, "random bytes instead of an answer"},
    atCommands(Fault::BadMac, "bad-mac", "one bit of the MAC is wrong"),
    atCommands(Fault::NoMac, "no-mac", "leaves the MAC out"),
    atCommands(Fault::ExtraElement, "extra-element", "one element too many behind command and MAC"),
    atCommands(Fault::ShortReply, "short-reply", "the last byte of the answer is missing"),
    FaultRow{Fault::Refuse, "refuse", "COMMAND", 0, 0, "says no to this command", Disturbs::Commands,
             Takes::RefusableCommand},
    FaultRow{Fault::KeepAlives, "keep-alives", "N", 1, 1000, "N keep-alives before each answer",
             Disturbs::Commands},
    atCommands(Fault::StaleReply, "stale-reply", "half an answer now, the other half 10 s later"),
    atCommands(Fault::HalfFrame, "half-frame", "half an answer, and no more"),
    atCommands(Fault::HugeFrame, "huge-frame", "announces an answer of 1 GiB"),
    atCommands(Fault::ForgetPairing, "forget-pairing", "has lost its keys when a command comes"),
    FaultRow{Fault::State, "state", "N", 0, int(State::OutOfService), "answers that it is in this state",
             Disturbs::Commands},
    FaultRow{Fault::Error, "error", "N", 1, 999'999'999, "answers with this register error",
             Disturbs::Commands},
    atCommands(Fault::SaleLimit, "sale-limit", "finds every sale over its limit"),
    FaultRow{Fault::PaperOutAfter, "paper-out-after", "N", 1, 1000, "has paper for N prints",
             Disturbs::Commands},
    FaultRow{Fault::LostAnswer, "lost-answer", "COMMAND", 0, 0, "does this, but the answer never comes",
             Disturbs::Commands, Takes::Command},
    FaultRow{Fault::PowerCut, "power-cut", "COMMAND", 0, 0, "does this, then its power is cut",
             Disturbs::Commands, Takes::Command},
};

constexpr std::array relayFaults{
    FaultRow{Fault::NoEcho, "no-echo", nullptr, 0, 0, "says nothing to an application, joins it to nobody"},
    FaultRow{Fault::WrongEcho, "wrong-echo", nullptr, 0, 0, "echoes a name with its last byte changed"},
    FaultRow{Fault::ShortEcho, "short-echo", nullptr, 0, 0, "echoes 11 bytes of the 12"},
    FaultRow{Fault::Drop, "drop", nullptr, 0, 0, "cuts both connections as soon as they are joined"},
    FaultRow{Fault::DropAfter, "drop-after", "BYTES", 1, 100'000'000,
             "cuts both connections after so many bytes between them"},
};

constexpr int firstStep = 1;
constexpr int lastStep = 3;
constexpr int mostTimes = 1000;

QString valueRule(const FaultRow &row)
{
    switch (row.takes) {
    case Takes::ResultCode:
        return u"NN[@STEP]: two digits, STEP 1 to 3"_s;
    case Takes::StepOrCommand:
        return u"WHEN: a step, 1 to 3, or COMMAND or COMMAND*N: "_s + commandNames(false).join(", "_L1);
    case Takes::Command:
        return u"COMMAND or COMMAND*N: "_s + commandNames(false).join(", "_L1);
    case Takes::RefusableCommand:
        return u"COMMAND or COMMAND*N: "_s + commandNames(true).join(", "_L1);
    default:
        return u"%1: %2 to %3"_s.arg(QLatin1StringView(row.value)).arg(row.least).arg(row.most);
    }
}

std::optional<FaultValue> readNumber(const FaultRow &row, const QString &written)
{
    const auto number = numberBetween(written, row.least, row.most);
    return number ? std::optional(FaultValue{.number = int(*number)}) : std::nullopt;
}

std::optional<FaultValue> readResultCode(const FaultRow &row, const QString &written)
{
    const qsizetype at = written.indexOf(u'@');
    const QString digits = written.left(at);
    const auto step = at < 0 ? std::optional(0LL) : numberBetween(written.mid(at + 1), firstStep, lastStep);
    auto value = readNumber(row, digits);
    if (!value || !step || digits.size() != 2)
        return std::nullopt;
    value->step = int(*step);
    return value;
}

std::optional<FaultValue> readCommand(const QString &written, bool refusableOnly)
{
    const qsizetype star = written.indexOf(u'*');
    const auto times = star < 0 ? std::optional(0LL) : numberBetween(written.mid(star + 1), 1, mostTimes);
    const CommandRow *const command = commandByName(written.left(star));
    if (!command || !times || (refusableOnly && !command->refusable))
        return std::nullopt;
    return FaultValue{.command = command, .times = int(*times)};
}

/** The value that was typed; none when it is not accepted. */
std::optional<FaultValue> readValue(const FaultRow &row, const QString &written)
{
    switch (row.takes) {
    case Takes::ResultCode:
        return readResultCode(row, written);
    case Takes::Command:
        return readCommand(written, false);
    case Takes::RefusableCommand:
        return readCommand(written, true);
    case Takes::StepOrCommand:
        if (auto command = readCommand(written, false))
            return command;
        return readNumber(row, written);
    default:
        return readNumber(row, written);
    }
}

QString listOfFaults(FaultTable table)
{
    QStringList usages;
    for (const FaultRow &row : table)
        usages << faultUsage(row);
    return usages.join(", "_L1);
}

} // namespace

FaultTable faultTable()
{
    return registerFaults;
}

FaultTable relayFaultTable()
{
    return relayFaults;
}

QString faultUsage(const FaultRow &row)
{
    const QString name = QLatin1StringView(row.name);
    return row.value ? name + u'=' + QLatin1StringView(row.value) : name;
}

QString faultHelp(FaultTable table)
{
    QString help;
    for (const FaultRow &row : table)
        help += u"  "_s + faultUsage(row).leftJustified(24) + QLatin1StringView(row.help) + u'\n';
    return help;
}

QString Faults::obey(const QString &line)
{
    if (!line.startsWith(u"fault "))
        return u"\"%1\" is no command; accepted are fault NAME[=VALUE], fault none, quit"_s.arg(line);
    const QString text = line.sliced(6).trimmed();
    if (text != u"none")
        return switchOn(text);
    m_active.clear();
    return {};
}

QString Faults::switchOn(const QString &text)
{
    const qsizetype equals = text.indexOf(u'=');
    const QString name = text.left(equals);
    const auto row =
        std::ranges::find(m_table, name, [](const FaultRow &r) { return QLatin1StringView(r.name); });
    if (row == m_table.end())
        return u"\"%1\" is no fault; accepted are %2"_s.arg(name, listOfFaults(m_table));
    if ((equals >= 0) != (row->value != nullptr))
        return (row->value ? u"%1 needs a value: %2"_s.arg(name, valueRule(*row))
                           : u"%1 takes no value"_s.arg(name));
    const QString written = text.mid(equals + 1);
    std::optional<FaultValue> value = FaultValue();
    if (row->value)
        value = readValue(*row, written);
    if (!value)
        return u"\"%1\" is no value of %2; accepted is %3"_s.arg(written, name, valueRule(*row));
    value->text = text;
    m_active.insert(row->fault, *value);
    return {};
}

bool Faults::hitsStep(Fault fault, int step) const
{
    return has(fault) && number(fault) == step;
}

bool Faults::hitsCommand(Fault fault, const CommandRow &command) const
{
    const auto found = m_active.constFind(fault);
    return found != m_active.constEnd() && found->command == &command;
}

QStringList Faults::spend(const CommandRow &command)
{
    QStringList spent;
    for (const FaultRow &row : m_table) {
        const auto found = m_active.find(row.fault);
        if (found == m_active.end() || found->command != &command || found->times == 0 || --found->times > 0)
            continue;
        spent << found->text;
        m_active.erase(found);
    }
    return spent;
}

QByteArray Faults::resultCode(int step) const
{
    const auto found = m_active.constFind(Fault::ResultCode);
    if (found == m_active.constEnd() || (found->step != 0 && found->step != step))
        return {};
    return QByteArray::number(found->number).rightJustified(2, '0');
}

QStringList Faults::names() const
{
    QStringList names;
    for (const FaultRow &row : m_table)
        if (has(row.fault))
            names << m_active.value(row.fault).text;
    return names;
}

} // namespace Simulator
