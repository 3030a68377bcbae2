// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"

#include <QIODevice>

#include <openssl/core_names.h>

#include <array>

namespace Velno {

namespace {

constexpr qsizetype digestSize = 32;
constexpr size_t pieceSize = 64 * 1024;
constexpr std::array<unsigned char, 16> ivBase = {0xF0, 0x1C, 0x5A, 0x93, 0x27, 0xE4, 0xB8, 0x6D,
                                                  0x3F, 0x82, 0xC1, 0x0B, 0x74, 0xD9, 0xA6, 0x55};

// Looking an algorithm up costs more than hashing a message: it is done once.
const EVP_MD *sha256()
{
    static const MdPtr md{EVP_MD_fetch(nullptr, "SHA256", nullptr)};
    return md.get();
}

/** A context at the start of a digest; null when OpenSSL has no SHA-256 or no memory. */
MdCtxPtr startDigest()
{
    MdCtxPtr context{EVP_MD_CTX_new()};
    if (context && EVP_DigestInit_ex2(context.get(), sha256(), nullptr) != 1)
        context.reset();
    return context;
}

QByteArray finishDigest(const MdCtxPtr &context)
{
    QByteArray digest(digestSize, Qt::Uninitialized);
    if (EVP_DigestFinal_ex(context.get(), octets(digest), nullptr) != 1)
        return {};
    return digest;
}

} // namespace

QByteArray sha256Sum(const QByteArray &data)
{
    const MdCtxPtr context = startDigest();
    if (!context || EVP_DigestUpdate(context.get(), data.constData(), size_t(data.size())) != 1)
        return {};
    return finishDigest(context);
}

QByteArray sha256Sum(QIODevice &device)
{
    const MdCtxPtr context = startDigest();
    std::array<char, pieceSize> piece;
    qint64 size = context ? device.read(piece.data(), pieceSize) : -1;
    while (size > 0) {
        if (EVP_DigestUpdate(context.get(), piece.data(), size_t(size)) != 1)
            return {};
        size = device.read(piece.data(), pieceSize);
    }
    return size == 0 ? finishDigest(context) : QByteArray();
}

MacCtxPtr newHmacContext()
{
    static const MacPtr hmac{EVP_MAC_fetch(nullptr, OSSL_MAC_NAME_HMAC, nullptr)};
    char digestName[] = "SHA256";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digestName, 0),
                                     OSSL_PARAM_construct_end()};
    MacCtxPtr context{hmac ? EVP_MAC_CTX_new(hmac.get()) : nullptr};
    if (context && EVP_MAC_CTX_set_params(context.get(), parameters) != 1)
        context.reset();
    return context;
}

bool setHmacKey(EVP_MAC_CTX *context, const QByteArray &key)
{
    // An empty key has an address too, never null: a null key would mean the one before.
    return context && EVP_MAC_init(context, octets(key), size_t(key.size()), nullptr) == 1;
}

QByteArray hmacWith(EVP_MAC_CTX *context, const QByteArray &message)
{
    QByteArray mac(digestSize, Qt::Uninitialized);
    size_t size = 0;
    const bool done = context && EVP_MAC_init(context, nullptr, 0, nullptr) == 1 &&
                      EVP_MAC_update(context, octets(message), size_t(message.size())) == 1 &&
                      EVP_MAC_final(context, octets(mac), &size, size_t(mac.size())) == 1;
    return done ? mac : QByteArray();
}

QByteArray hmacSha256(QByteArray key, const QByteArray &message)
{
    static const MacCtxPtr keyless = newHmacContext(); // copying it costs less than setting one up
    const MacCtxPtr context{keyless ? EVP_MAC_CTX_dup(keyless.get()) : nullptr};
    const bool isSet = setHmacKey(context.get(), key);
    cleanse(key);
    return isSet ? hmacWith(context.get(), message) : QByteArray();
}

QByteArray iv(const QTime &time)
{
    const int seconds = qMax(time.second(), 0); // an invalid time says -1
    QByteArray result(qsizetype(ivBase.size()), Qt::Uninitialized);
    for (size_t i = 0; i < ivBase.size(); ++i)
        result[qsizetype(i)] = char(i % 2 == 0 ? ivBase[i] + seconds : ivBase[i]);
    return result;
}

} // namespace Velno
