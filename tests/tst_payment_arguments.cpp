// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/identity_numbers.h"
#include "tests/support/library_test.h"
#include "tests/support/sale_calls.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <cstring>

using namespace TestSupport;
using namespace Velno::Ext;

namespace {

/** Keys as one reads them: digits, comma, "F10" and "F11". */
QVector<int> keysOf(const char *text)
{
    QVector<int> keys;
    for (const QByteArray &word : QByteArray(text).split(' '))
        keys << (word == "F10" ? f10 : word == "F11" ? f11 : word == "," ? comma : 48 + word.toInt());
    return keys;
}

/** The bytes of a fixed-size text up to its first zero. */
template <size_t Size>
QByteArray textIn(const char (&storage)[Size])
{
    const QByteArray bytes(storage, Size);
    return bytes.contains('\0') ? bytes.first(bytes.indexOf('\0')) : bytes;
}

} // namespace

/** Amounts, invoices, receipts, acquirers and sections: which are sent, which are refused, which become
 * something else. */
class TestPaymentArguments : public LibraryTest
{
    Q_OBJECT

private slots:
    void amountsAreTyped_data();
    void amountsAreTyped();
    void amountsThatAreNoneComeFirst_data();
    void amountsThatAreNoneComeFirst();
    void otherTypesAreTheSecondKey_data();
    void otherTypesAreTheSecondKey();
    void acquirersNeedRoom_data();
    void acquirersNeedRoom();
    void invoicesAreChecked_data();
    void invoicesAreChecked();
    void invoiceTextsAreCut_data();
    void invoiceTextsAreCut();
    void taxNumbers_data();
    void taxNumbers();
    void receiptsNeedBothNumbers_data();
    void receiptsNeedBothNumbers();
    void sectionsAreNumbered_data();
    void sectionsAreNumbered();
    void sectionNamesFitOrFail_data();
    void sectionNamesFitOrFail();
};

void TestPaymentArguments::amountsAreTyped_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<QByteArray>("keys");

    const auto row = [](qint64 amount, const char *keys) {
        QTest::addRow("%lld", static_cast<long long>(amount)) << amount << QByteArray(keys);
    };
    row(1, "0 , 0 1");
    row(10, "0 , 1 0");
    row(99, "0 , 9 9");
    row(100, "1 , 0 0");
    row(905, "9 , 0 5");
    row(1000, "1 0 , 0 0");
    row(9999, "9 9 , 9 9");
    row(10000, "1 0 0 , 0 0");
    row(100000, "1 0 0 0 , 0 0");
    row(123456, "1 2 3 4 , 5 6");
    row(50607, "5 0 6 , 0 7");
    row(1000000001, "1 0 0 0 0 0 0 0 , 0 1");
    row(99999999999, "9 9 9 9 9 9 9 9 9 , 9 9");
    row(100000000000, "1 0 0 0 0 0 0 0 0 0 , 0 0");
    row(999999999999, "9 9 9 9 9 9 9 9 9 9 , 9 9");
    // More than 12 digits lose their last ones, two at a time.
    row(1234567890123, "1 2 3 4 5 6 7 8 9 , 0 1");
    row(12345678901234, "1 2 3 4 5 6 7 8 9 0 , 1 2");
    row(largest, "9 2 2 3 3 7 2 0 3 , 6 8");
}

void TestPaymentArguments::amountsAreTyped()
{
    QFETCH(const qint64, amount);
    QFETCH(const QByteArray, keys);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const auto &[type, key] : {std::pair(0, f10), std::pair(1, f11)}) {
        device.forgetCommands();
        device.answerInTurn({openSale(), {}, plain(true)});
        QCOMPARE(velnoext_add_payment(type, amount), 0);
        QCOMPARE(velnoext_login(patience), 0);
        const QByteArray request = keysRequest(keysOf(keys.constData()) << key, false);
        QCOMPARE(device.commands(), (QList{plain(0), request, plain(1)}));
    }
}

void TestPaymentArguments::amountsThatAreNoneComeFirst_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::newRow("0") << qint64(0);
    QTest::newRow("-1") << qint64(-1);
    QTest::newRow("smallest") << smallest;
}

