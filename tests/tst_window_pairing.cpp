// SPDX-License-Identifier: Apache-2.0

#include "tests/support/closing_times.h"
#include "tests/support/ends_with_test.h"
#include "tests/support/listening.h"
#include "tests/support/registers_key.h"
#include "tests/support/window_test.h"
#include "tests/support/window_under_test.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <thread>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

using Window = WindowUnderTest;

constexpr int longWait = 30'000; // ms, for a machine under load

/** Connects to the workflow's port as soon as it listens, and closes at once. */
void connectAndLeave(quint16 port)
{
    const QDeadlineTimer deadline(longWait);
    QTcpSocket socket;
    do {
        socket.abort();
        socket.connectToHost(QHostAddress::LocalHost, port);
    } while (!socket.waitForConnected(longWait) && !deadline.hasExpired()); // nobody listens yet
}

} // namespace

/** What the window takes for a form, and how it pairs. */
class TestWindowPairing : public WindowTest
{
    Q_OBJECT

private slots:
    void wrongFormIsRefused_data();
    void wrongFormIsRefused();
    void firstWrongFieldIsReported();
    void rightFormIsAccepted_data();
    void rightFormIsAccepted();

    void failedPairingShowsItsCode();
    void secondClickIsPartOfTheFirst();
    void paintsWhileAPairingWaits();
    void closingEndsAPairingAtOnce_data();
    void closingEndsAPairingAtOnce();
    void destructionEndsAPairingAtOnce();
    void windowThatWasClosedPairsAgain();
    void failureIsExplainedInTurkish();
    void pairsWithARegister_data();
    void pairsWithARegister();
    void pairsAgainAndAgain();

private:
    void startRegister(QProcess &cashRegister, quint16 port);
    static bool ended(QProcess &cashRegister);
};

void TestWindowPairing::startRegister(QProcess &cashRegister, quint16 port)
{
    QFile application(m_application);
    QVERIFY(application.open(QIODevice::ReadOnly));
    const QByteArray hash = QCryptographicHash::hash(application.readAll(), QCryptographicHash::Sha256);
    cashRegister.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    cashRegister.setChildProcessModifier(TestSupport::endsWithTest());
    cashRegister.start(QString::fromUtf8(VELNO_REGISTER),
                       {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:%1"_s.arg(port),
                        u"--app-hash"_s, QString::fromLatin1(hash.toHex()), u"--once"_s});
    QVERIFY2(cashRegister.waitForStarted(), qUtf8Printable(cashRegister.errorString()));
}

/** Whether the register says with its exit code that it has paired. */
bool TestWindowPairing::ended(QProcess &cashRegister)
{
    return (cashRegister.state() == QProcess::NotRunning || cashRegister.waitForFinished()) &&
           cashRegister.exitStatus() == QProcess::NormalExit && cashRegister.exitCode() == 0;
}

void TestWindowPairing::wrongFormIsRefused_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("status");

    const auto rows = [](const char *title, const QString &field, const QStringList &values,
                         const QString &status) {
        for (const QString &value : values)
            QTest::addRow("%s '%s'", title, qUtf8Printable(value)) << field << value << status;
    };
    rows("port", u"portLineEdit"_s,
         {u""_s, u"0"_s, u"00000"_s, u"65536"_s, u"70000"_s, u"-1"_s, u"0x50"_s, u"8a"_s},
         u"Port geçerli değil."_s);
    rows("path", u"applicationPathLineEdit"_s, {u""_s}, u"Uygulama seçilmemiş."_s);
    rows("path", u"applicationPathLineEdit"_s, {u"/nothing/is/here"_s}, u"Uygulama yolu geçerli değil."_s);
    rows("serial number", u"serialNoLineEdit"_s,
         {u""_s, u"UB123"_s, u"UB123456789"_s, u"AB1234567890"_s, u"ub1234567890"_s, u"Ub1234567890"_s,
          u"U"_s, u"VELN12345678"_s, u"velno1234567"_s, u"VELNO123456"_s, u" UB123456789"_s},
         u"Cihaz sicil no geçerli değil."_s);
    rows("application number", u"applicationNoLineEdit"_s,
         {u""_s, u"0"_s, u"abc"_s, u"-1"_s, u"0x1F"_s, u"1.5"_s}, u"Uygulama no geçerli değil."_s);
    rows("hardware address", u"hardwareId"_s, {u""_s, u"001A2B3C4D5"_s, u"001A2B3C4D5E0"_s},
         u"Geçerli ağ arayüzü bulunamadı."_s);
    // A folder exists but does not open as a file: so does a file without permission, which root may read.
    rows("folder", u"applicationPathLineEdit"_s, {QDir::tempPath()},
         u"Uygulama dosyası açılamadı. Hata kodu: 5"_s);
