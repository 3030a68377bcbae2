#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/texts.h"
#include "tests/support/library_test.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_authority.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSemaphore>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <sys/resource.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno;
using namespace Velno::Ext;
using namespace Velno::GMP;

namespace {

constexpr quint16 relayPort = 50902;

// What is asked -------------------------------------------------------------------------------------------

int login()
{
    return velnoext_login(patience);
}

int readState()
{
    int state = 0;
    return velnoext_ecr_state(patience, &state);
}

int addItem()
{
    VelnoSaleItem item{1250, 1000, 0, 0, "Ekmek", 1, 0};
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &item, &totals);
}

int readSaleState()
{
    int first = 0;
    VelnoEcrSaleTotals totals{};
    VelnoReceiptRef receipt{};
    return velnoext_sale_state(patience, &first, &totals, &receipt);
}

int addContribution()
{
    return velnoext_add_medical_contribution(patience, 100, 11'111'111'111);
}

int cancelSale()
{
    return velnoext_cancel_sale(patience);
}

int readSection()
{
    VelnoSaleItem item{};
    item.section = 1;
    return velnoext_section_data(patience, &item);
}

int readAcquirers()
{
    int list[1] = {};
    int count = 1;
    return velnoext_active_acquirers(patience, list, &count);
}

int initialize(const char *address, quint16 port, unsigned int timeout = brief)
{
    return velnoext_initialize(5, serial, address, port, timeout);
}

// Who answers ---------------------------------------------------------------------------------------------

/** A paired register answers one call with this plaintext. */
int answered(const QByteArray &plaintext, int (*call)())
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    device.answerPlain(plaintext);
    return call();
}

/** A paired register answers several commands of one call with these plaintexts. */
int answeredInTurn(const QList<QByteArray> &plaintexts, int (*call)())
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    device.answerInTurn(plaintexts);
    return call();
}

/** A paired register answers a login with these bytes, the device frame's length included. */
int answeredBytes(const std::function<QByteArray(const HandMadeDevice &)> &bytes,
                  unsigned int timeout = patience)
{
    const LogCapture capture;
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    const QByteArray answer = bytes(device);
    device.setAnswer([answer](const QByteArray &) { return QList{answer}; });
    return velnoext_login(timeout);
}

/** The answer's frame with one byte changed. */
int answeredDamaged(int index)
{
    return answeredBytes([index](const HandMadeDevice &device) {
        QByteArray frame = device.sealed(plain(true));
        const qsizetype place = index < 0 ? frame.size() + index : index;
        frame[place] = char(frame.at(place) ^ 0x10);
        return HandMadeDevice::framed(frame);
    });
}

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
        return initialize(relay, 0);
    }
    HandMadeDevice device;
    device.echo = [runs](const QByteArray &) { return runs; };
    device.playRelay(relayPort);
    device.serve(0);
    return initialize(relay, 0);
}

/** As in a process that may open nothing more. */
int relayWithoutDescriptors()
{
    if (initialize(relay, 0) != 2) // so that the library's thread is there
        return -1;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const auto restore = qScopeGuard([limit] { setrlimit(RLIMIT_NOFILE, &limit); });
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    return initialize(relay, 0);
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

int registerThatReadsNothing()
{
    HandMadeDevice device;
    QSemaphore readsOn;
    if (connectPaired(device, serial, 14242) != 0)
        return -1;
    device.setAnswer([&readsOn](const QByteArray &) {
        readsOn.acquire(); // until then it reads nothing
        return QList<QByteArray>();
    });
    const QByteArray most(65'471, 'x');
    int result = 0;
    for (int sent = 0; sent < 1000 && result == 0; ++sent) // many times what the kernel holds
        result = velnoext_send_data(most.constData(), int(most.size()));
    readsOn.release();
    return result;
}

/** Says something for as long as it is asked. */
class Talker : public QIODevice
{
public:
    Talker() { open(QIODevice::ReadWrite); }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return 1000; }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        std::fill_n(data, size, 'w');
        return size;
    }
    qint64 writeData(const char *, qint64 size) override { return size; }
};

