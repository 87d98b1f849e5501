#pragma once

#include <platform/export.h>

#include <cstddef>

/// Books the allocations made during its life under a name. Scopes nest; an allocation counts for the innermost only.
///
/// Create it on the stack, for the duration of an operation; scopes end in the reverse order of their begin. Each
/// thread has its own; what all of them book under a name is one usage.
class TW2_PLATFORM_API S_MemoryScope
{
public:
    /// What was allocated under a name since the process started.
    struct Usage
    {
        long long m_iBlocks = 0;  ///< number of allocations
        long long m_iBytes = 0;   ///< bytes asked for
    };

    /// `name` is copied: usage stays on record when the library that booked it is unloaded. Names are equal when their
    /// first 63 characters are. At most 64 different names are kept apart, further ones are booked together under
    /// "other".
    explicit S_MemoryScope(const char* name) noexcept;
    ~S_MemoryScope();
    S_MemoryScope(const S_MemoryScope&) = delete;
    S_MemoryScope& operator=(const S_MemoryScope&) = delete;

    /// The usage booked under `name`, zeros when no scope of that name was opened yet.
    [[nodiscard]] static Usage getUsage(const char* name) noexcept;
    /// The name of the innermost open scope of this thread, null when none is open.
    [[nodiscard]] static const char* getCurrentName() noexcept;

private:
    friend class S_Memory;
    struct Account;

    static void book(std::size_t bytes) noexcept;
    static Account* find(const char* name, bool create) noexcept;

    Account* m_pPrevious;
};
