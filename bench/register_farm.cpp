// SPDX-License-Identifier: Apache-2.0

#include "bench/register_farm.h"

#include "ExtDevice/gmp3/envelope.h"
#include "bench/bare_socket.h"
#include "bench/many_descriptors.h"

#include <QDataStream>
#include <QIODevice>
#include <QtEndian>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr qsizetype nameSize = 12;
constexpr qsizetype deviceLengthSize = 4;
constexpr qsizetype keyLengthSize = 2;
constexpr int backlog = 64;

void sendAll(int descriptor, const QByteArray &bytes)
{
    // Short answers to a peer that waits for them: they always fit the socket's buffer.
    require(send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size(),
            "the farm could not answer");
}

int listenOn(uint16_t port)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
                listen(listener, backlog) == 0,
            "the relay's port is taken");
    return listener;
}

void watch(int epoll, int descriptor)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    require(epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) == 0, "a connection cannot be watched");
}

/** Takes `count` bytes off the front; empty while they have not all come. */
QByteArray takeFront(QByteArray &bytes, qsizetype count)
{
    if (bytes.size() < count)
        return {};
    const QByteArray front = bytes.first(count);
    bytes.remove(0, count);
    return front;
}

QByteArray zNumberReply()
{
    QByteArray reply;
    QDataStream stream(&reply, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_6);
    stream << true << qint32(42);
    return reply;
}

} // namespace

RegisterFarm::RegisterFarm(uint16_t port, const std::string &authority)
    : m_epoll(epoll_create1(0))
    , m_listener(listenOn(port))
    , m_credentials(QString::fromStdString(authority + "/register"))
{
    allowManyDescriptors();
    watch(m_epoll, m_listener);
}

void RegisterFarm::run()
{
    std::array<epoll_event, 64> events;
    for (;;) {
        const int count = epoll_wait(m_epoll, events.data(), int(events.size()), -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[size_t(i)].data.fd;
            if (descriptor == m_listener)
                accept();
            else
                take(descriptor);
        }
    }
}

void RegisterFarm::accept()
{
    const int descriptor = ::accept(m_listener, nullptr, nullptr);
    require(descriptor >= 0, "the farm could not accept");
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_lines[descriptor] = {};
    watch(m_epoll, descriptor);
}

void RegisterFarm::take(int descriptor)
{
    std::array<char, 4096> bytes;
    const ssize_t count = recv(descriptor, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        m_lines.erase(descriptor);
        close(descriptor);
        return;
    }
    Line &line = m_lines[descriptor];
    line.received.append(bytes.data(), qsizetype(count));
    while (talkOnce(descriptor, line)) {
    }
}

/** Handles the next whole thing that was said, if there is one. */
bool RegisterFarm::talkOnce(int descriptor, Line &line)
{
    QByteArray &received = line.received;
    if (line.serialNo.isEmpty()) {
        line.serialNo = takeFront(received, nameSize);
        if (!line.serialNo.isEmpty())
            sendAll(descriptor, line.serialNo);
        return !line.serialNo.isEmpty();
    }
    if (received.size() < deviceLengthSize)
        return false;
    const bool isDeviceFrame = received.startsWith(QByteArray(2, '\0'));
    const qsizetype size = isDeviceFrame ? deviceLengthSize + qFromBigEndian<quint32>(received.constData())
                                         : keyLengthSize + qFromBigEndian<quint16>(received.constData());
    const QByteArray frame = takeFront(received, size);
    if (frame.isEmpty())
        return false;
    if (isDeviceFrame)
        answer(descriptor, line.serialNo, frame.sliced(deviceLengthSize));
    else
        pair(descriptor, line.serialNo, frame);
    return true;
}

Simulator::PairingResponder &RegisterFarm::responderOf(const QByteArray &serialNo)
{
    auto &responder = m_pairing[serialNo];
    if (!responder) {
        responder =
            std::make_shared<Simulator::PairingResponder>(serialNo, m_credentials, QByteArray(), m_faults);
        responder->begin();
    }
    return *responder;
}

void RegisterFarm::pair(int descriptor, const QByteArray &serialNo, const QByteArray &frame)
{
    Simulator::PairingResponder &responder = responderOf(serialNo);
    const auto [kind, refusal] = responder.read(frame);
    require(refusal.isEmpty(), "the farm could not read a pairing request");
    const auto reply = responder.answer(kind);
    sendAll(descriptor, reply.frame);
    if (!reply.paired)
        return;
    m_records[serialNo] = responder.takeKeys();
    m_pairing.remove(serialNo);
}

void RegisterFarm::answer(int descriptor, const QByteArray &serialNo, const QByteArray &frame)
{
    const auto record = m_records.constFind(serialNo);
    if (record == m_records.cend())
        return; // the announcement that comes before a pairing
    QByteArray request;
    require(Velno::GMP::unseal(*record, frame, &request) == 0, "the farm could not open a command");
    static const QByteArray plaintext = zNumberReply();
    const QByteArray reply = Velno::GMP::seal(*record, plaintext);
    QByteArray framed(deviceLengthSize, Qt::Uninitialized);
    qToBigEndian(quint32(reply.size()), framed.data());
    sendAll(descriptor, framed + reply);
}
