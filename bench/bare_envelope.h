// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "ExtDevice/openssl_ptr.h"

/**
 * The envelope of a command, written down without the library: the same bytes, every OpenSSL object kept with
 * its key.
 */
class BareEnvelope
{
public:
    explicit BareEnvelope(const Velno::GMP::MatchExt &record);

    /** The frame around a plaintext, as it goes to the connection, 4 bytes of length in front. */
    QByteArray seal(const QByteArray &plaintext) const;

    /** The plaintext of a frame without those 4 bytes; empty when anything about it is wrong. */
    QByteArray open(const QByteArray &frame) const;

private:
    QByteArray mac(const QByteArray &cipher) const;

    QByteArray m_identity;
    QByteArray m_iv;
    Velno::CipherCtxPtr m_encrypt;
    Velno::CipherCtxPtr m_decrypt;
    Velno::MacCtxPtr m_mac;
};
