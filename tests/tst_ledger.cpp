// SPDX-License-Identifier: Apache-2.0

#include "tests/support/open_ledger.h"

#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>
#include <vector>

using namespace TestSupport;
using namespace Velno::Receipts;
using namespace Qt::StringLiterals;

/** What a till remembers of its orders, from one process to the next. */
class TestLedger : public QObject
{
    Q_OBJECT

private slots:
    void ordersComeBackAsTheyWere();
    void whatIsUnknownIsNothing();
    void numbersFollowOneAnother();
    void aKeyIsAcceptedOnce();
    void unacceptedOrdersAreNotSaved();
    void savingLeavesWhatWasAccepted();
    void listsAreOfStatesAndAsAccepted();
    void allAreVisitedHoweverMany();
    void historyGrowsByALine();
    void attemptsAreWrittenWithTheNextSave();
    void aReceiptIsOneOrdersForEver();
    void closedAndHighestAreTold();
    void zReportsRaiseTheHighest();
    void doubtsAreThoseOfThisEra();
    void memoryAndFileAgree();
    void prunedOrdersAreGone();
    void pruningKeepsWhatIsAskedFor();
    void numbersArePrunedForEver();
    void callsOfThreadsTakeTurns();

private:
    QTemporaryDir m_folder{folderInMemory()};
    int m_files = 0;

    LedgerPlace newPlace() { return {m_folder.filePath(QString::number(++m_files)), "UB1234567890", {}}; }
};

namespace {

using Reference = std::pair<int, int>;

Reference pairOf(const VelnoReceiptRef &reference)
{
    return {reference.first, reference.second};
}

QList<Reference> references(const QList<Attempt> &attempts)
{
    QList<Reference> list;
    for (const Attempt &attempt : attempts)
        list << pairOf(attempt.reference);
    return list;
}

QStringList keys(const QList<Order> &orders)
{
    QStringList list;
    for (const Order &order : orders)
        list << order.key;
    return list;
}

/** With another value in every field. */
Order fullOrder()
{
    Order order;
    order.key = u"kasa 1/çay"_s;
    order.kind = Kind::Slip;
    order.content = R"({"items":[{"name":"Çay","price":"12.50"}]})"_ba;
    order.state = State::NeedsPerson;
    order.question = Question::MoneyTaken;
    order.answer = Answer::SellAgain;
    order.reference = {7, 8};
    order.paymentSent = true;
    order.isSent = true;
    order.z = 9;
    order.totals = {{1, -2, 3'000'000'000'000, 4, 5}, 6};
    order.paper = Paper::Unsure;
    order.slipUnsure = true;
    order.giveBack = 12'345'678'901;
    order.code = 8;
    order.cause = 402;
    order.acceptedAt = moment(1);
    order.changedAt = moment(2);
    return order;
}

void compare(const Order &one, const Order &other)
{
    QCOMPARE(one.number, other.number);
    QCOMPARE(one.key, other.key);
    QCOMPARE(one.kind, other.kind);
    QCOMPARE(one.content, other.content);
    QCOMPARE(one.state, other.state);
    QCOMPARE(one.question, other.question);
    QCOMPARE(one.answer, other.answer);
    QCOMPARE(pairOf(one.reference), pairOf(other.reference));
    QCOMPARE(one.paymentSent, other.paymentSent);
    QCOMPARE(one.isSent, other.isSent);
    QCOMPARE(one.z, other.z);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(qint64(one.totals.values[i]), qint64(other.totals.values[i]));
    QCOMPARE(int(one.totals.number), int(other.totals.number));
    QCOMPARE(one.paper, other.paper);
    QCOMPARE(one.slipUnsure, other.slipUnsure);
    QCOMPARE(one.giveBack, other.giveBack);
    QCOMPARE(one.code, other.code);
    QCOMPARE(one.cause, other.cause);
    QCOMPARE(one.acceptedAt, other.acceptedAt);
    QCOMPARE(one.changedAt, other.changedAt);
    QCOMPARE(one.acceptedAt.timeSpec(), Qt::UTC);
}

} // namespace

