// SPDX-License-Identifier: Apache-2.0

#include "tests/support/pos_example.h"

#include "tests/support/ends_with_test.h"
#include "tests/support/test_support.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr int longestWait = 60'000; // ms, for a machine under load

} // namespace

Shop::Shop(const QStringList &options)
    : m_port(freePort())
{
    plugIn(options);
}

void Shop::plugIn(const QStringList &options)
{
    reg.reset();
    reg = std::make_unique<SimulatedRegister>(m_port, QStringList{u"--journal"_s, m_folder.filePath(u"j"_s)} +
                                                          options);
}

void Shop::open()
{
    m_till = std::make_unique<QProcess>();
    m_till->setChildProcessModifier(endsWithTest());
    m_till->start(QString::fromUtf8(VELNO_EXAMPLES "/pos"),
                  {serialNo, u"127.0.0.1"_s, QString::number(m_port), ledgerFile()});
}

void Shop::type(const QByteArray &lines)
{
    m_till->write(lines);
    m_till->waitForBytesWritten(longestWait);
}

bool Shop::says(const QByteArray &text)
{
    while (!m_output.contains(text))
        if (!m_till->waitForReadyRead(longestWait))
            return false;
        else
            m_output += m_till->readAllStandardOutput();
    m_output.clear();
    return true;
}

Outcome Shop::close()
{
    m_till->closeWriteChannel();
    return outcomeOf(*m_till);
}

Outcome Shop::day(const QByteArray &lines)
{
    open();
    type(lines);
    return close();
}

bool Shop::waitForCommand(const QString &command) const
{
    QString sent;
    do
        sent = reg->waitFor(u"command"_s).value(u"command"_s).toString();
    while (!sent.isEmpty() && sent != command);
    return !sent.isEmpty();
}

void Shop::kill()
{
    m_till->kill();
    m_till->waitForFinished(longestWait);
}

QStringList Shop::prints()
{
    reg->say("fault none");
    reg->waitFor(u"fault"_s); // so that all before it has been read
    QStringList list;
    for (const QJsonObject &event : reg->events())
        if (event.value(u"event"_s) == u"printed"_s)
            list << event.value(u"kind"_s).toString() + u' ' +
                        QString::number(event.value(u"receipt"_s).toInt());
    return list;
}

} // namespace TestSupport
