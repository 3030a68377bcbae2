// SPDX-License-Identifier: Apache-2.0

#include "tests/support/library_test.h"

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/test_support.h"

#include <QTcpSocket>
#include <QTest>

namespace TestSupport {

using namespace Velno::Ext;

int connectPaired(HandMadeDevice &device, const char *name, unsigned int appNo)
{
    library().pairingRecords[name] = device.record;
    const quint16 port = freePort();
    device.serve(port);
    return velnoext_initialize(appNo, name, "127.0.0.1", port, patience);
}

QList<BrokenAnswer> brokenAnswers(const QByteArray &reply)
{
    const HandMadeDevice device;
    HandMadeDevice stranger;
    stranger.record.hmacKey = QByteArray(32, 's');
    return {{"it closes", {}, 2},
            {"other MAC", {HandMadeDevice::framed(stranger.sealed(reply))}, 11},
            {"no elements", {HandMadeDevice::framed(device.withElements({}))}, 12}};
}

QVector<QByteArray> slip()
{
    return library().slipContent;
}

QTcpSocket *connection()
{
    return static_cast<QTcpSocket *>(connectionOf(library().activeDevice));
}

void LibraryTest::cleanup()
{
    velnoext_close_all();
    velnoext_close();
    library().pairingRecords.clear();
    library().connector = nullptr;
    library().codecSet = false;
    library().slipContent.clear();
    QVERIFY(!library().connectionThread);
}

} // namespace TestSupport
