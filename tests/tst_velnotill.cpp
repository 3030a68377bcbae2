// SPDX-License-Identifier: Apache-2.0

#include "tests/support/full_disk.h"
#include "tests/support/open_till.h"
#include "tests/support/run_sql.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnotill.h without a register: what is handed over, and what is on record. */
class TestVelnotill : public QObject
{
    Q_OBJECT

private slots:
    void settingsAreJudged_data();
    void settingsAreJudged();
    void nullsAreRefused();
    void keysAreJudged_data();
    void keysAreJudged();
    void contentIsJudgedAsAWhole();
    void outcomesNeedTheirSize();
    void largerOutcomesAreZeroedBehindTheKnown();
    void acceptedIsOnRecord();
    void sameKeyWithOtherContentIsAConflict();
    void unusableLedgerIsToldInWords();
    void ledgerOfAnotherRegisterIsRefused();
    void fullDiskIsToldInWords();
    void unknownKeys();
    void answersAreJudged();
    void droppedOrderIsSettledWithoutARegister();
    void statesAreChosenByTheirBits();
    void damageIsToldAndEndsTheList();
    void orderAsJson();
    void pruneForgetsWhatIsSettled();
};

namespace {

using Answered = VelnoTillResult;

QJsonObject jsonOf(VelnoTill *till, const char *key)
{
    char *text = nullptr;
    if (velnotill_json(till, key, &text) != VelnoTillResult_Done)
        return {};
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    velnotill_free_text(text);
    return object;
}

using Spoil = void (*)(VelnoTillSettings &settings);

} // namespace

void TestVelnotill::settingsAreJudged_data()
{
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("named");

    const auto row = [](const char *name, Spoil spoil, Answered result, const char *named) {
        QTest::newRow(name) << spoil << int(result) << QByteArray(named);
    };
    row(
        "no size", [](VelnoTillSettings &s) { s.size = 0; }, VelnoTillResult_BadArgument, "size");
    row(
        "small size", [](VelnoTillSettings &s) { --s.size; }, VelnoTillResult_BadArgument, "size");
    row(
        "size of nothing", [](VelnoTillSettings &s) { s.size = 4097; }, VelnoTillResult_BadArgument, "size");
    row(
        "no serial", [](VelnoTillSettings &s) { s.serial = nullptr; }, VelnoTillResult_NullArgument,
        "serial");
    row(
        "no address", [](VelnoTillSettings &s) { s.address = nullptr; }, VelnoTillResult_NullArgument,
        "address");
    row(
        "no ledger", [](VelnoTillSettings &s) { s.ledger = nullptr; }, VelnoTillResult_NullArgument,
        "ledger");
    row(
        "short serial", [](VelnoTillSettings &s) { s.serial = "UB123456789"; }, VelnoTillResult_BadArgument,
        "serial");
    row(
        "long serial", [](VelnoTillSettings &s) { s.serial = "UB12345678901"; }, VelnoTillResult_BadArgument,
        "serial");
    row(
        "blank in the serial", [](VelnoTillSettings &s) { s.serial = "UB 234567890"; },
        VelnoTillResult_BadArgument, "serial");
    row(
        "a name for an address", [](VelnoTillSettings &s) { s.address = "localhost"; },
        VelnoTillResult_BadArgument, "address");
    row(
        "no port", [](VelnoTillSettings &s) { s.port = 0; }, VelnoTillResult_BadArgument, "port: 0");
    row(
        "high port", [](VelnoTillSettings &s) { s.port = 65'536; }, VelnoTillResult_BadArgument,
        "port: 65536");
    row(
        "empty ledger", [](VelnoTillSettings &s) { s.ledger = ""; }, VelnoTillResult_BadArgument, "ledger");
    row(
        "IPv6", [](VelnoTillSettings &s) { s.address = "::1"; }, VelnoTillResult_Done, "");
    row(
        "IPv6 of an interface", [](VelnoTillSettings &s) { s.address = "fe80::1%eth0"; },
        VelnoTillResult_Done, "");
    row(
        "the relay needs no port",
        [](VelnoTillSettings &s) {
            s.address = "255.255.255.255";
            s.port = 0;
        },
        VelnoTillResult_Done, "");
}

void TestVelnotill::settingsAreJudged()
{
    QFETCH(const Spoil, spoil);
    QFETCH(const int, result);
    QFETCH(const QByteArray, named);
    OpenTill till(freePort());
    QVERIFY(till);
    till.close();
    spoil(till.settings());
    QCOMPARE(till.openAgain(), result);
    QCOMPARE(till != nullptr, result == VelnoTillResult_Done);
    if (result != VelnoTillResult_Done)
        QVERIFY2(problem().contains(named), problem().constData());
}

void TestVelnotill::nullsAreRefused()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    VelnoTill *other = nullptr;
    char *text = nullptr;
    const auto visitor = [](const char *, const VelnoTillOutcome *, void *) {};
    const auto historian = [](const VelnoTillEvent *, void *) {};
    const QList<int> results{
        velnotill_open(nullptr, &till.settings()),
        velnotill_open(&other, nullptr),
        velnotill_close(nullptr),
        velnotill_set_listener(nullptr, nullptr, nullptr),
        velnotill_check_receipt(nullptr),
        velnotill_check_slip(nullptr),
        velnotill_accept(nullptr, "a", aReceipt, &outcome),
        velnotill_accept(till, nullptr, aReceipt, &outcome),
        velnotill_accept(till, "a", nullptr, &outcome),
        velnotill_sell(till, "a", aReceipt, nullptr),
        velnotill_z_report(till, nullptr, &outcome),
        velnotill_x_report(till, "a", nullptr),
        velnotill_print_slip(till, "a", nullptr, &outcome),
        velnotill_work(nullptr),
        velnotill_answer(till, nullptr, VelnoTillAnswer_Drop, "Ayşe", nullptr),
        velnotill_answer(till, "a", VelnoTillAnswer_Drop, nullptr, nullptr),
        velnotill_find(till, "a", nullptr),
        velnotill_find(till, nullptr, &outcome),
        velnotill_list(till, VELNOTILL_ALL_STATES, nullptr, nullptr),
        velnotill_list(nullptr, VELNOTILL_ALL_STATES, visitor, nullptr),
        velnotill_history(till, "a", nullptr, nullptr),
        velnotill_history(till, nullptr, historian, nullptr),
        velnotill_json(till, "a", nullptr),
        velnotill_json(till, nullptr, &text),
        velnotill_prune(nullptr, 0, nullptr),
    };
    for (qsizetype i = 0; i < results.size(); ++i)
        QVERIFY2(results.at(i) == VelnoTillResult_NullArgument, QByteArray::number(i).constData());
    QCOMPARE(problem(), "A pointer is NULL.");
    velnotill_interrupt(nullptr);
    QVERIFY(keysOf(till, VELNOTILL_ALL_STATES).isEmpty());
}

