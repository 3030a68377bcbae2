// The register's side of a key exchange: raw bytes, or an honest application's requests with fields behind
// them, which replace the honest ones.
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3_util.h"
#include "fuzz/fuzz_input.h"
#include "simulator/pairing_responder.h"

#include <QCoreApplication>

using namespace Velno::GMP;

namespace {

constexpr char serial[] = "UB1234567890";
const QByteArray applicationHash(32, 'h');

template <typename Tag>
QByteArray field(Tag tag, const QByteArray &value)
{
    return Velno::tlvElement(fieldTag(tag), value);
}

const QByteArray &publicKey()
{
    static const QByteArray key = [] {
        Velno::PkeyPtr pair = GMP3::DH_get_dh2048();
        FUZZ_EXPECT(GMP3::DH_generate(pair));
        return GMP3::DH_get_pubkey(pair);
    }();
    return key;
}

/** What proves that both sides hold the same keys: taken from the register's own session, as it is now. */
QByteArray proof()
{
    const QByteArray checkValue = GMP3::create_keys(GMP3::TLV_value(fieldTag(RequesterPublicKey)));
    QByteArray iv = gmp3_message.kcvIv;
    const QByteArray hash = GMP3_aes_cipher(true, gmp3_message.aesKey, applicationHash, iv);
    return field(KeyCheckValue, checkValue) + Velno::tlvElement(QByteArrayLiteral("\xDF\xE0\x04"), hash);
}

QByteArray honestRequest(MessageTag kind)
{
    switch (kind) {
    case PairingStart:
        return field(RequesterRandom, QByteArray(16, 'R'));
    case PairingKeyExchange:
        return field(RequesterPublicKey, publicKey());
    default:
        return proof();
    }
}

QByteArray frameFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    if (how & 0x80)
        return bytes;
    const MessageTag kind = MessageTag(PairingStart + (how & 3));
    const QByteArray honest = how & 0x40 ? QByteArray() : honestRequest(kind);
    return GMP3::frame(how & 0x20, kind, honest + bytes, serial);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Simulator::Faults faults;
    Simulator::PairingResponder responder(serial, QStringLiteral(VELNO_DEVELOPMENT_AUTHORITY "/register"),
                                          applicationHash, faults);
    responder.begin();
    Fuzz::Input input(data, size);
    while (!input.atEnd()) {
        const auto request = responder.read(frameFrom(input));
        if (!request.refusal.isEmpty())
            continue;
        const auto answer = responder.answer(request.kind);
        FUZZ_EXPECT(!answer.frame.isEmpty());
        FUZZ_EXPECT(!answer.paired || (gmp3_message.secretAgreed && responder.keys().aesKey.size() == 32));
    }
    return 0;
}
