// SPDX-License-Identifier: Apache-2.0

// Commands to the simulated register, behind a right MAC and without one: what they may do to its till.
#include "fuzz/fuzz_input.h"
#include "fuzz/paired_record.h"
#include "simulator/register/command_responder.h"

#include <QCoreApplication>
#include <QtEndian>

using namespace Velno::GMP;

namespace {

QByteArray frameFrom(Fuzz::Input &input)
{
    static const MatchExt record = Fuzz::pairedRecord();
    const std::uint8_t how = input.byte();
    const QByteArray bytes = input.chunk();
    switch (how >> 5) {
    case 7:
        return how & 1 ? GMP3::frame(true, None, bytes, "UB0000000001") : bytes;
    case 6:
        return GMP3::frame(true, None, bytes, Fuzz::serial);
    case 5:
        return Fuzz::authentic(record, bytes);
    default: {
        QByteArray plaintext(sizeof(quint32), Qt::Uninitialized);
        qToBigEndian(quint32(how & 0x1F), plaintext.data());
        return Fuzz::sealed(record, plaintext + bytes);
    }
    }
}

/** What its operator has done before. */
void prepare(Simulator::FiscalModel &model, std::uint8_t what)
{
    if (what & 1)
        model.setSaleLimit(10'000);
    if (what & 2)
        model.setPrintsLeft(1);
    if (what & 4)
        model.setState(Simulator::State(what >> 4));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    static const Simulator::Faults faults;
    Simulator::FiscalModel model(Fuzz::serial);
    FUZZ_EXPECT(model.journalProblem().isEmpty());
    model.setPrinter([](const Simulator::Print &) {});
    Fuzz::Input input(data, size);
    prepare(model, input.byte());
    Simulator::CommandResponder responder(Fuzz::serial, model, faults);
    responder.setKeys(Fuzz::pairedRecord());
    while (!input.atEnd()) {
        const auto request = responder.read(frameFrom(input));
        if (request.refusal.isEmpty() && request.command)
            responder.answer(request, faults);
        FUZZ_EXPECT(model.saleTotals().items >= 0);
    }
    return 0;
}
