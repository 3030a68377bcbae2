// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_in_memory.h"

#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Receipts;

namespace {

const QByteArray slip =
    R"({"encoding": "UTF-8", "lines": ["Afiyet olsun", {"left": "Masa", "right": "7"}, {"feed": 3}]})";

Simulation::Fate lost(bool isDone)
{
    Simulation::Fate fate;
    fate.isDone = isDone;
    fate.answer = Simulation::Fate::Answer::Lost;
    return fate;
}

Simulation::Fate refusal()
{
    Simulation::Fate fate;
    fate.isRefused = true;
    return fate;
}

/** A till whose register counts what it prints. */
struct Office : TillInMemory
{
    Office()
    {
        reg.model().setPrinter([this](const Simulator::Print &print) {
            ++printed[print.kind];
            last = print.kind;
        });
    }

    Order perform(Kind kind, const QByteArray &json = {}) { return till->perform(u"1"_s, kind, json).order; }

    std::map<std::string, int> printed; ///< by kind
    std::string last;                   ///< kind
};

} // namespace

/** Reports and slips under keys. */
class TestReportWork : public QObject
{
    Q_OBJECT

private slots:
    void zReportIsMadeOnce_data();
    void zReportIsMadeOnce();
    void refusedZReportIsNotMade();
    void zReportThatIsNotCountedWaits();
    void zReportWaitsForARegisterThatIsAway();
    void xReportIsMade_data();
    void xReportIsMade();
    void slipIsPrintedOnce();
    void doubtfulSlipIsAPersonsBusiness();
    void slipThatWasOnItsWayIsAPersonsBusiness();
    void slipThatWasNotSentIsPrinted();
    void slipBehindAReceiptSaysWhenItIsDoubtful();
    void whatCanBeDoneLaterWaits_data();
    void whatCanBeDoneLaterWaits();
    void personSettlesWhatAnotherRegisterIsToDo_data();
    void personSettlesWhatAnotherRegisterIsToDo();
    void reportsHaveNoContent();
};

void TestReportWork::zReportIsMadeOnce_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("isDone");

    QTest::newRow("undisturbed") << QByteArray("none") << true;
    QTest::newRow("made, and the answer lost") << QByteArray("report") << true;
    QTest::newRow("not made") << QByteArray("report") << false;
    QTest::newRow("its number is lost") << QByteArray("z") << true;
}

void TestReportWork::zReportIsMadeOnce()
{
    QFETCH(const QByteArray, command);
    QFETCH(const bool, isDone);
    Office office;
    QVERIFY(office.sellFirst());
    const int z = office.reg.model().zNumber();
    office.meet(command.constData(), lost(isDone));
    QCOMPARE(office.perform(Kind::ZReport).state, State::Closed);
    QCOMPARE(office.perform(Kind::ZReport).state, State::Closed);
    office.beginProcess();
    QCOMPARE(office.perform(Kind::ZReport).state, State::Closed);
    QCOMPARE(office.reg.model().zNumber(), z + 1);
    QCOMPARE(office.printed["z-report"], 1);
}

void TestReportWork::refusedZReportIsNotMade()
{
    Office office;
    const int z = office.reg.model().zNumber();
    office.meet("report", refusal(), 100);
    const Order order = office.perform(Kind::ZReport);
    QCOMPARE(order.state, State::Refused);
    QCOMPARE(order.code, 8);
    QCOMPARE(office.reg.model().zNumber(), z);
}

/** Somebody on the line can give an earlier yes again. */
void TestReportWork::zReportThatIsNotCountedWaits()
{
    Office office;
    Simulation::Fate yes;
    QByteArray answer;
    yes.recorded = &answer;
    office.meet("report", yes);
    QCOMPARE(office.perform(Kind::ZReport).state, State::Closed);

    Simulation::Fate replay;
    replay.isDone = false;
    replay.replayed = answer;
    office.meet("report", replay, 100);
    const int before = office.commands["report"];
    const Order order = office.till->perform(u"2"_s, Kind::ZReport, {}).order;
    QCOMPARE(order.state, State::Waiting);
    QCOMPARE(order.code, 7);
    QCOMPARE(office.commands["report"], before + 1);

    office.meet("report", Simulation::Fate());
    QCOMPARE(office.till->perform(u"2"_s, Kind::ZReport, {}).order.state, State::Closed);
    QCOMPARE(office.printed["z-report"], 2);
}

