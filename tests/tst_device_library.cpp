#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/queries.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/hand_made_device.h"
#include "tests/test_support.h"

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

using namespace Velno;
using namespace Velno::Ext;
using namespace Velno::GMP;
using namespace Qt::StringLiterals;
using TestSupport::Fields;
using TestSupport::HandMadeDevice;
using TestSupport::HandMadeRegister;
using TestSupport::hex;
using TestSupport::Request;

namespace {

constexpr char serial[] = "UB1234567890";
constexpr char otherSerial[] = "UB0000000001";
constexpr char relay[] = "255.255.255.255";
constexpr unsigned int patience = 20'000;
constexpr unsigned int brief = 200; // for waits that are meant to run out

template <typename... Items>
QByteArray plain(const Items &...items)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_6);
    (stream << ... << items);
    return bytes;
}

/** Connects with keys that both sides hold already. */
int connectPaired(HandMadeDevice &device, const char *name = serial, unsigned int appNo = 5)
{
    library().pairingRecords[name] = device.record;
    const quint16 port = TestSupport::freePort();
    device.serve(port);
    return velnoext_initialize(appNo, name, "127.0.0.1", port, patience);
}

QIODevice *connection()
{
    return library().connections.value(library().activeDevice);
}

/** What the connection still holds, asked on its own thread. */
QByteArray unread()
{
    return onConnectionThread([] { return connection()->peek(1 << 20); }, QByteArray());
}

using Query = std::function<int()>;
int scratch = 0;
long long scratchLimit = 0;

const QList<std::pair<const char *, Query>> &queries()
{
    static const QList<std::pair<const char *, Query>> all{
        {"login", [] { return velnoext_login(patience); }},
        {"logout", [] { return velnoext_logout(patience); }},
        {"paper", [] { return velnoext_check_printer_paper(patience); }},
        {"state", [] { return velnoext_ecr_state(patience, &scratch); }},
        {"current z", [] { return velnoext_current_z(patience, &scratch); }},
        {"last z", [] { return velnoext_last_z_datetime(patience, &scratch); }},
        {"clock", [] { return velnoext_ecr_datetime(patience, &scratch); }},
        {"sale limit", [] { return velnoext_sale_limit(patience, &scratchLimit); }}};
    return all;
}

Query queryNamed(const QString &name)
{
    for (const auto &[known, query] : queries()) {
        if (name == QLatin1String(known))
            return query;
    }
    qFatal("no such query");
}

qsizetype entriesOf(const char *folder)
{
    return QDir(QString::fromLatin1(folder))
        .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)
        .size();
}

QStringList matches(const QByteArray &text, const char *pattern)
{
    QStringList names;
    auto all = QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::MultilineOption)
                   .globalMatch(QString::fromUtf8(text));
    while (all.hasNext())
        names << all.next().captured(1);
    names.sort();
    return names;
}

