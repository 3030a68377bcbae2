// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <openssl/core_names.h>
#include <openssl/params.h>

using TestSupport::hex;
using namespace Velno::GMP;
using namespace Velno;

namespace {

QByteArray bytesOf(const BIGNUM *number)
{
    QByteArray bytes(BN_num_bytes(number), '\0');
    BN_bn2bin(number, octets(bytes));
    return bytes;
}

/** p of the built-in group, plus a small number. */
QByteArray nearPrime(int offset)
{
    const BnPtr p{BN_get_rfc3526_prime_2048(nullptr)};
    if (offset < 0)
        BN_sub_word(p.get(), static_cast<BN_ULONG>(-offset));
    else
        BN_add_word(p.get(), static_cast<BN_ULONG>(offset));
    return bytesOf(p.get());
}

QByteArray ofGroup(const PkeyPtr &group, const char *parameter)
{
    BIGNUM *number = nullptr;
    EVP_PKEY_get_bn_param(group.get(), parameter, &number);
    return bytesOf(BnPtr{number}.get());
}

/** A number of one of the groups that OpenSSL has by name. */
QByteArray ofNamedGroup(const char *name, const char *parameter)
{
    QByteArray group(name);
    const OSSL_PARAM params[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group.data(), 0),
        OSSL_PARAM_construct_end(),
    };
    const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr)};
    EVP_PKEY *key = nullptr;
    EVP_PKEY_fromdata_init(ctx.get());
    EVP_PKEY_fromdata(ctx.get(), &key, EVP_PKEY_KEY_PARAMETERS, const_cast<OSSL_PARAM *>(params));
    return ofGroup(PkeyPtr{key}, parameter);
}

PkeyPtr groupOf(const QByteArray &p, const QByteArray &g)
{
    return GMP3::DH_get(p.constData(), int(p.size()), g.constData(), int(g.size()));
}

PkeyPtr freshPair()
{
    PkeyPtr pair = GMP3::DH_get_dh2048();
    return GMP3::DH_generate(pair) ? std::move(pair) : PkeyPtr{};
}

/** peer ^ private mod p, by the plain formula. */
QByteArray power(const PkeyPtr &pair, const QByteArray &peer)
{
    BIGNUM *taken = nullptr;
    EVP_PKEY_get_bn_param(pair.get(), OSSL_PKEY_PARAM_PRIV_KEY, &taken);
    const BnPtr exponent{taken};
    const BnPtr base{BN_bin2bn(octets(peer), int(peer.size()), nullptr)};
    const BnPtr p{BN_get_rfc3526_prime_2048(nullptr)};
    const BnPtr result{BN_new()};
    const BnCtxPtr ctx{BN_CTX_new()};
    BN_mod_exp(result.get(), base.get(), exponent.get(), p.get(), ctx.get());
    return bytesOf(result.get());
}

} // namespace

/** Which groups and public keys the engine takes, and the secret that both sides compute. */
class TestDiffieHellman : public QObject
{
    Q_OBJECT

private slots:
    void builtInGroupIsGroup14();
    void groupIsRefused_data();
    void groupIsRefused();
    void onlyKnownGroupsCount_data();
    void onlyKnownGroupsCount();
    void groupsAreReadFromPem();
    void publicKeyIsAsLongAsThePrime();
    void publicKeyNeedsAPair();
    void bothSidesComputeTheSameSecret();
    void leadingZerosOfASecretAreDropped();
    void peerKeyIsRefused_data();
    void peerKeyIsRefused();
    void keysWithoutASecretAreMarked();
};

void TestDiffieHellman::builtInGroupIsGroup14()
{
    const QByteArray p(get_dh2048_p_value(), get_dh2048_p_size());
    QCOMPARE(p.size(), 256);
    QVERIFY(p.startsWith(hex("FFFFFFFFFFFFFFFFC90FDAA22168C234")));
    QVERIFY(p.endsWith(hex("15728E5A8AACAA68FFFFFFFFFFFFFFFF")));
    QCOMPARE(QByteArray(get_dh2048_g_value(), get_dh2048_g_size()), hex("02"));
    QVERIFY(isKnownGroup(GMP3::DH_get_dh2048()));
}

