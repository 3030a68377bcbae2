#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/encoding/file.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/gmp3/log.h"
#include "ExtDevice/gmp3_util.h"

#include <QScopeGuard>

namespace Velno::GMP {

namespace {

// The encrypted application hash; the only element of a pairing that is in no tag table.
constexpr char appHashTag[] = "\xDF\xE0\x04";

// A signature of another size than the public key cannot become right by trying again.
constexpr int mostKeyPairs = 4;

constexpr char protocolVersion[] = "1.0.0.0";

/** The body of a message: field elements, one after the other. */
class Body
{
public:
    Body() { m_bytes.reserve(2048); }

    template <typename Field>
    void add(Field field, const QByteArray &value)
    {
        m_bytes += tlvElement(fieldTag(field), value);
    }

    void addTag(const QByteArray &tag, const QByteArray &value) { m_bytes += tlvElement(tag, value); }

    /** Sends back what the other side sent, an empty value when it has not. */
    template <typename... Fields>
    void echo(Fields... fields)
    {
        (add(fields, GMP3::TLV_value(fieldTag(fields))), ...);
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

// The requester: the application ---------------------------------------------------------------------

void addRequestHead(Body &body, const char *identity)
{
    body.add(SequenceNumber, toBcd3(1));
    body.add(TransactionDate, toBcd(QDate::currentDate(), false));
    body.add(TransactionTime, toBcd(QTime::currentTime(), false));
    body.add(ExtDeviceVendor, QByteArrayLiteral("VENDOR 1234"));
    body.add(ExtDeviceModel, QByteArrayLiteral("MODEL X"));
    body.add(ExtDeviceIdentity, QByteArray(identity));
}

QByteArray requestStart(const char *identity)
{
    Body body;
    addRequestHead(body, identity);
    body.add(ProtocolVersion, protocolVersion);
    gmp3_message.requesterRandom = GetRandom(16);
    body.add(RequesterRandom, gmp3_message.requesterRandom);
    return body.bytes();
}

/** A key pair in the group that the register sent; none when that is no group known beforehand. */
PkeyPtr keyPairInReceivedGroup()
{
    const QByteArray p = GMP3::TLV_value(fieldTag(DhPrime));
    const QByteArray g = GMP3::TLV_value(fieldTag(DhGenerator));
    PkeyPtr dh = GMP3::DH_get(p.constData(), int(p.size()), g.constData(), int(g.size()));
    if (!isKnownGroup(dh)) {
        const QByteArray group = dh ? groupInWords(dh) : QByteArrayLiteral("no usable numbers");
        LogLine() << "Unknown DH group: " << group.constData();
        return {};
    }
    return GMP3::DH_generate(dh) ? std::move(dh) : PkeyPtr();
}

QByteArray requestKeyExchange(const char *identity)
{
    Body body;
    addRequestHead(body, identity);
    body.echo(EcrBrand, EcrModel, EcrIdentity);
    gmp3_message.dh = keyPairInReceivedGroup();
    if (gmp3_message.dh)
        body.add(RequesterPublicKey, GMP3::DH_get_pubkey(gmp3_message.dh));
    body.echo(PairingIndex);
    return body.bytes();
}

QByteArray requestConfirm(const char *identity)
{
    Body body;
    addRequestHead(body, identity);
    body.echo(EcrBrand, EcrModel, EcrIdentity);
    body.add(KeyCheckValue, GMP3::create_keys(GMP3::TLV_value(fieldTag(ResponderPublicKey))));
    body.echo(PairingIndex);
    QByteArray iv = gmp3_message.kcvIv; // a copy: the record keeps its value
    body.addTag(appHashTag, GMP3_aes_cipher(true, gmp3_message.aesKey, gmp3_message.appHash, iv));
    return body.bytes();
}

// The responder: the register ------------------------------------------------------------------------

QByteArray rawPairingIndex()
{
    return QByteArray(1, char(gmp3_message.pairingIndex));
}

QByteArray respondStart(const char *identity)
{
    Body body;
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    body.add(EcrBrand, QByteArrayLiteral("DALMORIVEN"));
    body.add(EcrModel, QByteArrayLiteral("m120"));
    body.add(EcrIdentity, QByteArray(identity));
    body.add(ProtocolVersion, protocolVersion);
    QByteArray certificate;
    if (readData(cert_path, &certificate))
        body.add(Certificate, certificate);
    body.add(DhPrime, QByteArray(get_dh2048_p_value(), get_dh2048_p_size()));
    body.add(DhGenerator, QByteArray(get_dh2048_g_value(), get_dh2048_g_size()));
    body.add(ResultCode, QByteArrayLiteral("00"));
    // BCD here, a raw byte in the two later responses: the same for 0 to 9.
    body.add(PairingIndex, toBcd(quint64(gmp3_message.pairingIndex)));
    gmp3_message.responderRandom = GetRandom(16);
    body.add(ResponderRandom, gmp3_message.responderRandom);
    return body.bytes();
}

QByteArray respondKeyExchange()
{
    Body body;
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    QByteArray key;
    const auto wipe = qScopeGuard([&key] { cleanse(key); });
    readData(prikey_path, &key); // without a key there is no signature, and the answer says so
    for (int attempt = 0; attempt < mostKeyPairs; ++attempt) {
        gmp3_message.dh = GMP3::DH_get_dh2048();
        if (!GMP3::DH_generate(gmp3_message.dh)) {
            gmp3_message.dh.reset();
            return body.bytes();
        }
        const QByteArray publicKey = GMP3::DH_get_pubkey(gmp3_message.dh);
        const QByteArray signature = GMP3::rsassa_pkcs1v15_sha256_sign(publicKey, key);
        if (signature.isEmpty())
            break;
        if (signature.size() != publicKey.size())
            continue;
        body.add(ResponderPublicKey, publicKey);
        body.add(ResultCode, QByteArrayLiteral("00"));
        body.add(PairingIndex, rawPairingIndex());
        body.add(Signature, signature);
        return body.bytes();
    }
    body.add(ResultCode, QByteArrayLiteral("01"));
    body.add(PairingIndex, rawPairingIndex());
    return body.bytes();
}

bool appHashMatches()
{
    if (gmp3_message.appHash.isEmpty())
        return true; // any application will do
    QByteArray iv = gmp3_message.kcvIv;
    const QByteArray sent = GMP3_aes_cipher(false, gmp3_message.aesKey, GMP3::TLV_value(appHashTag), iv);
    return sameSecret(sent, gmp3_message.appHash);
}

/** The verdict: "00", or why not. */
QByteArray judgeConfirmation()
{
    const QByteArray expected = GMP3::create_keys(GMP3::TLV_value(fieldTag(RequesterPublicKey)));
    if (!sameSecret(GMP3::TLV_value(fieldTag(KeyCheckValue)), expected)) {
        LogLine() << "KCV Error";
        return QByteArrayLiteral("02");
    }
    if (!appHashMatches()) {
        LogLine() << "App Hash Error";
        return QByteArrayLiteral("03");
    }
    return QByteArrayLiteral("00");
}

QByteArray respondConfirm()
{
    Body body;
    body.echo(SequenceNumber, TransactionDate, TransactionTime);
    const QByteArray verdict = judgeConfirmation();
    gmp3_message.failed = verdict != "00";
    body.add(ResultCode, verdict);
    if (!gmp3_message.failed)
        body.add(PairingNumber, toBcd2(gmp3_message.pairingNumber));
    body.add(PairingIndex, rawPairingIndex());
    return body.bytes();
}

} // namespace

QByteArray GMP3::prepare(MessageTag kind, bool response, const char *identity)
{
    switch (kind) {
    case PairingStart:
        return response ? respondStart(identity) : requestStart(identity);
    case PairingKeyExchange:
        return response ? respondKeyExchange() : requestKeyExchange(identity);
    case PairingConfirm:
        return response ? respondConfirm() : requestConfirm(identity);
    default:
        return {};
    }
}

} // namespace Velno::GMP
