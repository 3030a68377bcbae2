// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/slip.h"

#include "simulator/fiscal/paper.h"
#include "simulator/fiscal/receipt_text.h"
#include "simulator/fiscal/text_input.h"

#include <QTextCodec>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int inTheMiddle = 1;
constexpr int sizeBits = 0xFC;
constexpr int twiceAsWide = 8;
constexpr int threeTimesAsWide = 16;
constexpr int atBothEdges = 20;

int widthOf(int attribute)
{
    const int size = attribute & sizeBits;
    return size >= threeTimesAsWide ? 3 : size >= twiceAsWide ? 2 : 1;
}

/** Wide characters as a screen can show them: with spaces behind them. */
QString spread(const QString &text, int width)
{
    QString result;
    for (const QChar c : text)
        result += QString(c).leftJustified(width);
    return result.left(result.size() - (text.isEmpty() ? 0 : width - 1));
}

QStringList plainLines(const QString &text, int attribute)
{
    const int width = widthOf(attribute);
    QStringList lines;
    const QStringList parts = text.split(u'\n');
    for (const QString &part : parts)
        for (const QString &line : wrapped(printable(part), paperWidth / width))
            lines << ((attribute & inTheMiddle) ? centred(spread(line, width)) : spread(line, width));
    // A feed at the end of a text has ended its last line and begins no other.
    if (lines.size() > 1 && text.endsWith(u'\n'))
        lines.removeLast();
    return lines;
}

QStringList justifiedLines(const QByteArray &bytes, QTextCodec *codec)
{
    static const QByteArray separator = "__@£#$__"_ba;
    const qsizetype at = bytes.indexOf(separator);
    if (at < 0)
        return plainLines(codec->toUnicode(bytes), 0);
    const QString left = codec->toUnicode(bytes.first(at));
    const QString right = codec->toUnicode(bytes.mid(at + separator.size()));
    return {twoSided(printable(left), printable(right))};
}

} // namespace

QStringList slipText(const QList<QByteArray> &lines, bool withHead)
{
    QTextCodec *codec = QTextCodec::codecForName("UTF-8");
    QStringList texts = withHead ? shopHead() << QString() : QStringList();
    for (const QByteArray &line : lines) {
        const int attribute = line.isEmpty() ? 0 : uchar(line[0]);
        const QByteArray bytes = line.mid(1);
        // "@" begins the name of an encoding. It is also an attribute, of a size that is not in use: a line
        // that names no encoding is a text of that size.
        QTextCodec *const named = attribute == '@' ? QTextCodec::codecForName(bytes) : nullptr;
        if (named)
            codec = named;
        else if ((attribute & sizeBits) == atBothEdges)
            texts << justifiedLines(bytes, codec);
        else
            texts << plainLines(codec->toUnicode(bytes), attribute);
        if (texts.size() > longestSlip)
            return {};
    }
    return texts << centred(u"MALİ DEĞERİ YOKTUR"_s);
}

} // namespace Simulator
