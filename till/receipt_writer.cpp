// SPDX-License-Identifier: Apache-2.0

#include "till/money.h"
#include "till/receipt_json.h"
#include "till/receipt_words.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

QJsonObject written(const Item &item)
{
    QJsonObject object{{u"name"_s, item.name}, {u"price"_s, liraText(item.price)}};
    if (item.price == 0)
        return object;
    object.insert(u"quantity"_s, quantityText(item.quantity));
    object.insert(u"unit"_s, unitWords().value(item.unit));
    object.insert(u"section"_s, item.section);
    if (item.percentage != 0)
        object.insert(u"percentage"_s, item.percentage);
    if (item.discount != 0)
        object.insert(u"discount"_s, liraText(item.discount));
    return object;
}

QJsonObject written(const Medical &medical)
{
    return {{u"amount"_s, liraText(medical.amount)}, {u"person"_s, QString::number(medical.person)}};
}

QJsonObject written(const Invoice &invoice)
{
    QJsonObject object{{u"type"_s, invoiceTypeWords().value(int(invoice.type))},
                       {invoice.isCompany ? u"company"_s : u"person"_s, invoice.idNumber}};
    if (!invoice.reference.isEmpty())
        object.insert(u"reference"_s, invoice.reference);
    if (invoice.deliveryNote)
        object.insert(u"deliveryNote"_s, true);
    return object;
}

QJsonObject written(const Payment &payment)
{
    const QString name = tenderWords().value(int(payment.tender));
    return {{name, payment.amount ? liraText(*payment.amount) : u"rest"_s}};
}

void insertStyle(const SlipLine &line, QJsonObject *object)
{
    if (line.styleA)
        object->insert(u"styleA"_s, true);
    if (line.styleB)
        object->insert(u"styleB"_s, true);
}

QJsonValue written(const SlipLine &line)
{
    if (line.feeds > 0)
        return QJsonObject{{u"feed"_s, line.feeds}};
    QJsonObject object;
    insertStyle(line, &object);
    if (line.right) {
        object.insert(u"left"_s, line.text);
        object.insert(u"right"_s, *line.right);
        return object;
    }
    if (line.size != 0)
        object.insert(u"size"_s, line.size);
    if (object.isEmpty())
        return line.text;
    object.insert(u"text"_s, line.text);
    return object;
}

template <typename Value>
QJsonArray writtenList(const QList<Value> &values)
{
    QJsonArray array;
    for (const Value &value : values)
        array.append(written(value));
    return array;
}

} // namespace

QJsonObject toJson(const Receipt &receipt)
{
    QJsonObject object{{u"payments"_s, writtenList(receipt.payments)}};
    if (!receipt.items.isEmpty())
        object.insert(u"items"_s, writtenList(receipt.items));
    if (receipt.medical)
        object.insert(u"medical"_s, written(*receipt.medical));
    if (receipt.invoice)
        object.insert(u"invoice"_s, written(*receipt.invoice));
    if (receipt.total)
        object.insert(u"total"_s, liraText(*receipt.total));
    if (receipt.reenterCash)
        object.insert(u"reenterCash"_s, true);
    if (receipt.slip)
        object.insert(u"slip"_s, toJson(*receipt.slip));
    return object;
}

QJsonObject toJson(const Slip &slip)
{
    return {{u"encoding"_s, slip.encoding}, {u"lines"_s, writtenList(slip.lines)}};
}

} // namespace Velno::Receipts
