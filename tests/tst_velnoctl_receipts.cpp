// SPDX-License-Identifier: Apache-2.0

#include "tests/support/simulated_register.h"
#include "tests/support/velnoctl_client.h"

#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** Whole receipts through velnoctl, against the real velno-register. */
class TestVelnoctlReceipts : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void receiptIsSoldOnceHoweverOftenItIsHandedOver();
    void jsonTellsTheOrder();
    void keyOfItsOwnIsToldInFront();
    void otherContentIsAConflict();
    void faultsAreAllToldAndNothingIsSold();
    void unreadableFiles_data();
    void unreadableFiles();
    void waitingReceiptGoesOn();
    void refusedReceiptSellsNothing();
    void personAnswers();
    void answersNeedAQuestion_data();
    void answersNeedAQuestion();
    void progressIsToldInBothLanguages();
    void interruptedReceiptIsUntouched();
    void ledgerIsTheRegistersOwn();
    void unusableLedger();
    void commandsBesideIt();

private:
    QString file(const QByteArray &content) const { return fileWith(m_folder, content); }
    QStringList till(quint16 port, const QStringList &options = {}) const;

    QTemporaryDir m_folder;
    int m_ledgers = 0;
};

namespace {

const QByteArray aReceipt =
    R"({"items":[{"name":"Ekmek","price":"12.50","section":1}],"payments":[{"cash":"20.00"}]})";
const QByteArray aCardReceipt =
    R"({"items":[{"name":"Ekmek","price":"12.50","section":1}],"payments":[{"card":"rest"}]})";

QJsonObject orderOf(const QByteArray &out)
{
    return object(out).value(u"order"_s).toObject();
}

} // namespace

/** A ledger of its own for each test. */
void TestVelnoctlReceipts::init()
{
    ++m_ledgers;
}

QStringList TestVelnoctlReceipts::till(quint16 port, const QStringList &options) const
{
    return target(port) + options +
           QStringList{u"--ledger"_s, m_folder.filePath(u"%1.ledger"_s.arg(m_ledgers))};
}

void TestVelnoctlReceipts::receiptIsSoldOnceHoweverOftenItIsHandedOver()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    const QStringList command = till(port) + QStringList{u"receipt"_s, file(aReceipt), u"key=4711"_s};
    const QByteArray sold =
        "Receipt 1 of Z 1 is closed: total 12.50 TL, cash 20.00 TL, card 0.00 TL, change 7.50 TL.\n";
    for (int i = 0; i < 2; ++i) {
        Client client(command);
        QVERIFY2(client.exitCode() == 0, client.err.constData());
        QCOMPARE(client.out, sold);
        QCOMPARE(client.err.contains("cash payment under way\n"), i == 0);
    }
    Client twice(till(port) + QStringList{u"receipt"_s, file(aReceipt), u"key=4712"_s, u"receipt"_s,
                                          file(aReceipt), u"key=4712"_s, u"receipts"_s});
    QVERIFY2(twice.exitCode() == 0, twice.err.constData());
    const QByteArray second = QByteArray(sold).replace("Receipt 1", "Receipt 2");
    QCOMPARE(twice.out,
             second + second + "4711: receipt, closed: " + sold + "4712: receipt, closed: " + second);
}

