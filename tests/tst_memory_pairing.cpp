// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "tests/support/register_in_memory.h"
#include "tests/support/test_support.h"

#include <QMessageAuthenticationCode>
#include <QTest>

#include <openssl/core_names.h>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;
using namespace Velno;
using TestSupport::hex;
using TestSupport::LogCapture;
using TestSupport::RegisterInMemory;

namespace {

constexpr char serial[] = "UB1234567890";
constexpr char terminal[] = "001A2B3C4D5E";
const QDateTime now(QDate(2031, 2, 3), QTime(4, 5, 6, 789), Qt::OffsetFromUTC, 3 * 60 * 60);

PairingTerms terms(const char *serialNo = serial)
{
    return {serialNo, terminal, QByteArray(32, 'h'), 0};
}

/** An application at its end of a link, with a clock that stands and randoms that are known. */
struct Application
{
    explicit Application(RegisterInMemory &reg, char random = 'D')
    {
        session.link = &link;
        session.clock = [] { return now; };
        session.randoms = [random](int count) { return QByteArray(count, random); };
        reg.responder.session().randoms = [random](int count) { return QByteArray(count, char(random + 1)); };
        reg.meet(link);
    }

    MemoryLink link;
    Session session;
};

/** The value of a field in a frame with one message, "missing" when there is none. */
QByteArray valueIn(const QByteArray &frame, const char *tag)
{
    ReceivedMessage message;
    if (readFrame(frame.constData(), int(frame.size()), nullptr, &message) != 0)
        return "no frame";
    const QByteArray *const value = message.find(hex(tag));
    return value ? *value : QByteArray("missing");
}

/** publicKey ^ exponent mod p, by the plain formula, without leading zeros. */
QByteArray secretOf(const BIGNUM *exponent, const QByteArray &publicKey)
{
    const BnPtr base{BN_bin2bn(octets(publicKey), int(publicKey.size()), nullptr)};
    const BnPtr prime{BN_get_rfc3526_prime_2048(nullptr)};
    const BnPtr power{BN_new()};
    const BnCtxPtr context{BN_CTX_new()};
    BN_mod_exp(power.get(), base.get(), exponent, prime.get(), context.get());
    QByteArray bytes(BN_num_bytes(power.get()), '\0');
    BN_bn2bin(power.get(), octets(bytes));
    return bytes;
}

BnPtr exponentOf(const PkeyPtr &pair)
{
    BIGNUM *taken = nullptr;
    EVP_PKEY_get_bn_param(pair.get(), OSSL_PKEY_PARAM_PRIV_KEY, &taken);
    return BnPtr{taken};
}

/** The first 32 bytes of TLS 1.2's expansion, with Qt's HMAC. */
QByteArray expanded(const QByteArray &secret, const QByteArray &labelSeed)
{
    const auto hmac = [&secret](const QByteArray &data) {
        return QMessageAuthenticationCode::hash(data, secret, QCryptographicHash::Sha256);
    };
    return hmac(hmac(labelSeed) + labelSeed);
}

/** AES-256-CBC of 32 bytes of FF: its last block. */
QByteArray lastCheckBlock(const QByteArray &key, const QByteArray &iv)
{
    const CipherCtxPtr context{EVP_CIPHER_CTX_new()};
    const QByteArray plain(32, '\xFF');
    QByteArray cipher(48, '\0');
    int size = 0;
    EVP_EncryptInit_ex2(context.get(), EVP_aes_256_cbc(), octets(key), octets(iv), nullptr);
    EVP_EncryptUpdate(context.get(), octets(cipher), &size, octets(plain), int(plain.size()));
    return cipher.mid(16, 16);
}

} // namespace

/** Library and register in one process, each with a session of its own, joined in memory. */
class TestMemoryPairing : public QObject
{
    Q_OBJECT

private slots:
    void recordIsWhatBothSidesMustCompute();
    void requestsTellTheTimeOfTheClock();
    void sessionOfTheProcessIsUntouched();
    void pairingsInsideOneAnotherDoNotMix();
    void registerThatRefusesIsNotPaired();
    void silentRegisterIsNotWaitedFor();
    void registerThatLeavesIsReported();
};

void TestMemoryPairing::recordIsWhatBothSidesMustCompute()
{
    RegisterInMemory reg;
    reg.responder.session().record.pairingIndex = 7;
    reg.responder.session().record.pairingNumber = 4711;
    Application application(reg);
    BnPtr exponent; // the register's, taken when it has made it
    application.link.serveOtherSide = [&, answer = application.link.serveOtherSide] {
        answer();
        if (reg.requests.size() == 2)
            exponent = exponentOf(reg.responder.session().record.dh);
    };
    MatchExt record;
    QCOMPARE(pairRegister(application.session, record, terms()), 0);
    QVERIFY(reg.isPaired);
    QCOMPARE(reg.requests.size(), 3);

    const QByteArray seed = QByteArray(16, 'E') + QByteArray(16, 'D');
    const QByteArray secret = secretOf(exponent.get(), valueIn(reg.requests.at(1), "DFEF03"));
    const QByteArray hmacKey = expanded(expanded(secret, "GMP-3 istek" + seed), "GMP-3 anahtarlar" + seed);
    const QByteArray chain = expanded(hmacKey, "GMP-3 anahtarlar" + seed).first(16);
    const QByteArray aesKey = expanded(chain, "GMP-3 anahtarlar" + seed);
    QCOMPARE(record.hmacKey, hmacKey);
    QCOMPARE(record.aesKey, aesKey);
    QCOMPARE(record.kcvIv, lastCheckBlock(aesKey, chain));
    QCOMPARE(record.randomDFC10D, QByteArray(16, 'D'));
    QCOMPARE(record.randomDFC10E, QByteArray(16, 'E'));
    QCOMPARE(record.valueDFEF09, quint8(7));
    QCOMPARE(record.valueDFEF02, quint16(4711));
    QCOMPARE(record.registerData, QByteArray(serial));
    QCOMPARE(record.terminalId, QByteArray(terminal));
    QCOMPARE(record.pairingTime, QDateTime(QDate(2031, 2, 3), QTime(1, 5, 6, 789), Qt::UTC));
    QCOMPARE(record.pairingTime.timeSpec(), Qt::UTC);

    const MatchExt other = reg.responder.takeKeys();
    QCOMPARE(other.hmacKey, hmacKey);
    QCOMPARE(other.aesKey, aesKey);
    QCOMPARE(other.randomDFC10D, record.randomDFC10D);
    QCOMPARE(other.randomDFC10E, record.randomDFC10E);
    QVERIFY(!application.session.record.dh && application.session.record.aesKey.isEmpty());
}

