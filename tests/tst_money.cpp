// SPDX-License-Identifier: Apache-2.0

#include "till/money.h"

#include "ExtDevice/velnoext/sale.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

class TestMoney : public QObject
{
    Q_OBJECT

private slots:
    void decimalsAreReadExactly_data();
    void decimalsAreReadExactly();
    void whatIsNoDecimalIsRefused_data();
    void whatIsNoDecimalIsRefused();
    void kurusAreWrittenAsLira_data();
    void kurusAreWrittenAsLira();
    void quantitiesLoseTrailingZeros_data();
    void quantitiesLoseTrailingZeros();
    void whatIsWrittenIsRead();
    void linesComeToWhatTheLibraryCounts();
};

void TestMoney::decimalsAreReadExactly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<qint64>("number");

    QTest::newRow("all decimals") << u"12.50"_s << 2 << qint64(1250);
    QTest::newRow("fewer decimals") << u"12.5"_s << 2 << qint64(1250);
    QTest::newRow("no decimals") << u"12"_s << 2 << qint64(1200);
    QTest::newRow("thousandths") << u"1.005"_s << 3 << qint64(1005);
    QTest::newRow("without decimals") << u"7"_s << 0 << qint64(7);
    QTest::newRow("nothing") << u"0"_s << 2 << qint64(0);
    QTest::newRow("the smallest") << u"0.01"_s << 2 << qint64(1);
    QTest::newRow("zeros in front") << u"0012.50"_s << 2 << qint64(1250);
    QTest::newRow("15 digits") << u"9999999999999.99"_s << 2 << qint64(999'999'999'999'999);
    // As floating point numbers these would come to a kuruş less.
    QTest::newRow("0.29") << u"0.29"_s << 2 << qint64(29);
    QTest::newRow("1.15") << u"1.15"_s << 2 << qint64(115);
}

void TestMoney::decimalsAreReadExactly()
{
    QFETCH(const QString, text);
    QFETCH(const int, decimals);
    QFETCH(const qint64, number);
    QCOMPARE(decimalFrom(text, decimals), std::optional(number));
}

void TestMoney::whatIsNoDecimalIsRefused_data()
{
    QTest::addColumn<QString>("text");

    for (const QString &text : {u""_s,
                                u"."_s,
                                u"12."_s,
                                u".5"_s,
                                u"12,50"_s,
                                u"12.505"_s,
                                u"-1"_s,
                                u"+1"_s,
                                u" 1"_s,
                                u"1 "_s,
                                u"1e3"_s,
                                u"0x10"_s,
                                u"1.2.3"_s,
                                u"1.-5"_s,
                                u"12.50 TL"_s,
                                u"1.000,00"_s,
                                u"nan"_s,
                                u"٣"_s,
                                u"12.5٣"_s,
                                u"1\n"_s,
                                u"10000000000000"_s,
                                u"99999999999999999999999999"_s,
                                u"1\u0000"_s})
        QTest::addRow("\"%s\"", qPrintable(text)) << text;
}

void TestMoney::whatIsNoDecimalIsRefused()
{
    QFETCH(const QString, text);
    QVERIFY(!decimalFrom(text, 2));
}

void TestMoney::kurusAreWrittenAsLira_data()
{
    QTest::addColumn<qint64>("kurus");
    QTest::addColumn<QString>("text");

    QTest::newRow("lira and kuruş") << qint64(1250) << u"12.50"_s;
    QTest::newRow("nothing") << qint64(0) << u"0.00"_s;
    QTest::newRow("one") << qint64(1) << u"0.01"_s;
    QTest::newRow("below nothing") << qint64(-105) << u"-1.05"_s;
    QTest::newRow("the most") << mostKurus << u"9999999999.99"_s;
    QTest::newRow("the least of its type")
        << std::numeric_limits<qint64>::min() << u"-92233720368547758.08"_s;
}

void TestMoney::kurusAreWrittenAsLira()
{
    QFETCH(const qint64, kurus);
    QFETCH(const QString, text);
    QCOMPARE(liraText(kurus), text);
}

void TestMoney::quantitiesLoseTrailingZeros_data()
{
    QTest::addColumn<qint32>("thousandths");
    QTest::addColumn<QString>("text");

    QTest::newRow("whole") << 2000 << u"2"_s;
    QTest::newRow("whole with zeros of its own") << 100'000 << u"100"_s;
    QTest::newRow("half") << 1500 << u"1.5"_s;
    QTest::newRow("hundredths") << 1250 << u"1.25"_s;
    QTest::newRow("the smallest") << 1 << u"0.001"_s;
    QTest::newRow("nothing") << 0 << u"0"_s;
    QTest::newRow("the most") << std::numeric_limits<qint32>::max() << u"2147483.647"_s;
    QTest::newRow("the least") << std::numeric_limits<qint32>::min() << u"-2147483.648"_s;
}

void TestMoney::quantitiesLoseTrailingZeros()
{
    QFETCH(const qint32, thousandths);
    QFETCH(const QString, text);
    QCOMPARE(quantityText(thousandths), text);
}

void TestMoney::whatIsWrittenIsRead()
{
    QRandomGenerator random(7);
    for (int i = 0; i < 10'000; ++i) {
        const qint64 kurus = qint64(random.generate64() % quint64(mostKurus));
        QCOMPARE(decimalFrom(liraText(kurus), 2), std::optional(kurus));
        const qint32 thousandths = qint32(random.generate() % 2'147'483'648U);
        QCOMPARE(decimalFrom(quantityText(thousandths), 3), std::optional(qint64(thousandths)));
    }
}

/** A discount that is judged to fit into its line must fit for the library, too. */
void TestMoney::linesComeToWhatTheLibraryCounts()
{
    const auto compare = [](qint64 price, qint32 quantity) {
        VelnoSaleItem item = {};
        item.price = price;
        item.quantity = quantity;
        QCOMPARE(quint64(lineTotal(price, quantity)), quint64(Velno::Ext::lineTotal(item)));
    };
    compare(1, 500); // half a kuruş is one
    compare(1, 499); // less is none
    compare(3990, 1250);
    compare(mostKurus, std::numeric_limits<qint32>::max());
    QRandomGenerator random(11);
    for (int i = 0; i < 10'000; ++i)
        compare(qint64(random.generate64() % 10'000'000), qint32(random.generate() % 1'000'000));
}

QTEST_APPLESS_MAIN(TestMoney)
#include "tst_money.moc"