void TestVelnoctlReceipts::jsonTellsTheOrder()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    const QString path = file(aReceipt);
    Client selling(till(port, {u"--json"_s}) + QStringList{u"receipt"_s, path, u"key=4711"_s});
    QVERIFY2(selling.exitCode() == 0, selling.err.constData());
    const QJsonObject order = orderOf(selling.out);
    QCOMPARE(object(selling.out).value(u"code"_s).toInt(-1), 0);
    QCOMPARE(order.value(u"key"_s).toString(), u"4711"_s);
    QCOMPARE(order.value(u"state"_s).toString(), u"closed"_s);
    QCOMPARE(order.value(u"reference"_s).toObject(), (QJsonObject{{u"z"_s, 1}, {u"number"_s, 1}}));
    QCOMPARE(order.value(u"totals"_s).toObject().value(u"change"_s).toString(), u"7.50"_s);
    Client listing(till(port, {u"--json"_s}) + QStringList{u"receipts"_s});
    QCOMPARE(listing.exitCode(), 0);
    QCOMPARE(object(listing.out).value(u"orders"_s).toArray(), QJsonArray{order});
    Client showing(till(port) + QStringList{u"receipts"_s, u"key=4711"_s});
    QCOMPARE(showing.exitCode(), 0);
    QVERIFY2(showing.out.contains(" accepted: accepted\n") && showing.out.contains(" closed: closed\n"),
             showing.out.constData());
    Client unknown(till(port, {u"--json"_s}) + QStringList{u"receipts"_s, u"key=4713"_s});
    QCOMPARE(unknown.exitCode(), 34);
    QCOMPARE(object(unknown.out).value(u"result"_s).toString(), u"unknown-key"_s);
}

void TestVelnoctlReceipts::keyOfItsOwnIsToldInFront()
{
    const quint16 port = freePort();
    const QString path = file(aReceipt);
    Client first(till(port) + QStringList{u"receipt"_s, path}); // there is no register yet
    QVERIFY(first.told("\nthe register is being connected\n"));
    const QByteArray key =
        first.err.left(first.err.indexOf("\nthe register")).mid(first.err.indexOf("key: ") + 5);
    QCOMPARE(key.size(), 36);
    const SimulatedRegister reg(port);
    QVERIFY2(first.exitCode() == 0, first.err.constData());
    Client again(till(port) + QStringList{u"receipt"_s, path, u"key="_s + QString::fromLatin1(key)});
    QCOMPARE(again.exitCode(), 0);
    QCOMPARE(again.out, first.out);
    Client other(till(port) + QStringList{u"receipt"_s, path});
    QCOMPARE(other.exitCode(), 0);
    QVERIFY2(other.out.startsWith("Receipt 2 of Z 1 "), other.out.constData()); // another key, another sale
}

void TestVelnoctlReceipts::otherContentIsAConflict()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    Client first(till(port) + QStringList{u"receipt"_s, file(aReceipt), u"key=4711"_s});
    QCOMPARE(first.exitCode(), 0);
    Client second(till(port, {u"--json"_s}) + QStringList{u"receipt"_s, file(aCardReceipt), u"key=4711"_s});
    QCOMPARE(second.exitCode(), 32);
    QVERIFY2(second.err.contains("velnoctl: receipt: payments[0]"), second.err.constData());
    QCOMPARE(object(second.out).value(u"result"_s).toString(), u"conflict"_s);
    QCOMPARE(object(second.out).value(u"code"_s).toInt(), 32);
}

void TestVelnoctlReceipts::faultsAreAllToldAndNothingIsSold()
{
    Device device;
    device.meet();
    const QString path =
        file(R"({"items":[{"name":"Ekmek","price":12.5,"section":9}],"payments":[{"cash":"rest"}]})");
    Client client(till(device.port) + QStringList{u"receipt"_s, path, u"key=4711"_s});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains("velnoctl: receipt: " + path.toUtf8()), client.err.constData());
    QVERIFY(client.err.contains("\nitems[0].price: ") && client.err.contains("\nitems[0].section: 9;"));
    QVERIFY(device.announcement.isEmpty());
    Client listing(till(device.port) + QStringList{u"receipts"_s});
    QCOMPARE(listing.exitCode(), 0);
    QCOMPARE(listing.out, "no receipts\n");
}

