// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/cause_ways.h"
#include "tests/support/library_calls.h"
#include "tests/support/test_support.h"

#include <QScopeGuard>
#include <QSemaphore>
#include <QTcpServer>

#include <sys/resource.h>

using namespace Velno;
using namespace Velno::GMP;

namespace TestSupport {

namespace {

/** A register that was never paired answers the first request of the key exchange with these bytes. */
int pairedWith(const QByteArray &bytes)
{
    const LogCapture capture;
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 1, [bytes](HandMadeRegister &, const Request &, int) { return QList{bytes}; });
    return initialize("127.0.0.1", port, patience);
}

/** A register that was never paired answers honestly but for what is changed. */
int pairedWith(const std::function<void(const Request &, Fields &)> &change)
{
    const LogCapture capture;
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 1, [change](HandMadeRegister &self, const Request &request, int) {
        Fields fields = self.honestAnswer(request);
        change(request, fields);
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    });
    return initialize("127.0.0.1", port, patience);
}

/** A relay that answers the serial number so. */
int relayAnswers(const QList<QByteArray> &runs, bool stays = false)
{
    QTcpServer silent;
    if (stays) { // accepts, and says nothing
        silent.listen(QHostAddress::LocalHost, relayPort);
        return initialize(throughRelay, 0);
    }
    HandMadeDevice device;
    device.echo = [runs](const QByteArray &) { return runs; };
    device.playRelay(relayPort);
    device.serve(0);
    return initialize(throughRelay, 0);
}

/** As in a process that may open nothing more. */
int relayWithoutDescriptors()
{
    if (initialize(throughRelay, 0) != 2) // so that the library's thread is there
        return -1;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const auto restore = qScopeGuard([limit] { setrlimit(RLIMIT_NOFILE, &limit); });
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    return initialize(throughRelay, 0);
}

int connectionThatNobodyTakes()
{
    HandMadeDevice first{otherSerial};
    if (connectPaired(first, otherSerial) != 0)
        return -1;
    const auto receiver = velno_network_set_receiver(nullptr);
    const auto restore = qScopeGuard([receiver] { velno_network_set_receiver(receiver); });
    HandMadeDevice device;
    return connectPaired(device);
}

/** A register does not answer. */
int interruptedAnswer()
{
    HandMadeDevice device;
    QSemaphore goesOn;
    if (connectPaired(device) != 0)
        return -1;
    device.setAnswer([&goesOn](const QByteArray &) {
        goesOn.acquire();
        return QList<QByteArray>();
    });
    const int result = interrupted(login);
    goesOn.release();
    return result;
}

/** A register that sends keep-alives and no answer. */
int limitedAnswer()
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    device.setAnswer([](const QByteArray &) { return QList{HandMadeDevice::framed(hex("DEADBEEF"))}; });
    velnoext_set_answer_limit(50);
    return login();
}

/** Two registers, of which the active one is closed. */
int noneActive()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    if (connectPaired(first) != 0 || connectPaired(second, otherSerial) != 0)
        return -1;
    velnoext_close();
    return login();
}

/** The active register leaves, and does not come back when it is connected afresh. */
int notConnectedAgain()
{
    HandMadeDevice device;
    if (connectPaired(device) != 0 || initialize("127.0.0.1", freePort(), 10) != 2)
        return -1;
    return login();
}

/** The active register is connected afresh, and nobody takes the connection: its keys are dropped. */
int keysDropped()
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    device.stop();
    const auto receiver = velno_network_set_receiver(nullptr);
    const auto restore = qScopeGuard([receiver] { velno_network_set_receiver(receiver); });
    if (connectPaired(device) != 2)
        return -1;
    return login();
}

int rawWith(unsigned int appNo, const char *data, int length)
{
    HandMadeDevice device;
    if (connectPaired(device, serial, appNo) != 0)
        return -1;
    device.answerPlain(plain(true));
    return velnoext_send_data(data, length);
}

int rawRoomTooSmall()
{
    HandMadeDevice device;
    if (connectPaired(device, serial, 14242) != 0)
        return -1;
    const QByteArray frame = device.sealed("abc");
    char output[2];
    int length = sizeof output;
    return velnoext_get_data(frame.constData(), int(frame.size()), output, &length);
}

std::vector<Way> waysOfConnecting()
{
    return {
        {VelnoCause_AddressInvalid, 4, "a name for an address", [] { return initialize("nowhere", 4100); }},
        {VelnoCause_PortInUse, 2, "a port in use",
         [] {
             QTcpServer holder;
             holder.listen(QHostAddress::LocalHost);
             return initialize("127.0.0.1", holder.serverPort());
         }},
        {VelnoCause_NobodyConnected, 2, "nobody comes",
         [] { return initialize("127.0.0.1", freePort(), 10); }},
        {VelnoCause_CannotListen, 2, "a foreign address",
         [] { return initialize("198.51.100.1", freePort()); }},
        {VelnoCause_RelayNotAnswering, 2, "no relay", [] { return initialize(throughRelay, 0); }},
        {VelnoCause_RelayUnreachable, 2, "no descriptor for a connection", relayWithoutDescriptors},
        {VelnoCause_RelayUnknownRegister, 2, "the relay closes", [] { return relayAnswers({}); }},
        {VelnoCause_RelayUnknownRegister, 2, "the relay closes in its answer",
         [] { return relayAnswers({"UB1234"}); }},
        {VelnoCause_RelaySilent, 2, "the relay says nothing", [] { return relayAnswers({}, true); }},
        {VelnoCause_RelayWrongAnswer, 2, "the relay says another name",
         [] { return relayAnswers({otherSerial}); }},
        {VelnoCause_HandOverFailed, 2, "nobody takes the connection", connectionThatNobodyTakes},
    };
}

