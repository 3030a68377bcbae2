// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/crc.h"
#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/encoding/file.h"

#include "tests/support/exact_bytes.h"
#include "tests/support/test_support.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace Velno;
using TestSupport::ExactBytes;
using TestSupport::hex;

namespace {

/** A device that hands out one byte more per read than the last time, then ends or fails. */
class UnevenDevice : public QIODevice
{
public:
    UnevenDevice(QByteArray data, bool fails)
        : m_data(std::move(data))
        , m_fails(fails)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    qint64 largestRequest() const { return m_largestRequest; }

protected:
    qint64 readData(char *bytes, qint64 room) override
    {
        m_largestRequest = std::max(m_largestRequest, room);
        if (m_position == m_data.size())
            return m_fails ? -1 : 0;
        const qint64 count = std::min({room, ++m_step, m_data.size() - m_position});
        std::copy_n(m_data.constData() + m_position, count, bytes);
        m_position += count;
        return count;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_data;
    bool m_fails;
    qint64 m_position = 0;
    qint64 m_step = 0;
    qint64 m_largestRequest = 0;
};

} // namespace

class TestDigest : public QObject
{
    Q_OBJECT

private slots:
    void crcIsTheOneOfX25();
    void dataIsHashed_data();
    void dataIsHashed();
    void deviceIsHashedInPieces_data();
    void deviceIsHashedInPieces();
    void deviceIsHashedFromItsPosition();
    void unevenDeviceIsHashedWhole();
    void failedReadGivesNoDigest();
    void failedReadLeavesNothingBehind();
    void messageIsAuthenticated_data();
    void messageIsAuthenticated();
    void keyLengthsAroundTheBlock_data();
    void keyLengthsAroundTheBlock();
    void keysOfCallsDoNotMix();
    void callersKeyIsUnchanged();
    void threadsHashAtTheSameTime();
    void ivAddsTheSecondsToEvenPositions_data();
    void ivAddsTheSecondsToEvenPositions();
    void ivOfNoTimeIsTheBase();
    void ivWrapsAByte();
    void fileIsReadAsWritten_data();
    void fileIsReadAsWritten();
    void writingTruncates();
    void writingWhereNothingCanBe_data();
    void writingWhereNothingCanBe();
    void fullDeviceIsReported();
    void readingFailsAndTouchesNothing_data();
    void readingFailsAndTouchesNothing();
    void readingIntoNothingFails();
};

void TestDigest::crcIsTheOneOfX25()
{
    QCOMPARE(crc16("123456789"), quint16(0x906E));
    QByteArray bytes;
    for (int i = 0; i < 300; ++i) { // every length around what is taken in one step
        const ExactBytes exact(bytes);
        QCOMPARE(crc16(exact.view()), qChecksum(bytes));
        bytes.append(char(i * 37 + (i >> 3)));
    }
}

void TestDigest::dataIsHashed_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("digest");

    QTest::newRow("empty") << QByteArray()
                           << hex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    QTest::newRow("abc") << QByteArray("abc")
                         << hex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    QTest::newRow("a million a") << QByteArray(1000000, 'a')
                                 << hex("cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

void TestDigest::dataIsHashed()
{
    QFETCH(const QByteArray, data);
    QFETCH(const QByteArray, digest);
    const ExactBytes exact(data);
    QCOMPARE(sha256Sum(exact.view()), digest);
    QCOMPARE(sha256Sum(exact.view()), digest);
}

void TestDigest::deviceIsHashedInPieces_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 65535, 65536, 65537, 131072, 1000000})
        QTest::addRow("%d bytes", size) << size;
}

void TestDigest::deviceIsHashedInPieces()
{
    QFETCH(const int, size);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"application"_s);
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = char(i % 251);
    QVERIFY(writeData(path, data));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(sha256Sum(file), sha256Sum(data));
    QVERIFY(file.atEnd());
}

void TestDigest::deviceIsHashedFromItsPosition()
{
    QBuffer buffer;
    buffer.setData("headabc");
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QVERIFY(buffer.seek(4));
    QCOMPARE(sha256Sum(buffer), sha256Sum(QByteArray("abc")));
}

void TestDigest::unevenDeviceIsHashedWhole()
{
    const QByteArray data(300000, 'u');
    UnevenDevice device(data, false);
    QCOMPARE(sha256Sum(device), sha256Sum(data));
    QVERIFY(device.largestRequest() <= 65536);
}

