// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/explanation.h"

#include "translations/spoken.h"
#include "velnoext.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

Words words(int number, const char *name, const char *text)
{
    return {number, QString::fromUtf8(name), QString::fromUtf8(text).split(u'\n')};
}

QString sentence(const Words &words, const QString &kind)
{
    return u"%1 (%2 %3, %4)"_s.arg(words.lines.value(0), kind, QString::number(words.number), words.name);
}

/** A line without the word that leads it in the library's language. */
QString withoutLead(const QString &line)
{
    return line.section(u": "_s, 1);
}

} // namespace

Explanation::Explanation(int code, int cause, int detail)
    : m_result(words(code, velnoext_result_name(code), velnoext_result_text(code)))
    , m_cause(words(cause, velnoext_cause_name(cause), velnoext_cause_text(cause)))
    , m_detail(detail)
{
}

QString Explanation::forPeople() const
{
    QStringList lines;
    if (!isOfCauseAlone())
        lines << sentence(m_result, Spoken::tr("code"));
    if (m_cause.number != 0)
        lines << sentence(m_cause, Spoken::tr("cause"));
    const Words &finest = m_cause.number != 0 ? m_cause : m_result;
    lines << finest.lines.sliced(1);
    if (m_detail != 0)
        lines << Spoken::tr("Detail 0x%1: %2")
                     .arg(QString::number(uint(m_detail), 16).toUpper(),
                          QString::fromUtf8(velnoext_detail_text(m_detail)));
    return lines.join("\n  "_L1);
}

QJsonObject Explanation::asJson() const
{
    QJsonObject object;
    if (!isOfCauseAlone())
        object = {{u"code"_s, m_result.number},
                  {u"result"_s, m_result.name},
                  {u"sentence"_s, m_result.lines.value(0)},
                  {u"cause"_s, withoutLead(m_result.lines.value(1))},
                  {u"cure"_s, withoutLead(m_result.lines.value(2))}};
    if (m_cause.number != 0) {
        object.insert(u"causeCode"_s, m_cause.number);
        object.insert(u"causeName"_s, m_cause.name);
        object.insert(u"causeText"_s, m_cause.lines.join(u'\n'));
    }
    if (m_detail != 0) {
        object.insert(u"detail"_s, m_detail);
        object.insert(u"detailText"_s, QString::fromUtf8(velnoext_detail_text(m_detail)));
    }
    return object;
}

} // namespace VelnoCtl
