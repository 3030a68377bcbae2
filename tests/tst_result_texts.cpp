#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/result_texts.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <limits>

using namespace Velno::Ext;
using namespace Qt::StringLiterals;

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

QString fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString sourceFolder()
{
    return QStringLiteral(VELNO_SOURCE_FOLDER);
}

/** The library's own sources in one text, without the texts themselves. */
QString sources()
{
    QString all;
    const QDir folder(sourceFolder());
    for (const QString &name : folder.entryList({u"*.cpp"_s, u"*.h"_s})) {
        if (!name.startsWith("result_texts."_L1))
            all += fileText(folder.filePath(name));
    }
    return all;
}

QSet<int> numbersIn(const QString &text, const QString &pattern)
{
    QSet<int> numbers;
    auto all = QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
    while (all.hasNext())
        numbers << all.next().captured(1).toInt(nullptr, 0);
    return numbers;
}

/** Printable ASCII without an outer blank: fit for any log and any message box. */
bool isTidy(const QString &text)
{
    static const QRegularExpression tidy(u"\\A[!-~]([ -~]*[!-~])?\\z"_s);
    return tidy.match(text).hasMatch() && !text.contains("  "_L1);
}

QString text(const char *found)
{
    return QString::fromUtf8(found);
}

QSet<int> namedDetails()
{
    QSet<int> named;
    for (const DetailText &row : detailTexts())
        named << row.detail;
    return named;
}

} // namespace

class TestResultTexts : public QObject
{
    Q_OBJECT

private slots:
    void codesAreThoseOfTheHeader();
    void everyCodeHasThreeLines_data();
    void everyCodeHasThreeLines();
    void namesTellCodesApart();
    void everyDetailSaysWhichArgument();
    void detailsOfTheSourcesHaveTexts();
    void detailsNameTheFunctionsThatGiveThem();
    void otherNumbersHaveFittingTexts_data();
    void otherNumbersHaveFittingTexts();
    void textsNeedNoLock();
};

void TestResultTexts::codesAreThoseOfTheHeader()
{
    const QString comment = fileText(sourceFolder() + "/velnoext.h"_L1).section("*/"_L1, 0, 0);
    const QSet<int> listed = numbersIn(comment, u"^ \\* +([0-9]+)  \\S"_s);
    QSet<int> known;
    for (const ResultText &row : resultTexts())
        known << row.code;
    QCOMPARE(listed.size(), 14);
    QCOMPARE(known, listed);
}

void TestResultTexts::everyCodeHasThreeLines_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 64, lowest, highest})
        QTest::addRow("%d", code) << code;
}