void TestVelnoctlReceipts::unreadableFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("content"); // of a file that is made; none: none is
    QTest::newRow("none") << u"/nowhere/sale.json"_s << QByteArray();
    QTest::newRow("folder") << u"/"_s << QByteArray();
    QTest::newRow("a zero within") << QString() << aReceipt + '\0';
    QTest::newRow("no JSON") << QString() << QByteArray("items");
    QTest::newRow("too large") << QString() << QByteArray(2'000'000, ' ') + aReceipt;
}

void TestVelnoctlReceipts::unreadableFiles()
{
    QFETCH(const QString, path);
    QFETCH(const QByteArray, content);
    const QString name = path.isEmpty() ? file(content) : path;
    Client client(till(freePort()) + QStringList{u"receipt"_s, name});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains("velnoctl: receipt: " + name.toUtf8() + ':'), client.err.constData());
    QVERIFY(!QFile::exists(m_folder.filePath(u"%1.ledger"_s.arg(m_ledgers))));
}

void TestVelnoctlReceipts::waitingReceiptGoesOn()
{
    const quint16 port = freePort();
    const QStringList command{u"receipt"_s, file(aReceipt), u"key=4711"_s};
    Client away(till(port, {u"--json"_s, u"--timeout"_s, u"100"_s}) + command);
    QCOMPARE(away.exitCode(), 25);
    QCOMPARE(object(away.out).value(u"result"_s).toString(), u"waiting"_s);
    QVERIFY2(away.err.contains("(nobody-connected, 2: 1007)"), away.err.constData());
    const SimulatedRegister reg(port);
    Client back(till(port) + command);
    QVERIFY2(back.exitCode() == 0, back.err.constData());
    QVERIFY(back.out.startsWith("Receipt 1 of Z 1 is closed"));
}

void TestVelnoctlReceipts::refusedReceiptSellsNothing()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port, {u"--sale-limit"_s, u"1000"_s});
    Client client(till(port) + QStringList{u"receipt"_s, file(aReceipt), u"key=4711"_s});
    QCOMPARE(client.exitCode(), 24);
    QVERIFY2(client.err.contains("velnoctl: receipt: The register refuses it: nothing has been sold. "
                                 "(register-over-limit, 8: 10004)\n"),
             client.err.constData());
    QCOMPARE(client.out, QByteArray());
}

/** Its power was cut when a card had been charged: the sale is cancelled, and the money is a person's
 * business. */
void TestVelnoctlReceipts::personAnswers()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    const QByteArray cut = R"({"items":[{"name":"!power-cut=change-state","price":"12.50","section":1}],)"
                           R"("payments":[{"card":"5.00"},{"cash":"rest"}]})";
    const QStringList command{u"receipt"_s, file(cut), u"key=4711"_s};
    Client asking(till(port) + command);
    QCOMPARE(asking.exitCode(), 26);
    QVERIFY2(asking.err.contains("\nsell-again: "), asking.err.constData());
    Client again(till(port) + command);
    QCOMPARE(again.exitCode(), 26); // it is asked, and not sold
    Client answering(till(port, {u"--json"_s}) +
                     QStringList{u"receipt-answer"_s, u"4711"_s, u"drop"_s, u"person=Ayşe"_s});
    QCOMPARE(answering.exitCode(), 23);
    const QJsonArray history = orderOf(answering.out).value(u"history"_s).toArray();
    QVERIFY(std::any_of(history.cbegin(), history.cend(), [](const QJsonValue &line) {
        return line.toObject().value(u"person"_s) == u"Ayşe"_s;
    }));
    Client late(till(port) + QStringList{u"receipt-answer"_s, u"4711"_s, u"paid"_s});
    QCOMPARE(late.exitCode(), 35);
}

void TestVelnoctlReceipts::answersNeedAQuestion_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::newRow("unknown key") << QStringList{u"4711"_s, u"drop"_s} << 34;
    QTest::newRow("no answer") << QStringList{u"4711"_s} << 64;
    QTest::newRow("another answer") << QStringList{u"4711"_s, u"maybe"_s} << 64;
    QTest::newRow("none is no answer") << QStringList{u"4711"_s, u"none"_s} << 64;
    QTest::newRow("bad key") << QStringList{u"a\nb"_s, u"drop"_s} << 64;
    QTest::newRow("bad person") << QStringList{u"4711"_s, u"drop"_s, u"person=a\tb"_s} << 64;
}

