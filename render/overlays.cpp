#include "render/overlays.h"

#include "render/scene_walk.h"

#include <platform/scene/virtual_object.h>

#include <array>
#include <cmath>
#include <numbers>

namespace TW2::render
{
namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

void addNormalsOf(View& view, const P_VirtualObject& mesh, int primitive, float length, const G_FColor& color)
{
    const P_TriangleMesh& geometry = *mesh.getPrimitive(primitive);
    const P_SkinMesh* skin = geometry.asSkinMesh();
    const P_BoneMatrices bones = mesh.getBoneMatrices();
    const Matrix& world = mesh.getObjectToWorldMatrix();
    // A normal is a row of the inverse's column: it stays upright under uneven scales.
    const Matrix inverse = world.inverse();
    const P_VertexBuffer& vertices = geometry.getVertexBuffer();
    for (unsigned int vertex = 0; vertex < vertices.getUsedCount(); ++vertex)
    {
        const Vector normal = skin ? skin->getSkinnedNormal(vertex, bones) : vertices.getNormal(vertex);
        const Vector inWorld =
            Vector{inverse.getRow(0).dot(normal), inverse.getRow(1).dot(normal), inverse.getRow(2).dot(normal)}
                .normalized();
        const Vector from = world.transformPoint(mesh.getVertexPosition(primitive, vertex));
        view.m_vecLines.push_back({from, from + inWorld * length, color});
    }
}
}  // namespace

void addAxes(View& view, const P_BaseObject& root, float length)
{
    constexpr std::array<G_FColor, 3> colors{G_FColor{220.0F, 50.0F, 50.0F}, G_FColor{60.0F, 180.0F, 60.0F},
                                             G_FColor{60.0F, 100.0F, 230.0F}};
    forEachShownMesh(
        root,
        [&view, &colors, length](const P_VirtualObject& mesh)
        {
            const Matrix& world = mesh.getObjectToWorldMatrix();
            for (int axis = 0; axis < 3; ++axis)
            {
                view.m_vecOverlayLines.push_back({world.getTranslation(),
                                                  world.getTranslation() + world.getRow(axis).normalized() * length,
                                                  colors[static_cast<std::size_t>(axis)]});
            }
        });
}

void addBoundingBox(View& view, P_BaseObject& object, const G_FColor& color)
{
    const std::array<Vector, 2> ends{object.getBoundingBoxMin(), object.getBoundingBoxMax()};
    const Matrix& world = object.getObjectToWorldMatrix();
    const auto corner = [&ends, &world](unsigned int number) {
        return world.transformPoint({ends[number & 1U].x, ends[number >> 1U & 1U].y, ends[number >> 2U].z});
    };
    for (unsigned int from = 0; from < 8; ++from)
    {
        for (unsigned int axis = 1; axis < 8; axis *= 2)
        {
            if ((from & axis) == 0)
            {
                view.m_vecLines.push_back({corner(from), corner(from | axis), color});
            }
        }
    }
}

void addBoundingSphere(View& view, P_BaseObject& object, const G_FColor& color)
{
    constexpr int pieces = 48;
    const float radius = object.getBoundingRadius();
    const Matrix& world = object.getObjectToWorldMatrix();
    for (int axis = 0; axis < 3; ++axis)
    {
        Vector before;
        for (int piece = 0; piece <= pieces; ++piece)
        {
            const float angle = 2.0F * std::numbers::pi_v<float> * static_cast<float>(piece) / pieces;
            const float a = radius * std::cos(angle);
            const float b = radius * std::sin(angle);
            const Vector now = world.transformPoint(axis == 0   ? Vector{0.0F, a, b}
                                                    : axis == 1 ? Vector{a, 0.0F, b}
                                                                : Vector{a, b, 0.0F});
            if (piece > 0)
            {
                view.m_vecLines.push_back({before, now, color});
            }
            before = now;
        }
    }
}

void addVertexNormals(View& view, const P_BaseObject& root, float length, const G_FColor& color)
{
    forEachShownMesh(
        root,
        [&view, length, &color](const P_VirtualObject& mesh)
        {
            for (int i = 0; mesh.isEnabled() && i < mesh.getPrimitiveCount(); ++i)
            {
                const P_TriangleMesh* geometry = mesh.getPrimitive(i);
                if (geometry && geometry->getFormat().hasNormal() && mesh.getPrimitiveInstance(i)->isVisible())
                {
                    addNormalsOf(view, mesh, i, length, color);
                }
            }
        });
}
}  // namespace TW2::render
