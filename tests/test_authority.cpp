#include "tests/test_authority.h"

#include "ExtDevice/encoding/file.h"

#include <openssl/pem.h>

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

} // namespace

Credentials selfSigned(const char *type, int bits)
{
    const PkeyPtr key = freshKey(type, bits);
    const X509Ptr x509{X509_new()};
    X509_set_version(x509.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(x509.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), key.get());
    X509_NAME *name = X509_get_subject_name(x509.get());
    const unsigned char commonName[] = "Velno Test Stranger";
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, commonName, -1, -1, 0);
    X509_set_issuer_name(x509.get(), name);
    X509_sign(x509.get(), key.get(), EVP_sha256());
    const BioPtr bio{BIO_new(BIO_s_mem())};
    PEM_write_bio_X509(bio.get(), x509.get());
    return {contents(bio.get()), keyPem(key.get(), nullptr, nullptr)};
}

QByteArray encryptedKey(const QByteArray &key, const char *password)
{
    const BioPtr bio{BIO_new_mem_buf(key.constData(), int(key.size()))};
    const PkeyPtr plain{PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr)};
    return keyPem(plain.get(), EVP_aes_256_cbc(), password);
}

Credentials developmentRegister()
{
    const QString folder = QStringLiteral(VELNO_DEVELOPMENT_AUTHORITY "/register/");
    Credentials credentials;
    if (!Velno::readData(folder + QStringLiteral("client.crt"), &credentials.certificate) ||
        !Velno::readData(folder + QStringLiteral("client.key"), &credentials.key))
        qFatal("the build folder holds no development authority");
    return credentials;
}

} // namespace TestSupport
