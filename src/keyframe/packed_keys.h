#pragma once

#include <tw2/keyframe/rigid_keys.h>

#include <platform/runtime/allocator.h>

#include <atomic>
#include <cstddef>

namespace TW2
{
/// Tracks that are packed side by side.
constexpr std::size_t packLanes = 8;

/// Where a packed track, or the first one of eight, has its floats: each component of a key a step of packLanes floats
/// behind the one before, each key `step` floats behind the one before.
struct PackedView
{
    const float* m_pRotations;     ///< w x y z
    const float* m_pTranslations;  ///< x y z
    std::size_t m_uiRotationStep;
    std::size_t m_uiTranslationStep;  ///< 0: the same translation at all keys
};

/// The keys of an animation's rigid tracks in the order in which eight of them are sampled at a time.
///
/// For every key stand first the quaternions of tracks 0 to 7, component by component, then those of tracks 8 to 15 and
/// so on. So what one frame needs of all tracks lies in a row, and goes into eight-float registers as it lies.
/// Translations likewise, but once only for each eight tracks that all stay where they are, as most bones do. Bit by
/// bit the same values; 16 bytes a key instead of 28 for bones that only turn.
class PackedKeys : public S_Allocated
{
public:
    /// Packs copies of the keys of `count` tracks, all of `keyCount` keys. A null stands for a lane without a track.
    PackedKeys(const TW_RigidKeys* const* tracks, std::size_t count, std::size_t keyCount);
    PackedKeys(const PackedKeys&) = delete;
    PackedKeys& operator=(const PackedKeys&) = delete;

    /// Makes `keys` those of a track that was packed here, and lets go of what they were.
    void handTo(TW_RigidKeys& keys, std::size_t lane) noexcept;

    [[nodiscard]] PackedView getView(std::size_t lane) const noexcept;
    [[nodiscard]] TW_KeyframeMatrix getKey(std::size_t lane, std::size_t key) const noexcept;

    /// @name Holders: a new one has one, and the last one to let go deletes it
    /// @{
    void hold() const noexcept { m_iHolders.fetch_add(1, std::memory_order_relaxed); }
    void letGo() const noexcept
    {
        if (m_iHolders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        {
            delete this;
        }
    }
    /// @}

private:
    // Eight tracks.
    struct Group
    {
        std::size_t m_uiTranslations;  // index of the first float
        std::size_t m_uiTranslationStep;
    };

    mutable std::atomic<int> m_iHolders{1};
    std::size_t m_uiKeyCount;
    std::size_t m_uiRotationStep;
    S_Vector<Group> m_vecGroups;
    S_Vector<float> m_vecRotations;
    S_Vector<float> m_vecTranslations;
};
}  // namespace TW2
