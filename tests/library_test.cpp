#include "tests/library_test.h"

#include "ExtDevice/velnoext/connections.h"
#include "tests/test_support.h"

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

QTcpSocket *connection()
{
    return static_cast<QTcpSocket *>(library().connections.value(library().activeDevice).data());
}

void LibraryTest::cleanup()
{
    velnoext_close_all();
    velnoext_close();
    library().pairingRecords.clear();
    library().codecSet = false;
    library().slipContent.clear();
    QVERIFY(!library().helper);
}

} // namespace TestSupport
