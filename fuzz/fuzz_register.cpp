// SPDX-License-Identifier: Apache-2.0

// A connection of the simulated register to anybody: what it is for, where a frame ends, what comes next.
#include "fuzz/fuzz_input.h"
#include "fuzz/honest_application.h"
#include "fuzz/loopback.h"
#include "fuzz/paired_record.h"
#include "simulator/register/cash_register.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace {

QByteArray withLength(const QByteArray &frame)
{
    QByteArray length(sizeof(quint32), Qt::Uninitialized);
    qToBigEndian(quint32(frame.size()), length.data());
    return length + frame;
}

QByteArray bytesFrom(std::uint8_t how, Fuzz::Input &input, Fuzz::HonestApplication &application)
{
    const MessageTag kind = MessageTag(PairingStart + (how & 3));
    const QByteArray bytes = input.chunk();
    switch (how >> 5) {
    case 0:
        return bytes;
    case 1:
        return makeFrame(false, kind, bytes, Fuzz::serial);
    case 2:
        return makeFrame(false, kind, application.request(kind) + bytes, Fuzz::serial);
    case 3:
        return withLength(bytes);
    case 4:
        return withLength(makeFrame(true, None, bytes, Fuzz::serial));
    default:
        return withLength(Fuzz::sealed(application.record(), bytes));
    }
}

/** Lets the register do what it has to do, until this holds. */
template <typename Condition>
void letItRunUntil(Condition condition)
{
    const QDeadlineTimer patience(20'000);
    while (!condition()) {
        FUZZ_EXPECT(!patience.hasExpired());
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
}

/** One connection, up to its end or to where the input says that the next one begins. */
void converse(const Fuzz::Listener &listener, Fuzz::Input &input, Fuzz::HonestApplication &application)
{
    constexpr std::uint8_t nextConnection = 0xE0;
    Fuzz::Descriptor peer;
    letItRunUntil([&] { return bool(peer = listener.accept(false)); });
    while (!input.atEnd() && !peer.hasEnded()) {
        const std::uint8_t how = input.byte();
        if (how >= nextConnection)
            break;
        peer.send(bytesFrom(how, input, application));
        for (int i = 0; i < 4; ++i)
            QCoreApplication::processEvents();
        application.hear(peer.received());
    }
    peer.endWriting();
    letItRunUntil([&] { return peer.hasEnded(); });
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication program(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Fuzz::Listener listener;

    Simulator::RegisterOptions options;
    options.serial = Fuzz::serial;
    options.host = u"127.0.0.1"_s;
    options.port = listener.port();
    options.credentials = QString::fromUtf8(VELNO_DEVELOPMENT_AUTHORITY "/register");
    Simulator::CashRegister cashRegister(options);
    FUZZ_EXPECT(cashRegister.prepare().isEmpty());
    cashRegister.start();
    Fuzz::HonestApplication application;
    Fuzz::Input input(data, size);
    do
        converse(listener, input, application);
    while (!input.atEnd());
    cashRegister.stop();
    return 0;
}
