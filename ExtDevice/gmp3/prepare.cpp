// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/prepare.h"

#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/encoding/file.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/built_in_group.h"
#include "ExtDevice/gmp3/certificates.h"
#include "ExtDevice/gmp3/cipher.h"
#include "ExtDevice/gmp3/diffie_hellman.h"
#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/gmp3/log.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace Velno::GMP {

namespace {

// A signature of another size than the public key cannot become right by trying again.
constexpr int mostKeyPairs = 4;

constexpr int randomSize = 16;

constexpr char protocolVersion[] = "1.0.0.0";

/** The body of a message: field elements, one after the other. */
class Body
{
public:
    /** @param record  where echoes come from */
    explicit Body(const GMP3_Message &record)
        : m_record(record)
    {
        m_bytes.reserve(2048);
    }

    template <typename Field>
    void add(Field field, const QByteArray &value)
    {
        m_bytes += tlvElement(fieldTag(field), value);
    }

    /** Sends back what the other side sent, an empty value when it has not. */
    template <typename... Fields>
    void echo(Fields... fields)
    {
        (add(fields, m_record.value(fieldTag(fields))), ...);
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    const GMP3_Message &m_record;
    QByteArray m_bytes;
};

// The requester: the application ---------------------------------------------------------------------

/** A body with what every request begins with. */
Body requestBody(const Session &session, const char *identity)
{
    const QDateTime now = session.clock();
    Body body(session.record);
    body.add(SequenceNumber, toBcd3(1));
    body.add(TransactionDate, toBcd(now.date(), false));
    body.add(TransactionTime, toBcd(now.time(), false));
    body.add(ExtDeviceVendor, "VENDOR 1234"_ba);
    body.add(ExtDeviceModel, "MODEL X"_ba);
    body.add(ExtDeviceIdentity, QByteArray(identity));
    return body;
}

QByteArray requestStart(Session &session, const char *identity)
{
    Body body = requestBody(session, identity);
    body.add(ProtocolVersion, protocolVersion);
    session.record.requesterRandom = session.randoms(randomSize);
    body.add(RequesterRandom, session.record.requesterRandom);
    return body.bytes();
}

/** A key pair in the group that the register sent; none when that is no group known beforehand. */
PkeyPtr keyPairInReceivedGroup(const GMP3_Message &record)
{
    const QByteArray p = record.value(fieldTag(DhPrime));
    const QByteArray g = record.value(fieldTag(DhGenerator));
    PkeyPtr dh = dhGroup(p.constData(), int(p.size()), g.constData(), int(g.size()));
    if (!isKnownGroup(dh)) {
        const QByteArray group = dh ? groupInWords(dh) : "no usable numbers"_ba;
        LogLine() << "Unknown DH group: " << group.constData();
        return {};
    }
    return generateKeyPair(dh) ? std::move(dh) : PkeyPtr();
}

QByteArray requestKeyExchange(Session &session, const char *identity)
{
    Body body = requestBody(session, identity);
    body.echo(EcrBrand, EcrModel, EcrIdentity);
    session.record.dh = keyPairInReceivedGroup(session.record);
    if (session.record.dh)
        body.add(RequesterPublicKey, publicKeyOf(session.record.dh));
    body.echo(PairingIndex);
    return body.bytes();
}

QByteArray requestConfirm(Session &session, const char *identity)
{
    GMP3_Message &record = session.record;
    Body body = requestBody(session, identity);
    body.echo(EcrBrand, EcrModel, EcrIdentity);
    body.add(KeyCheckValue, record.createKeys(record.value(fieldTag(ResponderPublicKey))));
    body.echo(PairingIndex);
    QByteArray iv = record.kcvIv; // a copy: the record keeps its value
    body.add(AppHashCipher, GMP3_aes_cipher(true, record.aesKey, record.appHash, iv));
    return body.bytes();
}

// The responder: the register ------------------------------------------------------------------------

QByteArray rawPairingIndex(const GMP3_Message &record)
{
    return QByteArray(1, char(record.pairingIndex));
}

QByteArray respondStart(Session &session, const char *identity)
{
    Body body(session.record);
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    body.add(EcrBrand, "DALMORIVEN"_ba);
    body.add(EcrModel, "m120"_ba);
    body.add(EcrIdentity, QByteArray(identity));
    body.add(ProtocolVersion, protocolVersion);
    QByteArray certificate;
    if (readData(session.certificatePath, &certificate))
        body.add(Certificate, certificate);
    body.add(DhPrime, QByteArray(get_dh2048_p_value(), get_dh2048_p_size()));
    body.add(DhGenerator, QByteArray(get_dh2048_g_value(), get_dh2048_g_size()));
    body.add(ResultCode, "00"_ba);
    // BCD here, a raw byte in the two later responses: the same for 0 to 9.
    body.add(PairingIndex, toBcd(quint64(session.record.pairingIndex)));
    session.record.responderRandom = session.randoms(randomSize);
    body.add(ResponderRandom, session.record.responderRandom);
    return body.bytes();
}

QByteArray respondKeyExchange(Session &session)
{
    GMP3_Message &record = session.record;
    Body body(record);
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    QByteArray key;
    const auto wipe = qScopeGuard([&key] { cleanse(key); });
    readData(session.keyPath, &key); // without a key there is no signature, and the answer says so
    for (int attempt = 0; attempt < mostKeyPairs; ++attempt) {
        record.dh = dhGroup2048();
        if (!generateKeyPair(record.dh)) {
            record.dh.reset();
            return body.bytes();
        }
        const QByteArray publicKey = publicKeyOf(record.dh);
        const QByteArray signature = openssl_signChecksum(publicKey, key);
        if (signature.isEmpty())
            break;
        if (signature.size() != publicKey.size())
            continue;
        body.add(ResponderPublicKey, publicKey);
        body.add(ResultCode, "00"_ba);
        body.add(PairingIndex, rawPairingIndex(record));
        body.add(Signature, signature);
        return body.bytes();
    }
    body.add(ResultCode, "01"_ba);
    body.add(PairingIndex, rawPairingIndex(record));
    return body.bytes();
}

bool appHashMatches(const GMP3_Message &record)
{
    if (record.appHash.isEmpty())
        return true; // any application will do
    QByteArray iv = record.kcvIv;
    const QByteArray sent = GMP3_aes_cipher(false, record.aesKey, record.value(fieldTag(AppHashCipher)), iv);
    return sameSecret(sent, record.appHash);
}

/** The verdict: "00", or why not. */
QByteArray judgeConfirmation(GMP3_Message &record)
{
    const QByteArray expected = record.createKeys(record.value(fieldTag(RequesterPublicKey)));
    if (!sameSecret(record.value(fieldTag(KeyCheckValue)), expected)) {
        LogLine() << "KCV Error";
        return "02"_ba;
    }
    if (!appHashMatches(record)) {
        LogLine() << "App Hash Error";
        return "03"_ba;
    }
    return "00"_ba;
}

QByteArray respondConfirm(GMP3_Message &record)
{
    Body body(record);
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    const QByteArray verdict = judgeConfirmation(record);
    record.failed = verdict != "00";
    body.add(ResultCode, verdict);
    if (!record.failed)
        body.add(PairingNumber, toBcd2(record.pairingNumber));
    body.add(PairingIndex, rawPairingIndex(record));
    return body.bytes();
}

} // namespace

MessageTag nextRequest(MessageTag kind)
{
    switch (kind) {
    case PairingStart:
        return PairingKeyExchange;
    case PairingKeyExchange:
        return PairingConfirm;
    default:
        return None;
    }
}

QByteArray prepareBody(Session &session, MessageTag kind, bool response, const char *identity)
{
    switch (kind) {
    case PairingStart:
        return response ? respondStart(session, identity) : requestStart(session, identity);
    case PairingKeyExchange:
        return response ? respondKeyExchange(session) : requestKeyExchange(session, identity);
    case PairingConfirm:
        return response ? respondConfirm(session.record) : requestConfirm(session, identity);
    default:
        return {};
    }
}

} // namespace Velno::GMP
