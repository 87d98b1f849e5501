#pragma once

#include <platform/export.h>

/// What a vertex of a triangle mesh carries, and where it stands in the vertex's floats.
///
/// A vertex is a row of floats: position (3), normal (3), colour (4: red, green, blue, alpha on the scale 0 to 255),
/// then u and v of each texture coordinate layer; what the format lacks takes no room. Bones stand apart, in
/// P_SkinMesh.
class TW2_PLATFORM_API P_VertexFormat
{
public:
    /// Bits of the flags that `constructFromOldVertexFormat` takes. The low three bits are the number of texture
    /// coordinate layers, the bits from `boneCountShift` upwards the number of bones per vertex.
    enum OldFlag : unsigned int
    {
        TEXTURE_LAYER_MASK = 0x7,
        POSITION = 0x10,
        NORMAL = 0x20,
        DIFFUSE_COLOR = 0x40
    };
    static constexpr unsigned int boneCountShift = 8;         ///< of the bone count in the old flags
    static constexpr unsigned int maximumTextureLayers = 4;   ///< more are an exception
    static constexpr unsigned int maximumBonesPerVertex = 4;  ///< more are an exception

    /// Carries nothing.
    P_VertexFormat() noexcept = default;

    /// Sets the format from old flags. More than 4 texture coordinate layers throw P_DriverException, more than 4 bones
    /// P_DriverException_TooManyBonesPerVertex; the format is then unchanged.
    void constructFromOldVertexFormat(unsigned int flags);
    /// The flags that give this format.
    [[nodiscard]] unsigned int getOldVertexFormat() const noexcept;

    /// @name What a vertex carries
    /// @{

    /// Three floats.
    [[nodiscard]] bool hasPosition() const noexcept { return m_bPosition; }
    /// Three floats.
    [[nodiscard]] bool hasNormal() const noexcept { return m_bNormal; }
    /// Four floats, of which the set-ups use alpha.
    [[nodiscard]] bool hasColor() const noexcept { return m_bColor; }
    /// Coordinate sets of two floats each, 0 to 4.
    [[nodiscard]] unsigned int getTextureLayerCount() const noexcept { return m_uiTextureLayers; }
    /// Bones per vertex, 0 for a mesh without bones.
    [[nodiscard]] unsigned int getBonesPerVertex() const noexcept { return m_uiBones; }
    /// @}

    /// @name Where it stands: floats from the start of the vertex
    /// @{

    /// Floats per vertex.
    [[nodiscard]] unsigned int getStride() const noexcept { return getTextureOffset(m_uiTextureLayers); }
    /// Floats before the position.
    [[nodiscard]] unsigned int getPositionOffset() const noexcept { return 0; }
    /// Floats before the normal.
    [[nodiscard]] unsigned int getNormalOffset() const noexcept { return m_bPosition ? 3 : 0; }
    /// Floats before the colour.
    [[nodiscard]] unsigned int getColorOffset() const noexcept { return getNormalOffset() + (m_bNormal ? 3 : 0); }
    /// Floats before the coordinates of a layer.
    [[nodiscard]] unsigned int getTextureOffset(unsigned int layer) const noexcept
    {
        return getColorOffset() + (m_bColor ? 4 : 0) + 2 * layer;
    }
    /// @}

    friend bool operator==(const P_VertexFormat&, const P_VertexFormat&) noexcept = default;

private:
    bool m_bPosition = false;
    bool m_bNormal = false;
    bool m_bColor = false;
    unsigned int m_uiTextureLayers = 0;
    unsigned int m_uiBones = 0;
};
