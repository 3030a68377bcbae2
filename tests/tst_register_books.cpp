// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/library_test.h"
#include "tests/support/program_run.h"
#include "tests/support/shop.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno;

/** The files of velno-register: a journal that outlives kills and cut power, and prints. */
class TestRegisterBooks : public LibraryTest
{
    Q_OBJECT

private slots:
    void aKilledRegisterRemembers_data();
    void aKilledRegisterRemembers();
    void aCutOfThePowerKeepsWhatWasClosed();
    void printsBecomeFiles();
    void booksAreTheirOwnersAlone();
    void foreignFilesStayAsTheyAre();
    void unusableFilesAreRefused_data();
    void unusableFilesAreRefused();
};

void TestRegisterBooks::aKilledRegisterRemembers_data()
{
    QTest::addColumn<int>("steps"); ///< of the second sale, until the register is killed
    QTest::addColumn<int>("closed");
    QTest::addColumn<int>("cancelled");

    QTest::newRow("between sales") << 0 << 1 << 0;
    QTest::newRow("as a sale is opened") << 1 << 1 << 1;
    QTest::newRow("with an item") << 2 << 1 << 1;
    QTest::newRow("partly paid") << 3 << 1 << 1;
    QTest::newRow("as it is closed") << 4 << 2 << 0;
}

void TestRegisterBooks::aKilledRegisterRemembers()
{
    QFETCH(const int, steps);
    const QTemporaryDir folder;
    const QStringList journal{u"--journal"_s, folder.filePath(u"journal"_s)};
    VelnoReceiptRef first{};
    {
        Shop shop(journal + QStringList{u"--z"_s, u"30"_s});
        QCOMPARE(velnoext_start_sale(patience), 0);
        QCOMPARE(addItem(2500), 0);
        first = saleState().ref;
        QCOMPARE(velnoext_end_sale(cash), 0);
        shop.printed();
        if (steps > 0)
            QCOMPARE(velnoext_start_sale(patience), 0);
        if (steps > 1)
            QCOMPARE(addItem(700), 0);
        if (steps > 2)
            QCOMPARE(velnoext_add_payment(cash, 300), 0);
        if (steps > 3) {
            QCOMPARE(velnoext_end_sale(cash), 0);
            shop.printed();
        }
        shop.reg.raise(SIGKILL);
        shop.reg.waitForExit();
    }
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
    Shop shop(journal + QStringList{u"--z"_s, u"1"_s});
    QCOMPARE(shop.connected, 0);
    QCOMPARE(state(), 1);
    QList<long long> values;
    QCOMPARE(receipt(first, &values), 0);
    QCOMPARE(values, (QList<long long>{2500, 25, 2500, 0, 0, 1}));
    QFETCH(const int, closed);
    QFETCH(const int, cancelled);
    QCOMPARE(receipt({30, 2}), closed == 2 ? 0 : 8);
    QCOMPARE(velnoext_z_report(), 0);
    const QString z = squeezed(shop.printed());
    QVERIFY(z.contains(u"\nFİŞ SAYISI %1\n"_s.arg(closed)));
    QVERIFY(z.contains(u"\nİPTAL FİŞ SAYISI %1\n"_s.arg(cancelled)));
    QVERIFY(z.contains(u"\nGÜNLÜK TOPLAM *%1,00\n"_s.arg(closed == 2 ? 32 : 25)));
    QVERIFY(z.contains(u"\nZ NO: 0030 EKÜ NO: 0001\n"_s));
}

void TestRegisterBooks::aCutOfThePowerKeepsWhatWasClosed()
{
    Shop shop;
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(700), 0);
    const VelnoReceiptRef ref = saleState().ref;
    QVERIFY(shop.reg.setFault(u"power-cut=change-state"_s));
    QCOMPARE(velnoext_end_sale(cash), 0); // not answered anyway
    QVERIFY(!shop.reg.waitFor(u"power-cut"_s).isEmpty());
    QVERIFY(shop.reg.setFault(u"power-cut=sale-state"_s));
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(receipt(ref), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(700), 0);
    QCOMPARE(saleState().code, 2);
    QVERIFY(shop.reg.setFault(u"none"_s));
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(state(), 1);
    QCOMPARE(saleState().code, 6);
}