QByteArray fileText(const char *name)
{
    QFile file(QStringLiteral(VELNO_HEADER_FOLDER "/") + QString::fromLatin1(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestDeviceLibrary : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void versionIsZero();
    void argumentsAreCheckedBeforeAnythingIsMade_data();
    void argumentsAreCheckedBeforeAnythingIsMade();
    void badPlacesToListen_data();
    void badPlacesToListen();
    void nobodyConnectsInTime();
    void firstContactPairs();
    void failedPairingLeavesNoRecord();
    void registerThatLeavesDuringPairing();
    void keysSurviveClosing_data();
    void keysSurviveClosing();
    void relayRoute_data();
    void relayRoute();
    void relayPairsOnFirstContact();
    void relayThatEchoesWrong_data();
    void relayThatEchoesWrong();
    void relayThatIsDown();
    void activeDeviceIsChosen();
    void failedInitialiseKeepsTheActiveDevice();
    void reconnectingReplacesTheConnection();
    void closingWithNothingOpen();
    void closeAllClosesEveryRegister();
    void nothingWorksBeforeInitialise();
    void serialNumberEndsWhereTheTerminalIdentityDoes_data();
    void serialNumberEndsWhereTheTerminalIdentityDoes();
    void framesAreReceived_data();
    void framesAreReceived();
    void hugeFramesAreGivenUp_data();
    void hugeFramesAreGivenUp();
    void deadDevicesAreRefused();
    void vanishedRegistersAreNoticed();
    void lateRepliesAreDropped();
    void repliesAreRead_data();
    void repliesAreRead();
    void stateWritesOnlyOnSuccess();
    void stateReadsOneMoreOnDemand();
    void hostileListTakesNoMemory();
    void refusedZNumberIsWritten();
    void nullOutputs_data();
    void nullOutputs();
    void connectionIsCheckedBeforeArguments();
    void damagedReplies_data();
    void damagedReplies();
    void closedConnectionIsReported();
    void rawPassThroughIsForTwoApplications_data();
    void rawPassThroughIsForTwoApplications();
    void rawDataIsSent();
    void rawDataIsOpened();
    void identityNumbers_data();
    void identityNumbers();
    void callsFromManyThreadsQueue();
    void cyclesLeakNothing();
    void plainCProgram();
    void programWithoutItsFileCannotPair();
    void libraryShowsItsFunctionsAlone();
};

void TestDeviceLibrary::cleanup()
{
    velnoext_close_all();
    velnoext_close();
    library().pairingRecords.clear();
    QVERIFY(!library().helper);
}

void TestDeviceLibrary::versionIsZero()
{
    QCOMPARE(velnoext_version(), "0");
}

void TestDeviceLibrary::argumentsAreCheckedBeforeAnythingIsMade_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("withAddress");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    QTest::newRow("no serial number") << QByteArray() << true << 3 << 0x300;
    QTest::newRow("neither") << QByteArray() << false << 3 << 0x300;
    QTest::newRow("no address") << QByteArray(serial) << false << 3 << 0x301;
    QTest::newRow("no address, short") << QByteArray("UB") << false << 3 << 0x301;
    QTest::newRow("empty") << QByteArray("") << true << 4 << 0x400;
    QTest::newRow("11 characters") << QByteArray("UB123456789") << true << 4 << 0x400;
    QTest::newRow("13 characters") << QByteArray("UB12345678901") << true << 4 << 0x400;
}

void TestDeviceLibrary::argumentsAreCheckedBeforeAnythingIsMade()
{
    QFETCH(const QByteArray, name);
    QFETCH(const bool, withAddress);
    QFETCH(const int, result);
    QFETCH(const int, detail);
    const char *const text = name.isNull() ? nullptr : name.constData();
    QCOMPARE(velnoext_initialize(5, text, withAddress ? "127.0.0.1" : nullptr, 4100, 10), result);
    QCOMPARE(velnoext_error_detail(), detail);
    QVERIFY(!library().helper);
    if (!withAddress && text)
        return;
    QCOMPARE(velnoext_set_active_device(text), result);
    QCOMPARE(velnoext_error_detail(), detail);
}

void TestDeviceLibrary::badPlacesToListen_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("free");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    QTest::newRow("port 0") << QByteArray("127.0.0.1") << false << 4 << 0x402;
    QTest::newRow("no address") << QByteArray("300.1.1.1") << true << 4 << 0;
    QTest::newRow("empty") << QByteArray("") << true << 4 << 0;
    QTest::newRow("of nobody here") << QByteArray("192.0.2.201") << true << 2 << 0;
}

void TestDeviceLibrary::badPlacesToListen()
{
    QFETCH(const QByteArray, address);
    QFETCH(const bool, free);
    const quint16 port = free ? TestSupport::freePort() : 0;
    QTEST(velnoext_initialize(5, serial, address.constData(), port, brief), "result");
    QTEST(velnoext_error_detail(), "detail");
    QVERIFY(library().helper); // kept, until closed
}

void TestDeviceLibrary::nobodyConnectsInTime()
{
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", TestSupport::freePort(), brief), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    char buffer[13] = "untouched";
    QCOMPARE(velnoext_active_device(buffer), 1);
    QCOMPARE(buffer, "untouched");
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::LocalHost, 0));
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", holder.serverPort(), patience), 2);
}

void TestDeviceLibrary::firstContactPairs()
{
    HandMadeDevice device;
    const quint16 port = TestSupport::freePort();
    device.pairAndServe(port);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);
    QTRY_COMPARE(int(device.contacts), 3);
    QCOMPARE(device.announcement, GMP3::frame(false, None, hex("DFE0050130"), serial));
    QFile self(QCoreApplication::applicationFilePath());
    QVERIFY(self.open(QIODevice::ReadOnly));
    QCOMPARE(device.appHash, sha256Sum(self));
    QCOMPARE(library().pairingRecords.value(serial).terminalId, macAddress());
    QVERIFY2(QRegularExpression(u"^[0-9A-F]{12}$"_s).match(QString::fromLatin1(macAddress())).hasMatch(),
             "this machine has no network interface to name the terminal by");
    QCOMPARE(connection()->objectName(), QString::fromLatin1(serial));
    device.answerPlain(plain(7, QVector<int>()));
    int state = 0;
    QCOMPARE(velnoext_ecr_state(patience, &state), 0);
    QCOMPARE(state, 7);
    char buffer[17] = {};
    QCOMPARE(velnoext_ecr_serialno(buffer), 0);
    QCOMPARE(buffer, serial);
}

