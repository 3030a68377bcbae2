// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay.h"

#include "simulator/common/descriptors.h"
#include "translations/spoken.h"

#include <algorithm>
#include <sys/epoll.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Simulator {

namespace {

constexpr auto namingTime = 5s; // for the 12 bytes
// A library that names a register reads for 5 s; one that has just been joined needs a moment to be back.
constexpr auto expectingTime = 2s;
constexpr auto misledTime = 60s;
constexpr auto stallTime = 30s;
constexpr auto sweepInterval = 100ms;

constexpr int backlog = 4096; // a thousand registers may come back in the same moment

QString place(const QHostAddress &address, quint16 port)
{
    const bool ipv6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    return (ipv6 ? u"[%1]:%2"_s : u"%1:%2"_s).arg(address.toString(), QString::number(port));
}

QString progressOf(const RelayConnection &connection)
{
    return u"%1 of the %2 bytes of a name"_s.arg(connection.name().size()).arg(RelayConnection::nameSize);
}

} // namespace

struct Relay::Peer
{
    Peer(int socket, Poller::Key key, Poller &poller, Role itsRole, quint16 itsPort)
        : connection(socket, key, poller)
        , role(itsRole)
        , port(itsPort)
    {
    }

    RelayConnection connection;
    Role role;
    quint16 port; ///< of ours
    Stage stage = Stage::Naming;
    QDeadlineTimer deadline{QDeadlineTimer::Forever};
    std::shared_ptr<RelayPair> pair; ///< shared by the two that are joined
    Poller::Key partner = 0;
};

