// SPDX-License-Identifier: Apache-2.0

#include "fuzz/honest_application.h"

#include "ExtDevice/gmp3/prepare.h"
#include "fuzz/paired_record.h"

namespace Fuzz {

using namespace Velno::GMP;

HonestApplication::HonestApplication()
{
    m_session.record.appHash = applicationHash;
    m_agreed.registerData = serial;
}

QByteArray HonestApplication::request(MessageTag kind)
{
    const QByteArray body = prepareBody(m_session, kind, false, "001122334455");
    if (kind == PairingConfirm)
        m_session.record.putKeysInto(m_agreed);
    return body;
}

void HonestApplication::hear(const QByteArray &frame)
{
    ReceivedMessage message;
    if (readFrame(frame.constData(), int(frame.size()), serial, &message) == 0 && message.isResponse)
        m_session.record.take(message);
}

} // namespace Fuzz
