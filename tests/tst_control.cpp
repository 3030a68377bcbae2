// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/test_support.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The control socket of velno-register and velno-relay: its lines, its answers, and clients that mean harm.
 */
class TestControl : public QObject
{
    Q_OBJECT

private slots:
    void linesAreAnsweredInOrder_data();
    void linesAreAnsweredInOrder();
    void theRelayObeysToo();
    void quitIsAnsweredAndObeyed();
    void aClientThatHasSaidEverythingIsAnsweredToTheEnd();
    void severalClientsAreServedSideBySide();
    void aSocketIsItsOwnersAlone();
    void anAbandonedSocketIsReplaced();
    void whatCannotBeHadIsToldAndLeftAlone_data();
    void whatCannotBeHadIsToldAndLeftAlone();
    void wrongAddressesAreRefused_data();
    void wrongAddressesAreRefused();
    void aClientThatMeansHarmIsTurnedAway_data();
    void aClientThatMeansHarmIsTurnedAway();
    void anEndlessLineStopsNobodyElse();
    void aClientThatDoesNotReadStopsNobodyElse();
    void tooManyClientsCloseTheMostSilent();
    void eventsTellTheirTime();
};

namespace {

constexpr int longestWait = 30'000; // ms, for a machine under load and sanitizers
constexpr int mostClients = 32;

QStringList control(const QString &where)
{
    return {u"--control"_s, where};
}

/** A client of the program at the place that its `ready` event tells. */
class Client
{
public:
    explicit Client(const ChildProgram &program)
    {
        const QString place = program.events().first().value(u"control"_s).toString();
        if (place.contains(u'/')) {
            auto local = std::make_unique<QLocalSocket>();
            local->connectToServer(place);
            m_isConnected = local->waitForConnected(longestWait);
            m_socket = std::move(local);
        } else {
            auto tcp = std::make_unique<QTcpSocket>();
            tcp->connectToHost(place.section(u':', 0, 0), place.section(u':', 1).toUShort());
            m_isConnected = tcp->waitForConnected(longestWait);
            m_socket = std::move(tcp);
        }
    }

    bool isConnected() const { return m_isConnected; }
    QIODevice &socket() { return *m_socket; }
    void say(const QByteArray &text)
    {
        m_socket->write(text);
        while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(longestWait)) {
        }
    }

    /** The next answer; an empty object when none comes any more. */
    QJsonObject hear()
    {
        while (!m_socket->canReadLine())
            if (!m_socket->waitForReadyRead(longestWait))
                return {};
        return QJsonDocument::fromJson(m_socket->readLine()).object();
    }

    /** Whether the program has closed the connection, in time. */
    bool isClosed()
    {
        while (m_socket->waitForReadyRead(longestWait)) {
        }
        const auto *const tcp = qobject_cast<QTcpSocket *>(m_socket.get());
        return tcp && tcp->error() == QAbstractSocket::RemoteHostClosedError;
    }

private:
    std::unique_ptr<QIODevice> m_socket;
    bool m_isConnected = false;
};

const QJsonObject obeyed{{u"ok"_s, true}};

/** What the program's data take. */
int dataKib(const ChildProgram &program)
{
    QFile status(u"/proc/%1/status"_s.arg(program.processId()));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf("VmData:") + 7;
    return text.mid(at, text.indexOf("kB", at) - at).trimmed().toInt();
}

bool isObeyed(Client &client, const QByteArray &line)
{
    client.say(line + '\n');
    return client.hear() == obeyed;
}

} // namespace

void TestControl::linesAreAnsweredInOrder_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<QString>("begins");
    QTest::newRow("a port alone is of the loopback address") << u"0"_s << u"127.0.0.1:"_s;
    QTest::newRow("an address and a port") << u"127.0.0.2:0"_s << u"127.0.0.2:"_s;
    QTest::newRow("a Unix socket") << u"FOLDER/control"_s << u"/"_s;
}

void TestControl::linesAreAnsweredInOrder()
{
    QFETCH(QString, where);
    QFETCH(const QString, begins);
    const QTemporaryDir folder;
    SimulatedRegister reg(freePort(), control(where.replace(u"FOLDER"_s, folder.path())));
    const QString place = reg.events().first().value(u"control"_s).toString();
    QVERIFY2(place.startsWith(begins) && !place.endsWith(":0"_L1), qPrintable(place));
    Client client(reg);
    QVERIFY(client.isConnected());
    client.say("fault refuse=z\r\n\nnonsense\nz 17\nz -1\nfault no");
    QCOMPARE(client.hear(), obeyed);
    QJsonObject answer = client.hear();
    QCOMPARE(answer.value(u"ok"_s), false);
    QVERIFY(answer.value(u"error"_s).toString().contains("accepted are fault NAME"_L1));
    QCOMPARE(client.hear(), obeyed);
    QVERIFY(client.hear().value(u"error"_s).toString().contains("accepted is N: 1 to 2147483647"_L1));
    client.say("ne\n"); // the rest of the line
    QCOMPARE(client.hear(), obeyed);

    QCOMPARE(reg.waitFor(u"fault"_s).value(u"active"_s).toArray().size(), 1);
    QCOMPARE(reg.waitFor(u"set"_s).value(u"value"_s), u"17"_s);
    QCOMPARE(reg.waitFor(u"fault"_s).value(u"active"_s).toArray().size(), 0);
    for (const QJsonObject &event : reg.events()) // what was wrong is told to who said it
        QVERIFY(event.value(u"event"_s) != u"error"_s);
}

