// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/library_state.h"
#include "tests/support/library_test.h"
#include "tests/support/memory_search.h"
#include "tests/support/test_support.h"
#include "tests/support/window_under_test.h"

#include <QSettings>
#include <QTemporaryDir>

#include <openssl/core_names.h>

using namespace Qt::StringLiterals;
using namespace Velno;
using namespace Velno::GMP;
using namespace TestSupport;

namespace {

constexpr int longWait = 30'000; // ms, for a machine under load

/** The tool's secret exponent, as its session holds it while the register is to answer. */
HiddenSecret exponentOfTheSession()
{
    BIGNUM *taken = nullptr;
    EVP_PKEY_get_bn_param(gmp3_message.dh.get(), OSSL_PKEY_PARAM_PRIV_KEY, &taken);
    const BnPtr number{taken};
    QByteArray bytes(BN_num_bytes(taken), '\0');
    BN_bn2bin(taken, octets(bytes));
    const HiddenSecret secret(u"exponent"_s, bytes);
    cleanse(bytes);
    return secret;
}

/** What the keys are made from on the way; the randoms are no secret. */
QList<HiddenSecret> stepsTo(const HandMadeRegister &reg, const QByteArray &requesterRandom)
{
    const QByteArray seed = QByteArray(16, 'E') + requesterRandom;
    QByteArray master = GMP3::TLS_PRF(reg.secret, "GMP-3 istek", seed);
    QByteArray chain = GMP3::TLS_PRF(reg.hmacKey, "GMP-3 anahtarlar", seed);
    chain.truncate(16);
    const QList<HiddenSecret> steps{
        {u"shared secret"_s, reg.secret}, {u"master secret"_s, master}, {u"chaining value"_s, chain}};
    cleanse(master);
    cleanse(chain);
    return steps;
}

QList<HiddenSecret> keysOf(const QByteArray &hmacKey, const QByteArray &aesKey)
{
    return {{u"HMAC key"_s, hmacKey}, {u"AES key"_s, aesKey}};
}

/** Plays an honest register and notes, hidden, all that either side knows when keys are agreed. */
class Spy
{
public:
    HandMadeRegister::Hook hook()
    {
        return [this](HandMadeRegister &self, const Request &request, int) {
            if (request.kind == PairingStart)
                m_random = valueOf(request.fields, fieldTag(RequesterRandom));
            Fields fields = self.honestAnswer(request);
            replaceValue(fields, fieldTag(EcrIdentity), serial);
            if (request.kind == PairingConfirm) {
                keys = keysOf(self.hmacKey, self.aesKey);
                others = stepsTo(self, m_random) << exponentOfTheSession();
            }
            return QList{HandMadeRegister::frameOf(request.kind, fields)};
        };
    }

    QList<HiddenSecret> keys;   ///< that commands need
    QList<HiddenSecret> others; ///< that nobody needs when the keys are there

private:
    QByteArray m_random;
};

/** Pairs a record through the engine; the register is gone afterwards. */
int pair(MatchExt &record, Spy &spy)
{
    const quint16 port = freePort();
    HandMadeRegister reg(spy.hook());
    reg.start(port);
    const int result = GMP3_KeyExchange_Server(record, port, serial, "001A2B3C4D5E", QByteArray(32, 'h'));
    velno_network_disconnect(connection_handle);
    connection_handle = 0;
    return result;
}

const QString nothing;
const QString commandKeys = u"HMAC key, AES key"_s;

/** The names of those that are found, in their own order, since memory is searched in another. */
QString leftOf(const QList<HiddenSecret> &secrets)
{
    const QStringList found = secretsInMemory(secrets);
    QStringList sorted;
    for (const HiddenSecret &secret : secrets) {
        if (found.contains(secret.name()))
            sorted << secret.name();
    }
    return sorted.join(u", "_s);
}

} // namespace

