// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/gmp3/known_groups.h"
#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"
#include "tests/support/window_under_test.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QtEndian>

#include <cstring>
#include <openssl/core_names.h>

using namespace Qt::StringLiterals;
using namespace Velno;
using namespace Velno::GMP;
using namespace TestSupport;

namespace {

constexpr int longWait = 30'000; // ms, for a machine under load

// What an attacker calculates with ----------------------------------------------------------------------

QByteArray bytesOf(const BIGNUM *number)
{
    QByteArray bytes(BN_num_bytes(number), '\0');
    BN_bn2bin(number, octets(bytes));
    return bytes;
}

BnPtr numberOf(const QByteArray &bytes)
{
    return BnPtr{BN_bin2bn(octets(bytes), int(bytes.size()), nullptr)};
}

/** base ^ exponent in group 14. */
QByteArray power(const QByteArray &base, const BIGNUM *exponent)
{
    const BnPtr p{BN_get_rfc3526_prime_2048(nullptr)};
    const BnPtr result{BN_new()};
    const BnCtxPtr ctx{BN_CTX_new()};
    BN_mod_exp(result.get(), numberOf(base).get(), exponent, p.get(), ctx.get());
    return bytesOf(result.get());
}

/** The number that undoes `exponent` in group 14, where 2 and its powers have the order (p - 1) / 2. */
BnPtr inverseOf(quint32 exponent)
{
    const BnPtr order{BN_get_rfc3526_prime_2048(nullptr)};
    BN_rshift1(order.get(), order.get());
    const BnPtr number{BN_new()};
    BN_set_word(number.get(), exponent);
    const BnCtxPtr ctx{BN_CTX_new()};
    return BnPtr{BN_mod_inverse(nullptr, number.get(), order.get(), ctx.get())};
}

QByteArray ofGroup(const PkeyPtr &group, const char *parameter)
{
    BIGNUM *number = nullptr;
    EVP_PKEY_get_bn_param(group.get(), parameter, &number);
    return bytesOf(BnPtr{number}.get());
}

/** What any register gives to whoever asks: a public key that it has signed. Its secret stays there. */
Fields recordedKeyExchange()
{
    HandMadeRegister reg;
    PkeyPtr asker = GMP3::DH_get_dh2048();
    if (!GMP3::DH_generate(asker))
        return {};
    return reg.honestAnswer(
        {PairingKeyExchange, {{fieldTag(RequesterPublicKey), GMP3::DH_get_pubkey(asker)}}});
}

/** Plays a register with a recorded key and the generator `exponent` times multiplied from it. */
HandMadeRegister::Hook replaying(const Fields &recorded, quint32 exponent)
{
    return [=](HandMadeRegister &self, const Request &request, int) {
        Fields fields = self.honestAnswer(request); // its own key pair is not used
        if (request.kind == PairingStart) {
            const BnPtr times{BN_new()};
            BN_set_word(times.get(), exponent);
            replaceValue(fields, fieldTag(DhGenerator),
                         power(valueOf(recorded, fieldTag(ResponderPublicKey)), times.get()));
            replaceValue(fields, fieldTag(EcrIdentity), serial);
        } else if (request.kind == PairingKeyExchange) {
            const QByteArray requesterKey = valueOf(request.fields, fieldTag(RequesterPublicKey));
            self.secret = power(requesterKey, inverseOf(exponent).get());
            fields = recorded;
        }
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    };
}

/** An honest register in a safe prime's group that has no name. */
HandMadeRegister::Hook inAGroupOfNobodys()
{
    return [](HandMadeRegister &self, const Request &request, int) {
        PkeyPtr group = std::move(groupsIn(groupOfItsOwn()).front());
        Fields fields = self.honestAnswer(request);
        replaceValue(fields, fieldTag(DhPrime), ofGroup(group, OSSL_PKEY_PARAM_FFC_P));
        replaceValue(fields, fieldTag(EcrIdentity), serial);
        if (request.kind == PairingKeyExchange && GMP3::DH_generate(group)) {
            const QByteArray key = GMP3::DH_get_pubkey(group);
            self.secret = GMP3::DH_compute(group, valueOf(request.fields, fieldTag(RequesterPublicKey)));
            replaceValue(fields, fieldTag(ResponderPublicKey), key);
            replaceValue(fields, fieldTag(Signature),
                         GMP3::rsassa_pkcs1v15_sha256_sign(key, self.credentials.key));
        }
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    };
}

/** Shows the certificate of the authority itself, which everybody has who has one of its registers. */
HandMadeRegister::Hook withTheAuthoritysCertificate()
{
    return [](HandMadeRegister &self, const Request &request, int) {
        const QByteArray end = "-----END CERTIFICATE-----\n";
        Fields fields = self.honestAnswer(request);
        replaceValue(fields, fieldTag(Certificate),
                     trustAnchors().first(trustAnchors().indexOf(end) + end.size()));
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    };
}

/** Passes an honest register's answers on, with something added to the last one. */
HandMadeRegister::Hook withLastAnswer(const Fields &added)
{
    return [=](HandMadeRegister &self, const Request &request, int) {
        Fields fields = self.honestAnswer(request);
        replaceValue(fields, fieldTag(EcrIdentity), serial);
        if (request.kind == PairingConfirm)
            fields += added;
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    };
}

// Who is attacked ---------------------------------------------------------------------------------------

enum Victim { Engine, Window, Library };

struct Outcome
{
    QString told;            ///< what the victim says of it
    QList<MessageTag> kinds; ///< of the requests that it sent
};

QString tellOf(HandMadeRegister &reg, quint16 port)
{
    MatchExt record;
    reg.start(port);
    const int result = GMP3_KeyExchange_Server(record, port, serial, "001A2B3C4D5E", QByteArray(32, 'h'));
    velno_network_disconnect(connection_handle);
    connection_handle = 0;
    return QString::number(result);
}

QString tellOfWindow(HandMadeRegister &reg, const QString &application)
{
    WindowUnderTest window;
    window.fill(application);
    window.pair();
    reg.start(window.port());
    return QTest::qWaitFor([&] { return window.status().startsWith(u"Eşleme "_s); }, longWait)
               ? window.status()
               : u"nothing"_s;
}

QString tellOfLibrary(const HandMadeRegister::Hook &hook)
{
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 1, hook);
    return QString::number(velnoext_initialize(5, serial, "127.0.0.1", port, patience));
}

} // namespace

