// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/bcd.h"

#include "tests/support/exact_bytes.h"
#include "tests/support/test_support.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno;
using TestSupport::ExactBytes;
using TestSupport::hex;

namespace {

constexpr const char *childVariable = "VELNO_TEST_INTEGER_OF";
using FixedWriter = QByteArray (*)(unsigned long long);

template <auto Writer>
QByteArray fixed(unsigned long long value)
{
    return Writer(unsigned(value));
}

} // namespace

Q_DECLARE_METATYPE(FixedWriter)

class TestBcd : public QObject
{
    Q_OBJECT

private slots:
    void numberTakesTheFewestBytes_data();
    void numberTakesTheFewestBytes();
    void fixedWidthPadsAndCuts_data();
    void fixedWidthPadsAndCuts();
    void numberIsRead_data();
    void numberIsRead();
    void everyByteHasItsValue();
    void dateIsWritten_data();
    void dateIsWritten();
    void dateIsRead_data();
    void dateIsRead();
    void timeIsWritten_data();
    void timeIsWritten();
    void timeIsRead_data();
    void timeIsRead();
    void everySecondOfADayIsReadBack();
    void everyDayOfTheCenturyIsReadBack();
    void storageNumbers();
    void secondsBecomeATime_data();
    void secondsBecomeATime();
    void integerIsFourBytes_data();
    void integerIsFourBytes();
    void furtherBytesOfAnIntegerAreIgnored();
    void shortIntegerEndsTheProcess_data();
    void shortIntegerEndsTheProcess();
};

void TestBcd::numberTakesTheFewestBytes_data()
{
    QTest::addColumn<unsigned long long>("value");
    QTest::addColumn<QByteArray>("bcd");

    QTest::newRow("zero") << 0ULL << hex("00");
    QTest::newRow("one digit") << 7ULL << hex("07");
    QTest::newRow("largest digit") << 9ULL << hex("09");
    QTest::newRow("smallest of two digits") << 10ULL << hex("10");
    QTest::newRow("two digits") << 42ULL << hex("42");
    QTest::newRow("largest byte") << 99ULL << hex("99");
    QTest::newRow("smallest of two bytes") << 100ULL << hex("0100");
    QTest::newRow("five digits") << 12345ULL << hex("012345");
    QTest::newRow("seven digits") << 1234567ULL << hex("01234567");
    QTest::newRow("zeros inside") << 10000000ULL << hex("10000000");
    QTest::newRow("largest number") << ~0ULL << hex("18446744073709551615");
}

void TestBcd::numberTakesTheFewestBytes()
{
    QFETCH(const unsigned long long, value);
    QFETCH(const QByteArray, bcd);
    QCOMPARE(toBcd(value), bcd);
    QCOMPARE(bcdToUInt64(bcd), value);
}

void TestBcd::fixedWidthPadsAndCuts_data()
{
    QTest::addColumn<FixedWriter>("writer");
    QTest::addColumn<unsigned long long>("value");
    QTest::addColumn<QByteArray>("bcd");
    const auto row = [](const char *name, FixedWriter writer, unsigned long long value, const char *bcd) {
        QTest::newRow(name) << writer << value << hex(bcd);
    };

    row("1: zero", fixed<toBcd1>, 0, "00");
    row("1: largest", fixed<toBcd1>, 99, "99");
    row("1: cut after the first byte", fixed<toBcd1>, 123, "01");
    row("1: cut 250", fixed<toBcd1>, 250, "02");
    row("2: padded", fixed<toBcd2>, 5, "0005");
    row("2: largest", fixed<toBcd2>, 9999, "9999");
    row("2: five digits are cut", fixed<toBcd2>, 10000, "0100");
    row("2: six digits are cut", fixed<toBcd2>, 123456, "1234");
    row("3: padded", fixed<toBcd3>, 1, "000001");
    row("3: largest", fixed<toBcd3>, 999999, "999999");
    row("3: cut", fixed<toBcd3>, 1234567, "012345");
    row("4: padded", fixed<toBcd4>, 123, "00000123");
    row("4: largest", fixed<toBcd4>, 99999999, "99999999");
    row("4: cut", fixed<toBcd4>, 4294967295, "42949672");
    row("6: amount", toBcd6, 1050, "000000001050");
    row("6: beyond 32 bits", toBcd6, 999999999999, "999999999999");
    row("6: cut", toBcd6, 1234567890123, "012345678901");
}

void TestBcd::fixedWidthPadsAndCuts()
{
    QFETCH(const FixedWriter, writer);
    QFETCH(const unsigned long long, value);
    QTEST(writer(value), "bcd");
}

