#include "viewer/extent.h"

#include "viewer/animated_script.h"
#include "viewer/visibility.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <vector>

namespace TW2::viewer
{
namespace
{
using render::Bounds;
using Vector = M_Vector3Template<float>;

void addBones(Bounds& bounds, TW_ObjectAnimation& skeleton)
{
    for (unsigned int i = 0; i < skeleton.getTotalMeshes(); ++i)
    {
        bounds.add(skeleton.getMesh(i)->getObjectToWorldMatrix().getTranslation());
    }
}

/// The box, as much larger on each side as `outer` is larger than `inner` there.
Bounds grow(const Bounds& box, const Bounds& outer, const Bounds& inner)
{
    const auto positive = [](const Vector& v) {
        return Vector{std::max(v.x, 0.0F), std::max(v.y, 0.0F), std::max(v.z, 0.0F)};
    };
    return {box.m_vMinimum - positive(inner.m_vMinimum - outer.m_vMinimum),
            box.m_vMaximum + positive(outer.m_vMaximum - inner.m_vMaximum)};
}
}  // namespace

Extent::Extent(AnimatedScript& script, P_Scene& scene, P_Context& context)
{
    TW_VirtualObject& object = script.getObject();
    TW_ObjectAnimation& skeleton = script.getSkeleton();
    const int first = script.chooseAnimation();
    const auto pose = [&](int animation, float frame)
    {
        if (animation >= 0)
        {
            object.animateObjectFrame(animation, frame, nullptr);
        }
    };
    pose(first, 0.0F);
    Bounds bones;
    addBones(bones, skeleton);
    for (const ScriptEntry::Animation& animation : script.getAnimatedEntry().animations)
    {
        constexpr unsigned int moments = 24;
        const unsigned int frames = skeleton.getAnimationFrames(animation.index);
        const unsigned int count = std::min(frames, moments);
        Bounds moved;
        for (unsigned int i = 0; i < count; ++i)
        {
            const float part = static_cast<float>(i) / static_cast<float>(std::max(count, 2U) - 1);
            pose(animation.index, part * static_cast<float>(frames - 1));
            addBones(moved, skeleton);
        }
        if (!moved.isEmpty())
        {
            m_mapRooms[animation.index] = grow(bones, moved, bones);
        }
    }
    pose(first, 0.0F);
    followVisibility(object, first, 0.0F);
    // Without a camera levels of detail show the finest.
    P_Camera* camera = context.getCurrentCamera();
    context.setCurrentCamera(nullptr);
    scene.executeFrame();
    context.setCurrentCamera(camera);
    std::vector<Vector> points;
    render::collectVertices(object, points);
    for (const Vector& point : points)
    {
        m_rest.add(point);
    }
    m_bVertices = !m_rest.isEmpty();
    m_rest = m_bVertices ? m_rest : bones;
    for (auto& [index, room] : m_mapRooms)
    {
        room = grow(m_rest, room, bones);
    }
}

Bounds Extent::getRoom(std::span<const int> animations) const
{
    Bounds bounds = m_rest;
    for (const int animation : animations)
    {
        const auto room = m_mapRooms.find(animation);
        if (room != m_mapRooms.end() && !bounds.isEmpty())
        {
            bounds.add(room->second.m_vMinimum);
            bounds.add(room->second.m_vMaximum);
        }
    }
    return bounds;
}
}  // namespace TW2::viewer
