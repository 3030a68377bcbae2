// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/openssl_ptr.h"

namespace Velno::GMP {

/** A group without key pair; null when p is even or has no usable size, or g is not in 2 .. p-2. */
PkeyPtr dhGroup(const char *p, int pLength, const char *g, int gLength);

/** The group of these parameters; null when there is none. */
PkeyPtr dhGroup(const ParamBldPtr &builder);

/** The 2048-bit group 14 of RFC 3526. */
PkeyPtr dhGroup2048();

/** Makes a key pair in the group. @return false, the group untouched, when that fails */
[[nodiscard]] bool generateKeyPair(PkeyPtr &dh);

/** The public key, padded with zeros on the left to the size of p; empty without a key pair. */
QByteArray publicKeyOf(const PkeyPtr &dh);

/** The shared secret without leading zeros; empty on any failure. */
QByteArray sharedSecret(const PkeyPtr &dh, const QByteArray &peerPublicKey);

} // namespace Velno::GMP
