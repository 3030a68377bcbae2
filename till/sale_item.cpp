// SPDX-License-Identifier: Apache-2.0

#include "till/sale_item.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Velno::Receipts {

namespace {

/** The bytes that fit; what is judged good fits whole. */
template <size_t Room>
void copyText(const QString &text, char (&room)[Room])
{
    const QByteArray bytes = text.toUtf8();
    std::memcpy(room, bytes.constData(), std::min(Room - 1, size_t(bytes.size())));
}

VelnoSaleItem saleItem(const Item &item)
{
    VelnoSaleItem line = {};
    line.price = item.price;
    line.quantity = item.quantity;
    line.percentage = item.percentage;
    line.amount = item.discount;
    copyText(item.name, line.name);
    line.section = static_cast<signed char>(item.section);
    line.type = item.unit;
    return line;
}

} // namespace

VelnoSaleItemList saleItems(const Receipt &receipt, int first)
{
    VelnoSaleItemList list = {};
    const auto most = std::min(std::size(list.items), size_t(receipt.items.size() - first));
    while (list.count < most) {
        const Item &item = receipt.items.at(first + list.count);
        if (item.price == 0 && list.count > 0)
            break;
        list.items[list.count++] = saleItem(item);
        if (item.price == 0)
            break;
    }
    return list;
}

VelnoInvoice invoiceOf(const Receipt &receipt)
{
    VelnoInvoice invoice = {};
    invoice.invoiceType = receipt.invoice->type;
    invoice.idKind = receipt.invoice->isCompany ? VelnoIdKind_Company : VelnoIdKind_Person;
    copyText(receipt.invoice->idNumber, invoice.idNumber);
    copyText(receipt.invoice->reference, invoice.reference);
    const bool byCard = receipt.payments.constLast().tender == Tender::Card;
    invoice.mode = byCard ? VelnoInvoiceMode_RestByCard : VelnoInvoiceMode_RestInCash;
    invoice.flag = receipt.invoice->deliveryNote ? 1 : 0;
    return invoice;
}

} // namespace Velno::Receipts
