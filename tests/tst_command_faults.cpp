// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "simulator/fiscal/fiscal_model.h"
#include "simulator/register/faults.h"
#include "tests/support/library_calls.h"
#include "tests/support/peer.h"
#include "tests/support/refusal_check.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QTest>

#include <algorithm>
#include <future>
#include <iterator>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

/** The faults of velno-register that disturb commands, and the codes of the device library that they lead to.
 */
class TestCommandFaults : public LibraryTest
{
    Q_OBJECT

private slots:
    void everyFaultHasARow();
    void theLibraryAnswersWithTheFaultsCode_data();
    void theLibraryAnswersWithTheFaultsCode();
    void aFaultHitsTheCommandThatItNames_data();
    void aFaultHitsTheCommandThatItNames();
    void aRefusedZIsToldAllTheSame();
    void aMuteRegisterKeepsItsApplicationWaiting_data();
    void aMuteRegisterKeepsItsApplicationWaiting();
    void aDelayedAnswerMayBeCalledOff();
    void aStaleAnswerIsNotTheNextOne();
    void forgottenKeysTakeAnotherPairing();
    void faultsOfThePairingSpareCommands();
};

namespace {

using Query = int (*)(unsigned int timeout);

struct NamedQuery
{
    const char *name; ///< as the register calls the command
    Query run;
    int refused; ///< the code when the register says no; 0 when it cannot
};

constexpr NamedQuery queries[] = {
    {"state",
     [](unsigned int timeout) {
         int state = 0;
         return velnoext_ecr_state(timeout, &state);
     },
     0},
    {"login", velnoext_login, 8},
    {"logout", velnoext_logout, 8},
    {"paper", velnoext_check_printer_paper, 9},
    {"z",
     [](unsigned int timeout) {
         int z = 0;
         return velnoext_current_z(timeout, &z);
     },
     8},
    {"sale-limit",
     [](unsigned int timeout) {
         long long limit = 0;
         return velnoext_sale_limit(timeout, &limit);
     },
     0},
    {"last-z",
     [](unsigned int timeout) {
         int time = 0;
         return velnoext_last_z_datetime(timeout, &time);
     },
     0},
    {"datetime",
     [](unsigned int timeout) {
         int time = 0;
         return velnoext_ecr_datetime(timeout, &time);
     },
     0},
};

/** A fault and the code that every command ends with under it. */
struct FaultCode
{
    const char *fault;
    int code;
    bool stays;               ///< the connection, and with it the next command
    int oneByteAnswer = code; ///< the code of commands whose answer is one byte
};

constexpr FaultCode faultCodes[] = {
    {"bad-crc", 12, true},      {"bad-length", 2, false},      {"other-serial", 12, true},
    {"segments=1", 0, true},    {"segments=7", 0, true},       {"segments=4096", 0, true},
    {"delay=20", 0, true},      {"garbage", 2, true},          {"bad-mac", 11, true},
    {"no-mac", 12, true},       {"extra-element", 12, true},   {"short-reply", 5, true, 12},
    {"keep-alives=1", 0, true}, {"keep-alives=1000", 0, true}, {"half-frame", 2, true},
    {"huge-frame", 2, true},    {"stale-reply", 2, true},      {"forget-pairing", 2, false},
};

// These take a command's name; they have tests of their own.
constexpr const char *faultsOfOneCommand[] = {"mute", "close", "refuse", "lost-answer", "power-cut"};

// Only a sale notices these; the tests of selling do.
constexpr const char *faultsOfSales[] = {"state", "error", "sale-limit", "paper-out-after"};

} // namespace

