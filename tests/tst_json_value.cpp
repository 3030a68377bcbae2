// SPDX-License-Identifier: Apache-2.0

#include "till/json_value.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

/** A value as one line, in which everything that was read can be seen. */
QString spelt(const JsonValue &value)
{
    if (value.isText())
        return u'\'' + value.text + u'\'';
    if (!value.isList() && !value.isObject())
        return inWords(value);
    QStringList parts;
    for (size_t i = 0; i < value.values.size(); ++i)
        parts << (value.isObject() ? value.names[i] + u'=' : QString()) + spelt(value.values[i]);
    return (value.isObject() ? u"{%1}"_s : u"[%1]"_s).arg(parts.join(u' '));
}

QByteArray nested(int levels)
{
    return QByteArray(levels, '[') + QByteArray(levels, ']');
}

} // namespace

class TestJsonValue : public QObject
{
    Q_OBJECT

private slots:
    void everythingIsReadAsItWasWritten_data();
    void everythingIsReadAsItWasWritten();
    void whatIsNoJsonIsRefused_data();
    void whatIsNoJsonIsRefused();
    void everyPrefixIsRefused();
    void moreThanAReceiptNeedsIsRefused_data();
    void moreThanAReceiptNeedsIsRefused();
    void messagesHoldNoMoreThanIsSeen_data();
    void messagesHoldNoMoreThanIsSeen();
};

void TestJsonValue::everythingIsReadAsItWasWritten_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("read");

    QTest::newRow("words") << "[null, true,false]"_ba << u"[null true false]"_s;
    QTest::newRow("numbers") << "[0,-0,12,12.0,1e3,-1.5E-7,12345678901234567890123]"_ba
                             << u"[0 -0 12 12.0 1e3 -1.5E-7 12345678901234567890123]"_s;
    QTest::newRow("text") << R"("Ekmek")"_ba << u"'Ekmek'"_s;
    QTest::newRow("empty text") << R"("")"_ba << u"''"_s;
    QTest::newRow("UTF-8") << "\"Çay ☕ 🍞\""_ba << u"'Çay ☕ 🍞'"_s;
    QTest::newRow("escapes") << R"("\"\\\/\b\f\n\r\t")"_ba << u"'\"\\/\b\f\n\r\t'"_s;
    QTest::newRow("code points") << R"("\u00e7\u00C7\ud83c\udf5e")"_ba << u"'çÇ🍞'"_s;
    QTest::newRow("order and doubles") << R"({"b":1,"a":[],"b":{}})"_ba << u"{b=1 a=[] b={}}"_s;
    QTest::newRow("space") << " \t\r\n{ \"a\" :\n[ 1 , 2 ] }\n"_ba << u"{a=[1 2]}"_s;
    QTest::newRow("a mark in front") << "\xEF\xBB\xBF[1]"_ba << u"[1]"_s;
    QTest::newRow("8 levels") << nested(8) << u"[[[[[[[[]]]]]]]]"_s;
}

void TestJsonValue::everythingIsReadAsItWasWritten()
{
    QFETCH(const QByteArray, json);
    QFETCH(const QString, read);
    QString problem;
    const std::optional<JsonValue> value = readJson(json, &problem);
    QVERIFY2(value, qPrintable(problem));
    QCOMPARE(spelt(*value), read);
    QCOMPARE(problem, QString());
}

