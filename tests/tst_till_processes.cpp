// SPDX-License-Identifier: Apache-2.0

#include "tests/support/killed_till.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"
#include "tests/support/troubled_line.h"
#include "tests/support/two_books.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <random>

using namespace TestSupport;
using namespace Qt::StringLiterals;
using Velno::Receipts::Answer;
using Velno::Receipts::Kind;
using Velno::Receipts::Order;
using Velno::Receipts::Question;
using Velno::Receipts::State;

/** Hundreds of receipts under keys, where the line between till and register is cut, stalls and loses bytes,
 * and both programs are killed. Each is sold once, and the books agree. */
class TestTillProcesses : public QObject
{
    Q_OBJECT

private slots:
    void eachKeyIsSoldOnce();
    void disagreementsAreSeen_data();
    void disagreementsAreSeen();
};

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int orderCount = 60;
constexpr int answerLimit = 4000; // ms
#else
constexpr int orderCount = 506;  // 500 receipts and some reports
constexpr int answerLimit = 800; // ms
#endif
constexpr int longestOutcome = 60'000; // ms
constexpr int reportEvery = 84;        // orders
constexpr int mostRounds = 20;

/** Chances that VELNO_TEST_SEED repeats. */
class Chances
{
public:
    Chances()
        : seed(qEnvironmentVariableIntegerSeed())
        , m_engine(seed)
    {
    }

    int between(int least, int most) { return least + int(m_engine() % unsigned(most - least + 1)); }
    bool oneIn(int count) { return between(1, count) == 1; }

    const unsigned seed;

private:
    static unsigned qEnvironmentVariableIntegerSeed()
    {
        bool isGiven = false;
        const int given = qEnvironmentVariableIntValue("VELNO_TEST_SEED", &isGiven);
        return isGiven ? unsigned(given) : std::random_device()() % 1'000'000;
    }

    std::mt19937 m_engine;
};

QJsonArray payments(Chances &chances, Sold &sold)
{
    const bool isMixed = chances.oneIn(3);
    const bool endsWithCard = chances.oneIn(3);
    const qint64 part = isMixed ? sold.total / 3 : 0;
    (endsWithCard ? sold.card : sold.cash) = sold.total - part;
    (endsWithCard ? sold.cash : sold.card) = part;
    QJsonArray list;
    if (part > 0)
        list << QJsonObject{{endsWithCard ? u"cash"_s : u"card"_s, part}};
    list << QJsonObject{{endsWithCard ? u"card"_s : u"cash"_s, u"rest"_s}};
    return list;
}

Wanted receipt(int index, Chances &chances)
{
    Wanted wanted;
    wanted.key = u"receipt-%1"_s.arg(index);
    wanted.isRefused = chances.oneIn(40); // one line is over the register's limit
    const int refused = wanted.isRefused ? 0 : -1;
    QJsonArray items;
    const int count = chances.oneIn(12) ? chances.between(11, 23) : chances.between(1, 5);
    for (int i = 0; i < count; ++i) {
        const qint64 price = i == refused ? 1'300'000 : chances.between(1, 2000);
        const int quantity = chances.between(1, 3);
        const int section = chances.between(1, 4);
        const QString name = u"R%1 Ürün %2"_s.arg(index).arg(i);
        items << QJsonObject{
            {u"name"_s, name}, {u"price"_s, price}, {u"quantity"_s, quantity}, {u"section"_s, section}};
        wanted.sold.lines << u"%1 %2 %3 %4"_s.arg(name).arg(price).arg(quantity * 1000).arg(section);
        wanted.sold.total += price * quantity;
    }
    QJsonObject json{{u"items"_s, items}, {u"payments"_s, payments(chances, wanted.sold)}};
    json[u"reenterCash"_s] = !chances.oneIn(4);
    wanted.json = QJsonDocument(json).toJson(QJsonDocument::Compact);
    return wanted;
}

/** Till, line and register, and what befalls them. */
class Market
{
public:
    Market();

    void trouble(int order);
    Told handOver(const Wanted &wanted);
    bool settle(QList<Wanted> &wanted);
    void end();

    Chances chances;
    QTemporaryDir folder;
    const QString journal = folder.filePath(u"journal"_s);
    const QString ledger = folder.filePath(u"ledger"_s);
    const quint16 port = freePort();
    TroubledLine line{port};
    KilledTill till;
    std::unique_ptr<SimulatedRegister> reg;
    QMap<QString, Told> last; ///< by key
    int registerKills = 0;
    int tillKills = 0;
    int answers = 0;
    QString failure;

private:
    void switchOn();
    void killRegister();
    void repair();
    Answer answerOf(const Told &told, const JournalBook &book, const Wanted &wanted);
};

