// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/velnoext/library_state.h"
#include "tests/support/closing_times.h"
#include "tests/support/device_test_texts.h"
#include "tests/support/library_test.h"
#include "tests/support/status_record.h"
#include "tests/support/window_under_test.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace Velno::Ext;
using namespace Velno::GMP;
using namespace TestSupport;

namespace {

constexpr int longPause = 600'000; // ms: nobody sees its end
constexpr int longWait = 30'000;   // ms, for the time-outs of the workflow and a machine under load

using Runs = QList<QByteArray>;

/** The frame with a MAC of which one bit is another. */
QByteArray withWrongMac(QByteArray frame)
{
    const qsizetype macEnd = frame.size() - 3; // a CRC of two bytes follows the MAC
    frame[macEnd] = char(frame.at(macEnd) ^ 1);
    const QByteArray message = frame.sliced(2).chopped(2);
    return GMP3::frame(true, None, message.sliced(12), serial);
}

/** A register with a state, a Z number and paper, which can do something else for one command. */
class Device : public HandMadeDevice
{
public:
    Device()
    {
        setAnswer([this](const QByteArray &payload) { return answerTo(commandOf(payload)); });
    }
    ~Device() { stop(); }

    VelnoExtMessage commandOf(const QByteArray &payload) const
    {
        const QByteArray request = opened(payload);
        return VelnoExtMessage(request.size() < 4 ? -1 : qFromBigEndian<qint32>(request.constData()));
    }

    QByteArray honest(VelnoExtMessage command) const
    {
        switch (command) {
        case VelnoExtMessage_EcrState:
            return plain(7, QVector<int>());
        case VelnoExtMessage_CurrentZ:
            return plain(true, z);
        case VelnoExtMessage_CheckPrinterPaper:
            return plain(paper);
        default:
            return {};
        }
    }

    int z = 124;
    bool paper = true;
    std::function<void(VelnoExtMessage)> before; ///< called ahead of each answer
    std::atomic<int> oddCommand = -1;            ///< answered as the next line says
    std::function<Runs(Device &)> oddly;

private:
    Runs answerTo(VelnoExtMessage command)
    {
        if (before)
            before(command);
        if (command == oddCommand)
            return oddly(*this);
        return {framed(sealed(honest(command)))};
    }
};

/** The window in front of a register that it has met before. */
struct Bench
{
    explicit Bench(const QString &application)
        : record(window.form().resultLabel)
    {
        window.fill(application);
        window.chooseAddress(u"127.0.0.1"_s);
        window.testPause = 0;
        library().pairingRecords[serial] = device.record;
    }

    bool ended()
    {
        return QTest::qWaitFor([this] { return record.texts().size() > 1 && window.buttonsEnabled(); },
                               longWait);
    }

    Device device;
    WindowUnderTest window;
    StatusRecord record;
};

bool libraryIsClosed()
{
    char buffer[13] = {};
    return velnoext_active_device(buffer) == NotReady && !library().connectionThread &&
           library().connections.empty() && connection_handle == 0;
}

} // namespace

/** The window's "Test": the texts in their order, each failure, and how it ends early. */
class TestDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void textsStayForTwoSeconds();
    void everyStepIsTold_data();
    void everyStepIsTold();
    void failedQueryEndsTheTest_data();
    void failedQueryEndsTheTest();
    void failedConnectionEndsTheTest_data();
    void failedConnectionEndsTheTest();
    void takenPortEndsTheTest();
    void unknownRegisterIsPairedFirst();
    void refusedPairingEndsTheTest();
    void tsmTakesTheRelay();
    void pcApplicationIsNotTested();
    void clicksDuringATestArePartOfIt();
    void clickDuringAPairingIsPartOfIt();
    void closingEndsTheTestInAPause_data();
    void closingEndsTheTestInAPause();
    void destructionEndsTheTestInAPause();
    void closingEndsAWaitAtOnce_data();
    void closingEndsAWaitAtOnce();
    void failureIsExplainedInTurkish();

private:
    QTemporaryDir m_dir;
    QString m_application;
};

