// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/credentials.h"

#include "ExtDevice/encoding/file.h"
#include "ExtDevice/gmp3/certificates.h"
#include "ExtDevice/gmp3/log.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/openssl_ptr.h"
#include "translations/spoken.h"

#include <openssl/err.h>
#include <openssl/pem.h>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

/** OpenSSL would ask for a password on the terminal. */
int noPassword(char *, int, int, void *)
{
    return -1;
}

template <auto Read>
auto parsed(const QByteArray &pem)
{
    const Velno::BioPtr bio{BIO_new_mem_buf(pem.constData(), int(pem.size()))};
    auto *const object = bio ? Read(bio.get(), nullptr, noPassword, nullptr) : nullptr;
    ERR_clear_error();
    return object;
}

QString unreadable(const QString &file, const QString &path)
{
    return Spoken::tr("the credentials folder must hold a readable %1; there is no %2").arg(file, path);
}

QString pairProblem(const QString &folder, const QString &name)
{
    const QString certificatePath = folder + u'/' + name + u".crt"_s;
    const QString keyPath = folder + u'/' + name + u".key"_s;
    QByteArray pem;
    if (!Velno::readData(certificatePath, &pem))
        return unreadable(name + u".crt"_s, certificatePath);
    const Velno::X509Ptr certificate{parsed<PEM_read_bio_X509>(pem)};
    if (!certificate)
        return Spoken::tr("%1 holds no certificate; accepted is one in PEM form").arg(certificatePath);
    if (!Velno::readData(keyPath, &pem))
        return unreadable(name + u".key"_s, keyPath);
    const Velno::PkeyPtr key{parsed<PEM_read_bio_PrivateKey>(pem)};
    Velno::cleanse(pem);
    if (!key)
        return Spoken::
            tr("%1 holds no private key that can be read; accepted is one in PEM form, without a password")
                .arg(keyPath);
    if (!EVP_PKEY_is_a(key.get(), "RSA"))
        return Spoken::tr("%1 holds a key of the kind %2; accepted is RSA")
            .arg(keyPath, QString::fromLatin1(EVP_PKEY_get0_type_name(key.get())));
    const bool fits = X509_check_private_key(certificate.get(), key.get()) == 1;
    ERR_clear_error();
    return fits ? QString()
                : Spoken::tr("%1 does not fit %2; accepted is the private key of that certificate")
                      .arg(keyPath, certificatePath);
}

void keepLine(const char *text, void *kept)
{
    *static_cast<QString *>(kept) = QString::fromUtf8(text);
}

} // namespace

QString credentialsProblem(const QString &folder, const Faults &faults)
{
    const QString problem = pairProblem(folder, u"client"_s);
    const bool both = problem.isEmpty() && faults.has(Fault::ExpiredCertificate);
    return both ? pairProblem(folder, u"expired"_s) : problem;
}

QString credentialsDoubt(const QString &folder)
{
    const QString path = folder + u"/client.crt"_s;
    QByteArray pem;
    if (!Velno::readData(path, &pem))
        return unreadable(u"client.crt"_s, path);
    QString reason;
    Velno::GMP::setLogReceiver(keepLine, &reason);
    const bool believed = Velno::GMP::verifyCertificate(pem, Velno::GMP::trustAnchors());
    Velno::GMP::setLogReceiver(nullptr, nullptr);
    if (believed)
        return {};
    return Spoken::tr("applications of this build do not believe %1 and end the pairing with 5001 (%2)")
        .arg(path, reason.section(u": "_s, 1));
}

} // namespace Simulator
