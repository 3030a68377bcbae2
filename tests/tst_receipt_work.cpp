// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_in_memory.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Simulation;
using namespace TestSupport;
using namespace Velno::Receipts;

namespace {

const QByteArray inCash = R"({"cash": "50.00"})";
const QByteArray byCard = R"({"card": "rest"})";
const QByteArray restInCash = R"({"cash": "rest"})";
const QByteArray mayBeReentered = R"("reenterCash": true)";

Simulation::Fate notDone()
{
    Simulation::Fate fate;
    fate.isDone = false;
    fate.answer = Simulation::Fate::Answer::Lost;
    return fate;
}

Simulation::Fate answering(Simulation::Fate::Answer answer)
{
    Simulation::Fate fate;
    fate.answer = answer;
    return fate;
}

Simulation::Fate refusing()
{
    Simulation::Fate fate;
    fate.isRefused = true;
    return fate;
}

Simulation::Fate cuttingPower(TillInMemory &shop)
{
    Simulation::Fate fate = answering(Simulation::Fate::Answer::Lost);
    fate.behind = [&shop] { shop.reg.cutPower(); };
    return fate;
}

} // namespace

/** One receipt on its way through what can happen to it. */
class TestReceiptWork : public QObject
{
    Q_OBJECT

private slots:
    void receiptIsSoldOnce_data();
    void receiptIsSoldOnce();
    void sameKeyIsTheSameReceipt();
    void otherContentIsAConflict();
    void comesThroughWhatHappens_data();
    void comesThroughWhatHappens();
    void cashGoesInAgainIfAllowed();
    void moneyIsAPersonsBusiness_data();
    void moneyIsAPersonsBusiness();
    void personDecides_data();
    void personDecides();
    void firstReceiptCannotBeProven();
    void firstReceiptThatWasNotEndedIsEnteredAgain();
    void wordOfAPersonGoesBeforeANo();
    void lateReceiptIsWaitedFor();
    void receiptThatIsNeverToldOfIsNotSoldOnAndOn();
    void refusedLineRefusesTheReceipt();
    void refusedCardIsNotAskedForAgain();
    void restThatIsRefusedIsAPersonsBusiness();
    void sumsThatDoNotFitAreRefused();
    void registerWithoutPaperIsWaitedFor();
    void busyRegisterIsWaitedFor();
    void saleOfSomebodyElseIsLeftAlone();
    void handOfSomebodyElseIsNoticed_data();
    void handOfSomebodyElseIsNoticed();
    void otherRegisterIsNoticed();
    void replacedRegisterIsAskedAboutOnce();
    void receiptGoesOnInTheNextProcess();
    void closedIsNotPrinted();
    void interruptionLeavesItAsItIs();
    void cashierIsTold();
};

void TestReceiptWork::receiptIsSoldOnce_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("lines");

    QTest::newRow("cash with change") << receiptPaidBy(inCash) << qint64(2500) << 2;
    QTest::newRow("rest in cash") << receiptPaidBy(restInCash) << qint64(2500) << 2;
    QTest::newRow("card") << receiptPaidBy(byCard) << qint64(2500) << 2;
    QTest::newRow("cash and card") << receiptPaidBy(R"({"cash": "5.00"}, {"card": "5.00"}, {"cash": "rest"})")
                                   << qint64(2500) << 2;
    QTest::newRow("medical") << receiptPaidBy(byCard,
                                              R"("medical": {"amount": "5.00", "person": "11111111111"})")
                             << qint64(3000) << 2;
    QTest::newRow("invoice") << receiptPaidBy(byCard,
                                              R"("invoice": {"type": "electronic", "person": "11111111111"})")
                             << qint64(2500) << 2;
    QTest::newRow("total as added up") << receiptPaidBy(byCard, R"("total": "25.00")") << qint64(2500) << 2;
    QByteArray many = R"({"name": "Ekmek", "price": 100, "section": 1}, {"name": "Teşekkürler", "price": 0})";
    for (int i = 0; i < 22; ++i)
        many += R"(, {"name": "Su", "price": 100, "section": 2})";
    QTest::newRow("many lines and a remark")
        << QByteArray(R"({"items": [)" + many + R"(], "payments": [{"cash": "rest"}]})") << qint64(2300)
        << 24;
}

