#pragma once

#include "keyframe/key_search.h"
#include "keyframe/track_table.h"

namespace TW2
{
/// Finds the keys around one frame in the tracks of a table, one after the other. Tracks of one animation nearly always
/// run alike: then the frame is located once, and tracks with the same key frames share one search.
class KeyFinder
{
public:
    explicit KeyFinder(float frame = 0.0F) noexcept : m_fFrame(frame) {}

    /// The keys of a track that is not absent. Reads and writes its hint, of which any value is safe.
    const KeyPair& find(const TrackEntry& entry, unsigned int& hint) noexcept
    {
        if (entry.m_uSearch != m_uSearch)
        {
            search(entry, static_cast<int>(hint));
        }
        hint = static_cast<unsigned int>(m_keys.m_iUpper);
        return m_keys;
    }

    /// The frame, wrapped into the track that was asked for last.
    [[nodiscard]] float getWrappedFrame() const noexcept { return m_position.m_fFrame; }

private:
    void search(const TrackEntry& entry, int hint) noexcept
    {
        if (m_uSearch == 0 || !(entry.m_loop == m_loop))
        {
            m_loop = entry.m_loop;
            m_position = locateFrame(m_loop, m_fFrame);
        }
        m_uSearch = entry.m_uSearch;
        m_keys = findKeys(m_position, entry.m_pFrames, entry.m_iKeyCount, hint);
    }

    float m_fFrame;
    unsigned int m_uSearch = 0;  // of the keys below; 0: nothing is located yet
    TrackLoop m_loop;
    TrackPosition m_position;
    KeyPair m_keys;
};
}  // namespace TW2
