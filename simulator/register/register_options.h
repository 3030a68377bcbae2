// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/command_line.h"
#include "simulator/common/control_address.h"
#include "simulator/register/faults.h"
#include "simulator/register/model_settings.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace Simulator {

/** What velno-register was asked to be. */
struct RegisterOptions
{
    QByteArray serial; ///< 12 characters
    QString host;      ///< of the other side, or of the relay
    quint16 port = 0;
    QString credentials;
    QByteArray appHash; ///< 32 bytes, or empty: any application
    bool throughRelay = false;
    QList<ModelSetting> settings; ///< what the register is to be at first
    bool paper = true;
    QString journal;                       ///< a file; empty: in memory
    QString keyLog;                        ///< a file for the keys of pairings; empty: nowhere
    QString receipts;                      ///< a folder for what is printed; empty: nowhere
    bool showReceipts = false;             ///< on standard error
    std::optional<ControlAddress> control; ///< where lines are taken beside standard input
    bool json = false;
    bool once = false;
    Faults faults;
};

using CommandLine = ParsedCommandLine<RegisterOptions>;

/** @param arguments  with the program's name in front */
CommandLine parseCommandLine(const QStringList &arguments);

} // namespace Simulator
