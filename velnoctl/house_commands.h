#pragma once

#include "velnoctl/commands.h"

/** The commands that speak to no register themselves. */
namespace VelnoCtl {

Answer explain(Session &session, const QStringList &arguments);
Answer help(Session &session, const QStringList &arguments);
Answer commands(Session &session, const QStringList &arguments);
Answer version(Session &session, const QStringList &arguments);
Answer quit(Session &session, const QStringList &arguments);

/** Runs the lines of standard input as they come, up to the first failure. */
Answer runInput(Session &session, const QStringList &arguments);

/**
 * Asks for commands on a terminal; a failure is told and the next command asked for. Without a terminal it is
 * runInput().
 */
Answer shell(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
