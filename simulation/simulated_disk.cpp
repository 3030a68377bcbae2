// SPDX-License-Identifier: Apache-2.0

#include "simulation/simulated_disk.h"

#include <atomic>
#include <cstring>
#include <iterator>
#include <new>
#include <sqlite3.h>

namespace Simulation {

namespace {

constexpr int longestPath = 512;

std::atomic<int> disks = 0; ///< that there have been: each has a name of its own

} // namespace

struct SimulatedDisk::File : DiskFile
{
    const Opened *holder = nullptr; ///< who has a lock on it
    qint64 holderLife = 0;          ///< a lock of the dead is none
};

/** A file as a process has it open. SQLite makes room for it. */
struct SimulatedDisk::Opened : sqlite3_file
{
    SimulatedDisk *disk = nullptr;
    std::shared_ptr<File> file;
    qint64 life = 0;

    bool isAlive() const { return disk->m_isRunning && life == disk->m_life; }
    bool mayWork(DiskWork work) const { return isAlive() && disk->isAllowed(work) && isAlive(); }
    bool holdsLock() const { return file->holder == this; }
};

/** What SQLite calls. */
struct SimulatedDisk::Calls
{
    static SimulatedDisk &diskOf(sqlite3_vfs *vfs) { return *static_cast<SimulatedDisk *>(vfs->pAppData); }
    static Opened &openedOf(sqlite3_file *file) { return *static_cast<Opened *>(file); }

    static int open(sqlite3_vfs *vfs, const char *path, sqlite3_file *file, int flags, int *flagsOut);
    static int remove(sqlite3_vfs *vfs, const char *path, int flush);
    static int access(sqlite3_vfs *vfs, const char *path, int flags, int *answer);
    static int fullPath(sqlite3_vfs *vfs, const char *path, int size, char *out);
    static int random(sqlite3_vfs *vfs, int size, char *out);
    static int sleep(sqlite3_vfs *vfs, int microseconds);
    static int time(sqlite3_vfs *vfs, double *day);
    static int lastError(sqlite3_vfs *, int, char *) { return 0; }

    static int close(sqlite3_file *file);
    static int read(sqlite3_file *file, void *data, int size, sqlite3_int64 offset);
    static int write(sqlite3_file *file, const void *data, int size, sqlite3_int64 offset);
    static int truncate(sqlite3_file *file, sqlite3_int64 size);
    static int flush(sqlite3_file *file, int flags);
    static int size(sqlite3_file *file, sqlite3_int64 *size);
    static int lock(sqlite3_file *file, int level);
    static int unlock(sqlite3_file *file, int level);
    static int isReserved(sqlite3_file *file, int *answer);
    static int control(sqlite3_file *, int, void *) { return SQLITE_NOTFOUND; }
    static int sectorSize(sqlite3_file *) { return 512; }
    /** As SQLite takes any disk of today: a write changes nothing beside it. */
    static int traits(sqlite3_file *) { return SQLITE_IOCAP_POWERSAFE_OVERWRITE; }

