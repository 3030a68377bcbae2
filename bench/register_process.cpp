// SPDX-License-Identifier: Apache-2.0

#include "bench/register_process.h"

#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_socket.h"

#include <QTcpServer>

using namespace Qt::StringLiterals;

quint16 freePort()
{
    QTcpServer server;
    require(server.listen(QHostAddress::LocalHost, 0), "no free port");
    return server.serverPort();
}

RegisterProcess::RegisterProcess(const char *serialNo, const QString &events)
    : m_serialNo(serialNo)
    , m_port(freePort())
{
    m_process.setStandardOutputFile(events);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(QString::fromUtf8(VELNO_REGISTER), {u"--serial"_s, QString::fromLatin1(serialNo),
                                                        u"--connect"_s, u"127.0.0.1:%1"_s.arg(m_port)});
    require(m_process.waitForStarted(), "velno-register did not start");
}

RegisterProcess::~RegisterProcess()
{
    m_process.terminate();
    if (m_process.waitForFinished())
        return;
    m_process.kill();
    m_process.waitForFinished();
}

void RegisterProcess::connectLibrary(unsigned int appNo) const
{
    constexpr unsigned int timeout = 10000;
    require(velnoext_initialize(appNo, m_serialNo, "127.0.0.1", m_port, timeout) == 0,
            "velno-register did not connect");
}
