// SPDX-License-Identifier: Apache-2.0

// Strangers at the relay's three doors, who name registers, say more than a name, and leave when they like.
#include "fuzz/fuzz_input.h"
#include "fuzz/loopback.h"
#include "simulator/relay/relay.h"

#include <QCoreApplication>

#include <array>

namespace {

quint16 freePort()
{
    return Fuzz::Listener().port();
}

const std::array<quint16, 3> &doors()
{
    static const std::array<quint16, 3> ports{freePort(), freePort(), freePort()};
    return ports;
}

Simulator::RelayOptions options()
{
    Simulator::RelayOptions options;
    options.applicationPorts = {doors()[0], doors()[1]};
    options.registerPort = doors()[2];
    return options;
}

/** One that names a register, and four that nobody knows. */
QByteArray bytesFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    return how < 64 ? QByteArray("UB123456789").append(char('0' + how % 5)) : input.chunk();
}

void letItRun()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::processEvents();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    Simulator::Relay relay(options());
    FUZZ_EXPECT(relay.start().isEmpty());

    std::array<Fuzz::Descriptor, 6> strangers;
    Fuzz::Input input(data, size);
    while (!input.atEnd()) {
        const std::uint8_t what = input.byte();
        Fuzz::Descriptor &stranger = strangers[what / 8 % strangers.size()];
        if (what % 8 < 3)
            stranger = Fuzz::connectTo(doors()[what % 8]);
        else if (what % 8 == 3)
            stranger = Fuzz::Descriptor();
        else if (stranger && what % 8 == 4)
            stranger.endWriting();
        else if (stranger && what % 8 == 5)
            stranger.hasEnded(); // reads
        else if (stranger)
            stranger.send(bytesFrom(input));
        letItRun();
    }
    for (Fuzz::Descriptor &stranger : strangers)
        stranger = Fuzz::Descriptor();
    letItRun();
    relay.stop();
    return 0;
}
