// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/queries.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QBuffer>
#include <QTest>

using namespace Velno::Ext;
using namespace TestSupport;

namespace {

using Query = std::function<int()>;
int scratch = 0;
long long scratchLimit = 0;

const QList<std::pair<const char *, Query>> &queries()
{
    static const QList<std::pair<const char *, Query>> all{
        {"login", [] { return velnoext_login(patience); }},
        {"logout", [] { return velnoext_logout(patience); }},
        {"paper", [] { return velnoext_check_printer_paper(patience); }},
        {"state", [] { return velnoext_ecr_state(patience, &scratch); }},
        {"current z", [] { return velnoext_current_z(patience, &scratch); }},
        {"last z", [] { return velnoext_last_z_datetime(patience, &scratch); }},
        {"clock", [] { return velnoext_ecr_datetime(patience, &scratch); }},
        {"sale limit", [] { return velnoext_sale_limit(patience, &scratchLimit); }}};
    return all;
}

Query queryNamed(const QString &name)
{
    for (const auto &[known, query] : queries()) {
        if (name == QLatin1String(known))
            return query;
    }
    qFatal("no such query");
}

} // namespace

class TestQueries : public LibraryTest
{
    Q_OBJECT

private slots:
    void nothingWorksBeforeInitialise();
    void serialNumberEndsWhereTheTerminalIdentityDoes_data();
    void serialNumberEndsWhereTheTerminalIdentityDoes();
    void repliesAreRead_data();
    void repliesAreRead();
    void stateWritesOnlyOnSuccess();
    void outputsStayAsTheyWereOnFailure_data();
    void outputsStayAsTheyWereOnFailure();
    void unpairedNamesAreRefused();
    void stateReadsOneMoreOnDemand();
    void hostileListTakesNoMemory();
    void refusedZNumberIsWritten();
    void nullOutputs_data();
    void nullOutputs();
    void connectionIsCheckedBeforeArguments();
};

void TestQueries::nothingWorksBeforeInitialise()
{
    for (const auto &[name, query] : queries())
        QVERIFY2(query() == 1, name);
    char buffer[17] = "untouched";
    QCOMPARE(velnoext_ecr_serialno(buffer), 1);
    QCOMPARE(velnoext_ecr_serialno(nullptr), 1);
    QCOMPARE(buffer, "untouched");
    QBuffer device;
    QVERIFY(device.open(QIODevice::ReadWrite));
    QByteArray payload;
    QVERIFY(!send_to_device(&device, "x"));
    QVERIFY(!get_from_device(brief, &device, &payload));
}

void TestQueries::serialNumberEndsWhereTheTerminalIdentityDoes_data()
{
    QTest::addColumn<QByteArray>("terminal");
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("buffer");

    QTest::newRow("12 and 12") << QByteArray(12, 't') << QByteArray(serial) << serial + hex("00") + "....";
    QTest::newRow("16 and 12") << QByteArray(16, 't') << QByteArray(serial)
                               << serial + QByteArray("....") + hex("00");
    QTest::newRow("none") << QByteArray() << QByteArray(serial) << hex("00") + "B1234567890.....";
    QTest::newRow("hostile") << QByteArray(40, 't') << QByteArray(500, 'x')
                             << QByteArray(16, 'x') + hex("00");
}

void TestQueries::serialNumberEndsWhereTheTerminalIdentityDoes()
{
    QFETCH(const QByteArray, terminal);
    QFETCH(const QByteArray, identity);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    activeRecord().terminalId = terminal;
    activeRecord().registerData = identity;
    QByteArray buffer(17, '.');
    QCOMPARE(velnoext_ecr_serialno(buffer.data()), 0);
    QTEST(buffer, "buffer");
    QCOMPARE(velnoext_ecr_serialno(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
}

void TestQueries::repliesAreRead_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");

    const auto row = [](const char *query, int code, const char *what, const QByteArray &reply, int result) {
        QTest::addRow("%s: %s", query, what) << QString::fromLatin1(query) << code << reply << result;
    };
    row("login", 1, "accepted", plain(true), 0);
    row("login", 1, "refused", plain(false), 8);
    row("logout", 2, "accepted", plain(true), 0);
    row("logout", 2, "refused", plain(false), 8);
    row("paper", 8, "there", plain(true), 0);
    row("paper", 8, "none", plain(false), 9);
    row("state", 0, "no list", plain(1, QVector<int>()), 0);
    row("state", 0, "5 and one more", plain(5, QVector<int>{1, 2}, 99), 0);
    row("state", 0, "high first byte", plain(int(0x80000001), QVector<int>()), 0);
    row("state", 0, "list missing", plain(1), 5);
    row("state", 0, "list cut", plain(1, 2, 7), 5);
    row("state", 0, "cut", hex("000001"), 5);
    row("current z", 12, "accepted", plain(true, 17), 0);
    row("current z", 12, "refused", plain(false, 17), 8);
    row("current z", 12, "cut", plain(true) + hex("000000"), 5);
    row("last z", 17, "number", plain(1'700'000'000), 0);
    row("last z", 17, "cut", hex("000000"), 5);
    row("clock", 18, "number", plain(-1), 0);
    row("clock", 18, "cut", hex("000000"), 5);
    row("sale limit", 15, "large", plain(qint64(0x1234567890)), 0);
    row("sale limit", 15, "cut", hex("00000000000000"), 5);
}

void TestQueries::repliesAreRead()
{
    QFETCH(const QString, query);
    QFETCH(const int, code);
    QFETCH(const QByteArray, reply);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    QTEST(queryNamed(query)(), "result");
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands(), QList{plain(code)});
}

void TestQueries::stateWritesOnlyOnSuccess()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    int value = 4711;
    long long limit = 4711;
    device.answerPlain(hex("000000"));
    QCOMPARE(velnoext_ecr_state(patience, &value), 5);
    QCOMPARE(velnoext_current_z(patience, &value), 5);
    QCOMPARE(velnoext_last_z_datetime(patience, &value), 5);
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 5);
    QCOMPARE(velnoext_sale_limit(patience, &limit), 5);
    QCOMPARE(value, 4711);
    QCOMPARE(limit, 4711LL);
    device.answerPlain(plain(qint64(-2)));
    QCOMPARE(velnoext_sale_limit(patience, &limit), 0);
    QCOMPARE(limit, -2LL);
    device.answerPlain(plain(int(0x80000001), QVector<int>{3}));
    QCOMPARE(velnoext_ecr_state(patience, &value), 0);
    QCOMPARE(value, int(0x80000001));
}