void TestPaymentArguments::amountsThatAreNoneComeFirst()
{
    QFETCH(const qint64, amount);
    QCOMPARE(velnoext_add_payment(0, amount), 4); // before the library is ready
    QCOMPARE(velnoext_error_detail(), 0x412);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_add_payment(1, amount), 4);
    QCOMPARE(velnoext_error_detail(), 0x412);
    QVERIFY(device.commands().isEmpty());
    closeConnection();
    QCOMPARE(velnoext_add_payment(1, amount), 4);
    QCOMPARE(velnoext_error_detail(), 0x412);
    QCOMPARE(velnoext_add_payment(1, 1), 2);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestPaymentArguments::otherTypesAreTheSecondKey_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("key");
    QTest::newRow("0") << 0 << f10;
    for (const int type : {smallestInt, -1, 1, 2, 256, largestInt})
        QTest::addRow("%d", type) << type << f11;
}

void TestPaymentArguments::otherTypesAreTheSecondKey()
{
    QFETCH(const int, type);
    QFETCH(const int, key);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerInTurn({openSale(), {}, openSale(), {}, plain(true)});
    QCOMPARE(velnoext_end_sale(type), 0);
    QCOMPARE(velnoext_add_payment(type, 100), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(device.commands(), (QList{plain(0), keysRequest({key}, false), plain(0),
                                       keysRequest({49, comma, 48, 48, key}, false), plain(1)}));
}

void TestPaymentArguments::acquirersNeedRoom_data()
{
    QTest::addColumn<QVector<int>>("acquirers");
    QTest::addColumn<int>("room");
    QTest::addColumn<int>("result");

    const QVector<int> three{46, 62, -64};
    QTest::newRow("3 of 4") << three << 4 << 0;
    QTest::newRow("3 of 3") << three << 3 << 0;
    QTest::newRow("3 of 2") << three << 2 << 4;
    QTest::newRow("3 of 0") << three << 0 << 4;
    QTest::newRow("3 of -1") << three << -1 << 4;
    QTest::newRow("3 of the smallest") << three << smallestInt << 4;
    QTest::newRow("3 of the largest") << three << largestInt << 0;
    QTest::newRow("none of 4") << QVector<int>() << 4 << 0;
    QTest::newRow("none of 0") << QVector<int>() << 0 << 0;
    QTest::newRow("none of -1") << QVector<int>() << -1 << 4;
    QTest::newRow("many of 4") << QVector<int>(1000, 9) << 4 << 4;
}

void TestPaymentArguments::acquirersNeedRoom()
{
    QFETCH(const QVector<int>, acquirers);
    QFETCH(const int, room);
    QFETCH(const int, result);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(acquirers));
    for (const auto ask : {velnoext_active_acquirers, velnoext_acquirers_of_sale}) {
        QVector<int> list(4, -77);
        int count = room;
        QCOMPARE(ask(patience, list.data(), &count), result);
        QCOMPARE(velnoext_error_detail(), 0);
        QCOMPARE(count, result == 0 ? int(acquirers.size()) : -1);
        const QVector<int> written = result == 0 ? acquirers : QVector<int>();
        QCOMPARE(list, written + QVector<int>(4 - written.size(), -77));
    }
    QCOMPARE(device.commands(), (QList{plain(19), plain(20)}));
}

