// SPDX-License-Identifier: Apache-2.0

#include "simulation/world.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;
using Simulator::CommandRow;
using Velno::GMP::Items;

namespace Simulation {

namespace {

constexpr char serial[] = "UB1234567890";
constexpr unsigned connectTimeout = 10'000;    // ms
constexpr int mostCommands = 20'000;           // of a step
constexpr qint64 longestStep = 24 * 3'600'000; // ms
constexpr int nobodyConnected = 1006;

Meeting meeting()
{
    Meeting place;
    place.appNo = 5;
    place.serial = serial;
    place.address = "127.0.0.1";
    place.port = 4100;
    place.connectTimeout = connectTimeout;
    return place;
}

/** What a process has in memory goes with it. */
void forgetProcess()
{
    Velno::Ext::LibraryState &library = Velno::Ext::library();
    library.connections.clear();
    library.activeDevice.clear();
    library.pairingRecords.clear();
    library.slipContent.clear();
    library.codecSet = false;
}

/** The name of the first item that a command sells; empty when it sells none. */
QString firstSold(const Items &items)
{
    if (items.has("price"))
        return QString::fromUtf8(items.bytes("name"));
    const bool isList = items.has("items") && !items.records("items").empty();
    return isList ? QString::fromUtf8(items.records("items").front().bytes("name")) : QString();
}

} // namespace

World::World(const Plan &plan, const Rules &rules)
    : m_plan(plan)
    , m_rules(rules)
    , m_chance(plan.seed)
    , m_register(serial, m_clock, plan.seed)
{
    // Above those of a register that takes its place.
    m_register.model().setZNumber(m_chance.from(2, 2000));
    m_register.model().setPrinter([this](const Simulator::Print &print) { m_truth.notePrint(print); });
    m_register.decide = [this](const CommandRow &command, const Items &items) {
        return decide(command, items);
    };
    m_disk.watch = [this](DiskWork work) { return touchDisk(work); };
    Velno::Ext::library().connector = [this](const QByteArray &, Velno::GMP::MatchExt *record,
                                             std::unique_ptr<QIODevice> *connection) {
        return connect(record, connection);
    };
}

World::~World()
{
    endTill();
    Velno::Ext::library().connector = nullptr;
}

// What happens to the register and the till ----------------------------------------------------------------

int World::connect(Velno::GMP::MatchExt *record, std::unique_ptr<QIODevice> *connection)
{
    const qint64 away = m_awayUntil - m_clock.passed();
    if (m_isDead || away > connectTimeout) {
        m_clock.pass(connectTimeout);
        return Velno::Ext::failedBy(Velno::Ext::ConnectionFailed, nobodyConnected);
    }
    m_clock.pass(std::max<qint64>(away, 0));
    return m_register.connect(record, connection);
}

Fate World::decide(const CommandRow &command, const Items &items)
{
    ++m_figures.commands;
    if (++m_commandsOfStep > mostCommands || m_clock.passed() > m_stepBegan + longestStep) {
        fail(u"it does not come to an end"_s);
        kill(false);
    }
    Fate fate;
    fate.isDone = !m_isDead;
    m_hindrances.easeUp();
    m_clerk.easeUp();
    fate.isRefused = m_hindrances.refuses(command, items);
    fate.behind = [this, &items] { see(items); };
    const Mishap *const mishap = m_isDead ? nullptr : m_mishaps.at(Where::Command);
    if (trace)
        tell(u"    %1%2"_s.arg(QLatin1StringView(command.name), fate.isRefused ? u" (refused)"_s : u""_s));
    if (mishap)
        befall(*mishap, command, items, &fate);
    if (fate.isDone && fate.answer == Fate::Answer::Given && !fate.isRefused)
        noteTold(command, items);
    return fate;
}

/** What the till comes to know by the answer. */
void World::noteTold(const CommandRow &command, const Items &items)
{
    const QLatin1StringView name(command.name);
    if (name == "receipt"_L1)
        m_truth.noteReceiptTold(m_register.model(), {items.int32("z"), items.int32("receipt")});
    // In other states the library tells nothing of the sale.
    if (name == "sale-state"_L1 && m_register.model().state() == Simulator::State::SaleOpen)
        m_truth.noteTold();
}

/** What a command that was done has changed. */
void World::see(const Items &items)
{
    const SeenSale *const closed = m_truth.look(m_register.model());
    if (closed && m_hindrances.noteClosed(closed->ref))
        m_truth.noteLate();
    if (const QString name = firstSold(items); !name.isEmpty()) {
        m_truth.noteLine(name);
        checkOrderOf(keyIn(name));
    }
}

void World::befall(const Mishap &mishap, const CommandRow &command, const Items &items, Fate *fate)
{
    using Given = Fate::Answer;
    tell(u"    ! %1 (%2)"_s.arg(QLatin1StringView(mishap.row->name)).arg(mishap.number));
    if (m_hindrances.begin(mishap, command)) {
        fate->isRefused = m_hindrances.refuses(command, items) || fate->isRefused;
        return;
    }
    const auto become = [fate](bool isDone, Given given) {
        fate->isDone = isDone;
        fate->answer = given;
    };
    if (m_clerk.begin(mishap)) {
        // What the till sends does not say for which sale it is: its line is down before another one begins.
        return become(mishap.number % 2 != 0 && !m_clerk.isSelling(), Given::Lost);
    }
    switch (mishap.row->kind) {
    case MishapKind::Drop:
        return become(false, Given::Lost);
    case MishapKind::Unheard:
        return become(true, Given::Lost);
    case MishapKind::Damaged:
        return become(true, Given::Damaged);
    case MishapKind::Short:
        return become(true, Given::Short);
    case MishapKind::Silent:
        return become(false, Given::Never);
    case MishapKind::SilentBehind:
        return become(true, Given::Never);
    case MishapKind::Cut:
        become(false, Given::Lost);
        return cutRegister(mishap.number);
    case MishapKind::CutBehind:
        become(true, Given::Lost);
        fate->behind = [this, done = fate->behind, number = mishap.number] {
            done();
            cutRegister(number);
        };
        return;
    case MishapKind::ForgetKeys:
        become(false, Given::Lost);
        return m_register.forgetKeys();
    case MishapKind::Replace:
        become(false, Given::Lost);
        return replaceRegister();
    default:
        return befallTill(mishap.row->kind, fate);
    }
}

void World::befallTill(MishapKind kind, Fate *fate)
{
    const bool isBehind = kind == MishapKind::KillBehind || kind == MishapKind::OffBehind;
    const bool isPower = kind == MishapKind::Off || kind == MishapKind::OffBehind;
    fate->isDone = isBehind;
    fate->answer = Fate::Answer::Lost;
    if (!isBehind)
        return kill(isPower);
    fate->behind = [this, done = fate->behind, isPower] {
        done();
        kill(isPower);
    };
}

bool World::touchDisk(DiskWork work)
{
    if (work == DiskWork::Flush)
        ++m_figures.flushes;
    if (trace)
        tell(work == DiskWork::Flush ? u"    flush"_s : u"    write"_s);
    const Mishap *const mishap = m_mishaps.at(work == DiskWork::Flush ? Where::Flush : Where::Write);
    if (!mishap)
        return true;
    tell(u"    ! %1 at a %2"_s.arg(QLatin1StringView(mishap->row->name),
                                   work == DiskWork::Flush ? u"flush"_s : u"write"_s));
    switch (mishap->row->kind) {
    case MishapKind::DiskFull:
        m_disk.setFull(true);
        return true;
    case MishapKind::WriteFails:
    case MishapKind::FlushFails:
        return false;
    default:
        kill(mishap->row->kind == MishapKind::Off);
        return true;
    }
}

void World::cutRegister(int milliseconds)
{
    m_register.cutPower();
    m_awayUntil = m_clock.passed() + milliseconds;
    m_truth.look(m_register.model());
}

void World::replaceRegister()
{
    // Whoever has just made the first Z report of a register could not tell another new one from it.
    const bool isReporting =
        std::ranges::any_of(m_turn, [](const Handed *h) { return h->step->job == Job::ZReport; });
    if (isReporting && m_register.models().size() > 1)
        return;
    m_register.cutPower(); // nobody carries it away with its power on
    m_truth.look(m_register.model());
    m_register.replace();
    m_register.model().setPrinter([this](const Simulator::Print &print) { m_truth.notePrint(print); });
}

void World::kill(bool power)
{
    if (power)
        m_disk.cutPower(m_chance);
    else
        m_disk.endProcess();
    m_clock.setRunning(false);
    m_isDead = true;
    m_register.drop();
    ++m_figures.deaths;
}

void World::repair()
{
    tell(u"  everything is repaired"_s);
    m_figures.mishaps += m_mishaps.happened();
    m_mishaps.end();
    m_hindrances.repair();
    m_clerk.repair();
    m_disk.setFull(false);
}

// The life of a till ---------------------------------------------------------------------------------------

QString World::startTill()
{
    m_disk.beginProcess();
    m_clock.setRunning(true);
    m_isDead = false;
    m_till = std::make_unique<Till>(meeting(), m_clock, m_rules);
    m_till->setListener([this](const Order &, Stage stage) {
        if (stage == Stage::CashPayment || stage == Stage::CardPayment || stage == Stage::Closing)
            m_truth.notePayment();
    });
    return m_till->open({u"/ledger"_s, serial, m_disk.name()});
}

void World::endTill()
{
    m_disk.endProcess();
    m_register.drop();
    forgetProcess();
    m_till.reset();
}

/** @return whether it was dead */
bool World::bury()
{
    if (m_isDead)
        endTill();
    return std::exchange(m_isDead, false);
}

void World::tell(const QString &line) const
{
    if (trace)
        trace(u"%1 ms %2"_s.arg(m_clock.passed(), 9).arg(line));
}

void World::fail(const QString &what)
{
    if (m_failure.isEmpty())
        m_failure = what;
    tell(u"FAILED: "_s + what);
}

} // namespace Simulation
