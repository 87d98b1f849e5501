#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"

#include <platform/bit_cast.h>

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
        : m_lists(lists),
          m_coordinates(lists.channelCoordinates[lists.channelCount]),
          m_uFirstCopy(lists.positions.size())
    {
        m_coordinates.assign(m_uFirstCopy, {});
        lists.hasCoordinate.assign(m_uFirstCopy, 0);
        lists.copyTable.assign(smallestTable, 0);
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
        unsigned int& slot = find(vertex, coordinate);
        if (slot != 0)
        {
            return slot;
        }
        const unsigned int copy = append(vertex, coordinate);
        if (coordinate == coordinate)  // what is not a number equals nothing and would never be found
        {
            slot = copy;
            growTable();
        }
        return copy;
    }

private:
    static constexpr std::size_t smallestTable = 64;

    static std::uint64_t hash(unsigned int vertex, const Vector& coordinate)
    {
        // Zeros of either sign are equal; adding a positive one makes them the same.
        const std::uint64_t u = S_bitCast<unsigned int>(coordinate.x + 0.0F);
        const std::uint64_t v = S_bitCast<unsigned int>(coordinate.y + 0.0F);
        std::uint64_t h = (u << 32 | v) ^ vertex * 0x9E3779B97F4A7C15U;
        h = (h ^ h >> 30) * 0xBF58476D1CE4E5B9U;
        h = (h ^ h >> 27) * 0x94D049BB133111EBU;
        return h ^ h >> 31;
    }

    /// Where the copy of `vertex` with `coordinate` stands in the table, or the free place for it (0).
    unsigned int& find(unsigned int vertex, const Vector& coordinate)
    {
        S_Vector<unsigned int>& table = m_lists.copyTable;
        for (std::size_t i = hash(vertex, coordinate);; ++i)
        {
            unsigned int& copy = table[i & (table.size() - 1)];
            if (copy == 0 || (getSource(copy) == vertex && m_coordinates[copy] == coordinate))
            {
                return copy;
            }
        }
    }

    [[nodiscard]] unsigned int getSource(unsigned int copy) const
    {
        return m_lists.sources[copy - m_lists.fileVertices];
    }

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

    /// Keeps the table at most half full.
    void growTable()
    {
        S_Vector<unsigned int>& table = m_lists.copyTable;
        const std::size_t copies = m_lists.positions.size() - m_uFirstCopy;
        if (2 * copies < table.size())
        {
            return;
        }
        table.assign(4 * table.size(), 0);
        for (std::size_t copy = m_uFirstCopy; copy < m_lists.positions.size(); ++copy)
        {
            if (m_coordinates[copy] == m_coordinates[copy])
            {
                const unsigned int number = static_cast<unsigned int>(copy);
                find(getSource(number), m_coordinates[copy]) = number;
            }
        }
    }

    LegacyMeshLists& m_lists;
    S_Vector<Vector>& m_coordinates;
    const std::size_t m_uFirstCopy;
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
