// SPDX-License-Identifier: Apache-2.0

#include "till/slip_printing.h"

#include "till/slip_texts.h"

namespace Velno::Receipts {

namespace {

/** What is judged good can be written. */
QByteArray bytesOf(const QString &text, const QString &encoding)
{
    return slipBytes(text, encoding).value_or(QByteArray());
}

int add(RegisterAccess &reg, const QString &encoding, const SlipLine &line)
{
    if (line.feeds > 0)
        return reg.ask(velnoext_printer_add_line_feed, unsigned(line.feeds));
    VelnoTextStyle style = {line.size, static_cast<unsigned char>(line.styleA),
                            static_cast<unsigned char>(line.styleB)};
    const QByteArray left = bytesOf(line.text, encoding);
    if (!line.right)
        return reg.ask(velnoext_printer_add_text, left.constData(), &style);
    const QByteArray right = bytesOf(*line.right, encoding);
    return reg.ask(velnoext_printer_add_justified_text, left.constData(), right.constData(), &style);
}

} // namespace

int printSlip(RegisterAccess &reg, const Slip &slip)
{
    int state = 0; // a slip without a connection would stay, in front of the next one
    if (const int code = reg.ask(velnoext_ecr_state, RegisterAccess::answerTimeout, &state); code != 0)
        return VelnoResult_NotReady;
    if (const int code = reg.ask(velnoext_printer_set_encoding, slip.encoding.toLatin1().constData());
        code != 0)
        return code;
    for (const SlipLine &line : slip.lines)
        if (const int code = add(reg, slip.encoding, line); code != 0)
            return code;
    return reg.ask(velnoext_print_slip, RegisterAccess::answerTimeout, false);
}

} // namespace Velno::Receipts
