// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "pairing/gmp3ui.h"
#include "simulator/register/faults.h"
#include "simulator/register/foreign_certificate.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <openssl/crypto.h>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

/**
 * Each fault of the simulated register against the tool, over TCP: the result code, the record, the window's
 * text, and that the next attempt without the fault pairs.
 */
class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFaultHasARow();
    void theForeignAuthorityKeepsTheKey();
    void theToolAnswersWithTheFaultsCode_data() { addRows(); }
    void theToolAnswersWithTheFaultsCode();
    void oneByteSegmentsDoNoHarm();
    void theWindowShowsTheFaultsCode_data() { addRows(); }
    void theWindowShowsTheFaultsCode();
    void cleanup();

private:
    static void addRows();
    void pressPair(Gmp3UI &window, int code);

    QTemporaryDir m_folder;
};

namespace {

struct Row
{
    const char *fault;
    int code;
};

constexpr Row rows[] = {
    {"wrong-authority", 5001},  {"expired-certificate", 5001},
    {"no-certificate", 5001},   {"bad-signature", 5002},
    {"no-signature", 5000},     {"result-code=42", 5000},
    {"result-code=05@1", 5000}, {"result-code=05@2", 5000},
    {"result-code=05@3", 5000}, {"wrong-kind=3", 0}, // the tool asks again
    {"request-instead=3", 0},   {"bad-crc", 4001},
    {"bad-length", 3005}, // the missing byte never comes
    {"other-serial", 4002},     {"no-message-tag", 4003},
    {"oversize", 4000},         {"segments=2", 0}, // the length field arrives whole, as the tool needs it
    {"segments=100", 0},        {"delay=50", 0},
    {"mute=2", 3006},           {"close=1", 3005},
    {"close=2", 3005},          {"close=3", 3005},
    {"wrong-key-check", 5000},  {"wrong-app-hash", 5000},
    {"small-dh-key", 5002}, // keys without a shared secret are nobody's: the tool does not take them
    {"garbage", 4000},
};

// One thread does all the tool's pairing, so that each connection can be closed on the thread that opened it.
template <typename Work>
void onToolThread(Work work)
{
    QSemaphore done;
    QThreadPool::globalInstance()->start([&] {
        work();
        OPENSSL_thread_stop(); // the thread ends with the pool, when OpenSSL may be gone
        done.release();
    });
    done.acquire();
}

struct Attempt
{
    int code = -1;
    MatchExt record;
};

Attempt pairOnce(quint16 port)
{
    Attempt attempt;
    onToolThread([&] {
        attempt.code = GMP3_KeyExchange_Server(attempt.record, port, SimulatedRegister::serial,
                                               "001A2B3C4D5E", QByteArray(32, '\x5A'));
        GMP3::disconnect();
    });
    return attempt;
}

bool isEmpty(const MatchExt &record)
{
    return record.aesKey.isEmpty() && record.hmacKey.isEmpty() && record.kcvIv.isEmpty() &&
           record.registerData.isEmpty() && record.terminalId.isEmpty() && record.randomDFC10D.isEmpty() &&
           record.randomDFC10E.isEmpty() && record.pairingTime.isNull();
}

bool isComplete(const MatchExt &record)
{
    return record.aesKey.size() == 32 && record.hmacKey.size() == 32 && record.kcvIv.size() == 16 &&
           record.registerData == SimulatedRegister::serial && record.pairingTime.timeSpec() == Qt::UTC;
}

QString statusText(int code)
{
    return code == 0 ? u"Eşleme başarılı."_s : u"Eşleme hatası: %1"_s.arg(code);
}

} // namespace

void TestFaults::addRows()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("code");
    for (const Row &row : rows)
        QTest::newRow(row.fault) << QString::fromLatin1(row.fault) << row.code;
}

void TestFaults::initTestCase()
{
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    QThreadPool::globalInstance()->setExpiryTimeout(-1);
    QVERIFY(m_folder.isValid());
    QFile application(m_folder.filePath(u"application"_s));
    QVERIFY(application.open(QIODevice::WriteOnly));
    QCOMPARE(application.write("an application"), 14);
}

