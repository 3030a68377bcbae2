// The register's side of a key exchange: raw bytes, or an honest application's requests with fields behind
// them, which replace the honest ones.
#include "ExtDevice/gmp3/gmp3.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/honest_requests.h"
#include "simulator/register/pairing_responder.h"

using namespace Velno::GMP;

namespace {

constexpr char serial[] = "UB1234567890";

QByteArray frameFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    if (how & 0x80)
        return bytes;
    const MessageTag kind = MessageTag(PairingStart + (how & 3));
    const QByteArray honest = how & 0x40 ? QByteArray() : Fuzz::honestRequest(kind);
    return GMP3::frame(how & 0x20, kind, honest + bytes, serial);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Simulator::Faults faults;
    Simulator::PairingResponder responder(serial, QStringLiteral(VELNO_DEVELOPMENT_AUTHORITY "/register"),
                                          Fuzz::applicationHash, faults);
    responder.begin();
    Fuzz::Input input(data, size);
    while (!input.atEnd()) {
        const auto request = responder.read(frameFrom(input));
        if (!request.refusal.isEmpty())
            continue;
        const auto answer = responder.answer(request.kind);
        FUZZ_EXPECT(!answer.frame.isEmpty());
        FUZZ_EXPECT(!answer.paired ||
                    (gmp3_message.secretAgreed && responder.takeKeys().aesKey.size() == 32));
    }
    return 0;
}
