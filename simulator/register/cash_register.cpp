// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/cash_register.h"

#include "ExtDevice/gmp3/key_log.h"
#include "simulator/register/credentials.h"
#include "simulator/register/frame_faults.h"
#include "simulator/register/model_settings.h"
#include "simulator/register/selling_commands.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

// In a key exchange the tool asks at once, so silence means that it has given up. A mute register stays
// connected for longer than any tool waits.
constexpr auto patience = 10s;
constexpr auto mutePatience = 40s;
constexpr auto staleAfter = 10s; // outlasts the time-outs that applications use

std::chrono::milliseconds delayOf(const Faults &faults)
{
    return std::chrono::milliseconds(faults.number(Fault::Delay));
}

} // namespace

CashRegister::CashRegister(const RegisterOptions &options)
    : m_options(options)
    , m_model(options.serial, options.journal)
    , m_receipts(options.receipts)
    , m_events(options.json, options.registers > 1 ? options.serial : QByteArray())
    , m_pairing(m_options.serial, m_options.credentials, m_options.appHash, m_options.faults)
    , m_commands(m_options.serial, m_model, m_options.faults)
{
    m_silence.setSingleShot(true);
    m_delay.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { m_wire.drop(u"the other side is silent"_s); });
    connect(&m_delay, &QTimer::timeout, this, &CashRegister::sendNow);
    connect(&m_wire, &Wire::unreachable, this, [this](const QString &reason) {
        m_events.write("unreachable", {{"reason", reason}});
    });
    connect(&m_wire, &Wire::connected, this, &CashRegister::takeConnection);
    connect(&m_wire, &Wire::recognised, this, &CashRegister::takePurpose);
    connect(&m_wire, &Wire::frameReceived, this, &CashRegister::takeFrame);
    connect(&m_wire, &Wire::unreadable, this, &CashRegister::refuse);
    connect(&m_wire, &Wire::disconnected, this, &CashRegister::takeEnd);
}

QString CashRegister::prepare()
{
    if (!m_model.journalProblem().isEmpty())
        return u"--journal: "_s + m_model.journalProblem();
    m_model.setPrinter([this](const Print &print) { takePrint(print); });
    if (const QString problem = applySettings(m_options.settings, m_model); !problem.isEmpty())
        return problem;
    m_model.setPaper(m_options.paper);
    putPaperIn(m_options.faults.names());
    return {};
}

void CashRegister::start()
{
    if (!m_model.journalWarning().isEmpty())
        m_events.write("warning", {{"message", m_model.journalWarning()}});
    m_wire.start(m_options.host, m_options.port, m_options.throughRelay ? m_options.serial : QByteArray(),
                 m_options.registers);
}

void CashRegister::takeConnection()
{
    m_conversed = m_mute = m_paired = m_restIsDue = false;
    m_pairing.begin();
    // A register without keys closes connections on which nobody speaks. With keys, or at a relay, it may be
    // long before an application has a command.
    if (!m_commands.holdsKeys() && !m_options.throughRelay)
        m_silence.start(patience);
    m_events.write("connected");
}

/** A key exchange that has begun must go on: silence ends it, also at a relay. */
void CashRegister::takePurpose()
{
    if (m_wire.purpose() != Purpose::KeyExchange)
        return;
    m_conversed = true;
    m_silence.start(patience);
}

void CashRegister::takeFrame(const QByteArray &frame)
{
    if (m_mute)
        return;
    if (m_wire.purpose() == Purpose::Commands)
        takeCommand(frame);
    else
        takePairingRequest(frame);
}

void CashRegister::takePairingRequest(const QByteArray &frame)
{
    if (m_delay.isActive())
        return refuse(u"a frame came before the last was answered"_s);
    const PairingResponder::Request request = m_pairing.read(frame);
    if (!request.refusal.isEmpty())
        return refuse(request.refusal);
    const MessageTag kind = request.kind;
    m_events.write("request", {{"kind", kindName(kind)}});
    const int step = stepOf(kind);
    m_mute = m_options.faults.hitsStep(Fault::Mute, step);
    m_silence.start(m_mute ? mutePatience : patience);
    if (m_options.faults.hitsStep(Fault::Close, step))
        close(u"closed instead of answering"_s);
    else if (!m_mute)
        sendAfter(delayOf(m_options.faults) + m_options.pace.forPairingAnswer(),
                  [this, kind, answer = m_pairing.answer(kind)] { sendPairingAnswer(kind, answer); });
}

void CashRegister::takeCommand(const QByteArray &frame)
{
    m_silence.stop();
    const CommandResponder::Request request = m_commands.read(frame);
    if (!request.refusal.isEmpty())
        return refuse(request.refusal);
    if (request.command)
        return obey(request);
    m_events.write("unpaired");
    m_silence.start(patience);
}

