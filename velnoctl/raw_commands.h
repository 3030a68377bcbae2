// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that pass bytes as they are, for the applications that may. */
namespace VelnoCtl {

Answer sendRaw(Session &session, const Arguments &arguments);
Answer getRaw(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
