// SPDX-License-Identifier: Apache-2.0

// Numbers of the network in a Diffie-Hellman exchange: the group that a register names, and its public key.
#include "ExtDevice/gmp3_util.h"
#include "fuzz/fuzz_input.h"

using namespace Velno::GMP;

namespace {

QByteArray knownPrime()
{
    return {get_dh2048_p_value(), get_dh2048_p_size()};
}

/** Any number, the known prime, or one close to it. */
QByteArray numberFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte() % 4;
    if (how == 0)
        return input.chunk();
    QByteArray number = knownPrime();
    if (how == 2)
        number[input.byte()] = char(input.byte());
    if (how == 3)
        number.prepend(input.chunk());
    return number;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    Fuzz::Input input(data, size);
    const QByteArray prime = numberFrom(input);
    const QByteArray generator = input.chunk();
    const QByteArray peerKey = numberFrom(input);

    const Velno::PkeyPtr group =
        GMP3::DH_get(prime.constData(), int(prime.size()), generator.constData(), int(generator.size()));
    FUZZ_EXPECT(GMP3::DH_get_pubkey(group).isEmpty());
    FUZZ_EXPECT(GMP3::DH_compute(group, peerKey).isEmpty());

    GMP3::init(0);
    GMP3::TLV_add(fieldTag(DhPrime), prime, true);
    GMP3::TLV_add(fieldTag(DhGenerator), generator, true);
    GMP3::prepare(PairingKeyExchange, false, "001122334455");
    const QByteArray publicKey = GMP3::DH_get_pubkey(gmp3_message.dh);
    FUZZ_EXPECT(publicKey.isEmpty() == !gmp3_message.dh);
    const QByteArray secret = GMP3::DH_compute(gmp3_message.dh, peerKey);
    FUZZ_EXPECT(secret.size() <= publicKey.size());
    GMP3::create_keys(peerKey);
    FUZZ_EXPECT(gmp3_message.secretAgreed == !secret.isEmpty());
    return 0;
}
