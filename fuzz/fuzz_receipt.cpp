// SPDX-License-Identifier: Apache-2.0

// Receipts and slips as JSON, from a point-of-sale program that may write anything.
#include "fuzz/fuzz_input.h"
#include "till/receipt_json.h"

#include <QJsonDocument>

using namespace Velno::Receipts;

namespace {

/** A value comes with no fault alone; then it is kept as it was meant, in one way of writing it. */
template <typename Value>
Value readAndWrite(const QByteArray &json, Judged<Value> (*read)(const QByteArray &))
{
    const Judged<Value> judged = read(json);
    if (!judged.faults.isEmpty()) {
        FUZZ_EXPECT(judged.value == Value());
        return judged.value;
    }
    const QByteArray written = toJson(judged.value);
    FUZZ_EXPECT(QJsonDocument::fromJson(written).toJson(QJsonDocument::Compact) == written);
    const Judged<Value> again = read(written);
    FUZZ_EXPECT(again.faults.isEmpty());
    FUZZ_EXPECT(again.value == judged.value);
    FUZZ_EXPECT(toJson(again.value) == written);
    return judged.value;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Two texts with a line of their own between them are compared.
    const QByteArray bytes = Fuzz::Input(data, size).rest();
    const qsizetype at = bytes.indexOf("\n--\n");
    const QByteArray first = bytes.first(at < 0 ? bytes.size() : at);
    const QByteArray second = at < 0 ? QByteArray() : bytes.sliced(at + 4);
    const Receipt now = readAndWrite(first, readReceipt);
    const Receipt before = readAndWrite(second, readReceipt);
    FUZZ_EXPECT(firstDifference(toJson(now), toJson(before)).isEmpty() == (now == before));
    const Slip slip = readAndWrite(first, readSlip);
    const Slip slipBefore = readAndWrite(second, readSlip);
    FUZZ_EXPECT(firstDifference(toJson(slip), toJson(slipBefore)).isEmpty() == (slip == slipBefore));
    return 0;
}
