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
    return file.isFile() ? QString() : u"it is no file"_s;
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
