// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_exchange.h"

#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/network/interruption.h"
#include "ExtDevice/network/wait_time.h"

#include <QScopeGuard>

#include <array>

namespace Velno::GMP {

namespace {

enum ResultOfPairing {
    Paired = 0,
    RegisterRefused = 5000,
    CertificateNotTrusted = 5001,
    SignatureInvalid = 5002
};

constexpr int longestFrame = 4096; // announced length; the two bytes that announce it come on top
constexpr unsigned int acceptTimeout = 30000;
constexpr unsigned int listeningReceiveTimeout = 10000;
constexpr unsigned int heldReceiveTimeout = 30000;

/**
 * The requester's side of one pairing. What has been verified and what keys were derived from cannot be
 * replaced by a message that comes later: a message that is no answer to the request leaves nothing behind,
 * and an answer brings no more than belongs into it.
 */
class Conversation
{
public:
    Conversation(Session &session, const PairingTerms &terms)
        : m_session(session)
        , m_record(session.record)
        , m_terms(terms)
    {
    }

    int run(MatchExt &record);

private:
    int askUntilAnswered(MessageTag kind);
    int ask(MessageTag kind, bool *answered);
    int hear(MessageTag kind, bool *answered);
    void takeAnswer(const ReceivedMessage &answer);
    int judge(MessageTag kind);
    int verifyCertificate();
    int verifySignature();
    void fill(MatchExt &record) const;
    template <typename Tag>
    QByteArray stored(Tag field) const
    {
        return m_record.value(fieldTag(field));
    }

    Session &m_session;
    GMP3_Message &m_record;
    const PairingTerms &m_terms;
    QByteArray m_verifiedCertificate;
    QByteArray m_signedKey;
};

int Conversation::run(MatchExt &record)
{
    m_record.responderRandom.clear(); // that of another conversation
    for (MessageTag kind = PairingStart; kind != None; kind = nextRequest(kind)) {
        if (const int result = askUntilAnswered(kind); result != 0)
            return result;
        if (const int result = judge(kind); result != 0)
            return result;
    }
    fill(record);
    return Paired;
}

/** What comes and is not the answer makes the same request go out again. */
int Conversation::askUntilAnswered(MessageTag kind)
{
    const WaitScope scope(deadlineAfter(m_terms.answerLimit));
    for (bool answered = false; !answered;) {
        if (const int result = ask(kind, &answered); result != 0)
            return result;
    }
    return 0;
}

/** Makes the request, sends it and hears what comes back. */
int Conversation::ask(MessageTag kind, bool *answered)
{
    const QByteArray body = prepareBody(m_session, kind, false, m_terms.terminalId);
    // Keys that come from no shared secret can be made by everybody who saw the randoms: nothing leaves under
    // them.
    if (kind == PairingConfirm && !m_record.secretAgreed)
        return SignatureInvalid;
    const QByteArray frame = makeFrame(false, kind, body, m_terms.serialNo);
    int result = m_session.send(frame.constData(), int(frame.size()));
    if (result == 0)
        result = hear(kind, answered);
    // Without a key pair of this side the register may answer what it likes, or leave: that is the reason.
    if (kind == PairingKeyExchange && !m_record.dh)
        return SignatureInvalid;
    return result;
}

/** Receives a message. Only the answer leaves something behind. */
int Conversation::hear(MessageTag kind, bool *answered)
{
    std::array<char, longestFrame + 2> buffer{};
    int length = longestFrame;
    if (const int result = m_session.receive(m_terms.longestSilence, buffer.data(), &length); result != 0)
        return result;
    ReceivedMessage message;
    const int result = readFrame(buffer.data(), length, m_terms.serialNo, &message);
    m_record.message = message.kind; // None when it is no message
    if (result != 0)
        return result;
    m_record.isResponse = message.isResponse;
    *answered = message.isResponse && message.kind == kind;
    if (*answered) {
        takeAnswer(message);
        return 0;
    }
    const QByteArray *const key = message.find(fieldTag(ResponderPublicKey));
    const bool keyReplaced = key && !m_signedKey.isEmpty() && *key != m_signedKey;
    return keyReplaced ? SignatureInvalid : 0; // somebody is at work
}

/** Takes over what an answer may bring: its fields, and the random of the first. */
void Conversation::takeAnswer(const ReceivedMessage &answer)
{
    // Each response brings its own result code; one left from an earlier message does not speak for it.
    m_record.fields.removeIf([](const QByteArray &field) { return field.startsWith(fieldTag(ResultCode)); });
    m_record.store(answer.fields);
    const QByteArray *const random = answer.find(fieldTag(ResponderRandom));
    if (random && answer.kind == PairingStart)
        m_record.responderRandom = *random;
}

// Without a default, and that an error in every build: a message that is new does not compile before somebody
// says here how it is judged.
#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wswitch"
int Conversation::judge(MessageTag kind)
{
    if (stored(ResultCode) != "00")
        return RegisterRefused;
    switch (kind) {
    case PairingStart:
        return verifyCertificate();
    case PairingKeyExchange:
        return verifySignature();
    case PairingConfirm:
        return Paired;
    case Message8801:
    case Message8802:
    case Message8803:
    case Message8804:
    case Message8805:
    case Message8806:
    case Message8807:
    case Message8808:
    case Message8A64:
    case None:
        break; // no part of a pairing
    }
    return RegisterRefused;
}
#pragma GCC diagnostic pop

int Conversation::verifyCertificate()
{
    const QByteArray certificate = stored(Certificate);
    if (!GMP::verifyCertificate(certificate, trustAnchors()))
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
    return verifyChecksum(m_verifiedCertificate, m_signedKey, stored(Signature)) ? Paired : SignatureInvalid;
}

void Conversation::fill(MatchExt &record) const
{
    record.valueDFEF09 = quint8(bcdToUInt(stored(PairingIndex).left(1)));
    record.pairingTime = m_session.clock().toUTC();
    record.valueDFEF02 = quint16(bcdToUInt(stored(PairingNumber).left(2)));
    record.terminalId = m_terms.terminalId;
    record.registerData = stored(EcrIdentity);
    m_record.putKeysInto(record);
}

} // namespace

int pairRegister(Session &session, MatchExt &record, const PairingTerms &terms)
{
    const auto forget = qScopeGuard([&session] { session.record.forgetKeys(); });
    session.record.appHash = terms.applicationHash;
    return Conversation(session, terms).run(record);
}

int GMP3_KeyExchange_Server(MatchExt &record, quint16 port, const char *serialNo, const char *terminalId,
                            const QByteArray &applicationHash, unsigned int answerLimit)
{
    GMP3::init(0);
    if (const int result = GMP3::accept("0.0.0.0", port, acceptTimeout); result != 0)
        return result;
    return pairRegister(processSession, record,
                        {serialNo, terminalId, applicationHash, listeningReceiveTimeout, answerLimit});
}

int GMP3_KeyExchange_Server(MatchExt &record, quint32 connection, const char *serialNo,
                            const char *terminalId, const QByteArray &applicationHash,
                            unsigned int answerLimit)
{
    GMP3::init(connection);
    const int result = pairRegister(processSession, record,
                                    {serialNo, terminalId, applicationHash, heldReceiveTimeout, answerLimit});
    GMP3::disconnect();
    return result;
}

} // namespace Velno::GMP