void TestVelnotill::keysAreJudged_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<bool>("isGood");

    QTest::newRow("one byte") << QByteArray("1") << true;
    QTest::newRow("200 bytes") << QByteArray(200, 'x') << true;
    QTest::newRow("Turkish") << QByteArray("satış 4711 / İzmir") << true;
    QTest::newRow("beyond 16 bits") << QByteArray("\xF0\x9F\x8D\x9E") << true;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("201 bytes") << QByteArray(201, 'x') << false;
    QTest::newRow("line feed") << QByteArray("a\nb") << false;
    QTest::newRow("escape") << QByteArray("a\x1B[2J") << false;
    QTest::newRow("control of Latin-1") << QByteArray("a\xC2\x9B") << false;
    QTest::newRow("no UTF-8") << QByteArray("a\xC5") << false;
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << false;
}

void TestVelnotill::keysAreJudged()
{
    QFETCH(const QByteArray, key);
    QFETCH(const bool, isGood);
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    const int expected = isGood ? VelnoTillResult_Done : VelnoTillResult_BadArgument;
    QCOMPARE(velnotill_accept(till, key.constData(), aReceipt, &outcome), expected);
    QCOMPARE(velnotill_find(till, key.constData(), &outcome), expected);
    QCOMPARE(jsonOf(till, key.constData()).isEmpty(), !isGood);
    QCOMPARE(keysOf(till, VELNOTILL_ALL_STATES),
             isGood ? QStringList{QString::fromUtf8(key)} : QStringList());
    if (!isGood)
        QVERIFY(problem().startsWith("key: "));
}

