#include "convert/gltf_compression.h"

#ifdef TW2_HAS_DRACO
#include <draco/compression/decode.h>
#endif

namespace TW2::convert
{
#ifdef TW2_HAS_DRACO
namespace
{
/// Returns whether all went well.
bool readNumbers(const draco::PointCloud& points, DracoAttribute& target)
{
    const draco::PointAttribute* source = points.GetAttributeByUniqueId(static_cast<std::uint32_t>(target.m_iId));
    const std::size_t components = target.m_uiComponents;
    if (!source || static_cast<std::size_t>(source->num_components()) != components)
    {
        return false;
    }
    target.m_bNormalized = source->normalized();
    target.m_vecNumbers.resize(points.num_points() * components);
    for (draco::PointIndex point(0); point < points.num_points(); ++point)
    {
        if (!source->ConvertValue<float>(source->mapped_index(point), static_cast<std::int8_t>(components),
                                         target.m_vecNumbers.data() + point.value() * components))
        {
            return false;
        }
    }
    return true;
}
}  // namespace

bool canUnpackDraco() noexcept
{
    return true;
}

std::string unpackDraco(std::span<const unsigned char> packed, DracoMesh& mesh)
{
    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(packed.data()), packed.size());
    const auto kind = draco::Decoder::GetEncodedGeometryType(&buffer);
    if (!kind.ok() || kind.value() != draco::TRIANGULAR_MESH)
    {
        return kind.ok() ? "its packed data holds no triangles" : "its packed data is damaged";
    }
    draco::Decoder decoder;
    auto decoded = decoder.DecodeMeshFromBuffer(&buffer);
    if (!decoded.ok())
    {
        return "its packed data is damaged: " + decoded.status().error_msg_string();
    }
    const draco::Mesh& source = *decoded.value();
    mesh.m_uiVertices = source.num_points();
    for (draco::FaceIndex face(0); face < source.num_faces(); ++face)
    {
        for (const draco::PointIndex& corner : source.face(face))
        {
            mesh.m_vecIndices.push_back(corner.value());
        }
    }
    for (auto& [meaning, attribute] : mesh.m_mapAttributes)
    {
        if (!readNumbers(source, attribute))
        {
            return "its packed data has no " + meaning + " of " + std::to_string(attribute.m_uiComponents) +
                   " numbers in attribute " + std::to_string(attribute.m_iId);
        }
    }
    return {};
}
#else
bool canUnpackDraco() noexcept
{
    return false;
}

std::string unpackDraco(std::span<const unsigned char>, DracoMesh&)
{
    return "is packed by Draco, without which this program was built";
}
#endif
}  // namespace TW2::convert
