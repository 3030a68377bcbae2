// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/command_exchange.h"
#include "ExtDevice/velnoext/identity_numbers.h"
#include "ExtDevice/velnoext/keyboard.h"
#include "ExtDevice/velnoext/queries.h"
#include "ExtDevice/velnoext/reasons.h"
#include "ExtDevice/velnoext/sale.h"

#include <algorithm>

namespace Velno::Ext {

namespace {

constexpr unsigned int fixedTimeout = 2000; // of functions that take none
constexpr StateChange withinSale{4, 1, -1};

/** Whether a sale is open and the register ready for keys. @param extra  preset @return 0, 1, 2, 5-8, 11, 12
 */
int checkReadyForKeys(unsigned int timeout, int extra)
{
    int state = -1;
    QVector<int> list;
    if (const int result = velnoext_ecr_state_impl(timeout, &state, &list, &extra); result != Success)
        return result;
    if (state != VelnoEcrState_SaleOpen)
        return failedBy(WrongState, causeOfState(state));
    if (!takesInput(list))
        return failedBy(StepNotTaken, causeOfRefusal({state, list, extra}));
    return (extra & ~harmlessError) == 0 ? Success : failedBy(Refused, causeOfError(extra));
}

/** Has keys pressed without waiting for what comes of it. */
int pressKeys(const QVector<int> &keys)
{
    if (const int result = checkReadyForKeys(fixedTimeout, -1); result != Success)
        return result;
    return sendCommand(changeStateRequest(withinSale, keys, false));
}

/** Reads the answer to the keys that cancel a sale. @return 0, 5 or 6 */
int readCancelled(ReplyReader &reader)
{
    Standing standing;
    reader >> standing.state >> standing.display;
    if (reader.result() != Success)
        return ReplyUnreadable;
    if (standing.state == VelnoEcrState_Idle)
        return Success;
    reader >> standing.error; // which is there while the sale is open, and tells more than the state
    const bool tellsError = reader.isComplete() && (standing.error & ~harmlessError) != 0;
    return failedBy(WrongState, tellsError ? causeOfError(standing.error) : causeOfState(standing.state));
}

int askAcquirers(VelnoExtMessage code, unsigned int timeout, int *list, int *count)
{
    const PublicCall call;
    if (const int result = beginCommand({{list, 0x309}, {count, 0x30A}}); result != Success)
        return result;
    QVector<int> acquirers;
    if (const int result = runAndRead(timeout, requestOf(code), acquirers); result != Success)
        return result;
    if (*count < acquirers.size()) {
        *count = -1;
        return failedBy(BadValue, VelnoCause_RoomTooSmall);
    }
    std::copy(acquirers.cbegin(), acquirers.cend(), list);
    *count = int(acquirers.size());
    return Success;
}

/** The detail of the first thing wrong with an invoice, or 0. */
int invoiceFault(const VelnoInvoice &invoice)
{
    if (invoice.invoiceType > 2)
        return 0x40B;
    if (invoice.idKind > 1)
        return 0x40C;
    if (invoice.mode != 1 && invoice.mode != 2)
        return 0x40D;
    const qsizetype length = textOf(invoice.reference).size();
    if (invoice.invoiceType == 0 && (length < 6 || length > 16))
        return 0x40E;
    const QByteArray id = textOf(invoice.idNumber);
    if (invoice.idKind == 0)
        return isPersonId(id) ? 0 : 0x403;
    return isTaxNumber(id) ? 0 : 0x404;
}

QByteArray invoiceRequest(const VelnoInvoice &invoice)
{
    return requestOf(VelnoExtMessage_EndSaleWithInvoice, invoice.invoiceType, invoice.idKind,
                     textOf(invoice.reference), textOf(invoice.idNumber), invoice.mode, invoice.flag != 0);
}

} // namespace

} // namespace Velno::Ext

using namespace Velno::Ext;

int velnoext_add_payment(int type, long long amount)
{
    const PublicCall call;
    if (amount <= 0)
        return failed(BadValue, 0x412);
    return pressKeys(paymentKeys(type, quint64(amount)));
}

int velnoext_end_sale(int type)
{
    const PublicCall call;
    return pressKeys({paymentKey(type)});
}

int velnoext_cancel_sale(unsigned int timeout)
{
    const PublicCall call;
    if (const int result = checkReadyForKeys(timeout, 0); result != Success)
        return result;
    QByteArray reply;
    const QByteArray request = changeStateRequest(withinSale, cancelKeys(), true);
    if (const int result = runCommand(timeout, request, &reply); result != Success)
        return result;
    ReplyReader reader(reply);
    return readCancelled(reader);
}

int velnoext_end_sale_with_invoice(VelnoInvoice *invoice)
{
    const PublicCall call;
    if (const int result = beginCommand({{invoice, 0x308}}); result != Success)
        return result;
    if (const int fault = invoiceFault(*invoice); fault != 0)
        return failed(BadValue, fault);
    return runFlagCommand(fixedTimeout, invoiceRequest(*invoice));
}

int velnoext_receipt_data(unsigned int timeout, VelnoReceiptRef *receipt, VelnoEcrSaleTotals *totals)
{
    const PublicCall call;
    if (const int result = beginCommand({{receipt, 0x305}, {totals, 0x304}}); result != Success)
        return result;
    if (receipt->first == 0)
        return failed(BadValue, 0x40F);
    if (receipt->second == 0)
        return failed(BadValue, 0x410);
    QByteArray reply;
    const QByteArray request = requestOf(VelnoExtMessage_ReceiptData, receipt->first, receipt->second);
    if (const int result = runCommand(timeout, request, &reply); result != Success)
        return result;
    ReplyReader reader(reply);
    bool accepted = false;
    reader >> accepted;
    return accepted ? readTotals(reader, totals) : failedBy(Refused, VelnoCause_SaidNo);
}

int velnoext_active_acquirers(unsigned int timeout, int *list, int *count)
{
    return askAcquirers(VelnoExtMessage_ActiveAcquirers, timeout, list, count);
}

int velnoext_acquirers_of_sale(unsigned int timeout, int *list, int *count)
{
    return askAcquirers(VelnoExtMessage_SaleAcquirers, timeout, list, count);
}

int velnoext_section_data(unsigned int timeout, VelnoSaleItem *item)
{
    const PublicCall call;
    if (const int result = beginCommand({{item, 0x306}}); result != Success)
        return result;
    if (!isSection(item->section))
        return failed(BadValue, 0x406);
    QByteArray name;
    qint32 number = 0;
    const QByteArray request = requestOf(VelnoExtMessage_SectionData, qint8(item->section));
    if (const int result = runAndRead(timeout, request, name, number); result != Success)
        return result;
    if (name.size() >= qsizetype(sizeof item->name))
        return failedBy(ReplyUnreadable, VelnoCause_SectionNameTooLong);
    *std::copy(name.cbegin(), name.cend(), item->name) = '\0';
    item->quantity = number;
    return Success;
}