void TestRegisterBooks::printsBecomeFiles()
{
    const QTemporaryDir folder;
    const QDir files(folder.filePath(u"of %1 and %4"_s));
    QVERIFY(files.mkpath(u"."_s));
    QString text;
    {
        Shop shop({u"--receipts"_s, files.path(), u"--z"_s, u"3"_s});
        QCOMPARE(velnoext_start_sale(patience), 0);
        QCOMPARE(addItem(2500), 0);
        QCOMPARE(velnoext_end_sale(cash), 0);
        text = shop.printed();
        QCOMPARE(printSlip(), 0);
        shop.printed();
        QCOMPARE(files.entryList(QDir::Files),
                 (QStringList{u"000001-receipt-Z3-1.txt"_s, u"000002-slip-Z3.txt"_s}));
    }
    velnoext_close_all();
    Ext::library().pairingRecords.clear();
    QFile first(files.filePath(u"000001-receipt-Z3-1.txt"_s));
    QVERIFY(first.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(first.readAll()), text);
    Shop shop({u"--receipts"_s, files.path()});
    QCOMPARE(velnoext_z_report(), 0);
    shop.printed();
    QCOMPARE(files.entryList(QDir::Files).last(), u"000003-z-report-Z1.txt"_s);
}

void TestRegisterBooks::booksAreTheirOwnersAlone()
{
    constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    constexpr auto everybody = owner | QFile::ReadGroup | QFile::ReadOther;
    const QTemporaryDir folder;
    const QString journal = folder.filePath(u"journal"_s);
    const QDir receipts(folder.filePath(u"receipts"_s));
    QVERIFY(receipts.mkpath(u"."_s));
    const quint16 port = TestSupport::freePort();
    const QStringList arguments{u"--serial"_s,   QLatin1StringView(SimulatedRegister::serial),
                                u"--connect"_s,  u"127.0.0.1:%1"_s.arg(port),
                                u"--journal"_s,  journal,
                                u"--receipts"_s, receipts.path()};
    {
        ChildProgram reg(SimulatedRegister::program(), arguments, [] { ::umask(0); });
        QCOMPARE(velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience), 0);
        QCOMPARE(velnoext_x_report(), 0);
        QVERIFY(!reg.waitFor(u"printed"_s).isEmpty());
        const QFileInfoList files =
            QDir(folder.path()).entryInfoList(QDir::Files) + receipts.entryInfoList(QDir::Files);
        QCOMPARE_GE(files.size(), 3); // the journal, what SQLite lays beside it, and the report
        for (const QFileInfo &file : files)
            QVERIFY2(file.permissions() == owner, qPrintable(file.filePath()));
        reg.say("quit");
        QCOMPARE(reg.waitForExit(), 0);
        for (const QJsonObject &event : reg.events())
            QVERIFY(event.value(u"event"_s) != u"warning"_s);
    }
    QVERIFY(QFile::setPermissions(journal, everybody));
    ChildProgram reg(SimulatedRegister::program(), arguments);
    QCOMPARE(reg.waitFor(u"warning"_s).value(u"message"_s),
             u"the journal %1 was open to others; now it is its owner's alone"_s.arg(journal));
    QCOMPARE(QFile::permissions(journal), owner);
}

void TestRegisterBooks::foreignFilesStayAsTheyAre()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"notes"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(QByteArray(5000, 'x')) > 0);
    file.close();
    QVERIFY(file.setPermissions(file.permissions() | QFile::ReadOther));
    const Outcome refused =
        outcomeOf(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:9"_s, u"--journal"_s, path});
    QCOMPARE(refused.exitCode, 64);
    QVERIFY(QFile::permissions(path) & QFile::ReadOther);
}

void TestRegisterBooks::unusableFilesAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("journal in no folder") << QStringList{u"--journal"_s, u"/no/such/folder/file"_s}
                                          << "the journal /no/such/folder/file cannot be used"_ba;
    QTest::newRow("journal without a name")
        << QStringList{u"--journal"_s, QString()} << "the name of a file"_ba;
    QTest::newRow("receipts in no folder")
        << QStringList{u"--receipts"_s, u"/no/such/folder"_s} << "a folder that can be written to"_ba;
}

void TestRegisterBooks::unusableFilesAreRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    checkWrongUsage(
        SimulatedRegister::program(),
        QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:9"_s} + arguments, message);
}

QTEST_GUILESS_MAIN(TestRegisterBooks)
#include "tst_register_books.moc"
