// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/file.h"

#include <QFile>

namespace Velno {

bool writeData(const QString &path, const QByteArray &data)
{
    // Unbuffered, so that a full disk shows in the count instead of being lost when the file is closed.
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(data) == data.size();
}

bool readData(const QString &path, QByteArray *data)
{
    QFile file(path);
    if (!data || !file.exists() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return false;
    *data = content;
    return true;
}

} // namespace Velno
