#include <dlfcn.h>
#include <malloc.h>

#include <cstddef>
#include <cstdio>

namespace
{
constexpr int rounds = 100;
/// What the system's loader and the C library keep for themselves is there after so many.
constexpr int firstRounds = 5;

std::size_t getUsedBytes()
{
    return mallinfo2().uordblks;
}

bool isLoaded(const char* library)
{
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}

/// Loads the plug-in, lets it work and unloads it with all that it brought.
bool runOnce(const char* plugin, const char* mode, const char* const* libraries, int libraryCount)
{
    void* const handle = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    if (!handle)
    {
        std::fprintf(stderr, "%s\n", dlerror());
        return false;
    }
    const auto run = reinterpret_cast<void (*)(const char*)>(dlsym(handle, "tw2_plugin_run"));
    if (!run)
    {
        std::fprintf(stderr, "%s\n", dlerror());
        return false;
    }
    run(mode);
    dlclose(handle);
    for (int i = 0; i < libraryCount; ++i)
    {
        if (isLoaded(libraries[i]))
        {
            std::fprintf(stderr, "%s is still loaded\n", libraries[i]);
            return false;
        }
    }
    return true;
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
