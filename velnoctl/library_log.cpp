// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/library_log.h"

#include "translations/spoken.h"
#include "velnoext.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qsizetype mostLines = 20; // a register can cause one after the other

} // namespace

LibraryLog::LibraryLog()
{
    velnoext_set_log(keep, this);
}

LibraryLog::~LibraryLog()
{
    velnoext_set_log(nullptr, nullptr);
}

QStringList LibraryLog::take()
{
    return std::exchange(m_lines, {});
}

void LibraryLog::keep(const char *text, void *self)
{
    QStringList &lines = static_cast<LibraryLog *>(self)->m_lines;
    if (lines.size() == mostLines)
        lines.removeFirst();
    lines << Spoken::tr("Log: ") + QString::fromUtf8(text);
}

} // namespace VelnoCtl
