#include "velnoctl/session.h"

#include "velnoext.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

Session::Session(const Options &options, Report &report, Interrupts &interrupts)
    : m_options(options)
    , m_report(report)
    , m_interrupts(interrupts)
    , m_register(options, interrupts)
{
}

void Session::setInteractive()
{
    m_isInteractive = true;
    m_report.setInShell();
}

int Session::run(const QList<Step> &steps)
{
    for (const Step &step : steps) {
        if (const int code = run(step); code != 0)
            return code;
        if (m_hasQuit)
            break;
    }
    return 0;
}

int Session::run(const Step &step)
{
    const Needs needs = step.command->needs;
    if (needs == Needs::Connection || needs == Needs::RawConnection) {
        if (const int code = m_register.connect(needs); code != 0) {
            const QString serial = QString::fromLatin1(m_options.serial);
            m_report.connectFailed(step,
                                   serial + (m_options.isRelay ? u" at "_s : u" on "_s) + m_options.place(),
                                   code, velnoext_error_detail());
            return code;
        }
    }
    const Answer answer = step.command->run(*this, step.arguments);
    m_report.answer(step, answer);
    if (answer.code == 0 && m_interrupts.requested())
        return Interrupted;
    return m_report.isLost() ? int(OutputLost) : answer.code;
}

} // namespace VelnoCtl
