#include "convert/fitted_motion.h"

#include "convert/box.h"
#include "convert/clip_sampler.h"
#include "convert/node_motion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace TW2::convert
{
namespace
{
constexpr double footHeight = 0.15;  // of the height of the hips
constexpr double least = 1e-9;       // of the models' sizes: what is shorter has no direction

/// The shortest turn that brings one direction to another; none where there is no such thing.
Matrixd turnBetween(const Vector3d& from, const Vector3d& to)
{
    const Vector3d a = from.normalized();
    const Vector3d b = to.normalized();
    const Vector3d axis = a.cross(b);
    const double cosine = a.dot(b);
    Matrixd turn;
    if (axis.lengthSquared() < 1e-24)
    {
        if (cosine < 0.0)
        {
            const Vector3d aside = std::abs(a.x) < 0.9 ? Vector3d(1.0, 0.0, 0.0) : Vector3d(0.0, 1.0, 0.0);
            const Vector3d n = a.cross(aside).normalized();
            turn.setRow(0, n * (2.0 * n.x) - Vector3d(1.0, 0.0, 0.0));
            turn.setRow(1, n * (2.0 * n.y) - Vector3d(0.0, 1.0, 0.0));
            turn.setRow(2, n * (2.0 * n.z) - Vector3d(0.0, 0.0, 1.0));
        }
        return turn;
    }
    // Rodrigues, with (1 - cosine) / sine^2 = 1 / (1 + cosine); of these that in which nothing cancels out.
    const double f = cosine < 0.0 ? (1.0 - cosine) / axis.lengthSquared() : 1.0 / (1.0 + cosine);
    turn.setRow(0, {cosine + axis.x * axis.x * f, axis.x * axis.y * f + axis.z, axis.x * axis.z * f - axis.y});
    turn.setRow(1, {axis.x * axis.y * f - axis.z, cosine + axis.y * axis.y * f, axis.y * axis.z * f + axis.x});
    turn.setRow(2, {axis.x * axis.z * f + axis.y, axis.y * axis.z * f - axis.x, cosine + axis.z * axis.z * f});
    return turn;
}

/// What `findTurn` turns around of a joint's place in the scene, which is its own inverse: turns inside of a mirrored
/// joint have to be seen through it, before and behind. Of -1 nothing.
Matrixd getMirror(const Skeleton& skeleton, int joint)
{
    const bool mirrored =
        joint >= 0 && skeleton.m_vecJoints[static_cast<std::size_t>(joint)].m_world.determinant() < 0.0;
    Matrixd mirror;
    mirror.m[0][0] = mirrored ? -1.0 : 1.0;
    return mirror;
}

double measureScale(const Matrixd& matrix)
{
    return std::cbrt(std::abs(matrix.determinant()));
}

/// One clip of the other model, and what it says about nodes of the body.
class FittedPose
{
public:
    FittedPose(std::shared_ptr<const Fitting> fitting, const Clip& clip)
        : m_pFitting(std::move(fitting)), m_clip(clip), m_sampler(m_pFitting->getOther(), m_clip)
    {
        for (const Channel& channel : m_clip.m_vecChannels)
        {
            addKeyTimes(channel, m_vecTimes);
            addJumps(channel, m_vecJumps);
        }
        for (std::vector<double>* times : {&m_vecTimes, &m_vecJumps})
        {
            std::sort(times->begin(), times->end());
            times->erase(std::unique(times->begin(), times->end()), times->end());
        }
    }
    FittedPose(const FittedPose&) = delete;
    FittedPose& operator=(const FittedPose&) = delete;

    /// Local matrix of a node of the body that has a counterpart, at a time of the clip's curves.
    [[nodiscard]] Matrixd at(std::size_t node, double time) const
    {
        const double seconds = time - m_clip.m_dStart;
        const Fitting& fitting = *m_pFitting;
        const Joint& rest = fitting.getBodyAtRest().m_vecJoints[node];
        const auto from = static_cast<std::size_t>(fitting.getPlace(node).m_iFrom);
        const Matrixd above = getTurn(rest.m_iParent, seconds);
        const Matrixd mirrorAbove = getMirror(fitting.getBodyAtRest(), rest.m_iParent);
        const Matrixd turn = mirrorAbove * getTurn(static_cast<int>(node), seconds) * above.inverse() * mirrorAbove;
        const double stretch = measureStretch(from, seconds);
        const double mirror = rest.m_local.determinant() < 0.0 ? -1.0 : 1.0;
        Matrixd local;
        for (int row = 0; row < 3; ++row)
        {
            local.setRow(row,
                         turn.getRow(row) * (rest.m_local.getRow(row).length() * stretch * (row == 0 ? mirror : 1.0)));
        }
        local.setTranslation(getTranslation(node, seconds));
        return rest.m_iParent < 0 ? local * fitting.getBody().m_root.inverse() : local;
    }
    [[nodiscard]] const std::vector<double>& getTimes() const noexcept { return m_vecTimes; }
    [[nodiscard]] const std::vector<double>& getJumps() const noexcept { return m_vecJumps; }

private:
    /// How a node of the other model is turned from its pose at rest, in the scene.
    [[nodiscard]] Matrixd getOwnTurn(int node) const
    {
        return findTurn(m_pFitting->getOtherAtRest().m_vecJoints[static_cast<std::size_t>(node)].m_world);
    }
    [[nodiscard]] Matrixd getOtherTurn(int node, double seconds) const
    {
        Matrixd turn;
        const Model& other = m_pFitting->getOther();
        for (int at = node; at >= 0;)
        {
            const int parent = other.m_vecNodes[static_cast<std::size_t>(at)].m_iParent;
            const Matrixd mirrorAbove = getMirror(m_pFitting->getOtherAtRest(), parent);
            turn = turn * mirrorAbove * findTurn(m_sampler.sample(static_cast<std::size_t>(at), seconds)) * mirrorAbove;
            at = parent;
        }
        return turn;
    }

    /// The turn of a node of the body in the scene; none for -1.
    [[nodiscard]] Matrixd getTurn(int node, double seconds) const
    {
        Matrixd turn;
        while (node >= 0)
        {
            const Fitting::Place& place = m_pFitting->getPlace(static_cast<std::size_t>(node));
            if (place.m_iFrom >= 0)
            {
                const Matrixd& heading = m_pFitting->getHeading();
                const Matrixd change = getOwnTurn(place.m_iFrom).inverse() * getOtherTurn(place.m_iFrom, seconds);
                return turn * place.m_rest * place.m_alignment * heading.inverse() * change * heading;
            }
            turn = turn * place.m_rest;
            node = m_pFitting->getBody().m_vecNodes[static_cast<std::size_t>(node)].m_iParent;
        }
        return turn;
    }

    /// How much larger the counterpart is than at rest.
    [[nodiscard]] double measureStretch(std::size_t from, double seconds) const
    {
        constexpr double slight = 1e-6;
        const double rest = measureScale(m_pFitting->getOtherAtRest().m_vecJoints[from].m_local);
        const double stretch = rest > 0.0 ? measureScale(m_sampler.sample(from, seconds)) / rest : 1.0;
        return std::abs(stretch - 1.0) < slight ? 1.0 : stretch;
    }

    [[nodiscard]] Vector3d getTranslation(std::size_t node, double seconds) const
    {
        const Fitting& fitting = *m_pFitting;
        const Fitting::Place& place = fitting.getPlace(node);
        const Joint& rest = fitting.getBodyAtRest().m_vecJoints[node];
        const auto from = static_cast<std::size_t>(place.m_iFrom);
        if (place.m_iAbove < 0)
        {
            return getTopmost(rest, from, seconds);
        }
        const Joint& restFrom = fitting.getOtherAtRest().m_vecJoints[from];
        const Vector3d bone = rest.m_local.getTranslation();
        if (place.m_iAbove != rest.m_iParent || restFrom.m_iParent < 0 ||
            fitting.getPlace(static_cast<std::size_t>(rest.m_iParent)).m_iFrom != restFrom.m_iParent)
        {
            return bone;
        }
        const Vector3d boneFrom = restFrom.m_local.getTranslation();
        const Vector3d apart = m_sampler.sample(from, seconds).getTranslation() - boneFrom;
        const auto parent = static_cast<std::size_t>(rest.m_iParent);
        const Joint& restParent = fitting.getBodyAtRest().m_vecJoints[parent];
        const Joint& restParentFrom =
            fitting.getOtherAtRest().m_vecJoints[static_cast<std::size_t>(restFrom.m_iParent)];
        const double bySize = fitting.getRatio() * measureScale(restParentFrom.m_world) /
                              std::max(measureScale(restParent.m_world), std::numeric_limits<double>::min());
        const double ratio = boneFrom.length() > least * fitting.getOtherHeight() && bone.length() > 0.0
                                 ? bone.length() / boneFrom.length()
                                 : bySize;
        const Matrixd across = getMirror(fitting.getOtherAtRest(), restFrom.m_iParent) *
                               findTurn(restParentFrom.m_world) * fitting.getHeading() *
                               (fitting.getPlace(parent).m_rest * fitting.getPlace(parent).m_alignment).inverse() *
                               getMirror(fitting.getBodyAtRest(), rest.m_iParent);
        return bone + across.transformPoint(apart) * ratio;
    }

    /// Of a node that nothing above moves: by the ratio of the sizes, from where it stands at rest.
    [[nodiscard]] Vector3d getTopmost(const Joint& rest, std::size_t from, double seconds) const
    {
        const Fitting& fitting = *m_pFitting;
        const Model& other = fitting.getOther();
        Matrixd now;
        for (int at = static_cast<int>(from); at >= 0; at = other.m_vecNodes[static_cast<std::size_t>(at)].m_iParent)
        {
            now = now * m_sampler.sample(static_cast<std::size_t>(at), seconds);
        }
        const Vector3d way = now.getTranslation() - fitting.getOtherAtRest().m_vecJoints[from].m_world.getTranslation();
        const Vector3d place =
            rest.m_world.getTranslation() + fitting.getHeading().transformPoint(way) * fitting.getRatio();
        Matrixd above;
        for (int at = rest.m_iParent; at >= 0;
             at = fitting.getBody().m_vecNodes[static_cast<std::size_t>(at)].m_iParent)
        {
            above = above * fitting.getBody().m_vecNodes[static_cast<std::size_t>(at)].m_local;
        }
        return above.inverse().transformPoint(place);
    }

    std::shared_ptr<const Fitting> m_pFitting;
    Clip m_clip;
    ClipSampler m_sampler;
    std::vector<double> m_vecTimes;
    std::vector<double> m_vecJumps;
};

/// One node of a fitted pose.
class FittedMotion : public NodeMotion
{
public:
    FittedMotion(std::shared_ptr<const FittedPose> pose, std::size_t node) : m_pPose(std::move(pose)), m_uiNode(node) {}
    [[nodiscard]] Matrixd at(double time) const override { return m_pPose->at(m_uiNode, time); }
    void addTimes(std::vector<double>& times) const override
    {
        times.insert(times.end(), m_pPose->getTimes().begin(), m_pPose->getTimes().end());
    }
    void addJumps(std::vector<double>& jumps) const override
    {
        jumps.insert(jumps.end(), m_pPose->getJumps().begin(), m_pPose->getJumps().end());
    }

private:
    std::shared_ptr<const FittedPose> m_pPose;
    std::size_t m_uiNode;
};

}  // namespace

Matrixd findTurn(const Matrixd& matrix)
{
    const double mirror = matrix.determinant() < 0.0 ? -1.0 : 1.0;
    const Vector3d x = matrix.getRow(0).normalized() * mirror;
    const Vector3d y = (matrix.getRow(1) - x * x.dot(matrix.getRow(1))).normalized();
    Matrixd turn;
    if (x != Vector3d() && y != Vector3d())
    {
        turn.setRow(0, x);
        turn.setRow(1, y);
        turn.setRow(2, x.cross(y));
    }
    return turn;
}

Fitting::Fitting(const Model& body, const Model& other, const NodeMatch& match) : m_body(body), m_other(other)
{
    std::vector<std::string> told;  // by the conversion of the models already
    m_bodyAtRest = makeSkeleton(body, told);
    m_otherAtRest = makeSkeleton(other, told);
    findPlaces(match);
    measureHeights();
    findHeading();
    align();
}

Vector3d Fitting::getBodyPoint(std::size_t node) const
{
    return m_bodyAtRest.m_vecJoints[node].m_world.getTranslation();
}

Vector3d Fitting::getOtherPoint(std::size_t node) const
{
    return m_otherAtRest.m_vecJoints[static_cast<std::size_t>(m_vecPlaces[node].m_iFrom)].m_world.getTranslation();
}

void Fitting::findPlaces(const NodeMatch& match)
{
    m_vecPlaces.resize(m_body.m_vecNodes.size());
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        Place& place = m_vecPlaces[i];
        place.m_iFrom = match.m_vecFrom[i];
        const int parent = m_body.m_vecNodes[i].m_iParent;
        if (parent >= 0)
        {
            const Place& above = m_vecPlaces[static_cast<std::size_t>(parent)];
            place.m_iAbove = above.m_iFrom >= 0 ? parent : above.m_iAbove;
        }
        const Matrixd mirrorAbove = getMirror(m_bodyAtRest, parent);
        place.m_rest = place.m_iFrom >= 0 ? findTurn(m_bodyAtRest.m_vecJoints[i].m_world)
                                          : mirrorAbove * findTurn(m_body.m_vecNodes[i].m_local) * mirrorAbove;
    }
}

