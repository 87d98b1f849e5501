#include "keyframe/track_table.h"

#include <tw2/keyframe/track_list.h>

#include <stdexcept>
#include <utility>

namespace TW2
{
TW_TrackList::TW_TrackList() noexcept = default;

TW_TrackList::TW_TrackList(std::size_t count) noexcept : m_uiCount(count) {}

TW_TrackList::TW_TrackList(const TW_TrackList& other) noexcept = default;

TW_TrackList::TW_TrackList(TW_TrackList&& other) noexcept
    : m_uiCount(std::exchange(other.m_uiCount, 0)), m_pTable(std::move(other.m_pTable))
{
}

TW_TrackList& TW_TrackList::operator=(TW_TrackList other) noexcept
{
    std::swap(m_uiCount, other.m_uiCount);
    m_pTable.swap(other.m_pTable);
    return *this;
}

TW_TrackList::~TW_TrackList() = default;

TW_KeyframeAnimation* TW_TrackList::operator[](std::size_t slot) const noexcept
{
    return m_pTable ? m_pTable->getAnimation(slot) : nullptr;
}

TW_KeyframeAnimation* TW_TrackList::at(std::size_t slot) const
{
    if (slot >= size())
    {
        throw std::out_of_range("TW_TrackList::at");
    }
    return (*this)[slot];
}

void TW_TrackList::resize(std::size_t count)
{
    if (m_pTable && count != m_uiCount)
    {
        m_pTable = S_Handle(new TrackTable(*m_pTable, count));
    }
    m_uiCount = count;
}

void TW_TrackList::makeOwn()
{
    if (!m_pTable.isOnlyHolder())
    {
        m_pTable = S_Handle(m_pTable ? new TrackTable(*m_pTable, m_uiCount) : new TrackTable(m_uiCount));
    }
}

void TW_TrackList::set(std::size_t slot, TW_KeyframeAnimation* animation)
{
    if ((*this)[slot] != animation)
    {
        makeOwn();
        m_pTable->set(slot, animation);
    }
}

void TW_TrackList::pack()
{
    if (m_pTable)
    {
        m_pTable->pack();
    }
}

void TW_TrackList::reset() noexcept
{
    m_pTable = nullptr;
}
}  // namespace TW2
