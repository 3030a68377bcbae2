// SPDX-License-Identifier: Apache-2.0

#include "simulation/simulated_disk.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QUuid>

using namespace Simulation;
using namespace Qt::StringLiterals;

namespace {

/** A database on the disk, as a process has it open. */
class Books
{
public:
    explicit Books(const SimulatedDisk &disk, const QString &file = u"/books"_s)
        : m_name(disk.name() + file + QUuid::createUuid().toString())
        , m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name))
    {
        m_database.setDatabaseName(u"file:%1?vfs=%2"_s.arg(file, disk.name()));
        m_database.setConnectOptions(u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=0"_s);
        isOpen = m_database.open() && run(u"PRAGMA locking_mode = EXCLUSIVE"_s) &&
                 run(u"PRAGMA journal_mode = WAL"_s) && run(u"PRAGMA synchronous = FULL"_s) &&
                 run(u"CREATE TABLE IF NOT EXISTS sales (number INTEGER PRIMARY KEY, words TEXT)"_s);
    }
    ~Books()
    {
        m_database.close();
        m_database = {};
        QSqlDatabase::removeDatabase(m_name);
    }
    Q_DISABLE_COPY_MOVE(Books)

    bool run(const QString &statement) { return QSqlQuery(m_database).exec(statement); }

    bool add() { return run(u"INSERT INTO sales (words) VALUES ('%1')"_s.arg(QString(700, u'w'))); }

    int count()
    {
        QSqlQuery query(u"SELECT count(*) FROM sales"_s, m_database);
        return query.next() ? query.value(0).toInt() : -1;
    }

    bool isWhole()
    {
        QSqlQuery query(u"PRAGMA integrity_check"_s, m_database);
        return query.next() && query.value(0) == u"ok"_s;
    }

    bool isOpen = false;

private:
    QString m_name;
    QSqlDatabase m_database;
};

} // namespace

/** A disk that forgets what was not flushed, and what SQLite makes of it. */
class TestSimulatedDisk : public QObject
{
    Q_OBJECT

private slots:
    void whatIsWrittenIsRead();
    void fileWithoutAFlushLosesAnyOfIt();
    void flushedBytesStay();
    void oneProcessAtATime();
    void killedProcessKeepsWhatItWrote();
    void deadProcessChangesNothing();
    void cutKeepsWhatWasFlushed();
    void cutMayTakeWhatWasNot();
    void fullDiskTakesNothingMore();
    void failedFlushIsToldAndCounted();
    void sameSeedSameRemains();
};

void TestSimulatedDisk::whatIsWrittenIsRead()
{
    DiskFile file;
    file.write("receipt", 7, 3);
    QCOMPARE(file.size(), 10);
    char bytes[10];
    QCOMPARE(file.read(bytes, 10, 0), 10);
    QCOMPARE(QByteArray(bytes, 10), "\0\0\0receipt"_ba);
    QCOMPARE(file.read(bytes, 10, 8), 2);
    QCOMPARE(file.read(bytes, 10, 10), 0);
    file.truncate(20);
    QCOMPARE(file.size(), 10);
    file.truncate(4);
    QCOMPARE(file.size(), 4);
}

void TestSimulatedDisk::fileWithoutAFlushLosesAnyOfIt()
{
    int nothing = 0;
    int everything = 0;
    int parts = 0;
    for (quint64 seed = 0; seed < 100; ++seed) {
        DiskFile file;
        file.write(QByteArray(2048, 'a').constData(), 2048, 0);
        file.flush();
        file.write(QByteArray(2048, 'b').constData(), 2048, 0);
        Chance chance(seed);
        file.cutPower(chance);
        QByteArray left(2048, '\0');
        QCOMPARE(file.read(left.data(), 2048, 0), 2048);
        for (int at = 0; at < 2048; at += 512)
            QVERIFY(left.sliced(at, 512).count('b') % 512 == 0); // a sector is written whole or not
        const auto changed = left.count('b');
        nothing += changed == 0;
        everything += changed == 2048;
        parts += changed > 0 && changed < 2048;
    }
    QVERIFY(nothing > 10 && everything > 10 && parts > 10);
}

void TestSimulatedDisk::flushedBytesStay()
{
    for (quint64 seed = 0; seed < 50; ++seed) {
        DiskFile file;
        file.write("flushed", 7, 0);
        file.flush();
        file.truncate(3);
        file.write("more than there was", 19, 5);
        Chance chance(seed);
        file.cutPower(chance);
        char bytes[3];
        QCOMPARE(file.read(bytes, 3, 0), 3);
        QCOMPARE(QByteArray(bytes, 3), "flu"_ba);
    }
}

