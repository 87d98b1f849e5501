#pragma once

#include <array>
#include <cstddef>

namespace TW2
{
/// Keeps what a call was passed alive until the call ends, also when the call takes it off the object that owns it: a
/// `construct` or `remap` may be given parts of the very object, which it destructs first.
///
///     void construct(const TW_ObjectAnimation& skeleton, TW_MaterialManager* materials)
///     {
///         const ReleaseGuard passed(&skeleton, materials);
///         destruct();  // lets go of every part by `release`, whatever was passed
///         ... builds from both ...
///     }
class ReleaseGuard
{
public:
    template <typename... Passed>
    explicit ReleaseGuard(const Passed*... passed) noexcept
        : m_places{Place{passed, nullptr}...}, m_pOuter(s_pInnermost)
    {
        static_assert(sizeof...(passed) <= mostPassed);
        s_pInnermost = this;
    }
    ~ReleaseGuard()
    {
        s_pInnermost = m_pOuter;
        for (const Place& place : m_places)
        {
            if (place.m_pDelete)
            {
                place.m_pDelete(place.m_pObject);
            }
        }
    }
    ReleaseGuard(const ReleaseGuard&) = delete;
    ReleaseGuard& operator=(const ReleaseGuard&) = delete;

    /// Deletes `object` (null: nothing), or has the outermost call do it that it was passed to.
    template <typename T>
    static void release(T* object) noexcept
    {
        Place* found = nullptr;
        for (ReleaseGuard* guard = object ? s_pInnermost : nullptr; guard; guard = guard->m_pOuter)
        {
            for (Place& place : guard->m_places)
            {
                found = place.m_pObject == object ? &place : found;
            }
        }
        if (!found)
        {
            delete object;
            return;
        }
        found->m_pDelete = [](const void* parked) noexcept { delete static_cast<const T*>(parked); };
    }

private:
    static constexpr std::size_t mostPassed = 3;

    struct Place
    {
        const void* m_pObject = nullptr;
        void (*m_pDelete)(const void*) noexcept = nullptr;  ///< set once the owner has let go
    };

    static inline thread_local ReleaseGuard* s_pInnermost = nullptr;

    std::array<Place, mostPassed> m_places;
    ReleaseGuard* m_pOuter;
};
}  // namespace TW2
