// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/till.h"

#include "simulator/fiscal/acquirers.h"
#include "simulator/fiscal/receipt_text.h"
#include "simulator/fiscal/slip.h"

#include <algorithm>
#include <limits>

namespace Simulator {

namespace {

int nextAcquirer(const Sale &sale)
{
    return acquirerInTurn(std::ranges::count(sale.payments(), PaymentKind::Card, &Payment::kind));
}

} // namespace

Till::Till(const QByteArray &serial, Clock clock)
    : m_serial(serial)
    , m_clock(std::move(clock))
{
}

QString Till::open(const QString &journalFile)
{
    if (journalFile.isEmpty())
        return {};
    auto file = std::make_unique<JournalFile>();
    if (QString problem = file->open(journalFile); !problem.isEmpty())
        return problem;
    m_file = std::move(file);
    m_journal = m_file.get();
    m_day = m_journal->day(z()).value_or(DayTotals());
    return {};
}

Refusal Till::press(const QList<qint32> &keys)
{
    if (m_errorIsDisplayed && m_open && !keys.startsWith('C'))
        return ErrorDisplayed;
    clearError();
    for (const qint32 key : keys)
        if (const Refusal refusal = pressOne(key))
            return refuseKeys(refusal);
    return NotRefused;
}

Refusal Till::refuseKeys(Refusal refusal)
{
    m_keysRefused = refusal;
    m_errorIsDisplayed = true;
    m_typed.clear();
    if (m_open)
        m_screen = Screen::Sale;
    return refusal;
}

Refusal Till::pressOne(qint32 key)
{
    const auto action = actionOf(m_screen, key);
    return action ? perform(*action, key) : MeaninglessKey;
}

Refusal Till::perform(KeyAction action, qint32 key)
{
    switch (action) {
    case KeyAction::OpenSale:
        return begin(false);
    case KeyAction::OpenInvoiceSale:
        return begin(true);
    case KeyAction::OpenMenu:
        return show(Screen::Menu);
    case KeyAction::LeaveMenu:
        return show(Screen::Idle);
    case KeyAction::Type:
        return type(key);
    case KeyAction::ClearTyped:
    case KeyAction::KeepSale:
        return show(Screen::Sale);
    case KeyAction::PayCash:
        return pay(PaymentKind::Cash);
    case KeyAction::PayCard:
        return pay(PaymentKind::Card);
    case KeyAction::CloseCash:
        return closeByKey(PaymentKind::Cash);
    case KeyAction::CloseCard:
        return closeByKey(PaymentKind::Card);
    case KeyAction::AskCancel:
        return show(Screen::CancelQuestion);
    case KeyAction::Cancel:
        return cancel();
    }
    return MeaninglessKey;
}

Refusal Till::show(Screen screen)
{
    m_screen = screen;
    m_typed.clear();
    return NotRefused;
}

Refusal Till::begin(bool withInvoice)
{
    if (!hasPaper())
        return PaperOut;
    const qint64 now = m_clock();
    const ReceiptRef ref = m_journal->begin(withInvoice, now);
    if (ref == ReceiptRef())
        return JournalUnwritable;
    m_open = Receipt{ref, Sale(m_saleLimit), now, 0, withInvoice, {}};
    return show(Screen::Sale);
}

Refusal Till::type(qint32 key)
{
    if (!m_typed.type(key))
        return MeaninglessKey;
    m_screen = Screen::Amount;
    return NotRefused;
}

Refusal Till::pay(PaymentKind kind)
{
    if (const Refusal refusal = mayWork())
        return refusal;
    Sale &sale = m_open->sale;
    const Refusal refusal = sale.pay(kind, m_typed.value(), nextAcquirer(sale));
    return refusal == NotRefused ? show(Screen::Sale) : refusal;
}

Refusal Till::closeByKey(PaymentKind rest)
{
    // A sale that was opened with an invoice needs its customer, whom no key can name.
    return m_open->withInvoice ? InvoiceNeeded : close(rest, {});
}

Refusal Till::closeWithInvoice(const Invoice &invoice, PaymentKind rest)
{
    if (!m_open)
        return NoSale;
    if (!m_open->withInvoice)
        return NoInvoiceSale;
    return close(rest, invoice);
}

Refusal Till::close(PaymentKind rest, const std::optional<Invoice> &invoice)
{
    if (const Refusal refusal = mayWork())
        return refusal;
    Receipt receipt = *m_open;
    if (const Refusal refusal = receipt.sale.settle(rest, nextAcquirer(receipt.sale)))
        return refusal;
    receipt.closed = m_clock();
    receipt.invoice = invoice;
    if (!m_journal->close(receipt))
        return JournalUnwritable;
    m_day.add(receipt);
    leaveSale();
    print(receiptPrint(receipt, m_serial));
    m_last = std::move(receipt);
    return NotRefused;
}

Refusal Till::cancel()
{
    Receipt receipt = *m_open;
    receipt.closed = m_clock();
    if (!m_journal->cancel(receipt.ref, receipt.closed))
        return JournalUnwritable;
    ++m_day.cancelled;
    leaveSale();
    print(cancelledPrint(receipt, m_serial));
    return NotRefused;
}

void Till::leaveSale()
{
    m_open.reset();
    clearError();
    show(Screen::Idle);
}

qint32 Till::tellError()
{
    m_errorIsDisplayed = false;
    return error();
}

void Till::clearError()
{
    m_keysRefused = NotRefused;
    m_errorIsDisplayed = false;
}

qint32 Till::standingError() const
{
    return m_open && !m_open->sale.payments().isEmpty() ? PaymentBegun : NoError;
}

// Lack of paper does not show on the display: the keys that cancel still work.
qint32 Till::display() const
{
    return m_screen == Screen::Amount || m_screen == Screen::CancelQuestion ? 2 : 1;
}

Refusal Till::mayWork() const
{
    if (!m_open)
        return NoSale;
    return hasPaper() ? NotRefused : PaperOut;
}

Refusal Till::add(const QList<ItemRequest> &items)
{
    const Refusal refusal = mayWork();
    return refusal == NotRefused ? m_open->sale.add(items) : refusal;
}

Refusal Till::removeLast()
{
    const Refusal refusal = mayWork();
    return refusal == NotRefused ? m_open->sale.removeLast() : refusal;
}

Refusal Till::remove(qint32 index)
{
    const Refusal refusal = mayWork();
    return refusal == NotRefused ? m_open->sale.remove(index) : refusal;
}

Refusal Till::setMedicalContribution(qint64 amount, qint64 identity)
{
    const Refusal refusal = mayWork();
    return refusal == NotRefused ? m_open->sale.setMedicalContribution(amount, identity) : refusal;
}

QList<qint32> Till::saleAcquirers() const
{
    QList<qint32> acquirers;
    const auto &receipt = m_open ? m_open : m_last;
    if (!receipt)
        return acquirers;
    for (const Payment &payment : receipt->sale.payments())
        if (payment.kind == PaymentKind::Card && !acquirers.contains(payment.acquirer))
            acquirers << payment.acquirer;
    return acquirers;
}

// Most who ask want to know of the one that was closed just now, or of the one that is open.
std::optional<SaleTotals> Till::receipt(const ReceiptRef &ref) const
{
    if (m_last && m_last->ref == ref)
        return m_last->sale.totals();
    return ref == reference() ? std::nullopt : m_journal->find(ref);
}

Refusal Till::mayReport() const
{
    if (m_open)
        return SaleStillOpen;
    return hasPaper() ? NotRefused : PaperOut;
}

Refusal Till::printX()
{
    if (const Refusal refusal = mayReport())
        return refusal;
    print(xReportPrint({z(), m_clock(), m_day, m_journal->grandTotal()}, m_serial));
    return NotRefused;
}

Refusal Till::printZ()
{
    if (const Refusal refusal = mayReport())
        return refusal;
    if (z() == std::numeric_limits<qint32>::max())
        return ZNumbersUsedUp;
    const ZReport report{z(), m_clock(), m_day, m_journal->grandTotal() + m_day.total};
    if (!m_journal->close(report))
        return JournalUnwritable;
    // The next report has receipts when its number was in use before.
    m_day = m_journal->day(z()).value_or(DayTotals());
    print(zReportPrint(report, m_serial));
    return NotRefused;
}

Refusal Till::printSlip(const QList<QByteArray> &lines, bool withHead)
{
    if (const Refusal refusal = mayReport())
        return refusal;
    const QStringList text = slipText(lines, withHead);
    if (text.isEmpty())
        return SlipTooLong;
    print({"slip", z(), 0, [text] { return text; }});
    return NotRefused;
}

void Till::print(const Print &print)
{
    if (!hasPaper())
        return; // of a sale that is cancelled
    // A print that was begun is finished: the printer notices the end of the roll between two prints.
    if (m_papersLeft > 0)
        --m_papersLeft;
    if (m_output)
        m_output(print);
}

void Till::restart()
{
    if (m_open && m_journal->cancel(m_open->ref, m_clock()))
        ++m_day.cancelled;
    m_last.reset();
    leaveSale();
}

bool Till::goTo(Screen screen)
{
    if (screen == Screen::Sale && !m_open && !hasPaper())
        return false;
    QList<qint32> keys;
    if (m_open) {
        clearError();
        show(Screen::Sale);
        if (screen == Screen::Sale)
            return true;
        keys << 'C' << '1';
    }
    if (m_screen == Screen::Menu)
        keys << 'C';
    if (screen != Screen::Idle)
        keys << (screen == Screen::Menu ? 'M' : 'E');
    return press(keys) == NotRefused;
}

bool Till::setZ(qint32 z)
{
    const auto day = m_journal->day(z);
    if (m_open || z < 1 || !day || !m_journal->setZ(z))
        return false;
    m_day = *day;
    return true;
}

} // namespace Simulator
