// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/keyboard.h"
#include "simulator/fiscal/receipt_writer.h"
#include "simulator/register/command_table.h"
#include "tests/support/plain.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QVector>

#include <algorithm>
#include <limits>

using namespace Simulator;
using TestSupport::plain;
using namespace Velno::GMP;
using namespace Qt::StringLiterals;

/** The commands that sell, item by item: what they read, and what they answer, without a connection. */
class TestSellingCommands : public QObject
{
    Q_OBJECT

private slots:
    void damagedRequestsAreNotRead_data();
    void damagedRequestsAreNotRead();
    void readingChangesNothing();
    void answersCarryTheirItems_data();
    void answersCarryTheirItems();
    void keysAreForADisplay_data();
    void keysAreForADisplay();
    void keysNeedNoAnswer();
    void theDisplayStandsBesideTheState();
    void invoicesAreJudgedByTheirLook_data();
    void invoicesAreJudgedByTheirLook();
    void refusalsNameTheirReason_data();
    void refusalsNameTheirReason();
    void theManualListsTheReasons();
    void filesThatCannotBeWrittenAreTold();
    void damagedSalesStillAddUp();
};

namespace {

const QByteArray bread =
    plain(qint64(1250), qint32(2000), qint32(0), qint64(0), qint8(1), "Ekmek"_ba, qint32(0));
const QVector<qint32> noKeys;
const QVector<qint32> one{1};

/** What the bytes are to the command; nothing unless they are all that it carries. */
std::optional<Items> itemsOf(const char *command, const QByteArray &bytes)
{
    QByteArrayView run = bytes;
    auto items = takeItems(commandByName(QString::fromLatin1(command))->request, &run);
    return run.isEmpty() ? items : std::nullopt;
}

bool isReadable(const char *command, const QByteArray &items)
{
    return itemsOf(command, items).has_value();
}

/** Does a command whose items are readable. @param refusal  why it is not done */
QByteArray answer(FiscalModel &model, const char *command, const QByteArray &bytes = {},
                  const Disturbance &wrong = {}, Refusal *refusal = nullptr)
{
    ItemWriter reply;
    const Items items = itemsOf(command, bytes).value();
    const Refusal why = commandByName(QString::fromLatin1(command))->run({model, items, reply, wrong});
    if (refusal)
        *refusal = why;
    return reply.bytes();
}

QByteArray keys(qint32 display, qint32 mode, qint32 extra, const QVector<qint32> &pressed, bool wanted = true)
{
    return plain(display, mode, extra, pressed, wanted);
}

QByteArray invoice(qint32 type, qint32 kind, const QByteArray &reference, const QByteArray &id, qint32 mode)
{
    return plain(type, kind, reference, id, mode, true);
}

const QByteArray goodInvoice = invoice(0, 0, "A12345", "11111111111", 1);

struct GoodRequest
{
    const char *command;
    QByteArray items;
};

const GoodRequest goodRequests[] = {
    {"change-state", keys(1, 0, 0, {'E'})},
    {"item", bread},
    {"delete", plain(qint32(0))},
    {"receipt", plain(qint32(1), qint32(1))},
    {"medical", plain(qint64(100), qint64(11'111'111'111))},
    {"section", plain(qint8(1))},
    {"report", plain(true)},
    {"print", plain(true, plain(qint32(1), "\x04x"_ba))},
    {"end-invoice", goodInvoice},
    {"items", plain(qint16(2)) + bread + bread},
};

} // namespace

void TestSellingCommands::damagedRequestsAreNotRead_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("items");
    for (const auto &[command, items] : goodRequests)
        QTest::newRow(command) << QByteArray(command) << items;
}

void TestSellingCommands::damagedRequestsAreNotRead()
{
    QFETCH(const QByteArray, command);
    QFETCH(const QByteArray, items);
    QVERIFY(isReadable(command, items));
    QVERIFY(!isReadable(command, items + '\0'));
    const qsizetype shortest = command == "delete" ? 1 : 0; // without an index it is the last item
    for (qsizetype size = shortest; size < items.size(); ++size)
        QVERIFY2(!isReadable(command, items.first(size)), qPrintable(QString::number(size)));
}

void TestSellingCommands::readingChangesNothing()
{
    FiscalModel model;
    model.setState(State::SaleOpen);
    for (const auto &[command, items] : goodRequests)
        QVERIFY(isReadable(command, items));
    QCOMPARE(model.saleTotals(), SaleTotals());
    QCOMPARE(model.state(), State::SaleOpen);
}

void TestSellingCommands::answersCarryTheirItems_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("items");
    QTest::addColumn<QByteArray>("open"); ///< the answer with bread sold and a lira of 25 paid
    QTest::addColumn<QByteArray>("idle"); ///< before that

    const QByteArray sale = plain(qint32(5), one);
    const QByteArray noSale = plain(qint32(1), noKeys);
    const QByteArray totals = plain(qint64(2500), qint64(25), qint64(100), qint64(0), qint64(0), qint32(1));
    const QByteArray nothing(44, '\0');
    const QByteArray paid = plain(true) + sale + plain(qint32(PaymentBegun));
    const QByteArray none = plain(true) + noSale + plain(qint32(NothingThere));
    QTest::newRow("state") << "state"_ba << QByteArray() << sale + plain(qint32(PaymentBegun)) << noSale;
    QTest::newRow("item") << "item"_ba << bread << paid + totals << none + nothing;
    QTest::newRow("items") << "items"_ba << plain(qint16(1)) + bread << paid + totals << none + nothing;
    QTest::newRow("delete") << "delete"_ba << QByteArray() << paid + totals << none + nothing;
    QTest::newRow("delete one") << "delete"_ba << plain(qint32(0)) << paid + totals << none + nothing;
    QTest::newRow("medical") << "medical"_ba << plain(qint64(0)) << paid << none;
    QTest::newRow("sale-state") << "sale-state"_ba << QByteArray()
                                << paid + totals + plain(qint32(1), qint32(1))
                                << plain(true) + noSale + QByteArray(4 + 44 + 8, '\0');
    QTest::newRow("receipt") << "receipt"_ba << plain(qint32(1), qint32(1)) << plain(false) + nothing
                             << plain(false) + nothing;
    QTest::newRow("section") << "section"_ba << plain(qint8(3)) << plain(u"İÇECEK"_s.toUtf8(), qint32(10))
                             << plain(u"İÇECEK"_s.toUtf8(), qint32(10));
    QTest::newRow("no section") << "section"_ba << plain(qint8(-1)) << plain(QByteArray(), qint32(0))
                                << plain(QByteArray(), qint32(0));
    QTest::newRow("report") << "report"_ba << plain(false) << plain(false) << plain(true);
    QTest::newRow("print") << "print"_ba << plain(false, plain(qint32(0))) << plain(false) << plain(true);
    QTest::newRow("end-invoice") << "end-invoice"_ba << goodInvoice << plain(false) << plain(false);
    QTest::newRow("acquirers") << "acquirers"_ba << QByteArray() << plain(QVector<qint32>{11, 23, 35})
                               << plain(QVector<qint32>{11, 23, 35});
    QTest::newRow("sale-acquirers") << "sale-acquirers"_ba << QByteArray() << plain(noKeys) << plain(noKeys);
}

void TestSellingCommands::answersCarryTheirItems()
{
    QFETCH(const QByteArray, command);
    QFETCH(const QByteArray, items);
    FiscalModel model;
    QTEST(answer(model, command, items), "idle");
    answer(model, "change-state", keys(1, 0, 0, {'E'}));
    answer(model, "item", bread);
    answer(model, "change-state", keys(4, 1, -1, {'1', keyF10}, false));
    QTEST(answer(model, command, items), "open");
}

void TestSellingCommands::keysAreForADisplay_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("becomes");

