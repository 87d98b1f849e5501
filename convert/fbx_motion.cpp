#include "convert/fbx_motion.h"

#include "convert/bezier.h"
#include "convert/key_search.h"
#include "convert/model_space.h"
#include "convert/rotation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::convert
{
namespace
{
Matrixd scaling(const Vector3d& factors)
{
    Matrixd result;
    result.setRow(0, {factors.x, 0.0, 0.0});
    result.setRow(1, {0.0, factors.y, 0.0});
    result.setRow(2, {0.0, 0.0, factors.z});
    return result;
}

/// Turns a matrix without translation about an axis of the space that it leads to.
void rotate(Matrixd& matrix, std::size_t axis, double degrees)
{
    const double angle = degrees * std::numbers::pi / 180.0;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const std::size_t from = (axis + 1) % 3;
    const std::size_t to = (axis + 2) % 3;
    for (int row = 0; row < 3; ++row)
    {
        const double a = matrix.m[row][from];
        const double b = matrix.m[row][to];
        matrix.m[row][from] = a * cosine - b * sine;
        matrix.m[row][to] = a * sine + b * cosine;
    }
}

Matrixd translated(Matrixd matrix, const Vector3d& by)
{
    matrix.setTranslation(matrix.getTranslation() + by);
    return matrix;
}

Matrixd withoutTranslation(Matrixd matrix)
{
    matrix.setTranslation({});
    return matrix;
}

/// The axes of a rotation's angles, in the order in which they are applied.
const std::array<std::size_t, 3>& getAxes(int order)
{
    static constexpr std::array<std::array<std::size_t, 3>, 6> orders{
        {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {2, 0, 1}, {2, 1, 0}}};
    return orders[order >= 0 && order < 6 ? static_cast<std::size_t>(order) : 0];
}

/// The same direction as `angle`, less than half a turn away from `near`.
double turnNear(double angle, double near)
{
    constexpr double turn = 360.0;
    return angle - turn * std::round((angle - near) / turn);
}

/// The angles of which `rotateFbx` makes a rotation: of all that do, those that are closest to `near`.
///
/// Where the second one is upright, the others turn about one axis, and only their sum is known. Within `calm` (the
/// cosine of the second) of there, the third is drawn to `near` the more, the less it matters, and the first makes up
/// for it, so that neither whirls around.
Vector3d toAngles(const Matrixd& rotation, int order, const Vector3d& near, double calm)
{
    constexpr double degrees = 180.0 / std::numbers::pi;
    constexpr double upright = 1e-6;
    const std::array<std::size_t, 3>& axes = getAxes(order);
    const std::size_t first = axes[0];
    const std::size_t second = axes[1];
    const std::size_t third = axes[2];
    const double side = (first + 1) % 3 == second ? 1.0 : -1.0;
    const auto& m = rotation.m;
    const double sine = std::clamp(-side * m[first][third], -1.0, 1.0);
    const double cosine = std::sqrt(1.0 - sine * sine);
    const std::array<double, 3> close{near.x, near.y, near.z};
    const auto choose = [&](double one, double two, double three)
    {
        std::array<double, 3> angles{};
        angles[third] = turnNear(three, close[third]);
        const double part = cosine < calm ? cosine / calm : 1.0;
        const double calmed = close[third] + (angles[third] - close[third]) * part;
        one += (calmed - angles[third]) * (sine > 0.0 ? side : -side);
        angles[first] = turnNear(one, close[first]);
        angles[second] = turnNear(two, close[second]);
        angles[third] = calmed;
        return Vector3d(angles[0], angles[1], angles[2]);
    };
    const double middle = std::asin(sine) * degrees;
    if (cosine < upright)
    {
        return choose(std::atan2(-side * m[third][second], m[second][second]) * degrees, middle, 0.0);
    }
    const double one = std::atan2(side * m[second][third], m[third][third]) * degrees;
    const double three = std::atan2(side * m[first][second], m[first][first]) * degrees;
    const Vector3d straight = choose(one, middle, three);
    const Vector3d over = choose(one + 180.0, 180.0 - middle, three + 180.0);
    return (straight - near).lengthSquared() <= (over - near).lengthSquared() ? straight : over;
}

/// The product of two factors, each to a power. What is multiplied whole keeps its sign in the product.
double blendFactors(double below, double left, double own, double weight)
{
    const double size = std::pow(std::abs(below), left) * std::pow(std::abs(own), weight);
    return std::signbit(own) != (std::signbit(below) && left == 1.0) ? -size : size;
}

double blendCubic(const FbxCurve::Key& from, const FbxCurve::Key& to, double fraction)
{
    const double seconds = to.m_dTime - from.m_dTime;
    // The handles run in time and value.
    return blendBezier({0.0, from.m_dValue},
                       {from.m_dLeavingPart, from.m_dValue + from.m_dLeaving * from.m_dLeavingPart * seconds},
                       {1.0 - from.m_dArrivingPart, to.m_dValue - from.m_dArriving * from.m_dArrivingPart * seconds},
                       {1.0, to.m_dValue}, fraction);
}

double blendEven(const FbxCurve::Key& from, const FbxCurve::Key& to, double u)
{
    const double seconds = to.m_dTime - from.m_dTime;
    const double u2 = u * u;
    const double u3 = u2 * u;
    return (2.0 * u3 - 3.0 * u2 + 1.0) * from.m_dValue + (u3 - 2.0 * u2 + u) * seconds * from.m_dLeaving +
           (3.0 * u2 - 2.0 * u3) * to.m_dValue + (u3 - u2) * seconds * from.m_dArriving;
}

Vector3d evaluate(const std::optional<FbxPose::Track>& track, const Vector3d& otherwise, double seconds)
{
    if (!track)
    {
        return otherwise;
    }
    std::array<double, 3> values = track->m_values;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        if (!track->m_curves[axis].m_vecKeys.empty())
        {
            values[axis] = track->m_curves[axis].at(seconds);
        }
    }
    return {values[0], values[1], values[2]};
}

bool isEven(const Vector3d& factors)
{
    constexpr double tolerance = 1e-5;
    return std::abs(factors.x - factors.y) < tolerance && std::abs(factors.x - factors.z) < tolerance;
}
}  // namespace

