// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that log in and out and read the register, one function of velnoext.h each. */
namespace VelnoCtl {

Answer login(Session &session, const Arguments &arguments);
Answer logout(Session &session, const Arguments &arguments);
Answer forget(Session &session, const Arguments &arguments);
Answer state(Session &session, const Arguments &arguments);
Answer currentZ(Session &session, const Arguments &arguments);
Answer lastZ(Session &session, const Arguments &arguments);
Answer dateTime(Session &session, const Arguments &arguments);
Answer saleLimit(Session &session, const Arguments &arguments);
Answer paper(Session &session, const Arguments &arguments);
Answer serialNumber(Session &session, const Arguments &arguments);
Answer section(Session &session, const Arguments &arguments);
Answer acquirers(Session &session, const Arguments &arguments);
Answer saleAcquirers(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
