// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_file.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr QFile::Permissions ownersOnly = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions ofOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                        QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
constexpr qint64 leastSize = 100; // the header of a database

bool hasLog(const QString &path)
{
    return QFileInfo(path + u"-wal"_s).size() > 0;
}

} // namespace

QString ensureLedgerFile(const QString &path)
{
    if (path.isEmpty())
        return u"no file is named"_s;
    if (mknod(QFile::encodeName(path).constData(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0)
        return {};
    if (errno != EEXIST)
        return QString::fromStdString(std::generic_category().message(errno));
    const QFileInfo file(path);
    if (file.isSymbolicLink())
        return u"it is a symbolic link; name the file itself"_s;
    if (!file.isFile())
        return u"it is no file"_s;
    // SQLite would take a single byte for no file at all.
    if (file.size() > 0 && file.size() < leastSize)
        return u"it is no ledger"_s;
    // And it would throw away what lies beside an empty file.
    if (file.size() == 0 && hasLog(path))
        return u"it is damaged: it is empty, and %1-wal beside it is not"_s.arg(path);
    return {};
}

bool endsWithinPage(const QString &path, qint64 pageSize)
{
    return !hasLog(path) && QFileInfo(path).size() % pageSize != 0;
}

QString keepFromOthers(const QString &path)
{
    for (const QString &name : {path, path + u"-wal"_s, path + u"-journal"_s})
        if ((QFile::permissions(name) & ofOthers) != 0 && !QFile::setPermissions(name, ownersOnly))
            return u"others may read it, and it is not this user's to change that"_s;
    return {};
}

QString uriOf(const QString &path, const QString &vfs)
{
    const auto encoded = [](const QString &text) {
        return QString::fromLatin1(QUrl::toPercentEncoding(text, "/"));
    };
    // Two slashes more, so that none of the path's own is taken for the name of a computer.
    return (path.startsWith(u'/') ? u"file://%1?vfs=%2"_s : u"file:%1?vfs=%2"_s)
        .arg(encoded(path), encoded(vfs));
}

} // namespace Velno::Receipts
