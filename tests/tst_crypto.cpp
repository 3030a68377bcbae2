#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

using namespace Velno;
using namespace Velno::GMP;
using TestSupport::hex;
using TestSupport::LogCapture;

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

/** OpenSSL's own TLS 1.2 pseudo-random function. */
QByteArray opensslPrf(const QByteArray &secret, const QByteArray &label, const QByteArray &seed)
{
    using KdfPtr = std::unique_ptr<EVP_KDF, OpenSslFree<EVP_KDF_free>>;
    using KdfCtxPtr = std::unique_ptr<EVP_KDF_CTX, OpenSslFree<EVP_KDF_CTX_free>>;
    const KdfPtr kdf{EVP_KDF_fetch(nullptr, "TLS1-PRF", nullptr)};
    const KdfCtxPtr ctx{EVP_KDF_CTX_new(kdf.get())};
    QByteArray key = secret;
    QByteArray labelSeed = label + seed;
    char digest[] = "SHA256";
    const OSSL_PARAM params[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SECRET, key.data(), size_t(key.size())),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SEED, labelSeed.data(), size_t(labelSeed.size())),
        OSSL_PARAM_construct_end(),
    };
    QByteArray output(32, '\0');
    return EVP_KDF_derive(ctx.get(), octets(output), size_t(output.size()), params) == 1 ? output
                                                                                         : QByteArray();
}

} // namespace

class TestCrypto : public QObject
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
    void cbcMatchesPublishedVectors_data();
    void cbcMatchesPublishedVectors();
    void cbcRefusesWrongSizes_data();
    void cbcRefusesWrongSizes();
    void paddingLeadsAndFills32Bytes_data();
    void paddingLeadsAndFills32Bytes();
    void paddingIsJudged_data();
    void paddingIsJudged();
    void recordCipherStartsFromTheRandoms();
    void recordCipherNeedsARecord();
    void recordCipherFollowsItsKeys();
    void copiedRecordKeepsItsOwnContexts();
    void prfIsTheFirstBlockOfTls12_data();
    void prfIsTheFirstBlockOfTls12();
    void keyScheduleFollowsTheChain();
    void keysWithoutASecretAreMarked();
    void randomIsTheGeneratorOfTheMillisecond();
    void randomOfNothingIsEmpty();
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

void TestCrypto::builtInGroupIsGroup14()
{
    const QByteArray p(get_dh2048_p_value(), get_dh2048_p_size());
    QCOMPARE(p.size(), 256);
    QVERIFY(p.startsWith(hex("FFFFFFFFFFFFFFFFC90FDAA22168C234")));
    QVERIFY(p.endsWith(hex("15728E5A8AACAA68FFFFFFFFFFFFFFFF")));
    QCOMPARE(QByteArray(get_dh2048_g_value(), get_dh2048_g_size()), hex("02"));
    QVERIFY(isKnownGroup(GMP3::DH_get_dh2048()));
}

void TestCrypto::groupIsRefused_data()
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

void TestCrypto::groupIsRefused()
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

void TestCrypto::onlyKnownGroupsCount_data()
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

void TestCrypto::onlyKnownGroupsCount()
{
    QFETCH(const QByteArray, p);
    QFETCH(const QByteArray, g);
    QFETCH(const bool, known);
    QCOMPARE(isKnownGroup(groupOf(p, g)), known);
}

void TestCrypto::groupsAreReadFromPem()
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

void TestCrypto::publicKeyIsAsLongAsThePrime()
{
    const PkeyPtr pair = freshPair();
    QVERIFY(pair);
    QCOMPARE(GMP3::DH_get_pubkey(pair).size(), 256);
    QCOMPARE(GMP3::DH_get_pubkey(pair), GMP3::DH_get_pubkey(pair));
    QVERIFY(GMP3::DH_get_pubkey(pair) != GMP3::DH_get_pubkey(freshPair()));
}

void TestCrypto::publicKeyNeedsAPair()
{
    QCOMPARE(GMP3::DH_get_pubkey(nullptr), QByteArray());
    QCOMPARE(GMP3::DH_get_pubkey(GMP3::DH_get_dh2048()), QByteArray());
}

