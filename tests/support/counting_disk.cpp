// SPDX-License-Identifier: Apache-2.0

#include "tests/support/counting_disk.h"

#include <new>

namespace TestSupport {

/** Lies in the memory that SQLite gives to an open file, before that of the computer's file system. */
struct CountingDisk::File
{
    sqlite3_file base;
    CountingDisk *disk;
    sqlite3_file *real;
};

namespace {

/** @return false: there are none left. One of them is taken otherwise. */
bool take(int &left)
{
    if (left > 0)
        --left;
    else if (left == 0)
        return false;
    return true;
}

} // namespace

struct CountingDisk::Calls
{
    static File *of(sqlite3_file *file) { return reinterpret_cast<File *>(file); }
    static sqlite3_file *real(sqlite3_file *file) { return of(file)->real; }
    static const sqlite3_io_methods &methods(sqlite3_file *file) { return *real(file)->pMethods; }

    static int open(sqlite3_vfs *vfs, const char *name, sqlite3_file *place, int flags, int *flagsOut);

    static int close(sqlite3_file *file) { return methods(file).xClose(real(file)); }
    static int read(sqlite3_file *file, void *bytes, int count, sqlite3_int64 from)
    {
        return methods(file).xRead(real(file), bytes, count, from);
    }
    static int write(sqlite3_file *file, const void *bytes, int count, sqlite3_int64 to)
    {
        return take(of(file)->disk->writesLeft) ? methods(file).xWrite(real(file), bytes, count, to)
                                                : SQLITE_FULL;
    }
    static int truncate(sqlite3_file *file, sqlite3_int64 size)
    {
        return methods(file).xTruncate(real(file), size);
    }
    static int flush(sqlite3_file *file, int flags)
    {
        ++of(file)->disk->flushes;
        return take(of(file)->disk->flushesLeft) ? methods(file).xSync(real(file), flags)
                                                 : SQLITE_IOERR_FSYNC;
    }
    static int size(sqlite3_file *file, sqlite3_int64 *size)
    {
        return methods(file).xFileSize(real(file), size);
    }
    static int lock(sqlite3_file *file, int level) { return methods(file).xLock(real(file), level); }
    static int unlock(sqlite3_file *file, int level) { return methods(file).xUnlock(real(file), level); }
    static int isLocked(sqlite3_file *file, int *locked)
    {
        return methods(file).xCheckReservedLock(real(file), locked);
    }
    static int control(sqlite3_file *file, int what, void *argument)
    {
        return methods(file).xFileControl(real(file), what, argument);
    }
    static int sectorSize(sqlite3_file *file) { return methods(file).xSectorSize(real(file)); }
    static int features(sqlite3_file *file) { return methods(file).xDeviceCharacteristics(real(file)); }
};

int CountingDisk::Calls::open(sqlite3_vfs *vfs, const char *name, sqlite3_file *place, int flags,
                              int *flagsOut)
{
    static const sqlite3_io_methods calls{1,       close,   read,     write,   truncate,   flush,    size,
                                          lock,    unlock,  isLocked, control, sectorSize, features, nullptr,
                                          nullptr, nullptr, nullptr,  nullptr, nullptr};
    auto *file = new (place) File{{nullptr}, static_cast<CountingDisk *>(vfs->pAppData), nullptr};
    file->real = reinterpret_cast<sqlite3_file *>(file + 1);
    sqlite3_vfs *computers = sqlite3_vfs_find(nullptr);
    const int outcome = computers->xOpen(computers, name, file->real, flags, flagsOut);
    if (file->real->pMethods) // then SQLite closes it, also when that has failed
        file->base.pMethods = &calls;
    return outcome;
}

CountingDisk::CountingDisk()
    : m_name(QByteArray("counting-") + QByteArray::number(quintptr(this)))
    , m_vfs(*sqlite3_vfs_find(nullptr))
{
    m_vfs.iVersion = 1;
    m_vfs.szOsFile += int(sizeof(File));
    m_vfs.zName = m_name.constData();
    m_vfs.pAppData = this;
    m_vfs.xOpen = Calls::open;
    sqlite3_vfs_register(&m_vfs, 0);
}

} // namespace TestSupport
