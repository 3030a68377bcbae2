// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QTest>

using TestSupport::LogCapture;
using namespace Velno::GMP;
using namespace Velno;

/** Which certificates and signatures of a register the engine believes. */
class TestCertificates : public QObject
{
    Q_OBJECT

private slots:
    void certificateUnderTheAnchorsVerifies();
    void certificateIsRefused_data();
    void certificateIsRefused();
    void certificateOfNoRegisterIsRefused_data();
    void certificateOfNoRegisterIsRefused();
    void authorityInPlaceOfARegisterIsRefused();
    void signatureVerifies();
    void signatureIsRefused_data();
    void signatureIsRefused();
    void signingNeedsAReadableRsaKey();
};

void TestCertificates::certificateUnderTheAnchorsVerifies()
{
    const LogCapture log;
    const QByteArray certificate = TestSupport::developmentRegister().certificate;
    QVERIFY(GMP3::verifyCertificate(certificate, trustAnchors()));
    QVERIFY(GMP3::verifyCertificate(certificate, "garbage\n-----END CERTIFICATE-----\n" + trustAnchors()));
    QCOMPARE(log.text(), QByteArray());
}

void TestCertificates::certificateIsRefused_data()
{
    QTest::addColumn<QByteArray>("certificate");
    QTest::addColumn<QByteArray>("chain");
    QTest::addColumn<QByteArray>("line");

    const QByteArray good = TestSupport::developmentRegister().certificate;
    const QByteArray noIssuer = "Verificatione error: unable to get local issuer certificate\n";
    const QByteArray end = "-----END CERTIFICATE-----\n";
    const QByteArray subOnly = trustAnchors().first(trustAnchors().indexOf(end) + end.size());
    QTest::newRow("no certificate") << QByteArray() << trustAnchors() << QByteArray();
    QTest::newRow("no chain") << good << QByteArray() << QByteArray();
    QTest::newRow("no PEM") << QByteArray("garbage") << trustAnchors() << QByteArray();
    QTest::newRow("cut short") << good.first(good.size() / 2) << trustAnchors() << QByteArray();
    QTest::newRow("chain without end marker") << good << QByteArray("no marker") << noIssuer;
    QTest::newRow("chain with carriage returns")
        << good << QByteArray(trustAnchors()).replace("\n", "\r\n") << noIssuer;
    QTest::newRow("root missing") << good << subOnly
                                  << QByteArray("Verificatione error: unable to get issuer certificate\n");
    QTest::newRow("another authority") << TestSupport::selfSigned().certificate << trustAnchors()
                                       << QByteArray("Verificatione error: self-signed certificate\n");
    QTest::newRow("encrypted PEM asks nobody")
        << QByteArray(good).replace("-----BEGIN CERTIFICATE-----\n",
                                    "-----BEGIN CERTIFICATE-----\nProc-Type: 4,ENCRYPTED\nDEK-Info: "
                                    "AES-128-CBC,000102030405060708090A0B0C0D0E0F\n\n")
        << trustAnchors() << QByteArray();
}

void TestCertificates::certificateIsRefused()
{
    QFETCH(const QByteArray, certificate);
    QFETCH(const QByteArray, chain);
    QFETCH(const QByteArray, line);
    const LogCapture log;
    QVERIFY(!GMP3::verifyCertificate(certificate, chain));
    QCOMPARE(log.text(), line);
}

void TestCertificates::certificateOfNoRegisterIsRefused_data()
{
    QTest::addColumn<TestSupport::CertificateKind>("kind");
    QTest::addColumn<QByteArray>("line"); // in the log; empty for a certificate that is taken

    using Kind = TestSupport::CertificateKind;
    const auto row = [](const char *name, const Kind &kind, const QByteArray &fault) {
        QTest::newRow(name) << kind << (fault.isEmpty() ? fault : "Certificate refused: " + fault + '\n');
    };
    row("like a register's", {}, {});
    row("3072 bits", {.keyBits = 3072}, {});
    row("signed with SHA-1", {.digest = "SHA1"}, {});
    row("without extensions", {.basicConstraints = "", .keyUsage = ""}, {});
    row("for signatures and more", {.keyUsage = "digitalSignature,nonRepudiation,keyEncipherment"}, {});

    row("1024 bits", {.keyBits = 1024}, "its key is shorter than 2048 bits");
    row("2040 bits", {.keyBits = 2040}, "its key is shorter than 2048 bits");
    row("elliptic curve", {.keyType = "EC"}, "its key is not RSA");
    row("signed with MD5", {.digest = "MD5"}, "it is signed with MD5 or worse");
    row("an authority's", {.basicConstraints = "critical,CA:TRUE"}, "it is an authority's");
    row("an authority's, also for signatures",
        {.basicConstraints = "CA:TRUE", .keyUsage = "digitalSignature,keyCertSign"}, "it is an authority's");
    row("for certificates, without constraints", {.basicConstraints = "", .keyUsage = "keyCertSign"},
        "it is an authority's");
    row("for encryption only", {.keyUsage = "critical,keyEncipherment"}, "its key is not for signatures");
    row("for non-repudiation only", {.keyUsage = "nonRepudiation"}, "its key is not for signatures");
}

