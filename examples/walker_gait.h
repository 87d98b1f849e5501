#pragma once

#include "walker_skeleton.h"

#include <tw2/motion/reaching.h>
#include <tw2/motion/rotation.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

/// How the sample's walker moves: the body swings by sines, each foot runs along a path of its own, and the legs reach
/// for the feet. A foot that bears goes backwards exactly as fast as the object goes forwards: on the ground it stands.
namespace walker
{
using TW2::TW_Rotation;
using TW2::TW_Travel;

/// In degrees. About x: forwards and down; about y: to the right; about z: right side up.
inline TW_Rotation aboutX(double degrees)
{
    return TW_Rotation::aboutAxis({1, 0, 0}, degrees);
}
inline TW_Rotation aboutY(double degrees)
{
    return TW_Rotation::aboutAxis({0, 1, 0}, degrees);
}
inline TW_Rotation aboutZ(double degrees)
{
    return TW_Rotation::aboutAxis({0, 0, 1}, degrees);
}

/// From 0 to 1 while `x` goes from `from` to `to`, beginning and ending softly.
inline double rise(double x, double from, double to)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// A turn per bone, in its parent, and where the hips are.
struct Pose
{
    std::array<TW_Rotation, boneCount> turns;
    Vector hips = bones[0].place;

    TW_Rotation& operator[](const char* name) { return turns[findBone(name)]; }
    [[nodiscard]] TW_Travel getLocal(std::size_t bone) const
    {
        return {turns[bone], bone == 0 ? hips : bones[bone].place};
    }
    /// The same in the object, which looks along negative z.
    [[nodiscard]] TW_Travel getTurned(std::size_t bone) const
    {
        return bone == 0 ? getLocal(0) * TW_Travel{aboutY(180.0), {}} : getLocal(bone);
    }
    [[nodiscard]] TW_Travel getWorld(std::size_t bone) const
    {
        const TW_Travel local = getLocal(bone);
        return bones[bone].parent < 0 ? local : local * getWorld(static_cast<std::size_t>(bones[bone].parent));
    }
};

/// Where a foot is, and how it is turned, in the object.
struct Foot
{
    double z = 0.0;  ///< of the ankle
    double y = ankleHeight;
    double pitch = 0.0;  ///< degrees, toes up
    double toes = 0.0;   ///< degrees that the toes are bent upwards against the foot
    double ahead = 0.0;  ///< of the ankle, along the foot, which may be turned outwards

    friend Foot operator+(const Foot& a, const Foot& b)
    {
        return {a.z + b.z, a.y + b.y, a.pitch + b.pitch, a.toes + b.toes, a.ahead + b.ahead};
    }
    friend Foot operator*(const Foot& a, double f) { return {a.z * f, a.y * f, a.pitch * f, a.toes * f, a.ahead * f}; }
};

/// The path of a foot over one round, which begins where its heel touches the ground.
class FootPath
{
public:
    struct Shape
    {
        double speed;       ///< metres per round
        double bearing;     ///< part of the round that the foot bears
        double touch;       ///< z of the ankle of the flat foot where it touches down
        double touchPitch;  ///< degrees
        double flat;        ///< part of the round at which the whole sole is down
        double lift;        ///< part at which the heel leaves
        double leavePitch;  ///< degrees, at the end of bearing
    };
    /// `swing`: where the foot is on its way forwards, by its part of the swing.
    FootPath(const Shape& shape, const std::vector<std::pair<double, Foot>>& swing) : m_shape(shape)
    {
        m_vecKnots.push_back({0.0, bear(shape.bearing)});
        m_vecKnots.insert(m_vecKnots.end(), swing.begin(), swing.end());
        m_vecKnots.push_back({1.0, bear(0.0)});
    }

