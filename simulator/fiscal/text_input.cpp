// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/text_input.h"

#include <QStringDecoder>
#include <QTextCodec>

#include <optional>

namespace Simulator {

namespace {

// An application has room for 52 bytes and may cut a longer name between the bytes of a character.
constexpr qsizetype longestName = 52;
constexpr qsizetype longestCut = 3;

/** Nothing when the bytes are no UTF-8. */
std::optional<QString> fromUtf8(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8(bytes);
    return utf8.hasError() ? std::nullopt : std::optional(text);
}

QString decoded(QByteArrayView bytes)
{
    const qsizetype cuts = bytes.size() == longestName ? longestCut : 0;
    for (qsizetype cut = 0; cut <= cuts; ++cut)
        if (const auto text = fromUtf8(bytes.chopped(cut)))
            return *text;
    return QTextCodec::codecForName("ISO-8859-9")->toUnicode(bytes.data(), int(bytes.size()));
}

} // namespace

QString itemName(const QByteArray &bytes)
{
    return printable(decoded(QByteArrayView(bytes).first(qMin(bytes.size(), longestName)))).trimmed();
}

QString printable(const QString &text)
{
    QString result = text;
    for (QChar &c : result)
        if (!c.isPrint() || c.isSurrogate())
            c = u' ';
    return result;
}

} // namespace Simulator
