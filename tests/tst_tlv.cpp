// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"

#include "tests/support/exact_bytes.h"
#include "tests/support/test_support.h"

#include <QTest>

using namespace Velno;
using TestSupport::ExactBytes;
using TestSupport::hex;

namespace {

constexpr unsigned short untouched = 0xBEEF;

/** Elements with every form of tag and length. */
QByteArray goodRun()
{
    return tlvElement(hex("DF8208"), hex("000001")) + tlvElement(hex("5A"), hex("42")) +
           tlvElement(hex("DF02"), QByteArray()) + tlvElement(hex("DFEF01"), QByteArray(200, 'c')) +
           tlvElement(hex("DFEF0C"), QByteArray(300, char(0xEE))) + tlvElement(hex("9F01"), hex("1122"));
}

/** What must hold for any input: the elements are the input, or its last tag stands without a length. */
void checkWalk(const QByteArray &input)
{
    const ExactBytes exact(input);
    const QVector<QByteArray> elements = extractTlvElements(exact.view());
    if (elements.isEmpty())
        return;
    QByteArray joined;
    for (const QByteArray &element : elements) {
        joined += element;
        QByteArray tag;
        QByteArray value;
        unsigned short size = 0;
        if (extractTlvElement(element, &tag, &value, &size))
            QVERIFY(element.startsWith(tag) && element.endsWith(value));
    }
    QVERIFY(joined == input || joined == input + '\0');
}

} // namespace

class TestTlv : public QObject
{
    Q_OBJECT

private slots:
    void bitSevenIsTold();
    void tagEndsAtTheFirstClearBit_data();
    void tagEndsAtTheFirstClearBit();
    void tagIsACopy();
    void lengthTakesTheShortestForm_data();
    void lengthTakesTheShortestForm();
    void lengthIsRead_data();
    void lengthIsRead();
    void everyWrittenLengthIsReadBack();
    void elementIsBuilt_data();
    void elementIsBuilt();
    void elementIsTakenOffTheFront_data();
    void elementIsTakenOffTheFront();
    void elementSizeWrapsButTheBoundDoesNot();
    void extractedBytesOutliveTheInput();
    void valueMayReplaceTheInput();
    void runIsSplit_data();
    void runIsSplit();
    void cutRunIsAllOrNothing();
    void damagedRunIsNeverMisread();
    void manySmallElementsAreSplit();
    void largestElementIsSplit();
    void viewSharesTheInput_data();
    void viewSharesTheInput();
};

void TestTlv::bitSevenIsTold()
{
    QCOMPARE(isMsbSet(0x00), 0);
    QCOMPARE(isMsbSet(0x7F), 0);
    QCOMPARE(isMsbSet(0x80), 1);
    QCOMPARE(isMsbSet(0xFF), 1);
}

void TestTlv::tagEndsAtTheFirstClearBit_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("tag");

    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("one byte") << hex("5A01") << hex("5A");
    QTest::newRow("one byte, zero") << hex("0001") << hex("00");
    QTest::newRow("largest single byte") << hex("7F80") << hex("7F");
    QTest::newRow("two bytes") << hex("DF0201") << hex("DF02");
    QTest::newRow("three bytes") << hex("DF82010541") << hex("DF8201");
    QTest::newRow("four bytes") << hex("DF82810105") << hex("DF828101");
    QTest::newRow("cut at four bytes") << hex("FFFFFFFF05") << hex("FFFFFFFF");
    QTest::newRow("cut by the end after one") << hex("80") << hex("80");
    QTest::newRow("cut by the end after two") << hex("DF82") << hex("DF82");
    QTest::newRow("cut by the end after three") << hex("FFFFFF") << hex("FFFFFF");
}

void TestTlv::tagEndsAtTheFirstClearBit()
{
    QFETCH(const QByteArray, input);
    QFETCH(const QByteArray, tag);
    const ExactBytes exact(input);
    QCOMPARE(tlvTag(exact.view()), tag);
}

void TestTlv::tagIsACopy()
{
    QByteArray tag;
    {
        const ExactBytes exact(hex("DF82"));
        tag = tlvTag(exact.view());
    }
    QCOMPARE(tag, hex("DF82"));
}

void TestTlv::lengthTakesTheShortestForm_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("encoded");

    QTest::newRow("zero") << 0 << hex("00");
    QTest::newRow("one") << 1 << hex("01");
    QTest::newRow("largest short form") << 127 << hex("7F");
    QTest::newRow("smallest long form") << 128 << hex("8180");
    QTest::newRow("largest in one byte") << 255 << hex("81FF");
    QTest::newRow("smallest in two bytes") << 256 << hex("820100");
    QTest::newRow("high byte differs from low") << 0x1234 << hex("821234");
    QTest::newRow("largest length") << 65535 << hex("82FFFF");
    QTest::newRow("too long to write") << 65536 << QByteArray();
    QTest::newRow("far too long") << INT_MAX << QByteArray();
    QTest::newRow("negative gives its low byte") << -1 << hex("FF");
    QTest::newRow("very negative") << INT_MIN << hex("00");
}

