// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/day_totals.h"

#include <QSqlDatabase>

#include <memory>

namespace Simulator {

/**
 * What the register must not forget, in an SQLite database: receipts with their lines and payments, Z
 * reports, counters. Each change is one transaction, so that a program that is killed finds everything before
 * the last change, and the last one whole or not at all. One program at a time uses a file. Lives on one
 * thread, and needs a QCoreApplication for Qt to find its driver.
 */
class Journal
{
public:
    Journal();
    ~Journal();
    Q_DISABLE_COPY_MOVE(Journal)

    /**
     * Opens the file, or makes it, for its owner alone; receipts that were open are cancelled then. One whose
     * counters or day cannot be read is not used: a register that took them for 0 would make a wrong report.
     *
     * @param file  empty: kept in memory
     * @return an empty text, or what was wrong
     */
    QString open(const QString &file);

    /**
     * A new journal in the same database as another one, which is open: where many registers are in one
     * process, a database of its own for each would be most of what they take. For what is kept in memory.
     */
    void openBeside(Journal &other);

    /** What the operator should know of the file that was opened; usually empty. */
    const QString &warning() const { return m_warning; }

    /** The name of its connection in QSqlDatabase, for whoever checks what is on record. */
    const QString &connection() const { return m_connection; }

    /** Whether no receipt and no report is on record. */
    bool isNew() const;

    /** The Z report being collected; 1 in a new journal. */
    qint32 z() const { return m_z; }
    qint64 lastZ() const { return m_lastZ; } ///< when the last Z report was made; 0: never
    qint64 grandTotal() const { return m_grandTotal; }

    /** The receipts of a Z report, from what is on record; nothing when that is damaged. */
    std::optional<DayTotals> day(qint32 z) const;

    // Each of these is on record when it returns true, and has changed nothing otherwise. ------------------

    /** Takes the next number for a sale; an empty reference on failure. */
    ReceiptRef begin(bool withInvoice, qint64 time);
    bool close(const Receipt &receipt);
    bool cancel(const ReceiptRef &ref, qint64 time);
    bool close(const ZReport &report); ///< and goes on with the next one that has not been made

    /** Goes on with another Z report, none that has been made; or says when the last one was made. */
    bool setZ(qint32 z);
    bool setLastZ(qint64 time);

    /** The totals of a closed receipt; nothing for one that is unknown, open or cancelled. */
    std::optional<SaleTotals> find(const ReceiptRef &ref) const;

private:
    struct Statements;

    qint64 key(qint32 z) const; ///< of a Z report in the database
    QString counterName(const char *name) const;
    QString connect(const QString &file);
    void tighten(const QString &file);
    QString resume();
    QString set(const QStringList &statements);
    QString execute(const QStringList &statements);
    bool readCounters();
    bool isMade(qint32 z) const;
    bool readTaxes(qint32 z, TaxGroups &groups) const;
    bool writeCounter(const char *name, qint64 value);
    bool writeReceipt(const Receipt &receipt);
    bool writeSums(const Receipt &receipt);
    bool writeLine(const ReceiptRef &ref, int index, const SaleLine &line);
    bool writePayment(const ReceiptRef &ref, int index, const Payment &payment);
    bool writeTax(const ReceiptRef &ref, int rate, const TaxGroup &group);
    bool writeReport(const ZReport &report, qint32 &next);
    template <typename Change>
    bool inTransaction(Change change);

    QString m_connection;
    QString m_warning;
    QSqlDatabase m_database;
    std::shared_ptr<Statements> m_statements;
    int m_shelf = 0; ///< which of the journals in the database this is
    qint32 m_z = 1;
    qint64 m_lastZ = 0;
    qint64 m_grandTotal = 0;
};

} // namespace Simulator
