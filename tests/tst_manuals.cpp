// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/program_words.h"
#include "tests/support/symbol_names.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The manual page of each program, and what completes its words: they name what the program takes, no less
 * and no more. */
class TestManuals : public QObject
{
    Q_OBJECT

private slots:
    void wordsAreRead();
    void pageNamesWhatTheProgramTakes_data();
    void pageNamesWhatTheProgramTakes();
    void simulatorsPageNamesWhatItTakes();
    void pageHasItsSections_data();
    void pageHasItsSections();
    void eachFunctionHasItsPage_data();
    void eachFunctionHasItsPage();
    void bashOffersWhatTheProgramTakes_data();
    void bashOffersWhatTheProgramTakes();
    void bashCompletes_data();
    void bashCompletes();
    void zshOffersWhatTheProgramTakes_data();
    void zshOffersWhatTheProgramTakes();
    void fishOffersWhatTheProgramTakes_data();
    void fishOffersWhatTheProgramTakes();
    void simulatorsWordsAreCompleted();
    void simulatorsWordsAreCompletedInBash_data();
    void simulatorsWordsAreCompletedInBash();
};

namespace {

QString made(const QString &path)
{
    return QString::fromUtf8(fileText(VELNO_BINARY_FOLDER, qPrintable(path)));
}

void eachProgram()
{
    QTest::addColumn<QString>("program");
    for (const QString &program : programPaths().keys())
        QTest::newRow(qUtf8Printable(program)) << program;
}

QString page(const QString &program)
{
    return made(u"man/%1.1"_s.arg(program));
}

/** From the heading to the next one. */
QString section(const QString &page, const QString &heading)
{
    return page.section(u".SH "_s + heading + u'\n', 1).section(u"\n.SH "_s, 0, 0);
}

/** The tags of the paragraphs, a minus being a minus. */
QString tags(const QString &part)
{
    return allIn(part, "^\\.TP\\n(.*)$").join(u'\n').replace("\\-"_L1, "-"_L1);
}

/** What bash offers for the last word. */
QStringList offered(const QStringList &words)
{
    const QString script = u"source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                           "words=$(complete -p \"$1\"); words=${words#*-F }; ${words%% *}; "
                           "[[ ${#COMPREPLY[@]} == 0 ]] || printf '%s\\n' \"${COMPREPLY[@]}\""_s;
    const QString file = QString::fromUtf8(VELNO_BINARY_FOLDER) + "/completions/bash/"_L1 + words.first();
    const Outcome outcome = outcomeOf(u"bash"_s, QStringList{u"-c"_s, script, file} + words);
    if (outcome.exitCode != 0 || !outcome.errors.isEmpty())
        return {u"bash failed: "_s + QString::fromUtf8(outcome.errors)};
    return QString::fromUtf8(outcome.output).split(u'\n', Qt::SkipEmptyParts);
}

const QString simulator = QString::fromUtf8(VELNO_BINARY_FOLDER) + u"/simulator/velno-simulator"_s;

#define SKIP_WITHOUT_SIMULATOR()                                                                             \
    if (!QFileInfo::exists(simulator))                                                                       \
    QSKIP("velno-simulator ships with a development authority alone")

QString simulatorsHelp()
{
    return QString::fromUtf8(outcomeOf(simulator, {u"--help"_s}).output);
}

QStringList simulatorsCommands()
{
    return allIn(simulatorsHelp(), "^([a-z-]+)  +");
}

/** Of its command run: its own and the register's, without those that end a program at once. */
QStringList simulatorsOptions()
{
    QStringList options = wordsOf(u"velno-register"_s).options + allIn(simulatorsHelp(), "^  (--[a-z-]+)");
    options.removeIf([](const QString &name) { return name == "--help"_L1 || name == "--version"_L1; });
    options.sort();
    return options;
}

/** Without "=" behind those that take a value. */
QStringList names(QStringList words)
{
    words.replaceInStrings(u"="_s, QString());
    return words;
}

} // namespace

// If nothing could be read, all else would compare nothing with nothing.
void TestManuals::wordsAreRead()
{
    const ProgramWords reg = wordsOf(u"velno-register"_s);
    QVERIFY(reg.options.contains(u"--show-receipts"_s) && reg.options.contains(u"--z"_s));
    QVERIFY(reg.faults.contains(u"result-code"_s) && reg.faults.contains(u"power-cut"_s));
    const ProgramWords client = wordsOf(u"velnoctl"_s);
    QVERIFY(client.options.contains(u"--answer-limit"_s) && client.commands.contains(u"state"_s) &&
            client.commands.contains(u"version"_s));
    QCOMPARE(client.shellCommands, QStringList{u"quit"_s});
    QVERIFY(wordsOf(u"velno-relay"_s).faults.contains(u"drop-after"_s));
}

void TestManuals::pageNamesWhatTheProgramTakes_data()
{
    eachProgram();
}

void TestManuals::pageNamesWhatTheProgramTakes()
{
    QFETCH(const QString, program);
    const ProgramWords words = wordsOf(program);
    QCOMPARE(allIn(tags(section(page(program), u"OPTIONS"_s)), "(--[a-z-]+)"), words.options);
    QCOMPARE(allIn(tags(section(page(program), u"FAULTS"_s)), "^\\\\fB([a-z0-9-]+)"), words.faults);
    QStringList commands = words.commands + words.shellCommands;
    commands.sort();
    QCOMPARE(allIn(tags(section(page(program), u"COMMANDS"_s)), "^\\\\fB([a-z-]+)"), commands);
}

void TestManuals::simulatorsPageNamesWhatItTakes()
{
    SKIP_WITHOUT_SIMULATOR();
    const QString help = simulatorsHelp();
    const QString page = made(u"simulator/velno-simulator.1"_s).replace("\\-"_L1, "-"_L1);
    const QStringList options = allIn(help, "^  (--[a-z-]+)");
    QVERIFY(options.contains(u"--events"_s));
    QCOMPARE(allIn(page, "^\\.TP\\n\\.BI? (--[a-z-]+)"), options);
    QCOMPARE(allIn(section(page, u"DESCRIPTION"_s), "^\\.TP\\n\\.B ([a-z-]+)"), allIn(help, "^([a-z-]+)  +"));
}

void TestManuals::pageHasItsSections_data()
{
    eachProgram();
}

void TestManuals::pageHasItsSections()
{
    QFETCH(const QString, program);
    const QString text = page(program);
    for (const QString &heading :
         {u"NAME"_s, u"SYNOPSIS"_s, u"DESCRIPTION"_s, u"OPTIONS"_s, u"EXIT STATUS"_s, u"SEE ALSO"_s})
        QVERIFY2(!section(text, heading).trimmed().isEmpty(), qUtf8Printable(heading));
    QVERIFY(section(text, u"NAME"_s).replace("\\-"_L1, "-"_L1).startsWith(program + " - "_L1));
    QCOMPARE(allIn(text, "(@[a-z]+@)"), QStringList());
    QVERIFY(text.contains("Velno " VELNO_VERSION ""_L1));
    QVERIFY(!text.contains("Velno Development"_L1)); // whom one build trusts is no matter of the manual's
}

void TestManuals::eachFunctionHasItsPage_data()
{
    QTest::addColumn<QString>("header");
    QTest::newRow("velnoext") << u"ExtDevice/velnoext/velnoext.h"_s;
    QTest::newRow("velnotill") << u"till/velnotill.h"_s;
}

void TestManuals::eachFunctionHasItsPage()
{
    QFETCH(const QString, header);
    const QString library = QFileInfo(header).baseName();
    const QStringList functions =
        matches(fileText(VELNO_SOURCE, qPrintable(header)), "^VELNO(?:EXT|TILL)_API .*?\\b(velno\\w+)\\(");
    QVERIFY(functions.size() > 20);
    QStringList pages =
        QDir(QString::fromUtf8(VELNO_BINARY_FOLDER) + "/man/man3"_L1).entryList({library + "_*.3"_L1});
    pages.replaceInStrings(u".3"_s, QString());
    QCOMPARE(pages, functions);
    const QString overview = made(u"man/man3/%1.3"_s.arg(library));
    for (const QString &function : functions) {
        const QString text = made(u"man/man3/%1.3"_s.arg(function));
        QVERIFY2(section(text, u"NAME"_s).startsWith(function + " \\- "_L1), qUtf8Printable(function));
        QVERIFY2(section(text, u"SYNOPSIS"_s).contains(function + u'('), qUtf8Printable(function));
        QVERIFY2(!section(text, u"DESCRIPTION"_s).trimmed().isEmpty(), qUtf8Printable(function));
        QVERIFY2(section(overview, u"FUNCTIONS"_s).contains(u"\\fB%1\\fP(3)\n"_s.arg(function)),
                 qUtf8Printable(function));
    }
}

void TestManuals::bashOffersWhatTheProgramTakes_data()
{
    eachProgram();
}

void TestManuals::bashOffersWhatTheProgramTakes()
{
    QFETCH(const QString, program);
    const ProgramWords words = wordsOf(program);
    QCOMPARE(offered({program, u"--"_s}), words.options);
    QStringList first = words.options + words.commands + QStringList{u"-h"_s, u"-v"_s};
    QStringList bare = offered({program, QString()});
    first.sort();
    bare.sort();
    QCOMPARE(bare, first);
    QStringList faults =
        words.faults.isEmpty() ? QStringList() : names(offered({program, u"--fault"_s, QString()}));
    faults.sort();
    QCOMPARE(faults, words.faults);
}

void TestManuals::bashCompletes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("expected");

