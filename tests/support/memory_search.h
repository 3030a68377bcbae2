// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <vector>

/** Whether secrets are left in the memory of this process. */
namespace TestSupport {

/** A secret to look for, kept in a form that is not found itself. */
class HiddenSecret
{
public:
    HiddenSecret(const QString &name, QByteArrayView secret);

    const QString &name() const { return m_name; }
    /** Whether half of it, in either byte order, is in a piece of memory that is hidden alike. */
    bool isIn(const std::vector<unsigned char> &hiddenMemory, size_t size) const;

private:
    QString m_name;
    std::vector<std::vector<unsigned char>> m_traces;
};

/** The names of those secrets that the writable memory of this process holds: heap, stacks, variables. */
QStringList secretsInMemory(const QList<HiddenSecret> &secrets);

} // namespace TestSupport
