// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/encoding/file.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/engine_session.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

constexpr int patience = 30'000; // ms, for a machine under load

/** The bodies of a pairing, and how its frames travel. */
class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sequenceEndsAfterTheThirdMessage_data();
    void sequenceEndsAfterTheThirdMessage();
    void startRequestHasEightElements();
    void keyExchangeRequestWithoutGroupHasNoKey_data();
    void keyExchangeRequestWithoutGroupHasNoKey();
    void otherKindsHaveNoBody_data();
    void otherKindsHaveNoBody();
    void bothSidesAgree();
    void responderWithoutCertificateLeavesItOut();
    void responderWithoutUsableKeySaysSo_data();
    void responderWithoutUsableKeySaysSo();
    void responderRefusesAWrongKeyCheck();
    void responderRefusesAWrongApplication();
    void receiveAssemblesAFrame();
    void receiveRefuses_data();
    void receiveRefuses();
    void receiveReportsTheTransport();
    void sendAndDisconnectReportTheTransport();
    void acceptReportsTheTransport();

private:
    void useDevelopmentCredentials();
    void connectPeer();

    QTemporaryDir m_folder;
    QTcpServer m_server;
    std::unique_ptr<QTcpSocket> m_peer;
};

void TestSession::init()
{
    clearSession();
    useDevelopmentCredentials();
}

void TestSession::useDevelopmentCredentials()
{
    const TestSupport::Credentials credentials = TestSupport::developmentRegister();
    cert_path = m_folder.filePath(u"client.crt"_s);
    prikey_path = m_folder.filePath(u"client.key"_s);
    QVERIFY(writeData(cert_path, credentials.certificate));
    QVERIFY(writeData(prikey_path, credentials.key));
}

void TestSession::sequenceEndsAfterTheThirdMessage_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("next");

    for (int kind = Message8801; kind <= None; ++kind) {
        const int next = kind == PairingStart         ? PairingKeyExchange
                         : kind == PairingKeyExchange ? PairingConfirm
                                                      : None;
        QTest::addRow("%d", kind) << kind << next;
    }
}

void TestSession::sequenceEndsAfterTheThirdMessage()
{
    QFETCH(const int, kind);
    QFETCH(const int, next);
    QCOMPARE(int(GMP3::next_state(MessageTag(kind))), next);
}

void TestSession::startRequestHasEightElements()
{
    const QDate before = QDate::currentDate();
    const QByteArray body = GMP3::prepare(PairingStart, false, "001A2B3C4D5E");
    QCOMPARE(tagsOf(body), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFC107", "DFC108", "DFC109",
                                           "DFEF0B", "DFC10D"}));
    QCOMPARE(valueIn(body, "DF8208"), hex("000001"));
    QVERIFY(bcdToDate(valueIn(body, "DF8209")) >= before);
    QVERIFY(bcdToTime(valueIn(body, "DF820A"), false).isValid());
    QCOMPARE(valueIn(body, "DFC107"), QByteArray("VENDOR 1234"));
    QCOMPARE(valueIn(body, "DFC108"), QByteArray("MODEL X"));
    QCOMPARE(valueIn(body, "DFC109"), QByteArray("001A2B3C4D5E"));
    QCOMPARE(valueIn(body, "DFEF0B"), QByteArray("1.0.0.0"));
    QCOMPARE(valueIn(body, "DFC10D"), gmp3_message.requesterRandom);
    QCOMPARE(gmp3_message.requesterRandom.size(), 16);

    // The next one has another random, once the millisecond that makes it is another.
    const QByteArray first = gmp3_message.requesterRandom;
    QTRY_VERIFY(valueIn(GMP3::prepare(PairingStart, false, "001A2B3C4D5E"), "DFC10D") != first);
    QVERIFY(gmp3_message.requesterRandom != first);
}

void TestSession::keyExchangeRequestWithoutGroupHasNoKey_data()
{
    QTest::addColumn<QByteArray>("p");
    QTest::addColumn<QByteArray>("g");

    const QByteArray p(get_dh2048_p_value(), get_dh2048_p_size());
    QByteArray composite = p;
    composite[255] = char(composite.at(255) ^ 2);
    QTest::newRow("none received") << QByteArray() << QByteArray();
    QTest::newRow("no generator") << p << QByteArray();
    QTest::newRow("a small prime") << hex("17") << hex("05");
    QTest::newRow("a composite") << composite << hex("02");
    QTest::newRow("an even number") << p.first(255) + '\0' << hex("02");
    QTest::newRow("thousands of bytes") << QByteArray(3500, '\xF1') << hex("02");
}