void TestVelnotill::contentIsJudgedAsAWhole()
{
    QCOMPARE(velnotill_check_receipt(aReceipt), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_check_slip(aSlip), int(VelnoTillResult_Done));
    const char *const faulty = R"({"items":[{"name":"Ekmek","price":12.5,"section":9}],"payments":[]})";
    QCOMPARE(velnotill_check_receipt(faulty), int(VelnoTillResult_BadContent));
    for (const char *const path : {"items[0].section: 9", "items[0].price", "payments"})
        QVERIFY2(problem().contains(path), problem().constData());
    QVERIFY(problem().count('\n') >= 2);
    QCOMPARE(velnotill_check_slip("{}"), int(VelnoTillResult_BadContent));
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    QCOMPARE(velnotill_sell(till, "a", faulty, &outcome), int(VelnoTillResult_BadContent));
    QVERIFY(problem().contains("items[0].section: 9"));
    QCOMPARE(velnotill_print_slip(till, "a", "{", &outcome), int(VelnoTillResult_BadContent));
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Unknown));
}

void TestVelnotill::outcomesNeedTheirSize()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    for (const unsigned size : {0U, unsigned(sizeof outcome) - 1, 4097U}) {
        outcome.size = size;
        QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_BadArgument));
        QCOMPARE(velnotill_sell(till, "a", aReceipt, &outcome), int(VelnoTillResult_BadArgument));
        QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_BadArgument));
        QCOMPARE(outcome.size, size);
    }
    QVERIFY(keysOf(till, VELNOTILL_ALL_STATES).isEmpty()); // refused before anything was noted
}

void TestVelnotill::largerOutcomesAreZeroedBehindTheKnown()
{
    OpenTill till(freePort());
    struct
    {
        VelnoTillOutcome known;
        char more[16];
    } later;
    memset(&later, 0x55, sizeof later);
    later.known.size = sizeof later;
    QCOMPARE(velnotill_accept(till, "a", aReceipt, &later.known), int(VelnoTillResult_Done));
    QCOMPARE(later.known.size, unsigned(sizeof later));
    QCOMPARE(QByteArray(later.more, sizeof later.more), QByteArray(sizeof later.more, '\0'));

    till.close();
    struct
    {
        VelnoTillSettings known;
        int more;
    } settings = {till.settings(), 0};
    settings.known.size = sizeof settings;
    VelnoTill *other = nullptr;
    QCOMPARE(velnotill_open(&other, &settings.known), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_close(other), int(VelnoTillResult_Done));
    settings.more = 1; // asks for what this library does not know
    QCOMPARE(velnotill_open(&other, &settings.known), int(VelnoTillResult_BadArgument));
}

void TestVelnotill::acceptedIsOnRecord()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_accept(till, "b", anotherReceipt, nullptr), int(VelnoTillResult_Done));
    QVERIFY(outcome.acceptedAt >= before && outcome.acceptedAt <= QDateTime::currentMSecsSinceEpoch());
    QCOMPARE(till.close(), int(VelnoTillResult_Done));
    QCOMPARE(QFile::permissions(QString::fromLocal8Bit(till.ledger())) &
                 (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
             QFile::Permissions());
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    VelnoTillOutcome again = emptyOutcome();
    QCOMPARE(velnotill_find(till, "a", &again), int(VelnoTillResult_Done));
    QCOMPARE(again.state, int(VelnoTillState_Accepted));
    QCOMPARE(again.kind, int(VelnoTillKind_Receipt));
    QCOMPARE(again.acceptedAt, outcome.acceptedAt);
    QCOMPARE(keysOf(till, VELNOTILL_ALL_STATES), (QStringList{u"a"_s, u"b"_s}));
}

void TestVelnotill::sameKeyWithOtherContentIsAConflict()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    const VelnoTillOutcome untouched = outcome;
    QCOMPARE(velnotill_sell(till, "a", anotherReceipt, &outcome), int(VelnoTillResult_Conflict));
    QVERIFY2(problem().contains("items[0].price") && problem().contains("13.00") &&
                 problem().contains("12.50"),
             problem().constData());
    QCOMPARE(memcmp(&outcome, &untouched, sizeof outcome), 0);
    QCOMPARE(velnotill_x_report(till, "a", &outcome), int(VelnoTillResult_Conflict));
    QVERIFY(problem().contains("kind"));
}

void TestVelnotill::unusableLedgerIsToldInWords()
{
    OpenTill till(freePort());
    till.close();
    const QTemporaryDir folder;
    const QByteArray path = folder.path().toLocal8Bit();
    till.settings().ledger = path.constData(); // a folder
    QCOMPARE(till.openAgain(), int(VelnoTillResult_LedgerFailed));
    QVERIFY2(problem().contains(path), problem().constData());
    const QByteArray noLedger = folder.filePath(u"text"_s).toLocal8Bit();
    QFile file(QString::fromLocal8Bit(noLedger));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(4096, 'x')) > 0);
    file.close();
    till.settings().ledger = noLedger.constData();
    QCOMPARE(till.openAgain(), int(VelnoTillResult_LedgerFailed));
    QVERIFY(!problem().isEmpty());
    till.settings().ledger = till.ledger().constData();
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done)); // the place was left
}

