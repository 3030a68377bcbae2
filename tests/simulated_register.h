#pragma once

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>

/**
 * The real velno-register as a child process, for tests: waits for its events, speaks to it on standard
 * input, and ends it when it goes out of scope.
 */
class SimulatedRegister
{
public:
    static constexpr char serial[] = "UB1234567890";

    /** Starts it towards this port of the loopback address and returns at its `ready` line. */
    explicit SimulatedRegister(quint16 port, const QStringList &arguments = {});
    /** The same, where `arguments` say where it goes: with --relay. */
    explicit SimulatedRegister(const QStringList &arguments);
    ~SimulatedRegister();
    Q_DISABLE_COPY_MOVE(SimulatedRegister)

    static QString program();

    /** Whether the `ready` line came. */
    bool isReady() const { return m_ready; }

    /** The next event of this name, others skipped; an empty object when none comes in time. */
    QJsonObject waitFor(const QString &event) { return waitForAny({event}); }
    QJsonObject waitForAny(const QStringList &events); ///< of one of these names

    /** `fault` on standard input: NAME[=VALUE] or none. @return whether the register took it */
    bool setFault(const QString &fault);

    void say(const QByteArray &line);
    void raise(int signal) const;

    /** The exit code; -1 when it does not end in time or was killed. */
    int waitForExit();

    /** Every event so far, in order. */
    const QList<QJsonObject> &events() const { return m_events; }

private:
    bool readEvent();

    QProcess m_process;
    QList<QJsonObject> m_events;
    bool m_ready = false;
};
