// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/paper.h"

#include "simulator/fiscal/money.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace Simulator {

QString centred(const QString &text)
{
    return QString((paperWidth - qMin<qsizetype>(paperWidth, text.size())) / 2, u' ') + text.left(paperWidth);
}

QString twoSided(const QString &left, const QString &right)
{
    const QString kept = right.left(paperWidth);
    const qsizetype room = qMax<qsizetype>(0, paperWidth - kept.size() - 1);
    return left.left(room).leftJustified(paperWidth - kept.size()) + kept;
}

QString withAmount(const QString &left, qint64 amount)
{
    return twoSided(left, u'*' + moneyText(amount));
}

QString rule()
{
    return QString(paperWidth, u'-');
}

QStringList wrapped(const QString &text, int width)
{
    QStringList lines;
    QStringView rest = text;
    while (rest.size() > width) {
        const qsizetype space = rest.first(width + 1).lastIndexOf(u' ');
        const qsizetype end = space > 0 ? space : width;
        lines << rest.first(end).toString();
        rest = rest.sliced(space > 0 ? end + 1 : end);
    }
    return lines << rest.toString();
}

QString dateText(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).toString(u"dd.MM.yyyy"_s);
}

QString timeText(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).toString(u"HH:mm"_s);
}

} // namespace Simulator
