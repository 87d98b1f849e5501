#include "viewer/picking.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/camera.h>
#include <platform/scene/virtual_object.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace TW2::viewer
{
namespace
{
using Vector = M_Vector3Template<float>;

struct Ray
{
    Vector m_vFrom;
    Vector m_vDirection;
};

struct Hit
{
    float m_fDistance = std::numeric_limits<float>::max();
    const P_VirtualObject* m_pMesh = nullptr;
    int m_iPrimitive = 0;
    unsigned int m_uiVertex = 0;
};

float getHalfHeight(const P_Camera& camera)
{
    return std::tan(camera.getVerticalAngle() * std::numbers::pi_v<float> / 360.0F);
}

Ray makeRay(const P_Camera& camera, float x, float y)
{
    const M_Matrix4x3Template<float>& world = camera.getObjectToWorldMatrix();
    const float half = getHalfHeight(camera);
    const Vector inCamera{x * half * camera.getAspect(), y * half, 1.0F};
    return {world.getTranslation(), world.transformDirection(inCamera).normalized()};
}

/// Distance along the ray to a triangle (Moeller and Trumbore, "Fast, minimum storage ray/triangle intersection", 1997)
/// and the corner nearest to where it is met; no distance below 0.
float intersect(const Ray& ray, const Vector (&corners)[3], unsigned int& nearestCorner)
{
    const Vector side1 = corners[1] - corners[0];
    const Vector side2 = corners[2] - corners[0];
    const Vector p = ray.m_vDirection.cross(side2);
    const float determinant = side1.dot(p);
    if (std::abs(determinant) < std::numeric_limits<float>::min())
    {
        return -1.0F;
    }
    const Vector t = ray.m_vFrom - corners[0];
    const float u = t.dot(p) / determinant;
    const Vector q = t.cross(side1);
    const float v = ray.m_vDirection.dot(q) / determinant;
    if (u < 0.0F || v < 0.0F || u + v > 1.0F)
    {
        return -1.0F;
    }
    nearestCorner = u > v ? (u > 1.0F - u - v ? 1U : 0U) : (v > 1.0F - u - v ? 2U : 0U);
    return side2.dot(q) / determinant;
}

void meet(const Ray& ray, const P_VirtualObject& mesh, int primitive, Hit& hit)
{
    const P_TriangleMesh* geometry = mesh.getPrimitive(primitive);
    if (!geometry || !mesh.getPrimitiveInstance(primitive)->isVisible())
    {
        return;
    }
    const M_Matrix4x3Template<float>& world = mesh.getObjectToWorldMatrix();
    std::vector<Vector> places(geometry->getVertexBuffer().getUsedCount());
    for (unsigned int i = 0; i < places.size(); ++i)
    {
        places[i] = world.transformPoint(mesh.getVertexPosition(primitive, i));
    }
    const P_IndexBuffer& indices = geometry->getIndexBuffer();
    for (unsigned int triangle = 0; triangle < indices.getUsedCount(); ++triangle)
    {
        unsigned int corner = 0;
        const Vector corners[3] = {places[indices.getIndex(triangle, 0)], places[indices.getIndex(triangle, 1)],
                                   places[indices.getIndex(triangle, 2)]};
        const float distance = intersect(ray, corners, corner);
        if (distance > 0.0F && distance < hit.m_fDistance)
        {
            hit = {distance, &mesh, primitive, indices.getIndex(triangle, corner)};
        }
    }
}

int findStrongestBone(const P_SkinMesh& skin, unsigned int vertex)
{
    int bone = -1;
    float strongest = 0.0F;
    for (unsigned int slot = 0; slot < skin.getSlotCount(); ++slot)
    {
        if (skin.getBoneWeight(vertex, slot) > strongest)
        {
            strongest = skin.getBoneWeight(vertex, slot);
            bone = static_cast<int>(skin.getBoneIndex(vertex, slot));
        }
    }
    return bone;
}

int findSeenOrigin(TW_ObjectAnimation& skeleton, const P_Camera& camera, float x, float y)
{
    constexpr float nearEnough = 2.0F / 40.0F;
    const float half = getHalfHeight(camera);
    int bone = -1;
    float nearest = nearEnough;
    for (unsigned int i = 0; i < skeleton.getTotalMeshes(); ++i)
    {
        const Vector place =
            camera.getViewMatrix().transformPoint(skeleton.getMesh(i)->getObjectToWorldMatrix().getTranslation());
        if (place.z <= camera.getNearDistance())
        {
            continue;
        }
        // Both in half heights of the picture.
        const float right = place.x / (place.z * half) - x * camera.getAspect();
        const float up = place.y / (place.z * half) - y;
        if (std::hypot(right, up) < nearest)
        {
            nearest = std::hypot(right, up);
            bone = static_cast<int>(i);
        }
    }
    return bone;
}
}  // namespace

int pickBone(TW_ObjectAnimation& drawn, TW_ObjectAnimation& skeleton, const P_Camera& camera, float x, float y)
{
    const Ray ray = makeRay(camera, x, y);
    Hit hit;
    for (unsigned int i = 0; i < drawn.getTotalMeshes(); ++i)
    {
        const P_VirtualObject* mesh = drawn.getMesh(i);
        for (int primitive = 0; mesh->isEnabled() && primitive < mesh->getPrimitiveCount(); ++primitive)
        {
            meet(ray, *mesh, primitive, hit);
        }
    }
    if (!hit.m_pMesh)
    {
        return findSeenOrigin(skeleton, camera, x, y);
    }
    if (const P_SkinMesh* skin = hit.m_pMesh->getPrimitive(hit.m_iPrimitive)->asSkinMesh())
    {
        return findStrongestBone(*skin, hit.m_uiVertex);
    }
    return &drawn == &skeleton ? drawn.getMeshIndex(hit.m_pMesh) : -1;
}
}  // namespace TW2::viewer