    QTest::newRow("idle") << 1 << keys(1, 0, 0, {'E'}) << 5;
    QTest::newRow("menu") << 7 << keys(7, 0, 0, {'E', 'E'}) << 5;
    QTest::newRow("sale") << 5 << keys(4, 1, -1, {'C', '1'}) << 1;
    QTest::newRow("for the menu") << 1 << keys(7, 0, 0, {'E'}) << 1;
    QTest::newRow("for a sale") << 1 << keys(4, 1, -1, {'E'}) << 1;
    QTest::newRow("for no sale") << 5 << keys(5, 0, 0, {'C', '1'}) << 5;
    QTest::newRow("another mode") << 1 << keys(1, 1, 0, {'E'}) << 1;
    QTest::newRow("another extra") << 5 << keys(4, 1, 0, {'C', '1'}) << 5;
    QTest::newRow("locked") << 2 << keys(2, 0, 0, {'E'}) << 2;
}

void TestSellingCommands::keysAreForADisplay()
{
    QFETCH(const int, state);
    QFETCH(const QByteArray, request);
    QFETCH(const int, becomes);
    FiscalModel model;
    QVERIFY(model.setState(State(state)));
    const QByteArray reply = answer(model, "change-state", request);
    QCOMPARE(int(model.state()), becomes);
    QCOMPARE(reply.first(4), plain(qint32(becomes)));
    if (becomes == 5)
        QCOMPARE(reply.last(4), plain(qint32(state == 5 ? WrongKey : NoError)));
}

