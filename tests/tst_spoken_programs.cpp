// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/registers_key.h"
#include "tests/support/simulated_register.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/symbol_names.h"
#include "tests/support/test_support.h"
#include "tests/support/velnoctl_client.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>
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
    void eventsAreTheSame();
    void jsonIsTheSame_data();
    void jsonIsTheSame();
    void optionGoesBeforeTheLocale();
    void pageQuotesIt();
    void resultsAreTurkish();
    void registersStateIsTheSameAsJson();
};

namespace {

const QString ctl = Client::program();
const QString cashRegister = SimulatedRegister::program();
const QString relay = SimulatedRelay::program();

Outcome spoken(const char *locale, const QString &program, const QStringList &arguments,
               const QString &input = {})
{
    return outcomeOf(program, arguments, [locale, &input](QProcess &process) {
        process.setStandardInputFile(input.isEmpty() ? QProcess::nullDevice() : input);
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

    QTest::newRow("velnoctl") << ctl << QStringList{u"--help"_s};
    QTest::newRow("velnoctl commands") << ctl << QStringList{u"commands"_s};
    QTest::newRow("velnoctl help items") << ctl << QStringList{u"help"_s, u"items"_s};
    QTest::newRow("velno-register") << cashRegister << QStringList{u"--help"_s};
    QTest::newRow("velno-relay") << relay << QStringList{u"--help"_s};
}

/** Of names: velnoctl's own group of commands, and the lines that a register obeys. */
bool isList(const QByteArray &line)
{
    return line.startsWith("  velnoctl   ") || line.startsWith("  paper on, paper off, ");
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

    QTest::newRow("velnoctl: no command")
        << ctl << u"stat"_s
        << u"velnoctl: \"stat\" diye bir komut yok; şunu mu demek istediniz: \"state\"?\n"
           "Bütün komutlar ve seçenekler: velnoctl --help\n"_s;
    QTest::newRow("velnoctl: an option")
        << ctl << u"--serial 5 state"_s
        << u"velnoctl: --serial \"5\": kabul edilen: boşluksuz tam 12 karakter\n"
           "Bütün komutlar ve seçenekler: velnoctl --help\n"_s;
    QTest::newRow("velnoctl: an argument") << ctl << u"item 1 Ekmek section=1 section=2"_s
                                           << u"velnoctl: item: \"section=2\": section= iki kez verildi\n"
                                              "Bütün komutlar ve seçenekler: velnoctl --help\n"_s;
    QTest::newRow("velnoctl: no file") << ctl << u"run /nowhere/day.velno"_s
                                       << u"velnoctl: /nowhere/day.velno: böyle bir dosya ya da klasör yok\n"
                                          "Bütün komutlar ve seçenekler: velnoctl --help\n"_s;
    QTest::newRow("velno-register: no serial number")
        << cashRegister << u"--connect 127.0.0.1:4100"_s
        << u"velno-register: --serial eksik; kabul edilen: UB ya da VELNO ile başlayan tam 12 karakter\n"
           "Bütün seçenekler: velno-register --help\n"_s;
    QTest::newRow("velno-register: its kind of fault")
        << cashRegister << u"--serial UB1234567890 --connect 127.0.0.1:4100 --fault result-code=1"_s
        << u"velno-register: --fault: \"1\": geçersiz değer (result-code); kabul edilen: NN[@STEP]: iki "
           u"hane, "
           "STEP 1 ile 3 arası\nBütün seçenekler: velno-register --help\n"_s;
    QTest::newRow("velno-register: a foreign journal")
        << cashRegister << u"--serial UB1234567890 --connect 127.0.0.1:4100 --journal /"_s
        << u"velno-register: --journal: kayıt dosyası kullanılamıyor: /: unable to open database file Error "
           "opening database\nBütün seçenekler: velno-register --help\n"_s;
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

/** No line with two words of prose stays as it is. */
void TestSpokenPrograms::helpIsTurkish()
{
    QFETCH(const QString, program);
    QFETCH(const QStringList, arguments);
    const Outcome inTurkish = spoken(turkish, program, arguments);
    const Outcome inEnglish = spoken(english, program, arguments);
    QCOMPARE(inTurkish.exitCode, 0);
    QCOMPARE(inEnglish.exitCode, 0);
    const QList<QByteArray> lines = inTurkish.output.split('\n');
    static const QRegularExpression prose(u" [a-z]{3,} [a-z]{3,}"_s);
    for (const QByteArray &line : inEnglish.output.split('\n')) {
        const bool isProse = prose.match(QString::fromUtf8(line)).hasMatch();
        QVERIFY2(!isProse || isList(line) || !lines.contains(line), line);
    }
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

/** What a register complains about while it runs; when it does not get through depends on the moment. */
void TestSpokenPrograms::eventsAreTheSame()
{
    QTemporaryFile lines;
    QVERIFY(lines.open());
    lines.write("paper maybe\nfault unheard-of\nfault delay=0\nfault bad-crc=1\nz 0\nrubbish\nquit\n");
    lines.close();
    const QStringList arguments = u"--serial UB1234567890 --connect 127.0.0.1:1"_s.split(u' ');
    const auto told = [&](const char *locale) {
        QByteArray events;
        for (const QByteArray &line :
             spoken(locale, cashRegister, arguments, lines.fileName()).output.split('\n'))
            events += line.startsWith("unreachable ") ? QByteArray() : line + '\n';
        return events;
    };
    const QByteArray inEnglish = told(english);
    QCOMPARE(inEnglish.count("\nerror "), 6);
    QCOMPARE(told(turkish), inEnglish);
}

void TestSpokenPrograms::jsonIsTheSame_data()
{
    QTest::addColumn<QString>("arguments");

    for (const char *const arguments :
         {"--json stat", "--json --ledger= state", "--serial 5 --json state", "--json explain 8",
          "--json explain 10016", "--json --language tr explain 4 0x402", "--json --language tr stat",
          "--json --control 127.0.0.1:1 fault none", "--json run /nowhere/day.velno", "--json help item"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestSpokenPrograms::jsonIsTheSame()
{
    QFETCH(const QString, arguments);
    const QStringList words = arguments.split(u' ');
    const Outcome inTurkish = spoken(turkish, ctl, words);
    const Outcome inEnglish = spoken(english, ctl, words);
    QCOMPARE(inTurkish.output, inEnglish.output);
    QCOMPARE(inTurkish.exitCode, inEnglish.exitCode);
}

void TestSpokenPrograms::optionGoesBeforeTheLocale()
{
    const auto said = [](const char *locale, const char *language) {
        return spoken(locale, ctl, {u"--language"_s, QString::fromLatin1(language), u"explain"_s, u"8"_s})
            .output;
    };
    const QByteArray inEnglish = spoken(english, ctl, {u"explain"_s, u"8"_s}).output;
    const QByteArray inTurkish = spoken(turkish, ctl, {u"explain"_s, u"8"_s}).output;
    QVERIFY2(inEnglish.contains("(code 8, refused)\n  Cause: "), inEnglish);
    QVERIFY2(inTurkish.contains("(kod 8, refused)\n  Neden: "), inTurkish);
    QCOMPARE(said(turkish, "en"), inEnglish);
    QCOMPARE(said(english, "tr"), inTurkish);
}

void TestSpokenPrograms::pageQuotesIt()
{
    const QByteArray said = spoken(turkish, ctl, {u"stat"_s}).errors.split('\n').first();
    QVERIFY(!said.isEmpty());
    const QByteArray page = fileText(VELNO_SOURCE "/docs/tr", "quick-start.md");
    QVERIFY2(page.contains("```\n" + said + "\n```\n"), said);
}

void TestSpokenPrograms::resultsAreTurkish()
{
    NEEDS_A_REGISTERS_KEY();
    const quint16 port = freePort();
    SimulatedRegister cashRegisterThere(port, {u"--sale-limit"_s, u"123456"_s});
    const Outcome told =
        spoken(turkish, ctl, target(port) << u"state"_s << u"sale-limit"_s << u"section"_s << u"9"_s);
    QCOMPARE(told.output, "durum 1 (boşta)\nsatış sınırı 1234.56 TL\n"_ba);
    const QByteArray errors = u"bekleniyor: UB1234567890, 127.0.0.1:%1 …\n"
                              "(önce eşlenir, bu üç bağlantı sürer)\nbağlandı: UB1234567890\n"_s.arg(port)
                                  .toUtf8();
    QVERIFY2(told.errors.contains(errors), told.errors);
    QVERIFY2(told.errors.contains("velnoctl: section: Verilen bir değer geçerli değil. (kod 4, bad-value)\n"),
             told.errors);
    QCOMPARE(told.exitCode, 4);
}

void TestSpokenPrograms::registersStateIsTheSameAsJson()
{
    NEEDS_A_REGISTERS_KEY();
    const auto said = [](const char *locale) {
        const quint16 port = freePort();
        SimulatedRegister cashRegisterThere(port);
        return spoken(locale, ctl,
                      QStringList{u"--json"_s} + target(port) +
                          QStringList{u"state"_s, u"paper"_s, u"section"_s, u"9"_s})
            .output;
    };
    const QByteArray inEnglish = said(english);
    QVERIFY(!inEnglish.isEmpty());
    QCOMPARE(said(turkish), inEnglish);
}

QTEST_GUILESS_MAIN(TestSpokenPrograms)
#include "tst_spoken_programs.moc"
