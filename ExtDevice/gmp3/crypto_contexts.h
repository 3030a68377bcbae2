// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/openssl_ptr.h"

namespace Velno::GMP {

/** One of OpenSSL's contexts, with the key that it was set up for. A copy starts without either. */
template <typename Context>
class KeyedContext
{
public:
    KeyedContext() = default;
    KeyedContext(const KeyedContext &) {}
    KeyedContext &operator=(const KeyedContext &)
    {
        forget();
        return *this;
    }
    ~KeyedContext() { forget(); }

    /** The context for this key: the one that is kept, or one from make(key); null when that made none. */
    template <typename Make>
    auto get(const QByteArray &key, Make make)
    {
        if (!m_context || m_key != key) {
            forget();
            m_context = make(key);
            m_key =
                QByteArray(key.constData(), key.size()); // shared with nobody, so that it can be overwritten
        }
        return m_context.get();
    }

    /** Frees the context, which overwrites what it holds, and overwrites the key. */
    void forget()
    {
        m_context.reset();
        cleanse(m_key);
    }

private:
    Context m_context;
    QByteArray m_key;
};

/**
 * The contexts that a pairing record's commands need. They stay keyed from one command to the next, because
 * setting them up costs more than a command's bytes do; another key sets them up anew. They end with their
 * owner, and a copy starts without them. No lock: one thread at a time.
 */
class CryptoContexts
{
public:
    /**
     * AES-CBC without padding, in place.
     *
     * @param key   16, 24 or 32 bytes
     * @param iv    16 bytes
     * @param data  whole blocks of 16 bytes, not none
     * @return false when one of them is not so; the data is undefined then
     */
    bool cipher(bool encrypt, const QByteArray &key, const unsigned char *iv, QByteArray &data);

    /** HMAC-SHA256: 32 bytes; empty when OpenSSL fails. */
    QByteArray hmac(const QByteArray &key, const QByteArray &data);

    /** Frees all of them. */
    void forget();

private:
    KeyedContext<CipherCtxPtr> m_encrypt;
    KeyedContext<CipherCtxPtr> m_decrypt;
    KeyedContext<MacCtxPtr> m_mac;
};

} // namespace Velno::GMP
