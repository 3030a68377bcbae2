// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/built_in_group.h"

#include "ExtDevice/openssl_ptr.h"

namespace Velno::GMP {

namespace {

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

} // namespace Velno::GMP
