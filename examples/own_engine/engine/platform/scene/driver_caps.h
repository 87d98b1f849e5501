#pragma once

struct P_DriverCaps
{
    unsigned int m_uiPixelShaderVersion;
    unsigned int m_uiMinimumTextureWidth;
    unsigned int m_uiMinimumTextureHeight;
};
