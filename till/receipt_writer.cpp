// SPDX-License-Identifier: Apache-2.0

#include "till/json_text.h"
#include "till/money.h"
#include "till/receipt_json.h"
#include "till/receipt_words.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

// The fields of each object come in alphabetical order: so they stand in every ledger.

void write(const Item &item, JsonText *json)
{
    const bool isRemark = item.price == 0;
    json->beginObject();
    if (!isRemark && item.discount != 0)
        json->text("discount", liraText(item.discount));
    json->text("name", item.name);
    if (!isRemark && item.percentage != 0)
        json->number("percentage", item.percentage);
    json->text("price", liraText(item.price));
    if (!isRemark) {
        json->text("quantity", quantityText(item.quantity));
        json->number("section", item.section);
        json->text("unit", unitWords().value(item.unit));
    }
    json->endObject();
}

void write(const Medical &medical, JsonText *json)
{
    json->beginObject();
    json->text("amount", liraText(medical.amount));
    json->text("person", QString::number(medical.person));
    json->endObject();
}

void write(const Invoice &invoice, JsonText *json)
{
    json->beginObject();
    if (invoice.isCompany)
        json->text("company", invoice.idNumber);
    if (invoice.deliveryNote)
        json->yes("deliveryNote");
    if (!invoice.isCompany)
        json->text("person", invoice.idNumber);
    if (!invoice.reference.isEmpty())
        json->text("reference", invoice.reference);
    json->text("type", invoiceTypeWords().value(int(invoice.type)));
    json->endObject();
}

void write(const Payment &payment, JsonText *json)
{
    json->beginObject();
    json->text(payment.tender == Tender::Card ? "card" : "cash",
               payment.amount ? liraText(*payment.amount) : u"rest"_s);
    json->endObject();
}

void writeStyle(const SlipLine &line, JsonText *json)
{
    if (line.styleA)
        json->yes("styleA");
    if (line.styleB)
        json->yes("styleB");
}

void write(const SlipLine &line, JsonText *json)
{
    const bool isPlain = line.feeds == 0 && !line.right && line.size == 0 && !line.styleA && !line.styleB;
    if (isPlain)
        return json->text(line.text);
    json->beginObject();
    if (line.feeds > 0) {
        json->number("feed", line.feeds);
    } else if (line.right) {
        json->text("left", line.text);
        json->text("right", *line.right);
        writeStyle(line, json);
    } else {
        if (line.size != 0)
            json->number("size", line.size);
        writeStyle(line, json);
        json->text("text", line.text);
    }
    json->endObject();
}

template <typename Value>
void writeList(const char *name, const QList<Value> &values, JsonText *json)
{
    json->beginList(name);
    for (const Value &value : values)
        write(value, json);
    json->endList();
}

void write(const Slip &slip, JsonText *json)
{
    json->beginObject();
    json->text("encoding", slip.encoding);
    writeList("lines", slip.lines, json);
    json->endObject();
}

template <typename Value>
void writeField(const char *name, const std::optional<Value> &value, JsonText *json)
{
    if (!value)
        return;
    json->name(name);
    write(*value, json);
}

void write(const Receipt &receipt, JsonText *json)
{
    json->beginObject();
    writeField("invoice", receipt.invoice, json);
    if (!receipt.items.isEmpty())
        writeList("items", receipt.items, json);
    writeField("medical", receipt.medical, json);
    writeList("payments", receipt.payments, json);
    if (receipt.reenterCash)
        json->yes("reenterCash");
    writeField("slip", receipt.slip, json);
    if (receipt.total)
        json->text("total", liraText(*receipt.total));
    json->endObject();
}

template <typename Value>
QByteArray written(const Value &value)
{
    JsonText json;
    write(value, &json);
    return json.bytes();
}

} // namespace

QByteArray toJson(const Receipt &receipt)
{
    return written(receipt);
}

QByteArray toJson(const Slip &slip)
{
    return written(slip);
}

} // namespace Velno::Receipts
