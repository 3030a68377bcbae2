// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/cipher.h"

#include <algorithm>
#include <array>
#include <functional>

namespace Velno::GMP {

namespace {

constexpr int blockSize = 16; // AES
constexpr int padBlock = 32;  // GMP3's padding fills blocks of this size

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

} // namespace Velno::GMP
