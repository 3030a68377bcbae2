// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/known_groups.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/diffie_hellman.h"

#include "known_groups_data.h"

#include <openssl/core_names.h>
#include <openssl/pem.h>

#include <algorithm>

namespace Velno::GMP {

namespace {

constexpr const char *namedGroups[] = {"modp_2048", "modp_3072", "modp_4096", "modp_6144", "modp_8192",
                                       "ffdhe2048", "ffdhe3072", "ffdhe4096", "ffdhe6144", "ffdhe8192"};

constexpr qsizetype mostGeneratorDigits = 16; // that are worth showing

PkeyPtr namedGroup(const char *name)
{
    const ParamBldPtr builder{OSSL_PARAM_BLD_new()};
    if (!builder || !OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, name, 0))
        return {};
    return dhGroup(builder);
}

/** Made once: those of the build, then the named ones. */
const std::vector<PkeyPtr> &knownGroups()
{
    static const std::vector<PkeyPtr> groups = [] {
        std::vector<PkeyPtr> all = groupsIn(velnoDhGroups);
        for (const char *name : namedGroups) {
            if (PkeyPtr group = namedGroup(name))
                all.push_back(std::move(group));
        }
        return all;
    }();
    return groups;
}

BnPtr numberOf(const PkeyPtr &group, const char *parameter)
{
    BIGNUM *number = nullptr;
    EVP_PKEY_get_bn_param(group.get(), parameter, &number);
    return BnPtr{number};
}

bool isSameNumber(const PkeyPtr &group, const PkeyPtr &known, const char *parameter)
{
    const BnPtr one = numberOf(group, parameter);
    const BnPtr other = numberOf(known, parameter);
    return one && other && BN_cmp(one.get(), other.get()) == 0;
}

QByteArray digitsOf(const PkeyPtr &group, const char *parameter)
{
    const BnPtr number = numberOf(group, parameter);
    QByteArray bytes(number ? BN_num_bytes(number.get()) : 0, '\0');
    if (number)
        BN_bn2bin(number.get(), octets(bytes));
    return bytes.toHex().toUpper();
}

} // namespace

bool isKnownGroup(const PkeyPtr &group)
{
    const auto isThisOne = [&group](const PkeyPtr &known) {
        return isSameNumber(group, known, OSSL_PKEY_PARAM_FFC_P) &&
               isSameNumber(group, known, OSSL_PKEY_PARAM_FFC_G);
    };
    return group && std::ranges::any_of(knownGroups(), isThisOne);
}

std::vector<PkeyPtr> groupsIn(const QByteArray &pem)
{
    std::vector<PkeyPtr> groups;
    const BioPtr bio{BIO_new_mem_buf(pem.constData(), int(pem.size()))};
    while (bio && !BIO_eof(bio.get())) {
        PkeyPtr group{PEM_read_bio_Parameters(bio.get(), nullptr)};
        if (!group)
            break;
        groups.push_back(std::move(group));
    }
    return groups;
}

QByteArray groupInWords(const PkeyPtr &group)
{
    const QByteArray generator = digitsOf(group, OSSL_PKEY_PARAM_FFC_G);
    return QByteArray::number(EVP_PKEY_get_bits(group.get())) + " bits, generator " +
           (generator.size() <= mostGeneratorDigits ? "0x" + generator : QByteArray("a long number")) +
           ", SHA-256 of the prime " + sha256Sum(digitsOf(group, OSSL_PKEY_PARAM_FFC_P)).toHex();
}

} // namespace Velno::GMP
