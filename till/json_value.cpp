// SPDX-License-Identifier: Apache-2.0

#include "till/json_value.h"

#include <QStringDecoder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype mostBytes = 1024 * 1024;
constexpr int mostValues = 50'000;
constexpr int mostLevels = 8;
constexpr qsizetype mostInWords = 60;
constexpr size_t usualFields = 7; // an item has so many

bool isSpace(QChar character)
{
    return character == u' ' || character == u'\t' || character == u'\r' || character == u'\n';
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isHexDigit(QChar character)
{
    return QStringView(u"0123456789ABCDEFabcdef").contains(character);
}

/** The character behind a backslash stands for another one; 0: for none, or for one told in four digits. */
QChar plainEscape(QChar character)
{
    constexpr QStringView escapes = u"\"\\/bfnrt";
    constexpr QStringView meanings = u"\"\\/\b\f\n\r\t";
    const qsizetype at = escapes.indexOf(character);
    return at < 0 ? QChar() : meanings.at(at);
}

/** Goes through a text once, from its front. Each function takes what it is named after, or says what is
 * wrong and returns false; then all end. */
class Reader
{
public:
    explicit Reader(const QString &text)
        : m_text(text)
        , m_left(text)
    {
    }

    std::optional<JsonValue> document();
    const QString &problem() const { return m_problem; }

private:
    bool value(JsonValue *value, int level);
    bool object(JsonValue *value, int level);
    bool list(JsonValue *value, int level);
    bool member(JsonValue *value, int level);
    bool string(QString *text);
    bool escape(QString *text);
    bool number(JsonValue *value);
    bool word(JsonValue *value);
    bool digits();

    void skipSpace();
    bool skip(QChar character);
    QChar front() const { return m_left.isEmpty() ? QChar() : m_left.front(); }
    bool fail(const QString &accepted);

    QStringView m_text;
    QStringView m_left;
    int m_values = 0;
    QString m_problem;
};

std::optional<JsonValue> Reader::document()
{
    JsonValue whole;
    if (!value(&whole, 1))
        return std::nullopt;
    skipSpace();
    if (!m_left.isEmpty()) {
        fail(u"nothing more"_s);
        return std::nullopt;
    }
    return whole;
}

bool Reader::value(JsonValue *value, int level)
{
    if (level > mostLevels)
        return fail(u"no more than %1 levels"_s.arg(mostLevels));
    if (++m_values > mostValues)
        return fail(u"no more than %1 values"_s.arg(mostValues));
    skipSpace();
    if (front() == u'{')
        return object(value, level);
    if (front() == u'[')
        return list(value, level);
    if (front() == u'"') {
        value->kind = JsonValue::Kind::Text;
        return string(&value->text);
    }
    if (front() == u'-' || isDigit(front()))
        return number(value);
    return word(value);
}

bool Reader::object(JsonValue *value, int level)
{
    value->kind = JsonValue::Kind::Object;
    skip(u'{');
    skipSpace();
    if (skip(u'}'))
        return true;
    value->names.reserve(usualFields);
    value->values.reserve(usualFields);
    do {
        if (!member(value, level))
            return false;
        skipSpace();
    } while (skip(u','));
    return skip(u'}') || fail(u"\",\" or \"}\""_s);
}

bool Reader::member(JsonValue *value, int level)
{
    skipSpace();
    QString name;
    if (front() != u'"')
        return fail(u"a name in quotes"_s);
    if (!string(&name))
        return false;
    skipSpace();
    if (!skip(u':'))
        return fail(u"\":\""_s);
    value->names.push_back(std::move(name));
    value->values.emplace_back();
    return this->value(&value->values.back(), level + 1);
}

bool Reader::list(JsonValue *value, int level)
{
    value->kind = JsonValue::Kind::List;
    skip(u'[');
    skipSpace();
    if (skip(u']'))
        return true;
    do {
        value->values.emplace_back();
        if (!this->value(&value->values.back(), level + 1))
            return false;
        skipSpace();
    } while (skip(u','));
    return skip(u']') || fail(u"\",\" or \"]\""_s);
}

bool Reader::string(QString *text)
{
    const auto endsRun = [](QChar character) {
        return character == u'"' || character == u'\\' || character < u' ';
    };
    skip(u'"');
    while (!skip(u'"')) {
        const auto end = std::find_if(m_left.cbegin(), m_left.cend(), endsRun);
        const QStringView run = m_left.first(end - m_left.cbegin());
        if (text->isEmpty())
            *text = run.toString();
        else
            *text += run;
        m_left = m_left.sliced(run.size());
        if (front() == u'"')
            continue;
        if (!skip(u'\\'))
            return fail(u"a text that ends with a quote on its line"_s);
        if (!escape(text))
            return false;
    }
    return text->isValidUtf16() || fail(u"whole characters, also behind \\u"_s);
}

bool Reader::escape(QString *text)
{
    if (skip(u'u')) {
        const QStringView code = m_left.first(std::min<qsizetype>(4, m_left.size()));
        if (code.size() < 4 || !std::all_of(code.cbegin(), code.cend(), isHexDigit))
            return fail(u"four hexadecimal digits behind \\u"_s);
        *text += QChar(char16_t(code.toUInt(nullptr, 16)));
        m_left = m_left.sliced(4);
        return true;
    }
    const QChar meant = plainEscape(front());
    if (meant.isNull())
        return fail(u"one of \"\\/bfnrtu behind a backslash"_s);
    *text += meant;
    m_left = m_left.sliced(1);
    return true;
}

bool Reader::number(JsonValue *value)
{
    const QStringView from = m_left;
    skip(u'-');
    const bool isZero = front() == u'0';
    if (!digits())
        return false;
    if (isZero && from.size() - m_left.size() > (from.front() == u'-' ? 2 : 1))
        return fail(u"a number without zeros in front"_s);
    if (skip(u'.') && !digits())
        return false;
    if (skip(u'e') || skip(u'E')) {
        if (!skip(u'+'))
            skip(u'-');
        if (!digits())
            return false;
    }
    value->kind = JsonValue::Kind::Number;
    value->text = from.first(from.size() - m_left.size()).toString();
    return true;
}

bool Reader::digits()
{
    if (!isDigit(front()))
        return fail(u"a digit"_s);
    while (isDigit(front()))
        m_left = m_left.sliced(1);
    return true;
}

bool Reader::word(JsonValue *value)
{
    const std::pair<QStringView, JsonValue::Kind> words[] = {
        {u"null", JsonValue::Kind::Null},
        {u"true", JsonValue::Kind::True},
        {u"false", JsonValue::Kind::False},
    };
    for (const auto &[name, kind] : words) {
        if (m_left.startsWith(name)) {
            value->kind = kind;
            m_left = m_left.sliced(name.size());
            return true;
        }
    }
    return fail(u"a value"_s);
}

void Reader::skipSpace()
{
    while (!m_left.isEmpty() && isSpace(front()))
        m_left = m_left.sliced(1);
}

bool Reader::skip(QChar character)
{
    if (m_left.isEmpty() || front() != character)
        return false;
    m_left = m_left.sliced(1);
    return true;
}

bool Reader::fail(const QString &accepted)
{
    const QStringView read = m_text.first(m_text.size() - m_left.size());
    m_problem = u"line %1, column %2: this is no JSON; accepted: %3"_s.arg(read.count(u'\n') + 1)
                    .arg(read.size() - read.lastIndexOf(u'\n'))
                    .arg(accepted);
    return false;
}

} // namespace