#ifdef Q_OS_LINUX
    // Opens, but nothing is mapped at its beginning: the first read fails.
    rows("unreadable", u"applicationPathLineEdit"_s, {u"/proc/self/mem"_s},
         u"Uygulama özeti hesaplanamadı."_s);
#endif
}

void TestWindowPairing::wrongFormIsRefused()
{
    QFETCH(const QString, field);
    QFETCH(const QString, value);
    QFETCH(const QString, status);
    Window window;
    window.fill(m_application);
    if (field == u"hardwareId"_s)
        window.hardwareId = value;
    else
        window.findChild<QLineEdit *>(field)->setText(value);

    QByteArray hash = "untouched";
    QVERIFY(!window.verifyData(hash));
    QCOMPARE(hash, "untouched");
    QCOMPARE(window.status(), status);

    // Both buttons check first and start nothing.
    window.setText(QString());
    window.pair();
    QCOMPARE(window.status(), status);
    window.setText(QString());
    window.test();
    QCOMPARE(window.status(), status);
    QCoreApplication::processEvents();
    QVERIFY(window.buttonsEnabled());
}

void TestWindowPairing::firstWrongFieldIsReported()
{
    Window window;
    window.hardwareId.clear();
    const Ui_Gmp3UI &form = window.form();
    const auto status = [&window] {
        QByteArray hash;
        return window.verifyData(hash) ? u"accepted"_s : window.status();
    };

    QCOMPARE(status(), u"Port geçerli değil."_s);
    form.portLineEdit->setText(u"65535"_s);
    QCOMPARE(status(), u"Uygulama seçilmemiş."_s);
    form.applicationPathLineEdit->setText(u"/nothing/is/here"_s);
    QCOMPARE(status(), u"Uygulama yolu geçerli değil."_s);
    form.applicationPathLineEdit->setText(m_dir.path()); // exists: opening it comes last
    QCOMPARE(status(), u"Cihaz sicil no geçerli değil."_s);
    form.serialNoLineEdit->setText(u"VELNO1234567"_s);
    QCOMPARE(status(), u"Uygulama no geçerli değil."_s);
    form.applicationNoLineEdit->setText(u"1"_s);
    QCOMPARE(status(), u"Geçerli ağ arayüzü bulunamadı."_s);
    window.hardwareId = u"001A2B3C4D5E"_s;
    QCOMPARE(status(), u"Uygulama dosyası açılamadı. Hata kodu: 5"_s);
    form.applicationPathLineEdit->setText(m_application);
    QCOMPARE(status(), u"accepted"_s);
}

void TestWindowPairing::rightFormIsAccepted_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("serialNo");
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("smallest port") << u"1"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray("a");
    QTest::newRow("largest port") << u"65535"_s << u"192.0.2.1"_s << u"VELNO1234567"_s << QByteArray("a");
    QTest::newRow("relay without port") << QString() << u"TSM"_s << u"UBxxxxxxxxxx"_s << QByteArray("a");
    QTest::newRow("relay with a wrong port")
        << u"70000"_s << u"TSM"_s << u"UB1234567890"_s << QByteArray("a");
    QTest::newRow("empty application") << u"80"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray();
    QTest::newRow("application of many pieces")
        << u"80"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray(3'000'001, 'x');
}

