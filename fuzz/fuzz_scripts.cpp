// Scripts for velnoctl: lines, words and arguments, from a file that is read as a whole before anything is
// sent.
#include "fuzz/fuzz_input.h"
#include "velnoctl/parse.h"

#include <QStringList>

#include <sys/mman.h>
#include <unistd.h>

using namespace VelnoCtl;

namespace {

/** As a file of a script: no step that was read may stand where something was wrong. */
void readAsFile(const QByteArray &text)
{
    const int file = ::memfd_create("script", MFD_CLOEXEC);
    FUZZ_EXPECT(::write(file, text.constData(), size_t(text.size())) == text.size());
    const QString path = QStringLiteral("/proc/self/fd/%1").arg(file);
    const Parsed parsed = parseWords({QStringLiteral("run"), path}, CommandLine);
    FUZZ_EXPECT(parsed.problem.isEmpty() || parsed.steps.isEmpty());
    ::close(file);
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
    }
    return 0;
}
