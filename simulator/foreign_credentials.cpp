#include "simulator/foreign_credentials.h"

#include "ExtDevice/openssl_ptr.h"

#include <openssl/pem.h>

namespace Simulator {

using namespace Velno;

namespace {

constexpr long validity = 365L * 24 * 60 * 60; // seconds

PkeyPtr makeKey()
{
    return PkeyPtr{EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", size_t(2048))};
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

template <typename Write>
QByteArray pem(Write write)
{
    const BioPtr bio{BIO_new(BIO_s_mem())};
    if (!bio || write(bio.get()) != 1)
        return {};
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return QByteArray(data, size);
}

} // namespace

Credentials makeForeignCredentials()
{
    const PkeyPtr issuerKey = makeKey();
    const PkeyPtr key = makeKey();
    if (!issuerKey || !key)
        return {};
    const X509Ptr certificate = issueCertificate(key.get(), issuerKey.get());
    if (!certificate)
        return {};
    return {pem([&](BIO *bio) { return PEM_write_bio_X509(bio, certificate.get()); }), pem([&](BIO *bio) {
                return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            })};
}

} // namespace Simulator