void TestReportWork::zReportWaitsForARegisterThatIsAway()
{
    Office office;
    office.meet("z", lost(false), 8);
    QCOMPARE(office.perform(Kind::ZReport).state, State::Waiting);
    office.meet("z", Simulation::Fate());
    QCOMPARE(office.perform(Kind::ZReport).state, State::Closed);
}

void TestReportWork::xReportIsMade_data()
{
    QTest::addColumn<int>("losses");
    QTest::addColumn<int>("refusals");
    QTest::addColumn<State>("state");

    QTest::newRow("undisturbed") << 0 << 0 << State::Closed;
    QTest::newRow("an answer is lost") << 1 << 0 << State::Closed;
    QTest::newRow("no answer comes") << 20 << 0 << State::Waiting;
    QTest::newRow("refused in passing") << 0 << 3 << State::Closed;
    QTest::newRow("refused") << 0 << 20 << State::Refused;
}

void TestReportWork::xReportIsMade()
{
    QFETCH(const int, losses);
    QFETCH(const int, refusals);
    Office office;
    if (losses > 0)
        office.meet("report", lost(true), losses);
    if (refusals > 0)
        office.meet("report", refusal(), refusals);
    QTEST(office.perform(Kind::XReport).state, "state");
}

void TestReportWork::slipIsPrintedOnce()
{
    Office office;
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Closed);
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Closed);
    QCOMPARE(office.printed["slip"], 1);
}

void TestReportWork::doubtfulSlipIsAPersonsBusiness()
{
    Office office;
    office.meet("print", lost(true));
    const Order order = office.perform(Kind::Slip, slip);
    QCOMPARE(order.state, State::NeedsPerson);
    QCOMPARE(order.question, Question::SlipPrinted);
    QCOMPARE(office.till->answer(u"1"_s, Answer::SellAgain, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Closed);
    QCOMPARE(office.printed["slip"], 2);
}

/** The process ends when the slip may have been printed, and nobody has noted it. */
void TestReportWork::slipThatWasOnItsWayIsAPersonsBusiness()
{
    Office office;
    Simulation::Fate fate = lost(true);
    fate.behind = [&office] { office.till->interrupt(); };
    office.meet("state", fate);
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Open);
    office.beginProcess();
    QCOMPARE(office.perform(Kind::Slip, slip).question, Question::SlipPrinted);
    QCOMPARE(office.till->answer(u"1"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Cancelled);
    QCOMPARE(office.printed["slip"], 0);
}

void TestReportWork::slipThatWasNotSentIsPrinted()
{
    Office office;
    office.meet("state", lost(true)); // the connection is looked at before a slip is composed
    QCOMPARE(office.perform(Kind::Slip, slip).state, State::Closed);
    QCOMPARE(office.printed["slip"], 1);
}

void TestReportWork::slipBehindAReceiptSaysWhenItIsDoubtful()
{
    Office office;
    const QByteArray receipt = receiptPaidBy(R"({"cash": "rest"})", R"("slip": )" + slip);
    const Order sure = office.perform(Kind::Receipt, receipt);
    QCOMPARE(sure.state, State::Closed);
    QVERIFY(!sure.slipUnsure);
    office.meet("print", lost(true));
    const Order unsure = office.till->perform(u"2"_s, Kind::Receipt, receipt).order;
    QCOMPARE(unsure.state, State::Closed);
    QVERIFY(unsure.slipUnsure);
    QCOMPARE(office.printed["slip"], 2); // not a third one by itself
}

void TestReportWork::whatCanBeDoneLaterWaits_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<bool>("isSaleOpen"); // otherwise there is no paper
    QTest::addColumn<int>("code");

    const std::pair<const char *, Kind> kinds[] = {
        {"Z report", Kind::ZReport}, {"X report", Kind::XReport}, {"slip", Kind::Slip}};
    for (const auto &[name, kind] : kinds) {
        QTest::addRow("%s while a sale waits for a person", name) << kind << true << 6;
        QTest::addRow("%s without paper", name) << kind << false << 9;
    }
}

