// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "tests/support/library_test.h"
#include "tests/support/registers_key.h"

#include <QTest>

using namespace Velno::Ext;
using namespace TestSupport;

class TestRelayRoute : public LibraryTest
{
    Q_OBJECT

private slots:
    void relayRoute_data();
    void relayRoute();
    void relayPairsOnFirstContact();
    void relayThatEchoesWrong_data();
    void relayThatEchoesWrong();
    void echoMayComeInPieces();
    void registerThatLeavesBeforeTheFirstFrame();
    void pairedRegisterThatLeavesAtOnce();
    void relayThatRefusesLater_data();
    void relayThatRefusesLater();
    void relayThatIsDown();
};

void TestRelayRoute::relayRoute_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<quint16>("relayPort");
    QTest::addColumn<QByteArray>("address");

    QTest::newRow("most applications") << 5U << quint16(50902) << QByteArray(throughRelay);
    QTest::newRow("14242") << 14242U << quint16(50902) << QByteArray(throughRelay);
    QTest::newRow("999999") << 999999U << quint16(50900) << QByteArray(throughRelay);
    QTest::newRow("15 characters count") << 5U << quint16(50902) << throughRelay + QByteArray(":1");
}

void TestRelayRoute::relayRoute()
{
    QFETCH(const unsigned int, appNo);
    QFETCH(const quint16, relayPort);
    QFETCH(const QByteArray, address);
    HandMadeDevice device;
    device.playRelay(relayPort);
    library().pairingRecords[serial] = device.record;
    device.serve(0);
    QCOMPARE(velnoext_initialize(appNo, serial, address.constData(), 0, brief), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestRelayRoute::relayPairsOnFirstContact()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    device.playRelay(50902);
    device.pairAndServe(0);
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, int(patience));
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestRelayRoute::relayThatEchoesWrong_data()
{
    QTest::addColumn<QList<QByteArray>>("echo");

    QTest::newRow("another name") << QList{QByteArray(otherSerial)};
    QTest::newRow("one character off") << QList{QByteArray("UB1234567891")};
    QTest::newRow("lower case") << QList{QByteArray("ub1234567890")};
    QTest::newRow("short") << QList{QByteArray("UB123456789")};
    QTest::newRow("nothing") << QList<QByteArray>();
    QTest::newRow("wrong in the second piece") << QList{QByteArray("UB1234"), QByteArray("567891")};
}

void TestRelayRoute::relayThatEchoesWrong()
{
    QFETCH(const QList<QByteArray>, echo);
    HandMadeDevice device;
    device.echo = [echo](const QByteArray &) { return echo; };
    device.playRelay(50902);
    device.serve(0);
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.empty());
}

void TestRelayRoute::echoMayComeInPieces()
{
    HandMadeDevice device;
    device.echo = [](const QByteArray &name) {
        QList<QByteArray> bytes;
        for (const char byte : name)
            bytes << QByteArray(1, byte);
        return bytes;
    };
    device.playRelay(50902);
    library().pairingRecords[serial] = device.record;
    device.serve(0);
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestRelayRoute::registerThatLeavesBeforeTheFirstFrame()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    device.leavesWithEcho = true;
    device.playRelay(50902);
    device.pairAndServe(0);
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 2);
    QVERIFY(!library().pairingRecords.contains(serial));
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.empty());
}

void TestRelayRoute::pairedRegisterThatLeavesAtOnce()
{
    HandMadeDevice device;
    device.leavesWithEcho = true;
    device.playRelay(50902);
    library().pairingRecords[serial] = device.record;
    device.serve(0);
    // Nothing is sent to one that is paired, so the first command finds out.
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 0);
    QCOMPARE(velnoext_login(patience), 2);
    QVERIFY(library().pairingRecords.contains(serial));
}

void TestRelayRoute::relayThatRefusesLater_data()
{
    QTest::addColumn<int>("contact");

    QTest::newRow("for the key exchange") << 2;
    QTest::newRow("for the data") << 3;
}

void TestRelayRoute::relayThatRefusesLater()
{
    NEEDS_A_REGISTERS_KEY();
    QFETCH(const int, contact);
    HandMadeDevice device;
    device.echo = [contact, count = 0](const QByteArray &name) mutable {
        return ++count < contact ? QList{name} : QList<QByteArray>();
    };
    device.playRelay(50902);
    device.pairAndServe(0);
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 2);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), contact, int(patience));
    QVERIFY(!library().pairingRecords.contains(serial));
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.empty());
}

void TestRelayRoute::relayThatIsDown()
{
    QCOMPARE(velnoext_initialize(5, serial, throughRelay, 0, brief), 2);
    QCOMPARE(velnoext_error_detail(), 0);
}

QTEST_GUILESS_MAIN(TestRelayRoute)
#include "tst_relay_route.moc"