void TestLedger::ordersComeBackAsTheyWere()
{
    const LedgerPlace place = newPlace();
    Order accepted = fullOrder();
    Order saved = fullOrder();
    saved.key = u"saved"_s;
    {
        OpenLedger ledger(place);
        QCOMPARE(ledger.trouble, QString());
        QVERIFY(ledger.accept(&accepted, {}));
        saved.number = ledger.add(u"saved"_s, Kind::Slip).number;
        saved.content = Order().content;
        saved.acceptedAt = moment(0);
        QVERIFY(ledger.save(saved, {}, Durability::Written));
        compare(*ledger.find(accepted.key), accepted);
    }
    const OpenLedger ledger(place);
    compare(*ledger.find(accepted.key), accepted);
    compare(*ledger.at(accepted.number), accepted);
    compare(*ledger.find(u"saved"_s), saved);
    QCOMPARE(ledger.problem(), QString());
}

void TestLedger::whatIsUnknownIsNothing()
{
    OpenLedger ledger(newPlace());
    QVERIFY(!ledger.find(u"key"_s));
    QVERIFY(!ledger.at(1));
    QCOMPARE(ledger.list({State::Accepted}).size(), 0);
    QCOMPARE(ledger.history(1).size(), 0);
    QCOMPARE(ledger.attempts(1).size(), 0);
    QCOMPARE(ledger.doubts().size(), 0);
    QCOMPARE(pairOf(ledger.lastClosed()), Reference());
    QCOMPARE(pairOf(ledger.highest()), Reference());
    QCOMPARE(ledger.era(), 1);
    QCOMPARE(ledger.problem(), QString());
}

void TestLedger::numbersFollowOneAnother()
{
    OpenLedger ledger(newPlace());
    for (int i = 1; i < 4; ++i)
        QCOMPARE(ledger.add(u"key %1"_s.arg(i)).number, i);
}

void TestLedger::aKeyIsAcceptedOnce()
{
    OpenLedger ledger(newPlace());
    Order order = ledger.add(u"key"_s);
    Order again = order;
    again.number = 0;
    again.kind = Kind::XReport;
    QVERIFY(!ledger.accept(&again, {}));
    QVERIFY(ledger.problem().contains(u"on record already"_s));
    QCOMPARE(again.number, 0);
    compare(*ledger.find(u"key"_s), order);
    QCOMPARE(ledger.problem(), QString());
    QCOMPARE(ledger.history(order.number).size(), 1);
    QCOMPARE(ledger.add(u"Key"_s).number, 2); // another one
}

void TestLedger::unacceptedOrdersAreNotSaved()
{
    OpenLedger ledger(newPlace());
    Order order = fullOrder();
    order.number = 5;
    ledger.note({5, {1, 2}, 1, Fate::Closed});
    QVERIFY(!ledger.save(order, {}, Durability::Flushed));
    QCOMPARE(ledger.problem(), u"order 5 is not on record"_s);
    QCOMPARE(ledger.history(5).size(), 0);
    QVERIFY(ledger.put(ledger.add(u"key"_s), State::Open)); // without the note
    QCOMPARE(ledger.attempts(5).size(), 0);
    QCOMPARE(pairOf(ledger.lastClosed()), Reference());
}

void TestLedger::savingLeavesWhatWasAccepted()
{
    OpenLedger ledger(newPlace());
    const Order before = ledger.add(u"key"_s);
    Order order = fullOrder();
    order.number = before.number;
    QVERIFY(ledger.save(order, {}, Durability::Flushed));
    order.key = before.key;
    order.kind = before.kind;
    order.content = before.content;
    order.acceptedAt = before.acceptedAt;
    compare(*ledger.find(u"key"_s), order);
    compare(ledger.list({order.state}).constFirst(), order); // read anew
    QVERIFY(!ledger.find(fullOrder().key));
}

void TestLedger::listsAreOfStatesAndAsAccepted()
{
    OpenLedger ledger(newPlace());
    for (int i = 0; i < 7; ++i)
        QVERIFY(ledger.put(ledger.add(QString::number(i)), State(6 - i)));
    QCOMPARE(keys(ledger.list({State::NeedsPerson, State::Accepted, State::Waiting})),
             (QStringList{u"0"_s, u"1"_s, u"6"_s}));
    QCOMPARE(keys(ledger.list({State::Closed, State::Open})), (QStringList{u"4"_s, u"5"_s}));
    QCOMPARE(keys(ledger.list({State::Open, State::NeedsPerson}, 1)), QStringList{u"0"_s});
    QCOMPARE(keys(ledger.list({State::Closed, State::Cancelled, State::Refused}, 2)),
             (QStringList{u"2"_s, u"3"_s}));
    QCOMPARE(keys(ledger.list({State::NeedsPerson, State::Accepted, State::Waiting}, 1000, 1)),
             (QStringList{u"1"_s, u"6"_s}));
    QCOMPARE(ledger.list({}).size(), 0);
}

