#pragma once

#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <span>

namespace TW2
{
/// No weight is larger: those of all that plays have a sum.
constexpr double heaviestWeight = std::numeric_limits<float>::max();

/// Something that plays or fades out.
struct TW_AnimationMixer::Play
{
    /// @name What is saved
    /// @{
    PlayId m_uiId = 0;
    int m_iAnimation = 0;
    int m_iLayer = 0;
    int m_iMask = -1;
    int m_iSync = 0;
    int m_iLoops = 0;
    TW_ClockMoment m_moment;
    double m_dSpeed = 1.0;
    double m_dWeight = 0.0;
    double m_dTarget = 0.0;    ///< weight that it fades to
    double m_dFadeLeft = 0.0;  ///< seconds
    double m_dFadeOut = -1.0;
    bool m_bLeaving = false;  ///< goes when it has faded out
    bool m_bFresh = true;     ///< has not moved yet
    bool m_bFinished = false;
    /// @}

    /// @name What follows from it
    /// @{
    std::shared_ptr<const TW_AnimationDescription> m_pDescription;  ///< of what was looked at; may be null
    TW_AnimationCourse m_course;
    TW_RootMotion m_rootMotion;
    TW_ClockStep m_step;          ///< of the last update
    double m_dStepSeconds = 0.0;  ///< how long that took
    double m_dShare = 0.0;        ///< among what it is blended with
    double m_dPoseWeight = 0.0;   ///< share of the pose
    TW_EventIterator m_events;    ///< of the last update
    const TW_AnimationEvent* m_pEvent = nullptr;
    double m_dEventSeconds = 0.0;
    /// @}

    [[nodiscard]] bool isSynchronized() const noexcept { return m_iSync > 0 && m_course.m_bLooping && m_iLoops == 0; }
    [[nodiscard]] bool isFadedOut() const noexcept { return m_bLeaving && m_dFadeLeft <= 0.0 && m_dWeight <= 0.0; }
    [[nodiscard]] double getSpan() const noexcept { return m_course.m_dEndFrame - m_course.m_dLoopToFrame; }
    [[nodiscard]] bool isBlendedWith(const Play& other) const noexcept
    {
        return m_iLayer == other.m_iLayer && m_iMask == other.m_iMask;
    }
    void fadeTo(double weight, double seconds) noexcept
    {
        m_dTarget = weight;
        m_dFadeLeft = seconds > 0.0 ? seconds : 0.0;
        m_dWeight = m_dFadeLeft > 0.0 ? m_dWeight : weight;
    }
    /// Takes the first event of the last step. Most steps lie within a round and pass none, which costs a look.
    void findEvents(std::span<const TW_AnimationEvent> events) noexcept
    {
        m_pEvent = nullptr;
        if (isEventPassed(events))
        {
            m_events = TW_EventIterator(m_step, events);
            fetchEvent();
        }
    }
    /// False when there is surely none in the last step.
    [[nodiscard]] bool isEventPassed(std::span<const TW_AnimationEvent> events) const noexcept
    {
        const auto [low, high] = std::minmax(m_step.m_from.m_dFrame, m_moment.m_dFrame);
        const bool within = !m_step.m_bFirst && !m_bFinished && m_step.m_from.m_iLoop == m_moment.m_iLoop &&
                            low > m_course.m_dLoopToFrame && high < m_course.m_dEndFrame;
        return !events.empty() && (!within || std::any_of(events.begin(), events.end(),
                                                          [low = low, high = high](const auto& event)
                                                          { return event.m_dFrame >= low && event.m_dFrame <= high; }));
    }
    /// Takes the next event and its time.
    void fetchEvent() noexcept
    {
        m_pEvent = m_events.next();
        const double frames = m_step.m_dFrames < 0.0 ? -m_step.m_dFrames : m_step.m_dFrames;
        m_dEventSeconds = m_pEvent && frames > 0.0 ? m_events.getTravelled() / frames * m_dStepSeconds : 0.0;
    }
};

struct TW_AnimationMixer::Layer
{
    bool m_bAdditive = false;
    double m_dWeight = 1.0;
    int m_iMask = -1;
    bool m_bOwnReference = true;  ///< additive animations are told from themselves
    int m_iReference = 0;         ///< animation index
    double m_dReferenceTime = 0.0;
};

/// A mask, sorted out for the parts of the object.
class TW_AnimationMixer::Mask
{
public:
    struct Bone
    {
        unsigned int m_uIndex;
        float m_fWeight;  ///< above 0
    };
    struct Part
    {
        S_Vector<Bone> m_vecBones;
        S_Vector<float> m_vecWeights;  ///< by mesh index
        TW_BoneGroupHandle m_group;

        [[nodiscard]] float getWeight(unsigned int bone) const noexcept
        {
            return bone < m_vecWeights.size() ? m_vecWeights[bone] : 0.0F;
        }
    };

    Mask(const TW_VirtualObject& object, const TW_BoneMask& mask);
    [[nodiscard]] const Part& getPart(unsigned int part) const noexcept { return m_vecParts[part]; }

private:
    S_Vector<Part> m_vecParts;
};
}  // namespace TW2