double FbxCurve::at(double seconds) const
{
    if (seconds < m_vecKeys.front().m_dTime)
    {
        return beyond(m_before, true, seconds);
    }
    return seconds > m_vecKeys.back().m_dTime ? beyond(m_after, false, seconds) : between(seconds);
}

double FbxCurve::beyond(const Beyond& how, bool before, double seconds) const
{
    const Key& nearest = before ? m_vecKeys.front() : m_vecKeys.back();
    const double first = m_vecKeys.front().m_dTime;
    const double duration = m_vecKeys.back().m_dTime - first;
    if (how.m_eKind == Beyond::Kind::Stay || how.m_iTimes == 0 || !(duration > 0.0))
    {
        return nearest.m_dValue;
    }
    const Key& from = before ? nearest : *(m_vecKeys.end() - 2);
    if (how.m_eKind == Beyond::Kind::Slope)
    {
        const Key& to = before ? m_vecKeys[1] : nearest;
        const double straight = (to.m_dValue - from.m_dValue) / (to.m_dTime - from.m_dTime);
        const double slope = from.m_eKind == Kind::Linear  ? straight
                             : from.m_eKind != Kind::Cubic ? 0.0
                             : before                      ? from.m_dLeaving
                                                           : from.m_dArriving;
        return nearest.m_dValue + slope * (seconds - nearest.m_dTime);
    }
    // How far away, in turns of the keys.
    const double distance = std::abs(seconds - nearest.m_dTime) / duration;
    double turns = std::floor(distance);
    double part = distance - turns;
    if (how.m_iTimes > 0 && turns >= static_cast<double>(how.m_iTimes))
    {
        turns = static_cast<double>(how.m_iTimes - 1);
        part = 1.0;
    }
    const bool backwards = how.m_eKind == Beyond::Kind::Mirror && std::fmod(turns, 2.0) == 0.0;
    const double value = between(first + (before != backwards ? 1.0 - part : part) * duration);
    const double gain = m_vecKeys.back().m_dValue - m_vecKeys.front().m_dValue;
    return how.m_eKind == Beyond::Kind::RepeatOnward ? value + (before ? -gain : gain) * (turns + 1.0) : value;
}

