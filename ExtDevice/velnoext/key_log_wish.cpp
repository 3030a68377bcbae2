// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/key_log_wish.h"

#include "ExtDevice/gmp3/key_log.h"
#include "ExtDevice/gmp3/trust_anchors.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace Velno::Ext {

void logKeysWhenWished(const GMP::MatchExt &record)
{
    const char *const file = ::secure_getenv("VELNO_KEY_LOG");
    if (!file || !*file)
        return;
    const QString problem =
        GMP::trustsDevelopmentAuthority()
            ? GMP::appendToKeyLog(QFile::decodeName(file), record)
            : u"VELNO_KEY_LOG is refused: keys are logged by builds with a development authority alone"_s;
    if (!problem.isEmpty())
        std::fprintf(stderr, "velnoext: %s\n", qUtf8Printable(problem));
}

} // namespace Velno::Ext