    // As bash cuts them: at blanks, "=" and ":".
    QTest::newRow("an option") << QStringList{u"velnoctl"_s, u"--la"_s} << QStringList{u"--language"_s};
    QTest::newRow("an option's value")
        << QStringList{u"velnoctl"_s, u"--language"_s, u""_s} << QStringList{u"en"_s, u"tr"_s};
    QTest::newRow("behind =") << QStringList{u"velnoctl"_s, u"--language"_s, u"="_s, u"t"_s}
                              << QStringList{u"tr"_s};
    QTest::newRow("what may be anything") << QStringList{u"velnoctl"_s, u"--app"_s, u""_s} << QStringList();
    QTest::newRow("a command behind an address")
        << QStringList{u"velnoctl"_s, u"--listen"_s, u"127.0.0.1"_s, u":"_s, u"4100"_s, u"receipt-"_s}
        << QStringList{u"receipt-answer"_s, u"receipt-data"_s};
    QTest::newRow("an argument") << QStringList{u"velnoctl"_s, u"pay"_s, u""_s}
                                 << QStringList{u"card"_s, u"cash"_s};
    QTest::newRow("no word for the next argument")
        << QStringList{u"velnoctl"_s, u"pay"_s, u"cash"_s, u""_s} << QStringList();
    QTest::newRow("the second argument")
        << QStringList{u"velnoctl"_s, u"receipt-answer"_s, u"4711"_s, u"d"_s} << QStringList{u"drop"_s};
    QTest::newRow("a key") << QStringList{u"velnoctl"_s, u"item"_s, u"1"_s, u"Ekmek"_s, u"am"_s}
                           << QStringList{u"amount="_s};
    QTest::newRow("a key behind another")
        << QStringList{u"velnoctl"_s, u"item"_s, u"1"_s, u"Su"_s, u"type"_s, u"="_s, u"1"_s, u"q"_s}
        << QStringList{u"quantity="_s};
    QTest::newRow("a key's value") << QStringList{u"velnoctl"_s, u"print"_s, u"flag"_s, u"="_s, u""_s}
                                   << QStringList{u"no"_s, u"yes"_s};
    QTest::newRow("the next command")
        << QStringList{u"velnoctl"_s, u"state"_s, u"dat"_s} << QStringList{u"datetime"_s};
    QTest::newRow("a fault with a value")
        << QStringList{u"velno-register"_s, u"--fault"_s, u"res"_s} << QStringList{u"result-code="_s};
    QTest::newRow("no fault's value")
        << QStringList{u"velno-register"_s, u"--fault"_s, u"delay"_s, u"="_s, u"1"_s} << QStringList();
    QTest::newRow("a sign alone") << QStringList{u"velnoctl"_s, u"="_s} << QStringList();
    const QString folder = QString::fromUtf8(VELNO_BINARY_FOLDER) + "/completions"_L1;
    QTest::newRow("a folder") << QStringList{u"velno-register"_s, u"--receipts"_s, folder + "/ba"_L1}
                              << QStringList{folder + "/bash"_L1};
    QTest::newRow("a file") << QStringList{u"velnoctl"_s, u"run"_s, folder + "/bash/velnoc"_L1}
                            << QStringList{folder + "/bash/velnoctl"_L1};
}

