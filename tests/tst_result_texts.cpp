// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/texts.h"
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
    return QString::fromUtf8(VELNO_SOURCE_FOLDER);
}

/** The library's own sources in one text, without the texts themselves. */
QString sources()
{
    QString all;
    const QDir folder(sourceFolder());
    for (const QString &name : folder.entryList({u"*.cpp"_s, u"*.h"_s})) {
        if (!name.endsWith("_texts.cpp"_L1) && !name.startsWith("texts."_L1) && name != "velnoext.h"_L1)
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

/** What the lines of a text look like in a language. */
struct Tongue
{
    const char *code;
    const char *cause;
    const char *cure;
    const char *badValue;
    QRegularExpression line; ///< all characters that a line may have, without an outer blank
};

/** English in printable ASCII, fit for any log; Turkish with its own letters beside. */
const Tongue &tongue(const QByteArray &code)
{
    static const Tongue english{
        "en", "Cause: ", "Cure: ", "Bad value: ", QRegularExpression(u"\\A[!-~]([ -~]*[!-~])?\\z"_s)};
    static const Tongue turkish{
        "tr", "Neden: ", "Çözüm: ", "Geçersiz değer: ",
        QRegularExpression(u"\\A[!-~çğıöşüâÇĞİÖŞÜ]([ -~çğıöşüâÇĞİÖŞÜ]*[!-~çğıöşü])?\\z"_s)};
    return code == "tr" ? turkish : english;
}

bool isTidy(const QString &line, const Tongue &in = tongue("en"))
{
    return in.line.match(line).hasMatch() && !line.contains("  "_L1) && line.endsWith(u'.');
}

QString text(const char *found)
{
    return QString::fromUtf8(found);
}

/** Empty, or what is wrong with the three lines. */
QString faultOfLines(const QString &text, const Tongue &in)
{
    const QStringList lines = text.split(u'\n');
    if (lines.size() != 3 || !lines.at(1).startsWith(QString::fromUtf8(in.cause)) ||
        !lines.at(2).startsWith(QString::fromUtf8(in.cure)))
        return "not three lines: "_L1 + text;
    for (const QString &line : lines) {
        if (!isTidy(line, in))
            return "not tidy: "_L1 + line;
    }
    return {};
}

QSet<int> numbersOf(std::span<const Words> rows)
{
    QSet<int> numbers;
    for (const Words &row : rows)
        numbers << row.number;
    return numbers;
}

/** Numbers on both sides of every border, and some that nobody means. */
QList<int> numbersAround(std::span<const Words> rows)
{
    QList<int> numbers{lowest, -1, 0, 1, 999, 1000, 1999, 2000, 3999, 5999, 6000, 9999, 10'000, highest};
    for (const int last : {19'999, 20'000, 29'999, 30'000, 39'999, 40'000})
        numbers << last;
    for (const Words &row : rows)
        numbers << row.number - 1 << row.number << row.number + 1;
    return numbers;
}

/** The values of an enum of velnoext.h by the names behind its prefix. */
QMap<QString, int> enumerators(const QString &prefix)
{
    const QString header = fileText(sourceFolder() + "/velnoext.h"_L1);
    const QRegularExpression pattern(u"^ +%1_(\\w+) = (?:%1_(\\w+) \\+ )?(0x[0-9A-F]+|[0-9]+)"_s.arg(prefix),
                                     QRegularExpression::MultilineOption);
    QMap<QString, int> found;
    for (auto all = pattern.globalMatch(header); all.hasNext();) {
        const QRegularExpressionMatch match = all.next();
        found.insert(match.captured(1), found.value(match.captured(2)) + match.captured(3).toInt(nullptr, 0));
    }
    return found;
}

} // namespace

class TestResultTexts : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void codesAreThoseOfTheHeader();
    void everyCodeHasThreeLines_data();
    void everyCodeHasThreeLines();
    void namesTellCodesApart();
    void everyRowIsInEveryLanguage();
    void everyDetailSaysWhichArgument_data();
    void everyDetailSaysWhichArgument();
    void detailsAreThoseOfTheHeader();
    void detailsOfTheSourcesHaveTexts();
    void detailsNameTheFunctionsThatGiveThem();
    void otherNumbersHaveFittingTexts_data();
    void otherNumbersHaveFittingTexts();
    void causesAreThoseOfTheHeader();
    void everyCauseHasThreeLines_data();
    void everyCauseHasThreeLines();
    void namesTellCausesApart();
    void everyReasonOfTheSimulatedRegisterHasWords();
    void otherCausesHaveFittingWords_data();
    void otherCausesHaveFittingWords();
    void everyPairingCodeHasWords_data();
    void everyPairingCodeHasWords();
    void languageIsChosenAndKept();
    void unknownLanguageChangesNothing();
    void textsNeedNoLock();
};

void TestResultTexts::cleanup()
{
    velnoext_set_language("en");
}

void TestResultTexts::codesAreThoseOfTheHeader()
{
    const QString comment = fileText(sourceFolder() + "/velnoext.h"_L1).section("*/"_L1, 0, 0);
    const QSet<int> listed = numbersIn(comment, u"^ \\* +([0-9]+)  \\S"_s);
    QCOMPARE(listed.size(), 14);
    QCOMPARE(numbersOf(resultTexts()), listed);
    const QList<int> named = enumerators(u"VelnoResult"_s).values();
    QCOMPARE(named.size(), 14);
    QCOMPARE(QSet(named.cbegin(), named.cend()), listed);
}

void TestResultTexts::everyCodeHasThreeLines_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<int>("code");
    for (const QByteArray language : {"en", "tr"}) {
        for (const int code : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 64, lowest, highest})
            QTest::addRow("%s %d", language.constData(), code) << language << code;
    }
}

