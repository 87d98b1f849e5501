#pragma once

#include <tw2/io/loader.h>

namespace TW2
{
/// A load of the library's own inside whatever set-up the host has: saves the loader's callbacks and clears them; at
/// the end of the scope, also when an exception passes, the host's callbacks are back.
class LoaderStateGuard
{
public:
    LoaderStateGuard()
    {
        TW_Loader::pushState();
        TW_Loader::clearAll();
    }
    ~LoaderStateGuard() { TW_Loader::popState(); }
    LoaderStateGuard(const LoaderStateGuard&) = delete;
    LoaderStateGuard& operator=(const LoaderStateGuard&) = delete;
};

/// Lets go of the loader's file at the end of the scope, also when an exception passes.
class CachedFileGuard
{
public:
    CachedFileGuard() = default;
    ~CachedFileGuard() { TW_Loader::freeCachedFile(); }
    CachedFileGuard(const CachedFileGuard&) = delete;
    CachedFileGuard& operator=(const CachedFileGuard&) = delete;
};
}  // namespace TW2
