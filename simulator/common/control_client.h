// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <functional>

namespace Simulator {

/** Does what a line says. @return an empty text, or what was wrong and what is accepted */
using Obey = std::function<QString(const QString &line)>;

/**
 * One client of a ControlServer. Lines that it sends are obeyed in order, and each is answered with one line:
 * {"ok":true}, or {"ok":false,"error":"..."}. Whoever sends too long a line, or speaks HTTP as a browser's
 * page might, hears so and is closed; whoever does not read his answers is not read from.
 */
class ControlClient : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype longestLine = 4096; ///< bytes, without its end

    /** @param socket  connected and non-blocking; closed with this object */
    ControlClient(int socket, const Obey &obey, QObject *parent);
    ~ControlClient() override;

signals:
    void heard(); ///< bytes have come
    void ended();

private:
    void read();
    void work();
    void takeLine(const QByteArray &line);
    void turnAway(const QString &why);
    void answer(const QString &error);
    void send();
    void bidFarewell();

    int m_socket;
    const Obey &m_obey;
    QSocketNotifier m_reads;
    QSocketNotifier m_writes;
    QByteArray m_input;
    QByteArray m_output;
    bool m_inputEnded = false; ///< the client sends nothing more
    bool m_turnedAway = false; ///< what it still sends is not looked at
    bool m_saidFarewell = false;
};

} // namespace Simulator