void TestBcd::numberIsRead_data()
{
    QTest::addColumn<QByteArray>("bcd");
    QTest::addColumn<unsigned long long>("value");

    QTest::newRow("empty") << QByteArray() << 0ULL;
    QTest::newRow("two bytes") << hex("1234") << 1234ULL;
    QTest::newRow("leading zero") << hex("0009") << 9ULL;
    QTest::newRow("bad units") << hex("1A") << 255ULL;
    QTest::newRow("bad tens") << hex("A1") << 255ULL;
    QTest::newRow("both bad") << hex("FF") << 255ULL;
    QTest::newRow("smallest bad byte") << hex("0A") << 255ULL;
    QTest::newRow("bad byte in front keeps its weight") << hex("FF01") << 25501ULL;
    QTest::newRow("bad byte in the middle") << hex("01FF02") << 35502ULL;
    QTest::newRow("largest 32-bit number") << hex("4294967295") << 4294967295ULL;
}

void TestBcd::numberIsRead()
{
    QFETCH(const QByteArray, bcd);
    QFETCH(const unsigned long long, value);
    QCOMPARE(bcdToUInt(bcd), unsigned(value));
    QCOMPARE(bcdToUInt64(bcd), value);
}

void TestBcd::everyByteHasItsValue()
{
    for (int byte = 0; byte < 256; ++byte) {
        const int high = byte / 16;
        const int low = byte % 16;
        const unsigned int expected = high > 9 || low > 9 ? 255 : unsigned(high * 10 + low);
        QCOMPARE(bcdToUInt(QByteArray(1, char(byte))), expected);
    }
}

void TestBcd::dateIsWritten_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<QByteArray>("full");
    QTest::addColumn<QByteArray>("shortYear");

    QTest::newRow("a date") << QDate(2024, 3, 7) << hex("20240307") << hex("240307");
    QTest::newRow("year 00") << QDate(2000, 1, 1) << hex("20000101") << hex("000101");
    QTest::newRow("last of a century") << QDate(1999, 12, 31) << hex("19991231") << hex("991231");
    QTest::newRow("early year") << QDate(45, 10, 20) << hex("00451020") << hex("451020");
    QTest::newRow("null") << QDate() << hex("00000000") << hex("000000");
    QTest::newRow("no date") << QDate(2024, 2, 30) << hex("00000000") << hex("000000");
}

void TestBcd::dateIsWritten()
{
    QFETCH(const QDate, date);
    QTEST(toBcd(date, true), "full");
    QTEST(toBcd(date, false), "shortYear");
}

void TestBcd::dateIsRead_data()
{
    QTest::addColumn<QByteArray>("bcd");
    QTest::addColumn<QDate>("date");

    QTest::newRow("a date") << hex("240307") << QDate(2024, 3, 7);
    QTest::newRow("first") << hex("000101") << QDate(2000, 1, 1);
    QTest::newRow("last") << hex("991231") << QDate(2099, 12, 31);
    QTest::newRow("leap day") << hex("240229") << QDate(2024, 2, 29);
    QTest::newRow("no leap day") << hex("230229") << QDate();
    QTest::newRow("30 February") << hex("240230") << QDate();
    QTest::newRow("zeros") << hex("000000") << QDate();
    QTest::newRow("month 0") << hex("240007") << QDate();
    QTest::newRow("month 13") << hex("241307") << QDate();
    QTest::newRow("day 0") << hex("240300") << QDate();
    QTest::newRow("bad month") << hex("240A07") << QDate();
    QTest::newRow("bad day") << hex("24030F") << QDate();
    QTest::newRow("bad year counts 255") << hex("FF0307") << QDate(2255, 3, 7);
    QTest::newRow("empty") << QByteArray() << QDate();
    QTest::newRow("2 bytes") << hex("2403") << QDate();
    QTest::newRow("4 bytes") << hex("20240307") << QDate();
}

void TestBcd::dateIsRead()
{
    QFETCH(const QByteArray, bcd);
    const ExactBytes exact(bcd);
    QTEST(bcdToDate(exact.view()), "date");
}

void TestBcd::timeIsWritten_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<QByteArray>("withSeconds");
    QTest::addColumn<QByteArray>("withoutSeconds");

    QTest::newRow("a time") << QTime(13, 5, 9) << hex("130509") << hex("1305");
    QTest::newRow("midnight") << QTime(0, 0) << hex("000000") << hex("0000");
    QTest::newRow("last second") << QTime(23, 59, 59, 999) << hex("235959") << hex("2359");
    QTest::newRow("null") << QTime() << hex("000000") << hex("0000");
    QTest::newRow("no time") << QTime(24, 0) << hex("000000") << hex("0000");
}

void TestBcd::timeIsWritten()
{
    QFETCH(const QTime, time);
    QTEST(toBcd(time, false), "withSeconds");
    QTEST(toBcd(time, true), "withoutSeconds");
}

