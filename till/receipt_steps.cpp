// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_work.h"

#include "till/sale_item.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

Stage stageOf(Tender tender)
{
    return tender == Tender::Card ? Stage::CardPayment : Stage::CashPayment;
}

/** Behind any other code the question that goes before the keys has failed, or was not answered as hoped. */
bool mayHaveSentKeys(int code)
{
    return code == 0 || code == VelnoResult_ConnectionFailed;
}

int keyOf(Tender tender)
{
    return tender == Tender::Card ? VelnoPaymentKey_F11 : VelnoPaymentKey_F10;
}

} // namespace

OrderWork::End ReceiptWork::step()
{
    const int connection = m_register.connections();
    if (const End end = reach())
        return end;
    m_isCertain = connection == m_register.connections();
    if (!m_isCertain) // the sale may have ended with the connection, and another one be open
        return {};
    if (isLeaving())
        return cancelSale();
    if (m_position.lines < m_receipt.items.size())
        return enterLines();
    const bool isUnpaid = m_position.payments == 0;
    if (isUnpaid && m_receipt.medical && !m_medicalDone)
        return enterMedical();
    if (isUnpaid && !m_totalsJudged)
        return judgeTotals();
    return m_position.payments < amountsOf(m_receipt) ? pay() : endSale();
}

/** Notes what was sent; anything but a clear yes is looked into. */
OrderWork::End ReceiptWork::sent(Step step, int code, int lines)
{
    m_sent = {step, m_position, lines, m_register.last(), m_register.connections()};
    m_isCertain = code == 0 && (step == Step::Lines || step == Step::Medical);
    if (m_isCertain)
        m_refusals = 0;
    if (isLost(code) && !m_place.rules.hold(Rule::LookAfterLostAnswer))
        m_isCertain = true; // and sends it again
    return {};
}

/** As many lines at once as the register takes; a remark goes alone. */
OrderWork::End ReceiptWork::enterLines()
{
    m_place.tell(Stage::Entering);
    VelnoSaleItemList list = saleItems(m_receipt, m_position.lines);
    const int code = list.count == 1 ? m_register.ask(velnoext_add_sale_item, RegisterAccess::answerTimeout,
                                                      list.items, &m_totals)
                                     : m_register.ask(velnoext_add_multiple_sale_items,
                                                      RegisterAccess::answerTimeout, &list, &m_totals);
    const int expected = m_position.lines + list.count;
    const End end = sent(Step::Lines, code, list.count);
    if (code != 0)
        return end;
    if (const auto now = positionOf(m_receipt, m_totals); now && *now == Position{expected, 0})
        m_position.lines = expected;
    else
        m_isCertain = false; // somebody else works on it, too
    return end;
}

OrderWork::End ReceiptWork::enterMedical()
{
    const int code = m_register.ask(velnoext_add_medical_contribution, RegisterAccess::answerTimeout,
                                    m_receipt.medical->amount, m_receipt.medical->person);
    const End end = sent(Step::Medical, code);
    m_medicalDone = code == 0;
    if (m_medicalDone)
        m_isCertain = false; // its answer brings no sums
    return end;
}

/** Before anything is paid: what a person would have to take back later is found now. */
OrderWork::End ReceiptWork::judgeTotals()
{
    m_totalsJudged = true;
    const QString fault = faultOfTotals(m_receipt, m_totals);
    return fault.isEmpty() ? End() : refuseForGood({VelnoResult_BadValue, 0}, fault);
}

/** That money of which nobody may ask twice is being taken is on the disk before the register hears of it. */
OrderWork::End ReceiptWork::notePayment(Tender tender)
{
    m_place.tell(stageOf(tender));
    if (!isForOnce(m_receipt, tender))
        return {};
    m_mayBePaid = true;
    if (m_order.paymentSent || !m_place.rules.hold(Rule::PaymentIntentionFlushed))
        return {};
    m_order.paymentSent = true;
    const End failed = save(State::Open, u"a payment is being taken"_s, Durability::Flushed);
    if (failed)
        m_order.paymentSent = m_mayBePaid = false;
    return failed;
}

OrderWork::End ReceiptWork::pay()
{
    const bool wasPaid = m_mayBePaid;
    const Payment &payment = m_receipt.payments.at(m_position.payments);
    if (const End failed = notePayment(payment.tender))
        return failed;
    const int code = m_register.ask(velnoext_add_payment, keyOf(payment.tender), *payment.amount);
    if (!mayHaveSentKeys(code))
        m_mayBePaid = wasPaid;
    const End end = sent(Step::Payment, code);
    if (code == 0 && !m_place.rules.hold(Rule::LookBehindPayments)) {
        ++m_position.payments;
        m_isCertain = true;
    }
    return end;
}

OrderWork::End ReceiptWork::endSale()
{
    const bool wasPaid = m_mayBePaid;
    const bool wasEnded = m_mayBeEnded;
    const Tender tender = endTender(m_receipt);
    if (!m_receipt.payments.constLast().amount) {
        if (const End failed = notePayment(tender))
            return failed;
    }
    m_place.tell(Stage::Closing);
    VelnoInvoice invoice = m_receipt.invoice ? invoiceOf(m_receipt) : VelnoInvoice();
    const int code = m_receipt.invoice ? m_register.ask(velnoext_end_sale_with_invoice, &invoice)
                                       : m_register.ask(velnoext_end_sale, keyOf(tender));
    const bool isSent = m_receipt.invoice || mayHaveSentKeys(code);
    m_mayBePaid = isSent ? m_mayBePaid : wasPaid;
    m_mayBeEnded = isSent || wasEnded;
    return sent(Step::End, code);
}

OrderWork::End ReceiptWork::cancelSale()
{
    return sent(Step::Cancel, m_register.ask(velnoext_cancel_sale, RegisterAccess::answerTimeout));
}

} // namespace Velno::Receipts
