// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/gmp3.h"

#include "ExtDevice/gmp3/log.h"
#include "ExtDevice/network/velno_network.h"

namespace Velno::GMP {

namespace {

// OpenSSL cleans up when the process ends, in the reverse order of the start. Started here, before the
// session exists, it is still there when the session frees its key pair. (Asked for nothing, it does not
// start.)
[[maybe_unused]] const bool openSslOutlivesTheSession =
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr) == 1;

HandleLink processLink;

} // namespace

Session processSession{.record = {}, .link = &processLink};

constinit GMP3_Message &gmp3_message = processSession.record;
constinit unsigned int &connection_handle = processLink.handle;
constinit QString &cert_path = processSession.certificatePath;
constinit QString &prikey_path = processSession.keyPath;

void GMP3::init(unsigned int handle)
{
    processSession.begin();
    connection_handle = handle;
}

int GMP3::accept(const char *address, unsigned short port, unsigned int timeout)
{
    if (connection_handle != 0)
        processLink.close();
    const int status = velno_network_accept(address, port, int(timeout), &connection_handle);
    if (status == 0)
        return 0;
    LogLine() << "velno_network_accept: " << status;
    return 1000 + status;
}

} // namespace Velno::GMP