void TestSession::keyExchangeRequestWithoutGroupHasNoKey()
{
    QFETCH(const QByteArray, p);
    QFETCH(const QByteArray, g);
    GMP3::TLV_add(hex("DFEF0C"), p, true);
    GMP3::TLV_add(hex("DFEF0D"), g, true);
    gmp3_message.dh = GMP3::DH_get_dh2048();
    const QByteArray body = GMP3::prepare(PairingKeyExchange, false, "me");
    QCOMPARE(tagsOf(body), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFC107", "DFC108", "DFC109",
                                           "DFC10A", "DFC10B", "DFC10C", "DFEF09"}));
    QCOMPARE(valueIn(body, "DFC10C"), QByteArray());
    QVERIFY(!gmp3_message.dh);
}

void TestSession::otherKindsHaveNoBody_data()
{
    QTest::addColumn<int>("kind");

    for (const int kind : {int(Message8801), int(Message8808), int(Message8A64), int(None)})
        QTest::addRow("%d", kind) << kind;
}

void TestSession::otherKindsHaveNoBody()
{
    QFETCH(const int, kind);
    QCOMPARE(GMP3::prepare(MessageTag(kind), false, serial), QByteArray());
    QCOMPARE(GMP3::prepare(MessageTag(kind), true, serial), QByteArray());
}

void TestSession::bothSidesAgree()
{
    Session tool;
    tool.record.appHash = sha256Sum("application");
    Session device;
    device.record.appHash = tool.record.appHash;
    device.certificatePath = cert_path;
    device.keyPath = prikey_path;
    device.record.pairingIndex = 12;
    device.record.pairingNumber = 4711;

    deliver(device, prepareBody(tool, PairingStart, false, "me"), PairingStart, false);
    const QByteArray start = prepareBody(device, PairingStart, true, serial);
    QCOMPARE(tagsOf(start),
             QByteArrayList({"DF8208", "DF8209", "DF820A", "DFC10A", "DFC10B", "DFC10C", "DFEF0B", "DFEF01",
                             "DFEF0C", "DFEF0D", "DFEF06", "DFEF09", "DFC10E"}));
    QCOMPARE(valueIn(start, "DFC10A"), QByteArray("DALMORIVEN"));
    QCOMPARE(valueIn(start, "DFC10B"), QByteArray("m120"));
    QCOMPARE(valueIn(start, "DFEF09"), hex("12"));
    QCOMPARE(valueIn(start, "DFEF01"), TestSupport::developmentRegister().certificate);
    deliver(tool, start, PairingStart, true);

    const QByteArray exchange = prepareBody(tool, PairingKeyExchange, false, "me");
    QCOMPARE(tagsOf(exchange), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFC107", "DFC108", "DFC109",
                                               "DFC10A", "DFC10B", "DFC10C", "DFEF03", "DFEF09"}));
    deliver(device, exchange, PairingKeyExchange, false);
    const QByteArray answer = prepareBody(device, PairingKeyExchange, true, serial);
    QCOMPARE(tagsOf(answer),
             QByteArrayList({"DF8208", "DF8209", "DF820A", "DFEF03", "DFEF06", "DFEF09", "DFEF0A"}));
    QCOMPARE(valueIn(answer, "DFEF09"), hex("0C"));
    QVERIFY(verifyChecksum(valueIn(start, "DFEF01"), valueIn(answer, "DFEF03"), valueIn(answer, "DFEF0A")));
    deliver(tool, answer, PairingKeyExchange, true);

    const QByteArray confirm = prepareBody(tool, PairingConfirm, false, "me");
    QCOMPARE(tagsOf(confirm), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFC107", "DFC108", "DFC109",
                                              "DFC10A", "DFC10B", "DFC10C", "DFEF0E", "DFEF09", "DFE004"}));
    QCOMPARE(valueIn(confirm, "DFEF0E").last(16), tool.record.kcvIv); // not moved on by the application hash
    deliver(device, confirm, PairingConfirm, false);
    const QByteArray verdict = prepareBody(device, PairingConfirm, true, serial);
    QCOMPARE(tagsOf(verdict), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFEF06", "DFEF02", "DFEF09"}));
    QCOMPARE(valueIn(verdict, "DFEF06"), QByteArray("00"));
    QCOMPARE(valueIn(verdict, "DFEF02"), hex("4711"));
    QVERIFY(!device.record.failed);
    QCOMPARE(device.record.aesKey, tool.record.aesKey);
}

