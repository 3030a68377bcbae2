// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/control_line.h"

#include "translations/spoken.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qsizetype longestAnswer = 64 * 1024; // bytes

/** Non-blocking, and closed at the end. */
class Socket
{
public:
    explicit Socket(int family)
        : m_descriptor(socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
    }
    ~Socket() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(Socket)

    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

ControlAnswer unanswered(const QString &why)
{
    return {ControlAnswer::Unanswered, why};
}

ControlAnswer systemFailed(int error)
{
    return unanswered(QString::fromLocal8Bit(std::strerror(error)));
}

/** Waits until the socket is ready. @return Obeyed when it is */
ControlAnswer wait(int socket, short events, const QDeadlineTimer &deadline, int interrupt)
{
    std::array descriptors{pollfd{socket, events, 0}, pollfd{interrupt, POLLIN, 0}};
    const qint64 left = std::min<qint64>(deadline.remainingTime(), std::numeric_limits<int>::max());
    const int ready = poll(descriptors.data(), descriptors.size(), int(left));
    if (ready == 0)
        return unanswered(Spoken::tr("no answer came in time"));
    if (ready < 0 && errno != EINTR)
        return systemFailed(errno);
    return {descriptors[1].revents != 0 ? ControlAnswer::Stopped : ControlAnswer::Obeyed};
}

/** @return Obeyed when it is connected */
ControlAnswer connectTo(const Simulator::ControlAddress &address, int socket, const QDeadlineTimer &deadline,
                        int interrupt)
{
    if (connect(socket, address.forSystem(), address.size) == 0)
        return {};
    if (errno != EINPROGRESS)
        return systemFailed(errno);
    if (const ControlAnswer waited = wait(socket, POLLOUT, deadline, interrupt);
        waited.outcome != ControlAnswer::Obeyed)
        return waited;
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
    return error == 0 ? ControlAnswer() : systemFailed(error);
}

ControlAnswer answerIn(const QByteArray &line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const QJsonValue ok = object.value(u"ok"_s);
    if (!ok.isBool())
        return unanswered(Spoken::tr("what answers there is no simulator"));
    return ok.toBool() ? ControlAnswer()
                       : ControlAnswer{ControlAnswer::Refused, object.value(u"error"_s).toString()};
}

} // namespace

ControlAnswer sayToSimulator(const Simulator::ControlAddress &address, const QString &line,
                             const QDeadlineTimer &deadline, int interrupt)
{
    const Socket socket(address.bytes.ss_family);
    ControlAnswer answer = connectTo(address, socket, deadline, interrupt);
    const QByteArray said = line.toUtf8() + '\n'; // short: a fresh connection takes it whole
    if (answer.outcome == ControlAnswer::Obeyed &&
        send(socket, said.constData(), size_t(said.size()), MSG_NOSIGNAL) != said.size())
        answer = systemFailed(errno);
    QByteArray heard;
    while (answer.outcome == ControlAnswer::Obeyed) {
        if (heard.contains('\n'))
            return answerIn(heard.first(heard.indexOf('\n')));
        if (heard.size() > longestAnswer)
            return answerIn({});
        answer = wait(socket, POLLIN, deadline, interrupt);
        std::array<char, 4096> bytes;
        const ssize_t count = recv(socket, bytes.data(), bytes.size(), 0);
        if (count > 0)
            heard.append(bytes.data(), count);
        else if (count == 0)
            return unanswered(Spoken::tr("the connection was closed without an answer"));
        else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
            return systemFailed(errno);
    }
    return answer;
}

} // namespace VelnoCtl
