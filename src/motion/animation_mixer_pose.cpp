#include "motion/additive_pose.h"
#include "motion/mixer_parts.h"
#include "object/pose_player.h"

#include <tw2/motion/animation_mixer.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

// The local matrices of a part, side by side or mesh by mesh.
class LocalMatrices
{
public:
    explicit LocalMatrices(TW_ObjectAnimation& part) noexcept : m_part(part)
    {
        P_TransformBlock& block = part.accessMeshTransforms();
        if (block.getCount() == part.getTotalMeshes() && block.getMemberCount() == block.getCount())
        {
            m_pMatrices = block.accessLocalMatrices();
        }
    }
    Matrix& operator[](unsigned int bone) const noexcept
    {
        return m_pMatrices ? m_pMatrices[bone] : m_part.getMesh(bone)->accessMatrix();
    }

private:
    TW_ObjectAnimation& m_part;
    Matrix* m_pMatrices = nullptr;
};

// Whether playing an animation sets a bone.
bool moves(const TW_ObjectAnimation& part, int animation, unsigned int bone) noexcept
{
    const auto hasTrack = [&part, bone](int index)
    {
        const TW_ObjectAnimation::ObjectAnimation* const record = part.getAnimation(index);
        return record && bone < record->m_vecKeyframeAnimations.size() && record->m_vecKeyframeAnimations[bone];
    };
    return hasTrack(animation) || hasTrack(0);
}

// All bones of an object with weight 1, or those of a mask.
template <typename Mask, typename Action>
void forEachBone(const TW_ObjectAnimation& part, const Mask* mask, std::size_t most, const Action& action)
{
    const auto count = static_cast<unsigned int>(std::min<std::size_t>(part.getTotalMeshes(), most));
    if (!mask)
    {
        for (unsigned int bone = 0; bone < count; ++bone)
        {
            action(bone, 1.0F);
        }
        return;
    }
    for (const auto& bone : mask->m_vecBones)
    {
        if (bone.m_uIndex < count)
        {
            action(bone.m_uIndex, bone.m_fWeight);
        }
    }
}
}  // namespace

TW_AnimationMixer::Mask::Mask(const TW_VirtualObject& object, const TW_BoneMask& mask)
{
    for (unsigned int i = 0; TW_ObjectAnimation* played = object.getPlayedObject(i); ++i)
    {
        Part& part = m_vecParts.emplace_back();
        S_Vector<TW_BoneHandle> handles;
        for (unsigned int bone = 0; bone < mask.getBoneCount(i); ++bone)
        {
            part.m_vecWeights.push_back(mask.getWeight(i, bone));
            if (mask.getWeight(i, bone) > 0.0F)
            {
                part.m_vecBones.push_back({bone, mask.getWeight(i, bone)});
                handles.emplace_back(played->getMesh(bone)->getName(), static_cast<int>(bone));
            }
        }
        part.m_group.construct(static_cast<int>(handles.size()), handles.data());
        part.m_group.attach(played);
    }
}

void TW_AnimationMixer::pose()
{
    const bool hasBase =
        std::any_of(m_vecPlays.begin(), m_vecPlays.end(),
                    [](const Play& play) { return play.m_iLayer == 0 && play.m_iMask < 0 && play.m_dShare > 0.0; });
    for (unsigned int i = 0; hasBase && m_pObject->getPlayedObject(i); ++i)
    {
        TW_ObjectAnimation& part = *m_pObject->getPlayedObject(i);
        blend(part, nullptr, 0, -1);
        for (std::size_t layer = 0; layer < m_vecLayers.size(); ++layer)
        {
            poseLayer(part, i, static_cast<int>(layer));
        }
    }
}

// As cross-animation does: the last one takes what the others leave of 1, and then the rows are corrected.
void TW_AnimationMixer::blend(TW_ObjectAnimation& part, const TW_BoneGroupHandle* group, int layer, int mask)
{
    const auto takesPart = [&](const Play& play)
    { return play.m_iLayer == layer && play.m_iMask == mask && play.m_dShare > 0.0; };
    const Play* last = nullptr;
    for (const Play& play : m_vecPlays)
    {
        last = takesPart(play) ? &play : last;
    }
    PosePlayer player(part, group);
    float given = 0.0F;
    std::size_t steps = 0;
    for (const Play& play : m_vecPlays)
    {
        if (!takesPart(play))
        {
            continue;
        }
        if (steps > 0 && steps % PoseBatch::maximumSteps == 0)
        {
            player.play();
        }
        const float weight = &play == last ? 1.0F - given : static_cast<float>(play.m_dShare);
        given = steps > 0 ? given + weight : weight;
        player.evaluate(play.m_iAnimation, getPoseFrame(play.m_course, play.m_moment), weight, steps > 0);
        ++steps;
    }
    player.correct();
    player.play();
}