void TestCrypto::bothSidesComputeTheSameSecret()
{
    const PkeyPtr ours = freshPair();
    const PkeyPtr theirs = freshPair();
    const QByteArray secret = GMP3::DH_compute(ours, GMP3::DH_get_pubkey(theirs));
    QVERIFY(!secret.isEmpty());
    QCOMPARE(secret, GMP3::DH_compute(theirs, GMP3::DH_get_pubkey(ours)));
    QCOMPARE(secret, power(ours, GMP3::DH_get_pubkey(theirs)));
}

void TestCrypto::leadingZerosOfASecretAreDropped()
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

void TestCrypto::peerKeyIsRefused_data()
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

void TestCrypto::peerKeyIsRefused()
{
    QFETCH(const QByteArray, key);
    QCOMPARE(GMP3::DH_compute(freshPair(), key), QByteArray());
    QCOMPARE(GMP3::DH_compute(GMP3::DH_get_dh2048(), nearPrime(-2)), QByteArray()); // no pair of our own
    QCOMPARE(GMP3::DH_compute(nullptr, nearPrime(-2)), QByteArray());
}

void TestCrypto::cbcMatchesPublishedVectors_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("cipherText");

    // NIST SP 800-38A, F.2: the first two blocks.
    QTest::newRow("AES-128") << hex("2b7e151628aed2a6abf7158809cf4f3c")
                             << hex("7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2");
    QTest::newRow("AES-192") << hex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b")
                             << hex("4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a");
    QTest::newRow("AES-256") << hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4")
                             << hex("f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d");
}

void TestCrypto::cbcMatchesPublishedVectors()
{
    QFETCH(const QByteArray, key);
    QFETCH(const QByteArray, cipherText);
    const QByteArray plain = hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51");
    const QByteArray start = hex("000102030405060708090a0b0c0d0e0f");

    QByteArray iv = start;
    const QByteArray shared = iv;
    QCOMPARE(AES_CBC_Cipher(true, key, plain, iv), cipherText);
    QCOMPARE(iv, cipherText.last(16));
    QCOMPARE(shared, start); // another owner of the same bytes keeps its own

    iv = start;
    QCOMPARE(AES_CBC_Cipher(false, key, cipherText, iv), plain);
    QCOMPARE(iv, cipherText.last(16));
}

void TestCrypto::cbcRefusesWrongSizes_data()
{
    QTest::addColumn<int>("keySize");
    QTest::addColumn<int>("dataSize");
    QTest::addColumn<int>("ivSize");

    QTest::newRow("no key") << 0 << 32 << 16;
    QTest::newRow("key of 15") << 15 << 32 << 16;
    QTest::newRow("key of 33") << 33 << 32 << 16;
    QTest::newRow("no data") << 32 << 0 << 16;
    QTest::newRow("data of 15") << 32 << 15 << 16;
    QTest::newRow("data of 33") << 32 << 33 << 16;
    QTest::newRow("no IV") << 32 << 32 << 0;
    QTest::newRow("IV of 15") << 32 << 32 << 15;
    QTest::newRow("IV of 17") << 32 << 32 << 17;
}

void TestCrypto::cbcRefusesWrongSizes()
{
    QFETCH(const int, keySize);
    QFETCH(const int, dataSize);
    QFETCH(const int, ivSize);
    for (const bool encrypt : {true, false}) {
        QByteArray iv(ivSize, 'i');
        QCOMPARE(AES_CBC_Cipher(encrypt, QByteArray(keySize, 'k'), QByteArray(dataSize, 'd'), iv),
                 QByteArray());
        QCOMPARE(iv, QByteArray(ivSize, 'i'));
    }
}

void TestCrypto::paddingLeadsAndFills32Bytes_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("padding");

    QTest::newRow("nothing") << 0 << 0;
    QTest::newRow("one byte") << 1 << 31;
    QTest::newRow("one short of a block") << 31 << 1;
    QTest::newRow("a whole block") << 32 << 32;
    QTest::newRow("one more") << 33 << 31;
    QTest::newRow("two whole blocks") << 64 << 32;
}

