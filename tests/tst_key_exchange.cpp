// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/hand_made_register.h"
#include "tests/support/pairing_check.h"
#include "tests/support/test_support.h"

#include <QTcpServer>
#include <QTest>

using TestSupport::Fields;
using TestSupport::HandMadeRegister;
using TestSupport::hex;
using TestSupport::LogCapture;
using TestSupport::Request;
using namespace TestSupport;
using namespace Velno::GMP;
using namespace Velno;

namespace {

constexpr int patience = 30'000; // ms, for a machine under load

} // namespace

/** Pairings that come about, and what they leave behind. */
class TestKeyExchange : public QObject
{
    Q_OBJECT

private slots:
    void pairingFillsTheRecord();
    void heldConnectionPairsAndIsClosed();
    void heldConnectionIsClosedOnFailure();
    void busyPortIsReported();
    void resultCodeIsJudgedAtEveryStep_data();
    void resultCodeIsJudgedAtEveryStep();
    void discardedMessagesRepeatTheRequest_data();
    void discardedMessagesRepeatTheRequest();
    void discardedMessagesLeaveNothingBehind_data();
    void discardedMessagesLeaveNothingBehind();
    void randomsAreThoseOfTheKeys_data();
    void randomsAreThoseOfTheKeys();
    void identityAndNumbersAreThoseOfTheLastResponse();
    void randomOfAnotherConversationIsForgotten();
    void sessionKeepsNoKeys_data();
    void sessionKeepsNoKeys();
    void closedConnectionIsReported();
};

void TestKeyExchange::pairingFillsTheRecord()
{
    HandMadeRegister reg;
    MatchExt record;
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QCOMPARE(pair(record, reg), 0);
    const QList<Request> requests = reg.finish();
    QCOMPARE(kindsOf(requests), (QList{PairingStart, PairingKeyExchange, PairingConfirm}));
    QCOMPARE(record.aesKey, reg.aesKey);
    QCOMPARE(record.kcvIv, reg.kcvIv);
    QCOMPARE(record.hmacKey, reg.hmacKey);
    QCOMPARE(record.aesKey.size(), 32);
    QCOMPARE(record.kcvIv.size(), 16);
    QCOMPARE(record.hmacKey.size(), 32);
    QCOMPARE(reg.appHash, appHash());
    QCOMPARE(record.randomDFC10D, TestSupport::valueOf(requests.first().fields, fieldTag(RequesterRandom)));
    QCOMPARE(record.randomDFC10E, QByteArray(16, 'E'));
    QCOMPARE(record.registerData, QByteArray("REGISTER"));
    QCOMPARE(record.terminalId, QByteArray(terminal));
    QCOMPARE(record.valueDFEF09, quint8(42));
    QCOMPARE(record.valueDFEF02, quint16(4711));
    QVERIFY(record.reserved.isEmpty());
    QCOMPARE(record.pairingTime.timeSpec(), Qt::UTC);
    QVERIFY(record.pairingTime >= before && record.pairingTime <= QDateTime::currentDateTimeUtc());
    QCOMPARE(TestSupport::valueOf(requests.at(1).fields, fieldTag(EcrBrand)), QByteArray("BRAND"));
    QCOMPARE(TestSupport::valueOf(requests.at(2).fields, fieldTag(PairingIndex)), hex("42"));
}

void TestKeyExchange::heldConnectionPairsAndIsClosed()
{
    HandMadeRegister reg;
    const quint16 port = TestSupport::freePort();
    reg.start(port);
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept("127.0.0.1", port, patience, &handle), 0);
    MatchExt record;
    QCOMPARE(GMP3_KeyExchange_Server(record, quint32(handle), serial, terminal, appHash()), 0);
    QCOMPARE(record.aesKey, reg.aesKey);
    QCOMPARE(connection_handle, 0U);
    QCOMPARE(velno_network_disconnect(handle), 3);
}

void TestKeyExchange::heldConnectionIsClosedOnFailure()
{
    HandMadeRegister reg(changed(PairingStart, [](auto &, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(ResultCode), "01");
    }));
    const quint16 port = TestSupport::freePort();
    reg.start(port);
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept("127.0.0.1", port, patience, &handle), 0);
    MatchExt record;
    QCOMPARE(GMP3_KeyExchange_Server(record, quint32(handle), serial, terminal, appHash()), 5000);
    QVERIFY(isEmpty(record));
    QCOMPARE(velno_network_disconnect(handle), 3);
}

