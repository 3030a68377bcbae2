// SPDX-License-Identifier: Apache-2.0

// Runs a target with the inputs of a folder, in place of libFuzzer: a corpus is a test, with any compiler.
#include "fuzz/fuzz_input.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <memory>

namespace {

/** @return false when the file cannot be read */
bool replay(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    std::fprintf(stderr, "%s: %d bytes\n", qPrintable(QFileInfo(path).fileName()), int(bytes.size()));
    // A copy of just this size: AddressSanitizer sees a read behind its end.
    const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[size_t(bytes.size())]);
    std::copy(bytes.cbegin(), bytes.cend(), copy.get());
    LLVMFuzzerTestOneInput(copy.get(), size_t(bytes.size()));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    const QDir folder(argc == 2 ? QString::fromLocal8Bit(argv[1]) : QString());
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    if (argc != 2 || names.isEmpty()) {
        std::fprintf(stderr, "Usage: %s FOLDER: runs the target with every file of the folder\n", argv[0]);
        return 64;
    }
    for (const QString &name : names) {
        if (!replay(folder.filePath(name))) {
            std::fprintf(stderr, "%s cannot be read\n", qPrintable(name));
            return 1;
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);
    return 0;
}
