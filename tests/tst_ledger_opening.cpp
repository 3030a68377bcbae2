// SPDX-License-Identifier: Apache-2.0

#include "tests/support/ends_with_test.h"
#include "tests/support/open_ledger.h"
#include "till/ledger_schema.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace TestSupport;

/** Which files a ledger opens, whose they are then, and which it leaves alone. */
class TestLedgerOpening : public QObject
{
    Q_OBJECT

private slots:
    void foreignFilesAreRefusedAndStay_data();
    void foreignFilesAreRefusedAndStay();
    void whatIsNoPlaceForAFileIsSaid_data();
    void whatIsNoPlaceForAFileIsSaid();
    void aLinkIsNotFollowed();
    void anotherRegistersLedgerIsRefused();
    void anUnfinishedLedgerIsFinished();
    void earlierVersionsAreMigrated();
    void theFirstVersionIsTakenOver();
    void migrationsAreWholeOrNotThere();
    void whatIsLeftToDoIsKnown();
    void itIsItsOwnersAlone();
    void whatOthersMayReadIsTakenFromThem();
    void whatCannotBeTakenFromOthersIsRefused();
    void itHasOneUserInAProcess();
    void itHasOneUserOnTheComputer();
    void aKilledUserIsNotInTheWay();

private:
    LedgerPlace newPlace() { return {m_folder.filePath(QString::number(++m_files)), "UB1234567890", {}}; }

    QTemporaryDir m_folder{folderInMemory()};
    int m_files = 0;
};

namespace {

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

mode_t modeOf(const QString &path)
{
    struct stat found
    {
    };
    return stat(QFile::encodeName(path).constData(), &found) == 0 ? found.st_mode & 0777 : 0;
}

bool run(const QString &file, const QStringList &statements)
{
    Database database;
    return database.open(file) && std::all_of(statements.begin(), statements.end(),
                                              [&](const QString &text) { return database.run(text); });
}

/** This program once more, which has a ledger open until its standard input ends. */
class Holder
{
public:
    explicit Holder(const LedgerPlace &place)
    {
        m_process.setChildProcessModifier(endsWithTest());
        m_process.start(QCoreApplication::applicationFilePath(), {u"--hold"_s, place.file});
        m_process.waitForReadyRead();
        says = QString::fromUtf8(m_process.readLine()).trimmed();
    }
    ~Holder() { end(); }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    int end()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
        return m_process.exitCode();
    }

    QString says;

private:
    QProcess m_process;
};

int hold(const QString &file)
{
    OpenLedger ledger({file, "UB1234567890", {}});
    if (ledger.trouble.isEmpty())
        ledger.add(u"held"_s);
    std::puts(ledger.trouble.isEmpty() ? "open" : qPrintable(ledger.trouble));
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return ledger.trouble.isEmpty() ? 0 : 1;
}

const QString inUse = u"it is in use by another program"_s;

} // namespace

void TestLedgerOpening::foreignFilesAreRefusedAndStay_data()
{
    QTest::addColumn<QStringList>("statements"); // empty: no database
    QTest::addColumn<QString>("words");

    QTest::newRow("a text") << QStringList() << u"it is no ledger"_s;
    QTest::newRow("another database") << QStringList{u"CREATE TABLE mine (a)"_s} << u"it is no ledger"_s;
    QTest::newRow("one that bears its number")
        << QStringList{u"PRAGMA application_id = 7"_s} << u"it is no ledger"_s;
    QTest::newRow("one that bears a version")
        << QStringList{u"PRAGMA user_version = 1"_s} << u"it is no ledger"_s;
    QTest::newRow("a later version")
        << QStringList{u"PRAGMA application_id = 1447840839"_s, u"PRAGMA user_version = 3"_s}
        << u"a later version of this program has made it (3; known is up to 2)"_s;
    QTest::newRow("a ledger that is empty")
        << QStringList{u"PRAGMA application_id = 1447840839"_s, u"PRAGMA user_version = 1"_s}
        << u"it is damaged"_s;
}

