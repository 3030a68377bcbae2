// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/session.h"

namespace Velno::GMP {

/** The request that follows this one in a pairing; None at its end. */
MessageTag nextRequest(MessageTag kind);

/**
 * The body of a pairing message, from what the session holds; its randoms and keys go into the session.
 *
 * @param response  false: the requester's side (the application), true: the responder's (the register)
 * @param identity  of the side that prepares
 * @return field elements, concatenated; empty for a kind that is no pairing message
 */
QByteArray prepareBody(Session &session, MessageTag kind, bool response, const char *identity);

} // namespace Velno::GMP
