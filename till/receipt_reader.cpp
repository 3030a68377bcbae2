// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"

#include "ExtDevice/velnoext/identity_numbers.h"
#include "till/json_fields.h"
#include "till/money.h"
#include "till/receipt_words.h"
#include "till/slip_reader.h"

#include <velnoext.h>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype longestName = sizeof(VelnoSaleItem::name) - 1;
constexpr qsizetype longestReference = sizeof(VelnoInvoice::reference) - 1;
constexpr qsizetype shortestPaperReference = 6;
constexpr qint64 mostItems = 500;
constexpr Range paymentCount{1, 100};
constexpr Range sections{1, 8};
constexpr Range percentages{-100, 100};

/** A line without a price is a text on the receipt: nothing else of it counts, and an adjustment is a
 * mistake. */
Item remarkFrom(const Fields &fields, const Item &read)
{
    if (read.percentage != 0)
        fields.refuse(u"percentage"_s, QString::number(read.percentage), u"none where the price is 0"_s);
    if (read.discount != 0)
        fields.refuse(u"discount"_s, liraText(read.discount), u"none where the price is 0"_s);
    Item remark;
    remark.name = read.name;
    return remark;
}

void judgeLine(const Fields &fields, const Item &item, const QString &path, Faults *faults)
{
    const qint64 total = lineTotal(item.price, item.quantity);
    if (total > mostKurus)
        faults->add(path, u"comes to %1"_s.arg(liraText(total)), u"up to %1"_s.arg(liraText(mostKurus)));
    if (item.percentage != 0 && item.discount != 0)
        fields.refuse(u"discount"_s, liraText(item.discount), u"none beside a percentage"_s);
    else if (item.discount > total)
        fields.refuse(u"discount"_s, liraText(item.discount),
                      u"0.00 to %1, which the line comes to"_s.arg(liraText(total)));
}

Item itemFrom(const JsonValue &value, const QString &path, Faults *faults)
{
    const Fields fields(value, path, itemFields(), faults);
    Item item;
    item.name = fields.text(u"name"_s, Need::Required, longestName).value_or(QString());
    const std::optional<qint64> price = fields.amount(u"price"_s, Need::Required, 0);
    const std::optional<qint32> quantity = fields.quantity(u"quantity"_s);
    item.unit = fields.word(u"unit"_s, Need::Optional, unitWords()).value_or(0);
    // The section decides the tax: it is never a guess.
    item.section =
        fields.number(u"section"_s, price == 0 ? Need::Optional : Need::Required, sections).value_or(1);
    item.percentage = fields.number(u"percentage"_s, Need::Optional, percentages).value_or(0);
    item.discount = fields.amount(u"discount"_s, Need::Optional, 0).value_or(0);
    item.price = price.value_or(0);
    item.quantity = quantity.value_or(item.quantity);
    if (price == 0)
        return remarkFrom(fields, item);
    // Without a price, or with a bad quantity, a line comes to nothing that could be judged.
    if (price && (quantity || !fields.has(u"quantity"_s)))
        judgeLine(fields, item, path, faults);
    return item;
}

/** The items together, each of which is good. */
void judgeItems(const Fields &fields, const QList<Item> &items)
{
    qint64 sum = 0; // of 500 lines at most, each up to mostKurus
    for (const Item &item : items)
        sum += lineTotal(item.price, item.quantity);
    if (sum > mostKurus)
        fields.refuse(u"items"_s, u"%1 together"_s.arg(liraText(sum)),
                      u"up to %1"_s.arg(liraText(mostKurus)));
    const bool isSaleOfNothing =
        std::all_of(items.cbegin(), items.cend(), [](const Item &item) { return item.price == 0; });
    if (isSaleOfNothing && !fields.has(u"medical"_s))
        fields.refuse(u"items"_s, u"nothing that has a price"_s,
                      u"one item with a price, or a medical part"_s);
}