void TestDeviceLibrary::failedPairingLeavesNoRecord()
{
    HandMadeDevice device;
    const quint16 port = TestSupport::freePort();
    device.pairAndServe(port, 1, [](HandMadeRegister &reg, const Request &request, int) {
        Fields fields = reg.honestAnswer(request);
        TestSupport::replaceValue(fields, fieldTag(ResultCode), "01");
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    });
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 10);
    QCOMPARE(velnoext_error_detail(), 0);
    QVERIFY(library().pairingRecords.value(serial).registerData.isEmpty());
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.isEmpty());
}

void TestDeviceLibrary::registerThatLeavesDuringPairing()
{
    HandMadeDevice device;
    const quint16 port = TestSupport::freePort();
    device.pairAndServe(port, 1, [](HandMadeRegister &, const Request &request, int) {
        return QList{HandMadeRegister::frameOf(request.kind, {}).chopped(3) + "xyz"};
    });
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 10);
    QVERIFY(library().connections.isEmpty());
}

void TestDeviceLibrary::keysSurviveClosing_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<bool>("kept");
    QTest::addColumn<QString>("objectName");

    QTest::newRow("5") << 5U << true << QString::fromLatin1(serial);
    QTest::newRow("14242") << 14242U << false << u"__--dcn--__"_s;
    QTest::newRow("999999") << 999999U << false << u"__--dcn--__"_s;
}

void TestDeviceLibrary::keysSurviveClosing()
{
    QFETCH(const unsigned int, appNo);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, appNo), 0);
    QTRY_COMPARE(int(device.contacts), 1);
    QTEST(connection()->objectName(), "objectName");
    velnoext_close();
    QVERIFY(!library().helper);
    QVERIFY(library().activeDevice.isEmpty());
    QTEST(library().pairingRecords.contains(serial), "kept");
}

void TestDeviceLibrary::relayRoute_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<quint16>("relayPort");

    QTest::newRow("most applications") << 5U << quint16(50902);
    QTest::newRow("999999") << 999999U << quint16(50900);
}

void TestDeviceLibrary::relayRoute()
{
    QFETCH(const unsigned int, appNo);
    QFETCH(const quint16, relayPort);
    HandMadeDevice device;
    device.playRelay(relayPort);
    library().pairingRecords[serial] = device.record;
    device.serve(0);
    QCOMPARE(velnoext_initialize(appNo, serial, relay, 0, brief), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestDeviceLibrary::relayPairsOnFirstContact()
{
    HandMadeDevice device;
    device.playRelay(50902);
    device.pairAndServe(0);
    QCOMPARE(velnoext_initialize(5, serial, relay, 0, brief), 0);
    QTRY_COMPARE(int(device.contacts), 3);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestDeviceLibrary::relayThatEchoesWrong_data()
{
    QTest::addColumn<QByteArray>("echo");

    QTest::newRow("another name") << QByteArray(otherSerial);
    QTest::newRow("one character off") << QByteArray("UB1234567891");
}

void TestDeviceLibrary::relayThatEchoesWrong()
{
    QFETCH(const QByteArray, echo);
    HandMadeDevice device;
    device.echo = [echo](const QByteArray &) { return echo; };
    device.playRelay(50902);
    device.serve(0);
    QCOMPARE(velnoext_initialize(5, serial, relay, 0, brief), 2);
    QVERIFY(library().activeDevice.isEmpty());
}

void TestDeviceLibrary::relayThatIsDown()
{
    QCOMPARE(velnoext_initialize(5, serial, relay, 0, brief), 2);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestDeviceLibrary::activeDeviceIsChosen()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    QCOMPARE(connectPaired(second, otherSerial), 0);
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, otherSerial);
    QCOMPARE(velnoext_set_active_device(serial), 0);
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, serial);
    QCOMPARE(velnoext_set_active_device("UB9999999999"), 1);
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, serial);
    QCOMPARE(velnoext_active_device(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    first.answerPlain(plain(1, QVector<int>{}));
    int state = 0;
    QCOMPARE(velnoext_ecr_state(patience, &state), 0);
    QCOMPARE(first.commands().size(), 1);
    QVERIFY(second.commands().isEmpty());
    velnoext_close();
    QVERIFY(library().helper); // the other register is still there
    QCOMPARE(velnoext_active_device(buffer), 1);
    QCOMPARE(velnoext_set_active_device(otherSerial), 0);
}

void TestDeviceLibrary::failedInitialiseKeepsTheActiveDevice()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_initialize(5, otherSerial, "127.0.0.1", TestSupport::freePort(), brief), 2);
    QCOMPARE(library().activeDevice, QByteArray(serial));
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestDeviceLibrary::reconnectingReplacesTheConnection()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QPointer<QIODevice> before = connection();
    const quint16 port = TestSupport::freePort();
    device.stop();
    device.serve(port);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);
    QVERIFY(before.isNull());
    QCOMPARE(library().connections.size(), 1);
}

