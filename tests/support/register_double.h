#pragma once

#include <QList>
#include <QRandomGenerator>
#include <QStringList>

#include <ctime>
#include <functional>

/** How often a command meets what, in thousandths, and for how many milliseconds at most. */
struct Hindrances
{
    int lostAnswers = 0;  ///< done, and the connection is lost in place of the answer
    int lostCommands = 0; ///< not done, and the connection is lost
    int powerCuts = 0;    ///< done, and the open sale is cancelled behind it
    int unreadable = 0;   ///< done, and the answer is not authentic
    int lostKeys = 0;     ///< no command is obeyed any more before a new pairing
    int refusals = 0;     ///< refused in passing
    int outages = 0;      ///< from here on no receipt is told of
    int outageLength = 0;
    int recordDelay = 0; ///< so long a receipt is not told of once it has been closed
};

/**
 * A register in this process under the names of velnoext.h, in place of the library, with a clock of its own
 * that waiting moves on: thousands of sales take a second. What goes wrong is drawn from a seed. One at a
 * time.
 */
class RegisterDouble
{
public:
    enum class Status { Open, Closed, Cancelled };

    struct Receipt
    {
        Status status = Status::Open;
        QStringList lines;
        qint64 contribution = 0;
        qint64 cash = 0;
        qint64 card = 0;
        qint64 closedAt = 0;

        qint64 total() const { return priceOfAll * lines.size() + contribution; }
    };

    static constexpr qint64 priceOfAll = 1000; ///< of each line

    RegisterDouble(quint32 seed, const Hindrances &hindrances);
    ~RegisterDouble();
    Q_DISABLE_COPY_MOVE(RegisterDouble)

    static RegisterDouble &current();

    int connect();
    void pairAnew();

    /** A command that is answered. @param work  does it; @return its code */
    int command(const std::function<int()> &work);
    /** One that a passing refusal can meet. */
    int refusable(const std::function<int()> &work);
    /** Keys that nobody answers for. */
    int keys(const std::function<void()> &work);
    int receiptData(int number, Receipt &told);

    bool chance(int thousandths) { return m_random.bounded(1000) < thousandths; }
    void pass(qint64 milliseconds) { m_now += milliseconds; }

    Receipt *open();
    void begin() { receipts << Receipt(); }
    void close(bool byCard);

    QRandomGenerator &random() { return m_random; }

    QList<Receipt> receipts; ///< numbered from 1 on
    int pairings = 0;        ///< behind the first
    int cuts = 0;            ///< of the power, under an open sale
    int misled = 0;          ///< closed receipts that were refused

private:
    bool isRefused(const Receipt &receipt);

    QRandomGenerator m_random;
    Hindrances m_hindrances;
    qint64 m_now = 0;
    qint64 m_outageUntil = 0;
    bool m_isConnected = false;
    bool m_hasKeys = true;
};

extern "C" int momentPasses(const struct timespec *length, struct timespec *rest);