void TestControl::theRelayObeysToo()
{
    SimulatedRelay relay(control(u"0"_s));
    Client client(relay);
    QVERIFY(isObeyed(client, "fault no-echo"));
    QVERIFY(!relay.waitFor(u"fault"_s).isEmpty());
    client.say("nonsense\n");
    QVERIFY(client.hear().value(u"error"_s).toString().contains("accepted are fault NAME"_L1));
    QVERIFY(isObeyed(client, "quit"));
    QCOMPARE(relay.waitForExit(), 0);
}

void TestControl::quitIsAnsweredAndObeyed()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client client(reg);
    QVERIFY(isObeyed(client, "quit"));
    QCOMPARE(reg.waitForExit(), 0);
    QCOMPARE(reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestControl::aClientThatHasSaidEverythingIsAnsweredToTheEnd()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client client(reg);
    QByteArray lines;
    constexpr int count = 5000;
    for (int i = 0; i < count; ++i)
        lines += "nonsense\n"; // an answer to it is long
    client.say(lines + "fault none");
    auto &socket = dynamic_cast<QTcpSocket &>(client.socket());
    shutdown(int(socket.socketDescriptor()), SHUT_WR);
    for (int i = 0; i < count; ++i)
        QCOMPARE(client.hear().value(u"ok"_s), QJsonValue(false));
    QVERIFY(client.hear().isEmpty()); // a line without an end may have been cut short
    QCOMPARE(socket.state(), QAbstractSocket::UnconnectedState);
}

void TestControl::severalClientsAreServedSideBySide()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client first(reg);
    Client second(reg);
    first.say("fault refu"); // begins first
    QVERIFY(isObeyed(second, "z 5"));
    QVERIFY(isObeyed(first, "se=z"));
    QVERIFY(isObeyed(second, "z 6"));
}

void TestControl::aSocketIsItsOwnersAlone()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"control"_s);
    {
        SimulatedRelay relay(control(path), [] { umask(0); });
        struct stat found
        {
        };
        QCOMPARE(lstat(path.toUtf8().constData(), &found), 0);
        QCOMPARE(found.st_mode, mode_t(S_IFSOCK | 0600));
    }
    QVERIFY(!QFileInfo::exists(path)); // it goes with the program
}

void TestControl::anAbandonedSocketIsReplaced()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"control"_s);
    {
        SimulatedRegister killed(freePort(), control(path));
        QVERIFY(killed.isReady());
        killed.raise(SIGKILL);
        QCOMPARE(killed.waitForExit(), -1);
    }
    QVERIFY(QFileInfo::exists(path));
    SimulatedRegister reg(freePort(), control(path));
    Client client(reg);
    QVERIFY(isObeyed(client, "fault none"));
}

void TestControl::whatCannotBeHadIsToldAndLeftAlone_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("a port that is taken") << u"PORT"_s;
    QTest::newRow("a socket that is listened at") << u"FOLDER/taken"_s;
    QTest::newRow("a file") << u"FOLDER/file"_s;
    QTest::newRow("no such folder") << u"FOLDER/none/control"_s;
    QTest::newRow("an address of another computer") << u"192.0.2.1:4200"_s;
}

void TestControl::whatCannotBeHadIsToldAndLeftAlone()
{
    QFETCH(QString, where);
    const QTemporaryDir folder;
    const SimulatedRelay listening(control(folder.filePath(u"taken"_s)));
    SimulatedRegister onPort(freePort(), control(u"0"_s));
    QFile file(folder.filePath(u"file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    where.replace(u"FOLDER"_s, folder.path());
    where.replace(u"PORT"_s, onPort.events().first().value(u"control"_s).toString());
    const Outcome outcome = outcomeOf(
        SimulatedRegister::program(),
        QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s} + control(where));
    QCOMPARE(outcome.exitCode, 69);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(outcome.errors.contains("velno-register: cannot listen on " + where.toUtf8()),
             outcome.errors.constData());
    QVERIFY(file.exists());
    Client client(listening);
    QVERIFY(isObeyed(client, "fault none"));
}

void TestControl::wrongAddressesAreRefused_data()
{
    QTest::addColumn<QString>("where");
    for (const char *where : {"", "x", "4200 ", "-1", "65536", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536",
                              "127.0.0.256:1", "localhost:4200", "::1:4200", "[::1]", "[127.0.0.1]:4200"})
        QTest::newRow(*where ? where : "nothing") << QString::fromLatin1(where);
    QTest::newRow("a path that is too long") << u'/' + QString(107, u'x');
}

void TestControl::wrongAddressesAreRefused()
{
    QFETCH(const QString, where);
    const QByteArray message = "--control \"" + where.toUtf8() + "\": accepted is PORT, ADDR:PORT";
    checkWrongUsage(SimulatedRegister::program(),
                    QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s} +
                        control(where),
                    message);
    checkWrongUsage(SimulatedRelay::program(), control(where), message);
}