void TestVelnotill::ledgerOfAnotherRegisterIsRefused()
{
    OpenTill till(freePort());
    till.close();
    till.settings().serial = "UB0000000001";
    QCOMPARE(till.openAgain(), int(VelnoTillResult_LedgerFailed));
    QVERIFY2(problem().contains("UB1234567890"), problem().constData());
}

void TestVelnotill::fullDiskIsToldInWords()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    const VelnoTillOutcome untouched = outcome;
    {
        const FullDisk fullDisk(1);
        QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_LedgerFailed));
        QVERIFY(!problem().isEmpty());
        QCOMPARE(memcmp(&outcome, &untouched, sizeof outcome), 0);
    }
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Unknown));
    QCOMPARE(velnotill_accept(till, "a", aReceipt, &outcome), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Done));
}

void TestVelnotill::unknownKeys()
{
    OpenTill till(freePort());
    VelnoTillOutcome outcome = emptyOutcome();
    char *text = nullptr;
    const auto historian = [](const VelnoTillEvent *, void *) {};
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Unknown));
    QCOMPARE(velnotill_history(till, "a", historian, nullptr), int(VelnoTillResult_Unknown));
    QCOMPARE(velnotill_json(till, "a", &text), int(VelnoTillResult_Unknown));
    QCOMPARE(velnotill_answer(till, "a", VelnoTillAnswer_Drop, "Ayşe", &outcome),
             int(VelnoTillResult_Unknown));
    QVERIFY(!text);
    QVERIFY(problem().contains("\"a\""));
}

void TestVelnotill::answersAreJudged()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    const auto answered = [&till](int answer, const char *person) {
        return velnotill_answer(till, "a", answer, person, nullptr);
    };
    for (const int answer : {-1, 0, 4})
        QCOMPARE(answered(answer, "Ayşe"), int(VelnoTillResult_BadArgument));
    for (const QByteArray &person : {QByteArray(""), QByteArray(101, 'x'), QByteArray("A\tB")}) {
        QCOMPARE(answered(VelnoTillAnswer_Drop, person.constData()), int(VelnoTillResult_BadArgument));
        QVERIFY(problem().startsWith("person: "));
    }
    QCOMPARE(answered(VelnoTillAnswer_Paid, "Ayşe"), int(VelnoTillResult_NotAsked));
    QCOMPARE(answered(VelnoTillAnswer_SellAgain, "Ayşe"), int(VelnoTillResult_NotAsked));
}

void TestVelnotill::droppedOrderIsSettledWithoutARegister()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    VelnoTillOutcome outcome = emptyOutcome();
    QCOMPARE(velnotill_answer(till, "a", VelnoTillAnswer_Drop, "Ayşe", &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.answer, int(VelnoTillAnswer_Drop));
    QCOMPARE(velnotill_work(till), int(VelnoTillResult_Done));
    QCOMPARE(velnotill_find(till, "a", &outcome), int(VelnoTillResult_Done));
    QCOMPARE(outcome.state, int(VelnoTillState_Cancelled));
    QCOMPARE(velnotill_answer(till, "a", VelnoTillAnswer_Drop, "Ayşe", nullptr),
             int(VelnoTillResult_NotAsked));
    QStringList persons;
    velnotill_history(
        till, "a",
        [](const VelnoTillEvent *event, void *list) {
            if (event->size == sizeof *event && event->time > 0 && *event->text)
                static_cast<QStringList *>(list)->append(QString::fromUtf8(event->person));
        },
        &persons);
    QCOMPARE(persons, (QStringList{{}, u"Ayşe"_s, {}}));
}

void TestVelnotill::statesAreChosenByTheirBits()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    velnotill_accept(till, "b", aReceipt, nullptr);
    velnotill_answer(till, "b", VelnoTillAnswer_Drop, "Ayşe", nullptr);
    QCOMPARE(keysOf(till, 1U << VelnoTillState_Accepted), QStringList{u"a"_s});
    QCOMPARE(keysOf(till, VELNOTILL_UNSETTLED_STATES), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(keysOf(till, 1U << VelnoTillState_Closed), QStringList());
    const auto visitor = [](const char *, const VelnoTillOutcome *, void *) {};
    for (const unsigned states : {0U, 0x80U, 0xFFFFFFFFU})
        QCOMPARE(velnotill_list(till, states, visitor, nullptr), int(VelnoTillResult_BadArgument));
}

