// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/session.h"

namespace Velno::GMP {

/** As an answer's limit: a register that keeps talking, however slowly or beside the point, is heard for
 * ever. */
inline constexpr unsigned int noAnswerLimit = 0xFFFFFFFF;

/** Between whom a pairing is, and how long it may take. */
struct PairingTerms
{
    const char *serialNo;                     ///< the register's, 12 characters; every frame must carry it
    const char *terminalId;                   ///< identity of this terminal
    QByteArray applicationHash;               ///< SHA-256 of the application, 32 bytes
    unsigned int longestSilence;              ///< ms a read
    unsigned int answerLimit = noAnswerLimit; ///< ms for each of the three answers
};

/**
 * Drives the three-step conversation over the session's link: the requester's side of a pairing.
 *
 * @param record  filled on success, otherwise untouched
 * @return as GMP3_KeyExchange_Server(), but for accepting
 *
 * The session's keys are overwritten and forgotten before this returns.
 */
[[nodiscard]] int pairRegister(Session &session, MatchExt &record, const PairingTerms &terms);

/**
 * Pairs with a register: waits 30 s for it on all local addresses, then drives the three-step conversation,
 * with at most 10 s of silence a read. The accepted connection stays in the session of the process (gmp3.h).
 *
 * Blocks; one conversation at a time in a process.
 *
 * @param record           filled on success, otherwise untouched
 * @param serialNo         the register's 12-character serial number; every frame must carry it
 * @param terminalId       identity of this terminal
 * @param applicationHash  SHA-256 of the application, 32 bytes
 * @param answerLimit      ms for each of the three answers, with all that comes in its place; 3006 when it
 * has passed
 * @return 0 paired; 1000 + accept status; 2000 + write status; 3000 + read status (velno_network.h);
 *         4000 length, 4001 CRC, 4002 serial number, 4003 no message; 5000 the register answered with a
 *         result code other than "00"; 5001 its certificate is not trusted; 5002 its signature is not
 *         valid, the signed key was replaced afterwards, its group is not known (known_groups.h), or its key
 *         gives no shared secret: no confirmation is sent then
 *
 * The session's keys are overwritten and forgotten before this returns.
 */
[[nodiscard]] int GMP3_KeyExchange_Server(MatchExt &record, quint16 port, const char *serialNo,
                                          const char *terminalId, const QByteArray &applicationHash,
                                          unsigned int answerLimit = noAnswerLimit);

/**
 * The same on a connection that the caller already holds (a handle of velno_network.h), with 30 s of
 * silence a read. The connection is closed on every path.
 */
[[nodiscard]] int GMP3_KeyExchange_Server(MatchExt &record, quint32 connection, const char *serialNo,
                                          const char *terminalId, const QByteArray &applicationHash,
                                          unsigned int answerLimit = noAnswerLimit);

} // namespace Velno::GMP
