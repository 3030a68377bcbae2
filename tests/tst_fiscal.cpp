// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/fiscal_model.h"
#include "simulator/register/command_table.h"
#include "simulator/register/model_settings.h"

#include <QDateTime>
#include <QTest>

#include <limits>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** The model of a register, alone: its states, what it allows in each, and what its operator may set. */
class TestFiscal : public QObject
{
    Q_OBJECT

private slots:
    void itStartsIdle();
    void statesAreNumberedInOrder();
    void aStateAllows_data();
    void aStateAllows();
    void loginIsRepeatable();
    void aSaleKeepsTheSession();
    void theClockRunsUntilItIsStopped();
    void settingsAreStrict_data();
    void settingsAreStrict();
    void everySettingChangesTheModel_data();
    void everySettingChangesTheModel();
    void commandsHaveNumbersAndNames();
};

void TestFiscal::itStartsIdle()
{
    const FiscalModel model;
    QCOMPARE(model.state(), State::Idle);
    QVERIFY(model.saleSteps().empty());
    QCOMPARE(model.error(), 0);
    QCOMPARE(model.zNumber(), 1);
    QCOMPARE(model.lastZ(), 0);
    QCOMPARE(model.saleLimit(), 1'200'000);
    QVERIFY(model.hasPaper());
    QVERIFY(!model.isLoggedIn());
}

// Options and lines name states by number, so none may be left out.
void TestFiscal::statesAreNumberedInOrder()
{
    int number = 0;
    for (const StateRow &row : stateTable())
        QCOMPARE(int(row.state), number++);
    QCOMPARE(number, int(State::OutOfService) + 1);
}

void TestFiscal::aStateAllows_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("login");
    QTest::addColumn<bool>("logout");
    QTest::addColumn<bool>("z");
    QTest::addColumn<bool>("sale");
    const auto row = [](const char *name, State state, bool login, bool logout, bool z, bool sale) {
        QTest::newRow(name) << int(state) << login << logout << z << sale;
    };
    row("starting", State::Starting, false, true, false, false);
    row("idle", State::Idle, true, true, true, false);
    row("locked", State::Locked, true, true, true, false);
    row("menu", State::Menu, true, true, true, false);
    row("paying", State::Paying, true, false, true, false);
    row("sale open", State::SaleOpen, true, false, true, true);
    row("reporting", State::Reporting, true, true, true, false);
    row("idle, other screen", State::IdleOtherScreen, true, true, true, false);
    row("out of service", State::OutOfService, false, true, false, false);
}

void TestFiscal::aStateAllows()
{
    QFETCH(const int, state);
    FiscalModel model;
    model.setState(State(state));
    QTEST(model.login(), "login");
    QTEST(model.isLoggedIn(), "login");
    QTEST(model.logout(), "logout");
    QTEST(model.tellsZ(), "z");
    QTEST(model.saleSteps() == std::vector<std::int32_t>{1}, "sale");
}

void TestFiscal::loginIsRepeatable()
{
    FiscalModel model;
    QVERIFY(model.login());
    QVERIFY(model.login());
    QVERIFY(model.logout());
    QVERIFY(!model.isLoggedIn());
    QVERIFY(model.logout());
}

void TestFiscal::aSaleKeepsTheSession()
{
    FiscalModel model;
    QVERIFY(model.login());
    model.setState(State::SaleOpen);
    QVERIFY(!model.logout());
    QVERIFY(model.isLoggedIn());
    model.setState(State::OutOfService);
    QVERIFY(!model.login());
    QVERIFY(model.isLoggedIn()); // refusing a second one does not end the first
}

