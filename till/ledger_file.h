// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/** The file of a ledger: what was sold, and to whom, is its owner's business alone. */
namespace Velno::Receipts {

/**
 * Makes an empty file of mode 0600 when there is none. It is not opened for that: closing it again would let
 * go of the locks that this process has on it already.
 *
 * @return empty, or in words why no ledger can be there: a symbolic link, for one, since what lies beside the
 * file it points to would not be found beside the link
 */
QString ensureLedgerFile(const QString &path);

/** Whether the file ends within a page. SQLite would read the rest of that as zeros; only with a log beside
 * it is it about to write it anew. */
bool endsWithinPage(const QString &path, qint64 pageSize);

/** Takes the file, and what SQLite lays beside it, away from others. @return empty, or in words why not */
QString keepFromOthers(const QString &path);

/** As SQLite wants a file named that is not on the computer's own file system. */
QString uriOf(const QString &path, const QString &vfs);

} // namespace Velno::Receipts
