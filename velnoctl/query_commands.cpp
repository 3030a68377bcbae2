// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/query_commands.h"

#include "translations/spoken.h"
#include "velnoctl/answers.h"
#include "velnoctl/arguments.h"
#include "velnoctl/session.h"
#include "velnoctl/values.h"
#include "velnoext.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int mostAcquirers = 16'384; // more than an answer can hold

/** A date and time, which registers tell in seconds since 1970. */
Answer instant(int code, const QString &words, int seconds)
{
    return answer(code, u"%1 %2 (%3)"_s.arg(words, localTime(seconds)).arg(seconds),
                  {{u"seconds"_s, seconds}, {u"local"_s, localTime(seconds)}});
}

using ListQuery = int (*)(unsigned int timeout, int *list, int *count);

Answer numbers(Session &session, ListQuery query)
{
    QList<int> list(mostAcquirers);
    int count = mostAcquirers;
    const int code = session.device().command(query, list.data(), &count);
    list.resize(code == 0 ? count : 0);
    QJsonArray values;
    QStringList words;
    for (const int number : list) {
        values << number;
        words << QString::number(number);
    }
    return answer(code,
                  list.isEmpty() ? Spoken::tr("no acquirers")
                                 : Spoken::tr("acquirers %1").arg(words.join(", "_L1)),
                  {{u"acquirers"_s, values}});
}

} // namespace

Answer login(Session &session, const Arguments &)
{
    return answer(session.device().command(velnoext_login), Spoken::tr("logged in"));
}

Answer logout(Session &session, const Arguments &)
{
    return answer(session.device().command(velnoext_logout), Spoken::tr("logged out"));
}

Answer forget(Session &session, const Arguments &)
{
    return answer(session.device().forget(), Spoken::tr("keys forgotten"));
}

Answer state(Session &session, const Arguments &)
{
    int number = 0;
    const int code = session.device().command(velnoext_ecr_state, &number);
    const QString name = stateName(number);
    return answer(code, Spoken::tr("state %1 (%2)").arg(number).arg(name),
                  {{u"state"_s, number}, {u"name"_s, name}});
}

Answer currentZ(Session &session, const Arguments &)
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

Answer lastZ(Session &session, const Arguments &)
{
    int seconds = 0;
    const int code = session.device().command(velnoext_last_z_datetime, &seconds);
    if (code == 0 && seconds == 0)
        return answer(code, Spoken::tr("last Z never"), {{u"seconds"_s, 0}, {u"local"_s, QJsonValue::Null}});
    return instant(code, Spoken::tr("last Z"), seconds);
}

Answer dateTime(Session &session, const Arguments &)
{
    int seconds = 0;
    const int code = session.device().command(velnoext_ecr_datetime, &seconds);
    return instant(code, Spoken::tr("clock"), seconds);
}

Answer saleLimit(Session &session, const Arguments &)
{
    long long kurus = 0;
    const int code = session.device().command(velnoext_sale_limit, &kurus);
    return answer(code, Spoken::tr("sale limit %1").arg(lira(kurus)), {{u"kurus"_s, qint64(kurus)}});
}

Answer paper(Session &session, const Arguments &)
{
    return answer(session.device().command(velnoext_check_printer_paper), Spoken::tr("paper present"),
                  {{u"paper"_s, true}});
}

Answer serialNumber(Session &session, const Arguments &)
{
    char buffer[32] = {}; // the library writes at most 17 bytes, not always a zero behind the last
    const int code = session.device().ask(velnoext_ecr_serialno, buffer);
    const QString serial = printable(buffer);
    return answer(code, Spoken::tr("serial number %1").arg(serial), {{u"serial"_s, serial}});
}

Answer section(Session &session, const Arguments &arguments)
{
    VelnoSaleItem item{};
    item.section = arguments.value(Kinds::section);
    const int code = session.device().command(velnoext_section_data, &item);
    const QString name = printable(item.name);
    const int number = item.quantity;
    // All at once: a name may well hold a %1, the rate of its tax.
    return answer(code,
                  Spoken::tr("section %1 \"%2\", number %3")
                      .arg(QString::number(item.section), name, QString::number(number)),
                  {{u"section"_s, item.section}, {u"name"_s, name}, {u"number"_s, number}});
}

Answer acquirers(Session &session, const Arguments &)
{
    return numbers(session, velnoext_active_acquirers);
}

Answer saleAcquirers(Session &session, const Arguments &)
{
    return numbers(session, velnoext_acquirers_of_sale);
}

} // namespace VelnoCtl
