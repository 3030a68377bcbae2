// SPDX-License-Identifier: Apache-2.0

#include "tests/support/ends_with_test.h"
#include "tests/support/program_run.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velno-simulator, where it was installed. */
class TestVelnoSimulator : public QObject
{
    Q_OBJECT

private slots:
    void aTillReachesTheRegister();
    void aProgramGetsTheSimulatorsProgramsAndLibraries();
    void inputAndExitStatusAreThePrograms();
    void theRegisterEndsWithTheProgram();
    void aProgramIsNotStartedWithoutItsRegister();
    void otherCredentialsAreNotBelieved();
    void anAuthorityIsMadeOnce();
    void helpAndVersion();
    void theLocaleChoosesTheLanguage_data();
    void theLocaleChoosesTheLanguage();
    void bothLanguagesHaveEveryText();
    void bothLanguagesNameTheSameOptions_data();
    void bothLanguagesNameTheSameOptions();
    void turkishIsSpokenThroughout();
    void wrongUsage_data();
    void wrongUsage();
};

namespace {

const QString folder = QString::fromUtf8(VELNO_INSTALLED_SIMULATOR);
const QString simulator = folder + u"/bin/velno-simulator"_s;

Outcome run(const QStringList &arguments, const QByteArray &input = {})
{
    QTemporaryDir inputs;
    const QString file = inputs.filePath(u"input"_s);
    QFile written(file);
    if (!written.open(QIODevice::WriteOnly) || written.write(input) != input.size())
        return {};
    written.close();
    return outcomeOf(simulator, arguments, [&file](QProcess &process) {
        process.setStandardInputFile(file);
        process.setChildProcessModifier(endsWithTest());
    });
}

/** With these variables as the only ones that tell a language: "LANG=tr_TR.UTF-8 LANGUAGE=en". */
Outcome runIn(const QString &locale, const QStringList &arguments)
{
    return outcomeOf(simulator, arguments, [&locale](QProcess &process) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto &name : {u"LC_ALL"_s, u"LC_MESSAGES"_s, u"LANG"_s, u"LANGUAGE"_s})
            environment.remove(name);
        for (const QString &variable : locale.split(u' ', Qt::SkipEmptyParts))
            environment.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
        process.setProcessEnvironment(environment);
        process.setChildProcessModifier(endsWithTest());
    });
}

/** All that the expression captures, in order. */
QStringList allIn(const QByteArray &text, const char *expression)
{
    const QRegularExpression wanted(QString::fromLatin1(expression), QRegularExpression::MultilineOption);
    QStringList found;
    for (const auto &match : wanted.globalMatch(QString::fromUtf8(text)))
        found << match.captured(1);
    return found;
}

/** Asks a register that is given these options for its state. */
Outcome askForState(const QStringList &options)
{
    const QString address = u"127.0.0.1:%1"_s.arg(freePort());
    return run(QStringList{u"run"_s, u"--connect"_s, address} + options +
               QStringList{u"--"_s, u"velnoctl"_s, u"--serial"_s, u"UB1234567890"_s, u"--listen"_s, address,
                           u"--app"_s, u"5"_s, u"state"_s});
}

} // namespace

void TestVelnoSimulator::aTillReachesTheRegister()
{
    const Outcome outcome = askForState({});
    QVERIFY2(outcome.exitCode == 0, outcome.errors.constData());
    QCOMPARE(outcome.output, "state 1 (idle)\n");
    QVERIFY2(
        outcome.errors.startsWith("velno-simulator: a simulation: velnoctl trusts a development authority"),
        outcome.errors.constData());
}

