// SPDX-License-Identifier: Apache-2.0

#include "bench/tls_echo.h"

#include "bench/bare_socket.h"

#include <QCoreApplication>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTcpServer>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10000;

QByteArray contentOf(const std::string &path)
{
    QFile file(QString::fromStdString(path));
    require(file.open(QIODevice::ReadOnly), "the development authority could not be read");
    return file.readAll();
}

/** AES-256-CBC and HMAC-SHA256, what a command is sealed with as well. */
QSslConfiguration tls12()
{
    QSslConfiguration configuration;
    configuration.setProtocol(QSsl::TlsV1_2);
    configuration.setCiphers(u"AES256-SHA256"_s);
    return configuration;
}

/** Hands each peer to a TLS socket that echoes. */
class EchoServer : public QTcpServer
{
public:
    explicit EchoServer(const QSslConfiguration &configuration)
        : m_configuration(configuration)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *const socket = new QSslSocket(this);
        require(socket->setSocketDescriptor(descriptor), "no TLS socket");
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        socket->setSslConfiguration(m_configuration);
        connect(socket, &QSslSocket::readyRead, socket, [socket] {
            socket->write(socket->readAll());
            socket->flush();
        });
        socket->startServerEncryption();
    }

private:
    QSslConfiguration m_configuration;
};

} // namespace

void serveTlsEcho(quint16 port, const std::string &authority)
{
    QSslConfiguration configuration = tls12();
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setLocalCertificate(QSslCertificate(contentOf(authority + "/register/client.crt")));
    configuration.setPrivateKey(QSslKey(contentOf(authority + "/register/client.key"), QSsl::Rsa));
    EchoServer server(configuration);
    require(server.listen(QHostAddress::LocalHost, port), "no port for the TLS echo");
    std::exit(QCoreApplication::exec());
}

TlsEchoClient::TlsEchoClient(quint16 port, const std::string &authority)
{
    QSslConfiguration configuration = tls12();
    configuration.setCaCertificates(QSslCertificate::fromData(contentOf(authority + "/trust-anchors.pem")));
    m_socket.setSslConfiguration(configuration);
    // The certificate names a register, not a host.
    QObject::connect(&m_socket, &QSslSocket::sslErrors, &m_socket, [this] { m_socket.ignoreSslErrors(); });
    m_socket.connectToHostEncrypted(u"127.0.0.1"_s, port);
    const bool encrypted = m_socket.waitForEncrypted(patience);
    require(encrypted, qPrintable(m_socket.errorString()));
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

bool TlsEchoClient::echo(const QByteArray &plaintext)
{
    m_socket.write(plaintext);
    m_socket.flush();
    while (m_socket.bytesAvailable() < plaintext.size()) {
        if (!m_socket.waitForReadyRead(patience))
            return false;
    }
    return m_socket.readAll() == plaintext;
}
