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
    QVERIFY(std::ranges::any_of(plan.steps, &Step::isAhead));
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
    QTest::newRow("nothing is accepted before a Z report is made") << u"1; z1+; r1"_s;
    QTest::newRow("ahead of nothing") << u"1; +"_s;
    QTest::newRow("lines of nothing") << u"1; /5"_s;
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
    QTest::newRow("receipt that a person was asked about and the register told of since")
        << u"477; r128161/1; r161134/3+ late@5=887; r399659/1 short@9 drop@5"_s;
    QTest::newRow("empty sale of an order that another one goes before")
        << u"828; r345935/1; r307956/1+ refuse-always@9 cut@3=3262 write-fails@10; r755158/1"_s;
    QTest::newRow("two unknown receipts that a person has told of")
        << u"128; r163443/3+ late@11=673; r423727/2+ refuse-for@20=2702 write-fails@5; r549356/1 refuse-for@29=2117"_s;
    QTest::newRow("closing that was told, and lost with the power and the register")
        << u"25310; r403988/1; r421918/2 kill@25; x693354/1; r7267/1+ short@8 busy@8=55736 "
           "journal-full@11=4109; "
           "r181953/2 off@13 replace@4"_s;
    QTest::newRow("log that was told of and is not there")
        << u"3812; r461147/1 write-fails@9 off-behind@11"_s;
    QTest::newRow("word that was acted upon, on record still when the till is killed")
        << u"9591; s189012/1; r762193/1 busy@11=553 refuse-always@12 kill@4"_s;
    QTest::newRow("report while a sale waits for a person")
        << u"24990; r505079/2+; z745080/1 hand-deletes@12=0"_s;
    QTest::newRow("two orders that wait for each other")
        << u"1721; r889056/1+ drop@14; r173043/3+ cut@16=16363 unheard@5; r333419/1 write-fails@15 "
           "journal-full@8=4025"_s;
    QTest::newRow("somebody sells on a new register, under the number of the sale on the one before")
        << u"40038; r506881/1 replace@2 replace@8 hand-sells@11=24774"_s;
    QTest::newRow("receipt of a register that was replaced, asked of the next one")
        << u"41225; r648883/1+; r586484/1 replace@4; r940273/1 off@6 replace@3"_s;
    QTest::newRow("likewise, when the next one has a receipt of that number")
        << u"45776; r889016/1; r311680/4; r419229/1; r367727/7 replace@16; r669887/1 kill@29; r805832/1; "
           "r764254/2+ replace@19; r740247/1 off@15"_s;
    QTest::newRow("sale left empty behind an order that a person has dropped")
        << u"34659; r735312/1; r83629/4; r717827/3; r37149/7; r908210/6; r226266/2 flush-fails@2 off@15 "
           "refuse-always@10"_s;
    QTest::newRow("slip without paper") << u"62; s529001/1 no-paper@1=38257"_s;
    QTest::newRow("no receipt to compare with but those that a person has told of")
        << u"1253; r374464/1+ refuse-always@16; r650525/1; r532889/1 cut@11=16534"_s;
    QTest::newRow("refused when a receipt that was taken for cancelled counts")
        << u"400482; r899292/1; r431109/4 late@13=790 drop@15 low-limit@5=11527"_s;
    QTest::newRow("likewise, when the register tells of it behind the next receipt alone")
        << u"400482; r899292/1; r431109/4 late@13=5000 drop@15 low-limit@5=11527; r899292/1"_s;
    QTest::newRow("receipt that is told of later than the next one is closed")
        << u"13; r757475/1; r463754/1 late@9=1717 unheard@13; r757475/1"_s;
    QTest::newRow("receipt of which a register had not told when it was replaced")
        << u"8223; r436547/1; r30553/5+; r881049/1 late@4=4561 drop@11; r136040/1 replace@14"_s;
    QTest::newRow("slip that waits for the empty sale of a receipt behind it")
        << u"1; r1/1; s11+ drop@2; r9/1 busy@6=45000"_s;
    QTest::newRow("receipt of which the register tells when a person has said that it was paid")
        << u"2205; r573170/1+ journal-full@20=1277 silent@10 late@2=3896 refuse@4=2; r805899/6+ "
           "cut-behind@6=5207; r246420/2 drop@19"_s;
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

/** A day for each rule that fails when this one is switched off. */
void TestSimulation::everyRuleIsNeeded_data()
{
    QTest::addColumn<QString>("plan");

    QTest::newRow("accept-is-flushed") << u"2; r808844/1 off-behind@4"_s;
    QTest::newRow("reference-before-first-line") << u"9; r343113 forget-keys@5 cut-behind@14=674 off@14"_s;
    QTest::newRow("look-after-lost-answer") << u"4; r713562/1; r915874/1 damaged@6"_s;
    QTest::newRow("look-behind-payments") << u"1; r747153/1; r856578/3 kill@10 drop@12"_s;
    QTest::newRow("look-before-start") << u"1; r500827/1; r31301/1 kill@17"_s;
    QTest::newRow("counter-question") << u"153; r54180/1; r596518/5 refuse-always@10 off-behind@3"_s;
    QTest::newRow("ten-rounds") << u"5750; r272315/1; r589431/3 refuse@13=9 off@11"_s;
    QTest::newRow("known-receipt-needed") << u"1; r30/1 unheard@12 refuse-for@4=1500"_s;
    QTest::newRow("ask-doubts-again") << u"508; r647491/1; r312570/8 late@10=732 unheard@9"_s;
    QTest::newRow("ask-doubts-before-no")
        << u"400482; r899292/1; r431109/4 late@13=790 drop@15 low-limit@5=11527"_s;
    QTest::newRow("no-is-final-later") << u"13; r757475/1; r463754/1 late@9=1717 unheard@13; r757475/1"_s;
    QTest::newRow("cards-never-again") << u"3; r275772/1; r346395/1 cut-behind@9=18490"_s;
    QTest::newRow("cash-only-if-allowed") << u"25; r746134/8 cut@10=3806"_s;
    QTest::newRow("payment-intention-flushed") << u"3; r275772/1; r346395/1 cut-behind@9=18490"_s;
    QTest::newRow("forget-lost-keys") << u"1; r500827/1 replace@11"_s;
    QTest::newRow("old-connections-prove-nothing") << u"3; r139053/1; r597469/5 kill-behind@8 silent@9"_s;
    QTest::newRow("wait-for-busy-register") << u"9; r26359/1 busy@11=23195"_s;
    QTest::newRow("watch-register-numbers")
        << u"1027; r824168/1 replace@7; r942176/1; r198839/1 cut@10=2334; r474155/1; r323690/1; r365887/1; r475833/1; r142249/1; r215680/1 cut-behind@8=19265; r897086/1; r167472/1; r267663/1; r529444/1 replace@13; r940996/1"_s;
    QTest::newRow("same-key-same-outcome") << u"1; r60533/1"_s;
    QTest::newRow("cancel-what-is-refused") << u"2; r725310"_s;
    QTest::newRow("clear-empty-sale-of-dead-process") << u"2; r749284/1 short@2 off@9"_s;
    QTest::newRow("compare-totals") << u"555; r700513/1; r267196/1 hand-sells@8=27251"_s;
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
