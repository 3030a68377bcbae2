// SPDX-License-Identifier: Apache-2.0

/**
 * A register that vanishes from the network without a word. Library and register run in processes with
 * networks of their own, joined by a cable (a veth pair) whose far end goes down. The system gives up after a
 * minute.
 */
#include "ExtDevice/velnoext/library_state.h"
#include "tests/support/library_test.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTcpSocket>
#include <QTest>

#include <cstdio>
#include <future>
#include <linux/sockios.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

constexpr char nearAddress[] = "192.0.2.1";
constexpr quint16 port = 4100;
constexpr int longEnough = 240'000; // ms; what is waited for takes one minute

void ip(const QString &arguments)
{
    if (QProcess::execute(u"ip"_s, arguments.split(u' ')) != 0)
        qFatal("ip %s", qPrintable(arguments));
}

// The register's process -----------------------------------------------------------------------------------

void say(const char *line)
{
    std::puts(line);
    std::fflush(stdout);
}

/** The next line on standard input; false at its end. */
bool hear()
{
    int character = 0;
    while ((character = std::getchar()) != EOF && character != '\n') {
    }
    return character != EOF;
}

/** Answers one command, is silent to those after it, and leaves the network when told to. */
int playRegister()
{
    HandMadeDevice device;
    device.address = QString::fromLatin1(nearAddress);
    device.setAnswer([&device, answered = false](const QByteArray &) mutable {
        if (!std::exchange(answered, true))
            return QList{HandMadeDevice::framed(device.sealed(plain(true)))};
        say("asked");
        return QList{QByteArray()};
    });
    say("here");
    hear(); // the cable is there
    ip(u"address add 192.0.2.2/24 dev far"_s);
    ip(u"link set far up"_s);
    device.serve(port);
    if (!hear())
        return 0;
    ip(u"link set far down"_s);
    say("vanished");
    hear();
    return 0;
}

// The application's process --------------------------------------------------------------------------------

/** The register, in a process with a network of its own. */
class RemoteRegister
{
public:
    RemoteRegister()
    {
        m_process.start(u"unshare"_s, {u"-n"_s, QCoreApplication::applicationFilePath(), u"--register"_s});
        expect("here\n");
        ip(u"link add name near type veth peer name far netns %1"_s.arg(m_process.processId()));
        ip(u"address add %1/24 dev near"_s.arg(QLatin1String(nearAddress)));
        ip(u"link set near up"_s);
        m_process.write("cable\n");
        m_process.waitForBytesWritten();
    }
    ~RemoteRegister()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(RemoteRegister)

    void expect(const QByteArray &line)
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead()) {
        }
        if (const QByteArray said = m_process.readLine(); said != line)
            qFatal("the register said \"%s\"", said.constData());
    }

    void vanish()
    {
        m_process.write("vanish\n");
        expect("vanished\n");
    }

private:
    QProcess m_process;
};

/** Waits until the other side has acknowledged every byte. */
void awaitAcknowledgement(int descriptor)
{
    int unacknowledged = 0;
    do {
        std::this_thread::yield();
        ioctl(descriptor, SIOCOUTQ, &unacknowledged);
    } while (unacknowledged > 0);
}

/** The command's result. */
int askAndLoseTheRegister(RemoteRegister &reg, bool acknowledged)
{
    if (!acknowledged) {
        reg.vanish();
        return velnoext_logout(patience);
    }
    const auto descriptor = int(connection()->socketDescriptor());
    auto result = std::async(std::launch::async, [] { return velnoext_logout(patience); });
    reg.expect("asked\n");
    awaitAcknowledgement(descriptor);
    reg.vanish();
    return result.get();
}

int playApplication(bool acknowledged)
{
    RemoteRegister reg;
    const HandMadeDevice keys;
    Velno::Ext::library().pairingRecords[serial] = keys.record;
    std::printf("connected %d\n", velnoext_initialize(5, serial, nearAddress, port, patience));
    std::printf("answered %d\n", velnoext_login(patience));
    std::printf("lost %d\n", askAndLoseTheRegister(reg, acknowledged));
    std::printf("afterwards %d\n", velnoext_login(patience));
    velnoext_close_all();
    return 0;
}

/** Whether a process may have a network of its own here. */
bool canMakeNetworks()
{
    QProcess probe;
    probe.start(u"unshare"_s,
                {u"-rn"_s, u"sh"_s, u"-c"_s, u"ip link add name near type veth peer name far"_s});
    return probe.waitForFinished() && probe.exitStatus() == QProcess::NormalExit && probe.exitCode() == 0;
}

} // namespace

class TestVanishedRegister : public QObject
{
    Q_OBJECT

private slots:
    void waitingForItEnds();
};

void TestVanishedRegister::waitingForItEnds()
{
    if (!canMakeNetworks())
        QSKIP("NOT TESTED: this machine does not let a test make a network of its own (unshare -rn, ip)");
    // Side by side: the register has the command and is silent; the command never reaches it.
    QProcess idle;
    QProcess pending;
    for (const auto &[process, name] : {std::pair(&idle, u"idle"_s), std::pair(&pending, u"pending"_s)})
        process->start(u"unshare"_s, {u"-rn"_s, QCoreApplication::applicationFilePath(), u"--"_s + name});
    for (QProcess *process : {&idle, &pending}) {
        QVERIFY2(process->waitForFinished(longEnough), "a command still waits for a register that is gone");
        QCOMPARE(process->readAllStandardError(), QByteArray());
        QCOMPARE(process->readAllStandardOutput(),
                 QByteArray("connected 0\nanswered 0\nlost 2\nafterwards 2\n"));
        QCOMPARE(process->exitCode(), 0);
    }
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const std::string role = argc > 1 ? argv[1] : "";
    if (role == "--register")
        return playRegister();
    if (role == "--idle" || role == "--pending")
        return playApplication(role == "--idle");
    TestVanishedRegister test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_vanished_register.moc"
