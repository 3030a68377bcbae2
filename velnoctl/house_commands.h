// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that speak to no register themselves. */
namespace VelnoCtl {

Answer explain(Session &session, const Arguments &arguments);
Answer help(Session &session, const Arguments &arguments);
Answer commands(Session &session, const Arguments &arguments);
Answer version(Session &session, const Arguments &arguments);
Answer quit(Session &session, const Arguments &arguments);

/** Runs the lines of standard input as they come, up to the first failure. */
Answer runInput(Session &session, const Arguments &arguments);

/**
 * Asks for commands on a terminal; a failure is told and the next command asked for. Without a terminal it is
 * runInput().
 */
Answer shell(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
