// SPDX-License-Identifier: Apache-2.0

#include "simulation/audit.h"

#include "simulation/clerk.h"
#include "simulator/fiscal/money.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;
using Simulator::PaymentKind;

namespace Simulation {

namespace {

/** The line that an item has to become. */
bool isLineOf(const Simulator::SaleLine &line, const Item &item)
{
    if (line.name != item.name || line.price != item.price)
        return false;
    if (item.price == 0)
        return true; // a remark: nothing else counts
    const qint64 gross = Simulator::lineTotal(item.price, item.quantity).value_or(-1);
    const qint64 adjustment =
        item.percentage != 0 ? Simulator::percentageOf(gross, item.percentage) : -item.discount;
    return line.quantity == item.quantity && line.section == item.section && line.type == item.unit &&
           line.gross == gross && line.adjustment == adjustment;
}

QList<Simulator::Payment> paymentsOf(const Receipt &receipt, qint64 total)
{
    QList<Simulator::Payment> payments;
    for (const Payment &payment : receipt.payments) {
        const qint64 amount = payment.amount.value_or(total);
        if (amount > 0)
            payments << Simulator::Payment{
                payment.tender == Tender::Card ? PaymentKind::Card : PaymentKind::Cash, amount, 0};
        total -= amount;
    }
    return payments;
}

/** What of the receipt is not on the fiscal one. */
QString difference(const Receipt &receipt, const BookedReceipt &booked)
{
    if (booked.lines.size() != receipt.items.size())
        return u"%1 lines"_s.arg(booked.lines.size());
    for (qsizetype i = 0; i < booked.lines.size(); ++i)
        if (!isLineOf(booked.lines.at(i), receipt.items.at(i)))
            return u"line %1"_s.arg(i);
    if (booked.contribution != (receipt.medical ? receipt.medical->amount : 0))
        return u"medical contribution"_s;
    if (booked.payments != paymentsOf(receipt, booked.totals.total))
        return u"payments"_s;
    const bool isInvoice = receipt.invoice.has_value();
    if (booked.invoiceType != (isInvoice ? int(receipt.invoice->type) : -1) ||
        booked.customer != (isInvoice ? receipt.invoice->idNumber : QString()))
        return u"invoice"_s;
    return receipt.total && *receipt.total != booked.totals.total ? u"total"_s : QString();
}

bool hasLinesOf(const BookedReceipt &receipt, const QString &key)
{
    return std::ranges::all_of(receipt.lines,
                               [&key](const Simulator::SaleLine &line) { return keyIn(line.name) == key; });
}

bool isNone(const VelnoReceiptRef &ref)
{
    return ref.first == 0 && ref.second == 0;
}

bool isSame(const VelnoReceiptRef &ref, const Simulator::ReceiptRef &other)
{
    return ref.first == other.z && ref.second == other.number;
}

bool hasTotals(const Order &order, const Simulator::SaleTotals &totals)
{
    const VelnoEcrSaleTotals &told = order.totals;
    return told.values[VelnoTotal_ToPay] == totals.total && told.values[VelnoTotal_Cash] == totals.cash &&
           told.values[VelnoTotal_Card] == totals.card && told.values[VelnoTotal_Change] == totals.change &&
           told.number == totals.items;
}

} // namespace

Audit::Audit(Till &till, const std::deque<Handed> &handed,
             const std::deque<Simulator::FiscalModel> &registers, const Truth &truth)
    : m_till(till)
    , m_inUse(&registers.back())
    , m_handed(handed)
    , m_truth(truth)
{
    for (const Simulator::FiscalModel &model : registers) {
        m_books << booksOf(model);
        for (const BookedReceipt &receipt : std::as_const(m_books.last().receipts))
            m_receipts << Counted{receipt, m_truth.find(model, receipt.ref)};
    }
}

QString Audit::run()
{
    if (m_truth.isOpen())
        return u"a sale is left open"_s;
    const bool isRead = m_till.forEach({State::Accepted, State::Open, State::Closed, State::Cancelled,
                                        State::Refused, State::Waiting, State::NeedsPerson},
                                       [this](const Order &order) { m_orders.insert(order.key, order); });
    if (!isRead)
        return u"the ledger cannot be read"_s;
    if (const QString problem = checkBooks(); !problem.isEmpty())
        return problem;
    for (const Handed &handed : m_handed)
        if (const QString problem = checkOrder(handed); !problem.isEmpty())
            return handed.key + u": "_s + problem;
    return checkReports();
}

/** No receipt is anybody else's. */
QString Audit::checkBooks()
{
    for (const auto &[receipt, seen] : std::as_const(m_receipts)) {
        const QString key = seen ? seen->key : QString();
        const bool isKnown =
            key == Clerk::key() || std::ranges::find(m_handed, key, &Handed::key) != m_handed.end();
        if (!isKnown || (!seen->isTouched && !hasLinesOf(receipt, key)))
            return u"receipt %1/%2 has the lines of nobody"_s.arg(receipt.ref.z).arg(receipt.ref.number);
    }
    return {};
}

/** As many as were ordered, each the sum of its receipts. */
QString Audit::checkReports() const
{
    qsizetype reports = 0;
    for (const Books &books : m_books) {
        reports += books.reports.size();
        for (const BookedReport &report : books.reports) {
            const BookedReport sum = sumOf(books, report.z);
            if (report.receipts != sum.receipts || report.total != sum.total || report.cash != sum.cash ||
                report.card != sum.card)
                return u"Z report %1 is not the sum of its receipts"_s.arg(report.z);
        }
    }
    return reports == m_zReports ? QString()
                                 : u"%1 Z reports are made, %2 were to be"_s.arg(reports).arg(m_zReports);
}

QString Audit::checkOrder(const Handed &handed)
{
    const auto found = m_orders.constFind(handed.key);
    const Order order = found == m_orders.cend() ? Order() : *found;
    const bool isOther = order.reference.first != handed.order.reference.first ||
                         order.reference.second != handed.order.reference.second;
    // What a person has told of may have been found on the register since.
    const bool isFoundSince = isNone(handed.order.reference) && !handed.asked.isEmpty();
    if (found == m_orders.cend() || order.state != handed.order.state || (isOther && !isFoundSince))
        return u"the ledger has forgotten how it ended: state %1, question %2, receipt %3/%4"_s
            .arg(int(order.state))
            .arg(int(order.question))
            .arg(order.reference.first)
            .arg(order.reference.second);
    const bool isRefused = order.state == State::Refused;
    if (isRefused && !handed.content.isRefusedForGood && !handed.isHindered)
        return u"it is refused without a reason"_s;
    switch (handed.step->job) {
    case Job::Receipt:
        return checkReceipt(handed, order);
    case Job::ZReport:
        m_zReports += order.state == State::Closed;
        break;
    case Job::Slip:
        return checkSlip(handed, order);
    case Job::XReport:
        break;
    }
    return {};
}

QList<Audit::Counted> Audit::closedFor(const QString &key) const
{
    QList<Counted> receipts;
    std::ranges::copy_if(m_receipts, std::back_inserter(receipts), [&key](const Counted &counted) {
        return counted.seen->key == key && !counted.seen->isGivenBack;
    });
    return receipts;
}

QString Audit::checkReceipt(const Handed &handed, const Order &order) const
{
    const QList<Counted> receipts = closedFor(handed.key);
    const qsizetype times = receipts.size();
    // What a register had not told yet when it was carried away nobody can ask it any more.
    const qsizetype gone = std::ranges::count_if(receipts, [this](const Counted &counted) {
        return counted.seen->isUntold && counted.seen->model != m_inUse;
    });
    const int slips = m_truth.slips(handed.key);
    const bool isToldTwice = handed.asked.contains(Question::CountedTwice);
    if (order.state != State::Closed)
        return times == gone && slips == 0 ? QString() : u"it was not to be sold, and %1 count"_s.arg(times);
    const qsizetype expected = isToldTwice && !handed.isToldUnsold ? 2 : 1;
    if (times != expected && times - gone != expected)
        return u"it is closed, and %1 count"_s.arg(times);
    const bool hasSlip = handed.content.receipt.slip.has_value();
    if (slips > (hasSlip ? 1 : 0) || (hasSlip && !order.slipUnsure && slips != 1))
        return u"%1 slips are printed"_s.arg(slips);
    if (const QString problem = checkMoney(handed); !problem.isEmpty())
        return problem;
    return checkClosed(handed, order);
}

QString Audit::checkClosed(const Handed &handed, const Order &order) const
{
    bool isFound = false;
    const QList<Counted> receipts = closedFor(handed.key);
    for (const auto &[receipt, seen] : receipts) {
        const QString what = difference(handed.content.receipt, receipt);
        // With somebody else's lines on it, or without one of its own, it counts if a person has said so.
        const bool isExcused = seen->isTouched && (seen->isUnseen || !handed.asked.isEmpty());
        if (!what.isEmpty() && !isExcused)
            return u"the fiscal receipt is another one: "_s + what;
        const bool isThis = isSame(order.reference, receipt.ref);
        isFound = isFound || isThis;
        // Of one that a person has told of the register tells no sums.
        if (isThis && handed.asked.isEmpty() && !hasTotals(order, receipt.totals))
            return u"the ledger has other sums than the register"_s;
    }
    const bool isByWord = isNone(order.reference) && !handed.asked.isEmpty();
    return isFound || isByWord ? QString() : u"the ledger has another reference"_s;
}

QString Audit::checkSlip(const Handed &handed, const Order &order) const
{
    const int slips = m_truth.slips(handed.key);
    const int wanted = order.state == State::Closed ? 1 : 0;
    return slips == wanted ? QString() : u"%1 slips are printed, %2 was to be"_s.arg(slips).arg(wanted);
}

/** What was paid on a receipt that the register cancelled is taken again only when a person has said so. */
QString Audit::checkMoney(const Handed &handed) const
{
    const Receipt &receipt = handed.content.receipt;
    const SeenSale *paid = nullptr;
    for (const SeenSale &sale : m_truth.sales()) {
        if (sale.key != handed.key)
            continue;
        if (paid && sale.answers == paid->answers && (sale.totals.card > 0 || sale.totals.cash > 0))
            return u"it was paid again without asking"_s;
        const bool isForOnce = sale.totals.card > 0 || (sale.totals.cash > 0 && !receipt.reenterCash);
        if (sale.end == SeenSale::End::Cancelled && isForOnce)
            paid = &sale;
    }
    return {};
}

} // namespace Simulation
