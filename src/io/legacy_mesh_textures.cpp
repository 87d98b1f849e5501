#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"

#include <platform/bit_cast.h>
#include <platform/runtime/hash_map.h>

namespace TW2
{
namespace
{
using Vector = M_Vector3Template<float>;

/// Gives the vertices their coordinates in one channel.
///
/// A vertex and its copies never have equal coordinates, so at most one of them has the one that a corner asks for: the
/// vertex itself is looked at first, its copies are found through a hash table, however many they are.
class TextureSplitter
{
public:
    explicit TextureSplitter(LegacyMeshLists& lists)
        : m_lists(lists), m_coordinates(lists.channelCoordinates[lists.channelCount])
    {
        m_coordinates.assign(lists.positions.size(), {});
        lists.hasCoordinate.assign(lists.positions.size(), 0);
    }

    /// The vertex for a corner that names `vertex` and has `coordinate`.
    unsigned int place(unsigned int vertex, const Vector& coordinate)
    {
        if (!m_lists.hasCoordinate[vertex])
        {
            m_lists.hasCoordinate[vertex] = 1;
            m_coordinates[vertex] = coordinate;
            return vertex;
        }
        if (m_coordinates[vertex] == coordinate)
        {
            return vertex;
        }
        if (!(coordinate == coordinate))  // what is not a number equals nothing and would never be found
        {
            return append(vertex, coordinate);
        }
        const auto [copy, isNew] = m_copies.try_emplace({vertex, coordinate.x, coordinate.y});
        copy->second = isNew ? append(vertex, coordinate) : copy->second;
        return copy->second;
    }

private:
    /// What a copy is found by.
    struct Key
    {
        unsigned int m_uVertex;
        float m_u;
        float m_v;

        friend bool operator==(const Key&, const Key&) = default;
    };
    struct Hash
    {
        std::size_t operator()(const Key& key) const noexcept
        {
            // Zeros of either sign are equal; adding a positive one makes them the same.
            const std::uint64_t u = S_bitCast<unsigned int>(key.m_u + 0.0F);
            const std::uint64_t v = S_bitCast<unsigned int>(key.m_v + 0.0F);
            std::uint64_t h = (u << 32 | v) ^ key.m_uVertex * 0x9E3779B97F4A7C15U;
            h = (h ^ h >> 30) * 0xBF58476D1CE4E5B9U;
            h = (h ^ h >> 27) * 0x94D049BB133111EBU;
            return static_cast<std::size_t>(h ^ h >> 31);
        }
    };

    unsigned int append(unsigned int vertex, const Vector& coordinate)
    {
        const unsigned int copy = m_lists.appendCopy(vertex);
        const Vector normal = m_lists.normals[vertex];
        m_lists.normals.push_back(normal);
        for (std::size_t channel = 0; channel < m_lists.channelCount; ++channel)
        {
            const Vector earlier = m_lists.channelCoordinates[channel][vertex];
            m_lists.channelCoordinates[channel].push_back(earlier);
        }
        m_coordinates.push_back(coordinate);
        return copy;
    }

    LegacyMeshLists& m_lists;
    S_Vector<Vector>& m_coordinates;
    S_HashMap<Key, unsigned int, Hash> m_copies;
};
}  // namespace

void splitByTexture(const TextureChannelChunk& channel, LegacyMeshLists& lists)
{
    TextureSplitter splitter(lists);
    for (std::size_t i = 0; i < lists.corners.size(); ++i)
    {
        const Vector& coordinate = channel.coordinates[lists.textureCorners[i]];
        lists.corners[i] = splitter.place(lists.corners[i], {coordinate.x, coordinate.y, 0.0F});
    }
    ++lists.channelCount;
}
}  // namespace TW2
