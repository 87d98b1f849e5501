#include "motion/reach_solver.h"

#include "motion/angles.h"

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
using Vector = M_Vector3Template<double>;

constexpr double tiny = 1e-12;  // times a chain's length: no length, no direction

Vector removePart(const Vector& v, const Vector& unit) noexcept
{
    return v - unit * unit.dot(v);
}

// The rotation that takes the directions x0 and z0 (at right angles) to x1 and z1.
TW_Rotation betweenFrames(const Vector& x0, const Vector& z0, const Vector& x1, const Vector& z1) noexcept
{
    const TW_Rotation swing = TW_Rotation::between(x0, x1);
    const Vector z = removePart(swing.turn(z0), x1);
    // About x1 only, also when it is half a turn.
    const double angle = getAngle(x1.dot(z.cross(z1)), z.dot(z1));
    return (swing * TW_Rotation::aboutAxis(x1, angle * (180.0 / pi))).normalized();
}

// At right angles to the unit vector, from a direction that turns with the bone: the same choice as long as the bone's
// own axes and the vector keep together.
Vector findSide(const ReachJoints& joints, const Vector& unit) noexcept
{
    const Vector bone = (joints.m_positions[1] - joints.m_positions[0]).normalized();
    int best = 0;
    for (int i = 1; i < 3; ++i)
    {
        const auto align = [&](int s) { return std::abs(joints.m_side[s].dot(bone)); };
        best = align(i) < align(best) - 1e-6 ? i : best;
    }
    const Vector side = removePart(joints.m_side[best], unit).normalized();
    return side == Vector{} ? removePart(joints.m_side[(best + 1) % 3], unit).normalized() : side;
}

// Slower and slower towards full stretch, with a tangent of 1 where that begins.
double soften(double distance, double length, double softness) noexcept
{
    const double zone = std::clamp(softness, 0.0, 1.0) * length;
    const double into = distance - (length - zone);
    return zone > 0.0 && into > 0.0 ? length - zone + zone * into / (zone + into) : distance;
}
}  // namespace

Vector ReachJoints::getTurned(std::size_t joint) const noexcept
{
    Vector place = m_positions[0];
    for (std::size_t i = 0; i < joint; ++i)
    {
        place += m_turns[i].turn(m_positions[i + 1] - m_positions[i]);
    }
    return place;
}

float solveTwoBones(ReachJoints& joints, const TW_TwoBoneReach& reach, const Vector& target,
                    const Vector& pole) noexcept
{
    const Vector a = joints.m_positions[0];
    const Vector b = joints.m_positions[1];
    const Vector c = joints.m_positions[2];
    const double upper = (b - a).length();
    const double lower = (c - b).length();
    const double length = upper + lower;
    if (!(upper > tiny * length) || !(lower > tiny * length))
    {
        return static_cast<float>((target - c).length());
    }
    // The plane that it bends in now.
    const Vector bone = (b - a).normalized();
    const bool folded = (c - a).length() <= tiny * length;
    const Vector ahead = folded ? bone : (c - a).normalized();
    Vector bend = removePart(b - a, ahead);
    constexpr double straight = 1e-6;
    bend = bend.length() > straight * upper ? bend.normalized() : findSide(joints, ahead);
    const Vector normal = ahead.cross(bend);

    // The plane that it is to bend in.
    const double wanted = (target - a).length();
    const Vector towards = wanted > tiny * length ? (target - a).normalized() : ahead;
    const Vector carried = removePart(TW_Rotation::between(ahead, towards).turn(bend), towards).normalized();
    const Vector across = removePart(pole.normalized(), towards);
    // In line with the pole the present plane takes over, a little before that happens.
    const double in = std::max(0.0, 1.0 - across.lengthSquared());
    const double fading = in * in * in * in;
    Vector side = pole == Vector{} ? carried : across + carried * (0.01 * fading);
    side = removePart(side, towards).normalized();
    side = side == Vector{} ? carried : side;
    side = TW_Rotation::aboutAxis(towards, static_cast<double>(reach.twist)).turn(side);
    const Vector newNormal = towards.cross(side);

    const double least = std::abs(upper - lower);
    const double distance = std::clamp(soften(wanted, length, static_cast<double>(reach.softness)), least, length);
    const double cosine = distance > tiny * length
                              ? (upper * upper + distance * distance - lower * lower) / (2.0 * upper * distance)
                              : 0.0;
    const double x = upper * std::clamp(cosine, -1.0, 1.0);
    const Vector newB = a + towards * x + side * std::sqrt(std::max(0.0, (upper - x) * (upper + x)));
    const Vector newC = a + towards * distance;

    const auto weight = std::clamp(static_cast<double>(reach.weight), 0.0, 1.0);
    const TW_Rotation first = betweenFrames(bone, normal, (newB - a).normalized(), newNormal);
    const TW_Rotation second =
        betweenFrames(first.turn(c - b).normalized(), newNormal, (newC - newB).normalized(), newNormal);
    // The second turn, told before the first is made, so that parts of both are parts of the way.
    const TW_Rotation own = first * second * first.inverse();
    joints.m_turns[0] = first.scaled(weight);
    joints.m_turns[1] = own.scaled(weight) * joints.m_turns[0];
    if (weight >= 1.0)
    {
        joints.m_turns[0] = first;
        joints.m_turns[1] = first * second;
    }
    joints.m_turns[2] = reach.keepEndRotation ? TW_Rotation() : joints.m_turns[1];
    return static_cast<float>((joints.getTurned(2) - target).length());
}

