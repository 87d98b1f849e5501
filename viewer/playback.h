#pragma once

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation_state.h>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace TW2
{
class TW_VirtualObject;
}

namespace TW2::viewer
{
/// One numbered animation as somebody sees it who chooses one.
struct Clip
{
    int m_iIndex = 0;       ///< animation index
    std::string m_strName;  ///< as the script names it
    unsigned int m_uiFrames = 0;
    float m_fFrameRate = 0.0F;  ///< frames per second
    double m_dPeriod = 0.0;     ///< seconds after which it repeats
};

/// What is played, when, and how it is blended: one clock, up to three animations with weights, a frozen pose that
/// fades out, and a group of bones that plays something else. Says nothing about what is drawn.
///
/// Times in seconds of the animation. All weights are relative: they are divided by their sum.
class Playback
{
public:
    static constexpr std::size_t mostSlots = 3;
    struct Slot
    {
        int m_iAnimation = -1;  ///< animation index; -1: the slot is not used
        float m_fWeight = 0.0F;
    };

    /// Starts anew with the clips of an object: the first one that lasts longer than a frame plays from its beginning.
    void reset(std::vector<Clip> clips);

    /// @name Clips
    /// @{
    [[nodiscard]] const std::vector<Clip>& getClips() const noexcept { return m_vecClips; }
    /// Null when there is no such animation index.
    [[nodiscard]] const Clip* findClip(int animation) const noexcept;
    /// Plays one animation alone; the clock goes on when `keepTime`, else from 0. Throws Failure for an unknown index.
    void setClip(int animation, bool keepTime = false);
    /// Gives a slot an animation and a weight (0 or more); -1 empties it. Throws Failure for a slot or index that does
    /// not exist. Slot 0 sets the length of a loop.
    void setSlot(int slot, int animation, float weight);
    [[nodiscard]] const std::array<Slot, mostSlots>& getSlots() const noexcept { return m_aSlots; }
    /// The animation of slot 0; -1 when nothing plays.
    [[nodiscard]] int getMainAnimation() const noexcept { return m_aSlots[0].m_iAnimation; }
    /// @}

    /// @name Clock
    /// @{
    [[nodiscard]] bool isPlaying() const noexcept { return m_bPlaying; }
    void setPlaying(bool playing) noexcept;
    /// Seconds of the clock, or of somebody who is `offset` seconds ahead of it.
    [[nodiscard]] double getTime(double offset = 0.0) const noexcept
    {
        return offset == 0.0 ? m_dTime : wrap(m_dTime + offset);
    }
    /// Any time; brought into the loop, or between beginning and end without looping.
    void seek(double seconds) noexcept;
    /// Pauses and moves to the next whole frame of slot 0's animation, `frames` further (negative: back).
    void step(int frames) noexcept;
    [[nodiscard]] double getSpeed() const noexcept { return m_dSpeed; }
    /// 1: as made; negative: backwards. Between -10 and 10.
    void setSpeed(double speed) noexcept;
    [[nodiscard]] bool isLooping() const noexcept { return m_bLooping; }
    void setLooping(bool looping) noexcept { m_bLooping = looping; }
    /// Seconds after which the clock begins again.
    [[nodiscard]] double getPeriod() const noexcept;
    [[nodiscard]] double getFrame() const noexcept;
    /// Lets `seconds` of real time pass: the clock when it plays, and the fade out of a frozen pose.
    void update(double seconds) noexcept;
    /// @}

    /// @name Frozen pose
    /// @{

    /// Freezes the pose that the object has now, with full weight.
    void freeze(TW_VirtualObject& object);
    /// Fades the frozen pose out over so many seconds; 0: at once.
    void fadeOut(double seconds) noexcept;
    /// Weight of the frozen pose, 0 to 1; the animations share the rest. 0 without one.
    void setFrozenWeight(float weight) noexcept;
    [[nodiscard]] float getFrozenWeight() const noexcept { return m_frozen.has_value() ? m_fFrozenWeight : 0.0F; }
    /// @}

    /// @name Group of bones
    /// @{

    /// The bone of that mesh index and everything below it plays another animation. Throws Failure for an unknown
    /// animation.
    void setGroup(int bone, int animation);
    void clearGroup() noexcept;
    [[nodiscard]] int getGroupBone() const noexcept { return m_iGroupBone; }
    [[nodiscard]] int getGroupAnimation() const noexcept { return m_iGroupAnimation; }
    /// @}

    /// Slot 0 alone goes on: without a frozen pose and without a group.
    void forgetExtras() noexcept;

    /// Poses an object of the kind that `reset` was told of, `offset` seconds from the clock. Allocates only the first
    /// time that an object is posed with a group or a frozen pose.
    void apply(TW_VirtualObject& object, double offset = 0.0);
    /// Has to be called before objects that were posed go away.
    void forgetObjects() noexcept { m_mapGroups.clear(); }

private:
    [[nodiscard]] double wrap(double seconds) const noexcept;
    void blend(TW_VirtualObject& object, float time);
    void poseGroup(TW_VirtualObject& object, float time);
    [[nodiscard]] TW_BoneGroupHandle makeGroup(TW_VirtualObject& object) const;

    std::vector<Clip> m_vecClips;
    std::array<Slot, mostSlots> m_aSlots;
    bool m_bPlaying = true;
    bool m_bLooping = true;
    double m_dTime = 0.0;
    double m_dSpeed = 1.0;
    std::optional<TW_ObjectAnimationState> m_frozen;
    std::optional<TW_ObjectAnimationState> m_blended;
    float m_fFrozenWeight = 0.0F;
    double m_dFadePerSecond = 0.0;
    int m_iGroupBone = -1;
    int m_iGroupAnimation = -1;
    std::map<const TW_VirtualObject*, TW_BoneGroupHandle> m_mapGroups;
};
}  // namespace TW2::viewer
