// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace Simulator {

/**
 * Watches any number of sockets through one descriptor of the kernel, so that idle ones cost nothing; an
 * event loop looks at each of its own notifiers in every round.
 */
class Poller : public QObject
{
    Q_OBJECT

public:
    /** Names a socket in ready(); never 0, and not used again for another socket. */
    using Key = quint64;

    explicit Poller(QObject *parent = nullptr);
    ~Poller() override;

    /** Changes what ready() tells of a socket from `before` to `after`: EPOLL flags; 0 is nothing at all. */
    void change(int socket, Key key, quint32 before, quint32 after);

signals:
    /** Repeated as long as it holds. May still come for a socket of the same round that is closed by now. */
    void ready(quint64 key);

private:
    void deliver();

    int m_kernel;
    QSocketNotifier m_notifier;
};

} // namespace Simulator
