#include "ExtDevice/gmp3/key_exchange.h"

#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/network/interruption.h"
#include "ExtDevice/network/wait_time.h"

#include <QScopeGuard>

#include <array>

namespace Velno::GMP {

MatchExt::~MatchExt()
{
    forgetKeys();
}

void MatchExt::forgetKeys()
{
    contexts.forget();
    for (QByteArray *key : {&hmacKey, &kcvIv, &aesKey})
        cleanse(*key);
}

namespace {

enum ResultOfPairing {
    Paired = 0,
    RegisterRefused = 5000,
    CertificateNotTrusted = 5001,
    SignatureInvalid = 5002
};

constexpr int longestFrame = 4096; // announced length; the two bytes that announce it come on top
constexpr unsigned int acceptTimeout = 30000;
constexpr int listeningReceiveTimeout = 10000;
constexpr int heldReceiveTimeout = 30000;

QByteArray stored(PairingFieldTag field)
{
    return GMP3::TLV_value(fieldTag(field));
}

/**
 * The requester's side of one pairing. What has been verified and what keys were derived from cannot be
 * replaced by a message that comes later: a message that is no answer to the request leaves nothing behind,
 * and an answer brings no more than belongs into it.
 */
class Conversation
{
public:
    Conversation(int receiveTimeout, unsigned int answerLimit, const char *serialNo, const char *terminalId)
        : m_receiveTimeout(unsigned(receiveTimeout))
        , m_answerLimit(answerLimit)
        , m_serialNo(serialNo)
        , m_terminalId(terminalId)
    {
    }

    int run(MatchExt &record);

private:
    int askUntilAnswered(MessageTag kind);
    int ask(MessageTag kind, bool *answered);
    int hear(MessageTag kind, bool *answered);
    int judge(MessageTag kind);
    int verifyCertificate();
    int verifySignature();
    void fill(MatchExt &record) const;

