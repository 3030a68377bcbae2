// SPDX-License-Identifier: Apache-2.0

#include "tests/support/velnoctl_client.h"

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/ends_with_test.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

int codeOf(const QByteArray &command)
{
    qint32 code = -1;
    QDataStream(command) >> code;
    return code;
}

} // namespace

QStringList target(quint16 port)
{
    return {u"--serial"_s,  u"UB1234567890"_s, u"--listen"_s, u"127.0.0.1:%1"_s.arg(port),
            u"--timeout"_s, u"20000"_s,        u"--app"_s,    u"5"_s};
}

QJsonObject object(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

QStringList wordsOf(const QString &line)
{
    QStringList words = QProcess::splitCommand(line);
    for (QString &word : words) {
        if (word == "EMPTY"_L1)
            word = u""_s;
    }
    return words;
}

QByteArray causeInWords(int cause)
{
    QByteArrayList lines = text(velnoext_cause_text(cause)).split('\n');
    lines[0] += " (cause " + QByteArray::number(cause) + ", " + text(velnoext_cause_name(cause)) + ')';
    return lines.join("\n  ") + '\n';
}

QString fileWith(const QTemporaryDir &folder, const QByteArray &content)
{
    QFile file(folder.filePath(u"day.velno"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s", qPrintable(file.errorString()));
    return file.fileName();
}

QString Client::program()
{
    return QString::fromUtf8(VELNO_VELNOCTL);
}

Client::Client(const QStringList &arguments, const QString &redirection)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TZ"_s, u"TRT-3"_s);
    m_process.setProcessEnvironment(environment);
    m_process.setChildProcessModifier(endsWithTest());
    if (redirection.isEmpty())
        m_process.start(program(), arguments);
    else
        m_process.start(u"bash"_s, QStringList{u"-o"_s, u"pipefail"_s, u"-c"_s,
                                               u"exec \"$0\" \"$@\" "_s + redirection, program()} +
                                       arguments);
    m_process.waitForStarted(longestWait);
}

Client::~Client()
{
    m_process.kill();
    m_process.waitForFinished(longestWait);
}

int Client::exitCode()
{
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(longestWait))
        return -1;
    collect();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void Client::say(const QByteArray &text)
{
    m_process.write(text);
    m_process.waitForBytesWritten(longestWait);
}

bool Client::printed(const QByteArray &text)
{
    return waitUntil([&] { return out.endsWith(text); });
}

bool Client::told(const QByteArray &text)
{
    return waitUntil([&] { return err.contains(text); });
}

void Client::raise(int signal) const
{
    // Of a program that has ended it is 0: this process, those beside it and whoever runs them.
    if (const auto process = pid_t(m_process.processId()); process > 0)
        ::kill(process, signal);
}

void Client::collect()
{
    out += m_process.readAllStandardOutput();
    err += m_process.readAllStandardError();
}

bool Client::waitUntil(const std::function<bool()> &holds)
{
    const QDeadlineTimer deadline(longestWait);
    while (!holds()) {
        const bool hasEnded = m_process.state() == QProcess::NotRunning;
        m_process.waitForReadyRead(20);
        collect();
        if ((hasEnded || deadline.hasExpired()) && !holds()) {
            qWarning("out: %s\nerr: %s", out.constData(), err.constData());
            return false;
        }
    }
    return true;
}

Device::Device()
{
    setAnswer([this](const QByteArray &payload) { return answerTo(payload); });
}

Device::~Device()
{
    stop(); // before the answers go
}

QList<int> Device::codes()
{
    QList<int> found;
    for (const QByteArray &command : commands())
        found << codeOf(command);
    return found;
}

QList<QByteArray> Device::answerTo(const QByteArray &payload) const
{
    if (isMute)
        return {QByteArray()};
    const QByteArray answer = answers.value(codeOf(opened(payload)));
    return answer.isEmpty() ? QList<QByteArray>() : QList{framed(sealed(answer))};
}

} // namespace TestSupport