/** In its turn: before what was accepted behind it. */
void TestReportWork::whatCanBeDoneLaterWaits()
{
    QFETCH(const Kind, kind);
    QFETCH(const bool, isSaleOpen);
    QFETCH(const int, code);
    const QByteArray json = kind == Kind::Slip ? slip : QByteArray();
    const QByteArray receipt = receiptPaidBy(R"({"cash": "5.00"}, {"card": "rest"})");
    Office office;
    QVERIFY(office.sellFirst());
    if (isSaleOpen) {
        const auto usual = std::exchange(
            office.reg.decide, [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
                const bool isPaid = office.reg.model().saleTotals().cash > 0;
                return isPaid && qstrcmp(command.name, "change-state") == 0 ? refusal() : Simulation::Fate();
            });
        QCOMPARE(office.till->perform(u"0"_s, Kind::Receipt, receipt).order.question,
                 Question::PaymentRefused);
        office.reg.decide = usual;
    }
    office.reg.model().setPaper(isSaleOpen);
    for (int again = 0; again < 2; ++again) {
        const Order order = office.perform(kind, json);
        QCOMPARE(order.state, State::Waiting);
        QCOMPARE(order.code, code);
        QCOMPARE(order.cause == int(VelnoCause_OfState) + VelnoEcrState_SaleOpen, isSaleOpen);
    }
    const qsizetype lines = office.till->history(office.perform(kind, json)).size();
    QCOMPARE(office.till->history(office.perform(kind, json)).size(), lines); // none for each who asks
    QCOMPARE(office.till->accept(u"2"_s, Kind::Receipt, receiptPaidBy(R"({"cash": "rest"})")).result,
             Result::Done);
    office.reg.model().setPaper(true);
    if (isSaleOpen)
        QCOMPARE(office.till->answer(u"0"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(office.till->workOff(), Result::Done);
    for (const QString &key : {u"1"_s, u"2"_s})
        QCOMPARE(office.till->find(key).order.state, State::Closed);
    QCOMPARE(office.last, std::string("receipt"));
}

void TestReportWork::personSettlesWhatAnotherRegisterIsToDo_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<State>("state");
    QTest::addColumn<int>("prints");

    const std::pair<const char *, Kind> kinds[] = {
        {"Z report", Kind::ZReport}, {"X report", Kind::XReport}, {"slip", Kind::Slip}};
    for (const auto &[name, kind] : kinds) {
        QTest::addRow("%s: it was done", name) << kind << Answer::Paid << State::Closed << 0;
        QTest::addRow("%s: do it", name) << kind << Answer::SellAgain << State::Closed << 1;
        QTest::addRow("%s: drop it", name) << kind << Answer::Drop << State::Cancelled << 0;
    }
}

void TestReportWork::personSettlesWhatAnotherRegisterIsToDo()
{
    QFETCH(const Kind, kind);
    QFETCH(const Answer, answer);
    const QByteArray json = kind == Kind::Slip ? slip : QByteArray();
    Office office;
    QVERIFY(office.reg.model().setZNumber(5));
    QVERIFY(office.sellFirst());
    office.reg.replace(); // and begins at Z 1
    office.reg.model().setPrinter([&office](const Simulator::Print &) { ++office.printed["anything"]; });
    QCOMPARE(office.perform(kind, json).question, Question::OtherRegister);
    QCOMPARE(office.till->answer(u"1"_s, answer, u"Ayşe"_s).result, Result::Done);
    QTEST(office.perform(kind, json).state, "state");
    QTEST(office.printed["anything"], "prints");
    QTEST(office.perform(kind, json).state, "state");
}

void TestReportWork::reportsHaveNoContent()
{
    Office office;
    const Outcome outcome = office.till->perform(u"1"_s, Kind::ZReport, slip);
    QCOMPARE(outcome.result, Result::BadContent);
    QCOMPARE(office.till->find(u"1"_s).result, Result::Unknown);
}

QTEST_GUILESS_MAIN(TestReportWork)
#include "tst_report_work.moc"