std::optional<JsonValue> readJson(const QByteArray &json, QString *problem)
{
    if (json.size() > mostBytes) {
        *problem = u"%1 bytes; accepted: %2"_s.arg(json.size()).arg(mostBytes);
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(json);
    if (decoder.hasError()) {
        *problem = u"this is no UTF-8; accepted: JSON in UTF-8"_s;
        return std::nullopt;
    }
    Reader reader(text);
    std::optional<JsonValue> value = reader.document();
    *problem = reader.problem();
    return value;
}

QString shortened(const QString &text)
{
    QString shown = text.first(std::min(text.size(), mostInWords));
    const auto isUnfit = [](QChar character) { return !character.isPrint() && !character.isSurrogate(); };
    std::replace_if(shown.begin(), shown.end(), isUnfit, QChar(QChar::ReplacementCharacter));
    if (!shown.isValidUtf16())
        shown.chop(1); // half a character, where it was cut
    return text.size() > mostInWords ? shown + u'…' : shown;
}

QString quoted(const QString &text)
{
    return u"\"%1\""_s.arg(shortened(text));
}

QString inWords(const JsonValue &value)
{
    switch (value.kind) {
    case JsonValue::Kind::Null:
        return u"null"_s;
    case JsonValue::Kind::True:
        return u"true"_s;
    case JsonValue::Kind::False:
        return u"false"_s;
    case JsonValue::Kind::Number:
        return shortened(value.text);
    case JsonValue::Kind::Text:
        return quoted(value.text);
    case JsonValue::Kind::List:
        return u"a list"_s;
    case JsonValue::Kind::Object:
        break;
    }
    return u"an object"_s;
}

} // namespace Velno::Receipts