void TestDeviceLibrary::closingWithNothingOpen()
{
    velnoext_close();
    velnoext_close_all();
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", TestSupport::freePort(), 10), 2);
    QVERIFY(library().helper);
    velnoext_close_all(); // no connection: nothing to do
    QVERIFY(library().helper);
    velnoext_close();
    velnoext_close();
    QVERIFY(!library().helper);
    QVERIFY(!library().connectionThread);
}

void TestDeviceLibrary::closeAllClosesEveryRegister()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    QCOMPARE(connectPaired(second, otherSerial), 0);
    velnoext_close_all();
    QVERIFY(library().connections.isEmpty());
    QVERIFY(!library().helper);
}

void TestDeviceLibrary::nothingWorksBeforeInitialise()
{
    for (const auto &[name, query] : queries())
        QVERIFY2(query() == 1, name);
    char buffer[17] = "untouched";
    QCOMPARE(velnoext_ecr_serialno(buffer), 1);
    QCOMPARE(velnoext_ecr_serialno(nullptr), 1);
    QCOMPARE(buffer, "untouched");
    QBuffer device;
    QVERIFY(device.open(QIODevice::ReadWrite));
    QByteArray payload;
    QVERIFY(!send_to_device(&device, "x"));
    QVERIFY(!get_from_device(brief, &device, &payload));
}

void TestDeviceLibrary::serialNumberEndsWhereTheTerminalIdentityDoes_data()
{
    QTest::addColumn<QByteArray>("terminal");
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("buffer");

    QTest::newRow("12 and 12") << QByteArray(12, 't') << QByteArray(serial) << serial + hex("00") + "....";
    QTest::newRow("16 and 12") << QByteArray(16, 't') << QByteArray(serial)
                               << serial + QByteArray("....") + hex("00");
    QTest::newRow("none") << QByteArray() << QByteArray(serial) << hex("00") + "B1234567890.....";
    QTest::newRow("hostile") << QByteArray(40, 't') << QByteArray(500, 'x')
                             << QByteArray(16, 'x') + hex("00");
}

void TestDeviceLibrary::serialNumberEndsWhereTheTerminalIdentityDoes()
{
    QFETCH(const QByteArray, terminal);
    QFETCH(const QByteArray, identity);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    activeRecord().terminalId = terminal;
    activeRecord().registerData = identity;
    QByteArray buffer(17, '.');
    QCOMPARE(velnoext_ecr_serialno(buffer.data()), 0);
    QTEST(buffer, "buffer");
    QCOMPARE(velnoext_ecr_serialno(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
}

void TestDeviceLibrary::framesAreReceived_data()
{
    QTest::addColumn<QList<QByteArray>>("runs");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("left"); // unread, when nothing is received

    const QByteArray frame = hex("000000024142");
    QList<QByteArray> bytes;
    for (const char byte : frame)
        bytes << QByteArray(1, byte);
    QTest::newRow("whole") << QList{frame} << QByteArray("AB") << QByteArray();
    QTest::newRow("byte by byte") << bytes << QByteArray("AB") << QByteArray();
    QTest::newRow("after a keep-alive")
        << QList{hex("00000004DEADBEEF") + frame} << QByteArray("AB") << QByteArray();
    QTest::newRow("after three") << QList{hex("00000004DEADBEEF00000004DEADBEEF00000004DEADBEEF"), frame}
                                 << QByteArray("AB") << QByteArray();
    QTest::newRow("like a keep-alive") << QList{hex("00000004DEADBEEE")} << hex("DEADBEEE") << QByteArray();
    QTest::newRow("6 of 10") << QList{hex("0000000A414243444546")} << QByteArray()
                             << hex("0000000A414243444546");
    QTest::newRow("half a length") << QList{hex("0000")} << QByteArray() << hex("0000");
    QTest::newRow("1 MiB") << QList{hex("00100000") + QByteArray(1 << 20, 'm')} << QByteArray(1 << 20, 'm')
                           << QByteArray();
}

void TestDeviceLibrary::framesAreReceived()
{
    QFETCH(const QList<QByteArray>, runs);
    QFETCH(const QByteArray, payload);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([runs](const QByteArray &) { return runs; });
    QVERIFY(send_to_device(connection(), "go"));
    QByteArray received = "untouched";
    const unsigned int timeout = payload.isEmpty() ? brief : patience;
    QCOMPARE(get_from_device(timeout, connection(), &received), !payload.isEmpty());
    QCOMPARE(received, payload.isEmpty() ? QByteArray("untouched") : payload);
    QTEST(unread(), "left");
}

void TestDeviceLibrary::hugeFramesAreGivenUp_data()
{
    QTest::addColumn<QByteArray>("length");

    QTest::newRow("1 MiB and one byte") << hex("00100001");
    QTest::newRow("2 GiB") << hex("80000000");
    QTest::newRow("sum wraps at 32 bits") << hex("FFFFFFFC");
    QTest::newRow("4 GiB - 1") << hex("FFFFFFFF");
}

void TestDeviceLibrary::hugeFramesAreGivenUp()
{
    QFETCH(const QByteArray, length);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([length](const QByteArray &) { return QList{length}; });
    QVERIFY(send_to_device(connection(), "go"));
    QByteArray received = "untouched";
    QVERIFY(!get_from_device(0xFFFFFFFF, connection(), &received)); // without the limit this waits for ever
    QCOMPARE(received, QByteArray("untouched"));
    QCOMPARE(unread(), length);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestDeviceLibrary::deadDevicesAreRefused()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QByteArray payload;
    QBuffer closed;
    for (QIODevice *dead : {static_cast<QIODevice *>(nullptr), static_cast<QIODevice *>(&closed)}) {
        QVERIFY(!send_to_device(dead, "x"));
        QVERIFY(!get_from_device(brief, dead, &payload));
    }
}

void TestDeviceLibrary::vanishedRegistersAreNoticed()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto option = [](int level, int name) {
        int value = -1;
        socklen_t size = sizeof value;
        const auto descriptor = int(static_cast<QTcpSocket *>(connection())->socketDescriptor());
        return getsockopt(descriptor, level, name, &value, &size) == 0 ? value : -1;
    };
    QCOMPARE(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPIDLE), 30);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPCNT), 3);
    QCOMPARE(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 60'000);
    QCOMPARE(option(IPPROTO_TCP, TCP_NODELAY), 1);
}

