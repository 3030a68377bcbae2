// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/nearest.h"

#include "translations/spoken.h"

#include <QList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qsizetype mostNames = 3; // more would be a list again

/** How many letters must be replaced, added, left out or swapped with their neighbour. */
qsizetype distance(const QString &from, const QString &to)
{
    QList<qsizetype> beforeLast;
    QList<qsizetype> last;
    QList<qsizetype> row;
    for (qsizetype j = 0; j <= to.size(); ++j)
        row << j;
    for (qsizetype i = 1; i <= from.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = i;
        for (qsizetype j = 1; j <= to.size(); ++j) {
            const bool isSame = from.at(i - 1) == to.at(j - 1);
            row[j] = std::min({last.at(j) + 1, row.at(j - 1) + 1, last.at(j - 1) + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && from.at(i - 1) == to.at(j - 2) && from.at(i - 2) == to.at(j - 1))
                row[j] = qMin(row.at(j), beforeLast.at(j - 2) + 1);
        }
    }
    return row.last();
}

QStringList nearest(const QString &word, const QStringList &names)
{
    qsizetype least = 1 + word.size() / 4; // more letters leave room for more mistakes
    QStringList found;
    for (const QString &name : names) {
        if (qAbs(name.size() - word.size()) > least)
            continue;
        const qsizetype wrong = distance(word, name);
        if (wrong > least || wrong >= qMin(word.size(), name.size()))
            continue; // with no letter right it would be a guess
        if (wrong < least)
            found.clear();
        least = wrong;
        found << name;
    }
    return found;
}

QStringList beginningWith(const QString &word, const QStringList &names)
{
    QStringList found;
    for (const QString &name : names) {
        if (!word.isEmpty() && name.startsWith(word))
            found << name;
    }
    return found;
}

} // namespace

QString didYouMean(const QString &word, const QStringList &names)
{
    QStringList found = beginningWith(word.toLower(), names);
    if (found.isEmpty() || found.size() > mostNames)
        found = nearest(word.toLower(), names);
    if (found.isEmpty() || found.size() > mostNames)
        return {};
    return Spoken::tr("; did you mean \"%1\"?").arg(found.join(Spoken::tr("\" or \"")));
}

} // namespace VelnoCtl
