// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/control_client.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <array>
#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr size_t atOnce = 512;              // bytes read in one turn, so that others have theirs
constexpr qsizetype mostUnsent = 64 * 1024; // bytes of answers that wait for a client to read
constexpr std::chrono::seconds farewellTime(1);

bool isNothingNow()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

ControlClient::ControlClient(int socket, const Obey &obey, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_obey(obey)
    , m_reads(socket, QSocketNotifier::Read)
    , m_writes(socket, QSocketNotifier::Write)
{
    m_writes.setEnabled(false);
    connect(&m_reads, &QSocketNotifier::activated, this, &ControlClient::read);
    connect(&m_writes, &QSocketNotifier::activated, this, &ControlClient::work);
}

ControlClient::~ControlClient()
{
    m_reads.setEnabled(false);
    m_writes.setEnabled(false);
    ::close(m_socket);
}

void ControlClient::read()
{
    std::array<char, atOnce> bytes;
    const ssize_t count = recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count < 0 && isNothingNow())
        return;
    emit heard();
    if (count <= 0)
        m_inputEnded = true;
    else if (!m_turnedAway)
        m_input.append(bytes.data(), qsizetype(count));
    work();
}

/** Obeys whole lines as long as their answers have room, and sends what can be sent. */
void ControlClient::work()
{
    send();
    while (!m_turnedAway && m_output.size() < mostUnsent) {
        const qsizetype end = m_input.indexOf('\n');
        if (end > longestLine || (end < 0 && m_input.size() > longestLine))
            turnAway(u"a line is longer than %1 bytes"_s.arg(longestLine));
        if (end < 0 || m_turnedAway)
            break;
        const QByteArray line = m_input.first(end);
        m_input.remove(0, end + 1);
        takeLine(line);
        send();
    }
    const bool isFull = m_output.size() >= mostUnsent;
    m_reads.setEnabled(!m_inputEnded && !isFull);
    m_writes.setEnabled(!m_output.isEmpty());
    if (m_output.isEmpty() && (m_inputEnded || m_turnedAway))
        bidFarewell();
}

void ControlClient::takeLine(const QByteArray &bytes)
{
    const QString line = QString::fromUtf8(bytes).trimmed();
    // A page in a browser may send requests to any port of its computer, with lines of its own in them.
    if (line.contains(" HTTP/"_L1))
        return turnAway(u"this is no web server"_s);
    if (!line.isEmpty())
        answer(m_obey(line));
}

void ControlClient::turnAway(const QString &why)
{
    m_turnedAway = true;
    m_input.clear();
    answer(why);
    send();
}

void ControlClient::answer(const QString &error)
{
    QJsonObject object{{u"ok"_s, error.isEmpty()}};
    if (!error.isEmpty())
        object.insert(u"error"_s, error);
    m_output += QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

void ControlClient::send()
{
    while (!m_output.isEmpty()) {
        const ssize_t count = ::send(m_socket, m_output.constData(), size_t(m_output.size()), MSG_NOSIGNAL);
        if (count < 0 && !isNothingNow()) { // it is gone
            m_output.clear();
            m_input.clear();
            m_inputEnded = true;
        }
        if (count <= 0)
            return;
        m_output.remove(0, count);
    }
}

/**
 * Closes. What a client that was turned away still sends is read and thrown away for a moment: a connection
 * that is closed with bytes unread takes the last answer away with it.
 */
void ControlClient::bidFarewell()
{
    if (m_inputEnded) {
        m_reads.setEnabled(false);
        emit ended();
    } else if (!std::exchange(m_saidFarewell, true)) {
        shutdown(m_socket, SHUT_WR);
        QTimer::singleShot(farewellTime, this, &ControlClient::ended);
    }
}

} // namespace Simulator
