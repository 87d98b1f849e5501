#pragma once

#include "tests/support/mesh_builder.h"

#include <algorithm>
#include <vector>

/// The conversion of old meshes in its plainest form: lists searched from end to end, nothing remembered. Slow, and
/// what the library's conversion must equal to the bit.
namespace plain
{
using support::Vector;

struct Group
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<std::vector<Vector>> coordinates;  // per channel
    std::vector<int> vertexMap;
    std::vector<int> indices;
};

class Conversion
{
public:
    explicit Conversion(const support::LegacyMesh& mesh)
        : m_mesh(mesh), m_positions(mesh.positions), m_fileVertices(static_cast<int>(mesh.positions.size()))
    {
        for (const support::Triangle& polygon : mesh.polygons)
        {
            m_corners.insert(m_corners.end(), polygon.begin(), polygon.end());
        }
        smooth();
        if (!mesh.channels.empty() && !mesh.materials.empty())
        {
            for (const auto& channel : mesh.channels)
            {
                splitByTexture(channel);
            }
        }
    }

    [[nodiscard]] std::vector<Group> group() const
    {
        std::vector<Group> groups;
        if (m_mesh.materials.size() < 2)
        {
            std::vector<int> all(m_positions.size());
            for (std::size_t i = 0; i < all.size(); ++i)
            {
                all[i] = static_cast<int>(i);
            }
            groups.push_back(collect(all, m_corners));
            return groups;
        }
        for (int material = 0; material < static_cast<int>(m_mesh.materials.size()); ++material)
        {
            std::vector<int> vertices;
            std::vector<int> corners;
            for (std::size_t i = 0; i < m_corners.size(); ++i)
            {
                if (m_mesh.faceMaterials[i / 3] == material)
                {
                    corners.push_back(m_corners[i]);
                    if (std::find(vertices.begin(), vertices.end(), m_corners[i]) == vertices.end())
                    {
                        vertices.push_back(m_corners[i]);
                    }
                }
            }
            groups.push_back(collect(vertices, corners));
        }
        return groups;
    }

private:
    [[nodiscard]] unsigned int mask(int triangle) const
    {
        const auto index = static_cast<std::size_t>(triangle);
        return index < m_mesh.masks.size() ? m_mesh.masks[index] : 0;
    }
    [[nodiscard]] bool share(int a, int b) const { return (mask(a) & mask(b)) != 0; }
    [[nodiscard]] int& corner(int triangle, int k) { return m_corners[static_cast<std::size_t>(3 * triangle + k)]; }
    [[nodiscard]] const Vector& position(int vertex) const { return m_positions[static_cast<std::size_t>(vertex)]; }
    [[nodiscard]] Vector triangleNormal(int t) const
    {
        const auto at = [&](int k) { return m_mesh.positions[static_cast<std::size_t>(polygonCorner(t, k))]; };
        return (at(1) - at(0)).cross(at(2) - at(0)).normalized();
    }
    [[nodiscard]] int polygonCorner(int t, int k) const
    {
        return m_mesh.polygons[static_cast<std::size_t>(t)][static_cast<std::size_t>(k)];
    }

    void smooth()
    {
        for (int v = 0; v < m_fileVertices; ++v)
        {
            std::vector<int> around;
            for (int t = 0; t < static_cast<int>(m_mesh.polygons.size()); ++t)
            {
                for (int k = 0; k < 3; ++k)
                {
                    if (polygonCorner(t, k) == v)
                    {
                        around.push_back(t);
                    }
                }
            }
            m_around.push_back(around);
        }
        m_normals.assign(m_positions.size(), {});
        for (int v = 0; v < m_fileVertices; ++v)
        {
            smoothVertex(v, m_around[static_cast<std::size_t>(v)]);
        }
    }

