// SPDX-License-Identifier: Apache-2.0

#include "simulation/shrink.h"
#include "simulation/world.h"

#include <QTest>

using namespace Simulation;
using namespace Velno::Receipts;
using namespace Qt::StringLiterals;

/** Days in which everything goes wrong. Many more of them are the test "simulation". */
class TestSimulation : public QObject
{
    Q_OBJECT

private slots:
    void planIsItsText();
    void brokenPlans_data();
    void brokenPlans();
    void everyMishapIsDrawn();
    void sameSeedSameDay();
    void quietDayCostsTwoFlushes();
    void whatFailedOnce_data();
    void whatFailedOnce();
    void failingDayIsShrunk();
    void everyRuleIsNeeded_data();
    void everyRuleIsNeeded();
};

void TestSimulation::planIsItsText()
{
    const Plan plan = makePlan(7, 20);
    QVERIFY(plan.steps.size() > 20);
    const auto again = Plan::fromText(plan.text());
    QVERIFY(again);
    QCOMPARE(again->text(), plan.text());
    QCOMPARE(makePlan(7, 20).text(), plan.text());
    QVERIFY(makePlan(8, 20).text() != plan.text());
}

void TestSimulation::brokenPlans_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QString();
    QTest::newRow("no seed") << u"r1"_s;
    QTest::newRow("no such job") << u"1; q1"_s;
    QTest::newRow("no seed of a job") << u"1; r"_s;
    QTest::newRow("no lines") << u"1; r1/0"_s;
    QTest::newRow("no such mishap") << u"1; r1 flood@1"_s;
    QTest::newRow("no point") << u"1; r1 cut"_s;
    QTest::newRow("point 0") << u"1; r1 cut@0"_s;
    QTest::newRow("negative number") << u"1; r1 cut@1=-1"_s;
    QTest::newRow("nothing behind a semicolon") << u"1; r1;"_s;
}

void TestSimulation::brokenPlans()
{
    QFETCH(const QString, text);
    QVERIFY(!Plan::fromText(text));
}

void TestSimulation::everyMishapIsDrawn()
{
    const Plan plan = makePlan(1, 3000);
    for (const MishapRow &row : mishapTable()) {
        if (row.weight == 0)
            continue;
        const bool isDrawn = std::ranges::any_of(plan.steps, [&row](const Step &step) {
            return std::ranges::find(step.mishaps, &row, &Mishap::row) != step.mishaps.end();
        });
        QVERIFY2(isDrawn, row.name);
    }
    for (const Step &step : plan.steps)
        if (step.job == Job::Receipt)
            QVERIFY(step.mishaps.size() >= 1 && step.mishaps.size() <= 5);
}

void TestSimulation::sameSeedSameDay()
{
    QStringList before;
    for (int run = 0; run < 2; ++run) {
        World world(makePlan(3, 20), {});
        QStringList lines;
        world.trace = [&lines](const QString &line) { lines << line; };
        QCOMPARE(world.run(), QString());
        QVERIFY(run == 0 || lines == before);
        before = lines;
    }
}

void TestSimulation::quietDayCostsTwoFlushes()
{
    Plan plan = makePlan(11, 200);
    plan.steps.removeIf([](const Step &step) { return step.job != Job::Receipt; });
    for (Step &step : plan.steps)
        step.mishaps.clear();
    World world(plan, {});
    QCOMPARE(world.run(), QString());
    const Figures &figures = world.figures();
    QCOMPARE(figures.receipts, 200);
    QCOMPARE(figures.asked, 0);
    QCOMPARE(figures.cancelled, 0);
    // Two for each, one more for a payment that must not be entered again or a slip, and some for the file.
    QVERIFY2(figures.flushes >= 400 && figures.flushes < 650, qPrintable(QString::number(figures.flushes)));
}

/** Each of these made a receipt, or what was told of it, wrong once. */
void TestSimulation::whatFailedOnce_data()
{
    QTest::addColumn<QString>("plan");

    QTest::newRow("slip behind a closing that was not flushed") << u"21; r119267/5; r640540/1 off@10"_s;
    QTest::newRow("slip behind a receipt that a person has told of")
        << u"16; r521095/1; r828863/1 refuse@7=11 replace@3"_s;
    QTest::newRow("refusal that was told and not flushed")
        << u"5; r358618/1; r233624/1 unheard@19; r60415/1 busy@9=844 no-paper@3=30003; r646931/1 off@9"_s;
    QTest::newRow("slip that was told and not flushed") << u"241; s693154/1; r132041/1 off@3"_s;
    QTest::newRow("sale of a process that died twice") << u"47; r733765/1; r303840/1 flush-fails@2 kill@13"_s;
    QTest::newRow("what a killed process wrote and did not flush")
        << u"34; r534655/1; r339404/1 kill@27 off@8"_s;
    QTest::newRow("keys that the register was not ready for taken for a payment")
        << u"820; r477817/8 late@8=220 out-of-service@2=56566 cut@10=3223"_s;
    QTest::newRow("word about an old sale taken for one about the new")
        << u"972; r992725/2 replace@15; r945724/3 refuse-always@14 cut-behind@2=6301"_s;
    QTest::newRow("refused payment that was forgotten")
        << u"314; r642073/1; r546710/2 refuse-always@8 cut-behind@6=13853"_s;
}