void CashRegister::obey(const CommandResponder::Request &request)
{
    const CommandRow &command = *request.command;
    const QLatin1StringView name(command.name);
    emit talked();
    const Faults faults = takeFaultsFor(request);
    m_events.write("command", {{"command", name}});
    if (faults.hitsCommand(Fault::Close, command))
        return close(u"closed instead of answering"_s);
    m_mute = faults.hitsCommand(Fault::Mute, command);
    if (m_mute)
        return;
    const ReceiptRef before = m_model.saleReference();
    const SaleTotals totals = m_model.saleTotals();
    m_work = {};
    const CommandResponder::Answer answer = m_commands.answer(request, faults);
    if (const ReceiptRef now = m_model.saleReference(); now != ReceiptRef() && now != before)
        m_provoked.clear();
    if (faults.hitsCommand(Fault::PowerCut, command))
        return cutPower();
    const bool lost = faults.hitsCommand(Fault::LostAnswer, command);
    if (lost || answer.frame.isEmpty())
        tellOutcome("done", command, answer.refusal);
    if (lost)
        return m_wire.drop(u"the answer was lost"_s);
    const auto time = m_options.pace.forCommand(workBehind(before, totals));
    if (answer.frame.isEmpty())
        return workFor(time);
    sendAfter(delayOf(faults) + time,
              [this, &command, answer, faults] { sendCommandAnswer(command, answer, faults); });
}

/** The faults in force for a request; those that its items provoke are among them, and may be spent by it. */
Faults CashRegister::takeFaultsFor(const CommandResponder::Request &request)
{
    const QList<ItemRequest> sold = itemsToSell(request.items);
    for (const QString &message : misnamedAmong(sold))
        m_events.write("warning", {{"message", message}});
    const QStringList provoked = provokedBy(sold);
    for (const QString &fault : provoked)
        m_events.write("provoked", {{"fault", fault}});
    m_provoked.add(provoked);
    putPaperIn(provoked);
    Faults inForce = m_provoked.take(*request.command, m_options.faults);
    for (const QString &fault : m_options.faults.spend(*request.command))
        m_events.write("spent", {{"fault", fault}});
    return inForce;
}

/** For as many prints as a fault among these says. */
void CashRegister::putPaperIn(const QStringList &faults)
{
    for (const QString &text : faults) {
        Faults fault;
        fault.switchOn(text);
        if (fault.has(Fault::PaperOutAfter))
            m_model.setPrintsLeft(fault.number(Fault::PaperOutAfter));
    }
}

void CashRegister::cutPower()
{
    m_model.restart();
    m_events.write("power-cut");
    m_wire.drop(u"the power was cut"_s);
}

/** What the command in progress has come to. @param before  the totals of the sale that was open when it came
 */
Work CashRegister::workBehind(const ReceiptRef &sale, const SaleTotals &before) const
{
    Work work = m_work;
    if (sale == ReceiptRef())
        return work;
    const bool isOpen = m_model.saleReference() == sale;
    const SaleTotals now = isOpen ? m_model.saleTotals() : m_model.receipt(sale).value_or(before);
    work.cash = now.cash > before.cash;
    work.card = now.card > before.card;
    return work;
}

void CashRegister::takePrint(const Print &print)
{
    const QString kind = QString::fromLatin1(print.kind);
    const QStringList lines = print.lines();
    ++m_work.prints;
    m_work.lines += int(lines.size());
    m_work.report = kind == u"z-report";
    if (const QString problem = m_receipts.write(print); !problem.isEmpty())
        m_events.write("error", {{"message", problem}});
    if (m_options.json) // a single line for people cannot show the printed lines
        m_events.write("printed",
                       {{"kind", kind}, {"z", print.z}, {"receipt", print.number}, {"lines", lines}});
    else
        m_events.write("printed", {{"kind", kind}, {"z", print.z}, {"receipt", print.number}});
    if (kind == u"receipt" || kind == u"invoice")
        emit receiptClosed();
}

/** With what is not answered: the next command waits. */
void CashRegister::workFor(std::chrono::milliseconds time)
{
    m_isAtWork = time.count() > 0;
    sendAfter(time, [this] {
        m_isAtWork = false;
        m_wire.resume();
        emit talked();
    });
}

void CashRegister::sendAfter(std::chrono::milliseconds wait, std::function<void()> send)
{
    if (wait.count() == 0)
        return send();
    m_send = std::move(send);
    m_silence.stop();
    if (m_wire.purpose() == Purpose::Commands)
        m_wire.pause(); // the next command waits for its turn
    m_delay.start(wait);
}

void CashRegister::sendNow()
{
    m_delay.stop();
    const auto send = std::exchange(m_send, nullptr); // it may have something to send later, too
    send();
}

