// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3_util.h"
#include "tests/support/hand_made_register.h"
#include "tests/support/pairing_check.h"
#include "tests/support/test_support.h"

#include <QTest>

using TestSupport::Fields;
using TestSupport::HandMadeRegister;
using TestSupport::hex;
using TestSupport::LogCapture;
using TestSupport::Request;
using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

namespace {

QByteArray freshPublicKey()
{
    PkeyPtr pair = GMP3::DH_get_dh2048();
    return GMP3::DH_generate(pair) ? GMP3::DH_get_pubkey(pair) : QByteArray();
}

} // namespace

/** A register whose certificate, signature or group is not what it should be. */
class TestUntrustedRegister : public QObject
{
    Q_OBJECT

private slots:
    void strangerIsNotTrusted();
    void certificateIsNeeded();
    void signatureIsNeeded_data();
    void signatureIsNeeded();
    void unknownGroupGetsNoKey_data();
    void unknownGroupGetsNoKey();
    void unknownGroupIsTheReasonWhateverIsAnswered_data();
    void unknownGroupIsTheReasonWhateverIsAnswered();
    void keyOutOfRangeGetsNoConfirmation_data();
    void keyOutOfRangeGetsNoConfirmation();
    void laterCertificateIsVerifiedAgain();
    void laterTrustedCertificateIsTaken();
    void replacedKeyAfterTheSignatureEndsIt_data();
    void replacedKeyAfterTheSignatureEndsIt();
    void repeatedSignedKeyDoesNoHarm();
};

void TestUntrustedRegister::strangerIsNotTrusted()
{
    HandMadeRegister reg;
    reg.credentials = TestSupport::selfSigned();
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pair(record, reg), 5001);
    QCOMPARE(capture.text(), QByteArray("Verificatione error: self-signed certificate\n"));
    QVERIFY(isEmpty(record));
    QCOMPARE(reg.finish().size(), 1);
}

