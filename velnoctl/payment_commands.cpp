// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/payment_commands.h"

#include "translations/spoken.h"
#include "velnoctl/answers.h"
#include "velnoctl/arguments.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/session.h"
#include "velnoctl/values.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr quint32 onPaper = 0;  // the type that needs a reference
constexpr quint32 archived = 2; // the type for customers without electronic invoices, as anybody is
constexpr int usualMode = 1;
constexpr char anybody[] = "11111111111";

/** The type of a payment, which chooses between two keys of the register. */
int typeOf(Means means)
{
    return means == Means::Cash ? 0 : 1;
}

/** As it is typed; Spoken::tr() says it to people. */
const char *nameOf(Means means)
{
    return means == Means::Cash ? Spoken::later("cash") : Spoken::later("card");
}

VelnoInvoice invoiceFrom(const Arguments &arguments)
{
    VelnoInvoice invoice{};
    const quint32 usualType = arguments.has(Kinds::reference) ? onPaper : archived;
    invoice.invoiceType = arguments.value(Kinds::invoice, usualType);
    invoice.idKind = arguments.value(Kinds::idKind, 0);
    const QByteArray id = arguments.value(Kinds::id, anybody);
    std::ranges::copy(id, invoice.idNumber); // both were measured by their kinds
    const QByteArray reference = arguments.value(Kinds::reference, {});
    std::ranges::copy(reference, invoice.reference);
    invoice.mode = arguments.value(Kinds::mode, usualMode);
    invoice.flag = arguments.value(Kinds::flag, false);
    return invoice;
}

Answer unnamedReceipt()
{
    Answer answer;
    answer.code = WrongUsage;
    answer.text =
        Spoken::tr("RECEIPT is missing, and no sale-state has told one; accepted is 12/1, for example");
    return answer;
}

} // namespace

Answer pay(Session &session, const Arguments &arguments)
{
    const Means means = arguments.value(Kinds::means);
    const qint64 kurus = arguments.value(Kinds::amount);
    const int code = session.device().ask(velnoext_add_payment, typeOf(means), kurus);
    return answer(code, Spoken::tr("payment sent: %1, %2").arg(lira(kurus), Spoken::tr(nameOf(means))),
                  {{u"kurus"_s, kurus}, {u"means"_s, QLatin1StringView(nameOf(means))}});
}

Answer endSale(Session &session, const Arguments &arguments)
{
    const Means means = arguments.value(Kinds::means);
    const int code = session.device().ask(velnoext_end_sale, typeOf(means));
    return answer(code, Spoken::tr("end of the sale sent: %1").arg(Spoken::tr(nameOf(means))),
                  {{u"means"_s, QLatin1StringView(nameOf(means))}});
}

Answer endInvoice(Session &session, const Arguments &arguments)
{
    VelnoInvoice invoice = invoiceFrom(arguments);
    const int code = session.device().ask(velnoext_end_sale_with_invoice, &invoice);
    return answer(code, Spoken::tr("sale ended with an invoice"));
}

Answer cancel(Session &session, const Arguments &)
{
    return answer(session.device().command(velnoext_cancel_sale), Spoken::tr("sale cancelled"));
}

Answer receiptData(Session &session, const Arguments &arguments)
{
    const auto [first, second] = arguments.value(Kinds::receipt, session.remembered().receipt);
    if (!arguments.has(Kinds::receipt) && first == 0 && second == 0)
        return unnamedReceipt();
    VelnoReceiptRef reference{first, second};
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_receipt_data, &reference, &totals);
    const QString name = u"%1/%2"_s.arg(first).arg(second);
    QJsonObject values = totalsValues(totals);
    values.insert(u"receipt"_s, name);
    return answer(code, Spoken::tr("receipt %1: %2").arg(name, totalsText(totals)), values);
}

} // namespace VelnoCtl
