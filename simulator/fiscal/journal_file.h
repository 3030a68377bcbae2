// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/journal.h"

#include <QSqlDatabase>

#include <memory>

namespace Simulator {

/**
 * A journal in a file, an SQLite database. Each change is one transaction, so that a program that is killed
 * finds everything before the last change, and the last one whole or not at all. One program at a time uses a
 * file. Lives on one thread, and needs a QCoreApplication for Qt to find its driver.
 */
class JournalFile final : public Journal
{
public:
    JournalFile();
    ~JournalFile() override;

    /**
     * To be called first. Opens the file, or makes it, for its owner alone; receipts that were open are
     * cancelled then. One whose counters or day cannot be read is not used: a register that took them for 0
     * would make a wrong report.
     *
     * @return an empty text, or what was wrong; nothing else may be called then
     */
    QString open(const QString &file);

    /** What the operator should know of the file that was opened; usually empty. */
    const QString &warning() const { return m_warning; }

    bool isNew() const override;
    std::optional<DayTotals> day(qint32 z) const override;
    ReceiptRef begin(bool withInvoice, qint64 time) override;
    bool close(const Receipt &receipt) override;
    bool cancel(const ReceiptRef &ref, qint64 time) override;
    bool close(const ZReport &report) override;
    bool setZ(qint32 z) override;
    bool setLastZ(qint64 time) override;
    std::optional<SaleTotals> find(const ReceiptRef &ref) const override;

private:
    struct Statements;

    QString connect(const QString &file);
    void tighten(const QString &file);
    QString resume();
    QString set(const QStringList &statements);
    QString execute(const QStringList &statements);
    bool readCounters();
    bool isMade(qint32 z) const;
    bool readTaxes(qint32 z, TaxGroups &groups) const;
    bool writeCounter(const QString &name, qint64 value);
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
    std::unique_ptr<Statements> m_statements;
};

} // namespace Simulator
