// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace VelnoCtl {

/** The library's words for a number. */
struct Words
{
    int number;
    QString name;
    QStringList lines; ///< the sentence, its cause and its cure, the latter two behind a word and a colon
};

/** The library's words for a failure: its result code and, unless they are 0, its cause and detail. */
class Explanation
{
public:
    /** Numbers from here on are causes, those below are result codes. */
    static constexpr int firstCause = 1000;

    Explanation(int code, int cause, int detail);

    /** Of a cause alone. */
    static Explanation ofCause(int cause) { return {0, cause, 0}; }

    /** The sentences with number and name, cause, cure and detail in a line each, all but the first indented.
     *  Of cause and cure the finest known. */
    QString forPeople() const;

    /** `code`, `result`, `sentence`, `cause`, `cure`, of a cause `causeCode`, `causeName` and `causeText` of
     *  three lines (alone when it is of a cause alone), of a detail `detail` and `detailText`. */
    QJsonObject asJson() const;

private:
    bool isOfCauseAlone() const { return m_result.number == 0 && m_cause.number != 0; }

    Words m_result;
    Words m_cause;
    int m_detail;
};

} // namespace VelnoCtl
