// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/openssl_ptr.h"

#include <vector>

/**
 * The Diffie-Hellman groups that keys are agreed in. Nobody signs the group that a register sends, and
 * whoever chooses it can choose one in which he knows the secret: with a register's public key as the
 * generator, with a power of it, or with a prime made for the purpose. No check of the numbers tells such a
 * group from a good one; only knowing it beforehand does.
 */
namespace Velno::GMP {

/**
 * Whether prime and generator are those of one of the groups 14 to 18 of RFC 3526, of ffdhe2048 to ffdhe8192
 * of RFC 7919 (the generator is 2 in all of them), or of the build setting VELNO_DH_GROUPS. False for null.
 */
bool isKnownGroup(const PkeyPtr &group);

/** The groups of a PEM text, one for each of its blocks DH PARAMETERS up to the first that is damaged. */
std::vector<PkeyPtr> groupsIn(const QByteArray &pem);

/**
 * A group in words, as the configure step prints those of VELNO_DH_GROUPS: bits, generator, SHA-256 of the
 * prime's upper-case hexadecimal digits.
 */
QByteArray groupInWords(const PkeyPtr &group);

} // namespace Velno::GMP
