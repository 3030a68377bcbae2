// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_in_memory.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Simulation;
using namespace TestSupport;
using namespace Velno::Receipts;

namespace {

const QByteArray cashAgain = receiptPaidBy(R"({"cash": "50.00"})", R"("reenterCash": true)");
constexpr int doubted = 2; // the number of its receipt

Simulation::Fate refusing()
{
    Simulation::Fate fate;
    fate.isRefused = true;
    return fate;
}

Simulation::Fate lost()
{
    Simulation::Fate fate;
    fate.isDone = false;
    fate.answer = Simulation::Fate::Answer::Lost;
    return fate;
}

/** A register that closes its second receipt and is late to tell of it. Its connection is lost meanwhile, so
 * that the till takes the receipt for cancelled and begins another sale; then it takes no line any more. */
class LateRegister
{
public:
    explicit LateRegister(TillInMemory &shop)
        : m_shop(shop)
    {
        shop.reg.decide = [this](const Simulator::CommandRow &command, const Velno::GMP::Items &items) {
            return decide(QByteArray(command.name), items);
        };
    }

    bool tells = false;
    bool tellsOfOthers = true;
    bool takesLines = false;
    int mostQuestions = 1000; ///< about it, before it tells
    int questions = 0;

private:
    Simulation::Fate decide(const QByteArray &command, const Velno::GMP::Items &items)
    {
        const bool isBehind = m_shop.reg.model().receipt({1, doubted}).has_value();
        if (command == "items" && isBehind && !takesLines)
            return refusing();
        if (command != "receipt")
            return {};
        if (items.int32("receipt") != doubted)
            return tellsOfOthers ? Simulation::Fate() : refusing();
        if (++questions == 1)
            return lost();
        return tells || questions > mostQuestions ? Simulation::Fate() : refusing();
    }

    TillInMemory &m_shop;
};

} // namespace

/** Receipts that were taken for cancelled, and count. */
class TestReceiptDoubts : public QObject
{
    Q_OBJECT

private slots:
    void askedAboutBeforeItIsRefused();
    void refusedIsCorrectedBehindTheNextReceipt();
    void refusedStaysWhenNothingCounts();
    void unprovenIsAPersonsBusiness();
    void droppedWhileItWaits_data();
    void droppedWhileItWaits();
    void dropOfAChargedCardIsAsked();
    void countedTwiceIsAsked();
    void noIsFinalAMinuteLater();
};

void TestReceiptDoubts::askedAboutBeforeItIsRefused()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    late.mostQuestions = 11; // the one that was lost, and ten rounds
    const Order order = shop.sell(cashAgain).order;
    QCOMPARE(order.state, State::Closed);
    QCOMPARE(order.reference.second, doubted);
    QCOMPARE(order.totals.values[VelnoTotal_ToPay], 2500);
    QCOMPARE(order.code, 0);
    QCOMPARE(shop.closed(), 2);
    QVERIFY(shop.reg.model().saleReference() == Simulator::ReceiptRef());
}

/** It was told as refused, and perhaps sold otherwise since: a person has to know. */
void TestReceiptDoubts::refusedIsCorrectedBehindTheNextReceipt()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    QCOMPARE(shop.sell(cashAgain).order.state, State::Refused);
    late.tells = late.takesLines = true;
    QStringList told;
    shop.till->setListener([&told](const Order &order, Stage stage) {
        if (stage == Stage::Settled)
            told << u"%1: %2"_s.arg(order.key).arg(int(order.state));
    });
    QCOMPARE(shop.sell(cashAgain, u"2"_s).order.state, State::Closed);
    QCOMPARE(told, (QStringList{u"1: 6"_s, u"2: 2"_s}));
    const Order asked = shop.sell(cashAgain).order;
    QCOMPARE(asked.state, State::NeedsPerson);
    QCOMPARE(asked.question, Question::CountedTwice);
    QCOMPARE(asked.reference.second, doubted);
    QCOMPARE(asked.totals.values[VelnoTotal_ToPay], 2500);
    QCOMPARE(asked.paper, Paper::Unsure);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Paid, u"Ayşe"_s).result, Result::Done);
    const Order seenTo = shop.sell(cashAgain).order;
    QCOMPARE(seenTo.state, State::Closed);
    QCOMPARE(seenTo.reference.second, doubted);
    QCOMPARE(shop.closed(), 3);
}

void TestReceiptDoubts::refusedStaysWhenNothingCounts()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    bool isCut = false;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        if (qstrcmp(command.name, "items") != 0)
            return Simulation::Fate();
        if (std::exchange(isCut, true))
            return refusing();
        shop.reg.cutPower();
        return lost();
    };
    QCOMPARE(shop.sell(cashAgain).order.state, State::Refused);
    shop.reg.decide = {};
    QCOMPARE(shop.sell(cashAgain, u"2"_s).order.state, State::Closed);
    QCOMPARE(shop.sell(cashAgain).order.state, State::Refused);
    QCOMPARE(shop.closed(), 2);
}

