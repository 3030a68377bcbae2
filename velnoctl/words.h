// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QStringList>

namespace VelnoCtl {

/**
 * The words of a line: separated by blanks, put together by 'quotes', "quotes" and a backslash as in a shell.
 * A word that begins with # begins a comment, which goes to the end of the line.
 *
 * @return what is wrong with the line, and at which byte of it, counted from 1; or nothing. A comment may
 * hold anything.
 */
QString splitWords(const QByteArray &line, QStringList *words);

} // namespace VelnoCtl
