// SPDX-License-Identifier: Apache-2.0

#include "till/database.h"

#include <QSqlError>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

/** SQLite's result codes, without what it adds to them. */
enum Primary {
    Busy = 5,
    Locked = 6,
    NoMemory = 7,
    ReadOnly = 8,
    InputOutput = 10,
    Corrupt = 11,
    Full = 13,
    CannotOpen = 14,
    Constraint = 19,
    NoDatabase = 26,
};

int primaryCode(const QSqlError &error)
{
    return error.nativeErrorCode().toInt() & 0xFF;
}

QString inWords(const QSqlError &error)
{
    switch (primaryCode(error)) {
    case Busy:
    case Locked:
        return u"it is in use by another program"_s;
    case NoMemory:
        return u"there is no memory left"_s;
    case ReadOnly:
        return u"it must not be written"_s;
    case InputOutput:
        return u"the disk fails (%1)"_s.arg(error.databaseText());
    case Corrupt:
        return u"it is damaged"_s;
    case Full:
        return u"the disk is full"_s;
    case CannotOpen:
        return u"it, or what belongs beside it, cannot be opened"_s;
    case Constraint:
        return u"that is on record already"_s;
    case NoDatabase:
        return u"it is no ledger"_s;
    default:
        return u"it is damaged (%1)"_s.arg(error.databaseText());
    }
}

constexpr int mostPlaces = 32; // of values in one statement

const QStringList &places()
{
    static const QStringList names = [] {
        QStringList list;
        for (int i = 0; i < mostPlaces; ++i)
            list << u":v%1"_s.arg(i);
        return list;
    }();
    return names;
}

/** A statement whose question marks have become names: for a place without one Qt makes up a name each time a
 * value is put there, which costs more than all the rest of it. */
QString named(const QString &text)
{
    QString whole;
    qsizetype from = 0;
    for (const QString &place : places()) {
        const qsizetype at = text.indexOf(u'?', from);
        if (at < 0)
            break;
        whole += QStringView(text).sliced(from, at - from);
        whole += place;
        from = at + 1;
    }
    return whole.isEmpty() ? text : whole + text.sliced(from);
}

} // namespace

Database::Database()
    : m_connection(u"velno-ledger-%1"_s.arg(quintptr(this)))
{
}

Database::~Database()
{
    m_database = {};
    QSqlDatabase::removeDatabase(m_connection);
}

bool Database::open(const QString &name)
{
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    if (!m_database.isValid()) {
        m_problem = u"Qt's driver for SQLite is not installed"_s;
        return false;
    }
    m_database.setDatabaseName(name);
    m_database.setConnectOptions(u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=0"_s);
    return m_database.open() || fail(m_database.lastError());
}

bool Database::run(const QString &statement)
{
    QSqlQuery query(m_database);
    return query.exec(statement) || fail(query.lastError());
}

std::optional<qint64> Database::number(const QString &question)
{
    Statement statement(*this, question);
    if (!statement.run() || !statement.next())
        return std::nullopt;
    return statement.value(0).toLongLong();
}

/** Always false, for those who fail by it. */
bool Database::fail(const QSqlError &error)
{
    m_problem = inWords(error);
    m_isDiskError = primaryCode(error) == InputOutput;
    return false;
}

bool Statement::run(const QVariantList &values)
{
    m_isBroken = false;
    if (!m_query && !prepare())
        return false;
    for (int i = 0; i < values.size(); ++i)
        m_query->bindValue(places().at(i), values.at(i));
    return m_query->exec() || m_database.fail(m_query->lastError());
}

bool Statement::prepare()
{
    QSqlQuery query(m_database.m_database);
    query.setForwardOnly(true);
    if (!query.prepare(named(m_text)))
        return m_database.fail(query.lastError());
    m_query = query;
    return true;
}

bool Statement::next()
{
    if (m_query->next())
        return true;
    m_isBroken = m_query->lastError().isValid();
    return m_isBroken && m_database.fail(m_query->lastError());
}

} // namespace Velno::Receipts