void TestTlv::lengthTakesTheShortestForm()
{
    QFETCH(const int, length);
    QFETCH(const QByteArray, encoded);
    QCOMPARE(tlvLength(length), encoded);
    if (length >= 0 && length <= 65536)
        QCOMPARE(tlvLength(QByteArray(length, 'v')), encoded);
}

void TestTlv::lengthIsRead_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<unsigned short>("length");
    QTest::addColumn<unsigned short>("lengthSize");
    const auto row = [](const char *name, const char *input, bool valid, int length, int lengthSize) {
        QTest::newRow(name) << hex(input) << valid << static_cast<unsigned short>(length)
                            << static_cast<unsigned short>(lengthSize);
    };

    row("empty", "", false, untouched, untouched);
    row("short zero", "00", true, 0, 1);
    row("short form", "05", true, 5, 1);
    row("largest short form", "7F00", true, 127, 1);
    row("80 is no form", "8001", false, 0, untouched);
    row("80 alone", "80", false, untouched, untouched);
    row("83 is no form", "83000001", false, 0, untouched);
    row("FF is no form", "FFFFFF", false, 0, untouched);
    row("81 alone", "81", false, untouched, untouched);
    row("81 zero", "8100", false, 0, untouched);
    row("81 not shortest", "8105", true, 5, 2);
    row("81 largest", "81FF00", true, 255, 2);
    row("82 alone", "82", false, untouched, untouched);
    row("82 cut", "8201", false, 0, untouched);
    row("82 zero", "820000", false, 0, untouched);
    row("82 not shortest", "820080", true, 128, 3);
    row("82 one", "820001", true, 1, 3);
    row("82 largest", "82FFFF", true, 65535, 3);
}

void TestTlv::lengthIsRead()
{
    QFETCH(const QByteArray, input);
    const ExactBytes exact(input);
    unsigned short length = untouched;
    unsigned short lengthSize = untouched;
    QTEST(lengthFromTlv(exact.view(), &length, &lengthSize), "valid");
    QTEST(length, "length");
    QTEST(lengthSize, "lengthSize");
}

void TestTlv::everyWrittenLengthIsReadBack()
{
    for (int length = 0; length <= 65535; ++length) {
        const QByteArray encoded = tlvLength(length);
        unsigned short read = untouched;
        unsigned short size = untouched;
        QVERIFY(lengthFromTlv(encoded, &read, &size));
        QCOMPARE(int(read), length);
        QCOMPARE(qsizetype(size), encoded.size());
    }
}

void TestTlv::elementIsBuilt_data()
{
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("element");
    const QByteArray largest(65535, 'v');

    QTest::newRow("no tag") << QByteArray() << hex("01") << QByteArray();
    QTest::newRow("one-byte tag") << hex("5A") << hex("42") << hex("5A0142");
    QTest::newRow("three-byte tag") << hex("DF8208") << hex("000001") << hex("DF820803000001");
    QTest::newRow("four-byte tag") << hex("DF828101") << hex("01") << QByteArray();
    QTest::newRow("empty value") << hex("DF8208") << QByteArray() << hex("DF820800");
    QTest::newRow("tag bytes are not judged") << hex("0000FF") << hex("07") << hex("0000FF0107");
    QTest::newRow("127 bytes") << hex("5A") << QByteArray(127, 'v') << hex("5A7F") + QByteArray(127, 'v');
    QTest::newRow("128 bytes") << hex("5A") << QByteArray(128, 'v') << hex("5A8180") + QByteArray(128, 'v');
    QTest::newRow("255 bytes") << hex("5A") << QByteArray(255, 'v') << hex("5A81FF") + QByteArray(255, 'v');
    QTest::newRow("256 bytes") << hex("5A") << QByteArray(256, 'v') << hex("5A820100") + QByteArray(256, 'v');
    QTest::newRow("largest value") << hex("DFEF01") << largest << hex("DFEF0182FFFF") + largest;
    QTest::newRow("value too long") << hex("DFEF01") << QByteArray(65536, 'v') << QByteArray();
}

void TestTlv::elementIsBuilt()
{
    QFETCH(const QByteArray, tag);
    QFETCH(const QByteArray, value);
    const ExactBytes exactTag(tag);
    const ExactBytes exactValue(value);
    QTEST(tlvElement(exactTag.view(), exactValue.view()), "element");
}

