// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/** No file of this process grows beyond so many bytes while it lives. */
class FullDisk
{
public:
    explicit FullDisk(qint64 size)
        : m_before(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit small{rlim_t(size), m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_before);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_limit{};
    void (*m_before)(int);
};
