// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that make up a slip, which stays in the library until it is printed, and the reports. */
namespace VelnoCtl {

/** Remembers the encoding for the texts behind it. */
Answer encoding(Session &session, const Arguments &arguments);
Answer addText(Session &session, const Arguments &arguments);
Answer addJustified(Session &session, const Arguments &arguments);
Answer feed(Session &session, const Arguments &arguments);
Answer printSlip(Session &session, const Arguments &arguments);

Answer xReport(Session &session, const Arguments &arguments);
Answer zReport(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
