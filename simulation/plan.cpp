// SPDX-License-Identifier: Apache-2.0

#include "simulation/plan.h"

#include "simulation/chance.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Simulation {

namespace {

constexpr int second = 1000; // ms

constexpr std::array table{
    MishapRow{MishapKind::Drop, "drop", Where::Command, 10, 0, 0},
    MishapRow{MishapKind::Unheard, "unheard", Where::Command, 12, 0, 0},
    MishapRow{MishapKind::Damaged, "damaged", Where::Command, 4, 0, 0},
    MishapRow{MishapKind::Short, "short", Where::Command, 4, 0, 0},
    MishapRow{MishapKind::Silent, "silent", Where::Command, 4, 0, 0},
    MishapRow{MishapKind::SilentBehind, "silent-behind", Where::Command, 4, 0, 0},
    MishapRow{MishapKind::Cut, "cut", Where::Command, 6, 0, 20 * second},
    MishapRow{MishapKind::CutBehind, "cut-behind", Where::Command, 8, 0, 20 * second},
    MishapRow{MishapKind::Refuse, "refuse", Where::Command, 10, 1, 12},
    MishapRow{MishapKind::RefuseFor, "refuse-for", Where::Command, 5, 1, 4 * second},
    MishapRow{MishapKind::RefuseAlways, "refuse-always", Where::Command, 3, 0, 0},
    MishapRow{MishapKind::Late, "late", Where::Command, 3, 1, 5 * second},
    MishapRow{MishapKind::ForgetKeys, "forget-keys", Where::Command, 4, 0, 0},
    MishapRow{MishapKind::NoPaper, "no-paper", Where::Command, 3, 1, 60 * second},
    MishapRow{MishapKind::NoPaperAtAll, "no-paper-at-all", Where::Command, 2, 0, 0},
    MishapRow{MishapKind::Busy, "busy", Where::Command, 4, 1, 60 * second},
    MishapRow{MishapKind::OutOfService, "out-of-service", Where::Command, 2, 1, 60 * second},
    MishapRow{MishapKind::LowLimit, "low-limit", Where::Command, 3, 1, 200'00},
    MishapRow{MishapKind::JournalFull, "journal-full", Where::Command, 3, 1, 5 * second},
    MishapRow{MishapKind::Replace, "replace", Where::Command, 1, 0, 0},
    MishapRow{MishapKind::Kill, "kill", Where::Anywhere, 10, 0, 0},
    MishapRow{MishapKind::KillBehind, "kill-behind", Where::Command, 5, 0, 0},
    MishapRow{MishapKind::Off, "off", Where::Anywhere, 10, 0, 0},
    MishapRow{MishapKind::OffBehind, "off-behind", Where::Command, 5, 0, 0},
    MishapRow{MishapKind::DiskFull, "disk-full", Where::Write, 3, 0, 0},
    MishapRow{MishapKind::WriteFails, "write-fails", Where::Write, 2, 0, 0},
    MishapRow{MishapKind::FlushFails, "flush-fails", Where::Flush, 2, 0, 0},
    MishapRow{MishapKind::HandSells, "hand-sells", Where::Command, 2, 1, 40 * second},
    MishapRow{MishapKind::HandDeletes, "hand-deletes", Where::Command, 1, 0, 1},
    MishapRow{MishapKind::HandSale, "hand-sale", Where::Command, 1, 1, 40 * second},
};

constexpr int allWeights = [] {
    int sum = 0;
    for (const MishapRow &row : table)
        sum += row.weight;
    return sum;
}();

constexpr std::array jobNames{u'r', u'z', u'x', u's'}; // by Job

constexpr int most = 5; // mishaps of a step
constexpr int pointsOfReceipt = 30;
constexpr int pointsOfRecovery = 15;
constexpr int flushesOfReceipt = 2;
constexpr int mostItems = 30;

Mishap drawMishap(Chance &chance, bool isFirst)
{
    int weight = chance.below(allWeights);
    const MishapRow *row = table.data();
    while (weight >= row->weight)
        weight -= row++->weight;
    // The later ones come while something before them is being recovered from.
    const int points = row->where == Where::Flush   ? flushesOfReceipt
                       : row->where == Where::Write ? pointsOfRecovery
                       : isFirst                    ? pointsOfReceipt
                                                    : pointsOfRecovery;
    return {row, chance.from(1, points), chance.from(row->least, row->most)};
}

Step drawStep(Chance &chance, Job job)
{
    Step step{job, chance.next() % 1'000'000, mostItems, job == Job::Receipt && chance.in100(10), {}};
    const int count = job == Job::Receipt ? chance.from(1, most) : chance.from(0, 2);
    for (int i = 0; i < count; ++i)
        step.mishaps << drawMishap(chance, i == 0);
    return step;
}

QString textOf(const Step &step)
{
    QString text = QChar(jobNames.at(size_t(step.job))) + QString::number(step.seed);
    if (step.mostItems != mostItems)
        text += u'/' + QString::number(step.mostItems);
    if (step.isAhead)
        text += u'+';
    for (const Mishap &mishap : step.mishaps) {
        text += u" %1@%2"_s.arg(QLatin1StringView(mishap.row->name)).arg(mishap.point);
        if (mishap.row->most > 0)
            text += u'=' + QString::number(mishap.number);
    }
    return text;
}

std::optional<Mishap> mishapFrom(const QString &word)
{
    const QString name = word.section(u'@', 0, 0);
    const auto row = std::ranges::find_if(
        table, [&name](const MishapRow &r) { return name == QLatin1StringView(r.name); });
    const QString numbers = word.section(u'@', 1);
    bool isPoint = false;
    bool isNumber = true;
    const int point = numbers.section(u'=', 0, 0).toInt(&isPoint);
    const int number = numbers.contains(u'=') ? numbers.section(u'=', 1).toInt(&isNumber) : 0;
    if (row == table.end() || !isPoint || point < 1 || !isNumber || number < 0)
        return std::nullopt;
    return Mishap{&*row, point, number};
}

std::optional<Step> stepFrom(const QString &text)
{
    QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    if (words.isEmpty())
        return std::nullopt;
    QString head = words.takeFirst();
    const bool isAhead = head.endsWith(u'+');
    if (isAhead)
        head.chop(1);
    const auto job = std::ranges::find(jobNames, head.isEmpty() ? u' ' : head.at(0).unicode());
    bool isSeed = false;
    bool isMost = true;
    Step step;
    step.isAhead = isAhead;
    step.seed = head.section(u'/', 0, 0).mid(1).toULongLong(&isSeed);
    step.mostItems = head.contains(u'/') ? head.section(u'/', 1).toInt(&isMost) : mostItems;
    if (job == jobNames.end() || !isSeed || !isMost || step.mostItems < 1)
        return std::nullopt;
    step.job = Job(job - jobNames.begin());
    if (step.isAhead && step.job == Job::ZReport)
        return std::nullopt;
    for (const QString &word : std::as_const(words)) {
        const auto mishap = mishapFrom(word);
        if (!mishap)
            return std::nullopt;
        step.mishaps << *mishap;
    }
    return step;
}

} // namespace

std::span<const MishapRow> mishapTable()
{
    return table;
}

QString Plan::text() const
{
    QStringList parts{QString::number(seed)};
    for (const Step &step : steps)
        parts << textOf(step);
    return parts.join("; "_L1);
}

std::optional<Plan> Plan::fromText(const QString &text)
{
    QStringList parts = text.split(u';');
    bool isSeed = false;
    Plan plan;
    plan.seed = parts.takeFirst().trimmed().toULongLong(&isSeed);
    if (!isSeed)
        return std::nullopt;
    for (const QString &part : std::as_const(parts)) {
        const auto step = stepFrom(part);
        if (!step)
            return std::nullopt;
        plan.steps << *step;
    }
    return plan;
}

Plan makePlan(quint64 seed, int receipts)
{
    Chance chance(seed);
    Plan plan{seed, {}};
    for (int i = 0; i < receipts; ++i) {
        plan.steps << drawStep(chance, Job::Receipt);
        if (chance.in100(10))
            plan.steps << drawStep(chance, Job(chance.from(int(Job::ZReport), int(Job::Slip))));
    }
    plan.steps << Step{Job::ZReport, chance.next() % 1'000'000, mostItems, false, {}};
    return plan;
}

} // namespace Simulation
