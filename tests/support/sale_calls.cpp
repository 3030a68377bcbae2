// SPDX-License-Identifier: Apache-2.0

#include "tests/support/sale_calls.h"

#include <QTest>

#include <algorithm>
#include <cstring>

namespace TestSupport {

Outputs::Outputs()
{
    std::memset(&first, 0x5A, sizeof first);
    std::memset(&totals, 0x5A, sizeof totals);
    std::memset(&receipt, 0x5A, sizeof receipt);
    std::memset(&item, 0x5A, sizeof item);
    std::memset(list, 0x5A, sizeof list);
    item.section = 3;
}

bool Outputs::untouchedBesidesFirst() const
{
    const Outputs fresh;
    return std::memcmp(&totals, &fresh.totals, sizeof totals) == 0 &&
           std::memcmp(&receipt, &fresh.receipt, sizeof receipt) == 0 &&
           std::memcmp(&item, &fresh.item, sizeof item) == 0 &&
           std::memcmp(list, fresh.list, sizeof list) == 0 && count == fresh.count;
}

Call callNamed(const QList<Call> &calls, const QString &name)
{
    for (const Call &call : calls) {
        if (name == QLatin1String(call.name))
            return call;
    }
    qFatal("no such call");
}

void addCallRows(const QList<Call> &calls, const std::function<bool(const Call &)> &belongs)
{
    QTest::addColumn<QString>("name");
    for (const Call &call : calls) {
        if (belongs(call))
            QTest::newRow(call.name) << QString::fromLatin1(call.name);
    }
}

void answer(HandMadeDevice &device, const Call &call, const QByteArray &reply)
{
    device.forgetCommands();
    device.answerInTurn(call.asksFirst() ? QList{call.state, reply} : QList{reply});
}

QByteArray openSale(int extra)
{
    return plain(5, QVector<int>{1}, extra);
}

QByteArray someTotals()
{
    return plain(qint64(1), qint64(-2), qint64(0x0102030405060708), smallest, largest, -6);
}

QByteArray bytesOf(const VelnoEcrSaleTotals &totals)
{
    QByteArray bytes;
    for (int i = 0; i < 5; ++i)
        bytes += plain(qint64(totals.values[i]));
    return bytes + plain(qint32(totals.number));
}

VelnoSaleItem goodItem()
{
    VelnoSaleItem item = {};
    item.price = 0x0102030405060708;
    item.quantity = 0x11121314;
    item.percentage = 0x21222324;
    item.amount = 0x3132333435363738;
    std::strcpy(item.name, "Ekmek");
    item.section = 8;
    item.type = 7;
    return item;
}

QByteArray goodItemBytes()
{
    return hex("0102030405060708 11121314 21222324 3132333435363738 08 00000005456B6D656B 00000007");
}

VelnoInvoice goodInvoice()
{
    VelnoInvoice invoice = {};
    invoice.invoiceType = 1;
    invoice.idKind = 1;
    std::strcpy(invoice.idNumber, "0000000001");
    std::strcpy(invoice.reference, "ABC123");
    invoice.mode = 2;
    invoice.flag = -5;
    return invoice;
}

QByteArray goodInvoiceRequest()
{
    return hex("0000000E 00000001 00000001 00000006414243313233 0000000A30303030303030303031 00000002 01");
}

VelnoSaleItemList listOf(const QList<VelnoSaleItem> &items)
{
    VelnoSaleItemList list = {};
    list.count = quint16(items.size());
    std::copy(items.cbegin(), items.cend(), list.items);
    return list;
}

} // namespace TestSupport
