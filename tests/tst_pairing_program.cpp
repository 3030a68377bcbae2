// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "tests/support/program_run.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velno-pairing as a child process. */
class TestPairingProgram : public QObject
{
    Q_OBJECT

private slots:
    void helpAndVersionNeedNoDisplay_data();
    void helpAndVersionNeedNoDisplay();
    void wrongUsageNeedsNoDisplay_data();
    void wrongUsageNeedsNoDisplay();
    void optionsOfQtOpenTheWindow_data();
    void optionsOfQtOpenTheWindow();
    void helpThatCannotBeWritten();
};

namespace {

/** Runs the program where Qt finds no screen: an application object of the window's would end it. */
Outcome runWithoutDisplay(const QStringList &arguments, const QString &outputFile = {})
{
    return outcomeOf(QString::fromUtf8(VELNO_PAIRING), arguments, [&outputFile](QProcess &process) {
        QProcessEnvironment environment = process.processEnvironment();
        environment.insert(u"QT_QPA_PLATFORM_PLUGIN_PATH"_s, u"/nowhere"_s);
        environment.insert(u"QT_PLUGIN_PATH"_s, u"/nowhere"_s);
        process.setProcessEnvironment(environment);
        if (!outputFile.isEmpty())
            process.setStandardOutputFile(outputFile);
    });
}

} // namespace

void TestPairingProgram::helpAndVersionNeedNoDisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("beginning");

    const QByteArray version = "velno-pairing " VELNO_VERSION "\n";
    QTest::newRow("help") << QStringList{u"--help"_s} << QByteArray("Usage: velno-pairing [OPTION]...\n");
    QTest::newRow("h") << QStringList{u"-h"_s} << QByteArray("Usage: velno-pairing [OPTION]...\n");
    QTest::newRow("version") << QStringList{u"--version"_s} << version;
    QTest::newRow("v") << QStringList{u"-v"_s} << version;
    QTest::newRow("behind an option of Qt's")
        << QStringList{u"-platform"_s, u"offscreen"_s, u"-style=Fusion"_s, u"--version"_s} << version;
}

void TestPairingProgram::helpAndVersionNeedNoDisplay()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, beginning);
    const Outcome run = runWithoutDisplay(arguments);
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QVERIFY2(run.output.startsWith(beginning), run.output.constData());
    QVERIFY2(run.output.contains(Velno::GMP::trustAnchorsInWords().toUtf8()), run.output.constData());
}

void TestPairingProgram::wrongUsageNeedsNoDisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("word");

    QTest::newRow("unknown option") << QStringList{u"--nonsense"_s} << QByteArray("--nonsense");
    QTest::newRow("unknown letter") << QStringList{u"-x"_s} << QByteArray("-x");
    QTest::newRow("a word") << QStringList{u"4100"_s} << QByteArray("4100");
    QTest::newRow("nothing") << QStringList{QString()} << QByteArray();
    QTest::newRow("behind an option of Qt's")
        << QStringList{u"--platform"_s, u"offscreen"_s, u"-reverse"_s, u"more"_s} << QByteArray("more");
}

void TestPairingProgram::wrongUsageNeedsNoDisplay()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, word);
    const Outcome run = runWithoutDisplay(arguments);
    QCOMPARE(run.exitCode, 64);
    QCOMPARE(run.output, QByteArray());
    QVERIFY2(
        run.errors.endsWith("velno-pairing: \"" + word + "\" is no option; velno-pairing --help shows all\n"),
        run.errors.constData());
}

void TestPairingProgram::optionsOfQtOpenTheWindow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("none") << QStringList();
    QTest::newRow("a style") << QStringList{u"-style"_s, u"Fusion"_s};
}

void TestPairingProgram::optionsOfQtOpenTheWindow()
{
    QFETCH(const QStringList, arguments);
    const Outcome run = runWithoutDisplay(arguments);
    QVERIFY(run.exitCode != 0 && run.exitCode != 64); // it came as far as looking for a screen
    QVERIFY2(run.errors.contains("platform plugin"), run.errors.constData());
}

void TestPairingProgram::helpThatCannotBeWritten()
{
    QCOMPARE(runWithoutDisplay({u"--help"_s}, u"/dev/full"_s).exitCode, 74);
}

QTEST_GUILESS_MAIN(TestPairingProgram)
#include "tst_pairing_program.moc"
