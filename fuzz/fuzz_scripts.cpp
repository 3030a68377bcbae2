// SPDX-License-Identifier: Apache-2.0

// Scripts for velnoctl: lines, words and arguments, from a file that is read as a whole before anything is
// sent.
#include "fuzz/fuzz_input.h"
#include "velnoctl/parse.h"
#include "velnoctl/words.h"

#include <QStringList>

#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace VelnoCtl;

namespace {

/** As a file of a script: no step that was read may stand where something was wrong. */
void readAsFile(const QByteArray &text)
{
    const int file = ::memfd_create("script", MFD_CLOEXEC);
    FUZZ_EXPECT(::write(file, text.constData(), size_t(text.size())) == text.size());
    const QString path = u"/proc/self/fd/%1"_s.arg(file);
    const Parsed parsed = parseWords({u"run"_s, path}, CommandLine);
    FUZZ_EXPECT(parsed.problem.isEmpty() || parsed.steps.isEmpty());
    ::close(file);
}

/** As a line for the shell and as arguments of the program; other files are left alone. */
void readAsCommands(const QByteArray &line)
{
    QStringList words;
    const QStringList standardInput{u"run"_s, u"-"_s};
    if (!splitWords(line, &words).isEmpty() ||
        (words.contains(standardInput.first()) && words != standardInput))
        return;
    parseLine(line, Shell);
    parseWords(words, CommandLine);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray text = Fuzz::Input(data, size).rest();
    readAsFile(text);
    for (const QByteArray &line : text.split('\n')) {
        const Parsed parsed = parseLine(line, Script);
        FUZZ_EXPECT(parsed.steps.size() <= 1);
        FUZZ_EXPECT(parsed.problem.isEmpty() || parsed.steps.isEmpty());
        readAsCommands(line);
    }
    return 0;
}
