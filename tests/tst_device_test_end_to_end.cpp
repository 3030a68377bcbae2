// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/device_test_texts.h"
#include "tests/support/simulated_register.h"
#include "tests/support/status_record.h"
#include "tests/support/window_under_test.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

constexpr int longWait = 60'000; // ms, for the time-outs of the workflow and a machine under load

const QStringList honest{u"--state"_s, u"7"_s, u"--z"_s, u"124"_s};
const QStringList paired{u"Cihazda eşlemeyi başlatabilirsiniz."_s, u"Eşleme başarılı."_s};

} // namespace

/** The window's "Test" against the real velno-register. */
class TestDeviceTestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void registersAreTested_data();
    void registersAreTested();
    void unreachableRegister();
    void secondTestNeedsNoPairing();
    void testFollowsPairing();
    void faultsEndTheTest_data();
    void faultsEndTheTest();
    void silenceEndsWithTheConnection();
    void forgottenKeysEndEveryTest();
    void newKeysEndEveryTest();

private:
    /** Presses "Test" and collects the texts until the buttons are back; `meanwhile` runs once it has begun.
     */
    QStringList textsOfATest(const std::function<void()> &meanwhile = [] {});

    QTemporaryDir m_dir;
    std::unique_ptr<WindowUnderTest> m_window;
};

void TestDeviceTestEndToEnd::initTestCase()
{
    QFile file(m_dir.filePath(u"application"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("application") > 0);
}

void TestDeviceTestEndToEnd::init()
{
    // What Qt says when an object is touched on a thread that is not its own.
    QTest::failOnWarning(QRegularExpression(u"thread|QSocketNotifier|QObject::"_s));
    m_window = std::make_unique<WindowUnderTest>();
    m_window->fill(m_dir.filePath(u"application"_s));
    m_window->chooseAddress(u"127.0.0.1"_s);
    m_window->testPause = 0;
}

void TestDeviceTestEndToEnd::cleanup()
{
    m_window.reset();
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 1);
    QVERIFY(Velno::Ext::library().connections.empty());
    Velno::Ext::library().pairingRecords.clear();
}

QStringList TestDeviceTestEndToEnd::textsOfATest(const std::function<void()> &meanwhile)
{
    m_window->setText({});
    StatusRecord record(m_window->form().resultLabel);
    m_window->test();
    meanwhile();
    const bool ended =
        QTest::qWaitFor([&] { return record.texts().size() > 1 && m_window->buttonsEnabled(); }, longWait);
    return ended ? record.texts() : record.texts() + QStringList{u"(does not end)"_s};
}

void TestDeviceTestEndToEnd::registersAreTested_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("idle, with paper") << honest << complete;
    QTest::newRow("without paper") << honest + QStringList{u"--no-paper"_s} << completeWithoutPaper;
    QTest::newRow("out of service: tells no Z number")
        << QStringList{u"--state"_s, u"8"_s} << connected + QStringList{u"Cihaz durumu: 8"_s, zFailed.arg(8)};
    QTest::newRow("refuses to pair") << honest + QStringList{u"--fault"_s, u"result-code=05"_s}
                                     << connecting + QStringList{connectionFailed.arg(10)};
}

void TestDeviceTestEndToEnd::registersAreTested()
{
    QFETCH(const QStringList, arguments);
    SimulatedRegister reg(m_window->port(), arguments);
    QVERIFY(reg.isReady());
    QTEST(textsOfATest(), "texts");
    QVERIFY(!reg.waitFor(u"unpaired"_s).isEmpty()); // it was met for the first time
}

void TestDeviceTestEndToEnd::unreachableRegister()
{
    SimulatedRegister reg(m_window->port(), honest);
    m_window->form().portLineEdit->setText(QString::number(freePort())); // the register goes elsewhere
    QCOMPARE(textsOfATest(), connecting + QStringList{connectionFailed.arg(2)});
}

void TestDeviceTestEndToEnd::secondTestNeedsNoPairing()
{
    SimulatedRegister reg(m_window->port(), honest);
    QCOMPARE(textsOfATest(), complete);
    reg.say("paper off");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(textsOfATest(), completeWithoutPaper);
    const auto pairings = std::ranges::count_if(
        reg.events(), [](const QJsonObject &event) { return event.value(u"event"_s) == u"paired"_s; });
    QCOMPARE(pairings, 1);
}

