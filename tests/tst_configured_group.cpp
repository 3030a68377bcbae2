// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/hand_made_register.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <openssl/core_names.h>

using namespace Velno;
using namespace Velno::GMP;
using TestSupport::Fields;
using TestSupport::HandMadeRegister;
using TestSupport::Request;

namespace {

QByteArray numberOf(const PkeyPtr &group, const char *parameter)
{
    BIGNUM *taken = nullptr;
    EVP_PKEY_get_bn_param(group.get(), parameter, &taken);
    const BnPtr number{taken};
    QByteArray bytes(BN_num_bytes(taken), '\0');
    BN_bn2bin(taken, octets(bytes));
    return bytes;
}

/** A register whose software brings a group of its own, and uses it. */
QList<QByteArray> answerInItsOwnGroup(HandMadeRegister &reg, const Request &request, int)
{
    PkeyPtr group = std::move(groupsIn(TestSupport::groupOfItsOwn()).front());
    Fields fields = reg.honestAnswer(request);
    TestSupport::replaceValue(fields, fieldTag(DhPrime), numberOf(group, OSSL_PKEY_PARAM_FFC_P));
    TestSupport::replaceValue(fields, fieldTag(DhGenerator), numberOf(group, OSSL_PKEY_PARAM_FFC_G));
    if (request.kind == PairingKeyExchange && GMP3::DH_generate(group)) {
        reg.secret =
            GMP3::DH_compute(group, TestSupport::valueOf(request.fields, fieldTag(RequesterPublicKey)));
        const QByteArray key = GMP3::DH_get_pubkey(group);
        TestSupport::replaceValue(fields, fieldTag(ResponderPublicKey), key);
        TestSupport::replaceValue(fields, fieldTag(Signature),
                                  GMP3::rsassa_pkcs1v15_sha256_sign(key, reg.credentials.key));
    }
    return {HandMadeRegister::frameOf(request.kind, fields)};
}

} // namespace

/** A build with VELNO_DH_GROUPS. */
class TestConfiguredGroup : public QObject
{
    Q_OBJECT

private slots:
    void configuredGroupIsKnownBesideTheNamedOnes();
    void registerWithAGroupOfItsOwnPairs_data();
    void registerWithAGroupOfItsOwnPairs();
};

void TestConfiguredGroup::configuredGroupIsKnownBesideTheNamedOnes()
{
    const PkeyPtr own = std::move(groupsIn(TestSupport::groupOfItsOwn()).front());
    const QByteArray p = numberOf(own, OSSL_PKEY_PARAM_FFC_P);
    QVERIFY(isKnownGroup(own));
    QVERIFY(isKnownGroup(GMP3::DH_get(p.constData(), int(p.size()), "\2", 1)));
    QVERIFY(!isKnownGroup(GMP3::DH_get(p.constData(), int(p.size()), "\4", 1)));
    QVERIFY(isKnownGroup(GMP3::DH_get_dh2048()));
}

void TestConfiguredGroup::registerWithAGroupOfItsOwnPairs_data()
{
    QTest::addColumn<bool>("ownGroup");

    QTest::newRow("in its own group") << true;
    QTest::newRow("in a named group") << false;
}

void TestConfiguredGroup::registerWithAGroupOfItsOwnPairs()
{
    QFETCH(const bool, ownGroup);
    HandMadeRegister reg(ownGroup ? answerInItsOwnGroup : HandMadeRegister::Hook());
    const quint16 port = TestSupport::freePort();
    reg.start(port);
    MatchExt record;
    QCOMPARE(GMP3_KeyExchange_Server(record, port, "UB1234567890", "001A2B3C4D5E", QByteArray(32, 'h')), 0);
    velno_network_disconnect(connection_handle);
    connection_handle = 0;
    QCOMPARE(record.aesKey, reg.aesKey);
    QCOMPARE(record.hmacKey, reg.hmacKey);
}

QTEST_GUILESS_MAIN(TestConfiguredGroup)
#include "tst_configured_group.moc"
