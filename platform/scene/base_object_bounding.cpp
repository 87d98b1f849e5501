// Bounding volumes of scene objects: computing them from the meshes below, testing and showing them.

#include <platform/math/matrix4x3_product.h>
#include <platform/scene/base_object.h>
#include <platform/scene/bounds.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <array>
#include <cmath>
#include <numbers>

namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

constexpr G_FColor volumeColor{255.0F, 255.0F, 0.0F};
constexpr int circleSegments = 24;
constexpr std::size_t usualDepth = 17;

/// The way from an object down to one that hangs below it: each one's transform into the first one's space. Allocates
/// only where the way is unusually long.
class Way
{
public:
    [[nodiscard]] const Matrix& top() const noexcept
    {
        return m_uiCount <= usualDepth ? m_usual[m_uiCount - 1] : m_vecFurther.back();
    }
    void push(const Matrix& matrix)
    {
        if (m_uiCount < usualDepth)
        {
            m_usual[m_uiCount] = matrix;
        }
        else
        {
            m_vecFurther.push_back(matrix);
        }
        ++m_uiCount;
    }
    void pop() noexcept
    {
        if (m_uiCount > usualDepth)
        {
            m_vecFurther.pop_back();
        }
        --m_uiCount;
    }

private:
    std::array<Matrix, usualDepth> m_usual;
    S_Vector<Matrix> m_vecFurther;
    std::size_t m_uiCount = 0;
};

/// A factor by which the transform lengthens no vector more: the root of the largest row sum of its Gram matrix. Exact
/// when the rows stand at right angles.
float getStretch(const Matrix& matrix)
{
    float largest = 0.0F;
    for (int r = 0; r < 3; ++r)
    {
        float sum = 0.0F;
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
            {bits & 1U ? maximum.x : minimum.x, bits & 2U ? maximum.y : minimum.y, bits & 4U ? maximum.z : minimum.z});
    };
    for (unsigned int bits = 0; bits < 8; ++bits)
    {
        for (unsigned int axis = 1; axis <= 4; axis *= 2)
        {
            if (!(bits & axis))
            {
                context.addDebugLine(corner(bits), corner(bits | axis), volumeColor);
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
            const float angle = 2.0F * std::numbers::pi_v<float> * static_cast<float>(segment) / circleSegments;
            const float u = radius * std::cos(angle);
            const float v = radius * std::sin(angle);
            const std::array<Vector, 3> onPlane{Vector{u, v, 0.0F}, Vector{0.0F, u, v}, Vector{v, 0.0F, u}};
            return toWorld.transformPoint(onPlane[static_cast<std::size_t>(plane)]);
        };
        for (int segment = 0; segment < circleSegments; ++segment)
        {
            context.addDebugLine(point(segment), point(segment + 1), volumeColor);
        }
    }
}
}  // namespace

float P_BaseObject::getBoundingRadius()
{
    updateBoundingVolumes();
    return getStoredBoundingRadius();
}

M_Vector3Template<float> P_BaseObject::getBoundingBoxMin()
{
    updateBoundingVolumes();
    return getStoredBoundingBoxMin();
}

M_Vector3Template<float> P_BaseObject::getBoundingBoxMax()
{
    updateBoundingVolumes();
    return getStoredBoundingBoxMax();
}

void P_BaseObject::updateBoundingVolumes()
{
    if (!m_bVolumesHeld && !hasEngineFlag(FLAG_FIXED_BOUNDING_VOLUME))
    {
        calculateBoundingVolumes();
    }
}

/// This object, or the next sibling at or below which there is something to see.
P_BaseObject* P_BaseObject::skipIdle(bool passOverIdle) noexcept
{
    P_BaseObject* object = this;
    while (object && passOverIdle && !object->isBusySubtree())
    {
        object = object->m_pNextSibling;
    }
    return object;
}

/// The first child whose meshes count: of a level-of-detail object only the object in use does.
P_BaseObject* P_BaseObject::getFirstShownChild(bool passOverIdle) const noexcept
{
    if (m_eKind == Kind::LevelOfDetail)
    {
        return static_cast<const P_LODObject*>(this)->getUsedLODObject();
    }
    if (passOverIdle && m_uiBusyChildren == 0)
    {
        return nullptr;
    }
    return getFirstChild() ? getFirstChild()->skipIdle(passOverIdle) : nullptr;
}

P_BaseObject* P_BaseObject::getNextShownSibling(bool passOverIdle) const noexcept
{
    const bool isOnlyOne = m_pContainer->m_eKind == Kind::LevelOfDetail || !m_pNextSibling;
    return isOnlyOne ? nullptr : m_pNextSibling->skipIdle(passOverIdle);
}

void P_BaseObject::calculateBoundingVolumes()
{
    P_Bounds bounds;
    // Idle objects show nothing; a scene that has not looked at them lately does not know whether they still are.
    const bool passOverIdle = m_bInScene && m_pScene->knowsIdleObjects();
    Way toThis;
    toThis.push(Matrix());
    const P_BaseObject* object = this;
    while (object)
    {
        if (object->m_eKind == Kind::Mesh && object->m_bEnabled)
        {
            static_cast<const P_VirtualObject*>(object)->addToBounds(bounds, toThis.top());
        }
        const P_BaseObject* next = object->getFirstShownChild(passOverIdle);
        if (!next)
        {
            while (!next && object != this)
            {
                next = object->getNextShownSibling(passOverIdle);
                toThis.pop();
                if (!next)
                {
                    object = object->getParent();
                }
            }
        }
        if (next)
        {
            Matrix product;
            M_multiply(next->getMatrix(), toThis.top(), product);
            toThis.push(product);
        }
        object = next;
    }
    setBoundingRadius(bounds.getRadius());
    setBoundingBox(bounds.getMinimum(), bounds.getMaximum());
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
        explicit Hold(P_BaseObject& object) noexcept : m_object(object), m_bBefore(object.m_bVolumesHeld)
        {
            m_object.m_bVolumesHeld = true;
        }
        ~Hold() { m_object.m_bVolumesHeld = m_bBefore; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        P_BaseObject& m_object;
        bool m_bBefore;
    };
    updateBoundingVolumes();
    const Hold hold(*this);
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
    P_Context* const context = getStoredContext();
    if (!context)
    {
        return;
    }
    if (hasEngineFlag(FLAG_BOUNDING_SPHERE))
    {
        addSphereLines(*context, getBoundingRadius(), getObjectToWorldMatrix());
    }
    if (hasEngineFlag(FLAG_BOUNDING_BOX))
    {
        addBoxLines(*context, getBoundingBoxMin(), getBoundingBoxMax(), getObjectToWorldMatrix());
    }
}

void P_BaseObject::vertexNormalVisualization() {}