void TestFiscal::theClockRunsUntilItIsStopped()
{
    FiscalModel model;
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const qint64 shown = model.now();
    const qint64 after = QDateTime::currentSecsSinceEpoch();
    QVERIFY(before <= shown && shown <= after);
    model.stopClockAt(1'700'000'000);
    QCOMPARE(model.now(), 1'700'000'000);
}

void TestFiscal::settingsAreStrict_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("error");
    const auto rows = [](const QString &error, std::initializer_list<const char *> lines) {
        for (const char *line : lines)
            QTest::newRow(line) << QString::fromLatin1(line) << error;
    };
    rows({}, {"state 0", "state 8", "z 1", "z 2147483647", "last-z 2147483647", "clock 0",
              "sale-limit 9223372036854775807", "paper on", "paper off", "state  7"});
    rows(u"N: 0 to 8"_s, {"state", "state ", "state 9", "state -1", "state +1", "state idle", "state 1 2"});
    rows(u"N: 1 to 2147483647"_s, {"z 0", "z 2147483648", "z 0x1", "z 1.0"});
    rows(u"SECONDS: 0 to 2147483647"_s, {"last-z 2147483648", "clock now"});
    rows(u"KURUS: 0 to 9223372036854775807"_s, {"sale-limit 9223372036854775808", "sale-limit 12.50"});
    rows(u"on or off"_s, {"paper", "paper ON", "paper on off"});
}

void TestFiscal::settingsAreStrict()
{
    QFETCH(const QString, line);
    QFETCH(const QString, error);
    FiscalModel model;
    const SettingOutcome outcome = obeySettingLine(line, model);
    QVERIFY(outcome.known);
    QCOMPARE(outcome.error.isEmpty(), error.isEmpty());
    QVERIFY2(outcome.error.endsWith(error), qPrintable(outcome.error));
    if (error.isEmpty())
        return;
    QCOMPARE(model.state(), State::Idle);
    QCOMPARE(model.zNumber(), 1);
    QCOMPARE(model.saleLimit(), 1'200'000);
    QVERIFY(model.hasPaper());
}

void TestFiscal::everySettingChangesTheModel_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<qint64>("value");
    QTest::newRow("state") << u"state 7"_s << qint64(7);
    QTest::newRow("z") << u"z 42"_s << qint64(42);
    QTest::newRow("last-z") << u"last-z 1700000001"_s << qint64(1'700'000'001);
    QTest::newRow("clock") << u"clock 1700000002"_s << qint64(1'700'000'002);
    QTest::newRow("sale-limit") << u"sale-limit 5000000000"_s << qint64(5'000'000'000);
    QTest::newRow("paper") << u"paper off"_s << qint64(0);
}

void TestFiscal::everySettingChangesTheModel()
{
    QFETCH(const QString, line);
    QFETCH(const qint64, value);
    const QHash<QString, std::function<qint64(const FiscalModel &)>> read{
        {u"state"_s, [](const FiscalModel &model) { return qint64(model.state()); }},
        {u"z"_s, [](const FiscalModel &model) { return qint64(model.zNumber()); }},
        {u"last-z"_s, [](const FiscalModel &model) { return qint64(model.lastZ()); }},
        {u"clock"_s, [](const FiscalModel &model) { return qint64(model.now()); }},
        {u"sale-limit"_s, [](const FiscalModel &model) { return qint64(model.saleLimit()); }},
        {u"paper"_s, [](const FiscalModel &model) { return qint64(model.hasPaper()); }},
    };
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    FiscalModel model;
    QVERIFY(read.value(name)(model) != value);
    QVERIFY(obeySettingLine(line, model).error.isEmpty());
    QCOMPARE(read.value(name)(model), value);
    FiscalModel untouched;
    QVERIFY(!obeySettingLine(u"nonsense 1"_s, untouched).known);
}

void TestFiscal::commandsHaveNumbersAndNames()
{
    const QStringList commands{
        u"state"_s,      u"login"_s,     u"logout"_s,        u"change-state"_s, u"item"_s,    u"delete"_s,
        u"sale-state"_s, u"receipt"_s,   u"paper"_s,         u"medical"_s,      u"section"_s, u"report"_s,
        u"z"_s,          u"print"_s,     u"end-invoice"_s,   u"sale-limit"_s,   u"items"_s,   u"last-z"_s,
        u"datetime"_s,   u"acquirers"_s, u"sale-acquirers"_s};
    QCOMPARE(qsizetype(commandTable().size()), commands.size());
    for (const CommandRow &row : commandTable()) {
        QCOMPARE(QString::fromLatin1(row.name), commands.value(row.code));
        QCOMPARE(commandByCode(row.code), &row);
        QCOMPARE(commandByName(commands.value(row.code)), &row);
    }
    for (const int unknown : {-1, 21, 22, std::numeric_limits<int>::max()})
        QVERIFY(!commandByCode(unknown));
    QVERIFY(!commandByName(u"State"_s));
    QVERIFY(!commandByName({}));
}

QTEST_GUILESS_MAIN(TestFiscal)
#include "tst_fiscal.moc"
