// SPDX-License-Identifier: Apache-2.0

#include "bench/bare_envelope.h"

#include "bench/bare_socket.h"

#include <QtEndian>

#include <openssl/core_names.h>

using namespace Qt::StringLiterals;
using namespace Velno;

namespace {

constexpr qsizetype padBlock = 32;
constexpr qsizetype macSize = 32;
constexpr qsizetype headerSize = 14;
const QByteArray cipherTag = "\xDF\xE0\x02"_ba;
const QByteArray macTag = "\xDF\xE0\x03\x20"_ba;

CipherCtxPtr keyed(bool encrypt, const QByteArray &key)
{
    const CipherPtr aes{EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr)};
    CipherCtxPtr ctx{EVP_CIPHER_CTX_new()};
    require(EVP_CipherInit_ex2(ctx.get(), aes.get(), octets(key), nullptr, encrypt, nullptr) == 1 &&
                EVP_CIPHER_CTX_set_padding(ctx.get(), 0) == 1,
            "no cipher");
    return ctx;
}

MacCtxPtr keyed(const QByteArray &key)
{
    const MacPtr hmac{EVP_MAC_fetch(nullptr, "HMAC", nullptr)};
    MacCtxPtr ctx{EVP_MAC_CTX_new(hmac.get())};
    char name[] = "SHA256";
    const OSSL_PARAM params[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0),
                                 OSSL_PARAM_construct_end()};
    require(EVP_MAC_init(ctx.get(), octets(key), size_t(key.size()), params) == 1, "no MAC");
    return ctx;
}

/** Runs whole blocks through a kept context, from the record's IV on. */
QByteArray run(const CipherCtxPtr &ctx, const QByteArray &iv, const QByteArray &data)
{
    QByteArray output(data.size(), Qt::Uninitialized);
    int written = 0;
    require(EVP_CipherInit_ex2(ctx.get(), nullptr, nullptr, octets(iv), -1, nullptr) == 1 &&
                EVP_CipherUpdate(ctx.get(), octets(output), &written, octets(data), int(data.size())) == 1,
            "a cipher failed");
    return output;
}

void append16(QByteArray &bytes, qsizetype number)
{
    bytes.append(char(number >> 8)).append(char(number & 0xFF));
}

} // namespace

BareEnvelope::BareEnvelope(const GMP::MatchExt &record)
    : m_identity(record.registerData)
    , m_iv(record.randomDFC10D)
    , m_encrypt(keyed(true, record.aesKey))
    , m_decrypt(keyed(false, record.aesKey))
    , m_mac(keyed(record.hmacKey))
{
    for (qsizetype i = 0; i < m_iv.size(); ++i)
        m_iv[i] = char(m_iv.at(i) ^ record.randomDFC10E.at(i));
}

QByteArray BareEnvelope::mac(const QByteArray &cipher) const
{
    QByteArray result(macSize, Qt::Uninitialized);
    size_t size = 0;
    require(EVP_MAC_init(m_mac.get(), nullptr, 0, nullptr) == 1 &&
                EVP_MAC_update(m_mac.get(), octets(cipher), size_t(cipher.size())) == 1 &&
                EVP_MAC_final(m_mac.get(), octets(result), &size, macSize) == 1,
            "a MAC failed");
    return result;
}

QByteArray BareEnvelope::seal(const QByteArray &plaintext) const
{
    const qsizetype pad = padBlock - plaintext.size() % padBlock;
    const QByteArray cipher = run(m_encrypt, m_iv, QByteArray(pad, char(pad)) + plaintext);
    require(cipher.size() < 128, "a command longer than a short length says");
    QByteArray frame;
    frame.reserve(128);
    const qsizetype inner = 12 + 4 + cipher.size() + 4 + macSize + 2;
    append16(frame, 0);
    append16(frame, inner + 2);
    append16(frame, inner);
    frame += m_identity;
    frame += cipherTag;
    frame += char(cipher.size());
    frame += cipher;
    frame += macTag;
    frame += mac(cipher);
    append16(frame, qChecksum(QByteArrayView(frame).sliced(6)));
    return frame;
}

QByteArray BareEnvelope::open(const QByteArray &frame) const
{
    const qsizetype end = frame.size() - 2;
    if (end < headerSize + 4 || qFromBigEndian<quint16>(frame.constData()) != end ||
        qFromBigEndian<quint16>(frame.constData() + end) !=
            qChecksum(QByteArrayView(frame).first(end).sliced(2)))
        return {};
    const qsizetype size = uchar(frame.at(headerSize + 3));
    if (frame.mid(2, 12) != m_identity || frame.mid(headerSize, 3) != cipherTag ||
        end != headerSize + 4 + size + 4 + macSize)
        return {};
    const QByteArray cipher = frame.mid(headerSize + 4, size);
    const QByteArray received = frame.mid(end - macSize, macSize);
    if (CRYPTO_memcmp(mac(cipher).constData(), received.constData(), macSize) != 0)
        return {};
    const QByteArray padded = run(m_decrypt, m_iv, cipher);
    return padded.mid(padded.front());
}
