// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

namespace TestSupport {

/** What tshark shows of captures, with the dissector and no settings of a user's. */
class Tshark
{
public:
    /** @param keyLog  what stands in the key log; without one none is set */
    explicit Tshark(const QByteArray &capture, const QByteArray &keyLog = {});

    /** The values of these fields: a line for each packet that the filter lets through, fields apart by a
     * bar. */
    QByteArrayList fields(const QString &filter, const QStringList &names) const;

    /** Everything, in words. */
    QByteArray inWords(const QString &filter = {}) const;

    /** Takes all TCP on the application's port for this protocol, whatever it looks like. */
    void decodeAsOurs() { m_options << QStringLiteral("-d") << QStringLiteral("tcp.port==4100,velno"); }

    /** @return standard output; what it says when it fails, or a script does */
    QByteArray run(const QStringList &arguments) const;

private:
    QTemporaryDir m_folder;
    QStringList m_options;
};

} // namespace TestSupport
