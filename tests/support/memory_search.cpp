// SPDX-License-Identifier: Apache-2.0

#include "tests/support/memory_search.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr unsigned char veil = 0xA5; // XORed to every byte that is kept
constexpr size_t leastTrace = 16;    // bytes
constexpr size_t pieceSize = 1024 * 1024;
// A sanitizer keeps its notes on memory in larger ones; no data lies there, and reading them takes for ever.
constexpr quint64 largestMapping = quint64(4) << 30;

struct Range
{
    quint64 begin;
    quint64 end;
};

/** What is written to while the process runs, but for one range. */
QList<Range> writableMemory(const Range &without)
{
    QFile maps(u"/proc/self/maps"_s);
    if (!maps.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/maps");
    QList<Range> ranges;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const qsizetype dash = line.indexOf('-');
        const qsizetype space = line.indexOf(' ');
        if (space < 0 || line.mid(space + 1, 4) != "rw-p")
            continue;
        const Range mapping{line.first(dash).toULongLong(nullptr, 16),
                            line.sliced(dash + 1, space - dash - 1).toULongLong(nullptr, 16)};
        if (mapping.end - mapping.begin > largestMapping)
            continue;
        ranges << Range{mapping.begin, std::clamp(without.begin, mapping.begin, mapping.end)}
               << Range{std::clamp(without.end, mapping.begin, mapping.end), mapping.end};
    }
    return ranges;
}

std::vector<unsigned char> hidden(QByteArrayView bytes)
{
    std::vector<unsigned char> result;
    result.reserve(size_t(bytes.size()));
    for (const char byte : bytes)
        result.push_back(static_cast<unsigned char>(byte) ^ veil);
    return result;
}

} // namespace

HiddenSecret::HiddenSecret(const QString &name, QByteArrayView secret)
    : m_name(name)
{
    if (size_t(secret.size()) < leastTrace)
        qFatal("a secret that is too short to be told from chance");
    for (const QByteArrayView half : {secret.first(leastTrace), secret.last(leastTrace)}) {
        m_traces.push_back(hidden(half));
        m_traces.emplace_back(m_traces.back().rbegin(), m_traces.back().rend()); // as large numbers lie
    }
}

bool HiddenSecret::isIn(const std::vector<unsigned char> &hiddenMemory, size_t size) const
{
    return std::ranges::any_of(m_traces, [&](const std::vector<unsigned char> &trace) {
        return memmem(hiddenMemory.data(), size, trace.data(), trace.size()) != nullptr;
    });
}

QStringList secretsInMemory(const QList<HiddenSecret> &secrets)
{
    static std::vector<unsigned char> piece(pieceSize);
    QStringList found;
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    if (memory < 0)
        qFatal("no /proc/self/mem");
    // Read into its own place, a piece is hidden twice, which is to say not at all: that place is left out.
    const auto own = quint64(reinterpret_cast<quintptr>(piece.data()));
    for (const Range &range : writableMemory({own, own + pieceSize})) {
        for (quint64 at = range.begin; at < range.end; at += pieceSize - leastTrace) {
            const size_t wanted = size_t(std::min<quint64>(pieceSize, range.end - at));
            const ssize_t size = ::pread64(memory, piece.data(), wanted, off64_t(at));
            if (size <= 0)
                break; // guard pages cannot be read
            for (size_t i = 0; i < size_t(size); ++i)
                piece[i] ^= veil;
            for (const HiddenSecret &secret : secrets) {
                if (!found.contains(secret.name()) && secret.isIn(piece, size_t(size)))
                    found << secret.name();
            }
        }
    }
    ::close(memory);
    std::ranges::fill(piece, 0);
    return found;
}

} // namespace TestSupport
