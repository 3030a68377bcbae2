// SPDX-License-Identifier: Apache-2.0

#include "tests/support/engine_session.h"

#include "ExtDevice/encoding/tlv.h"
#include "tests/support/test_support.h"

#include <QTest>

using namespace Velno::GMP;
using namespace Velno;

namespace TestSupport {

void clearSession()
{
    GMP3::init(0);
    gmp3_message.isResponse = false;
    gmp3_message.appHash.clear();
    gmp3_message.dh.reset();
}

int checkFrame(const QByteArray &frame, const char *identity, bool parse)
{
    return GMP3::check(frame.constData(), int(frame.size()), identity, parse);
}

QByteArrayList tagsOf(const QByteArray &body)
{
    QByteArrayList tags;
    for (const QByteArray &element : extractTlvElements(body))
        tags << tlvTag(element).toHex().toUpper();
    return tags;
}

QByteArray valueIn(const QByteArray &body, const char *tag)
{
    for (const QByteArray &element : extractTlvElements(body)) {
        if (tlvTag(element) != hex(tag))
            continue;
        QByteArray found;
        QByteArray value;
        unsigned short size = 0;
        extractTlvElement(element, &found, &value, &size);
        return value;
    }
    return "missing";
}

void deliver(Session &session, const QByteArray &body, MessageTag kind, bool response)
{
    const QByteArray frame = makeFrame(response, kind, body, serial);
    QCOMPARE(session.check(frame.constData(), int(frame.size()), serial, true), 0);
}

void deliver(const QByteArray &body, MessageTag kind, bool response)
{
    deliver(processSession, body, kind, response);
}

} // namespace TestSupport
