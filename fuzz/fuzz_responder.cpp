// SPDX-License-Identifier: Apache-2.0

// The register's side of a key exchange: raw bytes, or an honest application's requests with fields behind
// them, which replace the honest ones.
#include "fuzz/fuzz_input.h"
#include "fuzz/honest_application.h"
#include "fuzz/paired_record.h"
#include "simulator/register/pairing_responder.h"

using namespace Velno::GMP;

namespace {

QByteArray frameFrom(Fuzz::Input &input, Fuzz::HonestApplication &application)
{
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    if (how & 0x80)
        return bytes;
    const MessageTag kind = MessageTag(PairingStart + (how & 3));
    const QByteArray honest = how & 0x40 ? QByteArray() : application.request(kind);
    return makeFrame(how & 0x20, kind, honest + bytes, Fuzz::serial);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Simulator::Faults faults;
    Simulator::PairingResponder responder(Fuzz::serial,
                                          QString::fromUtf8(VELNO_DEVELOPMENT_AUTHORITY "/register"),
                                          Fuzz::applicationHash, faults);
    responder.begin();
    Fuzz::HonestApplication application;
    Fuzz::Input input(data, size);
    while (!input.atEnd()) {
        const auto request = responder.read(frameFrom(input, application));
        if (!request.refusal.isEmpty())
            continue;
        const auto answer = responder.answer(request.kind);
        FUZZ_EXPECT(!answer.frame.isEmpty());
        application.hear(answer.frame);
        FUZZ_EXPECT(!answer.paired ||
                    (responder.session().record.secretAgreed && responder.takeKeys().aesKey.size() == 32));
    }
    return 0;
}
