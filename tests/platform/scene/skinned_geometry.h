#pragma once

#include "test_object.h"

#include <platform/scene/virtual_object.h>

inline P_VertexFormat makeFormat(unsigned int flags)
{
    P_VertexFormat format;
    format.constructFromOldVertexFormat(flags);
    return format;
}

/// Gives primitive 0 random vertices; with bones also random influences among them.
inline void fill(P_VirtualObject& object, Dice& dice, unsigned int vertices, unsigned int bones)
{
    P_TriangleMesh* mesh;
    P_SkinMesh* skin = nullptr;
    if (bones > 0)
    {
        mesh = skin = object.createSkinMesh(0, nullptr, makeFormat(0x30 | 4 << P_VertexFormat::boneCountShift));
    }
    else
    {
        mesh = object.createTriangleMesh(0, nullptr, makeFormat(0x30));
    }
    mesh->allocate(1, vertices, false);
    mesh->lock();
    for (unsigned int v = 0; v < vertices; ++v)
    {
        mesh->getVertexBuffer().setPosition(v, dice.vector(2.0f));
        const unsigned int slots = skin ? static_cast<unsigned int>(dice.pick(5)) : 0;
        for (unsigned int slot = 0; slot < slots; ++slot)
        {
            skin->setBoneIndex(v, slot, static_cast<unsigned int>(dice.pick(bones)));
            skin->setBoneWeight(v, slot, 1.0f / static_cast<float>(slots));
        }
    }
    mesh->unlock();
}

/// Where a vertex stands by the definition of skinning, in double precision.
inline DoubleVector getSkinned(const P_VirtualObject& object, unsigned int vertex)
{
    const P_TriangleMesh& mesh = *object.getPrimitive(0);
    const Vector rest = mesh.getVertexBuffer().getPosition(vertex);
    const DoubleVector p{static_cast<double>(rest.x), static_cast<double>(rest.y), static_cast<double>(rest.z)};
    const P_SkinMesh* skin = mesh.asSkinMesh();
    DoubleVector sum;
    bool weighted = false;
    for (unsigned int slot = 0; skin && slot < skin->getSlotCount(); ++slot)
    {
        const unsigned int index = skin->getBoneIndex(vertex, slot);
        const DoubleMatrix bone =
            index < object.getBoneMatrixCount() ? toDouble(object.getBoneMatrix(index)) : DoubleMatrix();
        const double weight = static_cast<double>(skin->getBoneWeight(vertex, slot));
        sum += bone.transformPoint(p) * weight;
        weighted = weighted || weight != 0.0;
    }
    return weighted ? sum : p;
}
