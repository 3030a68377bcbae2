// SPDX-License-Identifier: Apache-2.0

#include "tests/support/simulated_relay.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

quint16 portOf(const QJsonValue &place)
{
    return place.toString().section(u':', -1).toUShort();
}

} // namespace

QString SimulatedRelay::program()
{
    return QString::fromUtf8(VELNO_RELAY_PROGRAM);
}

// A port that is named again later in the line replaces the free one.
SimulatedRelay::SimulatedRelay(const QStringList &arguments, const std::function<void()> &prepare)
    : ChildProgram(program(),
                   QStringList{u"--app-ports"_s, u"0,0"_s, u"--register-port"_s, u"0"_s} + arguments, prepare)
{
}

quint16 SimulatedRelay::applicationPort(int which) const
{
    return portOf(events().value(0).value(u"applications"_s).toArray().at(which));
}

quint16 SimulatedRelay::registerPort() const
{
    return portOf(events().value(0).value(u"registers"_s));
}