void TestDigest::failedReadGivesNoDigest()
{
    UnevenDevice failing(QByteArray(1000, 'u'), true);
    QVERIFY(sha256Sum(failing).isEmpty());

    QBuffer writeOnly;
    QVERIFY(writeOnly.open(QIODevice::WriteOnly));
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::read (QBuffer): WriteOnly device");
    QVERIFY(sha256Sum(writeOnly).isEmpty());
}

void TestDigest::failedReadLeavesNothingBehind()
{
    UnevenDevice failing(QByteArray(1000, 'u'), true);
    QVERIFY(sha256Sum(failing).isEmpty());
    QCOMPARE(sha256Sum(QByteArray()),
             hex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
}

void TestDigest::messageIsAuthenticated_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("mac"); // or its front

    QTest::newRow("RFC 4231, 1") << QByteArray(20, '\x0b') << QByteArray("Hi There")
                                 << hex("b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
    QTest::newRow("RFC 4231, 2") << QByteArray("Jefe") << QByteArray("what do ya want for nothing?")
                                 << hex("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    QTest::newRow("RFC 4231, 3") << QByteArray(20, '\xaa') << QByteArray(50, '\xdd')
                                 << hex("773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
    QTest::newRow("RFC 4231, 4") << hex("0102030405060708090a0b0c0d0e0f10111213141516171819")
                                 << QByteArray(50, '\xcd')
                                 << hex("82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b");
    QTest::newRow("RFC 4231, 5") << QByteArray(20, '\x0c') << QByteArray("Test With Truncation")
                                 << hex("a3b6167473100ee06e0c796c2955552b");
    QTest::newRow("RFC 4231, 6") << QByteArray(131, '\xaa')
                                 << QByteArray("Test Using Larger Than Block-Size Key - Hash Key First")
                                 << hex("60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    QTest::newRow("RFC 4231, 7")
        << QByteArray(131, '\xaa')
        << QByteArray(
               "This is a test using a larger than block-size key and a larger than block-size data. The key "
               "needs to be hashed before being used by the HMAC algorithm.")
        << hex("9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2");
    QTest::newRow("empty key and message")
        << QByteArray() << QByteArray()
        << hex("b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad");
}

void TestDigest::messageIsAuthenticated()
{
    QFETCH(const QByteArray, key);
    QFETCH(const QByteArray, message);
    QFETCH(const QByteArray, mac);
    const ExactBytes exactKey(key);
    const ExactBytes exactMessage(message);
    const QByteArray result = hmacSha256(exactKey.view(), exactMessage.view());
    QCOMPARE(result.size(), 32);
    QCOMPARE(result.first(mac.size()), mac);
}

void TestDigest::keyLengthsAroundTheBlock_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 32, 63, 64, 65, 128})
        QTest::addRow("%d bytes", size) << size;
}

void TestDigest::keyLengthsAroundTheBlock()
{
    QFETCH(const int, size);
    const QByteArray message("message");
    const QByteArray key(size, 'k');

    // Written out: a long key counts as its digest, a short one is filled with zeros.
    const QByteArray block = (size > 64 ? sha256Sum(key) : key).leftJustified(64, '\0');
    QByteArray inner(64, '\x36');
    QByteArray outer(64, '\x5C');
    for (int i = 0; i < 64; ++i) {
        inner[i] = char(inner[i] ^ block[i]);
        outer[i] = char(outer[i] ^ block[i]);
    }
    QCOMPARE(hmacSha256(key, message), sha256Sum(outer + sha256Sum(inner + message)));
    if (size > 64)
        QCOMPARE(hmacSha256(key, message), hmacSha256(sha256Sum(key), message));
}

void TestDigest::keysOfCallsDoNotMix()
{
    const QByteArray message("message");
    const QByteArray empty = hmacSha256(QByteArray(), message);
    const QByteArray other = hmacSha256(QByteArray("key"), message);
    QVERIFY(empty != other);
    QCOMPARE(hmacSha256(QByteArray(), message), empty);
    QCOMPARE(hmacSha256(QByteArray(""), message), empty);
    QCOMPARE(hmacSha256(QByteArray("key"), message), other);
}

void TestDigest::callersKeyIsUnchanged()
{
    const QByteArray key(32, 'k');
    hmacSha256(key, QByteArray("message"));
    QCOMPARE(key, QByteArray(32, 'k'));
}

void TestDigest::threadsHashAtTheSameTime()
{
    const QByteArray data(5000, 'd');
    const QByteArray digest = sha256Sum(data);
    const QByteArray mac = hmacSha256(data, data);
    std::array<int, 4> right{};
    std::vector<std::unique_ptr<QThread>> threads;
    for (int &count : right) {
        threads.emplace_back(QThread::create([&, counter = &count] {
            for (int i = 0; i < 200; ++i)
                *counter += sha256Sum(data) == digest && hmacSha256(data, data) == mac;
        }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        thread->wait();
    for (const int count : right)
        QCOMPARE(count, 200);
}

void TestDigest::ivAddsTheSecondsToEvenPositions_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<int>("seconds");

    QTest::newRow("midnight") << QTime(0, 0, 0) << 0;
    QTest::newRow("hours and minutes do not count") << QTime(23, 59, 0) << 0;
    QTest::newRow("one second") << QTime(0, 0, 1, 999) << 1;
    QTest::newRow("last second") << QTime(12, 34, 59) << 59;
}

void TestDigest::ivAddsTheSecondsToEvenPositions()
{
    QFETCH(const QTime, time);
    QFETCH(const int, seconds);
    const QByteArray base = iv(QTime(0, 0, 0));
    QByteArray expected = base;
    for (int i = 0; i < 16; i += 2)
        expected[i] = char(expected[i] + seconds);
    QCOMPARE(base.size(), 16);
    QCOMPARE(iv(time), expected);
    QCOMPARE(iv(time) == base, seconds == 0);
}

void TestDigest::ivOfNoTimeIsTheBase()
{
    QCOMPARE(iv(QTime()), iv(QTime(0, 0, 0)));
}

void TestDigest::ivWrapsAByte()
{
    const QByteArray base = iv(QTime(0, 0, 0));
    const QByteArray late = iv(QTime(0, 0, 59));
    int wrapped = 0;
    for (int i = 0; i < 16; i += 2) {
        if (base[i] != '\xF0')
            continue;
        QCOMPARE(late[i], '\x2B');
        ++wrapped;
    }
    QVERIFY(wrapped > 0);
}

void TestDigest::fileIsReadAsWritten_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("lines stay as they are") << QByteArray("a\r\nb\n\xff\0c", 8);
    QTest::newRow("a megabyte") << QByteArray(1 << 20, 'm');
}

void TestDigest::fileIsReadAsWritten()
{
    QFETCH(const QByteArray, data);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"veri dosyası"_s);
    QVERIFY(writeData(path, data));
    QCOMPARE(QFile(path).size(), data.size());

    QByteArray read("old");
    QVERIFY(readData(path, &read));
    QCOMPARE(read, data);
}

void TestDigest::writingTruncates()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
    QVERIFY(writeData(path, "long content"));
    QVERIFY(writeData(path, "short"));
    QByteArray read;
    QVERIFY(readData(path, &read));
    QCOMPARE(read, QByteArray("short"));
    QVERIFY(writeData(path, QByteArray()));
    QCOMPARE(QFile(path).size(), 0);
}

