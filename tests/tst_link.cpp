// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/link.h"

#include <QTest>

using Velno::MemoryLink;

namespace {

constexpr unsigned int atOnce = 0; // ms

/** What one read finds, its status as text when it finds nothing. */
QByteArray readFrom(MemoryLink &link, int room = 100)
{
    QByteArray bytes(room, '\0');
    int size = room;
    const int status = link.read(bytes.data(), &size, atOnce);
    return status == 0 ? bytes.first(size) : "status " + QByteArray::number(status);
}

} // namespace

/** Two ends in memory behave as a connection of the transport does. */
class TestLink : public QObject
{
    Q_OBJECT

private slots:
    void bytesArriveInOrder();
    void readWithoutBytesServesTheOtherSideOnce();
    void argumentsAreJudgedAsByTheTransport();
    void whatCameBeforeTheCloseIsRead();
    void endThatIsGoneIsClosed();
    void joiningAgainBeginsAnew();
};

void TestLink::bytesArriveInOrder()
{
    MemoryLink one;
    MemoryLink other;
    MemoryLink::join(one, other);
    QCOMPARE(one.write("abc", 3, atOnce), 0);
    QCOMPARE(one.write("def", 3, atOnce), 0);
    QCOMPARE(other.write("back", 4, atOnce), 0);
    QCOMPARE(other.bytesAvailable(), 6);
    QCOMPARE(readFrom(other, 2), QByteArray("ab"));
    QCOMPARE(readFrom(other), QByteArray("cdef"));
    QCOMPARE(readFrom(other), QByteArray("status 6"));
    QCOMPARE(readFrom(one), QByteArray("back"));
}

void TestLink::readWithoutBytesServesTheOtherSideOnce()
{
    MemoryLink one;
    MemoryLink other;
    MemoryLink::join(one, other);
    int served = 0;
    one.serveOtherSide = [&] {
        if (++served == 2)
            QCOMPARE(other.write("late", 4, atOnce), 0);
    };
    QCOMPARE(readFrom(one), QByteArray("status 6"));
    QCOMPARE(readFrom(one, 2), QByteArray("la"));
    QCOMPARE(readFrom(one), QByteArray("te")); // found without it
    QCOMPARE(served, 2);
}

void TestLink::argumentsAreJudgedAsByTheTransport()
{
    MemoryLink one;
    MemoryLink other;
    MemoryLink::join(one, other);
    char byte = 'u';
    int size = 1;
    int none = 0;
    QCOMPARE(one.write(nullptr, 1, atOnce), 2);
    QCOMPARE(one.write("x", 0, atOnce), 3);
    QCOMPARE(one.write("x", -1, atOnce), 3);
    QCOMPARE(one.read(nullptr, &size, atOnce), 2);
    QCOMPARE(one.read(&byte, nullptr, atOnce), 3);
    QCOMPARE(one.read(&byte, &none, atOnce), 3);
    QCOMPARE(one.read(&byte, &size, atOnce), 6);
    QCOMPARE(byte, 'u');
    QCOMPARE(size, 1);
    QCOMPARE(other.bytesAvailable(), 0);
}

void TestLink::whatCameBeforeTheCloseIsRead()
{
    MemoryLink one;
    MemoryLink other;
    MemoryLink::join(one, other);
    QCOMPARE(one.write("last words", 10, atOnce), 0);
    QCOMPARE(one.close(), 0);
    QCOMPARE(one.close(), 3);
    QCOMPARE(other.write("x", 1, atOnce), 5);
    QCOMPARE(readFrom(other), QByteArray("last words"));
    QCOMPARE(readFrom(other), QByteArray("status 5"));
    QCOMPARE(other.close(), 3);
}

void TestLink::endThatIsGoneIsClosed()
{
    MemoryLink one;
    QCOMPARE(readFrom(one), QByteArray("status 5")); // joined with nobody yet
    {
        MemoryLink other;
        MemoryLink::join(one, other);
    }
    QCOMPARE(one.write("x", 1, atOnce), 5);
    QCOMPARE(readFrom(one), QByteArray("status 5"));
}

void TestLink::joiningAgainBeginsAnew()
{
    MemoryLink one;
    MemoryLink first;
    MemoryLink second;
    MemoryLink::join(one, first);
    QCOMPARE(first.write("old", 3, atOnce), 0);
    MemoryLink::join(one, second);
    QCOMPARE(first.write("x", 1, atOnce), 5);
    QCOMPARE(second.write("new", 3, atOnce), 0);
    QCOMPARE(readFrom(one), QByteArray("new"));
}

QTEST_GUILESS_MAIN(TestLink)
#include "tst_link.moc"
