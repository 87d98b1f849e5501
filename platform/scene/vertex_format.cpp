#include <platform/scene/driver_exception.h>
#include <platform/scene/vertex_format.h>

void P_VertexFormat::constructFromOldVertexFormat(unsigned int flags)
{
    const unsigned int layers = flags & TEXTURE_LAYER_MASK;
    const unsigned int bones = flags >> boneCountShift;
    if (layers > maximumTextureLayers)
    {
        throw P_DriverException("A vertex carries at most 4 texture coordinate layers");
    }
    if (bones > maximumBonesPerVertex)
    {
        throw P_DriverException_TooManyBonesPerVertex();
    }
    m_bPosition = (flags & POSITION) != 0;
    m_bNormal = (flags & NORMAL) != 0;
    m_bColor = (flags & DIFFUSE_COLOR) != 0;
    m_uiTextureLayers = layers;
    m_uiBones = bones;
}

unsigned int P_VertexFormat::getOldVertexFormat() const noexcept
{
    return (m_bPosition ? POSITION : 0U) | (m_bNormal ? NORMAL : 0U) | (m_bColor ? DIFFUSE_COLOR : 0U) |
           m_uiTextureLayers | m_uiBones << boneCountShift;
}
