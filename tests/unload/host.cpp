#include "tests/unload/system.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <thread>

namespace
{
constexpr int rounds = 100;
/// What the system's loader and the C library keep for themselves is there after so many.
constexpr int firstRounds = 5;

/// Loads the plug-in, lets it work and unloads it with all that it brought. A thread that has worked with it is there
/// before the one and ends after the other.
bool runOnce(const char* plugin, const char* mode, const char* const* libraries, int libraryCount)
{
    std::atomic<PluginFunction> work = nullptr;
    std::atomic<bool> gone = false;
    const char* fault = nullptr;
    std::thread worker(
        [&]
        {
            while (!work)
            {
                std::this_thread::yield();
            }
            fault = work.load()(mode);
            work = nullptr;
            while (!gone)
            {
                std::this_thread::yield();
            }
        });

    void* const handle = loadLibrary(plugin);
    const PluginFunction run = handle ? findFunction(handle, "tw2_plugin_run") : nullptr;
    const PluginFunction complain = [](const char*) { return "the plug-in cannot be loaded"; };
    work = run ? run : complain;
    while (work)
    {
        std::this_thread::yield();
    }
    if (fault)
    {
        std::fprintf(stderr, "%s\n", fault);  // while the text is there
    }
    if (handle)
    {
        unloadLibrary(handle);
    }
    gone = true;
    worker.join();
    for (int i = 0; i < libraryCount; ++i)
    {
        if (isLoaded(libraries[i]))
        {
            std::fprintf(stderr, "%s is still loaded\n", libraries[i]);
            return false;
        }
    }
    return !fault;
}
}  // namespace

/// Arguments: plug-in, mode, the libraries that must be gone after each round.
int main(int argc, char** argv)
{
    std::size_t before = 0;
    for (int round = 0; round < firstRounds + rounds; ++round)
    {
        if (round == firstRounds)
        {
            before = getUsedBytes();
        }
        if (!runOnce(argv[1], argv[2], argv + 3, argc - 3))
        {
            return 1;
        }
    }
    // The loader's own lists may grow once in a while; what is left behind by the libraries is so in every round.
    constexpr std::size_t leastPerRound = 16;
    const std::size_t after = getUsedBytes();
    if (after >= before + leastPerRound * rounds)
    {
        std::fprintf(stderr, "%zu bytes were left behind by %d rounds\n", after - before, rounds);
        return 1;
    }
    return 0;
}