void TestSellingCommands::keysNeedNoAnswer()
{
    FiscalModel model;
    QCOMPARE(answer(model, "change-state", keys(1, 0, 0, {'E'}, false)), QByteArray());
    QCOMPARE(model.state(), State::SaleOpen);
    QCOMPARE(answer(model, "change-state", keys(4, 1, -1, {'X'}, false)), QByteArray());
    QCOMPARE(model.error(), int(WrongKey));
}

void TestSellingCommands::theDisplayStandsBesideTheState()
{
    FiscalModel model;
    model.setState(State::SaleOpen);
    answer(model, "change-state", keys(4, 1, -1, {'1'}));
    QCOMPARE(model.saleSteps(), std::vector<qint32>{2});
    answer(model, "change-state", keys(4, 1, -1, {'C'}));
    model.setPaper(false);
    QCOMPARE(model.saleSteps(), std::vector<qint32>{1}); // the keys that cancel are taken without paper, too
    model.setState(State::Locked);
    QVERIFY(model.saleSteps().empty());
}

void TestSellingCommands::invoicesAreJudgedByTheirLook_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<bool>("good");

    const QByteArray person = "11111111111";
    const QByteArray company = "1234567890";
    QTest::newRow("on paper") << goodInvoice << true;
    QTest::newRow("longest number of a paper form") << invoice(0, 0, QByteArray(16, 'A'), person, 1) << true;
    QTest::newRow("longest reference") << invoice(1, 0, QByteArray(17, 'A'), person, 1) << true;
    QTest::newRow("electronic, without reference") << invoice(1, 1, {}, company, 2) << true;
    QTest::newRow("type 3") << invoice(3, 0, "A12345", person, 1) << false;
    QTest::newRow("type -1") << invoice(-1, 0, "A12345", person, 1) << false;
    QTest::newRow("kind 2") << invoice(0, 2, "A12345", person, 1) << false;
    QTest::newRow("kind -1") << invoice(0, -1, "A12345", person, 1) << false;
    QTest::newRow("mode 0") << invoice(0, 0, "A12345", person, 0) << false;
    QTest::newRow("mode 3") << invoice(0, 0, "A12345", person, 3) << false;
    QTest::newRow("reference too short") << invoice(0, 0, "A1234", person, 1) << false;
    QTest::newRow("number of a paper form too long")
        << invoice(0, 0, QByteArray(17, 'A'), person, 1) << false;
    QTest::newRow("reference too long") << invoice(1, 0, QByteArray(18, 'A'), person, 1) << false;
    QTest::newRow("reference with a command") << invoice(0, 0, "A1234\x1B", person, 1) << false;
    QTest::newRow("person with ten digits") << invoice(0, 0, "A12345", company, 1) << false;
    QTest::newRow("company with eleven") << invoice(0, 1, "A12345", person, 1) << false;
    QTest::newRow("letters") << invoice(0, 1, "A12345", "123456789X", 1) << false;
}

