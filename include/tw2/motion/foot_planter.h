#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/motion/reaching.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>
#include <initializer_list>
#include <type_traits>

namespace TW2
{
class TW_VirtualObject;

/// The ground below a point of the world.
struct TW_GroundPoint
{
    float height = 0.0F;                                ///< y of the ground there
    M_Vector3Template<float> normal{0.0F, 1.0F, 0.0F};  ///< of length 1, upwards
    bool found = true;                                  ///< false: nothing to stand on, as when a number is none
};

/// Tells a foot planter about the ground; the host's own, for example a ray into its level.
class TW2_API TW_GroundCallback
{
public:
    TW_GroundCallback() = default;
    virtual ~TW_GroundCallback() = default;
    TW_GroundCallback(const TW_GroundCallback&) = delete;
    TW_GroundCallback& operator=(const TW_GroundCallback&) = delete;
    /// The ground below, or above, a foot.
    virtual TW_GroundPoint operator()(const M_Vector3Template<float>& foot) = 0;
};

/// A function of a foot's place in the world that tells the ground there, instead of a TW_GroundCallback.
template <typename Ground>
concept TW_GroundFunction = !std::is_base_of_v<TW_GroundCallback, std::remove_cvref_t<Ground>> &&
                            std::is_invocable_r_v<TW_GroundPoint, Ground&, const M_Vector3Template<float>&>;

/// One leg: the names of its first and last bone, with at least one between them.
struct TW_Leg
{
    const char* thigh;         ///< name of the first bone, in any letter case
    const char* foot;          ///< name of the last bone, in any letter case
    float ankleHeight = 0.0F;  ///< of the foot bone above the sole when it stands flat
};

/// How much of the ground the feet follow.
struct TW_FootOptions
{
    float weight = 1.0F;     ///< part of the correction that is made, 0 to 1
    float most = 0.4F;       ///< up or down, as a part of the leg's length
    float steepest = 35.0F;  ///< degrees that a foot is turned to the slope at most
    float lifted = 0.3F;     ///< part of the leg's length that a foot is up at from which it does not turn to the slope
};

/// Puts the feet of an animated object on uneven ground.
///
///     TW_FootPlanter feet(soldier, "hips", {{"thigh_left", "foot_left", 0.1F}, {"thigh_right", "foot_right", 0.1F}});
///     ... every frame, after the pose is taken and the object placed:
///     feet.plant([](const auto& foot) { return TW_GroundPoint{heightAt(foot), normalAt(foot)}; });
///
/// The animation was made for flat ground at the object's own height (y of its translation; y is up). Each foot is
/// moved up or down by what the ground below it differs from that, so a foot that is lifted stays lifted; the pelvis
/// goes with the lower foot, so that both reach; legs bend as they do in the animation; feet that stand are turned to
/// the slope. Where the ground goes on without a step, so does the pose.
///
/// The constructor finds the bones and may throw as TW_BoneChain does; planting allocates nothing.
class TW2_API TW_FootPlanter
{
public:
    /// Finds the bones by name, `count` legs of them; the object must outlive the planter.
    TW_FootPlanter(TW_VirtualObject& object, const char* pelvis, const TW_Leg* legs, std::size_t count);
    /// The same with a list: {{"thigh_left", "foot_left", 0.1F}, ...}.
    TW_FootPlanter(TW_VirtualObject& object, const char* pelvis, std::initializer_list<TW_Leg> legs)
        : TW_FootPlanter(object, pelvis, legs.begin(), legs.size())
    {
    }
    /// The same with a string of the host's.
    template <TW_String Pelvis>
    TW_FootPlanter(TW_VirtualObject& object, const Pelvis& pelvis, const TW_Leg* legs, std::size_t count)
        : TW_FootPlanter(object, pelvis.c_str(), legs, count)
    {
    }
    /// The same with a string of the host's and a list.
    template <TW_String Pelvis>
    TW_FootPlanter(TW_VirtualObject& object, const Pelvis& pelvis, std::initializer_list<TW_Leg> legs)
        : TW_FootPlanter(object, pelvis.c_str(), legs)
    {
    }

    /// Asks for the ground once per leg; the answer must come without an exception. Returns how far the pelvis was
    /// moved upwards.
    float plant(TW_GroundCallback& ground, const TW_FootOptions& options = {}) noexcept;
    /// The same with a function, such as a lambda.
    template <TW_GroundFunction Ground>
    float plant(Ground&& ground, const TW_FootOptions& options = {}) noexcept
    {
        struct Asked : TW_GroundCallback
        {
            explicit Asked(Ground& ground) : m_ground(ground) {}
            TW_GroundPoint operator()(const M_Vector3Template<float>& foot) override { return m_ground(foot); }
            Ground& m_ground;
        } asked(ground);
        return plant(static_cast<TW_GroundCallback&>(asked), options);
    }
    /// Legs, numbered as they were given.
    [[nodiscard]] std::size_t getLegCount() const noexcept { return m_vecLegs.size(); }
    /// How far the foot of a leg is from where it was to be, after the last `plant`.
    [[nodiscard]] float getLeft(std::size_t leg) const noexcept { return m_vecLegs[leg].m_fLeft; }

private:
    struct Leg
    {
        TW_BoneChain m_chain;
        double m_dAnkleHeight;
        double m_dLength = 0.0;  ///< from bone to bone
        M_Vector3Template<double> m_vFoot;
        double m_dShift = 0.0;
        double m_dStanding = 0.0;  ///< 0 to 1
        TW_GroundPoint m_ground;
        float m_fLeft = 0.0F;
    };

    TW_VirtualObject* m_pObject;
    TW_BoneChain m_pelvis;
    S_Vector<Leg> m_vecLegs;
};
}  // namespace TW2
