// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QBuffer>
#include <QDeadlineTimer>
#include <QSemaphore>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>

using namespace Velno::Ext;
using namespace TestSupport;

namespace {

/** What the connection still holds. */
QByteArray unread()
{
    return connection()->peek(1 << 20);
}

/** A device that always has more to say, for a time that a test can wait. */
class Talker : public QIODevice
{
public:
    Talker() { open(QIODevice::ReadWrite); }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_end.hasExpired() ? 0 : 1000; }

    bool isSpokenTo = false;

protected:
    qint64 readData(char *data, qint64 size) override
    {
        std::fill_n(data, size, 'w');
        return size;
    }
    qint64 writeData(const char *, qint64 size) override
    {
        isSpokenTo = true;
        return size;
    }

private:
    QDeadlineTimer m_end{qint64(patience)};
};

} // namespace

class TestDeviceFrames : public LibraryTest
{
    Q_OBJECT

private slots:
    void framesAreReceived_data();
    void framesAreReceived();
    void hugeFramesAreGivenUp_data();
    void hugeFramesAreGivenUp();
    void deadDevicesAreRefused();
    void lateRepliesAreDropped();
    void sendingEndsWhenNobodyReads();
    void sendingEndsWhenTheRegisterNeverStopsTalking();
};

void TestDeviceFrames::framesAreReceived_data()
{
    QTest::addColumn<QList<QByteArray>>("runs");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("left"); // unread

    const QByteArray frame = hex("000000024142");
    QList<QByteArray> bytes;
    for (const char byte : frame)
        bytes << QByteArray(1, byte);
    QTest::newRow("whole") << QList{frame} << QByteArray("AB") << QByteArray();
    QTest::newRow("byte by byte") << bytes << QByteArray("AB") << QByteArray();
    QTest::newRow("after a keep-alive")
        << QList{hex("00000004DEADBEEF") + frame} << QByteArray("AB") << QByteArray();
    QTest::newRow("after three") << QList{hex("00000004DEADBEEF00000004DEADBEEF00000004DEADBEEF"), frame}
                                 << QByteArray("AB") << QByteArray();
    QTest::newRow("like a keep-alive") << QList{hex("00000004DEADBEEE")} << hex("DEADBEEE") << QByteArray();
    QTest::newRow("6 of 10") << QList{hex("0000000A414243444546")} << QByteArray()
                             << hex("0000000A414243444546");
    QTest::newRow("6 of 10 after a keep-alive")
        << QList{hex("00000004DEADBEEF0000000A414243444546")} << QByteArray() << hex("0000000A414243444546");
    QTest::newRow("with the next one's length")
        << QList{frame + hex("0000000A")} << QByteArray("AB") << hex("0000000A");
    QTest::newRow("half a length") << QList{hex("0000")} << QByteArray() << hex("0000");
    QTest::newRow("1 MiB") << QList{hex("00100000") + QByteArray(1 << 20, 'm')} << QByteArray(1 << 20, 'm')
                           << QByteArray();
}

void TestDeviceFrames::framesAreReceived()
{
    QFETCH(const QList<QByteArray>, runs);
    QFETCH(const QByteArray, payload);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([runs](const QByteArray &) { return runs; });
    QVERIFY(send_to_device(connection(), "go"));
    QByteArray received = "untouched";
    const unsigned int timeout = payload.isEmpty() ? brief : patience;
    QCOMPARE(get_from_device(timeout, connection(), &received), !payload.isEmpty());
    QCOMPARE(received, payload.isEmpty() ? QByteArray("untouched") : payload);
    QTEST(unread(), "left");
}

void TestDeviceFrames::hugeFramesAreGivenUp_data()
{
    QTest::addColumn<QByteArray>("length");

    QTest::newRow("1 MiB and one byte") << hex("00100001");
    QTest::newRow("2 GiB") << hex("80000000");
    QTest::newRow("sum wraps at 32 bits") << hex("FFFFFFFC");
    QTest::newRow("4 GiB - 1") << hex("FFFFFFFF");
}

void TestDeviceFrames::hugeFramesAreGivenUp()
{
    QFETCH(const QByteArray, length);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([length](const QByteArray &) { return QList{length}; });
    QVERIFY(send_to_device(connection(), "go"));
    QByteArray received = "untouched";
    QVERIFY(!get_from_device(0xFFFFFFFF, connection(), &received)); // without the limit this waits for ever
    QCOMPARE(received, QByteArray("untouched"));
    QCOMPARE(unread(), length);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestDeviceFrames::deadDevicesAreRefused()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QByteArray payload;
    QBuffer closed;
    for (QIODevice *dead : {static_cast<QIODevice *>(nullptr), static_cast<QIODevice *>(&closed)}) {
        QVERIFY(!send_to_device(dead, "x"));
        QVERIFY(!get_from_device(brief, dead, &payload));
    }
}

void TestDeviceFrames::lateRepliesAreDropped()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray seventeen = HandMadeDevice::framed(device.sealed(plain(17)));
    device.setAnswer([=](const QByteArray &) { return QList{seventeen + seventeen.first(9)}; });
    int value = 0;
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 0);
    QCOMPARE(value, 17);
    device.answerPlain(plain(19)); // 18 is the question itself
    QCOMPARE(velnoext_ecr_datetime(patience, &value), 0);
    QCOMPARE(value, 19);
}

void TestDeviceFrames::sendingEndsWhenNobodyReads()
{
    HandMadeDevice device;
    QSemaphore readsOn;
    QCOMPARE(connectPaired(device), 0);
    device.setAnswer([&readsOn](const QByteArray &) {
        readsOn.acquire(); // until then it reads nothing
        return QList<QByteArray>();
    });
    QVERIFY(send_to_device(connection(), "go"));
    const bool sent = send_to_device(connection(), QByteArray(32 << 20, 'x')); // more than the kernel holds
    readsOn.release();
    QVERIFY(!sent);
}

void TestDeviceFrames::sendingEndsWhenTheRegisterNeverStopsTalking()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    Talker talker;
    QVERIFY(!send_to_device(&talker, "x"));
    QVERIFY(!talker.isSpokenTo);
}

QTEST_GUILESS_MAIN(TestDeviceFrames)
#include "tst_device_frames.moc"
