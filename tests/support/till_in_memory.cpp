// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_in_memory.h"

using namespace Qt::StringLiterals;
using namespace Simulation;
using namespace Velno::Receipts;

namespace TestSupport {

namespace {

constexpr char serialOfTheRegister[] = "UB1234567890";

} // namespace

TillInMemory::TillInMemory(const Rules &rules)
    : reg(serialOfTheRegister, clock, 1)
    , m_rules(rules)
{
    Velno::Ext::library().connector = [this](const QByteArray &, Velno::GMP::MatchExt *record,
                                             std::unique_ptr<QIODevice> *connection) {
        return reg.connect(record, connection);
    };
    reg.model().setPrinter([this](const Simulator::Print &) { ++m_printed; });
    reg.decide = [this](const Simulator::CommandRow &command, const Velno::GMP::Items &) {
        ++commands[command.name];
        const auto met = m_meetings.find(command.name);
        if (met == m_meetings.end())
            return Simulation::Fate();
        const Simulation::Fate fate = met->second.fate;
        if (--met->second.times == 0)
            m_meetings.erase(met);
        return fate;
    };
    beginProcess();
}

TillInMemory::~TillInMemory()
{
    till.reset();
    velnoext_forget_device(serialOfTheRegister);
    velnoext_close();
    Velno::Ext::library().connector = {};
}

void TillInMemory::beginProcess()
{
    till.reset();
    velnoext_forget_device(serialOfTheRegister);
    Velno::Receipts::Meeting meeting;
    meeting.appNo = 5;
    meeting.serial = serialOfTheRegister;
    meeting.address = "127.0.0.1";
    meeting.port = 4100;
    till = std::make_unique<Till>(meeting, clock, m_rules);
    const QString problem = till->open({u"/ledger"_s, meeting.serial, m_disk.name()});
    if (!problem.isEmpty())
        qFatal("%s", qPrintable(problem));
    till->setListener([this](const Order &, Stage stage) { stages << stage; });
}

Outcome TillInMemory::sell(const QByteArray &json, const QString &key)
{
    stages.clear();
    return till->perform(key, Kind::Receipt, json);
}

bool TillInMemory::sellFirst()
{
    return sell(receiptPaidBy(R"({"cash": "rest"})"), u"first"_s).order.state == State::Closed;
}

void TillInMemory::meet(const char *command, const Simulation::Fate &fate, int times)
{
    m_meetings.insert_or_assign(command, Meeting{fate, times});
}

int TillInMemory::closed() const
{
    int count = 0;
    auto &models = const_cast<SimulatedRegister &>(reg).models();
    for (Simulator::FiscalModel &model : models)
        for (qint32 z = 1; z <= model.zNumber(); ++z)
            for (qint32 number = 1; number < 100; ++number)
                count += model.receipt({z, number}) ? 1 : 0;
    return count;
}

QByteArray receiptPaidBy(const QByteArray &payments, const QByteArray &more)
{
    return R"({"items": [{"name": "Ekmek", "price": "12.50", "section": 1}, {"name": "Süt", "price": "12.50", )"
           R"("section": 1}], "payments": [)" +
           payments + ']' + (more.isEmpty() ? QByteArray() : ", " + more) + '}';
}

} // namespace TestSupport
