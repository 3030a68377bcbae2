// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <sqlite3.h>

namespace TestSupport {

/**
 * The computer's file system, as SQLite sees it, which counts what is written and flushed, and fails when it
 * is told to. It offers no shared memory. No database may be open on it when it goes.
 */
class CountingDisk
{
public:
    CountingDisk();
    ~CountingDisk() { sqlite3_vfs_unregister(&m_vfs); }
    Q_DISABLE_COPY_MOVE(CountingDisk)

    QString name() const { return QString::fromLatin1(m_name); } ///< among SQLite's file systems

    int flushes = 0;
    int writesLeft = -1;  ///< behind these the disk is full; -1: never
    int flushesLeft = -1; ///< behind these a flush fails; -1: never

private:
    struct File;
    struct Calls;

    QByteArray m_name;
    sqlite3_vfs m_vfs;
};

} // namespace TestSupport
