// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/fiscal_model.h"

#include <QHash>

namespace Simulation {

/** A sale as the register knows it, whatever a till believes. */
struct SeenSale
{
    enum class End { Open, Closed, Cancelled };

    const Simulator::FiscalModel *model = nullptr; ///< at which register
    Simulator::ReceiptRef ref;
    QString key;                  ///< whose lines are on it; empty while there are none
    Simulator::SaleTotals totals; ///< as they were last
    End end = End::Open;
    int answers = 0;        ///< that a person had given about this key when it was begun
    bool mayBePaid = false; ///< as far as the till was told
    bool isTouched = false; ///< somebody has worked on it at the register itself
    bool isUnseen = false;  ///< and no sum tells the till of it
    bool isUntold = false;  ///< its register is late to tell that it is closed, and has not told it yet
    bool isGivenBack =
        false; ///< so that it was closed with what was not ordered, and a person has seen to that
};

/** What has really happened, seen at the register itself. */
class Truth
{
public:
    /** To be called whenever something may have changed at the register in use. @return the sale that it has
     * closed since; null for none */
    const SeenSale *look(const Simulator::FiscalModel &model);

    void noteLine(const QString &name); ///< a line of this name was sold on the open sale
    void notePayment();                 ///< the till begins one
    void noteTold();                    ///< the till is told how the open sale stands
    void noteLate();                    ///< of the sale that has just been closed the till is not told yet
    void noteReceiptTold(const Simulator::FiscalModel &model, const Simulator::ReceiptRef &ref);
    void noteHand();                   ///< somebody works on the open sale, at the register itself
    void noteUnseen();                 ///< and no sum tells the till of it
    void giveBack(const QString &key); ///< a person sees to what was closed so
    void noteAnswer(const QString &key) { ++m_answers[key]; }
    void notePrint(const Simulator::Print &print);

    const QList<SeenSale> &sales() const { return m_sales; }
    bool isOpen() const;                             ///< whether a sale is open now
    qsizetype timesClosed(const QString &key) const; ///< without what was given back
    const SeenSale *find(const Simulator::FiscalModel &model, const Simulator::ReceiptRef &ref) const;
    const SeenSale *justClosed() const;                                ///< the last one, when it is closed
    int slips(const QString &key) const { return m_slips.value(key); } ///< that were printed with its text
    int zReports() const { return m_zReports; }

private:
    QList<SeenSale> m_sales;
    QHash<QString, int> m_slips;
    QHash<QString, int> m_answers;
    int m_zReports = 0;
};

} // namespace Simulation
