// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <sqlite3.h>

/** Runs statements on a database that nobody has open, as somebody would who meddles with it. */
inline bool runSql(const QByteArray &file, const QByteArray &statements)
{
    sqlite3 *database = nullptr;
    const bool ran = sqlite3_open(file.constData(), &database) == SQLITE_OK &&
                     sqlite3_exec(database, statements.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    return sqlite3_close(database) == SQLITE_OK && ran;
}
