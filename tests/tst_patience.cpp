// SPDX-License-Identifier: Apache-2.0

#include "simulation/virtual_clock.h"
#include "till/patience.h"

#include <QTest>

using Simulation::VirtualClock;
using Velno::Receipts::Patience;

/** How long a register that is busy is waited for. */
class TestPatience : public QObject
{
    Q_OBJECT

private slots:
    void pausesGrow();
    void itEnds_data();
    void itEnds();
    void somebodyWantsItToStop();
};

void TestPatience::pausesGrow()
{
    VirtualClock clock;
    Patience patience(clock, 30'000);
    QList<qint64> pauses;
    for (qint64 before = 0; !patience.isOver(); before = clock.passed()) {
        QVERIFY(patience.pause());
        pauses << clock.passed() - before;
    }
    QCOMPARE(pauses.first(8), (QList<qint64>{200, 200, 400, 800, 1600, 3000, 3000, 3000}));
    QCOMPARE(pauses.size(), 14);
}

void TestPatience::itEnds_data()
{
    QTest::addColumn<qint64>("patience");
    QTest::addColumn<qint64>("waited");

    QTest::newRow("none") << qint64(0) << qint64(0);
    QTest::newRow("one pause") << qint64(1) << qint64(200);
    QTest::newRow("just one pause") << qint64(200) << qint64(200);
    QTest::newRow("two") << qint64(201) << qint64(400);
    QTest::newRow("five") << qint64(3200) << qint64(3200);
}

void TestPatience::itEnds()
{
    QFETCH(const qint64, patience);
    VirtualClock clock;
    Patience waiting(clock, patience);
    while (!waiting.isOver())
        QVERIFY(waiting.pause());
    QTEST(clock.passed(), "waited");
}

void TestPatience::somebodyWantsItToStop()
{
    VirtualClock clock;
    clock.setRunning(false);
    QVERIFY(!Patience(clock, 30'000).pause());
}

QTEST_GUILESS_MAIN(TestPatience)

#include "tst_patience.moc"
