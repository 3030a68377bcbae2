// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "simulator/relay/relay_faults.h"
#include "tests/support/library_test.h"
#include "tests/support/simulated_register.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/test_support.h"

#include <QTcpServer>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Ext;

/** The library, the real velno-relay and the real velno-register, together. */
class TestRelayedLibrary : public LibraryTest
{
    Q_OBJECT

private slots:
    void firstContactPairs_data() { addApplications(); }
    void firstContactPairs();
    void pairedRegisterIsMetOnce_data() { addApplications(); }
    void pairedRegisterIsMetOnce();
    void registerMayComeBackLater();
    void unknownRegister();
    void registerThatHasLeft();
    void relayThatIsDown();
    void relayThatGoesDown();
    void everyFaultHasARow();
    void faultsEndWithTwo_data();
    void faultsEndWithTwo();
    void cutPairing_data();
    void cutPairing();

private:
    static void addApplications();
};

namespace {

constexpr unsigned int timeout = 20'000;

constexpr const char *echoFaults[] = {"no-echo", "wrong-echo", "short-echo"};
constexpr const char *cuts[] = {"drop", "drop-after=1", "drop-after=30"};

/** Another run of the tests on this computer may hold the ports that are built into the library. */
bool portsAreFree()
{
    const auto canListen = [](quint16 port) {
        return QTcpServer().listen(QHostAddress(QString::fromUtf8(VELNO_TSM_RELAY_ADDRESS)), port);
    };
    return QTest::qWaitFor([&] { return canListen(50900) && canListen(50902); },
                           std::chrono::milliseconds(portIsFreeAgain).count());
}

/** The options of a relay where the library looks for it. */
QStringList wellKnownPlace()
{
    if (!portsAreFree())
        qWarning("somebody keeps the ports 50900 and 50902");
    return {u"--listen"_s, QString::fromUtf8(VELNO_TSM_RELAY_ADDRESS), u"--app-ports"_s, u"50900,50902"_s};
}

QStringList atRelay(const SimulatedRelay &relay)
{
    const QString place = relay.events().value(0).value(u"registers"_s).toString();
    return {u"--relay"_s, place};
}

/** A relay where the library looks for it, and a register that waits there. */
struct RelayAndRegister
{
    RelayAndRegister()
        : relay(wellKnownPlace())
        , cashRegister(atRelay(relay))
    {
    }
    bool registerWaits() { return !relay.waitFor(u"waiting"_s).isEmpty(); }

    SimulatedRelay relay;
    SimulatedRegister cashRegister;
};

int connectThroughRelay(unsigned int appNo = 5)
{
    return velnoext_initialize(appNo, serial, TestSupport::throughRelay, 0, timeout);
}

/** Of connecting, or else of the first command. */
int connectAndAsk()
{
    const int result = connectThroughRelay();
    return result == 0 ? velnoext_login(timeout) : result;
}

qsizetype countOf(const QString &name, const QList<QJsonObject> &events)
{
    return std::ranges::count_if(
        events, [&name](const QJsonObject &event) { return event.value(u"event"_s).toString() == name; });
}

} // namespace

void TestRelayedLibrary::addApplications()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<int>("port");
    QTest::newRow("5") << 5U << 50902;
    QTest::newRow("14242") << 14242U << 50902;
    QTest::newRow("999999") << 999999U << 50900;
}

void TestRelayedLibrary::firstContactPairs()
{
    QFETCH(const unsigned int, appNo);
    QFETCH(const int, port);
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    QCOMPARE(connectThroughRelay(appNo), 0);
    for (int contact = 0; contact < 3; ++contact) // announcement, keys, data
        QCOMPARE(both.relay.waitFor(u"joined"_s).value(u"port"_s).toInt(), port);
    QVERIFY(!both.cashRegister.waitFor(u"paired"_s).isEmpty());
    QCOMPARE(velnoext_login(timeout), 0);
    int state = 0;
    QCOMPARE(velnoext_ecr_state(timeout, &state), 0);
    QCOMPARE(state, 1);
}

void TestRelayedLibrary::pairedRegisterIsMetOnce()
{
    QFETCH(const unsigned int, appNo);
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    QCOMPARE(connectThroughRelay(appNo), 0);
    QCOMPARE(velnoext_login(timeout), 0);
    const auto keys = library().pairingRecords;
    velnoext_close();
    library().pairingRecords = keys; // two of the applications forget them when they close
    for (int contact = 0; contact < 3; ++contact)
        QVERIFY(!both.relay.waitFor(u"joined"_s).isEmpty());
    QCOMPARE(connectThroughRelay(appNo), 0);
    QCOMPARE(velnoext_login(timeout), 0);
    both.relay.say("quit");
    QCOMPARE(both.relay.waitForExit(), 0);
    QCOMPARE(countOf(u"joined"_s, both.relay.events()), 4);
}