void TestDeviceLibrary::lateRepliesAreDropped()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray seventeen = HandMadeDevice::framed(device.sealed(plain(17)));
    device.setAnswer([=](const QByteArray &) { return QList{seventeen + seventeen.first(9)}; });
    int value = 0;
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 0);
    QCOMPARE(value, 17);
    device.answerPlain(plain(18));
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 0);
    QCOMPARE(value, 18);
}

void TestDeviceLibrary::repliesAreRead_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");

    const auto row = [](const char *query, int code, const char *what, const QByteArray &reply, int result) {
        QTest::addRow("%s: %s", query, what) << QString::fromLatin1(query) << code << reply << result;
    };
    row("login", 1, "accepted", plain(true), 0);
    row("login", 1, "refused", plain(false), 8);
    row("logout", 2, "accepted", plain(true), 0);
    row("logout", 2, "refused", plain(false), 8);
    row("paper", 8, "there", plain(true), 0);
    row("paper", 8, "none", plain(false), 9);
    row("state", 0, "no list", plain(1, QVector<int>()), 0);
    row("state", 0, "5 and one more", plain(5, QVector<int>{1, 2}, 99), 0);
    row("state", 0, "high first byte", plain(int(0x80000001), QVector<int>()), 0);
    row("state", 0, "list missing", plain(1), 5);
    row("state", 0, "list cut", plain(1, 2, 7), 5);
    row("state", 0, "cut", hex("000001"), 5);
    row("current z", 12, "accepted", plain(true, 17), 0);
    row("current z", 12, "refused", plain(false, 17), 8);
    row("current z", 12, "cut", plain(true) + hex("000000"), 5);
    row("last z", 17, "number", plain(1'700'000'000), 0);
    row("last z", 17, "cut", hex("000000"), 5);
    row("clock", 18, "number", plain(-1), 0);
    row("clock", 18, "cut", hex("000000"), 5);
    row("sale limit", 15, "large", plain(qint64(0x1234567890)), 0);
    row("sale limit", 15, "cut", hex("00000000000000"), 5);
}

void TestDeviceLibrary::repliesAreRead()
{
    QFETCH(const QString, query);
    QFETCH(const int, code);
    QFETCH(const QByteArray, reply);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    QTEST(queryNamed(query)(), "result");
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands(), QList{plain(code)});
}

void TestDeviceLibrary::stateWritesOnlyOnSuccess()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    int value = 4711;
    long long limit = 4711;
    device.answerPlain(hex("000000"));
    QCOMPARE(velnoext_ecr_state(patience, &value), 5);
    QCOMPARE(velnoext_current_z(patience, &value), 5);
    QCOMPARE(velnoext_last_z_datetime(patience, &value), 5);
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 5);
    QCOMPARE(velnoext_sale_limit(patience, &limit), 5);
    QCOMPARE(value, 4711);
    QCOMPARE(limit, 4711LL);
    device.answerPlain(plain(qint64(-2)));
    QCOMPARE(velnoext_sale_limit(patience, &limit), 0);
    QCOMPARE(limit, -2LL);
    device.answerPlain(plain(int(0x80000001), QVector<int>{3}));
    QCOMPARE(velnoext_ecr_state(patience, &value), 0);
    QCOMPARE(value, int(0x80000001));
}

