// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

using TestSupport::hex;
using namespace Velno::GMP;
using namespace Velno;

namespace {

PkeyPtr freshPair()
{
    PkeyPtr pair = GMP3::DH_get_dh2048();
    return GMP3::DH_generate(pair) ? std::move(pair) : PkeyPtr{};
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

/** Ciphers, keys and randoms of the engine. */
class TestCrypto : public QObject
{
    Q_OBJECT

private slots:
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
    void randomIsTheGeneratorOfTheMillisecond();
    void randomOfNothingIsEmpty();
};

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

QTEST_GUILESS_MAIN(TestCrypto)
#include "tst_crypto.moc"
