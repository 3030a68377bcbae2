// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>
#include <unistd.h>

namespace TestSupport {

/** Collects what this process writes to standard error while it lives. */
class ErrorOutput
{
public:
    ErrorOutput()
        : m_before(::dup(STDERR_FILENO))
    {
        if (m_file.open())
            ::dup2(m_file.handle(), STDERR_FILENO);
    }
    ~ErrorOutput()
    {
        std::fflush(stderr);
        ::dup2(m_before, STDERR_FILENO);
        ::close(m_before);
    }
    Q_DISABLE_COPY_MOVE(ErrorOutput)

    QByteArray text()
    {
        std::fflush(stderr);
        return m_file.seek(0) ? m_file.readAll() : QByteArray();
    }

private:
    QTemporaryFile m_file;
    int m_before;
};

} // namespace TestSupport
