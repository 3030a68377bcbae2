#include "velnoctl/sale_commands.h"

#include "velnoctl/answers.h"
#include "velnoctl/numbers.h"
#include "velnoctl/session.h"
#include "velnoctl/values.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int onePiece = 1000;
constexpr signed char firstSection = 1;
constexpr quint64 anybody = 11111111111;

enum ItemArgument : qsizetype { Price, Name, Section, Quantity, Percent, Amount, Type, ItemArguments };

/** The item whose arguments are these; see the row of `item`. */
VelnoSaleItem itemFrom(const QStringList &arguments)
{
    VelnoSaleItem item{};
    item.price = kurusFrom(arguments.at(Price)).value_or(0);
    item.quantity = thousandthsFrom(arguments.at(Quantity)).value_or(onePiece);
    item.percentage = numberFrom<int>(arguments.at(Percent)).value_or(0);
    item.amount = kurusFrom(arguments.at(Amount)).value_or(0);
    item.section = numberFrom<signed char>(arguments.at(Section)).value_or(firstSection);
    item.type = numberFrom<int>(arguments.at(Type)).value_or(0);
    const QByteArray name = arguments.at(Name).toUtf8();
    std::copy(name.begin(), name.end(), item.name); // which its kind has measured
    return item;
}

Answer started(int code)
{
    return answer(code, u"sale started"_s);
}

} // namespace

Answer startSale(Session &session, const QStringList &)
{
    return started(session.device().command(velnoext_start_sale));
}

Answer startInvoiceSale(Session &session, const QStringList &)
{
    return started(session.device().command(velnoext_start_sale_with_invoice));
}

Answer saleState(Session &session, const QStringList &)
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
    return answer(code,
                  u"receipt %1/%2, register shows %3: "_s.arg(receipt.first).arg(receipt.second).arg(first) +
                      totalsText(totals),
                  values);
}

Answer addItem(Session &session, const QStringList &arguments)
{
    VelnoSaleItem item = itemFrom(arguments);
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_add_sale_item, &item, &totals);
    return totalsAnswer(code, totals);
}

Answer addItems(Session &session, const QStringList &arguments)
{
    VelnoSaleItemList list{};
    list.count = static_cast<unsigned short>(arguments.size() / ItemArguments);
    for (unsigned short i = 0; i < list.count; ++i)
        list.items[i] = itemFrom(arguments.mid(i * ItemArguments, ItemArguments));
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_add_multiple_sale_items, &list, &totals);
    return totalsAnswer(code, totals);
}

Answer medical(Session &session, const QStringList &arguments)
{
    const qint64 kurus = kurusFrom(arguments.at(0)).value_or(0);
    const quint64 identity = numberFrom<quint64>(arguments.at(1)).value_or(anybody);
    const int code = session.device().command(velnoext_add_medical_contribution, kurus, identity);
    return answer(code, u"medical contribution %1"_s.arg(lira(kurus)), {{u"kurus"_s, kurus}});
}

Answer deleteItem(Session &session, const QStringList &arguments)
{
    VelnoEcrSaleTotals totals{};
    const std::optional<int> index = numberFrom<int>(arguments.first()); // none: the last
    const int code = index ? session.device().command(velnoext_delete_sale_item, *index, &totals)
                           : session.device().command(velnoext_delete_last_sale_item, &totals);
    return totalsAnswer(code, totals);
}

} // namespace VelnoCtl