void TestManuals::bashCompletes()
{
    QFETCH(const QStringList, words);
    QTEST(offered(words), "expected");
}

void TestManuals::zshOffersWhatTheProgramTakes_data()
{
    eachProgram();
}

void TestManuals::zshOffersWhatTheProgramTakes()
{
    QFETCH(const QString, program);
    const ProgramWords words = wordsOf(program);
    const QString text = made(u"completions/zsh/_"_s + program);
    QVERIFY(text.startsWith(u"#compdef %1\n"_s.arg(program)));
    QCOMPARE(allIn(text.section("_arguments"_L1, 1), "^ +\\S*?(--[a-z-]+)"), words.options);
    const QString faults = text.section("_faults() {"_L1, 1).section("_describe"_L1, 0, 0);
    QCOMPARE(allIn(faults, "^ +'([a-z0-9-]+)=?:"), words.faults);
    const QString commands = text.section("-a commands=("_L1, 1).section("-A first"_L1, 0, 0);
    QCOMPARE(allIn(commands, "^ +'([a-z-]+):"), words.commands);
}

void TestManuals::fishOffersWhatTheProgramTakes_data()
{
    eachProgram();
}

void TestManuals::fishOffersWhatTheProgramTakes()
{
    QFETCH(const QString, program);
    const ProgramWords words = wordsOf(program);
    const QString text = made(u"completions/fish/%1.fish"_s.arg(program));
    QStringList options = allIn(text, "^complete -c .* -l ([a-z-]+)");
    options.replaceInStrings(QRegularExpression(u"^"_s), u"--"_s);
    QCOMPARE(options, words.options);
    QCOMPARE(allIn(text, " -l fault -x -a ([a-z0-9-]+)"), words.faults);
    QCOMPARE(allIn(text, "^complete -c \\S+ -a ([a-z-]+)"), words.commands);
}

