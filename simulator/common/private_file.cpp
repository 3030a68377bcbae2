// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/private_file.h"

namespace Simulator {

namespace {

constexpr QFile::Permissions ownersOnly = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions ofOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                        QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

} // namespace

bool createPrivate(QFile &file)
{
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly, ownersOnly);
}

bool isPrivate(const QString &path)
{
    return (QFile::permissions(path) & ofOthers) == 0;
}

bool makePrivate(const QString &path)
{
    return QFile::setPermissions(path, ownersOnly);
}

} // namespace Simulator