void TestMemoryPairing::requestsTellTheTimeOfTheClock()
{
    RegisterInMemory reg;
    Application application(reg);
    MatchExt record;
    QCOMPARE(pairRegister(application.session, record, terms()), 0);
    QCOMPARE(reg.requests.size(), 3);
    for (const QByteArray &request : std::as_const(reg.requests)) {
        QCOMPARE(valueIn(request, "DF8209"), hex("310203"));
        QCOMPARE(valueIn(request, "DF820A"), hex("040506"));
    }
    QCOMPARE(valueIn(reg.requests.constFirst(), "DFC10D"), QByteArray(16, 'D'));
}

void TestMemoryPairing::sessionOfTheProcessIsUntouched()
{
    GMP3::init(77);
    gmp3_message.requesterRandom = "mine";
    RegisterInMemory reg;
    Application application(reg);
    MatchExt record;
    QCOMPARE(pairRegister(application.session, record, terms()), 0);
    QCOMPARE(connection_handle, 77U);
    QCOMPARE(gmp3_message.requesterRandom, QByteArray("mine"));
    QVERIFY(gmp3_message.fields.isEmpty());
    QVERIFY(gmp3_message.responderRandom.isEmpty() && gmp3_message.aesKey.isEmpty() && !gmp3_message.dh);
    QCOMPARE(gmp3_message.message, None);
}

void TestMemoryPairing::pairingsInsideOneAnotherDoNotMix()
{
    RegisterInMemory outerRegister;
    RegisterInMemory innerRegister("UB0000000002");
    Application outer(outerRegister, 'D');
    MatchExt outerRecord;
    MatchExt innerRecord;
    int inner = -1;
    // While the first register has its second answer to give, the other one is paired.
    outer.link.serveOtherSide = [&, answer = outer.link.serveOtherSide] {
        if (outerRegister.requests.size() == 1) {
            Application other(innerRegister, 'X');
            inner = pairRegister(other.session, innerRecord, terms("UB0000000002"));
        }
        answer();
    };
    QCOMPARE(pairRegister(outer.session, outerRecord, terms()), 0);
    QCOMPARE(inner, 0);
    QCOMPARE(outerRecord.aesKey, outerRegister.responder.takeKeys().aesKey);
    QCOMPARE(innerRecord.aesKey, innerRegister.responder.takeKeys().aesKey);
    QVERIFY(outerRecord.aesKey != innerRecord.aesKey);
    QCOMPARE(outerRecord.randomDFC10E, QByteArray(16, 'E'));
    QCOMPARE(innerRecord.randomDFC10E, QByteArray(16, 'Y'));
    QCOMPARE(outerRecord.registerData, QByteArray(serial));
    QCOMPARE(innerRecord.registerData, QByteArray("UB0000000002"));
}

void TestMemoryPairing::registerThatRefusesIsNotPaired()
{
    RegisterInMemory reg;
    Application application(reg);
    QCOMPARE(reg.faults.switchOn(u"wrong-app-hash"_s), QString());
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pairRegister(application.session, record, terms()), 5000);
    QCOMPARE(capture.text(), QByteArray("App Hash Error\n"));
    QVERIFY(!reg.isPaired && record.aesKey.isEmpty());
}

void TestMemoryPairing::silentRegisterIsNotWaitedFor()
{
    RegisterInMemory reg;
    Application application(reg);
    application.link.serveOtherSide = {};
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pairRegister(application.session, record, terms()), 3006);
    QCOMPARE(capture.text(), QByteArray("velno_network_read (1): 6\n"));
    QVERIFY(record.aesKey.isEmpty());
}

void TestMemoryPairing::registerThatLeavesIsReported()
{
    RegisterInMemory reg;
    Application application(reg);
    application.link.serveOtherSide = [&reg] { reg.responder.session().disconnect(); };
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(pairRegister(application.session, record, terms()), 3005);
    QCOMPARE(pairRegister(application.session, record, terms()), 2005); // it has gone already
    QCOMPARE(capture.text(), QByteArray("velno_network_read (1): 5\nvelno_network_write: 5\n"));
}

QTEST_GUILESS_MAIN(TestMemoryPairing)
#include "tst_memory_pairing.moc"
