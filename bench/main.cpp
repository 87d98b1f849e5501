#include "bench/table_reporter.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// Runs every benchmark several times in random order, so that a slow minute of the machine does not fall on one of them
// alone. Options on the command line come later and therefore win.
int main(int argc, char** argv)
{
    std::vector<std::string> arguments{argv[0], "--benchmark_repetitions=7", "--benchmark_min_time=0.05",
                                       "--benchmark_enable_random_interleaving=true"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
    {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
    {
        return 2;
    }
    TW2::bench::TableReporter table;
    const std::size_t run = benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return run == 0 || table.hasFailed() ? 1 : 0;
}