void TestCommandFaults::everyFaultHasARow()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList manual = QString::fromUtf8(file.readAll()).split(u'\n');
    for (const Simulator::RegisterFaultRow &fault : Simulator::faultTable()) {
        const QString usage = u"| `%1` |"_s.arg(fault.usage());
        const auto line = std::ranges::find_if(manual, [&](const QString &l) { return l.startsWith(usage); });
        QVERIFY2(line != manual.end(), qPrintable(usage));
        const QString column = line->section(u'|', -2, -2).trimmed();
        const auto row = std::ranges::find_if(faultCodes, [&](const FaultCode &c) {
            return QByteArray(c.fault).split('=').first() == fault.name;
        });
        const bool listed = row != std::end(faultCodes);
        const auto isIt = [&](const char *name) { return !qstrcmp(name, fault.name); };
        const bool named =
            std::ranges::any_of(faultsOfOneCommand, isIt) || std::ranges::any_of(faultsOfSales, isIt);
        QCOMPARE(listed || named, fault.disturbs != Simulator::Disturbs::KeyExchange);
        if (listed)
            QVERIFY2(column.startsWith(QString::number(row->code)), qPrintable(*line));
        QCOMPARE(column == u"-", fault.disturbs == Simulator::Disturbs::KeyExchange);
    }
}

void TestCommandFaults::theLibraryAnswersWithTheFaultsCode_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(faultCodes)); ++i)
        QTest::newRow(faultCodes[i].fault) << i;
}

void TestCommandFaults::theLibraryAnswersWithTheFaultsCode()
{
    QFETCH(const int, index);
    const FaultCode &row = faultCodes[index];
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    const unsigned int timeout = row.code == 2 ? brief : patience;
    for (const NamedQuery &query : queries) {
        const bool oneByte = query.refused != 0 && qstrcmp(query.name, "z") != 0;
        QVERIFY(reg.setFault(QString::fromLatin1(row.fault)));
        const int code = query.run(timeout);
        QVERIFY2(code == (oneByte ? row.oneByteAnswer : row.code),
                 qPrintable(u"%1: %2"_s.arg(QLatin1StringView(query.name)).arg(code)));
        QVERIFY(reg.setFault(u"none"_s));
        if (!row.stays) {
            Ext::library().pairingRecords.clear();
            QCOMPARE(initialize("127.0.0.1", port, patience), 0);
        }
        QCOMPARE(query.run(patience), 0);
    }
}

void TestCommandFaults::aFaultHitsTheCommandThatItNames_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(queries)); ++i)
        QTest::newRow(queries[i].name) << i;
}

void TestCommandFaults::aFaultHitsTheCommandThatItNames()
{
    QFETCH(const int, index);
    const NamedQuery &query = queries[index];
    const QString name = QString::fromLatin1(query.name);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);

    if (query.refused != 0) {
        QVERIFY(reg.setFault(u"refuse="_s + name));
        for (const NamedQuery &other : queries)
            QCOMPARE(other.run(patience), &other == &query ? query.refused : 0);
        QVERIFY(reg.setFault(u"none"_s));
        QCOMPARE(query.run(patience), 0);
    }
    for (const QString &fault : {u"close="_s, u"lost-answer="_s, u"power-cut="_s}) {
        QVERIFY(reg.setFault(fault + name));
        for (const NamedQuery &other : queries)
            if (&other != &query)
                QCOMPARE(other.run(patience), 0);
        QCOMPARE(query.run(patience), 2);
        QVERIFY(reg.setFault(u"none"_s));
        QCOMPARE(query.run(patience), 2); // the connection is gone
        QCOMPARE(initialize("127.0.0.1", port, patience), 0);
        QCOMPARE(query.run(patience), 0);
    }
}

void TestCommandFaults::aRefusedZIsToldAllTheSame()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--z"_s, u"17"_s, u"--fault"_s, u"refuse=z"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    int z = 0;
    QCOMPARE(velnoext_current_z(patience, &z), 8);
    QCOMPARE(z, 17);
    QCOMPARE(reg.waitFor(u"answered"_s).value(u"accepted"_s), false);
}

void TestCommandFaults::aMuteRegisterKeepsItsApplicationWaiting_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("until the faults change") << QByteArray("fault none");
    QTest::newRow("until the register stops") << QByteArray("quit");
}