/// From the first key to the last.
double FbxCurve::between(double seconds) const
{
    const std::size_t next = findKeyBehind(m_vecKeys, seconds, [](const Key& key) { return key.m_dTime; });
    if (next == 0 || next == m_vecKeys.size())
    {
        return next == 0 ? m_vecKeys.front().m_dValue : m_vecKeys.back().m_dValue;
    }
    const Key& from = m_vecKeys[next - 1];
    const Key& to = m_vecKeys[next];
    const double fraction = (seconds - from.m_dTime) / (to.m_dTime - from.m_dTime);
    switch (from.m_eKind)
    {
        case Kind::Step:
            return from.m_dValue;
        case Kind::StepNext:
            return to.m_dValue;
        case Kind::Linear:
            break;
        case Kind::Cubic:
        {
            constexpr double third = 1.0 / 3.0;
            return from.m_dLeavingPart == third && from.m_dArrivingPart == third ? blendEven(from, to, fraction)
                                                                                 : blendCubic(from, to, fraction);
        }
    }
    return from.m_dValue + (to.m_dValue - from.m_dValue) * fraction;
}

Matrixd rotateFbx(const Vector3d& degrees, int order)
{
    const double angles[3]{degrees.x, degrees.y, degrees.z};
    Matrixd result;
    for (const std::size_t axis : getAxes(order))
    {
        rotate(result, axis, angles[axis]);
    }
    return result;
}

/// Where a motion is written frame by frame, angles may go from one way of saying a direction to another between two
/// frames (179 degrees to -179). No program that played the file would have shown the way between them.
std::vector<FbxPose::Flip> FbxPose::findFlips(const Track& rotation)
{
    constexpr double oneFrame = 0.07;
    constexpr double mostDegrees = 120.0;
    std::vector<Flip> flips;
    for (const FbxCurve& curve : rotation.m_curves)
    {
        for (std::size_t i = 1; i < curve.m_vecKeys.size(); ++i)
        {
            const FbxCurve::Key& from = curve.m_vecKeys[i - 1];
            const FbxCurve::Key& to = curve.m_vecKeys[i];
            const bool goesThere = from.m_eKind == FbxCurve::Kind::Linear || from.m_eKind == FbxCurve::Kind::Cubic;
            if (goesThere && to.m_dTime - from.m_dTime < oneFrame &&
                std::abs(to.m_dValue - from.m_dValue) > mostDegrees)
            {
                flips.push_back({from.m_dTime, to.m_dTime});
            }
        }
    }
    std::ranges::sort(flips, {}, &Flip::m_dFrom);
    return flips;
}

double FbxPose::Layer::getWeight(double seconds) const
{
    return std::clamp((m_weight.m_vecKeys.empty() ? m_dWeight : m_weight.at(seconds)) / 100.0, 0.0, 1.0);
}

bool FbxPose::hasTracks(std::size_t place) const
{
    return m_mapTracks.contains(place) ||
           std::ranges::any_of(m_vecLayers, [place](const Layer& layer) { return layer.m_mapTracks.contains(place); });
}

Vector3d FbxPose::blendLayers(std::size_t index, TrackOf part, const Vector3d& rest, double seconds) const
{
    const auto base = m_mapTracks.find(index);
    Vector3d value = base == m_mapTracks.end() ? rest : evaluate(base->second.*part, rest, seconds);
    for (const Layer& layer : m_vecLayers)
    {
        const auto found = layer.m_mapTracks.find(index);
        if (found == layer.m_mapTracks.end() || !(found->second.*part))
        {
            continue;
        }
        const Vector3d own = evaluate(found->second.*part, rest, seconds);
        const double weight = layer.getWeight(seconds);
        if (weight == 0.0)
        {
            continue;
        }
        if (part == &Tracks::m_scaling && layer.m_bScalesByFactors)
        {
            const double left = layer.m_bAdds ? 1.0 : 1.0 - weight;
            value = {blendFactors(value.x, left, own.x, weight), blendFactors(value.y, left, own.y, weight),
                     blendFactors(value.z, left, own.z, weight)};
        }
        else if (!layer.m_bAdds)
        {
            value += (own - value) * weight;
        }
        else
        {
            value += own * weight;
        }
    }
    return value;
}

