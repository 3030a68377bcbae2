#pragma once

#include "velnoctl/commands.h"

/** The commands that log in and out and read the register, one function of velnoext.h each. */
namespace VelnoCtl {

Answer login(Session &session, const QStringList &arguments);
Answer logout(Session &session, const QStringList &arguments);
Answer forget(Session &session, const QStringList &arguments);
Answer state(Session &session, const QStringList &arguments);
Answer currentZ(Session &session, const QStringList &arguments);
Answer lastZ(Session &session, const QStringList &arguments);
Answer dateTime(Session &session, const QStringList &arguments);
Answer saleLimit(Session &session, const QStringList &arguments);
Answer paper(Session &session, const QStringList &arguments);
Answer serialNumber(Session &session, const QStringList &arguments);
Answer section(Session &session, const QStringList &arguments);
Answer acquirers(Session &session, const QStringList &arguments);
Answer saleAcquirers(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