void TestReceiptWork::receiptIsSoldOnce()
{
    QFETCH(const QByteArray, json);
    TillInMemory shop;
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.result, Result::Done);
    QCOMPARE(outcome.order.state, State::Closed);
    QTEST(qint64(outcome.order.totals.values[VelnoTotal_ToPay]), "total");
    QTEST(outcome.order.totals.number, "lines");
    QCOMPARE(outcome.order.paper, Paper::Printed);
    const auto receipt =
        shop.reg.model().receipt({outcome.order.reference.first, outcome.order.reference.second});
    QVERIFY(receipt);
    QTEST(receipt->total, "total");
    QCOMPARE(shop.closed(), 1);
}

void TestReceiptWork::sameKeyIsTheSameReceipt()
{
    TillInMemory shop;
    const Outcome first = shop.sell(receiptPaidBy(inCash));
    const int asked = shop.commands["state"];
    const Outcome second = shop.sell(receiptPaidBy(R"({"cash": 5000})")); // the same, written otherwise
    QCOMPARE(second.order.state, State::Closed);
    QCOMPARE(second.order.reference.second, first.order.reference.second);
    QCOMPARE(shop.commands["state"], asked);
    shop.beginProcess();
    QCOMPARE(shop.sell(receiptPaidBy(inCash)).order.reference.second, first.order.reference.second);
    QCOMPARE(shop.closed(), 1);
    QCOMPARE(shop.sell(receiptPaidBy(inCash), u"2"_s).order.state, State::Closed);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::otherContentIsAConflict()
{
    TillInMemory shop;
    QCOMPARE(shop.sell(receiptPaidBy(inCash)).result, Result::Done);
    const Outcome other = shop.sell(receiptPaidBy(R"({"cash": "51.00"})"));
    QCOMPARE(other.result, Result::Conflict);
    QCOMPARE(other.words, QStringList{u"payments[0].cash: 51.00, before 50.00"_s});
    QCOMPARE(shop.till->perform(u"1"_s, Kind::ZReport, {}).result, Result::Conflict);
    QCOMPARE(shop.closed(), 1);
}

/** Each command that a receipt sends, and each thing that can happen to it. */
void TestReceiptWork::comesThroughWhatHappens_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<int>("what");

    constexpr const char *commands[] = {"state",   "login",      "change-state", "items",
                                        "medical", "sale-state", "receipt",      "paper"};
    constexpr const char *happens[] = {"not done", "lost",    "silent",   "damaged",
                                       "short",    "refused", "power cut"};
    for (const char *command : commands)
        for (int what = 0; what < 7; ++what)
            QTest::addRow("%s: %s", command, happens[what]) << QByteArray(command) << what;
}

void TestReceiptWork::comesThroughWhatHappens()
{
    QFETCH(const QByteArray, command);
    QFETCH(const int, what);
    for (int times = 1; times <= 3; ++times) {
        TillInMemory shop;
        QVERIFY(shop.sellFirst());
        shop.beginProcess();
        const Simulation::Fate fates[] = {notDone(),
                                          answering(Simulation::Fate::Answer::Lost),
                                          answering(Simulation::Fate::Answer::Never),
                                          answering(Simulation::Fate::Answer::Damaged),
                                          answering(Simulation::Fate::Answer::Short),
                                          refusing(),
                                          cuttingPower(shop)};
        shop.meet(command.constData(), fates[what], times);
        const QByteArray json = receiptPaidBy(
            inCash, mayBeReentered + R"(, "medical": {"amount": "5.00", "person": "11111111111"})");
        Outcome outcome = shop.sell(json);
        for (int again = 0; again < 3 && outcome.order.state == State::Waiting; ++again)
            outcome = shop.sell(json); // as a register that was away is back
        QCOMPARE(outcome.result, Result::Done);
        QCOMPARE(outcome.order.state, State::Closed);
        QCOMPARE(qint64(outcome.order.totals.values[VelnoTotal_ToPay]), 3000);
        QCOMPARE(shop.closed(), 2);
        QCOMPARE(shop.till->find(u"1"_s).order.state, State::Closed);
    }
}