void TestSession::responderWithoutCertificateLeavesItOut()
{
    QVERIFY(QFile::remove(cert_path));
    QCOMPARE(valueIn(GMP3::prepare(PairingStart, true, serial), "DFEF01"), QByteArray("missing"));
}

void TestSession::responderWithoutUsableKeySaysSo_data()
{
    QTest::addColumn<QByteArray>("key");

    QTest::newRow("garbage") << QByteArray("garbage");
    QTest::newRow("an RSA key whose signatures have another size")
        << TestSupport::selfSigned("RSA", 1024).key;
}

void TestSession::responderWithoutUsableKeySaysSo()
{
    QFETCH(const QByteArray, key);
    QVERIFY(writeData(prikey_path, key));
    const QByteArray body = GMP3::prepare(PairingKeyExchange, true, serial);
    QCOMPARE(tagsOf(body), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFEF06", "DFEF09"}));
    QCOMPARE(valueIn(body, "DFEF06"), QByteArray("01"));
    QVERIFY(gmp3_message.dh);
    QVERIFY(QFile::remove(prikey_path));
    QCOMPARE(valueIn(GMP3::prepare(PairingKeyExchange, true, serial), "DFEF06"), QByteArray("01"));
}

void TestSession::responderRefusesAWrongKeyCheck()
{
    GMP3::TLV_add(hex("DFEF0E"), QByteArray(32, 'x'), true);
    gmp3_message.appHash = QByteArray(32, 'h');
    const LogCapture capture;
    const QByteArray body = GMP3::prepare(PairingConfirm, true, serial);
    QCOMPARE(tagsOf(body), QByteArrayList({"DF8208", "DF8209", "DF820A", "DFEF06", "DFEF09"}));
    QCOMPARE(valueIn(body, "DFEF06"), QByteArray("02"));
    QVERIFY(gmp3_message.failed);
    QCOMPARE(capture.text(), QByteArray("KCV Error\n"));
}

void TestSession::responderRefusesAWrongApplication()
{
    const QByteArray check = GMP3::create_keys({}); // the same keys on both sides, whatever they are
    GMP3::TLV_add(hex("DFEF0E"), check, true);
    QByteArray iv = gmp3_message.kcvIv;
    GMP3::TLV_add(hex("DFE004"), GMP3_aes_cipher(true, gmp3_message.aesKey, QByteArray(32, 'a'), iv), true);
    gmp3_message.appHash = QByteArray(32, 'b');
    {
        const LogCapture capture;
        QCOMPARE(valueIn(GMP3::prepare(PairingConfirm, true, serial), "DFEF06"), QByteArray("03"));
        QCOMPARE(capture.text(), QByteArray("App Hash Error\n"));
        QVERIFY(gmp3_message.failed);
    }
    gmp3_message.appHash = QByteArray(32, 'a');
    QCOMPARE(valueIn(GMP3::prepare(PairingConfirm, true, serial), "DFEF06"), QByteArray("00"));
    gmp3_message.appHash.clear(); // any application will do
    GMP3::TLV_add(hex("DFE004"), "garbage", true);
    QCOMPARE(valueIn(GMP3::prepare(PairingConfirm, true, serial), "DFEF06"), QByteArray("00"));
    QVERIFY(!gmp3_message.failed);
}

void TestSession::connectPeer()
{
    if (!m_server.isListening())
        QVERIFY(m_server.listen(QHostAddress::LocalHost, 0));
    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("127.0.0.1", m_server.serverPort(), patience, &handle), 0);
    GMP3::init(handle);
    QVERIFY(m_server.hasPendingConnections() || m_server.waitForNewConnection(patience));
    m_peer.reset(m_server.nextPendingConnection());
    m_peer->setParent(nullptr);
}

