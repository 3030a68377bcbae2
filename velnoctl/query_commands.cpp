#include "velnoctl/query_commands.h"

#include "velnoctl/session.h"
#include "velnoctl/values.h"
#include "velnoext.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** A result; a failure keeps its words and values for itself. */
Answer answer(int code, const QString &text, const QJsonObject &values = {})
{
    if (code == 0)
        return {0, text, values};
    return {code, {}, {}, velnoext_error_detail()};
}

using NumberQuery = int (*)(unsigned int timeout, int *value);

/** A date and time, which registers tell in seconds since 1970. */
Answer instant(Session &session, NumberQuery query, const QString &words)
{
    int seconds = 0;
    const int code = session.device().command(query, &seconds);
    return answer(code, u"%1 %2 (%3)"_s.arg(words, localTime(seconds)).arg(seconds),
                  {{u"seconds"_s, seconds}, {u"local"_s, localTime(seconds)}});
}

} // namespace

Answer login(Session &session, const QStringList &)
{
    return answer(session.device().command(velnoext_login), u"logged in"_s);
}

Answer logout(Session &session, const QStringList &)
{
    return answer(session.device().command(velnoext_logout), u"logged out"_s);
}

Answer state(Session &session, const QStringList &)
{
    int number = 0;
    const int code = session.device().command(velnoext_ecr_state, &number);
    const QString name = stateName(number);
    return answer(code, u"state %1 (%2)"_s.arg(number).arg(name), {{u"state"_s, number}, {u"name"_s, name}});
}

Answer currentZ(Session &session, const QStringList &)
{
    constexpr int none = -1;
    int z = none;
    const int code = session.device().command(velnoext_current_z, &z);
    Answer result = answer(code, u"Z %1"_s.arg(z), {{u"z"_s, z}});
    if (code != 0 && z != none) { // it tells the number also when it refuses
        result.text = u"Z %1"_s.arg(z);
        result.values.insert(u"z"_s, z);
    }
    return result;
}

Answer lastZ(Session &session, const QStringList &)
{
    return instant(session, velnoext_last_z_datetime, u"last Z"_s);
}

Answer dateTime(Session &session, const QStringList &)
{
    return instant(session, velnoext_ecr_datetime, u"clock"_s);
}

Answer saleLimit(Session &session, const QStringList &)
{
    long long kurus = 0;
    const int code = session.device().command(velnoext_sale_limit, &kurus);
    return answer(code, u"sale limit %1"_s.arg(lira(kurus)), {{u"kurus"_s, qint64(kurus)}});
}

Answer paper(Session &session, const QStringList &)
{
    return answer(session.device().command(velnoext_check_printer_paper), u"paper present"_s,
                  {{u"paper"_s, true}});
}

Answer serialNumber(Session &session, const QStringList &)
{
    char buffer[32] = {}; // the library writes at most 17 bytes, not always a zero behind the last
    const int code = session.device().ask(velnoext_ecr_serialno, buffer);
    const QString serial = printable(buffer);
    return answer(code, u"serial number %1"_s.arg(serial), {{u"serial"_s, serial}});
}

} // namespace VelnoCtl
