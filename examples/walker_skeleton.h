#pragma once

#include <platform/math/vector3.h>

#include <cstddef>
#include <cstring>
#include <string>

/// The bones of the sample's walker, in metres: y is up, its left is at negative x, it looks along z. At rest all bones
/// have these axes, the legs are straight, the arms hang away from the body. The object, which looks along negative z
/// as converted models do, is turned against them by the hips.
namespace walker
{
using Vector = M_Vector3Template<double>;

struct Bone
{
    const char* name;
    int parent;    ///< index of the bone that it hangs on, which comes before it; -1 for the first
    Vector place;  ///< in its parent, at rest
};

inline constexpr double hipHeight = 0.78;
inline constexpr double ankleHeight = 0.075;
inline constexpr double ballHeight = 0.025;      // of the toes' joint
inline constexpr double ballFromAnkle = 0.105;   // forwards
inline constexpr double heelFromAnkle = -0.080;  // forwards: behind it
inline constexpr double armsHang = 50.0;         // degrees below straight out, at rest

inline constexpr Bone bones[] = {{"hips", -1, {0, 0.80, 0}},
                                 {"spine", 0, {0, 0.09, 0}},
                                 {"chest", 1, {0, 0.13, 0}},
                                 {"neck", 2, {0, 0.20, 0}},
                                 {"head", 3, {0, 0.06, 0.01}},
                                 {"upper_arm_left", 2, {-0.150, 0.145, 0}},
                                 {"forearm_left", 5, {-0.148, -0.176, 0}},
                                 {"hand_left", 6, {-0.129, -0.153, 0}},
                                 {"upper_arm_right", 2, {0.150, 0.145, 0}},
                                 {"forearm_right", 8, {0.148, -0.176, 0}},
                                 {"hand_right", 9, {0.129, -0.153, 0}},
                                 {"thigh_left", 0, {-0.085, -0.02, 0}},
                                 {"shin_left", 11, {0, -0.355, 0.012}},
                                 {"foot_left", 12, {0, -0.35, -0.022}},
                                 {"toes_left", 13, {0, ballHeight - ankleHeight, ballFromAnkle}},
                                 {"thigh_right", 0, {0.085, -0.02, 0}},
                                 {"shin_right", 15, {0, -0.355, 0.012}},
                                 {"foot_right", 16, {0, -0.35, -0.022}},
                                 {"toes_right", 17, {0, ballHeight - ankleHeight, ballFromAnkle}}};
inline constexpr std::size_t boneCount = std::size(bones);

/// Index of a bone; `boneCount` for a name that there is not.
inline std::size_t findBone(const std::string& name)
{
    std::size_t bone = 0;
    while (bone < boneCount && name != bones[bone].name)
    {
        ++bone;
    }
    return bone;
}

/// Where a bone begins at rest, in the object.
inline Vector placeOf(std::size_t bone)
{
    Vector place;
    for (int i = static_cast<int>(bone); i >= 0; i = bones[i].parent)
    {
        place = place + bones[i].place;
    }
    return place;
}
}  // namespace walker
