// SPDX-License-Identifier: Apache-2.0

#include "tests/support/library_test.h"

#include <QDataStream>
#include <QPointer>
#include <QTest>

#include <algorithm>

using namespace Velno::Ext;
using namespace Velno::GMP;
using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

/** A register that says yes to every command, without a socket. */
class AgreeingRegister : public QIODevice
{
public:
    explicit AgreeingRegister(const HandMadeDevice &device, QByteArray *heard)
        : m_device(device)
        , m_heard(heard)
    {
        open(ReadWrite | Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const auto count = std::min<qsizetype>(qsizetype(most), m_answer.size());
        std::copy_n(m_answer.cbegin(), count, data);
        m_answer.remove(0, count);
        return count;
    }

    qint64 writeData(const char *data, qint64 size) override
    {
        const QByteArray frame(data, qsizetype(size));
        *m_heard = m_device.opened(frame.sliced(4)); // behind its length
        QByteArray yes;
        QDataStream(&yes, WriteOnly) << true;
        m_answer = HandMadeDevice::framed(m_device.sealed(yes));
        return size;
    }

private:
    const HandMadeDevice &m_device;
    QByteArray *m_heard;
    QByteArray m_answer;
};

/** What an application calls for a register in its own process. */
int connectHere()
{
    return velnoext_initialize(5, serial, "127.0.0.1", 4100, brief);
}

} // namespace

/** A register in this process, in place of one at a socket. */
class TestConnector : public LibraryTest
{
    Q_OBJECT

private slots:
    void init();
    void unpairedRegisterGetsItsKeys();
    void keysOfAPairedRegisterStay();
    void refusalIsTheLibrarysResult_data();
    void refusalIsTheLibrarysResult();
    void argumentsAreCheckedFirst();
    void closingEndsTheConnection();

private:
    HandMadeDevice m_device;
    QByteArray m_heard;
    QPointer<QIODevice> m_connection;
    int m_calls = 0;
};

void TestConnector::init()
{
    m_heard.clear();
    m_calls = 0;
    library().connector = [this](const QByteArray &serialNo, MatchExt *record,
                                 std::unique_ptr<QIODevice> *connection) {
        ++m_calls;
        if (serialNo == serial && record->aesKey.isEmpty())
            *record = m_device.record;
        *connection = std::make_unique<AgreeingRegister>(m_device, &m_heard);
        m_connection = connection->get();
        return int(Success);
    };
}

void TestConnector::unpairedRegisterGetsItsKeys()
{
    QCOMPARE(connectHere(), 0);
    char name[13] = "";
    QCOMPARE(velnoext_active_device(name), 0);
    QCOMPARE(name, serial);
    QCOMPARE(velnoext_login(brief), 0);
    QCOMPARE(m_heard, "\0\0\0\x01"_ba);
    QCOMPARE(velnoext_check_printer_paper(brief), 0);
    QCOMPARE(m_heard, "\0\0\0\x08"_ba);
}

void TestConnector::keysOfAPairedRegisterStay()
{
    QCOMPARE(connectHere(), 0);
    const QByteArray keys = library().pairingRecords[serial].aesKey;
    QPointer<QIODevice> before = m_connection;
    QCOMPARE(connectHere(), 0);
    QCOMPARE(m_calls, 2);
    QVERIFY(!before); // only one at a time
    QCOMPARE(library().pairingRecords[serial].aesKey, keys);
    QCOMPARE(velnoext_login(brief), 0);
}

void TestConnector::refusalIsTheLibrarysResult_data()
{
    QTest::addColumn<bool>("paired");

    QTest::newRow("unpaired") << false;
    QTest::newRow("paired") << true;
}

void TestConnector::refusalIsTheLibrarysResult()
{
    QFETCH(const bool, paired);
    if (paired)
        QCOMPARE(connectHere(), 0);
    library().connector = [](const QByteArray &, MatchExt *record, std::unique_ptr<QIODevice> *) {
        record->registerData = "half"; // of a pairing that did not come to its end
        return failedBy(PairingFailed, 5000);
    };
    QCOMPARE(connectHere(), 10);
    QCOMPARE(velnoext_cause(), 5000);
    QCOMPARE(library().pairingRecords.contains(serial), paired);
    QCOMPARE(velnoext_login(brief), paired ? 2 : 1);
    QCOMPARE(velnoext_cause(), int(paired ? VelnoCause_NotConnected : VelnoCause_NoActiveDevice));
}

void TestConnector::argumentsAreCheckedFirst()
{
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", 0, brief), 4);
    QCOMPARE(velnoext_error_detail(), 0x402);
    QCOMPARE(velnoext_initialize(5, "UB", "127.0.0.1", 4100, brief), 4);
    QCOMPARE(m_calls, 0);
}

void TestConnector::closingEndsTheConnection()
{
    QCOMPARE(connectHere(), 0);
    QVERIFY(m_connection);
    velnoext_close();
    QVERIFY(!m_connection);
    QVERIFY(library().pairingRecords.contains(serial));
}

QTEST_GUILESS_MAIN(TestConnector)

#include "tst_connector.moc"
