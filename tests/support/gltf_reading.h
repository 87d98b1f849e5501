#pragma once

#include "convert/gltf_import.h"
#include "tests/support/gltf_text.h"
#include "tests/support/temporary_directory.h"

#include <platform/runtime/exception.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace support
{
using TW2::convert::Mesh;
using TW2::convert::Model;
using TW2::convert::Vector3;

inline Model read(const std::string& content, const std::string& name = "model.gltf")
{
    const support::TemporaryDirectory directory;
    return TW2::convert::importGltf(directory.write(name, content), {});
}

inline Model read(const GltfText& text)
{
    return read(text.make());
}

/// What the reader says about a file that it refuses; empty when it reads it.
inline std::string getRefusal(const std::string& content, const std::string& name = "model.gltf")
{
    try
    {
        static_cast<void>(read(content, name));
        return {};
    }
    catch (const S_Exception& exception)
    {
        return exception.getErrorMessage();
    }
}

/// One node that shows one primitive.
inline void showPrimitive(GltfText& text, const std::string& primitive)
{
    text.set("meshes", R"([{"name":"shape","primitives":[)" + primitive + "]}]");
    text.set("nodes", R"([{"name":"holder","mesh":0}])");
    text.set("scenes", R"([{"nodes":[0]}])");
}

/// The corners of each triangle, one after the other.
inline std::vector<std::array<float, 3>> getCorners(const Mesh& mesh)
{
    std::vector<std::array<float, 3>> corners;
    for (const unsigned int index : mesh.m_vecIndices)
    {
        const Vector3& p = mesh.m_vecPositions.at(index);
        corners.push_back({p.x, p.y, p.z});
    }
    return corners;
}

/// Each triangle is clockwise as seen from where its normals point to.
inline void expectFrontsOutside(const Mesh& mesh)
{
    ASSERT_EQ(mesh.m_vecNormals.size(), mesh.m_vecPositions.size());
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        const Vector3& a = mesh.m_vecPositions[mesh.m_vecIndices[i]];
        const Vector3& b = mesh.m_vecPositions[mesh.m_vecIndices[i + 1]];
        const Vector3& c = mesh.m_vecPositions[mesh.m_vecIndices[i + 2]];
        const Vector3 front = (b - a).cross(c - a).normalized();
        for (std::size_t corner = i; corner < i + 3; ++corner)
        {
            EXPECT_NEAR(front.dot(mesh.m_vecNormals[mesh.m_vecIndices[corner]]), 1.0F, 1e-5F) << "corner " << corner;
        }
    }
}
}  // namespace support
