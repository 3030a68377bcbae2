// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/values.h"

#include "translations/spoken.h"
#include "velnoext.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

QString stateName(int state)
{
    switch (state) {
    case VelnoEcrState_Idle:
        return Spoken::tr("idle");
    case VelnoEcrState_SaleOpen:
        return Spoken::tr("sale open");
    case VelnoEcrState_IdleOtherScreen:
        return Spoken::tr("idle, another screen");
    default:
        return Spoken::tr("unnamed");
    }
}

QString lira(long long kurus)
{
    constexpr unsigned long long perLira = 100;
    // The lowest number has no positive counterpart of its own type.
    const auto amount =
        kurus < 0 ? 0ULL - static_cast<unsigned long long>(kurus) : static_cast<unsigned long long>(kurus);
    return u"%1%2.%3 TL"_s.arg(kurus < 0 ? "-"_L1 : ""_L1)
        .arg(amount / perLira)
        .arg(amount % perLira, 2, 10, QChar(u'0'));
}

QString localTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

QString printable(const char *text)
{
    QString result = QString::fromUtf8(text);
    for (QChar &c : result) {
        if (!c.isPrint())
            c = u'?';
    }
    return result;
}

} // namespace VelnoCtl