void TestCrypto::paddingLeadsAndFills32Bytes()
{
    QFETCH(const int, size);
    QFETCH(const int, padding);
    const QByteArray key(32, 'k');
    const QByteArray data(size, 'd');

    QByteArray iv(16, 'i');
    const QByteArray sealed = GMP3_aes_cipher(true, key, data, iv);
    QCOMPARE(sealed.size(), size + padding);
    iv = QByteArray(16, 'i');
    QCOMPARE(AES_CBC_Cipher(false, key, sealed, iv), QByteArray(padding, char(padding)) + data);
    iv = QByteArray(16, 'i');
    QCOMPARE(GMP3_aes_cipher(false, key, sealed, iv), data);
}

void TestCrypto::paddingIsJudged_data()
{
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("data");

    const QByteArray rest(31, 'x');
    QTest::newRow("48 bytes") << QByteArray(48, '\x01') << QByteArray();
    QTest::newRow("16 bytes") << QByteArray(16, '\x01') << QByteArray();
    QTest::newRow("says more than there is") << '\x21' + rest << QByteArray();
    QTest::newRow("says all there is") << '\x20' + rest << QByteArray();
    QTest::newRow("says one less") << '\x1F' + rest << QByteArray("x");
    QTest::newRow("zero takes nothing") << '\0' + rest << '\0' + rest;
    QTest::newRow("80 is negative and takes nothing") << '\x80' + rest << '\x80' + rest;
    QTest::newRow("FF is negative and takes nothing") << '\xFF' + rest << '\xFF' + rest;
}

void TestCrypto::paddingIsJudged()
{
    QFETCH(const QByteArray, plain);
    QFETCH(const QByteArray, data);
    const QByteArray key(32, 'k');
    QByteArray iv(16, 'i');
    const QByteArray sealed = AES_CBC_Cipher(true, key, plain, iv);
    iv = QByteArray(16, 'i');
    QCOMPARE(GMP3_aes_cipher(false, key, sealed, iv), data);
}

void TestCrypto::recordCipherStartsFromTheRandoms()
{
    MatchExt record;
    record.aesKey = QByteArray(32, 'k');
    record.hmacKey = QByteArray(32, 'h');
    record.randomDFC10D = hex("000102030405060708090A0B0C0D0E0F");
    record.randomDFC10E = hex("F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0");
    QByteArray iv = hex("F0F1F2F3F4F5F6F7F8F9FAFBFCFDFEFF");
    const QByteArray sealed = GMP3_aes_cipher(true, record.aesKey, "command", iv);
    QCOMPARE(GMP3_cipher(record, true, "command"), sealed);
    QCOMPARE(GMP3_cipher(record, true, "command"), sealed); // every message starts from the same IV
    QCOMPARE(GMP3_cipher(record, false, sealed), QByteArray("command"));
    QCOMPARE(GMP3_HMAC(record, "command"), hmacSha256(record.hmacKey, "command"));
}

void TestCrypto::recordCipherNeedsARecord()
{
    QCOMPARE(GMP3_cipher(MatchExt(), true, "command"), QByteArray());
    MatchExt record;
    record.aesKey = QByteArray(32, 'k');
    record.randomDFC10D = QByteArray(16, 'a');
    record.randomDFC10E = QByteArray(15, 'b');
    QCOMPARE(GMP3_cipher(record, true, "command"), QByteArray());
}

namespace {

MatchExt recordWithKeys(char aes, char hmac)
{
    MatchExt record;
    record.aesKey = QByteArray(32, aes);
    record.hmacKey = QByteArray(32, hmac);
    record.randomDFC10D = QByteArray(16, 'd');
    record.randomDFC10E = QByteArray(16, 'e');
    return record;
}

/** What it seals, opens and authenticates is what a record that was never used does. */
bool worksAs(const MatchExt &record, const MatchExt &fresh)
{
    const QByteArray sealed = GMP3_cipher(fresh, true, "command");
    return !sealed.isEmpty() && GMP3_cipher(record, true, "command") == sealed &&
           GMP3_cipher(record, false, sealed) == "command" &&
           GMP3_HMAC(record, "command") == GMP3_HMAC(fresh, "command");
}

} // namespace

