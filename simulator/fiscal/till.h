// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/journal_file.h"
#include "simulator/fiscal/journal_in_memory.h"
#include "simulator/fiscal/keyboard.h"
#include "simulator/fiscal/print.h"

#include <functional>

namespace Simulator {

/**
 * The selling half of the register: keyboard, open sale, printer, journal, reports. Says why it does not do
 * something; whatever it refuses leaves everything as it was.
 */
class Till
{
public:
    using Clock = std::function<qint32()>; ///< seconds since 1970
    using Output = std::function<void(const Print &)>;

    /** @param serial  the register's, 12 characters */
    Till(const QByteArray &serial, Clock clock);

    /** What the printer prints goes here; without it, nowhere. */
    void setOutput(Output output) { m_output = std::move(output); }

    /** To be called first. @param journalFile  empty: kept in memory. @return an empty text, or what is wrong
     * with it */
    QString open(const QString &journalFile);
    QString journalWarning() const { return m_file ? m_file->warning() : QString(); }

    /** Its journal while that is no file. */
    JournalInMemory &journalInMemory() { return m_memory; }
    const JournalInMemory &journalInMemory() const { return m_memory; }

    // The keyboard ---------------------------------------------------------------------------------------

    Screen screen() const { return m_screen; }

    /**
     * Presses the keys one after the other, up to the first that is refused. In a sale its error stays on the
     * display: until somebody is told, no keys are taken but those that begin with C, so that what was meant
     * to come behind a payment does not close the sale without it.
     */
    Refusal press(const QList<qint32> &keys);

    /** Keys that are not pressed, for this reason: what was typed is forgotten as behind a wrong key. */
    Refusal refuseKeys(Refusal refusal);

    /** The error of the last keys, until others are pressed or the sale ends, and what stands. */
    qint32 error() const { return errorOf(m_keysRefused) | standingError(); }

    /** The same for somebody who asks: it is not on the display any more. */
    qint32 tellError();

    /** PaymentBegun once something has been paid: it is no failure, and no key changes it. */
    qint32 standingError() const;

    /** What the display says beside the state: 1 it takes input, 2 something is typed or asked. */
    qint32 display() const;

    // The open sale --------------------------------------------------------------------------------------

    bool saleIsOpen() const { return m_open.has_value(); }
    SaleTotals totals() const { return m_open ? m_open->sale.totals() : SaleTotals(); }

    /** Of the open sale; empty without one. */
    ReceiptRef reference() const { return m_open ? m_open->ref : ReceiptRef(); }

    Refusal add(const QList<ItemRequest> &items);
    Refusal removeLast();
    Refusal remove(qint32 index);
    Refusal setMedicalContribution(qint64 amount, qint64 identity);

    /** Takes what is left to pay and closes the receipt, which must have been opened with invoice. */
    Refusal closeWithInvoice(const Invoice &invoice, PaymentKind rest);

    /** The acquirers of the open sale's card payments, or without one of the last receipt's; each once. */
    QList<qint32> saleAcquirers() const;

    // What is on record ----------------------------------------------------------------------------------

    std::optional<SaleTotals> receipt(const ReceiptRef &ref) const;
    const DayTotals &day() const { return m_day; }
    qint32 z() const { return m_journal->z(); }
    qint64 lastZ() const { return m_journal->lastZ(); }

    // The printer ----------------------------------------------------------------------------------------

    Refusal printX();
    Refusal printZ();
    Refusal printSlip(const QList<QByteArray> &lines, bool withHead);
    bool hasPaper() const { return m_papersLeft != 0; }

    // The operator ---------------------------------------------------------------------------------------

    /**
     * Presses the keys that lead to this screen: Idle, Menu or Sale. An open sale is cancelled for the first
     * two and stays for the last. @return false: the keys were refused
     */
    bool goTo(Screen screen);

    /** As after a cut of the power: what is not on record is gone. */
    void restart();

    /** Whether no receipt and no report is on record. */
    bool isNew() const { return m_journal->isNew(); }

    /** Unlimited paper, none, or paper for so many prints. */
    void setPaper(int prints) { m_papersLeft = prints; }
    static constexpr int endlessPaper = -1;

    /** Of sales that are opened from now on; 0 for none. */
    void setSaleLimit(qint64 kurus) { m_saleLimit = kurus; }
    qint64 saleLimit() const { return m_saleLimit; }

    /** @return false while a sale is open, for a number below 1 or of a report that has been made */
    bool setZ(qint32 z);
    bool setLastZ(qint64 time) { return m_journal->setLastZ(time); }

private:
    Refusal pressOne(qint32 key);
    Refusal perform(KeyAction action, qint32 key);
    Refusal show(Screen screen);
    Refusal begin(bool withInvoice);
    Refusal type(qint32 key);
    Refusal pay(PaymentKind kind);
    Refusal closeByKey(PaymentKind rest);
    Refusal close(PaymentKind rest, const std::optional<Invoice> &invoice);
    Refusal cancel();
    Refusal mayWork() const;   ///< on the open sale
    Refusal mayReport() const; ///< between sales
    void print(const Print &print);
    void leaveSale();
    void clearError();

    QByteArray m_serial;
    Clock m_clock;
    Output m_output;
    JournalInMemory m_memory;
    std::unique_ptr<JournalFile> m_file;
    Journal *m_journal = &m_memory; ///< the one in use
    DayTotals m_day;
    std::optional<Receipt> m_open;
    std::optional<Receipt> m_last; ///< closed last, since the power has come
    Screen m_screen = Screen::Idle;
    TypedAmount m_typed;
    Refusal m_keysRefused = NotRefused;
    bool m_errorIsDisplayed = false;
    qint64 m_saleLimit = 0;
    int m_papersLeft = endlessPaper;
};

} // namespace Simulator
