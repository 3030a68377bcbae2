// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/relay_route.h"

#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/library_state.h"

namespace Velno::Ext {

namespace {

constexpr unsigned int relayAnswerTimeout = 5000;
constexpr int noConnection = 6;     // as the transport says it
constexpr int closedConnection = 5; // likewise

/** The relay's answer, which may come in pieces. @return 0 or the status of the transport */
int readAnswer(unsigned int handle, QByteArray *answer)
{
    const QDeadlineTimer deadline{qint64(relayAnswerTimeout)};
    int received = 0;
    while (received < answer->size()) {
        int count = int(answer->size()) - received;
        if (const int status = velno_network_read(handle, unsigned(deadline.remainingTime()),
                                                  answer->data() + received, &count);
            status != 0)
            return status;
        if (count <= 0)
            return closedConnection;
        received += count;
    }
    return 0;
}

/** Names the register. @return 0, or why the relay does not lead to it */
int nameToRelay(unsigned int handle, const QByteArray &serialNo)
{
    const int size = int(serialNo.size());
    int status = velno_network_write(handle, relayAnswerTimeout, serialNo.constData(), size);
    QByteArray answer(size, Qt::Uninitialized);
    if (status == 0)
        status = readAnswer(handle, &answer);
    if (status != 0)
        return status == closedConnection ? VelnoCause_RelayUnknownRegister : VelnoCause_RelaySilent;
    return answer == serialNo ? VelnoCause_None : VelnoCause_RelayWrongAnswer;
}

/** Why the relay could not be reached, by the status of the transport. */
int causeOfNoRelay(int status)
{
    return status == noConnection ? VelnoCause_RelayNotAnswering : VelnoCause_RelayUnreachable;
}

} // namespace

int connectToTsm(const QByteArray &serialNo, unsigned int timeout, unsigned int *handle)
{
    const unsigned short port = library().appNo == 999999 ? 50900 : 50902;
    unsigned int opened = 0;
    const int status = velno_network_connect(VELNO_TSM_RELAY_ADDRESS, port, timeout, &opened);
    if (status != 0) {
        failedBy(ConnectionFailed, causeOfWait(causeOfNoRelay(status)));
        return noConnection;
    }
    if (const int cause = nameToRelay(opened, serialNo); cause != VelnoCause_None) {
        velno_network_disconnect(opened);
        failedBy(ConnectionFailed, causeOfWait(cause));
        return noConnection;
    }
    *handle = opened;
    return 0;
}

} // namespace Velno::Ext