void TestSession::receiveAssemblesAFrame()
{
    connectPeer();
    const QByteArray frame = GMP3::frame(true, None, QByteArray(300, 'x'), serial);
    m_peer->write(frame + "more");
    QVERIFY(m_peer->waitForBytesWritten(patience));
    QByteArray buffer(4098, '\0');
    int length = 4096;
    QCOMPARE(GMP3::receive(patience, buffer.data(), &length), 0);
    QCOMPARE(buffer.first(length), frame);
    QCOMPARE(buffer.at(length), '\0'); // what follows the frame stays on the wire
    QCOMPARE(GMP3::disconnect(), 0);
}

void TestSession::receiveRefuses_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<int>("capacity");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("received");

    QTest::newRow("announced 20, capacity 10") << hex("0014") + QByteArray(20, 'x') << 10 << 4000 << 2;
    QTest::newRow("announced 20, capacity 19") << hex("0014") + QByteArray(20, 'x') << 19 << 4000 << 2;
    QTest::newRow("announced 20, capacity 20") << hex("0014") + QByteArray(20, 'x') << 20 << 0 << 22;
    QTest::newRow("announced 65535, capacity 4096") << hex("FFFF") << 4096 << 4000 << 2;
    QTest::newRow("announced nothing") << hex("0000") << 4096 << 3003 << 2;
}

void TestSession::receiveRefuses()
{
    QFETCH(const QByteArray, sent);
    QFETCH(const int, capacity);
    QFETCH(const int, result);
    QFETCH(const int, received);
    connectPeer();
    m_peer->write(sent);
    QVERIFY(m_peer->waitForBytesWritten(patience));
    QByteArray buffer(4098, '\0');
    int length = capacity;
    const LogCapture capture;
    QCOMPARE(GMP3::receive(patience, buffer.data(), &length), result);
    QCOMPARE(length, received);
    QCOMPARE(GMP3::receive(patience, buffer.data(), nullptr), 4000);
    GMP3::disconnect();
}

void TestSession::receiveReportsTheTransport()
{
    QByteArray buffer(4098, '\0');
    int length = 4096;
    {
        const LogCapture capture;
        QCOMPARE(GMP3::receive(0, buffer.data(), &length), 3004);
        QCOMPARE(length, 0);
        QCOMPARE(capture.text(), QByteArray("velno_network_read (1): 4\n"));
    }
    connectPeer();
    {
        const LogCapture capture;
        length = 4096;
        QCOMPARE(GMP3::receive(10, buffer.data(), &length), 3006);
        QCOMPARE(capture.text(), QByteArray("velno_network_read (1): 6\n"));
    }
    m_peer->write(hex("0014") + "abc");
    QVERIFY(m_peer->waitForBytesWritten(patience));
    m_peer->disconnectFromHost();
    const LogCapture capture;
    length = 4096;
    QCOMPARE(GMP3::receive(patience, buffer.data(), &length), 3005);
    QCOMPARE(buffer.first(length), hex("0014") + "abc");
    QCOMPARE(capture.text(), QByteArray("velno_network_read (2): 5\n"));
}

void TestSession::sendAndDisconnectReportTheTransport()
{
    {
        const LogCapture capture;
        QCOMPARE(GMP3::send("x", 1), 2004);
        QCOMPARE(GMP3::disconnect(), 3002);
        QCOMPARE(capture.text(), QByteArray("velno_network_write: 4\nvelno_network_disconnect: 2\n"));
    }
    connectPeer();
    QCOMPARE(GMP3::send("hello", 5), 0);
    QVERIFY(m_peer->waitForReadyRead(patience));
    QCOMPARE(m_peer->readAll(), QByteArray("hello"));
    QCOMPARE(GMP3::disconnect(), 0);
    QCOMPARE(connection_handle, 0U);
}

void TestSession::acceptReportsTheTransport()
{
    connectPeer();
    const unsigned int before = connection_handle;
    const LogCapture capture;
    QCOMPARE(GMP3::accept("300.1.1.1", TestSupport::freePort(), 10), 1005);
    QCOMPARE(connection_handle, 0U);
    QCOMPARE(velno_network_disconnect(before), 3); // the session's connection was closed first
    QCOMPARE(GMP3::accept("127.0.0.1", TestSupport::freePort(), 10), 1007);
    QCOMPARE(capture.text(), QByteArray("velno_network_accept: 5\nvelno_network_accept: 7\n"));
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
