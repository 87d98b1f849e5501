#pragma once

#include "keyframe/key_search.h"

#include <tw2/keyframe/interpolation_mode.h>

#include <platform/runtime/allocator.h>
#include <platform/runtime/handle.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace TW2
{
class TrackTable;
class TW_KeyframeAnimation;

/// What playing needs of one track, in the order in which it asks. Points into the track, whose keys never move.
struct TrackEntry
{
    enum class Kind : std::uint8_t
    {
        Absent,  ///< no track
        Rigid,   ///< quaternions and translations
        Full,    ///< matrices
        Scaled   ///< matrices whose row lengths are put back after interpolation
    };

    /// Equal numbers in one table: the tracks run alike and have the same key frames. Never 0 but for Absent.
    unsigned int m_uSearch = 0;
    int m_iKeyCount = 0;
    const std::int16_t* m_pFrames = nullptr;
    /// Of the first key; those of other keys follow in steps of so many floats.
    const float* m_pRotations = nullptr;     ///< Rigid
    const float* m_pTranslations = nullptr;  ///< Rigid
    const float* m_pMatrices = nullptr;      ///< Full, Scaled
    std::size_t m_uRotationStep = 0;
    std::size_t m_uTranslationStep = 0;
    TrackLoop m_loop{};
    bool m_bPacked = false;  ///< components of rigid keys are packLanes floats apart, not one
    Kind m_kind = Kind::Absent;
    InterpolationMode m_mode = InterpolationMode::Linear;

    /// @name The floats of a key
    /// @{
    [[nodiscard]] const float* getRotation(int key) const noexcept
    {
        return m_pRotations + static_cast<std::size_t>(key) * m_uRotationStep;
    }
    [[nodiscard]] const float* getTranslation(int key) const noexcept
    {
        return m_pTranslations + static_cast<std::size_t>(key) * m_uTranslationStep;
    }
    [[nodiscard]] const float* getMatrix(int key) const noexcept
    {
        return m_pMatrices + static_cast<std::size_t>(key) * matrixFloats;
    }
    /// @}

    static constexpr std::size_t matrixFloats = 12;
};

/// One slot's place in the list of all slots that an animation stands in.
struct TrackUse
{
    TW_KeyframeAnimation* m_pAnimation = nullptr;
    TrackTable* m_pTable = nullptr;
    TrackUse* m_pNext = nullptr;
    TrackUse** m_ppThis = nullptr;  ///< what points to this one: the animation or the use before
};

/// The slots of a TW_TrackList, shared by lists that are copies of each other.
///
/// An animation knows the tables that it stands in, and calls them whenever its tracks are others than before. So an
/// entry cannot be out of date, and playing reads nothing but entries and keys.
class TrackTable : public S_Allocated
{
public:
    explicit TrackTable(std::size_t count);
    /// A table of `count` slots with the animations of another one, as far as it reaches.
    TrackTable(const TrackTable& other, std::size_t count);
    ~TrackTable();
    TrackTable(const TrackTable&) = delete;
    TrackTable& operator=(const TrackTable&) = delete;

    [[nodiscard]] std::size_t getCount() const noexcept { return m_vecEntries.size(); }
    [[nodiscard]] TW_KeyframeAnimation* getAnimation(std::size_t slot) const noexcept
    {
        return m_vecUses[slot].m_pAnimation;
    }
    [[nodiscard]] const TrackEntry* getEntries() const noexcept { return m_vecEntries.data(); }
    /// Whether no slot is empty.
    [[nodiscard]] bool isComplete() const noexcept { return m_uiTracks == getCount(); }
    /// Whether all slots have rigid tracks of one mode, which is that of the first.
    [[nodiscard]] bool isUniform() const noexcept;
    /// For each packLanes slots: not 0 where all are packed side by side, searched alike and of one mode.
    [[nodiscard]] const unsigned char* getPackedGroups() const noexcept { return m_vecGroupsPacked.data(); }

    void set(std::size_t slot, TW_KeyframeAnimation* animation) noexcept;

    /// Packs the keys of rigid tracks that stand in no other slot and that no other animation shares, those together
    /// that are searched alike. When memory runs out some or none are packed.
    void pack();

    /// @name What an animation tells the slots that it stands in
    /// @{
    static void tracksChanged(TrackUse* uses) noexcept;
    static void animationDestroyed(TrackUse* uses) noexcept;
    /// @}

private:
    friend class S_Handle<TrackTable>;

    void update(std::size_t slot) noexcept;
    [[nodiscard]] bool isGroupPacked(std::size_t group) const noexcept;
    [[nodiscard]] bool isOnlyUse(std::size_t slot) const noexcept;
    void packAlike(unsigned int search);
    void count(const TrackEntry& entry, std::size_t step) noexcept;
    [[nodiscard]] unsigned int findSearch(std::size_t slot) noexcept;

    S_Counter<int> m_iReferenceCount{1};  // lists that share the table
    S_Vector<TrackEntry> m_vecEntries;
    S_Vector<TrackUse> m_vecUses;
    std::size_t m_uiTracks = 0;
    std::array<std::size_t, 3> m_rigidTracks{};  ///< by mode
    S_Vector<unsigned char> m_vecGroupsPacked;
    unsigned int m_uLastSearch = 0;
};
}  // namespace TW2
