// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/child_program.h"

/** The real velno-register as a child process. */
class SimulatedRegister : public ChildProgram
{
public:
    static constexpr char serial[] = "UB1234567890";

    /** Starts it towards this port of the loopback address and returns at its `ready` line. */
    explicit SimulatedRegister(quint16 port, const QStringList &arguments = {});
    /** The same, where `arguments` say where it goes: with --relay. */
    explicit SimulatedRegister(const QStringList &arguments);

    static QString program();
};
