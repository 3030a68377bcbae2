#include "tests/test_support.h"

#include <QHostAddress>
#include <QTcpServer>

quint16 TestSupport::freePort()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, 0))
        qFatal("no free port: %s", qPrintable(server.errorString()));
    return server.serverPort();
}
