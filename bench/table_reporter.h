#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TW2::bench
{
/// Collects all repetitions of all benchmarks and prints one table at the end: a row per benchmark, in the order in
/// which the benchmarks are declared.
///
/// A row shows the best repetition, because everything that disturbs a measurement makes it slower; "spread" is how
/// much slower the middle repetition was. Ratios divide the best time by the best of the benchmark's own yardsticks.
class TableReporter : public benchmark::BenchmarkReporter
{
public:
    /// @name Counters by which report() hands its numbers over; they get columns of their own
    /// @{
    static constexpr const char* itemsCounter = "tw2:items";
    static constexpr const char* productCounter = "tw2:product";
    static constexpr const char* copyCounter = "tw2:copy";
    static constexpr const char* throughputCounter = "tw2:throughput";
    /// @}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /// True when a benchmark gave an error or ended without report().
    [[nodiscard]] bool hasFailed() const { return m_bFailed; }

private:
    struct Row
    {
        std::string m_strName;
        std::pair<std::int64_t, std::int64_t> m_order;  ///< Place of the declaration: family, then argument.
        std::string m_strError;
        std::vector<double> m_vecTimes;  ///< CPU nanoseconds of an iteration, one per repetition.
        double m_dItems{0.0};
        double m_dProduct{0.0};
        double m_dCopy{0.0};
        double m_dThroughputBytes{0.0};
        benchmark::UserCounters m_counters;  ///< Of the best repetition.
    };

    Row& findRow(const Run& run);
    static void add(Row& row, const Run& run);
    void print(const Row& row, int nameWidth);

    std::vector<Row> m_vecRows;
    bool m_bFailed{false};
};
}  // namespace TW2::bench