void TestDeviceTest::initTestCase()
{
    m_application = m_dir.filePath(u"application"_s);
    QFile file(m_application);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("application") > 0);
}

void TestDeviceTest::init()
{
    // What Qt says when an object is touched on a thread that is not its own.
    QTest::failOnWarning(QRegularExpression(u"thread|QSocketNotifier|QObject::"_s));
}

void TestDeviceTest::cleanup()
{
    QVERIFY(libraryIsClosed());
    library().pairingRecords.clear();
}

void TestDeviceTest::textsStayForTwoSeconds()
{
    QCOMPARE(WindowUnderTest().testPause, 2000);
}

void TestDeviceTest::everyStepIsTold_data()
{
    QTest::addColumn<bool>("paper");
    QTest::addColumn<int>("z");
    QTest::addColumn<QStringList>("texts");

    QStringList largeZ = complete;
    largeZ.replace(3, u"Z no: 4294967295"_s);
    QTest::newRow("paper") << true << 124 << complete;
    QTest::newRow("no paper, then the same") << false << 124 << completeWithoutPaper;
    QTest::newRow("the Z number has no sign") << true << -1 << largeZ;
}

void TestDeviceTest::everyStepIsTold()
{
    QFETCH(const bool, paper);
    QFETCH(const int, z);
    Bench bench(m_application);
    bench.device.paper = paper;
    bench.device.z = z;
    bench.device.serve(bench.window.port());
    bench.window.test();
    QVERIFY(bench.ended());
    QTEST(bench.record.texts(), "texts");
    QVERIFY(libraryIsClosed());
    QCOMPARE(library().appNo, 4711U);
    QCOMPARE(bench.device.commands().size(), 3);
}

void TestDeviceTest::failedQueryEndsTheTest_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<std::function<Runs(Device &)>>("answer");
    QTest::addColumn<QStringList>("texts");

    struct Query
    {
        const char *name;
        VelnoExtMessage command;
        QStringList before;
        QString failure;
    };
    const QList<Query> queries{{"state", VelnoExtMessage_EcrState, connected, stateFailed},
                               {"Z number", VelnoExtMessage_CurrentZ, knowsState, zFailed},
                               {"paper", VelnoExtMessage_CheckPrinterPaper, knowsZ, paperFailed}};
    const auto row = [](const Query &query, const char *what, int code,
                        std::function<Runs(Device &)> answer) {
        QTest::addRow("%s, %s", query.name, what)
            << int(query.command) << answer << query.before + QStringList{query.failure.arg(code)};
    };
    for (const Query &query : queries) {
        row(query, "connection closed", 2, [](Device &) { return Runs(); });
        row(query, "frame too long", 2, [](Device &) { return Runs{"\x7F\xFF\xFF\xFF"}; });
        row(query, "wrong MAC", 11, [command = query.command](Device &device) {
            return Runs{Device::framed(withWrongMac(device.sealed(device.honest(command))))};
        });
        row(query, "no frame", 12, [](Device &) { return Runs{Device::framed("nothing")}; });
        if (query.command != VelnoExtMessage_CheckPrinterPaper) // whose answer is one byte
            row(query, "short answer", 5,
                [](Device &device) { return Runs{Device::framed(device.sealed(plain(true)))}; });
    }
    row(queries.at(1), "refused", 8,
        [](Device &device) { return Runs{Device::framed(device.sealed(plain(false, 124)))}; });
}

void TestDeviceTest::failedQueryEndsTheTest()
{
    QFETCH(const int, command);
    QFETCH(const std::function<Runs(Device &)>, answer);
    QFETCH(const QStringList, texts);
    Bench bench(m_application);
    bench.device.oddly = answer;
    bench.device.oddCommand = command;
    bench.device.serve(bench.window.port(), 2);
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), texts);
    QVERIFY(libraryIsClosed());

    bench.device.oddCommand = -1;
    bench.window.test(); // the next one works
    QVERIFY(QTest::qWaitFor([&] { return bench.record.texts().size() == texts.size() + complete.size(); },
                            longWait));
    QCOMPARE(bench.record.texts(), texts + complete);
    QTRY_VERIFY_WITH_TIMEOUT(bench.window.buttonsEnabled(), longWait);
}

