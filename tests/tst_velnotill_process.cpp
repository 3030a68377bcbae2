// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/symbol_names.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool plainBuild = false;
#else
constexpr bool plainBuild = true;
#endif

constexpr int longestRun = 120'000; // ms

struct Run
{
    QByteArray out;
    QByteArray err;
    int code = -1;
};

/** With a locale that Qt, were it left to it, would set in the place of C. */
Run run(const QStringList &command, const QStringList &environment = {})
{
    QProcess program;
    auto all = QProcessEnvironment::systemEnvironment();
    all.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const QString &setting : environment)
        all.insert(setting.section(u'=', 0, 0), setting.section(u'=', 1));
    program.setProcessEnvironment(all);
    program.start(command.first(), command.sliced(1));
    if (!program.waitForFinished(longestRun))
        program.kill();
    const bool isEnded = program.exitStatus() == QProcess::NormalExit;
    return {program.readAllStandardOutput(), program.readAllStandardError(),
            isEnded ? program.exitCode() : -1};
}

} // namespace

/** libvelnotill.so as programs without Qt see it. */
class TestVelnotillProcess : public QObject
{
    Q_OBJECT

private slots:
    void cProgramSellsOnce_data();
    void cProgramSellsOnce();
    void secondProcessIsRefusedInWords();
    void pythonSellsOnce();
    void libraryShowsItsFunctionsAlone();
    void libraryNeedsTheDeviceLibrary();
};

void TestVelnotillProcess::cProgramSellsOnce_data()
{
    QTest::addColumn<QStringList>("more");
    QTest::newRow("closed") << QStringList();
    QTest::newRow("ends while the till is open") << QStringList{u"stay"_s};
}

void TestVelnotillProcess::cProgramSellsOnce()
{
    QFETCH(const QStringList, more);
    const QTemporaryDir folder;
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    for (int i = 0; i < 2; ++i) {
        const Run sold = run(QStringList{QString::fromUtf8(VELNO_PLAIN_C_TILL), QString::number(port),
                                         folder.filePath(u"ledger"_s)} +
                             more);
        QCOMPARE(sold.err, QByteArray());
        QCOMPARE(sold.out, QByteArray("result 0 state closed receipt 1/1 locale C\n").repeated(2));
        QCOMPARE(sold.code, 0);
    }
}

void TestVelnotillProcess::secondProcessIsRefusedInWords()
{
    const QTemporaryDir folder;
    const QStringList command{QString::fromUtf8(VELNO_PLAIN_C_TILL), QString::number(freePort()),
                              folder.filePath(u"ledger"_s)};
    QProcess first; // waits for a register that does not come
    first.start(command.first(), command.sliced(1));
    // The log comes behind the lock: a second process that began when the ledger is there could be first.
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(command.last() + u"-wal"_s), 30'000);
    const Run second = run(command);
    QCOMPARE(second.code, 3);
    QVERIFY2(second.out.contains(command.last().toUtf8()), second.out.constData());
    first.kill();
    first.waitForFinished();
}

void TestVelnotillProcess::pythonSellsOnce()
{
    if (QByteArray(VELNO_PYTHON).isEmpty())
        QSKIP("NOT TESTED: python3 was not there when this was configured");
    if (!plainBuild)
        QSKIP("NOT TESTED: Python cannot load a library that was built for a sanitizer");
    const QTemporaryDir folder;
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    const Run sold = run({QString::fromUtf8(VELNO_PYTHON), QString::fromUtf8(VELNO_PYTHON_TILL),
                          QString::fromUtf8(VELNO_TILL_LIBRARY), QString::number(port),
                          folder.filePath(u"ledger"_s), QString::number(freePort())});
    QCOMPARE(sold.err, QByteArray());
    QCOMPARE(sold.out, QByteArray("done closed 1 1 1250\nclosed 0\n").repeated(2) +
                           "interrupted accepted 0 0 0\nclosed 0\nlocale kept\n");
    QCOMPARE(sold.code, 0);
}

void TestVelnotillProcess::libraryShowsItsFunctionsAlone()
{
    const Run nm = run(
        {QString::fromUtf8(VELNO_NM), u"-D"_s, u"--defined-only"_s, QString::fromUtf8(VELNO_TILL_LIBRARY)});
    QCOMPARE(nm.code, 0);
    const QStringList shown = TestSupport::matches(nm.out, "^[0-9a-f]+ [^A\\n] ([^@\\n]+)");
    const QStringList declared = TestSupport::matches(
        TestSupport::fileText(VELNO_HEADER_FOLDER, "velnotill.h"), "^VELNOTILL_API [^(]*?(\\w+)\\(");
    const QStringList mapped =
        TestSupport::matches(TestSupport::fileText(VELNO_HEADER_FOLDER, "velnotill.map"), "^ +(\\w+);");
    QVERIFY(declared.contains(u"velnotill_sell"_s));
    QCOMPARE(shown, declared);
    QCOMPARE(mapped, declared);
}

/** The application may use it, too: there is one of it in a process. */
void TestVelnotillProcess::libraryNeedsTheDeviceLibrary()
{
    const Run readelf =
        run({QString::fromUtf8(VELNO_READELF), u"-d"_s, QString::fromUtf8(VELNO_TILL_LIBRARY)});
    QVERIFY2(readelf.out.contains("[libvelnoext.so."), readelf.out.constData());
}

QTEST_GUILESS_MAIN(TestVelnotillProcess)
#include "tst_velnotill_process.moc"
