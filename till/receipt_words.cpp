#include "till/receipt_words.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

QStringList unitWords()
{
    return {u"piece"_s, u"kilogram"_s,    u"gram"_s,       u"litre"_s,
            u"metre"_s, u"squareMetre"_s, u"cubicMetre"_s, u"hour"_s};
}

QStringList invoiceTypeWords()
{
    return {u"paper"_s, u"electronic"_s, u"archived"_s};
}

QStringList tenderWords()
{
    return {u"cash"_s, u"card"_s};
}

QStringList receiptFields()
{
    return {u"items"_s, u"medical"_s, u"invoice"_s, u"payments"_s, u"total"_s, u"reenterCash"_s, u"slip"_s};
}

QStringList itemFields()
{
    return {u"name"_s, u"price"_s, u"quantity"_s, u"unit"_s, u"section"_s, u"percentage"_s, u"discount"_s};
}

QStringList medicalFields()
{
    return {u"amount"_s, u"person"_s};
}

QStringList invoiceFields()
{
    return {u"type"_s, u"person"_s, u"company"_s, u"reference"_s, u"deliveryNote"_s};
}

QStringList slipFields()
{
    return {u"encoding"_s, u"lines"_s};
}

QStringList textLineFields()
{
    return {u"text"_s, u"size"_s, u"styleA"_s, u"styleB"_s};
}

QStringList justifiedLineFields()
{
    return {u"left"_s, u"right"_s, u"styleA"_s, u"styleB"_s};
}

QStringList feedLineFields()
{
    return {u"feed"_s};
}

} // namespace Velno::Receipts