/** When it is asked about once more the register tells of no receipt. */
void TestReceiptDoubts::unprovenIsAPersonsBusiness()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    shop.till->setListener([&](const Order &order, Stage stage) {
        if (stage == Stage::Entering && order.reference.second > doubted)
            late.tellsOfOthers = false;
    });
    const Order order = shop.sell(cashAgain).order;
    QCOMPARE(order.question, Question::ReceiptUnknown);
    QCOMPARE(order.reference.second, doubted);
    shop.till->setListener({});
    late.tells = late.tellsOfOthers = late.takesLines = true;
    QCOMPARE(shop.sell(cashAgain, u"2"_s).order.state, State::Closed);
    QCOMPARE(shop.sell(cashAgain).order.state, State::Closed); // it has been told of since
    QCOMPARE(shop.closed(), 3);
}

void TestReceiptDoubts::droppedWhileItWaits_data()
{
    QTest::addColumn<bool>("tells");
    QTest::addColumn<bool>("tellsOfOthers");
    QTest::addColumn<State>("state");
    QTest::addColumn<Question>("question");

    QTest::newRow("it is told of") << true << true << State::Closed << Question::None;
    QTest::newRow("it is not") << false << true << State::Cancelled << Question::None;
    QTest::newRow("none is") << false << false << State::NeedsPerson << Question::ReceiptUnknown;
}

/** Whoever drops what waits for a register that is away has looked at nothing. */
void TestReceiptDoubts::droppedWhileItWaits()
{
    QFETCH(const bool, tells);
    QFETCH(const bool, tellsOfOthers);
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    shop.till->setListener([&shop](const Order &, Stage stage) {
        if (stage == Stage::EnteringAgain)
            shop.reg.model().setState(Simulator::State::Locked);
    });
    QCOMPARE(shop.sell(cashAgain).order.state, State::Waiting);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    shop.till->setListener({});
    shop.reg.model().setState(Simulator::State::Idle);
    late.tells = tells;
    late.tellsOfOthers = tellsOfOthers;
    const Order order = shop.sell(cashAgain).order;
    QTEST(order.state, "state");
    QTEST(order.question, "question");
    QCOMPARE(shop.closed(), 2);
}

/** The sale is open, a part is paid by card, and the register does not tell how it stands: nobody who drops
 * it then has been told about the card. */
void TestReceiptDoubts::dropOfAChargedCardIsAsked()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    bool isSilent = true;
    shop.reg.decide = [&](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        const bool isAsked = qstrcmp(command.name, "sale-state") == 0;
        return isSilent && isAsked && shop.reg.model().saleTotals().card > 0 ? refusing()
                                                                             : Simulation::Fate();
    };
    const QByteArray json = receiptPaidBy(R"({"card": "5.00"}, {"cash": "rest"})");
    QCOMPARE(shop.sell(json).order.state, State::Waiting);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    isSilent = false;
    QCOMPARE(shop.sell(json).order.question, Question::MoneyTaken);
    QVERIFY(shop.reg.model().saleReference() == Simulator::ReceiptRef());
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Drop, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(json).order.state, State::Cancelled);
    QCOMPARE(shop.closed(), 1);
}

void TestReceiptDoubts::countedTwiceIsAsked()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    late.takesLines = true;
    late.mostQuestions = 11;
    const Order order = shop.sell(cashAgain).order;
    QCOMPARE(order.question, Question::CountedTwice);
    QCOMPARE(order.reference.second, doubted + 1);
    QCOMPARE(shop.closed(), 3);
    QCOMPARE(shop.till->answer(u"1"_s, Answer::Paid, u"Ayşe"_s).result, Result::Done);
    QCOMPARE(shop.sell(cashAgain).order.state, State::Closed);
}

/** Until then it is asked about behind each receipt, once. */
void TestReceiptDoubts::noIsFinalAMinuteLater()
{
    TillInMemory shop;
    QVERIFY(shop.sellFirst());
    LateRegister late(shop);
    late.takesLines = true;
    const auto questionsBehind = [&](const QString &key) {
        late.questions = 1; // none is lost any more
        const Order order = shop.sell(cashAgain, key).order;
        return order.state == State::Closed ? late.questions - 1 : -1;
    };
    QCOMPARE(shop.sell(cashAgain).order.state, State::Closed);
    QCOMPARE(questionsBehind(u"2"_s), 1);
    shop.beginProcess();
    QCOMPARE(questionsBehind(u"3"_s), 1);
    shop.clock.pass(60'000);
    QCOMPARE(questionsBehind(u"4"_s), 10);
    QCOMPARE(questionsBehind(u"5"_s), 0);
    late.tells = true;
    QCOMPARE(shop.sell(cashAgain).order.state, State::Closed); // that is how it stays
}

QTEST_GUILESS_MAIN(TestReceiptDoubts)
#include "tst_receipt_doubts.moc"
