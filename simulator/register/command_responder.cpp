#include "simulator/register/command_responder.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3_util.h"
#include "simulator/register/frame_faults.h"
#include "simulator/register/message_body.h"

#include <QIODevice>

#include <openssl/crypto.h>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

const QByteArray cipherTag = QByteArrayLiteral("\xDF\xE0\x02");
const QByteArray macTag = QByteArrayLiteral("\xDF\xE0\x03");
const QByteArray otherTag = QByteArrayLiteral("\xDF\xE0\x04");
const QByteArray unpairedTag = QByteArrayLiteral("\xDF\xE0\x05");
constexpr int headerSize = 14; // length field and serial number
constexpr int crcSize = 2;
constexpr int streamVersion = QDataStream::Qt_4_6;

bool isSame(const QByteArray &left, const QByteArray &right)
{
    return left.size() == right.size() &&
           CRYPTO_memcmp(left.constData(), right.constData(), size_t(left.size())) == 0;
}

CommandResponder::Request refused(const QString &reason)
{
    return {nullptr, {}, reason};
}

/** Which command a plaintext asks for, and with what. */
CommandResponder::Request readCommand(const QByteArray &plaintext)
{
    QDataStream stream(plaintext);
    stream.setVersion(streamVersion);
    qint32 code = 0;
    stream >> code;
    if (stream.status() != QDataStream::Ok)
        return refused(u"the command is shorter than its number"_s);
    const CommandRow *const command = commandByCode(code);
    if (!command)
        return refused(u"command %1 is unknown"_s.arg(code));
    const QLatin1StringView name(command->name);
    const DecodedCommand decoded = command->decode(stream);
    if (stream.status() != QDataStream::Ok)
        return refused(
            u"the command %1 carries less than it should, or what is none of its items"_s.arg(name));
    if (!stream.atEnd())
        return refused(u"the command %1 carries more than it should"_s.arg(name));
    return {command, decoded, {}};
}

Disturbance disturbanceOf(const CommandRow &command, const Faults &faults)
{
    const auto number = [&faults](Fault fault) {
        return faults.has(fault) ? std::optional(qint32(faults.number(fault))) : std::nullopt;
    };
    return {faults.hitsCommand(Fault::Refuse, command), faults.has(Fault::SaleLimit), number(Fault::State),
            number(Fault::Error)};
}

} // namespace

CommandResponder::CommandResponder(const QByteArray &serial, FiscalModel &model, const Faults &faults)
    : m_serial(serial)
    , m_model(model)
    , m_faults(faults)
{
}

void CommandResponder::forgetKeys()
{
    m_keys = {};
    m_model.logout();
}

CommandResponder::Request CommandResponder::read(const QByteArray &frame)
{
    const int status = GMP3::check(frame.constData(), int(frame.size()), m_serial.constData(), false);
    if (status != 0)
        return refused(frameProblem(status));
    const MessageBody body(frame.sliced(headerSize).chopped(crcSize));
    if (body.isRunOf({unpairedTag}) && body.value(unpairedTag) == "0") {
        forgetKeys();
        return {};
    }
    if (!body.isRunOf({cipherTag, macTag}))
        return refused(u"the frame holds no encrypted command"_s);
    if (m_faults.has(Fault::ForgetPairing))
        forgetKeys();
    return readEncrypted(body.value(cipherTag), body.value(macTag));
}

CommandResponder::Request CommandResponder::readEncrypted(const QByteArray &cipher,
                                                          const QByteArray &mac) const
{
    if (!holdsKeys())
        return refused(u"the register holds no keys; it must be paired first"_s);
    if (mac.isEmpty() || !isSame(GMP3_HMAC(m_keys, cipher), mac))
        return refused(u"the command's MAC is wrong"_s);
    const QByteArray plaintext = GMP3_cipher(m_keys, false, cipher);
    if (plaintext.isEmpty())
        return refused(u"the command cannot be decrypted"_s);
    return readCommand(plaintext);
}

CommandResponder::Answer CommandResponder::answer(const Request &request, const Faults &faults)
{
    QByteArray plaintext;
    QDataStream reply(&plaintext, QIODevice::WriteOnly);
    reply.setVersion(streamVersion);
    const Refusal refusal = request.decoded.run({m_model, reply, disturbanceOf(*request.command, faults)});
    if (plaintext.isEmpty())
        return {{}, refusal};
    if (faults.has(Fault::ShortReply))
        plaintext.chop(1);
    return {seal(plaintext, faults), refusal};
}

QByteArray CommandResponder::seal(const QByteArray &plaintext, const Faults &faults) const
{
    const QByteArray cipher = GMP3_cipher(m_keys, true, plaintext);
    QByteArray mac = GMP3_HMAC(m_keys, cipher);
    if (faults.has(Fault::BadMac))
        mac.back() = char(mac.back() ^ 1);
    QByteArray body = Velno::tlvElement(cipherTag, cipher);
    if (!faults.has(Fault::NoMac))
        body += Velno::tlvElement(macTag, mac);
    if (faults.has(Fault::ExtraElement))
        body += Velno::tlvElement(otherTag, "0");
    return GMP3::frame(true, None, body, serialUnderFaults(m_serial, faults).constData());
}

} // namespace Simulator
