#pragma once

#include <tw2/keyframe/keyframe_animation.h>

#include <platform/runtime/allocator.h>

namespace TW2
{
/// A named mark of an animation: a step, the moment a blow lands.
struct TW_AnimationEvent
{
    S_String m_strName;  ///< as the script gives it
    /// Where it stands, in frames, so that it stays with the pose when the frame rate is changed.
    double m_dFrame = 0.0;
};

/// How an animation runs through its frames: from 0 to `m_dEndFrame` and then, when it loops, on from `m_dLoopToFrame`,
/// which is the same moment as the end.
struct TW_AnimationCourse
{
    double m_dEndFrame = 0.0;     ///< the last frame, or one later where the animation loops with interpolation
    double m_dLoopToFrame = 0.0;  ///< 0 when it does not loop
    bool m_bLooping = false;      ///< begins again after its end
};

/// What is known of an animation besides its tracks. Copies of an object share it.
struct TW_AnimationDescription
{
    /// The script's `name`; without one the animation file's name, without folders and the part from the last dot on.
    S_String m_strName;
    /// In the order of their frames.
    S_Vector<TW_AnimationEvent> m_vecEvents;
    /// How the object travels: where it stands at each frame, seen from where it stood at frame 0. Not constructed when
    /// the animation does not travel.
    TW_KeyframeAnimation m_rootMotion;
};
}  // namespace TW2