Relay::Relay(const RelayOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_events(options.json)
    , m_mostPeers(roomForConnections())
    , m_book(qsizetype(m_mostPeers), [this] { return m_clock.elapsed(); })
{
    m_clock.start();
    m_sweep.setInterval(sweepInterval);
    connect(&m_sweep, &QTimer::timeout, this, &Relay::sweep);
    connect(&m_poller, &Poller::ready, this, &Relay::takeReady);
}

Relay::~Relay() = default;

QString Relay::start(const QString &control)
{
    const std::array ports{m_options.applicationPorts[0], m_options.applicationPorts[1],
                           m_options.registerPort};
    for (size_t i = 0; i < ports.size(); ++i) {
        const Role role = i < 2 ? Role::Application : Role::Register;
        if (const QString error = open(m_doors[i], ports[i], role); !error.isEmpty())
            return error;
    }
    const auto placeOf = [](const Door &door) { return place(door.serverAddress(), door.serverPort()); };
    EventFields fields{{"applications", QStringList{placeOf(m_doors[0]), placeOf(m_doors[1])}},
                       {"registers", placeOf(m_doors[2])},
                       {"faults", m_options.faults.names()}};
    if (!control.isEmpty())
        fields.append({"control", control});
    m_events.write("ready", fields);
    return {};
}

QString Relay::open(Door &door, quint16 port, Role role)
{
    door.setListenBacklogSize(backlog);
    if (!door.listen(m_options.address, port))
        return Spoken::tr("cannot listen on %1: %2").arg(place(m_options.address, port), door.errorString());
    connect(&door, &Door::entered, this,
            [this, &door, role](int socket) { admit(socket, role, door.serverPort()); });
    connect(&door, &Door::acceptError, this, [&door] {
        // The door has stopped accepting: the system is short of descriptors or memory. It tries again soon.
        QTimer::singleShot(sweepInterval, &door, &Door::resumeAccepting);
    });
    return {};
}

void Relay::admit(int socket, Role role, quint16 port)
{
    if (m_peers.size() >= m_mostPeers) {
        ::close(socket);
        m_events.write("refused", {{"port", port}, {"reason", u"too many connections"_s}});
        return;
    }
    const Poller::Key key = ++m_lastKey;
    Peer &peer =
        *m_peers.emplace(key, std::make_unique<Peer>(socket, key, m_poller, role, port)).first->second;
    giveTime(peer, QDeadlineTimer(namingTime));
    peer.connection.watch(EPOLLIN);
}

void Relay::takeReady(Poller::Key key)
{
    const auto found = m_peers.find(key);
    if (found == m_peers.end())
        return;
    Peer &peer = *found->second;
    switch (peer.stage) {
    case Stage::Naming:
        return readName(peer);
    case Stage::Joined:
        return pump(peer);
    case Stage::Waiting:
        m_book.leave(peer.connection.name());
        m_events.write(
            "left", {{"serial", printable(peer.connection.name())}, {"reason", u"closed by the register"_s}});
        return forget(key);
    case Stage::Misled:
        return forget(key);
    case Stage::Expecting:
        return; // not watched
    }
}

void Relay::readName(Peer &peer)
{
    switch (peer.connection.readName()) {
    case RelayConnection::Naming::Unfinished:
        return;
    case RelayConnection::Naming::Ended:
        return refuse(peer, u"closed after %1"_s.arg(progressOf(peer.connection)));
    case RelayConnection::Naming::Complete:
        if (peer.role == Role::Register)
            return takeRegister(peer);
        return takeApplication(peer);
    }
}

/** A newer register of the same name takes the older one's place: the older one's line may be dead. */
void Relay::takeRegister(Peer &peer)
{
    const QByteArray name = peer.connection.name();
    if (!m_book.hasRoom(name))
        return refuse(peer, u"too many registers"_s);
    peer.stage = Stage::Waiting;
    peer.connection.watch(EPOLLRDHUP);
    giveTime(peer, QDeadlineTimer::Forever);
    if (const Poller::Key older = m_book.wait(name, peer.connection.key())) {
        forget(older);
        m_events.write("left", {{"serial", printable(name)}, {"reason", u"a newer one has come"_s}});
    }
    m_events.write("waiting", {{"serial", printable(name)}});
    meet(name);
}

/** What follows the name belongs to the register: it stays in the kernel until the two are joined. */
void Relay::takeApplication(Peer &peer)
{
    const QByteArray name = peer.connection.name();
    if (!m_book.isExpected(name))
        return turnAway(peer, u"no such register"_s);
    peer.stage = Stage::Expecting;
    peer.connection.watch(0);
    giveTime(peer, QDeadlineTimer(expectingTime));
    m_book.expect(name, peer.connection.key());
    if (m_book.waiting(name) == 0)
        m_events.write("expecting", {{"serial", printable(name)}, {"port", peer.port}});
    meet(name);
}

/** Brings the register that waits under this name together with the application that has waited longest. */
void Relay::meet(const QByteArray &name)
{
    while (m_book.waiting(name) != 0 && m_book.firstExpecting(name) != 0) {
        Peer &application = *m_peers.at(m_book.firstExpecting(name));
        m_book.expectNoMore(name, application.connection.key());
        if (!mislead(application))
            join(application, *m_peers.at(m_book.waiting(name)));
    }
}

/** @return whether a fault has happened to the application, so that it must not be joined */
bool Relay::mislead(Peer &application)
{
    const QByteArray &name = application.connection.name();
    QByteArray echo = name;
    if (m_options.faults.has(RelayFault::WrongEcho))
        echo.back() = char(echo.back() ^ 1);
    if (m_options.faults.has(RelayFault::ShortEcho))
        echo.chop(1);
    if (m_options.faults.has(RelayFault::NoEcho))
        echo.clear();
    if (echo == name)
        return false;
    if (!echo.isEmpty())
        application.connection.write(echo.constData(), echo.size());
    application.stage = Stage::Misled;
    application.connection.watch(EPOLLRDHUP);
    giveTime(application, QDeadlineTimer(misledTime));
    m_events.write("misled", {{"serial", printable(name)}, {"echo", printable(echo)}});
    return true;
}

void Relay::join(Peer &application, Peer &cashRegister)
{
    const QByteArray &name = application.connection.name();
    const RelayFaults &faults = m_options.faults;
    std::optional<qint64> cutAfter;
    if (faults.has(RelayFault::Drop) || faults.has(RelayFault::DropAfter))
        cutAfter = faults.has(RelayFault::Drop) ? 0 : faults.number(RelayFault::DropAfter);
    m_book.join(name);
    const auto pair =
        std::make_shared<RelayPair>(application.connection, cashRegister.connection, name, cutAfter);
    for (Peer *const peer : {&application, &cashRegister}) {
        peer->stage = Stage::Joined;
        peer->pair = pair;
        giveTime(*peer, QDeadlineTimer::Forever);
    }
    application.partner = cashRegister.connection.key();
    cashRegister.partner = application.connection.key();
    m_events.write("joined", {{"serial", printable(name)}, {"port", application.port}});
    pump(application);
}

void Relay::pump(Peer &peer)
{
    RelayPair &pair = *peer.pair;
    pair.pump();
    if (pair.hasEnded())
        return end(peer, pair.reason());
    Peer &application = peer.role == Role::Application ? peer : *m_peers.at(peer.partner);
    giveTime(application, pair.mayStall() ? QDeadlineTimer(stallTime) : QDeadlineTimer::Forever);
}

void Relay::end(Peer &peer, const QString &reason)
{
    const QByteArray name = peer.connection.name();
    const auto pair = peer.pair;
    const Poller::Key partner = peer.partner;
    m_book.part(name);
    forget(peer.connection.key());
    forget(partner);
    m_events.write("ended", {{"serial", printable(name)},
                             {"reason", reason},
                             {"to_register", pair->toRegister()},
                             {"to_application", pair->toApplication()}});
}

void Relay::turnAway(Peer &application, const QString &reason)
{
    m_events.write("unknown", {{"serial", printable(application.connection.name())},
                               {"port", application.port},
                               {"reason", reason}});
    forget(application.connection.key());
}

void Relay::refuse(Peer &peer, const QString &reason)
{
    m_events.write("refused", {{"port", peer.port}, {"reason", reason}});
    forget(peer.connection.key());
}

void Relay::forget(Poller::Key key)
{
    m_hurried.erase(key);
    m_peers.erase(key);
}

void Relay::giveTime(Peer &peer, QDeadlineTimer deadline)
{
    const bool hurried = !deadline.isForever();
    if (!hurried && peer.deadline.isForever())
        return;
    peer.deadline = deadline;
    if (hurried)
        m_hurried.insert(peer.connection.key());
    else
        m_hurried.erase(peer.connection.key());
    if (hurried && !m_sweep.isActive())
        m_sweep.start();
}

void Relay::sweep()
{
    const std::vector<Poller::Key> keys(m_hurried.cbegin(), m_hurried.cend());
    for (const Poller::Key key : keys)
        if (const auto found = m_peers.find(key);
            found != m_peers.end() && found->second->deadline.hasExpired())
            takeDeadline(*found->second);
    if (m_hurried.empty())
        m_sweep.stop();
}

void Relay::takeDeadline(Peer &peer)
{
    switch (peer.stage) {
    case Stage::Naming:
        return refuse(peer, u"silent after %1"_s.arg(progressOf(peer.connection)));
    case Stage::Expecting:
        m_book.expectNoMore(peer.connection.name(), peer.connection.key());
        return turnAway(peer, u"the register did not come back"_s);
    case Stage::Joined:
        return end(peer, u"nothing moved any more"_s);
    case Stage::Waiting: // may wait for ever
        return;
    case Stage::Misled:
        return forget(peer.connection.key());
    }
}

QString Relay::obey(const QString &line)
{
    if (line == u"quit") {
        stop();
        return {};
    }
    if (const QString error = m_options.faults.obey(line); !error.isEmpty())
        return error;
    m_events.write("fault", {{"active", m_options.faults.names()}});
    return {};
}

void Relay::takeLine(const QString &line)
{
    if (const QString error = obey(line); !error.isEmpty())
        m_events.write("error", {{"message", error}});
}

void Relay::stop()
{
    if (std::exchange(m_stopped, true))
        return;
    for (Door &door : m_doors)
        door.close();
    m_hurried.clear();
    m_peers.clear();
    m_events.write("stopped");
    emit finished();
}

} // namespace Simulator