void TestLedgerOpening::foreignFilesAreRefusedAndStay()
{
    QFETCH(const QStringList, statements);
    QFETCH(const QString, words);
    const LedgerPlace place = newPlace();
    if (statements.isEmpty())
        QVERIFY(write(place.file, QByteArray("no database ").repeated(100)));
    else
        QVERIFY(run(place.file, statements));
    QVERIFY(QFile::setPermissions(place.file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    const QByteArray before = bytesOf(place.file);
    const QString trouble = OpenLedger(place).trouble;
    QVERIFY2(trouble.startsWith(u"the ledger %1 cannot be used: %2"_s.arg(place.file, words)),
             qPrintable(trouble));
    QCOMPARE(bytesOf(place.file), before);
    QCOMPARE(modeOf(place.file), mode_t(0604));
    QVERIFY(!QFile::exists(place.file + u"-wal"_s));
}

void TestLedgerOpening::whatIsNoPlaceForAFileIsSaid_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("words");
    QTest::newRow("a folder") << m_folder.path() << u"it is no file"_s;
    QTest::newRow("in no folder") << m_folder.filePath(u"no/such"_s) << u"No such file or directory"_s;
    QTest::newRow("a device") << u"/dev/null"_s << u"it is no file"_s;
    QTest::newRow("nothing") << QString() << u"no file is named"_s;
}

void TestLedgerOpening::whatIsNoPlaceForAFileIsSaid()
{
    QFETCH(const QString, path);
    QFETCH(const QString, words);
    QCOMPARE(OpenLedger({path, "UB1234567890", {}}).trouble,
             u"the ledger %1 cannot be used: %2"_s.arg(path, words));
}

void TestLedgerOpening::aLinkIsNotFollowed()
{
    const LedgerPlace place = newPlace();
    const LedgerPlace link = newPlace();
    QVERIFY(QFile::link(place.file, link.file));
    QVERIFY(OpenLedger(link).trouble.contains(u"it is a symbolic link"_s));
    QVERIFY(!QFile::exists(place.file));
    QCOMPARE(OpenLedger(place).trouble, QString());
    QVERIFY(OpenLedger(link).trouble.contains(u"it is a symbolic link"_s));
}

void TestLedgerOpening::anotherRegistersLedgerIsRefused()
{
    LedgerPlace place = newPlace();
    OpenLedger(place).add(u"key"_s);
    const QByteArray before = bytesOf(place.file);
    place.serial = "UB1234567891";
    QVERIFY(OpenLedger(place).trouble.endsWith(u"it belongs to the register UB1234567890"_s));
    QCOMPARE(bytesOf(place.file), before);
    place.serial = "UB1234567890";
    QVERIFY(OpenLedger(place).find(u"key"_s));
}

/** As a process leaves it that is killed while it makes one. */
void TestLedgerOpening::anUnfinishedLedgerIsFinished()
{
    for (const QStringList &statements :
         {QStringList(), QStringList{u"PRAGMA journal_mode = WAL"_s}, QStringList{u"VACUUM"_s}}) {
        const LedgerPlace place = newPlace();
        QVERIFY(run(place.file, statements));
        QCOMPARE(OpenLedger(place).trouble, QString());
        QCOMPARE(OpenLedger(place).add(u"key"_s).number, 1);
    }
}

void TestLedgerOpening::earlierVersionsAreMigrated()
{
    const LedgerPlace place = newPlace();
    OpenLedger(place).add(u"key"_s);
    const std::array migrations{Migration{2, {}},
                                Migration{3, {u"ALTER TABLE orders ADD COLUMN cashier TEXT"_s}},
                                Migration{4, {u"UPDATE orders SET cashier = 'Ali' || number"_s}}};
    qint64 version = 0;
    {
        Database database;
        QVERIFY(database.open(place.file));
        QCOMPARE(judgeSchema(database, migrations, &version), QString());
        QCOMPARE(version, 2);
        QVERIFY(migrate(database, migrations, version));
        QCOMPARE(judgeSchema(database, migrations, &version), QString());
        QCOMPARE(version, 4);
        QVERIFY(migrate(database, migrations, version)); // nothing more
        QCOMPARE(database.number(u"SELECT count(*) FROM orders WHERE key = 'key' AND cashier = 'Ali1'"_s), 1);
    }
    QVERIFY(OpenLedger(place).trouble.contains(u"a later version of this program has made it (4;"_s));
}

/** A ledger as version 0.2.0 has made it. */
void TestLedgerOpening::theFirstVersionIsTakenOver()
{
    const LedgerPlace place = newPlace();
    {
        Database database;
        QVERIFY(database.open(place.file));
        QVERIFY(migrate(database, ledgerMigrations().first(1), 0));
        QVERIFY(database.run(u"INSERT INTO register VALUES (1, 'UB1234567890', 3)"_s));
        for (int state = 0; state <= int(State::NeedsPerson); ++state)
            QVERIFY(database.run(u"INSERT INTO orders VALUES (%1, 'key%1', 0, '{}', 7, %2, 0, 0, 0, 0, 0, 0,"
                                 " 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7)"_s.arg(state + 1)
                                     .arg(state)));
    }
    {
        OpenLedger ledger(place);
        QCOMPARE(ledger.trouble, QString());
        QCOMPARE(ledger.era(), 3);
        QCOMPARE(ledger.find(u"key3"_s)->state, State::Closed);
        QVERIFY(ledger.put(ledger.next().value_or(Order()), State::Refused));
        QCOMPARE(ledger.list({State::Accepted, State::Open, State::Waiting}).size(), 2);
        QCOMPARE(ledger.add(u"new"_s).number, 8);
        QCOMPARE(ledger.problem(), QString());
    }
    Database database;
    QVERIFY(database.open(place.file));
    QCOMPARE(database.number(u"PRAGMA user_version"_s), ledgerMigrations().back().version);
}

void TestLedgerOpening::migrationsAreWholeOrNotThere()
{
    const LedgerPlace place = newPlace();
    QVERIFY(run(place.file, {}));
    const std::array migrations{ledgerMigrations().front(), Migration{2, {u"UPDATE nobody SET a = 1"_s}}};
    Database database;
    QVERIFY(database.open(place.file));
    QVERIFY(database.run(u"BEGIN"_s));
    QVERIFY(!migrate(database, migrations, 0));
    QCOMPARE(database.problem(), u"it is damaged (no such table: nobody)"_s);
    QVERIFY(database.run(u"ROLLBACK"_s));
    qint64 version = 7;
    QCOMPARE(judgeSchema(database, migrations, &version), QString());
    QCOMPARE(version, 0);
}

void TestLedgerOpening::whatIsLeftToDoIsKnown()
{
    const LedgerPlace place = newPlace();
    QVERIFY(!OpenLedger(place).hasUnsettled());
    const Order order = OpenLedger(place).add(u"key"_s);
    for (int state = 0; state <= int(State::NeedsPerson); ++state) {
        QVERIFY(OpenLedger(place).put(order, State(state)));
        QCOMPARE(OpenLedger(place).hasUnsettled(), !isSettled(State(state)));
    }
}

void TestLedgerOpening::itIsItsOwnersAlone()
{
    const mode_t before = umask(0);
    const LedgerPlace place = newPlace();
    OpenLedger ledger(place);
    ledger.add(u"key"_s);
    umask(before);
    QCOMPARE(modeOf(place.file), mode_t(0600));
    QCOMPARE(modeOf(place.file + u"-wal"_s), mode_t(0600));
    QVERIFY(!QFile::exists(place.file + u"-shm"_s));
}

void TestLedgerOpening::whatOthersMayReadIsTakenFromThem()
{
    const LedgerPlace place = newPlace();
    OpenLedger(place).add(u"key"_s);
    QCOMPARE(chmod(QFile::encodeName(place.file).constData(), 0664), 0);
    OpenLedger ledger(place);
    QCOMPARE(ledger.trouble, QString());
    ledger.add(u"another key"_s);
    QCOMPARE(modeOf(place.file), mode_t(0600));
    QCOMPARE(modeOf(place.file + u"-wal"_s), mode_t(0600));
}

void TestLedgerOpening::whatCannotBeTakenFromOthersIsRefused()
{
    constexpr uid_t nobody = 65534;
    if (geteuid() != 0)
        QSKIP("takes root, which can become somebody else");
    const LedgerPlace place = newPlace();
    OpenLedger(place).add(u"key"_s);
    QCOMPARE(chmod(QFile::encodeName(place.file).constData(), 0666), 0);
    QCOMPARE(chmod(QFile::encodeName(m_folder.path()).constData(), 0777), 0);
    QCOMPARE(seteuid(nobody), 0);
    const QString trouble = OpenLedger(place).trouble;
    QCOMPARE(seteuid(0), 0);
    QVERIFY2(trouble.endsWith(u"others may read it, and it is not this user's to change that"_s),
             qPrintable(trouble));
    QVERIFY(OpenLedger(place).find(u"key"_s));
}

void TestLedgerOpening::itHasOneUserInAProcess()
{
    const LedgerPlace place = newPlace();
    {
        OpenLedger first(place);
        for (int i = 0; i < 3; ++i)
            QVERIFY(OpenLedger(place).trouble.endsWith(inUse));
        QVERIFY(Holder(place).says.endsWith(inUse)); // the refused ones have not let go of the lock
        QCOMPARE(first.add(u"key"_s).number, 1);
    }
    QCOMPARE(OpenLedger(place).trouble, QString());
}

void TestLedgerOpening::itHasOneUserOnTheComputer()
{
    const LedgerPlace place = newPlace();
    Holder holder(place);
    QCOMPARE(holder.says, u"open"_s);
    QVERIFY(OpenLedger(place).trouble.endsWith(inUse));
    QVERIFY(Holder(place).says.endsWith(inUse));
    QCOMPARE(holder.end(), 0);
    QVERIFY(OpenLedger(place).find(u"held"_s));
}

void TestLedgerOpening::aKilledUserIsNotInTheWay()
{
    const LedgerPlace place = newPlace();
    Holder holder(place);
    QCOMPARE(holder.says, u"open"_s);
    holder.kill();
    OpenLedger ledger(place);
    QCOMPARE(ledger.trouble, QString());
    QVERIFY(ledger.find(u"held"_s));
    QCOMPARE(ledger.add(u"key"_s).number, 2);
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == u"--hold"_s)
        return hold(arguments.at(2));
    TestLedgerOpening test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ledger_opening.moc"
