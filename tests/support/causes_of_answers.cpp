// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "tests/support/cause_ways.h"
#include "tests/support/library_calls.h"
#include "tests/support/test_support.h"

#include <QSemaphore>

#include <algorithm>

using namespace Velno;
using namespace Velno::Ext;
using namespace Velno::GMP;

namespace TestSupport {

namespace {

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

} // namespace

std::vector<Way> waysOfAnswers()
{
    std::vector<Way> ways;
    for (const auto &part : {waysOfTheAnswer(), waysOfDamagedAnswers(), waysOfRefusals(),
                             waysOfStatesAndKeys(), waysOfNumbers()})
        ways.insert(ways.end(), part.begin(), part.end());
    return ways;
}

} // namespace TestSupport