/** What somebody on the network wants, and does not get. */
class TestAttacks : public LibraryTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void replayedKeyAsGeneratorGivesNoPairing_data();
    void replayedKeyAsGeneratorGivesNoPairing();
    void groupMadeForThePurposeGivesNoPairing_data();
    void groupMadeForThePurposeGivesNoPairing();
    void authoritysCertificateGivesNoPairing_data();
    void authoritysCertificateGivesNoPairing();
    void priceIsNotChangedByTheLastAnswersRandoms_data();
    void priceIsNotChangedByTheLastAnswersRandoms();
    void requestSentBackIsNoAnswer_data();
    void requestSentBackIsNoAnswer();

private:
    static void addVictims();
    Outcome attack(int victim, const HandMadeRegister::Hook &hook);

    QTemporaryDir m_folder;
    QString m_application;
};

void TestAttacks::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.filePath(u"config"_s));
    m_application = m_folder.filePath(u"application"_s);
    QFile file(m_application);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("application") > 0);
}

void TestAttacks::addVictims()
{
    QTest::addColumn<int>("victim");
    QTest::newRow("engine") << int(Engine);
    QTest::newRow("window") << int(Window);
    QTest::newRow("library") << int(Library);
}

Outcome TestAttacks::attack(int victim, const HandMadeRegister::Hook &hook)
{
    Outcome outcome;
    const auto watched = [&](HandMadeRegister &self, const Request &request, int count) {
        outcome.kinds << request.kind;
        return hook(self, request, count);
    };
    if (victim == Library) {
        outcome.told = tellOfLibrary(watched);
        return outcome;
    }
    HandMadeRegister reg(watched);
    outcome.told = victim == Window ? tellOfWindow(reg, m_application) : tellOf(reg, freePort());
    reg.finish();
    return outcome;
}

void TestAttacks::replayedKeyAsGeneratorGivesNoPairing_data()
{
    QTest::addColumn<int>("victim");
    QTest::addColumn<int>("exponent");

    for (const int exponent : {1, 3}) {
        QTest::addRow("engine, power %d", exponent) << int(Engine) << exponent;
        QTest::addRow("window, power %d", exponent) << int(Window) << exponent;
        QTest::addRow("library, power %d", exponent) << int(Library) << exponent;
    }
}

void TestAttacks::replayedKeyAsGeneratorGivesNoPairing()
{
    // With his recorded key as the generator the shared secret is the victim's own public key.
    QFETCH(const int, victim);
    QFETCH(const int, exponent);
    const LogCapture capture;
    const Outcome outcome = attack(victim, replaying(recordedKeyExchange(), quint32(exponent)));
    const QStringList refusals{u"5002"_s, u"Eşleme hatası: 5002"_s, u"10"_s};
    QCOMPARE(outcome.told, refusals.at(victim));
    QCOMPARE(outcome.kinds, (QList{PairingStart, PairingKeyExchange})); // the application hash stays here
    QVERIFY(capture.text().startsWith("Unknown DH group: 2048 bits, generator a long number"));
}

