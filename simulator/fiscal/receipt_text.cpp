// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/receipt_text.h"

#include "simulator/fiscal/acquirers.h"
#include "simulator/fiscal/money.h"
#include "simulator/fiscal/paper.h"
#include "simulator/fiscal/sections.h"

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

const QString notFiscal = u"MALİ DEĞERİ YOKTUR"_s;

QString fourDigits(qint32 number)
{
    return QString::number(number).rightJustified(4, u'0');
}

QString rateText(int rate)
{
    return u'%' + QString::number(rate);
}

QStringList head(qint64 time)
{
    return shopHead() << QString() << twoSided(u"TARİH: "_s + dateText(time), u"SAAT: "_s + timeText(time));
}

QStringList foot(qint32 z, const QByteArray &serial)
{
    const QString company = QString::fromLatin1(serial.left(2));
    const QString number = QString::fromLatin1(serial.mid(2));
    return {twoSided(u"Z NO: "_s + fourDigits(z), u"EKÜ NO: 0001"_s),
            centred(u"MF %1 %2"_s.arg(company, number))};
}

QStringList adjustmentLines(const SaleLine &line)
{
    if (line.adjustment == 0)
        return {};
    const QString word = line.adjustment < 0 ? u"İNDİRİM"_s : u"ARTIRIM"_s;
    const QString share = line.percentage == 0 ? QString() : u' ' + rateText(qAbs(line.percentage));
    return {withAmount(u"  "_s + word + share, line.adjustment)};
}

QStringList lineTexts(const SaleLine &line)
{
    if (line.section == 0)
        return wrapped(line.name, paperWidth);
    QStringList texts;
    if (line.quantity != 1000)
        texts << u"%1 %2 X %3"_s.arg(quantityText(line.quantity), QString::fromUtf16(unitName(line.type)),
                                     moneyText(line.price));
    const QString section = QString::fromUtf16(findSection(line.section)->name);
    const QString amount = u'*' + moneyText(line.gross);
    const QString right = rateText(line.taxRate).leftJustified(5) + amount.rightJustified(14);
    texts << twoSided(line.name.isEmpty() ? section : line.name, right) << adjustmentLines(line);
    if (line.deleted)
        texts << withAmount(u"  SATIR İPTAL"_s, -line.total());
    return texts;
}

QStringList itemTexts(const Receipt &receipt)
{
    QStringList texts;
    for (const SaleLine &line : receipt.sale.lines())
        texts << lineTexts(line);
    if (receipt.sale.medicalContribution() != 0)
        texts << withAmount(u"İLAÇ KATILIM PAYI"_s, receipt.sale.medicalContribution())
              << u"  T.C. KİMLİK NO: "_s + QString::number(receipt.sale.patient());
    return texts << rule();
}

QString paymentText(const Payment &payment)
{
    if (payment.kind == PaymentKind::Cash)
        return withAmount(u"NAKİT"_s, payment.amount);
    const char16_t *acquirer = acquirerName(payment.acquirer);
    return withAmount(u"KREDİ KARTI "_s + (acquirer ? QString::fromUtf16(acquirer) : QString()),
                      payment.amount);
}

QStringList sumTexts(const Sale &sale)
{
    const SaleTotals sums = sale.totals();
    QStringList texts{withAmount(u"TOPKDV"_s, sums.tax), withAmount(u"TOPLAM"_s, sums.total), rule()};
    for (const Payment &payment : sale.payments())
        texts << paymentText(payment);
    if (sums.change != 0)
        texts << withAmount(u"PARA ÜSTÜ"_s, sums.change);
    return texts << rule();
}

/** In two lines when one is too short for both amounts: neither may be cut. */
QStringList taxGroupTexts(int rate, const TaxGroup &group)
{
    const QString what = u"KDV %1 TOPLAM"_s.arg(rateText(rate));
    const QString left = u"%1 *%2"_s.arg(what, moneyText(group.total));
    const QString right = u"KDV *%1"_s.arg(moneyText(group.tax));
    if (left.size() + 1 + right.size() <= paperWidth)
        return {twoSided(left, right)};
    return {withAmount(what, group.total), withAmount(u"KDV"_s, group.tax)};
}

QStringList taxTexts(const TaxGroups &groups)
{
    QStringList texts;
    for (const auto &[rate, group] : groups)
        texts << taxGroupTexts(rate, group);
    return texts;
}

