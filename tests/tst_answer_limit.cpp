// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/registers_key.h"
#include "tests/support/talker.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <future>

using namespace TestSupport;
using namespace Velno::Ext;
using namespace std::chrono_literals;

/** How long an answer is waited for, which keys are forgotten, and where the log goes. */
class TestAnswerLimit : public LibraryTest
{
    Q_OBJECT

private slots:
    void init() { velnoext_set_answer_limit(forEver); }

    void answerLimitEndsTheWait_data();
    void answerLimitEndsTheWait();
    void answerLimitEndsAPairing_data();
    void answerLimitEndsAPairing();
    void answersWithinTheLimitCount();
    void answerLimitOfNothingIsRefused();

    void forgottenRegisterIsPairedAnew();
    void forgettingLeavesOthersAlone();
    void forgettingNeedsAKnownRegister();

    void logGoesToTheFunctionThatIsSet();
};

void TestAnswerLimit::answerLimitEndsTheWait_data()
{
    addNuisanceRows();
}

void TestAnswerLimit::answerLimitEndsTheWait()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    library().pairingRecords[serial] = HandMadeDevice().record;
    const quint16 port = freePort();
    const Talker talker(port, opening, again);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(velnoext_set_answer_limit(50), 0);
    QCOMPARE(velnoext_login(forEver), 2); // without the limit it never returns
    QVERIFY(waitUntil([&] { return bool(talker.isClosed); }));
    QCOMPARE(velnoext_login(forEver), 2);
}

void TestAnswerLimit::answerLimitEndsAPairing_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::addColumn<QByteArray>("again");

    QTest::newRow("wrong kinds for ever") << QByteArray() << wrongKind();
    QTest::newRow("a byte a time") << hex("0800") << QByteArray("x");
    QTest::newRow("silence") << QByteArray() << QByteArray();
}

void TestAnswerLimit::answerLimitEndsAPairing()
{
    QFETCH(const QByteArray, opening);
    QFETCH(const QByteArray, again);
    const quint16 port = freePort();
    QCOMPARE(velnoext_set_answer_limit(200), 0);
    auto connecting = std::async(std::launch::async, [=] { return connectTo(port); });
    {
        const Talker announced(port, {}, {});
        QVERIFY(waitUntil([&] { return bool(announced.isClosed); }));
    }
    const Talker talker(port, opening, again);
    QCOMPARE(connecting.get(), 10); // at once wrong kinds and bytes are heard for ever, silence for 10 s
    QVERIFY(library().pairingRecords.isEmpty());
}

void TestAnswerLimit::answersWithinTheLimitCount()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    QCOMPARE(velnoext_set_answer_limit(patience), 0);
    const quint16 port = freePort();
    device.pairAndServe(port);
    QCOMPARE(connectTo(port), 0);
    const QByteArray answer = HandMadeDevice::framed(device.sealed(plain(true)));
    device.setAnswer([answer](const QByteArray &) { return QList{keepAlive + keepAlive, answer}; });
    QCOMPARE(velnoext_login(patience), 0);
}

void TestAnswerLimit::answerLimitOfNothingIsRefused()
{
    QCOMPARE(velnoext_set_answer_limit(0), 4);
    QCOMPARE(velnoext_error_detail(), 0x414);
    QCOMPARE(library().answerLimit, forEver);
    QCOMPARE(velnoext_set_answer_limit(1), 0);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestAnswerLimit::forgottenRegisterIsPairedAnew()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_forget_device(serial), 0);
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 1);
    QVERIFY(!library().connectionThread); // it was the last
    QCOMPARE(velnoext_forget_device(serial), 1);
    const quint16 port = freePort();
    device.stop();
    device.contacts = 0;
    device.pairAndServe(port);
    QCOMPARE(connectTo(port), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, int(patience)); // told so, keys, data
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestAnswerLimit::forgettingLeavesOthersAlone()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    QCOMPARE(connectPaired(second, otherSerial), 0);
    second.answerPlain(plain(true));
    QCOMPARE(velnoext_forget_device(serial), 0);
    QCOMPARE(velnoext_login(patience), 0); // the other one is still active
    QCOMPARE(velnoext_set_active_device(serial), 1);
    QVERIFY(!library().pairingRecords.contains(serial));
}

void TestAnswerLimit::forgettingNeedsAKnownRegister()
{
    QCOMPARE(velnoext_forget_device(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(velnoext_forget_device("UB123"), 4);
    QCOMPARE(velnoext_error_detail(), 0x400);
    QCOMPARE(velnoext_forget_device(serial), 1);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestAnswerLimit::logGoesToTheFunctionThatIsSet()
{
    HandMadeDevice device;
    HandMadeDevice stranger{otherSerial};
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer(
        [&](const QByteArray &) { return QList{HandMadeDevice::framed(stranger.sealed(plain(true)))}; });
    QByteArray told;
    const LogCapture standardOutput;
    velnoext_set_log([](const char *text, void *context) { *static_cast<QByteArray *>(context) += text; },
                     &told);
    QCOMPARE(velnoext_login(patience), 12);
    QCOMPARE(told, QByteArray("No Serial Match!"));
    QCOMPARE(standardOutput.text(), QByteArray());
    velnoext_set_log(nullptr, nullptr);
    QCOMPARE(velnoext_login(patience), 12);
    QCOMPARE(told, QByteArray("No Serial Match!"));
    QCOMPARE(standardOutput.text(), QByteArray("No Serial Match!\n"));
}

QTEST_GUILESS_MAIN(TestAnswerLimit)
#include "tst_answer_limit.moc"
