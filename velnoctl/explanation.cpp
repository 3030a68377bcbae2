#include "velnoctl/explanation.h"

#include "velnoext.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** A line of the result's text without the word that leads it. */
QString line(const QString &text, int number, QLatin1StringView lead)
{
    const QString whole = text.section(u'\n', number, number);
    return whole.startsWith(lead) ? whole.sliced(lead.size()) : whole;
}

} // namespace

Explanation::Explanation(int theCode, int theDetail)
    : code(theCode)
    , detail(theDetail)
    , name(QString::fromUtf8(velnoext_result_name(theCode)))
{
    const QString text = QString::fromUtf8(velnoext_result_text(theCode));
    sentence = line(text, 0, {});
    cause = line(text, 1, "Cause: "_L1);
    cure = line(text, 2, "Cure: "_L1);
    if (theDetail != 0)
        detailText = QString::fromUtf8(velnoext_detail_text(theDetail));
}

QString Explanation::forPeople() const
{
    QString text =
        u"%1 (code %2, %3)\n  Cause: %4\n  Cure: %5"_s.arg(sentence).arg(code).arg(name, cause, cure);
    if (detail != 0)
        text += u"\n  Detail 0x%1: %2"_s.arg(QString::number(uint(detail), 16).toUpper(), detailText);
    return text;
}

QJsonObject Explanation::asJson() const
{
    QJsonObject object{{u"code"_s, code},
                       {u"result"_s, name},
                       {u"sentence"_s, sentence},
                       {u"cause"_s, cause},
                       {u"cure"_s, cure}};
    if (detail != 0) {
        object.insert(u"detail"_s, detail);
        object.insert(u"detailText"_s, detailText);
    }
    return object;
}

} // namespace VelnoCtl