float solveAim(ReachJoints& joints, const TW_Aim& aim, const Vector& target, const Vector& forward,
               const Vector& eye) noexcept
{
    const std::size_t last = joints.m_uiCount - 1;
    const auto weight = std::clamp(static_cast<double>(aim.weight), 0.0, 1.0);
    const auto viewOf = [&](Vector& ahead, Vector& to)
    {
        ahead = joints.m_turns[last].turn(forward);
        to = target - (joints.getTurned(last) + joints.m_turns[last].turn(eye));
    };
    Vector ahead;
    Vector to;
    viewOf(ahead, to);
    // How much of the way is gone for a target behind: told once, from where it looks without turning.
    const double behind = 180.0 - TW_Rotation::between(ahead, to).getDegrees();
    const double zone = std::max(static_cast<double>(aim.behind), 1e-9);
    const double willing = weight * std::clamp(behind / zone, 0.0, 1.0);
    const Vector goal = TW_Rotation::between(ahead, to).scaled(willing).turn(ahead);

    TW_Rotation above;
    for (std::size_t i = 0; i <= last; ++i)
    {
        const double share = i == last    ? 1.0
                             : aim.shares ? std::clamp(static_cast<double>(aim.shares[i]), 0.0, 1.0)
                                          : 1.0 / static_cast<double>(last + 1 - i);
        const TW_Rotation before = above;
        double used = 0.0;
        // The eye moves with the bone: the last one looks again.
        for (int look = 0; look < (i == last ? 8 : 1); ++look)
        {
            viewOf(ahead, to);
            const Vector direction = willing >= 1.0 ? to : goal;
            TW_Rotation turn = TW_Rotation::between(ahead, direction).scaled(share);
            const double most = std::max(static_cast<double>(aim.limit), 0.0);
            TW_Rotation whole = (before.inverse() * above * turn).normalized();
            used = whole.getDegrees();
            whole = used > most ? whole.scaled(most / used) : whole;
            above = (before * whole).normalized();
            for (std::size_t j = i; j <= last; ++j)
            {
                joints.m_turns[j] = above;
            }
        }
    }
    viewOf(ahead, to);
    return static_cast<float>(TW_Rotation::between(ahead, to).getDegrees());
}

float solveChain(ReachJoints& joints, const TW_ChainReach& reach, const Vector& target) noexcept
{
    const std::size_t last = joints.m_uiCount - 1;
    std::array<Vector, chainLimit> p = joints.m_positions;
    std::array<double, chainLimit> lengths{};
    double length = 0.0;
    for (std::size_t i = 0; i < last; ++i)
    {
        lengths[i] = (p[i + 1] - p[i]).length();
        length += lengths[i];
    }
    const Vector base = p[0];
    const double distance = (target - base).length();
    if (last == 0 || length <= 0.0)
    {
        return static_cast<float>(distance);
    }
    const Vector towards = distance > tiny * length ? (target - base).normalized() : Vector{};
    const auto follow = [&](std::size_t from, std::size_t to, double reachLength)
    {
        const Vector way = (p[to] - p[from]).normalized();
        p[to] = p[from] + (way == Vector{} ? joints.m_side[0] : way) * reachLength;
    };
    if (distance >= length)
    {
        for (std::size_t i = 0; i < last; ++i)
        {
            p[i + 1] = p[i] + towards * lengths[i];
        }
    }
    else
    {
        // A chain in line with the target has no side to bend to: it is given one, as little as has an effect.
        double off = 0.0;
        for (std::size_t i = 1; i <= last; ++i)
        {
            off = std::max(off, removePart(p[i] - base, towards).length());
        }
        constexpr double straight = 1e-4;
        if (off < straight * length)
        {
            const Vector side = findSide(joints, towards == Vector{} ? (p[1] - p[0]).normalized() : towards);
            for (std::size_t i = 1; i < last; ++i)
            {
                p[i] += side * ((straight - off / length) * length * (i % 2 != 0 ? 1.0 : 0.5));
            }
        }
        constexpr double near = 1e-7;
        for (int i = 0; i < reach.iterations && (p[last] - target).length() > near * length; ++i)
        {
            p[last] = target;
            for (std::size_t j = last; j-- > 0;)
            {
                follow(j + 1, j, lengths[j]);
            }
            p[0] = base;
            for (std::size_t j = 0; j < last; ++j)
            {
                follow(j, j + 1, lengths[j]);
            }
        }
    }
    const auto weight = std::clamp(static_cast<double>(reach.weight), 0.0, 1.0);
    TW_Rotation whole;  // all of it
    TW_Rotation part;   // as the weight says
    for (std::size_t i = 0; i < last; ++i)
    {
        const Vector now = joints.m_positions[i + 1] - joints.m_positions[i];
        const TW_Rotation own = whole * TW_Rotation::between(whole.turn(now), p[i + 1] - p[i]) * whole.inverse();
        whole = (own * whole).normalized();
        part = weight >= 1.0 ? whole : (own.scaled(weight) * part).normalized();
        joints.m_turns[i] = part;
    }
    joints.m_turns[last] = part;
    return static_cast<float>((joints.getTurned(last) - target).length());
}
}  // namespace TW2