QList<Item> itemsFrom(const Fields &fields, Faults *faults)
{
    const qsizetype faultsBefore = faults->count();
    const Need need = fields.has(u"medical"_s) ? Need::Optional : Need::Required;
    const std::vector<JsonValue> *const list = fields.list(u"items"_s, need, {0, mostItems});
    QList<Item> items;
    for (size_t i = 0; list && i < list->size(); ++i)
        items << itemFrom((*list)[i], pathOf(u"items"_s, qsizetype(i)), faults);
    if (list && faults->count() == faultsBefore)
        judgeItems(fields, items);
    return items;
}

Medical medicalFrom(const JsonValue &value, Faults *faults)
{
    const Fields fields(value, u"medical"_s, medicalFields(), faults);
    Medical medical;
    medical.amount = fields.amount(u"amount"_s, Need::Required, 1).value_or(0);
    const std::optional<QString> person = fields.identity(
        u"person"_s, u"11 digits in quotes; \"11111111111\" stands for anybody"_s, Ext::isPersonId);
    medical.person = person.value_or(QString()).toULongLong();
    return medical;
}

void readCustomer(const Fields &fields, Invoice *invoice, Faults *faults)
{
    invoice->isCompany = fields.has(u"company"_s);
    if (fields.has(u"person"_s) && invoice->isCompany) {
        faults->add(u"invoice"_s, u"a person and a company"_s, u"one of them"_s);
        return;
    }
    const std::optional<QString> number =
        invoice->isCompany
            ? fields.identity(u"company"_s, u"the 10 digits of a tax number, in quotes"_s, Ext::isTaxNumber)
            : fields.identity(u"person"_s,
                              u"11 digits in quotes, \"11111111111\" for anybody; or a company"_s,
                              Ext::isPersonId);
    invoice->idNumber = number.value_or(QString());
}

void readReference(const Fields &fields, bool isOnPaper, Invoice *invoice)
{
    const QString name = u"reference"_s;
    const Need need = isOnPaper ? Need::Required : Need::Optional;
    const std::optional<QString> reference = fields.text(name, need, longestReference);
    if (!reference)
        return;
    const auto isVisible = [](QChar character) { return character > u' ' && character <= u'~'; };
    const qsizetype least = isOnPaper ? shortestPaperReference : 1;
    if (reference->size() < least || !std::all_of(reference->cbegin(), reference->cend(), isVisible))
        fields.refuse(
            name, quoted(*reference),
            u"%1 to %2 letters without accents, digits and signs"_s.arg(least).arg(longestReference));
    invoice->reference = *reference;
}

Invoice invoiceFrom(const JsonValue &value, Faults *faults)
{
    const Fields fields(value, u"invoice"_s, invoiceFields(), faults);
    Invoice invoice;
    const std::optional<int> type = fields.word(u"type"_s, Need::Required, invoiceTypeWords());
    invoice.type = unsigned(type.value_or(0));
    readCustomer(fields, &invoice, faults);
    readReference(fields, type == VelnoInvoiceType_Paper, &invoice);
    invoice.deliveryNote = fields.flag(u"deliveryNote"_s);
    return invoice;
}

Payment paymentFrom(const JsonValue &value, const QString &path, Faults *faults)
{
    const QStringList &names = tenderWords();
    const Fields fields(value, path, names, faults);
    const bool isCard = fields.has(names.at(int(Tender::Card)));
    if (value.isObject() && fields.has(names.at(int(Tender::Cash))) == isCard) {
        faults->add(path, isCard ? u"cash and card"_s : u"neither cash nor card"_s, u"one of them"_s);
        return {};
    }
    Payment payment;
    payment.tender = isCard ? Tender::Card : Tender::Cash;
    const QString &name = names.at(int(payment.tender));
    const JsonValue *const amount = fields.find(name);
    if (!amount || !amount->isText() || amount->text != "rest"_L1)
        payment.amount = fields.amount(name, Need::Optional, 1, u", or \"rest\""_s).value_or(0);
    return payment;
}

