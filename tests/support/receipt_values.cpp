// SPDX-License-Identifier: Apache-2.0

#include "tests/support/receipt_values.h"

#include "till/money.h"
#include "till/slip_texts.h"

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace TestSupport {

namespace {

bool oneIn(QRandomGenerator &random, int count)
{
    return random.bounded(count) == 0;
}

/** Mostly small, now and then as large as can be. */
qint64 amount(QRandomGenerator &random, qint64 least)
{
    return least +
           (oneIn(random, 10) ? random.bounded(qint64(1'000'000'000)) : random.bounded(qint64(10'000)));
}

QString text(QRandomGenerator &random)
{
    const QString letters = u"aZ09 \"\\/{}[]:,ğüşıöçĞÜŞİÖÇ"_s; // each two bytes at most
    QString text;
    for (int left = random.bounded(1, 27); left > 0; --left)
        text += letters.at(random.bounded(int(letters.size())));
    return text;
}

Item randomItem(QRandomGenerator &random)
{
    Item item;
    item.name = text(random);
    if (oneIn(random, 8))
        return item; // a remark
    item.price = amount(random, 1);
    item.quantity = oneIn(random, 2) ? 1000 : 1 + random.bounded(100'000);
    item.unit = random.bounded(8);
    item.section = random.bounded(1, 9);
    if (oneIn(random, 3))
        item.percentage = random.bounded(-100, 101);
    else if (oneIn(random, 3))
        item.discount = random.bounded(lineTotal(item.price, item.quantity) + 1);
    return item;
}

Invoice randomInvoice(QRandomGenerator &random)
{
    Invoice invoice;
    invoice.type = random.bounded(3U);
    invoice.isCompany = oneIn(random, 2);
    invoice.idNumber = invoice.isCompany ? u"0000000001"_s : u"11111111111"_s;
    if (invoice.type == 0 || oneIn(random, 2))
        invoice.reference = u"ABC-123456789.:~"_s.first(random.bounded(6, 17));
    invoice.deliveryNote = oneIn(random, 2);
    return invoice;
}

QList<Payment> randomPayments(QRandomGenerator &random, bool endsWithRest)
{
    QList<Payment> payments;
    for (int left = random.bounded(1, 5); left > 0; --left)
        payments << Payment{oneIn(random, 2) ? Tender::Card : Tender::Cash, amount(random, 1)};
    if (endsWithRest)
        payments.last().amount.reset();
    return payments;
}

/** A total that the payments can pay: what they come to, or so much more that a rest is left. */
qint64 payableTotal(const QList<Payment> &payments)
{
    qint64 total = 0;
    for (const Payment &payment : payments)
        total += payment.amount.value_or(1);
    return total;
}

SlipLine randomLine(QRandomGenerator &random)
{
    SlipLine line;
    if (oneIn(random, 5)) {
        line.feeds = random.bounded(1, 21);
        return line;
    }
    line.text = text(random);
    line.styleA = oneIn(random, 3);
    line.styleB = oneIn(random, 3);
    if (oneIn(random, 3))
        line.right = text(random);
    else
        line.size = random.bounded(6);
    return line;
}

} // namespace

Slip randomSlip(QRandomGenerator &random)
{
    Slip slip;
    slip.encoding = slipEncodings().at(random.bounded(3));
    for (int left = random.bounded(1, 8); left > 0; --left)
        slip.lines << randomLine(random);
    return slip;
}

Receipt randomReceipt(QRandomGenerator &random)
{
    Receipt receipt;
    for (int left = random.bounded(1, 8); left > 0; --left)
        receipt.items << randomItem(random);
    if (receipt.items.first().price == 0 || oneIn(random, 4))
        receipt.medical = Medical{amount(random, 1), 11'111'111'111ULL};
    if (oneIn(random, 4))
        receipt.invoice = randomInvoice(random);
    receipt.payments = randomPayments(random, receipt.invoice || oneIn(random, 2));
    if (oneIn(random, 2))
        receipt.total = payableTotal(receipt.payments);
    if (oneIn(random, 3))
        receipt.slip = randomSlip(random);
    receipt.reenterCash = oneIn(random, 2);
    return receipt;
}

} // namespace TestSupport
