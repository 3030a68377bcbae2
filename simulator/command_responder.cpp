#include "simulator/command_responder.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3_util.h"
#include "simulator/frame_faults.h"
#include "simulator/message_body.h"

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

/** Which command a plaintext asks for. */
CommandResponder::Request readCommand(const QByteArray &plaintext)
{
    QDataStream stream(plaintext);
    stream.setVersion(streamVersion);
    qint32 code = 0;
    stream >> code;
    if (stream.status() != QDataStream::Ok)
        return {nullptr, u"the command is shorter than its number"_s};
    const CommandRow *const command = commandByCode(code);
    if (!command)
        return {nullptr, u"command %1 is unknown"_s.arg(code)};
    if (!stream.atEnd())
        return {nullptr,
                u"the command %1 carries more than it should"_s.arg(QLatin1StringView(command->name))};
    return {command, {}};
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
        return {nullptr, frameProblem(status)};
    const MessageBody body(frame.sliced(headerSize).chopped(crcSize));
    if (body.isRunOf({unpairedTag}) && body.value(unpairedTag) == "0") {
        forgetKeys();
        return {};
    }
    if (!body.isRunOf({cipherTag, macTag}))
        return {nullptr, u"the frame holds no encrypted command"_s};
    if (m_faults.has(Fault::ForgetPairing))
        forgetKeys();
    return readEncrypted(body.value(cipherTag), body.value(macTag));
}

CommandResponder::Request CommandResponder::readEncrypted(const QByteArray &cipher,
                                                          const QByteArray &mac) const
{
    if (!holdsKeys())
        return {nullptr, u"the register holds no keys; it must be paired first"_s};
    if (mac.isEmpty() || !isSame(GMP3_HMAC(m_keys, cipher), mac))
        return {nullptr, u"the command's MAC is wrong"_s};
    const QByteArray plaintext = GMP3_cipher(m_keys, false, cipher);
    if (plaintext.isEmpty())
        return {nullptr, u"the command cannot be decrypted"_s};
    return readCommand(plaintext);
}

CommandResponder::Answer CommandResponder::answer(const CommandRow &command)
{
    QByteArray plaintext;
    QDataStream reply(&plaintext, QIODevice::WriteOnly);
    reply.setVersion(streamVersion);
    const bool accepted = command.run({m_model, reply, m_faults.hitsCommand(Fault::Refuse, command)});
    if (m_faults.has(Fault::ShortReply))
        plaintext.chop(1);
    return {seal(plaintext), accepted};
}

QByteArray CommandResponder::seal(const QByteArray &plaintext) const
{
    const QByteArray cipher = GMP3_cipher(m_keys, true, plaintext);
    QByteArray mac = GMP3_HMAC(m_keys, cipher);
    if (m_faults.has(Fault::BadMac))
        mac.back() = char(mac.back() ^ 1);
    QByteArray body = Velno::tlvElement(cipherTag, cipher);
    if (!m_faults.has(Fault::NoMac))
        body += Velno::tlvElement(macTag, mac);
    if (m_faults.has(Fault::ExtraElement))
        body += Velno::tlvElement(otherTag, "0");
    return GMP3::frame(true, None, body, serialUnderFaults(m_serial, m_faults).constData());
}

} // namespace Simulator
