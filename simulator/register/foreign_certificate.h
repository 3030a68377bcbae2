// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Simulator {

/**
 * The public key of a certificate, certified by an authority made for this call, in memory alone. Both PEM.
 * The authority's key is on a curve: an RSA key can take longer to find than whoever waits for the
 * certificate has patience.
 *
 * @return empty on failure
 */
QByteArray underForeignAuthority(const QByteArray &certificate);

} // namespace Simulator
