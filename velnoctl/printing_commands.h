#pragma once

#include "velnoctl/commands.h"

/** The commands that make up a slip, which stays in the library until it is printed, and the reports. */
namespace VelnoCtl {

/** Remembers the encoding for the texts behind it. */
Answer encoding(Session &session, const QStringList &arguments);
Answer addText(Session &session, const QStringList &arguments);
Answer addJustified(Session &session, const QStringList &arguments);
Answer feed(Session &session, const QStringList &arguments);
Answer printSlip(Session &session, const QStringList &arguments);

Answer xReport(Session &session, const QStringList &arguments);
Answer zReport(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
