// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/command_line.h"
#include "simulator/common/control_address.h"
#include "simulator/fiscal/receipt_writer.h"
#include "simulator/register/faults.h"
#include "simulator/register/model_settings.h"
#include "simulator/register/pace.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace Simulator {

/** What velno-register was asked to be. */
struct RegisterOptions
{
    QByteArray serial; ///< 12 characters
    QString host;      ///< of the other side, or of the relay
    QString credentials;
    QByteArray appHash;                    ///< 32 bytes, or empty: any application
    QList<ModelSetting> settings;          ///< what the register is to be at first
    QString journal;                       ///< a file; empty: in memory
    ReceiptFiles receipts;                 ///< where prints go; what draws them somebody else has to set
    QString keyLog;                        ///< a file for the keys of pairings; empty: nowhere
    std::optional<ControlAddress> control; ///< where lines are taken beside standard input
    Pace pace;                             ///< how long things take
    Faults faults;
    int registers = 1; ///< how many; `serial` and `port` are those of the first
    int sales = 0;     ///< receipts after which the program ends; 0: it goes on
    quint16 port = 0;
    bool throughRelay = false;
    bool paper = true;
    bool pictures = false; ///< whether prints are to be drawn
    bool json = false;
    bool once = false;
};

/** The serial number that stands so many places behind this one: the digits at its end are counted up. Empty
 * when they do not reach so far. */
QByteArray serialBehind(const QByteArray &serial, int places);

using CommandLine = ParsedCommandLine<RegisterOptions>;

/** @param arguments  with the program's name in front */
CommandLine parseCommandLine(const QStringList &arguments);

} // namespace Simulator