Market::Market()
    : till({ledger, QString::number(port), QString::number(answerLimit)}, longestOutcome)
{
    switchOn();
}

void Market::switchOn()
{
    reg.reset(); // it has the journal until it has ended
    reg = std::make_unique<SimulatedRegister>(line.port(), QStringList{u"--journal"_s, journal});
    if (!reg->isReady())
        failure = u"the register does not start"_s;
}

/** Its power is back after a while. */
void Market::killRegister()
{
    ++registerKills;
    reg->raise(SIGKILL);
    QTimer::singleShot(chances.between(0, 60), &line, [this] { switchOn(); });
}

/** Something at some point of what travels for the order; for one in two, but each kind at first. */
void Market::trouble(int order)
{
    constexpr std::array first{Trouble::CutBefore, Trouble::CutBehind, Trouble::Drop,
                               Trouble::Stall,     Trouble::Strike,    Trouble::Strike};
    constexpr std::array rest{Trouble::CutBefore, Trouble::CutBehind, Trouble::Strike};
    const bool isFirst = order <= int(first.size());
    Trouble trouble = Trouble::None;
    if (isFirst)
        trouble = first[size_t(order - 1)];
    else if (chances.oneIn(20))
        trouble = chances.oneIn(2) ? Trouble::Stall : Trouble::Drop;
    else if (chances.oneIn(2))
        trouble = rest[size_t(chances.between(0, int(rest.size()) - 1))];
    const bool isRegister = isFirst ? order == int(first.size()) : chances.oneIn(4);
    line.strike = [this, isRegister] {
        if (isRegister)
            return killRegister();
        ++tillKills;
        till.kill();
    };
    const int measure =
        trouble == Trouble::Drop ? chances.between(1, 4) : chances.between(1, 2 * answerLimit);
    line.plan(trouble, chances.between(0, isFirst ? 5 : 30), measure);
}

Told Market::handOver(const Wanted &wanted)
{
    const Told told = till.ask(wanted.json.isEmpty() ? u"z"_s : u"sell"_s, wanted.key, wanted.json);
    if (told.isHanging)
        failure = u"%1 hangs"_s.arg(wanted.key);
    if (told.isTold && told.result != 0)
        failure = u"%1: %2 %3"_s.arg(wanted.key).arg(told.result).arg(told.problem);
    if (told.isTold)
        last[wanted.key] = told;
    return told;
}

void Market::repair()
{
    line.plan(Trouble::None);
    if (!reg->isReady() || reg->processId() == 0)
        switchOn();
}

/** What an honest person says who has looked at the register's journal. */
Answer Market::answerOf(const Told &told, const JournalBook &book, const Wanted &wanted)
{
    const auto found = book.closed.constFind({told.first, told.second});
    const bool isClosed = found != book.closed.constEnd();
    const bool isWrong = isClosed && *found != wanted.sold;
    if (Question(told.question) == Question::CountedTwice || isWrong || wanted.json.isEmpty())
        failure = u"%1: question %2"_s.arg(wanted.key).arg(told.question);
    return isClosed ? Answer::Paid : Answer::SellAgain;
}

/** Hands over what is not settled until all is, answering what is asked. @return false: that does not end */
bool Market::settle(QList<Wanted> &wanted)
{
    for (int round = 0; round < mostRounds && failure.isEmpty(); ++round) {
        repair();
        QList<Wanted *> asked;
        int open = 0;
        for (Wanted &one : wanted) {
            const Told told = handOver(one);
            const bool isSettled = told.isTold && Velno::Receipts::isSettled(State(told.state));
            open += !isSettled;
            if (told.isTold && State(told.state) == State::NeedsPerson)
                asked << &one;
        }
        if (open == 0)
            return true;
        reg.reset(); // its journal is its own while it runs
        const JournalBook book = readJournal(journal);
        switchOn();
        for (Wanted *one : asked) {
            ++answers;
            const Answer answer = answerOf(last[one->key], book, *one);
            one->isByWord = answer == Answer::Paid;
            till.ask(u"answer"_s, one->key, QByteArray::number(int(answer)));
        }
    }
    return false;
}

void Market::end()
{
    till.end();
    reg.reset();
}

} // namespace

