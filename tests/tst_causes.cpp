// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/texts.h"
#include "tests/support/cause_ways.h"
#include "tests/support/ends_with_test.h"
#include "tests/support/library_calls.h"
#include "tests/support/program_run.h"
#include "tests/support/registers_key.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>
#include <limits>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno;
using namespace Velno::Ext;

namespace {

const std::vector<Way> &ways()
{
    static const std::vector<Way> all = [] {
        std::vector<Way> some = waysOfConnections();
        const std::vector<Way> more = waysOfAnswers();
        some.insert(some.end(), more.begin(), more.end());
        return some;
    }();
    return all;
}

/** The exit code of a program of its own; its cause is what it prints. */
int causeOfProgram(const QString &program, const QStringList &arguments, const std::function<void()> &prepare,
                   int *cause)
{
    const Outcome ended = outcomeOf(program, arguments, [&prepare](QProcess &process) {
        process.setChildProcessModifier(endsWithTest(prepare));
    });
    *cause = ended.output.mid(ended.output.indexOf("cause ") + 6).split('\n').first().toInt();
    return ended.exitCode;
}

/** Causes without a way above. */
const struct
{
    int cause;
    const char *reason;
} elsewhere[] = {
    {VelnoCause_None, "what every call begins with: successLeavesNoCause"},
    {VelnoCause_WriteRefused,
     "the system takes bytes until it tells that the connection is gone: 2005 or 2007"},
    {VelnoCause_NoThread, "needs a process without threads: programsTellTheirCause"},
    {VelnoCause_ProgramUnreadable, "needs a program without its file: programsTellTheirCause"},
};

bool isElsewhere(int cause)
{
    return std::ranges::any_of(elsewhere, [cause](const auto &row) { return row.cause == cause; });
}

bool hasWay(int cause)
{
    return std::ranges::any_of(ways(), [cause](const Way &way) { return way.cause == cause; });
}

} // namespace

/** Every cause of the device library can be had: each row goes there, and the result that it comes with. */
class TestCauses : public LibraryTest
{
    Q_OBJECT

private slots:
    void everyCauseHasAWay();
    void causesByWay_data();
    void causesByWay();
    void successLeavesNoCause();
    void everyCallBeginsWithoutACause();
    void causeNeedsNoLock();
    void programsTellTheirCause();
};

void TestCauses::everyCauseHasAWay()
{
    for (const Words &cause : causeTexts())
        QVERIFY2(hasWay(cause.number) != isElsewhere(cause.number), cause.name);
}

void TestCauses::causesByWay_data()
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < ways().size(); ++i)
        QTest::addRow("%d: %s", ways()[i].cause, ways()[i].how.constData()) << int(i);
}

void TestCauses::causesByWay()
{
    QFETCH(const int, index);
    const Way &way = ways()[size_t(index)];
    if (way.pairs)
        NEEDS_A_REGISTERS_KEY();
    const auto unlimited = qScopeGuard([] { velnoext_set_answer_limit(0xFFFFFFFF); });
    QCOMPARE(way.ask(), way.result);
    QCOMPARE(velnoext_cause(), way.cause);
}

void TestCauses::successLeavesNoCause()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_cause(), int(VelnoCause_None));
    device.answerPlain(plain(false));
    QCOMPARE(login(), 8);
    QCOMPARE(velnoext_cause(), int(VelnoCause_SaidNo));
    device.answerPlain(plain(true));
    QCOMPARE(login(), 0);
    QCOMPARE(velnoext_cause(), int(VelnoCause_None));
}

void TestCauses::everyCallBeginsWithoutACause()
{
    char buffer[17];
    VelnoTextStyle style{};
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto fail = [] { return velnoext_set_active_device(nullptr) == 3 && velnoext_cause() != 0; };
    const std::function<int()> calls[] = {
        [&] { return velnoext_active_device(buffer); },
        [&] { return velnoext_ecr_serialno(buffer); },
        [] { return velnoext_set_active_device(serial); },
        [] { return velnoext_printer_set_encoding("UTF-8"); },
        [&] { return velnoext_printer_add_text("a", &style); },
        [] { return velnoext_printer_add_line_feed(1); },
        [&] { return velnoext_printer_add_justified_text("a", "b", &style); },
        [] {
            velnoext_close();
            return 0;
        },
        [] {
            velnoext_close_all();
            return 0;
        },
    };
    for (const auto &call : calls) {
        QVERIFY(fail());
        QCOMPARE(call(), 0);
        QCOMPARE(velnoext_cause(), int(VelnoCause_None));
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestCauses::causeNeedsNoLock()
{
    QCOMPARE(login(), 1);
    const QMutexLocker lock(&library().connectionMutex); // as while a command is waiting for its answer
    QCOMPARE(velnoext_cause(), int(VelnoCause_NotInitialised));
}

void TestCauses::programsTellTheirCause()
{
    NEEDS_A_REGISTERS_KEY();
    const QString program = QString::fromUtf8(VELNO_PLAIN_C_PROGRAM);
    int cause = 0;
#ifndef __SANITIZE_THREAD__ // which starts a thread of its own first
    const auto withoutThreads = [] {
        const rlimit limit{std::numeric_limits<size_t>::max() / 4 * 3, RLIM_INFINITY};
        setrlimit(RLIMIT_STACK, &limit); // no thread can have a stack of this size, the C library's default
    };
    QCOMPARE(causeOfProgram(program, {QString::number(freePort())}, withoutThreads, &cause), 1);
    QCOMPARE(cause, int(VelnoCause_NoThread));
#endif
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"program"_s);
    QVERIFY(QFile::copy(program, copy));
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port);
    QCOMPARE(causeOfProgram(copy, {QString::number(port), copy}, {}, &cause), 13);
    QCOMPARE(cause, int(VelnoCause_ProgramUnreadable));
}

QTEST_GUILESS_MAIN(TestCauses)
#include "tst_causes.moc"