/** What is left of keys in the memory of the process when they are no longer needed. */
class TestForgottenKeys : public LibraryTest
{
    Q_OBJECT

private slots:
    void droppedRecordLeavesNoKeys();
    void replacedRecordLeavesNoKeys();
    void failedPairingLeavesNoKeys();
    void usedKeysLeaveNothing();
    void windowLeavesNoKeys();
    void closedLibraryLeavesNoKeys();
};

void TestForgottenKeys::droppedRecordLeavesNoKeys()
{
    Spy spy;
    {
        MatchExt record;
        QCOMPARE(pair(record, spy), 0);
        QCOMPARE(leftOf(spy.keys), commandKeys); // the search finds what is there
        QCOMPARE(leftOf(spy.others), nothing);
    }
    QCOMPARE(leftOf(spy.keys + spy.others), nothing);
}

void TestForgottenKeys::replacedRecordLeavesNoKeys()
{
    Spy first;
    Spy second;
    MatchExt record;
    QCOMPARE(pair(record, first), 0);
    QCOMPARE(pair(record, second), 0); // filled again
    QCOMPARE(leftOf(first.keys), nothing);
    MatchExt copy = record;
    record = MatchExt();
    QCOMPARE(leftOf(second.keys), commandKeys); // the copy's
    MatchExt other = copy;
    other = record;
    QCOMPARE(leftOf(second.keys), commandKeys);
    copy = record;
    QCOMPARE(leftOf(second.keys), nothing);
}

void TestForgottenKeys::failedPairingLeavesNoKeys()
{
    Spy spy;
    const quint16 port = freePort();
    {
        HandMadeRegister reg(
            [honest = spy.hook()](HandMadeRegister &self, const Request &request, int count) {
                const QList<QByteArray> answer = honest(self, request, count);
                return request.kind == PairingConfirm
                           ? QList{HandMadeRegister::frameOf(request.kind, {{fieldTag(ResultCode), "03"}})}
                           : answer;
            });
        reg.start(port);
        MatchExt record;
        QCOMPARE(GMP3_KeyExchange_Server(record, port, serial, "001A2B3C4D5E", QByteArray(32, 'h')), 5000);
        velno_network_disconnect(connection_handle);
        connection_handle = 0;
    }
    QCOMPARE(leftOf(spy.keys + spy.others), nothing);
}

void TestForgottenKeys::usedKeysLeaveNothing()
{
    Spy spy;
    {
        MatchExt record;
        QCOMPARE(pair(record, spy), 0);
        const QByteArray cipher = GMP3_cipher(record, true, "a command");
        QCOMPARE(GMP3_cipher(record, false, cipher), QByteArray("a command"));
        QCOMPARE(GMP3_HMAC(record, cipher).size(), 32);
    }
    QCOMPARE(leftOf(spy.keys + spy.others), nothing);
}

void TestForgottenKeys::windowLeavesNoKeys()
{
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.filePath(u"config"_s));
    QFile application(folder.filePath(u"application"_s));
    QVERIFY(application.open(QIODevice::WriteOnly) && application.write("application") > 0);
    application.close();
    Spy spy;
    WindowUnderTest window;
    {
        window.fill(application.fileName());
        HandMadeRegister reg(spy.hook());
        window.pair();
        reg.start(window.port());
        QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
        QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    }
    QCOMPARE(leftOf(spy.keys + spy.others), nothing);
}

void TestForgottenKeys::closedLibraryLeavesNoKeys()
{
    Spy spy;
    {
        HandMadeDevice device;
        const quint16 port = freePort();
        device.pairAndServe(port, 1, spy.hook());
        QCOMPARE(velnoext_initialize(14242, serial, "127.0.0.1", port, patience), 0);
        device.answerPlain(plain(true, 3));
        QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, longWait);
        QCOMPARE(velnoext_login(patience), 0); // sets up what commands are encrypted with
    }
    QCOMPARE(leftOf(spy.keys), commandKeys); // the library's, now that the register is gone
    QCOMPARE(leftOf(spy.others), nothing);
    velnoext_close();
    QCOMPARE(leftOf(spy.keys + spy.others), nothing);
}

QTEST_MAIN(TestForgottenKeys)
#include "tst_forgotten_keys.moc"
