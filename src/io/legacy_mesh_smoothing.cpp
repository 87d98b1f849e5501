#include <io/legacy_mesh_conversion.h>
#include <io/legacy_mesh_work_lists.h>

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

/// Lists the triangles around each vertex in the order of their corners.
void listTrianglesAroundVertices(const LegacyMeshLists& lists, LegacyMeshSmoothingLists& work)
{
    // Counted one place late: filling the list moves each start to where it belongs.
    S_Vector<unsigned int>& starts = work.triangleStarts;
    starts.assign(lists.fileVertices + 2, 0);
    for (const unsigned int vertex : lists.corners)
    {
        ++starts[vertex + 2];
    }
    for (std::size_t i = 2; i < starts.size(); ++i)
    {
        starts[i] += starts[i - 1];
    }
    work.triangles.resize(lists.corners.size());
    for (std::size_t corner = 0; corner < lists.corners.size(); ++corner)
    {
        work.triangles[starts[lists.corners[corner] + 1]++] = static_cast<unsigned int>(corner / 3);
    }
}

/// Splits one vertex after the other along the borders of smoothing groups.
///
/// Every split takes all triangles that share a bit with some mask, so the masks that splits are made for have no bit
/// in common and there are at most 32 splits before only flat triangles are left. Who shares a bit with whom is counted
/// once and corrected after each split by those that have moved.
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
        unsigned int common = ~0u;
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
        countSharing(around);
        while (!around.empty())
        {
            const unsigned int best = findBestMask(around.size());
            const unsigned int highest = m_work.counts[best];
            if (highest == around.size())
            {
                break;
            }
            if (highest == 0)
            {
                splitOffEach(vertex, around);
                return {};
            }
            around = splitOff(vertex, around, m_work.masks[best]);
            m_work.counter.subtract(m_work.masks, m_work.moved, m_work.counts);
        }
        return around;
    }

    /// Counts, for each different mask around a vertex, the triangles that share a bit with it.
    void countSharing(std::span<const unsigned int> triangles)
    {
        m_work.around.clear();
        for (const unsigned int triangle : triangles)
        {
            m_work.around.push_back(getMask(m_masks, triangle));
        }
        S_Vector<unsigned int>& masks = m_work.masks;
        masks = m_work.around;
        std::sort(masks.begin(), masks.end());
        masks.erase(std::unique(masks.begin(), masks.end()), masks.end());
        m_work.maskOfTriangle.clear();
        for (const unsigned int mask : m_work.around)
        {
            const auto place = std::lower_bound(masks.begin(), masks.end(), mask);
            m_work.maskOfTriangle.push_back(static_cast<unsigned int>(place - masks.begin()));
        }
        m_work.counts.assign(masks.size(), 0);
        m_work.counter.add(masks, m_work.around, m_work.counts);
    }

    /// The mask of the first triangle left whose mask has the highest count.
    [[nodiscard]] unsigned int findBestMask(std::size_t triangles) const
    {
        unsigned int best = m_work.maskOfTriangle[0];
        for (std::size_t i = 1; i < triangles; ++i)
        {
            const unsigned int mask = m_work.maskOfTriangle[i];
            if (m_work.counts[mask] > m_work.counts[best])
            {
                best = mask;
            }
        }
        return best;
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
        m_work.moved.clear();
        for (std::size_t i = 0; i < around.size(); ++i)
        {
            const unsigned int mask = m_work.maskOfTriangle[i];
            if ((m_work.masks[mask] & bits) != 0)
            {
                moveCorners(around[i], vertex, copy);
                sum += m_work.triangleNormals[around[i]];
                m_work.moved.push_back(m_work.masks[mask]);
                continue;
            }
            around[stayed] = around[i];
            m_work.maskOfTriangle[stayed] = mask;
            ++stayed;
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
    listTrianglesAroundVertices(lists, work);
    lists.normals.assign(lists.fileVertices, {});
    Smoother smoother(masks, lists, work);
    for (std::size_t vertex = 0; vertex < lists.fileVertices; ++vertex)
    {
        smoother.smoothVertex(static_cast<unsigned int>(vertex));
    }
}
}  // namespace TW2
