#include "tests/support/recovering_shop.h"

#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

QStringList linesOf(const QSqlDatabase &database, const Entry &entry)
{
    QSqlQuery query(database);
    QStringList lines;
    query.exec(
        u"SELECT name, deleted FROM lines WHERE z = %1 AND number = %2 ORDER BY line"_s.arg(entry.z).arg(
            entry.number));
    while (query.next())
        lines << (query.value(1).toBool() ? u"-"_s : QString()) + query.value(0).toString();
    return lines;
}

QList<Entry> receiptsIn(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    QList<Entry> entries;
    query.exec(u"SELECT z, number, status, total, tax, cash, card, change, items FROM receipts"
               " ORDER BY z, number"_s);
    while (query.next()) {
        Entry entry{query.value(0).toInt(), query.value(1).toInt(), query.value(2).toInt(), {}, {}};
        for (int i = 3; i < 9; ++i)
            entry.totals << query.value(i).toLongLong();
        entry.lines = linesOf(database, entry);
        entries << entry;
    }
    return entries;
}

QList<int> reportsIn(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    QList<int> receipts;
    query.exec(u"SELECT receipts FROM z_reports ORDER BY z"_s);
    while (query.next())
        receipts << query.value(0).toInt();
    return receipts;
}

QString wordFor(SaleStatus status)
{
    return status == SaleOpen        ? u"open"_s
           : status == SaleClosed    ? u"closed"_s
           : status == SaleCancelled ? u"cancelled"_s
                                     : u"doubtful"_s;
}

} // namespace

Shop::Shop()
    : m_port(freePort())
    , reg(m_port, {u"--journal"_s, journal()})
    , sale(std::make_unique<Sale>())
{
    m_place.serial = TestSupport::serial;
    m_place.address = "127.0.0.1";
    m_place.port = m_port;
    m_place.patience = patience;
    m_place.notice = [](void *shop, const char *text) { static_cast<Shop *>(shop)->hear(text); };
    m_place.context = this;
    sale->reg = &m_place;
    sale->note = [](void *shop, SaleStatus status, const VelnoReceiptRef *ref, const VelnoEcrSaleTotals *) {
        return static_cast<Shop *>(shop)->take(status, *ref);
    };
    sale->context = this;
}

Shop::~Shop()
{
    velnoext_close_all();
}

bool Shop::opensWithAKnownReceipt()
{
    const VelnoSaleItem known = item("Gazete", 300);
    const bool sold = opens() && saleStart(sale.get(), 0) == 0 && saleAddItem(sale.get(), &known) == 0 &&
                      saleEnd(sale.get(), 0) == 0;
    m_isKnown = true;
    noted.clear();
    return sold;
}

bool Shop::disturb(const QString &fault, const QByteArray &noticed, const QString &next)
{
    m_awaited = noticed;
    m_noticed = 0;
    m_next = next;
    return reg.setFault(fault);
}

int Shop::pairings() const
{
    return int(std::ranges::count(reg.events(), u"paired"_s,
                                  [](const QJsonObject &event) { return event[u"event"_s].toString(); }));
}

void Shop::close()
{
    reg.say("quit");
    QCOMPARE(reg.waitForExit(), 0);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"audit"_s);
        database.setDatabaseName(journal());
        QVERIFY(database.open());
        receipts = receiptsIn(database).sliced(m_isKnown ? 1 : 0);
        reports = reportsIn(database);
    }
    QSqlDatabase::removeDatabase(u"audit"_s);
}

void Shop::hear(const QByteArray &text)
{
    if (text != m_awaited || ++m_noticed > 1)
        return;
    reg.setFault(u"none"_s);
    if (!m_next.isEmpty())
        reg.setFault(m_next);
}

int Shop::take(SaleStatus status, const VelnoReceiptRef &ref)
{
    if (takesNotes)
        noted << wordFor(status) + u" %1 %2"_s.arg(ref.first).arg(ref.second);
    return takesNotes ? 0 : 1;
}

QList<Entry> Shop::withStatus(int status) const
{
    QList<Entry> entries;
    for (const Entry &entry : receipts)
        if (entry.status == status)
            entries << entry;
    return entries;
}

qint64 told(const VelnoEcrSaleTotals &totals, int index)
{
    return totals.values[index];
}

VelnoSaleItem item(const char *name, long long price, int quantity, signed char section)
{
    VelnoSaleItem made = {};
    qstrncpy(made.name, name, sizeof made.name);
    made.price = price;
    made.quantity = quantity;
    made.section = section;
    return made;
}

} // namespace TestSupport