    void smoothVertex(int v, std::vector<int> around)
    {
        for (;;)
        {
            int best = -1;
            std::ptrdiff_t highest = -1;
            for (const int s : around)
            {
                const auto count = std::count_if(around.begin(), around.end(), [&](int f) { return share(s, f); });
                if (count > highest)
                {
                    best = s;
                    highest = count;
                }
            }
            Vector sum;
            if (around.empty() || highest == static_cast<std::ptrdiff_t>(around.size()))
            {
                for (const int f : around)
                {
                    sum += triangleNormal(f);
                }
                m_normals[static_cast<std::size_t>(v)] = sum.normalized();
                return;
            }
            const int copy = static_cast<int>(m_positions.size());
            m_positions.push_back(Vector(position(v)));
            m_sources.push_back(v);
            std::vector<int> stay;
            for (const int f : around)
            {
                if (f != best && !share(f, best))
                {
                    stay.push_back(f);
                    continue;
                }
                for (int k = 0; k < 3; ++k)
                {
                    if (corner(f, k) == v)
                    {
                        corner(f, k) = copy;
                    }
                }
                sum += triangleNormal(f);
            }
            m_normals.push_back(sum.normalized());
            around = stay;
        }
    }

    void splitByTexture(const support::LegacyMesh::Channel& channel)
    {
        std::vector<Vector> coordinates(m_positions.size());
        std::vector<int> next(m_positions.size(), -1);
        const std::size_t firstSource = m_sources.size();
        for (std::size_t i = 0; i < m_corners.size(); ++i)
        {
            const auto x = static_cast<std::size_t>(m_corners[i]);
            const Vector& full = channel.coordinates[static_cast<std::size_t>(channel.polygons[i / 3][i % 3])];
            const Vector e(full.x, full.y, 0);
            if (next[x] == -1)
            {
                coordinates[x] = e;
                next[x] = 0;
                continue;
            }
            std::size_t q = x;
            while (!(coordinates[q] == e) && next[q] != 0)
            {
                q = static_cast<std::size_t>(next[q]);
            }
            if (coordinates[q] == e)
            {
                m_corners[i] = static_cast<int>(q);
                continue;
            }
            const int copy = static_cast<int>(m_positions.size());
            m_positions.push_back(Vector(m_positions[x]));
            m_normals.push_back(Vector(m_normals[x]));
            for (auto& earlier : m_coordinates)
            {
                earlier.push_back(Vector(earlier[x]));
            }
            coordinates.push_back(e);
            m_sources.push_back(static_cast<int>(x));
            next.push_back(next[x]);
            next[x] = copy;
            m_corners[i] = copy;
        }
        for (std::size_t i = firstSource; i < m_sources.size(); ++i)
        {
            while (m_sources[i] >= m_fileVertices)
            {
                m_sources[i] = m_sources[static_cast<std::size_t>(m_sources[i] - m_fileVertices)];
            }
        }
        m_coordinates.push_back(coordinates);
    }

    [[nodiscard]] Group collect(const std::vector<int>& vertices, const std::vector<int>& corners) const
    {
        Group group;
        group.coordinates.resize(m_coordinates.size());
        for (const int vertex : vertices)
        {
            const auto v = static_cast<std::size_t>(vertex);
            group.positions.push_back(m_positions[v]);
            group.normals.push_back(m_normals[v]);
            for (std::size_t channel = 0; channel < m_coordinates.size(); ++channel)
            {
                group.coordinates[channel].push_back(m_coordinates[channel][v]);
            }
            group.vertexMap.push_back(
                vertex < m_fileVertices ? vertex : m_sources[static_cast<std::size_t>(vertex - m_fileVertices)]);
        }
        for (const int vertex : corners)
        {
            group.indices.push_back(
                static_cast<int>(std::find(vertices.begin(), vertices.end(), vertex) - vertices.begin()));
        }
        return group;
    }

    const support::LegacyMesh& m_mesh;
    std::vector<Vector> m_positions;
    std::vector<Vector> m_normals;
    std::vector<int> m_corners;
    std::vector<int> m_sources;
    std::vector<std::vector<int>> m_around;
    std::vector<std::vector<Vector>> m_coordinates;
    int m_fileVertices;
};
}  // namespace plain
