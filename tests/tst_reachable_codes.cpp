// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/texts.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno;

/**
 * Every result code and every detail of the device library can be had from the simulated register: each row
 * names the option, the content of a sale or the argument that leads there, and goes there.
 */
class TestReachableCodes : public QObject
{
    Q_OBJECT

private slots:
    void everyCodeHasAWay();
    void codesByOption_data();
    void codesByOption();
    void codesByContent_data();
    void codesByContent();
    void everyDetailHasAWay();
    void detailsByArgument_data();
    void detailsByArgument();
    void cleanup();
};

namespace {

constexpr unsigned int patience = 30'000;
constexpr unsigned int brief = 200;

int connectTo(quint16 port)
{
    return velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience);
}

VelnoSaleItem bread()
{
    return {1250, 1000, 0, 0, "Ekmek", 1, 0};
}

int addItem(const char *name = "Ekmek")
{
    VelnoSaleItem item = bread();
    qstrncpy(item.name, name, sizeof item.name);
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &item, &totals);
}

int startSale()
{
    return velnoext_start_sale(patience);
}

int addText()
{
    VelnoTextStyle style{};
    return velnoext_printer_add_text("Merhaba", &style);
}

int checkPaper()
{
    return velnoext_check_printer_paper(patience);
}

int login()
{
    return velnoext_login(patience);
}

int loginBriefly()
{
    return velnoext_login(brief);
}

int readZ()
{
    int z = 0;
    return velnoext_current_z(patience, &z);
}

/** In a program of its own, which removes its file first. */
int withoutItsFile(quint16 port)
{
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"program"_s);
    if (!QFile::copy(QString::fromUtf8(VELNO_PLAIN_C_PROGRAM), copy))
        return -1;
    QProcess program;
    program.start(copy, {QString::number(port), copy});
    return program.waitForFinished() ? program.exitCode() : -1;
}

/** A code, and how velno-register leads to it. */
struct Way
{
    int code;
    const char *option; ///< of velno-register
    int (*ask)();       ///< null: the code is that of connecting
};

const Way waysByOption[] = {
    {0, "", login},
    {2, "--fault close=login", login},
    {2, "--fault huge-frame", loginBriefly},
    {5, "--fault short-reply", readZ},
    {6, "--state 8", startSale},
    {6, "--no-paper", startSale},
    {7, "--fault error=1", startSale},
    {8, "--fault refuse=login", login},
    {8, "--state 0", login},
    {9, "--no-paper", checkPaper},
    {10, "--fault wrong-authority", nullptr},
    {10, "--app-hash 0000000000000000000000000000000000000000000000000000000000000000", nullptr},
    {11, "--fault bad-mac", login},
    {12, "--fault no-mac", login},
};

/** A code, and the name of an item that leads to it. */
const struct
{
    int code;
    const char *name;
} waysByContent[] = {
    {0, "Ekmek"},        {2, "!lost-answer=item"}, {2, "!power-cut=item"}, {2, "!close=item"},
    {5, "!short-reply"}, {6, "!state=1"},          {8, "!refuse=item"},    {8, "!error=64"},
    {8, "!sale-limit"},  {11, "!bad-mac"},         {12, "!no-mac"},        {12, "!extra-element"},
};

// What no register is needed for, or what is no answer of one: each has a test of its own below.
constexpr int codesByArgument[] = {1, 3, 4, 13};

bool hasWay(int code)
{
    const auto leadsThere = [code](const Way &way) { return way.code == code; };
    return std::ranges::any_of(waysByOption, leadsThere) ||
           std::ranges::find(codesByArgument, code) != std::end(codesByArgument);
}

VelnoReceiptRef reference{1, 1};
VelnoEcrSaleTotals totals{};
VelnoTextStyle style{};
int number = 0;

int addChanged(void (*change)(VelnoSaleItem &item))
{
    VelnoSaleItem item = bread();
    change(item);
    return velnoext_add_sale_item(patience, &item, &totals);
}

int addListChanged(void (*change)(VelnoSaleItemList &list))
{
    VelnoSaleItemList list{};
    list.count = 1;
    list.items[0] = bread();
    change(list);
    return velnoext_add_multiple_sale_items(patience, &list, &totals);
}

int endChanged(void (*change)(VelnoInvoice &invoice))
{
    VelnoInvoice invoice{0, 0, "11111111111", "A123456", 1, 0};
    change(invoice);
    return velnoext_end_sale_with_invoice(&invoice);
}

/** A detail and the argument that leads to it. */
struct Argument
{
    int detail;
    const char *how;
    int (*ask)();
};

