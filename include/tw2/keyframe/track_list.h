#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/index_iterator.h>

#include <platform/runtime/handle.h>

#include <cstddef>

namespace TW2
{
class TrackTable;
class TW_KeyframeAnimation;

/// The keyframe animations that move the meshes of an object: one slot per mesh index, null where nothing moves the
/// mesh. Reads like a vector of pointers.
///
/// Beside the pointers a list keeps, slot by slot, what playing needs of each track, and hears of every track that is
/// built anew, given up or destroyed; so it always plays what the tracks hold. A copy shares all of this with its
/// source until one of the two changes.
///
/// A list does not count as a holder of the animations. One that is destroyed leaves an empty slot. Lists that share
/// may be read on several threads; one thread at a time changes lists and animations.
class TW2_API TW_TrackList
{
public:
    /// Walks the slots in their order; reads the animations and does not change the list.
    using Iterator = TW_IndexIterator<TW_TrackList, TW_KeyframeAnimation*>;

    /// @name Life
    /// @{

    /// No slots.
    TW_TrackList() noexcept;
    /// Empty slots.
    explicit TW_TrackList(std::size_t count) noexcept;
    TW_TrackList(const TW_TrackList& other) noexcept;
    TW_TrackList(TW_TrackList&& other) noexcept;
    /// As by copying: the list before is let go.
    TW_TrackList& operator=(TW_TrackList other) noexcept;
    /// Deletes no animation.
    ~TW_TrackList();
    /// @}

    /// @name Reading
    /// @{

    /// Number of slots: that of the object's meshes.
    [[nodiscard]] std::size_t size() const noexcept { return m_uiCount; }
    /// Whether there is no slot.
    [[nodiscard]] bool empty() const noexcept { return m_uiCount == 0; }
    /// The animation in a slot from 0 to `size()` - 1.
    [[nodiscard]] TW_KeyframeAnimation* operator[](std::size_t slot) const noexcept;
    /// The same; throws std::out_of_range for a slot that there is not.
    [[nodiscard]] TW_KeyframeAnimation* at(std::size_t slot) const;
    /// The first slot.
    [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
    /// Behind the last slot.
    [[nodiscard]] Iterator end() const noexcept { return {*this, m_uiCount}; }
    /// @}

    /// @name Changing
    /// @{

    /// Adds empty slots, or drops the last ones. When memory runs out nothing has changed.
    void resize(std::size_t count);
    /// Puts an animation, or null, into a slot that there is. When memory runs out nothing has changed.
    void set(std::size_t slot, TW_KeyframeAnimation* animation);
    /// Gives the list slots that are nobody else's, so that `set` needs no memory until the list is copied.
    void makeOwn();
    /// Empties all slots.
    void reset() noexcept;
    /// Packs the keys of the tracks for playing, where they have the same key frames and stand in this list only: less
    /// memory and time at the same bits. Lists and animations read as before. When memory runs out some or none are
    /// packed, and all is well.
    void pack();
    /// @}

private:
    friend class PosePlayer;

    /// Null while all slots are empty.
    [[nodiscard]] const TrackTable* getTable() const noexcept { return m_pTable.get(); }

    std::size_t m_uiCount = 0;
    S_Handle<TrackTable> m_pTable;
};
}  // namespace TW2
