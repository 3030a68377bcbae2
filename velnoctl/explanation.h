#pragma once

#include <QJsonObject>
#include <QString>

namespace VelnoCtl {

/** The library's words for a code and, unless it is 0, a detail. */
struct Explanation
{
    Explanation(int code, int detail);

    /** The sentence with code and name, cause, cure and detail in a line each, all but the first indented. */
    QString forPeople() const;

    /** `code`, `result`, `sentence`, `cause`, `cure`, and with a detail `detail` and `detailText`. */
    QJsonObject asJson() const;

    int code;
    int detail;
    QString name;
    QString sentence;
    QString cause;
    QString cure;
    QString detailText;
};

} // namespace VelnoCtl