void TW_AnimationMixer::poseLayer(TW_ObjectAnimation& part, unsigned int partNumber, int layer)
{
    const Layer& settings = m_vecLayers[static_cast<std::size_t>(layer)];
    if (settings.m_dWeight <= 0.0)
    {
        return;
    }
    if (layer > 0 && !settings.m_bAdditive)
    {
        replace(part, partNumber, layer, -1);
    }
    for (const Play& play : m_vecPlays)
    {
        if (play.m_iLayer != layer || play.m_dPoseWeight <= 0.0)
        {
            continue;
        }
        if (settings.m_bAdditive)
        {
            add(part, partNumber, play);
            continue;
        }
        // What has a mask of its own comes after what has none; all of one mask at once, with the first of them.
        const auto isFirst = [&play](const Play& other)
        { return other.isBlendedWith(play) && other.m_dPoseWeight > 0.0; };
        if (play.m_iMask >= 0 && &*std::find_if(m_vecPlays.begin(), m_vecPlays.end(), isFirst) == &play)
        {
            replace(part, partNumber, layer, play.m_iMask);
        }
    }
}

void TW_AnimationMixer::replace(TW_ObjectAnimation& part, unsigned int partNumber, int layer, int mask)
{
    const Layer& settings = m_vecLayers[static_cast<std::size_t>(layer)];
    double whole = 0.0;
    for (const Play& play : m_vecPlays)
    {
        whole += play.m_iLayer == layer && play.m_iMask == mask ? play.m_dPoseWeight : 0.0;
    }
    if (whole <= 0.0)
    {
        return;
    }
    const int used = mask >= 0 ? mask : settings.m_iMask;
    const Mask::Part* const bones =
        used >= 0 ? &m_vecMasks[static_cast<std::size_t>(used)].getPart(partNumber) : nullptr;
    const TW_BoneGroupHandle* const group = bones ? &bones->m_group : nullptr;
    const LocalMatrices local(part);
    forEachBone(part, bones, m_vecBelow.size(), [&](unsigned int bone, float) { m_vecBelow[bone] = local[bone]; });
    blend(part, group, layer, mask);
    // The mask of the layer holds for what has a mask of its own as well.
    const Mask::Part* const also = mask >= 0 && settings.m_iMask >= 0
                                       ? &m_vecMasks[static_cast<std::size_t>(settings.m_iMask)].getPart(partNumber)
                                       : nullptr;
    bool blended = false;
    forEachBone(part, bones, m_vecBelow.size(),
                [&](unsigned int bone, float own)
                {
                    const float weight =
                        static_cast<float>(std::min(whole, 1.0)) * own * (also ? also->getWeight(bone) : 1.0F);
                    if (weight >= 1.0F)
                    {
                        return;
                    }
                    Matrix above = local[bone];
                    Matrix& result = local[bone];
                    result = m_vecBelow[bone];
                    if (weight > 0.0F)
                    {
                        above *= weight;
                        result *= 1.0F - weight;
                        result += above;
                        blended = true;
                    }
                });
    if (blended)
    {
        PosePlayer player(part, group);
        player.correct();
        player.play();
    }
}

float TW_AnimationMixer::getReferenceFrame(const Play& play, const Layer& layer) const noexcept
{
    const int animation = layer.m_bOwnReference ? play.m_iAnimation : layer.m_iReference;
    return static_cast<float>(layer.m_dReferenceTime) * m_pObject->getAnimationFPS(animation);
}

void TW_AnimationMixer::add(TW_ObjectAnimation& part, unsigned int partNumber, const Play& play)
{
    const Layer& settings = m_vecLayers[static_cast<std::size_t>(play.m_iLayer)];
    const auto partOf = [&](int mask)
    { return mask >= 0 ? &m_vecMasks[static_cast<std::size_t>(mask)].getPart(partNumber) : nullptr; };
    const Mask::Part* const bones = partOf(play.m_iMask >= 0 ? play.m_iMask : settings.m_iMask);
    const Mask::Part* const also = play.m_iMask >= 0 ? partOf(settings.m_iMask) : nullptr;
    const TW_BoneGroupHandle* const group = bones ? &bones->m_group : nullptr;
    const LocalMatrices local(part);
    const auto evaluate = [&](int animation, float frame)
    {
        PosePlayer player(part, group);
        player.evaluate(animation, frame, 1.0F, false);
        player.play();
    };

    forEachBone(part, bones, m_vecBelow.size(), [&](unsigned int bone, float) { m_vecBelow[bone] = local[bone]; });
    evaluate(play.m_iAnimation, getPoseFrame(play.m_course, play.m_moment));
    forEachBone(part, bones, m_vecAdded.size(), [&](unsigned int bone, float) { m_vecAdded[bone] = local[bone]; });
    // What the reference does not move stays as it is and so has no difference.
    const int reference = settings.m_bOwnReference ? play.m_iAnimation : settings.m_iReference;
    evaluate(reference, getReferenceFrame(play, settings));
    forEachBone(part, bones, m_vecAdded.size(),
                [&](unsigned int bone, float own)
                {
                    if (!moves(part, play.m_iAnimation, bone))
                    {
                        local[bone] = m_vecBelow[bone];
                        return;
                    }
                    const double weight =
                        play.m_dPoseWeight * static_cast<double>(own * (also ? also->getWeight(bone) : 1.0F));
                    local[bone] = addDifference(m_vecBelow[bone], m_vecAdded[bone], local[bone], weight);
                });
}
}  // namespace TW2
