// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/peer.h"
#include "tests/support/simulated_register.h"

#include <QTest>

namespace TestSupport {

using namespace Qt::StringLiterals;

/** Sends bytes to a fresh register, which must say why it refuses them, close, and come again. */
inline void checkRefused(const QByteArray &bytes, const QString &reason)
{
    Peer peer;
    SimulatedRegister reg(peer.port());
    QVERIFY(peer.accept());
    QVERIFY(peer.send(bytes));
    const QString given = reg.waitFor(u"refused"_s).value("reason"_L1).toString();
    QVERIFY2(given.contains(reason), qPrintable(given));
    QVERIFY(peer.waitForClose());
    QVERIFY(peer.accept()); // it goes on
}

} // namespace TestSupport
