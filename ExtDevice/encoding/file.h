// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

/** Whole files. Nothing is logged. */
namespace Velno {

/** Creates or truncates the file and writes the data; true when every byte was written. */
bool writeData(const QString &path, const QByteArray &data);

/** Reads the whole file; on false (no such file, unreadable, null pointer) the data is untouched. */
bool readData(const QString &path, QByteArray *data);

} // namespace Velno
