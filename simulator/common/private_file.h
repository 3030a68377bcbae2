// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>

/** Files with what was sold and to whom: for their owner alone, whatever the umask says. */
namespace Simulator {

/** Creates the file, which must not exist yet, with mode 0600 from its first byte on, and opens it to be
 * written. */
bool createPrivate(QFile &file);

/** Whether nobody but its owner may do anything with the file; true when there is none. */
bool isPrivate(const QString &path);

/** Takes the permissions of others away. @return false: that is not allowed */
bool makePrivate(const QString &path);

} // namespace Simulator
