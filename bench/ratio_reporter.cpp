// SPDX-License-Identifier: Apache-2.0

#include "bench/ratio_reporter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

std::string duration(double seconds)
{
    char text[32];
    const auto [factor, unit] = seconds < 1e-6   ? std::pair{1e9, "ns"}
                                : seconds < 1e-3 ? std::pair{1e6, "us"}
                                                 : std::pair{1e3, "ms"};
    std::snprintf(text, sizeof text, "%9.3f %s", seconds * factor, unit);
    return text;
}

} // namespace

bool RatioReporter::ReportContext(const Context &)
{
    return true;
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const std::string name =
            run.run_name.function_name + (run.run_name.args.empty() ? "" : "/") + run.run_name.args;
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
            m_failed = true;
            continue;
        }
        if (run.run_type != Run::RT_Iteration)
            continue;
        if (!m_seconds.contains(name))
            m_order.push_back(name);
        m_seconds[name].push_back(run.real_accumulated_time / double(run.iterations));
    }
}

double RatioReporter::at(const std::string &name, double quantile) const
{
    std::vector<double> sorted = m_seconds.at(name);
    std::sort(sorted.begin(), sorted.end());
    const auto rank = size_t(std::ceil(quantile * double(sorted.size())));
    return sorted.at(std::max<size_t>(rank, 1) - 1);
}

void RatioReporter::Finalize()
{
    std::printf("%-44s %7s %13s %13s\n", "", "rounds", "median", "p99");
    for (const std::string &name : m_order)
        std::printf("%-44s %7zu %13s %13s\n", name.c_str(), m_seconds.at(name).size(),
                    duration(at(name, 0.5)).c_str(), duration(at(name, 0.99)).c_str());
    for (const Comparison &c : m_comparisons) {
        if (!m_seconds.contains(c.name) || !m_seconds.contains(c.yardstick))
            continue;
        std::printf("ratio %s / %s: median %.3f, p99 %.3f", c.name.c_str(), c.yardstick.c_str(),
                    at(c.name, 0.5) / at(c.yardstick, 0.5), at(c.name, 0.99) / at(c.yardstick, 0.99));
        if (c.goal > 0)
            std::printf(" (goal: median at most %.2f)", c.goal);
        if (c.p99Goal > 0)
            std::printf(" (goal: p99 at most %.2f)", c.p99Goal);
        std::printf("\n");
    }
}

int runInterleaved(int argc, char **argv, std::vector<Comparison> comparisons)
{
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::vector<char *> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, interleave.data());
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 64;
    RatioReporter reporter(std::move(comparisons));
    const size_t run = benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return run > 0 && !reporter.failed() ? 0 : 1;
}