void TestVelnoctlReceipts::answersNeedAQuestion()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const int, code);
    Client client(till(freePort()) + QStringList{u"receipt-answer"_s} + arguments);
    QCOMPARE(client.exitCode(), code);
    QVERIFY(client.err.contains("velnoctl: receipt-answer: "));
}

void TestVelnoctlReceipts::progressIsToldInBothLanguages()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    Client english(till(port) + QStringList{u"receipt"_s, file(aCardReceipt), u"key=1"_s});
    QCOMPARE(english.exitCode(), 0);
    QVERIFY2(english.err.contains("\ncard payment under way\n"), english.err.constData());
    Client turkish(till(port, {u"--language"_s, u"tr"_s}) +
                   QStringList{u"receipt"_s, file(aCardReceipt), u"key=2"_s});
    QCOMPARE(turkish.exitCode(), 0);
    QVERIFY2(turkish.err.contains("\nkartla ödeme alınıyor\n"), turkish.err.constData());
    QVERIFY2(turkish.out.startsWith("Z 1, fiş 2 kapandı: toplam 12.50 TL"), turkish.out.constData());
}

void TestVelnoctlReceipts::interruptedReceiptIsUntouched()
{
    const quint16 port = freePort();
    const QStringList command{u"receipt"_s, file(aReceipt), u"key=4711"_s};
    Client interrupted(till(port, {u"--timeout"_s, u"4294967295"_s}) + command);
    QVERIFY(interrupted.told("the register is being connected\n"));
    interrupted.raise(SIGINT);
    QCOMPARE(interrupted.exitCode(), 130);
    QVERIFY2(interrupted.err.contains("velnoctl: receipt: interrupted while it was under way; hand it over "
                                      "again under the key 4711, and it goes on\n"),
             interrupted.err.constData());
    const SimulatedRegister reg(port);
    Client again(till(port) + command);
    QVERIFY2(again.exitCode() == 0, again.err.constData());
}

void TestVelnoctlReceipts::ledgerIsTheRegistersOwn()
{
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    Client client(target(freePort()) + QStringList{u"receipts"_s});
    qunsetenv("XDG_DATA_HOME");
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QVERIFY(QFile::exists(home.filePath(u"velno/UB1234567890.ledger"_s)));
}

void TestVelnoctlReceipts::unusableLedger()
{
    Client client(target(freePort()) +
                  QStringList{u"--json"_s, u"--ledger"_s, m_folder.path(), u"receipts"_s});
    QCOMPARE(client.exitCode(), 33);
    QCOMPARE(object(client.out).value(u"result"_s).toString(), u"ledger-failed"_s);
    QVERIFY2(client.err.contains(m_folder.path().toUtf8()), client.err.constData());
}

/** The connection passes from a command to the till and back, with the keys. */
void TestVelnoctlReceipts::commandsBesideIt()
{
    const quint16 port = freePort();
    const SimulatedRegister reg(port);
    Client client(till(port) + QStringList{u"state"_s, u"receipt"_s, file(aReceipt), u"key=1"_s, u"state"_s,
                                           u"receipt-data"_s, u"1/1"_s});
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QVERIFY2(client.out.startsWith("state 1 (idle)\nReceipt 1 of Z 1 is closed") &&
                 client.out.contains("\nstate 1 (idle)\nreceipt 1/1: total 12.50 TL"),
             client.out.constData());
    QCOMPARE(client.err.count("(it is paired first"), 1);
}

QTEST_GUILESS_MAIN(TestVelnoctlReceipts)
#include "tst_velnoctl_receipts.moc"
