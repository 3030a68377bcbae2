#include "velnoctl/payment_commands.h"

#include "velnoctl/answers.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/numbers.h"
#include "velnoctl/session.h"
#include "velnoctl/values.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

enum InvoiceArgument : qsizetype { Type, Kind, Id, Reference, Mode, Flag };

constexpr quint32 onPaper = 0;  // the type that needs a reference
constexpr quint32 archived = 2; // the one for customers who take part in nothing electronic, as anybody does
constexpr int usualMode = 1;
constexpr char anybody[] = "11111111111";

/** The type of a payment, which chooses between two keys of the register. */
int typeOf(const QString &means)
{
    return means == "cash"_L1 ? 0 : 1;
}

VelnoInvoice invoiceFrom(const QStringList &arguments)
{
    VelnoInvoice invoice{};
    const quint32 usualType = arguments.at(Reference).isNull() ? archived : onPaper;
    invoice.invoiceType = numberFrom<quint32>(arguments.at(Type)).value_or(usualType);
    invoice.idKind = numberFrom<quint32>(arguments.at(Kind)).value_or(0);
    const QByteArray id = arguments.at(Id).isNull() ? anybody : arguments.at(Id).toUtf8();
    std::copy(id.begin(), id.end(), invoice.idNumber); // both were measured by their kinds
    const QByteArray reference = arguments.at(Reference).toUtf8();
    std::copy(reference.begin(), reference.end(), invoice.reference);
    invoice.mode = numberFrom<int>(arguments.at(Mode)).value_or(usualMode);
    invoice.flag = arguments.at(Flag) == "yes"_L1;
    return invoice;
}

Answer unnamedReceipt()
{
    Answer answer;
    answer.code = WrongUsage;
    answer.text = u"RECEIPT is missing, and no sale-state has told one; accepted is 12/1, for example"_s;
    return answer;
}

} // namespace

Answer pay(Session &session, const QStringList &arguments)
{
    const QString &means = arguments.at(0);
    const qint64 kurus = kurusFrom(arguments.at(1)).value_or(0);
    const int code = session.device().ask(velnoext_add_payment, typeOf(means), kurus);
    return answer(code, u"payment sent: %1, %2"_s.arg(lira(kurus), means),
                  {{u"kurus"_s, kurus}, {u"means"_s, means}});
}

Answer endSale(Session &session, const QStringList &arguments)
{
    const QString &means = arguments.first();
    const int code = session.device().ask(velnoext_end_sale, typeOf(means));
    return answer(code, u"end of the sale sent: %1"_s.arg(means), {{u"means"_s, means}});
}

Answer endInvoice(Session &session, const QStringList &arguments)
{
    VelnoInvoice invoice = invoiceFrom(arguments);
    const int code = session.device().ask(velnoext_end_sale_with_invoice, &invoice);
    return answer(code, u"sale ended with an invoice"_s);
}

Answer cancel(Session &session, const QStringList &)
{
    return answer(session.device().command(velnoext_cancel_sale), u"sale cancelled"_s);
}

Answer receipt(Session &session, const QStringList &arguments)
{
    const auto [first, second] = pairFrom(arguments.first()).value_or(session.remembered().receipt);
    if (arguments.first().isNull() && first == 0 && second == 0)
        return unnamedReceipt();
    VelnoReceiptRef reference{first, second};
    VelnoEcrSaleTotals totals{};
    const int code = session.device().command(velnoext_receipt_data, &reference, &totals);
    const QString name = u"%1/%2"_s.arg(first).arg(second);
    QJsonObject values = totalsValues(totals);
    values.insert(u"receipt"_s, name);
    return answer(code, u"receipt %1: %2"_s.arg(name, totalsText(totals)), values);
}

} // namespace VelnoCtl
