// SPDX-License-Identifier: Apache-2.0

#include "tests/support/pairing_check.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "tests/support/test_support.h"

using namespace Velno::GMP;
using namespace Velno;

namespace TestSupport {

QByteArray appHash()
{
    return sha256Sum("application");
}

int pair(MatchExt &record, HandMadeRegister &reg)
{
    const quint16 port = TestSupport::freePort();
    reg.start(port);
    const int result = GMP3_KeyExchange_Server(record, port, serial, terminal, appHash());
    velno_network_disconnect(connection_handle);
    connection_handle = 0;
    return result;
}

bool isEmpty(const MatchExt &record)
{
    return record.terminalId.isEmpty() && record.registerData.isEmpty() && record.aesKey.isEmpty() &&
           record.hmacKey.isEmpty() && record.kcvIv.isEmpty() && record.randomDFC10D.isEmpty() &&
           record.randomDFC10E.isEmpty() && record.pairingTime.isNull() && record.valueDFEF02 == 0 &&
           record.valueDFEF09 == 0;
}

HandMadeRegister::Hook changed(MessageTag step, std::function<void(HandMadeRegister &, Fields &)> change)
{
    return [=](HandMadeRegister &reg, const Request &request, int) {
        Fields fields = reg.honestAnswer(request);
        if (request.kind == step)
            change(reg, fields);
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    };
}

QList<MessageTag> kindsOf(const QList<Request> &requests)
{
    QList<MessageTag> kinds;
    for (const Request &request : requests)
        kinds << request.kind;
    return kinds;
}

} // namespace TestSupport
