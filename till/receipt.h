// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>
#include <QString>

#include <optional>

/** Whole receipts: what is wanted, what became of it, and how it comes about. Amounts are kuruş. */
namespace Velno::Receipts {

/** One line of a receipt; the fields are those of VelnoSaleItem. */
struct Item
{
    QString name;
    qint64 price = 0;       ///< of one unit; 0 makes the line a remark
    qint32 quantity = 1000; ///< in thousandths
    qint32 percentage = 0;  ///< below 0 a discount, above 0 a surcharge
    qint64 discount = 0;    ///< an amount, which counts while percentage is 0
    int section = 1;        ///< 1 to 8
    int unit = 0;           ///< a VelnoItemType

    bool operator==(const Item &) const = default;
};

/** What a patient pays towards a medicine. */
struct Medical
{
    qint64 amount = 0;
    quint64 person = 0; ///< 11-digit identity number

    bool operator==(const Medical &) const = default;
};

enum class Tender { Cash, Card };

struct Payment
{
    Tender tender = Tender::Cash;
    std::optional<qint64> amount; ///< none: the rest; only the last payment may say so

    bool operator==(const Payment &) const = default;
};

/** The customer's part of an invoice; the numbers are those of VelnoInvoice. */
struct Invoice
{
    unsigned type = 0; ///< a VelnoInvoiceType
    bool isCompany = false;
    QString idNumber; ///< 11 digits of a person, 10 of a company
    QString reference;
    bool deliveryNote = false; ///< the invoice takes the place of the delivery note

    bool operator==(const Invoice &) const = default;
};

/** A line of a slip: a text, a text at each end, or line feeds. */
struct SlipLine
{
    QString text;
    std::optional<QString> right; ///< at the right end; `text` is then at the left one
    int size = 0;                 ///< 0 to 5
    bool styleA = false;
    bool styleB = false;
    int feeds = 0; ///< 1 to 20 line feeds in place of a text

    bool operator==(const SlipLine &) const = default;
};

struct Slip
{
    QString encoding; ///< as Qt knows it
    QList<SlipLine> lines;

    bool operator==(const Slip &) const = default;
};

/** What is to stand on one fiscal receipt, and on the slip behind it. */
struct Receipt
{
    QList<Item> items;
    std::optional<Medical> medical;
    std::optional<Invoice> invoice; ///< its last payment is then the rest
    QList<Payment> payments;        ///< in their order; one at least
    std::optional<Slip> slip;
    std::optional<qint64> total; ///< what the register has to come to, if somebody has added it up
    bool reenterCash =
        false; ///< cash may be entered again by itself when a cut of the power has cancelled it

    bool operator==(const Receipt &) const = default;
};

} // namespace Velno::Receipts
