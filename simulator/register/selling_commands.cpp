#include "simulator/register/selling_commands.h"

#include "simulator/fiscal/acquirers.h"
#include "simulator/fiscal/sections.h"
#include "simulator/fiscal/slip.h"
#include "simulator/register/command_items.h"

#include <QVector>

#include <algorithm>

namespace Simulator {

namespace {

/** Keys that belong to a display; three numbers in front of them say which. */
struct KeyRequest
{
    qint32 display = 0;
    qint32 mode = 0;
    qint32 extra = 0;
    QList<qint32> keys;
    bool answer = false;
};

constexpr qint32 saleDisplay = 4;
constexpr qint32 saleMode = 1;
constexpr qint32 noExtra = -1;

/** Whether the keys are meant for what the register displays now. */
bool isMeantForNow(const KeyRequest &request, State state)
{
    if (state == State::SaleOpen)
        return request.display == saleDisplay && request.mode == saleMode && request.extra == noExtra;
    return request.display == qint32(state) && request.mode == 0 && request.extra == 0;
}

/** Presses the keys, or says why not. */
Refusal tryKeys(const CommandCall &call, const KeyRequest &request)
{
    Till *const till = call.model.seller();
    if (!till)
        return call.wrong.refuse ? FaultRefuses : StateForbids;
    if (call.wrong.refuse)
        return till->refuseKeys(FaultRefuses);
    const bool meant = isMeantForNow(request, call.model.state());
    return meant ? till->press(request.keys) : till->refuseKeys(OtherDisplay);
}

Refusal pressKeys(const CommandCall &call, const KeyRequest &request)
{
    const Refusal refusal = tryKeys(call, request);
    if (request.answer) {
        writeState(call);
        const qint32 error = call.model.tellError();
        if (toldState(call) == State::SaleOpen)
            call.reply << call.wrong.error.value_or(error);
    }
    return refusal == NotRefused ? madeUpError(call) : refusal;
}

/** Changes the open sale unless something is wrong. */
template <typename Change>
Refusal changeSale(const CommandCall &call, Change change)
{
    if (call.wrong.refuse)
        return FaultRefuses;
    if (call.wrong.error)
        return FaultError;
    if (call.wrong.overLimit)
        return FaultSaleLimit;
    Till *const till = call.model.seller();
    return till ? change(*till) : StateForbids;
}

/** How all that changes the items of a sale is answered. */
template <typename Change>
Refusal answerChange(const CommandCall &call, Change change)
{
    const Refusal refusal = changeSale(call, change);
    const qint32 error = refusal == FaultRefuses ? WrongValue : errorOf(refusal);
    call.reply << (refusal != FaultRefuses);
    writeState(call);
    call.reply << (refusal == FaultError ? *call.wrong.error : error);
    return refusal;
}

template <typename Change>
Execution itemChange(Change change)
{
    return [change](const CommandCall &call) {
        const Refusal refusal = answerChange(call, change);
        call.reply << call.model.saleTotals();
        return refusal;
    };
}

template <typename Work>
Refusal tryWork(const CommandCall &call, Work work)
{
    if (call.wrong.refuse)
        return FaultRefuses;
    Till *const till = call.model.seller();
    return till ? work(*till) : StateForbids;
}

/** Printing and closing, which are answered by yes or no. */
template <typename Work>
Execution work(Work work)
{
    return [work](const CommandCall &call) {
        const Refusal refusal = tryWork(call, work);
        call.reply << (refusal == NotRefused);
        return refusal;
    };
}

bool areDigits(const QByteArray &text, qsizetype count)
{
    return text.size() == count && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool isPrintable(const QByteArray &text)
{
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

/** What stands on an invoice as it is asked for. */
struct InvoiceRequest
{
    qint32 type = 0;
    qint32 idKind = 0;
    QByteArray reference;
    QByteArray idNumber;
    qint32 mode = 0; ///< how the rest is paid: 1 in cash, 2 by card
    bool delivers = false;
};

constexpr qsizetype personDigits = 11;
constexpr qsizetype companyDigits = 10;
constexpr qsizetype longestReference = 17;
constexpr qsizetype shortestNumber = 6; // of a paper form
constexpr qsizetype longestNumber = 16;
constexpr qint32 restInCash = 1;
constexpr qint32 restByCard = 2;

/** Why it does not look like an invoice; whether the customer exists the register cannot know. */
Refusal faultOf(const InvoiceRequest &request)
{
    const bool onPaper = request.type == Invoice::OnPaper;
    if (request.type < Invoice::OnPaper || request.type > Invoice::Archived)
        return BadInvoiceType;
    if (request.mode < restInCash || request.mode > restByCard)
        return BadInvoiceMode;
    const qsizetype length = request.reference.size();
    if (!isPrintable(request.reference) || length > longestReference ||
        (onPaper && (length < shortestNumber || length > longestNumber)))
        return BadReference;
    const bool person = request.idKind == Invoice::Person;
    if (!person && request.idKind != Invoice::Company)
        return BadIdNumber;
    return areDigits(request.idNumber, person ? personDigits : companyDigits) ? NotRefused : BadIdNumber;
}

/** Of a request without a fault. */
Invoice invoiceOf(const InvoiceRequest &request)
{
    return {Invoice::Type(request.type), Invoice::IdKind(request.idKind),
            QString::fromLatin1(request.reference), QString::fromLatin1(request.idNumber), request.delivers};
}

} // namespace

State toldState(const CommandCall &call)
{
    return call.wrong.state ? State(*call.wrong.state) : call.model.state();
}

Refusal madeUpError(const CommandCall &call)
{
    return (call.wrong.error.value_or(NoError) & ~PaymentBegun) == NoError ? NotRefused : FaultError;
}

void writeState(const CommandCall &call)
{
    const auto steps = call.model.saleSteps();
    call.reply << qint32(toldState(call)) << QVector<qint32>(steps.begin(), steps.end());
}

DecodedCommand changeState(QDataStream &items)
{
    KeyRequest request;
    items >> request.display >> request.mode >> request.extra;
    request.keys = readKeys(items);
    items >> request.answer;
    return {[request](const CommandCall &call) { return pressKeys(call, request); }};
}

DecodedCommand addItem(QDataStream &items)
{
    const QList<ItemRequest> list{readItem(items)};
    return {itemChange([list](Till &till) { return till.add(list); }), list};
}

DecodedCommand addItems(QDataStream &items)
{
    const QList<ItemRequest> list = readItems(items);
    return {itemChange([list](Till &till) { return till.add(list); }), list};
}

DecodedCommand deleteItem(QDataStream &items)
{
    if (items.atEnd())
        return {itemChange([](Till &till) { return till.removeLast(); })};
    qint32 index = 0;
    items >> index;
    return {itemChange([index](Till &till) { return till.remove(index); })};
}

DecodedCommand medicalContribution(QDataStream &items)
{
    qint64 amount = 0;
    qint64 identity = 0;
    items >> amount;
    if (amount != 0)
        items >> identity;
    return {[amount, identity](const CommandCall &call) {
        return answerChange(call, [=](Till &till) { return till.setMedicalContribution(amount, identity); });
    }};
}

DecodedCommand saleState(QDataStream &)
{
    return {[](const CommandCall &call) {
        call.reply << !call.wrong.refuse;
        writeState(call);
        const ReceiptRef ref = call.model.saleReference();
        call.reply << call.wrong.error.value_or(call.model.tellError()) << call.model.saleTotals() << ref.z
                   << ref.number;
        return call.wrong.refuse ? FaultRefuses : madeUpError(call);
    }};
}

DecodedCommand receiptData(QDataStream &items)
{
    ReceiptRef ref;
    items >> ref.z >> ref.number;
    return {[ref](const CommandCall &call) {
        const auto totals = call.wrong.refuse ? std::nullopt : call.model.receipt(ref);
        call.reply << totals.has_value() << totals.value_or(SaleTotals());
        if (totals)
            return NotRefused;
        if (call.wrong.refuse)
            return FaultRefuses;
        return ref == call.model.saleReference() ? ReceiptStillOpen : ReceiptNotClosed;
    }};
}

DecodedCommand sectionData(QDataStream &items)
{
    qint8 number = 0;
    items >> number;
    return {[number](const CommandCall &call) {
        const Section *const section = findSection(number);
        call.reply << (section ? QString::fromUtf16(section->name).toUtf8() : QByteArray())
                   << qint32(section ? section->taxRate : 0);
        return section ? NotRefused : BadSection;
    }};
}

DecodedCommand printReport(QDataStream &items)
{
    bool z = false;
    items >> z;
    return {work([z](Till &till) { return z ? till.printZ() : till.printX(); })};
}

DecodedCommand printSlip(QDataStream &items)
{
    bool withHead = false;
    QByteArray bytes;
    QList<QByteArray> lines;
    items >> withHead >> bytes;
    if (items.status() == QDataStream::Ok && !readSlipLines(bytes, lines))
        items.setStatus(QDataStream::ReadCorruptData);
    return {work([lines, withHead](Till &till) { return till.printSlip(lines, withHead); })};
}

DecodedCommand endWithInvoice(QDataStream &items)
{
    InvoiceRequest request;
    items >> request.type >> request.idKind >> request.reference >> request.idNumber >> request.mode >>
        request.delivers;
    const auto rest = request.mode == restByCard ? PaymentKind::Card : PaymentKind::Cash;
    return {work([request, rest](Till &till) {
        const Refusal fault = faultOf(request);
        return fault == NotRefused ? till.closeWithInvoice(invoiceOf(request), rest) : fault;
    })};
}

DecodedCommand listAcquirers(QDataStream &)
{
    return {[](const CommandCall &call) {
        call.reply << QVector<qint32>(activeAcquirers());
        return NotRefused;
    }};
}

DecodedCommand listSaleAcquirers(QDataStream &)
{
    return {[](const CommandCall &call) {
        call.reply << QVector<qint32>(call.model.saleAcquirers());
        return NotRefused;
    }};
}

} // namespace Simulator
