// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/printing.h"

#include "ExtDevice/velnoext/command_exchange.h"
#include "ExtDevice/velnoext/queries.h"
#include "ExtDevice/velnoext/reasons.h"

#include <QTextCodec>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Ext {

namespace {

constexpr unsigned int fixedTimeout = 2000; // of the reports, which take none
constexpr unsigned int mostLineFeeds = 20;
constexpr unsigned int lineFeedsPerText = 5;
constexpr VelnoTextStyle lineFeedStyle{0, 0, 1};

/** Where the register parts the left from the right text of a line. */
const QByteArray separator = "__@\xC2\xA3#$__"_ba;

bool isEmpty(const char *text)
{
    return !text || *text == '\0';
}

unsigned int styleBits(const VelnoTextStyle &style)
{
    return (style.styleA ? 1U : 0U) | (style.styleB ? 2U : 0U);
}

/** Adds a line once its texts and style are known to be there. @return 0; 8: no encoding has been set */
int addLine(const QByteArray &line)
{
    if (!library().codecSet)
        return failedBy(Refused, VelnoCause_NoEncoding);
    library().slipContent.append(line);
    return Success;
}

int addText(const char *text, const VelnoTextStyle *style)
{
    if (isEmpty(text))
        return failed(NullArgument, 0x30E);
    if (!style)
        return failed(NullArgument, 0x30F);
    return addLine(attributeOf(*style) + QByteArray(text));
}

/** The slip's lines as one item of a request. */
QByteArray slipBytes()
{
    const QVector<QByteArray> &lines = library().slipContent;
    QByteArray bytes = itemBytes(qint32(lines.size()));
    for (const QByteArray &line : lines)
        bytes += itemBytes(line);
    return bytes;
}

int printReport(bool z)
{
    const PublicCall call;
    int state = -1;
    QVector<int> list;
    if (const int result = velnoext_ecr_state_impl(fixedTimeout, &state, &list, nullptr); result != Success)
        return result;
    // A Z report must be possible whatever the register shows: it knows best what keeps it from one.
    if (!z && !isIdle(state))
        return failedBy(WrongState, causeOfState(state));
    return runFlagCommand(fixedTimeout, requestOf(VelnoExtMessage_PrintReport, z));
}

} // namespace

char attributeOf(const VelnoTextStyle &style)
{
    return char(styleBits(style) | 4U << (unsigned(style.size) % 32));
}

char justifiedAttributeOf(const VelnoTextStyle &style)
{
    return char(styleBits(style) | 20U);
}

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_printer_set_encoding(const char *name)
{
    const PublicCall call;
    if (!name)
        return failed(NullArgument, 0x30D);
    if (!QTextCodec::codecForName(name))
        return failed(BadValue, 0x411);
    library().codecSet = true;
    return addLine('@' + QByteArray(name));
}

int velnoext_printer_add_text(const char *text, VelnoTextStyle *style)
{
    const PublicCall call;
    return addText(text, style);
}

int velnoext_printer_add_line_feed(unsigned int count)
{
    const PublicCall call;
    if (!library().codecSet)
        return failedBy(Refused, VelnoCause_NoEncoding);
    if (count > mostLineFeeds)
        return failed(BadValue, 0x413);
    for (unsigned int left = count; left > 0;) {
        const unsigned int here = std::min(left, lineFeedsPerText);
        if (const int result = addText(QByteArray(qsizetype(here), '\n').constData(), &lineFeedStyle);
            result != Success)
            return result;
        left -= here;
    }
    return Success;
}

int velnoext_printer_add_justified_text(const char *left, const char *right, VelnoTextStyle *style)
{
    const PublicCall call;
    if (isEmpty(left) || isEmpty(right))
        return failed(NullArgument, 0x30E);
    if (!style)
        return failed(NullArgument, 0x30F);
    return addLine(justifiedAttributeOf(*style) + QByteArray(left) + separator + right);
}

int velnoext_print_slip(unsigned int timeout, bool flag)
{
    const PublicCall call;
    if (const int result = beginCommand(); result != Success)
        return result;
    const QByteArray request = requestOf(VelnoExtMessage_PrintSlip, flag, slipBytes());
    // From here on the slip may be on paper: it must not come out a second time.
    library().codecSet = false;
    library().slipContent.clear();
    return runFlagCommand(timeout, request);
}

int velnoext_x_report(void)
{
    return printReport(false);
}

int velnoext_z_report(void)
{
    return printReport(true);
}