void TestSimulatedDisk::oneProcessAtATime()
{
    SimulatedDisk disk;
    Books first(disk);
    QVERIFY(first.isOpen);
    QVERIFY(!Books(disk).isOpen);
    QVERIFY(Books(disk, u"/others"_s).isOpen);
}

void TestSimulatedDisk::killedProcessKeepsWhatItWrote()
{
    SimulatedDisk disk;
    {
        Books books(disk);
        QVERIFY(books.run(u"PRAGMA synchronous = OFF"_s));
        QVERIFY(books.add() && books.add());
        QVERIFY(books.run(u"BEGIN"_s) && books.add());
        disk.endProcess();
    }
    disk.beginProcess();
    Books books(disk);
    QVERIFY(books.isOpen);
    QCOMPARE(books.count(), 2);
}

void TestSimulatedDisk::deadProcessChangesNothing()
{
    SimulatedDisk disk;
    int asked = 0;
    {
        Books books(disk);
        QVERIFY(books.add());
        disk.watch = [&](DiskWork) {
            ++asked;
            disk.endProcess();
            return true;
        };
        QVERIFY(!books.add());
        QVERIFY(!books.add());
        QVERIFY(!Books(disk, u"/others"_s).isOpen);
    }
    QCOMPARE(asked, 1);
    disk.watch = nullptr;
    disk.beginProcess();
    QCOMPARE(Books(disk).count(), 1);
}

void TestSimulatedDisk::cutKeepsWhatWasFlushed()
{
    for (quint64 seed = 0; seed < 60; ++seed) {
        SimulatedDisk disk;
        Chance chance(seed);
        int left = chance.from(1, 40);
        {
            Books books(disk);
            while (left-- > 0)
                QVERIFY(books.add());
            left = books.count();
            int work = chance.from(1, 8);
            disk.watch = [&](DiskWork) {
                if (--work == 0)
                    disk.cutPower(chance);
                return true;
            };
            while (work > 0)
                left += books.add();
            disk.watch = nullptr;
        }
        disk.beginProcess();
        Books books(disk);
        QVERIFY(books.isOpen && books.isWhole());
        // The one that was being written may be there or not.
        QVERIFY(books.count() == left || books.count() == left + 1);
    }
}

void TestSimulatedDisk::cutMayTakeWhatWasNot()
{
    int lost = 0;
    for (quint64 seed = 0; seed < 20; ++seed) {
        SimulatedDisk disk;
        Chance chance(seed);
        {
            Books books(disk);
            QVERIFY(books.add());
            QVERIFY(books.run(u"PRAGMA synchronous = NORMAL"_s));
            QVERIFY(books.add());
            disk.cutPower(chance);
        }
        disk.beginProcess();
        Books books(disk);
        QVERIFY(books.isOpen && books.isWhole());
        QVERIFY(books.count() == 1 || books.count() == 2);
        lost += books.count() == 1;
    }
    QVERIFY(lost > 0 && lost < 20);
}

void TestSimulatedDisk::fullDiskTakesNothingMore()
{
    SimulatedDisk disk;
    Books books(disk);
    QVERIFY(books.add());
    disk.setFull(true);
    QVERIFY(!books.add());
    QCOMPARE(books.count(), 1);
    disk.setFull(false);
    QVERIFY(books.add());
    QCOMPARE(books.count(), 2);
}

void TestSimulatedDisk::failedFlushIsToldAndCounted()
{
    SimulatedDisk disk;
    Books books(disk);
    const qint64 before = disk.flushes();
    QVERIFY(books.add());
    QCOMPARE(disk.flushes(), before + 1);
    disk.watch = [](DiskWork work) { return work != DiskWork::Flush; };
    QVERIFY(!books.add());
    QCOMPARE(disk.flushes(), before + 1);
    disk.watch = nullptr;
    QVERIFY(books.add());
    QVERIFY(books.isWhole());
}

void TestSimulatedDisk::sameSeedSameRemains()
{
    QByteArray before;
    for (int run = 0; run < 2; ++run) {
        DiskFile file;
        file.write(QByteArray(8192, 'x').constData(), 8192, 0);
        Chance chance(3); // any one that leaves something
        file.cutPower(chance);
        QByteArray left(8192, '\0');
        left.resize(qsizetype(file.read(left.data(), left.size(), 0)));
        if (run == 1)
            QCOMPARE(left, before);
        before = left;
    }
}

QTEST_GUILESS_MAIN(TestSimulatedDisk)

#include "tst_simulated_disk.moc"