    static const sqlite3_io_methods methods;
};

const sqlite3_io_methods SimulatedDisk::Calls::methods = {
    1,        &close,      &read,   &write,  &truncate, &flush,  &size,   &lock,   &unlock, &isReserved,
    &control, &sectorSize, &traits, nullptr, nullptr,   nullptr, nullptr, nullptr, nullptr};

int SimulatedDisk::Calls::open(sqlite3_vfs *vfs, const char *path, sqlite3_file *file, int flags,
                               int *flagsOut)
{
    file->pMethods = nullptr; // then SQLite does not close what could not be opened
    SimulatedDisk &disk = diskOf(vfs);
    if (!disk.m_isRunning)
        return SQLITE_CANTOPEN;
    std::shared_ptr<File> found;
    if (!path) { // one that nobody else sees
        found = std::make_shared<File>();
    } else if (const auto entry = disk.m_files.find(path); entry != disk.m_files.end()) {
        found = entry->second;
    } else if ((flags & SQLITE_OPEN_CREATE) != 0) {
        found = disk.m_files.emplace(path, std::make_shared<File>()).first->second;
    } else {
        return SQLITE_CANTOPEN;
    }
    auto *const opened = new (file) Opened;
    opened->pMethods = &methods;
    opened->disk = &disk;
    opened->file = std::move(found);
    opened->life = disk.m_life;
    if (flagsOut)
        *flagsOut = flags;
    return SQLITE_OK;
}

int SimulatedDisk::Calls::remove(sqlite3_vfs *vfs, const char *path, int)
{
    SimulatedDisk &disk = diskOf(vfs);
    if (!disk.m_isRunning)
        return SQLITE_IOERR_DELETE;
    auto node = disk.m_files.extract(path);
    if (node.empty())
        return SQLITE_IOERR_DELETE_NOENT;
    if (node.mapped()->isKept())
        disk.m_removed.insert_or_assign(node.key(), node.mapped());
    return SQLITE_OK;
}

int SimulatedDisk::Calls::access(sqlite3_vfs *vfs, const char *path, int, int *answer)
{
    *answer = diskOf(vfs).m_files.contains(path);
    return SQLITE_OK;
}

int SimulatedDisk::Calls::fullPath(sqlite3_vfs *, const char *path, int size, char *out)
{
    const size_t length = std::strlen(path);
    if (length >= size_t(size))
        return SQLITE_CANTOPEN;
    std::memcpy(out, path, length + 1);
    return SQLITE_OK;
}

int SimulatedDisk::Calls::random(sqlite3_vfs *, int size, char *out)
{
    std::memset(out, 0, size_t(size)); // SQLite asks its first file system for them, not this one
    return size;
}

int SimulatedDisk::Calls::sleep(sqlite3_vfs *, int microseconds)
{
    return microseconds; // nobody else is at work meanwhile
}

int SimulatedDisk::Calls::time(sqlite3_vfs *, double *day)
{
    *day = 2'460'000.5; // of no importance to what is stored
    return SQLITE_OK;
}

int SimulatedDisk::Calls::close(sqlite3_file *file)
{
    Opened &opened = openedOf(file);
    if (opened.holdsLock())
        opened.file->holder = nullptr;
    opened.~Opened();
    return SQLITE_OK;
}

int SimulatedDisk::Calls::read(sqlite3_file *file, void *data, int size, sqlite3_int64 offset)
{
    const Opened &opened = openedOf(file);
    if (!opened.isAlive())
        return SQLITE_IOERR_READ;
    const qint64 count = opened.file->read(static_cast<char *>(data), size, offset);
    if (count == size)
        return SQLITE_OK;
    std::memset(static_cast<char *>(data) + count, 0, size_t(size - count));
    return SQLITE_IOERR_SHORT_READ;
}

int SimulatedDisk::Calls::write(sqlite3_file *file, const void *data, int size, sqlite3_int64 offset)
{
    const Opened &opened = openedOf(file);
    if (!opened.mayWork(DiskWork::Write))
        return SQLITE_IOERR_WRITE;
    if (opened.disk->m_full && offset + size > opened.file->size())
        return SQLITE_FULL;
    opened.file->write(static_cast<const char *>(data), size, offset);
    return SQLITE_OK;
}

int SimulatedDisk::Calls::truncate(sqlite3_file *file, sqlite3_int64 size)
{
    const Opened &opened = openedOf(file);
    if (!opened.mayWork(DiskWork::Write))
        return SQLITE_IOERR_TRUNCATE;
    opened.file->truncate(size);
    return SQLITE_OK;
}

int SimulatedDisk::Calls::flush(sqlite3_file *file, int)
{
    const Opened &opened = openedOf(file);
    if (!opened.mayWork(DiskWork::Flush))
        return SQLITE_IOERR_FSYNC;
    opened.file->flush();
    opened.disk->m_removed.clear();
    ++opened.disk->m_flushes;
    return SQLITE_OK;
}

int SimulatedDisk::Calls::size(sqlite3_file *file, sqlite3_int64 *size)
{
    *size = openedOf(file).file->size();
    return openedOf(file).isAlive() ? SQLITE_OK : SQLITE_IOERR_FSTAT;
}

int SimulatedDisk::Calls::lock(sqlite3_file *file, int)
{
    const Opened &opened = openedOf(file);
    if (!opened.isAlive())
        return SQLITE_IOERR_LOCK;
    File &shared = *opened.file;
    if (shared.holder && shared.holder != &opened && shared.holderLife == opened.life)
        return SQLITE_BUSY;
    shared.holder = &opened;
    shared.holderLife = opened.life;
    return SQLITE_OK;
}

int SimulatedDisk::Calls::unlock(sqlite3_file *file, int level)
{
    const Opened &opened = openedOf(file);
    if (level == SQLITE_LOCK_NONE && opened.holdsLock())
        opened.file->holder = nullptr;
    return SQLITE_OK;
}

int SimulatedDisk::Calls::isReserved(sqlite3_file *file, int *answer)
{
    const Opened &opened = openedOf(file);
    *answer = opened.file->holder && !opened.holdsLock() && opened.file->holderLife == opened.life;
    return SQLITE_OK;
}

SimulatedDisk::SimulatedDisk()
    : m_name("simulated-disk-" + QByteArray::number(++disks))
    , m_vfs(std::make_unique<sqlite3_vfs>())
{
    m_vfs->iVersion = 1;
    m_vfs->szOsFile = int(sizeof(Opened));
    m_vfs->mxPathname = longestPath;
    m_vfs->zName = m_name.constData();
    m_vfs->pAppData = this;
    m_vfs->xOpen = &Calls::open;
    m_vfs->xDelete = &Calls::remove;
    m_vfs->xAccess = &Calls::access;
    m_vfs->xFullPathname = &Calls::fullPath;
    m_vfs->xRandomness = &Calls::random;
    m_vfs->xSleep = &Calls::sleep;
    m_vfs->xCurrentTime = &Calls::time;
    m_vfs->xGetLastError = &Calls::lastError;
    sqlite3_vfs_register(m_vfs.get(), 0);
}

SimulatedDisk::~SimulatedDisk()
{
    sqlite3_vfs_unregister(m_vfs.get());
}

void SimulatedDisk::beginProcess()
{
    ++m_life;
    m_isRunning = true;
}

void SimulatedDisk::cutPower(Chance &chance)
{
    endProcess();
    for (auto &[path, file] : m_removed)
        if (chance.in100(50))
            m_files.emplace(path, file); // unless there is a new one of this name
    m_removed.clear();
    for (auto entry = m_files.begin(); entry != m_files.end();) {
        entry->second->cutPower(chance);
        const bool stays = entry->second->isKept() || chance.in100(50);
        entry = stays ? std::next(entry) : m_files.erase(entry);
    }
}

} // namespace Simulation
