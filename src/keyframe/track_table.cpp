#include "keyframe/track_table.h"

#include "keyframe/packed_keys.h"
#include "keyframe/track_access.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <algorithm>

namespace TW2
{
namespace
{
// Slots before a slot that are looked at for a track with the same key frames.
constexpr std::size_t neighbours = 8;

bool isSearchedAlike(const TrackEntry& a, const TrackEntry& b) noexcept
{
    return a.m_loop == b.m_loop && a.m_iKeyCount == b.m_iKeyCount &&
           std::equal(a.m_pFrames, a.m_pFrames + a.m_iKeyCount, b.m_pFrames);
}

void link(TrackUse& use, TrackUse*& first) noexcept
{
    use.m_pNext = first;
    use.m_ppThis = &first;
    if (first)
    {
        first->m_ppThis = &use.m_pNext;
    }
    first = &use;
}

void unlink(TrackUse& use) noexcept
{
    *use.m_ppThis = use.m_pNext;
    if (use.m_pNext)
    {
        use.m_pNext->m_ppThis = use.m_ppThis;
    }
}
}  // namespace

TrackTable::TrackTable(std::size_t count)
    : m_vecEntries(count), m_vecUses(count), m_vecGroupsPacked((count + packLanes - 1) / packLanes)
{
    for (TrackUse& use : m_vecUses)
    {
        use.m_pTable = this;
    }
}

TrackTable::TrackTable(const TrackTable& other, std::size_t count) : TrackTable(count)
{
    for (std::size_t slot = 0; slot < std::min(count, other.getCount()); ++slot)
    {
        set(slot, other.getAnimation(slot));
    }
}

TrackTable::~TrackTable()
{
    for (std::size_t slot = 0; slot < getCount(); ++slot)
    {
        set(slot, nullptr);
    }
}

bool TrackTable::isUniform() const noexcept
{
    return getCount() > 0 && m_rigidTracks[static_cast<std::size_t>(m_vecEntries.front().m_mode)] == getCount();
}

void TrackTable::set(std::size_t slot, TW_KeyframeAnimation* animation) noexcept
{
    TrackUse& use = m_vecUses[slot];
    if (use.m_pAnimation)
    {
        unlink(use);
    }
    use.m_pAnimation = animation;
    if (animation)
    {
        link(use, animation->m_pUses);
    }
    update(slot);
}

void TrackTable::tracksChanged(TrackUse* uses) noexcept
{
    for (TrackUse* use = uses; use; use = use->m_pNext)
    {
        use->m_pTable->update(static_cast<std::size_t>(use - use->m_pTable->m_vecUses.data()));
    }
}

void TrackTable::animationDestroyed(TrackUse* uses) noexcept
{
    while (uses)
    {
        TrackUse* const next = uses->m_pNext;
        uses->m_pTable->set(static_cast<std::size_t>(uses - uses->m_pTable->m_vecUses.data()), nullptr);
        uses = next;
    }
}

void TrackTable::update(std::size_t slot) noexcept
{
    TrackEntry& entry = m_vecEntries[slot];
    count(entry, ~std::size_t(0));
    const TW_KeyframeAnimation* const animation = m_vecUses[slot].m_pAnimation;
    entry = animation ? TrackAccess::describe(*animation) : TrackEntry();
    if (animation)
    {
        entry.m_uSearch = findSearch(slot);
    }
    count(entry, 1);
    m_vecGroupsPacked[slot / packLanes] = static_cast<unsigned char>(isGroupPacked(slot / packLanes));
}

bool TrackTable::isGroupPacked(std::size_t group) const noexcept
{
    const std::size_t first = group * packLanes;
    const TrackEntry& head = m_vecEntries[first];
    for (std::size_t slot = first; slot < std::min(first + packLanes, getCount()); ++slot)
    {
        const TrackEntry& entry = m_vecEntries[slot];
        if (!entry.m_bPacked || entry.m_uSearch != head.m_uSearch || entry.m_mode != head.m_mode ||
            entry.m_pRotations != head.m_pRotations + (slot - first) ||
            entry.m_pTranslations != head.m_pTranslations + (slot - first))
        {
            return false;
        }
    }
    return true;
}

void TrackTable::pack()
{
    for (unsigned int search = 1; search <= m_uLastSearch; ++search)
    {
        packAlike(search);
    }
}

/// Whether the animation of a slot stands in no other one: then nothing else plays it meanwhile.
bool TrackTable::isOnlyUse(std::size_t slot) const noexcept
{
    const TrackUse& use = m_vecUses[slot];
    return use.m_pAnimation->m_pUses == &use && !use.m_pNext;
}

/// Packs those groups whose slots all have such tracks.
void TrackTable::packAlike(unsigned int search)
{
    S_Vector<std::size_t> slots;
    S_Vector<const TW_RigidKeys*> tracks;
    for (std::size_t first = 0; first < getCount(); first += packLanes)
    {
        const std::size_t end = std::min(first + packLanes, getCount());
        const std::size_t before = tracks.size();
        for (std::size_t slot = first; slot < end; ++slot)
        {
            const TrackEntry& entry = m_vecEntries[slot];
            const bool isAlike = entry.m_uSearch == search && entry.m_kind == TrackEntry::Kind::Rigid &&
                                 entry.m_mode == m_vecEntries[first].m_mode && !entry.m_bPacked && isOnlyUse(slot);
            if (const auto* const keys = isAlike ? TrackAccess::accessUnsharedKeys(*getAnimation(slot)) : nullptr)
            {
                slots.push_back(slot);
                tracks.push_back(keys);
            }
        }
        if (tracks.size() - before != end - first)
        {
            slots.resize(before);
            tracks.resize(before);
        }
    }
    if (tracks.empty())
    {
        return;
    }
    auto* const packed = new PackedKeys(tracks.data(), tracks.size(), tracks.front()->size());
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
        TW_KeyframeAnimation& animation = *getAnimation(slots[i]);
        packed->handTo(*TrackAccess::accessUnsharedKeys(animation), i);
        tracksChanged(animation.m_pUses);
    }
    packed->letGo();
}

void TrackTable::count(const TrackEntry& entry, std::size_t step) noexcept
{
    if (entry.m_kind != TrackEntry::Kind::Absent)
    {
        m_uiTracks += step;
    }
    if (entry.m_kind == TrackEntry::Kind::Rigid)
    {
        m_rigidTracks[static_cast<std::size_t>(entry.m_mode)] += step;
    }
}

/// The number of the track before when it is searched alike, else a new one.
unsigned int TrackTable::findSearch(std::size_t slot) noexcept
{
    for (std::size_t i = slot; i-- > 0 && slot - i <= neighbours;)
    {
        if (m_vecEntries[i].m_kind != TrackEntry::Kind::Absent)
        {
            return isSearchedAlike(m_vecEntries[slot], m_vecEntries[i]) ? m_vecEntries[i].m_uSearch : ++m_uLastSearch;
        }
    }
    return ++m_uLastSearch;
}
}  // namespace TW2