void TestCrypto::recordCipherFollowsItsKeys()
{
    MatchExt record = recordWithKeys('a', 'h');
    QVERIFY(worksAs(record, recordWithKeys('a', 'h')));
    record.aesKey = QByteArray(32, 'b'); // contexts for the keys before are at hand
    record.hmacKey = QByteArray(32, 'i');
    QVERIFY(worksAs(record, recordWithKeys('b', 'i')));
    QVERIFY(!worksAs(record, recordWithKeys('a', 'i')));
    QVERIFY(!worksAs(record, recordWithKeys('b', 'h')));
    record.randomDFC10E = QByteArray(16, 'f');
    QVERIFY(GMP3_cipher(record, true, "command") != GMP3_cipher(recordWithKeys('b', 'i'), true, "command"));
    record.aesKey.clear();
    QCOMPARE(GMP3_cipher(record, true, "command"), QByteArray());
    record.hmacKey.clear();
    QCOMPARE(GMP3_HMAC(record, "command"), hmacSha256(QByteArray(), "command"));
}

void TestCrypto::copiedRecordKeepsItsOwnContexts()
{
    const MatchExt first = recordWithKeys('a', 'h');
    QVERIFY(worksAs(first, recordWithKeys('a', 'h')));
    MatchExt second = first;
    second.aesKey = QByteArray(32, 'b');
    QVERIFY(worksAs(second, recordWithKeys('b', 'h')));
    QVERIFY(worksAs(first, recordWithKeys('a', 'h')));
    second = first;
    QVERIFY(worksAs(second, recordWithKeys('a', 'h')));
    const MatchExt third = std::move(second);
    QVERIFY(worksAs(third, recordWithKeys('a', 'h')));
}

void TestCrypto::prfIsTheFirstBlockOfTls12_data()
{
    QTest::addColumn<QByteArray>("secret");
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QByteArray>("seed");

    QTest::newRow("a session") << QByteArray(256, 's') << QByteArray("GMP-3 istek") << QByteArray(32, 'r');
    QTest::newRow("a short secret") << QByteArray(16, 's') << QByteArray("GMP-3 anahtarlar")
                                    << QByteArray(32, 'r');
    QTest::newRow("a long secret") << QByteArray(65, 's') << QByteArray("label") << QByteArray(1, 'r');
}

void TestCrypto::prfIsTheFirstBlockOfTls12()
{
    QFETCH(const QByteArray, secret);
    QFETCH(const QByteArray, label);
    QFETCH(const QByteArray, seed);
    QCOMPARE(GMP3::TLS_PRF(secret, label, seed), opensslPrf(secret, label, seed));
    QCOMPARE(GMP3::TLS_PRF({}, {}, seed).size(), 32);
    QCOMPARE(GMP3::TLS_PRF({}, {}, {}).size(), 32);
}

void TestCrypto::keyScheduleFollowsTheChain()
{
    const PkeyPtr peer = freshPair();
    gmp3_message.dh = freshPair();
    gmp3_message.responderRandom = QByteArray(16, 'E');
    gmp3_message.requesterRandom = QByteArray(16, 'D');
    const QByteArray seed = QByteArray(16, 'E') + QByteArray(16, 'D');
    const QByteArray secret = GMP3::DH_compute(peer, GMP3::DH_get_pubkey(gmp3_message.dh));

    const QByteArray master = opensslPrf(secret, "GMP-3 istek", seed);
    const QByteArray hmacKey = opensslPrf(master, "GMP-3 anahtarlar", seed);
    QByteArray iv = opensslPrf(hmacKey, "GMP-3 anahtarlar", seed).first(16);
    const QByteArray aesKey = opensslPrf(iv, "GMP-3 anahtarlar", seed);
    const QByteArray check = AES_CBC_Cipher(true, aesKey, QByteArray(32, '\xFF'), iv);

    QCOMPARE(GMP3::create_keys(GMP3::DH_get_pubkey(peer)), check);
    QCOMPARE(gmp3_message.hmacKey, hmacKey);
    QCOMPARE(gmp3_message.aesKey, aesKey);
    QCOMPARE(gmp3_message.kcvIv, check.last(16));
    QVERIFY(gmp3_message.secretAgreed);
}

void TestCrypto::keysWithoutASecretAreMarked()
{
    gmp3_message.dh = freshPair();
    QCOMPARE(GMP3::create_keys({}).size(), 32);
    QVERIFY(!gmp3_message.secretAgreed);
    gmp3_message.dh.reset();
    QCOMPARE(GMP3::create_keys(nearPrime(-2)).size(), 32);
    QVERIFY(!gmp3_message.secretAgreed);
}

