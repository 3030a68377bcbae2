// SPDX-License-Identifier: Apache-2.0

#include "tests/support/shop.h"

using namespace Qt::StringLiterals;

namespace TestSupport {

Shop::Shop(const QStringList &arguments)
    : reg(port, arguments)
{
    connected = connect();
}

int Shop::connect()
{
    return velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience);
}

QString Shop::printed()
{
    const QJsonObject event = reg.waitFor(u"printed"_s);
    return event.value(u"lines"_s).toVariant().toStringList().join(u'\n') + u'\n';
}

VelnoSaleItem itemOf(long long price, const QByteArray &name, signed char section)
{
    VelnoSaleItem item{};
    item.price = price;
    item.quantity = 1000;
    item.section = section;
    memcpy(item.name, name.constData(), size_t(qMin<qsizetype>(name.size(), 52)));
    return item;
}

int addItem(long long price, const QByteArray &name, signed char section)
{
    VelnoSaleItem item = itemOf(price, name, section);
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &item, &totals);
}

int addItemInList(long long price, const QByteArray &name)
{
    VelnoSaleItemList list{};
    list.count = 1;
    list.items[0] = itemOf(price, name);
    VelnoEcrSaleTotals totals{};
    return velnoext_add_multiple_sale_items(patience, &list, &totals);
}

int deleteLast()
{
    VelnoEcrSaleTotals totals{};
    return velnoext_delete_last_sale_item(patience, &totals);
}

QList<long long> valuesOf(const VelnoEcrSaleTotals &totals)
{
    QList<long long> values(totals.values, totals.values + 5);
    return values << totals.number;
}

SaleState saleState()
{
    SaleState state;
    int first = 0;
    VelnoEcrSaleTotals totals{};
    state.code = velnoext_sale_state(patience, &first, &totals, &state.ref);
    state.totals = valuesOf(totals);
    return state;
}

int receipt(VelnoReceiptRef ref, QList<long long> *values)
{
    VelnoEcrSaleTotals totals{};
    const int code = velnoext_receipt_data(patience, &ref, &totals);
    if (values)
        *values = valuesOf(totals);
    return code;
}

int state()
{
    int number = -1;
    return velnoext_ecr_state(patience, &number) == 0 ? number : -1;
}

int endWithInvoice()
{
    VelnoInvoice invoice{};
    memcpy(invoice.idNumber, "11111111111", 11);
    memcpy(invoice.reference, "A123456", 7);
    invoice.mode = 1;
    return velnoext_end_sale_with_invoice(&invoice);
}

int printSlip()
{
    VelnoTextStyle style{};
    velnoext_printer_set_encoding("UTF-8");
    velnoext_printer_add_text("Merhaba", &style);
    return velnoext_print_slip(patience, false);
}

int medical()
{
    return velnoext_add_medical_contribution(patience, 100, patient);
}

QString squeezed(const QString &text)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        line = line.simplified();
    return lines.join(u'\n');
}

} // namespace TestSupport
