// SPDX-License-Identifier: Apache-2.0

#include "simulation/simulated_register.h"

#include "ExtDevice/gmp3/envelope.h"

#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace Simulator;
using namespace Velno::GMP;

namespace Simulation {

namespace {

constexpr int keySize = 32;
constexpr int blockSize = 16;
constexpr int lengthSize = 4;
constexpr int travelTime = 2; // ms for a command and its answer
constexpr unsigned atOnce = 0;

QByteArray drawn(Chance &chance, int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(chance.below(256));
    return bytes;
}

/** Keys may be sent without waiting for what comes of them. */
bool wantsAnswer(const Items &items)
{
    return !items.has("answer-wanted") || items.flag("answer-wanted");
}

/** What a fault makes of the answer. */
QString faultOf(const Fate &fate, const CommandRow &command)
{
    if (fate.isRefused && command.refusable)
        return u"refuse="_s + QLatin1StringView(command.name);
    if (fate.answer == Fate::Answer::Damaged)
        return u"bad-mac"_s;
    return fate.answer == Fate::Answer::Short ? u"short-reply"_s : QString();
}

} // namespace

SimulatedRegister::SimulatedRegister(const QByteArray &serial, VirtualClock &clock, quint64 seed)
    : m_serial(serial)
    , m_clock(clock)
    , m_chance(seed)
{
    replace();
}

void SimulatedRegister::replace()
{
    drop();
    m_models.emplace_back(m_serial);
    m_commands = std::make_unique<CommandResponder>(m_serial, model(), m_noFaults);
}

int SimulatedRegister::connect(MatchExt *record, std::unique_ptr<QIODevice> *connection)
{
    if (record->aesKey.isEmpty()) {
        m_commands->read(frameOfNoKeys(m_serial)); // it forgets those of an earlier pairing
        record->registerData = m_serial;
        record->hmacKey = drawn(m_chance, keySize);
        record->kcvIv = drawn(m_chance, blockSize);
        record->randomDFC10D = drawn(m_chance, blockSize);
        record->randomDFC10E = drawn(m_chance, blockSize);
        record->aesKey = drawn(m_chance, keySize);
        m_commands->setKeys(*record);
    }
    auto device = std::make_unique<MemoryDevice>();
    Velno::MemoryLink::join(m_end, device->link);
    m_isMute = m_isAwaited = false;
    device->written = [this] { takeFrames(); };
    device->nothingThere = [this] { waitInVain(); };
    *connection = std::move(device);
    return Velno::Ext::Success;
}

void SimulatedRegister::cutPower()
{
    model().stopClockAt(m_clock.seconds());
    model().restart();
    drop();
}

void SimulatedRegister::forgetKeys()
{
    m_commands->setKeys({});
}

/** An answer that never comes ends with the limit that the library has for it, and so does the connection. */
void SimulatedRegister::waitInVain()
{
    if (!m_isMute || !m_isAwaited)
        return;
    m_clock.pass(Velno::Ext::library().answerLimit);
    drop();
}

void SimulatedRegister::takeFrames()
{
    while (m_end.bytesAvailable() >= lengthSize) {
        char length[lengthSize];
        int size = lengthSize;
        if (m_end.read(length, &size, atOnce) != 0)
            return;
        size = int(qFromBigEndian<quint32>(length));
        QByteArray frame(size, Qt::Uninitialized);
        if (m_end.read(frame.data(), &size, atOnce) != 0 || size != frame.size())
            return drop();
        obey(frame);
    }
}

void SimulatedRegister::obey(const QByteArray &frame)
{
    m_clock.pass(travelTime);
    model().stopClockAt(m_clock.seconds());
    const CommandResponder::Request request = m_commands->read(frame);
    if (!request.command) // as a register does that has lost its keys
        return drop();
    m_isAwaited = wantsAnswer(request.items);
    if (m_isMute)
        return;
    const Fate fate = decide ? decide(*request.command, request.items) : Fate();
    const CommandResponder::Answer given = fate.isDone ? answer(request, fate) : CommandResponder::Answer();
    if (fate.isDone && fate.behind)
        fate.behind();
    if (fate.recorded)
        *fate.recorded = given.frame;
    if (fate.answer == Fate::Answer::Lost)
        return drop();
    m_isMute = fate.answer == Fate::Answer::Never;
    const QByteArray told = fate.replayed.isEmpty() ? given.frame : fate.replayed;
    if (m_isMute || told.isEmpty())
        return;
    QByteArray bytes(lengthSize, Qt::Uninitialized);
    qToBigEndian(quint32(told.size()), bytes.data());
    bytes += told;
    [[maybe_unused]] const int status = m_end.write(bytes.constData(), int(bytes.size()), atOnce);
}

CommandResponder::Answer SimulatedRegister::answer(const CommandResponder::Request &request, const Fate &fate)
{
    const QString fault = faultOf(fate, *request.command);
    if (fault.isEmpty())
        return m_commands->answer(request, m_noFaults);
    Faults faults;
    faults.switchOn(fault);
    return m_commands->answer(request, faults);
}

} // namespace Simulation