void TestUntrustedRegister::certificateIsNeeded()
{
    HandMadeRegister reg(changed(PairingStart, [](auto &, Fields &fields) {
        TestSupport::removeField(fields, fieldTag(Certificate));
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 5001);
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::signatureIsNeeded_data()
{
    QTest::addColumn<QByteArray>("signature");

    const QByteArray key = TestSupport::developmentRegister().key;
    QTest::newRow("none") << QByteArray();
    QTest::newRow("of other data") << GMP3::rsassa_pkcs1v15_sha256_sign("other data", key);
    QTest::newRow("garbage") << QByteArray(256, 'x');
}

void TestUntrustedRegister::signatureIsNeeded()
{
    QFETCH(const QByteArray, signature);
    HandMadeRegister reg(changed(PairingKeyExchange, [=](auto &, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(Signature), signature);
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 5002);
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::unknownGroupGetsNoKey_data()
{
    QTest::addColumn<QByteArray>("p");
    QTest::addColumn<QByteArray>("g");
    QTest::addColumn<QByteArray>("line"); // its beginning

    const QByteArray p(get_dh2048_p_value(), get_dh2048_p_size());
    QByteArray composite = p;
    composite[255] = char(composite.at(255) ^ 2);
    const QByteArray none = "Unknown DH group: no usable numbers\n";
    QTest::newRow("a small prime") << hex("17") << hex("05")
                                   << QByteArray("Unknown DH group: 5 bits, generator 0x05");
    QTest::newRow("512 bits") << QByteArray(64, '\xF1') << hex("02")
                              << QByteArray("Unknown DH group: 512 bits");
    QTest::newRow("a composite of the right size")
        << composite << hex("02") << QByteArray("Unknown DH group: 2048 bits, generator 0x02");
    QTest::newRow("group 14 with another generator")
        << p << hex("05") << QByteArray("Unknown DH group: 2048 bits, generator 0x05");
    QTest::newRow("a generator of order 2") << p << p.first(255) + '\xFE' << none;
    QTest::newRow("no group") << QByteArray() << QByteArray() << none;
}

void TestUntrustedRegister::unknownGroupGetsNoKey()
{
    QFETCH(const QByteArray, p);
    QFETCH(const QByteArray, g);
    QFETCH(const QByteArray, line);
    HandMadeRegister reg(changed(PairingStart, [=](auto &, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(DhPrime), p);
        TestSupport::replaceValue(fields, fieldTag(DhGenerator), g);
    }));
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pair(record, reg), 5002);
    QVERIFY2(capture.text().startsWith(line), capture.text());
    // The register is told by the key that is missing; no application hash goes out under keys that everybody
    // can make of the randoms.
    const QList<Request> requests = reg.finish();
    QCOMPARE(kindsOf(requests), (QList{PairingStart, PairingKeyExchange}));
    QVERIFY(TestSupport::valueOf(requests.at(1).fields, fieldTag(RequesterPublicKey)).isEmpty());
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::unknownGroupIsTheReasonWhateverIsAnswered_data()
{
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("refused") << HandMadeRegister::frameOf(PairingKeyExchange, {{fieldTag(ResultCode), "01"}});
    QTest::newRow("another kind") << HandMadeRegister::frameOf(PairingStart, {{fieldTag(ResultCode), "00"}});
    QTest::newRow("no signature") << HandMadeRegister::frameOf(PairingKeyExchange,
                                                               {{fieldTag(ResultCode), "00"}});
    QTest::newRow("no frame") << hex("0000");
}

void TestUntrustedRegister::unknownGroupIsTheReasonWhateverIsAnswered()
{
    QFETCH(const QByteArray, answer);
    HandMadeRegister reg([=](HandMadeRegister &self, const Request &request, int) {
        Fields fields = self.honestAnswer(request);
        TestSupport::replaceValue(fields, fieldTag(DhGenerator), hex("05"));
        return QList{request.kind == PairingStart ? HandMadeRegister::frameOf(request.kind, fields) : answer};
    });
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pair(record, reg), 5002);
    QCOMPARE(reg.finish().size(), 2);
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::keyOutOfRangeGetsNoConfirmation_data()
{
    QTest::addColumn<QByteArray>("key");

    const QByteArray p(get_dh2048_p_value(), get_dh2048_p_size());
    QTest::newRow("0") << QByteArray(256, '\0');
    QTest::newRow("1") << QByteArray(255, '\0') + '\1';
    QTest::newRow("p-1") << p.first(255) + '\xFE';
    QTest::newRow("p") << p;
    QTest::newRow("too long") << p + p;
}

void TestUntrustedRegister::keyOutOfRangeGetsNoConfirmation()
{
    // Even of a register that signs it: there is no secret in it.
    QFETCH(const QByteArray, key);
    HandMadeRegister reg(changed(PairingKeyExchange, [=](HandMadeRegister &self, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(ResponderPublicKey), key);
        TestSupport::replaceValue(fields, fieldTag(Signature),
                                  GMP3::rsassa_pkcs1v15_sha256_sign(key, self.credentials.key));
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 5002);
    QCOMPARE(kindsOf(reg.finish()), (QList{PairingStart, PairingKeyExchange}));
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::laterCertificateIsVerifiedAgain()
{
    // The attacker shows the real register's certificate first and his own when it is time to sign.
    const TestSupport::Credentials stranger = TestSupport::selfSigned();
    HandMadeRegister reg(changed(PairingKeyExchange, [=](HandMadeRegister &self, Fields &fields) {
        fields.append({fieldTag(Certificate), stranger.certificate});
        const QByteArray key = GMP3::DH_get_pubkey(self.dh);
        TestSupport::replaceValue(fields, fieldTag(Signature),
                                  GMP3::rsassa_pkcs1v15_sha256_sign(key, stranger.key));
    }));
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pair(record, reg), 5001);
    QVERIFY(isEmpty(record));
}

void TestUntrustedRegister::laterTrustedCertificateIsTaken()
{
    HandMadeRegister reg(changed(PairingKeyExchange, [](HandMadeRegister &self, Fields &fields) {
        fields.append({fieldTag(Certificate), self.credentials.certificate + '\n'});
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
}

void TestUntrustedRegister::replacedKeyAfterTheSignatureEndsIt_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("response");

    QTest::newRow("by a wrong kind") << int(PairingKeyExchange) << true;
    QTest::newRow("by a request") << int(PairingConfirm) << false;
}

void TestUntrustedRegister::replacedKeyAfterTheSignatureEndsIt()
{
    QFETCH(const int, kind);
    QFETCH(const bool, response);
    HandMadeRegister reg([=](HandMadeRegister &self, const Request &request, int count) {
        if (count == 3)
            return QList{HandMadeRegister::frameOf(
                MessageTag(kind),
                {{fieldTag(ResponderPublicKey), freshPublicKey()}, {fieldTag(ResultCode), "00"}}, response)};
        return QList{HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    MatchExt record;
    QCOMPARE(pair(record, reg), 5002);
    QVERIFY(isEmpty(record));
    QCOMPARE(reg.finish().size(), 3);
}

void TestUntrustedRegister::repeatedSignedKeyDoesNoHarm()
{
    HandMadeRegister reg([](HandMadeRegister &self, const Request &request, int count) {
        if (count == 3)
            return QList{HandMadeRegister::frameOf(
                PairingKeyExchange, {{fieldTag(ResponderPublicKey), GMP3::DH_get_pubkey(self.dh)}})};
        return QList{HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
    QCOMPARE(record.aesKey, reg.aesKey);
    QCOMPARE(reg.finish().size(), 4);
}

QTEST_GUILESS_MAIN(TestUntrustedRegister)
#include "tst_untrusted_register.moc"