/// Programs add rotations as such in the node's own order of angles, and blend between them in the usual one.
Matrixd FbxPose::blendRotations(std::size_t index, double seconds) const
{
    const FbxPlace& place = m_vecPlaces[index];
    const auto base = m_mapTracks.find(index);
    Vector3d angles =
        base == m_mapTracks.end() ? place.m_vRotation : evaluate(base->second.m_rotation, place.m_vRotation, seconds);
    for (const Layer& layer : m_vecLayers)
    {
        const auto found = layer.m_mapTracks.find(index);
        if (found == layer.m_mapTracks.end() || !found->second.m_rotation)
        {
            continue;
        }
        const Vector3d own = evaluate(found->second.m_rotation, place.m_vRotation, seconds);
        const double weight = layer.getWeight(seconds);
        if (!layer.m_bTurnsAsWhole)
        {
            angles += (layer.m_bAdds ? own : own - angles) * weight;
            continue;
        }
        const int order = layer.m_bAdds ? place.m_iRotationOrder : 0;
        constexpr double oneDegree = 0.0175;
        const double calm = order == place.m_iRotationOrder ? 0.0 : oneDegree;
        const Matrixd below = rotateFbx(angles, order);
        const Matrixd top = rotateFbx(own, order);
        angles = layer.m_bAdds
                     ? toAngles(turnShortest(Matrixd(), top, weight) * below, order, angles + own * weight, calm)
                     : toAngles(turnShortest(below, top, weight), order, angles + (own - angles) * weight, calm);
    }
    return rotateFbx(angles, place.m_iRotationOrder);
}

Matrixd FbxPose::makeRotation(std::size_t index, double seconds) const
{
    const auto rotate = [&](double time) { return blendRotations(index, time); };
    if (const auto flips = m_mapFlips.find(index); flips != m_mapFlips.end())
    {
        const auto next = std::ranges::upper_bound(flips->second, seconds, {}, &Flip::m_dFrom);
        if (next != flips->second.begin() && seconds < (next - 1)->m_dTo)
        {
            const Flip& flip = *(next - 1);
            return turnShortest(rotate(flip.m_dFrom), rotate(flip.m_dTo),
                                (seconds - flip.m_dFrom) / (flip.m_dTo - flip.m_dFrom));
        }
    }
    return rotate(seconds);
}

FbxPose::Parts FbxPose::makeParts(std::size_t index, double seconds) const
{
    const FbxPlace& place = m_vecPlaces[index];
    Parts parts;
    parts.m_vTranslation = blendLayers(index, &Tracks::m_translation, place.m_vTranslation, seconds);
    const Still& still = m_vecStill[index];
    parts.m_rotation = makeRotation(index, seconds);
    if (still.m_bTurned)
    {
        parts.m_rotation = still.m_postRotation * parts.m_rotation * still.m_preRotation;
    }
    parts.m_scaling = scaling(blendLayers(index, &Tracks::m_scaling, place.m_vScaling, seconds));
    // From the innermost to the outermost: scale around its pivot, then rotation around its own.
    parts.m_rest = parts.m_scaling;
    parts.m_rest.setTranslation(place.m_vScalingPivot + place.m_vScalingOffset - place.m_vRotationPivot -
                                parts.m_scaling.transformDirection(place.m_vScalingPivot));
    parts.m_rest = translated(parts.m_rest * parts.m_rotation, place.m_vRotationPivot + place.m_vRotationOffset);
    return parts;
}

Matrixd FbxPose::makeLocal(std::size_t index, double seconds) const
{
    if (m_vecPlaces[index].m_eInherit != FbxPlace::Inherit::RotationsFirst || !m_vecUnevenAbove[index])
    {
        return makeLocalIn(index, seconds, nullptr);
    }
    std::vector<std::size_t> above;
    for (int i = m_vecPlaces[index].m_iParent; i >= 0; i = m_vecPlaces[above.back()].m_iParent)
    {
        above.push_back(static_cast<std::size_t>(i));
    }
    World around;
    for (; !above.empty(); above.pop_back())
    {
        const Matrixd matrix = makeLocalIn(above.back(), seconds, &around) * around.m_matrix;
        around = {matrix, makeParts(above.back(), seconds).m_rotation * around.m_rotation};
    }
    return makeLocalIn(index, seconds, &around);
}

