// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/control_server.h"

#include "translations/spoken.h"

#include <QTimer>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int backlog = 32;
constexpr mode_t ownerAlone = 0600;
constexpr std::chrono::milliseconds shortPause(100);

/** Whether a Unix socket has been left behind by a program that has ended. */
bool isAbandoned(const ControlAddress &address)
{
    struct stat found
    {
    };
    if (lstat(address.path().constData(), &found) != 0 || !S_ISSOCK(found.st_mode))
        return false;
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool refused = ::connect(probe, address.forSystem(), address.size) != 0 && errno == ECONNREFUSED;
    ::close(probe);
    return refused;
}

} // namespace

ControlServer::ControlServer(Obey obey, QObject *parent)
    : QObject(parent)
    , m_obey(std::move(obey))
{
}

ControlServer::~ControlServer()
{
    qDeleteAll(m_clients);
    delete m_comes;
    if (m_socket >= 0)
        ::close(m_socket);
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
}

bool ControlServer::bind(const ControlAddress &address)
{
    const auto bound = [&] { return ::bind(m_socket, address.forSystem(), address.size) == 0; };
    if (bound())
        return true;
    const int reason = errno;
    if (reason == EADDRINUSE && isAbandoned(address))
        return ::unlink(address.path().constData()) == 0 && bound();
    errno = reason;
    return false;
}

QString ControlServer::listen(const ControlAddress &address)
{
    m_socket = socket(address.bytes.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    // Before it has a name: from the first moment on nobody else may connect.
    if (address.bytes.ss_family == AF_UNIX)
        fchmod(m_socket, ownerAlone);
    else
        setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool bound = m_socket >= 0 && bind(address);
    if (bound)
        m_path = address.path();
    if (!bound || ::listen(m_socket, backlog) != 0)
        return Spoken::tr("cannot listen on %1: %2")
            .arg(address.text(), QString::fromLocal8Bit(std::strerror(errno)));
    m_comes = new QSocketNotifier(m_socket, QSocketNotifier::Read);
    connect(m_comes, &QSocketNotifier::activated, this, &ControlServer::admit);
    return {};
}

QString ControlServer::place() const
{
    return m_comes ? addressOf(m_socket).text() : QString();
}

void ControlServer::admit()
{
    const int socket = accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
        // The system is short of descriptors or memory, and would tell of this client again and again.
        m_comes->setEnabled(false);
        QTimer::singleShot(shortPause, this, [this] { m_comes->setEnabled(true); });
        return;
    }
    if (m_clients.size() == mostClients)
        forget(m_clients.first());
    auto *const client = new ControlClient(socket, m_obey, this);
    m_clients << client;
    connect(client, &ControlClient::heard, this, [this, client] { moveBack(client); });
    connect(client, &ControlClient::ended, this, [this, client] { forget(client); });
}

void ControlServer::moveBack(ControlClient *client)
{
    if (m_clients.removeOne(client)) // and not one that goes
        m_clients << client;
}

void ControlServer::forget(ControlClient *client)
{
    if (m_clients.removeOne(client))
        client->deleteLater(); // it may be telling this itself
}

} // namespace Simulator