void TestReceiptWork::cashGoesInAgainIfAllowed()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    shop.meet("sale-state", cuttingPower(shop), 2); // behind the start, and behind the payment
    const Outcome outcome = shop.sell(receiptPaidBy(inCash, mayBeReentered));
    QCOMPARE(outcome.order.state, State::Closed);
    QCOMPARE(outcome.order.giveBack, 0);
    QCOMPARE(qint64(outcome.order.totals.values[VelnoTotal_Cash]), 5000);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::moneyIsAPersonsBusiness_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("cash") << receiptPaidBy(R"({"cash": "5.00"}, {"cash": "rest"})");
    QTest::newRow("card") << receiptPaidBy(R"({"card": "5.00"}, {"card": "rest"})", mayBeReentered);
    QTest::newRow("card behind cash")
        << receiptPaidBy(R"({"cash": "5.00"}, {"card": "5.00"}, {"cash": "rest"})", mayBeReentered);
}

void TestReceiptWork::moneyIsAPersonsBusiness()
{
    QFETCH(const QByteArray, json);
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    int paid = 0;
    shop.reg.decide = [&](const Simulator::CommandRow &, const Velno::GMP::Items &) {
        const Simulator::SaleTotals totals = shop.reg.model().saleTotals();
        const bool isPaid = json.contains("card") ? totals.card > 0 : totals.cash > 0;
        return isPaid && ++paid == 1 ? cuttingPower(shop) : Simulation::Fate();
    };
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.order.state, State::NeedsPerson);
    QCOMPARE(outcome.order.question, Question::MoneyTaken);
    QCOMPARE(shop.sell(json).order.state, State::NeedsPerson); // asking again changes nothing
    QCOMPARE(shop.closed(), 1);
}

void TestReceiptWork::personDecides_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<State>("state");
    QTest::addColumn<int>("closed");

    QTest::newRow("it was paid") << Answer::Paid << State::Closed << 1;
    QTest::newRow("sell again") << Answer::SellAgain << State::Closed << 2;
    QTest::newRow("drop it") << Answer::Drop << State::Cancelled << 1;
}

void TestReceiptWork::personDecides()
{
    QFETCH(const Answer, answer);
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    const QByteArray json = receiptPaidBy(R"({"card": "5.00"}, {"cash": "rest"})");
    shop.reg.decide = [&](const Simulator::CommandRow &, const Velno::GMP::Items &) {
        return shop.reg.model().saleTotals().card > 0 ? cuttingPower(shop) : Simulation::Fate();
    };
    QCOMPARE(shop.sell(json).order.question, Question::MoneyTaken);
    shop.reg.decide = {};
    QCOMPARE(shop.till->answer(u"1"_s, answer, {}).result, Result::BadContent); // who says so?
    const Outcome taken = shop.till->answer(u"1"_s, answer, u"Ayşe"_s);
    QCOMPARE(taken.result, Result::Done);
    QCOMPARE(shop.till->history(taken.order).constLast().person, u"Ayşe"_s);
    shop.beginProcess();
    QTEST(shop.sell(json).order.state, "state");
    QTEST(shop.closed(), "closed");
    QCOMPARE(shop.till->answer(u"1"_s, answer, u"Ayşe"_s).result, Result::NotAsked);
}

/** There is nothing to ask a counter-question about, and the register may have ended the sale. */
void TestReceiptWork::firstReceiptCannotBeProven()
{
    TillInMemory shop;
    int payments = 0;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isKey =
            QLatin1StringView(command.name) == "change-state"_L1 && shop.reg.model().saleTotals().items == 2;
        if (!isKey || ++payments != 2) // the first key pays, the second one ends the sale
            return Simulation::Fate();
        shop.reg.cutPower();
        return notDone();
    };
    const QByteArray json = receiptPaidBy(inCash, mayBeReentered);
    QCOMPARE(shop.sell(json).order.question, Question::ReceiptUnknown);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::SellAgain, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.closed(), 1);
}

