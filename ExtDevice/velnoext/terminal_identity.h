// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::Ext {

/** This terminal's identity: the hardware address of its first network interface, 12 hexadecimal digits. */
QByteArray macAddress();

} // namespace Velno::Ext