int registerThatNeverStopsTalking()
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    OwnedDevice talker(new Talker);
    library().connections[serial].swap(talker);
    const int result = login();
    library().connections[serial].swap(talker);
    return result;
}

/** What a call ends with that is interrupted as soon as it waits. */
int interrupted(const std::function<int()> &call)
{
    auto result = std::async(std::launch::async, call);
    while (result.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        velnoext_interrupt();
    return result.get();
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

/** The exit code of a program of its own; its cause is what it prints. */
int causeOfProgram(const QString &program, const QStringList &arguments, const std::function<void()> &prepare,
                   int *cause)
{
    QProcess process;
    if (prepare)
        process.setChildProcessModifier(prepare);
    process.start(program, arguments);
    if (!process.waitForFinished())
        return -1;
    const QByteArray output = process.readAllStandardOutput();
    *cause = output.mid(output.indexOf("cause ") + 6).split('\n').first().toInt();
    return process.exitCode();
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

// Ways ----------------------------------------------------------------------------------------------------

/** A cause, the result that it comes with, and a call that ends so. */
struct Way
{
    int cause;
    int result;
    QByteArray how;
    std::function<int()> ask;
};

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
        {VelnoCause_RelayNotAnswering, 2, "no relay", [] { return initialize(relay, 0); }},
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
             return interrupted([] { return initialize(relay, 0); });
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

std::vector<Way> waysOfTheAnswer()
{
    return {
        {VelnoCause_ClosedBeforeSending, 2, "it has closed before",
         [] {
             HandMadeDevice device;
             if (connectPaired(device) != 0)
                 return -1;
             device.answerByClosing();
             login();
             return login();
         }},
        {VelnoCause_NotSentInTime, 2, "it reads nothing", registerThatReadsNothing},
        {VelnoCause_ClosedWhileWaiting, 2, "it closes in place of an answer",
         [] {
             HandMadeDevice device;
             if (connectPaired(device) != 0)
                 return -1;
             device.answerByClosing();
             return login();
         }},
        {VelnoCause_SilentRegister, 2, "the rest does not come",
         [] { return answeredBytes([](const HandMadeDevice &) { return hex("0000000A41"); }, brief); }},
    };
}

std::vector<Way> waysOfDamagedAnswers()
{
    return {
        {VelnoCause_FrameLength, 12, "another length", [] { return answeredDamaged(1); }},
        {VelnoCause_FrameCrc, 12, "another CRC", [] { return answeredDamaged(-1); }},
        {VelnoCause_FrameSerial, 12, "another register",
         [] {
             return answeredBytes([](const HandMadeDevice &) {
                 return HandMadeDevice::framed(HandMadeDevice(otherSerial).sealed(plain(true)));
             });
         }},
        {VelnoCause_ElementsWrong, 12, "no elements",
         [] {
             return answeredBytes([](const HandMadeDevice &device) {
                 return HandMadeDevice::framed(device.withElements({}));
             });
         }},
        {VelnoCause_MacWrong, 11, "sealed by somebody else",
         [] {
             return answeredBytes([](const HandMadeDevice &) {
                 HandMadeDevice stranger;
                 stranger.record.hmacKey = QByteArray(32, 's');
                 return HandMadeDevice::framed(stranger.sealed(plain(true)));
             });
         }},
        {VelnoCause_DecryptedToNothing, 11, "half a block behind its MAC",
         [] {
             return answeredBytes([](const HandMadeDevice &device) {
                 const QByteArray half(15, 'h');
                 return HandMadeDevice::framed(
                     device.withElements(tlvElement(hex("DFE002"), half) +
                                         tlvElement(hex("DFE003"), GMP3_HMAC(device.record, half))));
             });
         }},
        {VelnoCause_RequestReflected, 12, "the request comes back",
         [] {
             HandMadeDevice device;
             if (connectPaired(device) != 0)
                 return -1;
             device.setAnswer(
                 [](const QByteArray &request) { return QList{HandMadeDevice::framed(request)}; });
             return login();
         }},
        {VelnoCause_AnswerTooLong, 2, "a gigabyte is announced",
         [] { return answeredBytes([](const HandMadeDevice &) { return hex("40000000"); }); }},
        {VelnoCause_EndlessBytes, 2, "it never stops talking", registerThatNeverStopsTalking},
        {VelnoCause_AnswerTooShort, 5, "a state of three bytes",
         [] { return answered(QByteArray(3, '\0'), readState); }},
        {VelnoCause_SectionNameTooLong, 5, "a section's name of 53 bytes",
         [] { return answered(plain(QByteArray(53, 'n'), 1), readSection); }},
    };
}

const QVector<int> ready{1};

std::vector<Way> waysOfRefusals()
{
    return {
        {VelnoCause_SaidNo, 8, "no, and no more", [] { return answered(plain(false), login); }},
        {VelnoCause_SaidNo, 8, "no to a Z number",
         [] {
             return answered(plain(false, 17), [] {
                 int z = 0;
                 return velnoext_current_z(patience, &z);
             });
         }},
        {VelnoCause_SaidNo, 8, "no to an item, and no more", [] { return answered(plain(false), addItem); }},
        {VelnoCause_SaidNo, 8, "no to an item, cut short", [] { return answered(plain(false, 5), addItem); }},
        {VelnoCause_SaidNo, 8, "no to an item while all is well",
         [] { return answered(plain(false, 5, ready, 0), addItem); }},
        {VelnoCause_SaidNo, 8, "no beside payments",
         [] { return answered(plain(false, 5, ready, 8), addItem); }},
        {VelnoCause_PrinterEmpty, 9, "no paper",
         [] { return answered(plain(false), [] { return velnoext_check_printer_paper(patience); }); }},
        {VelnoCause_DisplayEmpty, 7, "an item, and an empty display",
         [] { return answered(plain(true, 5, QVector<int>(), 0), addItem); }},
        {VelnoCause_DisplayEmpty, 7, "an open sale, and an empty display",
         [] { return answered(plain(true, 5, QVector<int>()), readSaleState); }},
        {VelnoCause_OtherNumber, 8, "an error below 0",
         [] { return answered(plain(true, 5, ready, -1), addItem); }},
        {VelnoCause_OtherNumber, 8, "an error of five digits",
         [] { return answered(plain(true, 5, ready, 10'000), addItem); }},
        {VelnoCause_OtherNumber, 6, "a state below 0",
         [] { return answered(plain(true, -2, QVector<int>(), 0), addItem); }},
        {VelnoCause_OtherNumber, 7, "a display below 0",
         [] { return answered(plain(true, 5, QVector<int>{-1}, 0), addItem); }},
        {19'999, 8, "an error of four digits", [] { return answered(plain(true, 5, ready, 9999), addItem); }},
        {10'016, 8, "no, and an error", [] { return answered(plain(false, 5, ready, 16), addItem); }},
        {10'024, 8, "no, and an error beside payments",
         [] { return answered(plain(false, 5, ready, 24), readSaleState); }},
        {20'001, 8, "no, and another state",
         [] { return answered(plain(false, 1, QVector<int>(), 0), addItem); }},
        {30'002, 8, "no, and another display",
         [] { return answered(plain(false, 5, QVector<int>{2}, 0), addItem); }},
        {10'001, 7, "an error of a contribution",
         [] { return answered(plain(true, 5, ready, 1), addContribution); }},
        {10'016, 7, "an error and another display",
         [] { return answered(plain(true, 5, QVector<int>{0}, 16), addItem); }},
        {30'000, 7, "another display beside payments",
         [] { return answered(plain(true, 5, QVector<int>{0}, 8), addItem); }},
    };
}

std::vector<Way> waysOfStatesAndKeys()
{
    return {
        {20'005, 6, "a sale is open",
         [] { return answered(plain(5, ready), [] { return velnoext_start_sale(patience); }); }},
        {20'005, 6, "a report while a sale is open",
         [] { return answered(plain(5, ready), velnoext_x_report); }},
        {20'001, 6, "a payment without a sale",
         [] { return answered(plain(1, QVector<int>()), [] { return velnoext_add_payment(0, 100); }); }},
        {30'002, 7, "cancelling while something is typed",
         [] { return answered(plain(5, QVector<int>{2}, 0), cancelSale); }},
        {10'002, 8, "cancelling behind an error", [] { return answered(plain(5, ready, 2), cancelSale); }},
        {10'004, 7, "cancelling behind an error, while something is typed",
         [] { return answered(plain(5, QVector<int>{2}, 4), cancelSale); }},
        {20'007, 6, "cancelled, and elsewhere",
         [] {
             return answeredInTurn({plain(5, ready, 0), plain(7, QVector<int>())}, cancelSale);
         }},
        {20'005, 6, "not cancelled",
         [] {
             return answeredInTurn({plain(5, ready, 0), plain(5, ready, 8)}, cancelSale);
         }},
        {10'064, 6, "not cancelled, and why",
         [] {
             return answeredInTurn({plain(5, ready, 0), plain(5, ready, 64)}, cancelSale);
         }},
        {20'005, 6, "not cancelled, and no error told",
         [] {
             return answeredInTurn({plain(5, ready, 0), plain(5, ready)}, cancelSale);
         }},
    };
}

/** What a register tells by number, as a step of a sale is answered. */
std::vector<Way> waysOfNumbers()
{
    std::vector<Way> ways;
    for (const int error : {1, 2, 4, 8, 16, 32, 64})
        ways.push_back({VelnoCause_OfError + error, 8, "error " + QByteArray::number(error),
                        [error] { return answered(plain(true, 5, ready, error), addItem); }});
    for (const int state : {0, 1, 2, 3, 4, 6, 7, 8, 9, 9999})
        ways.push_back({VelnoCause_OfState + state, 6, "state " + QByteArray::number(state),
                        [state] { return answered(plain(true, state, QVector<int>(), 0), addItem); }});
    for (const int display : {0, 2, 3, 9999})
        ways.push_back({VelnoCause_OfDisplay + display, 7, "display " + QByteArray::number(display),
                        [display] { return answered(plain(true, 5, QVector<int>{display}, 0), addItem); }});
    return ways;
}

const std::vector<Way> &ways()
{
    static const std::vector<Way> all = [] {
        std::vector<Way> some;
        for (const auto &part :
             {waysOfConnecting(), waysOfPairing(), waysOfTheCall(), waysOfTheAnswer(), waysOfDamagedAnswers(),
              waysOfRefusals(), waysOfStatesAndKeys(), waysOfNumbers()})
            some.insert(some.end(), part.begin(), part.end());
        return some;
    }();
    return all;
}

/** A failure at the simulated register, and the name of its cause. Without a call it is that of connecting.
 */
void row(const char *name, const char *options, int result, const char *cause, std::function<int()> ask = {})
{
    QTest::newRow(name) << QString::fromLatin1(options).split(u' ', Qt::SkipEmptyParts) << result
                        << QString::fromLatin1(cause) << std::move(ask);
}

void addReasonsOfSelling()
{
    const auto startSale = [] { return velnoext_start_sale(patience); };
    const auto inSale = [startSale](int (*ask)()) {
        return [startSale, ask] { return startSale() == 0 ? ask() : -1; };
    };
    const auto sell = [](long long price, int quantity) {
        VelnoSaleItem item{price, quantity, 0, 0, "Ekmek", 1, 0};
        VelnoEcrSaleTotals totals{};
        return velnoext_add_sale_item(patience, &item, &totals);
    };
    row("item without a sale", "", 6, "state-idle", addItem);
    row("sale while one is open", "", 6, "state-sale-open",
        [=] { return startSale() == 0 ? startSale() : -1; });
    row("sale without paper", "--no-paper", 6, "state-idle", startSale);
    row("sale while out of service", "--state 8", 6, "state-out-of-service", startSale);
    row("login while starting", "--state 0", 8, "said-no", login);
    row("paper", "--no-paper", 9, "printer-empty", [] { return velnoext_check_printer_paper(patience); });
    row("report without paper", "--no-paper", 8, "said-no", velnoext_x_report);
    row("item over the limit", "--sale-limit 1000", 8, "register-over-limit", inSale(addItem));
    row("item of no quantity", "", 8, "register-wrong-value",
        [=] { return startSale() == 0 ? sell(100, -1000) : -1; });
    row("item that is not there", "", 8, "register-nothing-there", inSale([] {
            VelnoEcrSaleTotals totals{};
            return velnoext_delete_sale_item(patience, 7, &totals);
        }));
    row("item behind a payment", "", 8, "register-payment-begun", inSale([] {
            if (addItem() != 0 || velnoext_add_payment(VelnoPaymentKey_F10, 100) != 0)
                return -1;
            return addItem();
        }));
    row("item refused without a word", "--fault refuse=item", 8, "register-wrong-value", inSale(addItem));
    row("journal that cannot be written", "--fault error=64", 7, "register-no-journal", startSale);
    row("keys at the wrong display", "--fault error=1", 7, "register-wrong-key", startSale);
    row("error of another register", "--fault error=128", 7, "register-error", startSale);
}

void addFaults()
{
    row("another authority", "--fault wrong-authority", 10, "certificate-not-trusted");
    row("wrong signature", "--fault bad-signature", 10, "signature-invalid");
    row("another application", "--fault wrong-app-hash", 10, "pairing-refused");
    row("another serial number", "--fault other-serial", 10, "frame-serial");
    row("damaged on its way", "--fault bad-crc", 10, "frame-crc");
    row("no message", "--fault no-message-tag", 10, "frame-message");
    row("too long", "--fault oversize", 10, "frame-length");
    row("closes", "--fault close=2", 10, "closed-while-waiting");
    row("half an answer", "--fault half-frame", 2, "silent-register", [] { return velnoext_login(brief); });
    row("a gigabyte", "--fault huge-frame", 2, "answer-too-long", login);
    row("has lost its keys", "--fault forget-pairing", 2, "closed-while-waiting", login);
    row("wrong MAC", "--fault bad-mac", 11, "mac-wrong", login);
    row("no MAC", "--fault no-mac", 12, "elements-wrong", login);
    row("too short", "--fault short-reply", 5, "answer-too-short", readState);
}

/** Causes without a way above. */
const struct
{
    int cause;
    const char *reason;
} elsewhere[] = {
    {VelnoCause_None, "what every call begins with: successLeavesNoCause"},
    {VelnoCause_WriteRefused,
     "the system takes bytes until it tells that the connection is gone: 2005 or 2007"},
    {VelnoCause_NoThread, "needs a process without threads: programsTellTheirCause"},
    {VelnoCause_ProgramUnreadable, "needs a program without its file: programsTellTheirCause"},
};

bool isElsewhere(int cause)
{
    return std::ranges::any_of(elsewhere, [cause](const auto &row) { return row.cause == cause; });
}

bool hasWay(int cause)
{
    return std::ranges::any_of(ways(), [cause](const Way &way) { return way.cause == cause; });
}

} // namespace

/** Every cause of the device library can be had: each row goes there, and the result that it comes with. */
class TestCauses : public LibraryTest
{
    Q_OBJECT

private slots:
    void everyCauseHasAWay();
    void causesByWay_data();
    void causesByWay();
    void successLeavesNoCause();
    void everyCallBeginsWithoutACause();
    void causeNeedsNoLock();
    void programsTellTheirCause();
    void reasonsOfTheSimulatedRegister_data();
    void reasonsOfTheSimulatedRegister();
    void paperThatRunsOutInASale();
};

void TestCauses::everyCauseHasAWay()
{
    for (const Words &cause : causeTexts())
        QVERIFY2(hasWay(cause.number) != isElsewhere(cause.number), cause.name);
}

void TestCauses::causesByWay_data()
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < ways().size(); ++i)
        QTest::addRow("%d: %s", ways()[i].cause, ways()[i].how.constData()) << int(i);
}

void TestCauses::causesByWay()
{
    QFETCH(const int, index);
    const Way &way = ways()[size_t(index)];
    const auto unlimited = qScopeGuard([] { velnoext_set_answer_limit(0xFFFFFFFF); });
    QCOMPARE(way.ask(), way.result);
    QCOMPARE(velnoext_cause(), way.cause);
}

void TestCauses::successLeavesNoCause()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_cause(), int(VelnoCause_None));
    device.answerPlain(plain(false));
    QCOMPARE(login(), 8);
    QCOMPARE(velnoext_cause(), int(VelnoCause_SaidNo));
    device.answerPlain(plain(true));
    QCOMPARE(login(), 0);
    QCOMPARE(velnoext_cause(), int(VelnoCause_None));
}

void TestCauses::everyCallBeginsWithoutACause()
{
    char buffer[17];
    VelnoTextStyle style{};
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto fail = [] { return velnoext_set_active_device(nullptr) == 3 && velnoext_cause() != 0; };
    const std::function<int()> calls[] = {
        [&] { return velnoext_active_device(buffer); },
        [&] { return velnoext_ecr_serialno(buffer); },
        [] { return velnoext_set_active_device(serial); },
        [] { return velnoext_printer_set_encoding("UTF-8"); },
        [&] { return velnoext_printer_add_text("a", &style); },
        [] { return velnoext_printer_add_line_feed(1); },
        [&] { return velnoext_printer_add_justified_text("a", "b", &style); },
        [] {
            velnoext_close();
            return 0;
        },
        [] {
            velnoext_close_all();
            return 0;
        },
    };
    for (const auto &call : calls) {
        QVERIFY(fail());
        QCOMPARE(call(), 0);
        QCOMPARE(velnoext_cause(), int(VelnoCause_None));
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestCauses::causeNeedsNoLock()
{
    QCOMPARE(login(), 1);
    const QMutexLocker lock(&library().connectionMutex); // as while a command is waiting for its answer
    QCOMPARE(velnoext_cause(), int(VelnoCause_NotInitialised));
}

void TestCauses::programsTellTheirCause()
{
    const QString program = QStringLiteral(VELNO_PLAIN_C_PROGRAM);
    int cause = 0;
#ifndef __SANITIZE_THREAD__ // which starts a thread of its own first
    const auto withoutThreads = [] {
        const rlimit limit{std::numeric_limits<size_t>::max() / 4 * 3, RLIM_INFINITY};
        setrlimit(RLIMIT_STACK, &limit); // no thread can have a stack of this size, the C library's default
    };
    QCOMPARE(causeOfProgram(program, {QString::number(freePort())}, withoutThreads, &cause), 1);
    QCOMPARE(cause, int(VelnoCause_NoThread));
#endif
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"program"_s);
    QVERIFY(QFile::copy(program, copy));
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port);
    QCOMPARE(causeOfProgram(copy, {QString::number(port), copy}, {}, &cause), 13);
    QCOMPARE(cause, int(VelnoCause_ProgramUnreadable));
}

void TestCauses::reasonsOfTheSimulatedRegister_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("name");
    QTest::addColumn<std::function<int()>>("ask");
    addReasonsOfSelling();
    addFaults();
}

void TestCauses::reasonsOfTheSimulatedRegister()
{
    QFETCH(const QStringList, options);
    QFETCH(const int, result);
    QFETCH(const std::function<int()>, ask);
    const LogCapture capture;
    const quint16 port = freePort();
    SimulatedRegister reg(port, options);
    const int connected = initialize("127.0.0.1", port, patience);
    QCOMPARE(connected, ask ? 0 : result);
    if (ask)
        QCOMPARE(ask(), result);
    QTEST(QString::fromLatin1(velnoext_cause_name(velnoext_cause())), "name");
}

void TestCauses::paperThatRunsOutInASale()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(), 0);
    reg.say("paper off");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(addItem(), 8);
    QCOMPARE(velnoext_cause(), int(VelnoCause_PaperOut));
}

QTEST_GUILESS_MAIN(TestCauses)
#include "tst_causes.moc"
