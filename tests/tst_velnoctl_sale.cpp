// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/keys_request.h"
#include "tests/support/velnoctl_client.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

constexpr qint64 anybody = 11111111111;

const QByteArray idle = plain(1, QVector<int>{});
const QByteArray openSale = plain(5, QVector<int>{1}, 0);
const QByteArray totals =
    plain(qint64(11538), qint64(442), qint64(20000), qint64(0), qint64(8462), qint32(3));
const QByteArray totalsInWords =
    "total 115.38 TL, tax 4.42 TL, cash 200.00 TL, card 0.00 TL, change 84.62 TL, items 3";

using Answers = QHash<int, QByteArray>;

QJsonObject totalsAsJson(const QJsonObject &others = {})
{
    QJsonObject values = others;
    values.insert(u"totals"_s, QJsonArray{11538, 442, 20000, 0, 8462});
    values.insert(u"number"_s, 3);
    return values;
}

/** The seven values of an item in a request. */
QByteArray itemBytes(qint64 price, const QByteArray &name, int quantity = 1000, int percent = 0,
                     qint64 amount = 0, qint8 section = 1, int type = 0)
{
    return plain(price, quantity, percent, amount, section, name, type);
}

} // namespace

/** The commands of velnoctl that sell, pay and report, in front of a register made by hand. */
class TestVelnoctlSale : public QObject
{
    Q_OBJECT

private slots:
    void commandsReachTheRegister_data();
    void commandsReachTheRegister();
    void numbersAreExact_data();
    void numbersAreExact();
    void totalsOfAnySizeArePrinted();
    void sectionNamesAreShownAsTheyAre_data();
    void sectionNamesAreShownAsTheyAre();
    void failuresEndWithTheirCode_data();
    void failuresEndWithTheirCode();
    void commandsBehindEachOtherTakeTheirOwnWords();
    void receiptIsRemembered();
    void receiptThatNobodyHasNamed();
    void scriptsQuoteNames();
};

