// SPDX-License-Identifier: Apache-2.0

// Frames of a conversation, whose fields the engine keeps: as they come, and with a right length, identity
// and CRC.
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "fuzz/fuzz_input.h"

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace {

constexpr char serial[] = "UB1234567890";
constexpr qsizetype mostKept = 1024;

QByteArray frameFrom(Fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    if (how >= 0xC0)
        return GMP3::frame(false, PairingStart, bytes, "UB0000000001");
    if (how & 0x80)
        return bytes;
    const MessageTag kind = MessageTag((how & 0x1F) % (None + 1));
    return GMP3::frame(how & 0x40, how & 0x20 ? None : kind, bytes, serial);
}

void checkFields()
{
    FUZZ_EXPECT(gmp3_message.fields.size() <= mostKept);
    for (const QByteArray &field : std::as_const(gmp3_message.fields)) {
        QByteArray tag;
        QByteArray value;
        unsigned short size = 0;
        const bool isWhole = Velno::extractTlvElement(field, &tag, &value, &size);
        FUZZ_EXPECT(field.isEmpty() || (isWhole && !GMP3::TLV_value(tag).isEmpty()));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    Fuzz::Input input(data, size);
    GMP3::init(0);
    while (!input.atEnd()) {
        const QByteArray frame = frameFrom(input);
        const char *const identity = frame.size() % 2 == 0 ? serial : nullptr;
        const qsizetype before = gmp3_message.fields.size();
        const int status = GMP3::check(frame.constData(), int(frame.size()), identity, true);
        FUZZ_EXPECT(status == 0 || (status >= 4000 && status <= 4003));
        FUZZ_EXPECT(status == 0 || gmp3_message.fields.size() == before);
        if (status == 0)
            FUZZ_EXPECT(GMP3::check(frame.constData(), int(frame.size()), identity, false) == 0);
        checkFields();
        FUZZ_EXPECT(GMP3::TLV_value("no tag"_ba).isEmpty());
    }
    return 0;
}
