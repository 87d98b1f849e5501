// Bounding volumes of scene objects: computing them from the meshes below, testing and showing them.

#include <platform/math/matrix4x3_product.h>
#include <platform/scene/base_object.h>
#include <platform/scene/bounds.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/virtual_object.h>

#include <array>
#include <cmath>
#include <numbers>

namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

constexpr G_FColor s_volumeColor{255.0f, 255.0f, 0.0f};
constexpr int s_iCircleSegments = 24;
constexpr std::size_t s_uiUsualDepth = 16;

/// A factor by which the transform lengthens no vector more: the root of the largest row sum of its Gram matrix. Exact
/// when the rows stand at right angles.
float getStretch(const Matrix& matrix)
{
    float largest = 0.0f;
    for (int r = 0; r < 3; ++r)
    {
        float sum = 0.0f;
        for (int s = 0; s < 3; ++s)
        {
            sum += std::abs(matrix.getRow(r).dot(matrix.getRow(s)));
        }
        largest = std::max(largest, sum);
    }
    return std::sqrt(largest);
}

void addBoxLines(P_Context& context, const Vector& minimum, const Vector& maximum, const Matrix& toWorld)
{
    const auto corner = [&](unsigned int bits)
    {
        return toWorld.transformPoint(
            {bits & 1u ? maximum.x : minimum.x, bits & 2u ? maximum.y : minimum.y, bits & 4u ? maximum.z : minimum.z});
    };
    for (unsigned int bits = 0; bits < 8; ++bits)
    {
        for (unsigned int axis = 1; axis <= 4; axis *= 2)
        {
            if (!(bits & axis))
            {
                context.addDebugLine(corner(bits), corner(bits | axis), s_volumeColor);
            }
        }
    }
}

void addSphereLines(P_Context& context, float radius, const Matrix& toWorld)
{
    for (int plane = 0; plane < 3; ++plane)
    {
        const auto point = [&](int segment)
        {
            const float angle = 2.0f * std::numbers::pi_v<float> * static_cast<float>(segment) / s_iCircleSegments;
            const float u = radius * std::cos(angle);
            const float v = radius * std::sin(angle);
            const std::array<Vector, 3> onPlane{Vector{u, v, 0.0f}, Vector{0.0f, u, v}, Vector{v, 0.0f, u}};
            return toWorld.transformPoint(onPlane[static_cast<std::size_t>(plane)]);
        };
        for (int segment = 0; segment < s_iCircleSegments; ++segment)
        {
            context.addDebugLine(point(segment), point(segment + 1), s_volumeColor);
        }
    }
}
}  // namespace

float P_BaseObject::getBoundingRadius()
{
    updateBoundingVolumes();
    return m_fBoundingRadius;
}

M_Vector3Template<float> P_BaseObject::getBoundingBoxMin()
{
    updateBoundingVolumes();
    return m_vBoundingBoxMin;
}

M_Vector3Template<float> P_BaseObject::getBoundingBoxMax()
{
    updateBoundingVolumes();
    return m_vBoundingBoxMax;
}

void P_BaseObject::updateBoundingVolumes()
{
    if (!m_bVolumesHeld && !hasEngineFlag(FLAG_FIXED_BOUNDING_VOLUME))
    {
        calculateBoundingVolumes();
    }
}

/// The first child whose meshes count: of a level-of-detail object only the object in use does.
P_BaseObject* P_BaseObject::getFirstShownChild() const noexcept
{
    return m_eKind == Kind::LevelOfDetail ? static_cast<const P_LODObject*>(this)->getUsedLODObject() : getFirstChild();
}

P_BaseObject* P_BaseObject::getNextShownSibling() const noexcept
{
    return m_pContainer->m_eKind == Kind::LevelOfDetail ? nullptr : m_pNextSibling;
}

void P_BaseObject::calculateBoundingVolumes()
{
    P_Bounds bounds;
    // The way from this object down to the visited one: each one's transform into this object's space.
    S_Vector<Matrix> toThis;
    toThis.reserve(s_uiUsualDepth);
    toThis.emplace_back();
    const P_BaseObject* object = this;
    while (object)
    {
        if (object->m_eKind == Kind::Mesh && object->m_bEnabled)
        {
            static_cast<const P_VirtualObject*>(object)->addToBounds(bounds, toThis.back());
        }
        const P_BaseObject* next = object->getFirstShownChild();
        if (next)
        {
            toThis.emplace_back();
        }
        while (!next && object != this)
        {
            next = object->getNextShownSibling();
            if (!next)
            {
                object = object->getParent();
                toThis.pop_back();
            }
        }
        if (next)
        {
            M_multiply(*next->m_pLocalMatrix, toThis[toThis.size() - 2], toThis.back());
        }
        object = next;
    }
    m_fBoundingRadius = bounds.getRadius();
    m_vBoundingBoxMin = bounds.getMinimum();
    m_vBoundingBoxMax = bounds.getMaximum();
}

bool P_BaseObject::isInsideViewVolume(P_Camera* camera)
{
    if (!camera || !(m_uiEngineFlags & (FLAG_BOUNDING_SPHERE | FLAG_BOUNDING_BOX)))
    {
        return true;
    }
    // The volumes are asked for up to three times, through overridden operations too, and computed once.
    struct Hold
    {
        explicit Hold(bool& held) noexcept : m_held(held), m_before(held) { m_held = true; }
        ~Hold() { m_held = m_before; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        bool& m_held;
        bool m_before;
    };
    updateBoundingVolumes();
    const Hold hold(m_bVolumesHeld);
    const Matrix& world = getObjectToWorldMatrix();
    if (hasEngineFlag(FLAG_BOUNDING_SPHERE) &&
        !camera->isSphereInView(world.getTranslation(), getBoundingRadius() * getStretch(world)))
    {
        return false;
    }
    return !hasEngineFlag(FLAG_BOUNDING_BOX) || camera->isBoxInView(getBoundingBoxMin(), getBoundingBoxMax(), world);
}

void P_BaseObject::visualization()
{
    if (!m_pContext)
    {
        return;
    }
    if (hasEngineFlag(FLAG_BOUNDING_SPHERE))
    {
        addSphereLines(*m_pContext, getBoundingRadius(), getObjectToWorldMatrix());
    }
    if (hasEngineFlag(FLAG_BOUNDING_BOX))
    {
        addBoxLines(*m_pContext, getBoundingBoxMin(), getBoundingBoxMax(), getObjectToWorldMatrix());
    }
}

void P_BaseObject::vertexNormalVisualization() {}
