#include "ExtDevice/gmp3_util.h"

#include "ExtDevice/encoding/digest.h"

#include <QTime>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

namespace Velno::GMP {

QString cert_path = QStringLiteral("./client.crt");
QString prikey_path = QStringLiteral("./client.key");

namespace {

constexpr int blockSize = 16; // AES
constexpr int padBlock = 32;  // GMP3's padding fills blocks of this size
constexpr int checkSize = 32; // key check value
const char generator2048 = 2;

const QByteArray &prime2048()
{
    static const QByteArray bytes = [] {
        const BnPtr p{BN_get_rfc3526_prime_2048(nullptr)};
        QByteArray result(p ? BN_num_bytes(p.get()) : 0, '\0');
        if (p)
            BN_bn2bin(p.get(), octets(result));
        return result;
    }();
    return bytes;
}

/** The padding leads and fills 32-byte blocks; registers in the field expect exactly that. */
QByteArray padded(const QByteArray &data)
{
    const qsizetype count = padBlock - data.size() % padBlock;
    QByteArray result;
    result.reserve(count + data.size());
    return result.append(count, char(count)).append(data);
}

QByteArray withoutPadding(QByteArray padded)
{
    if (padded.isEmpty() || padded.size() % padBlock != 0)
        return {};
    // A signed byte: 80 and above is negative, names no padding and takes nothing away.
    const auto count = static_cast<signed char>(padded.front());
    if (count > padded.size())
        return {};
    return padded.remove(0, count > 0 ? count : 0);
}

} // namespace

const char *get_dh2048_p_value()
{
    return prime2048().constData();
}

int get_dh2048_p_size()
{
    return int(prime2048().size());
}

const char *get_dh2048_g_value()
{
    return &generator2048;
}

int get_dh2048_g_size()
{
    return 1;
}

QByteArray GMP3_SHA256(const QByteArray &data)
{
    return sha256Sum(data);
}

QByteArray GMP3::sha256sum(const QByteArray &data)
{
    return sha256Sum(data);
}

QByteArray GMP3::HMAC_sha256(const QByteArray &key, const QByteArray &data)
{
    return hmacSha256(key, data);
}

QByteArray GMP3::TLS_PRF(const QByteArray &secret, const QByteArray &label, const QByteArray &seed)
{
    // 32 bytes are exactly the first block of the expansion, so there is no second.
    const QByteArray labelSeed = label + seed;
    return HMAC_sha256(secret, HMAC_sha256(secret, labelSeed) + labelSeed);
}

QByteArray GMP3::create_keys(const QByteArray &peerPublicKey)
{
    static const QByteArray masterLabel = QByteArrayLiteral("GMP-3 istek");
    static const QByteArray keyLabel = QByteArrayLiteral("GMP-3 anahtarlar");
    GMP3_Message &session = gmp3_message;
    for (QByteArray *old : {&session.hmacKey, &session.kcvIv, &session.aesKey})
        cleanse(*old);

    QByteArray secret = DH_compute(session.dh, peerPublicKey);
    session.secretAgreed = !secret.isEmpty();
    const QByteArray seed = session.responderRandom + session.requesterRandom;
    QByteArray master = TLS_PRF(secret, masterLabel, seed);
    session.hmacKey = TLS_PRF(master, keyLabel, seed);
    QByteArray chain = TLS_PRF(session.hmacKey, keyLabel, seed);
    chain.truncate(blockSize);
    session.aesKey = TLS_PRF(chain, keyLabel, seed);
    session.kcvIv = chain;
    // The check value's last block stays in kcvIv; the application hash is encrypted from there.
    const QByteArray checkValue =
        AES_CBC_Cipher(true, session.aesKey, QByteArray(checkSize, '\xFF'), session.kcvIv);
    for (QByteArray *passed : {&secret, &master, &chain}) // all that makes the AES key once more
        cleanse(*passed);
    return checkValue;
}

QByteArray AES_CBC_Cipher(bool encrypt, const QByteArray &key, const QByteArray &data, QByteArray &iv)
{
    QByteArray output = data;
    if (iv.size() != blockSize || !CryptoContexts().cipher(encrypt, key, octets(std::as_const(iv)), output))
        return {};
    iv = (encrypt ? output : data).last(blockSize);
    return output;
}

QByteArray GMP3_aes_cipher(bool encrypt, const QByteArray &key, const QByteArray &data, QByteArray &iv)
{
    if (!encrypt)
        return withoutPadding(AES_CBC_Cipher(false, key, data, iv));
    return data.isEmpty() ? QByteArray() : AES_CBC_Cipher(true, key, padded(data), iv);
}

QByteArray GMP3_cipher(const MatchExt &record, bool encrypt, const QByteArray &data)
{
    std::array<unsigned char, blockSize> iv;
    if (data.isEmpty() || record.randomDFC10D.size() != blockSize || record.randomDFC10E.size() != blockSize)
        return {};
    std::transform(record.randomDFC10D.cbegin(), record.randomDFC10D.cend(), record.randomDFC10E.cbegin(),
                   iv.begin(), std::bit_xor<>());
    QByteArray output = encrypt ? padded(data) : data;
    if (!record.contexts.cipher(encrypt, record.aesKey, iv.data(), output))
        return {};
    return encrypt ? output : withoutPadding(std::move(output));
}

QByteArray GMP3_HMAC(const MatchExt &record, const QByteArray &data)
{
    return record.contexts.hmac(record.hmacKey, data);
}

QByteArray GetRandom(int count)
{
    auto state = unsigned(QTime::currentTime().msec());
    QByteArray bytes;
    bytes.reserve(qMax(count, 0));
    for (int i = 0; i < count; ++i)
        bytes.append(char(rand_r(&state) & 0xFF));
    return bytes;
}

} // namespace Velno::GMP