void TestVelnoctlSale::commandsReachTheRegister_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QList<QByteArray>>("requests");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QJsonObject>("values");

    const auto row = [](const char *name, const char *line, const Answers &answers,
                        const QList<QByteArray> &requests, const QByteArray &words,
                        const QJsonObject &values = {}) {
        QTest::newRow(name) << QString::fromUtf8(line) << answers << requests << words << values;
    };
    const QByteArray state = plain(0);
    row("start", "start-sale", {{0, idle}, {3, openSale}}, {state, plain(3, 1, 0, 0, QVector<int>{69}, true)},
        "sale started");
    row("start with invoice", "start-invoice-sale", {{0, idle}, {3, openSale}},
        {state, plain(3, 1, 0, 0, QVector<int>{77, 51}, true)}, "sale started");
    row("sale state", "sale-state", {{6, plain(true, 5, QVector<int>{1, 9}, 0) + totals + plain(12, 7)}},
        {plain(6)}, "receipt 12/7, register shows 1: " + totalsInWords,
        totalsAsJson({{u"receipt"_s, u"12/7"_s}, {u"first"_s, 1}}));

    const auto item = [&row](const char *name, const char *line, const QByteArray &bytes) {
        row(name, line, {{4, yes + openSale + totals}}, {plain(4) + bytes}, totalsInWords, totalsAsJson());
    };
    item("item", "item 12.50 Ekmek", itemBytes(1250, "Ekmek"));
    item("item with everything",
         "item 39.9 \"Salkım Domates\" section=2 quantity=1.250 percent=-10 amount=3.99 type=1",
         itemBytes(3990, "Salkım Domates", 1250, -10, 399, 2, 1));
    item("keys in any order", "item 39.9 Domates type=1 quantity=1,25 section=2",
         itemBytes(3990, "Domates", 1250, 0, 0, 2, 1));
    item("remark", "item 0 \"Hediye paketi\" section=0", itemBytes(0, "Hediye paketi", 1000, 0, 0, 0));
    item("no name", "item 1 EMPTY", itemBytes(100, ""));
    item("name of 52 bytes", "item 1 ÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇ",
         itemBytes(100, QByteArray("Ç").repeated(26)));
    item("name like a command", "item 1 print", itemBytes(100, "print"));
    item("name like a key", "item 1 section=2", itemBytes(100, "section=2"));
    item("name of a plus", "item 1 + section=2", itemBytes(100, "+", 1000, 0, 0, 2));

    const auto items = [&row](const char *name, const QByteArray &line, int count, const QByteArray &bytes) {
        row(name, line, {{16, yes + openSale + totals}}, {plain(16, qint16(count)) + bytes}, totalsInWords,
            totalsAsJson());
    };
    items("one of several", "items 12.50 Ekmek", 1, itemBytes(1250, "Ekmek"));
    items("several", "items 12.50 Ekmek quantity=2 + 45,00 \"Beyaz Peynir\" section=2 + 1 Su", 3,
          itemBytes(1250, "Ekmek", 2000) + itemBytes(4500, "Beyaz Peynir", 1000, 0, 0, 2) +
              itemBytes(100, "Su"));
    items("ten", "items 1 Su" + QByteArray(" + 1 Su").repeated(9), 10, itemBytes(100, "Su").repeated(10));

    row("medical", "medical 15.00", {{9, yes + openSale}}, {plain(9, qint64(1500), anybody)},
        "medical contribution 15.00 TL", {{u"kurus"_s, 1500}});
    row("medical of a person", "medical 0.05 10000000146", {{9, yes + openSale}},
        {plain(9, qint64(5), qint64(10000000146))}, "medical contribution 0.05 TL", {{u"kurus"_s, 5}});
    row("medical taken back", "medical 0", {{9, yes + openSale}}, {plain(9, qint64(0))},
        "medical contribution 0.00 TL", {{u"kurus"_s, 0}});
    row("delete last", "delete last", {{5, yes + openSale + totals}}, {plain(5)}, totalsInWords,
        totalsAsJson());
    row("delete one", "delete 2", {{5, yes + openSale + totals}}, {plain(5, 2)}, totalsInWords,
        totalsAsJson());

    row("pay cash", "pay cash 400.05", {{0, openSale}},
        {state, keysRequest({52, 48, 48, 44, 48, 53, f10}, false)}, "payment sent: 400.05 TL, cash",
        {{u"kurus"_s, 40005}, {u"means"_s, u"cash"_s}});
    row("pay by card", "pay card 1", {{0, openSale}}, {state, keysRequest({49, 44, 48, 48, f11}, false)},
        "payment sent: 1.00 TL, card", {{u"kurus"_s, 100}, {u"means"_s, u"card"_s}});
    row("end in cash", "end-sale cash", {{0, openSale}}, {state, keysRequest({f10}, false)},
        "end of the sale sent: cash", {{u"means"_s, u"cash"_s}});
    row("end by card", "end-sale card", {{0, openSale}}, {state, keysRequest({f11}, false)},
        "end of the sale sent: card", {{u"means"_s, u"card"_s}});
    row("cancel", "cancel", {{0, openSale}, {3, idle}}, {state, keysRequest({67, 49}, true)},
        "sale cancelled");
    const auto invoice = [&row](const char *name, const char *line, quint32 type, quint32 kind,
                                const QByteArray &reference, const QByteArray &id, int mode, bool flag) {
        row(name, line, {{14, yes}}, {plain(14, type, kind, reference, id, mode, flag)},
            "sale ended with an invoice");
    };
    invoice("end with invoice", "end-invoice", 2, 0, "", "11111111111", 1, false);
    invoice("end with invoice on paper", "end-invoice reference=ABC123", 0, 0, "ABC123", "11111111111", 1,
            false);
    invoice("end with another invoice",
            "end-invoice flag=yes mode=2 id=0000000001 kind=1 type=2 reference=12345678901234567", 2, 1,
            "12345678901234567", "0000000001", 2, true);
    row("receipt data", "receipt-data 12/7", {{7, yes + totals}}, {plain(7, 12, 7)},
        "receipt 12/7: " + totalsInWords, totalsAsJson({{u"receipt"_s, u"12/7"_s}}));

    row("acquirers", "acquirers", {{19, plain(QVector<int>{46, -62, 64})}}, {plain(19)},
        "acquirers 46, -62, 64", {{u"acquirers"_s, QJsonArray{46, -62, 64}}});
    row("no acquirers", "acquirers", {{19, plain(QVector<int>{})}}, {plain(19)}, "no acquirers",
        {{u"acquirers"_s, QJsonArray{}}});
    row("acquirers of the sale", "sale-acquirers", {{20, plain(QVector<int>{11})}}, {plain(20)},
        "acquirers 11", {{u"acquirers"_s, QJsonArray{11}}});
    row("section", "section 3", {{10, plain(QByteArray("İÇECEK"), 10)}}, {plain(10, qint8(3))},
        "section 3 \"İÇECEK\", number 10", {{u"section"_s, 3}, {u"name"_s, u"İÇECEK"_s}, {u"number"_s, 10}});
    row("empty slip", "print", {{13, yes}}, {plain(13, false, plain(0))}, "slip printed");
    row("empty slip with flag", "print flag=yes", {{13, yes}}, {plain(13, true, plain(0))}, "slip printed");
    row("X report", "x-report", {{0, idle}, {11, yes}}, {state, plain(11, false)}, "X report printed");
    row("Z report", "z-report", {{0, openSale}, {11, yes}}, {state, plain(11, true)}, "Z report printed");
}

