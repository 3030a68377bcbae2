// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_file.h"
#include "till/ledger_inside.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

QString Ledger::open(const LedgerPlace &place)
{
    const QMutexLocker lock(&m_mutex);
    m_inside = std::make_unique<Inside>();
    m_atHand.reset();
    m_notes.clear();
    m_durability.reset();
    m_isLogSuspect = false;
    m_broken.clear();
    const QString problem = connect(place);
    if (problem.isEmpty())
        return {};
    m_inside.reset();
    m_broken = u"it is not open"_s;
    return u"the ledger %1 cannot be used: %2"_s.arg(place.file, problem);
}

QString Ledger::connect(const LedgerPlace &place)
{
    const bool isOfComputer = place.vfs.isEmpty();
    if (const QString problem = isOfComputer ? ensureLedgerFile(place.file) : QString(); !problem.isEmpty())
        return problem;
    const QString name =
        isOfComputer ? QFileInfo(place.file).absoluteFilePath() : uriOf(place.file, place.vfs);
    // Of a new file: an order fills a small page, and what is written and summed is whole pages. And locked
    // before anything else is asked: SQLite then needs no memory that it shares with other processes, and a
    // second one is refused here.
    Database &database = m_inside->database;
    if (!database.open(name) || !database.run(u"PRAGMA page_size = 1024"_s) ||
        !database.run(u"PRAGMA locking_mode = EXCLUSIVE"_s) || !database.run(u"BEGIN EXCLUSIVE"_s))
        return database.problem();
    return takeOver(place);
}

/** Of a file that is locked, and in a transaction. Nothing of it changes, not even who may read it, before it
 * is known to be this register's ledger. */
QString Ledger::takeOver(const LedgerPlace &place)
{
    Database &database = m_inside->database;
    const bool isOfComputer = place.vfs.isEmpty();
    qint64 version = 0;
    if (const QString problem = judgeSchema(database, ledgerMigrations(), &version); !problem.isEmpty())
        return problem;
    if (isOfComputer && endsWithinPage(place.file, database.number(u"PRAGMA page_size"_s).value_or(1)))
        return u"it is damaged: its end is missing"_s;
    if (const QString problem = version > 0 ? readRegister(place.serial) : QString(); !problem.isEmpty())
        return problem;
    if (!m_inside->commit.run())
        return database.problem();
    if (const QString problem = isOfComputer ? keepFromOthers(place.file) : QString(); !problem.isEmpty())
        return problem;
    const bool isNew = version < ledgerMigrations().back().version;
    bool isGood = keepLog();
    if (isGood && isNew) {
        if (!create(place.serial, version))
            return database.problem();
        isGood = keepLog(); // a disk that failed meanwhile may have made SQLite do without the log
    }
    if (!isGood)
        return database.problem().isEmpty() ? u"its log cannot be written"_s : database.problem();
    return readStanding(&m_standing) ? QString() : m_broken;
}

/** What is written goes to a log first: a flush of that is one of a single file. What a process before this
 * one has written may not be on the disk, if it was killed before the flush: nobody may act upon it before it
 * is. */
bool Ledger::keepLog()
{
    Statement statement(m_inside->database, u"PRAGMA journal_mode = WAL"_s);
    // Another mode is no error to SQLite; and what it tells is on the disk at the end of the statement alone.
    const bool isTold = statement.run() && statement.next() && statement.value(0).toString() == u"wal";
    const bool isKept = isTold && !statement.next() && !statement.isBroken();
    if (isTold)
        statement.finish();
    return isKept && foldLog();
}

/** All that counts goes to the database itself, flushed, and the log begins anew. */
bool Ledger::foldLog()
{
    Statement statement(m_inside->database, u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    if (!statement.run() || !statement.next())
        return false;
    const bool isDone = statement.value(0).toInt() == 0;
    const bool isThere = statement.value(1).toInt() >= 0; // -1: SQLite does without, whatever it has told
    statement.finish();
    return isDone && isThere;
}

QString Ledger::readRegister(const QByteArray &serial)
{
    Statement statement(m_inside->database, u"SELECT serial, era FROM register"_s);
    if (!statement.run())
        return m_inside->database.problem();
    if (!statement.next())
        return statement.isBroken() ? m_inside->database.problem() : u"it is damaged"_s;
    const QString its = statement.value(0).toString();
    bool isNumber = false;
    m_era = statement.value(1).toInt(&isNumber);
    if (!isNumber || m_era < 1)
        return u"it is damaged"_s;
    if (its != QString::fromLatin1(serial))
        return u"it belongs to the register %1"_s.arg(its);
    return {};
}

/** Makes a new ledger, or one of an earlier version into one of today. */
bool Ledger::create(const QByteArray &serial, qint64 version)
{
    m_era = version > 0 ? m_era : 1;
    Statement owner(m_inside->database, u"INSERT INTO register (id, serial, era) VALUES (1, ?, ?)"_s);
    return change(Durability::Flushed, [&] {
        return migrate(m_inside->database, ledgerMigrations(), version) &&
               (version > 0 || owner.run({QString::fromLatin1(serial), m_era}));
    });
}

} // namespace Velno::Receipts
