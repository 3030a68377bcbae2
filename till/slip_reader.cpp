// SPDX-License-Identifier: Apache-2.0

#include "till/slip_reader.h"

#include "till/receipt_json.h"
#include "till/receipt_words.h"
#include "till/slip_texts.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype mostSlipBytes = 60'000; // the library takes some 65,000 with all that surrounds them
constexpr qsizetype bytesOfALine = 16;      // around its text; more than it needs
constexpr Range slipLines{1, 2000};
constexpr Range sizes{0, 5};
constexpr Range feeds{1, 20};

SlipLine textLine(const Fields &fields)
{
    SlipLine line;
    line.text = fields.text(u"text"_s, Need::Required, mostSlipBytes).value_or(QString());
    line.size = fields.number(u"size"_s, Need::Optional, sizes).value_or(0);
    line.styleA = fields.flag(u"styleA"_s);
    line.styleB = fields.flag(u"styleB"_s);
    return line;
}

SlipLine justifiedLine(const Fields &fields)
{
    SlipLine line;
    line.text = fields.text(u"left"_s, Need::Required, mostSlipBytes).value_or(QString());
    line.right = fields.text(u"right"_s, Need::Required, mostSlipBytes).value_or(QString());
    line.styleA = fields.flag(u"styleA"_s);
    line.styleB = fields.flag(u"styleB"_s);
    return line;
}

SlipLine plainLine(const JsonValue &value, const QString &path, Faults *faults)
{
    SlipLine line;
    line.text = value.text;
    if (!isPlainText(line.text))
        faults->add(path, inWords(value), u"a text that is not empty, without control characters"_s);
    return line;
}

SlipLine lineFrom(const JsonValue &value, const QString &path, Faults *faults)
{
    if (value.isText())
        return plainLine(value, path, faults);
    const auto has = [&value](const QString &name) {
        return std::find(value.names.cbegin(), value.names.cend(), name) != value.names.cend();
    };
    if (has(u"left"_s) || has(u"right"_s))
        return justifiedLine(Fields(value, path, justifiedLineFields(), faults));
    if (!has(u"feed"_s))
        return textLine(Fields(value, path, textLineFields(), faults));
    const Fields fields(value, path, feedLineFields(), faults);
    SlipLine line;
    line.feeds = fields.number(u"feed"_s, Need::Required, feeds).value_or(0);
    return line;
}

/** How many bytes the line takes on its way to the register; what the encoding cannot write is a fault. */
qsizetype judgeBytes(const SlipLine &line, const QString &encoding, const QString &path, Faults *faults)
{
    if (line.feeds > 0)
        return line.feeds * (bytesOfALine + 1);
    qsizetype size = bytesOfALine;
    for (const QString &text : {line.text, line.right.value_or(QString())}) {
        const std::optional<QByteArray> bytes = slipBytes(text, encoding);
        if (!bytes)
            faults->add(path, quoted(text), u"characters that %1 can write"_s.arg(encoding));
        size += bytes.value_or(QByteArray()).size();
    }
    return size;
}

} // namespace

Slip slipFrom(const JsonValue &value, const QString &path, Faults *faults)
{
    Slip slip;
    const Fields fields(value, path, slipFields(), faults);
    const std::optional<int> encoding = fields.word(u"encoding"_s, Need::Required, slipEncodings());
    slip.encoding = slipEncodings().value(encoding.value_or(-1));
    const std::vector<JsonValue> *const lines = fields.list(u"lines"_s, Need::Required, slipLines);
    qsizetype bytes = 0;
    for (size_t i = 0; lines && i < lines->size(); ++i) {
        const QString place = pathOf(fields.pathTo(u"lines"_s), qsizetype(i));
        const SlipLine line = lineFrom((*lines)[i], place, faults);
        if (encoding)
            bytes += judgeBytes(line, slip.encoding, place, faults);
        slip.lines << line;
    }
    if (bytes > mostSlipBytes)
        fields.refuse(u"lines"_s, u"%1 bytes, counting %2 for each line"_s.arg(bytes).arg(bytesOfALine),
                      u"%1 bytes"_s.arg(mostSlipBytes));
    return slip;
}

Judged<Slip> readSlip(const QByteArray &json)
{
    Judged<Slip> judged;
    QString problem;
    const std::optional<JsonValue> value = readJson(json, &problem);
    if (!value) {
        judged.faults << problem;
        return judged;
    }
    Faults faults;
    Slip slip = slipFrom(*value, QString(), &faults);
    judged.faults = faults.take();
    if (judged.faults.isEmpty())
        judged.value = std::move(slip);
    return judged;
}

} // namespace Velno::Receipts
