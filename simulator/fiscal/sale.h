// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/refusal.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <map>

namespace Simulator {

/** An item as an application asks for it; nothing in it is trusted. */
struct ItemRequest
{
    qint64 price = 0;      ///< kuruş for one unit; 0 makes the item a remark without a value
    qint32 quantity = 0;   ///< thousandths
    qint32 percentage = 0; ///< below 0 a discount, above 0 a surcharge; the amount then counts for nothing
    qint64 amount = 0;     ///< a discount in kuruş
    int section = 0;
    QByteArray name; ///< UTF-8, or what is no UTF-8 in ISO-8859-9
    qint32 type = 0; ///< the unit that the quantity counts
};

/** One line of a receipt. */
struct SaleLine
{
    QString name;
    qint64 price = 0;
    qint32 quantity = 0;
    int type = 0;
    int section = 0;       ///< 0 for a remark
    int taxRate = 0;       ///< as it was when the item was sold
    qint64 gross = 0;      ///< price × quantity
    int percentage = 0;    ///< for the receipt's text; 0 when the adjustment is an amount
    qint64 adjustment = 0; ///< added to gross; below 0 a discount
    bool deleted = false;

    qint64 total() const { return gross + adjustment; }
};

enum class PaymentKind { Cash, Card };

struct Payment
{
    PaymentKind kind = PaymentKind::Cash;
    qint64 amount = 0;
    int acquirer = 0; ///< of a card payment, otherwise 0

    bool operator==(const Payment &) const = default;
};

/** What an application is told of a sale, in the order in which it is told. Kuruş. */
struct SaleTotals
{
    qint64 total = 0;  ///< all items after their adjustments, and the medical contribution; tax is contained
    qint64 tax = 0;    ///< value-added tax within the total
    qint64 cash = 0;   ///< paid in cash, as handed over
    qint64 card = 0;   ///< paid by card
    qint64 change = 0; ///< what of the cash goes back; cash + card - change is what counts towards the total
    qint32 items = 0;  ///< lines that are not deleted

    bool operator==(const SaleTotals &) const = default;
};

/** All that is sold at one tax rate. */
struct TaxGroup
{
    qint64 total = 0;
    qint64 tax = 0;

    bool operator==(const TaxGroup &) const = default;
};
using TaxGroups = std::map<int, TaxGroup>; ///< by rate in per cent

/**
 * A sale: its lines, what was paid, and the sums of both. Every change either happens and gives NotRefused,
 * or gives the reason and changes nothing. Knows nothing of keys, paper, or numbers.
 */
class Sale
{
public:
    static constexpr int mostLines = 500;
    static constexpr int mostPayments = 100; ///< besides the one that settles the rest

    /** @param limit  the largest total in kuruş; 0 for none but the largest amount */
    explicit Sale(qint64 limit = 0)
        : m_limit(limit)
    {
    }

    /** All of them or none. */
    Refusal add(const QList<ItemRequest> &items);

    /** The last line that is not deleted. */
    Refusal removeLast();

    /** Lines count from 0 in the order of their coming; a deleted one keeps its place. */
    Refusal remove(int index);

    /** What a patient pays towards a medicine; 0 takes it back. @param identity  11 digits as a number */
    Refusal setMedicalContribution(qint64 amount, qint64 identity);

    /** Cash may be more than what is left to pay, a card not. */
    Refusal pay(PaymentKind kind, qint64 amount, int acquirer);

    /** Pays what is left, if anything is. After it the sale is as it will stand on the receipt. */
    Refusal settle(PaymentKind kind, int acquirer);

    const QList<SaleLine> &lines() const { return m_lines; }
    const QList<Payment> &payments() const { return m_payments; }
    qint64 medicalContribution() const { return m_contribution; }
    qint64 patient() const { return m_patient; }
    TaxGroups taxGroups() const;
    SaleTotals totals() const;
    bool isEmpty() const;

    /** What is left to pay. */
    qint64 remaining() const;

private:
    Refusal mayChange() const { return m_payments.isEmpty() ? NotRefused : ItemsStay; }
    void take(PaymentKind kind, qint64 amount, int acquirer);
    qint64 itemsTotal() const;
    Refusal mayReach(qint64 total) const;

    qint64 m_limit;
    QList<SaleLine> m_lines;
    QList<Payment> m_payments;
    qint64 m_contribution = 0;
    qint64 m_patient = 0;
};

} // namespace Simulator
