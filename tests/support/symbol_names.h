// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

/** A library's headers and lists of symbols, as texts to be compared. */
namespace TestSupport {

/** What the first group of the pattern captures, everywhere in the text, sorted. */
inline QStringList matches(const QByteArray &text, const char *pattern)
{
    QStringList names;
    auto all = QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::MultilineOption)
                   .globalMatch(QString::fromUtf8(text));
    while (all.hasNext())
        names << all.next().captured(1);
    names.sort();
    return names;
}

/** A file in the folder of the header; empty when it cannot be read. */
inline QByteArray fileText(const char *folder, const char *name)
{
    QFile file(QString::fromUtf8(folder) + u'/' + QString::fromLatin1(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace TestSupport
