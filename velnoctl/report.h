#pragma once

#include "velnoctl/commands.h"
#include "velnoctl/parse.h"

#include <cstdio>
#include <memory>

namespace VelnoCtl {

/**
 * Results go to standard output, in words or as one JSON object a line, at once; everything else goes to
 * standard error. What the library itself writes to standard output is sent to standard error, too, from the
 * making of this object on.
 */
class Report
{
public:
    explicit Report(bool isJson);

    /** A result, or a failure with cause and cure. Of being interrupted nothing is said. */
    void answer(const Step &step, const Answer &answer);

    /** Connecting failed, before `step` could be run. */
    void connectFailed(const Step &step, const QString &target, int code, int detail);

    /** What was wrong, and where all commands are shown. */
    void wrongUsage(const QString &problem);

    /** Usage is wrong in the shell from now on, which has a help of its own. */
    void setInShell() { m_isInShell = true; }

    /** Whether a result could not be written; said once. */
    bool isLost() const { return m_isLost; }

private:
    void failure(const Step &step, const QString &what, const QString &command, const Answer &answer);
    void write(const QString &text);
    void write(const QJsonObject &object);

    struct Close
    {
        void operator()(FILE *file) const noexcept { std::fclose(file); }
    };
    std::unique_ptr<FILE, Close> m_output;
    bool m_isJson;
    bool m_isInShell = false;
    bool m_isLost = false;
};

/** The line of a message on standard error. */
void complain(const QString &text);

} // namespace VelnoCtl
