#include "ExtDevice/gmp3/key_exchange.h"

#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/network/interruption.h"
#include "ExtDevice/network/wait_time.h"

#include <array>

namespace Velno::GMP {

MatchExt::~MatchExt()
{
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
 * The requester's side of one pairing. It remembers what has been verified, because every message that
 * arrives, also one that is discarded, may replace a field of the session's store.
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
    int ask(MessageTag kind);
    int judge(MessageTag kind);
    int verifyCertificate();
    int verifySignature();
    int confirmKeys() const;
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
    do {
        // Each message, also one that is no answer, may have brought another key.
        if (kind == PairingConfirm && stored(ResponderPublicKey) != m_signedKey)
            return SignatureInvalid;
        if (const int result = ask(kind); result != 0)
            return result;
    } while (!gmp3_message.isResponse || gmp3_message.message != kind);
    return 0;
}

/** Sends the request and stores the fields of whatever message comes back. */
int Conversation::ask(MessageTag kind)
{
    const QByteArray body = GMP3::prepare(kind, false, m_terminalId);
    const QByteArray frame = GMP3::frame(false, kind, body, m_serialNo);
    if (const int result = GMP3::send(frame.constData(), int(frame.size())); result != 0)
        return result;
    std::array<char, longestFrame + 2> buffer{};
    int length = longestFrame;
    if (const int result = GMP3::receive(m_receiveTimeout, buffer.data(), &length); result != 0)
        return result;
    // Each response brings its own result code; one left from an earlier message does not speak for it.
    gmp3_message.fields.removeIf(
        [](const QByteArray &field) { return field.startsWith(fieldTag(ResultCode)); });
    return GMP3::check(buffer.data(), length, m_serialNo, true);
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
        return confirmKeys();
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

/** Keys that come from no shared secret can be made by everybody who saw the randoms: no register has them.
 */
int Conversation::confirmKeys() const
{
    return gmp3_message.secretAgreed ? Paired : SignatureInvalid;
}

void Conversation::fill(MatchExt &record) const
{
    for (QByteArray *old : {&record.hmacKey, &record.kcvIv, &record.aesKey})
        cleanse(*old);
    record.contexts.forget();
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
