// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bench/bare_envelope.h"

#include <QTcpSocket>
#include <QThread>

/** Lives on a thread of its own and owns the socket; called by the names of its methods. */
class HopWorker : public QObject
{
    Q_OBJECT

public:
    /** Takes the first peer that connects to a port of this machine. */
    Q_INVOKABLE bool open(quint16 port);
    Q_INVOKABLE void close();
    Q_INVOKABLE bool send(const QByteArray &frame);
    Q_INVOKABLE bool receive(quint32 timeout, QByteArray *payload);

private:
    std::unique_ptr<QTcpSocket> m_socket;
};

/**
 * A command as one would write it with a socket on a worker thread: two blocking queued calls by name, one to
 * send and one to receive, and crypto contexts that are kept.
 */
class HopClient
{
public:
    /** @param record  of a register that is paired and comes to the port */
    HopClient(const Velno::GMP::MatchExt &record, quint16 port);
    ~HopClient();
    HopClient(const HopClient &) = delete;
    HopClient &operator=(const HopClient &) = delete;

    bool currentZ(int *z);

private:
    BareEnvelope m_envelope;
    QThread m_thread;
    HopWorker m_worker;
};
