#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>

/// Yardsticks for the benchmarks, and the table that `./bench.sh` prints.
///
/// A machine's speed changes from minute to minute; how many matrix products or copies the same work costs does not.
/// So every benchmark measures two yardsticks right behind its own loop, and the table prints its time as a multiple of
/// each. Adding a benchmark takes one function in any `bench/<room>/*.cpp` (the build finds the file by itself):
///
///     #include "bench/yardstick.h"
///
///     namespace
///     {
///     void evaluateTracks(benchmark::State& state)
///     {
///         ... build the input from state.range(0), outside the loop ...
///         for (auto _ : state)
///         {
///             ... the work of one iteration ...
///             benchmark::DoNotOptimize(result.data());
///         }
///         state.counters["bytes/key"] = keyBytes / keys;          // any counter of your own: last column
///         TW2::bench::report(state, {.items = tracks, .bytes = tracks * sizeof(Matrix)});
///     }
///     BENCHMARK(evaluateTracks)->Name("keyframe/evaluate")->Arg(64)->Arg(64'000);
///     }  // namespace
///
/// `report` is the last statement of the function. Names begin with the room. An iteration should take 1 us or more:
/// loop over the items inside it. Set no time unit, repetitions or minimum time: `main` does that for all alike.
/// `./bench.sh --benchmark_filter=keyframe` runs a part of them.
namespace TW2::bench
{
/// What one iteration of a benchmark's loop does.
struct Work
{
    std::size_t items;           ///< Bones, tracks, triangles, ...: what the column "ns/item" divides by. At least 1.
    std::size_t bytes;           ///< Bytes that the work produces (or reads, for a loader); the copy moves as many.
    bool showThroughput{false};  ///< Prints MB/s (10^6 bytes of `bytes` per second) as well.
};

/// Ends a benchmark: measures the yardsticks for `work` and hands all to the table. Takes about 5 ms.
void report(benchmark::State& state, const Work& work);

/// Seconds of the fastest of many calls: for a counter that compares two ways to do the same.
[[nodiscard]] double measureBest(const std::function<void()>& work);

/// @name The yardsticks themselves
/// @{

/// Nanoseconds of one plain 4x3 product (see plain_product.h), now: 64 independent products on data in the nearest
/// cache, the best of many batches.
[[nodiscard]] double measurePlainProduct();

/// Nanoseconds of one memcpy of `bytes` bytes, now: the best of many batches that copy the same two blocks again and
/// again, so both lie in the nearest cache that holds them.
[[nodiscard]] double measureCopy(std::size_t bytes);
/// @}
}  // namespace TW2::bench
