// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/log.h"

#include <iostream>

namespace Velno::GMP {

namespace {

LogReceiver logReceiver = nullptr;
void *logContext = nullptr;

} // namespace

void setLogReceiver(LogReceiver receiver, void *context)
{
    logReceiver = receiver;
    logContext = context;
}

LogLine::LogLine()
    : m_stream(logReceiver ? static_cast<std::ostream &>(m_text) : std::cout)
{
}

LogLine::~LogLine()
{
    if (&m_stream == &m_text)
        logReceiver(m_text.str().c_str(), logContext);
    else
        std::cout << std::endl;
}

} // namespace Velno::GMP
