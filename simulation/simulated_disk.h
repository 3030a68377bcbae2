// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/disk_file.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <string>

struct sqlite3_vfs;

namespace Simulation {

enum class DiskWork { Write, Flush };

/**
 * A disk in memory that SQLite writes to as to a file system of its own. It knows what was written and what
 * of it was flushed, so that a process can be killed on it, and the power of its computer be cut. Whoever has
 * files open then is dead: all that he does afterwards fails and changes nothing. The next process begins
 * when he has closed them.
 *
 * One opener of a file holds its lock at a time; the dead hold none. There is no shared memory: a database in
 * WAL mode has to be used under an exclusive lock.
 */
class SimulatedDisk
{
public:
    SimulatedDisk();
    ~SimulatedDisk(); ///< no file may be open any more
    Q_DISABLE_COPY_MOVE(SimulatedDisk)

    /** The file system's name for SQLite. */
    QString name() const { return QString::fromLatin1(m_name); }

    /** Is told of all that is about to be written or flushed, and may do what the functions below do.
     * @return false: it fails, and is not done */
    std::function<bool(DiskWork work)> watch;

    /** A process may use it, as at the beginning. */
    void beginProcess();

    /** The process ends, and what it has open is dead. What it wrote stays. */
    void endProcess() { m_isRunning = false; }

    /** The computer's power is cut, and the process ends: what was flushed stays, and of the rest what chance
     * leaves of it. */
    void cutPower(Chance &chance);

    /** While it is full no file grows. */
    void setFull(bool full) { m_full = full; }

    qint64 flushes() const { return m_flushes; }

private:
    struct File;
    struct Opened;
    struct Calls;

    bool isAllowed(DiskWork work) const { return !watch || watch(work); }

    QByteArray m_name;
    std::unique_ptr<sqlite3_vfs> m_vfs;
    std::map<std::string, std::shared_ptr<File>, std::less<>> m_files;
    /** They may come back until something is flushed. */
    std::map<std::string, std::shared_ptr<File>, std::less<>> m_removed;
    qint64 m_life = 0; ///< number of the process that may use it
    bool m_isRunning = true;
    qint64 m_flushes = 0;
    bool m_full = false;
};

} // namespace Simulation
