// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"

#include "ExtDevice/network/keep_alive.h"
#include "ExtDevice/velnoext/connection_helper.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <QThread>

using namespace Qt::StringLiterals;

namespace Velno::Ext {

namespace {

void prepareSocket(QTcpSocket &socket)
{
    watchForVanishedPeer(int(socket.socketDescriptor()));
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

} // namespace

bool onConnectionThread(const std::function<void()> &work)
{
    ConnectionThread *const thread = library().connectionThread.get();
    if (!thread)
        return false;
    thread->run([&work] {
        const WaitScope scope(library().interruption);
        work();
    });
    return true;
}

bool send_to_device(QIODevice *connection, const QByteArray &payload)
{
    const WaitScope scope(library().interruption);
    return library().connectionThread && ConnectionHelper::send(connection, payload);
}

bool get_from_device(unsigned int timeout, QIODevice *connection, QByteArray *payload)
{
    const WaitScope scope(library().interruption);
    return library().connectionThread && ConnectionHelper::receive(timeout, connection, payload);
}

void closeConnection()
{
    if (!library().activeDevice.isEmpty())
        onConnectionThread([] { ConnectionHelper::closeConnection(library().activeDevice); });
}

void setConnection(QIODevice *device)
{
    LibraryState &state = library();
    if (state.activeDevice.isEmpty()) {
        disconnectFromDevice(device);
        device->deleteLater();
        return;
    }
    closeConnection();
    state.connections.erase(state.activeDevice);
    state.connections.emplace(state.activeDevice, device);
    if (auto *const socket = qobject_cast<QTcpSocket *>(device))
        prepareSocket(*socket);
    QCoreApplication *const application = QCoreApplication::instance();
    if (application && QThread::currentThread() == application->thread())
        device->setParent(application);
    device->setObjectName(isSpecialApplication() ? u"__--dcn--__"_s
                                                 : QString::fromLatin1(state.activeDevice.constData()));
}

} // namespace Velno::Ext
