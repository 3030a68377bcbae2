// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/registers_key.h"
#include "tests/support/simulated_register.h"
#include "tests/support/symbol_names.h"
#include "tests/support/velnoctl_client.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** docs/ci-recipe.md: its script, as it stands there, passes, and fails when what it checks is not so. */
class TestCiRecipe : public QObject
{
    Q_OBJECT

private slots:
    void theScriptPasses();
    void theScriptSeesWhatIsWrong_data();
    void theScriptSeesWhatIsWrong();
};

namespace {

QString script()
{
    const QString page = QString::fromUtf8(fileText(VELNO_SOURCE "/docs", "ci-recipe.md"));
    return page.section(u"\n```sh\n"_s, 1).section(u"\n```\n"_s, 0, 0);
}

/** Runs a script in this folder, with the programs of this build, at a port of its own. */
Outcome run(const QTemporaryDir &folder, QString text)
{
    const QString file = fileWith(folder, text.replace(u"4100"_s, QString::number(freePort())).toUtf8());
    return outcomeOf(u"/bin/sh"_s, {file, u"artefacts"_s}, [&folder](QProcess &process) {
        auto environment = process.processEnvironment(); // of outcomeOf()
        environment.insert(u"PATH"_s, QFileInfo(SimulatedRegister::program()).path() + u':' +
                                          QFileInfo(Client::program()).path() + u':' +
                                          environment.value(u"PATH"_s));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
    });
}

} // namespace

void TestCiRecipe::theScriptPasses()
{
    NEEDS_A_REGISTERS_KEY();
    const QTemporaryDir folder;
    const Outcome outcome = run(folder, script());
    QVERIFY2(outcome.exitCode == 0, outcome.errors.constData());
    QVERIFY2(outcome.output.endsWith("two receipts, each sold once\n"), outcome.output.constData());
    const QDir artefacts(folder.filePath(u"artefacts"_s));
    QCOMPARE(artefacts.entryList({u"*-receipt-*.png"_s}, QDir::Files).size(), 2);
    QCOMPARE(artefacts.entryList({u"*-receipt-*.txt"_s}, QDir::Files).size(), 2);
    const QByteArray events = fileText(qPrintable(artefacts.path()), "events.jsonl");
    QVERIFY2(events.contains("\"power-cut\"") && events.contains("\"the answer was lost\""),
             events.constData());
}

void TestCiRecipe::theScriptSeesWhatIsWrong_data()
{
    QTest::addColumn<QString>("before"); // in the script
    QTest::addColumn<QString>("after");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("nothing is refused")
        << u"fault refuse=z\n"_s << u"fault none\n"_s << "a refused command ended with 0 instead of 8"_ba;
    QTest::newRow("a receipt is sold twice")
        << u" key=1\n"_s << u" key=1\ntill receipt \"$work/sale.json\" key=x\n"_s
        << "a lost answer made 2 receipts"_ba;
    QTest::newRow("the register cannot start")
        << u"--sales 2"_s << u"--sales 0"_s << "accepted is 1 to 1000000000"_ba;
}

void TestCiRecipe::theScriptSeesWhatIsWrong()
{
    NEEDS_A_REGISTERS_KEY();
    QFETCH(const QString, before);
    QFETCH(const QString, after);
    QFETCH(const QByteArray, message);
    const QTemporaryDir folder;
    QString changed = script();
    QVERIFY(changed.contains(before));
    const Outcome outcome = run(folder, changed.replace(before, after));
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY2(outcome.errors.contains(message), outcome.errors.constData());
}

QTEST_GUILESS_MAIN(TestCiRecipe)
#include "tst_ci_recipe.moc"
