// SPDX-License-Identifier: Apache-2.0

#include "till/json_fields.h"

#include "till/money.h"

#include <QStringBuilder>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype mostFaults = 1000;

/** A number without a point and an exponent. */
std::optional<qint64> wholeFrom(const JsonValue &value)
{
    bool fits = false;
    const qint64 number = value.kind == JsonValue::Kind::Number ? value.text.toLongLong(&fits) : 0;
    return fits ? std::optional(number) : std::nullopt;
}

std::optional<qint64> inRange(const std::optional<qint64> &number, Range range)
{
    return number && *number >= range.least && *number <= range.most ? number : std::nullopt;
}

/** Whole units, as thousandths. */
std::optional<qint64> thousandthsFrom(const JsonValue &value)
{
    constexpr Range units{0, std::numeric_limits<qint32>::max() / 1000};
    if (value.isText())
        return decimalFrom(value.text, 3);
    const std::optional<qint64> whole = inRange(wholeFrom(value), units);
    return whole ? std::optional(*whole * 1000) : std::nullopt;
}

} // namespace

void Faults::add(const QString &path, const QString &found, const QString &accepted)
{
    if (m_faults.size() < mostFaults)
        m_faults << u"%1: %2; accepted: %3"_s.arg(path, found, accepted);
    else
        ++m_more;
}

QStringList Faults::take()
{
    if (m_more > 0)
        m_faults << u"and %1 faults more"_s.arg(m_more);
    m_more = 0;
    return std::exchange(m_faults, {});
}

QString pathOf(const QString &list, qsizetype index)
{
    return QString(list % u'[' % QString::number(index) % u']');
}

Fields::Fields(const JsonValue &object, const QString &path, const QStringList &accepted, Faults *faults)
    : m_object(object)
    , m_path(path)
    , m_faults(faults)
{
    if (!object.isObject()) {
        faults->add(path.isEmpty() ? u"the whole"_s : path, inWords(object), u"an object"_s);
        return;
    }
    quint32 seen = 0; // of those accepted, which are few
    for (const QString &name : object.names) {
        const qsizetype at = accepted.indexOf(name);
        if (at < 0)
            refuse(name, u"no field has this name"_s, accepted.join(", "_L1));
        else if ((seen >> at & 1U) != 0)
            refuse(name, u"stated twice"_s, u"once"_s);
        else
            seen |= 1U << at;
    }
}

const JsonValue *Fields::find(const QString &name) const
{
    const auto found = std::find(m_object.names.cbegin(), m_object.names.cend(), name);
    return found == m_object.names.cend() ? nullptr
                                          : &m_object.values[size_t(found - m_object.names.cbegin())];
}

QString Fields::pathTo(const QString &name) const
{
    // A name of a stranger's making may hold anything.
    const auto isLetter = [](QChar character) { return character.isLetterOrNumber(); };
    const bool isPlain = name.size() <= 30 && std::all_of(name.cbegin(), name.cend(), isLetter);
    return (m_path.isEmpty() ? QString() : m_path + u'.') +
           (isPlain && !name.isEmpty() ? name : quoted(name));
}

void Fields::refuse(const QString &name, const QString &found, const QString &accepted) const
{
    m_faults->add(pathTo(name), found, accepted);
}

template <typename Accepted, typename Read>
auto Fields::take(const QString &name, Need need, const Accepted &accepted, const Read &read) const
{
    using Taken = decltype(read(m_object));
    const JsonValue *const value = find(name);
    if (!value) {
        if (need == Need::Required && m_object.isObject())
            refuse(name, u"missing"_s, accepted());
        return Taken();
    }
    Taken taken = read(*value);
    if (!taken)
        refuse(name, inWords(*value), accepted());
    return taken;
}

std::optional<qint64> Fields::amount(const QString &name, Need need, qint64 least,
                                     const QString &orElse) const
{
    const auto accepted = [least, &orElse] {
        return u"lira in quotes, \"%1\" to \"%2\", or whole kuruş without a point, %3 to %4"_s
                   .arg(liraText(least), liraText(mostKurus))
                   .arg(least)
                   .arg(mostKurus) +
               orElse;
    };
    return take(name, need, accepted, [least](const JsonValue &value) {
        return inRange(value.isText() ? decimalFrom(value.text, 2) : wholeFrom(value), {least, mostKurus});
    });
}

