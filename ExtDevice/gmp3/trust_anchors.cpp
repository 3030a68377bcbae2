// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"

#include "ExtDevice/openssl_ptr.h"
#include "trust_anchors_data.h"

#include <QCoreApplication>

#include <cstdio>
#include <openssl/pem.h>

using namespace Qt::StringLiterals;

namespace Velno::GMP {

namespace {

/** As RFC 2253 writes it, in UTF-8. */
QString subjectOf(const X509 *certificate)
{
    constexpr unsigned long style = XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
    const BioPtr text{BIO_new(BIO_s_mem())};
    if (!text || X509_NAME_print_ex(text.get(), X509_get_subject_name(certificate), 0, style) < 0)
        return {};
    const char *bytes = nullptr;
    const long size = BIO_get_mem_data(text.get(), &bytes);
    return QString::fromUtf8(bytes, size);
}

} // namespace

const QByteArray &trustAnchors()
{
    static const QByteArray chain = QByteArray::fromRawData(velnoTrustAnchors, sizeof velnoTrustAnchors - 1);
    return chain;
}

bool trustsDevelopmentAuthority()
{
    return velnoDevelopmentAuthority;
}

QString trustAnchorsInWords()
{
    QString words = trustsDevelopmentAuthority()
                        ? QCoreApplication::translate(
                              "Spoken", "Trust anchors (this build's own development authority):\n")
                        : QCoreApplication::translate("Spoken", "Trust anchors:\n");
    const BioPtr chain{BIO_new_mem_buf(trustAnchors().constData(), int(trustAnchors().size()))};
    while (const X509Ptr anchor{chain ? PEM_read_bio_X509(chain.get(), nullptr, nullptr, nullptr) : nullptr})
        words += u"  "_s + subjectOf(anchor.get()) + u'\n';
    return words;
}

void warnOfDevelopmentAuthority(const char *program)
{
    const QString text = QCoreApplication::translate(
        "Spoken", "built for development, trusts the Velno Development authority only");
    if (trustsDevelopmentAuthority())
        std::fprintf(stderr, "%s: %s\n", program, qUtf8Printable(text));
}

} // namespace Velno::GMP