    unsigned int m_receiveTimeout;
    unsigned int m_answerLimit;
    const char *m_serialNo;
    const char *m_terminalId;
    QByteArray m_verifiedCertificate;
    QByteArray m_signedKey;
};

int Conversation::run(MatchExt &record)
{
    gmp3_message.responderRandom.clear(); // that of another conversation
    for (MessageTag kind = PairingStart; kind != None;) {
        if (const int result = askUntilAnswered(kind); result != 0)
            return result;
        if (const int result = judge(kind); result != 0)
            return result;
        kind = GMP3::next_state(kind);
    }
    fill(record);
    return Paired;
}

/** What comes and is not the answer makes the same request go out again. */
int Conversation::askUntilAnswered(MessageTag kind)
{
    const WaitScope scope(deadlineAfter(m_answerLimit));
    for (bool answered = false; !answered;) {
        if (const int result = ask(kind, &answered); result != 0)
            return result;
    }
    return 0;
}

/** Makes the request, sends it and hears what comes back. */
int Conversation::ask(MessageTag kind, bool *answered)
{
    const QByteArray body = GMP3::prepare(kind, false, m_terminalId);
    // Keys that come from no shared secret can be made by everybody who saw the randoms: nothing leaves under
    // them.
    if (kind == PairingConfirm && !gmp3_message.secretAgreed)
        return SignatureInvalid;
    const QByteArray frame = GMP3::frame(false, kind, body, m_serialNo);
    int result = GMP3::send(frame.constData(), int(frame.size()));
    if (result == 0)
        result = hear(kind, answered);
    // Without a key pair of this side the register may answer what it likes, or leave: that is the reason.
    if (kind == PairingKeyExchange && !gmp3_message.dh)
        return SignatureInvalid;
    return result;
}

/** Receives a message and takes over what it may bring. */
int Conversation::hear(MessageTag kind, bool *answered)
{
    std::array<char, longestFrame + 2> buffer{};
    int length = longestFrame;
    if (const int result = GMP3::receive(m_receiveTimeout, buffer.data(), &length); result != 0)
        return result;
    // Each response brings its own result code; one left from an earlier message does not speak for it.
    gmp3_message.fields.removeIf(
        [](const QByteArray &field) { return field.startsWith(fieldTag(ResultCode)); });
    const QVector<QByteArray> fieldsBefore = gmp3_message.fields;
    const QByteArray requesterRandom = gmp3_message.requesterRandom;
    const QByteArray responderRandom = gmp3_message.responderRandom;
    if (const int result = GMP3::check(buffer.data(), length, m_serialNo, true); result != 0)
        return result;
    *answered = gmp3_message.isResponse && gmp3_message.message == kind;
    gmp3_message.requesterRandom = requesterRandom; // this side's own, as it was sent
    if (!*answered || kind != PairingStart)
        gmp3_message.responderRandom = responderRandom;
    if (*answered)
        return 0;
    const bool keyReplaced = !m_signedKey.isEmpty() && stored(ResponderPublicKey) != m_signedKey;
    gmp3_message.fields = fieldsBefore;
    return keyReplaced ? SignatureInvalid : 0; // somebody is at work
}

int Conversation::judge(MessageTag kind)
{
    if (stored(ResultCode) != "00")
        return RegisterRefused;
    switch (kind) {
    case PairingStart:
        return verifyCertificate();
    case PairingKeyExchange:
        return verifySignature();
    default:
        return Paired;
    }
}

int Conversation::verifyCertificate()
{
    const QByteArray certificate = stored(Certificate);
    if (!GMP3::verifyCertificate(certificate, trustAnchors()))
        return CertificateNotTrusted;
    m_verifiedCertificate = certificate;
    return Paired;
}

int Conversation::verifySignature()
{
    if (stored(Certificate) != m_verifiedCertificate) {
        if (const int result = verifyCertificate(); result != 0)
            return result;
    }
    m_signedKey = stored(ResponderPublicKey);
    const bool valid =
        GMP3::rsassa_pkcs1v15_sha256_verify(m_verifiedCertificate, m_signedKey, stored(Signature));
    return valid ? Paired : SignatureInvalid;
}

void Conversation::fill(MatchExt &record) const
{
    record.forgetKeys();
    record.valueDFEF09 = quint8(bcdToUInt(stored(PairingIndex).left(1)));
    record.pairingTime = QDateTime::currentDateTimeUtc();
    record.valueDFEF02 = quint16(bcdToUInt(stored(PairingNumber).left(2)));
    record.terminalId = m_terminalId;
    record.randomDFC10D = gmp3_message.requesterRandom;
    record.registerData = GMP3::TLV_value(fieldTag(EcrIdentity));
    record.randomDFC10E = gmp3_message.responderRandom;
    record.hmacKey = gmp3_message.hmacKey;
    record.kcvIv = gmp3_message.kcvIv;
    record.aesKey = gmp3_message.aesKey;
}

int GMP3_KeyExchange_Server_Impl(MatchExt &record, int receiveTimeout, const char *serialNo,
                                 const char *terminalId, const QByteArray &applicationHash,
                                 unsigned int answerLimit)
{
    const auto forget = qScopeGuard([] { gmp3_message.forgetKeys(); });
    gmp3_message.appHash = applicationHash;
    return Conversation(receiveTimeout, answerLimit, serialNo, terminalId).run(record);
}

} // namespace

int GMP3_KeyExchange_Server(MatchExt &record, quint16 port, const char *serialNo, const char *terminalId,
                            const QByteArray &applicationHash, unsigned int answerLimit)
{
    GMP3::init(0);
    if (const int result = GMP3::accept("0.0.0.0", port, acceptTimeout); result != 0)
        return result;
    return GMP3_KeyExchange_Server_Impl(record, listeningReceiveTimeout, serialNo, terminalId,
                                        applicationHash, answerLimit);
}

int GMP3_KeyExchange_Server(MatchExt &record, quint32 connection, const char *serialNo,
                            const char *terminalId, const QByteArray &applicationHash,
                            unsigned int answerLimit)
{
    GMP3::init(connection);
    const int result = GMP3_KeyExchange_Server_Impl(record, heldReceiveTimeout, serialNo, terminalId,
                                                    applicationHash, answerLimit);
    GMP3::disconnect();
    return result;
}

} // namespace Velno::GMP
