// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/command_responder.h"

#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/gmp3/frame.h"
#include "simulator/register/frame_faults.h"
#include "simulator/register/message_body.h"

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

CommandResponder::Request refused(const QString &reason)
{
    return {nullptr, {}, reason};
}

/** What became of a frame that came, for people. */
QString envelopeProblem(int status)
{
    switch (status) {
    case ElementsWrong:
        return u"the frame holds no encrypted command"_s;
    case MacWrong:
        return u"the command's MAC is wrong"_s;
    case NothingDecrypted:
        return u"the command cannot be decrypted"_s;
    default:
        return frameProblem(status);
    }
}

/** Which command a plaintext asks for, and with what. */
CommandResponder::Request readCommand(QByteArrayView plaintext)
{
    const auto code = takeCode(&plaintext);
    if (!code)
        return refused(u"the command is shorter than its number"_s);
    const CommandRow *const command = commandByCode(*code);
    if (!command)
        return refused(u"command %1 is unknown"_s.arg(*code));
    const QLatin1StringView name(command->name);
    auto items = takeItems(command->request, &plaintext);
    if (!items)
        return refused(
            u"the command %1 carries less than it should, or what is none of its items"_s.arg(name));
    if (!plaintext.isEmpty())
        return refused(u"the command %1 carries more than it should"_s.arg(name));
    return {command, std::move(*items), {}};
}

Disturbance disturbanceOf(const CommandRow &command, const Faults &faults)
{
    const auto number = [&faults](Fault fault) {
        return faults.has(fault) ? std::optional(qint32(faults.number(fault))) : std::nullopt;
    };
    return {faults.hitsCommand(Fault::Refuse, command), faults.has(Fault::SaleLimit), number(Fault::State),
            number(Fault::Error)};
}

} // namespace

CommandResponder::CommandResponder(const QByteArray &serial, FiscalModel &model, const Faults &faults)
    : m_serial(serial)
    , m_model(model)
    , m_faults(faults)
{
}

void CommandResponder::forgetKeys()
{
    m_keys = {};
    m_model.logout();
}

CommandResponder::Request CommandResponder::read(const QByteArray &frame)
{
    Envelope envelope;
    const int status = readEnvelope(frame, m_serial, &envelope);
    if (status == EnvelopeOfNoKeys) {
        forgetKeys();
        return {};
    }
    if (status != 0)
        return refused(envelopeProblem(status));
    if (!envelope.isInOrder)
        return refused(envelopeProblem(ElementsWrong));
    if (m_faults.has(Fault::ForgetPairing))
        forgetKeys();
    if (!holdsKeys())
        return refused(u"the register holds no keys; it must be paired first"_s);
    QByteArray plaintext;
    const int opened = openEnvelope(m_keys, envelope, &plaintext);
    return opened == 0 ? readCommand(plaintext) : refused(envelopeProblem(opened));
}

CommandResponder::Answer CommandResponder::answer(const Request &request, const Faults &faults)
{
    ItemWriter reply;
    const Disturbance wrong = disturbanceOf(*request.command, faults);
    const Refusal refusal = request.command->run({m_model, request.items, reply, wrong});
    QByteArray plaintext = reply.bytes();
    if (plaintext.isEmpty())
        return {{}, refusal};
    if (faults.has(Fault::ShortReply))
        plaintext.chop(1);
    return {seal(plaintext, faults), refusal};
}

QByteArray CommandResponder::seal(const QByteArray &plaintext, const Faults &faults) const
{
    const QByteArray elements = elementsUnderFaults(sealedElements(m_keys, plaintext), faults);
    return makeFrame(true, None, elements, serialUnderFaults(m_serial, faults).constData());
}

} // namespace Simulator
