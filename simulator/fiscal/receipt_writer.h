// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/print.h"

namespace Simulator {

/** Where what the register prints can be read: a folder with a text file for each print, and standard error.
 */
class ReceiptWriter
{
public:
    /** @param folder  empty: no files */
    ReceiptWriter(const QString &folder, bool show);

    /**
     * Writes the print as UTF-8, in a file of its own that no other print overwrites and nobody but its owner
     * reads.
     *
     * @return an empty text, or why there is no file
     */
    QString write(const Print &print);

private:
    QString nextFile(const Print &print);

    QString m_folder;
    bool m_show;
    int m_prints = 0; ///< the number of the last file
};

} // namespace Simulator