void TestLedger::allAreVisitedHoweverMany()
{
    constexpr int count = 301;
    OpenLedger ledger(newPlace());
    QStringList expected;
    for (int i = 0; i < count; ++i) {
        const Order order = ledger.add(QString::number(i));
        if (i % 7 == 0)
            QVERIFY(ledger.put(order, State::Closed));
        else
            expected << order.key;
    }
    QStringList visited;
    QVERIFY(ledger.forEach({State::Accepted, State::Waiting}, [&](const Order &order) {
        visited << order.key;
        QVERIFY(ledger.find(order.key)); // nobody is held up
    }));
    QCOMPARE(visited, expected);
    QVERIFY(ledger.forEach({State::Refused}, [](const Order &) { QFAIL("there is none"); }));
}

void TestLedger::historyGrowsByALine()
{
    OpenLedger ledger(newPlace());
    ledger.add(u"another"_s);
    const Order order = ledger.add(u"key"_s);
    const Event event{moment(3), State::Refused, 8, 77, u"the register refuses it"_s, u"Ayşe"_s};
    QVERIFY(ledger.save(order, event, Durability::Written));
    const QList<Event> history = ledger.history(order.number);
    QCOMPARE(history.size(), 2);
    QCOMPARE(history.at(0).text, u"accepted"_s);
    QCOMPARE(history.at(0).person, QString());
    QCOMPARE(history.at(1).time, event.time);
    QCOMPARE(history.at(1).state, event.state);
    QCOMPARE(history.at(1).code, event.code);
    QCOMPARE(history.at(1).cause, event.cause);
    QCOMPARE(history.at(1).text, event.text);
    QCOMPARE(history.at(1).person, event.person);
}

void TestLedger::attemptsAreWrittenWithTheNextSave()
{
    OpenLedger ledger(newPlace());
    const Order one = ledger.add(u"one"_s);
    const Order two = ledger.add(u"two"_s);
    ledger.note({one.number, {1, 1}, 1, Fate::Open});
    ledger.note({two.number, {1, 2}, 1, Fate::ProbablyCancelled});
    ledger.note({two.number, {0, 0}, 1, Fate::Open}); // none
    QCOMPARE(ledger.attempts(one.number).size(), 0);
    QVERIFY(ledger.put(two, State::Open));
    QCOMPARE(references(ledger.attempts(one.number)), QList<Reference>({{1, 1}}));
    QCOMPARE(references(ledger.attempts(two.number)), QList<Reference>({{1, 2}}));
    QCOMPARE(ledger.attempts(two.number).first().fate, Fate::ProbablyCancelled);
    QVERIFY(ledger.enter(two, {1, 2}, Fate::Cancelled));
    QCOMPARE(references(ledger.attempts(two.number)), QList<Reference>({{1, 2}}));
    QCOMPARE(ledger.attempts(two.number).first().fate, Fate::Cancelled);
}

void TestLedger::aReceiptIsOneOrdersForEver()
{
    OpenLedger ledger(newPlace());
    const Order one = ledger.add(u"one"_s);
    const Order two = ledger.add(u"two"_s);
    QVERIFY(ledger.enter(one, {3, 4}, Fate::Cancelled));
    QVERIFY(!ledger.enter(two, {3, 4}, Fate::Closed));
    QCOMPARE(ledger.problem(), u"receipt 4 of Z 3 is another order's"_s);
    QCOMPARE(ledger.find(u"two"_s)->state, State::Accepted);
    QCOMPARE(ledger.history(two.number).size(), 1);
    QCOMPARE(ledger.attempts(one.number).first().fate, Fate::Cancelled);
    QCOMPARE(pairOf(ledger.lastClosed()), Reference());
    QVERIFY(ledger.beginEra());
    QVERIFY(ledger.enter(two, {3, 4}, Fate::Closed)); // of another register
}

void TestLedger::closedAndHighestAreTold()
{
    OpenLedger ledger(newPlace());
    const Order order = ledger.add(u"key"_s);
    QVERIFY(ledger.enter(order, {2, 5}, Fate::Open));
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(0, 0));
    QCOMPARE(pairOf(ledger.highest()), Reference(2, 5));
    QVERIFY(ledger.enter(order, {2, 5}, Fate::Closed));
    QVERIFY(ledger.enter(order, {2, 6}, Fate::Cancelled));
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(2, 5));
    QCOMPARE(pairOf(ledger.highest()), Reference(2, 6));
    QVERIFY(ledger.enter(order, {3, 1}, Fate::Closed));
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(3, 1));
    QCOMPARE(pairOf(ledger.highest()), Reference(3, 1));
    QVERIFY(ledger.enter(order, {2, 4}, Fate::Closed)); // it was found late
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(3, 1));
    QVERIFY(ledger.beginEra());
    QCOMPARE(ledger.era(), 2);
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(0, 0));
    QCOMPARE(pairOf(ledger.highest()), Reference(0, 0));
}

