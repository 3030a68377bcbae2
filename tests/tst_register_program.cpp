// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/pace.h"
#include "simulator/register/register_options.h"
#include "tests/support/library_test.h"
#include "tests/support/program_run.h"
#include "tests/support/shop.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QTcpServer>
#include <QTest>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace Simulator;
using namespace TestSupport;
using namespace std::chrono_literals;

/** velno-register as a service for tests: it ends after so many sales, takes its time, plays several
 * registers. */
class TestRegisterProgram : public LibraryTest
{
    Q_OBJECT

private slots:
    void itEndsBehindTheLastSale_data();
    void itEndsBehindTheLastSale();
    void paceIsReadStrictly_data();
    void paceIsReadStrictly();
    void workTakesItsTime_data();
    void workTakesItsTime();
    void aCardTakesLongerThanItsAnswer();
    void faultsDoNotEndAConnectionAtWork();
    void serialsCountUp_data();
    void serialsCountUp();
    void severalRegistersSellSideBySide();
    void aLineIsForOneOrForAll();
    void wrongUsageIsRefused_data();
    void wrongUsageIsRefused();
};

namespace {

void sell(int type = cash)
{
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(2500), 0);
    QCOMPARE(velnoext_end_sale(type), 0);
    QCOMPARE(state(), 1);
}

qsizetype count(const ChildProgram &program, const QString &event)
{
    return std::ranges::count(program.events(), event,
                              [](const QJsonObject &object) { return object.value(u"event"_s).toString(); });
}

/** The first of so many ports behind each other that nobody has. */
quint16 freePorts(int count)
{
    for (;;) {
        std::vector<std::unique_ptr<QTcpServer>> taken;
        const quint16 first = freePort();
        for (int i = 0; i < count && first + i <= 65535; ++i) {
            taken.push_back(std::make_unique<QTcpServer>());
            if (!taken.back()->listen(QHostAddress::LocalHost, quint16(first + i)))
                break;
        }
        if (int(taken.size()) == count && taken.back()->isListening())
            return first;
    }
}

/** Three registers, UB0000000009 and those behind it, and the library connected to each. */
class Shops
{
public:
    static constexpr int count = 3;

    explicit Shops(const QStringList &arguments = {})
        : port(freePorts(count))
        , program(SimulatedRegister::program(),
                  QStringList{u"--serial"_s, QString::fromLatin1(serials[0]), u"--connect"_s,
                              u"127.0.0.1:%1"_s.arg(port), u"--registers"_s, QString::number(count)} +
                      arguments)
    {
    }

    int connect(int which)
    {
        return velnoext_initialize(5, serials[size_t(which)], "127.0.0.1", quint16(port + which), patience);
    }

    static constexpr std::array serials{"UB0000000009", "UB0000000010", "UB0000000011"};

    const quint16 port;
    ChildProgram program;
};

} // namespace

void TestRegisterProgram::itEndsBehindTheLastSale_data()
{
    QTest::addColumn<int>("sales");
    QTest::newRow("one") << 1;
    QTest::newRow("two") << 2;
}

void TestRegisterProgram::itEndsBehindTheLastSale()
{
    QFETCH(const int, sales);
    Shop shop({u"--sales"_s, QString::number(sales)});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(2500), 0);
    QCOMPARE(velnoext_cancel_sale(patience), 0); // which is none
    for (int i = 0; i < sales; ++i)
        sell();
    QCOMPARE(receipt({1, sales + 1}), 0); // there is time to ask
    QCOMPARE(shop.reg.waitForExit(), 0);
    QCOMPARE(count(shop.reg, u"printed"_s), sales + 1);
    QCOMPARE(shop.reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestRegisterProgram::paceIsReadStrictly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("answer"); // ms of a pairing; -1: refused
    for (const auto &[text, answer] :
         {std::pair("real", 500), std::pair("1", 500), std::pair("2.5", 200), std::pair("0.1", 5000),
          std::pair("1000", 1), std::pair("", -1), std::pair("0", -1), std::pair("0.09", -1),
          std::pair("1001", -1), std::pair("-1", -1), std::pair("1e2", -1), std::pair("1,5", -1),
          std::pair("Real", -1), std::pair(" 1", -1), std::pair("nan", -1)})
        QTest::newRow(*text ? text : "nothing") << QString::fromLatin1(text) << answer;
}