std::vector<std::size_t> Fitting::findBelow(std::size_t node) const
{
    std::vector<std::size_t> below;
    for (std::size_t i = node + 1; i < m_vecPlaces.size(); ++i)
    {
        if (m_vecPlaces[i].m_iFrom >= 0 && m_vecPlaces[i].m_iAbove == static_cast<int>(node))
        {
            below.push_back(i);
        }
    }
    return below;
}

/// Whether `node` is `above` or hangs below it.
bool Fitting::isBelow(std::size_t node, std::size_t above) const
{
    auto at = static_cast<int>(node);
    while (at >= 0 && at != static_cast<int>(above))
    {
        at = m_body.m_vecNodes[static_cast<std::size_t>(at)].m_iParent;
    }
    return at >= 0;
}

/// The hips are the topmost node above the ground from which limbs go out.
void Fitting::measureHeights()
{
    Box body;
    Box other;
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        if (m_vecPlaces[i].m_iFrom >= 0)
        {
            body.add(getBodyPoint(i));
            other.add(getOtherPoint(i));
        }
    }
    if (other.getDiagonal() <= 0.0 || body.getDiagonal() <= 0.0)
    {
        return;
    }
    constexpr double slight = 0.05;
    m_dRatio = body.getDiagonal() / other.getDiagonal();
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        if (m_vecPlaces[i].m_iFrom < 0 || findBelow(i).size() < 2)
        {
            continue;
        }
        // What hangs below them reaches the ground; nodes beside them may stand anywhere.
        Box bodyBelow;
        Box otherBelow;
        for (std::size_t below = i; below < m_vecPlaces.size(); ++below)
        {
            if (m_vecPlaces[below].m_iFrom >= 0 && isBelow(below, i))
            {
                bodyBelow.add(getBodyPoint(below));
                otherBelow.add(getOtherPoint(below));
            }
        }
        const double bodyHeight = getBodyPoint(i).y - bodyBelow.getLow().y;
        const double otherHeight = getOtherPoint(i).y - otherBelow.getLow().y;
        if (bodyHeight > slight * body.getDiagonal() && otherHeight > slight * other.getDiagonal())
        {
            m_dBodyGround = bodyBelow.getLow().y;
            m_dOtherGround = otherBelow.getLow().y;
            m_dBodyHeight = bodyHeight;
            m_dOtherHeight = otherHeight;
            m_dRatio = bodyHeight / otherHeight;
            return;
        }
    }
}

