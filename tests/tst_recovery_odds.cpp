extern "C" {
#include "examples/c/recovery.h"
}
#include "tests/support/register_double.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

/** The recovery of examples/c under more mishaps than real connections have time for. */
class TestRecoveryOdds : public QObject
{
    Q_OBJECT

private slots:
    void everySaleCountsOnce_data();
    void everySaleCountsOnce();
};

namespace {

constexpr int salesPerRow = 3000;
constexpr int mostPatience = 2000; ///< of a cashier, in tries for one sale
constexpr unsigned long long anybody = 11'111'111'111;

/** A cashier who does what the header of recovery.h says, and looks at the register when asked to. */
class Cashier
{
public:
    explicit Cashier(RegisterDouble &reg)
        : m_reg(reg)
        , m_sale(std::make_unique<Sale>())
    {
        m_place.serial = "UB1234567890";
        m_place.address = "127.0.0.1";
        m_sale->reg = &m_place;
        connectRegister(&m_place);
    }

    /** @return what is wrong with it on the register, or empty */
    QString sell(int number)
    {
        m_tries = 0;
        m_lines.clear();
        m_earlier = m_reg.receipts.size();
        const bool isWanted = m_reg.random().bounded(10) > 0;
        begin();
        fill(number);
        isWanted ? payAndEnd() : giveUp();
        return audit(number, isWanted);
    }

    int asked() const { return m_asked; }

private:
    /** Until it is settled. @return the code that it ended with */
    int settle(int code)
    {
        while (saleIsPending(m_sale.get()) && ++m_tries < mostPatience)
            if (m_sale->undecided)
                code = saleDecide(m_sale.get(), isClosedOnPaper());
            else
                code = saleGoOn(m_sale.get());
        return code;
    }

    bool isClosedOnPaper()
    {
        ++m_asked;
        return m_reg.receipts.at(m_sale->receipt.second - 1).status == RegisterDouble::Status::Closed;
    }

    /** Types it again as long as it is refused. @return the code */
    int insist(const std::function<int(Sale *)> &step)
    {
        int code = 0;
        do
            code = settle(step(m_sale.get()));
        while (code != 0 && code != saleBegunAgain && ++m_tries < mostPatience);
        return code;
    }

    void begin()
    {
        insist([](Sale *sale) { return saleStart(sale, 0); });
    }

    void add(const QString &name)
    {
        VelnoSaleItem item = {};
        item.price = RegisterDouble::priceOfAll;
        item.quantity = 1000;
        item.section = 1;
        qstrncpy(item.name, qPrintable(name), sizeof item.name);
        insist([&](Sale *sale) { return saleAddItem(sale, &item); });
        m_lines << name;
    }

    void fill(int number)
    {
        for (int line = 0, count = m_reg.random().bounded(1, 5); line < count; ++line)
            add(u"%1.%2"_s.arg(number).arg(line));
        if (m_reg.random().bounded(4) == 0 && m_lines.size() > 1) {
            insist(saleDeleteLast);
            m_lines.removeLast();
        }
        if (m_reg.random().bounded(8) == 0)
            insist([](Sale *sale) { return saleSetMedical(sale, 300, anybody); });
    }

    void payAndEnd()
    {
        const bool byCard = m_reg.random().bounded(2) == 0;
        const int parts = m_reg.random().bounded(3);
        int code = 0;
        do {
            code = 0;
            for (int i = 0; i < parts && code == 0; ++i)
                code = insist([&](Sale *sale) { return salePay(sale, byCard, 100); });
            if (code == 0)
                code = insist([&](Sale *sale) { return saleEnd(sale, byCard); });
        } while (code == saleBegunAgain && m_tries < mostPatience);
    }

    void giveUp()
    {
        insist([](Sale *sale) {
            return sale->status == SaleCancelled || sale->status == SaleDoubtful ? 0 : saleCancel(sale);
        });
    }

    QString audit(int number, bool isWanted) const
    {
        int times = 0;
        for (qsizetype i = m_earlier; i < m_reg.receipts.size(); ++i) {
            const RegisterDouble::Receipt &receipt = m_reg.receipts.at(i);
            if (receipt.status != RegisterDouble::Status::Closed)
                continue;
            ++times;
            if (receipt.lines != m_lines)
                return u"sale %1 has the lines %2 instead of %3"_s.arg(
                    QString::number(number), receipt.lines.join(u' '), m_lines.join(u' '));
        }
        if (times == (isWanted ? 1 : 0) && !m_reg.open() && m_tries < mostPatience)
            return {};
        return u"sale %1 counts %2 times, after %3 tries"_s.arg(number).arg(times).arg(m_tries);
    }

    RegisterDouble &m_reg;
    Register m_place = {};
    std::unique_ptr<Sale> m_sale;
    QStringList m_lines;     ///< that the customer has bought
    qsizetype m_earlier = 0; ///< receipts before this sale
    int m_tries = 0;
    int m_asked = 0;
};

} // namespace

void TestRecoveryOdds::everySaleCountsOnce_data()
{
    QTest::addColumn<Hindrances>("hindrances");
    const Hindrances cuts{.lostAnswers = 20, .lostCommands = 20, .powerCuts = 20, .unreadable = 20};
    const auto with = [&cuts](const std::function<void(Hindrances &)> &change) {
        Hindrances hindrances = cuts;
        change(hindrances);
        return hindrances;
    };
    QTest::newRow("nothing") << Hindrances();
    QTest::newRow("cuts") << cuts;
    for (const int refusals : {20, 100, 300, 500})
        QTest::addRow("cuts, and refusals of %d in 1000", refusals)
            << with([=](Hindrances &all) { all.refusals = refusals; });
    QTest::newRow("cuts, and lost keys") << with([](Hindrances &all) { all.lostKeys = 5; });
    QTest::newRow("cuts, and receipts not told of for a while")
        << with([](Hindrances &all) { all.outages = 50, all.outageLength = 1000; });
    QTest::newRow("cuts, and receipts told of late") << with([](Hindrances &all) { all.recordDelay = 400; });
    QTest::newRow("all of it") << with([](Hindrances &all) {
        all.refusals = 100;
        all.outages = 50, all.outageLength = 500;
        all.recordDelay = 200;
    });
}

void TestRecoveryOdds::everySaleCountsOnce()
{
    QFETCH(const Hindrances, hindrances);
    RegisterDouble reg(8, hindrances);
    Cashier cashier(reg);
    int wrong = 0;
    for (int number = 1; number <= salesPerRow; ++number)
        if (const QString problem = cashier.sell(number); !problem.isEmpty()) {
            ++wrong;
            qWarning("%s", qPrintable(problem));
        }
    const int mishaps = hindrances.refusals + hindrances.outages + hindrances.recordDelay;
    qInfo("%d wrong; %d sales cut, %d closed receipts refused, a person asked %d times", wrong, reg.cuts,
          reg.misled, cashier.asked());
    QCOMPARE(wrong, 0);
    QVERIFY(hindrances.powerCuts == 0 || reg.cuts > 100);
    QVERIFY(hindrances.lostKeys == 0 || reg.pairings > 100);
    QVERIFY(mishaps == 0 || reg.misled > 50);
}

QTEST_GUILESS_MAIN(TestRecoveryOdds)
#include "tst_recovery_odds.moc"