void TestVelnoSimulator::aProgramGetsTheSimulatorsProgramsAndLibraries()
{
    const Outcome outcome = run({u"run"_s, u"--no-register"_s, u"--"_s, u"sh"_s, u"-c"_s,
                                 u"command -v velno-pairing; echo \"${LD_LIBRARY_PATH%%:*}\""_s});
    QCOMPARE(outcome.exitCode, 0);
    const QList<QByteArray> lines = outcome.output.split('\n');
    QCOMPARE(QString::fromUtf8(lines.first()), folder + u"/bin/velno-pairing"_s);
    QVERIFY(QFile::exists(QString::fromUtf8(lines.at(1)) + u"/libvelnoext.so.0"_s));
    QCOMPARE(run({u"folder"_s}).output, folder.toUtf8() + '\n');
}

void TestVelnoSimulator::inputAndExitStatusAreThePrograms()
{
    const Outcome outcome =
        run({u"run"_s, u"--no-register"_s, u"--"_s, u"sh"_s, u"-c"_s, u"cat; exit 7"_s}, "a line\n");
    QCOMPARE(outcome.exitCode, 7);
    QCOMPARE(outcome.output, "a line\n");
}

void TestVelnoSimulator::theRegisterEndsWithTheProgram()
{
    const QTemporaryDir events;
    const QString file = events.filePath(u"events"_s);
    const QString target = u"127.0.0.1:%1"_s.arg(freePort());
    QCOMPARE(run({u"run"_s, u"--connect"_s, target, u"--events"_s, file, u"--"_s, u"true"_s}).exitCode, 0);
    const auto told = [&file] {
        QFile written(file);
        return written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
    };
    QTRY_VERIFY_WITH_TIMEOUT(told().endsWith("\nstopped\n"), 30'000);
    QVERIFY(told().startsWith("ready UB1234567890 " + target.toUtf8()));
}

void TestVelnoSimulator::aProgramIsNotStartedWithoutItsRegister()
{
    const Outcome outcome =
        run({u"run"_s, u"--fault"_s, u"no-such-fault"_s, u"--"_s, u"echo"_s, u"started"_s});
    QCOMPARE(outcome.exitCode, 64);
    QCOMPARE(outcome.output, "");
    QVERIFY2(outcome.errors.contains("velno-register: --fault: "), outcome.errors.constData());
}

void TestVelnoSimulator::otherCredentialsAreNotBelieved()
{
    const QTemporaryDir place;
    const QString authority = place.filePath(u"authority"_s);
    QCOMPARE(run({u"make-authority"_s, authority}).exitCode, 0);
    const Outcome outcome = askForState({u"--credentials"_s, authority + u"/register"_s});
    QCOMPARE(outcome.exitCode, 10);
    QVERIFY2(outcome.errors.contains("certificate"), outcome.errors.constData());
}

void TestVelnoSimulator::anAuthorityIsMadeOnce()
{
    const QTemporaryDir place;
    const QString authority = place.filePath(u"authority"_s);
    QCOMPARE(run({u"make-authority"_s, authority}).exitCode, 0);
    QCOMPARE(QFile::permissions(authority + u"/register/client.key"_s) &
                 (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
             QFile::Permissions());
    QCOMPARE(QDir(place.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"authority"_s});
    QFile anchors(authority + u"/trust-anchors.pem"_s);
    QVERIFY(anchors.open(QIODevice::ReadOnly));
    const QByteArray before = anchors.readAll();
    checkWrongUsage(simulator, {u"make-authority"_s, authority}, "is there already");
    anchors.seek(0);
    QCOMPARE(anchors.readAll(), before);
}

void TestVelnoSimulator::helpAndVersion()
{
    QVERIFY(run({u"--help"_s}).output.startsWith("Usage: velno-simulator run "));
    QVERIFY(run({u"run"_s, u"--help"_s}).output.startsWith("Usage: velno-simulator run "));
    QVERIFY(
        run({u"make-authority"_s, u"--help"_s}).output.startsWith("Usage: velno-simulator make-authority "));
    QFile page(folder + u"/share/man/man1/velno-simulator.1"_s);
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QByteArray manual = page.readAll().replace("\\-", "-");
    for (const char *word : {"run", "make-authority", "folder", "--no-register", "--events"}) {
        QVERIFY2(run({u"--help"_s}).output.contains(word), word);
        QVERIFY2(manual.contains(word), word);
    }
    QVERIFY(run({u"--version"_s}).output.startsWith("velno-simulator " VELNO_VERSION "\n"));
}

void TestVelnoSimulator::theLocaleChoosesTheLanguage_data()
{
    QTest::addColumn<bool>("isTurkish");

    QTest::newRow("") << false;
    QTest::newRow("LANG=tr_TR.UTF-8") << true;
    QTest::newRow("LANG=tr") << true;
    QTest::newRow("LANG=tr_CY@variant") << true;
    QTest::newRow("LANG=trv_TW.UTF-8") << false; // a language of Taiwan
    QTest::newRow("LANG=de_DE.UTF-8") << false;
    QTest::newRow("LC_MESSAGES=tr_TR.UTF-8 LANG=C") << true;
    QTest::newRow("LC_ALL=C.UTF-8 LANG=tr_TR.UTF-8 LANGUAGE=tr") << false;
    QTest::newRow("LC_MESSAGES=POSIX LANG=tr_TR.UTF-8 LANGUAGE=tr") << false;
    QTest::newRow("LANGUAGE=tr") << false;
    QTest::newRow("LANG=en_US.UTF-8 LANGUAGE=de:tr_TR:en") << true;
    QTest::newRow("LANG=tr_TR.UTF-8 LANGUAGE=en:tr") << false;
    QTest::newRow("LANG=tr_TR.UTF-8 LANGUAGE=*") << true;
}

void TestVelnoSimulator::theLocaleChoosesTheLanguage()
{
    QFETCH(const bool, isTurkish);
    const Outcome outcome = runIn(QString::fromLatin1(QTest::currentDataTag()), {u"--help"_s});
    QCOMPARE(outcome.errors, "");
    QVERIFY2(outcome.output.startsWith(isTurkish ? "Kullanım: velno-simulator" : "Usage: velno-simulator"),
             outcome.output.constData());
}

void TestVelnoSimulator::bothLanguagesHaveEveryText()
{
    const QString tellTexts =
        u"source \"$0\"; declare -n texts=$1; for key in \"${!texts[@]}\"; do "
        "words=${texts[$key]//[^%]/}; echo \"$key ${#words} ${texts[$key]:+told}\"; done"_s;
    const auto texts = [&tellTexts](const QString &language) {
        QList<QByteArray> lines =
            outcomeOf(u"bash"_s, {u"-c"_s, tellTexts, folder + u"/libexec/speech"_s, language})
                .output.split('\n');
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const QList<QByteArray> english = texts(u"english"_s);
    QVERIFY(english.contains("see-help 1 told"));
    QCOMPARE(texts(u"turkish"_s), english);
    for (const QByteArray &text : english)
        QVERIFY2(text.isEmpty() || text.endsWith(" told"), text.constData());
}

void TestVelnoSimulator::bothLanguagesNameTheSameOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");

    QTest::newRow("velno-simulator") << QStringList{u"--help"_s} << u"--events"_s;
    QTest::newRow("make-authority") << QStringList{u"make-authority"_s, u"--help"_s} << u"--credentials"_s;
}

void TestVelnoSimulator::bothLanguagesNameTheSameOptions()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, named);
    const QByteArray english = runIn(u"LANG=C"_s, arguments).output;
    const QByteArray turkish = runIn(u"LANG=tr_TR.UTF-8"_s, arguments).output;
    QVERIFY(allIn(english, "(--[a-z-]+)").contains(named) && english != turkish);
    for (const char *expression :
         {"(--[a-z-]+)", "\\b([A-Z]{3,})\\b", "([a-z/-]+\\.[a-z]{3})\\b", "\\b(\\d+)\\b"}) {
        QStringList told = allIn(turkish, expression);
        QStringList expected = allIn(english, expression);
        for (QStringList *words : {&told, &expected}) {
            words->sort();
            words->removeDuplicates();
        }
        QCOMPARE(told, expected);
    }
    QCOMPARE(allIn(turkish, "^([a-z-]+)  +"), allIn(english, "^([a-z-]+)  +"));
    QCOMPARE(allIn(turkish, "^  (--[a-z-]+)"), allIn(english, "^  (--[a-z-]+)"));
    for (const QByteArray &line : turkish.split('\n'))
        QVERIFY2(QString::fromUtf8(line).size() <= 120, line.constData());
}

