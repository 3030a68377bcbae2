// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/match_ext.h"

namespace Velno::GMP {

MatchExt::~MatchExt()
{
    forgetKeys();
}

void MatchExt::forgetKeys()
{
    contexts.forget();
    for (QByteArray *key : {&hmacKey, &kcvIv, &aesKey})
        cleanse(*key);
}

} // namespace Velno::GMP