void TestRelayedLibrary::registerMayComeBackLater()
{
    SimulatedRelay relay(wellKnownPlace());
    QVERIFY(relay.isReady());
    auto cashRegister = std::make_unique<SimulatedRegister>(atRelay(relay));
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    QCOMPARE(connectThroughRelay(), 0);
    velnoext_close();
    for (int contact = 0; contact < 3; ++contact)
        QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty()); // for the next contact, at last again
    cashRegister.reset();
    QVERIFY(!relay.waitFor(u"left"_s).isEmpty());
    QCOMPARE(connectThroughRelay(), 2);
    cashRegister = std::make_unique<SimulatedRegister>(atRelay(relay));
    QVERIFY(!relay.waitFor(u"unknown"_s).isEmpty());
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    library().pairingRecords.clear(); // so has the register
    QCOMPARE(connectAndAsk(), 0);
}

void TestRelayedLibrary::unknownRegister()
{
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    QCOMPARE(velnoext_initialize(5, otherSerial, TestSupport::throughRelay, 0, timeout), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(both.relay.waitFor(u"unknown"_s).value(u"reason"_s).toString(), u"no such register"_s);
    QCOMPARE(connectAndAsk(), 0);
}

void TestRelayedLibrary::registerThatHasLeft()
{
    auto both = std::make_unique<RelayAndRegister>();
    QVERIFY(both->registerWaits());
    both->cashRegister.say("quit");
    QCOMPARE(both->cashRegister.waitForExit(), 0);
    QVERIFY(!both->relay.waitFor(u"left"_s).isEmpty());
    QCOMPARE(connectThroughRelay(), 2);
}

void TestRelayedLibrary::relayThatIsDown()
{
    QVERIFY(portsAreFree());
    QCOMPARE(connectThroughRelay(), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(connectThroughRelay(999999), 2);
}

void TestRelayedLibrary::relayThatGoesDown()
{
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    QCOMPARE(connectAndAsk(), 0);
    both.relay.say("quit");
    QCOMPARE(both.relay.waitForExit(), 0);
    QCOMPARE(velnoext_login(timeout), 2);
    QCOMPARE(connectThroughRelay(), 2);
}

void TestRelayedLibrary::everyFaultHasARow()
{
    for (const Simulator::FaultRow &fault : Simulator::relayFaultTable()) {
        const auto names = [&](const QByteArray &row) { return row.split('=').first() == fault.name; };
        QVERIFY2(std::ranges::any_of(echoFaults, names) || std::ranges::any_of(cuts, names), fault.name);
    }
}

void TestRelayedLibrary::faultsEndWithTwo_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("paired");
    for (const char *const fault : echoFaults) {
        QTest::addRow("%s, paired", fault) << QString::fromLatin1(fault) << true;
        QTest::addRow("%s, unpaired", fault) << QString::fromLatin1(fault) << false;
    }
    for (const char *const fault : cuts)
        QTest::addRow("%s, paired", fault) << QString::fromLatin1(fault) << true;
}

void TestRelayedLibrary::faultsEndWithTwo()
{
    QFETCH(const QString, fault);
    QFETCH(const bool, paired);
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    if (paired) {
        QCOMPARE(connectAndAsk(), 0);
        velnoext_close();
    }
    QVERIFY(both.relay.setFault(fault));
    QCOMPARE(connectAndAsk(), 2);
    QVERIFY(both.relay.setFault(u"none"_s));
    QCOMPARE(connectAndAsk(), 0);
}

// The announcement leaves before its end is noticed, so it is the exchange of keys that fails; when
// everything is cut at once, the announcement may be too late already.
void TestRelayedLibrary::cutPairing_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QList<int>>("results");
    QTest::newRow("drop") << u"drop"_s << QList{2, 10};
    QTest::newRow("drop-after=1") << u"drop-after=1"_s << QList{10};
    QTest::newRow("drop-after=30") << u"drop-after=30"_s << QList{10};
}

void TestRelayedLibrary::cutPairing()
{
    QFETCH(const QString, fault);
    QFETCH(const QList<int>, results);
    RelayAndRegister both;
    QVERIFY(both.registerWaits());
    QVERIFY(both.relay.setFault(fault));
    const int result = connectThroughRelay();
    QVERIFY2(results.contains(result), qPrintable(QString::number(result)));
    QVERIFY(library().pairingRecords.isEmpty());
    QVERIFY(both.relay.setFault(u"none"_s));
    QCOMPARE(connectAndAsk(), 0);
}

QTEST_GUILESS_MAIN(TestRelayedLibrary)
#include "tst_relayed_library.moc"
