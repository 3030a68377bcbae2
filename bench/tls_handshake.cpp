// SPDX-License-Identifier: Apache-2.0

#include "bench/tls_handshake.h"

#include "ExtDevice/gmp3/gmp3.h"

#include <openssl/ssl.h>

namespace {

using SslCtxPtr = std::unique_ptr<SSL_CTX, Velno::OpenSslFree<SSL_CTX_free>>;
using SslPtr = std::unique_ptr<SSL, Velno::OpenSslFree<SSL_free>>;

} // namespace

struct TlsHandshake::Kept
{
    SslCtxPtr ctx;
};

TlsHandshake::TlsHandshake(Side side, const std::string &authority)
    : m_kept(std::make_unique<Kept>())
    , m_side(side)
{
    m_kept->ctx.reset(SSL_CTX_new(TLS_method()));
    SSL_CTX *ctx = m_kept->ctx.get();
    SSL_CTX_set_min_proto_version(ctx, TLS1_2_VERSION);
    SSL_CTX_set_max_proto_version(ctx, TLS1_2_VERSION);
    SSL_CTX_set_session_cache_mode(ctx, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(ctx, SSL_OP_NO_TICKET);
    require(SSL_CTX_set_cipher_list(ctx, "DHE-RSA-AES256-SHA256") == 1, "no such cipher suite");
    if (side == Side::Client) {
        SSL_CTX_set_verify(ctx, SSL_VERIFY_PEER, nullptr);
        require(SSL_CTX_load_verify_file(ctx, (authority + "/trust-anchors.pem").c_str()) == 1,
                "no trust anchors");
        return;
    }
    Velno::PkeyPtr group = Velno::GMP::GMP3::DH_get_dh2048();
    require(SSL_CTX_use_certificate_file(ctx, (authority + "/register/client.crt").c_str(),
                                         SSL_FILETYPE_PEM) == 1 &&
                SSL_CTX_use_PrivateKey_file(ctx, (authority + "/register/client.key").c_str(),
                                            SSL_FILETYPE_PEM) == 1 &&
                SSL_CTX_set0_tmp_dh_pkey(ctx, group.release()) == 1,
            "no TLS credentials");
}

TlsHandshake::~TlsHandshake() = default;

bool TlsHandshake::run(const BareSocket &socket)
{
    const SslPtr ssl{SSL_new(m_kept->ctx.get())};
    return ssl && SSL_set_fd(ssl.get(), socket.descriptor()) == 1 &&
           (m_side == Side::Server ? SSL_accept(ssl.get()) : SSL_connect(ssl.get())) == 1;
}
