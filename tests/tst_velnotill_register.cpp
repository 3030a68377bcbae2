// SPDX-License-Identifier: Apache-2.0

#include "tests/support/open_till.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QJsonObject>
#include <QTest>

#include <future>
#include <vector>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnotill.h against the real velno-register. */
class TestVelnotillRegister : public QObject
{
    Q_OBJECT

private slots:
    void receiptIsSoldOnceHoweverOftenItIsHandedOver();
    void manyThreadsSellOneReceiptOnce();
    void laterProcessSellsNothingTwice();
    void ordersAreDoneAsAccepted();
    void stagesAreTold();
    void reportsAreMadeOncePerKey();
    void slipIsPrintedOncePerKey();
    void refusedReceiptSellsNothing();
    void listenerGoesWithItsTill();
    void registerThatComesBackIsSoldTo();
};

namespace {

int sell(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome)
{
    *outcome = emptyOutcome();
    return velnotill_sell(till, key, json, outcome);
}

/** How many receipts the register has closed, by the number of the next one. */
int receiptsOf(VelnoTill *till, const char *key)
{
    VelnoTillOutcome outcome;
    return sell(till, key, aReceipt, &outcome) == 0 ? outcome.reference.second - 1 : -1;
}

void keepStage(const char *, int stage, const VelnoTillOutcome *, void *stages)
{
    static_cast<QList<int> *>(stages)->append(stage);
}

} // namespace

void TestVelnotillRegister::receiptIsSoldOnceHoweverOftenItIsHandedOver()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    VelnoTillOutcome first;
    QCOMPARE(sell(till, "a", aReceipt, &first), int(VelnoTillResult_Done));
    QCOMPARE(first.state, int(VelnoTillState_Closed));
    QCOMPARE(first.paper, int(VelnoTillPaper_Printed));
    QCOMPARE(first.reference.first, 1);
    QCOMPARE(first.reference.second, 1);
    QCOMPARE(first.totals.values[VelnoTotal_ToPay], 1250LL);
    QCOMPARE(first.totals.values[VelnoTotal_Cash], 1250LL);
    QCOMPARE(first.totals.number, 1);
    VelnoTillOutcome again;
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(sell(till, "a", aReceipt, &again), int(VelnoTillResult_Done));
        QCOMPARE(memcmp(&first, &again, sizeof first), 0);
    }
    QCOMPARE(sell(till, "a", anotherReceipt, &again), int(VelnoTillResult_Conflict));
    QCOMPARE(receiptsOf(till, "b"), 1);
}

void TestVelnotillRegister::manyThreadsSellOneReceiptOnce()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    VelnoTill *const handle = till;
    std::vector<std::future<VelnoTillOutcome>> sellers;
    for (int i = 0; i < 6; ++i)
        sellers.push_back(std::async(std::launch::async, [handle, i] {
            VelnoTillOutcome outcome;
            if (sell(handle, i % 2 ? "a" : "b", aReceipt, &outcome) != 0)
                outcome.state = -1;
            return outcome;
        }));
    QSet<int> numbers;
    for (auto &seller : sellers) {
        const VelnoTillOutcome outcome = seller.get();
        QCOMPARE(outcome.state, int(VelnoTillState_Closed));
        numbers << outcome.reference.second;
    }
    QCOMPARE(numbers, (QSet<int>{1, 2}));
    QCOMPARE(receiptsOf(till, "c"), 2);
}

void TestVelnotillRegister::laterProcessSellsNothingTwice()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    VelnoTillOutcome first;
    VelnoTillOutcome again;
    QCOMPARE(sell(till, "a", aReceipt, &first), int(VelnoTillResult_Done));
    QCOMPARE(till.close(), int(VelnoTillResult_Done));
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    QCOMPARE(sell(till, "a", aReceipt, &again), int(VelnoTillResult_Done));
    QCOMPARE(memcmp(&first, &again, sizeof first), 0);
    QCOMPARE(receiptsOf(till, "b"), 1);
}

void TestVelnotillRegister::ordersAreDoneAsAccepted()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    for (const char *const key : {"z", "a", "m"})
        QCOMPARE(velnotill_accept(till, key, aReceipt, nullptr), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_work(till), int(VelnoTillResult_Done));
    int number = 0;
    for (const char *const key : {"z", "a", "m"}) {
        VelnoTillOutcome outcome = emptyOutcome();
        QCOMPARE(velnotill_find(till, key, &outcome), int(VelnoTillResult_Done));
        QCOMPARE(outcome.state, int(VelnoTillState_Closed));
        QCOMPARE(outcome.reference.second, ++number);
    }
}

