#include "simulator/cash_register.h"

#include "simulator/frame_faults.h"
#include "simulator/model_settings.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

// In a key exchange the tool asks at once, so silence means that it has given up. A mute register outlasts
// every reader's patience.
constexpr auto patience = 10s;
constexpr auto mutePatience = 40s;
constexpr auto staleAfter = 10s; // outlasts the time-outs that applications use

} // namespace

CashRegister::CashRegister(const RegisterOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_events(options.json)
    , m_pairing(m_options.serial, m_options.credentials, m_options.appHash, m_options.faults)
    , m_commands(m_options.serial, m_options.model, m_options.faults)
{
    m_silence.setSingleShot(true);
    m_delay.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { m_wire.drop(u"the other side is silent"_s); });
    connect(&m_delay, &QTimer::timeout, this, &CashRegister::sendNow);
    connect(&m_wire, &Wire::connected, this, &CashRegister::takeConnection);
    connect(&m_wire, &Wire::frameReceived, this, &CashRegister::takeFrame);
    connect(&m_wire, &Wire::unreadable, this, &CashRegister::refuse);
    connect(&m_wire, &Wire::disconnected, this, &CashRegister::takeEnd);
}

void CashRegister::start()
{
    const QString host = m_options.host.contains(u':') ? u'[' + m_options.host + u']' : m_options.host;
    m_events.write("ready", {{"serial", QString::fromLatin1(m_options.serial)},
                             {"target", u"%1:%2"_s.arg(host).arg(m_options.port)},
                             {"faults", m_options.faults.names()}});
    m_wire.start(m_options.host, m_options.port, m_options.throughRelay ? m_options.serial : QByteArray());
}

void CashRegister::takeConnection()
{
    m_conversed = m_mute = m_paired = m_restIsDue = false;
    m_pairing.begin();
    // Whoever has nothing to say to a register without keys wants nothing; with keys, or at a relay, it may
    // be long before an application has a command.
    if (!m_commands.holdsKeys() && !m_options.throughRelay)
        m_silence.start(patience);
    m_events.write("connected");
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
    m_conversed = true;
    if (m_delay.isActive())
        return refuse(u"a frame came before the last was answered"_s);
    const auto [kind, refusal] = m_pairing.read(frame);
    if (!refusal.isEmpty())
        return refuse(refusal);
    m_events.write("request", {{"kind", kindName(kind)}});
    const int step = stepOf(kind);
    m_mute = m_options.faults.hitsStep(Fault::Mute, step);
    m_silence.start(m_mute ? mutePatience : patience);
    if (m_options.faults.hitsStep(Fault::Close, step))
        close(u"closed instead of answering"_s);
    else if (!m_mute)
        sendAfter(delay(),
                  [this, kind, answer = m_pairing.answer(kind)] { sendPairingAnswer(kind, answer); });
}

void CashRegister::takeCommand(const QByteArray &frame)
{
    m_silence.stop();
    const auto [command, refusal] = m_commands.read(frame);
    if (!refusal.isEmpty())
        return refuse(refusal);
    if (!command) {
        m_events.write("unpaired");
        m_silence.start(patience);
        return;
    }
    m_events.write("command", {{"command", QLatin1StringView(command->name)}});
    if (m_options.faults.hitsCommand(Fault::Close, *command))
        return close(u"closed instead of answering"_s);
    m_mute = m_options.faults.hitsCommand(Fault::Mute, *command);
    if (!m_mute)
        sendAfter(delay(), [this, command, answer = m_commands.answer(*command)] {
            sendCommandAnswer(*command, answer);
        });
}

std::chrono::milliseconds CashRegister::delay() const
{
    return std::chrono::milliseconds(m_options.faults.number(Fault::Delay));
}

void CashRegister::sendAfter(std::chrono::milliseconds wait, std::function<void()> send)
{
    if (wait == 0ms)
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
        m_commands.setKeys(m_pairing.keys());
        m_events.write("paired", {{"serial", QString::fromLatin1(m_options.serial)}});
    }
    if (m_paired || faults.has(Fault::BadLength))
        close(u"said everything"_s);
}

void CashRegister::sendCommandAnswer(const CommandRow &command, const CommandResponder::Answer &answer)
{
    const Faults &faults = m_options.faults;
    const CommandBytes bytes = commandBytes(answer.frame, faults);
    const int segment = faults.number(Fault::Segments);
    m_wire.send(bytes.now, segment);
    if (!m_wire.isConnected())
        return; // it does not read
    m_restIsDue = !bytes.later.isEmpty();
    const auto finish = [=, this, rest = bytes.later, name = command.name, accepted = answer.accepted,
                         closes = faults.has(Fault::BadLength)] {
        m_restIsDue = false;
        m_wire.send(rest, segment);
        m_wire.resume();
        m_events.write("answered", {{"command", QLatin1StringView(name)}, {"accepted", accepted}});
        if (closes)
            close(u"said everything"_s);
    };
    sendAfter(m_restIsDue ? staleAfter : 0s, finish);
}

void CashRegister::refuse(const QString &reason)
{
    m_conversed = m_conversed || m_wire.purpose() == Purpose::KeyExchange;
    m_delay.stop();
    m_events.write("refused", {{"reason", reason}});
    close(u"refused"_s);
}

/** Whoever does not take the last bytes in time does not get them. */
void CashRegister::close(const QString &reason)
{
    m_silence.start(patience);
    m_wire.close(reason);
}

void CashRegister::takeEnd(const QString &reason)
{
    m_silence.stop();
    m_delay.stop();
    m_restIsDue = false;
    m_events.write("disconnected", {{"reason", reason}});
    if (m_options.once && m_conversed)
        finish(m_paired ? 0 : 1);
}

void CashRegister::takeLine(const QString &line)
{
    if (line == u"quit")
        stop();
    else if (line.startsWith(u"fault "))
        changeFaults(line);
    else
        changeModel(line);
}

void CashRegister::changeModel(const QString &line)
{
    auto [known, error] = obeySettingLine(line, m_options.model);
    if (!known)
        error = m_options.faults.obey(line) + u", "_s + settingLines().join(", "_L1);
    if (!error.isEmpty())
        m_events.write("error", {{"message", error}});
    else
        m_events.write("set", {{"name", line.section(u' ', 0, 0)}, {"value", line.section(u' ', -1)}});
}

/**
 * A key exchange in progress ends, so that the next one is under the new faults from its first message. A
 * connection for commands stays, unless an answer is due on it; of one that is half sent the rest follows.
 */
void CashRegister::changeFaults(const QString &line)
{
    Faults faults = m_options.faults;
    QString error = faults.obey(line);
    if (error.isEmpty())
        error = credentialsProblem(m_options.credentials, faults);
    if (!error.isEmpty()) {
        m_events.write("error", {{"message", error}});
        return;
    }
    m_options.faults = faults;
    if (m_restIsDue)
        sendNow(); // first, so that whoever hears of the change is past it
    m_events.write("fault", {{"active", faults.names()}});
    if (m_wire.isConnected() && (m_conversed || m_mute || m_delay.isActive()))
        m_wire.drop(u"the faults have changed"_s);
}

void CashRegister::stop()
{
    m_options.once = false; // told to stop: no verdict
    m_wire.stop();
    finish(0);
}

void CashRegister::finish(int exitCode)
{
    if (std::exchange(m_finished, true))
        return;
    m_wire.stop();
    m_events.write("stopped");
    emit finished(exitCode);
}

} // namespace Simulator