void TestTlv::elementIsTakenOffTheFront_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<unsigned short>("elementSize");
    const auto row = [](const char *name, const char *input, bool found, const char *tag, const char *value,
                        int elementSize) {
        QTest::newRow(name) << hex(input) << found << hex(tag) << hex(value)
                            << static_cast<unsigned short>(elementSize);
    };

    row("empty", "", false, "", "", untouched);
    row("trailing byte ignored", "9F0102112233", true, "9F01", "1122", 5);
    row("exact", "9F01021122", true, "9F01", "1122", 5);
    row("four-byte tag", "FFFFFFFF0141", true, "FFFFFFFF", "41", 6);
    row("long form, not shortest", "5A81014100", true, "5A", "41", 4);
    row("two-byte length", "5A82000241420000", true, "5A", "4142", 6);
    row("zero length", "DF820100", false, "DF8201", "", 4);
    row("declares more than there is", "DF820105AABB", false, "DF8201", "", 9);
    row("declares one byte more", "5A024100", true, "5A", "4100", 4);
    row("one byte short", "5A0241", false, "5A", "", 4);
    row("tag alone", "DF02", false, "DF02", "", 3);
    row("unfinished tag alone", "DF82", false, "DF82", "", 3);
    row("bad length byte", "5A8500", false, "5A", "", untouched);
    row("cut long form", "5A81", false, "5A", "", untouched);
    row("long form of zero", "5A8100", false, "5A", "", untouched);
}

void TestTlv::elementIsTakenOffTheFront()
{
    QFETCH(const QByteArray, input);
    const ExactBytes exact(input);
    QByteArray tag;
    QByteArray value;
    unsigned short elementSize = untouched;
    QTEST(extractTlvElement(exact.view(), &tag, &value, &elementSize), "found");
    QTEST(tag, "tag");
    QTEST(value, "value");
    QTEST(elementSize, "elementSize");
}

void TestTlv::elementSizeWrapsButTheBoundDoesNot()
{
    // 3 + 3 + 65535 bytes: 5 modulo 65536.
    const QByteArray whole = tlvElement(hex("DFEF01"), QByteArray(65535, 'v'));
    QByteArray tag;
    QByteArray value;
    unsigned short size = 0;
    QVERIFY(extractTlvElement(whole, &tag, &value, &size));
    QCOMPARE(int(size), 5);
    QCOMPARE(value, QByteArray(65535, 'v'));

    const ExactBytes cut(whole.chopped(1));
    size = 0;
    QVERIFY(!extractTlvElement(cut.view(), &tag, &value, &size));
    QCOMPARE(int(size), 5);
}

void TestTlv::extractedBytesOutliveTheInput()
{
    QByteArray tag;
    QByteArray value;
    QVector<QByteArray> elements;
    unsigned short size = 0;
    {
        const ExactBytes exact(hex("DF020441424344"));
        QVERIFY(extractTlvElement(exact.view(), &tag, &value, &size));
        elements = extractTlvElements(exact.view());
    }
    QCOMPARE(tag, hex("DF02"));
    QCOMPARE(value, QByteArray("ABCD"));
    QCOMPARE(elements, QVector<QByteArray>{hex("DF020441424344")});
}

void TestTlv::valueMayReplaceTheInput()
{
    QByteArray bytes = hex("FF8A60 05 DF0202 4142");
    QByteArray tag;
    unsigned short size = 0;
    QVERIFY(extractTlvElement(bytes, &tag, &bytes, &size));
    QCOMPARE(bytes, hex("DF02024142"));
}

void TestTlv::runIsSplit_data()
{
    using Elements = QVector<QByteArray>;
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<Elements>("elements");

    QTest::newRow("empty") << QByteArray() << Elements();
    QTest::newRow("two") << hex("5A0141 DF82080107") << Elements{hex("5A0141"), hex("DF82080107")};
    QTest::newRow("empty value") << hex("DF0100 DF02017A") << Elements{hex("DF0100"), hex("DF02017A")};
    QTest::newRow("second length invalid") << hex("5A0141 5A8500") << Elements();
    QTest::newRow("second length cut") << hex("5A0141 5A8201") << Elements();
    QTest::newRow("second length a long zero") << hex("5A0141 5A8100") << Elements();
    QTest::newRow("tag ends the input") << hex("DF0100 DF02") << Elements{hex("DF0100"), hex("DF0200")};
    QTest::newRow("unfinished tag ends the input")
        << hex("5A0141 DF82") << Elements{hex("5A0141"), hex("DF8200")};
    QTest::newRow("four-byte tag ends the input") << hex("FFFFFFFF") << Elements{hex("FFFFFFFF00")};
    QTest::newRow("one-byte tag alone") << hex("5A") << Elements{hex("5A00")};
    QTest::newRow("four-byte tag") << hex("FFFFFFFF0141") << Elements{hex("FFFFFFFF0141")};
    QTest::newRow("last is one byte short") << hex("5A0141 5A024142 5A0241") << Elements();
    QTest::newRow("declares 65535") << hex("5A82FFFF41") << Elements();
    QTest::newRow("not the shortest form")
        << hex("5A810141 5A82000142") << Elements{hex("5A810141"), hex("5A82000142")};
    QTest::newRow("nested") << hex("FF8A6005 DF02024142") << Elements{hex("FF8A6005DF02024142")};
}

