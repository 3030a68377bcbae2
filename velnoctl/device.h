// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "translations/spoken.h"
#include "velnoctl/commands.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/interrupts.h"
#include "velnoctl/options.h"

namespace VelnoCtl {

/** The register named by the options, behind velnoext.h. Its connection is closed with this object. */
class Device
{
public:
    Device(const Options &options, Interrupts &interrupts);
    ~Device();
    Q_DISABLE_COPY_MOVE(Device)

    /**
     * Connects unless it is connected, saying on standard error whom it waits for. The register is paired on
     * the way, since keys live as long as a process.
     *
     * @param needs  with Needs::Connection it is connected afresh when expectsStrayAnswer() has been called
     * @return as velnoext_initialize(), or Interrupted
     */
    int connect(Needs needs);

    /** Drops the connection and the keys: the next command pairs anew. @return as velnoext_forget_device() */
    int forget();

    /** An answer may come on this connection that nobody reads: the next command would take it for its own.
     */
    void expectStrayAnswer() { m_hasStrayAnswer = true; }

    /** Asks the register with a function of velnoext.h that takes no time-out. @return its code, or
     * Interrupted */
    template <typename Function, typename... Arguments>
    int ask(Function function, Arguments... arguments)
    {
        using namespace Qt::StringLiterals;
        m_whenInterrupted = Spoken::tr("before it was sent");
        return m_interrupts.requested() ? int(Interrupted) : noted(function(arguments...));
    }

    /** ask() with the time-out of the options in front. */
    template <typename Function, typename... Arguments>
    int command(Function function, Arguments... arguments)
    {
        return ask(function, m_options.timeout, arguments...);
    }

    /** Leaves the register to a till: closes its connection, and connects afresh for the next command. */
    void handOver();

    void setWhenInterrupted(const QString &known) { m_whenInterrupted = known; }
    const Options &options() const { return m_options; }

    /** What was under way when one of the above returned Interrupted, and what is known of its outcome. */
    const QString &whenInterrupted() const { return m_whenInterrupted; }

    /** The register, and where it is met, for people. */
    QString target() const;

private:
    void announce(bool isSpoilt);
    int noted(int code);

    const Options &m_options;
    Interrupts &m_interrupts;
    QString m_whenInterrupted;
    bool m_isConnected = false;
    bool m_isInitialised = false;
    bool m_hasStrayAnswer = false;
};

} // namespace VelnoCtl
