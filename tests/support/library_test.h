// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/hand_made_device.h"
#include "tests/support/plain.h"

#include <QObject>
#include <QTest>

QT_FORWARD_DECLARE_CLASS(QTcpSocket)

/** What the tests of the device library share. */
namespace TestSupport {

inline constexpr char serial[] = "UB1234567890";
inline constexpr char otherSerial[] = "UB0000000001";
inline constexpr char throughRelay[] = "255.255.255.255";
inline constexpr unsigned int patience = 20'000;
inline constexpr unsigned int brief = 200; // for waits that are meant to run out

/** Connects with keys that both sides hold already. @return of velnoext_initialize() */
int connectPaired(HandMadeDevice &device, const char *name = serial, unsigned int appNo = 5);

/** An answer from which no command gets its items, and the code that every one returns then. */
struct BrokenAnswer
{
    const char *name;
    QList<QByteArray> frames; ///< as they are written; the connection closes when there are none
    int result;
};

/** One for each code, as a HandMadeDevice gives it; `reply` is in the one that somebody else has sealed. */
QList<BrokenAnswer> brokenAnswers(const QByteArray &reply);

/** What is composed of the next slip. */
QVector<QByteArray> slip();

inline VelnoTextStyle plainStyle = {0, 0, 0};

/** The active register's. */
QTcpSocket *connection();

/**
 * A call that needs a register gives 1 without keys for it and 2 without a connection; it sends and writes
 * nothing.
 *
 * @param run  makes the call, with `out` for what it may write
 */
template <typename Run, typename Outputs>
void checkNothingWorksUnprepared(const Run &run, Outputs out)
{
    QCOMPARE(run(out), 1);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    Velno::Ext::library().activeDevice = otherSerial;
    QCOMPARE(run(out), 1);
    Velno::Ext::library().activeDevice = serial;
    Velno::Ext::closeConnection(); // and stays active
    QCOMPARE(run(out), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    QVERIFY(out.untouched());
    QVERIFY(device.commands().isEmpty());
}

/** A call with a missing pointer gives 3 and the detail, but only behind the checks that give 1 and 2. */
template <typename Run>
void checkMissingPointerIsNamed(const Run &run, int detail)
{
    QCOMPARE(run(), 1); // not paired comes first
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(run(), 3);
    QCOMPARE(velnoext_error_detail(), detail);
    QVERIFY(device.commands().isEmpty());
    Velno::Ext::closeConnection();
    QCOMPARE(run(), 2); // and so does the connection
    QCOMPARE(velnoext_error_detail(), 0);
}

/** Tests that use the library in this process: each leaves it as if it had never been used. */
class LibraryTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
};

} // namespace TestSupport
