// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/control_address.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace VelnoCtl {

constexpr quint32 noLimit = 0xFFFFFFFF; ///< as a time-out

/** What stands in front of the commands. */
struct Options
{
    QByteArray serial;  ///< 12 characters; empty when not given
    QByteArray address; ///< to listen on, or the relay's; empty when not given
    quint16 port = 0;   ///< 0 with the relay
    quint32 app = 0;    ///< 0 when not given
    quint32 timeout = 30'000;
    std::optional<quint32> answerLimit; ///< ms; not given: none for a command, a till's own for receipts
    QString ledger;                     ///< path; empty when not given
    std::optional<Simulator::ControlAddress> control; ///< of a simulated register or relay
    QByteArray language = "en";                       ///< of what the libraries explain
    bool isRelay = false;
    bool isJson = false;
    bool isHelp = false;
    bool isVersion = false;
    QStringList words; ///< the commands with their arguments

    /** The ledger of this register: as given, or in the folder of the user's own data. */
    QString ledgerFile() const;

    /** Where the register is to be met, for people. */
    QString place() const;
};

/** In which language things are said, "en" or "tr". */
struct Languages
{
    QByteArray own;       ///< of velnoctl's own words
    QByteArray libraries; ///< of what the libraries explain
};

/**
 * What --language says, otherwise the user's language. With --json, which programs read, own words are
 * English and so is what the libraries explain, unless --language says otherwise.
 */
Languages languagesAskedFor(const QStringList &arguments);

/** @return what was wrong and what is accepted, or nothing */
QString parseOptions(const QStringList &arguments, Options *options);

/** Which option is missing to reach a register, and what is accepted; or nothing. */
QString missingTarget(const Options &options);

/** That a command needs --control, and what is accepted. */
QString missingControl();

/** The whole of --version: also whom the build trusts. */
QString versionText();

/** The whole of --help. */
QString helpText();

} // namespace VelnoCtl
