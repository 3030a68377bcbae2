// SPDX-License-Identifier: Apache-2.0

#include "tests/support/open_till.h"
#include "tests/support/test_support.h"
#include "till/questions.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTest>

#include <cstring>
#include <memory>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Receipts;

/** What people are told: a name and a text for every number, in English and Turkish. */
class TestVelnotillWords : public QObject
{
    Q_OBJECT

private slots:
    void everyNumberHasItsWords_data();
    void everyNumberHasItsWords();
    void numbersThatAreNoneAreUnknown();
    void everyQuestionNamesItsAnswers_data();
    void everyQuestionNamesItsAnswers();
    void closedReceiptTellsItsSums();
    void cashierIsToldWhatToDo();
    void whyItWasRefusedIsTold();
    void messageNeedsAnOutcome();
    void missingDriverIsToldInWords();
};

namespace {

using Name = const char *(*)(int number);
using Text = const char *(*)(int number, const char *language);

using OwnText = std::unique_ptr<char, decltype(&velnotill_free_text)>;

QString messageOf(const VelnoTillOutcome &outcome, const char *language)
{
    char *text = nullptr;
    if (velnotill_message(&outcome, language, &text) != VelnoTillResult_Done)
        return u"none"_s;
    const OwnText owner(text, velnotill_free_text);
    return QString::fromUtf8(text);
}

VelnoTillOutcome outcomeOf(int state)
{
    VelnoTillOutcome outcome{};
    outcome.size = sizeof outcome;
    outcome.state = state;
    return outcome;
}

} // namespace

void TestVelnotillWords::everyNumberHasItsWords_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<Name>("name");
    QTest::addColumn<Text>("text"); // null: the numbers have names alone

    const auto upTo = [](int last) {
        QList<int> numbers;
        for (int i = 0; i <= last; ++i)
            numbers << i;
        return numbers;
    };
    QTest::newRow("results") << upTo(VelnoTillResult_Interrupted) << Name(velnotill_result_name)
                             << Text(velnotill_result_text);
    QTest::newRow("results of the interface")
        << QList{100, 101, 102, 103, 104, 105} << Name(velnotill_result_name) << Text(velnotill_result_text);
    QTest::newRow("kinds") << upTo(VelnoTillKind_Slip) << Name(velnotill_kind_name) << Text();
    QTest::newRow("states") << upTo(VelnoTillState_NeedsPerson) << Name(velnotill_state_name)
                            << Text(velnotill_state_text);
    QTest::newRow("questions") << upTo(VelnoTillQuestion_SlipPrinted) << Name(velnotill_question_name)
                               << Text();
    QTest::newRow("answers") << upTo(VelnoTillAnswer_Drop) << Name(velnotill_answer_name) << Text();
    QTest::newRow("stages") << upTo(VelnoTillStage_Settled) << Name(velnotill_stage_name)
                            << Text(velnotill_stage_text);
}

void TestVelnotillWords::everyNumberHasItsWords()
{
    QFETCH(const QList<int>, numbers);
    QFETCH(const Name, name);
    QFETCH(const Text, text);
    static const QRegularExpression rule(u"\\A[a-z]+(-[a-z]+)*\\z"_s);
    QStringList names;
    for (const int number : numbers) {
        const QString found = QString::fromUtf8(name(number));
        QVERIFY2(rule.match(found).hasMatch() && found != "unknown"_L1, qPrintable(found));
        QVERIFY2(!names.contains(found), qPrintable(found));
        names << found;
        if (!text)
            continue;
        const QByteArray english = text(number, "en");
        const QByteArray turkish = text(number, "tr");
        QVERIFY(!english.isEmpty() && !turkish.isEmpty() && english != turkish);
        QVERIFY2(std::all_of(english.cbegin(), english.cend(), [](char c) { return c > 0; }), english);
        QCOMPARE(text(number, nullptr), english);
        QCOMPARE(text(number, "de"), english);
    }
}

void TestVelnotillWords::numbersThatAreNoneAreUnknown()
{
    QCOMPARE(velnotill_paper_name(VelnoTillPaper_Unknown), "unknown"); // a name of its own
    QCOMPARE(velnotill_paper_name(VelnoTillPaper_Printed), "printed");
    QCOMPARE(velnotill_paper_name(VelnoTillPaper_Unsure), "unsure");
    for (const Name name :
         {Name(velnotill_result_name), Name(velnotill_kind_name), Name(velnotill_state_name),
          Name(velnotill_question_name), Name(velnotill_answer_name), Name(velnotill_paper_name),
          Name(velnotill_stage_name)}) {
        QCOMPARE(name(-1), "unknown");
        QCOMPARE(name(99), "unknown");
    }
    QVERIFY(std::strlen(velnotill_state_text(99, "tr")) > 0);
}