void TestTlv::runIsSplit()
{
    QFETCH(const QByteArray, input);
    const ExactBytes exact(input);
    QTEST(extractTlvElements(exact.view()), "elements");
}

void TestTlv::cutRunIsAllOrNothing()
{
    const QByteArray good = goodRun();
    const QVector<QByteArray> whole = extractTlvElements(good);
    QCOMPARE(whole.size(), 6);

    for (qsizetype size = 0; size < good.size(); ++size) {
        const QByteArray prefix = good.first(size);
        checkWalk(prefix);
        const ExactBytes exact(prefix);
        const QVector<QByteArray> elements = extractTlvElements(exact.view());
        // What is found are the first elements of the whole; only a last one may end behind its tag.
        for (qsizetype i = 0; i + 1 < elements.size(); ++i)
            QCOMPARE(elements[i], whole[i]);
    }
}

void TestTlv::damagedRunIsNeverMisread()
{
    const QByteArray good = goodRun();
    for (qsizetype i = 0; i < good.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray damaged = good;
            damaged[i] = char(damaged[i] ^ (1 << bit));
            checkWalk(damaged);
        }
    }
}

void TestTlv::manySmallElementsAreSplit()
{
    const QByteArray input = hex("5A0141").repeated(65536 / 3);
    const QVector<QByteArray> elements = extractTlvElements(input);
    QCOMPARE(elements.size(), 65536 / 3);
    QCOMPARE(elements.count(hex("5A0141")), elements.size());

    // The smallest elements there are: a tag and the length 0.
    QCOMPARE(extractTlvElements(QByteArray(65536, '\0')).size(), 32768);
    QCOMPARE(extractTlvElements(QByteArray(65535, '\0')).size(), 32768);
}

void TestTlv::largestElementIsSplit()
{
    const QByteArray largest = tlvElement(hex("DFEF01"), QByteArray(65535, 'v'));
    const QVector<QByteArray> expected = {largest, hex("5A0141")};
    QCOMPARE(extractTlvElements(largest + hex("5A0141")), expected);
    const ExactBytes cut(largest.chopped(1));
    QVERIFY(extractTlvElements(cut.view()).isEmpty());
}

void TestTlv::viewSharesTheInput_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("middle") << 1 << 3 << QByteArray("bcd");
    QTest::newRow("all") << 0 << 6 << QByteArray("abcdef");
    QTest::newRow("to the end") << 2 << -1 << QByteArray("cdef");
    QTest::newRow("to the end, very negative") << 2 << INT_MIN << QByteArray("cdef");
    QTest::newRow("last byte") << 5 << 1 << QByteArray("f");
    QTest::newRow("nothing") << 3 << 0 << QByteArray();
    QTest::newRow("nothing at the end") << 6 << -1 << QByteArray();
    QTest::newRow("one too many") << 3 << 4 << QByteArray();
    QTest::newRow("the size from the middle") << 3 << 6 << QByteArray();
    QTest::newRow("behind the end") << 7 << -1 << QByteArray();
    QTest::newRow("before the front") << -1 << 2 << QByteArray();
    QTest::newRow("sum beyond 32 bits") << 3 << INT_MAX << QByteArray();
    QTest::newRow("both largest") << INT_MAX << INT_MAX << QByteArray();
}

void TestTlv::viewSharesTheInput()
{
    QFETCH(const int, position);
    QFETCH(const int, count);
    QFETCH(const QByteArray, bytes);
    const QByteArray input("abcdef");
    const QByteArray view = midRaw(input, position, count);
    QCOMPARE(view, bytes);
    if (!bytes.isEmpty())
        QCOMPARE(static_cast<const void *>(view.constData()),
                 static_cast<const void *>(input.constData() + position));
}

QTEST_APPLESS_MAIN(TestTlv)
#include "tst_tlv.moc"
