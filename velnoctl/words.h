#pragma once

#include <QByteArray>
#include <QStringList>

namespace VelnoCtl {

/**
 * The words of a line: separated by blanks, put together by 'quotes', "quotes" and a backslash as in a shell.
 * A word that begins with # begins a comment, which goes to the end of the line.
 *
 * @return false when a quote is not closed, the line ends with a backslash, holds a zero byte, or is no UTF-8
 */
bool splitWords(const QByteArray &line, QStringList *words);

} // namespace VelnoCtl