void TestCrypto::randomIsTheGeneratorOfTheMillisecond()
{
    const auto expected = [](int msec) {
        auto state = unsigned(msec);
        QByteArray bytes;
        for (int i = 0; i < 16; ++i)
            bytes.append(char(rand_r(&state)));
        return bytes;
    };
    const int before = QTime::currentTime().msec();
    const QByteArray random = GetRandom(16);
    const int after = QTime::currentTime().msec();
    bool found = false;
    for (int msec = before; !found; msec = (msec + 1) % 1000) {
        found = random == expected(msec);
        if (msec == after)
            break;
    }
    QVERIFY(found);
}

void TestCrypto::randomOfNothingIsEmpty()
{
    QCOMPARE(GetRandom(0), QByteArray());
    QCOMPARE(GetRandom(-1), QByteArray());
    QCOMPARE(GetRandom(1).size(), 1);
}

void TestCrypto::certificateUnderTheAnchorsVerifies()
{
    const LogCapture log;
    const QByteArray certificate = TestSupport::developmentRegister().certificate;
    QVERIFY(GMP3::verifyCertificate(certificate, trustAnchors()));
    QVERIFY(GMP3::verifyCertificate(certificate, "garbage\n-----END CERTIFICATE-----\n" + trustAnchors()));
    QCOMPARE(log.text(), QByteArray());
}

void TestCrypto::certificateIsRefused_data()
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

void TestCrypto::certificateIsRefused()
{
    QFETCH(const QByteArray, certificate);
    QFETCH(const QByteArray, chain);
    QFETCH(const QByteArray, line);
    const LogCapture log;
    QVERIFY(!GMP3::verifyCertificate(certificate, chain));
    QCOMPARE(log.text(), line);
}

void TestCrypto::certificateOfNoRegisterIsRefused_data()
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

void TestCrypto::certificateOfNoRegisterIsRefused()
{
    QFETCH(const TestSupport::CertificateKind, kind);
    QFETCH(const QByteArray, line);
    static const TestSupport::TestAuthority authority;
    const QByteArray certificate = authority.issue(kind).certificate;
    const LogCapture log;
    QCOMPARE(GMP3::verifyCertificate(certificate, authority.chain()), line.isEmpty());
    QCOMPARE(log.text(), line);
}

void TestCrypto::authorityInPlaceOfARegisterIsRefused()
{
    const LogCapture log;
    const QByteArray end = "-----END CERTIFICATE-----\n";
    const qsizetype first = trustAnchors().indexOf(end) + end.size();
    QVERIFY(!GMP3::verifyCertificate(trustAnchors().first(first), trustAnchors()));
    QVERIFY(!GMP3::verifyCertificate(trustAnchors().sliced(first), trustAnchors()));
    QCOMPARE(log.text(), QByteArray("Certificate refused: it is an authority's\n").repeated(2));
}

void TestCrypto::signatureVerifies()
{
    const TestSupport::Credentials credentials = TestSupport::developmentRegister();
    const QByteArray signature = GMP3::rsassa_pkcs1v15_sha256_sign("public key", credentials.key);
    QCOMPARE(signature.size(), 256);
    QVERIFY(GMP3::rsassa_pkcs1v15_sha256_verify(credentials.certificate, "public key", signature));
}

void TestCrypto::signatureIsRefused_data()
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

void TestCrypto::signatureIsRefused()
{
    QFETCH(const QByteArray, certificate);
    QFETCH(const QByteArray, data);
    QFETCH(const QByteArray, signature);
    QVERIFY(!GMP3::rsassa_pkcs1v15_sha256_verify(certificate, data, signature));
}

void TestCrypto::signingNeedsAReadableRsaKey()
{
    const QByteArray key = TestSupport::developmentRegister().key;
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", {}), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", "garbage"), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", key.first(key.size() / 2)), QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", TestSupport::encryptedKey(key, "secret")),
             QByteArray());
    QCOMPARE(GMP3::rsassa_pkcs1v15_sha256_sign("data", TestSupport::selfSigned("EC").key), QByteArray());
}

QTEST_GUILESS_MAIN(TestCrypto)
#include "tst_crypto.moc"
