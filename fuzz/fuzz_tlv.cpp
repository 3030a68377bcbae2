// SPDX-License-Identifier: Apache-2.0

// Elements: splitting a run with and without copies, single elements, their numbers and tags.
#include "ExtDevice/encoding/bcd.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/tags.h"
#include "fuzz/fuzz_input.h"

using namespace Velno;

namespace {

void readValue(const QByteArray &tag, const QByteArray &value)
{
    bool isResponse = false;
    GMP::message(tag, &isResponse);
    GMP::group(tag);
    bcdToUInt(value);
    bcdToUInt64(value);
    bcdToDate(value);
    bcdToTime(value, false);
    bcdToTime(value, true);
}

void checkElement(const TlvView &view)
{
    QByteArray tag;
    QByteArray value;
    unsigned short size = 0;
    const QByteArray whole = view.whole.toByteArray();
    if (!extractTlvElement(whole, &tag, &value, &size))
        return; // an empty value
    FUZZ_EXPECT(tag == view.tag && value == view.value);
    readValue(tag, value);
    const QByteArray again = tlvElement(tag, value);
    FUZZ_EXPECT(again.isEmpty() == (tag.size() > 3));
    QByteArray tagAgain;
    QByteArray valueAgain;
    if (!again.isEmpty())
        FUZZ_EXPECT(extractTlvElement(again, &tagAgain, &valueAgain, &size) && tagAgain == tag &&
                    valueAgain == value);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray run = Fuzz::Input(data, size).rest();
    const QVector<QByteArray> elements = extractTlvElements(run);
    qsizetype count = 0;
    QByteArrayView left(run);
    for (TlvView view; takeTlvElement(&left, &view); ++count) {
        FUZZ_EXPECT(view.whole.data() >= run.constData() && view.whole.size() <= run.size());
        checkElement(view);
    }
    FUZZ_EXPECT(elements.size() == (left.isEmpty() ? count : 0));

    QByteArray tag;
    QByteArray value;
    unsigned short number = 0;
    unsigned short numberSize = 0;
    extractTlvElement(run, &tag, &value, &number);
    if (lengthFromTlv(run, &number, &numberSize))
        FUZZ_EXPECT(numberSize <= run.size());
    FUZZ_EXPECT(tlvTag(run).size() <= 4);
    FUZZ_EXPECT(tlvLength(run).isEmpty() == (run.size() > 0xFFFF));
    const int position = run.isEmpty() ? 0 : int(uchar(run.front()));
    FUZZ_EXPECT(midRaw(run, position, -1).size() <= run.size());
    FUZZ_EXPECT(midRaw(run, position, 5).size() <= 5);
    return 0;
}
