// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/pairing_responder.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/prepare.h"
#include "ExtDevice/gmp3/protocol_table.h"
#include "simulator/register/foreign_certificate.h"
#include "simulator/register/frame_faults.h"
#include "simulator/register/message_body.h"

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

/** The 1024-bit prime of RFC 2409: safe, but long within reach of a computation. */
QByteArray smallPrime()
{
    const Velno::BnPtr prime{BN_get_rfc2409_prime_1024(nullptr)};
    QByteArray bytes(BN_num_bytes(prime.get()), '\0');
    BN_bn2bin(prime.get(), Velno::octets(bytes));
    return bytes;
}

} // namespace

QString kindName(MessageTag kind)
{
    const bool ofAPairing = kind >= PairingStart && kind <= PairingConfirm;
    return ofAPairing ? QString::fromLatin1(messageTable()[kind].name) : u"message %1"_s.arg(int(kind));
}

int stepOf(MessageTag kind)
{
    return int(kind) - int(PairingStart) + 1;
}

PairingResponder::PairingResponder(const QByteArray &serial, const QString &credentialsFolder,
                                   const QByteArray &appHash, const Faults &faults)
    : m_serial(serial)
    , m_credentialsFolder(credentialsFolder)
    , m_appHash(appHash)
    , m_faults(faults)
{
}

void PairingResponder::begin()
{
    m_session.begin();
    m_session.record.forgetKeys();
    m_answeredStep = 0;
    m_misleadingFrames = 0;
}

PairingResponder::Request PairingResponder::read(const QByteArray &frame)
{
    const int status = m_session.check(frame.constData(), int(frame.size()), m_serial.constData(), true);
    if (status != 0)
        return {None, frameProblem(status)};
    const MessageTag kind = m_session.record.message;
    const int step = stepOf(kind);
    if (m_session.record.isResponse || step < 1 || step > 3)
        return {kind, u"%1 is no pairing request"_s.arg(kindName(kind))};
    if (step > m_answeredStep + 1)
        return {kind, u"%1 came before its turn"_s.arg(kindName(kind))};
    return {kind, {}};
}

PairingResponder::Answer PairingResponder::answer(MessageTag kind)
{
    if (const auto misleading = misleadingFrame(kind))
        return {*misleading, {}, false, {}};
    prepareSession();
    const QByteArray body = bodyUnderFaults(kind);
    Answer answer{frame(true, kind, body), MessageBody(body).value(fieldTag(ResultCode)), false, {}};
    if (answer.resultCode != "00")
        answer.refusal = u"result code %1"_s.arg(QLatin1StringView(answer.resultCode));
    else if (kind == PairingConfirm && !m_session.record.secretAgreed)
        answer.refusal = u"no shared secret was agreed"_s;
    else
        answer.paired = kind == PairingConfirm;
    m_answeredStep = stepOf(kind);
    return answer;
}

MatchExt PairingResponder::takeKeys()
{
    MatchExt keys;
    keys.registerData = m_serial;
    m_session.record.putKeysInto(keys);
    m_session.record.forgetKeys();
    return keys;
}

std::optional<QByteArray> PairingResponder::misleadingFrame(MessageTag kind)
{
    const int otherKinds = m_faults.number(Fault::WrongKind);
    if (m_misleadingFrames >= otherKinds + m_faults.number(Fault::RequestInstead))
        return std::nullopt;
    const QByteArray body = Velno::tlvElement(fieldTag(ResultCode), "00");
    if (m_misleadingFrames++ >= otherKinds)
        return frame(false, kind, body);
    return frame(true, kind == PairingStart ? PairingConfirm : PairingStart, body);
}

/** What the engine answers from: its credentials, the application hash it insists on, what it has received.
 */
void PairingResponder::prepareSession()
{
    const bool expired = m_faults.has(Fault::ExpiredCertificate);
    const QString name = m_credentialsFolder + (expired ? u"/expired"_s : u"/client"_s);
    const QString absent = m_credentialsFolder + u"/absent"_s;
    m_session.certificatePath = m_faults.has(Fault::NoCertificate) ? absent : name + u".crt"_s;
    m_session.keyPath = m_faults.has(Fault::NoSignature) ? absent : name + u".key"_s;
    m_session.record.appHash = m_faults.has(Fault::WrongAppHash) ? QByteArray(32, '\xA5') : m_appHash;
    const QByteArray checkValue = fieldTag(KeyCheckValue);
    if (m_faults.has(Fault::WrongKeyCheck))
        m_session.record.add(checkValue, withOneBitWrong(m_session.record.value(checkValue)), true);
}

QByteArray PairingResponder::bodyUnderFaults(MessageTag kind)
{
    MessageBody body(prepareBody(m_session, kind, true, m_serial.constData()));
    if (m_faults.has(Fault::WrongAuthority) && body.contains(fieldTag(Certificate)))
        body.replace(fieldTag(Certificate), underForeignAuthority(body.value(fieldTag(Certificate))));
    if (m_faults.has(Fault::BadSignature))
        body.replace(fieldTag(Signature), withOneBitWrong(body.value(fieldTag(Signature))));
    if (m_faults.has(Fault::SmallDhKey))
        body.replace(fieldTag(DhPrime), smallPrime());
    if (const QByteArray code = m_faults.resultCode(stepOf(kind)); !code.isEmpty())
        body.replace(fieldTag(ResultCode), code);
    return body.toBytes();
}

QByteArray PairingResponder::frame(bool response, MessageTag kind, const QByteArray &body) const
{
    const QByteArray serial = serialUnderFaults(m_serial, m_faults);
    return makeFrame(response, m_faults.has(Fault::NoMessageTag) ? None : kind, body, serial.constData());
}

} // namespace Simulator
