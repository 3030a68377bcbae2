// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/faults.h"

#include "simulator/common/numbers.h"
#include "translations/spoken.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

using Row = RegisterFaultRow;

constexpr Row always(Fault fault, const char *name, const char *help)
{
    return {{name, nullptr, 0, 0, help}, fault};
}

constexpr Row whilePairing(Fault fault, const char *name, const char *help)
{
    return {{name, nullptr, 0, 0, help}, fault, Disturbs::KeyExchange};
}

constexpr Row atCommands(Fault fault, const char *name, const char *help)
{
    return {{name, nullptr, 0, 0, help}, fault, Disturbs::Commands};
}

constexpr std::array table{
    whilePairing(Fault::WrongAuthority, "wrong-authority",
                 Spoken::later("certificate of an authority that nobody trusts")),
    whilePairing(Fault::ExpiredCertificate, "expired-certificate",
                 Spoken::later("expired.crt and expired.key of the credentials folder")),
    whilePairing(Fault::NoCertificate, "no-certificate", Spoken::later("leaves the certificate out")),
    whilePairing(Fault::BadSignature, "bad-signature", Spoken::later("one bit of the signature is wrong")),
    whilePairing(Fault::NoSignature, "no-signature",
                 Spoken::later("cannot read its private key: result code 01, no signature")),
    Row{{"result-code", "NN[@STEP]", 0, 99, Spoken::later("answers with this result code")},
        Fault::ResultCode,
        Disturbs::KeyExchange,
        Takes::ResultCode},
    Row{{"wrong-kind", "N", 1, 1000, Spoken::later("first N answers are of another kind")},
        Fault::WrongKind,
        Disturbs::KeyExchange},
    Row{{"request-instead", "N", 1, 1000, Spoken::later("first N answers are requests")},
        Fault::RequestInstead,
        Disturbs::KeyExchange},
    always(Fault::BadCrc, "bad-crc", Spoken::later("one bit of the CRC is wrong")),
    always(Fault::BadLength, "bad-length",
           Spoken::later("announces one byte more than it sends, then closes")),
    always(Fault::OtherSerial, "other-serial", Spoken::later("answers under another serial number")),
    whilePairing(Fault::NoMessageTag, "no-message-tag",
                 Spoken::later("fields without a message around them")),
    whilePairing(Fault::Oversize, "oversize", Spoken::later("announces a frame longer than 4096 bytes")),
    Row{{"segments", "N", 1, 4096, Spoken::later("N bytes per TCP segment")}, Fault::Segments},
    Row{{"delay", "MS", 1, 600'000, Spoken::later("waits before each answer")}, Fault::Delay},
    Row{{"mute", "WHEN", 1, 3, Spoken::later("does not answer this, stays connected")},
        Fault::Mute,
        Disturbs::All,
        Takes::StepOrCommand},
    Row{{"close", "WHEN", 1, 3, Spoken::later("closes instead of answering this")},
        Fault::Close,
        Disturbs::All,
        Takes::StepOrCommand},
    whilePairing(Fault::WrongKeyCheck, "wrong-key-check",
                 Spoken::later("finds another key check value: result code 02")),
    whilePairing(Fault::WrongAppHash, "wrong-app-hash",
                 Spoken::later("finds another application hash: result code 03")),
    whilePairing(Fault::SmallDhKey, "small-dh-key", Spoken::later("offers a 1024-bit Diffie-Hellman group")),
    always(Fault::Garbage, "garbage", Spoken::later("random bytes instead of an answer")),
    atCommands(Fault::BadMac, "bad-mac", Spoken::later("one bit of the MAC is wrong")),
    atCommands(Fault::NoMac, "no-mac", Spoken::later("leaves the MAC out")),
    atCommands(Fault::ExtraElement, "extra-element",
               Spoken::later("one element too many behind command and MAC")),
    atCommands(Fault::ShortReply, "short-reply", Spoken::later("the last byte of the answer is missing")),
    Row{{"refuse", "COMMAND", 0, 0, Spoken::later("says no to this command")},
        Fault::Refuse,
        Disturbs::Commands,
        Takes::RefusableCommand},
    Row{{"keep-alives", "N", 1, 1000, Spoken::later("N keep-alives before each answer")},
        Fault::KeepAlives,
        Disturbs::Commands},
    atCommands(Fault::StaleReply, "stale-reply",
               Spoken::later("half an answer now, the other half 10 s later")),
    atCommands(Fault::HalfFrame, "half-frame", Spoken::later("half an answer, and no more")),
    atCommands(Fault::HugeFrame, "huge-frame", Spoken::later("announces an answer of 1 GiB")),
    atCommands(Fault::ForgetPairing, "forget-pairing",
               Spoken::later("has lost its keys when a command comes")),
    Row{{"state", "N", 0, int(State::OutOfService), Spoken::later("answers that it is in this state")},
        Fault::State,
        Disturbs::Commands},
    Row{{"error", "N", 1, 999'999'999, Spoken::later("answers with this register error")},
        Fault::Error,
        Disturbs::Commands},
    atCommands(Fault::SaleLimit, "sale-limit", Spoken::later("finds every sale over its limit")),
    Row{{"paper-out-after", "N", 1, 1000, Spoken::later("has paper for N prints")},
        Fault::PaperOutAfter,
        Disturbs::Commands},
    Row{{"lost-answer", "COMMAND", 0, 0, Spoken::later("does this, but the answer never comes")},
        Fault::LostAnswer,
        Disturbs::Commands,
        Takes::Command},
    Row{{"power-cut", "COMMAND", 0, 0, Spoken::later("does this, then its power is cut")},
        Fault::PowerCut,
        Disturbs::Commands,
        Takes::Command},
};

constexpr int firstStep = 1;
constexpr int lastStep = 3;
constexpr int mostTimes = 1000;

std::optional<RegisterFaultValue> readNumber(const Row &row, const QString &written)
{
    auto value = row.FaultRow::readValue(written);
    return value ? std::optional(RegisterFaultValue{*value}) : std::nullopt;
}

std::optional<RegisterFaultValue> readResultCode(const Row &row, const QString &written)
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

std::optional<RegisterFaultValue> readCommand(const QString &written, bool refusableOnly)
{
    const qsizetype star = written.indexOf(u'*');
    const auto times = star < 0 ? std::optional(0LL) : numberBetween(written.mid(star + 1), 1, mostTimes);
    const CommandRow *const command = commandByName(written.left(star));
    if (!command || !times || (refusableOnly && !command->refusable))
        return std::nullopt;
    return RegisterFaultValue{{}, 0, command, int(*times)};
}

} // namespace

std::span<const RegisterFaultRow> faultTable()
{
    return table;
}

QString RegisterFaultRow::valueRule() const
{
    switch (takes) {
    case Takes::ResultCode:
        return Spoken::tr("NN[@STEP]: two digits, STEP 1 to 3");
    case Takes::StepOrCommand:
        return Spoken::tr("WHEN: a step, 1 to 3, or COMMAND or COMMAND*N: %1")
            .arg(commandNames(false).join(", "_L1));
    case Takes::Command:
        return Spoken::tr("COMMAND or COMMAND*N: %1").arg(commandNames(false).join(", "_L1));
    case Takes::RefusableCommand:
        return Spoken::tr("COMMAND or COMMAND*N: %1").arg(commandNames(true).join(", "_L1));
    case Takes::Number:
        return FaultRow::valueRule();
    }
    return {};
}

std::optional<RegisterFaultValue> RegisterFaultRow::readValue(const QString &written) const
{
    switch (takes) {
    case Takes::ResultCode:
        return readResultCode(*this, written);
    case Takes::Command:
        return readCommand(written, false);
    case Takes::RefusableCommand:
        return readCommand(written, true);
    case Takes::StepOrCommand:
        if (auto command = readCommand(written, false))
            return command;
        return readNumber(*this, written);
    case Takes::Number:
        return readNumber(*this, written);
    }
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
    for (const Row &row : m_table) {
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

} // namespace Simulator