void TestSellingCommands::invoicesAreJudgedByTheirLook()
{
    QFETCH(const QByteArray, request);
    QFETCH(const bool, good);
    FiscalModel model;
    answer(model, "change-state", keys(1, 0, 0, {'M', '3'}));
    answer(model, "item", bread);
    QCOMPARE(answer(model, "end-invoice", request), plain(good));
    QCOMPARE(model.state(), good ? State::Idle : State::SaleOpen);
}

namespace {

/** One command, and what was done before it, to come to a refusal. */
struct Refused
{
    Refusal refusal;
    const char *command;
    QByteArray items;
    void (*before)(FiscalModel &model) = [](FiscalModel &) {};
    Disturbance wrong = {};
};

void openSale(FiscalModel &model)
{
    model.setState(State::SaleOpen);
}

void sellBread(FiscalModel &model)
{
    openSale(model);
    answer(model, "item", bread);
}

void payALira(FiscalModel &model)
{
    sellBread(model);
    answer(model, "change-state", keys(4, 1, -1, {'1', keyF10}));
}

void sellWithInvoice(FiscalModel &model)
{
    answer(model, "change-state", keys(1, 0, 0, {'M', '3'}));
    answer(model, "item", bread);
}

void withoutPaper(FiscalModel &model)
{
    model.setPaper(false);
}

void withoutLimit(FiscalModel &model)
{
    model.setSaleLimit(0);
    sellBread(model);
}

QByteArray item(qint64 price, qint32 percentage, qint64 amount, qint8 section, qint32 type)
{
    return plain(price, qint32(1000), percentage, amount, section, "Ekmek"_ba, type);
}

QByteArray saleKeys(const QVector<qint32> &pressed)
{
    return keys(4, 1, -1, pressed, false);
}

const Refused refusals[] = {
    {MeaninglessKey, "change-state", keys(1, 0, 0, {'X'})},
    {OtherDisplay, "change-state", saleKeys({keyF10})},
    {InvoiceNeeded, "change-state", saleKeys({keyF10}), sellWithInvoice},
    {ErrorDisplayed, "change-state", saleKeys({keyF10}),
     [](FiscalModel &model) {
         sellBread(model);
         answer(model, "change-state", saleKeys({'2', '6', keyF11}));
         answer(model, "state");
     }},
    {NotRefused, "change-state", saleKeys({keyF10}),
     [](FiscalModel &model) {
         sellBread(model);
         answer(model, "change-state", saleKeys({'2', '6', keyF11}));
         answer(model, "sale-state");
     }},
    {NoSale, "item", bread},
    {ItemsStay, "delete", {}, payALira},
    {BadPrice, "item", item(-1, 0, 0, 1, 0), openSale},
    {BadSection, "item", item(100, 0, 0, 9, 0), openSale},
    {BadSection, "section", plain(qint8(9))},
    {BadPercentage, "item", item(100, 101, 0, 1, 0), openSale},
    {BadDiscount, "item", item(100, 0, 101, 1, 0), openSale},
    {BadUnit, "item", item(100, 0, 0, 1, 8), openSale},
    {OverSaleLimit, "item", item(1'200'001, 0, 0, 1, 0), openSale},
    {OverLargestAmount, "item", item(9'999'999'999, 0, 0, 1, 0), withoutLimit},
    {ReceiptFull, "item", bread,
     [](FiscalModel &model) {
         openSale(model);
         for (int i = 0; i < Sale::mostLines; ++i)
             answer(model, "item", item(0, 0, 0, 1, 0));
     }},
    {NoItem, "delete", plain(qint32(1)), sellBread},
    {BadContribution, "medical", plain(qint64(-1), qint64(11'111'111'111)), openSale},
    {BadPatient, "medical", plain(qint64(1), qint64(1)), openSale},
    {NothingSold, "change-state", saleKeys({keyF10}), openSale},
    {BadPayment, "change-state", saleKeys({'0', keyF10}), sellBread},
    {NothingLeft, "change-state", saleKeys({'1', keyF10}),
     [](FiscalModel &model) {
         sellBread(model);
         answer(model, "change-state", saleKeys({'2', '5', keyF10}));
     }},
    {CardOverRest, "change-state", saleKeys({'2', '6', keyF11}), sellBread},
    {TooManyPayments, "change-state", saleKeys({'1', keyF10}),
     [](FiscalModel &model) {
         sellBread(model);
         for (int i = 0; i < Sale::mostPayments; ++i)
             answer(model, "change-state", saleKeys({'0', ',', '0', '1', keyF10}));
     }},
    {NoInvoiceSale, "end-invoice", goodInvoice, sellBread},
    {BadInvoiceType, "end-invoice", invoice(3, 0, "A12345", "11111111111", 1), sellWithInvoice},
    {BadInvoiceMode, "end-invoice", invoice(0, 0, "A12345", "11111111111", 3), sellWithInvoice},
    {BadReference, "end-invoice", invoice(0, 0, "A1", "11111111111", 1), sellWithInvoice},
    {BadIdNumber, "end-invoice", invoice(0, 0, "A12345", "1", 1), sellWithInvoice},
    {PaperOut, "paper", {}, withoutPaper},
    {PaperOut, "report", plain(false), withoutPaper},
    {PaperOut, "change-state", keys(1, 0, 0, {'E'}), withoutPaper},
    {SaleStillOpen, "logout", {}, openSale},
    {SaleStillOpen, "report", plain(true), openSale},
    {SlipTooLong, "print", plain(true, plain(qint32(1), "\x04"_ba + QByteArray(1001, '\n')))},
    {ZNumbersUsedUp, "report", plain(true),
     [](FiscalModel &model) { model.setZNumber(std::numeric_limits<qint32>::max()); }},
    {ReceiptStillOpen, "receipt", plain(qint32(1), qint32(1)), openSale},
    {ReceiptNotClosed, "receipt", plain(qint32(1), qint32(1))},
    {StateForbids, "login", {}, [](FiscalModel &model) { model.setState(State::Starting); }},
    {StateForbids, "logout", {}, [](FiscalModel &model) { model.setState(State::Paying); }},
    {StateForbids, "z", {}, [](FiscalModel &model) { model.setState(State::OutOfService); }},
    {StateForbids, "item", bread, [](FiscalModel &model) { model.setState(State::Locked); }},
    {StateForbids, "change-state", keys(2, 0, 0, {'E'}),
     [](FiscalModel &model) { model.setState(State::Locked); }},
    {StateForbids, "print", plain(true, plain(qint32(0))),
     [](FiscalModel &model) { model.setState(State::Reporting); }},
    {FaultRefuses, "login", {}, sellBread, {.refuse = true}},
    {FaultRefuses, "item", bread, sellBread, {.refuse = true}},
    {FaultRefuses, "change-state", saleKeys({keyF10}), sellBread, {.refuse = true}},
    {FaultRefuses, "sale-state", {}, sellBread, {.refuse = true}},
    {FaultRefuses, "receipt", plain(qint32(1), qint32(1)), sellBread, {.refuse = true}},
    {FaultRefuses, "print", plain(true, plain(qint32(0))), sellBread, {.refuse = true}},
    {FaultError, "item", bread, sellBread, {.error = 64}},
    {FaultError, "state", {}, sellBread, {.error = 64}},
    {FaultError, "sale-state", {}, sellBread, {.error = 64}},
    {FaultError, "change-state", keys(1, 0, 0, {'E'}), [](FiscalModel &) {}, {.error = 64}},
    {FaultSaleLimit, "item", bread, sellBread, {.overLimit = true}},
    {NotRefused, "state", {}, payALira, {.error = 8}},
    {NotRefused, "sale-state", {}, payALira},
};

} // namespace

void TestSellingCommands::refusalsNameTheirReason_data()
{
    QTest::addColumn<int>("index");
    for (const RefusalRow &row : refusalTable()) {
        const bool listed = std::ranges::count(refusals, row.refusal, &Refused::refusal) > 0;
        const bool inTheJournalsTests = row.refusal == JournalUnwritable;
        QVERIFY2(listed || inTheJournalsTests, row.name);
    }
    for (int i = 0; i < int(std::size(refusals)); ++i) {
        const Refusal refusal = refusals[i].refusal;
        QTest::addRow("%s of %s", refusal == NotRefused ? "nothing" : rowOf(refusal).name,
                      refusals[i].command)
            << i;
    }
}

void TestSellingCommands::refusalsNameTheirReason()
{
    QFETCH(const int, index);
    const Refused &row = refusals[index];
    FiscalModel model;
    row.before(model);
    Refusal refusal = NotRefused;
    answer(model, row.command, row.items, row.wrong, &refusal);
    QCOMPARE(int(refusal), int(row.refusal));
}

void TestSellingCommands::theManualListsTheReasons()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QString listed;
    for (const RefusalRow &row : refusalTable())
        listed += u"| `%1` | %2 | %3 |\n"_s.arg(QLatin1StringView(row.name), QString::number(row.error),
                                                QLatin1StringView(row.text));
    QVERIFY2(QString::fromUtf8(file.readAll()).contains(u"|---|---|---|\n"_s + listed + u'\n'),
             qPrintable(listed));
}

void TestSellingCommands::filesThatCannotBeWrittenAreTold()
{
    const QTemporaryDir folder;
    const Print print{"slip", 1, 0, [] { return QStringList(u"x"_s); }};
    ReceiptWriter writer({folder.filePath(u"gone"_s)});
    const QString problem = writer.write(print);
    QVERIFY2(problem.startsWith(folder.filePath(u"gone/000001-slip-Z1.txt cannot be written: "_s)),
             qPrintable(problem));
    QVERIFY(ReceiptWriter(ReceiptFiles()).write(print).isEmpty());
}

/** Good requests with bytes changed at random, whatever they then ask for: no sum ever disagrees. */
void TestSellingCommands::damagedSalesStillAddUp()
{
    const quint32 seed = qEnvironmentVariableIsSet("VELNO_TEST_SEED")
                             ? quint32(qEnvironmentVariableIntValue("VELNO_TEST_SEED"))
                             : QRandomGenerator::global()->generate() & 0x7FFFFFFF;
    qInfo("VELNO_TEST_SEED=%u repeats this", seed);
    QRandomGenerator random(seed);
    FiscalModel model;
    int executed = 0;
    for (int i = 0; i < 20'000; ++i) {
        const auto &[command, good] = goodRequests[random.bounded(int(std::size(goodRequests)))];
        QByteArray items = good;
        for (int damages = random.bounded(4); damages > 0; --damages)
            items[random.bounded(int(items.size()))] = char(random.bounded(256));
        if (!isReadable(command, items))
            continue;
        ++executed;
        answer(model, command, items);
        const SaleTotals sums = model.saleTotals();
        QVERIFY(sums.total >= 0 && sums.total <= model.saleLimit());
        QVERIFY(sums.tax >= 0 && sums.tax <= sums.total);
        QVERIFY(sums.change <= sums.cash && sums.cash + sums.card - sums.change <= sums.total);
    }
    QCOMPARE_GT(executed, 5000);
}

QTEST_GUILESS_MAIN(TestSellingCommands)
#include "tst_selling_commands.moc"
