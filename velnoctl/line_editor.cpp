// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/line_editor.h"

#include "velnoctl/wait_for_input.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <langinfo.h>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int longestHistory = 500; // lines

char *prompt(EditLine *)
{
    static char text[] = "velnoctl> ";
    return text;
}

/** For UTF-8, as all words are. A bare system has set no such locale, and letters would get lost. */
EditLine *openEditLine()
{
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    return el_init("velnoctl", stdin, stderr, stderr);
}

/** What all of these begin with. */
QString commonBeginning(const QStringList &names)
{
    QString common = names.first();
    for (const QString &name : names) {
        while (!name.startsWith(common))
            common.chop(1);
    }
    return common;
}

} // namespace

LineEditor::LineEditor(Interrupts &interrupts, const QStringList &names)
    : m_interrupts(interrupts)
    , m_names(names)
    , m_history(history_init())
    , m_editLine(openEditLine())
{
    EditLine *const editLine = m_editLine.get();
    HistEvent event;
    history(m_history.get(), &event, H_SETSIZE, longestHistory);
    history(m_history.get(), &event, H_SETUNIQUE, 1);
    el_set(editLine, EL_CLIENTDATA, this);
    el_set(editLine, EL_PROMPT, prompt);
    el_set(editLine, EL_EDITOR, "emacs");
    el_set(editLine, EL_HIST, history, m_history.get());
    // The narrow twin of this call never frees its copies of the two texts.
    el_wset(editLine, EL_ADDFN, L"velnoctl-complete", L"Completes the name of a command", complete);
    el_set(editLine, EL_BIND, "^I", "velnoctl-complete", nullptr);
    // What Ctrl-D becomes when it is typed while a command is under way, before keys are read one by one.
    el_set(editLine, EL_BIND, "^@", "em-delete-or-list", nullptr);
    el_set(editLine, EL_GETCFN, readCharacter);
    el_source(editLine, nullptr);
}

LineEditor::~LineEditor() = default;

LineEditor &LineEditor::of(EditLine *editLine)
{
    LineEditor *self = nullptr;
    el_get(editLine, EL_CLIENTDATA, &self);
    return *self;
}

bool LineEditor::readLine(QByteArray *line)
{
    int count = 0;
    const char *const text = el_gets(m_editLine.get(), &count);
    if (!text || count <= 0) {
        std::fputc('\n', stderr); // Ctrl-D and Ctrl-C leave the cursor behind the prompt
        return false;
    }
    *line = QByteArray(text, count);
    while (line->endsWith('\n') || line->endsWith('\r'))
        line->chop(1);
    HistEvent event;
    if (!line->trimmed().isEmpty())
        history(m_history.get(), &event, H_ENTER, line->constData());
    return true;
}

int LineEditor::readCharacter(EditLine *editLine, wchar_t *character)
{
    std::mbstate_t state{};
    for (;;) {
        LineEditor &self = of(editLine);
        const Waited waited =
            waitForInput(STDIN_FILENO, self.m_interrupts.descriptor(), self.m_interrupts.resized());
        if (waited == Waited::Resized) {
            self.redraw();
            continue;
        }
        if (waited == Waited::Stop && self.clear())
            continue;
        char byte = 0;
        if (waited == Waited::Stop || ::read(STDIN_FILENO, &byte, 1) != 1)
            return 0;
        const size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used == size_t(-1))
            state = {}; // a byte that is no text is left out
        else if (used != size_t(-2))
            return 1;
    }
}

bool LineEditor::clear()
{
    EditLine *const editLine = m_editLine.get();
    const LineInfoW *const line = el_wline(editLine);
    const auto size = int(line->lastchar - line->buffer);
    if (size == 0 || !m_interrupts.acknowledge())
        return false;
    el_cursor(editLine, int(line->lastchar - line->cursor));
    el_deletestr(editLine, size);
    std::fputs("^C\n", stderr);
    el_set(editLine, EL_REFRESH);
    return true;
}

void LineEditor::redraw()
{
    signalfd_siginfo info;
    if (::read(m_interrupts.resized(), &info, sizeof info) != ssize_t(sizeof info))
        return;
    std::fputc('\r', stderr); // where the prompt is taken to begin
    el_resize(m_editLine.get());
    el_set(m_editLine.get(), EL_REFRESH);
}

QStringList LineEditor::candidates(const QString &beginning) const
{
    QStringList found;
    for (const QString &name : m_names) {
        if (name.startsWith(beginning))
            found << name;
    }
    return found;
}

unsigned char LineEditor::complete(EditLine *editLine, int)
{
    const LineInfo *const info = el_line(editLine);
    const QString before = QString::fromUtf8(info->buffer, info->cursor - info->buffer);
    const QString word = before.section(u' ', -1);
    const QString lead = before.chopped(word.size()).trimmed();
    if (!lead.isEmpty() && lead != "help"_L1)
        return CC_ERROR; // an argument, which is no command's name
    const QStringList found = of(editLine).candidates(word);
    if (found.isEmpty())
        return CC_ERROR;
    const QString missing =
        commonBeginning(found).sliced(word.size()) + (found.size() == 1 ? u" "_s : QString());
    if (!missing.isEmpty())
        return el_insertstr(editLine, missing.toUtf8().constData()) == 0 ? CC_REFRESH : CC_ERROR;
    std::fputs(u"\n%1\n"_s.arg(found.join("  "_L1)).toUtf8().constData(), stderr);
    return CC_REDISPLAY;
}

} // namespace VelnoCtl
