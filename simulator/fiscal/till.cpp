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
    QString problem = m_journal.open(journalFile);
    if (problem.isEmpty())
        m_day = m_journal.day(z()).value_or(DayTotals());
    return problem;
}

void Till::press(const QList<qint32> &keys)
{
    for (const qint32 key : keys) {
        const RegisterError error = pressOne(key);
        if (error == NoError)
            continue;
        m_keyError = error;
        m_typed.clear();
        if (m_open)
            m_screen = Screen::Sale;
        return;
    }
}

RegisterError Till::pressOne(qint32 key)
{
    const auto action = actionOf(m_screen, key);
    return action ? perform(*action, key) : WrongKey;
}

RegisterError Till::perform(KeyAction action, qint32 key)
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
    return WrongKey;
}

RegisterError Till::show(Screen screen)
{
    m_screen = screen;
    m_typed.clear();
    return NoError;
}

RegisterError Till::begin(bool withInvoice)
{
    if (!hasPaper())
        return NoPaper;
    const qint64 now = m_clock();
    const ReceiptRef ref = m_journal.begin(withInvoice, now);
    if (ref == ReceiptRef())
        return NoJournal;
    m_open = Receipt{ref, Sale(m_saleLimit), now, 0, withInvoice, {}};
    return show(Screen::Sale);
}

RegisterError Till::type(qint32 key)
{
    if (!m_typed.type(key))
        return WrongKey;
    m_screen = Screen::Amount;
    return NoError;
}

RegisterError Till::pay(PaymentKind kind)
{
    if (const RegisterError error = mayWork())
        return error;
    Sale &sale = m_open->sale;
    const RegisterError error = sale.pay(kind, m_typed.value(), nextAcquirer(sale));
    return error == NoError ? show(Screen::Sale) : error;
}

RegisterError Till::closeByKey(PaymentKind rest)
{
    // What was begun as an invoice needs one: its customer stands on it.
    return m_open->withInvoice ? WrongKey : close(rest, {});
}

RegisterError Till::closeWithInvoice(const Invoice &invoice, PaymentKind rest)
{
    if (!m_open || !m_open->withInvoice)
        return NothingThere;
    return close(rest, invoice);
}

RegisterError Till::close(PaymentKind rest, const std::optional<Invoice> &invoice)
{
    if (const RegisterError error = mayWork())
        return error;
    Receipt receipt = *m_open;
    if (const RegisterError error = receipt.sale.settle(rest, nextAcquirer(receipt.sale)))
        return error;
    receipt.closed = m_clock();
    receipt.invoice = invoice;
    if (!m_journal.close(receipt))
        return NoJournal;
    m_day.add(receipt);
    m_lastPayments = receipt.sale.payments();
    leaveSale();
    print(receiptPrint(receipt, m_serial));
    return NoError;
}

RegisterError Till::cancel()
{
    Receipt receipt = *m_open;
    receipt.closed = m_clock();
    if (!m_journal.cancel(receipt.ref, receipt.closed))
        return NoJournal;
    ++m_day.cancelled;
    leaveSale();
    print(cancelledPrint(receipt, m_serial));
    return NoError;
}

void Till::leaveSale()
{
    m_open.reset();
    m_keyError = NoError;
    show(Screen::Idle);
}

qint32 Till::error() const
{
    const bool begun = m_open && !m_open->sale.payments().isEmpty();
    return m_keyError | (begun ? PaymentBegun : NoError);
}

qint32 Till::takeError()
{
    const qint32 taken = error();
    m_keyError = NoError;
    return taken;
}

qint32 Till::display() const
{
    if (!hasPaper())
        return 0;
    return m_screen == Screen::Amount || m_screen == Screen::CancelQuestion ? 2 : 1;
}

RegisterError Till::mayWork() const
{
    if (!m_open)
        return NothingThere;
    return hasPaper() ? NoError : NoPaper;
}

RegisterError Till::add(const QList<ItemRequest> &items)
{
    const RegisterError error = mayWork();
    return error == NoError ? m_open->sale.add(items) : error;
}

RegisterError Till::removeLast()
{
    const RegisterError error = mayWork();
    return error == NoError ? m_open->sale.removeLast() : error;
}

RegisterError Till::remove(qint32 index)
{
    const RegisterError error = mayWork();
    return error == NoError ? m_open->sale.remove(index) : error;
}

RegisterError Till::setMedicalContribution(qint64 amount, qint64 identity)
{
    const RegisterError error = mayWork();
    return error == NoError ? m_open->sale.setMedicalContribution(amount, identity) : error;
}

QList<qint32> Till::saleAcquirers() const
{
    QList<qint32> acquirers;
    for (const Payment &payment : m_open ? m_open->sale.payments() : m_lastPayments)
        if (payment.kind == PaymentKind::Card && !acquirers.contains(payment.acquirer))
            acquirers << payment.acquirer;
    return acquirers;
}

RegisterError Till::mayReport() const
{
    if (m_open)
        return WrongKey;
    return hasPaper() ? NoError : NoPaper;
}

RegisterError Till::printX()
{
    if (const RegisterError error = mayReport())
        return error;
    print(xReportPrint(m_day, z(), m_clock(), m_journal.grandTotal(), m_serial));
    return NoError;
}

RegisterError Till::printZ()
{
    if (const RegisterError error = mayReport())
        return error;
    if (z() == std::numeric_limits<qint32>::max())
        return OverLimit;
    const ZReport report{z(), m_clock(), m_day, m_journal.grandTotal() + m_day.total};
    if (!m_journal.close(report))
        return NoJournal;
    // The next report has receipts when its number was in use before.
    m_day = m_journal.day(z()).value_or(DayTotals());
    print(zReportPrint(report, m_serial));
    return NoError;
}

RegisterError Till::printSlip(const QList<QByteArray> &lines, bool withHead)
{
    if (const RegisterError error = mayReport())
        return error;
    const QStringList text = slipText(lines, withHead);
    if (text.isEmpty())
        return OverLimit;
    print({"slip", z(), 0, text});
    return NoError;
}

void Till::print(const Print &print)
{
    if (!hasPaper())
        return; // of a sale that is cancelled
    // What was begun with paper is finished with it: the printer notices the end of the roll between two
    // prints.
    if (m_papersLeft > 0)
        --m_papersLeft;
    if (m_output)
        m_output(print);
}

void Till::restart()
{
    if (m_open && m_journal.cancel(m_open->ref, m_clock()))
        ++m_day.cancelled;
    m_lastPayments.clear();
    leaveSale();
}

bool Till::goTo(Screen screen)
{
    if (screen == Screen::Sale && !m_open && !hasPaper())
        return false;
    if (m_open) {
        m_keyError = NoError;
        show(Screen::Sale);
        if (screen == Screen::Sale)
            return true;
        press(QList<qint32>{'C', '1'});
    }
    if (m_screen == Screen::Menu)
        press(QList<qint32>{'C'});
    if (screen != Screen::Idle)
        press(QList<qint32>{screen == Screen::Menu ? 'M' : 'E'});
    return takeError() == NoError;
}

bool Till::setZ(qint32 z)
{
    const auto day = m_journal.day(z);
    if (m_open || z < 1 || !day || !m_journal.setZ(z))
        return false;
    m_day = *day;
    return true;
}

} // namespace Simulator
