// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/child_program.h"

/** The real velno-relay as a child process. */
class SimulatedRelay : public ChildProgram
{
public:
    /** On free ports of the loopback address. */
    explicit SimulatedRelay(const QStringList &arguments = {}, const std::function<void()> &prepare = {});

    static QString program();

    quint16 applicationPort(int which = 1) const; ///< 0: for application 999999, 1: for all others
    quint16 registerPort() const;
};