void TestPaymentArguments::invoicesAreChecked_data()
{
    QTest::addColumn<QByteArray>("storage");
    QTest::addColumn<int>("detail");

    using Invoice = VelnoInvoice;
    const auto row = [](const char *name, auto change, int detail) {
        Invoice invoice = goodInvoice();
        change(invoice);
        QTest::newRow(name) << QByteArray(reinterpret_cast<const char *>(&invoice), sizeof invoice) << detail;
    };
    const auto person = [](Invoice &invoice, const char *number) {
        invoice.idKind = 0;
        std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        std::memcpy(invoice.idNumber, number, qstrnlen(number, 12));
    };
    const auto tax = [](Invoice &invoice, const char *number) {
        std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        std::memcpy(invoice.idNumber, number, qstrnlen(number, 12));
    };
    const auto reference = [](Invoice &invoice, qsizetype length) {
        std::memset(invoice.reference, 0, sizeof invoice.reference);
        std::memset(invoice.reference, 'r', size_t(length));
    };
    row(
        "good", [](Invoice &) {}, 0);
    row(
        "type 0", [](Invoice &invoice) { invoice.invoiceType = 0; }, 0);
    row(
        "type 2", [](Invoice &invoice) { invoice.invoiceType = 2; }, 0);
    row(
        "type 3", [](Invoice &invoice) { invoice.invoiceType = 3; }, 0x40B);
    row(
        "type -1", [](Invoice &invoice) { invoice.invoiceType = unsigned(-1); }, 0x40B);
    row(
        "kind 2", [](Invoice &invoice) { invoice.idKind = 2; }, 0x40C);
    row(
        "kind -1", [](Invoice &invoice) { invoice.idKind = unsigned(-1); }, 0x40C);
    row(
        "mode 1", [](Invoice &invoice) { invoice.mode = 1; }, 0);
    row(
        "mode 0", [](Invoice &invoice) { invoice.mode = 0; }, 0x40D);
    row(
        "mode 3", [](Invoice &invoice) { invoice.mode = 3; }, 0x40D);
    row(
        "mode -1", [](Invoice &invoice) { invoice.mode = -1; }, 0x40D);
    for (const auto &[length, detail] : {std::pair(0, 0x40E), std::pair(5, 0x40E), std::pair(6, 0),
                                         std::pair(16, 0), std::pair(17, 0x40E)}) {
        const auto ofLength = [&reference, length = length](unsigned int type) {
            return [&reference, length, type](Invoice &invoice) {
                invoice.invoiceType = type;
                reference(invoice, length);
            };
        };
        row(QByteArray::number(length) + " of reference", ofLength(0), detail);
        row(QByteArray::number(length) + " of reference, type 1", ofLength(1), 0);
        row(QByteArray::number(length) + " of reference, type 2", ofLength(2), 0);
    }
    row(
        "person", [&](Invoice &invoice) { person(invoice, "10000000146"); }, 0);
    row(
        "anybody", [&](Invoice &invoice) { person(invoice, "11111111111"); }, 0);
    row(
        "person's check digit", [&](Invoice &invoice) { person(invoice, "10000000147"); }, 0x403);
    row(
        "tax number of a person", [&](Invoice &invoice) { person(invoice, "0000000001"); }, 0x403);
    row(
        "no person", [&](Invoice &invoice) { person(invoice, ""); }, 0x403);
    row(
        "12 digits of a person", [&](Invoice &invoice) { person(invoice, "111111111111"); }, 0x403);
    row(
        "tax number's check digit", [&](Invoice &invoice) { tax(invoice, "0000000002"); }, 0x404);
    row(
        "person as tax number", [&](Invoice &invoice) { tax(invoice, "10000000146"); }, 0x404);
    row(
        "anybody as tax number", [&](Invoice &invoice) { tax(invoice, "11111111111"); }, 0x404);
    row(
        "no tax number", [&](Invoice &invoice) { tax(invoice, ""); }, 0x404);
    const auto everything = [](int from) {
        return [from](Invoice &invoice) {
            invoice.invoiceType = from <= 0 ? 3 : 0;
            invoice.idKind = from <= 1 ? 2 : 1;
            invoice.mode = from <= 2 ? 3 : 1;
            std::memset(invoice.reference, from <= 3 ? 0 : 'r', 6);
            std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        };
    };
    row("type before all", everything(0), 0x40B);
    row("kind before the rest", everything(1), 0x40C);
    row("mode before the rest", everything(2), 0x40D);
    row("reference before number", everything(3), 0x40E);
    row("number at last", everything(4), 0x404);
}

void TestPaymentArguments::invoicesAreChecked()
{
    QFETCH(const QByteArray, storage);
    QFETCH(const int, detail);
    VelnoInvoice invoice;
    std::memcpy(&invoice, storage.constData(), sizeof invoice);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    const QByteArray request = plain(14, invoice.invoiceType, invoice.idKind, textIn(invoice.reference),
                                     textIn(invoice.idNumber), invoice.mode, invoice.flag != 0);
    QCOMPARE(device.commands(), detail == 0 ? QList{request} : QList<QByteArray>());
}

void TestPaymentArguments::invoiceTextsAreCut_data()
{
    QTest::addColumn<QByteArray>("reference");
    QTest::addColumn<int>("flag");
    QTest::addColumn<QByteArray>("sent"); // reference, number, mode, flag

    const QByteArray number = hex("0000000A30303030303030303031 00000001");
    QTest::newRow("empty") << QByteArray() << 0 << hex("00000000") + number + hex("00");
    QTest::newRow("17, no zero") << QByteArray(17, 'r') << 1
                                 << hex("00000011") + QByteArray(17, 'r') + number + hex("01");
    QTest::newRow("behind a zero") << QByteArray("ab\0cd", 5) << smallestInt
                                   << hex("000000026162") + number + hex("01");
    QTest::newRow("any bytes") << hex("FFC59E") << 256 << hex("00000003FFC59E") + number + hex("01");
}

void TestPaymentArguments::invoiceTextsAreCut()
{
    QFETCH(const QByteArray, reference);
    QFETCH(const int, flag);
    QFETCH(const QByteArray, sent);
    VelnoInvoice invoice = goodInvoice();
    std::memset(invoice.reference, 0, sizeof invoice.reference);
    std::copy(reference.cbegin(), reference.cend(), invoice.reference);
    invoice.invoiceType = 2;
    invoice.mode = 1;
    invoice.flag = flag;
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), 0);
    QCOMPARE(device.commands(), QList{plain(14, 2, 1) + sent});
}

