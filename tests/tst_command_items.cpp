// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/command_items.h"

#include "tests/support/exact_bytes.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <algorithm>
#include <set>
#include <string>

using namespace Velno::GMP;
using TestSupport::ExactBytes;
using TestSupport::hex;
using TestSupport::plain;

namespace {

constexpr ItemRow pair[] = {{"left", ItemType::Int8}, {"right", ItemType::Int16}};

constexpr ItemRow everyType[] = {
    {"flag", ItemType::Flag},
    {"int8", ItemType::Int8},
    {"int16", ItemType::Int16},
    {"int32", ItemType::Int32},
    {"int64", ItemType::Int64},
    {"bytes", ItemType::Bytes},
    {"null", ItemType::Bytes},
    {"numbers", ItemType::Numbers},
    {"lines", ItemType::Lines},
    {"record", ItemType::Record, Presence::Always, pair},
    {"records", ItemType::Records, Presence::Always, pair, 0, 3},
};

const QByteArray everyValue = hex("01 FE 8000 80000001 FFFFFFFFFFFFFFFE 00000003414243 FFFFFFFF"
                                  "00000002 00000007 FFFFFFFF  00000010 00000002 0000000441424344 00000000"
                                  "05 0006  0002 01 0002 03 FFFF");

const CommandForm &command(const char *name)
{
    const auto forms = commandForms();
    const auto found =
        std::ranges::find_if(forms, [name](const CommandForm &f) { return qstrcmp(f.name, name) == 0; });
    Q_ASSERT(found != forms.end());
    return *found;
}

/** The items of a sequence that is nothing else. */
std::optional<Items> whole(std::span<const ItemRow> rows, const QByteArray &bytes)
{
    const ExactBytes exact(bytes); // so that a reader which goes too far is caught
    const QByteArray view = exact.view();
    QByteArrayView run = view;
    auto items = takeItems(rows, &run);
    return run.isEmpty() ? items : std::nullopt;
}

QByteArray slip(const QList<QByteArray> &lines)
{
    QByteArray packed = plain(qint32(lines.size()));
    for (const QByteArray &line : lines)
        packed += plain(line);
    return plain(true, packed);
}

} // namespace

/** Items of commands as bytes, and the table that says which there are. */
class TestCommandItems : public QObject
{
    Q_OBJECT

private slots:
    void everyTypeIsRead();
    void nothingIsReadFromLess();
    void whatFollowsStays();
    void itemsThatNeedNotBeThere();
    void countsAreBounded_data();
    void countsAreBounded();
    void slipLinesTravel();
    void brokenSlipLinesAreRefused_data();
    void brokenSlipLinesAreRefused();
    void codesAreTaken();
    void theTableCanBeWalked();
};

void TestCommandItems::everyTypeIsRead()
{
    const auto items = whole(everyType, everyValue);
    QVERIFY(items);
    QVERIFY(items->flag("flag"));
    QCOMPARE(items->int32("int8"), -2);
    QCOMPARE(items->int32("int16"), -32768);
    QCOMPARE(items->int32("int32"), -2147483647);
    QCOMPARE(items->int64("int32"), -2147483647);
    QCOMPARE(items->int64("int64"), -2);
    QCOMPARE(items->bytes("bytes"), "ABC");
    QVERIFY(items->bytes("null").isNull());
    QCOMPARE(items->numbers("numbers"), (QList<qint32>{7, -1}));
    QCOMPARE(items->lines("lines"), (QList<QByteArray>{"ABCD", ""}));
    QCOMPARE(items->records("record").size(), size_t(1));
    QCOMPARE(items->records("record")[0].int32("left"), 5);
    QCOMPARE(items->records("records").size(), size_t(2));
    QCOMPARE(items->records("records")[1].int32("right"), -1);
    QVERIFY(items->has("numbers"));
    QVERIFY(!items->has("number"));
}

void TestCommandItems::nothingIsReadFromLess()
{
    for (qsizetype size = 0; size < everyValue.size(); ++size)
        QVERIFY2(!whole(everyType, everyValue.first(size)), qPrintable(QString::number(size)));
}

void TestCommandItems::whatFollowsStays()
{
    const QByteArray bytes = everyValue + "rest";
    QByteArrayView run = bytes;
    QVERIFY(takeItems(everyType, &run));
    QCOMPARE(run.toByteArray(), "rest");
}

void TestCommandItems::itemsThatNeedNotBeThere()
{
    const auto &index = command("delete").request;
    QVERIFY(!whole(index, {})->has("index"));
    QCOMPARE(whole(index, plain(3))->int32("index"), 3);
    const auto &contribution = command("medical").request;
    QVERIFY(!whole(contribution, plain(qint64(0)))->has("identity"));
    QVERIFY(!whole(contribution, plain(qint64(0), qint64(1))));
    QVERIFY(!whole(contribution, plain(qint64(1))));
    QCOMPARE(whole(contribution, plain(qint64(1), qint64(2)))->int64("identity"), 2);
    const auto &state = command("state").answer;
    const QVector<int> display{1};
    QVERIFY(!whole(state, plain(1, display))->has("error"));
    QVERIFY(!whole(state, plain(1, display, 8)));
    QVERIFY(!whole(state, plain(5, display)));
    QCOMPARE(whole(state, plain(5, display, 8))->int32("error"), 8);
}