void TestAttacks::groupMadeForThePurposeGivesNoPairing_data()
{
    addVictims();
}

void TestAttacks::groupMadeForThePurposeGivesNoPairing()
{
    // A genuine safe prime, long enough, with the generator 2: nothing in it tells whether it was made so
    // that a recorded key is a power of 2.
    QFETCH(const int, victim);
    const LogCapture capture;
    const Outcome outcome = attack(victim, inAGroupOfNobodys());
    const QStringList refusals{u"5002"_s, u"Eşleme hatası: 5002"_s, u"10"_s};
    QCOMPARE(outcome.told, refusals.at(victim));
    QCOMPARE(outcome.kinds, (QList{PairingStart, PairingKeyExchange}));
}

void TestAttacks::authoritysCertificateGivesNoPairing_data()
{
    addVictims();
}

void TestAttacks::authoritysCertificateGivesNoPairing()
{
    QFETCH(const int, victim);
    const LogCapture capture;
    const Outcome outcome = attack(victim, withTheAuthoritysCertificate());
    const QStringList refusals{u"5001"_s, u"Eşleme hatası: 5001"_s, u"10"_s};
    QCOMPARE(outcome.told, refusals.at(victim));
    QCOMPARE(outcome.kinds, QList{PairingStart});
    QCOMPARE(capture.text(), QByteArray("Certificate refused: it is an authority's\n"));
}

void TestAttacks::priceIsNotChangedByTheLastAnswersRandoms_data()
{
    QTest::addColumn<int>("random");

    QTest::newRow("the register's") << int(ResponderRandom);
    QTest::newRow("the tool's") << int(RequesterRandom);
}

void TestAttacks::priceIsNotChangedByTheLastAnswersRandoms()
{
    // The randoms make the IV, and the IV moves the first block of a command, where a name of 26 letters has
    // the price; the MAC is over the rest. Both randoms are seen on the line: this one's honest value is 16
    // times E or, of the tool's own, what stands in the first request.
    QFETCH(const int, random);
    constexpr qsizetype priceEnd =
        12; // in the first block: 1 byte of padding, 4 of the command, 8 of the price
    QByteArray moved(16, 'E');
    HandMadeDevice device;
    const auto hook = [&moved, random](HandMadeRegister &self, const Request &request, int count) {
        if (request.kind == PairingStart && random == RequesterRandom)
            moved = valueOf(request.fields, fieldTag(RequesterRandom));
        if (request.kind == PairingConfirm) {
            moved[priceEnd - 1] = char(moved.at(priceEnd - 1) ^ (1250 >> 8));
            moved[priceEnd] = char(moved.at(priceEnd) ^ (1250 & 0xFF) ^ 1);
        }
        return withLastAnswer({{fieldTag(ExternalDataFieldTag(random)), moved}})(self, request, count);
    };
    const quint16 port = freePort();
    device.pairAndServe(port, 1, hook);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);

    VelnoSaleItem item = {};
    std::strcpy(item.name, "Altin bilezik yirmi iki ay"); // 26 letters
    item.price = 1250;
    item.quantity = 1000;
    item.section = 1;
    VelnoEcrSaleTotals totals;
    device.answerPlain(plain(false));
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, longWait);
    QCOMPARE(velnoext_add_sale_item(patience, &item, &totals), 8);
    const QByteArray command = device.commands().constLast();
    QCOMPARE(qFromBigEndian<qint32>(command.constData()), qint32(VelnoExtMessage_AddSaleItem));
    QCOMPARE(qFromBigEndian<qint64>(command.constData() + 4), qint64(1250));
}

void TestAttacks::requestSentBackIsNoAnswer_data()
{
    QTest::addColumn<bool>("repacked");

    QTest::newRow("as it came") << false;
    QTest::newRow("its elements in the other order") << true;
}

void TestAttacks::requestSentBackIsNoAnswer()
{
    QFETCH(const bool, repacked);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([&](const QByteArray &frame) {
        if (!repacked)
            return QList{HandMadeDevice::framed(frame)};
        const QVector<QByteArray> elements = extractTlvElements(frame.sliced(14).chopped(2));
        return QList{HandMadeDevice::framed(device.withElements(elements.at(1) + elements.at(0)))};
    });
    int value = 0x5A5A;
    QCOMPARE(velnoext_last_z_datetime(patience, &value), 12); // its answer is a number, its request another
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 12);
    QCOMPARE(value, 0x5A5A);
    QCOMPARE(velnoext_login(patience), 12);
    VelnoEcrSaleTotals totals;
    QCOMPARE(velnoext_delete_sale_item(patience, 0x01000000, &totals), 12);
    QCOMPARE(device.commands().size(), 4);
}

QTEST_MAIN(TestAttacks)
#include "tst_attacks.moc"