    [[nodiscard]] Foot at(double round) const
    {
        const double phase = round - std::floor(round);
        return phase <= m_shape.bearing ? bear(phase) : swing((phase - m_shape.bearing) / (1.0 - m_shape.bearing));
    }

private:
    // The heel stands until the sole is down, then the toes do; what stands goes backwards with the ground.
    [[nodiscard]] Foot bear(double phase) const
    {
        const double down = m_shape.touchPitch * (1.0 - rise(phase, 0.0, m_shape.flat));
        const double up = m_shape.leavePitch * rise(phase, m_shape.lift, 2.0 * m_shape.bearing - m_shape.lift) * 2.0;
        const double pitch = phase < m_shape.flat ? down : up;
        const double reach = phase < m_shape.flat ? heelFromAnkle : ballFromAnkle;
        const double height = phase < m_shape.flat ? 0.0 : ballHeight;
        const Vector pivot = aboutX(-pitch).turn({0, height - ankleHeight, reach});
        return {m_shape.touch - m_shape.speed * phase, height - pivot.y, pitch, phase < m_shape.flat ? 0.0 : -up,
                reach - pivot.z};
    }
    // Through the knots, smoothly; it leaves and meets the ground without a jerk.
    [[nodiscard]] Foot swing(double part) const
    {
        std::size_t knot = 0;
        while (knot + 2 < m_vecKnots.size() && part > m_vecKnots[knot + 1].first)
        {
            ++knot;
        }
        const auto& [from, a] = m_vecKnots[knot];
        const auto& [to, b] = m_vecKnots[knot + 1];
        const double span = to - from;
        const double t = (part - from) / span;
        return a * ((1.0 + 2.0 * t) * (1.0 - t) * (1.0 - t)) + getSlope(knot) * (span * t * (1.0 - t) * (1.0 - t)) +
               b * (t * t * (3.0 - 2.0 * t)) + getSlope(knot + 1) * (span * t * t * (t - 1.0));
    }
    [[nodiscard]] Foot getSlope(std::size_t knot) const
    {
        constexpr double step = 1e-4;  // of the round
        const double perSwing = (1.0 - m_shape.bearing) / step;
        if (knot == 0)
        {
            return (bear(m_shape.bearing) + bear(m_shape.bearing - step) * -1.0) * perSwing;
        }
        if (knot + 1 == m_vecKnots.size())
        {
            return (bear(step) + bear(0.0) * -1.0) * perSwing;
        }
        const auto& [from, a] = m_vecKnots[knot - 1];
        const auto& [to, b] = m_vecKnots[knot + 1];
        return (b + a * -1.0) * (1.0 / (to - from));
    }

    Shape m_shape;
    std::vector<std::pair<double, Foot>> m_vecKnots;
};

/// Lets a leg reach for its foot, the knee forwards, and returns how far it is from it. `out`: degrees that the foot is
/// turned outwards.
inline float placeFoot(Pose& pose, bool left, double x, const Foot& foot, double out)
{
    const std::size_t thigh = findBone(left ? "thigh_left" : "thigh_right");
    M_Matrix4x3Template<float> leg[3];
    for (std::size_t i = 0; i < 3; ++i)
    {
        leg[i] = pose.getWorld(thigh + i).toMatrix();
    }
    const auto toFloat = [](const Vector& v)
    { return M_Vector3Template<float>(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)); };
    const double side = left ? -1.0 : 1.0;
    const Vector ahead = aboutY(out * side).turn({0, 0, foot.ahead});
    const float missing = TW2::reachTwoBones(
        leg[0], leg[1], leg[2],
        {.target = toFloat(Vector(x * side, foot.y, foot.z) + ahead), .pole = toFloat({0.1 * side, 0.0, 1.0})});
    TW_Travel above = pose.getWorld(0);
    for (std::size_t i = 0; i < 2; ++i)
    {
        const TW_Travel world = TW_Travel::ofMatrix(leg[i]);
        pose.turns[thigh + i] = world.m_rotation * above.m_rotation.inverse();
        above = world;
    }
    const TW_Rotation stands = aboutX(-foot.pitch) * aboutY(out * side);
    pose.turns[thigh + 2] = stands * above.m_rotation.inverse();
    pose.turns[thigh + 3] = aboutX(-foot.toes);
    return missing;
}

/// Lets an arm hang and swing: degrees forwards, away from the body, and that the elbow is bent by.
inline void placeArm(Pose& pose, bool left, double forwards, double away, double bent)
{
    const std::size_t arm = findBone(left ? "upper_arm_left" : "upper_arm_right");
    const double side = left ? 1.0 : -1.0;
    const TW_Rotation hang = aboutZ(side * (90.0 - armsHang));
    pose.turns[arm] = hang * aboutX(-forwards) * aboutZ(-side * away);
    pose.turns[arm + 1] = hang * aboutX(-bent) * hang.inverse();
}

/// A wave of a round: `size` at the beginning and again at its end.
inline double swing(double size, double rounds)
{
    return size * std::cos(2.0 * std::numbers::pi * rounds);
}

/// Rounds begin a quarter before the left foot touches the ground, so that steps stand at a quarter and three quarters.
inline constexpr double firstStep = 0.25;
inline constexpr double walkLength = 1.12;  // metres per round
inline constexpr double runLength = 1.76;