/** What the payments come to before one of them; "the rest" counts nothing. */
qint64 paidBefore(const QList<Payment> &payments, qsizetype index)
{
    return std::accumulate(
        payments.cbegin(), payments.cbegin() + index, qint64(0),
        [](qint64 sum, const Payment &payment) { return sum + payment.amount.value_or(0); });
}

/** Whether the payments can pay what the sale comes to, as far as somebody has added it up. */
void judgePaidTotal(const Receipt &receipt, Faults *faults)
{
    const QList<Payment> &payments = receipt.payments;
    const qsizetype last = payments.size() - 1;
    const qint64 before = paidBefore(payments, last);
    const QString total = liraText(*receipt.total);
    if (last > 0 && before >= *receipt.total)
        faults->add(pathOf(u"payments"_s, last), u"%1 are paid before it"_s.arg(liraText(before)),
                    u"nothing behind the payment that reaches the total of %1"_s.arg(total));
    const qint64 paid = paidBefore(payments, payments.size());
    if (payments.last().amount && paid < *receipt.total)
        faults->add(u"payments"_s, u"%1 together"_s.arg(liraText(paid)),
                    u"the total of %1, or \"rest\" in the last one"_s.arg(total));
}

QList<Payment> paymentsFrom(const Fields &fields, Faults *faults)
{
    const std::vector<JsonValue> *const list = fields.list(u"payments"_s, Need::Required, paymentCount);
    QList<Payment> payments;
    for (size_t i = 0; list && i < list->size(); ++i) {
        const QString path = pathOf(u"payments"_s, qsizetype(i));
        payments << paymentFrom((*list)[i], path, faults);
        if (!payments.last().amount && i + 1 < list->size())
            faults->add(path, u"\"rest\""_s, u"an amount: only the last payment may be the rest"_s);
    }
    if (fields.has(u"invoice"_s) && !payments.isEmpty() && payments.last().amount)
        faults->add(pathOf(u"payments"_s, payments.size() - 1), u"an amount"_s,
                    u"\"rest\", with which an invoice ends the sale"_s);
    return payments;
}

/** Payments and total; they are compared only when each is good, so that a mistake is told once. */
void readMoney(const Fields &fields, Receipt *receipt, Faults *faults)
{
    const qsizetype faultsBefore = faults->count();
    receipt->payments = paymentsFrom(fields, faults);
    receipt->total = fields.amount(u"total"_s, Need::Optional, 0);
    if (receipt->total && faults->count() == faultsBefore)
        judgePaidTotal(*receipt, faults);
}

Receipt receiptFrom(const JsonValue &value, Faults *faults)
{
    const Fields fields(value, QString(), receiptFields(), faults);
    Receipt receipt;
    receipt.items = itemsFrom(fields, faults);
    if (const JsonValue *const medical = fields.find(u"medical"_s))
        receipt.medical = medicalFrom(*medical, faults);
    if (const JsonValue *const invoice = fields.find(u"invoice"_s))
        receipt.invoice = invoiceFrom(*invoice, faults);
    readMoney(fields, &receipt, faults);
    receipt.reenterCash = fields.flag(u"reenterCash"_s);
    if (const JsonValue *const slip = fields.find(u"slip"_s))
        receipt.slip = slipFrom(*slip, u"slip"_s, faults);
    return receipt;
}

} // namespace

Judged<Receipt> readReceipt(const QByteArray &json)
{
    Judged<Receipt> judged;
    QString problem;
    const std::optional<JsonValue> value = readJson(json, &problem);
    if (!value) {
        judged.faults << problem;
        return judged;
    }
    Faults faults;
    Receipt receipt = receiptFrom(*value, &faults);
    judged.faults = faults.take();
    if (judged.faults.isEmpty())
        judged.value = std::move(receipt);
    return judged;
}

} // namespace Velno::Receipts
