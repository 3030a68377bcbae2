// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <cstring>
#include <memory>
#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

/** Owners for OpenSSL's objects, and the one place where Qt's bytes become OpenSSL's. */
namespace Velno {

template <auto Free>
struct OpenSslFree
{
    template <typename T>
    void operator()(T *object) const noexcept
    {
        Free(object);
    }
};

using BioPtr = std::unique_ptr<BIO, OpenSslFree<BIO_free>>;
using BnCtxPtr = std::unique_ptr<BN_CTX, OpenSslFree<BN_CTX_free>>;
using BnPtr = std::unique_ptr<BIGNUM, OpenSslFree<BN_clear_free>>;
using CipherCtxPtr = std::unique_ptr<EVP_CIPHER_CTX, OpenSslFree<EVP_CIPHER_CTX_free>>;
using CipherPtr = std::unique_ptr<EVP_CIPHER, OpenSslFree<EVP_CIPHER_free>>;
using MacCtxPtr = std::unique_ptr<EVP_MAC_CTX, OpenSslFree<EVP_MAC_CTX_free>>;
using MacPtr = std::unique_ptr<EVP_MAC, OpenSslFree<EVP_MAC_free>>;
using MdCtxPtr = std::unique_ptr<EVP_MD_CTX, OpenSslFree<EVP_MD_CTX_free>>;
using MdPtr = std::unique_ptr<EVP_MD, OpenSslFree<EVP_MD_free>>;
using ParamBldPtr = std::unique_ptr<OSSL_PARAM_BLD, OpenSslFree<OSSL_PARAM_BLD_free>>;
using ParamPtr = std::unique_ptr<OSSL_PARAM, OpenSslFree<OSSL_PARAM_free>>;
using PkeyCtxPtr = std::unique_ptr<EVP_PKEY_CTX, OpenSslFree<EVP_PKEY_CTX_free>>;
using PkeyPtr = std::unique_ptr<EVP_PKEY, OpenSslFree<EVP_PKEY_free>>;
using X509Ptr = std::unique_ptr<X509, OpenSslFree<X509_free>>;
using X509StorePtr = std::unique_ptr<X509_STORE, OpenSslFree<X509_STORE_free>>;
using X509StoreCtxPtr = std::unique_ptr<X509_STORE_CTX, OpenSslFree<X509_STORE_CTX_free>>;

inline const unsigned char *octets(const QByteArray &bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

/** Writable bytes; detaches from other owners of the same data. */
inline unsigned char *octets(QByteArray &bytes)
{
    return reinterpret_cast<unsigned char *>(bytes.data());
}

/**
 * Overwrites what earlier calls have left on the stack below the caller and in the registers that bytes are
 * copied with. No function of ours keeps a secret there, but the dynamic linker saves those registers on the
 * stack when it looks a function up at its first call.
 */
[[gnu::noinline]] inline void cleanseStack()
{
    std::array<unsigned char, 32 * 1024> left; // more than OpenSSL needs for what is done here
    OPENSSL_cleanse(left.data(), left.size());
    const size_t half = left.size() / 2;
    for (size_t size = 1; size <= half; size *= 2) // other registers for other sizes
        std::memcpy(left.data(), left.data() + half, size);
    OPENSSL_cleanse(left.data(), left.size()); // so that no compiler leaves the copying out
}

/** Compares what nobody may guess byte by byte: how long that takes does not tell where they differ. */
inline bool sameSecret(QByteArrayView a, QByteArrayView b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), size_t(a.size())) == 0;
}

/** Empties a secret and overwrites its memory, unless another byte string still shares it. */
inline void cleanse(QByteArray &secret)
{
    if (secret.isDetached() && !secret.isEmpty())
        OPENSSL_cleanse(secret.data(), size_t(secret.size()));
    secret.clear();
}

} // namespace Velno
