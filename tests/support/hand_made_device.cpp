// SPDX-License-Identifier: Apache-2.0

#include "tests/support/hand_made_device.h"

#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/test_support.h"

#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QtEndian>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace TestSupport {

using namespace Velno;
using namespace Velno::GMP;

HandMadeDevice::HandMadeDevice(const QByteArray &serialNo)
    : m_serialNo(serialNo)
{
    record.terminalId = "001A2B3C4D5E";
    record.registerData = serialNo;
    record.randomDFC10D = QByteArray(16, '\x11');
    record.randomDFC10E = QByteArray(16, '\x2E');
    record.hmacKey = QByteArray(32, 'h');
    record.kcvIv = QByteArray(16, 'k');
    record.aesKey = QByteArray(32, 'a');
}

HandMadeDevice::~HandMadeDevice()
{
    stop();
}

void HandMadeDevice::pairAndServe(quint16 port, int times, HandMadeRegister::Hook hook)
{
    run(port, [this, times, hook = std::move(hook)] {
        announce();
        exchangeKeys(hook);
        for (int i = 0; i < times && !m_stop; ++i)
            serveOne();
    });
}

void HandMadeDevice::serve(quint16 port, int times)
{
    run(port, [this, times] {
        for (int i = 0; i < times && !m_stop; ++i)
            serveOne();
    });
}

void HandMadeDevice::playRelay(quint16 port)
{
    m_relayPort = port;
}

void HandMadeDevice::run(quint16 port, const std::function<void()> &contactsInOrder)
{
    stop();
    m_port = port;
    m_stop = false;
    m_relayReady = false;
    m_thread = std::thread([this, contactsInOrder] {
        if (m_relayPort != 0)
            listenAsRelay();
        m_relayReady = true;
        m_relayReady.notify_all();
        contactsInOrder();
        m_relay.reset();
    });
    m_relayReady.wait(false);
}

void HandMadeDevice::listenAsRelay()
{
    // The port is fixed: where the tests have no network of their own, others may hold it for a while.
    const QDeadlineTimer deadline(portIsFreeAgain);
    m_relay = std::make_unique<QTcpServer>();
    while (!m_relay->listen(QHostAddress(QString::fromUtf8(VELNO_TSM_RELAY_ADDRESS)), m_relayPort)) {
        if (m_relay->serverError() != QAbstractSocket::AddressInUseError || deadline.hasExpired())
            qFatal("relay port %d: %s", m_relayPort, qPrintable(m_relay->errorString()));
        QThread::msleep(10);
    }
}

void HandMadeDevice::stop()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

void HandMadeDevice::setAnswer(const Answer &answer)
{
    const QMutexLocker lock(&m_mutex);
    m_answer = answer;
    m_closesBehind = false;
}

void HandMadeDevice::answerPlain(const QByteArray &plaintext)
{
    setAnswer([frame = framed(sealed(plaintext))](const QByteArray &) { return QList{frame}; });
}

void HandMadeDevice::answerInTurn(const QList<QByteArray> &plaintexts)
{
    QList<QList<QByteArray>> answers;
    for (const QByteArray &plaintext : plaintexts)
        answers << QList{plaintext.isEmpty() ? QByteArray() : framed(sealed(plaintext))};
    setAnswer([answers](const QByteArray &) mutable {
        return answers.isEmpty() ? QList<QByteArray>() : answers.takeFirst();
    });
}

void HandMadeDevice::answerAndClose(const QByteArray &plaintext)
{
    answerPlain(plaintext);
    const QMutexLocker lock(&m_mutex);
    m_closesBehind = true;
}

void HandMadeDevice::answerByClosing()
{
    setAnswer([](const QByteArray &) { return QList<QByteArray>(); });
}

QList<QByteArray> HandMadeDevice::commands()
{
    const QMutexLocker lock(&m_mutex);
    return m_commands;
}

void HandMadeDevice::forgetCommands()
{
    const QMutexLocker lock(&m_mutex);
    m_commands.clear();
}

QByteArray HandMadeDevice::withElements(const QByteArray &run) const
{
    return GMP3::frame(true, None, run, m_serialNo.constData());
}

QByteArray HandMadeDevice::sealed(const QByteArray &plaintext) const
{
    const QMutexLocker lock(&m_sealing);
    return withElements(sealedElements(record, plaintext));
}

