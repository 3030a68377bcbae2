// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QProcess>

/** A port that nobody listens on. */
quint16 freePort();

/** A simulated register in a process of its own that looks for the application on a port of this machine. */
class RegisterProcess
{
public:
    /** @param events  file for what it tells of itself */
    explicit RegisterProcess(const char *serialNo, const QString &events = QProcess::nullDevice());
    ~RegisterProcess();
    Q_DISABLE_COPY_MOVE(RegisterProcess)

    /** Connects the library to it, which pairs. Ends the benchmark when that fails. */
    void connectLibrary(unsigned int appNo) const;

    quint16 port() const { return m_port; }

private:
    const char *m_serialNo;
    quint16 m_port;
    QProcess m_process;
};