std::optional<qint32> Fields::quantity(const QString &name) const
{
    static constexpr Range range{1, std::numeric_limits<qint32>::max()};
    const auto accepted = [] {
        return u"\"%1\" to \"%2\", or whole units without a point"_s.arg(quantityText(1),
                                                                         quantityText(range.most));
    };
    const std::optional<qint64> taken = take(name, Need::Optional, accepted, [](const JsonValue &value) {
        return inRange(thousandthsFrom(value), range);
    });
    return taken ? std::optional(qint32(*taken)) : std::nullopt;
}

std::optional<int> Fields::number(const QString &name, Need need, Range range) const
{
    const auto accepted = [range] { return u"%1 to %2"_s.arg(range.least).arg(range.most); };
    const std::optional<qint64> taken = take(
        name, need, accepted, [range](const JsonValue &value) { return inRange(wholeFrom(value), range); });
    return taken ? std::optional(int(*taken)) : std::nullopt;
}

bool Fields::flag(const QString &name) const
{
    const auto accepted = [] { return u"true or false"_s; };
    const std::optional<bool> taken = take(name, Need::Optional, accepted, [](const JsonValue &value) {
        const bool isTrue = value.kind == JsonValue::Kind::True;
        return isTrue || value.kind == JsonValue::Kind::False ? std::optional(isTrue) : std::nullopt;
    });
    return taken.value_or(false);
}

std::optional<QString> Fields::text(const QString &name, Need need, qsizetype mostBytes) const
{
    const auto accepted = [mostBytes] {
        return u"a text of 1 to %1 bytes in UTF-8, without control characters"_s.arg(mostBytes);
    };
    const JsonValue *const value = find(name);
    const qsizetype bytes = value ? value->text.toUtf8().size() : 0;
    if (value && value->isText() && bytes > mostBytes) {
        refuse(name, u"%1 has %2 bytes"_s.arg(inWords(*value)).arg(bytes), accepted());
        return std::nullopt;
    }
    return take(name, need, accepted, [](const JsonValue &found) {
        return found.isText() && isPlainText(found.text) ? std::optional(found.text) : std::nullopt;
    });
}

std::optional<int> Fields::word(const QString &name, Need need, const QStringList &words) const
{
    const auto accepted = [&words] { return u"\"%1\""_s.arg(words.join("\", \""_L1)); };
    return take(name, need, accepted, [&words](const JsonValue &value) {
        const qsizetype at = value.isText() ? words.indexOf(value.text) : -1;
        return at < 0 ? std::nullopt : std::optional(int(at));
    });
}

std::optional<QString> Fields::identity(const QString &name, const QString &accepted,
                                        const std::function<bool(const QByteArray &)> &isGood) const
{
    const JsonValue *const value = find(name);
    if (value && value->isText() && isGood(value->text.toUtf8()))
        return value->text;
    if (m_object.isObject())
        refuse(name, value ? u"not a valid number"_s : u"missing"_s, accepted);
    return std::nullopt;
}

const std::vector<JsonValue> *Fields::list(const QString &name, Need need, Range range) const
{
    const auto accepted = [range] { return u"a list of %1 to %2"_s.arg(range.least).arg(range.most); };
    const JsonValue *const value = find(name);
    if (value && value->isList() && !inRange(qint64(value->values.size()), range)) {
        refuse(name, u"a list of %1"_s.arg(value->values.size()), accepted());
        return nullptr;
    }
    return take(name, need, accepted,
                [](const JsonValue &found) { return found.isList() ? &found.values : nullptr; });
}

bool isPlainText(const QString &text)
{
    const auto isControl = [](QChar character) { return character.category() == QChar::Other_Control; };
    return !text.isEmpty() && std::none_of(text.cbegin(), text.cend(), isControl);
}

} // namespace Velno::Receipts
