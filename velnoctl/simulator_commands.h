// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that speak to a simulated register or relay behind the application's back. */
namespace VelnoCtl {

Answer fault(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
