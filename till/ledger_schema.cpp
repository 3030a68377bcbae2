// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_schema.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qint64 applicationId = 0x564C4C47; // "VLLG" in the file's header

Migration first()
{
    return {
        1,
        {
            u"PRAGMA application_id = %1"_s.arg(applicationId),
            u"CREATE TABLE register (id INTEGER PRIMARY KEY CHECK (id = 1), serial TEXT NOT NULL,"
            " era INTEGER NOT NULL)"_s,
            // AUTOINCREMENT: the number of an order that was forgotten is never another one's.
            u"CREATE TABLE orders (number INTEGER PRIMARY KEY AUTOINCREMENT, key TEXT NOT NULL UNIQUE,"
            " kind INTEGER NOT NULL, content TEXT NOT NULL, accepted_at INTEGER NOT NULL,"
            " state INTEGER NOT NULL, question INTEGER NOT NULL, answer INTEGER NOT NULL,"
            " first INTEGER NOT NULL, second INTEGER NOT NULL, payment_sent INTEGER NOT NULL,"
            " is_sent INTEGER NOT NULL, z INTEGER NOT NULL, z_era INTEGER NOT NULL,"
            " to_pay INTEGER NOT NULL, tax INTEGER NOT NULL, cash INTEGER NOT NULL, card INTEGER NOT NULL,"
            " change INTEGER NOT NULL, lines INTEGER NOT NULL, paper INTEGER NOT NULL,"
            " slip_unsure INTEGER NOT NULL, give_back INTEGER NOT NULL, code INTEGER NOT NULL,"
            " cause INTEGER NOT NULL, changed_at INTEGER NOT NULL)"_s,
            u"CREATE INDEX unsettled ON orders (number) WHERE state NOT IN (2, 3, 4)"_s,
            u"CREATE INDEX z_numbers ON orders (z_era, z) WHERE z > 0"_s,
            u"CREATE TABLE history (order_number INTEGER, line INTEGER, time INTEGER NOT NULL,"
            " state INTEGER NOT NULL, code INTEGER NOT NULL, cause INTEGER NOT NULL, text TEXT NOT NULL,"
            " person TEXT NOT NULL, PRIMARY KEY (order_number, line)) WITHOUT ROWID"_s,
            u"CREATE TABLE attempts (era INTEGER, first INTEGER, second INTEGER,"
            " order_number INTEGER NOT NULL, fate INTEGER NOT NULL,"
            " PRIMARY KEY (era, first, second)) WITHOUT ROWID"_s,
            u"CREATE INDEX attempts_of_orders ON attempts (order_number)"_s,
            u"CREATE INDEX doubts ON attempts (era) WHERE fate = 3"_s,
        },
    };
}

/** For a list of more than two values SQLite makes a table of its own, each time a row is written. */
Migration second()
{
    return {
        2,
        {
            u"DROP INDEX unsettled"_s,
            u"CREATE INDEX unsettled ON orders (number) WHERE %1"_s.arg(unsettledCondition()),
        },
    };
}

} // namespace

std::span<const Migration> ledgerMigrations()
{
    static const std::array migrations{first(), second()};
    return migrations;
}

QString unsettledCondition()
{
    return u"state NOT BETWEEN 2 AND 4"_s; // closed, cancelled, refused
}

QString judgeSchema(Database &database, std::span<const Migration> migrations, qint64 *version)
{
    const auto id = database.number(u"PRAGMA application_id"_s);
    const auto found = id ? database.number(u"PRAGMA user_version"_s) : std::nullopt;
    if (!found)
        return database.problem();
    *version = *found;
    if (*id == applicationId && *found >= 1)
        return *found <= migrations.back().version
                   ? QString()
                   : u"a later version of this program has made it (%1; known is up to %2)"_s.arg(*found).arg(
                         migrations.back().version);
    const auto tables = database.number(u"SELECT count(*) FROM sqlite_master"_s);
    if (!tables)
        return database.problem();
    return *id == 0 && *found == 0 && *tables == 0 ? QString() : u"it is no ledger"_s;
}

bool migrate(Database &database, std::span<const Migration> migrations, qint64 version)
{
    for (const auto &[next, statements] : migrations) {
        if (next <= version)
            continue;
        for (const QString &statement : statements)
            if (!database.run(statement))
                return false;
        if (!database.run(u"PRAGMA user_version = %1"_s.arg(next)))
            return false;
    }
    return true;
}

} // namespace Velno::Receipts