void TestWindowPairing::rightFormIsAccepted()
{
    QFETCH(const QString, port);
    QFETCH(const QString, address);
    QFETCH(const QString, serialNo);
    QFETCH(const QByteArray, content);
    Window window;
    window.fill(file(u"application"_s, content));
    window.chooseAddress(address);
    window.form().portLineEdit->setText(port);
    window.form().serialNoLineEdit->setText(serialNo);

    QByteArray hash;
    QVERIFY2(window.verifyData(hash), qUtf8Printable(window.status()));
    QCOMPARE(hash, QCryptographicHash::hash(content, QCryptographicHash::Sha256));
    QCOMPARE(window.status(), QString());
}

void TestWindowPairing::failedPairingShowsItsCode()
{
    Window window;
    window.fill(m_application);
    window.form().applicationNoLineEdit->setText(u"14242"_s);
    const quint16 port = window.port();

    window.pair();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsDisabled(), longWait);
    QVERIFY(window.form().browsePushButton->isEnabled());
    const std::jthread peer(connectAndLeave, port);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    // The peer is gone before its first answer: seen by the write or by the read.
    QVERIFY2(QRegularExpression(u"^Eşleme hatası: [23]00[5-7]$"_s).match(window.status()).hasMatch(),
             qUtf8Printable(window.status()));
    QVERIFY(!QSettings().contains(u"irup"_s) && !QSettings().contains(u"irudsn"_s));
}

void TestWindowPairing::secondClickIsPartOfTheFirst()
{
    Window window;
    window.fill(m_application);
    const quint16 port = window.port();
    window.pair();
    window.form().portLineEdit->setText(u"0"_s);
    QVERIFY(window.form().pairPushButton->isEnabled()); // no event has disabled it yet
    window.pair();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);

    const std::jthread peer(connectAndLeave, port);
    QTRY_VERIFY_WITH_TIMEOUT(window.status().startsWith(u"Eşleme hatası: "_s), longWait);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    window.pair(); // the next one counts again
    QCOMPARE(window.status(), u"Port geçerli değil."_s);
}

void TestWindowPairing::paintsWhileAPairingWaits()
{
    QThreadPool *const pool = QThreadPool::globalInstance();
    const auto restore =
        qScopeGuard([pool, count = pool->maxThreadCount()] { pool->setMaxThreadCount(count); });
    pool->setMaxThreadCount(1); // as on a computer with one core; Qt paints with the same threads
    Window window;
    window.fill(m_application);
    const quint16 port = window.port();
    window.show();
    window.pair();
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsDisabled(), longWait);
    window.grab();
    QCoreApplication::processEvents();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);
    connectAndLeave(port);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
}

void TestWindowPairing::closingEndsAPairingAtOnce_data()
{
    QTest::addColumn<bool>("connected");
    QTest::newRow("that waits for a register") << false;
    QTest::newRow("with a register that is silent") << true;
}

void TestWindowPairing::closingEndsAPairingAtOnce()
{
    QFETCH(const bool, connected);
    ClosingTimes times;
    for (int i = 0; i < ClosingTimes::enough; ++i) {
        Window window;
        window.fill(m_application);
        window.show();
        const quint16 port = window.port();
        window.pair();
        QTRY_VERIFY_WITH_TIMEOUT(isListenedOn(port), longWait);
        QTcpSocket silent;
        if (connected) {
            silent.connectToHost(QHostAddress::LocalHost, port);
            QVERIFY(silent.waitForReadyRead(longWait)); // it has been asked, and says nothing
        }
        times.measure([&window] { window.close(); });
        QVERIFY(!window.isVisible());
        QVERIFY(QTcpServer().listen(QHostAddress::Any, port)); // free for a window that is opened next
        QCoreApplication::processEvents();
        QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s); // no error of nobody's
        QVERIFY(window.buttonsEnabled());
    }
    QVERIFY2(times.areShort(), qPrintable(times.inWords()));
}