const Argument arguments[] = {
    {0, "an address that is none",
     [] { return velnoext_initialize(5, SimulatedRegister::serial, "nowhere", 4100, brief); }},
    {0x300, "no serial number", [] { return velnoext_set_active_device(nullptr); }},
    {0x301, "no address",
     [] { return velnoext_initialize(5, SimulatedRegister::serial, nullptr, 4100, brief); }},
    {0x302, "no state", [] { return velnoext_ecr_state(patience, nullptr); }},
    {0x303, "no first value", [] { return velnoext_sale_state(patience, nullptr, &totals, &reference); }},
    {0x304, "no totals", [] { return velnoext_delete_last_sale_item(patience, nullptr); }},
    {0x305, "no reference", [] { return velnoext_receipt_data(patience, nullptr, &totals); }},
    {0x306, "no item", [] { return velnoext_add_sale_item(patience, nullptr, &totals); }},
    {0x307, "no list", [] { return velnoext_add_multiple_sale_items(patience, nullptr, &totals); }},
    {0x308, "no invoice", [] { return velnoext_end_sale_with_invoice(nullptr); }},
    {0x309, "no acquirers", [] { return velnoext_active_acquirers(patience, nullptr, &number); }},
    {0x30A, "no count", [] { return velnoext_active_acquirers(patience, &number, nullptr); }},
    {0x30B, "no Z number", [] { return velnoext_current_z(patience, nullptr); }},
    {0x30C, "no time", [] { return velnoext_ecr_datetime(patience, nullptr); }},
    {0x30D, "no encoding", [] { return velnoext_printer_set_encoding(nullptr); }},
    {0x30E, "no text", [] { return velnoext_printer_add_text(nullptr, &style); }},
    {0x30F, "no style", [] { return velnoext_printer_add_text("a", nullptr); }},
    {0x310, "no limit", [] { return velnoext_sale_limit(patience, nullptr); }},
    {0x311, "no language", [] { return velnoext_set_language(nullptr); }},
    {0x400, "a short serial number", [] { return velnoext_set_active_device("UB1"); }},
    {0x402, "port 0",
     [] { return velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", 0, brief); }},
    {0x403, "a wrong identity number",
     [] { return velnoext_add_medical_contribution(patience, 100, 12'345'678'901); }},
    {0x404, "a wrong tax number",
     [] {
         return endChanged([](VelnoInvoice &i) {
             i.idKind = 1;
             qstrncpy(i.idNumber, "0000000002", sizeof i.idNumber);
         });
     }},
    {0x405, "a price of 0 in a list",
     [] { return addListChanged([](auto &list) { list.items[0].price = 0; }); }},
    {0x406, "section 9", [] { return addChanged([](VelnoSaleItem &i) { i.section = 9; }); }},
    {0x407, "-101 per cent", [] { return addChanged([](VelnoSaleItem &i) { i.percentage = -101; }); }},
    {0x408, "more off than it costs", [] { return addChanged([](VelnoSaleItem &i) { i.amount = 1251; }); }},
    {0x409, "type 8", [] { return addChanged([](VelnoSaleItem &i) { i.type = 8; }); }},
    {0x40A, "a list of 11", [] { return addListChanged([](auto &list) { list.count = 11; }); }},
    {0x40B, "invoice type 3", [] { return endChanged([](VelnoInvoice &i) { i.invoiceType = 3; }); }},
    {0x40C, "identity kind 2", [] { return endChanged([](VelnoInvoice &i) { i.idKind = 2; }); }},
    {0x40D, "mode 3", [] { return endChanged([](VelnoInvoice &i) { i.mode = 3; }); }},
    {0x40E, "a short reference", [] { return endChanged([](VelnoInvoice &i) { i.reference[5] = 0; }); }},
    {0x40F, "Z number 0",
     [] {
         VelnoReceiptRef ref{0, 1};
         return velnoext_receipt_data(patience, &ref, &totals);
     }},
    {0x410, "receipt number 0",
     [] {
         VelnoReceiptRef ref{1, 0};
         return velnoext_receipt_data(patience, &ref, &totals);
     }},
    {0x411, "an encoding that nobody knows", [] { return velnoext_printer_set_encoding("Klingon"); }},
    {0x412, "a payment of 0", [] { return velnoext_add_payment(0, 0); }},
    {0x413, "21 line feeds",
     [] {
         velnoext_printer_set_encoding("UTF-8");
         return velnoext_printer_add_line_feed(21);
     }},
    {0x414, "an answer limit of nothing", [] { return velnoext_set_answer_limit(0); }},
    {0x415, "a language that nobody speaks", [] { return velnoext_set_language("xx"); }},
};

} // namespace

void TestReachableCodes::cleanup()
{
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
}

void TestReachableCodes::everyCodeHasAWay()
{
    for (const Ext::Words &code : Ext::resultTexts())
        QVERIFY2(hasWay(code.number), code.name);
    QCOMPARE(login(), 1);   // nobody is connected
    QCOMPARE(addText(), 8); // without an encoding
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(withoutItsFile(port), 13);
}

void TestReachableCodes::codesByOption_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(waysByOption)); ++i)
        QTest::addRow("%d: %s", waysByOption[i].code, waysByOption[i].option) << i;
}

void TestReachableCodes::codesByOption()
{
    QFETCH(const int, index);
    const Way &way = waysByOption[index];
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, QString::fromLatin1(way.option).split(u' ', Qt::SkipEmptyParts));
    QCOMPARE(connectTo(port), way.ask ? 0 : way.code);
    if (way.ask)
        QCOMPARE(way.ask(), way.code);
}

void TestReachableCodes::codesByContent_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(waysByContent)); ++i)
        QTest::addRow("%d: %s", waysByContent[i].code, waysByContent[i].name) << i;
}

void TestReachableCodes::codesByContent()
{
    QFETCH(const int, index);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(startSale(), 0);
    QCOMPARE(addItem(waysByContent[index].name), waysByContent[index].code);
}

void TestReachableCodes::everyDetailHasAWay()
{
    QCOMPARE(std::size(arguments), Ext::detailTexts().size());
    for (size_t i = 0; i < std::size(arguments); ++i)
        QCOMPARE(arguments[i].detail, Ext::detailTexts()[i].number);
}

void TestReachableCodes::detailsByArgument_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(arguments)); ++i)
        QTest::addRow("0x%X: %s", unsigned(arguments[i].detail), arguments[i].how) << i;
}

void TestReachableCodes::detailsByArgument()
{
    QFETCH(const int, index);
    const Argument &argument = arguments[index];
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(connectTo(port), 0);
    QCOMPARE(argument.ask(), argument.detail >= 0x300 && argument.detail < 0x400 ? 3 : 4);
    QCOMPARE(velnoext_error_detail(), argument.detail);
}

QTEST_GUILESS_MAIN(TestReachableCodes)
#include "tst_reachable_codes.moc"