void CashRegister::sendPairingAnswer(MessageTag kind, const PairingResponder::Answer &answer)
{
    const Faults &faults = m_options.faults;
    const bool garbage = faults.has(Fault::Garbage);
    m_wire.send(pairingBytes(answer.frame, faults), faults.number(Fault::Segments));
    m_silence.start(patience);
    m_events.write("result", {{"kind", kindName(kind)},
                              {"code", QString::fromLatin1(garbage ? QByteArray() : answer.resultCode)}});
    m_paired = answer.paired && !garbage;
    if (!answer.refusal.isEmpty())
        return refuse(answer.refusal);
    if (m_paired) {
        takeKeys(m_pairing.takeKeys());
        m_events.write("paired", {{"serial", QString::fromLatin1(m_options.serial)}});
    }
    if (m_paired || faults.has(Fault::BadLength))
        close(u"said everything"_s);
}

void CashRegister::takeKeys(const MatchExt &keys)
{
    m_commands.setKeys(keys);
    if (m_options.keyLog.isEmpty())
        return;
    if (const QString problem = appendToKeyLog(m_options.keyLog, keys); !problem.isEmpty())
        m_events.write("error", {{"message", problem}});
}

void CashRegister::tellOutcome(const char *event, const CommandRow &command, Refusal refusal)
{
    const QLatin1StringView name(command.name);
    if (refusal == NotRefused)
        return m_events.write(event, {{"command", name}, {"accepted", true}});
    const RefusalRow &reason = rowOf(refusal);
    m_events.write(event, {{"command", name},
                           {"accepted", false},
                           {"reason", QLatin1StringView(reason.name)},
                           {"text", QLatin1StringView(reason.text)}});
}

void CashRegister::sendCommandAnswer(const CommandRow &command, const CommandResponder::Answer &answer,
                                     const Faults &faults)
{
    const CommandBytes bytes = commandBytes(answer.frame, faults);
    const int segment = faults.number(Fault::Segments);
    m_wire.send(bytes.now, segment);
    if (!m_wire.isConnected())
        return; // it does not read
    m_restIsDue = !bytes.later.isEmpty();
    const auto finish = [=, this, &command, rest = bytes.later, refusal = answer.refusal,
                         closes = faults.has(Fault::BadLength)] {
        m_restIsDue = false;
        m_wire.send(rest, segment);
        m_wire.resume();
        tellOutcome("answered", command, refusal);
        emit talked();
        if (closes)
            close(u"said everything"_s);
    };
    sendAfter(m_restIsDue ? staleAfter : 0s, finish);
}

void CashRegister::refuse(const QString &reason)
{
    m_delay.stop();
    m_events.write("refused", {{"reason", reason}});
    close(u"refused"_s);
}

/** Closes when everything is sent, or when the other side has not taken it in time. */
void CashRegister::close(const QString &reason)
{
    m_silence.start(patience);
    m_wire.close(reason);
}

void CashRegister::takeEnd(const QString &reason)
{
    m_silence.stop();
    m_delay.stop();
    m_restIsDue = m_isAtWork = false;
    m_events.write("disconnected", {{"reason", reason}});
    if (m_options.once && m_conversed)
        emit finished(m_paired ? 0 : 1);
}

QString CashRegister::obey(const QString &line)
{
    return line.startsWith(u"fault ") ? changeFaults(line) : changeModel(line);
}

QString CashRegister::changeModel(const QString &line)
{
    auto [known, error] = obeySettingLine(line, m_model);
    if (!known)
        error = m_options.faults.obey(line) + u", "_s + settingLines().join(", "_L1);
    if (error.isEmpty())
        m_events.write("set", {{"name", line.section(u' ', 0, 0)}, {"value", line.section(u' ', -1)}});
    return error;
}

/**
 * A key exchange in progress ends, so that the next one is under the new faults from its first message. A
 * connection for commands stays, unless an answer is due on it; of one that is half sent the rest follows.
 */
QString CashRegister::changeFaults(const QString &line)
{
    Faults faults = m_options.faults;
    QString error = faults.obey(line);
    if (error.isEmpty())
        error = credentialsProblem(m_options.credentials, faults);
    if (!error.isEmpty())
        return error;
    m_options.faults = faults;
    m_provoked.clear();
    if (line != u"fault none")
        putPaperIn({line.section(u' ', 1)});
    if (m_restIsDue)
        sendNow(); // before the change is told: a test that has read of it knows that the rest is sent
    m_events.write("fault", {{"active", faults.names()}});
    if (m_wire.isConnected() && (m_conversed || m_mute || (m_delay.isActive() && !m_isAtWork)))
        m_wire.drop(u"the faults have changed"_s);
    return {};
}

void CashRegister::stop()
{
    m_options.once = false; // told to stop: the exit code does not say whether it was paired
    m_wire.stop();
}

} // namespace Simulator