bool Fitting::isFoot(std::size_t node) const
{
    return m_vecPlaces[node].m_iFrom >= 0 && m_dBodyHeight > 0.0 &&
           getBodyPoint(node).y - m_dBodyGround < footHeight * m_dBodyHeight &&
           getOtherPoint(node).y - m_dOtherGround < footHeight * m_dOtherHeight;
}

/// The quarter of a turn about y that brings the other model's nodes nearest to their counterparts.
void Fitting::findHeading()
{
    Vector3d bodyMiddle;
    Vector3d otherMiddle;
    double count = 0.0;
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        if (m_vecPlaces[i].m_iFrom >= 0)
        {
            bodyMiddle += getBodyPoint(i);
            otherMiddle += getOtherPoint(i);
            count += 1.0;
        }
    }
    double cosine = 0.0;
    double sine = 0.0;
    for (std::size_t i = 0; i < m_vecPlaces.size() && count > 0.0; ++i)
    {
        if (m_vecPlaces[i].m_iFrom >= 0)
        {
            const Vector3d b = getBodyPoint(i) - bodyMiddle * (1.0 / count);
            const Vector3d a = getOtherPoint(i) - otherMiddle * (1.0 / count);
            cosine += a.x * b.x + a.z * b.z;
            sine += a.z * b.x - a.x * b.z;
        }
    }
    if (std::abs(cosine) + std::abs(sine) <= 0.0)
    {
        return;
    }
    const double quarters = std::round(std::atan2(sine, cosine) * 2.0 / std::numbers::pi);
    const double c = std::round(std::cos(quarters * std::numbers::pi / 2.0));
    const double s = std::round(std::sin(quarters * std::numbers::pi / 2.0));
    m_heading.setRow(0, {c, 0.0, -s});
    m_heading.setRow(2, {s, 0.0, c});
}

