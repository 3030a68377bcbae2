// SPDX-License-Identifier: Apache-2.0

#include "tests/support/test_authority.h"

#include "ExtDevice/encoding/file.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

using Velno::BioPtr;
using Velno::PkeyPtr;
using Velno::X509Ptr;

QByteArray contents(BIO *bio)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return QByteArray(data, qsizetype(size));
}

QByteArray keyPem(EVP_PKEY *key, const EVP_CIPHER *cipher, const char *password)
{
    const BioPtr bio{BIO_new(BIO_s_mem())};
    PEM_write_bio_PKCS8PrivateKey(bio.get(), key, cipher, password, password ? int(qstrlen(password)) : 0,
                                  nullptr, nullptr);
    return contents(bio.get());
}

PkeyPtr freshKey(const char *type, int bits)
{
    if (qstrcmp(type, "EC") == 0)
        return PkeyPtr{EVP_PKEY_Q_keygen(nullptr, nullptr, type, "P-256")};
    return PkeyPtr{EVP_PKEY_Q_keygen(nullptr, nullptr, type, size_t(bits))};
}

PkeyPtr keyOf(const QByteArray &pem)
{
    const BioPtr bio{BIO_new_mem_buf(pem.constData(), int(pem.size()))};
    return PkeyPtr{PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr)};
}

QByteArray certificatePem(X509 *x509)
{
    const BioPtr bio{BIO_new(BIO_s_mem())};
    PEM_write_bio_X509(bio.get(), x509);
    return contents(bio.get());
}

/** Everything of a certificate but its issuer, its extensions and its signature. */
X509Ptr unsignedCertificate(EVP_PKEY *key, const char *commonName)
{
    X509Ptr x509{X509_new()};
    X509_set_version(x509.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(x509.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(x509.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(commonName), -1, -1, 0);
    return x509;
}

void addExtension(X509 *x509, int name, const char *value)
{
    if (*value == '\0')
        return;
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, nullptr, name, value);
    X509_add_ext(x509, extension, -1);
    X509_EXTENSION_free(extension);
}

} // namespace

Credentials selfSigned(const char *type, int bits)
{
    const PkeyPtr key = freshKey(type, bits);
    const X509Ptr x509 = unsignedCertificate(key.get(), "Velno Test Stranger");
    X509_set_issuer_name(x509.get(), X509_get_subject_name(x509.get()));
    X509_sign(x509.get(), key.get(), EVP_sha256());
    return {certificatePem(x509.get()), keyPem(key.get(), nullptr, nullptr)};
}

TestAuthority::TestAuthority()
{
    const PkeyPtr key = freshKey("RSA", 2048);
    const X509Ptr x509 = unsignedCertificate(key.get(), "Velno Test Authority");
    X509_set_issuer_name(x509.get(), X509_get_subject_name(x509.get()));
    addExtension(x509.get(), NID_basic_constraints, "critical,CA:TRUE");
    X509_sign(x509.get(), key.get(), EVP_sha256());
    m_own = {certificatePem(x509.get()), keyPem(key.get(), nullptr, nullptr)};
}

Credentials TestAuthority::issue(const CertificateKind &kind) const
{
    const PkeyPtr key = freshKey(kind.keyType, kind.keyBits);
    const X509Ptr x509 = unsignedCertificate(key.get(), "Velno Test Register");
    const BioPtr own{BIO_new_mem_buf(m_own.certificate.constData(), int(m_own.certificate.size()))};
    const X509Ptr issuer{PEM_read_bio_X509(own.get(), nullptr, nullptr, nullptr)};
    X509_set_issuer_name(x509.get(), X509_get_subject_name(issuer.get()));
    addExtension(x509.get(), NID_basic_constraints, kind.basicConstraints);
    addExtension(x509.get(), NID_key_usage, kind.keyUsage);
    X509_sign(x509.get(), keyOf(m_own.key).get(), EVP_get_digestbyname(kind.digest));
    return {certificatePem(x509.get()), keyPem(key.get(), nullptr, nullptr)};
}

QByteArray encryptedKey(const QByteArray &key, const char *password)
{
    return keyPem(keyOf(key).get(), EVP_aes_256_cbc(), password);
}

Credentials developmentRegister()
{
    const QString folder = QString::fromUtf8(VELNO_DEVELOPMENT_AUTHORITY "/register/");
    Credentials credentials;
    if (!Velno::readData(folder + u"client.crt"_s, &credentials.certificate) ||
        !Velno::readData(folder + u"client.key"_s, &credentials.key))
        qFatal("the build folder holds no development authority");
    return credentials;
}

QByteArray groupOfItsOwn()
{
    QByteArray pem;
    if (!Velno::readData(QString::fromUtf8(VELNO_GROUP_OF_ITS_OWN), &pem))
        qFatal("the group of the tests is not there");
    return pem;
}

} // namespace TestSupport