void TestFaults::cleanup()
{
    onToolThread([] { GMP3::disconnect(); });
}

void TestFaults::everyFaultHasARow()
{
    for (const Simulator::RegisterFaultRow &fault : Simulator::faultTable()) {
        if (fault.disturbs == Simulator::Disturbs::Commands)
            continue; // tst_commands has a row for it
        const bool tested = std::ranges::any_of(
            rows, [&](const Row &row) { return QByteArray(row.fault).split('=').first() == fault.name; });
        QVERIFY2(tested, fault.name);
    }
}

// The signature stays right, so that nothing but the authority is wrong.
void TestFaults::theForeignAuthorityKeepsTheKey()
{
    const auto [certificate, key] = TestSupport::developmentRegister();
    const QByteArray foreign = Simulator::underForeignAuthority(certificate);
    QVERIFY(foreign != certificate);
    const QByteArray signature = GMP3::rsassa_pkcs1v15_sha256_sign("signed", key);
    QVERIFY(GMP3::rsassa_pkcs1v15_sha256_verify(foreign, "signed", signature));
    QVERIFY(!GMP3::rsassa_pkcs1v15_sha256_verify(foreign, "forged", signature));
    QVERIFY(Simulator::underForeignAuthority("no certificate").isEmpty());
}

void TestFaults::theToolAnswersWithTheFaultsCode()
{
    QFETCH(const QString, fault);
    QFETCH(const int, code);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--fault"_s, fault});
    QVERIFY(reg.isReady());

    const Attempt faulty = pairOnce(port);
    QCOMPARE(faulty.code, code);
    QVERIFY(code == 0 ? isComplete(faulty.record) : isEmpty(faulty.record));

    QVERIFY(reg.setFault(u"none"_s));
    const Attempt second = pairOnce(port);
    QCOMPARE(second.code, 0);
    QVERIFY(isComplete(second.record));
    QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
}

// The tool takes what its first read brings for the whole length field. When that was one byte, it cuts the
// frame short and refuses it; when both bytes had come, it pairs. Which of them is a race.
void TestFaults::oneByteSegmentsDoNoHarm()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"segments=1"_s});
    const Attempt faulty = pairOnce(port);
    const bool refused = faulty.code == 4001 || faulty.code == 3003; // CRC, or a frame announced as empty
    QVERIFY2(faulty.code == 0 || refused, qPrintable(QString::number(faulty.code)));
    QVERIFY(refused ? isEmpty(faulty.record) : isComplete(faulty.record));
    QVERIFY(reg.setFault(u"none"_s));
    QCOMPARE(pairOnce(port).code, 0);
}

void TestFaults::theWindowShowsTheFaultsCode()
{
    QFETCH(const QString, fault);
    QFETCH(const int, code);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QVERIFY(reg.isReady());
    QVERIFY(reg.setFault(fault));

    Gmp3UI window;
    QVERIFY2(window.findChild<QComboBox *>(u"ipComboBox"_s)->count() > 0,
             "the window needs a network interface that is up, has an IPv4 address and is not the loopback");
    const auto fill = [&](const QString &field, const QString &text) {
        window.findChild<QLineEdit *>(field)->setText(text);
    };
    fill(u"portLineEdit"_s, QString::number(port));
    fill(u"applicationPathLineEdit"_s, m_folder.filePath(u"application"_s));
    fill(u"serialNoLineEdit"_s, QLatin1StringView(SimulatedRegister::serial));
    fill(u"applicationNoLineEdit"_s, u"1"_s);
    window.show();

    pressPair(window, code);
    QVERIFY(reg.setFault(u"none"_s));
    pressPair(window, 0);
    QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
}

void TestFaults::pressPair(Gmp3UI &window, int code)
{
    auto *button = window.findChild<QPushButton *>(u"pairPushButton"_s);
    const auto *status = window.findChild<QLabel *>(u"resultLabel"_s);
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(status->text(), statusText(code), 40'000);
    QTRY_VERIFY_WITH_TIMEOUT(button->isEnabled(), 40'000);
    onToolThread([] { GMP3::disconnect(); });
}

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
