#include "viewer/key_curves.h"

#include "viewer/loaded_object.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::viewer
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

/// Angles about x, then y, then z that turn the axes into the matrix's rows, in degrees.
std::array<float, 3> getAngles(const Matrix& matrix)
{
    constexpr float degrees = 180.0F / std::numbers::pi_v<float>;
    const auto x = matrix.getRow(0).normalized();
    const auto y = matrix.getRow(1).normalized();
    const auto z = matrix.getRow(2).normalized();
    const float turnY = std::asin(std::clamp(-x.z, -1.0F, 1.0F));
    constexpr float upright = 0.99999F;
    if (std::abs(x.z) > upright)
    {
        return {std::atan2(-z.y, y.y) * degrees, turnY * degrees, 0.0F};
    }
    return {std::atan2(y.z, z.z) * degrees, turnY * degrees, std::atan2(x.y, x.x) * degrees};
}

/// The angle that is as good and nearest to the one before.
float continueFrom(const std::vector<float>& before, float angle)
{
    return before.empty() ? angle : before.back() + std::remainder(angle - before.back(), 360.0F);
}
}  // namespace

KeyCurves sampleCurves(LoadedObject& object, int bone, int animation)
{
    KeyCurves curves;
    const TW_ObjectAnimation::ObjectAnimation* record = object.getSkeleton().getAnimation(animation);
    const auto place = static_cast<std::size_t>(bone);
    const TW_KeyframeAnimation* track = record && bone >= 0 && place < record->m_vecKeyframeAnimations.size()
                                            ? record->m_vecKeyframeAnimations[place]
                                            : nullptr;
    if (!track)
    {
        return curves;
    }
    int hint = 0;
    for (unsigned int frame = 0; frame < track->getTotalFrameCount(); ++frame)
    {
        Matrix matrix;
        hint = track->animateFrameWithLastFrame(matrix, static_cast<float>(frame), hint);
        const auto translation = matrix.getTranslation();
        const std::array<float, 3> angles = getAngles(matrix);
        const std::array<float, 3> moved{translation.x, translation.y, translation.z};
        for (std::size_t i = 0; i < 3; ++i)
        {
            curves.m_aValues[i].push_back(moved[i]);
            curves.m_aValues[i + 3].push_back(continueFrom(curves.m_aValues[i + 3], angles[i]));
        }
    }
    const S_Vector<int> keys = track->getKeyFrames();
    curves.m_vecKeyFrames.assign(keys.begin(), keys.end());
    return curves;
}
}  // namespace TW2::viewer