void TestDigest::writingWhereNothingCanBe_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing folder") << u"missing/file"_s;
    QTest::newRow("a folder") << u"."_s;
}

void TestDigest::writingWhereNothingCanBe()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    QVERIFY(!writeData(folder.filePath(name), "data"));
    QVERIFY(!writeData(folder.filePath(name), QByteArray()));
}

void TestDigest::fullDeviceIsReported()
{
    const QString full = u"/dev/full"_s;
    if (!QFile::exists(full))
        QSKIP("NOT TESTED: this system has no /dev/full to stand for a full disk");
    QVERIFY(!writeData(full, "data"));
}

void TestDigest::readingFailsAndTouchesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << u"missing"_s;
    QTest::newRow("a folder") << u"."_s;
    // Opens, but its first page cannot be read.
    QTest::newRow("unreadable") << u"/proc/self/mem"_s;
}

void TestDigest::readingFailsAndTouchesNothing()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    QByteArray data("old");
    QVERIFY(!readData(QDir(folder.path()).filePath(name), &data));
    QCOMPARE(data, QByteArray("old"));
}

void TestDigest::readingIntoNothingFails()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
    QVERIFY(writeData(path, "data"));
    QVERIFY(!readData(path, nullptr));
}

QTEST_GUILESS_MAIN(TestDigest)
#include "tst_digest.moc"