void TestWindowPairing::destructionEndsAPairingAtOnce()
{
    ClosingTimes times;
    for (int i = 0; i < ClosingTimes::enough; ++i) {
        auto window = std::make_unique<Window>();
        window->fill(m_application);
        const quint16 port = window->port();
        window->pair(); // and before its thread has begun
        times.measure([&window] { window.reset(); });
        QVERIFY(QTcpServer().listen(QHostAddress::Any, port));
    }
    QVERIFY2(times.areShort(), qPrintable(times.inWords()));
}

void TestWindowPairing::windowThatWasClosedPairsAgain()
{
    NEEDS_A_REGISTERS_KEY();
    Window window;
    window.fill(m_application);
    window.show();
    window.pair();
    window.close();
    window.show();
    QProcess cashRegister;
    startRegister(cashRegister, window.port());
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
    QVERIFY(ended(cashRegister));
}

void TestWindowPairing::failureIsExplainedInTurkish()
{
    Window window;
    window.fill(m_application);
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::Any, window.port()));
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme hatası: 1006"_s, longWait);
    const QLabel *const label = window.form().resultLabel;
    const QString reason = window.reason();
    QVERIFY2(reason.startsWith(u"Bağlantı noktası (port) bu bilgisayarda kullanımda."_s), qPrintable(reason));
    QVERIFY2(reason.contains(u"\nÇözüm: "_s), qPrintable(reason));
    QCOMPARE(label->accessibleDescription(), reason);

    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    window.form().portLineEdit->clear();
    window.pair(); // the reason goes with its text
    QCOMPARE(window.status(), u"Port geçerli değil."_s);
    QCOMPARE(label->toolTip(), QString());
    QCOMPARE(label->accessibleDescription(), QString());
}

void TestWindowPairing::pairsWithARegister_data()
{
    QTest::addColumn<QString>("applicationNo");
    QTest::addColumn<bool>("relay");
    QTest::addColumn<bool>("stored");

    QTest::newRow("another application stores nothing") << u"4711"_s << false << false;
    QTest::newRow("the PC application stores the port") << u"14242"_s << false << true;
    QTest::newRow("the PC application over the relay stores 0") << u"14242"_s << true << true;
}

void TestWindowPairing::pairsWithARegister()
{
    NEEDS_A_REGISTERS_KEY();
    QFETCH(const QString, applicationNo);
    QFETCH(const bool, relay);
    QFETCH(const bool, stored);
    Window window;
    window.fill(m_application);
    window.form().applicationNoLineEdit->setText(applicationNo);
    window.form().tsmCheckBox->setChecked(relay);

    QProcess cashRegister;
    startRegister(cashRegister, window.port());
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    QVERIFY(ended(cashRegister));

    const QSettings settings;
    QCOMPARE(settings.allKeys().size(), stored ? 2 : 0);
    if (stored) {
        QCOMPARE(settings.value(u"irup"_s).toInt(), relay ? 0 : window.port());
        QCOMPARE(settings.value(u"irudsn"_s).toString(), u"UB1234567890"_s);
    }
}

void TestWindowPairing::pairsAgainAndAgain()
{
    NEEDS_A_REGISTERS_KEY();
    Window window;
    window.fill(m_application);
    for (int i = 0; i < 3; ++i) {
        QProcess cashRegister;
        startRegister(cashRegister, window.port());
        window.pair();
        QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
        QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
        QVERIFY(ended(cashRegister));
    }
}

QTEST_MAIN(TestWindowPairing)
#include "tst_window_pairing.moc"