void TestJsonValue::whatIsNoJsonIsRefused_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("problem");

    const auto at = [](int line, int column, const QString &accepted) {
        return u"line %1, column %2: this is no JSON; accepted: %3"_s.arg(line).arg(column).arg(accepted);
    };
    QTest::newRow("nothing") << QByteArray() << at(1, 1, u"a value"_s);
    QTest::newRow("space alone") << " \n "_ba << at(2, 2, u"a value"_s);
    QTest::newRow("a word") << "{\"a\": True}"_ba << at(1, 7, u"a value"_s);
    QTest::newRow("NaN") << "NaN"_ba << at(1, 1, u"a value"_s);
    QTest::newRow("two values") << "1 2"_ba << at(1, 3, u"nothing more"_s);
    QTest::newRow("comma at the end") << "[1,]"_ba << at(1, 4, u"a value"_s);
    QTest::newRow("comma in an object") << "{\"a\":1,}"_ba << at(1, 8, u"a name in quotes"_s);
    QTest::newRow("no comma") << "[1\n2]"_ba << at(2, 1, u"\",\" or \"]\""_s);
    QTest::newRow("no comma in an object") << "{\"a\":1 \"b\":2}"_ba << at(1, 8, u"\",\" or \"}\""_s);
    QTest::newRow("no colon") << "{\"a\" 1}"_ba << at(1, 6, u"\":\""_s);
    QTest::newRow("no quotes") << "{a:1}"_ba << at(1, 2, u"a name in quotes"_s);
    QTest::newRow("other quotes") << "{'a':1}"_ba << at(1, 2, u"a name in quotes"_s);
    QTest::newRow("a comment") << "[1, // two\n2]"_ba << at(1, 5, u"a value"_s);
    QTest::newRow("zero in front") << "[012]"_ba << at(1, 5, u"a number without zeros in front"_s);
    QTest::newRow("zero behind a minus") << "-01"_ba << at(1, 4, u"a number without zeros in front"_s);
    QTest::newRow("point at the end") << "[1.]"_ba << at(1, 4, u"a digit"_s);
    QTest::newRow("point in front") << "[.5]"_ba << at(1, 2, u"a value"_s);
    QTest::newRow("plus") << "[+5]"_ba << at(1, 2, u"a value"_s);
    QTest::newRow("minus alone") << "[-]"_ba << at(1, 3, u"a digit"_s);
    QTest::newRow("exponent alone") << "[1e]"_ba << at(1, 4, u"a digit"_s);
    QTest::newRow("line within a text")
        << "[\"a\nb\"]"_ba << at(1, 4, u"a text that ends with a quote on its line"_s);
    QTest::newRow("NUL within a text")
        << "\"a\0b\""_ba << at(1, 3, u"a text that ends with a quote on its line"_s);
    QTest::newRow("unknown escape") << R"("\a")"_ba << at(1, 3, u"one of \"\\/bfnrtu behind a backslash"_s);
    for (const char *const code : {R"("\u12")", R"("\u+123")", R"("\u 123")", R"("\u0x12")", R"("\u12G4")"})
        QTest::newRow(code) << QByteArray(code) << at(1, 4, u"four hexadecimal digits behind \\u"_s);
    QTest::newRow("half a character") << R"("\ud83c")"_ba << at(1, 9, u"whole characters, also behind \\u"_s);
    QTest::newRow("other half") << R"("\udf5e")"_ba << at(1, 9, u"whole characters, also behind \\u"_s);
    for (const QByteArray &bytes : {"\xFF"_ba, "\xC3"_ba, "\xC0\xAF"_ba, "\xED\xA0\xBC"_ba, "\xFE"_ba,
                                    "\xF8\x88\x80\x80\x80"_ba, "\xF4\x90\x80\x80"_ba})
        QTest::newRow(("bytes " + bytes.toHex()).constData())
            << '"' + bytes + '"' << u"this is no UTF-8; accepted: JSON in UTF-8"_s;
    QTest::newRow("half a letter at the end")
        << "1 \xC3"_ba << u"this is no UTF-8; accepted: JSON in UTF-8"_s;
}

void TestJsonValue::whatIsNoJsonIsRefused()
{
    QFETCH(const QByteArray, json);
    QFETCH(const QString, problem);
    QString said;
    QVERIFY(!readJson(json, &said));
    QCOMPARE(said, problem);
}

void TestJsonValue::everyPrefixIsRefused()
{
    const QByteArray whole = R"({"a":[1,-2.5e+3,"\u00e7\n",true,null],"ç":{"b":false}})"_ba;
    QString problem;
    QVERIFY(readJson(whole, &problem));
    for (qsizetype i = 0; i < whole.size(); ++i) {
        QVERIFY(!readJson(whole.first(i), &problem));
        QVERIFY(!problem.isEmpty());
    }
}

void TestJsonValue::moreThanAReceiptNeedsIsRefused_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<QString>("accepted");

    const auto listOf = [](int count) { return "[0" + ",0"_ba.repeated(count - 1) + ']'; };
    const qsizetype most = 1024 * 1024;
    QTest::newRow("1 MiB") << '"' + QByteArray(most - 2, 'a') + '"' << true << QString();
    QTest::newRow("more") << '"' + QByteArray(most - 1, 'a') + '"' << false << u"accepted: 1048576"_s;
    QTest::newRow("50,000 values") << listOf(49'999) << true << QString();
    QTest::newRow("one more") << listOf(50'000) << false << u"no more than 50000 values"_s;
    QTest::newRow("9 levels") << nested(9) << false << u"no more than 8 levels"_s;
    QTest::newRow("half a million levels") << nested(500'000) << false << u"no more than 8 levels"_s;
}

void TestJsonValue::moreThanAReceiptNeedsIsRefused()
{
    QFETCH(const QByteArray, json);
    QFETCH(const bool, isRead);
    QFETCH(const QString, accepted);
    QString problem;
    QCOMPARE(readJson(json, &problem).has_value(), isRead);
    QVERIFY2(problem.endsWith(accepted), qPrintable(problem));
}

void TestJsonValue::messagesHoldNoMoreThanIsSeen_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    QTest::newRow("plain") << u"Çay"_s << u"\"Çay\""_s;
    QTest::newRow("control characters") << u"a\n\x1b[2J\u0085b"_s << u"\"a\uFFFD\uFFFD[2J\uFFFDb\""_s;
    QTest::newRow("against the direction") << u"a\u202Eb"_s << u"\"a\uFFFDb\""_s;
    QTest::newRow("just short enough") << QString(60, u'a') << u"\"%1\""_s.arg(QString(60, u'a'));
    QTest::newRow("long") << QString(61, u'a') << u"\"%1…\""_s.arg(QString(60, u'a'));
    QTest::newRow("cut within a character")
        << QString(59, u'a') + u"🍞"_s << u"\"%1…\""_s.arg(QString(59, u'a'));
}

void TestJsonValue::messagesHoldNoMoreThanIsSeen()
{
    QFETCH(const QString, text);
    QFETCH(const QString, shown);
    QCOMPARE(quoted(text), shown);
}

QTEST_APPLESS_MAIN(TestJsonValue)
#include "tst_json_value.moc"
