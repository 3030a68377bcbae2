// SPDX-License-Identifier: Apache-2.0

// The application's side of a key exchange, over a connection, against a register that says anything: raw
// bytes, or an honest register's answers with fields behind them, which replace the honest ones.
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/loopback.h"
#include "tests/support/hand_made_register.h"

#include <QCoreApplication>

using namespace Velno::GMP;
using TestSupport::Fields;

namespace {

constexpr char serial[] = "UB1234567890";

/** What an honest register answers, whoever asks: it signs its key alone. Made once. */
const Fields &honestAnswer(MessageTag kind)
{
    static TestSupport::HandMadeRegister device;
    static const Velno::PkeyPtr stranger = [] {
        Velno::PkeyPtr pair = GMP3::DH_get_dh2048();
        FUZZ_EXPECT(GMP3::DH_generate(pair));
        return pair;
    }();
    static const Fields start = device.honestAnswer({PairingStart, {}});
    static const Fields keyExchange = device.honestAnswer(
        {PairingKeyExchange, {{fieldTag(RequesterPublicKey), GMP3::DH_get_pubkey(stranger)}}});
    static const Fields confirm = {{fieldTag(ResultCode), "00"},
                                   {fieldTag(PairingNumber), QByteArray("\x47\x11")},
                                   {fieldTag(PairingIndex), QByteArray(1, '\x42')}};
    return kind == PairingStart ? start : kind == PairingKeyExchange ? keyExchange : confirm;
}

QByteArray frameFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    if (how & 0x80)
        return bytes;
    const MessageTag kind = MessageTag(PairingStart + (how & 3));
    QByteArray body;
    if (!(how & 0x40)) {
        for (const auto &[tag, value] : honestAnswer(kind))
            body += Velno::tlvElement(tag, value);
    }
    return GMP3::frame(!(how & 0x20), kind, body + bytes, serial);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Fuzz::Listener listener;

    unsigned int handle = 0;
    FUZZ_EXPECT(velno_network_connect("127.0.0.1", listener.port(), 5000, &handle) == 0);
    const Fuzz::Descriptor device = listener.accept();
    Fuzz::Input input(data, size);
    while (!input.atEnd())
        device.send(frameFrom(input));
    device.endWriting(); // every wait ends when the answers are used up

    MatchExt record;
    const int result =
        GMP3_KeyExchange_Server(record, quint32(handle), serial, "001122334455", QByteArray(32, 'h'));
    FUZZ_EXPECT(record.aesKey.size() == (result == 0 ? 32 : 0));
    FUZZ_EXPECT(record.hmacKey.size() == record.aesKey.size());
    return 0;
}