/** What was never ended was not closed. */
void TestReceiptWork::firstReceiptThatWasNotEndedIsEnteredAgain()
{
    TillInMemory shop;
    shop.meet("items", cuttingPower(shop));
    QCOMPARE(shop.sell(receiptPaidBy(inCash)).order.state, State::Closed);
    QCOMPARE(shop.closed(), 1);
}

/** "It was paid", says the person who holds the paper, and the register refuses to tell of it. */
void TestReceiptWork::wordOfAPersonGoesBeforeANo()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &items) {
        const bool isAsked = QLatin1StringView(command.name) == "receipt"_L1;
        return isAsked && items.int32("receipt") != 1 ? refusing() : Simulation::Fate();
    };
    const QByteArray json = receiptPaidBy(inCash, mayBeReentered);
    QCOMPARE(shop.sell(json).order.question, Question::ReceiptUnknown);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Paid, u"Ayşe"_s).result, Result::Done);
    shop.beginProcess();
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.closed(), 2);
}

/** A register that tells of a receipt only a while after it has closed it. */
void TestReceiptWork::lateReceiptIsWaitedFor()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    qint64 toldFrom = 0;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &items) {
        if (QLatin1StringView(command.name) != "receipt"_L1 || items.int32("receipt") != 2)
            return Simulation::Fate();
        toldFrom = toldFrom == 0 ? shop.clock.passed() + 5000 : toldFrom;
        return shop.clock.passed() < toldFrom ? refusing() : Simulation::Fate();
    };
    const Outcome outcome = shop.sell(receiptPaidBy(inCash, mayBeReentered));
    QCOMPARE(outcome.order.state, State::Closed);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::receiptThatIsNeverToldOfIsNotSoldOnAndOn()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &items) {
        const bool isAsked = QLatin1StringView(command.name) == "receipt"_L1;
        return isAsked && items.int32("receipt") != 1 ? refusing() : Simulation::Fate();
    };
    QCOMPARE(shop.sell(receiptPaidBy(inCash, mayBeReentered)).order.question, Question::ReceiptUnknown);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::refusedLineRefusesTheReceipt()
{
    TillInMemory shop;
    shop.meet("items", refusing(), 100);
    const QByteArray json = receiptPaidBy(inCash);
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.order.state, State::Refused);
    QCOMPARE(outcome.order.code, 8);
    QVERIFY(!shop.reg.model().saleReference().z); // nothing stays open
    QCOMPARE(shop.closed(), 0);
    shop.meet("items", Simulation::Fate());
    QCOMPARE(shop.sell(json).order.state, State::Refused); // that is its outcome
    QCOMPARE(shop.sell(json, u"2"_s).order.state, State::Closed);
}

void TestReceiptWork::refusedCardIsNotAskedForAgain()
{
    TillInMemory shop;
    int keys = 0;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isPayment =
            QLatin1StringView(command.name) == "change-state"_L1 && shop.reg.model().saleTotals().items == 2;
        keys += isPayment ? 1 : 0;
        return isPayment && keys == 1 ? refusing() : Simulation::Fate();
    };
    const Outcome outcome = shop.sell(receiptPaidBy(R"({"card": "25.00"})"));
    QCOMPARE(outcome.order.state, State::Refused);
    QCOMPARE(shop.closed(), 0);
}

