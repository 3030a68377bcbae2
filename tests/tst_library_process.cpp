// SPDX-License-Identifier: Apache-2.0

#include "tests/support/library_test.h"
#include "tests/support/registers_key.h"
#include "tests/support/symbol_names.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <future>
#include <limits>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using Velno::Ext::library;

namespace {

qsizetype entriesOf(const char *folder)
{
    return QDir(QString::fromLatin1(folder))
        .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)
        .size();
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool plainBuild = false; // a sanitizer keeps what was freed
#else
constexpr bool plainBuild = true;
#endif

/** What this process holds in memory. */
qint64 residentBytes()
{
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/** Connects and closes the register again and again while others use the library. @return how often it worked
 */
int connectOften(HandMadeDevice &device, const char *name)
{
    const quint16 port = freePort();
    device.answerPlain(plain(true));
    device.serve(port, std::numeric_limits<int>::max());
    int connected = 0;
    for (int i = 0; i < 40; ++i) {
        connected += velnoext_initialize(5, name, "127.0.0.1", port, patience) == 0;
        velnoext_login(patience);
        i % 2 == 0 ? velnoext_close() : velnoext_close_all();
    }
    return connected;
}

} // namespace

class TestLibraryProcess : public LibraryTest
{
    Q_OBJECT

private slots:
    void callsFromManyThreadsQueue();
    void threadsMayCloseWhatOthersUse();
    void cyclesLeakNothing();
    void programsOfEveryKind_data();
    void programsOfEveryKind();
    void threadLeavesNothingOfOpenSsl();
    void programWithoutItsFileCannotPair();
    void programWithoutThreadsIsToldSo();
    void libraryShowsItsFunctionsAlone();
};

void TestLibraryProcess::callsFromManyThreadsQueue()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    // Each command gets a reply of its own: a number that is no command's.
    device.setAnswer([&device, count = 1000](const QByteArray &) mutable {
        return QList{HandMadeDevice::framed(device.sealed(plain(++count)))};
    });
    std::atomic<int> sum = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back([&sum] {
            for (int call = 0; call < 25; ++call) {
                int value = 0;
                if (velnoext_ecr_datetime(patience, &value) == 0)
                    sum += value;
            }
        });
    for (std::thread &caller : callers)
        caller.join();
    QCOMPARE(int(sum), 100 * 1000 + 100 * 101 / 2);
}

void TestLibraryProcess::threadsMayCloseWhatOthersUse()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    library().pairingRecords = {{serial, first.record}, {otherSerial, second.record}};
    std::atomic<bool> done = false;
    std::atomic<int> surprises = 0;
    std::vector<std::thread> users;
    for (const char *const name : {serial, otherSerial})
        users.emplace_back([&, name] {
            char buffer[17];
            while (!done) {
                velnoext_set_active_device(name);
                velnoext_active_device(buffer);
                velnoext_ecr_serialno(buffer);
                surprises += velnoext_login(patience) > 2;
                surprises += velnoext_error_detail() != 0;
            }
        });
    auto connecting = std::async(std::launch::async, [&] { return connectOften(second, otherSerial); });
    const int connected = connectOften(first, serial);
    const int alsoConnected = connecting.get();
    done = true;
    for (std::thread &user : users)
        user.join();
    QCOMPARE(connected, 40);
    QCOMPARE(alsoConnected, 40);
    QCOMPARE(int(surprises), 0);
}

void TestLibraryProcess::cyclesLeakNothing()
{
    HandMadeDevice device;
    const auto cycles = [&device](int count) {
        int result = 0;
        for (int i = 0; i < count && result == 0; ++i) {
            result = connectPaired(device);
            velnoext_close_all();
            device.stop();
        }
        return result;
    };
    QCOMPARE(cycles(100), 0); // until caches and the allocator's arenas have found their size
    const qsizetype sockets = entriesOf("/proc/self/fd");
    const qsizetype threads = entriesOf("/proc/self/task");
    const qint64 memory = residentBytes();
    QCOMPARE(cycles(200), 0);
    QCOMPARE(entriesOf("/proc/self/fd"), sockets);
    // A thread that has ended may be listed a moment longer, also in the count before.
    QTRY_VERIFY_WITH_TIMEOUT(entriesOf("/proc/self/task") <= threads, int(patience));
    if (plainBuild) {
        const qint64 grown = residentBytes() - memory;
        QVERIFY2(grown < 256 * 1024, QByteArray::number(grown).constData());
    }
}

void TestLibraryProcess::programsOfEveryKind_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("visits"); // how often the register comes after it is paired
    QTest::addColumn<QByteArray>("output");

    const QString c = QString::fromUtf8(VELNO_PLAIN_C_PROGRAM);
    QTest::newRow("C") << QStringList{c, {}} << 2
                       << QByteArray("code 0 state 7 locale C\ncode 0 state 7 locale C\n");
    QTest::newRow("C that ends while connected")
        << QStringList{c, {}, u"stay"_s} << 1 << QByteArray("code 0 state 7 locale C\n");
    QTest::newRow("C++ with a Qt application of its own")
        << QStringList{QString::fromUtf8(VELNO_QT_PROGRAM), {}} << 2
        << QByteArray("code 0 state 7\ncode 0 state 7\napplication kept\n");
    QTest::newRow("C++ that outlives its Qt application")
        << QStringList{QString::fromUtf8(VELNO_QT_PROGRAM), {}, u"outlive"_s} << 2
        << QByteArray("code 0 state 7\n").repeated(3) + "application gone\n";
    QTest::newRow("C++ whose threads and applications come and go")
        << QStringList{QString::fromUtf8(VELNO_QT_PROGRAM), {}, u"pass-on"_s} << 2
        << QByteArray("code 0 state 7\n").repeated(4);
    QTest::newRow("Python") << QStringList{QString::fromUtf8(VELNO_PYTHON),
                                           QString::fromUtf8(VELNO_PYTHON_PROGRAM),
                                           QString::fromUtf8(VELNO_LIBRARY),
                                           {}}
                            << 2
                            << QByteArray("connected 0\ncode 0 state 7\ncode 0 state 7\n").repeated(2) +
                                   "version 0\nlocale kept\n"
                                   "no name 3 0x300\n"
                                   "interrupted 2\n";
}