void TestVelnoctlSale::commandsReachTheRegister()
{
    QFETCH(const QString, line);
    QFETCH(const Answers, answers);
    QFETCH(const QList<QByteArray>, requests);
    QFETCH(const QByteArray, words);
    QFETCH(QJsonObject, values);
    values.insert(u"command"_s, wordsOf(line).first());
    values.insert(u"code"_s, 0);
    values.insert(u"result"_s, u"success"_s);
    for (const bool isJson : {false, true}) {
        Device device;
        device.answers = answers;
        device.meet();
        Client client(target(device.port) + (isJson ? QStringList{u"--json"_s} : QStringList()) +
                      wordsOf(line));
        QVERIFY2(client.exitCode() == 0, client.err.constData());
        QVERIFY(client.out.endsWith('\n') && client.out.count('\n') == 1);
        if (isJson)
            QCOMPARE(object(client.out), values);
        else
            QCOMPARE(client.out.trimmed(), words);
        QTRY_COMPARE_WITH_TIMEOUT(device.commands(), requests, longestWait); // payments wait for no answer
    }
}

void TestVelnoctlSale::numbersAreExact_data()
{
    QTest::addColumn<QString>("price");
    QTest::addColumn<qint64>("kurus");
    QTest::addColumn<QString>("quantity");
    QTest::addColumn<int>("thousandths");

    const auto row = [](const char *price, qint64 kurus, const char *quantity, int thousandths) {
        QTest::newRow(price) << QString::fromLatin1(price) << kurus << QString::fromLatin1(quantity)
                             << thousandths;
    };
    row("0.01", 1, "0.001", 1);
    row("0.1", 10, "0.1", 100);
    row("00012,5", 1250, "001,25", 1250);
    row("0.29", 29, "1.001", 1001); // as a binary fraction a little less
    row("-12.05", -1205, "-1.250", -1250);
    row("-0.05", -5, "-0.001", -1);
    row("90071992547409.93", 9'007'199'254'740'993, "2147483.647", std::numeric_limits<int>::max());
    row("92233720368547758.07", std::numeric_limits<qint64>::max(), "-2147483.648",
        std::numeric_limits<int>::min());
    row("-92233720368547758.08", std::numeric_limits<qint64>::min(), "1", 1000);
}

void TestVelnoctlSale::numbersAreExact()
{
    QFETCH(const QString, price);
    QFETCH(const qint64, kurus);
    QFETCH(const QString, quantity);
    QFETCH(const int, thousandths);
    Device device;
    device.answers = {{4, yes + openSale + totals}};
    device.meet();
    Client client(target(device.port) + QStringList{u"item"_s, price, u"Su"_s, u"quantity="_s + quantity});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(device.commands(), QList{plain(4) + itemBytes(kurus, "Su", thousandths)});
}

void TestVelnoctlSale::totalsOfAnySizeArePrinted()
{
    constexpr qint64 largest = std::numeric_limits<qint64>::max();
    constexpr qint64 smallest = std::numeric_limits<qint64>::min();
    Device device;
    device.answers = {{7, yes + plain(largest, smallest, qint64(-5), qint64(0), qint64(7), -6)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"receipt-data"_s, u"1/2"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out,
             "receipt 1/2: total 92233720368547758.07 TL, tax -92233720368547758.08 TL, cash -0.05 TL, "
             "card 0.00 TL, change 0.07 TL, items -6\n");
}

void TestVelnoctlSale::sectionNamesAreShownAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("shown");

    QTest::newRow("but cannot steer a terminal")
        << QByteArray("A\x1b[2J\u202E\u00C7\n") << QByteArray("A?[2J?\u00C7?");
    QTest::newRow("also with per cent signs") << QByteArray("KDV %1 %2 %3") << QByteArray("KDV %1 %2 %3");
}

void TestVelnoctlSale::sectionNamesAreShownAsTheyAre()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, shown);
    Device device;
    device.answers = {{10, plain(name, 10)}};
    device.meet();
    Client client(target(device.port) + QStringList{u"section"_s, u"4"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "section 4 \"" + shown + "\", number 10\n");
}