std::vector<Way> waysOfPairing()
{
    const QByteArray honest = HandMadeRegister::frameOf(PairingStart, {});
    QByteArray otherCrc = honest;
    otherCrc.back() = char(otherCrc.back() ^ 1);
    const QByteArray noMessage = GMP3::frame(true, None, tlvElement(hex("DFC10D"), "x"), serial);
    const QByteArray stranger = GMP3::frame(true, PairingStart, {}, otherSerial);
    return {
        {VelnoCause_EmptyFrame, 10, "a frame of no length", [] { return pairedWith(QByteArray(2, '\0')); }},
        {VelnoCause_FrameLength, 10, "a frame that is too long", [] { return pairedWith(hex("1001")); }},
        {VelnoCause_FrameCrc, 10, "another CRC", [=] { return pairedWith(otherCrc); }},
        {VelnoCause_FrameSerial, 10, "another register", [=] { return pairedWith(stranger); }},
        {VelnoCause_FrameMessage, 10, "no message", [=] { return pairedWith(noMessage); }},
        {VelnoCause_PairingRefused, 10, "another result code",
         [] {
             return pairedWith(
                 [](const Request &, Fields &fields) { replaceValue(fields, fieldTag(ResultCode), "03"); });
         }},
        {VelnoCause_CertificateNotTrusted, 10, "no certificate",
         [] {
             return pairedWith(
                 [](const Request &, Fields &fields) { removeField(fields, fieldTag(Certificate)); });
         }},
        {VelnoCause_SignatureInvalid, 10, "no signature",
         [] {
             return pairedWith(
                 [](const Request &, Fields &fields) { removeField(fields, fieldTag(Signature)); });
         }},
    };
}

std::vector<Way> waysOfTheCall()
{
    return {
        {VelnoCause_Interrupted, 2, "interrupted while listening",
         [] { return interrupted([] { return initialize("127.0.0.1", freePort(), patience); }); }},
        {VelnoCause_Interrupted, 2, "interrupted while the relay is silent",
         [] {
             QTcpServer silent;
             silent.listen(QHostAddress::LocalHost, relayPort);
             return interrupted([] { return initialize(throughRelay, 0); });
         }},
        {VelnoCause_Interrupted, 2, "interrupted while waiting for an answer", interruptedAnswer},
        {VelnoCause_AnswerLimitPassed, 2, "keep-alives and no answer", limitedAnswer},
        {VelnoCause_NotInitialised, 1, "nobody was connected", login},
        {VelnoCause_NotInitialised, 1, "no serial number without a register",
         [] {
             char buffer[17];
             return velnoext_ecr_serialno(buffer);
         }},
        {VelnoCause_NoActiveDevice, 1, "the active one was closed", noneActive},
        {VelnoCause_NoActiveDevice, 1, "no name without an active one",
         [] {
             char buffer[13];
             return velnoext_active_device(buffer);
         }},
        {VelnoCause_NotConnected, 1, "a register that is not connected",
         [] { return velnoext_set_active_device(otherSerial); }},
        {VelnoCause_NotConnected, 2, "the active one did not come back", notConnectedAgain},
        {VelnoCause_KeysAbsent, 1, "the keys were dropped", keysDropped},
        {VelnoCause_KeysAbsent, 1, "nothing to forget", [] { return velnoext_forget_device(otherSerial); }},
        {VelnoCause_RawNotAllowed, 1, "raw bytes of another application", [] { return rawWith(5, "x", 1); }},
        {VelnoCause_NoEncoding, 8, "a text before the encoding",
         [] {
             VelnoTextStyle style{};
             return velnoext_printer_add_text("Merhaba", &style);
         }},
        {VelnoCause_NoEncoding, 8, "a line feed before the encoding",
         [] { return velnoext_printer_add_line_feed(1); }},
        {VelnoCause_NullArgument, 3, "no pointer", [] { return velnoext_set_active_device(nullptr); }},
        {VelnoCause_BadArgument, 4, "a bad value", [] { return velnoext_set_active_device("UB1"); }},
        {VelnoCause_RoomTooSmall, 4, "room for one of two",
         [] {
             return answered(plain(QVector<int>{11, 23}), readAcquirers);
         }},
        {VelnoCause_RoomTooSmall, 4, "no room for the plain bytes", rawRoomTooSmall},
        {VelnoCause_NegativeLength, 4, "fewer bytes than none", [] { return rawWith(14242, "x", -1); }},
        {VelnoCause_NotEncrypted, 11, "no bytes to send", [] { return rawWith(14242, "x", 0); }},
    };
}

} // namespace

std::vector<Way> waysOfConnections()
{
    std::vector<Way> ways = waysOfConnecting();
    for (Way way : waysOfPairing()) {
        way.pairs = true;
        ways.push_back(way);
    }
    for (const Way &way : waysOfTheCall())
        ways.push_back(way);
    return ways;
}

} // namespace TestSupport