void TestDiffieHellman::groupIsRefused_data()
{
    QTest::addColumn<QByteArray>("p");
    QTest::addColumn<QByteArray>("g");

    const QByteArray p = nearPrime(0);
    QTest::newRow("no prime") << QByteArray() << hex("02");
    QTest::newRow("zero") << hex("00") << hex("02");
    QTest::newRow("one") << hex("01") << hex("02");
    QTest::newRow("even") << nearPrime(1) << hex("02");
    QTest::newRow("no generator") << p << QByteArray();
    QTest::newRow("generator 0") << p << hex("00");
    QTest::newRow("generator 1") << p << hex("01");
    QTest::newRow("generator p-1") << p << nearPrime(-1);
    QTest::newRow("generator p") << p << p;
    QTest::newRow("generator above p") << p << nearPrime(2);
}

void TestDiffieHellman::groupIsRefused()
{
    QFETCH(const QByteArray, p);
    QFETCH(const QByteArray, g);
    PkeyPtr group = groupOf(p, g);
    QVERIFY(!group);
    QVERIFY(!isKnownGroup(group));
    QVERIFY(!GMP3::DH_generate(group));
    QVERIFY(!GMP3::DH_get(nullptr, 256, nullptr, 1));
    QVERIFY(!GMP3::DH_get(p.constData(), -1, g.constData(), 1));
}

void TestDiffieHellman::onlyKnownGroupsCount_data()
{
    QTest::addColumn<QByteArray>("p");
    QTest::addColumn<QByteArray>("g");
    QTest::addColumn<bool>("known");

    for (const char *name : {"modp_2048", "modp_3072", "modp_4096", "modp_6144", "modp_8192", "ffdhe2048",
                             "ffdhe3072", "ffdhe4096", "ffdhe6144", "ffdhe8192"}) {
        const QByteArray p = ofNamedGroup(name, OSSL_PKEY_PARAM_FFC_P);
        QTest::newRow(name) << p << hex("02") << true;
        QTest::addRow("%s, leading zeros", name) << '\0' + p << hex("0002") << true;
        for (const char *g : {"03", "04", "05", "08"})
            QTest::addRow("%s with the generator %s", name, g) << p << hex(g) << false;
        QTest::addRow("%s with the generator p-2", name) << p << p.chopped(1) + char(p.back() - 2) << false;
    }
    QTest::newRow("the registers' own group")
        << bytesOf(BnPtr{BN_get_rfc3526_prime_2048(nullptr)}.get()) << hex("02") << true;
    for (const char *name : {"modp_1536", "dh_1024_160", "dh_2048_224", "dh_2048_256"}) {
        QTest::addRow("%s, which OpenSSL knows", name) << ofNamedGroup(name, OSSL_PKEY_PARAM_FFC_P)
                                                       << ofNamedGroup(name, OSSL_PKEY_PARAM_FFC_G) << false;
    }
    const std::vector<PkeyPtr> own = groupsIn(TestSupport::groupOfItsOwn());
    QCOMPARE(own.size(), size_t(1));
    QTest::newRow("a safe prime of nobody's")
        << ofGroup(own.front(), OSSL_PKEY_PARAM_FFC_P) << hex("02") << false;
    QTest::newRow("2048 bits, no prime") << nearPrime(2) << hex("02") << false;
    QTest::newRow("512 bits") << hex("F1").repeated(64) << hex("02") << false;
    QTest::newRow("as many bits as a message holds") << hex("F1").repeated(4000) << hex("02") << false;
}

void TestDiffieHellman::onlyKnownGroupsCount()
{
    QFETCH(const QByteArray, p);
    QFETCH(const QByteArray, g);
    QFETCH(const bool, known);
    QCOMPARE(isKnownGroup(groupOf(p, g)), known);
}

