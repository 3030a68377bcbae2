// SPDX-License-Identifier: Apache-2.0

// A register's certificate, which nobody has looked at before it is verified, and a signature beside a good
// one.
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "fuzz/fuzz_input.h"
#include "tests/support/test_authority.h"

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace {

const QByteArray pemBegin = "-----BEGIN CERTIFICATE-----\n"_ba;
const QByteArray pemEnd = "-----END CERTIFICATE-----\n"_ba;

QByteArray pem(const QByteArray &der)
{
    QByteArray text = pemBegin;
    const QByteArray base64 = der.toBase64();
    for (qsizetype i = 0; i < base64.size(); i += 64)
        text += base64.mid(i, 64) + '\n';
    return text + pemEnd;
}

QByteArray der(const QByteArray &pem)
{
    return QByteArray::fromBase64(pem.sliced(pemBegin.size()).chopped(pemEnd.size()));
}

/** The good one with some bytes replaced. */
QByteArray damaged(const QByteArray &good, Fuzz::Input &input)
{
    QByteArray bytes = der(good);
    for (int i = 0; i < 8 && !input.atEnd(); ++i) {
        const qsizetype place = input.number<std::uint16_t>() % bytes.size();
        bytes[place] = char(input.byte());
    }
    return pem(bytes);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const QByteArray good = TestSupport::developmentRegister().certificate;
    Fuzz::Input input(data, size);
    const std::uint8_t how = input.byte() % 4;
    if (how == 3) {
        FUZZ_EXPECT(!GMP3::rsassa_pkcs1v15_sha256_verify(good, "data", input.rest()));
        return 0;
    }
    const QByteArray certificate = how == 0   ? input.rest()
                                   : how == 1 ? pem(input.rest())
                                              : damaged(good, input);
    const bool isTrusted = GMP3::verifyCertificate(certificate, trustAnchors());
    FUZZ_EXPECT(!isTrusted || how == 2); // the authority's keys are gone, so nobody can make another one
    GMP3::rsassa_pkcs1v15_sha256_verify(certificate, "data", QByteArray(256, 's'));
    return 0;
}