void TestVelnotillWords::everyQuestionNamesItsAnswers_data()
{
    QTest::addColumn<int>("question");
    QTest::addColumn<QStringList>("answers");

    const QStringList all{u"paid: "_s, u"sell-again: "_s, u"drop: "_s};
    for (int question = VelnoTillQuestion_ReceiptUnknown; question <= VelnoTillQuestion_SlipPrinted;
         ++question)
        QTest::newRow(velnotill_question_name(question))
            << question << (question == VelnoTillQuestion_CountedTwice ? QStringList{u"paid: "_s} : all);
}

void TestVelnotillWords::everyQuestionNamesItsAnswers()
{
    QFETCH(const int, question);
    QFETCH(const QStringList, answers);
    for (const bool isNumbered : {true, false}) {
        VelnoTillOutcome outcome = outcomeOf(VelnoTillState_NeedsPerson);
        outcome.question = question;
        if (isNumbered)
            outcome.reference = {12, 7};
        const bool isOfReceipt = question != VelnoTillQuestion_SlipPrinted;
        for (const char *const language : {"en", "tr"}) {
            const QString text = messageOf(outcome, language);
            QVERIFY2(!text.contains(u'%') && !text.contains("\n\n"_L1), qPrintable(text));
            for (const QString &answer : answers)
                QVERIFY2(text.contains(u'\n' + answer), qPrintable(text));
            QCOMPARE(text.contains("12"_L1) && text.contains(u'7'), isNumbered && isOfReceipt);
        }
        QVERIFY(messageOf(outcome, "en") != messageOf(outcome, "tr"));
    }
}

void TestVelnotillWords::closedReceiptTellsItsSums()
{
    VelnoTillOutcome outcome = outcomeOf(VelnoTillState_Closed);
    outcome.reference = {12, 7};
    outcome.totals = {{7488, 74, 10'000, 0, 2512}, 2};
    outcome.paper = VelnoTillPaper_Printed;
    QCOMPARE(
        messageOf(outcome, "en"),
        u"Receipt 7 of Z 12 is closed: total 74.88 TL, cash 100.00 TL, card 0.00 TL, change 25.12 TL."_s);
    QCOMPARE(messageOf(outcome, "tr"),
             u"Z 12, fiş 7 kapandı: toplam 74.88 TL, nakit 100.00 TL, kart 0.00 TL, "
             "para üstü 25.12 TL."_s);
    outcome.kind = VelnoTillKind_ZReport;
    QCOMPARE(messageOf(outcome, "en"), u"Z report: done."_s);
}

void TestVelnotillWords::cashierIsToldWhatToDo()
{
    VelnoTillOutcome outcome = outcomeOf(VelnoTillState_Closed);
    outcome.paper = VelnoTillPaper_Unsure;
    outcome.slipUnsure = 1;
    outcome.giveBack = 2550;
    const QStringList lines = messageOf(outcome, "en").split(u'\n');
    QCOMPARE(lines.size(), 4);
    QVERIFY(lines.at(1).contains("may not have been printed"_L1));
    QVERIFY(lines.at(2).contains("slip"_L1));
    QVERIFY(lines.at(3).contains("25.50 TL"_L1));
    QCOMPARE(messageOf(outcome, "tr").split(u'\n').size(), 4);
}

void TestVelnotillWords::whyItWasRefusedIsTold()
{
    VelnoTillOutcome outcome = outcomeOf(VelnoTillState_Refused);
    outcome.code = VelnoResult_Refused;
    outcome.cause = VelnoCause_OverLimit;
    QVERIFY2(messageOf(outcome, "en").endsWith("(register-over-limit, 8: 10004)"_L1),
             qPrintable(messageOf(outcome, "en")));
}

void TestVelnotillWords::messageNeedsAnOutcome()
{
    VelnoTillOutcome outcome = outcomeOf(VelnoTillState_Closed);
    char *text = nullptr;
    QCOMPARE(velnotill_message(nullptr, "en", &text), int(VelnoTillResult_NullArgument));
    QCOMPARE(velnotill_message(&outcome, "en", nullptr), int(VelnoTillResult_NullArgument));
    for (const unsigned size : {0U, unsigned(sizeof outcome) - 1, 4097U}) {
        outcome.size = size;
        QCOMPARE(velnotill_message(&outcome, "en", &text), int(VelnoTillResult_BadArgument));
        QVERIFY(QByteArray(velnotill_problem()).contains(QByteArray::number(size)));
    }
    QVERIFY(!text);
    velnotill_free_text(nullptr);
}

/** Alone in this program: a driver that has been found once is not looked for again. */
void TestVelnotillWords::missingDriverIsToldInWords()
{
    QCoreApplication::setLibraryPaths({u"/nowhere"_s});
    OpenTill till(freePort());
    QVERIFY(!till);
    const QByteArray problem = velnotill_problem();
    QVERIFY2(problem.contains("SQLite") && problem.contains("driver"), problem.constData());
}

QTEST_GUILESS_MAIN(TestVelnotillWords)
#include "tst_velnotill_words.moc"