void TestLedger::zReportsRaiseTheHighest()
{
    const LedgerPlace place = newPlace();
    {
        OpenLedger ledger(place);
        const Order order = ledger.add(u"key"_s);
        QVERIFY(ledger.enter(order, {2, 5}, Fate::Closed));
        Order report = ledger.add(u"Z"_s, Kind::ZReport);
        report.z = 2;
        QVERIFY(ledger.put(report, State::Open));
        QCOMPARE(pairOf(ledger.highest()), Reference(2, 5));
        report.z = 3;
        QVERIFY(ledger.put(report, State::Open));
        QCOMPARE(pairOf(ledger.highest()), Reference(3, 0));
        QVERIFY(ledger.beginEra());
        QVERIFY(ledger.put(report, State::Closed)); // made on the register before
        QCOMPARE(pairOf(ledger.highest()), Reference(0, 0));
    }
    OpenLedger ledger(place);
    QCOMPARE(ledger.era(), 2);
    QCOMPARE(pairOf(ledger.highest()), Reference(0, 0));
}

void TestLedger::doubtsAreThoseOfThisEra()
{
    OpenLedger ledger(newPlace());
    const Order order = ledger.add(u"key"_s);
    QVERIFY(ledger.enter(order, {1, 1}, Fate::ProbablyCancelled));
    QVERIFY(ledger.enter(order, {1, 2}, Fate::ProbablyCancelled));
    QVERIFY(ledger.enter(order, {1, 2}, Fate::ProbablyCancelled));
    QCOMPARE(references(ledger.doubts()), QList<Reference>({{1, 1}, {1, 2}}));
    QVERIFY(ledger.enter(order, {1, 1}, Fate::Cancelled));
    QCOMPARE(references(ledger.doubts()), QList<Reference>({{1, 2}}));
    QVERIFY(ledger.beginEra());
    QCOMPARE(ledger.doubts().size(), 0);
    ledger.note({order.number, {1, 3}, 1, Fate::ProbablyCancelled});
    QVERIFY(ledger.put(order, State::Open));
    QCOMPARE(ledger.doubts().size(), 0);
}

/** What is kept in memory for speed is what another process would find. */
void TestLedger::memoryAndFileAgree()
{
    const LedgerPlace place = newPlace();
    quint32 random = 1;
    const auto draw = [&random](quint32 below) {
        random = random * 1'103'515'245 + 12'345;
        return int((random >> 16) % below);
    };
    auto ledger = std::make_unique<OpenLedger>(place);
    const Order order = ledger->add(u"key"_s);
    Order report = ledger->add(u"Z"_s, Kind::ZReport);
    for (int i = 0; i < 300; ++i) {
        if (draw(10) == 0)
            report.z = 1 + draw(6);
        const Fate fates[] = {Fate::Open, Fate::Cancelled, Fate::ProbablyCancelled, Fate::GivenUp,
                              Fate::Closed};
        // What has been closed stays closed.
        const VelnoReceiptRef reference{1 + draw(4), 1 + draw(5)};
        const bool isClosed = reference.second == 5;
        ledger->note({order.number, reference, ledger->era(), isClosed ? Fate::Closed : fates[draw(4)]});
        QVERIFY(ledger->put(report, State::Open));
        if (draw(60) == 0)
            QVERIFY(ledger->beginEra());
        const auto standing = [&] {
            QList<Reference> doubts = references(ledger->doubts());
            std::sort(doubts.begin(), doubts.end());
            return std::tuple(pairOf(ledger->lastClosed()), pairOf(ledger->highest()), doubts);
        };
        if (draw(8) == 0) {
            const auto before = standing();
            ledger.reset();
            ledger = std::make_unique<OpenLedger>(place);
            QCOMPARE(ledger->trouble, QString());
            QVERIFY(standing() == before);
        }
    }
}

