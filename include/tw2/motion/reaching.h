#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/motion/rotation.h>

#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>

namespace TW2
{
class TW_VirtualObject;

/// How an arm or a leg reaches; see reachTwoBones.
struct TW_TwoBoneReach
{
    M_Vector3Template<float> target{};  ///< where the end is to come
    M_Vector3Template<float> pole{};    ///< where the middle joint points; zero: as in the present pose
    float weight = 1.0F;                ///< part of the turns that is made, 0 to 1
    /// Part of the chain's length before full stretch, 0 to 1, in which the end begins to lag behind the target, so
    /// that the middle joint does not snap straight. With 0 it reaches all that it can.
    float softness = 0.0F;
    float twist = 0.0F;            ///< degrees about the line to the target, counter-clockwise seen from it
    bool keepEndRotation = false;  ///< the end stands as it did, instead of turning with its bone
};

/// How a chain looks at something; see aimChain.
struct TW_Aim
{
    M_Vector3Template<float> target{};                   ///< the point to look at
    M_Vector3Template<float> forward{0.0F, 0.0F, 1.0F};  ///< the last bone's direction of view, in its own axes
    M_Vector3Template<float> eye{};                      ///< where that begins, in its own space
    float weight = 1.0F;                                 ///< part of the way, 0 to 1
    float limit = 180.0F;                                ///< degrees that each bone turns at most
    /// Degrees from straight behind within which it gives up, little by little: behind itself it looks ahead.
    float behind = 30.0F;
    const float* shares = nullptr;  ///< part of what is left that each bone takes, 0 to 1; null: even parts
};

/// How a chain of bones reaches; see reachChain.
struct TW_ChainReach
{
    M_Vector3Template<float> target{};  ///< where the last bone's origin is to come
    float weight = 1.0F;                ///< part of the turns that is made, 0 to 1
    int iterations = 100;               ///< at most
};

/// Matrices are those of bones in one common space, such as the world's, from the chain's base to its tip; targets and
/// poles are in that space too. Bones turn and are carried along; their lengths, the lengths and angles of their rows,
/// also of scaled and mirrored ones, stay.
///
/// All return how far the end (the view's angle in degrees, for aimChain) is from where it is to be. What cannot be
/// reached is reached for: the chain stretches towards it, or folds as far as it can. Nothing allocates.
/// @name Reaching with matrices
/// @{

/// An arm or a leg of two bones: turns `upper` and `middle` so that `end` comes to the target. The middle joint bends
/// in the plane of the pole; towards a target in line with the pole it bends as it does now. A chain without a length
/// does nothing.
TW2_API float reachTwoBones(M_Matrix4x3Template<float>& upper, M_Matrix4x3Template<float>& middle,
                            M_Matrix4x3Template<float>& end, const TW_TwoBoneReach& reach) noexcept;
/// Turns each of `count` bones by its share, the last by all that is left, each no farther than the limit.
TW2_API float aimChain(M_Matrix4x3Template<float>* bones, std::size_t count, const TW_Aim& aim) noexcept;
/// Bends a chain of `count` bones, at most 64, so that the last one's origin comes to the target: with 100 iterations
/// to a thousandth of the chain's length, short of full stretch by less than a fiftieth to a hundredth.
TW2_API float reachChain(M_Matrix4x3Template<float>* bones, std::size_t count, const TW_ChainReach& reach) noexcept;
/// @}

/// Bones of an object one below the other, for reaching after the pose is taken.
///
///     TW_BoneChain arm(soldier, "upper_arm", "hand");   // upper_arm, forearm, hand
///     TW_BoneChain neck(soldier, "spine", "head");
///     ... every frame, after animating:
///     neck.aim({.target = enemy});
///     arm.reachTwoBones({.target = lever});
///
/// Targets and poles are in the world. The constructor finds the bones; nothing allocates afterwards. The object must
/// outlive the chain. Works on every level of detail that has the bones. What hangs above the chain should not be
/// scaled unequally; mirrored is fine.
class TW2_API TW_BoneChain
{
public:
    /// All bones from `base` down to `tip` (any letter case). Throws TW_Exception_BoneNotFound, and
    /// TW_Exception_InvalidMotion when `tip` does not hang below `base` or there are more than 64.
    TW_BoneChain(TW_VirtualObject& object, const char* base, const char* tip);
    /// The same with a string of the host's.
    template <typename Base, typename Tip>
    requires TW_Texts<Base, Tip> TW_BoneChain(TW_VirtualObject& object, const Base& base, const Tip& tip)
        : TW_BoneChain(object, asCString(base), asCString(tip))
    {
    }

    /// Bones of the chain, at least 1.
    [[nodiscard]] std::size_t getBoneCount() const noexcept { return m_vecParts.front().m_vecBones.size(); }
    /// Mesh index of a bone of the chain, 0 for the base.
    [[nodiscard]] unsigned int getBone(std::size_t place) const noexcept
    {
        return m_vecParts.front().m_vecBones[place];
    }

    /// The first bone, the second and the last. A chain of fewer than three bones stays as it is and returns the
    /// distance.
    float reachTwoBones(const TW_TwoBoneReach& reach) noexcept;
    /// Turns the bones so that the last one looks at the target. Degrees that are left.
    float aim(const TW_Aim& aim) noexcept;
    /// Bends the chain so that the last bone's origin comes to the target. The distance that is left.
    float reach(const TW_ChainReach& reach) noexcept;
    /// Turns the last bone about its origin, by a rotation in the world.
    void turnTip(const TW_Rotation& rotation) noexcept;
    /// Moves the first bone, and everything below it, by an offset in the world.
    void moveBase(const M_Vector3Template<double>& offset) noexcept;
    /// Where the last bone is, in the world.
    [[nodiscard]] M_Vector3Template<double> getTipPosition() const noexcept;

private:
    struct Part
    {
        unsigned int m_uiPart;
        S_Vector<unsigned int> m_vecBones;
    };
    class Pose;

    template <typename Solve>
    float change(const Solve& solve) noexcept;

    TW_VirtualObject* m_pObject;
    S_Vector<Part> m_vecParts;
};
}  // namespace TW2
