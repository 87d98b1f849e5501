#pragma once

/// What a graphics driver can do.
struct P_DriverCaps
{
    /// Pixel shader version: major number in bits 8 to 15, minor number in bits 0 to 7 (0x0100 is 1.0); 0 for none. The
    /// high 16 bits are not part of the version.
    unsigned int m_uiPixelShaderVersion = 0x0100;
    /// Size of the smallest texture that every mode takes, in pixels.
    unsigned int m_uiMinimumTextureWidth = 8;
    /// The same of its height.
    unsigned int m_uiMinimumTextureHeight = 8;
    /// Largest side of a texture, in pixels.
    unsigned int m_uiMaximumTextureSize = 8192;
    /// Texture layers that can be combined in one pass.
    unsigned int m_uiTextureLayers = 8;
    /// Whether a layer can be multiplied in with the result doubled.
    bool m_bModulate2X = true;
    /// Whether two layers can be added before a doubled multiplication.
    bool m_bAddThenModulate2X = true;
};
