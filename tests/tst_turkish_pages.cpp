// SPDX-License-Identifier: Apache-2.0

#include "tests/support/symbol_names.h"
#include "till/questions.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Receipts;

/** docs/tr: the cashier reads the words that the library says, the technician those of the window. */
class TestTurkishPages : public QObject
{
    Q_OBJECT

private slots:
    void cashierFindsEachQuestion_data();
    void cashierFindsEachQuestion();
    void cashierFindsEachText_data();
    void cashierFindsEachText();
    void cashierFindsEachHint();
    void technicianFindsEachTextAndCode_data();
    void technicianFindsEachTextAndCode();
};

namespace {

QString page(const char *name)
{
    return QString::fromUtf8(fileText(VELNO_SOURCE "/docs", name));
}

/** What a cashier is told of it, as on the page: of receipt 7 of Z 12. */
Order order()
{
    Order order;
    order.state = State::NeedsPerson;
    order.reference = {12, 7};
    return order;
}

} // namespace

void TestTurkishPages::cashierFindsEachQuestion_data()
{
    QTest::addColumn<int>("question");
    for (const Word &word : questionWords())
        if (word.number != int(Question::None))
            QTest::newRow(word.name) << word.number;
}

void TestTurkishPages::cashierFindsEachQuestion()
{
    QFETCH(const int, question);
    Order asked = order();
    asked.question = Question(question);
    const QString text = questionText(asked, Language::Turkish);
    QVERIFY(!text.isEmpty());
    QVERIFY2(page("tr/cashier.md").contains(u"```\n%1\n```\n"_s.arg(text)), qUtf8Printable(text));
}

void TestTurkishPages::cashierFindsEachText_data()
{
    QTest::addColumn<QString>("text");
    for (const Word &word : stateWords())
        if (word.number != int(State::Closed)) // told with its number and sums
            QTest::newRow(word.name) << QString::fromUtf8(word.turkish);
    for (const Word &word : stageWords())
        QTest::newRow(qPrintable(u"stage "_s + QLatin1StringView(word.name)))
            << QString::fromUtf8(word.turkish);
}

void TestTurkishPages::cashierFindsEachText()
{
    QFETCH(const QString, text);
    QVERIFY(page("tr/cashier.md").contains(u"| %1 | "_s.arg(text)));
}

void TestTurkishPages::cashierFindsEachHint()
{
    Order closed = order();
    closed.state = State::Closed;
    closed.paper = Paper::Unsure;
    closed.slipUnsure = true;
    closed.giveBack = 1250;
    const QStringList lines = message(closed, Language::Turkish).split(u'\n');
    QCOMPARE(lines.size(), 4);
    QVERIFY(lines.first().startsWith(u"Z 12, fiş 7 kapandı: toplam "_s));
    for (const QString &line : lines.sliced(1))
        QVERIFY2(page("tr/cashier.md").contains(u"| %1 | "_s.arg(line)), qUtf8Printable(line));
}

void TestTurkishPages::technicianFindsEachTextAndCode_data()
{
    QTest::addColumn<QString>("text");
    QStringList texts = matches(page("window.md").toUtf8(), "(\"[A-Z][^\"\\n]+\")");
    texts += matches(page("window.md").toUtf8(), "^\\| ([1-5]0.*?) \\|");
    texts.removeDuplicates();
    QVERIFY(texts.size() > 25);
    for (const QString &text : texts)
        QTest::newRow(qUtf8Printable(text)) << text;
}

void TestTurkishPages::technicianFindsEachTextAndCode()
{
    QFETCH(const QString, text);
    QVERIFY(page("tr/window.md").contains(text));
}

QTEST_GUILESS_MAIN(TestTurkishPages)
#include "tst_turkish_pages.moc"