void TestManuals::simulatorsWordsAreCompleted()
{
    SKIP_WITHOUT_SIMULATOR();
    QVERIFY(simulatorsCommands().contains(u"make-authority"_s));
    QVERIFY(simulatorsOptions().contains(u"--no-register"_s));
    QVERIFY(simulatorsOptions().contains(u"--show-receipts"_s));
    const QString zsh = made(u"completions/zsh/_velno-simulator"_s);
    QVERIFY(zsh.startsWith("#compdef velno-simulator\n"_L1));
    QCOMPARE(allIn(zsh.section("_arguments"_L1, 1), "^ +\\S*?(--[a-z-]+)"), simulatorsOptions());
    QCOMPARE(allIn(zsh.section("-a commands=("_L1, 1).section("_describe"_L1, 0, 0), "^ +'([a-z-]+):"),
             simulatorsCommands());
    const QString fish = made(u"completions/fish/velno-simulator.fish"_s);
    QStringList options = allIn(fish, "^complete -c .*_from run'.* -l ([a-z-]+)");
    options.replaceInStrings(QRegularExpression(u"^"_s), u"--"_s);
    QCOMPARE(options, simulatorsOptions());
    QCOMPARE(allIn(fish, "^complete -c \\S+ -n __fish_use_subcommand -a ([a-z-]+)"), simulatorsCommands());
}

void TestManuals::simulatorsWordsAreCompletedInBash_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QStringList &words, const QStringList &expected) {
        QTest::newRow(name) << QStringList{u"velno-simulator"_s} + words << expected;
    };
    row("a command", {u""_s}, simulatorsCommands() + QStringList{u"--help"_s, u"--version"_s});
    row("options", {u"run"_s, u"--"_s}, simulatorsOptions() + QStringList{u"--"_s});
    row("a value", {u"run"_s, u"--receipts-as"_s, u""_s}, {u"png"_s, u"text"_s, u"text,png"_s});
    row("a fault", {u"run"_s, u"--fault"_s, u"power"_s}, {u"power-cut="_s});
    row("behind =", {u"run"_s, u"--fault"_s, u"="_s, u"power"_s}, {u"power-cut="_s});
    row("a program", {u"run"_s, u"--no-paper"_s, u"--"_s, u"basena"_s}, {u"basename"_s});
    const QString folder = QString::fromUtf8(VELNO_BINARY_FOLDER) + "/completions/ba"_L1;
    row("a program's file", {u"run"_s, u"--"_s, u"cat"_s, folder}, {folder + u"sh"_s});
    row("a folder", {u"make-authority"_s, folder}, {folder + u"sh"_s});
    row("nothing", {u"folder"_s, u""_s}, {});
}

void TestManuals::simulatorsWordsAreCompletedInBash()
{
    SKIP_WITHOUT_SIMULATOR();
    QFETCH(const QStringList, words);
    QFETCH(QStringList, expected);
    expected.sort();
    QStringList found = offered(words);
    found.sort();
    QCOMPARE(found, expected);
}

QTEST_GUILESS_MAIN(TestManuals)
#include "tst_manuals.moc"