void TestCommandFaults::aMuteRegisterKeepsItsApplicationWaiting()
{
    QFETCH(const QByteArray, line);
    const quint16 port = TestSupport::freePort();
    std::future<int> waiting; // waited for at its end, when the register has gone
    SimulatedRegister reg(port, {u"--fault"_s, u"mute=state"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_login(patience), 0);
    waiting = std::async(std::launch::async, [] { return queries[0].run(1); });
    QCOMPARE(reg.waitFor(u"command"_s).value(u"command"_s), u"login"_s);
    QCOMPARE(reg.waitFor(u"command"_s).value(u"command"_s), u"state"_s);
    reg.say(line);
    QCOMPARE(waiting.get(), 2);
    if (line == "quit") {
        QCOMPARE(reg.waitForExit(), 0);
        return;
    }
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(queries[0].run(patience), 0);
}

void TestCommandFaults::aDelayedAnswerMayBeCalledOff()
{
    const quint16 port = TestSupport::freePort();
    std::future<int> waiting; // waited for at its end, when the register has gone
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QVERIFY(reg.setFault(u"delay=600000"_s));
    waiting = std::async(std::launch::async, [] { return queries[0].run(1); });
    QVERIFY(!reg.waitFor(u"command"_s).isEmpty());
    QVERIFY(reg.setFault(u"none"_s));
    QCOMPARE(waiting.get(), 2);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(queries[0].run(patience), 0);
}

void TestCommandFaults::aStaleAnswerIsNotTheNextOne()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, {u"--z"_s, u"42"_s});
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QVERIFY(reg.setFault(u"stale-reply"_s));
    int number = -1;
    QCOMPARE(velnoext_ecr_state(brief, &number), 2);
    QCOMPARE(number, -1);
    QVERIFY(reg.setFault(u"none"_s)); // the rest leaves before the faults change
    const QJsonObject late = reg.events().at(reg.events().size() - 2);
    QCOMPARE(late.value(u"event"_s), u"answered"_s);
    QCOMPARE(late.value(u"command"_s), u"state"_s);
    QCOMPARE(velnoext_current_z(patience, &number), 0);
    QCOMPARE(number, 42);
}

void TestCommandFaults::forgottenKeysTakeAnotherPairing()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    constexpr unsigned int forgetfulApplication = 14242;
    const auto connect = [port](unsigned int appNo) {
        return velnoext_initialize(appNo, serial, "127.0.0.1", port, patience);
    };
    QCOMPARE(connect(5), 0);
    QVERIFY(reg.setFault(u"forget-pairing"_s));
    QCOMPARE(velnoext_login(patience), 2);
    const QString reason = reg.waitFor(u"refused"_s).value(u"reason"_s).toString();
    QVERIFY2(reason.contains(u"holds no keys"_s), qPrintable(reason));
    QVERIFY(reg.setFault(u"none"_s));
    QCOMPARE(connect(5), 0); // the library has its keys
    QCOMPARE(velnoext_login(patience), 2);
    QCOMPARE(connect(forgetfulApplication), 0);
    velnoext_close();
    QCOMPARE(connect(forgetfulApplication), 0);
    QCOMPARE(velnoext_login(patience), 0);
}

void TestCommandFaults::faultsOfThePairingSpareCommands()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    for (const Simulator::RegisterFaultRow &fault : Simulator::faultTable()) {
        if (fault.disturbs != Simulator::Disturbs::KeyExchange)
            continue;
        const QString value = fault.takes == Simulator::Takes::ResultCode ? u"=42"_s : u"=1"_s;
        QVERIFY(reg.setFault(QString::fromLatin1(fault.name) + (fault.value ? value : QString())));
        QCOMPARE(velnoext_login(patience), 0);
    }
    for (const QString &fault : {u"mute=1"_s, u"close=1"_s}) {
        QVERIFY(reg.setFault(fault));
        QCOMPARE(velnoext_login(patience), 0);
    }
}

QTEST_GUILESS_MAIN(TestCommandFaults)
#include "tst_command_faults.moc"
