#include "simulator/faults.h"

#include "simulator/numbers.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr std::array registerFaults{
    FaultRow{Fault::WrongAuthority, "wrong-authority", nullptr, 0, 0,
             "certificate of an authority that nobody trusts"},
    FaultRow{Fault::ExpiredCertificate, "expired-certificate", nullptr, 0, 0,
             "expired.crt and expired.key of the credentials folder"},
    FaultRow{Fault::NoCertificate, "no-certificate", nullptr, 0, 0, "leaves the certificate out"},
    FaultRow{Fault::BadSignature, "bad-signature", nullptr, 0, 0, "one bit of the signature is wrong"},
    FaultRow{Fault::NoSignature, "no-signature", nullptr, 0, 0,
             "cannot read its private key: result code 01, no signature"},
    FaultRow{Fault::ResultCode, "result-code", "NN[@STEP]", 0, 99, "answers with this result code"},
    FaultRow{Fault::WrongKind, "wrong-kind", "N", 1, 1000, "first N answers are of another kind"},
    FaultRow{Fault::RequestInstead, "request-instead", "N", 1, 1000, "first N answers are requests"},
    FaultRow{Fault::BadCrc, "bad-crc", nullptr, 0, 0, "one bit of the CRC is wrong"},
    FaultRow{Fault::BadLength, "bad-length", nullptr, 0, 0,
             "announces one byte more than it sends, then closes"},
    FaultRow{Fault::OtherSerial, "other-serial", nullptr, 0, 0, "answers under another serial number"},
    FaultRow{Fault::NoMessageTag, "no-message-tag", nullptr, 0, 0, "fields without a message around them"},
    FaultRow{Fault::Oversize, "oversize", nullptr, 0, 0, "announces a frame longer than 4096 bytes"},
    FaultRow{Fault::Segments, "segments", "N", 1, 4096, "N bytes per TCP segment"},
    FaultRow{Fault::Delay, "delay", "MS", 1, 600'000, "waits before each answer"},
    FaultRow{Fault::Mute, "mute", "STEP", 1, 3, "does not answer this step, stays connected"},
    FaultRow{Fault::Close, "close", "STEP", 1, 3, "closes instead of answering this step"},
    FaultRow{Fault::WrongKeyCheck, "wrong-key-check", nullptr, 0, 0,
             "finds another key check value: result code 02"},
    FaultRow{Fault::WrongAppHash, "wrong-app-hash", nullptr, 0, 0,
             "finds another application hash: result code 03"},
    FaultRow{Fault::SmallDhKey, "small-dh-key", nullptr, 0, 0, "offers a 1024-bit Diffie-Hellman group"},
    FaultRow{Fault::Garbage, "garbage", nullptr, 0, 0, "random bytes instead of an answer"},
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

QString valueRule(const FaultRow &row)
{
    if (row.fault == Fault::ResultCode)
        return u"NN[@STEP]: two digits, STEP 1 to 3"_s;
    return u"%1: %2 to %3"_s.arg(QLatin1StringView(row.value)).arg(row.least).arg(row.most);
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
    Value value{0, 0, text};
    if (row->value) {
        const QString written = text.mid(equals + 1);
        const bool coded = row->fault == Fault::ResultCode;
        const qsizetype at = coded ? written.indexOf(u'@') : -1;
        const QString digits = written.left(at);
        const auto number = numberBetween(digits, row->least, row->most);
        const auto step =
            at < 0 ? std::optional(0LL) : numberBetween(written.mid(at + 1), firstStep, lastStep);
        if (!number || !step || (coded && digits.size() != 2))
            return u"\"%1\" is no value of %2; accepted is %3"_s.arg(written, name, valueRule(*row));
        value.number = int(*number);
        value.step = int(*step);
    }
    m_active.insert(row->fault, value);
    return {};
}

bool Faults::hitsStep(Fault fault, int step) const
{
    return has(fault) && number(fault) == step;
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
