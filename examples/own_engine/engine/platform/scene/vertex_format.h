#pragma once

class P_VertexFormat
{
public:
    static constexpr unsigned int maximumTextureLayers = 4;
    static constexpr unsigned int maximumBonesPerVertex = 4;
    static constexpr unsigned int boneCountShift = 8;

    enum OldFlag : unsigned int
    {
        POSITION = 0x10,
        NORMAL = 0x20,
        DIFFUSE_COLOR = 0x40
    };

    void constructFromOldVertexFormat(unsigned int flags);
    unsigned int getTextureLayerCount() const noexcept;
    bool hasColor() const noexcept;
};
