// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/device.h"
#include "velnoctl/library_log.h"
#include "velnoctl/parse.h"
#include "velnoctl/report.h"

#include <QByteArray>

#include <utility>

namespace VelnoCtl {

/** What a command leaves for those behind it. */
struct Remembered
{
    std::pair<int, int> receipt{0, 0}; ///< that sale-state told last
    QByteArray encoding;               ///< of the slip's texts
};

/** One run of the program: the register, where results go, and what runs steps. */
class Session
{
public:
    Session(const Options &options, Report &report, Interrupts &interrupts);

    /** Runs steps in order up to the first failure or quit. @return its code or ExitStatus, otherwise 0 */
    int run(const QList<Step> &steps);

    /** Nothing is run any more. */
    void quit() { m_hasQuit = true; }
    bool hasQuit() const { return m_hasQuit; }

    /** A person at a terminal gives the commands. */
    void setInteractive();
    bool isInteractive() const { return m_isInteractive; }

    Remembered &remembered() { return m_remembered; }
    Device &device() { return m_device; }
    Report &report() { return m_report; }
    Interrupts &interrupts() { return m_interrupts; }

private:
    int run(const Step &step);
    int connect(const Step &step);
    int interrupted(const Step &step);

    Report &m_report;
    Interrupts &m_interrupts;
    LibraryLog m_log;
    Device m_device;
    Remembered m_remembered;
    bool m_hasQuit = false;
    bool m_isInteractive = false;
};

} // namespace VelnoCtl