void TestCommandItems::countsAreBounded_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("items");
    QTest::addColumn<bool>("readable");
    const auto keys = [](int count) { return plain(1, 0, 0, QVector<int>(count, 'E'), true); };
    const auto items = [](int count, int announced) {
        const QByteArray one = plain(qint64(1), 1, 0, qint64(0), qint8(1), QByteArray("Su"), 0);
        return plain(qint16(announced)) + one.repeated(count);
    };
    QTest::newRow("64 keys") << QByteArray("change-state") << keys(64) << true;
    QTest::newRow("65 keys") << QByteArray("change-state") << keys(65) << false;
    QTest::newRow("2^31 keys") << QByteArray("change-state") << plain(1, 0, 0) + hex("7FFFFFFF") << false;
    QTest::newRow("2^32 keys") << QByteArray("change-state") << plain(1, 0, 0) + hex("FFFFFFFF01") << false;
    QTest::newRow("10 items") << QByteArray("items") << items(10, 10) << true;
    QTest::newRow("11 items") << QByteArray("items") << items(11, 11) << false;
    QTest::newRow("no item") << QByteArray("items") << items(0, 0) << false;
    QTest::newRow("-1 items") << QByteArray("items") << items(0, -1) << false;
    QTest::newRow("one item less than announced") << QByteArray("items") << items(2, 3) << false;
    QTest::newRow("a section") << QByteArray("section") << hex("FF") << true;
    QTest::newRow("2^31 bytes of a name")
        << QByteArray("item") << plain(qint64(1), 1, 0, qint64(0), qint8(1)) + hex("7FFFFFFF") << false;
    QTest::newRow("2^31 bytes of a slip") << QByteArray("print") << hex("01 7FFFFFFF") << false;
}

void TestCommandItems::countsAreBounded()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, items);
    QFETCH(const bool, readable);
    QCOMPARE(whole(command(name.constData()).request, items).has_value(), readable);
}

void TestCommandItems::slipLinesTravel()
{
    const auto &rows = command("print").request;
    const QList<QByteArray> sent{"@UTF-8", QByteArray(), "\x04 abc"};
    QCOMPARE(whole(rows, slip(sent))->lines("lines"), sent);
    QVERIFY(whole(rows, slip({}))->lines("lines").isEmpty());
}

void TestCommandItems::brokenSlipLinesAreRefused_data()
{
    QTest::addColumn<QByteArray>("packed");

    const QByteArray good = slip({"\x04 abc", "\x04 def"}).sliced(5); // behind flag and size
    for (qsizetype size = 0; size < good.size(); ++size)
        QTest::addRow("first %d bytes", int(size)) << good.first(size);
    QTest::newRow("one byte more") << good + 'x';
    QTest::newRow("negative count") << hex("FFFFFFFF");
    QTest::newRow("more than there is") << hex("7FFFFFFF");
    QTest::newRow("a line longer than all") << hex("000000017FFFFFFF41");
}

void TestCommandItems::brokenSlipLinesAreRefused()
{
    QFETCH(const QByteArray, packed);
    QVERIFY(!whole(command("print").request, plain(true, packed)));
}

void TestCommandItems::codesAreTaken()
{
    const QByteArray bytes = hex("0000000C01");
    QByteArrayView run = bytes;
    QCOMPARE(takeCode(&run), std::optional<qint32>(12));
    QCOMPARE(run.size(), 1);
    QCOMPARE(takeCode(&run), std::nullopt);
    QCOMPARE(commandForm(12)->name, command("z").name);
    for (const qint32 unknown : {-1, 21, 0x7FFFFFFF})
        QVERIFY(!commandForm(unknown));
}

namespace {

/** What a reader relies on: names of their own, parts where they belong, an item in front where one counts.
 */
bool isSound(std::span<const ItemRow> rows)
{
    std::set<std::string> names;
    for (const ItemRow &row : rows) {
        const bool hasParts = row.type == ItemType::Record || row.type == ItemType::Records;
        const bool first = names.empty();
        if (!names.insert(row.name).second || hasParts == row.parts.empty() || row.least > row.most ||
            !isSound(row.parts))
            return false;
        if (row.presence == Presence::WhenSaleIsOpen && !names.contains("state"))
            return false;
        if (row.presence == Presence::WhenNotZero && first)
            return false;
        if (row.presence == Presence::WhenMoreFollows && &row != &rows.back())
            return false;
    }
    return true;
}

} // namespace

void TestCommandItems::theTableCanBeWalked()
{
    QCOMPARE(commandForms().size(), size_t(VelnoExtMessage_SaleAcquirers) + 1);
    std::set<std::string> names;
    for (const CommandForm &form : commandForms()) {
        QVERIFY2(names.insert(form.name).second, form.name);
        QVERIFY2(isSound(form.request) && isSound(form.answer) && !form.answer.empty(), form.name);
        QCOMPARE(commandForm(form.code), &form);
    }
}

QTEST_GUILESS_MAIN(TestCommandItems)
#include "tst_command_items.moc"