void TestResultTexts::everyCodeHasThreeLines()
{
    QFETCH(const int, code);
    const QStringList lines = text(velnoext_result_text(code)).split(u'\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(1).startsWith("Cause: "_L1));
    QVERIFY(lines.at(2).startsWith("Cure: "_L1));
    for (const QString &line : lines) {
        QVERIFY2(isTidy(line), qPrintable(line));
        QVERIFY2(line.endsWith(u'.'), qPrintable(line));
    }
    const bool known = code >= 0 && code <= 13;
    QCOMPARE(text(velnoext_result_name(code)) != "unknown"_L1, known);
}

void TestResultTexts::namesTellCodesApart()
{
    static const QRegularExpression shape(u"\\A[a-z]+(-[a-z]+)*\\z"_s);
    QSet<QString> names;
    QSet<QString> texts;
    for (int code = 0; code <= 14; ++code) {
        QVERIFY2(shape.match(text(velnoext_result_name(code))).hasMatch(), velnoext_result_name(code));
        names << text(velnoext_result_name(code));
        texts << text(velnoext_result_text(code));
    }
    QCOMPARE(names.size(), 15);
    QCOMPARE(texts.size(), 15);
    QCOMPARE(text(velnoext_result_name(0)), u"success"_s);
    QCOMPARE(text(velnoext_result_name(9)), u"no-paper"_s);
}

void TestResultTexts::everyDetailSaysWhichArgument()
{
    QSet<QString> texts;
    for (const DetailText &row : detailTexts()) {
        const QString line = text(velnoext_detail_text(row.detail));
        QCOMPARE(line, text(row.text));
        QVERIFY2(isTidy(line) && line.endsWith(u'.'), row.text);
        QCOMPARE(line.startsWith("NULL"_L1), row.detail >= 0x300 && row.detail < 0x400);
        QCOMPARE(line.startsWith("Bad value: "_L1), row.detail >= 0x400);
        QCOMPARE(line.contains("velnoext_"_L1), row.detail != 0);
        QVERIFY2(!texts.contains(line), row.text);
        texts << line;
    }
}

void TestResultTexts::detailsOfTheSourcesHaveTexts()
{
    // A detail may also travel to failed() through a helper's argument, so every such number counts.
    const QSet<int> used = numbersIn(sources(), u"\\b(0x[34][0-9A-Fa-f]{2})\\b"_s);
    QVERIFY(used.contains({0x300, 0x301, 0x302, 0x30B, 0x30C, 0x310, 0x400, 0x402}));
    for (const int detail : used - namedDetails())
        QFAIL(qPrintable(u"0x%1 has no text"_s.arg(detail, 0, 16)));
}

void TestResultTexts::detailsNameTheFunctionsThatGiveThem()
{
    const QString header = fileText(sourceFolder() + "/velnoext.h"_L1);
    static const QRegularExpression function(u"^int (velnoext_\\w+)\\(.*?^}$"_s,
                                             QRegularExpression::MultilineOption |
                                                 QRegularExpression::DotMatchesEverythingOption);
    int count = 0;
    for (auto all = function.globalMatch(sources()); all.hasNext();) {
        const QRegularExpressionMatch match = all.next();
        if (!header.contains(match.captured(1) + u'('))
            continue; // a part that several functions share
        for (const int detail : numbersIn(match.captured(), u"\\b(0x[34][0-9A-Fa-f]{2})\\b"_s)) {
            const QString line = text(velnoext_detail_text(detail));
            QVERIFY2(line.contains(match.captured(1)), qPrintable(match.captured(1) + ": "_L1 + line));
            ++count;
        }
    }
    QVERIFY2(count >= 12, "the pattern above no longer finds the functions");
}

void TestResultTexts::otherNumbersHaveFittingTexts_data()
{
    QTest::addColumn<int>("detail");
    QTest::addColumn<QString>("beginning");

    QTest::newRow("pointer without a text") << 0x3FF << u"NULL: a pointer that"_s;
    QTest::newRow("value without a text") << 0x4FF << u"Bad value: an argument that"_s;
    QTest::newRow("gap between values") << 0x401 << u"Bad value: an argument that"_s;
    QTest::newRow("below") << 0x2FF << u"This is no detail"_s;
    QTest::newRow("above") << 0x500 << u"This is no detail"_s;
    QTest::newRow("negative") << -1 << u"This is no detail"_s;
    QTest::newRow("lowest") << lowest << u"This is no detail"_s;
    QTest::newRow("highest") << highest << u"This is no detail"_s;
}

void TestResultTexts::otherNumbersHaveFittingTexts()
{
    QFETCH(const int, detail);
    QFETCH(const QString, beginning);
    const QString line = text(velnoext_detail_text(detail));
    QVERIFY2(line.startsWith(beginning), qPrintable(line));
    QVERIFY2(isTidy(line) && line.endsWith(u'.'), qPrintable(line));
}

void TestResultTexts::textsNeedNoLock()
{
    const QMutexLocker lock(&library().connectionMutex); // as while a command is waiting for its answer
    QCOMPARE(text(velnoext_result_name(2)), u"connection-failed"_s);
    QVERIFY(text(velnoext_result_text(2)).contains("Cure: "_L1));
    QVERIFY(text(velnoext_detail_text(0x402)).contains("port"_L1));
}

QTEST_GUILESS_MAIN(TestResultTexts)
#include "tst_result_texts.moc"