void TestVelnoSimulator::turkishIsSpokenThroughout()
{
    const QString turkish = u"LANG=tr_TR.UTF-8"_s;
    const Outcome ran = runIn(turkish, {u"run"_s, u"--no-register"_s, u"--"_s, u"true"_s});
    QCOMPARE(ran.exitCode, 0);
    QCOMPARE(ran.errors, "velno-simulator: bu bir benzetimdir: true bir geliştirme makamına güvenir, kestiği "
                         "hiçbir fiş mali değildir\n");
    const Outcome none = runIn(turkish, {u"run"_s, u"--"_s, u"no-such-program%s"_s});
    QCOMPARE(none.exitCode, 127);
    QCOMPARE(none.errors, "velno-simulator: no-such-program%s diye bir program yok\n");
    const Outcome wrong = runIn(turkish, {u"folder"_s, u"lib"_s});
    QCOMPARE(wrong.exitCode, 64);
    QCOMPARE(wrong.errors, "velno-simulator: folder argüman almaz; bkz. velno-simulator --help\n");
    QCOMPARE(runIn(turkish, {u"folder"_s}).output, folder.toUtf8() + '\n');
    const Outcome there = runIn(turkish, {u"make-authority"_s, folder});
    QCOMPARE(there.exitCode, 64);
    QCOMPARE(there.errors, "velno-simulator make-authority: " + folder.toUtf8() +
                               " zaten var; kabul edilen: yeni ya da boş bir klasör\n");
    const Outcome nowhere = runIn(turkish, {u"make-authority"_s, u"/dev/null/authority"_s});
    QCOMPARE(nowhere.exitCode, 1);
    QVERIFY2(nowhere.errors.contains("/dev/null: yazılamıyor\n"), nowhere.errors.constData());
}