void TestVelnotillRegister::stagesAreTold()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    QList<int> stages;
    QCOMPARE(velnotill_set_listener(till, keepStage, &stages), int(VelnoTillResult_Done));
    VelnoTillOutcome outcome;
    QCOMPARE(sell(till, "a", R"({"items":[{"name":"Ekmek","price":"12.50","section":1}],
                                 "payments":[{"cash":"5.00"},{"card":"rest"}]})",
                  &outcome),
             int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Closed));
    qsizetype from = 0;
    for (const VelnoTillStage stage :
         {VelnoTillStage_Connecting, VelnoTillStage_Starting, VelnoTillStage_Entering,
          VelnoTillStage_CashPayment, VelnoTillStage_CardPayment, VelnoTillStage_Closing,
          VelnoTillStage_Settled}) {
        const qsizetype at = stages.indexOf(int(stage), from);
        QVERIFY2(at >= 0, velnotill_stage_name(stage));
        from = at;
    }
    QCOMPARE(velnotill_set_listener(till, nullptr, nullptr), int(VelnoTillResult_Done));
    const qsizetype before = stages.size();
    QCOMPARE(sell(till, "b", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(stages.size(), before);
}

void TestVelnotillRegister::reportsAreMadeOncePerKey()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    OpenTill till(port);
    VelnoTillOutcome outcome;
    QCOMPARE(sell(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    for (int i = 0; i < 2; ++i) {
        outcome = emptyOutcome();
        QCOMPARE(velnotill_x_report(till, "x", &outcome), int(VelnoTillResult_Done));
        QCOMPARE(outcome.state, int(VelnoTillState_Closed));
        outcome = emptyOutcome();
        QCOMPARE(velnotill_z_report(till, "z", &outcome), int(VelnoTillResult_Done));
        QCOMPARE(outcome.state, int(VelnoTillState_Closed));
        QCOMPARE(outcome.z, 1);
    }
    QCOMPARE(sell(till, "b", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.reference.first, 2); // one Z report has been made
    QStringList kinds;
    for (int i = 0; i < 4; ++i)
        kinds << reg.waitFor(u"printed"_s).value(u"kind"_s).toString();
    QCOMPARE(kinds, (QStringList{u"receipt"_s, u"x-report"_s, u"z-report"_s, u"receipt"_s}));
}

void TestVelnotillRegister::slipIsPrintedOncePerKey()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    OpenTill till(port);
    VelnoTillOutcome outcome = emptyOutcome();
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(velnotill_print_slip(till, "s", aSlip, &outcome), int(VelnoTillResult_Done));
        QCOMPARE(outcome.state, int(VelnoTillState_Closed));
        QCOMPARE(outcome.kind, int(VelnoTillKind_Slip));
    }
    QCOMPARE(velnotill_x_report(till, "x", &outcome), int(VelnoTillResult_Done));
    QCOMPARE(reg.waitFor(u"printed"_s).value(u"kind"_s).toString(), u"slip"_s);
    QCOMPARE(reg.waitFor(u"printed"_s).value(u"kind"_s).toString(), u"x-report"_s);
}

void TestVelnotillRegister::refusedReceiptSellsNothing()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port, {u"--sale-limit"_s, u"1000"_s});
    OpenTill till(port);
    VelnoTillOutcome outcome;
    QCOMPARE(sell(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Refused));
    QCOMPARE(outcome.code, int(VelnoResult_Refused));
    QCOMPARE(outcome.cause, int(VelnoCause_OverLimit));
    QCOMPARE(velnotill_x_report(till, "x", &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Closed)); // no sale is left open
}

void TestVelnotillRegister::listenerGoesWithItsTill()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    OpenTill till(port);
    QList<int> stages;
    velnotill_set_listener(till, keepStage, &stages);
    till.close();
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    VelnoTillOutcome outcome;
    QCOMPARE(sell(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(stages, QList<int>());
}

void TestVelnotillRegister::registerThatComesBackIsSoldTo()
{
    const quint16 port = freePort();
    OpenTill till(port);
    till.close();
    till.settings().connectTimeout = 200;
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    VelnoTillOutcome outcome;
    QCOMPARE(sell(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Waiting));
    QCOMPARE(outcome.code, int(VelnoResult_ConnectionFailed));
    QCOMPARE(till.close(), int(VelnoTillResult_Done));
    till.settings().connectTimeout = 20'000;
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    const SimulatedRegister reg(port);
    QCOMPARE(velnotill_work(till), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Closed));
    QCOMPARE(outcome.code, 0);
}

QTEST_GUILESS_MAIN(TestVelnotillRegister)
#include "tst_velnotill_register.moc"
