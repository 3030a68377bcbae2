// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"
#include "velnoctl/parse.h"

#include <QStringList>

namespace VelnoCtl {

/**
 * Results go to standard output, in words or as one JSON object a line, at once; everything else goes to
 * standard error.
 */
class Report
{
public:
    explicit Report(bool isJson)
        : m_isJson(isJson)
    {
    }

    /** A result, or a failure with cause and cure. */
    void answer(const Step &step, const Answer &answer);

    /** Connecting failed, before `step` could be run. */
    void connectFailed(const Step &step, const QString &target, const Answer &failure);

    /** @param known  of the outcome, to be read behind "interrupted " */
    void interrupted(const Step &step, const QString &known);

    /** There was nothing to be interrupted. */
    void interruptedIdle();

    /** Further lines of the failure that was told last. */
    void details(const QStringList &lines);

    /** What was wrong, and where all commands are shown. */
    void wrongUsage(const QString &problem);

    /** Usage is wrong in the shell from now on, which has a help of its own. */
    void setInShell() { m_isInShell = true; }

    /** Whether a result could not be written; said once. */
    bool isLost() const { return m_isLost; }

private:
    void otherEnd(const Step &step, const Answer &answer);
    void failure(const Step &step, const QString &what, const QString &command, const Answer &answer);
    void write(const QString &text);
    void write(const QJsonObject &object);

    bool m_isJson;
    bool m_isInShell = false;
    bool m_isLost = false;
};

/** The line of a message on standard error. */
void complain(const QString &text);

} // namespace VelnoCtl
