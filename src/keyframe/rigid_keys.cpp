#include "keyframe/packed_keys.h"

#include <tw2/keyframe/rigid_keys.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace TW2
{
TW_KeyframeMatrix TW_RigidKeys::operator[](std::size_t i) const noexcept
{
    return m_pPacked ? m_pPacked->getKey(m_uiLane, i) : m_vecOwn[i];
}

TW_KeyframeMatrix TW_RigidKeys::at(std::size_t i) const
{
    if (i >= size())
    {
        throw std::out_of_range("TW_RigidKeys::at");
    }
    return (*this)[i];
}

void TW_RigidKeys::clear() noexcept
{
    if (m_pPacked)
    {
        m_pPacked->letGo();
        m_pPacked = nullptr;
    }
    S_Vector<TW_KeyframeMatrix>().swap(m_vecOwn);
}

void TW_RigidKeys::swap(TW_RigidKeys& other) noexcept
{
    m_vecOwn.swap(other.m_vecOwn);
    std::swap(m_pPacked, other.m_pPacked);
    std::swap(m_uiPackedCount, other.m_uiPackedCount);
    std::swap(m_uiLane, other.m_uiLane);
}

S_Vector<TW_KeyframeMatrix> TW_RigidKeys::toVector() const
{
    S_Vector<TW_KeyframeMatrix> keys(size());
    std::copy(begin(), end(), keys.begin());
    return keys;
}

S_Vector<TW_KeyframeMatrix>& TW_RigidKeys::accessOwn()
{
    if (m_pPacked)
    {
        S_Vector<TW_KeyframeMatrix> keys = toVector();
        clear();
        m_vecOwn.swap(keys);
    }
    return m_vecOwn;
}
}  // namespace TW2