void TestKeyExchange::busyPortIsReported()
{
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::AnyIPv4, 0));
    MatchExt record;
    const LogCapture capture;
    QCOMPARE(GMP3_KeyExchange_Server(record, holder.serverPort(), serial, terminal, appHash()), 1006);
    QCOMPARE(capture.text(), QByteArray("velno_network_accept: 6\n"));
    QVERIFY(isEmpty(record));
}

void TestKeyExchange::resultCodeIsJudgedAtEveryStep_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QByteArray>("code");

    for (const MessageTag step : {PairingStart, PairingKeyExchange, PairingConfirm}) {
        for (const char *code : {"01", "02", "03", "0", "000", "99"})
            QTest::addRow("step %d, %s", step, code) << int(step) << QByteArray(code);
        // The code of an earlier answer is still in the field store; it does not speak for this one.
        QTest::addRow("step %d, none", step) << int(step) << QByteArray();
    }
}

void TestKeyExchange::resultCodeIsJudgedAtEveryStep()
{
    QFETCH(const int, step);
    QFETCH(const QByteArray, code);
    HandMadeRegister reg(changed(MessageTag(step), [code](auto &, Fields &fields) {
        if (code.isEmpty())
            TestSupport::removeField(fields, fieldTag(ResultCode));
        else
            TestSupport::replaceValue(fields, fieldTag(ResultCode), code);
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 5000);
    QVERIFY(isEmpty(record));
    QCOMPARE(int(reg.finish().constLast().kind), step);
}

void TestKeyExchange::discardedMessagesRepeatTheRequest_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("response");

    QTest::newRow("another kind") << int(Message8A64) << true;
    QTest::newRow("a request instead") << int(PairingKeyExchange) << false;
    QTest::newRow("the answer before, again") << int(PairingStart) << true;
}

void TestKeyExchange::discardedMessagesRepeatTheRequest()
{
    QFETCH(const int, kind);
    QFETCH(const bool, response);
    HandMadeRegister reg([=](HandMadeRegister &self, const Request &request, int count) {
        if (count >= 2 && count <= 6)
            return QList{
                HandMadeRegister::frameOf(MessageTag(kind), {{fieldTag(ResultCode), "00"}}, response)};
        return QList{HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
    QList<MessageTag> expected{PairingStart};
    expected << QList<MessageTag>(6, PairingKeyExchange) << PairingConfirm;
    QCOMPARE(kindsOf(reg.finish()), expected);
    QCOMPARE(record.aesKey, reg.aesKey);
}

void TestKeyExchange::discardedMessagesLeaveNothingBehind_data()
{
    QTest::addColumn<int>("count"); // of the request that is answered with it
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("response");

    QTest::newRow("before the start") << 1 << int(PairingKeyExchange) << true;
    QTest::newRow("before the key exchange, another kind") << 2 << int(PairingStart) << true;
    QTest::newRow("before the key exchange, a request") << 2 << int(PairingKeyExchange) << false;
    QTest::newRow("before the confirmation, another kind") << 3 << int(Message8A64) << true;
    QTest::newRow("before the confirmation, a request") << 3 << int(PairingConfirm) << false;
}

void TestKeyExchange::discardedMessagesLeaveNothingBehind()
{
    QFETCH(const int, count);
    QFETCH(const int, kind);
    QFETCH(const bool, response);
    const QByteArray message =
        HandMadeRegister::frameOf(MessageTag(kind),
                                  {{fieldTag(RequesterRandom), QByteArray(16, 'x')},
                                   {fieldTag(ResponderRandom), QByteArray(16, 'x')},
                                   {fieldTag(Certificate), TestSupport::selfSigned().certificate},
                                   {fieldTag(DhPrime), hex("17")},
                                   {fieldTag(DhGenerator), hex("05")},
                                   {fieldTag(Signature), QByteArray(256, 'x')},
                                   {fieldTag(EcrBrand), "x"},
                                   {fieldTag(EcrModel), "x"},
                                   {fieldTag(EcrIdentity), "x"},
                                   {fieldTag(PairingNumber), hex("1111")},
                                   {fieldTag(PairingIndex), hex("11")},
                                   {fieldTag(ResultCode), "99"}},
                                  response);
    HandMadeRegister reg([=](HandMadeRegister &self, const Request &request, int number) {
        return QList{number == count ? message
                                     : HandMadeRegister::frameOf(request.kind, self.honestAnswer(request))};
    });
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
    const QList<Request> requests = reg.finish();
    QCOMPARE(requests.size(), 4);
    QCOMPARE(record.aesKey, reg.aesKey);
    QCOMPARE(record.randomDFC10D,
             TestSupport::valueOf(requests.at(count == 1 ? 1 : 0).fields, fieldTag(RequesterRandom)));
    QCOMPARE(record.randomDFC10E, QByteArray(16, 'E'));
    QCOMPARE(record.registerData, QByteArray("REGISTER"));
    QCOMPARE(record.valueDFEF09, quint8(42));
    QCOMPARE(record.valueDFEF02, quint16(4711));
    for (const Request &request : requests.last(2))
        QCOMPARE(TestSupport::valueOf(request.fields, fieldTag(EcrBrand)), QByteArray("BRAND"));
}

void TestKeyExchange::randomsAreThoseOfTheKeys_data()
{
    QTest::addColumn<int>("step"); // whose answer brings other randoms
    QTest::addColumn<int>("random");

    for (const MessageTag step : {PairingKeyExchange, PairingConfirm}) {
        QTest::addRow("step %d, the register's", step) << int(step) << int(ResponderRandom);
        QTest::addRow("step %d, the tool's", step) << int(step) << int(RequesterRandom);
    }
    QTest::addRow("step %d, the tool's", PairingStart) << int(PairingStart) << int(RequesterRandom);
}

void TestKeyExchange::randomsAreThoseOfTheKeys()
{
    QFETCH(const int, step);
    QFETCH(const int, random);
    HandMadeRegister reg(changed(MessageTag(step), [=](auto &, Fields &fields) {
        fields.append({fieldTag(ExternalDataFieldTag(random)), QByteArray(16, 'x')});
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
    QCOMPARE(record.randomDFC10D,
             TestSupport::valueOf(reg.finish().constFirst().fields, fieldTag(RequesterRandom)));
    QCOMPARE(record.randomDFC10E, QByteArray(16, 'E'));
    QCOMPARE(record.aesKey, reg.aesKey);
}

void TestKeyExchange::identityAndNumbersAreThoseOfTheLastResponse()
{
    HandMadeRegister reg(changed(PairingConfirm, [](auto &, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(PairingNumber), hex("0815"));
        TestSupport::replaceValue(fields, fieldTag(PairingIndex), hex("07"));
        fields.append({fieldTag(EcrIdentity), "ANOTHER NAME"});
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 0);
    QCOMPARE(record.registerData, QByteArray("ANOTHER NAME"));
    QCOMPARE(record.valueDFEF02, quint16(815));
    QCOMPARE(record.valueDFEF09, quint8(7));
}

void TestKeyExchange::randomOfAnotherConversationIsForgotten()
{
    gmp3_message.responderRandom = QByteArray(16, 'x');
    HandMadeRegister reg(changed(PairingStart, [](auto &, Fields &fields) {
        TestSupport::removeField(fields, fieldTag(ResponderRandom));
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), 5000); // its keys are made with its random
    QVERIFY(gmp3_message.responderRandom.isEmpty());
}

void TestKeyExchange::sessionKeepsNoKeys_data()
{
    QTest::addColumn<QByteArray>("code"); // of the last answer
    QTest::addColumn<int>("result");

    QTest::newRow("paired") << QByteArray("00") << 0;
    QTest::newRow("refused") << QByteArray("03") << 5000;
}

void TestKeyExchange::sessionKeepsNoKeys()
{
    QFETCH(const QByteArray, code);
    QFETCH(const int, result);
    HandMadeRegister reg(changed(PairingConfirm, [=](auto &, Fields &fields) {
        TestSupport::replaceValue(fields, fieldTag(ResultCode), code);
    }));
    MatchExt record;
    QCOMPARE(pair(record, reg), result);
    QVERIFY(!gmp3_message.dh);
    QVERIFY(!gmp3_message.secretAgreed);
    QVERIFY(gmp3_message.hmacKey.isEmpty() && gmp3_message.kcvIv.isEmpty() && gmp3_message.aesKey.isEmpty());
    QCOMPARE(record.aesKey.isEmpty(), result != 0);
    QVERIFY(result != 0 || record.aesKey.isDetached()); // nobody else has it
}

void TestKeyExchange::closedConnectionIsReported()
{
    auto server = std::make_unique<QTcpServer>();
    QVERIFY(server->listen(QHostAddress::LocalHost, 0));
    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("127.0.0.1", server->serverPort(), patience, &handle), 0);
    QVERIFY(server->waitForNewConnection(patience));
    server.reset(); // closes the accepted connection too
    MatchExt record;
    const LogCapture capture;
    const int result = GMP3_KeyExchange_Server(record, quint32(handle), serial, terminal, appHash());
    QVERIFY2(result == 2005 || result == 3005, qPrintable(QString::number(result)));
    QVERIFY(isEmpty(record));
}

QTEST_GUILESS_MAIN(TestKeyExchange)
#include "tst_key_exchange.moc"
