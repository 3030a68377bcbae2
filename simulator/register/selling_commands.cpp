// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/selling_commands.h"

#include "simulator/fiscal/acquirers.h"
#include "simulator/fiscal/sections.h"

#include <QVector>

#include <algorithm>
#include <iterator>

using Velno::GMP::Items;
using Velno::GMP::ItemWriter;

namespace Simulator {

namespace {

ItemWriter &operator<<(ItemWriter &reply, const SaleTotals &totals)
{
    return reply << totals.total << totals.tax << totals.cash << totals.card << totals.change << totals.items;
}

constexpr qint32 saleDisplay = 4;
constexpr qint32 saleStep = 1;
constexpr qint32 noExtra = -1;

/** Whether the keys are meant for what the register displays now. */
bool areMeantForNow(const Items &keys, State state)
{
    const auto areFor = [&keys](qint32 display, qint32 step, qint32 extra) {
        return keys.int32("state") == display && keys.int32("step") == step && keys.int32("extra") == extra;
    };
    return state == State::SaleOpen ? areFor(saleDisplay, saleStep, noExtra) : areFor(qint32(state), 0, 0);
}

/** Presses the keys, or says why not. */
Refusal pressKeys(const CommandCall &call)
{
    Till *const till = call.model.seller();
    if (!till)
        return call.wrong.refuse ? FaultRefuses : StateForbids;
    if (call.wrong.refuse)
        return till->refuseKeys(FaultRefuses);
    const bool meant = areMeantForNow(call.items, call.model.state());
    return meant ? till->press(call.items.numbers("keys")) : till->refuseKeys(OtherDisplay);
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
Refusal changeItems(const CommandCall &call, Change change)
{
    const Refusal refusal = answerChange(call, change);
    call.reply << call.model.saleTotals();
    return refusal;
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
Refusal answerWork(const CommandCall &call, Work work)
{
    const Refusal refusal = tryWork(call, work);
    call.reply << (refusal == NotRefused);
    return refusal;
}

bool areDigits(const QByteArray &text, qsizetype count)
{
    return text.size() == count && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool isPrintable(const QByteArray &text)
{
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

constexpr qsizetype personDigits = 11;
constexpr qsizetype companyDigits = 10;
constexpr qsizetype longestReference = 17;
constexpr qsizetype shortestNumber = 6; // of a paper form
constexpr qsizetype longestNumber = 16;
constexpr qint32 restInCash = 1;
constexpr qint32 restByCard = 2;

/** Why it does not look like an invoice; whether the customer exists the register cannot know. */
Refusal faultOf(const Items &invoice)
{
    const qint32 type = invoice.int32("type");
    const qint32 mode = invoice.int32("mode");
    const bool onPaper = type == Invoice::OnPaper;
    if (type < Invoice::OnPaper || type > Invoice::Archived)
        return BadInvoiceType;
    if (mode < restInCash || mode > restByCard)
        return BadInvoiceMode;
    const QByteArray &reference = invoice.bytes("reference");
    const qsizetype length = reference.size();
    if (!isPrintable(reference) || length > longestReference ||
        (onPaper && (length < shortestNumber || length > longestNumber)))
        return BadReference;
    const qint32 kind = invoice.int32("id-kind");
    if (kind != Invoice::Person && kind != Invoice::Company)
        return BadIdNumber;
    const qsizetype digits = kind == Invoice::Person ? personDigits : companyDigits;
    return areDigits(invoice.bytes("id-number"), digits) ? NotRefused : BadIdNumber;
}

/** Of a request without a fault. */
Invoice invoiceOf(const Items &invoice)
{
    return {Invoice::Type(invoice.int32("type")), Invoice::IdKind(invoice.int32("id-kind")),
            QString::fromLatin1(invoice.bytes("reference")), QString::fromLatin1(invoice.bytes("id-number")),
            invoice.flag("delivers")};
}

ItemRequest itemOf(const Items &item)
{
    return {item.int64("price"),   item.int32("quantity"), item.int32("percentage"), item.int64("amount"),
            item.int32("section"), item.bytes("name"),     item.int32("type")};
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

QList<ItemRequest> itemsToSell(const Items &items)
{
    if (items.has("price"))
        return {itemOf(items)};
    QList<ItemRequest> list;
    if (items.has("items"))
        std::ranges::transform(items.records("items"), std::back_inserter(list), itemOf);
    return list;
}

Refusal changeState(const CommandCall &call)
{
    const Refusal refusal = pressKeys(call);
    if (call.items.flag("answer-wanted")) {
        writeState(call);
        const qint32 error = call.model.tellError();
        if (toldState(call) == State::SaleOpen)
            call.reply << call.wrong.error.value_or(error);
    }
    return refusal == NotRefused ? madeUpError(call) : refusal;
}

Refusal sellItems(const CommandCall &call)
{
    return changeItems(call, [&call](Till &till) { return till.add(itemsToSell(call.items)); });
}

Refusal deleteItem(const CommandCall &call)
{
    const Items &items = call.items;
    return changeItems(call, [&items](Till &till) {
        return items.has("index") ? till.remove(items.int32("index")) : till.removeLast();
    });
}

Refusal medicalContribution(const CommandCall &call)
{
    const Items &items = call.items;
    const qint64 identity = items.has("identity") ? items.int64("identity") : 0;
    return answerChange(call, [&items, identity](Till &till) {
        return till.setMedicalContribution(items.int64("amount"), identity);
    });
}

Refusal saleState(const CommandCall &call)
{
    call.reply << !call.wrong.refuse;
    writeState(call);
    const ReceiptRef ref = call.model.saleReference();
    call.reply << call.wrong.error.value_or(call.model.tellError()) << call.model.saleTotals() << ref.z
               << ref.number;
    return call.wrong.refuse ? FaultRefuses : madeUpError(call);
}

Refusal receiptData(const CommandCall &call)
{
    const ReceiptRef ref{call.items.int32("z"), call.items.int32("receipt")};
    const auto totals = call.wrong.refuse ? std::nullopt : call.model.receipt(ref);
    call.reply << totals.has_value() << totals.value_or(SaleTotals());
    if (totals)
        return NotRefused;
    if (call.wrong.refuse)
        return FaultRefuses;
    return ref == call.model.saleReference() ? ReceiptStillOpen : ReceiptNotClosed;
}

Refusal sectionData(const CommandCall &call)
{
    const Section *const section = findSection(call.items.int32("section"));
    call.reply << (section ? QString::fromUtf16(section->name).toUtf8() : QByteArray())
               << qint32(section ? section->taxRate : 0);
    return section ? NotRefused : BadSection;
}

Refusal printReport(const CommandCall &call)
{
    const bool z = call.items.flag("z-report");
    return answerWork(call, [z](Till &till) { return z ? till.printZ() : till.printX(); });
}

Refusal printSlip(const CommandCall &call)
{
    const Items &slip = call.items;
    return answerWork(
        call, [&slip](Till &till) { return till.printSlip(slip.lines("lines"), slip.flag("with-head")); });
}

Refusal endWithInvoice(const CommandCall &call)
{
    const Items &invoice = call.items;
    return answerWork(call, [&invoice](Till &till) {
        const Refusal fault = faultOf(invoice);
        const bool byCard = invoice.int32("mode") == restByCard;
        const auto rest = byCard ? PaymentKind::Card : PaymentKind::Cash;
        return fault == NotRefused ? till.closeWithInvoice(invoiceOf(invoice), rest) : fault;
    });
}

Refusal listAcquirers(const CommandCall &call)
{
    call.reply << QVector<qint32>(activeAcquirers());
    return NotRefused;
}

Refusal listSaleAcquirers(const CommandCall &call)
{
    call.reply << QVector<qint32>(call.model.saleAcquirers());
    return NotRefused;
}

} // namespace Simulator
