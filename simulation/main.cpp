// SPDX-License-Identifier: Apache-2.0

#include "simulation/shrink.h"
#include "simulation/world.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <ctime>
#include <sqlite3.h>

using namespace Simulation;
using namespace Velno::Receipts;
using namespace Qt::StringLiterals;

namespace {

constexpr int receiptsOfDay = 50;
constexpr int wrongUsage = 64;
constexpr double mostAsked = 8; // of 100 receipts
constexpr int enoughForShares = 1000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

void showTrace(const Plan &plan, const Rules &rules)
{
    World world(plan, rules);
    world.trace = [](const QString &line) { out() << line << '\n'; };
    world.run();
}

/** A failing plan, as small as it gets, and what happens in it. */
void show(const Plan &plan, const Rules &rules, const QString &problem)
{
    out() << "Seed " << plan.seed << " fails: " << problem << '\n';
    out().flush();
    const Plan small = shrunk(plan, rules);
    showTrace(small, rules);
    out() << "velno-simulation --replay '" << small.text() << "'\n";
}

QString share(qint64 part, qint64 whole)
{
    return u"%1 (%2 %)"_s.arg(part).arg(whole == 0 ? 0 : 100.0 * double(part) / double(whole), 0, 'f', 2);
}

/** That this process has had so far: other work on the computer does not count. */
qint64 processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

void show(const Figures &figures, qint64 milliseconds)
{
    const double each = double(std::max<qint64>(figures.receipts, 1));
    out() << figures.receipts << " receipts, " << figures.mishaps << " mishaps, " << figures.deaths
          << " tills killed\n"
          << "closed        " << share(figures.closed, figures.receipts) << '\n'
          << "refused       " << share(figures.refused, figures.receipts) << '\n'
          << "cancelled     " << share(figures.cancelled, figures.receipts) << '\n'
          << "person asked  " << share(figures.asked, figures.receipts) << '\n'
          << "questions    ";
    for (size_t i = 1; i < figures.questions.size(); ++i)
        out() << ' ' << figures.questions.at(i);
    out() << "\ncommands a receipt " << double(figures.commands) / each << ", flushes "
          << double(figures.flushes) / each << '\n'
          << "receipts a second of processor time  "
          << qint64(each * 1000 / double(std::max<qint64>(milliseconds, 1))) << '\n';
}

std::optional<Rules> rulesWithout(const QStringList &names)
{
    Rules rules;
    for (const QString &name : names) {
        const auto row = std::ranges::find_if(
            ruleTable(), [&name](const RuleRow &r) { return name == QLatin1StringView(r.name); });
        if (row == ruleTable().end())
            return std::nullopt;
        rules.switchOff(row->rule);
    }
    return rules;
}

int replay(const QString &text, const Rules &rules)
{
    const auto plan = Plan::fromText(text);
    if (!plan)
        return wrongUsage;
    showTrace(*plan, rules);
    return problemOf(*plan, rules).isEmpty() ? 0 : 1;
}

/** Days from this seed on, until there were so many receipts or one fails. */
int run(quint64 seed, qint64 receipts, const Rules &rules, bool isQuiet)
{
    Figures figures;
    const qint64 begin = processorTime();
    while (figures.receipts < receipts) {
        const Plan plan = makePlan(seed++, int(std::min<qint64>(receiptsOfDay, receipts - figures.receipts)));
        World world(plan, rules);
        const QString problem = world.run();
        figures.add(world.figures());
        if (problem.isEmpty())
            continue;
        if (isQuiet)
            out() << "Seed " << plan.seed << " fails after " << figures.receipts << " receipts: " << problem
                  << '\n';
        else
            show(plan, rules, problem);
        return 1;
    }
    show(figures, processorTime() - begin);
    const bool isTooMany = 100.0 * double(figures.asked) > mostAsked * double(figures.receipts);
    if (figures.receipts < enoughForShares || !isTooMany)
        return 0;
    out() << "A person is asked too often.\n";
    return 1;
}

/** One thread, and nobody who wants to know how much memory SQLite has. */
void easeSqlite()
{
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

} // namespace

int main(int argc, char *argv[])
{
    easeSqlite();
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Sells receipts while everything goes wrong, and checks what came of it."_s);
    const QCommandLineOption seed(u"seed"_s, u"The first day's seed."_s, u"N"_s, u"1"_s);
    const QCommandLineOption receipts(u"receipts"_s, u"How many."_s, u"N"_s, u"20000"_s);
    const QCommandLineOption without(u"without"_s, u"Switches a rule of the runner off."_s, u"RULE"_s);
    const QCommandLineOption replayed(u"replay"_s, u"What a failing run has printed."_s, u"TEXT"_s);
    const QCommandLineOption quiet(u"quiet"_s, u"Tells that a run fails, and no more."_s);
    parser.addOptions({seed, receipts, without, replayed, quiet});
    parser.addHelpOption();
    parser.process(application);
    const auto rules = rulesWithout(parser.values(without));
    if (!rules) {
        out() << "no such rule\n";
        return wrongUsage;
    }
    if (parser.isSet(replayed))
        return replay(parser.value(replayed), *rules);
    return run(parser.value(seed).toULongLong(), parser.value(receipts).toLongLong(), *rules,
               parser.isSet(quiet));
}