void TestDeviceTest::failedConnectionEndsTheTest_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("code");

    QTest::newRow("no address of this computer") << u"192.0.2.201"_s << 2;
    QTest::newRow("no address at all") << u"TSM"_s << 4;
}

void TestDeviceTest::failedConnectionEndsTheTest()
{
    QFETCH(const QString, address);
    QFETCH(const int, code);
    Bench bench(m_application);
    bench.window.chooseAddress(address);
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), connecting + QStringList{connectionFailed.arg(code)});
    QVERIFY(libraryIsClosed());
}

void TestDeviceTest::takenPortEndsTheTest()
{
    Bench bench(m_application);
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::LocalHost, bench.window.port()));
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), connecting + QStringList{connectionFailed.arg(2)});
    QVERIFY(libraryIsClosed());
}

void TestDeviceTest::unknownRegisterIsPairedFirst()
{
    Bench bench(m_application);
    library().pairingRecords.clear();
    bench.device.pairAndServe(bench.window.port());
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), complete);
    QCOMPARE(bench.device.contacts, 3);
    QVERIFY(!bench.device.announcement.isEmpty());
}

void TestDeviceTest::refusedPairingEndsTheTest()
{
    Bench bench(m_application);
    library().pairingRecords.clear();
    bench.device.pairAndServe(bench.window.port(), 0, [](HandMadeRegister &reg, const Request &request, int) {
        Fields fields = reg.honestAnswer(request);
        TestSupport::replaceValue(fields, fieldTag(ResultCode), "01");
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    });
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), connecting + QStringList{connectionFailed.arg(10)});
    QVERIFY(libraryIsClosed());
}

void TestDeviceTest::tsmTakesTheRelay()
{
    Bench bench(m_application);
    bench.window.chooseAddress(u"192.0.2.201"_s); // not asked
    bench.window.form().tsmCheckBox->setChecked(true);
    bench.device.playRelay(50902);
    bench.device.serve(0);
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), complete);
    QCOMPARE(bench.device.contacts, 1);
}

void TestDeviceTest::pcApplicationIsNotTested()
{
    Bench bench(m_application);
    QVERIFY(QThreadPool::globalInstance()->waitForDone(longWait)); // with the tests before
    bench.window.form().applicationNoLineEdit->setText(u"14242"_s);
    bench.window.test();
    QCOMPARE(bench.record.texts(), QStringList{u"Cihaz testi velno PC uygulaması için yapılamaz."_s});
    QVERIFY(QThreadPool::globalInstance()->waitForDone(0)); // nothing was started
    QCoreApplication::processEvents();
    QVERIFY(bench.window.buttonsEnabled());
}

void TestDeviceTest::clicksDuringATestArePartOfIt()
{
    Bench bench(m_application);
    bench.device.serve(bench.window.port());
    bench.window.test();
    QVERIFY(bench.window.buttonsEnabled()); // no event has disabled them yet
    bench.window.test();
    bench.window.pair();
    bench.window.form().portLineEdit->setText(u"0"_s);
    bench.window.test();
    bench.window.pair();
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(), complete);
    bench.window.test(); // the next one counts again
    QCOMPARE(bench.window.status(), u"Port geçerli değil."_s);
}

void TestDeviceTest::clickDuringAPairingIsPartOfIt()
{
    Bench bench(m_application);
    bench.window.pair();
    QVERIFY(bench.window.buttonsEnabled());
    bench.window.test();
    HandMadeRegister reg;
    reg.start(bench.window.port());
    QVERIFY(bench.ended());
    QCOMPARE(bench.record.texts(),
             (QStringList{u"Cihazda eşlemeyi başlatabilirsiniz."_s, u"Eşleme başarılı."_s}));
    reg.finish();
}

void TestDeviceTest::closingEndsTheTestInAPause_data()
{
    QTest::addColumn<int>("lastCommand");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("connected") << -1 << connected;
    QTest::newRow("state shown") << int(VelnoExtMessage_EcrState) << knowsState;
    QTest::newRow("Z number shown") << int(VelnoExtMessage_CurrentZ) << knowsZ;
    QTest::newRow("paper shown") << int(VelnoExtMessage_CheckPrinterPaper)
                                 << complete.first(complete.size() - 1);
}

