#pragma once

#include "fuzz/calls_support.h"

#include <tw2/tw2.h>

#include <platform/math/matrix4x3.h>
#include <platform/scene/virtual_object.h>

#include <array>
#include <cmath>
#include <initializer_list>

namespace calls
{
/// Part of a blended pose.
struct PosePart
{
    int m_iAnimation;
    float m_fFrame;
    float m_fWeight;
};

inline const TW_KeyframeAnimation* findTrack(const TW_ObjectAnimation& object, int index, unsigned int mesh)
{
    const TW_ObjectAnimation::ObjectAnimation* const record = object.getAnimation(index);
    return record && mesh < record->m_vecKeyframeAnimations.size() ? record->m_vecKeyframeAnimations[mesh] : nullptr;
}

/// Adds what a mesh has of one part: its track's pose alone, else the first frame of animation 0. False for neither.
inline bool addPart(std::array<double, 12>& pose, const TW_ObjectAnimation& object, unsigned int mesh,
                    const PosePart& part)
{
    const TW_KeyframeAnimation* const track = findTrack(object, part.m_iAnimation, mesh);
    const TW_KeyframeAnimation* const played = track ? track : findTrack(object, 0, mesh);
    if (!played)
    {
        return false;
    }
    M_Matrix4x3Template<float> matrix;
    played->animateFrameWithLastFrame(matrix, track ? part.m_fFrame : 0.0F, 0);
    for (std::size_t e = 0; e < pose.size(); ++e)
    {
        pose[e] += static_cast<double>(part.m_fWeight) * static_cast<double>(matrix.data()[e]);
    }
    return true;
}

/// What playing gives is what every track gives alone, blended in double precision.
inline void comparePose(const TW_VirtualObject& whole, std::initializer_list<PosePart> parts)
{
    double weights = 1.0;
    for (const PosePart& part : parts)
    {
        weights += static_cast<double>(std::abs(part.m_fWeight));
    }
    for (unsigned int i = 0; const TW_ObjectAnimation* const object = whole.getPlayedObject(i); ++i)
    {
        bool valid = object->getCrossMode() == InterpolationMode::Linear;
        for (const PosePart& part : parts)
        {
            valid = valid && object->isValidAnimation(part.m_iAnimation);
        }
        for (unsigned int mesh = 0; valid && mesh < object->getTotalMeshes(); ++mesh)
        {
            std::array<double, 12> expected{};
            bool moves = true;
            for (const PosePart& part : parts)
            {
                moves = addPart(expected, *object, mesh, part) && moves;
            }
            const M_Matrix4x3Template<float>& found = object->getMesh(mesh)->getMatrix();
            for (std::size_t e = 0; moves && e < expected.size(); ++e)
            {
                require(std::abs(expected[e] - static_cast<double>(found.data()[e])) <= 1e-4 * weights,
                        "a pose is that of its tracks");
            }
        }
    }
}
}  // namespace calls