void TestLedger::prunedOrdersAreGone()
{
    OpenLedger ledger(newPlace());
    int second = 0;
    for (const char *key : {"old", "open", "new"})
        QVERIFY(ledger.put(ledger.add(QString::fromLatin1(key)), State::Closed, ++second));
    QVERIFY(ledger.put(*ledger.find(u"open"_s), State::Waiting, 2));
    QVERIFY(ledger.find(u"old"_s) && ledger.prune(moment(3)) == 1);
    QVERIFY(!ledger.find(u"old"_s));
    QVERIFY(ledger.find(u"open"_s));
    QVERIFY(ledger.find(u"new"_s));
    QCOMPARE(ledger.history(1).size(), 0);
    QCOMPARE(ledger.history(2).size(), 3);
    QCOMPARE(ledger.prune(moment(3)), 0);
    QCOMPARE(ledger.prune(moment(4)), 1);
}

void TestLedger::pruningKeepsWhatIsAskedFor()
{
    const LedgerPlace place = newPlace();
    {
        OpenLedger ledger(place);
        QVERIFY(ledger.enter(ledger.add(u"long ago"_s), {1, 1}, Fate::Closed, State::Closed));
        QVERIFY(ledger.enter(ledger.add(u"doubtful"_s), {1, 2}, Fate::ProbablyCancelled, State::Closed));
        QVERIFY(ledger.enter(ledger.add(u"last"_s), {1, 3}, Fate::Closed, State::Closed));
        QVERIFY(ledger.enter(ledger.add(u"cancelled"_s), {1, 4}, Fate::Cancelled, State::Cancelled));
        for (int z : {1, 2}) {
            Order report = ledger.add(u"Z %1"_s.arg(z), Kind::ZReport);
            report.z = z;
            QVERIFY(ledger.put(report, State::Closed));
        }
        QCOMPARE(ledger.prune(moment(100)), 4);
    }
    OpenLedger ledger(place);
    QCOMPARE(keys(ledger.list({State::Closed, State::Cancelled})), (QStringList{u"doubtful"_s, u"Z 2"_s}));
    QCOMPARE(pairOf(ledger.lastClosed()), Reference(1, 3));
    QCOMPARE(pairOf(ledger.highest()), Reference(2, 0));
    QCOMPARE(references(ledger.doubts()), QList<Reference>({{1, 2}}));
    QCOMPARE(ledger.attempts(1).size(), 0);
    QCOMPARE(ledger.attempts(2).size(), 1);
    // Once they are not needed any more they go, too.
    QVERIFY(ledger.enter(*ledger.find(u"doubtful"_s), {3, 1}, Fate::Closed, State::Closed));
    QVERIFY(ledger.enter(*ledger.find(u"doubtful"_s), {1, 2}, Fate::Cancelled, State::Closed));
    QCOMPARE(ledger.prune(moment(100)), 2);
    QCOMPARE(ledger.attempts(3).size(), 0);
    QCOMPARE(references(ledger.attempts(2)), QList<Reference>({{3, 1}}));
    QCOMPARE(pairOf(ledger.highest()), Reference(3, 1));
}

void TestLedger::numbersArePrunedForEver()
{
    const LedgerPlace place = newPlace();
    {
        OpenLedger ledger(place);
        QVERIFY(ledger.put(ledger.add(u"key"_s), State::Closed));
        QCOMPARE(ledger.prune(moment(100)), 1);
    }
    OpenLedger ledger(place);
    QCOMPARE(ledger.add(u"key"_s).number, 2);
}

void TestLedger::callsOfThreadsTakeTurns()
{
    constexpr int threads = 4;
    constexpr int orders = 50;
    OpenLedger ledger(newPlace());
    std::vector<std::unique_ptr<QThread>> running;
    std::atomic<int> found = 0;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back(QThread::create([&ledger, &found, thread] {
            for (int i = 0; i < orders; ++i) {
                const Order order = ledger.add(u"%1 %2"_s.arg(thread).arg(i));
                ledger.enter(order, {thread + 1, i + 1}, Fate::Closed, State::Closed);
                found += ledger.find(order.key) && ledger.attempts(order.number).size() == 1;
            }
        }));
        running.back()->start();
    }
    for (const auto &thread : running)
        QVERIFY(thread->wait(60'000));
    QCOMPARE(found, threads * orders);
    QCOMPARE(ledger.list({State::Closed}).size(), threads * orders);
    QCOMPARE(pairOf(ledger.highest()), Reference(threads, orders));
}

QTEST_GUILESS_MAIN(TestLedger)
#include "tst_ledger.moc"
