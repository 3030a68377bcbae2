// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/database.h"

#include <QStringList>

#include <span>

namespace Velno::Receipts {

/** What makes a file of the version before into one of this version; the first of a new file is 1. */
struct Migration
{
    int version;
    QStringList statements;
};

/** Every version that there has been, in order. What has been published does not change any more. */
std::span<const Migration> ledgerMigrations();

/** The condition of the index over orders that are not settled; a question has to use the same words. */
QString unsettledCondition();

/**
 * Tells what an opened database is, and changes nothing.
 *
 * @param version  its version; 0: it is new, and empty
 * @return empty, or in words why it is not to be used: no ledger, or of a later version than `migrations`
 * know
 */
QString judgeSchema(Database &database, std::span<const Migration> migrations, qint64 *version);

/** Brings it from its version to the last one. To be called in a transaction. */
bool migrate(Database &database, std::span<const Migration> migrations, qint64 version);

} // namespace Velno::Receipts