void TestRegisterProgram::paceIsReadStrictly()
{
    QFETCH(const QString, text);
    QFETCH(const int, answer);
    const auto pace = Pace::from(text);
    QCOMPARE(pace ? int(pace->forPairingAnswer().count()) : -1, answer);
}

void TestRegisterProgram::workTakesItsTime_data()
{
    QTest::addColumn<Work>("work");
    QTest::addColumn<int>("time"); // ms
    QTest::newRow("an item") << Work{} << 40;
    QTest::newRow("cash") << Work{.cash = true} << 3040;
    QTest::newRow("a card") << Work{.card = true} << 8040;
    QTest::newRow("a receipt paid in cash") << Work{.lines = 20, .prints = 1, .cash = true} << 4640;
    QTest::newRow("an X report") << Work{.lines = 30, .prints = 1} << 2240;
    QTest::newRow("a Z report") << Work{.lines = 30, .prints = 1, .report = true} << 7240;
}

void TestRegisterProgram::workTakesItsTime()
{
    QFETCH(const Work, work);
    QFETCH(const int, time);
    QCOMPARE(Pace::from(u"real"_s)->forCommand(work), std::chrono::milliseconds(time));
    QCOMPARE(Pace::from(u"20"_s)->forCommand(work), std::chrono::milliseconds(time / 20));
    QCOMPARE(Pace().forCommand(work), 0ms);
}

