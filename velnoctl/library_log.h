// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringList>

namespace VelnoCtl {

/**
 * The lines with which the library tells what goes wrong in a pairing, or with the frame of an answer. They
 * are kept here, since a pairing that succeeds may have some, too. One per process.
 */
class LibraryLog
{
public:
    LibraryLog();
    ~LibraryLog();
    Q_DISABLE_COPY_MOVE(LibraryLog)

    /** The latest lines since the last time; not while a function of velnoext.h is under way. */
    QStringList take();

private:
    static void keep(const char *text, void *self);

    QStringList m_lines;
};

} // namespace VelnoCtl
