// SPDX-License-Identifier: Apache-2.0

#include "tests/support/counting_disk.h"
#include "tests/support/open_ledger.h"
#include "tests/support/run_sql.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace TestSupport;

/** What a ledger asks of its disk, and what it does when that fails. */
class TestLedgerDisk : public QObject
{
    Q_OBJECT

private slots:
    void aFlushIsPaidForOnceAndOnlyWhereWanted();
    void aFullDiskTakesNothingAway_data();
    void aFullDiskTakesNothingAway();
    void afterAFailedFlushTheLogBeginsAnew();
    void damagedPagesAreNoCrash_data();
    void damagedPagesAreNoCrash();
    void tornFilesAreRefusedAndStay();
    void wrongNumbersStopIt_data();
    void wrongNumbersStopIt();
    void anUnreadableLedgerTakesNoChange();

private:
    QTemporaryDir m_folder{folderInMemory()};
};

namespace {

LedgerPlace placeOn(const CountingDisk &disk, const QTemporaryDir &folder)
{
    static int files = 0;
    return {folder.filePath(QString::number(++files) + u" % ? # ü"_s), "UB1234567890", disk.name()};
}

/** A ledger with some orders in it. */
void fill(OpenLedger &ledger)
{
    QVERIFY(ledger.trouble.isEmpty());
    QVERIFY(ledger.enter(ledger.add(u"closed"_s), {1, 1}, Fate::Closed, State::Closed));
    QVERIFY(ledger.enter(ledger.add(u"open"_s), {1, 2}, Fate::Open));
}

/** All that it holds, in words. */
QStringList contents(const Ledger &ledger)
{
    QStringList words;
    for (int number = 1; const auto order = ledger.at(number); ++number) {
        words << u"%1 %2 %3.%4 %5"_s.arg(order->key)
                     .arg(int(order->state))
                     .arg(order->reference.first)
                     .arg(order->reference.second)
                     .arg(order->changedAt.toMSecsSinceEpoch());
        for (const Event &event : ledger.history(number))
            words << event.text + QString::number(int(event.state));
        for (const Attempt &attempt : ledger.attempts(number))
            words << u"%1 %2.%3 %4"_s.arg(attempt.era)
                         .arg(attempt.reference.first)
                         .arg(attempt.reference.second)
                         .arg(int(attempt.fate));
    }
    words << u"closed %1.%2"_s.arg(ledger.lastClosed().first).arg(ledger.lastClosed().second);
    words << u"highest %1.%2"_s.arg(ledger.highest().first).arg(ledger.highest().second);
    words << u"doubts %1, era %2"_s.arg(ledger.doubts().size()).arg(ledger.era());
    return words;
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

using ChangeOf = std::function<bool(OpenLedger &)>;

} // namespace

void TestLedgerDisk::aFlushIsPaidForOnceAndOnlyWhereWanted()
{
    CountingDisk disk;
    OpenLedger ledger(placeOn(disk, m_folder));
    fill(ledger);
    const auto flushesOf = [&](const ChangeOf &change) {
        disk.flushes = 0;
        return change(ledger) ? disk.flushes : -1;
    };
    Order order;
    order.key = u"key"_s;
    QCOMPARE(flushesOf([&](auto &l) { return l.accept(&order, {}); }), 1);
    order.state = State::Open;
    for (const Durability durability :
         {Durability::Written, Durability::Flushed, Durability::Flushed, Durability::Written}) {
        ledger.note({order.number, {1, 3}, 1, Fate::Open});
        QCOMPARE(flushesOf([&](auto &l) { return l.save(order, {}, durability); }),
                 durability == Durability::Flushed ? 1 : 0);
    }
    Order lazy;
    lazy.key = u"lazy"_s;
    QCOMPARE(flushesOf([&](auto &l) { return l.accept(&lazy, {}, Durability::Written); }), 0);
    QCOMPARE(flushesOf([](auto &l) { return l.beginEra(); }), 1);
    QCOMPARE(flushesOf([](auto &l) { return l.prune(moment(100)) == 1; }), 1);
    QCOMPARE(flushesOf([](auto &l) { return l.list({State::Open}).size() == 2; }), 0);
}

void TestLedgerDisk::aFullDiskTakesNothingAway_data()
{
    QTest::addColumn<ChangeOf>("change");
    QTest::newRow("accept") << ChangeOf([](OpenLedger &l) {
        Order order;
        order.key = u"key"_s;
        order.content = R"({"text":")"_ba + QByteArray(9000, 'x') + R"("})"_ba;
        return l.accept(&order, {}) || order.number != 0;
    });
    for (const Durability durability : {Durability::Flushed, Durability::Written})
        QTest::newRow(durability == Durability::Flushed ? "save, flushed" : "save, written")
            << ChangeOf([durability](OpenLedger &l) {
                   const Order order = *l.find(u"open"_s);
                   l.note({order.number, {2, 1}, 1, Fate::Closed});
                   l.note({order.number, {1, 2}, 1, Fate::ProbablyCancelled});
                   return l.save(order, {moment(7), State::Open, 0, 0, u"saved"_s, {}}, durability);
               });
    QTest::newRow("another era") << ChangeOf([](OpenLedger &l) { return l.beginEra(); });
    QTest::newRow("prune") << ChangeOf([](OpenLedger &l) { return l.prune(moment(100)) != -1; });
}

void TestLedgerDisk::aFullDiskTakesNothingAway()
{
    QFETCH(const ChangeOf, change);
    bool isDone = false;
    int failures = 0;
    for (; !isDone; ++failures) {
        CountingDisk disk;
        const LedgerPlace place = placeOn(disk, m_folder);
        QStringList before;
        {
            OpenLedger ledger(place);
            fill(ledger);
            before = contents(ledger);
            disk.writesLeft = failures;
            isDone = change(ledger);
            if (!isDone)
                QCOMPARE(ledger.problem(), u"the ledger cannot be written: the disk is full"_s);
            disk.writesLeft = -1;
            QCOMPARE(contents(ledger) == before, !isDone);
        }
        OpenLedger ledger(place);
        QCOMPARE(ledger.trouble, QString());
        QCOMPARE(contents(ledger) == before, !isDone);
        QVERIFY(isDone || change(ledger));
    }
    QVERIFY2(failures > 2, qPrintable(QString::number(failures)));
}

void TestLedgerDisk::afterAFailedFlushTheLogBeginsAnew()
{
    CountingDisk disk;
    const LedgerPlace place = placeOn(disk, m_folder);
    OpenLedger ledger(place);
    fill(ledger);
    QVERIFY(!bytesOf(place.file + u"-wal"_s).isEmpty());
    const QStringList before = contents(ledger);
    Order order;
    order.key = u"key"_s;
    disk.flushesLeft = 0;
    QVERIFY(!ledger.accept(&order, {}));
    QVERIFY2(ledger.problem().startsWith(u"the ledger cannot be written: the disk fails ("_s),
             qPrintable(ledger.problem()));
    QCOMPARE(contents(ledger), before);
    QVERIFY(!ledger.put(*ledger.find(u"open"_s), State::Waiting)); // though it needs no flush itself
    QCOMPARE(contents(ledger), before);
    disk.flushesLeft = -1;
    disk.flushes = 0;
    QVERIFY(ledger.put(*ledger.find(u"open"_s), State::Waiting));
    QVERIFY(disk.flushes >= 2); // the log, the database
    // As after a cut of the power that leaves nothing of a log which was not flushed.
    const QString copy = place.file + u" copy"_s;
    QVERIFY(write(copy, bytesOf(place.file)));
    OpenLedger left({copy, place.serial, {}});
    QCOMPARE(left.trouble, QString());
    QCOMPARE(contents(left), before);
}

void TestLedgerDisk::damagedPagesAreNoCrash_data()
{
    QTest::addColumn<char>("byte");
    QTest::newRow("zeros") << '\0';
    QTest::newRow("ones") << '\xFF';
    QTest::newRow("text") << 'a';
}

void TestLedgerDisk::damagedPagesAreNoCrash()
{
    QFETCH(const char, byte);
    const LedgerPlace place{m_folder.filePath(u"damaged"_s), "UB1234567890", {}};
    QFile::remove(place.file);
    {
        OpenLedger ledger(place);
        fill(ledger);
    }
    const QByteArray whole = bytesOf(place.file);
    constexpr int piece = 512;
    int refused = 0;
    for (int offset = 0; offset < whole.size(); offset += piece) {
        QVERIFY(write(place.file, QByteArray(whole).replace(offset, piece, QByteArray(piece, byte))));
        OpenLedger ledger(place);
        const bool isRead = contents(ledger).size() > 3 && ledger.problem().isEmpty();
        const bool isWritten = ledger.add(u"key"_s).number != 0;
        QVERIFY(ledger.trouble.isEmpty() || !isWritten);
        QVERIFY(isWritten || !ledger.problem().isEmpty());
        refused += !isRead || !isWritten;
        ledger.prune(moment(100));
    }
    QVERIFY(refused > 5);
}

void TestLedgerDisk::tornFilesAreRefusedAndStay()
{
    const LedgerPlace place{m_folder.filePath(u"torn"_s), "UB1234567890", {}};
    {
        OpenLedger ledger(place);
        fill(ledger);
    }
    const QByteArray whole = bytesOf(place.file);
    for (qsizetype size = 1; size < whole.size(); size = size < 512 ? size * 2 : size + 512) {
        const QByteArray torn = whole.first(size);
        QVERIFY(write(place.file, torn));
        const QString trouble = OpenLedger(place).trouble;
        QVERIFY2(trouble.contains(u"it is damaged"_s) || trouble.contains(u"it is no ledger"_s),
                 qPrintable(trouble + QString::number(size)));
        QCOMPARE(bytesOf(place.file), torn);
    }
    QVERIFY(write(place.file, {}));
    QVERIFY(write(place.file + u"-wal"_s, "what is left"));
    const QString trouble = OpenLedger(place).trouble;
    QVERIFY2(trouble.contains(u"it is damaged"_s), qPrintable(trouble));
    QCOMPARE(bytesOf(place.file + u"-wal"_s), "what is left");
}

void TestLedgerDisk::wrongNumbersStopIt_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("opens"); // it shows when it is asked for
    const auto order = [](const char *name, const char *value) {
        QTest::addRow("%s %s", name, value) << u"UPDATE orders SET %1 = %2 WHERE number = 1"_s.arg(
                                                   QLatin1StringView(name), QLatin1StringView(value))
                                            << true;
    };
    for (const char *name : {"state", "kind", "question", "answer", "paper", "payment_sent", "is_sent"}) {
        order(name, "-1");
        order(name, "77");
        order(name, "4294967296");
        order(name, "'many'");
    }
    order("first", "2147483648");
    order("code", "1e300");
    order("code", "1.5");
    order("code", "x'31'");
    order("z", "'1,2'");
    order("z", "''");
    order("changed_at", "'yesterday'");
    order("content", "'[1]'");
    order("content", "'{'");
    order("content", "x'00'");
    order("key", "''");
    QTest::newRow("event") << u"UPDATE history SET state = 7"_s << true;
    QTest::newRow("fate") << u"UPDATE attempts SET fate = 5"_s << false;
    QTest::newRow("order of an attempt") << u"UPDATE attempts SET order_number = 0"_s << false;
    QTest::newRow("era 0") << u"UPDATE register SET era = 0"_s << false;
    QTest::newRow("era no number") << u"UPDATE register SET era = 'first'"_s << false;
    QTest::newRow("no register") << u"DELETE FROM register"_s << false;
    QTest::newRow("doubt of nobody") << u"UPDATE attempts SET fate = 3, order_number = -1"_s << false;
    for (const char *table : {"register", "orders", "attempts"})
        QTest::addRow("no table %s", table) << u"DROP TABLE "_s + QLatin1StringView(table) << false;
    QTest::newRow("no history") << u"DROP TABLE history"_s << true;
}

