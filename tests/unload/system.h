#pragma once

// How a host loads and unloads on each system.

#include <cstddef>
#include <cstdio>

#if defined(_WIN32)
#include <malloc.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <malloc.h>
#endif

/// What the plug-in exports: works as `mode` says, and returns null or, until it is unloaded, what was not as it should
/// be.
using PluginFunction = const char* (*)(const char* mode);

#if defined(_WIN32)
#define PLUGIN_EXPORT extern "C" __declspec(dllexport)

inline void* loadLibrary(const char* file)
{
    return LoadLibraryA(file);
}

inline PluginFunction findFunction(void* library, const char* name)
{
    return reinterpret_cast<PluginFunction>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name)));
}

inline void unloadLibrary(void* library)
{
    FreeLibrary(static_cast<HMODULE>(library));
}

inline bool isLoaded(const char* library)
{
    return GetModuleHandleA(library) != nullptr;
}

/// Of the C library's heap, which all libraries share.
inline std::size_t getUsedBytes()
{
    std::size_t used = 0;
    _HEAPINFO entry{};
    while (_heapwalk(&entry) == _HEAPOK)
    {
        used += entry._useflag == _USEDENTRY ? entry._size : 0;
    }
    return used;
}
#else
#define PLUGIN_EXPORT extern "C" [[gnu::visibility("default")]]

inline void* loadLibrary(const char* file)
{
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (!library)
    {
        std::fprintf(stderr, "%s\n", dlerror());
    }
    return library;
}

inline PluginFunction findFunction(void* library, const char* name)
{
    return reinterpret_cast<PluginFunction>(dlsym(library, name));
}

inline void unloadLibrary(void* library)
{
    dlclose(library);
}

inline bool isLoaded(const char* library)
{
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}

inline std::size_t getUsedBytes()
{
    return mallinfo2().uordblks;
}
#endif