void TestPaymentArguments::taxNumbers_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<bool>("valid");

    const auto row = [](const QByteArray &number, bool valid) { QTest::newRow(number) << number << valid; };
    row("0000000001", true);
    row("0000000002", false);
    row("1234567890", true);
    row("1234567891", false);
    row("000000001", false);
    row("00000000010", false);
    row("000000000A", false);
    row("A000000001", false);
    row("000000000/", false);
    row("000000000:", false);
    row("", false);
    // Only one last digit fits to the others.
    for (char last = '0'; last <= '9'; ++last)
        row(QByteArray("999999999") + last, last == '4');
}

void TestPaymentArguments::taxNumbers()
{
    QFETCH(const QByteArray, number);
    QTEST(isTaxNumber(number), "valid");
}

void TestPaymentArguments::receiptsNeedBothNumbers_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("detail");

    QTest::newRow("both") << 1 << 2 << 0;
    QTest::newRow("extremes") << smallestInt << largestInt << 0;
    QTest::newRow("no first") << 0 << 2 << 0x40F;
    QTest::newRow("no second") << 1 << 0 << 0x410;
    QTest::newRow("neither") << 0 << 0 << 0x40F;
}

void TestPaymentArguments::receiptsNeedBothNumbers()
{
    QFETCH(const int, first);
    QFETCH(const int, second);
    QFETCH(const int, detail);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + someTotals());
    VelnoReceiptRef receipt = {first, second};
    Outputs out;
    QCOMPARE(velnoext_receipt_data(patience, &receipt, &out.totals), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    QCOMPARE(out.untouched(), detail != 0);
    QCOMPARE(device.commands(), detail == 0 ? QList{plain(7, first, second)} : QList<QByteArray>());
}

void TestPaymentArguments::sectionsAreNumbered_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<bool>("known");
    for (const int section : {-128, -1, 0, 1, 2, 7, 8, 9, 127})
        QTest::addRow("%d", section) << section << (section >= 1 && section <= 8);
}

void TestPaymentArguments::sectionsAreNumbered()
{
    QFETCH(const int, section);
    QFETCH(const bool, known);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(QByteArray("Manav"), 800));
    VelnoSaleItem item = {};
    item.section = static_cast<signed char>(section);
    QCOMPARE(velnoext_section_data(patience, &item), known ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), known ? 0 : 0x406);
    QCOMPARE(device.commands(), known ? QList{plain(10, qint8(section))} : QList<QByteArray>());
    QCOMPARE(item.name, known ? "Manav" : "");
}

void TestPaymentArguments::sectionNamesFitOrFail_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("stored"); // with its zero; empty: the reply is unreadable

    const QByteArray letters(4000, 'n');
    const auto row = [](const char *name, const QByteArray &reply, const QByteArray &stored) {
        QTest::newRow(name) << reply << stored;
    };
    row("empty", plain(QByteArray(""), 1), hex("00"));
    row("none", plain(QByteArray(), 1), hex("00"));
    row("short", plain(QByteArray("ab"), 1), hex("616200"));
    row("any bytes", plain(hex("00FF41"), 1), hex("00FF4100"));
    row("51", plain(letters.first(51), 1), letters.first(51) + hex("00"));
    row("52", plain(letters.first(52), 1), letters.first(52) + hex("00"));
    row("53", plain(letters.first(53), 1), {});
    row("54", plain(letters.first(54), 1), {});
    row("84", plain(letters.first(84), 1), {});
    row("4000", plain(letters, 1), {});
    row("as long as announced, no number", plain(QByteArray("ab")), {});
}

void TestPaymentArguments::sectionNamesFitOrFail()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QByteArray, stored);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    Outputs out;
    QCOMPARE(velnoext_section_data(patience, &out.item), stored.isEmpty() ? 5 : 0);
    QCOMPARE(out.untouched(), stored.isEmpty());
    if (stored.isEmpty())
        return;
    QByteArray name(sizeof out.item.name, '\x5A'); // behind the zero all is as it was
    name.replace(0, stored.size(), stored);
    QCOMPARE(QByteArray(out.item.name, sizeof out.item.name), name);
    QCOMPARE(out.item.section, static_cast<signed char>(3));
    QCOMPARE(out.item.quantity, 1);
}

QTEST_GUILESS_MAIN(TestPaymentArguments)
#include "tst_payment_arguments.moc"
