// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/control_address.h"
#include "simulator/common/control_client.h"

#include <QList>

namespace Simulator {

/**
 * A socket at which several clients tell the program what to do, line by line as on standard input; nobody is
 * asked who he is. Delivered by the event loop, and nothing blocks: a client that does not read, sends
 * without an end, or comes too often costs a bounded amount of memory. When there are too many, the one that
 * has been silent for longest is closed.
 */
class ControlServer : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype mostClients = 32;

    explicit ControlServer(Obey obey, QObject *parent = nullptr);
    ~ControlServer() override;

    /**
     * A Unix socket is its owner's alone (0600), takes the place of one that nobody listens at any more, and
     * goes with this object.
     *
     * @return an empty text, or why nobody can be heard there
     */
    QString listen(const ControlAddress &address);

    /** Where clients come, with the port in place of 0; empty: nowhere. */
    QString place() const;

private:
    bool bind(const ControlAddress &address);
    void admit();
    void moveBack(ControlClient *client);
    void forget(ControlClient *client);

    Obey m_obey;
    int m_socket = -1;
    QByteArray m_path; ///< of the Unix socket
    QSocketNotifier *m_comes = nullptr;
    QList<ControlClient *> m_clients; ///< the one that was heard last is the last
};

} // namespace Simulator