/// Limbs are turned to where the other model has them at rest: the arms of one may hang and the other's be spread. What
/// ends a limb, or has several, goes with the limb above; feet stay flat on the ground.
void Fitting::align()
{
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        Place& place = m_vecPlaces[i];
        if (place.m_iFrom < 0 || isFoot(i))
        {
            continue;
        }
        place.m_alignment =
            place.m_iAbove >= 0 ? m_vecPlaces[static_cast<std::size_t>(place.m_iAbove)].m_alignment : Matrixd();
        const std::vector<std::size_t> below = findBelow(i);
        if (below.size() != 1)
        {
            continue;
        }
        const Vector3d is = place.m_alignment.transformPoint(getBodyPoint(below.front()) - getBodyPoint(i));
        const Vector3d wanted = m_heading.transformPoint(getOtherPoint(below.front()) - getOtherPoint(i));
        if (is.length() > least * m_dBodyHeight && wanted.length() > least * m_dOtherHeight)
        {
            place.m_alignment = place.m_alignment * turnBetween(is, wanted);
        }
    }
}

Clip makeFittedClip(const std::shared_ptr<const Fitting>& fitting, const Clip& clip)
{
    const auto pose = std::make_shared<const FittedPose>(fitting, clip);
    Clip fitted = clip;
    fitted.m_vecChannels.clear();
    fitted.m_root.reset();
    for (std::size_t node = 0; node < fitting->getBody().m_vecNodes.size(); ++node)
    {
        if (fitting->getPlace(node).m_iFrom >= 0)
        {
            Channel channel;
            channel.m_iNode = static_cast<int>(node);
            channel.m_pMotion = std::make_shared<FittedMotion>(pose, node);
            fitted.m_vecChannels.push_back(std::move(channel));
        }
    }
    return fitted;
}
}  // namespace TW2::convert
