// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/pairing_responder.h"

#include <QList>

namespace TestSupport {

/**
 * The simulated register's side of a pairing behind a link in memory: no socket, no thread. It answers when
 * the application waits for it.
 */
class RegisterInMemory
{
public:
    explicit RegisterInMemory(const QByteArray &serialNo = "UB1234567890");

    /** From now on it is this link's other side. */
    void meet(Velno::MemoryLink &link);

    Simulator::Faults faults;
    Simulator::PairingResponder responder;
    QList<QByteArray> requests; ///< the frames that came
    bool isPaired = false;      ///< as far as the register knows

private:
    void answerOne();

    Velno::MemoryLink m_end;
};

} // namespace TestSupport