void TestDeviceTest::closingEndsTheTestInAPause()
{
    QFETCH(const int, lastCommand);
    QFETCH(const QStringList, texts);
    Bench bench(m_application);
    if (lastCommand < 0)
        bench.window.testPause = longPause;
    bench.device.before = [&](VelnoExtMessage command) {
        if (command == lastCommand)
            bench.window.testPause = longPause;
    };
    bench.device.serve(bench.window.port());
    bench.window.test();
    QTRY_COMPARE_WITH_TIMEOUT(bench.record.texts(), texts, longWait);
    QVERIFY(bench.window.buttonsDisabled());
    QVERIFY(bench.window.form().browsePushButton->isEnabled());
    bench.window.close();
    QVERIFY(libraryIsClosed());
    QCoreApplication::processEvents();
    QCOMPARE(bench.record.texts(), texts); // no command, no text after it
    QCOMPARE(bench.device.commands().size(), texts.size() - connected.size());
}

void TestDeviceTest::destructionEndsTheTestInAPause()
{
    auto bench = std::make_unique<Bench>(m_application);
    bench->window.testPause = longPause;
    bench->device.serve(bench->window.port());
    bench->window.test();
    QTRY_COMPARE_WITH_TIMEOUT(bench->record.texts(), connected, longWait);
    bench.reset();
    QVERIFY(libraryIsClosed());
}

void TestDeviceTest::closingEndsAWaitAtOnce_data()
{
    QTest::addColumn<int>("mute");
    QTest::newRow("for a register to connect") << -1;
    QTest::newRow("for its state") << int(VelnoExtMessage_EcrState);
    QTest::newRow("for its Z number") << int(VelnoExtMessage_CurrentZ);
    QTest::newRow("for word of its paper") << int(VelnoExtMessage_CheckPrinterPaper);
}

void TestDeviceTest::closingEndsAWaitAtOnce()
{
    QFETCH(const int, mute);
    ClosingTimes times;
    for (int i = 0; i < ClosingTimes::enough; ++i) {
        Bench bench(m_application);
        bench.device.oddly = [](Device &) { return Runs{""}; }; // has heard it, says nothing
        bench.device.oddCommand = mute;
        if (mute >= 0)
            bench.device.serve(bench.window.port());
        bench.window.test();
        const auto isWaiting = [&bench, mute] {
            const QList<QByteArray> commands = bench.device.commands();
            return mute < 0 ? bench.record.texts() == connecting
                            : !commands.isEmpty() && commands.last() == plain(mute);
        };
        QTRY_VERIFY_WITH_TIMEOUT(isWaiting(), longWait);
        const QStringList texts = bench.record.texts();
        times.measure([&bench] { bench.window.close(); });
        QVERIFY(libraryIsClosed());
        QVERIFY(QTcpServer().listen(QHostAddress::LocalHost, bench.window.port()));
        QCoreApplication::processEvents();
        QCOMPARE(bench.record.texts(), texts); // no failure of nobody's
    }
    QVERIFY2(times.areShort(), qPrintable(times.inWords()));
}

void TestDeviceTest::failureIsExplainedInTurkish()
{
    Bench bench(m_application);
    bench.device.oddly = [](Device &) { return Runs(); }; // closes
    bench.device.oddCommand = VelnoExtMessage_CurrentZ;
    bench.device.serve(bench.window.port());
    bench.window.test();
    QVERIFY(bench.ended());
    QCOMPARE(bench.window.status(), zFailed.arg(2));
    const QString reason = bench.window.reason();
    velnoext_set_language("tr");
    QCOMPARE(reason, QString::fromUtf8(velnoext_cause_text(VelnoCause_ClosedWhileWaiting)));
    QCOMPARE(bench.window.form().resultLabel->accessibleDescription(), reason);
}

QTEST_MAIN(TestDeviceTest)

#include "tst_device_test.moc"