void TestVelnoctlSale::failuresEndWithTheirCode_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("detail");

    const auto row = [](const char *name, const char *line, const Answers &answers, int code) {
        QTest::newRow(name) << QString::fromLatin1(line) << answers << code << 0;
    };
    const QByteArray error = plain(5, QVector<int>{1}, 4);
    const QByteArray elsewhere = plain(5, QVector<int>{2}, 0);
    row("start while a sale is open", "start-sale", {{0, openSale}}, 6);
    row("start not taken", "start-sale", {{0, idle}, {3, error}}, 7);
    row("invoice sale in another state", "start-invoice-sale", {{0, plain(3, QVector<int>{})}}, 6);
    row("no sale", "sale-state", {{6, plain(true, 1, QVector<int>{1}, 0)}}, 6);
    row("sale state refused", "sale-state", {{6, no}}, 8);
    row("item refused", "item 1 Su", {{4, no}}, 8);
    row("item with an error", "item 1 Su", {{4, yes + error}}, 8);
    row("item not taken", "item 1 Su", {{4, yes + elsewhere}}, 7);
    row("item cut short", "item 1 Su", {{4, yes + openSale + totals.chopped(1)}}, 5);
    row("connection closed", "item 1 Su", {}, 2);
    row("items refused", "items 1 Su + 1 Su", {{16, no}}, 8);
    row("medical with an error", "medical 5", {{9, yes + error}}, 7);
    row("delete refused", "delete last", {{5, no}}, 8);
    row("delete without a sale", "delete 0", {{5, yes + plain(1, QVector<int>{1}, 0)}}, 6);
    row("pay without a sale", "pay cash 1", {{0, plain(1, QVector<int>{1}, 0)}}, 6);
    row("pay before a step is taken", "pay cash 1", {{0, elsewhere}}, 7);
    row("pay with an error", "pay card 1", {{0, plain(5, QVector<int>{1}, 9)}}, 8);
    row("end without a sale", "end-sale cash", {{0, plain(7, QVector<int>{1}, 0)}}, 6);
    row("cancelled to elsewhere", "cancel", {{0, openSale}, {3, plain(7, QVector<int>{})}}, 6);
    row("invoice refused", "end-invoice type=1", {{14, no}}, 8);
    row("receipt refused", "receipt-data 1/2", {{7, no}}, 8);
    row("acquirers cut short", "acquirers", {{19, plain(3, 1)}}, 5);
    row("long section name", "section 1", {{10, plain(QByteArray(53, 'x'), 10)}}, 5);
    row("text without encoding", "text Merhaba", {}, 8);
    row("feed without encoding", "feed 1", {}, 8);
    row("justified without encoding", "justified Masa 7", {}, 8);
    row("print refused", "print", {{13, no}}, 8);
    row("X report while a sale is open", "x-report", {{0, openSale}}, 6);
    row("X report refused", "x-report", {{0, idle}, {11, no}}, 8);
    row("Z report refused", "z-report", {{0, idle}, {11, no}}, 8);
    row("send as another application", "send 00", {}, 1);
    row("get as another application", "get 00", {}, 1);

    const auto wrong = [](const char *line, int detail) {
        QTest::newRow(line) << QString::fromLatin1(line) << Answers{} << 4 << detail;
    };
    wrong("item 1 Su section=9", 0x406);
    wrong("item 1 Su section=-128", 0x406);
    wrong("item 1 Su percent=-101", 0x407);
    wrong("item 1 Su amount=1.01", 0x408);
    wrong("item 1 Su type=8", 0x409);
    wrong("items 1 Su + 0 Bedava", 0x405);
    wrong("items 1 Su + 1 Su section=0", 0x406);
    wrong("medical 5 12345678901", 0x403);
    wrong("end-invoice type=3", 0x40B);
    wrong("end-invoice kind=2", 0x40C);
    wrong("end-invoice mode=0", 0x40D);
    wrong("end-invoice type=0", 0x40E);
    wrong("end-invoice reference=12345", 0x40E);
    wrong("end-invoice reference=12345678901234567", 0x40E);
    wrong("end-invoice type=1 id=123", 0x403);
    wrong("end-invoice type=1 kind=1", 0x404);
    wrong("receipt-data 0/7", 0x40F);
    wrong("receipt-data 7/0", 0x410);
    wrong("section 0", 0x406);
    wrong("pay cash 0", 0x412);
    wrong("pay card -1", 0x412);
    wrong("encoding Klingon", 0x411);
}