void TestBcd::timeIsRead_data()
{
    QTest::addColumn<QByteArray>("bcd");
    QTest::addColumn<bool>("withoutSeconds");
    QTest::addColumn<QTime>("time");

    QTest::newRow("with seconds") << hex("130509") << false << QTime(13, 5, 9);
    QTest::newRow("without seconds") << hex("1305") << true << QTime(13, 5, 0);
    QTest::newRow("midnight") << hex("000000") << false << QTime(0, 0);
    QTest::newRow("last second") << hex("235959") << false << QTime(23, 59, 59);
    QTest::newRow("seconds missing") << hex("1305") << false << QTime();
    QTest::newRow("seconds too many") << hex("130509") << true << QTime();
    QTest::newRow("empty") << QByteArray() << true << QTime();
    QTest::newRow("hour 24") << hex("240000") << false << QTime();
    QTest::newRow("minute 60") << hex("1260") << true << QTime();
    QTest::newRow("second 60") << hex("125960") << false << QTime();
    QTest::newRow("bad hour") << hex("1A00") << true << QTime();
    QTest::newRow("bad second") << hex("1200FF") << false << QTime();
}

void TestBcd::timeIsRead()
{
    QFETCH(const QByteArray, bcd);
    QFETCH(const bool, withoutSeconds);
    QFETCH(const QTime, time);
    const ExactBytes exact(bcd);
    const QTime read = bcdToTime(exact.view(), withoutSeconds);
    QCOMPARE(read, time);
    QCOMPARE(read.isValid(), time.isValid());
}

void TestBcd::everySecondOfADayIsReadBack()
{
    for (int second = 0; second < 86400; ++second) {
        const QTime time = toTime(second);
        QVERIFY(time.isValid());
        QCOMPARE(toDbFormat(time), second);
        QCOMPARE(bcdToTime(toBcd(time, false), false), time);
    }
}

void TestBcd::everyDayOfTheCenturyIsReadBack()
{
    for (QDate date(2000, 1, 1); date.year() < 2100; date = date.addDays(1)) {
        QCOMPARE(bcdToDate(toBcd(date, false)), date);
        QCOMPARE(toDate(toDbFormat(date)), date);
    }
}

void TestBcd::storageNumbers()
{
    QCOMPARE(toDbFormat(QDate(2000, 1, 1)), 2451545);
    QCOMPARE(toDate(2451545), QDate(2000, 1, 1));
    QCOMPARE(toDbFormat(QTime(13, 5, 9, 999)), 13 * 3600 + 5 * 60 + 9);
}

void TestBcd::secondsBecomeATime_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QTime>("time");
    QTest::addColumn<bool>("valid");

    QTest::newRow("midnight") << 0 << QTime(0, 0) << true;
    QTest::newRow("one of each") << 3661 << QTime(1, 1, 1) << true;
    QTest::newRow("last second") << 86399 << QTime(23, 59, 59) << true;
    QTest::newRow("a whole day") << 86400 << QTime(24, 0) << false;
    QTest::newRow("largest") << INT_MAX << QTime(24, 0) << false;
    QTest::newRow("negative") << -1 << QTime() << false;
    QTest::newRow("most negative") << INT_MIN << QTime() << false;
}

void TestBcd::secondsBecomeATime()
{
    QFETCH(const int, seconds);
    const QTime time = toTime(seconds);
    QTEST(time, "time");
    QTEST(time.isValid(), "valid");
}

void TestBcd::integerIsFourBytes_data()
{
    QTest::addColumn<unsigned int>("value");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("zero") << 0U << hex("00000000");
    QTest::newRow("order") << 0x01020304U << hex("01020304");
    QTest::newRow("top bit") << 0x80000000U << hex("80000000");
    QTest::newRow("largest") << 0xFFFFFFFFU << hex("FFFFFFFF");
}

void TestBcd::integerIsFourBytes()
{
    QFETCH(const unsigned int, value);
    QFETCH(const QByteArray, bytes);
    QCOMPARE(intToByteArray(value), bytes);
    const ExactBytes exact(bytes);
    QCOMPARE(byteArrayToInt(exact.view()), value);
}

void TestBcd::furtherBytesOfAnIntegerAreIgnored()
{
    QCOMPARE(byteArrayToInt(hex("FFFFFFFE00")), 4294967294U);
}

void TestBcd::shortIntegerEndsTheProcess_data()
{
    QTest::addColumn<QString>("bytes");
    QTest::addColumn<bool>("ends");

    QTest::newRow("3 bytes") << u"010203"_s << true;
    QTest::newRow("1 byte") << u"01"_s << true;
    QTest::newRow("4 bytes") << u"01020304"_s << false;
}

void TestBcd::shortIntegerEndsTheProcess()
{
    QFETCH(const QString, bytes);
    QFETCH(const bool, ends);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(childVariable), bytes);
    QProcess child;
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(child.waitForFinished());

    QCOMPARE(child.exitStatus() == QProcess::CrashExit, ends);
    const QByteArray errors = child.readAllStandardError();
    QCOMPARE(errors.contains("byteArrayToInt(): array size less than 4"), ends);
}

int main(int argc, char **argv)
{
    // This program is its own child, which converts the bytes that the variable names.
    const QByteArray bytes = qgetenv(childVariable);
    if (!bytes.isEmpty())
        return byteArrayToInt(QByteArray::fromHex(bytes)) == 0x01020304 ? 0 : 1;

    QCoreApplication application(argc, argv);
    TestBcd test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_bcd.moc"