void TestTillProcesses::eachKeyIsSoldOnce()
{
    Market market;
    qInfo("VELNO_TEST_SEED=%u", market.chances.seed);
    QList<Wanted> wanted;
    for (int i = 1; i <= orderCount && market.failure.isEmpty(); ++i) {
        wanted << (i % reportEvery == 0 ? Wanted{u"z-%1"_s.arg(i), {}, {}, false}
                                        : receipt(i, market.chances));
        market.trouble(i);
        market.handOver(wanted.constLast());
    }
    QCOMPARE(market.failure, QString());
    const bool isSettled = market.settle(wanted);
    QCOMPARE(market.failure, QString());
    QVERIFY(isSettled);
    market.end();
    const JournalBook journal = readJournal(market.journal);
    const LedgerBook ledger = readLedger(market.ledger, SimulatedRegister::serial);
    QCOMPARE(disagreement(wanted, journal, ledger), QString());
    qInfo("%d orders, %d starts of the till, %d kills of it, %d of the register, %d answers",
          int(wanted.size()), market.till.starts(), market.tillKills, market.registerKills, market.answers);
    QVERIFY(market.tillKills > 0 && market.registerKills > 0);
}

void TestTillProcesses::disagreementsAreSeen_data()
{
    using Change = std::function<void(QList<Wanted> &, JournalBook &, LedgerBook &)>;
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("words");
    const auto row = [](const char *name, const Change &change, const char *words) {
        QTest::newRow(name) << change << QString::fromLatin1(words);
    };
    row(
        "none", [](auto &, auto &, auto &) {}, "");
    row(
        "sold twice",
        [](auto &, auto &journal, auto &) {
            journal.closed[{1, 2}] = journal.closed[{1, 1}];
        },
        "sold that nobody wanted");
    row(
        "lost", [](auto &, auto &journal, auto &) { journal.closed.clear(); }, "a: it is not sold");
    row(
        "another line",
        [](auto &, auto &journal, auto &) {
            journal.closed[{1, 1}].lines << u"Su 1 1 1"_s;
        },
        "a: sold is");
    row(
        "another payment",
        [](auto &, auto &journal, auto &) {
            journal.closed[{1, 1}].card = 1;
        },
        "a: sold is");
    row(
        "another total told",
        [](auto &, auto &, auto &ledger) { ledger.orders[u"a"_s].totals.values[0] = 1; }, "a: told is");
    row(
        "another report", [](auto &, auto &journal, auto &) { journal.reports[1][1] = 7; }, "report of Z 1");
    row(
        "no report", [](auto &, auto &journal, auto &) { journal.reports.clear(); }, "z: its report");
    row(
        "not settled", [](auto &, auto &, auto &ledger) { ledger.orders[u"a"_s].state = State::Waiting; },
        "a: its state is 5");
    row(
        "not on record", [](auto &, auto &, auto &ledger) { ledger.orders.remove(u"a"_s); }, "1 orders of 2");
    row(
        "one receipt for two",
        [](auto &wanted, auto &, auto &ledger) {
            wanted << wanted.constFirst();
            wanted.last().key = u"b"_s;
            ledger.orders[u"b"_s] = ledger.orders[u"a"_s];
        },
        "b: its receipt is another's, too");
    row(
        "refused, and sold",
        [](auto &wanted, auto &, auto &ledger) {
            wanted.first().isRefused = true;
            ledger.orders[u"a"_s].state = State::Refused;
        },
        "sold that nobody wanted");
}

void TestTillProcesses::disagreementsAreSeen()
{
    using Change = std::function<void(QList<Wanted> &, JournalBook &, LedgerBook &)>;
    QFETCH(const Change, change);
    QFETCH(const QString, words);
    const Sold sold{100, 60, 40, 0, {u"Ekmek 100 1000 1"_s}};
    QList<Wanted> wanted{{u"a"_s, "{}", sold, false}, {u"z"_s, {}, {}, false}};
    JournalBook journal{{{{1, 1}, sold}}, {{1, {1, 100, 60, 40}}}, {}};
    LedgerBook ledger;
    Order order;
    order.state = State::Closed;
    order.reference = {1, 1};
    order.totals = {{100, 1, 60, 40, 0}, 1};
    ledger.orders[u"a"_s] = order;
    order = {};
    order.kind = Kind::ZReport;
    order.state = State::Closed;
    order.z = 1;
    ledger.orders[u"z"_s] = order;
    change(wanted, journal, ledger);
    const QString found = disagreement(wanted, journal, ledger);
    QVERIFY2(found.contains(words) && found.isEmpty() == words.isEmpty(), qPrintable(found));
}

QTEST_GUILESS_MAIN(TestTillProcesses)
#include "tst_till_processes.moc"