void TestDeviceTestEndToEnd::testFollowsPairing()
{
    SimulatedRegister reg(m_window->port(), honest);
    StatusRecord record(m_window->form().resultLabel);
    m_window->pair();
    QTRY_COMPARE_WITH_TIMEOUT(record.texts(), paired, longWait);
    QTRY_VERIFY_WITH_TIMEOUT(m_window->buttonsEnabled(), longWait);
    QCOMPARE(textsOfATest(), complete);
}

void TestDeviceTestEndToEnd::faultsEndTheTest_data()
{
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("close=state") << connected + QStringList{stateFailed.arg(2)};
    QTest::newRow("close=z") << knowsState + QStringList{zFailed.arg(2)};
    QTest::newRow("close=paper") << knowsZ + QStringList{paperFailed.arg(2)};
    QTest::newRow("refuse=z") << knowsState + QStringList{zFailed.arg(8)};
    QTest::newRow("refuse=paper") << completeWithoutPaper;
    QTest::newRow("short-reply") << connected + QStringList{stateFailed.arg(5)};
    QTest::newRow("bad-mac") << connected + QStringList{stateFailed.arg(11)};
    QTest::newRow("no-mac") << connected + QStringList{stateFailed.arg(12)};
    QTest::newRow("bad-crc") << connected + QStringList{stateFailed.arg(12)};
    QTest::newRow("other-serial") << connected + QStringList{stateFailed.arg(12)};
    QTest::newRow("huge-frame") << connected + QStringList{stateFailed.arg(2)};
    QTest::newRow("keep-alives=3") << complete;
}

void TestDeviceTestEndToEnd::faultsEndTheTest()
{
    QFETCH(const QStringList, texts);
    SimulatedRegister reg(m_window->port(), honest);
    QCOMPARE(textsOfATest(), complete); // and has paired
    QVERIFY(reg.setFault(QString::fromLatin1(QTest::currentDataTag())));
    QCOMPARE(textsOfATest(), texts);
    QVERIFY(reg.setFault(u"none"_s));
    QCOMPARE(textsOfATest(), complete);
}

void TestDeviceTestEndToEnd::silenceEndsWithTheConnection()
{
    SimulatedRegister reg(m_window->port(), honest + QStringList{u"--fault"_s, u"mute=z"_s});
    const QStringList texts = textsOfATest([&reg] {
        while (reg.waitFor(u"command"_s).value(u"command"_s) == u"state"_s) {
        }
        QVERIFY(reg.setFault(u"none"_s)); // closes, because an answer is due
    });
    QCOMPARE(texts, knowsState + QStringList{zFailed.arg(2)});
    QCOMPARE(textsOfATest(), complete);
}

void TestDeviceTestEndToEnd::forgottenKeysEndEveryTest()
{
    SimulatedRegister reg(m_window->port(), honest);
    QCOMPARE(textsOfATest(), complete);
    QVERIFY(reg.setFault(u"forget-pairing"_s));
    QCOMPARE(textsOfATest(), connected + QStringList{stateFailed.arg(2)});
    QVERIFY(reg.setFault(u"none"_s)); // the keys stay lost, and the library holds on to its own
    QCOMPARE(textsOfATest(), connected + QStringList{stateFailed.arg(2)});
}

void TestDeviceTestEndToEnd::newKeysEndEveryTest()
{
    SimulatedRegister reg(m_window->port(), honest);
    QCOMPARE(textsOfATest(), complete);
    m_window->pair();
    QTRY_COMPARE_WITH_TIMEOUT(m_window->status(), paired.constLast(), longWait);
    QTRY_VERIFY_WITH_TIMEOUT(m_window->buttonsEnabled(), longWait);
    QCOMPARE(textsOfATest(), connected + QStringList{stateFailed.arg(2)}); // until the program's end
}

QTEST_MAIN(TestDeviceTestEndToEnd)

#include "tst_device_test_end_to_end.moc"
