// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_log.h"

#include "ExtDevice/openssl_ptr.h"

#include <QCoreApplication>
#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Velno::GMP {

namespace {

constexpr int identitySize = 12;
constexpr char lineStart[] = "VELNO_KEYS ";

/** A descriptor that closes itself. */
class OpenFile
{
public:
    explicit OpenFile(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(OpenFile)

    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/** Of a call that has just failed. */
QString problem(const QString &path, const QString &reason = QString::fromLocal8Bit(std::strerror(errno)))
{
    return QCoreApplication::translate("Spoken", "keys cannot be logged to %1: %2").arg(path, reason);
}

/** Opens the file behind its end. Links are not followed: somebody else may have laid them. */
int openFile(const QString &path)
{
    constexpr mode_t ownersOnly = S_IRUSR | S_IWUSR;
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    return ::open(QFile::encodeName(path).constData(), flags, ownersOnly);
}

/** Why an open file is none for keys; empty when it is. */
QString fileProblem(const QString &path, const OpenFile &file)
{
    struct stat status
    {
    };
    if (file.descriptor() < 0 || ::fstat(file.descriptor(), &status) != 0)
        return problem(path);
    if (!S_ISREG(status.st_mode))
        return problem(path, QCoreApplication::translate("Spoken", "it is no regular file"));
    if (status.st_uid != ::geteuid())
        return problem(path, QCoreApplication::translate("Spoken", "it is somebody else's"));
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return problem(path,
                       QCoreApplication::translate("Spoken", "others may open it; its mode must be 0600"));
    return {};
}

void appendHex(QByteArray &line, const QByteArray &bytes)
{
    constexpr char digits[] = "0123456789ABCDEF";
    for (const char byte : bytes)
        line.append(digits[uchar(byte) >> 4]).append(digits[uchar(byte) & 0xF]);
}

/** The register's name as its frames carry it; empty when it would not stay within the line. */
QByteArray identityInFrames(const QByteArray &name)
{
    const QByteArray identity = name.leftJustified(identitySize, ' ', true);
    const bool printable = std::ranges::all_of(identity, [](char c) { return c >= ' ' && c <= '~'; });
    return printable ? identity : QByteArray();
}

} // namespace

QString keyLogProblem(const QString &path)
{
    const OpenFile file(openFile(path));
    return fileProblem(path, file);
}

QString appendToKeyLog(const QString &path, const MatchExt &keys)
{
    const QByteArray identity = identityInFrames(keys.registerData);
    if (identity.isEmpty())
        return problem(path, u"the register's name is not printable"_s);
    const OpenFile file(openFile(path));
    if (const QString unfit = fileProblem(path, file); !unfit.isEmpty())
        return unfit;
    QByteArray line;
    const auto wipe = qScopeGuard([&line] { cleanse(line); });
    line.reserve(256); // at once: what grows leaves copies of keys behind
    line.append(lineStart).append(identity);
    for (const QByteArray &part : {keys.randomDFC10D, keys.randomDFC10E, keys.aesKey, keys.hmacKey}) {
        line.append(' ');
        appendHex(line, part);
    }
    line.append('\n');
    // In one piece, so that lines of programs that share the file stay whole.
    const ssize_t written = ::write(file.descriptor(), line.constData(), size_t(line.size()));
    if (written == line.size())
        return {};
    return written < 0 ? problem(path) : problem(path, u"the disk is full"_s);
}

} // namespace Velno::GMP