void TestSimulation::whatFailedOnce()
{
    QFETCH(const QString, plan);
    const auto read = Plan::fromText(plan);
    QVERIFY(read);
    QCOMPARE(problemOf(*read, {}), QString());
}

void TestSimulation::failingDayIsShrunk()
{
    Rules rules;
    rules.switchOff(Rule::SameKeySameOutcome);
    const Plan plan = makePlan(1, 20);
    QVERIFY(!problemOf(plan, rules).isEmpty());
    const Plan small = shrunk(plan, rules);
    QVERIFY(!problemOf(small, rules).isEmpty());
    QCOMPARE(small.steps.size(), 1);
    QVERIFY(small.steps.constFirst().mishaps.isEmpty());
}

/** A day for each rule that fails when this one is switched off. What compare-totals is for happens in
 * tst_receipt_work: in the simulation nobody works on the register's own keyboard. */
void TestSimulation::everyRuleIsNeeded_data()
{
    QTest::addColumn<QString>("plan");

    QTest::newRow("accept-is-flushed") << u"3; r139053/1; r307880/1 off@23"_s;
    QTest::newRow("reference-before-first-line") << u"5; r60415/3 off-behind@9"_s;
    QTest::newRow("look-after-lost-answer")
        << u"8; r173794/1; r593460/4 unheard@1 kill@7 unheard@11 damaged@8"_s;
    QTest::newRow("look-behind-payments") << u"3; r139053/1; r886378/3 refuse-always@9"_s;
    QTest::newRow("look-before-start") << u"1; r68036/1 refuse-always@5"_s;
    QTest::newRow("counter-question") << u"45; r541972/1; r635696/1 off@8 refuse@4=2"_s;
    QTest::newRow("ten-rounds") << u"508; r647491/1; r312570/8 refuse@6=5 kill@8 late@10=732 unheard@9"_s;
    QTest::newRow("known-receipt-needed") << u"89; r218502/6; r703179/3 off@13 refuse-for@4=1734"_s;
    QTest::newRow("ask-doubts-again") << u"508; r647491/1; r312570/8 late@10=732 unheard@9"_s;
    QTest::newRow("cards-never-again") << u"2; r293099/1; r802634/1 cut@10=18726"_s;
    QTest::newRow("cash-only-if-allowed") << u"82; r315980/1; r28000/1 cut@11=13200"_s;
    QTest::newRow("payment-intention-flushed") << u"2; r293099/1; r802634/1 cut@10=18726"_s;
    QTest::newRow("forget-lost-keys") << u"2; r522573/1 replace@5"_s;
    QTest::newRow("old-connections-prove-nothing") << u"7; r186232/1; r382059/2 forget-keys@8"_s;
    QTest::newRow("wait-for-busy-register") << u"13; r365470/1; r822395/1 busy@6=29482"_s;
    QTest::newRow("watch-register-numbers")
        << u"1027; r824168/1 replace@7; r942176/1; r198839/1 cut@10=2334; r474155/1; r323690/1; r365887/1; r475833/1; r142249/1; r215680/1 cut-behind@8=19265; r897086/1; r167472/1; r267663/1; r529444/1 replace@13; r940996/1"_s;
    QTest::newRow("same-key-same-outcome") << u"1; r700014/1"_s;
    QTest::newRow("cancel-what-is-refused") << u"4; r937812/6"_s;
    QTest::newRow("clear-empty-sale-of-dead-process") << u"1; r68036/1; r529955/1 off@23"_s;
}

void TestSimulation::everyRuleIsNeeded()
{
    QFETCH(const QString, plan);
    const auto row = std::ranges::find_if(
        ruleTable(), [](const RuleRow &rule) { return qstrcmp(rule.name, QTest::currentDataTag()) == 0; });
    QVERIFY(row != ruleTable().end());
    Rules without;
    without.switchOff(row->rule);
    const auto read = Plan::fromText(plan);
    QVERIFY(read);
    QCOMPARE(problemOf(*read, {}), QString());
    QVERIFY(!problemOf(*read, without).isEmpty());
}

QTEST_GUILESS_MAIN(TestSimulation)

#include "tst_simulation.moc"
