// SPDX-License-Identifier: Apache-2.0

#include "tests/support/hand_made_register.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace TestSupport {

using namespace Velno;
using namespace Velno::GMP;

namespace {

constexpr char serial[] = "UB1234567890";
constexpr qsizetype headerSize = 14; // of a frame: its length and the serial number

Request requestOf(const QByteArray &frame)
{
    ReceivedMessage message;
    const int status = readFrame(frame.constData(), int(frame.size()), serial, &message);
    return {status != 0 || message.isResponse ? None : message.kind, message.fields};
}

/** A whole frame from the stream; empty when the peer has gone, or is none that exchanges keys. */
QByteArray nextFrame(QTcpSocket &socket, const std::atomic<bool> &stop)
{
    const auto await = [&](qsizetype count) {
        while (socket.bytesAvailable() < count) {
            if (stop || (!socket.waitForReadyRead(50) && socket.state() != QAbstractSocket::ConnectedState))
                return false;
        }
        return true;
    };
    if (!await(2))
        return {};
    const QByteArray length = socket.peek(2);
    const int size = quint8(length.at(0)) * 256 + quint8(length.at(1)) + 2;
    return size >= headerSize && await(size) ? socket.read(size) : QByteArray();
}

} // namespace

QByteArray valueOf(const Fields &fields, const QByteArray &tag)
{
    for (const auto &[name, value] : fields) {
        if (name == tag)
            return value;
    }
    return {};
}

void replaceValue(Fields &fields, const QByteArray &tag, const QByteArray &value)
{
    for (auto &[name, old] : fields) {
        if (name == tag)
            old = value;
    }
}

void removeField(Fields &fields, const QByteArray &tag)
{
    fields.removeIf([&](const Field &field) { return field.tag == tag; });
}

HandMadeRegister::HandMadeRegister(Hook hook)
    : m_hook(std::move(hook))
{
}

HandMadeRegister::~HandMadeRegister()
{
    finish();
    for (QByteArray *own : {&secret, &aesKey, &kcvIv, &hmacKey})
        cleanse(*own);
}

void HandMadeRegister::start(quint16 port)
{
    m_thread = std::thread([this, port] { connectAndConverse(port); });
}

QList<Request> HandMadeRegister::finish()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    return m_requests;
}

void HandMadeRegister::connectAndConverse(quint16 port)
{
    QTcpSocket socket;
    while (!m_stop) {
        socket.connectToHost(u"127.0.0.1"_s, port);
        if (socket.waitForConnected(5000))
            break;
        std::this_thread::yield(); // nobody listens yet
    }
    converse(socket);
}

void HandMadeRegister::converse(QTcpSocket &socket)
{
    for (QByteArray frame; !(frame = nextFrame(socket, m_stop)).isEmpty();) {
        m_requests.append(requestOf(frame));
        const Request &request = m_requests.constLast();
        const QList<QByteArray> answers = m_hook ? m_hook(*this, request, int(m_requests.size()))
                                                 : QList{frameOf(request.kind, honestAnswer(request))};
        cleanseStack(); // which outlasts this thread
        for (const QByteArray &answer : answers)
            socket.write(answer);
        socket.flush();
    }
}

QByteArray HandMadeRegister::frameOf(MessageTag kind, const Fields &fields, bool response)
{
    QByteArray body;
    for (const auto &[tag, value] : fields)
        body += tlvElement(tag, value);
    return GMP3::frame(response, kind, body, serial);
}

Fields HandMadeRegister::honestAnswer(const Request &request)
{
    switch (request.kind) {
    case PairingStart:
        m_requesterRandom = valueOf(request.fields, fieldTag(RequesterRandom));
        return answerStart();
    case PairingKeyExchange:
        return answerKeyExchange(request);
    default:
        return answerConfirm(request);
    }
}

Fields HandMadeRegister::answerStart()
{
    m_responderRandom = QByteArray(16, 'E');
    return {{fieldTag(EcrBrand), "BRAND"},
            {fieldTag(EcrModel), "MODEL"},
            {fieldTag(EcrIdentity), "REGISTER"},
            {fieldTag(Certificate), credentials.certificate},
            {fieldTag(DhPrime), QByteArray(get_dh2048_p_value(), get_dh2048_p_size())},
            {fieldTag(DhGenerator), QByteArray(get_dh2048_g_value(), get_dh2048_g_size())},
            {fieldTag(ResultCode), "00"},
            {fieldTag(PairingIndex), QByteArray(1, '\x42')},
            {fieldTag(ResponderRandom), m_responderRandom}};
}

Fields HandMadeRegister::answerKeyExchange(const Request &request)
{
    dh = GMP3::DH_get_dh2048();
    if (!GMP3::DH_generate(dh))
        return {};
    secret = GMP3::DH_compute(dh, valueOf(request.fields, fieldTag(RequesterPublicKey)));
    const QByteArray publicKey = GMP3::DH_get_pubkey(dh);
    return {{fieldTag(ResponderPublicKey), publicKey},
            {fieldTag(ResultCode), "00"},
            {fieldTag(Signature), GMP3::rsassa_pkcs1v15_sha256_sign(publicKey, credentials.key)}};
}

Fields HandMadeRegister::answerConfirm(const Request &request)
{
    const SessionKeys keys = deriveKeys(secret, m_responderRandom, m_requesterRandom);
    hmacKey = keys.hmacKey;
    aesKey = keys.aesKey;
    kcvIv = keys.kcvIv;
    QByteArray iv = kcvIv;
    appHash = GMP3_aes_cipher(false, aesKey, valueOf(request.fields, "\xDF\xE0\x04"_ba), iv);
    const bool right = valueOf(request.fields, fieldTag(KeyCheckValue)) == keys.checkValue;
    return {{fieldTag(ResultCode), right ? "00" : "02"},
            {fieldTag(PairingNumber), QByteArray("\x47\x11")},
            {fieldTag(PairingIndex), QByteArray(1, '\x42')}};
}

} // namespace TestSupport
