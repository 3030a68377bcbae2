#include "fuzz/honest_requests.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/paired_record.h"

namespace Fuzz {

using namespace Velno::GMP;

namespace {

template <typename Tag>
QByteArray field(Tag tag, const QByteArray &value)
{
    return Velno::tlvElement(fieldTag(tag), value);
}

const QByteArray &publicKey()
{
    static const QByteArray key = [] {
        Velno::PkeyPtr pair = GMP3::DH_get_dh2048();
        FUZZ_EXPECT(GMP3::DH_generate(pair));
        return GMP3::DH_get_pubkey(pair);
    }();
    return key;
}

MatchExt agreed; // noted here, because a register forgets the session's keys when it has taken them

/** What proves that both sides hold the same keys. */
QByteArray proof()
{
    const QByteArray checkValue = GMP3::create_keys(GMP3::TLV_value(fieldTag(RequesterPublicKey)));
    agreed = pairedRecord();
    agreed.randomDFC10D = gmp3_message.requesterRandom;
    agreed.randomDFC10E = gmp3_message.responderRandom;
    agreed.hmacKey = gmp3_message.hmacKey;
    agreed.aesKey = gmp3_message.aesKey;
    QByteArray iv = gmp3_message.kcvIv;
    const QByteArray hash = GMP3_aes_cipher(true, gmp3_message.aesKey, applicationHash, iv);
    return field(KeyCheckValue, checkValue) + Velno::tlvElement(QByteArrayLiteral("\xDF\xE0\x04"), hash);
}

} // namespace

QByteArray honestRequest(MessageTag kind)
{
    switch (kind) {
    case PairingStart:
        return field(RequesterRandom, QByteArray(16, 'R'));
    case PairingKeyExchange:
        return field(RequesterPublicKey, publicKey());
    default:
        return proof();
    }
}

MatchExt agreedRecord()
{
    return agreed;
}

} // namespace Fuzz
