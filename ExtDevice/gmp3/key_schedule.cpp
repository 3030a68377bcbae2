// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_schedule.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/cipher.h"

using namespace Qt::StringLiterals;

namespace Velno::GMP {

namespace {

constexpr int ivSize = 16;
constexpr int checkSize = 32;

} // namespace

SessionKeys::~SessionKeys()
{
    for (QByteArray *key : {&hmacKey, &kcvIv, &aesKey})
        cleanse(*key);
}

SessionKeys deriveKeys(const QByteArray &secret, const QByteArray &responderRandom,
                       const QByteArray &requesterRandom)
{
    static const QByteArray masterLabel = "GMP-3 istek"_ba;
    static const QByteArray keyLabel = "GMP-3 anahtarlar"_ba;
    const QByteArray seed = responderRandom + requesterRandom;
    SessionKeys keys;
    QByteArray master = tlsPrf(secret, masterLabel, seed);
    keys.hmacKey = tlsPrf(master, keyLabel, seed);
    QByteArray chain = tlsPrf(keys.hmacKey, keyLabel, seed);
    chain.truncate(ivSize);
    keys.aesKey = tlsPrf(chain, keyLabel, seed);
    keys.kcvIv = chain;
    // The check value's last block stays in kcvIv; the application hash is encrypted from there.
    keys.checkValue = AES_CBC_Cipher(true, keys.aesKey, QByteArray(checkSize, '\xFF'), keys.kcvIv);
    for (QByteArray *passed : {&master, &chain}) // each makes the AES key once more
        cleanse(*passed);
    return keys;
}

QByteArray tlsPrf(const QByteArray &secret, const QByteArray &label, const QByteArray &seed)
{
    // 32 bytes are exactly the first block of the expansion, so there is no second.
    const QByteArray labelSeed = label + seed;
    return hmacSha256(secret, hmacSha256(secret, labelSeed) + labelSeed);
}

} // namespace Velno::GMP
