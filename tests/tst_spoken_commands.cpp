// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/command_items.h"
#include "simulator/register/command_responder.h"
#include "tests/support/library_test.h"

#include <QHash>
#include <QSet>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;

namespace {

/** What was said: plaintexts, that of the answer empty when there is none. */
struct Exchange
{
    QByteArray request;
    QByteArray answer;
};

/** The simulated register's own pieces behind a connection, which notes what is said. */
class ListeningRegister
{
public:
    explicit ListeningRegister(const QString &fault)
    {
        if (const QString problem = m_faults.switchOn(fault); !fault.isEmpty() && !problem.isEmpty())
            qFatal("%s", qPrintable(problem));
        m_model.setPrinter([](const Simulator::Print &) {});
        m_responder.setKeys(m_device.record);
        m_device.setAnswer([this](const QByteArray &payload) { return answer(payload); });
    }

    HandMadeDevice &device() { return m_device; }

    /** Once nothing more is said. */
    const QList<Exchange> &exchanges()
    {
        m_device.stop();
        return m_exchanges;
    }

private:
    QList<QByteArray> answer(const QByteArray &payload)
    {
        const auto request = m_responder.read(payload);
        if (!request.command)
            return {}; // which ends the connection, and the test with it
        const QByteArray frame = m_responder.answer(request, m_faults).frame;
        m_exchanges << Exchange{m_device.opened(payload), frame.isEmpty() ? frame : m_device.opened(frame)};
        return {frame.isEmpty() ? frame : HandMadeDevice::framed(frame)};
    }

    Simulator::Faults m_faults;
    Simulator::FiscalModel m_model{serial};
    Simulator::CommandResponder m_responder{serial, m_model, m_faults};
    QList<Exchange> m_exchanges;
    HandMadeDevice m_device; // last: its thread uses all others
};

VelnoSaleItem item(long long price)
{
    VelnoSaleItem item{};
    item.price = price;
    item.quantity = 1000;
    item.section = 1;
    qstrcpy(item.name, "Ekmek");
    return item;
}

VelnoInvoice invoice()
{
    VelnoInvoice invoice{};
    qstrcpy(invoice.idNumber, "11111111111");
    qstrcpy(invoice.reference, "ABC2026000000001");
    invoice.mode = 1;
    return invoice;
}

/** Asks all that can be asked, in every way; what comes of it must be all well unless something is wrong. */
class Application
{
public:
    void askEverything()
    {
        askQueries();
        sell();
        sellWithInvoice();
        print();
        check("logout", velnoext_logout(patience));
    }

    QStringList failures;

private:
    void check(const char *call, int code)
    {
        if (code != 0)
            failures << QString::fromLatin1(call) + u": "_s + QString::number(code);
    }

    void askQueries()
    {
        int number = 0;
        long long limit = 0;
        std::array<int, 8> list{};
        int count = int(list.size());
        VelnoSaleItem section = item(1);
        check("login", velnoext_login(patience));
        check("state", velnoext_ecr_state(patience, &number));
        check("paper", velnoext_check_printer_paper(patience));
        check("z", velnoext_current_z(patience, &number));
        check("last z", velnoext_last_z_datetime(patience, &number));
        check("time", velnoext_ecr_datetime(patience, &number));
        check("limit", velnoext_sale_limit(patience, &limit));
        check("acquirers", velnoext_active_acquirers(patience, list.data(), &count));
        check("section", velnoext_section_data(patience, &section));
    }

    void addItems()
    {
        VelnoEcrSaleTotals totals{};
        VelnoSaleItem one = item(1250);
        VelnoSaleItemList list{3, {item(100), item(200), item(300)}};
        check("item", velnoext_add_sale_item(patience, &one, &totals));
        check("items", velnoext_add_multiple_sale_items(patience, &list, &totals));
        check("delete", velnoext_delete_sale_item(patience, 1, &totals));
        check("delete last", velnoext_delete_last_sale_item(patience, &totals));
        check("contribution", velnoext_add_medical_contribution(patience, 100, 11111111111));
        check("no contribution", velnoext_add_medical_contribution(patience, 0, 0));
    }

    void askForSale()
    {
        int number = 0;
        std::array<int, 8> list{};
        int count = int(list.size());
        VelnoEcrSaleTotals totals{};
        check("open state", velnoext_ecr_state(patience, &number));
        check("sale", velnoext_sale_state(patience, &number, &totals, &m_receipt));
        check("acquirers of sale", velnoext_acquirers_of_sale(patience, list.data(), &count));
    }

