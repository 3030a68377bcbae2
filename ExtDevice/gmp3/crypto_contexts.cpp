// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/crypto_contexts.h"

#include "ExtDevice/encoding/digest.h"

#include <openssl/core_names.h>

#include <climits>

namespace Velno::GMP {

namespace {

constexpr qsizetype blockSize = 16; // AES

/** AES-CBC for the key's size, fetched once; null for a size that AES does not know. */
const EVP_CIPHER *aesCbc(qsizetype keySize)
{
    static const CipherPtr aes128{EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr)};
    static const CipherPtr aes192{EVP_CIPHER_fetch(nullptr, "AES-192-CBC", nullptr)};
    static const CipherPtr aes256{EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr)};
    switch (keySize) {
    case 16:
        return aes128.get();
    case 24:
        return aes192.get();
    case 32:
        return aes256.get();
    default:
        return nullptr;
    }
}

CipherCtxPtr cipherContext(bool encrypt, const QByteArray &key)
{
    const EVP_CIPHER *cipher = aesCbc(key.size());
    CipherCtxPtr context{cipher ? EVP_CIPHER_CTX_new() : nullptr};
    // As a parameter it stays; EVP_CIPHER_CTX_set_padding() has it set anew with each message.
    unsigned int noPadding = 0;
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_uint(OSSL_CIPHER_PARAM_PADDING, &noPadding),
                                     OSSL_PARAM_construct_end()};
    if (context && EVP_CipherInit_ex2(context.get(), cipher, octets(key), nullptr, encrypt, parameters) != 1)
        context.reset();
    return context;
}

MacCtxPtr macContext(const QByteArray &key)
{
    MacCtxPtr context = newHmacContext();
    if (!setHmacKey(context.get(), key))
        context.reset();
    return context;
}

} // namespace

bool CryptoContexts::cipher(bool encrypt, const QByteArray &key, const unsigned char *iv, QByteArray &data)
{
    if (data.isEmpty() || data.size() % blockSize != 0 || data.size() > INT_MAX)
        return false;
    EVP_CIPHER_CTX *const context =
        (encrypt ? m_encrypt : m_decrypt).get(key, [encrypt](const QByteArray &k) {
            return cipherContext(encrypt, k);
        });
    const int keepDirection = -1;
    unsigned char *const bytes = octets(data);
    int written = 0;
    return context && EVP_CipherInit_ex2(context, nullptr, nullptr, iv, keepDirection, nullptr) == 1 &&
           EVP_CipherUpdate(context, bytes, &written, bytes, int(data.size())) == 1 && written == data.size();
}

QByteArray CryptoContexts::hmac(const QByteArray &key, const QByteArray &data)
{
    return hmacWith(m_mac.get(key, macContext), data);
}

void CryptoContexts::forget()
{
    m_encrypt.forget();
    m_decrypt.forget();
    m_mac.forget();
}

} // namespace Velno::GMP
