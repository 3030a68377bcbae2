#pragma once

#include "velnoctl/commands.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/interrupts.h"
#include "velnoctl/options.h"

namespace VelnoCtl {

/** The register named by the options, behind velnoext.h. Its connection is closed with this object. */
class Register
{
public:
    Register(const Options &options, Interrupts &interrupts);
    ~Register();
    Q_DISABLE_COPY_MOVE(Register)

    /**
     * Connects unless it is connected, saying on standard error whom it waits for. The register is paired on
     * the way, since keys live as long as a process.
     *
     * @param needs  with Needs::Connection it is connected afresh when expectsStrayAnswer() has been called
     * @return as velnoext_initialize(), or Interrupted
     */
    int connect(Needs needs);

    /** An answer may come on this connection that nobody reads: the next command would take it for its own.
     */
    void expectStrayAnswer() { m_hasStrayAnswer = true; }

    /** Asks the register with a function of velnoext.h that takes no time-out. @return its code, or
     * Interrupted */
    template <typename Function, typename... Arguments>
    int ask(Function function, Arguments... arguments)
    {
        const Interrupts::Call call(m_interrupts, "a command was under way: whether the register carried it "
                                                  "out is not known");
        return call.mayBegin() ? noted(function(arguments...)) : int(Interrupted);
    }

    /** ask() with the time-out of the options in front. */
    template <typename Function, typename... Arguments>
    int command(Function function, Arguments... arguments)
    {
        return ask(function, m_options.timeout, arguments...);
    }

private:
    int noted(int code);

    const Options &m_options;
    Interrupts &m_interrupts;
    bool m_isConnected = false;
    bool m_isInitialised = false;
    bool m_hasStrayAnswer = false;
};

} // namespace VelnoCtl