void TestVelnotill::damageIsToldAndEndsTheList()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    velnotill_answer(till, "a", VelnoTillAnswer_Drop, "Ayşe", nullptr);
    velnotill_work(till);
    till.close();
    QVERIFY(runSql(till.ledger(), "UPDATE history SET state = 77"));
    QCOMPARE(till.openAgain(), int(VelnoTillResult_Done));
    const auto historian = [](const VelnoTillEvent *, void *) {};
    QCOMPARE(velnotill_history(till, "a", historian, nullptr), int(VelnoTillResult_LedgerFailed));
    char *text = nullptr;
    QCOMPARE(velnotill_json(till, "a", &text), int(VelnoTillResult_LedgerFailed));
    QVERIFY(!text);
    const auto visitor = [](const char *, const VelnoTillOutcome *, void *) {};
    QCOMPARE(velnotill_list(till, VELNOTILL_ALL_STATES, visitor, nullptr), int(VelnoTillResult_LedgerFailed));
    QVERIFY(!problem().isEmpty());
}

void TestVelnotill::orderAsJson()
{
    OpenTill till(freePort());
    velnotill_accept(till, "satış 1", aReceipt, nullptr);
    const QJsonObject order = jsonOf(till, "satış 1");
    const QStringList fields{u"acceptedAt"_s, u"answer"_s,   u"cause"_s,    u"changedAt"_s, u"code"_s,
                             u"content"_s,    u"giveBack"_s, u"history"_s,  u"key"_s,       u"kind"_s,
                             u"message"_s,    u"paper"_s,    u"question"_s, u"reference"_s, u"slipUnsure"_s,
                             u"state"_s,      u"totals"_s,   u"z"_s};
    QCOMPARE(order.keys(), fields);
    QCOMPARE(order.value(u"key"_s).toString(), u"satış 1"_s);
    QCOMPARE(order.value(u"kind"_s).toString(), u"receipt"_s);
    QCOMPARE(order.value(u"state"_s).toString(), u"accepted"_s);
    for (const auto &nothing : {u"answer"_s, u"question"_s, u"reference"_s, u"totals"_s, u"z"_s})
        QVERIFY2(order.value(nothing).isNull(), qPrintable(nothing));
    QCOMPARE(order.value(u"content"_s).toObject().value(u"items"_s).toArray().size(), 1);
    const QJsonArray history = order.value(u"history"_s).toArray();
    QCOMPARE(history.size(), 1);
    QCOMPARE(history.at(0).toObject().value(u"time"_s), order.value(u"acceptedAt"_s));
    QVERIFY(order.value(u"message"_s).toObject().value(u"tr"_s).toString().contains(u"Kayda"_s));
}

void TestVelnotill::pruneForgetsWhatIsSettled()
{
    OpenTill till(freePort());
    velnotill_accept(till, "a", aReceipt, nullptr);
    velnotill_accept(till, "b", aReceipt, nullptr);
    for (const char *const key : {"a", "b"})
        velnotill_answer(till, key, VelnoTillAnswer_Drop, "Ayşe", nullptr);
    QCOMPARE(velnotill_work(till), int(VelnoTillResult_Done));
    velnotill_accept(till, "c", aReceipt, nullptr);
    int count = -1;
    QCOMPARE(velnotill_prune(till, 3600, &count), int(VelnoTillResult_Done));
    QCOMPARE(count, 0);
    QCOMPARE(keysOf(till, VELNOTILL_ALL_STATES).size(), 3);
    int all = 0;
    const auto forgets = [&] { // of what has changed in this very moment nothing may be forgotten yet
        return velnotill_prune(till, 0, &count) == VelnoTillResult_Done && (all += count) == 2;
    };
    QTRY_VERIFY_WITH_TIMEOUT(forgets(), 30'000);
    QCOMPARE(keysOf(till, VELNOTILL_ALL_STATES), QStringList{u"c"_s});
    QCOMPARE(velnotill_prune(till, 0, nullptr), int(VelnoTillResult_Done));
}

QTEST_GUILESS_MAIN(TestVelnotill)
#include "tst_velnotill.moc"
