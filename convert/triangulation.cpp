#include "convert/triangulation.h"

#include <cmath>
#include <set>
#include <utility>

namespace TW2::convert
{
namespace
{
struct Point
{
    double x;
    double y;
};

/// The corners on the plane that fits the polygon best, seen so that it runs counter-clockwise.
std::vector<Point> flatten(const std::vector<Vector3d>& corners)
{
    // Newell's normal: twice the area on each plane of the axes.
    Vector3d normal;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        normal += corners[i].cross(corners[(i + 1) % corners.size()]);
    }
    const double x = std::abs(normal.x);
    const double y = std::abs(normal.y);
    const double z = std::abs(normal.z);
    std::vector<Point> flat;
    flat.reserve(corners.size());
    for (const Vector3d& p : corners)
    {
        if (z >= x && z >= y)
        {
            flat.push_back(normal.z < 0.0 ? Point{p.y, p.x} : Point{p.x, p.y});
        }
        else if (x >= y)
        {
            flat.push_back(normal.x < 0.0 ? Point{p.z, p.y} : Point{p.y, p.z});
        }
        else
        {
            flat.push_back(normal.y < 0.0 ? Point{p.x, p.z} : Point{p.z, p.x});
        }
    }
    return flat;
}

/// Positive where c lies to the left of the way from a to b.
double turn(const Point& a, const Point& b, const Point& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool isInside(const Point& p, const Point& a, const Point& b, const Point& c)
{
    return turn(a, b, p) >= 0.0 && turn(b, c, p) >= 0.0 && turn(c, a, p) >= 0.0;
}

/// The corners of a polygon that are left, and which of them can be cut off: ears.
///
/// What is an ear stays one while its neighbours stay. What is none is looked at again when a neighbour, or the corner
/// that was found to lie in its way, has been cut off.
class Corners
{
public:
    explicit Corners(std::vector<Point> flat)
        : m_vecFlat(std::move(flat)), m_vecLinks(m_vecFlat.size()), m_vecInWayOf(m_vecFlat.size())
    {
        const auto count = static_cast<unsigned int>(m_vecFlat.size());
        for (unsigned int i = 0; i < count; ++i)
        {
            m_vecLinks[i] = {(i + count - 1) % count, (i + 1) % count};
        }
        for (unsigned int i = 0; i < count; ++i)
        {
            look(i);
        }
    }

    /// The first ear from the second corner on; the second corner where there is none: crossed or without area, any cut
    /// will do. What is bulged outwards everywhere becomes a fan around its first corner.
    [[nodiscard]] unsigned int choose() const
    {
        const auto ear = m_setEars.upper_bound(m_uiFirst);
        return ear != m_setEars.end() ? *ear : m_setEars.empty() ? m_vecLinks[m_uiFirst].m_uiNext : *m_setEars.begin();
    }

    std::array<unsigned int, 3> cut(unsigned int corner)
    {
        const auto [before, behind] = m_vecLinks[corner];
        m_vecLinks[before].m_uiNext = behind;
        m_vecLinks[behind].m_uiPrevious = before;
        m_setEars.erase(corner);
        m_uiFirst = corner == m_uiFirst ? behind : m_uiFirst;
        m_vecLinks[corner] = {corner, corner};
        look(before);
        look(behind);
        for (const unsigned int other : std::exchange(m_vecInWayOf[corner], {}))
        {
            const bool left = m_vecLinks[other].m_uiNext != other;
            if (left && !m_setEars.contains(other))
            {
                look(other);
            }
        }
        return {before, corner, behind};
    }

    /// The first three of those that are left.
    [[nodiscard]] std::array<unsigned int, 3> getRest() const
    {
        const unsigned int second = m_vecLinks[m_uiFirst].m_uiNext;
        return {m_uiFirst, second, m_vecLinks[second].m_uiNext};
    }

private:
    struct Link
    {
        unsigned int m_uiPrevious;
        unsigned int m_uiNext;  ///< itself once the corner is cut off
    };

    /// Finds out whether a corner is an ear.
    void look(unsigned int corner)
    {
        m_setEars.erase(corner);
        const auto [before, behind] = m_vecLinks[corner];
        const Point& a = m_vecFlat[before];
        const Point& b = m_vecFlat[corner];
        const Point& c = m_vecFlat[behind];
        if (!(turn(a, b, c) > 0.0))
        {
            return;
        }
        for (unsigned int other = m_vecLinks[behind].m_uiNext; other != before; other = m_vecLinks[other].m_uiNext)
        {
            if (isInside(m_vecFlat[other], a, b, c))
            {
                m_vecInWayOf[other].push_back(corner);
                return;
            }
        }
        m_setEars.insert(corner);
    }

    std::vector<Point> m_vecFlat;
    std::vector<Link> m_vecLinks;
    std::vector<std::vector<unsigned int>> m_vecInWayOf;  ///< per corner
    std::set<unsigned int> m_setEars;
    unsigned int m_uiFirst = 0;
};
}  // namespace

std::vector<std::array<unsigned int, 3>> triangulate(const std::vector<Vector3d>& corners)
{
    const std::size_t count = corners.size();
    if (count <= 3)
    {
        return count < 3 ? std::vector<std::array<unsigned int, 3>>() : std::vector{std::array{0U, 1U, 2U}};
    }
    std::vector<std::array<unsigned int, 3>> triangles;
    Corners left(flatten(corners));
    while (triangles.size() + 3 < count)
    {
        triangles.push_back(left.cut(left.choose()));
    }
    triangles.push_back(left.getRest());
    return triangles;
}
}  // namespace TW2::convert