/// `around`: what is above the node; null where that makes no difference.
Matrixd FbxPose::makeLocalIn(std::size_t index, double seconds, const World* around) const
{
    const FbxPlace& place = m_vecPlaces[index];
    const Parts parts = makeParts(index, seconds);
    if (place.m_iParent < 0)
    {
        return translated(parts.m_rest, parts.m_vTranslation);
    }
    const auto parent = static_cast<std::size_t>(place.m_iParent);
    Matrixd local = translated(parts.m_rest, parts.m_vTranslation);
    if (place.m_eInherit == FbxPlace::Inherit::NoParentScale)
    {
        // The node still stands where its parent's scale puts it.
        const Matrixd scale = makeParts(parent, seconds).m_scaling;
        constexpr double nothing = 1e-9;
        const auto back = [](double factor) { return std::abs(factor) > nothing ? 1.0 / factor : factor; };
        const Vector3d standsAt = local.getTranslation();
        local = withoutTranslation(local) * scaling({back(scale.m[0][0]), back(scale.m[1][1]), back(scale.m[2][2])});
        return translated(local, standsAt);
    }
    if (!around || place.m_eInherit != FbxPlace::Inherit::RotationsFirst || !m_vecUnevenAbove[index])
    {
        return local;
    }
    const Matrixd shear = withoutTranslation(around->m_matrix) * around->m_rotation.inverse();
    Matrixd world = parts.m_scaling * shear * parts.m_rotation * around->m_rotation;
    world.setTranslation((local * around->m_matrix).getTranslation());
    return world * around->m_matrix.inverse();
}

void FbxPose::prepare()
{
    m_vecStill.clear();
    for (const FbxPlace& place : m_vecPlaces)
    {
        m_vecStill.push_back({rotateFbx(place.m_vPostRotation, 0).inverse(), rotateFbx(place.m_vPreRotation, 0),
                              place.m_vPostRotation != Vector3d() || place.m_vPreRotation != Vector3d()});
    }
    m_mapFlips.clear();
    for (const auto& [place, tracks] : m_mapTracks)
    {
        if (std::vector<Flip> flips = tracks.m_rotation ? findFlips(*tracks.m_rotation) : std::vector<Flip>();
            !flips.empty())
        {
            m_mapFlips.emplace(place, std::move(flips));
        }
    }
    m_vecUnevenAbove.assign(m_vecPlaces.size(), false);
    std::vector<bool> uneven(m_vecPlaces.size(), false);
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        uneven[i] = !isEven(m_vecPlaces[i].m_vScaling);
        if (isScaled(i))
        {
            std::vector<double> times;
            forEachCurve(i,
                         [&times](const FbxCurve& curve)
                         {
                             for (const FbxCurve::Key& key : curve.m_vecKeys)
                             {
                                 times.push_back(key.m_dTime);
                             }
                         });
            uneven[i] = uneven[i] ||
                        std::ranges::any_of(
                            times, [&](double time)
                            { return !isEven(blendLayers(i, &Tracks::m_scaling, m_vecPlaces[i].m_vScaling, time)); });
        }
        if (m_vecPlaces[i].m_iParent >= 0)
        {
            const auto parent = static_cast<std::size_t>(m_vecPlaces[i].m_iParent);
            m_vecUnevenAbove[i] = uneven[parent] || m_vecUnevenAbove[parent];
        }
    }
}

Matrixd FbxPose::getLocal(std::size_t place, double seconds) const
{
    return mirrorZ(makeLocal(place, seconds));
}

Matrixd FbxPose::getWorld(std::size_t place, double seconds) const
{
    const int parent = m_vecPlaces[place].m_iParent;
    const Matrixd local = getLocal(place, seconds);
    return parent < 0 ? local : local * getWorld(static_cast<std::size_t>(parent), seconds);
}

bool FbxPose::isScaled(std::size_t place) const
{
    const auto scales = [place](const std::unordered_map<std::size_t, Tracks>& all)
    {
        const auto found = all.find(place);
        return found != all.end() && found->second.m_scaling.has_value();
    };
    return scales(m_mapTracks) ||
           std::ranges::any_of(m_vecLayers, [&scales](const Layer& layer) { return scales(layer.m_mapTracks); });
}

bool FbxPose::isMoved(std::size_t index) const
{
    if (hasTracks(index))
    {
        return true;
    }
    const FbxPlace& place = m_vecPlaces[index];
    if (place.m_eInherit == FbxPlace::Inherit::All || place.m_iParent < 0)
    {
        return false;
    }
    // What is taken from above depends on how that is scaled and turned.
    const bool sheared = place.m_eInherit == FbxPlace::Inherit::RotationsFirst && m_vecUnevenAbove[index];
    if (!sheared)
    {
        return place.m_eInherit == FbxPlace::Inherit::NoParentScale &&
               isScaled(static_cast<std::size_t>(place.m_iParent));
    }
    for (int i = place.m_iParent; i >= 0; i = m_vecPlaces[static_cast<std::size_t>(i)].m_iParent)
    {
        if (hasTracks(static_cast<std::size_t>(i)))
        {
            return true;
        }
    }
    return false;
}
}  // namespace TW2::convert
