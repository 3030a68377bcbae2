#include "tests/support/register_double.h"

#include "ExtDevice/velnoext/velnoext.h"

namespace {

RegisterDouble *theCurrent = nullptr;

constexpr int lost = 2;
constexpr int wrongValue = 4;
constexpr int wrongState = 6;
constexpr int refused = 8;
constexpr int notAuthentic = 11;
constexpr int z = 1;

VelnoEcrSaleTotals totalsOf(const RegisterDouble::Receipt &receipt)
{
    const qint64 change = qMax<qint64>(0, receipt.cash + receipt.card - receipt.total());
    return {{receipt.total(), 0, receipt.cash, receipt.card, change}, int(receipt.lines.size())};
}

/** Does something to the items of the open sale, which stay as they are once something has been paid. */
int changeItems(VelnoEcrSaleTotals *totals, const std::function<bool(QStringList &)> &change)
{
    RegisterDouble &reg = RegisterDouble::current();
    return reg.refusable([&] {
        RegisterDouble::Receipt *const open = reg.open();
        if (!open)
            return wrongState;
        if (open->cash + open->card > 0 || !change(open->lines))
            return refused;
        *totals = totalsOf(*open);
        return 0;
    });
}

int askForOpenSale()
{
    int state = 0;
    const int code = velnoext_ecr_state(0, &state);
    return code != 0 ? code : state == VelnoEcrState_SaleOpen ? 0 : wrongState;
}

int startSale()
{
    RegisterDouble &reg = RegisterDouble::current();
    int state = 0;
    const int code = velnoext_ecr_state(0, &state);
    if (code != 0)
        return code;
    if (state == VelnoEcrState_SaleOpen)
        return wrongState;
    return reg.refusable([&reg] {
        reg.begin();
        return 0;
    });
}

} // namespace

RegisterDouble::RegisterDouble(quint32 seed, const Hindrances &hindrances)
    : m_random(seed)
    , m_hindrances(hindrances)
{
    theCurrent = this;
}

RegisterDouble::~RegisterDouble()
{
    theCurrent = nullptr;
}

RegisterDouble &RegisterDouble::current()
{
    Q_ASSERT(theCurrent);
    return *theCurrent;
}

int RegisterDouble::connect()
{
    pass(m_random.bounded(100, 1000));
    m_isConnected = true;
    return 0;
}

void RegisterDouble::pairAnew()
{
    m_isConnected = false;
    m_hasKeys = true;
    ++pairings;
}

RegisterDouble::Receipt *RegisterDouble::open()
{
    return !receipts.isEmpty() && receipts.last().status == Status::Open ? &receipts.last() : nullptr;
}

int RegisterDouble::command(const std::function<int()> &work)
{
    pass(m_random.bounded(1, 20));
    m_hasKeys = m_hasKeys && !chance(m_hindrances.lostKeys);
    if (!m_hasKeys || chance(m_hindrances.lostCommands))
        m_isConnected = false;
    if (!m_isConnected)
        return lost;
    if (chance(m_hindrances.outages))
        m_outageUntil = m_now + m_random.bounded(m_hindrances.outageLength);
    const int code = work();
    if (chance(m_hindrances.powerCuts)) {
        m_isConnected = false;
        if (Receipt *const sale = open()) {
            sale->status = Status::Cancelled;
            ++cuts;
        }
    } else if (chance(m_hindrances.lostAnswers)) {
        m_isConnected = false;
    }
    if (!m_isConnected)
        return lost;
    return chance(m_hindrances.unreadable) ? notAuthentic : code;
}

int RegisterDouble::refusable(const std::function<int()> &work)
{
    return command([&] { return chance(m_hindrances.refusals) ? refused : work(); });
}

int RegisterDouble::keys(const std::function<void()> &work)
{
    const bool wasConnected = m_isConnected;
    command([&] {
        if (open() && !chance(m_hindrances.refusals))
            work();
        return 0;
    });
    return wasConnected ? 0 : lost;
}

bool RegisterDouble::isRefused(const Receipt &receipt)
{
    return chance(m_hindrances.refusals) || m_now < m_outageUntil ||
           m_now < receipt.closedAt + m_hindrances.recordDelay;
}

int RegisterDouble::receiptData(int number, Receipt &told)
{
    return command([&] {
        if (number > receipts.size() || receipts.at(number - 1).status != Status::Closed)
            return refused;
        const Receipt &receipt = receipts.at(number - 1);
        if (isRefused(receipt)) {
            ++misled;
            return refused;
        }
        told = receipt;
        return 0;
    });
}

void RegisterDouble::close(bool byCard)
{
    Receipt *const sale = open();
    const qint64 rest = qMax<qint64>(0, sale->total() - sale->cash - sale->card);
    (byCard ? sale->card : sale->cash) += rest;
    sale->status = Status::Closed;
    sale->closedAt = m_now;
}