void TestVelnoSimulator::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");

    QTest::newRow("nothing") << QStringList() << QByteArray("accepted is run, make-authority or folder");
    QTest::newRow("unknown") << QStringList{u"sell"_s} << QByteArray("accepted is run");
    QTest::newRow("no program") << QStringList{u"run"_s} << QByteArray("-- and a program are missing");
    QTest::newRow("no program behind --")
        << QStringList{u"run"_s, u"--"_s} << QByteArray("-- and a program are missing");
    QTest::newRow("events without a file") << QStringList{u"run"_s, u"--events"_s} << QByteArray("--events");
    QTest::newRow("an option and no register")
        << QStringList{u"run"_s, u"--no-register"_s, u"--no-paper"_s, u"--"_s, u"true"_s}
        << QByteArray("--no-paper is for a register");
    QTest::newRow("folder of something") << QStringList{u"folder"_s, u"lib"_s} << QByteArray("no argument");
    QTest::newRow("no folder for an authority")
        << QStringList{u"make-authority"_s} << QByteArray("accepted is one folder");
    QTest::newRow("an option for an authority")
        << QStringList{u"make-authority"_s, u"--days"_s} << QByteArray("no option \"--days\"");
}

void TestVelnoSimulator::wrongUsage()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    checkWrongUsage(simulator, arguments, message);
}

QTEST_MAIN(TestVelnoSimulator)
#include "tst_velno_simulator.moc"
