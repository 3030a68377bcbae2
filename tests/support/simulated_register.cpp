// SPDX-License-Identifier: Apache-2.0

#include "tests/support/simulated_register.h"

using namespace Qt::StringLiterals;

QString SimulatedRegister::program()
{
    return QString::fromUtf8(VELNO_REGISTER_PROGRAM);
}

SimulatedRegister::SimulatedRegister(quint16 port, const QStringList &arguments)
    : SimulatedRegister(QStringList{u"--connect"_s, u"127.0.0.1:%1"_s.arg(port)} + arguments)
{
}

SimulatedRegister::SimulatedRegister(const QStringList &arguments)
    : ChildProgram(program(), QStringList{u"--serial"_s, QLatin1StringView(serial)} + arguments)
{
}
