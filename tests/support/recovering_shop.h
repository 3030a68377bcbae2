#pragma once

extern "C" {
#include "examples/c/recovery.h"
}
#include "tests/support/simulated_register.h"

#include <QTemporaryDir>

#include <memory>

/** An application that recovers as examples/c does, at the real velno-register. */
namespace TestSupport {

using namespace Qt::StringLiterals;

/** A row of the journal. */
struct Entry
{
    int z = 0;
    int number = 0;
    int status = 0; ///< 1 closed, 2 cancelled
    QList<qint64> totals;
    QStringList lines; ///< a deleted one begins with a minus

    bool operator==(const Entry &) const = default;
};

/** A register that is disturbed once, and an application that notes what it opens and what it has sold. */
class Shop
{
public:
    Shop();
    ~Shop();
    Q_DISABLE_COPY_MOVE(Shop)

    bool opens() { return reg.isReady() && connectRegister(&m_place) == 0; }

    /** Sells something, so that there is a receipt to ask counter-questions with; it is not counted below. */
    bool opensWithAKnownReceipt();

    /** Goes off at this command until the application has noticed; then another one does, if any. */
    bool disturb(const QString &fault, const QByteArray &noticed = connecting, const QString &next = {});

    static constexpr char connecting[] = "The connection is lost; connecting again.";
    static constexpr char pairingAnew[] = "The register has lost its keys; pairing anew.";
    static constexpr char enteredAgain[] = "The register has cancelled the sale; it is entered again.";

    Register &place() { return m_place; }
    int timesNoticed() const { return m_noticed; }
    int pairings() const;

    /** Ends the register and reads what is on record. */
    void close();

    QList<Entry> closed() const { return withStatus(1); }
    QList<Entry> cancelled() const { return withStatus(2); }

private:
    QTemporaryDir m_folder;
    quint16 m_port;
    Register m_place = {};
    QByteArray m_awaited;
    int m_noticed = 0;
    QString m_next;
    bool m_isKnown = false;

    QString journal() const { return m_folder.filePath(u"journal"_s); }
    void hear(const QByteArray &text);
    int take(SaleStatus status, const VelnoReceiptRef &ref);
    QList<Entry> withStatus(int status) const;

public:
    SimulatedRegister reg;
    std::unique_ptr<Sale> sale;
    QStringList noted; ///< as they would stand in the books
    bool takesNotes = true;
    int paidAgain = 0;     ///< how often the application was told to take the payments again
    QList<Entry> receipts; ///< on record, after close()
    QList<int> reports;    ///< receipts in each Z report, likewise
};

VelnoSaleItem item(const char *name, long long price, int quantity = 1000, signed char section = 1);

/** 1250 is the price of "Ekmek", any other that of "Ayran". */
template <int price>
int addOne(Sale *sale)
{
    const VelnoSaleItem one = item(price == 1250 ? "Ekmek" : "Ayran", price);
    return saleAddItem(sale, &one);
}

/** By value: nothing may refer to a number inside of a packed structure. */
qint64 told(const VelnoEcrSaleTotals &totals, int index);

} // namespace TestSupport
