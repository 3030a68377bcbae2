// SPDX-License-Identifier: Apache-2.0

#include "tests/support/talker.h"

#include "tests/support/hand_made_register.h"
#include "tests/support/library_test.h"

#include <QDeadlineTimer>
#include <QTcpSocket>
#include <QTest>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace TestSupport {

namespace {

bool isOpen(const QTcpSocket &socket)
{
    return socket.state() == QAbstractSocket::ConnectedState;
}

} // namespace

void Talker::talk(quint16 port, const QByteArray &opening, const QByteArray &again)
{
    QTcpSocket socket;
    do {
        socket.connectToHost(u"127.0.0.1"_s, port);
    } while (!m_stop && !socket.waitForConnected(int(patience)));
    while (!m_stop && !socket.waitForReadyRead(50) && isOpen(socket)) {
    }
    socket.write(opening);
    while (!m_stop && isOpen(socket)) {
        socket.write(again);
        socket.waitForBytesWritten(int(patience));
        isTalking = true;
        socket.waitForReadyRead(1);
        socket.readAll();
    }
    isClosed = !isOpen(socket);
}

bool waitUntil(const std::function<bool()> &isSo)
{
    const QDeadlineTimer deadline{qint64(patience)};
    while (!isSo()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(1ms); // between two looks
    }
    return true;
}

int connectTo(quint16 port)
{
    return velnoext_initialize(5, serial, "127.0.0.1", port, forEver);
}

int loginWithoutLimit()
{
    return velnoext_login(forEver);
}

void addNuisanceRows()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::addColumn<QByteArray>("again");

    for (const Nuisance &nuisance : nuisances)
        QTest::newRow(nuisance.name) << nuisance.opening << nuisance.again;
}

QByteArray wrongKind()
{
    return HandMadeRegister::frameOf(Velno::GMP::PairingKeyExchange, {{hex("DFEF06"), "00"}});
}

} // namespace TestSupport
