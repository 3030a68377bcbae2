// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

#include <optional>

namespace Velno::Receipts {

/** One SQLite database through Qt's driver, with its errors in words. Lives on one thread at a time. */
class Database
{
public:
    Database();
    ~Database();
    Q_DISABLE_COPY_MOVE(Database)

    /** @param name  of the file, or a URI that says so by its "file:" */
    bool open(const QString &name);

    /** Runs one statement as it stands. */
    bool run(const QString &statement);

    /** The one number that a question has for an answer; nothing when it cannot be read. */
    std::optional<qint64> number(const QString &question);

    /** What failed last, in words that go on from "it cannot be used:". */
    const QString &problem() const { return m_problem; }
    bool isDiskError() const { return m_isDiskError; } ///< the disk has failed to read, write or flush

private:
    friend class Statement;
    bool fail(const QSqlError &error);

    QString m_connection;
    QSqlDatabase m_database;
    QString m_problem;
    bool m_isDiskError = false;
};

/** A statement of a database, which must outlive it; prepared when it is first run, and kept. */
class Statement
{
public:
    Statement(Database &database, const QString &text)
        : m_database(database)
        , m_text(text)
    {
    }

    /** Runs it with these values in the place of its question marks. What has rows holds the database until
     * finish(). The others below follow a run() that was true. */
    bool run(const QVariantList &values = {});

    /** Goes to the next row. @return false: there is none, or isBroken() */
    bool next();
    bool isBroken() const { return m_isBroken; } ///< next() could not be read; the database says why

    QVariant value(int column) const { return m_query->value(column); }
    int rowsChanged() const { return m_query->numRowsAffected(); }
    qint64 insertedRow() const { return m_query->lastInsertId().toLongLong(); }
    void finish() { m_query->finish(); }

private:
    bool prepare();

    Database &m_database;
    QString m_text;
    std::optional<QSqlQuery> m_query;
    bool m_isBroken = false;
};

} // namespace Velno::Receipts
