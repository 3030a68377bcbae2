// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/diffie_hellman.h"

#include "ExtDevice/gmp3/built_in_group.h"

#include <openssl/core_names.h>

namespace Velno::GMP {

namespace {

BnPtr number(const char *bytes, int length)
{
    if (!bytes || length <= 0)
        return {};
    return BnPtr{BN_bin2bn(reinterpret_cast<const unsigned char *>(bytes), length, nullptr)};
}

bool isUsableGroup(const BIGNUM *p, const BIGNUM *g)
{
    // 1 and p - 1 generate nothing worth the name; an even p is no prime.
    const BnPtr last{BN_dup(p)};
    return last && BN_is_odd(p) && BN_sub_word(last.get(), 1) && !BN_is_zero(g) && !BN_is_one(g) &&
           BN_cmp(g, last.get()) < 0;
}

/** The same group with the peer's public key; null when the key is not in 2 .. p-2. */
PkeyPtr peerKey(const PkeyPtr &dh, const QByteArray &publicKey)
{
    PkeyPtr peer{EVP_PKEY_new()};
    if (!peer || EVP_PKEY_copy_parameters(peer.get(), dh.get()) != 1 ||
        EVP_PKEY_set1_encoded_public_key(peer.get(), octets(publicKey), size_t(publicKey.size())) != 1)
        return {};
    return peer;
}

} // namespace

PkeyPtr dhGroup(const char *p, int pLength, const char *g, int gLength)
{
    const BnPtr prime = number(p, pLength);
    const BnPtr generator = number(g, gLength);
    if (!prime || !generator || !isUsableGroup(prime.get(), generator.get()))
        return {};
    const ParamBldPtr builder{OSSL_PARAM_BLD_new()};
    if (!builder || !OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_FFC_P, prime.get()) ||
        !OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_FFC_G, generator.get()))
        return {};
    return dhGroup(builder);
}

PkeyPtr dhGroup(const ParamBldPtr &builder)
{
    const ParamPtr parameters{OSSL_PARAM_BLD_to_param(builder.get())};
    const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr)};
    EVP_PKEY *group = nullptr;
    if (!parameters || !ctx || EVP_PKEY_fromdata_init(ctx.get()) != 1 ||
        EVP_PKEY_fromdata(ctx.get(), &group, EVP_PKEY_KEY_PARAMETERS, parameters.get()) != 1)
        return {};
    return PkeyPtr{group};
}

PkeyPtr dhGroup2048()
{
    return dhGroup(get_dh2048_p_value(), get_dh2048_p_size(), get_dh2048_g_value(), get_dh2048_g_size());
}

bool generateKeyPair(PkeyPtr &dh)
{
    if (!dh)
        return false;
    const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_pkey(nullptr, dh.get(), nullptr)};
    EVP_PKEY *pair = nullptr;
    if (!ctx || EVP_PKEY_keygen_init(ctx.get()) != 1 || EVP_PKEY_keygen(ctx.get(), &pair) != 1)
        return false;
    dh.reset(pair);
    return true;
}

QByteArray publicKeyOf(const PkeyPtr &dh)
{
    BIGNUM *taken = nullptr;
    if (!dh || EVP_PKEY_get_bn_param(dh.get(), OSSL_PKEY_PARAM_PUB_KEY, &taken) != 1)
        return {};
    const BnPtr publicKey{taken};
    QByteArray bytes(EVP_PKEY_get_size(dh.get()), '\0');
    if (BN_bn2binpad(publicKey.get(), octets(bytes), int(bytes.size())) < 0)
        return {};
    return bytes;
}

QByteArray sharedSecret(const PkeyPtr &dh, const QByteArray &peerPublicKey)
{
    if (!dh || peerPublicKey.isEmpty())
        return {};
    const PkeyPtr peer = peerKey(dh, peerPublicKey);
    const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_pkey(nullptr, dh.get(), nullptr)};
    size_t length = 0;
    // Without the full key check of the plain call: the key's range was tested when it was set, and that
    // is all a safe prime needs.
    if (!peer || !ctx || EVP_PKEY_derive_init(ctx.get()) != 1 ||
        EVP_PKEY_derive_set_peer_ex(ctx.get(), peer.get(), 0) != 1 ||
        EVP_PKEY_derive(ctx.get(), nullptr, &length) != 1)
        return {};
    QByteArray secret(qsizetype(length), '\0');
    if (EVP_PKEY_derive(ctx.get(), octets(secret), &length) != 1) {
        cleanse(secret);
        return {};
    }
    secret.truncate(qsizetype(length)); // OpenSSL drops leading zero bytes, and so do registers
    return secret;
}

} // namespace Velno::GMP