void TestDiffieHellman::groupsAreReadFromPem()
{
    const QByteArray pem = TestSupport::groupOfItsOwn();
    QCOMPARE(groupsIn({}).size(), size_t(0));
    QCOMPARE(groupsIn("no group").size(), size_t(0));
    QCOMPARE(groupsIn(pem + "a remark\n" + pem).size(), size_t(2));
    QCOMPARE(groupsIn(pem + pem.first(pem.size() / 2)).size(), size_t(1));
    QCOMPARE(groupInWords(groupsIn(pem).front()),
             QByteArray("2048 bits, generator 0x02, SHA-256 of the prime "
                        "ff3b5fed81431a2e05e6f7d7bc42269b681cbe8a9ad806e55f1606dd2391381f"));
    QVERIFY(groupInWords(groupOf(nearPrime(0), nearPrime(-3))).contains("generator a long number"));
}

void TestDiffieHellman::publicKeyIsAsLongAsThePrime()
{
    const PkeyPtr pair = freshPair();
    QVERIFY(pair);
    QCOMPARE(GMP3::DH_get_pubkey(pair).size(), 256);
    QCOMPARE(GMP3::DH_get_pubkey(pair), GMP3::DH_get_pubkey(pair));
    QVERIFY(GMP3::DH_get_pubkey(pair) != GMP3::DH_get_pubkey(freshPair()));
}

void TestDiffieHellman::publicKeyNeedsAPair()
{
    QCOMPARE(GMP3::DH_get_pubkey(nullptr), QByteArray());
    QCOMPARE(GMP3::DH_get_pubkey(GMP3::DH_get_dh2048()), QByteArray());
}

void TestDiffieHellman::bothSidesComputeTheSameSecret()
{
    const PkeyPtr ours = freshPair();
    const PkeyPtr theirs = freshPair();
    const QByteArray secret = GMP3::DH_compute(ours, GMP3::DH_get_pubkey(theirs));
    QVERIFY(!secret.isEmpty());
    QCOMPARE(secret, GMP3::DH_compute(theirs, GMP3::DH_get_pubkey(ours)));
    QCOMPARE(secret, power(ours, GMP3::DH_get_pubkey(theirs)));
}

void TestDiffieHellman::leadingZerosOfASecretAreDropped()
{
    // One peer key in 256 makes a secret that begins with a zero byte: 2^n mod p, tried in order.
    const PkeyPtr pair = freshPair();
    QByteArray peer;
    QByteArray expected;
    for (int candidate = 2; candidate < 20000 && (expected.isEmpty() || expected.size() == 256);
         ++candidate) {
        peer = QByteArray(254, '\0') + char(candidate >> 8) + char(candidate & 0xFF);
        expected = power(pair, peer);
    }
    QVERIFY2(expected.size() < 256, "no peer key with a short secret was found");
    QCOMPARE(GMP3::DH_compute(pair, peer), expected);
}

void TestDiffieHellman::peerKeyIsRefused_data()
{
    QTest::addColumn<QByteArray>("key");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("zero") << QByteArray(256, '\0');
    QTest::newRow("one") << QByteArray(255, '\0') + '\x01';
    QTest::newRow("p-1") << nearPrime(-1);
    QTest::newRow("p") << nearPrime(0);
    QTest::newRow("p+2") << nearPrime(2);
    QTest::newRow("twice as long") << QByteArray(512, '\x5A');
}

void TestDiffieHellman::peerKeyIsRefused()
{
    QFETCH(const QByteArray, key);
    QCOMPARE(GMP3::DH_compute(freshPair(), key), QByteArray());
    QCOMPARE(GMP3::DH_compute(GMP3::DH_get_dh2048(), nearPrime(-2)), QByteArray()); // no pair of our own
    QCOMPARE(GMP3::DH_compute(nullptr, nearPrime(-2)), QByteArray());
}

void TestDiffieHellman::keysWithoutASecretAreMarked()
{
    gmp3_message.dh = freshPair();
    QCOMPARE(GMP3::create_keys({}).size(), 32);
    QVERIFY(!gmp3_message.secretAgreed);
    gmp3_message.dh.reset();
    QCOMPARE(GMP3::create_keys(nearPrime(-2)).size(), 32);
    QVERIFY(!gmp3_message.secretAgreed);
}

QTEST_GUILESS_MAIN(TestDiffieHellman)
#include "tst_diffie_hellman.moc"
