// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/sale_commands.h"

#include "translations/spoken.h"
#include "velnoctl/answers.h"
#include "velnoctl/arguments.h"
#include "velnoctl/session.h"
#include "velnoctl/values.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int onePiece = 1000;
constexpr signed char firstSection = 1;
constexpr quint64 anybody = 11111111111;

/** The item whose arguments are these; see the row of `item`. */
VelnoSaleItem itemFrom(const Arguments &arguments)
{
    VelnoSaleItem item{};
    item.price = arguments.value(Kinds::price);
    item.quantity = arguments.value(Kinds::quantity, onePiece);
    item.percentage = arguments.value(Kinds::percent, 0);
    item.amount = arguments.value(Kinds::amount, 0);
    item.section = arguments.value(Kinds::section, firstSection);
    item.type = arguments.value(Kinds::type, 0);
    std::ranges::copy(arguments.value(Kinds::name), item.name); // which its kind has measured
    return item;
}

Answer started(int code)
{
    return answer(code, Spoken::tr("sale started"));
}

} // namespace

Answer startSale(Session &session, const Arguments &)
{
    return started(session.device().command(velnoext_start_sale));
}

Answer startInvoiceSale(Session &session, const Arguments &)
{
    return started(session.device().command(velnoext_start_sale_with_invoice));
}

Answer saleState(Session &session, const Arguments &)
{
    int first = 0;
    VelnoEcrSaleTotals totals{};
    VelnoReceiptRef receipt{};
    const int code = session.device().command(velnoext_sale_state, &first, &totals, &receipt);
    if (code == 0)
        session.remembered().receipt = {receipt.first, receipt.second};
    QJsonObject values = totalsValues(totals);
    values.insert(u"first"_s, first);
    values.insert(u"receipt"_s, u"%1/%2"_s.arg(receipt.first).arg(receipt.second));
    return answer(
        code,
        Spoken::tr("receipt %1/%2, register shows %3: ").arg(receipt.first).arg(receipt.second).arg(first) +
            totalsText(totals),
        values);
}

Answer addItem(Session &session, const Arguments &arguments)
{
    VelnoSaleItem item = itemFrom(arguments);
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_add_sale_item, &item, &totals);
    return totalsAnswer(code, totals);
}

Answer addItems(Session &session, const Arguments &arguments)
{
    VelnoSaleItemList list{};
    list.items[list.count++] = itemFrom(arguments);
    for (const Arguments &next : arguments.repeated())
        list.items[list.count++] = itemFrom(next);
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_add_multiple_sale_items, &list, &totals);
    return totalsAnswer(code, totals);
}

Answer medical(Session &session, const Arguments &arguments)
{
    const qint64 kurus = arguments.value(Kinds::amount);
    const quint64 identity = arguments.value(Kinds::identity, anybody);
    const int code = session.device().command(velnoext_add_medical_contribution, kurus, identity);
    return answer(code, Spoken::tr("medical contribution %1").arg(lira(kurus)), {{u"kurus"_s, kurus}});
}

Answer deleteItem(Session &session, const Arguments &arguments)
{
    VelnoEcrSaleTotals totals{};
    const std::optional<int> index = arguments.value(Kinds::line).index;
    const int code = index ? session.device().command(velnoext_delete_sale_item, *index, &totals)
                           : session.device().command(velnoext_delete_last_sale_item, &totals);
    return totalsAnswer(code, totals);
}

} // namespace VelnoCtl