void TestRegisterProgram::aCardTakesLongerThanItsAnswer()
{
    Shop shop({u"--speed"_s, u"20"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(2500), 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(velnoext_end_sale(card), 0); // is not waited for
    QCOMPARE(state(), 1);
    QVERIFY2(timer.elapsed() >= 400, qPrintable(QString::number(timer.elapsed())));
    timer.start();
    QCOMPARE(velnoext_z_report(), 0);
    QVERIFY2(timer.elapsed() >= 250, qPrintable(QString::number(timer.elapsed())));
}

void TestRegisterProgram::faultsDoNotEndAConnectionAtWork()
{
    Shop shop({u"--speed"_s, u"10"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(2500), 0);
    QCOMPARE(velnoext_end_sale(card), 0);
    QVERIFY(!shop.reg.waitFor(u"printed"_s).isEmpty()); // it is at work for 0.8 s from now
    QVERIFY(shop.reg.setFault(u"refuse=z"_s));
    QCOMPARE(state(), 1);
    int z = 0;
    QCOMPARE(velnoext_current_z(patience, &z), 8);
}

void TestRegisterProgram::serialsCountUp_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<int>("places");
    QTest::addColumn<QByteArray>("found");
    QTest::newRow("itself") << "UB0000000009"_ba << 0 << "UB0000000009"_ba;
    QTest::newRow("without digits, itself") << "VELNOABCDEFG"_ba << 0 << "VELNOABCDEFG"_ba;
    QTest::newRow("over a ten") << "UB0000000009"_ba << 1 << "UB0000000010"_ba;
    QTest::newRow("behind letters") << "VELNO-AB0998"_ba << 1 << "VELNO-AB0999"_ba;
    QTest::newRow("the last one") << "VELNO-ABC998"_ba << 1 << "VELNO-ABC999"_ba;
    QTest::newRow("no further") << "VELNO-ABC998"_ba << 2 << QByteArray();
    QTest::newRow("no digits") << "VELNOABCDEFG"_ba << 1 << QByteArray();
    QTest::newRow("the highest of all") << "UB9999999999"_ba << 1 << QByteArray();
}

void TestRegisterProgram::serialsCountUp()
{
    QFETCH(const QByteArray, first);
    QFETCH(const int, places);
    QFETCH(const QByteArray, found);
    QCOMPARE(serialBehind(first, places), found);
}

void TestRegisterProgram::severalRegistersSellSideBySide()
{
    Shops shops({u"--sales"_s, u"4"_s});
    QCOMPARE(shops.program.events().first().value(u"registers"_s), Shops::count);
    for (int i = Shops::count - 1; i >= 0; --i) {
        QCOMPARE(shops.connect(i), 0);
        QCOMPARE(velnoext_start_sale(patience), 0);
        QCOMPARE(addItem(1000 + i), 0);
    }
    for (int i = 0; i < Shops::count; ++i) { // each knows its own sale
        velnoext_set_active_device(Shops::serials[size_t(i)]);
        const SaleState sale = saleState();
        QCOMPARE(sale.totals.first(), 1000 + i);
        QCOMPARE(sale.ref.first, 1);
        QCOMPARE(sale.ref.second, 1);
        QCOMPARE(velnoext_end_sale(cash), 0);
        QCOMPARE(state(), 1);
        const QJsonObject printed = shops.program.waitFor(u"printed"_s);
        QCOMPARE(printed.value(u"serial"_s), QLatin1StringView(Shops::serials[size_t(i)]));
    }
    velnoext_set_active_device(Shops::serials[1]);
    QCOMPARE(velnoext_z_report(), 0);
    const QString report = squeezed(
        shops.program.waitFor(u"printed"_s).value(u"lines"_s).toVariant().toStringList().join(u'\n'));
    QVERIFY2(report.contains(u"\nGÜNLÜK TOPLAM *10,01\n"_s), qPrintable(report)); // of this one alone
    for (int i = 0; i < Shops::count; ++i) {
        velnoext_set_active_device(Shops::serials[size_t(i)]);
        int z = 0;
        QCOMPARE(velnoext_current_z(patience, &z), 0);
        QCOMPARE(z, i == 1 ? 2 : 1);
        QList<long long> values;
        QCOMPARE(receipt({1, 1}, &values), 0);
        QCOMPARE(values.first(), 1000 + i);
    }
    sell(); // the fourth
    QCOMPARE(shops.program.waitForExit(), 0);
}

void TestRegisterProgram::aLineIsForOneOrForAll()
{
    Shops shops({u"--control"_s, u"0"_s});
    const auto zOf = [&shops](int which) {
        int z = 0;
        const int connected = shops.connect(which);
        return connected == 0 ? velnoext_current_z(patience, &z) : -connected;
    };
    shops.program.say("UB0000000010 fault refuse=z");
    QJsonObject event = shops.program.waitFor(u"fault"_s);
    QCOMPARE(event.value(u"serial"_s), u"UB0000000010"_s);
    QCOMPARE(zOf(0), 0);
    QCOMPARE(zOf(1), 8);
    QCOMPARE(zOf(2), 0);
    shops.program.say("fault refuse=z");
    for (int i = 0; i < Shops::count; ++i)
        QCOMPARE(shops.program.waitFor(u"fault"_s).value(u"active"_s), QJsonArray{u"refuse=z"_s});
    QCOMPARE(zOf(2), 8);
    shops.program.say("UB0000000012 fault none"); // which is not among them
    event = shops.program.waitFor(u"error"_s);
    QVERIFY(event.value(u"message"_s).toString().contains("is no command"_L1));
}

void TestRegisterProgram::wrongUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *arguments, const char *message) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments).split(u' ') << QByteArray(message);
    };
    row("--sales 0", "--sales \"0\": accepted is 1 to 1000000000");
    row("--sales x", "--sales \"x\": accepted is 1 to 1000000000");
    row("--speed 0", "--speed \"0\": accepted is real, or how many times as fast: 0.1 to 1000");
    row("--registers 0", "--registers \"0\": accepted is 1 to 10000");
    row("--registers 10001", "--registers \"10001\": accepted is 1 to 10000");
    row("--registers 2 --once", "--registers 2: --once is for one register alone");
    row("--registers 2 --journal x", "--registers 2: --journal is for one register alone");
    row("--registers 6", "--registers 6: each has a port of its own, from 65531 up to 65535 at most");
    row("--serial UB9999999999 --registers 2",
        "--registers 2: --serial must end in digits that can be counted up so far");
}

void TestRegisterProgram::wrongUsageIsRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    checkWrongUsage(SimulatedRegister::program(),
                    QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:65531"_s} +
                        arguments,
                    message);
}

QTEST_GUILESS_MAIN(TestRegisterProgram)
#include "tst_register_program.moc"