void TestReceiptWork::restThatIsRefusedIsAPersonsBusiness()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    bool isRefusing = true;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isPaid = shop.reg.model().saleTotals().cash > 0;
        return QLatin1StringView(command.name) == "change-state"_L1 && isPaid && isRefusing
                   ? refusing()
                   : Simulation::Fate();
    };
    const QByteArray json = receiptPaidBy(R"({"cash": "5.00"}, {"card": "rest"})");
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.order.question, Question::PaymentRefused);
    QVERIFY(shop.reg.model().saleReference().z); // as the person finds it
    isRefusing = false;
    QCOMPARE(shop.till->answer(u"1"_s, Answer::SellAgain, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::sumsThatDoNotFitAreRefused()
{
    TillInMemory shop;
    const Outcome outcome = shop.sell(receiptPaidBy(restInCash, R"("total": "24.99")"));
    QCOMPARE(outcome.order.state, State::Refused);
    QCOMPARE(shop.till->history(outcome.order).constLast().text,
             u"the register comes to 25.00, the receipt says 24.99"_s);
    QCOMPARE(shop.sell(receiptPaidBy(R"({"cash": "24.99"})"), u"2"_s).order.state, State::Refused);
    QCOMPARE(shop.closed(), 0);
}

void TestReceiptWork::registerWithoutPaperIsWaitedFor()
{
    TillInMemory shop;
    shop.reg.model().setPaper(false);
    const QByteArray json = receiptPaidBy(inCash);
    QCOMPARE(shop.sell(json).order.state, State::Waiting);
    shop.reg.model().setPaper(true);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.closed(), 1);
}

void TestReceiptWork::busyRegisterIsWaitedFor()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    shop.reg.model().setState(Simulator::State::Locked);
    const QByteArray json = receiptPaidBy(inCash);
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.order.state, State::Waiting);
    QVERIFY(shop.stages.contains(Stage::Busy));
    QVERIFY(shop.clock.passed() >= 30'000);
    shop.reg.model().setState(Simulator::State::Idle);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
}

void TestReceiptWork::saleOfSomebodyElseIsLeftAlone()
{
    TillInMemory shop;
    shop.reg.model().setState(Simulator::State::SaleOpen);
    const Simulator::ReceiptRef theirs = shop.reg.model().saleReference();
    const QByteArray json = receiptPaidBy(inCash);
    QCOMPARE(shop.sell(json).order.state, State::Waiting);
    QVERIFY(shop.reg.model().saleReference() == theirs);
    shop.reg.model().setState(Simulator::State::Idle);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
}

void TestReceiptWork::handOfSomebodyElseIsNoticed_data()
{
    QTest::addColumn<bool>("compares");
    QTest::addColumn<State>("state");

    QTest::newRow("sums are compared") << true << State::NeedsPerson;
    QTest::newRow("they are not") << false << State::Closed; // with a line that nobody has handed over
}

/** When the payment comes somebody has added a line on the register itself, and ended the sale. */
void TestReceiptWork::handOfSomebodyElseIsNoticed()
{
    QFETCH(const bool, compares);
    Rules rules;
    if (!compares)
        rules.switchOff(Rule::CompareTotals);
    TillInMemory shop(rules);
    QVERIFY(shop.sellFirst());
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isPayment =
            QLatin1StringView(command.name) == "change-state"_L1 && shop.reg.model().saleTotals().items == 2;
        if (!isPayment)
            return Simulation::Fate();
        Simulator::ItemRequest item;
        item.price = 100;
        item.quantity = 1000;
        item.section = 1;
        shop.reg.model().seller()->add({item});
        shop.reg.model().seller()->press({Simulator::keyF10});
        return notDone();
    };
    const QByteArray json = receiptPaidBy(inCash);
    const Outcome outcome = shop.sell(json);
    QTEST(outcome.order.state, "state");
    QCOMPARE(outcome.order.question, compares ? Question::NotOurs : Question::None);
    QCOMPARE(shop.closed(), 2);
}

void TestReceiptWork::otherRegisterIsNoticed()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    shop.reg.replace();
    const QByteArray json = receiptPaidBy(inCash);
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.order.question, Question::OtherRegister);
    QVERIFY(!shop.reg.model().saleReference().z);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::SellAgain, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.sell(json, u"2"_s).order.state, State::Closed);
    QCOMPARE(shop.closed(), 3);
}

