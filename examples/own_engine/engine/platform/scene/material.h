#pragma once

#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

class P_Map;
class P_MaterialSwitchObject;

class P_Material : public S_Allocated
{
public:
    enum class BLENDING_MODE : unsigned int
    {
        Opaque = 0,
        Add = 0x200000,
        Modulate = 0x400000,
        VertexAlpha = 0x600000,
        TextureAlpha = 0x800000,
        TextureAndVertexAlpha = 0xA00000
    };
    enum class FILTER_MODE : unsigned int
    {
        Point = 0x1000000,
        PointMipMapped = 0x2000000,
        Bilinear = 0x4000000,
        BilinearMipMapped = 0x5000000,
        Trilinear = 0x6000000,
        Anisotropic = 0x7000000
    };
    enum class TEXTURE_ADDRESS_MODE : unsigned int
    {
        Wrap = 0
    };
    enum class SHADING_MODE : unsigned int
    {
        Gouraud = 0x40000,
        Specular = 0x100000
    };
    enum class TextureCoordinateSource : int
    {
        CameraSpaceReflection = 4
    };
    enum class CullingMode : int
    {
        None = 0,
        BackFaces = 1
    };
    enum State : int
    {
        STATE_PREPARED = 3
    };
    struct InfoBlock
    {
        int m_iState;
    };

    P_Material() noexcept;
    P_Material(const P_Material& other);
    virtual ~P_Material();
    virtual void prepare();

    void init(unsigned int textureLayers, unsigned int coordinateSets);
    void addTextureLayer(unsigned int layer, unsigned int coordinateSet, BLENDING_MODE blending, FILTER_MODE filter,
                         TEXTURE_ADDRESS_MODE address);
    void setTexture(unsigned int layer, P_Map* map) noexcept;
    void addShadingLayer(SHADING_MODE mode, bool combine);
    void setTextureCoordinateSource(int coordinateSet, TextureCoordinateSource source);
    void enableTextureTransformation(int coordinateSet, bool on);
    void enableTextureProjection(int coordinateSet, bool on);
    void setAmbientColor(const G_FColor& color) noexcept;
    void setDiffuseColor(const G_FColor& color) noexcept;
    void setEmissiveColor(const G_FColor& color) noexcept;
    void setSpecularColor(const G_FColor& color) noexcept;
    void setSpecularExponent(float exponent) noexcept;
    void enableSpecular(bool on) noexcept;
    void enableLighting(bool on) noexcept;
    void enableFogging(bool on) noexcept;
    void setBackfaceCullingMode(CullingMode mode) noexcept;
    void enableAlphaTest(bool on) noexcept;
    void setAlphaReference(unsigned char reference) noexcept;
    void forceBlendingOff() noexcept;
    void setSortPriority(unsigned int priority) noexcept;
    void setPixelShader(const S_String& name, const S_String& code);
    void setMaterialSwitchObjectBefore(P_MaterialSwitchObject* object) noexcept;
    InfoBlock getInfoBlock() const noexcept;
    static FILTER_MODE getDefaultFilter() noexcept;
};
