// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/cash_register.h"

#include <memory>
#include <vector>

namespace Simulator {

/** velno-register as a program: the register or the registers that it plays, their operator, and its end. */
class RegisterProgram : public QObject
{
    Q_OBJECT

public:
    explicit RegisterProgram(const RegisterOptions &options, QObject *parent = nullptr);

    /** To be called first. @return an empty text, or why it cannot be what it was asked to be */
    QString prepare();

    /** @param control  where lines are taken beside standard input, for the `ready` event; empty: nowhere */
    void start(const QString &control = {});

    /**
     * A line of the operator: quit, or what a CashRegister obeys. It is for all registers, unless the serial
     * number of one of them stands in front.
     *
     * @return an empty text, or what was wrong and what is accepted
     */
    QString obey(const QString &line);

    /** A line on standard input, where an event tells what was wrong. */
    void takeLine(const QString &line);
    void stop() { end(0); }

signals:
    void finished(int exitCode);

private:
    QString obeyAll(const QString &line);
    void takeClosing();
    void takeTalk();
    void takeQuiet();
    void end(int exitCode);

    RegisterOptions m_options;
    EventWriter m_events;
    std::vector<std::unique_ptr<CashRegister>> m_registers;
    int m_sold = 0; ///< receipts closed
    QTimer m_quiet; ///< runs from the last receipt on, anew from every word of an application
    bool m_ended = false;
};

} // namespace Simulator
