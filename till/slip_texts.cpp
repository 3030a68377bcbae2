// SPDX-License-Identifier: Apache-2.0

#include "till/slip_texts.h"

#include <QTextCodec>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

const QStringList &slipEncodings()
{
    static const QStringList names{u"UTF-8"_s, u"windows-1254"_s, u"ISO-8859-9"_s};
    return names;
}

std::optional<QByteArray> slipBytes(const QString &text, const QString &encoding)
{
    if (encoding == "UTF-8"_L1)
        return text.toUtf8(); // which writes every text
    const QTextCodec *const codec = QTextCodec::codecForName(encoding.toLatin1());
    if (!codec)
        return std::nullopt;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QByteArray bytes = codec->fromUnicode(text.constData(), int(text.size()), &state);
    // Not every codec counts what it replaces.
    const bool isWhole = state.invalidChars == 0 && codec->toUnicode(bytes) == text;
    return isWhole ? std::optional(bytes) : std::nullopt;
}

} // namespace Velno::Receipts