void TestDeviceLibrary::stateReadsOneMoreOnDemand()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(5, QVector<int>{1, 2}, 99));
    int state = 0;
    int extra = 0;
    QVector<int> keys;
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 0);
    QCOMPARE(state, 5);
    QCOMPARE(keys, (QVector<int>{1, 2}));
    QCOMPARE(extra, 99);
    device.answerPlain(plain(5, QVector<int>{}));
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 5);
    device.answerPlain(plain(7, QVector<int>{}));
    QCOMPARE(velnoext_ecr_state_impl(patience, &state, &keys, &extra), 0);
    QCOMPARE(state, 7);
}

void TestDeviceLibrary::hostileListTakesNoMemory()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    int state = 4711;
    for (const quint32 count : {0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        device.answerPlain(plain(1, count, 5, 5));
        QCOMPARE(velnoext_ecr_state(patience, &state), 5);
    }
    QCOMPARE(state, 4711);
}

void TestDeviceLibrary::refusedZNumberIsWritten()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(false, 17));
    int z = 0;
    QCOMPARE(velnoext_current_z(patience, &z), 8);
    QCOMPARE(z, 17);
}

void TestDeviceLibrary::nullOutputs_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<int>("detail");

    QTest::newRow("state") << 0 << 0x302;
    QTest::newRow("current z") << 1 << 0x30B;
    QTest::newRow("last z") << 2 << 0x30C;
    QTest::newRow("clock") << 3 << 0x30C;
    QTest::newRow("sale limit") << 4 << 0x310;
}

void TestDeviceLibrary::nullOutputs()
{
    QFETCH(const int, which);
    const Query call[] = {[] { return velnoext_ecr_state(patience, nullptr); },
                          [] { return velnoext_current_z(patience, nullptr); },
                          [] { return velnoext_last_z_datetime(patience, nullptr); },
                          [] { return velnoext_ecr_datetime(patience, nullptr); },
                          [] { return velnoext_sale_limit(patience, nullptr); }};
    QCOMPARE(call[which](), 1); // not paired comes first
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(call[which](), 3);
    QTEST(velnoext_error_detail(), "detail");
    QVERIFY(device.commands().isEmpty());
}

void TestDeviceLibrary::connectionIsCheckedBeforeArguments()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    // The register stays active when connecting it afresh fails, but its connection is gone by then.
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", TestSupport::freePort(), brief), 2);
    QCOMPARE(velnoext_ecr_state(patience, nullptr), 2);
    for (const auto &[name, query] : queries())
        QVERIFY2(query() == 2, name);
}

void TestDeviceLibrary::damagedReplies_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("result");

    const HandMadeDevice device;
    const QByteArray cipher = GMP3_cipher(device.record, true, plain(true));
    const QByteArray mac = GMP3_HMAC(device.record, cipher);
    QByteArray otherMac = mac;
    otherMac[31] = char(otherMac.at(31) ^ 1);
    const QByteArray cipherElement = tlvElement(hex("DFE002"), cipher);
    const QByteArray macElement = tlvElement(hex("DFE003"), mac);
    const auto row = [&](const char *name, const QByteArray &run, int result) {
        QTest::newRow(name) << device.withElements(run) << result;
    };
    row("whole", cipherElement + macElement, 0);
    row("other order", macElement + cipherElement, 0);
    row("the later one counts", tlvElement(hex("DFE003"), otherMac) + cipherElement + macElement, 0);
    row("no MAC", cipherElement, 12);
    row("no cipher text", macElement, 12);
    row("nothing", {}, 12);
    row("empty MAC", cipherElement + hex("DFE00300"), 12);
    row("empty cipher text", hex("DFE00200") + macElement, 12);
    row("third element", cipherElement + macElement + tlvElement(hex("DFE005"), "0"), 12);
    row("cut element", cipherElement + macElement.chopped(1), 12);
    row("other MAC", cipherElement + tlvElement(hex("DFE003"), otherMac), 11);
    row("short MAC", cipherElement + tlvElement(hex("DFE003"), mac.first(31)), 11);
    row("long MAC", cipherElement + tlvElement(hex("DFE003"), mac + 'x'), 11);
    const QByteArray half = cipher.first(15); // no whole block: authentic, but nothing comes of it
    row("half a block",
        tlvElement(hex("DFE002"), half) + tlvElement(hex("DFE003"), GMP3_HMAC(device.record, half)), 11);

    QTest::newRow("other register") << HandMadeDevice(otherSerial).sealed(plain(true)) << 12;
    const QByteArray whole = device.sealed(plain(true));
    for (qsizetype i = 0; i < whole.size(); ++i) {
        QByteArray flipped = whole;
        flipped[i] = char(flipped.at(i) ^ 0x10);
        QTest::addRow("byte %lld flipped", qint64(i)) << flipped << 12;
    }
    for (const qsizetype size : {1, 2, 13, 14, 15, 16, 40})
        QTest::addRow("%lld bytes", qint64(size)) << whole.first(size) << 12;
}

