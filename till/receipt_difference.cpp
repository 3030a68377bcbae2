// SPDX-License-Identifier: Apache-2.0

#include "till/json_value.h"
#include "till/receipt_json.h"
#include "till/receipt_words.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

QString difference(const QJsonValue &now, const QJsonValue &before, const QString &path);

QString shown(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Undefined:
        return u"missing"_s;
    case QJsonValue::String:
        return shortened(value.toString());
    case QJsonValue::Object:
        return u"an object"_s;
    case QJsonValue::Array:
        return u"a list of %1"_s.arg(value.toArray().size());
    default:
        return value.toVariant().toString();
    }
}

QStringList fieldsInOrder()
{
    static const QStringList fields = receiptFields() + itemFields() + medicalFields() + invoiceFields() +
                                      tenderWords() + slipFields() + textLineFields() +
                                      justifiedLineFields() + feedLineFields();
    return fields;
}

/** The names of both objects, as the documentation orders them. */
QStringList namesOf(const QJsonObject &now, const QJsonObject &before)
{
    QStringList names = now.keys() + before.keys();
    const QStringList order = fieldsInOrder();
    const auto place = [&order](const QString &name) {
        const qsizetype at = order.indexOf(name);
        return std::pair(at < 0 ? order.size() : at, name);
    };
    std::sort(names.begin(), names.end(),
              [&place](const QString &left, const QString &right) { return place(left) < place(right); });
    names.removeDuplicates();
    return names;
}

QString differenceOfObjects(const QJsonObject &now, const QJsonObject &before, const QString &path)
{
    for (const QString &name : namesOf(now, before)) {
        const QString place = path.isEmpty() ? name : u"%1.%2"_s.arg(path, name);
        const QString found = difference(now.value(name), before.value(name), place);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

QString differenceOfArrays(const QJsonArray &now, const QJsonArray &before, const QString &path)
{
    for (qsizetype i = 0; i < std::min(now.size(), before.size()); ++i) {
        const QString found = difference(now.at(i), before.at(i), u"%1[%2]"_s.arg(path).arg(i));
        if (!found.isEmpty())
            return found;
    }
    return now.size() == before.size() ? QString()
                                       : u"%1: %2, before %3"_s.arg(path, shown(now), shown(before));
}

QString difference(const QJsonValue &now, const QJsonValue &before, const QString &path)
{
    if (now == before)
        return {};
    if (now.isObject() && before.isObject())
        return differenceOfObjects(now.toObject(), before.toObject(), path);
    if (now.isArray() && before.isArray())
        return differenceOfArrays(now.toArray(), before.toArray(), path);
    // Whose number it is stands in no message.
    if (path.endsWith(".person"_L1) || path.endsWith(".company"_L1))
        return u"%1: another one than before"_s.arg(path);
    return u"%1: %2, before %3"_s.arg(path, shown(now), shown(before));
}

} // namespace

QString firstDifference(const QByteArray &now, const QByteArray &before)
{
    if (now == before)
        return {};
    const auto object = [](const QByteArray &json) { return QJsonDocument::fromJson(json).object(); };
    return differenceOfObjects(object(now), object(before), QString());
}

} // namespace Velno::Receipts
