// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/message_body.h"

#include "ExtDevice/encoding/tlv.h"

using namespace Qt::StringLiterals;

namespace Simulator {

QString frameProblem(int status)
{
    switch (status) {
    case 4000:
        return u"the frame's length is wrong"_s;
    case 4001:
        return u"the frame's CRC is wrong"_s;
    case 4002:
        return u"the frame carries another serial number"_s;
    default:
        return u"the frame holds no message"_s;
    }
}

MessageBody::MessageBody(const QByteArray &body)
{
    for (const QByteArray &element : Velno::extractTlvElements(body)) {
        Field field{Velno::tlvTag(element), {}};
        unsigned short size = 0;
        Velno::extractTlvElement(element, &field.tag, &field.value,
                                 &size); // an empty field keeps its empty value
        m_fields << field;
    }
}

QByteArray MessageBody::value(const QByteArray &tag) const
{
    for (const Field &field : m_fields)
        if (field.tag == tag)
            return field.value;
    return {};
}

bool MessageBody::contains(const QByteArray &tag) const
{
    for (const Field &field : m_fields)
        if (field.tag == tag)
            return true;
    return false;
}

void MessageBody::replace(const QByteArray &tag, const QByteArray &value)
{
    for (Field &field : m_fields)
        if (field.tag == tag)
            field.value = value;
}

void MessageBody::remove(const QByteArray &tag)
{
    m_fields.removeIf([&tag](const Field &field) { return field.tag == tag; });
}

QByteArray MessageBody::toBytes() const
{
    QByteArray bytes;
    for (const Field &field : m_fields)
        bytes += Velno::tlvElement(field.tag, field.value);
    return bytes;
}

} // namespace Simulator