void TestDeviceLibrary::damagedReplies()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const int, result);
    const TestSupport::LogCapture capture;
    static HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([frame](const QByteArray &) { return QList{HandMadeDevice::framed(frame)}; });
    QCOMPARE(velnoext_login(patience), result);
    device.answerPlain(plain(true, 3));
    QCOMPARE(velnoext_login(patience), 0); // nothing is broken for the next command
    velnoext_close_all();
    device.stop();
}

void TestDeviceLibrary::closedConnectionIsReported()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerByClosing();
    QCOMPARE(velnoext_login(0xFFFFFFFF), 2);
    QCOMPARE(velnoext_login(patience), 2);
    QVERIFY(library().connections.contains(serial));
    QVERIFY(!library().pairingRecords.value(serial).aesKey.isEmpty());
}

void TestDeviceLibrary::rawPassThroughIsForTwoApplications_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<bool>("allowed");

    QTest::newRow("5") << 5U << false;
    QTest::newRow("14241") << 14241U << false;
    QTest::newRow("14242") << 14242U << true;
    QTest::newRow("999999") << 999999U << true;
}

void TestDeviceLibrary::rawPassThroughIsForTwoApplications()
{
    QFETCH(const unsigned int, appNo);
    QFETCH(const bool, allowed);
    HandMadeDevice device;
    QCOMPARE(velnoext_send_data("x", 1), 1);
    QCOMPARE(connectPaired(device, serial, appNo), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_send_data("x", 1), allowed ? 0 : 1);
    QCOMPARE(velnoext_send_data(nullptr, 1), allowed ? 3 : 1);
    const QByteArray frame = device.sealed("abc");
    char output[8] = {};
    int size = sizeof output;
    QCOMPARE(velnoext_get_data(frame.constData(), int(frame.size()), output, &size), allowed ? 0 : 1);
    QCOMPARE(size, allowed ? 3 : 8);
    QCOMPARE(velnoext_initialize(appNo, serial, "127.0.0.1", TestSupport::freePort(), brief), 2);
    QCOMPARE(velnoext_send_data(nullptr, 1), allowed ? 2 : 1);
    QCOMPARE(velnoext_get_data(nullptr, 1, nullptr, nullptr), allowed ? 2 : 1);
}

