// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** What the programs say to people follows the locale, whether the system has it or not. */
class TestSpokenPrograms : public QObject
{
    Q_OBJECT

private slots:
    void complainInTurkish_data();
    void complainInTurkish();
    void helpIsTurkish_data();
    void helpIsTurkish();
    void helpKeepsItsWords_data();
    void helpKeepsItsWords();
};

namespace {

const QString relay = QStringLiteral(VELNO_RELAY_PROGRAM);

Outcome spoken(const char *locale, const QString &program, const QStringList &arguments)
{
    return outcomeOf(program, arguments, [locale](QProcess &process) {
        QProcessEnvironment environment = process.processEnvironment();
        for (const QString &name : {u"LC_MESSAGES"_s, u"LANG"_s, u"LANGUAGE"_s})
            environment.remove(name);
        environment.insert(u"LC_ALL"_s, QString::fromLatin1(locale));
        process.setProcessEnvironment(environment);
    });
}

constexpr char turkish[] = "tr_TR.UTF-8";
constexpr char english[] = "C.UTF-8";

/** A program and its command line in a row each. */
void addHelps()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("velno-relay") << relay << QStringList{u"--help"_s};
}

/** What is typed, the same in every language: options, and words in capital letters. */
QStringList typedIn(const QByteArray &help)
{
    static const QRegularExpression rule(u"--[a-z-]+|\\b[A-Z]{4,}\\b"_s);
    QStringList found;
    for (auto match = rule.globalMatch(QString::fromUtf8(help)); match.hasNext();)
        found << match.next().captured();
    found.sort();
    found.removeDuplicates();
    return found;
}

} // namespace

void TestSpokenPrograms::complainInTurkish_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("complaint");

    QTest::newRow("velno-relay: unknown option")
        << relay << u"--speed"_s
        << u"velno-relay: Bilinmeyen seçenek: \"speed\".\nBütün seçenekler: velno-relay --help\n"_s;
    QTest::newRow("velno-relay: not the first that is wrong")
        << relay << u"--fault drop-after=0"_s
        << u"velno-relay: --fault: \"0\": geçersiz değer (drop-after); kabul edilen: BYTES: en az 1, en çok "
           "100000000\nBütün seçenekler: velno-relay --help\n"_s;
    QTest::newRow("velno-relay: no such address")
        << relay << u"--listen 192.0.2.1"_s
        << u"velno-relay: dinlenemiyor: 192.0.2.1:50900: bu bilgisayarda böyle bir adres yok\n"_s;
}

void TestSpokenPrograms::complainInTurkish()
{
    QFETCH(const QString, program);
    QFETCH(const QString, arguments);
    QFETCH(const QString, complaint);
    const QStringList words = arguments.split(u' ');
    const Outcome inTurkish = spoken(turkish, program, words);
    const Outcome inEnglish = spoken(english, program, words);
    QVERIFY2(inTurkish.errors.endsWith(complaint.toUtf8()), inTurkish.errors);
    QCOMPARE(inTurkish.output, inEnglish.output);
    QCOMPARE(inTurkish.exitCode, inEnglish.exitCode);
    QVERIFY(inEnglish.exitCode > 0);
    QVERIFY2(!QString::fromUtf8(inEnglish.errors).contains(QRegularExpression(u"[çğışöüİÇĞŞÖÜ]"_s)),
             inEnglish.errors);
}

void TestSpokenPrograms::helpIsTurkish_data()
{
    addHelps();
}

/** No line with two words of prose stays as it is, but an example to be pasted. */
void TestSpokenPrograms::helpIsTurkish()
{
    QFETCH(const QString, program);
    QFETCH(const QStringList, arguments);
    const Outcome inTurkish = spoken(turkish, program, arguments);
    const Outcome inEnglish = spoken(english, program, arguments);
    QCOMPARE(inTurkish.exitCode, 0);
    QCOMPARE(inEnglish.exitCode, 0);
    const QList<QByteArray> lines = inTurkish.output.split('\n');
    static const QRegularExpression prose(u" [a-z]+,? [a-z]+"_s);
    for (const QByteArray &line : inEnglish.output.split('\n'))
        QVERIFY2(!prose.match(QString::fromUtf8(line)).hasMatch() || !lines.contains(line), line);
}

void TestSpokenPrograms::helpKeepsItsWords_data()
{
    addHelps();
}

void TestSpokenPrograms::helpKeepsItsWords()
{
    QFETCH(const QString, program);
    QFETCH(const QStringList, arguments);
    QCOMPARE(typedIn(spoken(turkish, program, arguments).output),
             typedIn(spoken(english, program, arguments).output));
}

QTEST_GUILESS_MAIN(TestSpokenPrograms)
#include "tst_spoken_programs.moc"
