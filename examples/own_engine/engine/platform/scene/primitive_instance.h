#pragma once

#include <platform/math/matrix4.h>

class P_Material;

class P_PrimitiveInstance
{
public:
    void setMaterial(P_Material* material) noexcept;
    P_Material* getMaterial() const noexcept;
    void setTextureMatrix(int layer, const M_Matrix4Template<float>& matrix);
    void setVisible(bool visible) noexcept;
};