void TestResultTexts::everyCodeHasThreeLines()
{
    QFETCH(const QByteArray, language);
    QFETCH(const int, code);
    QCOMPARE(velnoext_set_language(language.constData()), 0);
    QCOMPARE(faultOfLines(text(velnoext_result_text(code)), tongue(language)), QString());
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

void TestResultTexts::everyRowIsInEveryLanguage()
{
    for (const auto rows : {resultTexts(), detailTexts(), causeTexts()}) {
        QSet<QString> english;
        QSet<QString> turkish;
        for (const Words &row : rows) {
            english << text(row.texts.english);
            turkish << text(row.texts.turkish);
        }
        QCOMPARE(english.size(), qsizetype(rows.size())); // no text stands for two numbers
        QCOMPARE(turkish.size(), qsizetype(rows.size()));
        QVERIFY(!english.intersects(turkish));
    }
}

void TestResultTexts::everyDetailSaysWhichArgument_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::newRow("English") << QByteArray("en");
    QTest::newRow("Turkish") << QByteArray("tr");
}

void TestResultTexts::everyDetailSaysWhichArgument()
{
    QFETCH(const QByteArray, language);
    const Tongue &in = tongue(language);
    QCOMPARE(velnoext_set_language(language.constData()), 0);
    static const QRegularExpression function(u"velnoext_\\w+"_s);
    for (const Words &row : detailTexts()) {
        const QString line = text(velnoext_detail_text(row.number));
        QVERIFY2(isTidy(line, in), qPrintable(line));
        QCOMPARE(line.startsWith("NULL"_L1), row.number >= 0x300 && row.number < 0x400);
        QCOMPARE(line.startsWith(QString::fromUtf8(in.badValue)), row.number >= 0x400);
        QCOMPARE(line.contains("velnoext_"_L1), row.number != 0);
        QCOMPARE(line.count(function), text(row.texts.english).count(function));
    }
}

void TestResultTexts::detailsAreThoseOfTheHeader()
{
    const QList<int> named = enumerators(u"VelnoDetail"_s).values();
    QCOMPARE(QSet(named.cbegin(), named.cend()), numbersOf(detailTexts()));
}

void TestResultTexts::detailsOfTheSourcesHaveTexts()
{
    // A detail may also travel to failed() through a helper's argument, so every such number counts.
    const QSet<int> used = numbersIn(sources(), u"\\b(0x[34][0-9A-Fa-f]{2})\\b"_s);
    QVERIFY(used.contains({0x300, 0x301, 0x302, 0x30B, 0x30C, 0x310, 0x400, 0x402}));
    for (const int detail : used - numbersOf(detailTexts()))
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
    QVERIFY2(isTidy(line), qPrintable(line));
    QCOMPARE(velnoext_set_language("tr"), 0);
    QVERIFY2(isTidy(text(velnoext_detail_text(detail)), tongue("tr")), velnoext_detail_text(detail));
    QVERIFY(text(velnoext_detail_text(detail)) != line);
}

