#pragma once

#include "velnoctl/commands.h"

/** The commands that pass bytes as they are, for the applications that may. */
namespace VelnoCtl {

Answer sendRaw(Session &session, const QStringList &arguments);
Answer getRaw(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
