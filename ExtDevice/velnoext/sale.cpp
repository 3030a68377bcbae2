// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/sale.h"

#include "ExtDevice/velnoext/command_exchange.h"
#include "ExtDevice/velnoext/identity_numbers.h"
#include "ExtDevice/velnoext/keyboard.h"
#include "ExtDevice/velnoext/queries.h"
#include "ExtDevice/velnoext/reasons.h"

#include <cmath>
#include <iterator>
#include <limits>
#include <span>

namespace Velno::Ext {

namespace {

constexpr int lowestPercentage = -100;
constexpr unsigned int highestType = 7;
constexpr size_t longestName = sizeof(VelnoSaleItem::name) - 1;

/** The detail of what is wrong with an item, or 0. Without a price its place and amount do not matter. */
int itemFault(const VelnoSaleItem &item)
{
    if (item.price != 0 && !isSection(item.section))
        return 0x406;
    if (item.percentage < lowestPercentage)
        return 0x407;
    // Without its sign a negative amount would fit into the largest totals.
    if (item.price != 0 && item.percentage == 0 &&
        (item.amount < 0 || quint64(item.amount) > lineTotal(item)))
        return 0x408;
    return unsigned(item.type) > highestType ? 0x409 : 0;
}

/** The items of a list whose count is good. */
std::span<const VelnoSaleItem> itemsOf(const VelnoSaleItemList &list)
{
    return std::span(list.items).first(list.count);
}

/** The detail of the first thing wrong with a list, or 0. */
int listFault(const VelnoSaleItemList &list)
{
    if (list.count < 1 || list.count > std::size(list.items))
        return 0x40A;
    for (const VelnoSaleItem &item : itemsOf(list)) {
        if (const int fault = item.price == 0 ? 0x405 : itemFault(item); fault != 0)
            return fault;
    }
    return 0;
}

QByteArray bytesOf(const VelnoSaleItem &item)
{
    return itemBytes(qint64(item.price), item.quantity, item.percentage, qint64(item.amount),
                     qint8(item.section), textOf(item.name, longestName), item.type);
}

/** Who asks for a step decides how its answer begins and what the register's own error means. */
enum class Step { Start, Contribution, Item };

/** What stands behind a "no", as far as it is there, tells why. @return 8 */
int readRefusal(ReplyReader &reader)
{
    Standing standing;
    reader >> standing.state >> standing.display;
    if (!reader.isComplete())
        return failedBy(Refused, VelnoCause_SaidNo);
    reader >> standing.error;
    return failedBy(Refused, causeOfRefusal(standing));
}

/** Reads the answer to a step of a sale, up to its totals. @return 0, 5, 6, 7 or 8 */
int readStep(ReplyReader &reader, Step step)
{
    bool accepted = true;
    if (step != Step::Start)
        reader >> accepted;
    if (!accepted)
        return readRefusal(reader);
    Standing standing;
    reader >> standing.state >> standing.display;
    if (reader.result() != Success)
        return ReplyUnreadable;
    if (standing.state != VelnoEcrState_SaleOpen)
        return failedBy(WrongState, causeOfState(standing.state));
    reader >> standing.error;
    if (reader.result() != Success)
        return ReplyUnreadable;
    if (!takesInput(standing.display))
        return failedBy(StepNotTaken, causeOfRefusal(standing));
    if (standing.error != 0)
        return failedBy(step == Step::Item ? Refused : StepNotTaken, causeOfError(standing.error));
    return Success;
}

/** Runs a step whose answer holds nothing behind the register's error. */
int runStep(unsigned int timeout, const QByteArray &request, Step step)
{
    QByteArray reply;
    if (const int result = runCommand(timeout, request, &reply); result != Success)
        return result;
    ReplyReader reader(reply);
    return readStep(reader, step);
}

/** Runs a step whose answer ends with the totals, which are written on success. */
int runItemStep(unsigned int timeout, const QByteArray &request, VelnoEcrSaleTotals *totals)
{
    QByteArray reply;
    if (const int result = runCommand(timeout, request, &reply); result != Success)
        return result;
    ReplyReader reader(reply);
    if (const int result = readStep(reader, Step::Item); result != Success)
        return result;
    return readTotals(reader, totals);
}

int startSale(unsigned int timeout, QVector<int> (*keysFrom)(int state))
{
    const PublicCall call;
    int state = -1;
    QVector<int> list;
    if (const int result = velnoext_ecr_state_impl(timeout, &state, &list, nullptr); result != Success)
        return result;
    if (!isIdle(state))
        return failedBy(WrongState, causeOfState(state));
    return runStep(timeout, changeStateRequest({state, 0, 0}, keysFrom(state), true), Step::Start);
}

/** Deletes the line of an index, or the last one with null. */
int deleteItem(unsigned int timeout, const int *index, VelnoEcrSaleTotals *totals)
{
    const PublicCall call;
    if (const int result = beginCommand({{totals, 0x304}}); result != Success)
        return result;
    const VelnoExtMessage code = VelnoExtMessage_DeleteSaleItem;
    return runItemStep(timeout, index ? requestOf(code, *index) : requestOf(code), totals);
}

/** Reads how a sale stands; `first` is written as soon as it is known. @return 0, 5, 6, 7 or 8 */
int readSaleState(ReplyReader &reader, int *first, VelnoEcrSaleTotals *totals, VelnoReceiptRef *receipt)
{
    bool accepted = true;
    reader >> accepted;
    if (!accepted)
        return readRefusal(reader);
    qint32 state = -1;
    reader >> state;
    if (reader.result() != Success)
        return ReplyUnreadable;
    if (state != VelnoEcrState_SaleOpen)
        return failedBy(WrongState, causeOfState(state));
    QVector<int> list;
    reader >> list;
    if (reader.result() != Success)
        return ReplyUnreadable;
    if (list.isEmpty())
        return failedBy(StepNotTaken, VelnoCause_DisplayEmpty);
    *first = list.first();
    qint32 unused = 0;
    VelnoEcrSaleTotals readTotals{};
    VelnoReceiptRef readReceipt{};
    reader >> unused >> readTotals >> readReceipt.first >> readReceipt.second;
    if (reader.result() == Success) {
        *totals = readTotals;
        *receipt = readReceipt;
    }
    return reader.result();
}

} // namespace

bool isSection(int section)
{
    return section >= 1 && section <= 8;
}

int readTotals(ReplyReader &reader, VelnoEcrSaleTotals *totals)
{
    VelnoEcrSaleTotals read{};
    reader >> read;
    if (reader.result() == Success)
        *totals = read;
    return reader.result();
}

quint64 lineTotal(const VelnoSaleItem &item)
{
    constexpr long double tooMuch = 18446744073709551616.0L; // 2^64
    const long double exact = static_cast<long double>(item.price) * item.quantity / 1000;
    // Adding a half first would round twice where the numbers no longer have room for it.
    long double rounded = std::floor(exact);
    if (exact - rounded >= 0.5L)
        rounded += 1;
    if (rounded <= 0)
        return 0;
    return rounded < tooMuch ? static_cast<quint64>(rounded) : std::numeric_limits<quint64>::max();
}

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_start_sale(unsigned int timeout)
{
    return startSale(timeout, saleKeys);
}

int velnoext_start_sale_with_invoice(unsigned int timeout)
{
    return startSale(timeout, invoiceSaleKeys);
}

int velnoext_sale_state(unsigned int timeout, int *first, VelnoEcrSaleTotals *totals,
                        VelnoReceiptRef *receipt)
{
    const PublicCall call;
    if (const int result = beginCommand({{first, 0x303}, {totals, 0x304}, {receipt, 0x305}});
        result != Success)
        return result;
    QByteArray reply;
    if (const int result = runCommand(timeout, requestOf(VelnoExtMessage_SaleState), &reply);
        result != Success)
        return result;
    ReplyReader reader(reply);
    return readSaleState(reader, first, totals, receipt);
}

int velnoext_add_sale_item(unsigned int timeout, VelnoSaleItem *item, VelnoEcrSaleTotals *totals)
{
    const PublicCall call;
    if (const int result = beginCommand({{item, 0x306}, {totals, 0x304}}); result != Success)
        return result;
    if (const int fault = itemFault(*item); fault != 0)
        return failed(BadValue, fault);
    return runItemStep(timeout, requestOf(VelnoExtMessage_AddSaleItem) + bytesOf(*item), totals);
}

int velnoext_add_multiple_sale_items(unsigned int timeout, VelnoSaleItemList *list,
                                     VelnoEcrSaleTotals *totals)
{
    const PublicCall call;
    if (const int result = beginCommand({{list, 0x307}, {totals, 0x304}}); result != Success)
        return result;
    if (const int fault = listFault(*list); fault != 0)
        return failed(BadValue, fault);
    QByteArray request = requestOf(VelnoExtMessage_AddMultipleSaleItems, qint16(list->count));
    for (const VelnoSaleItem &item : itemsOf(*list))
        request += bytesOf(item);
    return runItemStep(timeout, request, totals);
}

int velnoext_add_medical_contribution(unsigned int timeout, long long amount, unsigned long long identityNo)
{
    const PublicCall call;
    if (const int result = beginCommand(); result != Success)
        return result;
    const VelnoExtMessage code = VelnoExtMessage_MedicalContribution;
    if (amount == 0)
        return runStep(timeout, requestOf(code, qint64(0)), Step::Contribution);
    if (!isPersonId(QByteArray::number(identityNo)))
        return failed(BadValue, 0x403);
    return runStep(timeout, requestOf(code, qint64(amount), qint64(identityNo)), Step::Contribution);
}

int velnoext_delete_last_sale_item(unsigned int timeout, VelnoEcrSaleTotals *totals)
{
    return deleteItem(timeout, nullptr, totals);
}

int velnoext_delete_sale_item(unsigned int timeout, int index, VelnoEcrSaleTotals *totals)
{
    return deleteItem(timeout, &index, totals);
}