void TestDeviceLibrary::rawDataIsSent()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, 14242), 0);
    // Silent to the raw data: an answer to it that came late would pass for the login's.
    device.setAnswer([&device](const QByteArray &payload) {
        const bool login = device.opened(payload) == plain(1);
        return QList{login ? HandMadeDevice::framed(device.sealed(plain(true))) : QByteArray()};
    });
    QCOMPARE(velnoext_send_data(nullptr, -1), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(velnoext_send_data("x", -1), 4);
    QCOMPARE(velnoext_send_data("x", 0), 11);
    const QByteArray tooMuch(65536, 'x');
    QCOMPARE(velnoext_send_data(tooMuch.constData(), int(tooMuch.size())), 11);
    QCOMPARE(velnoext_send_data("a\0b", 3), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(device.commands(), (QList{QByteArray("a\0b", 3), plain(1)}));
}

void TestDeviceLibrary::rawDataIsOpened()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, 999999), 0);
    const QByteArray frame = device.sealed("abcd");
    const auto size = int(frame.size());
    char output[] = "........";
    int room = 8;
    const auto call = [&](const char *data, int length, char *out, int *outSize) {
        return velnoext_get_data(data, length, out, outSize);
    };
    QCOMPARE(call(nullptr, size, nullptr, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    QCOMPARE(call(frame.constData(), -1, nullptr, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x301);
    QCOMPARE(call(frame.constData(), size, output, nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x302);
    QCOMPARE(call(frame.constData(), -1, output, &room), 4);
    const TestSupport::LogCapture capture;
    QCOMPARE(call(frame.constData(), size - 1, output, &room), 12);
    QCOMPARE(call(frame.constData(), 0, output, &room), 12);
    for (int small : {3, 0, -1}) {
        const int before = small;
        QCOMPARE(call(frame.constData(), size, output, &small), 4);
        QCOMPARE(small, before);
    }
    QCOMPARE(output, "........");
    room = 4;
    QCOMPARE(call(frame.constData(), size, output, &room), 0);
    QCOMPARE(room, 4);
    QCOMPARE(output, "abcd....");
}

void TestDeviceLibrary::identityNumbers_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<bool>("valid");

    QTest::newRow("valid") << QByteArray("10000000146") << true;
    QTest::newRow("first digit 0") << QByteArray("01234567890") << false;
    QTest::newRow("10 digits") << QByteArray("1234567890") << false;
    QTest::newRow("12 digits") << QByteArray("100000001460") << false;
    QTest::newRow("11th digit") << QByteArray("10000000147") << false;
    QTest::newRow("10th digit") << QByteArray("10000000157") << false;
    QTest::newRow("letter") << QByteArray("1000000014A") << false;
    // 7 * 1 - 9 = -2: mathematically 8 modulo 10, which is refused
    QTest::newRow("negative difference") << QByteArray("19000000088") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestDeviceLibrary::identityNumbers()
{
    QFETCH(const QByteArray, number);
    QTEST(isValidId(number), "valid");
}

void TestDeviceLibrary::callsFromManyThreadsQueue()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    // Each command gets a reply of its own: its number.
    device.setAnswer([&device, count = 0](const QByteArray &) mutable {
        return QList{HandMadeDevice::framed(device.sealed(plain(++count)))};
    });
    std::atomic<int> sum = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back([&sum] {
            for (int call = 0; call < 25; ++call) {
                int value = 0;
                if (velnoext_ecr_datetime(patience, &value) == 0)
                    sum += value;
            }
        });
    for (std::thread &caller : callers)
        caller.join();
    QCOMPARE(int(sum), 100 * 101 / 2);
}

void TestDeviceLibrary::cyclesLeakNothing()
{
    HandMadeDevice device;
    const auto cycle = [&device] {
        const int result = connectPaired(device);
        velnoext_close_all();
        device.stop();
        return result;
    };
    QCOMPARE(cycle(), 0);
    const qsizetype sockets = entriesOf("/proc/self/fd");
    const qsizetype threads = entriesOf("/proc/self/task");
    for (int i = 0; i < 200; ++i)
        QCOMPARE(cycle(), 0);
    QCOMPARE(entriesOf("/proc/self/fd"), sockets);
    // A thread that has ended may be listed a moment longer, also in the count before.
    QTRY_VERIFY(entriesOf("/proc/self/task") <= threads);
}

void TestDeviceLibrary::plainCProgram()
{
    HandMadeDevice device;
    // Sealed when asked: the keys are agreed on only then. The second time the register comes paired.
    device.setAnswer([&device](const QByteArray &) {
        return QList{HandMadeDevice::framed(device.sealed(plain(7, QVector<int>())))};
    });
    const quint16 port = TestSupport::freePort();
    device.pairAndServe(port, 2);
    QProcess program;
    program.start(QStringLiteral(VELNO_PLAIN_C_PROGRAM), {QString::number(port)});
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.readAllStandardOutput(), QByteArray("code 0 state 7\ncode 0 state 7\n"));
    QCOMPARE(program.readAllStandardError(), QByteArray());
    QCOMPARE(program.exitCode(), 0);
    QTRY_COMPARE(int(device.contacts), 4);
}

void TestDeviceLibrary::programWithoutItsFileCannotPair()
{
    QTemporaryDir folder;
    const QString copy = folder.filePath(u"program"_s);
    QVERIFY(QFile::copy(QStringLiteral(VELNO_PLAIN_C_PROGRAM), copy));
    HandMadeDevice device;
    const quint16 port = TestSupport::freePort();
    device.pairAndServe(port);
    QProcess program;
    program.start(copy, {QString::number(port), copy});
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.readAllStandardOutput(), QByteArray("code 13 state -1\n"));
    QCOMPARE(program.exitCode(), 13);
    device.stop();
    QVERIFY(device.announcement.isEmpty());
}

void TestDeviceLibrary::libraryShowsItsFunctionsAlone()
{
    QProcess nm;
    nm.start(QStringLiteral(VELNO_NM), {u"-D"_s, u"--defined-only"_s, QStringLiteral(VELNO_LIBRARY)});
    QVERIFY(nm.waitForFinished());
    const QStringList shown = matches(nm.readAllStandardOutput(), "^[0-9a-f]+ [^A\\n] ([^@\\n]+)");
    const QStringList declared = matches(fileText("velnoext.h"), "^VELNOEXT_API [^(]*?(\\w+)\\(");
    const QStringList mapped = matches(fileText("velnoext.map"), "^ +(\\w+);");
    QCOMPARE(declared.size(), 21);
    QCOMPARE(shown, declared);
    QCOMPARE(mapped, declared);
}

QTEST_GUILESS_MAIN(TestDeviceLibrary)
#include "tst_device_library.moc"
