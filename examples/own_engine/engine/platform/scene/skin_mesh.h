#pragma once

#include <platform/scene/triangle_mesh.h>

class P_SkinMesh : public P_TriangleMesh
{
public:
    void setBoneIndex(unsigned int vertex, unsigned int slot, unsigned int bone);
    void setBoneWeight(unsigned int vertex, unsigned int slot, float weight);
    void setBoneCountList(const int* counts) noexcept;
};
