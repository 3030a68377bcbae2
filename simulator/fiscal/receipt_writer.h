// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/print.h"

#include <functional>

namespace Simulator {

/** Where prints go, and as what. */
struct ReceiptFiles
{
    /** Makes a PNG file of the lines of a print; empty when it cannot. */
    using Draw = std::function<QByteArray(const QStringList &lines)>;

    QString folder = {}; ///< empty: no files
    bool asText = true;
    Draw draw = {};    ///< as pictures, too; empty: no pictures
    bool show = false; ///< on standard error, as text
};

/** Where what the register prints can be seen: a folder with files for each print, and standard error. */
class ReceiptWriter
{
public:
    explicit ReceiptWriter(const ReceiptFiles &files);

    /**
     * Writes the print, as UTF-8 or as a picture, in files of its own that no other print overwrites and
     * nobody but their owner reads.
     *
     * @return an empty text, or why a file is missing
     */
    QString write(const Print &print);

private:
    QString nextName(const Print &print);

    ReceiptFiles m_files;
    int m_prints = 0; ///< the number of the last file
};

} // namespace Simulator
