// SPDX-License-Identifier: Apache-2.0

#include "simulation/simulated_register.h"
#include "tests/support/library_test.h"

#include <QTest>

using namespace Simulation;
using namespace Velno::Ext;
using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

VelnoSaleItem bread()
{
    VelnoSaleItem item = {};
    item.price = 1250;
    item.quantity = 2000;
    item.section = 1;
    qstrcpy(item.name, "Ekmek");
    return item;
}

} // namespace

/** The register of a simulation, through the device library. */
class TestSimulatedRegister : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void sells();
    void lostAnswer_data();
    void lostAnswer();
    void damagedAnswers_data();
    void damagedAnswers();
    void silenceEndsWithTheLimit();
    void silenceIsNoticedBehindKeys();
    void refusalIsNotDone();
    void powerCutCancelsTheSale();
    void lostKeysEndTheConnection();
    void replacedRegisterRemembersNothing();
    void timeIsTheClocks();

private:
    int connectIt() { return velnoext_initialize(5, serial, "127.0.0.1", 4100, brief); }
    int sell();
    void decideOnce(const char *command, const Fate &fate);

    std::unique_ptr<VirtualClock> m_clock;
    std::unique_ptr<SimulatedRegister> m_register;
};

void TestSimulatedRegister::init()
{
    m_clock = std::make_unique<VirtualClock>();
    m_register = std::make_unique<SimulatedRegister>(serial, *m_clock, 1);
    library().connector = [this](const QByteArray &, Velno::GMP::MatchExt *record,
                                 std::unique_ptr<QIODevice> *connection) {
        return m_register->connect(record, connection);
    };
    QCOMPARE(velnoext_set_answer_limit(120'000), 0);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 0);
}

void TestSimulatedRegister::cleanup()
{
    QCOMPARE(velnoext_set_answer_limit(noTimeLimit), 0);
    velnoext_close_all();
    library().connector = nullptr;
    library().pairingRecords.clear();
    m_register.reset();
}

/** One receipt of 25.00, up to its payment. */
int TestSimulatedRegister::sell()
{
    VelnoSaleItem item = bread();
    VelnoEcrSaleTotals totals = {};
    if (const int code = velnoext_start_sale(brief); code != 0)
        return code;
    if (const int code = velnoext_add_sale_item(brief, &item, &totals); code != 0)
        return code;
    return totals.values[VelnoTotal_ToPay] == 2500 ? 0 : -1;
}

/** What becomes of the next command of this name. */
void TestSimulatedRegister::decideOnce(const char *command, const Fate &fate)
{
    m_register->decide = [command, fate, isOver = false](const Simulator::CommandRow &row,
                                                         const Velno::GMP::Items &) mutable {
        if (isOver || qstrcmp(row.name, command) != 0)
            return Fate();
        isOver = true;
        return fate;
    };
}

void TestSimulatedRegister::sells()
{
    QCOMPARE(sell(), 0);
    const Simulator::ReceiptRef ref = m_register->model().saleReference();
    QCOMPARE(velnoext_add_payment(VelnoPaymentKey_F10, 1000), 0);
    int first = 0;
    VelnoEcrSaleTotals totals = {};
    VelnoReceiptRef receipt = {};
    QCOMPARE(velnoext_sale_state(brief, &first, &totals, &receipt), 0);
    QCOMPARE(totals.values[VelnoTotal_Cash], 1000);
    QCOMPARE(velnoext_end_sale(VelnoPaymentKey_F11), 0);
    QCOMPARE(velnoext_receipt_data(brief, &receipt, &totals), 0);
    QCOMPARE(totals.values[VelnoTotal_Card], 1500);
    QVERIFY(m_register->model().receipt(ref));
}

void TestSimulatedRegister::lostAnswer_data()
{
    QTest::addColumn<bool>("done");

    QTest::newRow("done and unheard") << true;
    QTest::newRow("not done") << false;
}

void TestSimulatedRegister::lostAnswer()
{
    QFETCH(const bool, done);
    Fate fate;
    fate.isDone = done;
    fate.answer = Fate::Answer::Lost;
    decideOnce("item", fate);
    QCOMPARE(sell(), 2);
    QCOMPARE(velnoext_cause(), int(VelnoCause_ClosedWhileWaiting));
    QCOMPARE(m_register->model().saleTotals().items, done ? 1 : 0);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 0); // the keys are known
}

void TestSimulatedRegister::damagedAnswers_data()
{
    QTest::addColumn<Fate::Answer>("answer");
    QTest::addColumn<int>("code");

    QTest::newRow("other MAC") << Fate::Answer::Damaged << 11;
    QTest::newRow("too short") << Fate::Answer::Short << 5;
}

void TestSimulatedRegister::damagedAnswers()
{
    QFETCH(const Fate::Answer, answer);
    Fate fate;
    fate.answer = answer;
    decideOnce("item", fate);
    QTEST(sell(), "code");
    QCOMPARE(m_register->model().saleTotals().items, 1);
    QCOMPARE(velnoext_login(brief), 0);
}

void TestSimulatedRegister::silenceEndsWithTheLimit()
{
    Fate fate;
    fate.isDone = false;
    fate.answer = Fate::Answer::Never;
    decideOnce("login", fate);
    const qint64 before = m_clock->passed();
    QCOMPARE(velnoext_login(brief), 2);
    QVERIFY(m_clock->passed() >= before + 120'000);
    QCOMPARE(velnoext_login(brief), 2);
    QVERIFY(m_clock->passed() < before + 240'000);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 0);
}

void TestSimulatedRegister::silenceIsNoticedBehindKeys()
{
    QCOMPARE(sell(), 0);
    Fate fate;
    fate.isDone = false;
    fate.answer = Fate::Answer::Never;
    decideOnce("change-state", fate);
    const qint64 before = m_clock->passed();
    QCOMPARE(velnoext_add_payment(VelnoPaymentKey_F10, 1000), 0);
    QVERIFY(m_clock->passed() < before + 1000); // nobody waits for an answer to keys
    QCOMPARE(velnoext_login(brief), 2);
    QVERIFY(m_clock->passed() >= before + 120'000);
    QCOMPARE(m_register->model().saleTotals().cash, 0);
}

void TestSimulatedRegister::refusalIsNotDone()
{
    Fate fate;
    fate.isRefused = true;
    decideOnce("item", fate);
    QCOMPARE(sell(), 8);
    QCOMPARE(m_register->model().saleTotals().items, 0);
    decideOnce("state", fate); // which has no way to say no
    int state = 0;
    QCOMPARE(velnoext_ecr_state(brief, &state), 0);
    QCOMPARE(state, int(VelnoEcrState_SaleOpen));
}

void TestSimulatedRegister::powerCutCancelsTheSale()
{
    QCOMPARE(sell(), 0);
    m_register->cutPower();
    QCOMPARE(velnoext_login(brief), 2);
    QCOMPARE(connectIt(), 0);
    int state = 0;
    QCOMPARE(velnoext_ecr_state(brief, &state), 0);
    QCOMPARE(state, int(VelnoEcrState_Idle));
}

void TestSimulatedRegister::lostKeysEndTheConnection()
{
    m_register->forgetKeys();
    QCOMPARE(velnoext_login(brief), 2);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 2);
    QCOMPARE(velnoext_forget_device(serial), 0);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 0);
}

void TestSimulatedRegister::replacedRegisterRemembersNothing()
{
    QVERIFY(m_register->model().setZNumber(12));
    m_register->replace();
    QCOMPARE(m_register->models().size(), 2U);
    QCOMPARE(m_register->models().front().zNumber(), 12);
    QCOMPARE(connectIt(), 0);
    QCOMPARE(velnoext_login(brief), 2); // the keys went with the old one
    QCOMPARE(velnoext_forget_device(serial), 0);
    QCOMPARE(connectIt(), 0);
    int z = 0;
    QCOMPARE(velnoext_current_z(brief, &z), 0);
    QCOMPARE(z, 1);
}

void TestSimulatedRegister::timeIsTheClocks()
{
    int before = 0;
    int behind = 0;
    QCOMPARE(velnoext_ecr_datetime(brief, &before), 0);
    QCOMPARE(before, int(m_clock->now().toSecsSinceEpoch()));
    QVERIFY(m_clock->pause(90'000));
    QCOMPARE(velnoext_ecr_datetime(brief, &behind), 0);
    QCOMPARE(behind, before + 90);
    m_clock->setRunning(false);
    QVERIFY(!m_clock->pause(1));
}

QTEST_GUILESS_MAIN(TestSimulatedRegister)

#include "tst_simulated_register.moc"
