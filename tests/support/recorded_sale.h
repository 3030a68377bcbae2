// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/capture.h"

#include <QStringList>

namespace TestSupport {

/** What register and application said, and the keys that they agreed on. */
struct Recording
{
    QList<Piece> pieces;
    QByteArray keyLog;          ///< as the register wrote it
    QByteArray applicationHash; ///< velnoctl's
    int exitCode = -1;          ///< of velnoctl
    QByteArray errors;
};

/** Runs velno-register and velnoctl with these commands, and hears what they say, from the pairing on. */
Recording record(const QStringList &commands);

/** The commands of a small sale. */
QStringList smallSale();

} // namespace TestSupport
