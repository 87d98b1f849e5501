#pragma once

#include <platform/scene/material.h>

class P_MaterialHelpers
{
public:
    static bool makeTexture(P_Material* material, P_Material::FILTER_MODE filter);
    static bool makeTextureEnv(P_Material* material, P_Material::FILTER_MODE filter);
    static bool makeTextureTransparent(P_Material* material, P_Material::FILTER_MODE filter, bool blend, bool lit,
                                       bool depth);
};