void TestControl::aClientThatMeansHarmIsTurnedAway_data()
{
    QTest::addColumn<QByteArray>("said");
    QTest::addColumn<QString>("error");
    QTest::newRow("a line that is too long") << QByteArray(4097, 'x') + "\nfault refuse=z\n"
                                             << u"a line is longer than 4096 bytes"_s;
    QTest::newRow("a page in a browser")
        << QByteArray("POST / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\nfault refuse=z\n")
        << u"this is no web server"_s;
}

void TestControl::aClientThatMeansHarmIsTurnedAway()
{
    QFETCH(const QByteArray, said);
    QFETCH(const QString, error);
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client client(reg);
    client.say(said);
    QCOMPARE(client.hear().value(u"error"_s), error);
    QVERIFY(client.isClosed());
    Client other(reg);
    QVERIFY(isObeyed(other, "fault none"));
    QCOMPARE(reg.waitFor(u"fault"_s).value(u"active"_s), QJsonArray()); // the line behind was not obeyed
}

void TestControl::anEndlessLineStopsNobodyElse()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client endless(reg);
    Client other(reg);
    const QByteArray piece(64 * 1024, 'x');
    endless.say(piece);
    QVERIFY(endless.hear().value(u"error"_s).toString().contains("longer than"_L1));
    auto &socket = dynamic_cast<QTcpSocket &>(endless.socket());
    while (socket.state() == QAbstractSocket::ConnectedState) { // for a moment it may go on
        socket.write(piece);
        socket.waitForBytesWritten(longestWait);
        QVERIFY(isObeyed(other, "fault none"));
    }
    QVERIFY(isObeyed(other, "fault none"));
}

void TestControl::aClientThatDoesNotReadStopsNobodyElse()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    Client silent(reg);
    const int socket = int(dynamic_cast<QTcpSocket &>(silent.socket()).socketDescriptor());
    const QByteArray lines = QByteArray("nonsense\n").repeated(1000);
    qsizetype sent = 0;
    const int before = dataKib(reg);
    constexpr int mostGrowth = 4096;             // KiB
    constexpr qsizetype most = 64 * 1024 * 1024; // more than the system keeps for both sides
    Client other(reg);
    while (sent < most) {
        const ssize_t count =
            send(socket, lines.constData(), size_t(lines.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
        QVERIFY(isObeyed(other, "fault none"));
        if (count < 0)
            break;
        sent += count;
    }
    QVERIFY2(sent < most, "the register reads without an end what it cannot answer");
    const int grown = dataKib(reg) - before;
    QVERIFY2(grown < mostGrowth, qPrintable(u"%1 KiB more"_s.arg(grown)));
    QVERIFY(isObeyed(other, "fault none"));
}

void TestControl::tooManyClientsCloseTheMostSilent()
{
    SimulatedRegister reg(freePort(), control(u"0"_s));
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < mostClients; ++i) {
        clients.push_back(std::make_unique<Client>(reg));
        QVERIFY(isObeyed(*clients.back(), "fault none"));
    }
    QVERIFY(isObeyed(*clients.front(), "fault none")); // so that the second is the most silent one
    Client last(reg);
    QVERIFY(isObeyed(last, "fault none"));
    QVERIFY(isObeyed(*clients.front(), "fault none"));
    QVERIFY(clients.at(1)->isClosed());
    QVERIFY(isObeyed(*clients.at(2), "fault none"));
}

void TestControl::eventsTellTheirTime()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    SimulatedRegister reg(freePort());
    reg.say("quit");
    QCOMPARE(reg.waitForExit(), 0);
    const QDateTime after = QDateTime::currentDateTimeUtc();
    for (const QJsonObject &event : reg.events()) {
        const QString told = event.value(u"time"_s).toString();
        const QDateTime time = QDateTime::fromString(told, Qt::ISODateWithMs);
        QVERIFY2(told.size() == 24 && told.endsWith(u'Z'), qPrintable(told));
        QVERIFY2(before <= time && time <= after, qPrintable(told));
    }
}

QTEST_GUILESS_MAIN(TestControl)
#include "tst_control.moc"
