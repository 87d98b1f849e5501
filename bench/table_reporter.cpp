#include "bench/table_reporter.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <ostream>
#include <utility>

namespace TW2::bench
{
namespace
{
constexpr double nanosecondsPerSecond = 1e9;
constexpr double bytesPerMegabyte = 1e6;

std::string text(const char* format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), format, value);
    return buffer;
}

/// Four significant digits from 0.001 to 10 million without an exponent: columns stay comparable at a glance.
std::string number(double value)
{
    return text(value < 1 ? "%.3F" : value < 100 ? "%.2F" : value < 1000 ? "%.1F" : "%.0F", value);
}

std::string pad(const std::string& cell, std::size_t width)
{
    return cell.size() < width ? std::string(width - cell.size(), ' ') + cell : cell;
}

double counter(const benchmark::UserCounters& counters, const char* name)
{
    const auto found = counters.find(name);
    return found == counters.end() ? 0.0 : found->second.value;
}

void keepLowest(double& best, double value)
{
    best = best > 0.0 ? std::min(best, value) : value;
}
}  // namespace

bool TableReporter::ReportContext(const Context& /*context*/)
{
    return true;
}

TableReporter::Row& TableReporter::findRow(const Run& run)
{
    std::string name = run.run_name.function_name;
    if (!run.run_name.args.empty())
    {
        name += "/" + run.run_name.args;
    }
    const auto found = std::ranges::find(m_vecRows, name, &Row::m_strName);
    if (found != m_vecRows.end())
    {
        return *found;
    }
    Row row{};
    row.m_strName = std::move(name);
    row.m_order = {run.family_index, run.per_family_instance_index};
    return m_vecRows.emplace_back(std::move(row));
}

void TableReporter::add(Row& row, const Run& run)
{
    if (run.error_occurred)
    {
        row.m_strError = run.error_message;
        return;
    }
    const double time = run.cpu_accumulated_time / static_cast<double>(run.iterations) * nanosecondsPerSecond;
    if (row.m_vecTimes.empty() || time < *std::ranges::min_element(row.m_vecTimes))
    {
        row.m_counters = run.counters;
    }
    row.m_vecTimes.push_back(time);
    row.m_dItems = counter(run.counters, itemsCounter);
    row.m_dThroughputBytes = counter(run.counters, throughputCounter);
    keepLowest(row.m_dProduct, counter(run.counters, productCounter));
    keepLowest(row.m_dCopy, counter(run.counters, copyCounter));
}

void TableReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs)
    {
        if (run.run_type == Run::RT_Iteration)
        {
            add(findRow(run), run);
        }
    }
    if (isatty(STDERR_FILENO) != 0 && !runs.empty())
    {
        std::fprintf(stderr, "\r\033[K%s", runs.front().benchmark_name().c_str());
    }
}

void TableReporter::print(const Row& row, int nameWidth)
{
    std::ostream& out = GetOutputStream();
    out << row.m_strName << std::string(static_cast<std::size_t>(nameWidth) - row.m_strName.size(), ' ');
    if (!row.m_strError.empty() || row.m_vecTimes.empty() || row.m_dItems < 1.0)
    {
        m_bFailed = true;
        out << "  ERROR: " << (row.m_strError.empty() ? "ended without report()" : row.m_strError) << '\n';
        return;
    }

    std::vector<double> times = row.m_vecTimes;
    std::ranges::sort(times);
    const double best = times.front();
    const double perItem = best / row.m_dItems;
    out << pad(number(perItem), 11) << pad(number(perItem / row.m_dProduct), 11)
        << pad(row.m_dCopy > 0.0 ? number(best / row.m_dCopy) : "-", 9)
        << pad(text("+%.0F%%", (times[times.size() / 2] / best - 1.0) * 100.0), 8)
        << pad(text("%.0F", row.m_dItems), 10);
    if (row.m_dThroughputBytes > 0.0)
    {
        out << "  MB/s=" << text("%.0F", row.m_dThroughputBytes / bytesPerMegabyte / (best / nanosecondsPerSecond));
    }
    for (const auto& [name, value] : row.m_counters)
    {
        if (!name.starts_with("tw2:"))
        {
            out << "  " << name << '=' << number(value);
        }
    }
    out << '\n';
}

void TableReporter::Finalize()
{
    if (isatty(STDERR_FILENO) != 0)
    {
        std::fputs("\r\033[K", stderr);
    }
    std::ranges::sort(m_vecRows, {}, &Row::m_order);
    int nameWidth = 4;
    double product = std::numeric_limits<double>::infinity();
    for (const Row& row : m_vecRows)
    {
        nameWidth = std::max(nameWidth, static_cast<int>(row.m_strName.size()));
        if (row.m_dProduct > 0.0)
        {
            product = std::min(product, row.m_dProduct);
        }
    }
    std::ostream& out = GetOutputStream();
    out << "name" << std::string(static_cast<std::size_t>(nameWidth) - 4, ' ') << pad("ns/item", 11)
        << pad("x product", 11) << pad("x copy", 9) << pad("spread", 8) << pad("items", 10) << '\n';
    for (const Row& row : m_vecRows)
    {
        print(row, nameWidth);
    }
    out << "\nns/item: CPU time of one bone, track, ... in the best repetition; spread: how much slower the middle one "
           "was."
        << "\nx product: ns/item over one plain scalar 4x3 product (best of this run: " << number(product) << " ns)."
        << "\nx copy: time of all items over one memcpy of the bytes they produce or read.\n";
    out.flush();
}
}  // namespace TW2::bench