    void sell()
    {
        VelnoEcrSaleTotals totals{};
        check("start", velnoext_start_sale(patience));
        check("cancel", velnoext_cancel_sale(patience));
        check("start again", velnoext_start_sale(patience));
        addItems();
        askForSale();
        check("payment", velnoext_add_payment(1, 100));
        check("end", velnoext_end_sale(0));
        check("receipt", velnoext_receipt_data(patience, &m_receipt, &totals));
    }

    void sellWithInvoice()
    {
        VelnoEcrSaleTotals totals{};
        VelnoSaleItem one = item(1250);
        VelnoInvoice paper = invoice();
        check("start with invoice", velnoext_start_sale_with_invoice(patience));
        check("item", velnoext_add_sale_item(patience, &one, &totals));
        check("invoice", velnoext_end_sale_with_invoice(&paper));
    }

    void print()
    {
        VelnoTextStyle style{1, 1, 0};
        check("encoding", velnoext_printer_set_encoding("UTF-8"));
        check("text", velnoext_printer_add_text("Merhaba", &style));
        check("slip", velnoext_print_slip(patience, true));
        check("empty slip", velnoext_print_slip(patience, false));
        check("x", velnoext_x_report());
        check("z report", velnoext_z_report());
    }

    VelnoReceiptRef m_receipt{1, 1};
};

/** The items, when they are all that there is. */
std::optional<Items> whole(std::span<const ItemRow> rows, QByteArrayView run)
{
    auto items = takeItems(rows, &run);
    return run.isEmpty() ? items : std::nullopt;
}

/** @param variants  per code which items were there and which were not */
void checkIsInTheTable(const Exchange &said, QHash<int, QSet<QString>> *variants)
{
    QByteArrayView rest = said.request;
    const CommandForm *const form = commandForm(takeCode(&rest).value_or(-1));
    QVERIFY2(form, said.request.toHex());
    const auto items = whole(form->request, rest);
    QVERIFY2(items, said.request.toHex());
    const bool isAnswered = !items->has("answer-wanted") || items->flag("answer-wanted");
    QCOMPARE(said.answer.isEmpty(), !isAnswered);
    const auto told = isAnswered ? whole(form->answer, said.answer) : Items();
    QVERIFY2(told, said.request.toHex() + ' ' + said.answer.toHex());
    for (const ItemRow &row : form->request)
        (*variants)[form->code] << (items->has(row.name) ? u"with "_s : u"without "_s) +
                                       QLatin1StringView(row.name);
    for (const ItemRow &row : form->answer)
        (*variants)[form->code] << (told->has(row.name) ? u"told "_s : u"not told "_s) +
                                       QLatin1StringView(row.name);
}

void checkIsComplete(const QHash<int, QSet<QString>> &variants)
{
    for (const CommandForm &form : commandForms())
        QVERIFY2(variants.contains(form.code), form.name);
    QVERIFY(variants[0].contains({u"told error"_s, u"not told error"_s}));
    QVERIFY(variants[3].contains({u"told error"_s, u"not told state"_s}));
    QVERIFY(variants[5].contains({u"with index"_s, u"without index"_s}));
    QVERIFY(variants[9].contains({u"with identity"_s, u"without identity"_s}));
}

} // namespace

/** The real library and the real register's inside in one process: all that they say is what the table says.
 */
class TestSpokenCommands : public LibraryTest
{
    Q_OBJECT

private slots:
    void everythingSaidIsInTheTable_data();
    void everythingSaidIsInTheTable();
};

void TestSpokenCommands::everythingSaidIsInTheTable_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("honest") << QString();
    for (const QString &name : Simulator::commandNames(true))
        QTest::addRow("no to %s", qPrintable(name)) << u"refuse="_s + name;
    for (const char *const fault : {"error=64", "sale-limit", "state=1", "state=5", "state=2"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void TestSpokenCommands::everythingSaidIsInTheTable()
{
    QFETCH(const QString, fault);
    ListeningRegister reg(fault);
    QCOMPARE(connectPaired(reg.device()), 0);
    Application application;
    application.askEverything();
    velnoext_close();
    QCOMPARE(application.failures.isEmpty(), fault.isEmpty());
    QHash<int, QSet<QString>> variants;
    for (const Exchange &said : reg.exchanges())
        checkIsInTheTable(said, &variants);
    if (fault.isEmpty())
        checkIsComplete(variants);
}

QTEST_GUILESS_MAIN(TestSpokenCommands)
#include "tst_spoken_commands.moc"