QString invoiceName(Invoice::Type type)
{
    switch (type) {
    case Invoice::Electronic:
        return u"e-FATURA"_s;
    case Invoice::Archived:
        return u"e-ARŞİV FATURA"_s;
    case Invoice::OnPaper:
        break;
    }
    return u"FATURA"_s;
}

QStringList invoiceTexts(const Invoice &invoice)
{
    const bool person = invoice.idKind == Invoice::Person;
    QStringList texts{centred(u"BİLGİ FİŞİ"_s), centred(notFiscal), u"TÜR: "_s + invoiceName(invoice.type)};
    if (!invoice.reference.isEmpty())
        texts << u"FATURA NO: "_s + invoice.reference;
    texts << (person ? u"T.C. KİMLİK NO: "_s : u"VERGİ NO: "_s) + invoice.idNumber;
    if (invoice.delivers)
        texts << u"İRSALİYE YERİNE GEÇER"_s;
    return texts << rule();
}

QStringList receiptTexts(const Receipt &receipt)
{
    QStringList texts = head(receipt.closed) << u"FİŞ NO: "_s + fourDigits(receipt.ref.number) << QString();
    if (receipt.invoice)
        texts << invoiceTexts(*receipt.invoice);
    return texts << itemTexts(receipt);
}

QStringList reportTexts(const DayTotals &day, qint64 grandTotal)
{
    const auto counted = [](const QString &what, qint32 count) {
        return twoSided(what, QString::number(count));
    };
    QStringList texts = taxTexts(day.taxGroups);
    texts << rule() << counted(u"FİŞ SAYISI"_s, day.receipts) << counted(u"FATURALI SATIŞ"_s, day.invoices)
          << counted(u"İPTAL FİŞ SAYISI"_s, day.cancelled) << rule() << withAmount(u"NAKİT"_s, day.cash)
          << withAmount(u"KREDİ KARTI"_s, day.card) << withAmount(u"İLAÇ KATILIM PAYI"_s, day.contributions)
          << rule() << withAmount(u"TOPKDV"_s, day.tax) << withAmount(u"GÜNLÜK TOPLAM"_s, day.total)
          << withAmount(u"KÜMÜLATİF TOPLAM"_s, grandTotal) << rule();
    return texts;
}

QStringList closedTexts(const Receipt &receipt, const QByteArray &serial)
{
    return receiptTexts(receipt) << sumTexts(receipt.sale) << taxTexts(receipt.sale.taxGroups()) << rule()
                                 << foot(receipt.ref.z, serial);
}

QStringList cancelledTexts(const Receipt &receipt, const QByteArray &serial)
{
    return receiptTexts(receipt) << withAmount(u"TOPLAM"_s, receipt.sale.totals().total)
                                 << centred(u"FİŞ İPTAL"_s) << centred(notFiscal) << rule()
                                 << foot(receipt.ref.z, serial);
}

QStringList xReportTexts(const ZReport &report, const QByteArray &serial)
{
    return head(report.time) << QString() << centred(u"X RAPORU"_s) << centred(notFiscal) << rule()
                             << reportTexts(report.day, report.grandTotal) << foot(report.z, serial);
}

QStringList zReportTexts(const ZReport &report, const QByteArray &serial)
{
    return head(report.time) << QString() << centred(u"GÜNLÜK MALİ Z RAPORU"_s) << rule()
                             << reportTexts(report.day, report.grandTotal) << foot(report.z, serial);
}

} // namespace

QStringList shopHead()
{
    return {centred(u"VELNO MARKET"_s), centred(u"ÇINAR CADDESİ NO: 1"_s), centred(u"KADIKÖY / İSTANBUL"_s),
            centred(u"KADIKÖY V.D. 1234567890"_s)};
}

// A print outlives what it tells of: it has copies, which share the lines.

Print receiptPrint(const Receipt &receipt, const QByteArray &serial)
{
    return {receipt.invoice ? "invoice" : "receipt", receipt.ref.z, receipt.ref.number,
            [receipt, serial] { return closedTexts(receipt, serial); }};
}

Print cancelledPrint(const Receipt &receipt, const QByteArray &serial)
{
    return {"cancelled", receipt.ref.z, receipt.ref.number,
            [receipt, serial] { return cancelledTexts(receipt, serial); }};
}

Print xReportPrint(const ZReport &report, const QByteArray &serial)
{
    return {"x-report", report.z, 0, [report, serial] { return xReportTexts(report, serial); }};
}

Print zReportPrint(const ZReport &report, const QByteArray &serial)
{
    return {"z-report", report.z, 0, [report, serial] { return zReportTexts(report, serial); }};
}

} // namespace Simulator
