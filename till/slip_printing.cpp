#include "till/slip_printing.h"

#include <QTextCodec>

namespace Velno::Receipts {

namespace {

int add(RegisterAccess &reg, const QTextCodec &codec, const SlipLine &line)
{
    if (line.feeds > 0)
        return reg.ask(velnoext_printer_add_line_feed, unsigned(line.feeds));
    VelnoTextStyle style = {line.size, static_cast<unsigned char>(line.styleA),
                            static_cast<unsigned char>(line.styleB)};
    const QByteArray left = codec.fromUnicode(line.text);
    if (!line.right)
        return reg.ask(velnoext_printer_add_text, left.constData(), &style);
    const QByteArray right = codec.fromUnicode(*line.right);
    return reg.ask(velnoext_printer_add_justified_text, left.constData(), right.constData(), &style);
}

} // namespace

int printSlip(RegisterAccess &reg, const Slip &slip)
{
    const QByteArray encoding = slip.encoding.toUtf8();
    const QTextCodec *const codec = QTextCodec::codecForName(encoding);
    if (!codec)
        return VelnoResult_BadValue;
    int state = 0; // a slip without a connection would stay, in front of the next one
    if (const int code = reg.ask(velnoext_ecr_state, RegisterAccess::answerTimeout, &state); code != 0)
        return VelnoResult_NotReady;
    if (const int code = reg.ask(velnoext_printer_set_encoding, encoding.constData()); code != 0)
        return code;
    for (const SlipLine &line : slip.lines)
        if (const int code = add(reg, *codec, line); code != 0)
            return code;
    return reg.ask(velnoext_print_slip, RegisterAccess::answerTimeout, false);
}

} // namespace Velno::Receipts
