#include "ExtDevice/gmp3/trust_anchors.h"

#include "trust_anchors_data.h"

#include <cstdio>

namespace Velno::GMP {

const QByteArray &trustAnchors()
{
    static const QByteArray chain = QByteArray::fromRawData(velnoTrustAnchors, sizeof velnoTrustAnchors - 1);
    return chain;
}

bool trustsDevelopmentAuthority()
{
    return velnoDevelopmentAuthority;
}

void warnOfDevelopmentAuthority(const char *program)
{
    if (trustsDevelopmentAuthority())
        std::fprintf(stderr, "%s: built for development, trusts the Velno Development authority only\n",
                     program);
}

} // namespace Velno::GMP
