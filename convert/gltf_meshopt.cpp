#include "convert/gltf_compression.h"

#ifdef TW2_HAS_MESHOPT
#include <meshoptimizer.h>
#endif

namespace TW2::convert
{
#ifdef TW2_HAS_MESHOPT
namespace
{
/// What the library takes for granted, and what would need more memory than packed data of that size can fill.
std::string check(std::size_t packedSize, const MeshoptLayout& layout)
{
    constexpr std::size_t mostElementsPerByte = 1024;
    const std::size_t stride = layout.m_uiStride;
    if (layout.m_uiCount / mostElementsPerByte > packedSize)
    {
        return "says that " + std::to_string(packedSize) + " packed bytes are " + std::to_string(layout.m_uiCount) +
               " elements";
    }
    if (layout.m_strMode == "ATTRIBUTES")
    {
        return stride > 0 && stride <= 256 && stride % 4 == 0
                   ? ""
                   : "has packed elements of " + std::to_string(stride) + " bytes";
    }
    if (layout.m_strMode == "TRIANGLES" || layout.m_strMode == "INDICES")
    {
        const bool whole = layout.m_strMode == "INDICES" || layout.m_uiCount % 3 == 0;
        return (stride == 2 || stride == 4) && whole ? "" : "has packed indices that make no triangles";
    }
    return "is packed in an unknown mode \"" + layout.m_strMode + "\"";
}

std::string filter(const MeshoptLayout& layout, void* elements)
{
    const std::size_t stride = layout.m_uiStride;
    if (layout.m_strFilter == "OCTAHEDRAL" && (stride == 4 || stride == 8))
    {
        meshopt_decodeFilterOct(elements, layout.m_uiCount, stride);
    }
    else if (layout.m_strFilter == "QUATERNION" && stride == 8)
    {
        meshopt_decodeFilterQuat(elements, layout.m_uiCount, stride);
    }
    else if (layout.m_strFilter == "EXPONENTIAL")
    {
        meshopt_decodeFilterExp(elements, layout.m_uiCount, stride);
    }
    else if (layout.m_strFilter != "NONE")
    {
        return "has elements of " + std::to_string(stride) + " bytes, which a filter \"" + layout.m_strFilter +
               "\" does not take";
    }
    return {};
}
}  // namespace

bool canUnpackMeshopt() noexcept
{
    return true;
}

std::string unpackMeshopt(std::span<const unsigned char> packed, const MeshoptLayout& layout,
                          std::vector<unsigned char>& unpacked)
{
    if (std::string error = check(packed.size(), layout); !error.empty())
    {
        return error;
    }
    unpacked.resize(layout.m_uiCount * layout.m_uiStride);
    int failed = 0;
    if (layout.m_strMode == "ATTRIBUTES")
    {
        failed = meshopt_decodeVertexBuffer(unpacked.data(), layout.m_uiCount, layout.m_uiStride, packed.data(),
                                            packed.size());
    }
    else if (layout.m_strMode == "TRIANGLES")
    {
        failed = meshopt_decodeIndexBuffer(unpacked.data(), layout.m_uiCount, layout.m_uiStride, packed.data(),
                                           packed.size());
    }
    else
    {
        failed = meshopt_decodeIndexSequence(unpacked.data(), layout.m_uiCount, layout.m_uiStride, packed.data(),
                                             packed.size());
    }
    return failed != 0 ? "its packed bytes are damaged" : filter(layout, unpacked.data());
}
#else
bool canUnpackMeshopt() noexcept
{
    return false;
}

std::string unpackMeshopt(std::span<const unsigned char>, const MeshoptLayout&, std::vector<unsigned char>&)
{
    return "is packed by meshoptimizer, without which this program was built";
}
#endif
}  // namespace TW2::convert