/** Whatever the answer is, it says that the register was replaced: nobody is asked again. */
void TestReceiptWork::replacedRegisterIsAskedAboutOnce()
{
    TillInMemory shop;
    QVERIFY(shop.reg.model().setZNumber(5));
    QVERIFY(shop.sellFirst());
    shop.reg.replace();
    const QByteArray json = receiptPaidBy(inCash, R"("reenterCash": true)");
    const int begun = shop.commands["change-state"];
    QCOMPARE(shop.sell(json).order.question, Question::OtherRegister);
    QCOMPARE(shop.sell(json, u"2"_s).order.question, Question::OtherRegister);
    QCOMPARE(shop.commands["change-state"], begun); // nothing, not even for a moment
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(json).order.state, State::Cancelled);
    QCOMPARE(shop.sell(json, u"3"_s).order.state, State::Closed);
    QCOMPARE(shop.till->answer(u"2"_s, Answer::SellAgain, u"Ayşe"_s).result, Result::Done);
    // It is the same register still: a receipt that it has closed proves that another one was cancelled.
    bool isCut = false;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isEnd =
            qstrcmp(command.name, "change-state") == 0 && shop.reg.model().saleTotals().items > 0;
        if (!isEnd || std::exchange(isCut, true))
            return Simulation::Fate();
        shop.reg.cutPower();
        return notDone();
    };
    QCOMPARE(shop.sell(json, u"2"_s).order.state, State::Closed);
    QVERIFY(isCut);
}

/** Each time the process ends behind another command; no line is entered twice. */
void TestReceiptWork::receiptGoesOnInTheNextProcess()
{
    const QByteArray json = receiptPaidBy(R"({"cash": "5.00"}, {"card": "rest"})");
    int behind = 1;
    for (bool isDone = false; !isDone; ++behind) {
        TillInMemory shop;
        QVERIFY(shop.sellFirst());
        int come = 0;
        shop.reg.decide = [&](const Simulator::CommandRow &, const Velno::GMP::Items &) {
            if (++come != behind)
                return Simulation::Fate();
            shop.till->interrupt();
            return answering(Simulation::Fate::Answer::Lost);
        };
        const Outcome first = shop.sell(json);
        isDone = come < behind;
        shop.reg.decide = {};
        shop.beginProcess();
        const Outcome second = shop.sell(json);
        QCOMPARE(second.order.state, State::Closed);
        QCOMPARE(qint64(second.order.totals.values[VelnoTotal_Card]), 2000);
        QCOMPARE(shop.closed(), 2);
        QVERIFY(isDone || first.result == Result::Interrupted || first.order.state == State::Closed);
    }
    QVERIFY2(behind > 8, qPrintable(QString::number(behind)));
}

void TestReceiptWork::closedIsNotPrinted()
{
    TillInMemory shop;
    shop.meet("paper", refusing());
    QCOMPARE(shop.sell(receiptPaidBy(inCash)).order.paper, Paper::Unsure);
    QCOMPARE(shop.sell(receiptPaidBy(inCash), u"2"_s).order.paper, Paper::Printed);
    shop.meet("receipt",
              answering(Simulation::Fate::Answer::Lost)); // nobody saw whether the power was cut meanwhile
    QCOMPARE(shop.sell(receiptPaidBy(inCash), u"3"_s).order.paper, Paper::Unsure);
    QCOMPARE(shop.closed(), 3);
}

void TestReceiptWork::interruptionLeavesItAsItIs()
{
    TillInMemory shop;
    Simulation::Fate fate;
    fate.behind = [&shop] { shop.till->interrupt(); };
    shop.meet("items", fate);
    const QByteArray json = receiptPaidBy(inCash);
    const Outcome outcome = shop.sell(json);
    QCOMPARE(outcome.result, Result::Interrupted);
    QCOMPARE(outcome.order.state, State::Open);
    QCOMPARE(shop.sell(json).order.state, State::Closed);
    QCOMPARE(shop.closed(), 1);
}

void TestReceiptWork::cashierIsTold()
{
    TillInMemory shop;
    QCOMPARE(shop.sell(receiptPaidBy(R"({"cash": "5.00"}, {"card": "rest"})")).order.state, State::Closed);
    QCOMPARE(shop.stages,
             QList<Stage>({Stage::Connecting, Stage::Starting, Stage::Entering, Stage::CashPayment,
                           Stage::CardPayment, Stage::Closing, Stage::Settled}));
}

QTEST_GUILESS_MAIN(TestReceiptWork)
#include "tst_receipt_work.moc"
