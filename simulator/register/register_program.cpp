// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/register_program.h"

#include "simulator/common/descriptors.h"
#include "translations/spoken.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Simulator {

namespace {

// An application that has closed its last receipt asks what became of it at once.
constexpr auto lastWords = 2s;

/** What the register at this place, counted from 0, is asked to be. */
RegisterOptions optionsOf(const RegisterOptions &all, int place)
{
    RegisterOptions options = all;
    options.serial = serialBehind(all.serial, place);
    if (!all.throughRelay) // which knows them by their names
        options.port = quint16(all.port + place);
    return options;
}

} // namespace

RegisterProgram::RegisterProgram(const RegisterOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_events(options.json)
{
    for (int place = 0; place < options.registers; ++place) {
        auto &added = m_registers.emplace_back(std::make_unique<CashRegister>(optionsOf(options, place)));
        connect(added.get(), &CashRegister::receiptClosed, this, &RegisterProgram::takeClosing);
        connect(added.get(), &CashRegister::talked, this, &RegisterProgram::takeTalk);
        connect(added.get(), &CashRegister::finished, this, &RegisterProgram::end);
    }
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(lastWords);
    connect(&m_quiet, &QTimer::timeout, this, &RegisterProgram::takeQuiet);
}

QString RegisterProgram::prepare()
{
    if (const size_t room = roomForConnections(); m_registers.size() > room)
        return Spoken::tr("--registers %1: this process may have only %2 connections (ulimit -Hn)")
            .arg(m_registers.size())
            .arg(room);
    for (const auto &cashRegister : m_registers)
        if (const QString problem = cashRegister->prepare(); !problem.isEmpty())
            return problem;
    return {};
}

void RegisterProgram::start(const QString &control)
{
    const QString host = m_options.host.contains(u':') ? u'[' + m_options.host + u']' : m_options.host;
    EventFields fields{{"serial", QString::fromLatin1(m_options.serial)},
                       {"target", u"%1:%2"_s.arg(host, QString::number(m_options.port))},
                       {"faults", m_options.faults.names()}};
    if (m_options.registers > 1)
        fields.append({"registers", m_options.registers});
    if (!control.isEmpty())
        fields.append({"control", control});
    m_events.write("ready", fields);
    for (const auto &cashRegister : m_registers)
        cashRegister->start();
}

QString RegisterProgram::obey(const QString &line)
{
    if (line == u"quit") {
        stop();
        return {};
    }
    const QString first = line.section(u' ', 0, 0);
    const auto named = std::ranges::find(m_registers, first.toLatin1(), &CashRegister::serial);
    return named == m_registers.end() ? obeyAll(line) : (*named)->obey(line.section(u' ', 1).trimmed());
}

/** All or none: what one of them refuses, the others have not done, unless it is about what is only its own.
 */
QString RegisterProgram::obeyAll(const QString &line)
{
    for (const auto &cashRegister : m_registers)
        if (const QString problem = cashRegister->obey(line); !problem.isEmpty())
            return m_registers.size() == 1 ? problem
                                           : QString::fromLatin1(cashRegister->serial()) + u": "_s + problem;
    return {};
}

void RegisterProgram::takeLine(const QString &line)
{
    if (const QString error = obey(line); !error.isEmpty())
        m_events.write("error", {{"message", error}});
}

void RegisterProgram::takeClosing()
{
    if (++m_sold >= m_options.sales && m_options.sales > 0)
        m_quiet.start();
}

void RegisterProgram::takeTalk()
{
    if (m_quiet.isActive())
        m_quiet.start();
}

void RegisterProgram::takeQuiet()
{
    if (std::ranges::any_of(m_registers, &CashRegister::isBusy))
        return m_quiet.start();
    end(0);
}

void RegisterProgram::end(int exitCode)
{
    if (std::exchange(m_ended, true))
        return;
    m_quiet.stop();
    for (const auto &cashRegister : m_registers)
        cashRegister->stop();
    m_events.write("stopped");
    emit finished(exitCode);
}

} // namespace Simulator
