#include "convert/triangulation.h"

#include <cmath>

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

/// Whether the corner `at` of those that are left can be cut off.
bool isEar(const std::vector<Point>& flat, const std::vector<unsigned int>& left, std::size_t at)
{
    const std::size_t n = left.size();
    const unsigned int a = left[(at + n - 1) % n];
    const unsigned int b = left[at];
    const unsigned int c = left[(at + 1) % n];
    if (!(turn(flat[a], flat[b], flat[c]) > 0.0))
    {
        return false;
    }
    for (const unsigned int other : left)
    {
        const bool corner = other == a || other == b || other == c;
        if (!corner && isInside(flat[other], flat[a], flat[b], flat[c]))
        {
            return false;
        }
    }
    return true;
}
}  // namespace

std::vector<std::array<unsigned int, 3>> triangulate(const std::vector<Vector3d>& corners)
{
    std::vector<std::array<unsigned int, 3>> triangles;
    std::vector<unsigned int> left(corners.size());
    for (unsigned int i = 0; i < left.size(); ++i)
    {
        left[i] = i;
    }
    const std::vector<Point> flat = left.size() > 3 ? flatten(corners) : std::vector<Point>();
    // Ears are cut off from the second corner on: what is bulged outwards everywhere becomes a fan around its first.
    while (left.size() > 3)
    {
        std::size_t ear = 1;
        while (ear <= left.size() && !isEar(flat, left, ear % left.size()))
        {
            ++ear;
        }
        ear = ear > left.size() ? 1 : ear % left.size();  // none: crossed or without area, any cut will do
        const std::size_t n = left.size();
        triangles.push_back({left[(ear + n - 1) % n], left[ear], left[(ear + 1) % n]});
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(ear));
    }
    if (left.size() == 3)
    {
        triangles.push_back({left[0], left[1], left[2]});
    }
    return triangles;
}
}  // namespace TW2::convert
