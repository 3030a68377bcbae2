// SPDX-License-Identifier: Apache-2.0

// Frames that come over a device connection in place of answers: how they are cut from the stream, checked,
// authenticated and decrypted.
#include "ExtDevice/velnoext/command_exchange.h"
#include "ExtDevice/velnoext/connection_helper.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/loopback.h"
#include "fuzz/paired_record.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace Velno::Ext;
using namespace Velno::GMP;

namespace {

QByteArray framed(const QByteArray &payload)
{
    QByteArray frame(sizeof(quint32), Qt::Uninitialized);
    qToBigEndian(quint32(payload.size()), frame.data());
    return frame + payload;
}

QByteArray bytesFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte() % 8;
    const QByteArray bytes = input.chunk();
    switch (how) {
    case 0:
        return bytes;
    case 1:
        return framed(bytes);
    case 2:
        return framed(GMP3::frame(true, None, bytes, Fuzz::serial));
    case 3:
        return framed(Fuzz::authentic(activeRecord(), bytes));
    case 4:
        return framed("\xDE\xAD\xBE\xEF"_ba); // a keep-alive
    case 5:
        return framed(GMP3::frame(true, None, bytes, "UB0000000001"));
    default:
        return framed(Fuzz::sealed(activeRecord(), bytes));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Fuzz::Listener listener;
    library().activeDevice = Fuzz::serial;
    library().pairingRecords[Fuzz::serial] = Fuzz::pairedRecord();

    const Fuzz::Descriptor device = Fuzz::connectTo(listener.port());
    QTcpSocket socket;
    Fuzz::Descriptor accepted = listener.accept();
    socket.setSocketDescriptor(::dup(accepted.number()));
    accepted = Fuzz::Descriptor();
    Fuzz::Input input(data, size);
    while (!input.atEnd())
        device.send(bytesFrom(input));
    device.endWriting();

    for (QByteArray payload; ConnectionHelper::receive(1000, &socket, &payload);) {
        FUZZ_EXPECT(payload.size() <= largestPayload);
        QByteArray plaintext;
        const int result = parseTlvElements(payload, &plaintext);
        FUZZ_EXPECT(result == Success || result == NotAuthentic || result == MalformedReply);
        FUZZ_EXPECT((result == Success) != plaintext.isEmpty());
    }
    return 0;
}
