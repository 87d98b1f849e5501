#include "bench/yardstick.h"

#include "bench/plain_product.h"
#include "bench/table_reporter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <limits>
#include <vector>

namespace TW2::bench
{
namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds measuringTime{2};
constexpr std::chrono::microseconds batchTime{20};
constexpr int leastBatches = 5;

/// Nanoseconds of one call of `work`. The shortest of many short batches is one that no other program interrupted.
template <typename Function>
double measure(Function work)
{
    // Once for warmth, then as many calls to a batch as make the clock's own cost vanish.
    work();
    auto start = Clock::now();
    work();
    const auto once = std::max<Clock::duration>(Clock::now() - start, std::chrono::nanoseconds{1});
    const auto calls = std::max<std::int64_t>(1, batchTime / once);

    auto best = std::numeric_limits<double>::infinity();
    const auto end = Clock::now() + measuringTime;
    for (int batch = 0; batch < leastBatches || Clock::now() < end; ++batch)
    {
        start = Clock::now();
        for (std::int64_t call = 0; call < calls; ++call)
        {
            work();
        }
        const std::chrono::duration<double, std::nano> time = Clock::now() - start;
        best = std::min(best, time.count() / static_cast<double>(calls));
    }
    return best;
}
}  // namespace

double measureBest(const std::function<void()>& work)
{
    constexpr int rounds = 60;
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round)
    {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        best = std::min(best, time.count());
    }
    return best;
}

double measurePlainProduct()
{
    constexpr std::size_t count = 64;
    struct Operands
    {
        std::array<PlainMatrix, count> a, b, result;
    };
    static Operands operands = []
    {
        // Rotations by a few degrees with a small offset: neither zeros nor denormals, and no overflow.
        Operands values{};
        for (std::size_t i = 0; i < count; ++i)
        {
            const float s = 0.001F * static_cast<float>(i + 1);
            values.a[i] = {{{1.0F, s, 0.0F}, {-s, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {s, 2.0F, 3.0F}}};
            values.b[i] = {{{1.0F, 0.0F, -s}, {0.0F, 1.0F, 0.0F}, {s, 0.0F, 1.0F}, {4.0F, 5.0F, s}}};
        }
        return values;
    }();

    const auto products = []
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            plainProduct(operands.a[i], operands.b[i], operands.result[i]);
        }
        benchmark::ClobberMemory();
    };
    return measure(products) / static_cast<double>(count);
}

double measureCopy(std::size_t bytes)
{
    static std::vector<std::byte> from;
    static std::vector<std::byte> to;
    if (from.size() < bytes)
    {
        from.assign(bytes, std::byte{1});
        to.assign(bytes, std::byte{2});
    }
    return measure(
        [bytes]
        {
            std::memcpy(to.data(), from.data(), bytes);
            benchmark::ClobberMemory();
        });
}

void report(benchmark::State& state, const Work& work)
{
    state.counters[TableReporter::itemsCounter] = static_cast<double>(work.items);
    state.counters[TableReporter::productCounter] = measurePlainProduct();
    state.counters[TableReporter::copyCounter] = measureCopy(work.bytes);
    if (work.showThroughput)
    {
        state.counters[TableReporter::throughputCounter] = static_cast<double>(work.bytes);
    }
}
}  // namespace TW2::bench
