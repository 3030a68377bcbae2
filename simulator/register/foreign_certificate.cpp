// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/foreign_certificate.h"

#include "ExtDevice/openssl_ptr.h"

#include <openssl/pem.h>

namespace Simulator {

using namespace Velno;

namespace {

constexpr long validity = 365L * 24 * 60 * 60; // seconds

X509Ptr parse(const QByteArray &certificate)
{
    const BioPtr bio{BIO_new_mem_buf(certificate.constData(), int(certificate.size()))};
    return X509Ptr{bio ? PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr) : nullptr};
}

bool addCommonName(X509_NAME *name, const QByteArray &text)
{
    return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, octets(text), int(text.size()), -1, 0) == 1;
}

X509Ptr issueCertificate(EVP_PKEY *key, EVP_PKEY *issuerKey)
{
    X509Ptr certificate{X509_new()};
    X509 *x509 = certificate.get();
    const bool made = x509 && X509_set_version(x509, X509_VERSION_3) == 1 &&
                      ASN1_INTEGER_set(X509_get_serialNumber(x509), 1) == 1 &&
                      X509_gmtime_adj(X509_getm_notBefore(x509), -validity) &&
                      X509_gmtime_adj(X509_getm_notAfter(x509), validity) &&
                      addCommonName(X509_get_issuer_name(x509), "Velno Foreign Authority") &&
                      addCommonName(X509_get_subject_name(x509), "Velno Foreign Register") &&
                      X509_set_pubkey(x509, key) == 1 && X509_sign(x509, issuerKey, EVP_sha256()) > 0;
    return made ? std::move(certificate) : nullptr;
}

QByteArray pem(X509 *certificate)
{
    const BioPtr bio{BIO_new(BIO_s_mem())};
    if (!bio || PEM_write_bio_X509(bio.get(), certificate) != 1)
        return {};
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return QByteArray(data, qsizetype(size));
}

} // namespace

QByteArray underForeignAuthority(const QByteArray &certificate)
{
    const X509Ptr own = parse(certificate);
    EVP_PKEY *key = own ? X509_get0_pubkey(own.get()) : nullptr; // lent
    const PkeyPtr issuerKey{EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256")};
    if (!key || !issuerKey)
        return {};
    const X509Ptr foreign = issueCertificate(key, issuerKey.get());
    return foreign ? pem(foreign.get()) : QByteArray();
}

} // namespace Simulator