void TestQueries::outputsStayAsTheyWereOnFailure_data()
{
    QTest::addColumn<QList<QByteArray>>("answer");
    QTest::addColumn<int>("result");

    for (const BrokenAnswer &broken : brokenAnswers(plain(0, 0, 0, 0)))
        QTest::newRow(broken.name) << broken.frames << broken.result;
    const HandMadeDevice device;
    QTest::newRow("too short") << QList{HandMadeDevice::framed(device.sealed(hex("00")))} << 5;
    QTest::newRow("empty") << QList{HandMadeDevice::framed({})} << 12;
}

void TestQueries::outputsStayAsTheyWereOnFailure()
{
    QFETCH(const QList<QByteArray>, answer);
    QFETCH(const int, result);
    const LogCapture capture;
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([answer](const QByteArray &) { return answer; });
    int value = 4711;
    long long limit = 4711;
    QCOMPARE(velnoext_ecr_state(patience, &value), result);
    QCOMPARE(velnoext_current_z(patience, &value), result);
    QCOMPARE(velnoext_last_z_datetime(patience, &value), result);
    QCOMPARE(velnoext_ecr_datetime(patience, &value), result);
    QCOMPARE(velnoext_sale_limit(patience, &limit), result);
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(value, 4711);
    QCOMPARE(limit, 4711LL);
}

void TestQueries::unpairedNamesAreRefused()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    library().activeDevice = otherSerial;
    for (const auto &[name, query] : queries()) {
        library().pairingRecords.remove(otherSerial);
        QVERIFY2(query() == 1, name);
        QVERIFY2(library().pairingRecords.contains(otherSerial), name); // with nothing in it
    }
    char buffer[17] = "untouched";
    QCOMPARE(velnoext_ecr_serialno(buffer), 1);
    QCOMPARE(buffer, "untouched");
    QVERIFY(device.commands().isEmpty());
}

void TestQueries::stateReadsOneMoreOnDemand()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(5, QVector<int>{1, 2}, 99));
    int state = 0;
    int extra = 0;
    QVector<int> keys;
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 0);
    QCOMPARE(state, 5);
    QCOMPARE(keys, (QVector<int>{1, 2}));
    QCOMPARE(extra, 99);
    device.answerPlain(plain(5, QVector<int>{}));
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 5);
    device.answerPlain(plain(7, QVector<int>{}));
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 0);
    QCOMPARE(state, 7);
}

void TestQueries::hostileListTakesNoMemory()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    int state = 4711;
    for (const quint32 count : {0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        device.answerPlain(plain(1, count, 5, 5));
        QCOMPARE(velnoext_ecr_state(patience, &state), 5);
    }
    QCOMPARE(state, 4711);
}

void TestQueries::refusedZNumberIsWritten()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(false, 17));
    int z = 0;
    QCOMPARE(velnoext_current_z(patience, &z), 8);
    QCOMPARE(z, 17);
}

void TestQueries::nullOutputs_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<int>("detail");

    QTest::newRow("state") << 0 << 0x302;
    QTest::newRow("current z") << 1 << 0x30B;
    QTest::newRow("last z") << 2 << 0x30C;
    QTest::newRow("clock") << 3 << 0x30C;
    QTest::newRow("sale limit") << 4 << 0x310;
}

void TestQueries::nullOutputs()
{
    QFETCH(const int, which);
    QFETCH(const int, detail);
    const Query call[] = {[] { return velnoext_ecr_state(patience, nullptr); },
                          [] { return velnoext_current_z(patience, nullptr); },
                          [] { return velnoext_last_z_datetime(patience, nullptr); },
                          [] { return velnoext_ecr_datetime(patience, nullptr); },
                          [] { return velnoext_sale_limit(patience, nullptr); }};
    TestSupport::checkMissingPointerIsNamed(call[which], detail);
}

void TestQueries::connectionIsCheckedBeforeArguments()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    // The register stays active when connecting it afresh fails, but its connection is gone by then.
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", freePort(), brief), 2);
    QCOMPARE(velnoext_ecr_state(patience, nullptr), 2);
    for (const auto &[name, query] : queries())
        QVERIFY2(query() == 2, name);
}

QTEST_GUILESS_MAIN(TestQueries)
#include "tst_queries.moc"
