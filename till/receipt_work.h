// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order_work.h"
#include "till/position.h"

namespace Velno::Receipts {

/**
 * Enters one receipt on the register, once. It is one loop: as long as it is not certain how far the receipt
 * has come, the register is looked at; then the next step is sent. docs/recovery.md says why.
 */
class ReceiptWork final : public OrderWork
{
public:
    /** @param receipt  the order's content */
    ReceiptWork(Workplace &place, RegisterAccess &reg, Order &order, const Receipt &receipt,
                bool mayHaveStarted);

    WorkEnd run() override;

private:
    /** What has been sent, and is not certain yet. */
    enum class Step { None, Lines, Medical, Payment, End, Cancel };
    struct Sent
    {
        Step step = Step::None;
        Position before;
        int lines = 0; ///< how many
        Reply reply;
        int connection = 0;
    };

    End takeAnswer();
    End answerWithoutReceipt();
    bool isWordFinal() const;
    bool isSettledByWord() const { return m_saidPaid || m_isDropped; }
    End settleByWord();
    End goOn();
    bool isLeaving() const { return m_isDropped || m_isRestarting || m_refusal.has_value(); }

    // The start
    End open();
    End openWith(const View &view);
    End start();
    End adopt(const View &view);
    End clearEmptySale();
    End waitForStart(const Reply &reply);

    // Steps on the open sale
    End step();
    End enterLines();
    End enterMedical();
    End judgeTotals();
    End pay();
    End endSale();
    End cancelSale();
    End notePayment(Tender tender);
    End sent(Step step, int code, int lines = 0);

    // What became of them
    End lookAtIt();
    End concludeOpen(const View &view);
    End useUpWord();
    bool isExpected(const Position &now) const;
    End concludeLeaving();
    End concludeStep(const Position &now);
    End concludeRefusal();
    bool isCardUnderWay() const;
    End refuseForGood(const Reply &reply, const QString &why);
    End concludeClosed(const VelnoEcrSaleTotals &totals);
    End concludeCancelled(Fate fate);
    End concludeNo();
    End concludeUnproven();
    End closeByWord();
    void forgetSale();
    void printSlip();
    End askAboutDoubts();
    bool isNoFinal(const Attempt &doubt) const;
    End settleUnsold(const VelnoReceiptRef &justAsked = {0, 0});
    End askAboutOwnDoubts(const VelnoReceiptRef &justAsked);
    End doubtIsClosed(const Attempt &doubt, const VelnoEcrSaleTotals &totals);
    Attempt attempt(Fate fate) const;
    qint64 cashTaken() const;

    Receipt m_receipt;
    bool m_startSent = false;
    bool m_mayBeEnded;        ///< with this reference, its end may have been sent
    bool m_sawOpen = false;   ///< with this reference, since this work began
    bool m_isCertain = false; ///< m_position is how it stands
    bool m_medicalDone = false;
    bool m_totalsJudged = false;
    bool m_mayBePaid = false; ///< with this reference, something that must not be entered again
    bool m_isDropped = false;
    bool m_isRestarting = false;    ///< what stands on the open sale is not wanted
    bool m_wordGiven = false;       ///< a person, who was asked, has said that it was not closed
    bool m_saidPaid = false;        ///< a person has said that it was done
    std::optional<Reply> m_refusal; ///< for which the sale is being cancelled
    QString m_refusalText;
    Position m_position;
    VelnoEcrSaleTotals m_totals = {};
    Sent m_sent;
    int m_refusals = 0; ///< of the same step in a row
    int m_losses = 0;   ///< steps of which the answer was lost
    int m_openings = 0;
    Patience m_patience; ///< with a register that does not take a step now, or is late to tell
};

} // namespace Velno::Receipts