void TestLedgerDisk::wrongNumbersStopIt()
{
    QFETCH(const QString, change);
    QFETCH(const bool, opens);
    const LedgerPlace place{m_folder.filePath(u"wrong"_s), "UB1234567890", {}};
    QFile::remove(place.file);
    {
        OpenLedger ledger(place);
        fill(ledger);
    }
    QVERIFY(runSql(QFile::encodeName(place.file), change.toUtf8()));
    OpenLedger ledger(place);
    QCOMPARE(ledger.trouble.isEmpty(), opens);
    if (!opens) {
        QVERIFY2(ledger.trouble.contains(u"cannot be used: it is damaged"_s), qPrintable(ledger.trouble));
        return;
    }
    contents(ledger);
    for (const QString &key : {u"closed"_s, u"open"_s})
        ledger.find(key);
    ledger.attempts(0);
    QVERIFY2(ledger.problem().startsWith(u"the ledger cannot be read: it is damaged"_s),
             qPrintable(ledger.problem()));
    QCOMPARE(ledger.add(u"key"_s).number, 0);
    QVERIFY(!ledger.beginEra());
}

void TestLedgerDisk::anUnreadableLedgerTakesNoChange()
{
    Ledger ledger;
    QVERIFY(!ledger.find(u"key"_s));
    QCOMPARE(ledger.problem(), u"the ledger cannot be read: it is not open"_s);
    Order order;
    QVERIFY(!ledger.accept(&order, {}));
    QVERIFY(!ledger.save(order, {}, Durability::Written));
    QCOMPARE(ledger.prune(moment(1)), -1);
    QCOMPARE(ledger.list({State::Open}).size(), 0);
    QCOMPARE(ledger.problem(), u"the ledger cannot be read: it is not open"_s);
    QVERIFY(!ledger.open({m_folder.path(), "UB1234567890", {}}).isEmpty());
    QVERIFY(!ledger.beginEra());
    QCOMPARE(ledger.open({m_folder.filePath(u"later"_s), "UB1234567890", {}}), QString());
    QVERIFY(ledger.beginEra());
}

QTEST_GUILESS_MAIN(TestLedgerDisk)
#include "tst_ledger_disk.moc"