void TestCertificates::certificateOfNoRegisterIsRefused()
{
    QFETCH(const TestSupport::CertificateKind, kind);
    QFETCH(const QByteArray, line);
    static const TestSupport::TestAuthority authority;
    const QByteArray certificate = authority.issue(kind).certificate;
    const LogCapture log;
    QCOMPARE(GMP3::verifyCertificate(certificate, authority.chain()), line.isEmpty());
    QCOMPARE(log.text(), line);
}

void TestCertificates::authorityInPlaceOfARegisterIsRefused()
{
    const LogCapture log;
    const QByteArray end = "-----END CERTIFICATE-----\n";
    const qsizetype first = trustAnchors().indexOf(end) + end.size();
    QVERIFY(!GMP3::verifyCertificate(trustAnchors().first(first), trustAnchors()));
    QVERIFY(!GMP3::verifyCertificate(trustAnchors().sliced(first), trustAnchors()));
    QCOMPARE(log.text(), QByteArray("Certificate refused: it is an authority's\n").repeated(2));
}

void TestCertificates::signatureVerifies()
{
    const TestSupport::Credentials credentials = TestSupport::developmentRegister();
    const QByteArray signature = GMP3::rsassa_pkcs1v15_sha256_sign("public key", credentials.key);
    QCOMPARE(signature.size(), 256);
    QVERIFY(GMP3::rsassa_pkcs1v15_sha256_verify(credentials.certificate, "public key", signature));
}

void TestCertificates::signatureIsRefused_data()
{
    QTest::addColumn<QByteArray>("certificate");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("signature");

    const TestSupport::Credentials credentials = TestSupport::developmentRegister();
    const QByteArray good = GMP3::rsassa_pkcs1v15_sha256_sign("data", credentials.key);
    QByteArray flipped = good;
    flipped[0] = char(flipped.at(0) ^ 1);
    QTest::newRow("other data") << credentials.certificate << QByteArray("date") << good;
    QTest::newRow("no data") << credentials.certificate << QByteArray() << good;
    QTest::newRow("a flipped bit") << credentials.certificate << QByteArray("data") << flipped;
    QTest::newRow("no signature") << credentials.certificate << QByteArray("data") << QByteArray();
    QTest::newRow("a long signature") << credentials.certificate << QByteArray("data") << good + 'x';
    QTest::newRow("another certificate")
        << TestSupport::selfSigned().certificate << QByteArray("data") << good;
    QTest::newRow("a certificate for another scheme")
        << TestSupport::selfSigned("EC").certificate << QByteArray("data") << good;
    QTest::newRow("no certificate") << QByteArray() << QByteArray("data") << good;
    QTest::newRow("garbage for a certificate") << QByteArray("garbage") << QByteArray("data") << good;
}

void TestCertificates::signatureIsRefused()
{
    QFETCH(const QByteArray, certificate);
    QFETCH(const QByteArray, data);
    QFETCH(const QByteArray, signature);
    QVERIFY(!GMP3::rsassa_pkcs1v15_sha256_verify(certificate, data, signature));
}

void TestCertificates::signingNeedsAReadableRsaKey()
{
    const QByteArray key = TestSupport::developmentRegister().key;
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", {}), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", "garbage"), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", key.first(key.size() / 2)), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", TestSupport::encryptedKey(key, "secret")),
             QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", TestSupport::selfSigned("EC").key), QByteArray());
}

QTEST_GUILESS_MAIN(TestCertificates)
#include "tst_certificates.moc"