int momentPasses(const struct timespec *length, struct timespec *)
{
    RegisterDouble::current().pass(length->tv_sec * 1000 + length->tv_nsec / 1'000'000);
    return 0;
}

// What examples/c calls -------------------------------------------------------------------------------------

int velnoext_initialize(unsigned int, const char *, const char *, unsigned short, unsigned int)
{
    return RegisterDouble::current().connect();
}

int velnoext_forget_device(const char *)
{
    RegisterDouble::current().pairAnew();
    return 0;
}

int velnoext_cause()
{
    return 0;
}

int velnoext_login(unsigned int)
{
    return RegisterDouble::current().command([] { return 0; });
}

int velnoext_ecr_state(unsigned int, int *state)
{
    RegisterDouble &reg = RegisterDouble::current();
    return reg.command([&] {
        *state = reg.open() ? VelnoEcrState_SaleOpen : VelnoEcrState_Idle;
        return 0;
    });
}

int velnoext_start_sale(unsigned int)
{
    return startSale();
}

int velnoext_start_sale_with_invoice(unsigned int)
{
    return startSale();
}

int velnoext_sale_state(unsigned int, int *first, VelnoEcrSaleTotals *totals, VelnoReceiptRef *receipt)
{
    RegisterDouble &reg = RegisterDouble::current();
    return reg.refusable([&] {
        if (!reg.open())
            return wrongState;
        *first = 1;
        *totals = totalsOf(*reg.open());
        *receipt = {z, int(reg.receipts.size())};
        return 0;
    });
}

int velnoext_add_sale_item(unsigned int, VelnoSaleItem *item, VelnoEcrSaleTotals *totals)
{
    return changeItems(totals, [item](QStringList &lines) {
        lines << QString::fromLatin1(item->name);
        return true;
    });
}

int velnoext_add_multiple_sale_items(unsigned int, VelnoSaleItemList *list, VelnoEcrSaleTotals *totals)
{
    return changeItems(totals, [list](QStringList &lines) {
        for (int i = 0; i < list->count; ++i)
            lines << QString::fromLatin1(list->items[i].name);
        return true;
    });
}

int velnoext_delete_last_sale_item(unsigned int, VelnoEcrSaleTotals *totals)
{
    return changeItems(totals, [](QStringList &lines) {
        const bool any = !lines.isEmpty();
        if (any)
            lines.removeLast();
        return any;
    });
}

int velnoext_delete_sale_item(unsigned int, int, VelnoEcrSaleTotals *)
{
    return wrongValue; // nobody here deletes by number
}

int velnoext_add_medical_contribution(unsigned int, long long amount, unsigned long long)
{
    RegisterDouble &reg = RegisterDouble::current();
    return reg.refusable([&] {
        if (!reg.open())
            return wrongState;
        reg.open()->contribution = amount;
        return 0;
    });
}

int velnoext_add_payment(int type, long long amount)
{
    RegisterDouble &reg = RegisterDouble::current();
    const int code = askForOpenSale();
    return code != 0 ? code : reg.keys([&] {
        RegisterDouble::Receipt *const sale = reg.open();
        const qint64 rest = sale->total() - sale->cash - sale->card;
        if (type == 0)
            sale->cash += amount;
        else if (amount <= rest)
            sale->card += amount;
    });
}

int velnoext_end_sale(int type)
{
    RegisterDouble &reg = RegisterDouble::current();
    const int code = askForOpenSale();
    return code != 0 ? code : reg.keys([&] { reg.close(type != 0); });
}

int velnoext_end_sale_with_invoice(VelnoInvoice *)
{
    RegisterDouble &reg = RegisterDouble::current();
    return reg.refusable([&] {
        if (!reg.open())
            return refused;
        reg.close(false);
        return 0;
    });
}

int velnoext_cancel_sale(unsigned int)
{
    RegisterDouble &reg = RegisterDouble::current();
    const int code = askForOpenSale();
    return code != 0 ? code : reg.refusable([&] {
        if (reg.open())
            reg.open()->status = RegisterDouble::Status::Cancelled;
        return 0;
    });
}

int velnoext_receipt_data(unsigned int, VelnoReceiptRef *receipt, VelnoEcrSaleTotals *totals)
{
    RegisterDouble::Receipt told;
    const int code = RegisterDouble::current().receiptData(receipt->second, told);
    if (code == 0)
        *totals = totalsOf(told);
    return code;
}

int velnoext_current_z(unsigned int, int *number)
{
    *number = z;
    return 0;
}

int velnoext_z_report()
{
    return refused; // nobody here ends the day
}