QByteArray HandMadeDevice::opened(const QByteArray &frame) const
{
    const QMutexLocker lock(&m_sealing);
    QByteArray plaintext;
    return unseal(record, frame, &plaintext) == 0 ? plaintext : QByteArray();
}

QByteArray HandMadeDevice::framed(const QByteArray &payload)
{
    QByteArray prefix(4, Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), prefix.data());
    return prefix + payload;
}

bool HandMadeDevice::await(QTcpSocket &socket, qint64 count)
{
    while (socket.bytesAvailable() < count) {
        if (m_stop || (!socket.waitForReadyRead(50) && socket.state() != QAbstractSocket::ConnectedState))
            return false;
    }
    return true;
}

QByteArray HandMadeDevice::readPayload(QTcpSocket &socket)
{
    if (!await(socket, 4))
        return {};
    const qint64 length = qFromBigEndian<quint32>(socket.read(4).constData());
    return await(socket, length) ? socket.read(length) : QByteArray();
}

std::unique_ptr<QTcpSocket> HandMadeDevice::nextContact()
{
    if (m_relayPort != 0)
        return contactThroughRelay();
    auto socket = std::make_unique<QTcpSocket>();
    while (!m_stop) {
        socket->connectToHost(address, m_port);
        if (socket->waitForConnected(5000))
            break;
        std::this_thread::yield(); // nobody listens yet
    }
    ++contacts;
    return socket;
}

std::unique_ptr<QTcpSocket> HandMadeDevice::contactThroughRelay()
{
    while (!m_stop && !m_relay->hasPendingConnections() && !m_relay->waitForNewConnection(50)) {
    }
    std::unique_ptr<QTcpSocket> socket(m_relay->nextPendingConnection());
    if (!socket)
        return std::make_unique<QTcpSocket>();
    socket->setParent(nullptr);
    ++contacts;
    if (await(*socket, 12))
        answerName(*socket);
    return socket;
}

void HandMadeDevice::answerName(QTcpSocket &socket)
{
    // A corked socket keeps its last bytes until it is closed; without delay each run is a segment.
    const int corked = leavesWithEcho;
    setsockopt(int(socket.socketDescriptor()), IPPROTO_TCP, TCP_CORK, &corked, sizeof corked);
    socket.setSocketOption(QAbstractSocket::LowDelayOption, !leavesWithEcho);
    qsizetype size = 0;
    for (const QByteArray &run : echo(socket.read(12))) {
        size += run.size();
        socket.write(run);
        socket.flush();
    }
    if (leavesWithEcho || size < 12)
        socket.disconnectFromHost();
}

void HandMadeDevice::announce()
{
    const auto socket = nextContact();
    announcement = readPayload(*socket);
    await(*socket, 1); // until the other side closes
}

void HandMadeDevice::exchangeKeys(const HandMadeRegister::Hook &hook)
{
    const auto socket = nextContact();
    if (m_stop)
        return; // nobody was there, so no key is needed
    QByteArray random;
    HandMadeRegister reg([&](HandMadeRegister &self, const Request &request, int count) {
        if (request.kind == PairingStart)
            random = valueOf(request.fields, fieldTag(RequesterRandom));
        if (hook)
            return hook(self, request, count);
        Fields fields = self.honestAnswer(request);
        replaceValue(fields, fieldTag(EcrIdentity), m_serialNo);
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    });
    reg.converse(*socket);
    record.randomDFC10D = random;
    record.randomDFC10E = QByteArray(16, 'E');
    record.aesKey = reg.aesKey;
    record.hmacKey = reg.hmacKey;
    appHash = reg.appHash;
}

void HandMadeDevice::answerTo(QTcpSocket &socket, const QByteArray &payload)
{
    QList<QByteArray> runs;
    bool closes = false;
    {
        const QMutexLocker lock(&m_mutex);
        m_commands.append(opened(payload));
        runs = m_answer ? m_answer(payload) : QList<QByteArray>();
        closes = m_closesBehind;
    }
    const int corked = closes; // its last bytes leave with its end
    setsockopt(int(socket.socketDescriptor()), IPPROTO_TCP, TCP_CORK, &corked, sizeof corked);
    for (const QByteArray &run : runs) {
        socket.write(run);
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(1000)) {
        }
    }
    if (closes || runs.isEmpty())
        socket.disconnectFromHost();
}

void HandMadeDevice::serveOne()
{
    const auto socket = nextContact();
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    for (QByteArray payload; !(payload = readPayload(*socket)).isEmpty();)
        answerTo(*socket, payload);
}

} // namespace TestSupport
