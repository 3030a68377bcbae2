// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_words.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

const QStringList &unitWords()
{
    static const QStringList words{u"piece"_s, u"kilogram"_s,    u"gram"_s,       u"litre"_s,
                                   u"metre"_s, u"squareMetre"_s, u"cubicMetre"_s, u"hour"_s};
    return words;
}

const QStringList &invoiceTypeWords()
{
    static const QStringList words{u"paper"_s, u"electronic"_s, u"archived"_s};
    return words;
}

const QStringList &tenderWords()
{
    static const QStringList words{u"cash"_s, u"card"_s};
    return words;
}

const QStringList &receiptFields()
{
    static const QStringList words{u"items"_s, u"medical"_s,     u"invoice"_s, u"payments"_s,
                                   u"total"_s, u"reenterCash"_s, u"slip"_s};
    return words;
}

const QStringList &itemFields()
{
    static const QStringList words{u"name"_s,    u"price"_s,      u"quantity"_s, u"unit"_s,
                                   u"section"_s, u"percentage"_s, u"discount"_s};
    return words;
}

const QStringList &medicalFields()
{
    static const QStringList words{u"amount"_s, u"person"_s};
    return words;
}

const QStringList &invoiceFields()
{
    static const QStringList words{u"type"_s, u"person"_s, u"company"_s, u"reference"_s, u"deliveryNote"_s};
    return words;
}

const QStringList &slipFields()
{
    static const QStringList words{u"encoding"_s, u"lines"_s};
    return words;
}

const QStringList &textLineFields()
{
    static const QStringList words{u"text"_s, u"size"_s, u"styleA"_s, u"styleB"_s};
    return words;
}

const QStringList &justifiedLineFields()
{
    static const QStringList words{u"left"_s, u"right"_s, u"styleA"_s, u"styleB"_s};
    return words;
}

const QStringList &feedLineFields()
{
    static const QStringList words{u"feed"_s};
    return words;
}

} // namespace Velno::Receipts
