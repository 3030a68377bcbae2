// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/interrupts.h"

#include <QByteArray>
#include <QStringList>

#include <histedit.h>

#include <memory>

namespace VelnoCtl {

/**
 * Reads lines from a terminal on standard input: with a prompt, editing, a history of this session, and Tab
 * for the names given. Everything it shows goes to standard error. ~/.editrc is respected.
 */
class LineEditor
{
public:
    /** Ctrl-C clears a line that has been begun; otherwise it ends readLine(), as SIGTERM does. */
    LineEditor(Interrupts &interrupts, const QStringList &names);
    Q_DISABLE_COPY_MOVE(LineEditor)
    ~LineEditor();

    /** The next line without its end. @return false at its end (Ctrl-D), or when told to stop */
    bool readLine(QByteArray *line);

private:
    static LineEditor &of(EditLine *editLine);
    static int readCharacter(EditLine *editLine, wchar_t *character);
    static unsigned char complete(EditLine *editLine, int);

    /** Obeys Ctrl-C. @return false when the line is empty, and behind SIGTERM */
    bool clear();

    /** Draws the line for the terminal's new size. */
    void redraw();

    /** Of the names, those that begin so. */
    QStringList candidates(const QString &beginning) const;

    struct End
    {
        void operator()(EditLine *editLine) const noexcept { el_end(editLine); }
        void operator()(History *history) const noexcept { history_end(history); }
    };

    Interrupts &m_interrupts;
    QStringList m_names;
    std::unique_ptr<History, End> m_history;
    std::unique_ptr<EditLine, End> m_editLine;
};

} // namespace VelnoCtl