void TestLibraryProcess::programsOfEveryKind()
{
    NEEDS_A_REGISTERS_KEY();
    QFETCH(QStringList, command);
    QFETCH(const int, visits);
    if (command.first().isEmpty())
        QSKIP("NOT TESTED: python3 was not there when this was configured");
    if (!plainBuild && command.contains(QString::fromUtf8(VELNO_LIBRARY)))
        QSKIP("NOT TESTED: Python cannot load a library that was built for a sanitizer");
    HandMadeDevice device;
    // Sealed when asked: the keys are agreed on only then. The second time the register comes paired.
    device.setAnswer([&device](const QByteArray &) {
        return QList{HandMadeDevice::framed(device.sealed(plain(7, QVector<int>())))};
    });
    const quint16 port = freePort();
    device.pairAndServe(port, visits);
    command.replace(command.indexOf(QString()), QString::number(port));
    QProcess program;
    // With a locale that Qt, were it left to it, would set in the place of C.
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    const QTemporaryDir folder;
    environment.insert(u"XDG_RUNTIME_DIR"_s, folder.path());
    program.setProcessEnvironment(environment);
    program.start(command.first(), command.sliced(1));
    QVERIFY2(program.waitForFinished(), qPrintable(program.errorString()));
    QCOMPARE(program.readAllStandardError(), QByteArray());
    QTEST(program.readAllStandardOutput(), "output");
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 2 + visits, int(patience));
}

/** Freed behind the thread's end, it would be freed while the process ends, too. */
void TestLibraryProcess::threadLeavesNothingOfOpenSsl()
{
    NEEDS_A_REGISTERS_KEY();
    if (!plainBuild)
        QSKIP("NOT TESTED: a sanitizer must be loaded in front of all libraries, and so must the watch");
    HandMadeDevice device;
    const quint16 port = freePort();
    device.setAnswer([&device](const QByteArray &) {
        return QList{HandMadeDevice::framed(device.sealed(plain(7, QVector<int>())))};
    });
    device.pairAndServe(port, 2);
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s); // Qt warns of any other
    environment.insert(u"LD_PRELOAD"_s, QString::fromUtf8(VELNO_THREAD_END_WATCH));
    program.setProcessEnvironment(environment);
    program.start(QString::fromUtf8(VELNO_PLAIN_C_PROGRAM), {QString::number(port)});
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.readAllStandardError(), QByteArray());
    QCOMPARE(program.exitCode(), 0);
}

void TestLibraryProcess::programWithoutItsFileCannotPair()
{
    NEEDS_A_REGISTERS_KEY();
    QTemporaryDir folder;
    const QString copy = folder.filePath(u"program"_s);
    QVERIFY(QFile::copy(QString::fromUtf8(VELNO_PLAIN_C_PROGRAM), copy));
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port);
    QProcess program;
    program.start(copy, {QString::number(port), copy});
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.readAllStandardOutput(), QByteArray("code 13 state -1 locale C\ncause 7014\n"));
    QCOMPARE(program.exitCode(), 13);
    device.stop();
    QVERIFY(device.announcement.isEmpty());
}

void TestLibraryProcess::programWithoutThreadsIsToldSo()
{
#ifdef __SANITIZE_THREAD__
    QSKIP("NOT TESTED: ThreadSanitizer starts a thread of its own first");
#endif
    QProcess program;
    program.setChildProcessModifier([] {
        // No thread can have a stack of this size, the C library's default.
        const rlimit limit{std::numeric_limits<size_t>::max() / 4 * 3, RLIM_INFINITY};
        setrlimit(RLIMIT_STACK, &limit);
    });
    program.start(QString::fromUtf8(VELNO_PLAIN_C_PROGRAM), {QString::number(freePort())});
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.readAllStandardOutput(), QByteArray("code 1 state -1 locale C\ncause 7008\n"));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 1);
}

void TestLibraryProcess::libraryShowsItsFunctionsAlone()
{
    QProcess nm;
    nm.start(QString::fromUtf8(VELNO_NM), {u"-D"_s, u"--defined-only"_s, QString::fromUtf8(VELNO_LIBRARY)});
    QVERIFY(nm.waitForFinished());
    const QStringList shown =
        TestSupport::matches(nm.readAllStandardOutput(), "^[0-9a-f]+ [^A\\n] ([^@\\n]+)");
    const QStringList declared = TestSupport::matches(
        TestSupport::fileText(VELNO_HEADER_FOLDER, "velnoext.h"), "^VELNOEXT_API [^(]*?(\\w+)\\(");
    const QStringList mapped =
        TestSupport::matches(TestSupport::fileText(VELNO_HEADER_FOLDER, "velnoext.map"), "^ +(\\w+);");
    QVERIFY(declared.contains(u"velnoext_initialize"_s));
    QCOMPARE(shown, declared);
    QCOMPARE(mapped, declared);
}

QTEST_GUILESS_MAIN(TestLibraryProcess)
#include "tst_library_process.moc"