void TestResultTexts::causesAreThoseOfTheHeader()
{
    QMap<QString, int> named = enumerators(u"VelnoCause"_s);
    QCOMPARE(named.value(u"PortInUse"_s), 1006);
    QCOMPARE(named.value(u"DisplayBusy"_s), 30'002);
    QCOMPARE(named.take(u"OfError"_s), 10'000); // the bases, with which numbers are made
    QCOMPARE(named.take(u"OfState"_s), 20'000);
    QCOMPARE(named.take(u"OfDisplay"_s), 30'000);
    const QMap<QString, int> states = enumerators(u"VelnoEcrState"_s);
    QCOMPARE(states.size(), 9);
    for (auto state = states.cbegin(); state != states.cend(); ++state)
        named.insert("state "_L1 + state.key(), 20'000 + state.value());
    const QList<int> numbers = named.values();
    const QSet<int> all(numbers.cbegin(), numbers.cend());
    QCOMPARE(all.size(), named.size());
    QCOMPARE(numbersOf(causeTexts()), all);
}

void TestResultTexts::everyCauseHasThreeLines_data()
{
    everyDetailSaysWhichArgument_data();
}

void TestResultTexts::everyCauseHasThreeLines()
{
    QFETCH(const QByteArray, language);
    QCOMPARE(velnoext_set_language(language.constData()), 0);
    for (const int cause : numbersAround(causeTexts()))
        QCOMPARE(faultOfLines(text(velnoext_cause_text(cause)), tongue(language)), QString());
}

void TestResultTexts::namesTellCausesApart()
{
    static const QRegularExpression shape(u"\\A[a-z]+(-[a-z]+)*\\z"_s);
    QSet<QString> names;
    for (const Words &row : causeTexts()) {
        QVERIFY2(shape.match(text(velnoext_cause_name(row.number))).hasMatch(), row.name);
        names << text(velnoext_cause_name(row.number));
    }
    QCOMPARE(names.size(), qsizetype(causeTexts().size()));
    QVERIFY(!names.contains(u"unknown"_s));
    QCOMPARE(text(velnoext_cause_name(0)), u"none"_s);
    QCOMPARE(text(velnoext_cause_name(1006)), u"port-in-use"_s);
    QCOMPARE(velnoext_set_language("tr"), 0);
    QCOMPARE(text(velnoext_cause_name(1006)), u"port-in-use"_s);
}

void TestResultTexts::everyReasonOfTheSimulatedRegisterHasWords()
{
    // The register's own list is further up: its numbers are read where they are written.
    const QString errors = fileText(sourceFolder() + "/../../simulator/fiscal/register_error.h"_L1);
    const QSet<int> bits = numbersIn(errors, u"^ +\\w+ = ([0-9]+),"_s);
    QCOMPARE(bits.size(), 8);
    for (const int bit : bits)
        QCOMPARE(numbersOf(causeTexts()).contains(10'000 + bit), bit != 0);
    const QSet<int> states = numbersIn(fileText(sourceFolder() + "/../../simulator/fiscal/fiscal_model.h"_L1),
                                       u"^    \\w+ = ([0-9]+),"_s);
    QCOMPARE(states.size(), 9);
    for (const int state : states)
        QVERIFY(numbersOf(causeTexts()).contains(20'000 + state));
}

void TestResultTexts::otherCausesHaveFittingWords_data()
{
    QTest::addColumn<int>("cause");
    QTest::addColumn<QString>("name");

    QTest::newRow("two errors: the first") << 10'000 + 2 + 16 << u"register-wrong-value"_s;
    QTest::newRow("an error beside the payments") << 10'000 + 8 + 16 << u"register-paper-out"_s;
    QTest::newRow("all errors") << 10'000 + 127 << u"register-wrong-key"_s;
    QTest::newRow("an error of another register") << 10'000 + 128 << u"register-error"_s;
    QTest::newRow("that and a known one") << 10'000 + 129 << u"register-error"_s;
    QTest::newRow("the last error") << 19'999 << u"register-error"_s;
    QTest::newRow("no error") << 10'000 << u"register-error"_s;
    QTest::newRow("a state of another register") << 20'009 << u"register-state"_s;
    QTest::newRow("the last state") << 29'999 << u"register-state"_s;
    QTest::newRow("another display") << 30'001 << u"register-display"_s;
    QTest::newRow("the last display") << 39'999 << u"register-display"_s;
    QTest::newRow("above all") << 40'000 << u"unknown"_s;
    QTest::newRow("other listening") << 1002 << u"listening-failed"_s;
    QTest::newRow("other sending") << 2004 << u"sending-failed"_s;
    QTest::newRow("other receiving") << 3004 << u"receiving-failed"_s;
    QTest::newRow("other pairing") << 5003 << u"pairing-failed"_s;
    QTest::newRow("negative") << -1 << u"unknown"_s;
    QTest::newRow("between") << 500 << u"unknown"_s;
    QTest::newRow("lowest") << lowest << u"unknown"_s;
    QTest::newRow("highest") << highest << u"unknown"_s;
}

void TestResultTexts::otherCausesHaveFittingWords()
{
    QFETCH(const int, cause);
    QTEST(text(velnoext_cause_name(cause)), "name");
}

void TestResultTexts::everyPairingCodeHasWords_data()
{
    QTest::addColumn<int>("code");
    const QString guide = fileText(sourceFolder() + "/../../docs/window.md"_L1);
    const QString table = guide.section(u"\"Eşleme hatası: \""_s, 1).section("The texts about"_L1, 0, 0);
    static const QRegularExpression number(u"\\b([1-5]00[0-9])\\b"_s);
    QSet<int> codes;
    for (auto all = number.globalMatch(table); all.hasNext();)
        codes << all.next().captured(1).toInt();
    QVERIFY(codes.contains({1006, 2005, 3003, 4001, 5002}));
    for (const int code : codes)
        QTest::addRow("%d", code) << code;
}

void TestResultTexts::everyPairingCodeHasWords()
{
    QFETCH(const int, code);
    QVERIFY(numbersOf(causeTexts()).contains(code) || code % 1000 == 0);
}

void TestResultTexts::languageIsChosenAndKept()
{
    const char *const english = velnoext_result_text(9);
    QVERIFY(text(english).startsWith("The printer has no paper.\n"_L1));
    QCOMPARE(velnoext_set_language("tr"), 0);
    const char *const turkish = velnoext_result_text(9);
    QCOMPARE(text(turkish).section(u'\n', 0, 0), u"Yazıcıda kağıt yok."_s);
    QCOMPARE(text(velnoext_detail_text(0x310)), u"NULL: sınır (velnoext_sale_limit)."_s);
    QVERIFY(text(velnoext_cause_text(5002)).contains("Diffie-Hellman grubu"_L1));
    QVERIFY(text(english).startsWith("The printer has no paper.\n"_L1)); // what was handed out stays
    QCOMPARE(velnoext_set_language("en"), 0);
    QCOMPARE(velnoext_result_text(9), english);
}

void TestResultTexts::unknownLanguageChangesNothing()
{
    QCOMPARE(velnoext_set_language("tr"), 0);
    QCOMPARE(velnoext_set_language(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x311);
    QCOMPARE(velnoext_cause(), int(VelnoCause_NullArgument));
    for (const char *const name : {"", "EN", "de", "tr_TR", "english"}) {
        QCOMPARE(velnoext_set_language(name), 4);
        QCOMPARE(velnoext_error_detail(), 0x415);
        QCOMPARE(velnoext_cause(), int(VelnoCause_BadArgument));
    }
    QCOMPARE(velnoext_set_language("tr"), 0);
    QCOMPARE(velnoext_error_detail(), 0x415); // success leaves what there is to be told
    QVERIFY(text(velnoext_result_text(0)).contains(u"Çözüm: "_s));
}

void TestResultTexts::textsNeedNoLock()
{
    const QMutexLocker lock(&library().connectionMutex); // as while a command is waiting for its answer
    QCOMPARE(text(velnoext_result_name(2)), u"connection-failed"_s);
    QVERIFY(text(velnoext_result_text(2)).contains("Cure: "_L1));
    QVERIFY(text(velnoext_detail_text(0x402)).contains("port"_L1));
    QCOMPARE(text(velnoext_cause_name(1007)), u"nobody-connected"_s);
    QVERIFY(text(velnoext_cause_text(1007)).contains("Cure: "_L1));
    QCOMPARE(velnoext_set_language("tr"), 0);
    velnoext_cause();
}

QTEST_GUILESS_MAIN(TestResultTexts)
#include "tst_result_texts.moc"
