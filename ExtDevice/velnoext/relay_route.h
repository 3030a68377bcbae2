// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::Ext {

/**
 * Opens a connection through the relay server: names the register to it and expects the name back.
 *
 * @return 0; 6: nobody there, or the relay does not know the register; sets the cause then
 */
int connectToTsm(const QByteArray &serialNo, unsigned int timeout, unsigned int *handle);

} // namespace Velno::Ext