inline Pose walk(double round)
{
    static const FootPath path({walkLength, 0.60, 0.27, 20.0, 0.09, 0.34, -42.0},
                               {{0.38, {-0.13, 0.20, -38.0, 0.0}}, {0.72, {0.20, 0.13, 6.0, 0.0}}});
    const double left = round - firstStep;
    Pose pose;
    pose.hips = {swing(-0.020, left - 0.30), 0.769 - swing(0.016, 2.0 * (left - 0.05)), 0.0};
    pose["hips"] = aboutX(2.0) * aboutY(swing(7.0, left)) * aboutZ(swing(-3.5, left - 0.2));
    pose["spine"] = aboutX(1.0) * aboutY(swing(-6.0, left)) * aboutZ(swing(4.0, left - 0.2));
    pose["chest"] = aboutX(1.0) * aboutY(swing(-7.0, left)) * aboutZ(swing(1.5, left - 0.2));
    pose["neck"] = aboutY(swing(3.0, left));
    pose["head"] = aboutX(swing(1.5, 2.0 * left) - 3.0) * aboutY(swing(3.0, left)) * aboutZ(swing(-1.5, left - 0.2));
    for (const bool side : {true, false})
    {
        const double own = side ? left : left - 0.5;
        placeArm(pose, side, 3.0 - swing(25.0, own - 0.02), 8.0, 24.0 - swing(11.0, own - 0.08));
        placeFoot(pose, side, 0.075, path.at(own), 5.0);
    }
    return pose;
}

inline Pose run(double round)
{
    static const FootPath path(
        {runLength, 0.34, 0.20, 4.0, 0.04, 0.14, -54.0},
        {{0.22, {-0.46, 0.40, -75.0, 0.0}}, {0.50, {-0.10, 0.42, -48.0, 0.0}}, {0.80, {0.34, 0.22, 4.0, 0.0}}});
    const double left = round - firstStep;
    Pose pose;
    pose.hips = {swing(-0.012, left - 0.17), 0.742 - swing(0.030, 2.0 * (left - 0.15)), 0.0};
    pose["hips"] = aboutX(8.0) * aboutY(swing(9.0, left - 0.05)) * aboutZ(swing(-3.0, left - 0.15));
    pose["spine"] = aboutX(4.0) * aboutY(swing(-9.0, left - 0.05)) * aboutZ(swing(3.0, left - 0.15));
    pose["chest"] = aboutX(3.0) * aboutY(swing(-11.0, left - 0.05)) * aboutZ(swing(1.5, left - 0.15));
    pose["neck"] = aboutX(-4.0) * aboutY(swing(5.0, left - 0.05));
    pose["head"] = aboutX(swing(2.0, 2.0 * (left - 0.1)) - 7.0) * aboutY(swing(6.0, left - 0.05));
    for (const bool side : {true, false})
    {
        const double own = side ? left : left - 0.5;
        placeArm(pose, side, -6.0 - swing(42.0, own - 0.05), 12.0, 88.0 - swing(16.0, own - 0.08));
        placeFoot(pose, side, 0.055, path.at(own), 3.0);
    }
    return pose;
}

/// Breathes, and shifts its weight.
inline Pose idle(double round)
{
    Pose pose;
    pose.hips = {swing(0.012, round), 0.792 + swing(0.003, 2.0 * round), 0.0};
    pose["hips"] = aboutZ(swing(-1.2, round));
    pose["spine"] = aboutX(1.0 + swing(0.8, 2.0 * round)) * aboutZ(swing(1.5, round));
    pose["chest"] = aboutX(-1.0 + swing(1.5, 2.0 * round - 0.1));
    pose["neck"] = aboutX(swing(-1.0, 2.0 * round - 0.1));
    pose["head"] = aboutX(1.0) * aboutY(swing(9.0, round - 0.3)) * aboutZ(swing(1.5, round));
    for (const bool side : {true, false})
    {
        placeArm(pose, side, swing(2.0, 2.0 * round - 0.2), 8.0 + swing(1.0, 2.0 * round - 0.1), 12.0);
        placeFoot(pose, side, 0.10, {0.0, ankleHeight, 0.0, 0.0}, 9.0);
    }
    return pose;
}

/// Waves with the right arm, twice a round; the hips and legs are left alone.
inline Pose wave(double round)
{
    Pose pose;
    pose["spine"] = aboutZ(-2.0);
    pose["chest"] = aboutY(-4.0) * aboutZ(-3.0 + swing(1.0, round));
    pose["neck"] = aboutZ(2.0);
    pose["head"] = aboutY(4.0) * aboutZ(4.0 + swing(2.0, 2.0 * round));
    placeArm(pose, true, -3.0, 10.0, 16.0);
    pose["upper_arm_right"] = aboutZ(armsHang + 4.0 + swing(3.0, 2.0 * round)) * aboutY(-18.0);
    pose["forearm_right"] = aboutZ(72.0 + swing(24.0, 2.0 * round - 0.25));
    pose["hand_right"] = aboutZ(swing(14.0, 2.0 * round - 0.33));
    return pose;
}
}  // namespace walker
