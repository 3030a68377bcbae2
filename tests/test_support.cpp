#include "tests/test_support.h"

#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QTcpServer>

namespace {

// Ports below those that systems give to outgoing connections. One of these could be taken by somebody's
// connection, or by what is left of one, before the test listens.
constexpr quint16 lowest = 10'000;
constexpr quint16 highest = 30'000;

} // namespace

quint16 TestSupport::freePort()
{
    constexpr int attempts = 1000;
    QTcpServer server;
    server.setProxy(QNetworkProxy::NoProxy);
    for (int i = 0; i < attempts; ++i) {
        const auto port = quint16(QRandomGenerator::system()->bounded(lowest, highest));
        if (server.listen(QHostAddress::Any, port))
            return port;
    }
    qFatal("no free port");
}
