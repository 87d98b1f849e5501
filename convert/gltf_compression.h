#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace TW2::convert
{
/// @name EXT_meshopt_compression
/// @{

/// What the description says about a packed buffer view.
struct MeshoptLayout
{
    std::size_t m_uiCount = 0;
    std::size_t m_uiStride = 0;
    std::string m_strMode;    ///< ATTRIBUTES, TRIANGLES or INDICES
    std::string m_strFilter;  ///< NONE, OCTAHEDRAL, QUATERNION or EXPONENTIAL
};
/// Whether it is built in.
[[nodiscard]] bool canUnpackMeshopt() noexcept;
/// Returns what is wrong; empty when `unpacked` holds the bytes.
[[nodiscard]] std::string unpackMeshopt(std::span<const unsigned char> packed, const MeshoptLayout& layout,
                                        std::vector<unsigned char>& unpacked);
/// @}

/// @name KHR_draco_mesh_compression
/// @{

/// A list of numbers per vertex.
struct DracoAttribute
{
    int m_iId = 0;  ///< which one of the packed data
    std::size_t m_uiComponents = 0;
    std::vector<float> m_vecNumbers;  ///< filled in; whole numbers as they are
    bool m_bNormalized = false;       ///< filled in: whole numbers were divided by the largest
};
struct DracoMesh
{
    std::map<std::string, DracoAttribute> m_mapAttributes;  ///< by meaning; those that are wanted
    std::size_t m_uiVertices = 0;
    std::vector<unsigned int> m_vecIndices;  ///< three per triangle; of a point cloud none
};
/// Whether it is built in.
[[nodiscard]] bool canUnpackDraco() noexcept;
/// Fills in the mesh, whose attributes name what is wanted. Returns what is wrong; empty when nothing is.
[[nodiscard]] std::string unpackDraco(std::span<const unsigned char> packed, DracoMesh& mesh);
/// @}
}  // namespace TW2::convert
