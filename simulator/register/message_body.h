// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace Simulator {

/** What checkFrame() and readFrame() did not like about a frame that came, for people. */
QString frameProblem(int status);

/** The fields of a message body, to be changed before it is sent. */
class MessageBody
{
public:
    explicit MessageBody(const QByteArray &body);

    QByteArray value(const QByteArray &tag) const; ///< empty when absent
    bool contains(const QByteArray &tag) const;
    void replace(const QByteArray &tag, const QByteArray &value); ///< does nothing when absent
    void remove(const QByteArray &tag);
    QByteArray toBytes() const;

private:
    struct Field
    {
        QByteArray tag;
        QByteArray value;
    };
    QVector<Field> m_fields;
};

} // namespace Simulator
