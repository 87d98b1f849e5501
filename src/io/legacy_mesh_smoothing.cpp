#include "io/group_offsets.h"
#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"

#include <algorithm>
#include <span>

namespace TW2
{
namespace
{
/// A triangle without a mask is flat.
unsigned int getMask(const S_Vector<unsigned int>& masks, std::size_t triangle)
{
    return triangle < masks.size() ? masks[triangle] : 0;
}

void computeTriangleNormals(const LegacyMeshLists& lists, LegacyMeshSmoothingLists& work)
{
    const std::size_t triangles = lists.corners.size() / 3;
    work.triangleNormals.resize(triangles);
    for (std::size_t t = 0; t < triangles; ++t)
    {
        const M_Vector3Template<float>& origin = lists.positions[lists.corners[3 * t]];
        const M_Vector3Template<float> first = lists.positions[lists.corners[3 * t + 1]] - origin;
        const M_Vector3Template<float> second = lists.positions[lists.corners[3 * t + 2]] - origin;
        work.triangleNormals[t] = first.cross(second).normalized();
    }
}

/// Splits one vertex after the other along the borders of smoothing groups.
///
/// Every split takes all triangles that share a bit with some mask, so the masks that splits are made for have no bit
/// in common and there are at most 32 splits before only flat triangles are left.
class Smoother
{
public:
    Smoother(const S_Vector<unsigned int>& masks, LegacyMeshLists& lists, LegacyMeshSmoothingLists& work)
        : m_masks(masks), m_lists(lists), m_work(work)
    {
    }

    void smoothVertex(unsigned int vertex)
    {
        const unsigned int begin = m_work.triangleStarts[vertex];
        std::span<unsigned int> around(m_work.triangles.data() + begin, m_work.triangleStarts[vertex + 1] - begin);
        if (!haveCommonBit(around))
        {
            around = split(vertex, around);
        }
        m_lists.normals[vertex] = computeNormal(around);
    }

private:
    using Vector = M_Vector3Template<float>;

    [[nodiscard]] bool haveCommonBit(std::span<const unsigned int> triangles) const
    {
        unsigned int common = ~0U;
        for (const unsigned int triangle : triangles)
        {
            common &= getMask(m_masks, triangle);
        }
        return common != 0;
    }

    [[nodiscard]] Vector computeNormal(std::span<const unsigned int> triangles) const
    {
        Vector sum;
        for (const unsigned int triangle : triangles)
        {
            sum += m_work.triangleNormals[triangle];
        }
        return sum.normalized();
    }

    /// Splits off copies until all triangles left around the vertex share a bit with one of them; returns those.
    std::span<unsigned int> split(unsigned int vertex, std::span<unsigned int> around)
    {
        listMasks(around);
        while (!around.empty())
        {
            const SharedBitCounter::Mask best = m_work.counter.findBest(m_work.masks, m_work.around);
            if (best.m_uiMissed == 0)
            {
                break;
            }
            if (best.m_uiMissed == around.size())
            {
                splitOffEach(vertex, around);
                return {};
            }
            around = splitOff(vertex, around, best.m_uiBits);
            dropMasks(best.m_uiBits);
        }
        return around;
    }

    /// Lists the masks of the triangles around a vertex, and the different ones with the place of the first of each.
    void listMasks(std::span<const unsigned int> triangles)
    {
        using Mask = SharedBitCounter::Mask;
        m_work.around.clear();
        m_work.masks.clear();
        for (const unsigned int triangle : triangles)
        {
            const unsigned int mask = getMask(m_masks, triangle);
            m_work.masks.push_back({mask, static_cast<unsigned int>(m_work.around.size()), 0});
            m_work.around.push_back(mask);
        }
        S_Vector<Mask>& masks = m_work.masks;
        std::sort(masks.begin(), masks.end(),
                  [](const Mask& a, const Mask& b)
                  { return a.m_uiBits != b.m_uiBits ? a.m_uiBits < b.m_uiBits : a.m_uiPlace < b.m_uiPlace; });
        masks.erase(std::unique(masks.begin(), masks.end(),
                                [](const Mask& a, const Mask& b) { return a.m_uiBits == b.m_uiBits; }),
                    masks.end());
    }

    /// Those that share a bit with `bits` have moved away.
    void dropMasks(unsigned int bits)
    {
        std::erase_if(m_work.around, [bits](unsigned int mask) { return (mask & bits) != 0; });
        std::erase_if(m_work.masks, [bits](const SharedBitCounter::Mask& mask) { return (mask.m_uiBits & bits) != 0; });
    }

    void moveCorners(unsigned int triangle, unsigned int from, unsigned int to)
    {
        for (std::size_t corner = 3 * std::size_t(triangle); corner < 3 * std::size_t(triangle) + 3; ++corner)
        {
            if (m_lists.corners[corner] == from)
            {
                m_lists.corners[corner] = to;
            }
        }
    }

    /// Moves the triangles whose mask shares a bit with `bits` to a copy of the vertex; returns those that stay.
    std::span<unsigned int> splitOff(unsigned int vertex, std::span<unsigned int> around, unsigned int bits)
    {
        const unsigned int copy = m_lists.appendCopy(vertex);
        Vector sum;
        std::size_t stayed = 0;
        for (const unsigned int triangle : around)
        {
            if ((getMask(m_masks, triangle) & bits) != 0)
            {
                moveCorners(triangle, vertex, copy);
                sum += m_work.triangleNormals[triangle];
                continue;
            }
            around[stayed++] = triangle;
        }
        m_lists.normals.push_back(sum.normalized());
        return around.first(stayed);
    }

    /// Gives each of the triangles, all flat, a copy of its own.
    void splitOffEach(unsigned int vertex, std::span<const unsigned int> around)
    {
        for (const unsigned int triangle : around)
        {
            const auto corners = std::span(m_lists.corners).subspan(3 * std::size_t(triangle), 3);
            // A triangle that names the vertex twice is listed twice, and has moved the first time.
            if (std::find(corners.begin(), corners.end(), vertex) != corners.end())
            {
                moveCorners(triangle, vertex, m_lists.appendCopy(vertex));
                m_lists.normals.push_back(computeNormal({&triangle, 1}));
            }
        }
    }

    const S_Vector<unsigned int>& m_masks;
    LegacyMeshLists& m_lists;
    LegacyMeshSmoothingLists& m_work;
};
}  // namespace

void smoothLegacyMesh(const S_Vector<unsigned int>& masks, LegacyMeshLists& lists, LegacyMeshSmoothingLists& work)
{
    computeTriangleNormals(lists, work);
    // The triangles around each vertex in the order of their corners.
    listByBucket(work.triangleStarts, work.triangles, lists.fileVertices, lists.corners.size(), 3,
                 [&lists](std::size_t corner) { return lists.corners[corner]; });
    lists.normals.assign(lists.fileVertices, {});
    Smoother smoother(masks, lists, work);
    for (std::size_t vertex = 0; vertex < lists.fileVertices; ++vertex)
    {
        smoother.smoothVertex(static_cast<unsigned int>(vertex));
    }
}
}  // namespace TW2