void TestVelnoctlSale::failuresEndWithTheirCode()
{
    QFETCH(const QString, line);
    QFETCH(const Answers, answers);
    QFETCH(const int, code);
    QFETCH(const int, detail);
    Device device;
    device.answers = answers;
    device.meet();
    Client client(target(device.port) + QStringList{u"--json"_s} + wordsOf(line));
    QCOMPARE(client.exitCode(), code);
    const QJsonObject failure = object(client.out);
    QCOMPARE(failure.value(u"command"_s).toString(), wordsOf(line).first());
    QCOMPARE(failure.value(u"code"_s).toInt(), code);
    QCOMPARE(failure.value(u"detail"_s).toInt(), detail);
    QVERIFY(!failure.contains(u"totals"_s));
    QVERIFY2(client.err.contains(velnoext_result_name(code)), client.err.constData());
    if (detail != 0)
        QVERIFY2(client.err.contains(velnoext_detail_text(detail)), client.err.constData());
    if (answers.isEmpty() && code != 2)
        QCOMPARE(device.commands(), QList<QByteArray>());
}

void TestVelnoctlSale::commandsBehindEachOtherTakeTheirOwnWords()
{
    Device device;
    device.answers = {
        {4, yes + openSale + totals}, {9, yes + openSale}, {13, yes}, {7, no}, {16, yes + openSale + totals}};
    device.meet();
    Client client(target(device.port) +
                  wordsOf(u"item 1 Su section=3 medical 5 print items 2 Simit + 3 Poğaça "
                          "quantity=2 medical 6 11111111111 receipt-data 1/2 print"_s));
    QCOMPARE(client.exitCode(), 8);
    QCOMPARE(device.codes(), (QList{4, 9, 13, 16, 9, 7}));
    QCOMPARE(device.commands().at(3),
             plain(16, qint16(2)) + itemBytes(200, "Simit") + itemBytes(300, "Poğaça", 2000));
}

void TestVelnoctlSale::receiptIsRemembered()
{
    Device device;
    device.answers = {{6, plain(true, 5, QVector<int>{1}, 0) + totals + plain(12, 7)}, {7, yes + totals}};
    device.meet();
    Client client(target(device.port) +
                  QStringList{u"sale-state"_s, u"receipt-data"_s, u"receipt-data"_s, u"3/4"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(device.commands(), (QList{plain(6), plain(7, 12, 7), plain(7, 3, 4)}));
    QVERIFY(client.out.contains("\nreceipt 12/7: "));
}

void TestVelnoctlSale::receiptThatNobodyHasNamed()
{
    Device device;
    device.meet();
    Client client(target(device.port) + QStringList{u"receipt-data"_s});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(
        client.err.contains("velnoctl: receipt-data: RECEIPT is missing, and no sale-state has told one"),
        client.err.constData());
    QCOMPARE(device.commands(), QList<QByteArray>());
}

void TestVelnoctlSale::scriptsQuoteNames()
{
    const QTemporaryDir folder;
    Device device;
    device.answers = {{4, yes + openSale + totals}, {16, yes + openSale + totals}};
    device.meet();
    const QString file = fileWith(folder, "item 12.50 \"Tam Ekmek\" section=1 # the bread\n"
                                          "item 12.50 'Tam \"Ekmek\"'\n"
                                          "item 12.50 Tam\\ Ekmek\n"
                                          "item 12.50 \"#1 \\\"Su\\\"\"\n"
                                          "items 1 'A B' + 2 \"C\"\n");
    Client client(target(device.port) + QStringList{u"run"_s, file});
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QCOMPARE(device.commands(),
             (QList{plain(4) + itemBytes(1250, "Tam Ekmek"), plain(4) + itemBytes(1250, "Tam \"Ekmek\""),
                    plain(4) + itemBytes(1250, "Tam Ekmek"), plain(4) + itemBytes(1250, "#1 \"Su\""),
                    plain(16, qint16(2)) + itemBytes(100, "A B") + itemBytes(200, "C")}));
}

QTEST_GUILESS_MAIN(TestVelnoctlSale)
#include "tst_velnoctl_sale.moc"
