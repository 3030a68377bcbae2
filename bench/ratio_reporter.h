// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/** One measurement, what it is compared with, and the ratios that its median and its 99th percentile should
 * not exceed (0: none set). */
struct Comparison
{
    std::string name;
    std::string yardstick;
    double goal = 0;
    double p99Goal = 0;
};

/** Collects every repetition and prints, at the end, median, 99th percentile and the ratios to the
 * yardsticks. */
class RatioReporter : public benchmark::BenchmarkReporter
{
public:
    explicit RatioReporter(std::vector<Comparison> comparisons)
        : m_comparisons(std::move(comparisons))
    {
    }

    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

    /** Whether a benchmark ended with an error. */
    bool failed() const { return m_failed; }

private:
    double at(const std::string &name, double quantile) const;

    std::vector<Comparison> m_comparisons;
    std::vector<std::string> m_order;
    std::map<std::string, std::vector<double>> m_seconds;
    bool m_failed = false;
};

/**
 * Runs what is registered, its repetitions in random order so that no measurement has a better hour than its
 * yardstick. @return exit code
 */
int runInterleaved(int argc, char **argv, std::vector<Comparison> comparisons);
