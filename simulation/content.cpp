// SPDX-License-Identifier: Apache-2.0

#include "simulation/content.h"

#include "simulation/chance.h"
#include "simulator/fiscal/money.h"
#include "till/receipt_json.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace Simulation {

namespace {

constexpr qint64 overLimit = 2'000'000; // kuruş, more than the register sells at once

qint64 totalOf(const Item &item)
{
    const qint64 gross = Simulator::lineTotal(item.price, item.quantity).value_or(0);
    return item.percentage != 0 ? gross + Simulator::percentageOf(gross, item.percentage)
                                : gross - item.discount;
}

qint64 totalOf(const Receipt &receipt)
{
    qint64 total = receipt.medical ? receipt.medical->amount : 0;
    for (const Item &item : receipt.items)
        total += totalOf(item);
    return total;
}

Item drawItem(Chance &chance, const QString &name, bool mayBeRemark)
{
    Item item;
    item.name = name;
    item.price = chance.from(100, 9999);
    item.section = chance.from(1, 8);
    item.unit = chance.from(0, 7);
    if (chance.in100(30))
        item.quantity = chance.from(1, 5000);
    const qint64 gross = Simulator::lineTotal(item.price, item.quantity).value_or(0);
    const int adjustment = chance.below(100);
    if (adjustment < 10)
        item.percentage = chance.from(1, 70) - 50;
    else if (adjustment < 20)
        item.discount = chance.from(0, int(gross));
    if (mayBeRemark && chance.in100(8)) {
        item = {};
        item.name = name;
    }
    return item;
}

/** Amounts and a rest, in the ways in which people pay. */
QList<Payment> drawPayments(Chance &chance, qint64 total, bool endsWithRest)
{
    const Tender first = chance.in100(50) ? Tender::Cash : Tender::Card;
    const Tender other = first == Tender::Cash ? Tender::Card : Tender::Cash;
    const qint64 part = total / 3;
    const int way = chance.below(endsWithRest ? 4 : 7);
    if (part == 0 || way < 2)
        return {{first, {}}};
    if (way == 2)
        return {{first, part}, {other, {}}};
    if (way == 3)
        return {{first, part}, {first, part}, {other, {}}};
    if (way == 4)
        return {{Tender::Cash, total + chance.from(0, 5000)}};
    if (way == 5)
        return {{first, part}, {other, total - part}};
    return {{Tender::Card, total}};
}

Slip drawSlip(Chance &chance, const QString &key)
{
    Slip slip{u"UTF-8"_s, {}};
    for (int i = chance.from(0, 2); i >= 0; --i) {
        SlipLine line;
        line.text = key + u" Teşekkür ederiz"_s;
        slip.lines << line;
    }
    return slip;
}

/** Makes it one that cannot be sold. */
void spoil(Receipt &receipt, Chance &chance, qint64 total)
{
    if (chance.in100(50) && !receipt.payments.constLast().amount) {
        receipt.total = total + 1;
        return;
    }
    receipt.items.last().price = overLimit;
    receipt.items.last().quantity = 1000;
    receipt.items.last().section = 1;
    receipt.payments = {{Tender::Cash, {}}};
    receipt.total.reset();
}

Receipt drawReceipt(const Step &step, const QString &key, bool *isRefusedForGood)
{
    Chance chance(step.seed);
    Receipt receipt;
    const int items = std::min(chance.in100(8) ? chance.from(11, 25) : chance.from(1, 8), step.mostItems);
    for (int i = 0; i < items; ++i)
        receipt.items << drawItem(chance, u"%1 Mal %2"_s.arg(key).arg(i), i > 0);
    if (chance.in100(8))
        receipt.medical = Medical{chance.from(1, 5000), 11'111'111'111};
    if (chance.in100(8))
        receipt.invoice = chance.in100(50) ? Invoice{0, false, u"11111111111"_s, u"ABC1234567"_s, false}
                                           : Invoice{1, true, u"0000000001"_s, {}, true};
    receipt.reenterCash = chance.in100(60);
    if (chance.in100(15))
        receipt.slip = drawSlip(chance, key);
    const qint64 total = totalOf(receipt);
    receipt.payments = drawPayments(chance, total, receipt.invoice.has_value());
    if (chance.in100(50))
        receipt.total = total;
    *isRefusedForGood = chance.in100(3);
    if (*isRefusedForGood)
        spoil(receipt, chance, total);
    return receipt;
}

} // namespace

Content contentOf(const Step &step, const QString &key)
{
    Content content;
    if (step.job == Job::Receipt) {
        content.receipt = drawReceipt(step, key, &content.isRefusedForGood);
        content.json = toJson(content.receipt);
    } else if (step.job == Job::Slip) {
        Chance chance(step.seed);
        content.json = toJson(drawSlip(chance, key));
    }
    return content;
}

QString keyIn(const QString &text)
{
    return text.section(u' ', 0, 0);
}

} // namespace Simulation
