#include "convert/clip_fitting.h"

#include "convert/clip_sampler.h"
#include "convert/fitted_motion.h"
#include "convert/foot_slide.h"
#include "convert/node_motion.h"
#include "convert/skeleton.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

namespace TW2::convert
{
namespace
{
/// A node that stays where another file has it.
class StandingStill : public NodeMotion
{
public:
    explicit StandingStill(const Matrixd& local) : m_local(local) {}
    [[nodiscard]] Matrixd at(double) const override { return m_local; }
    void addTimes(std::vector<double>&) const override {}
    void addJumps(std::vector<double>&) const override {}

private:
    Matrixd m_local;
};

/// Whether any clip moves the node to and fro in its parent.
bool isShifted(const Model& model, std::size_t node, double slight)
{
    for (const Clip& clip : model.m_vecClips)
    {
        const ClipSampler sampler(model, clip);
        const Vector3d first = sampler.sample(node, 0.0).getTranslation();
        for (const double part : {0.25, 0.5, 0.75, 1.0})
        {
            if ((sampler.sample(node, part * clip.m_dDuration).getTranslation() - first).length() > slight)
            {
                return true;
            }
        }
    }
    return false;
}

/// Whether the bones of both models are as long, and point the same way in their parents. Nodes that clips shift say
/// nothing, nor do those without a parent.
bool isSameSkeleton(const Model& body, const Model& other, const NodeMatch& match)
{
    constexpr double tolerance = 0.01;
    for (std::size_t node = 0; node < match.m_vecTo.size(); ++node)
    {
        const int to = match.m_vecTo[node];
        const int parent = other.m_vecNodes[node].m_iParent;
        if (to < 0 || parent < 0)
        {
            continue;
        }
        const Node& counterpart = body.m_vecNodes[static_cast<std::size_t>(to)];
        if (counterpart.m_iParent < 0 || match.m_vecTo[static_cast<std::size_t>(parent)] != counterpart.m_iParent)
        {
            continue;
        }
        const Vector3d is = other.m_vecNodes[node].m_local.getTranslation();
        const Vector3d wanted = counterpart.m_local.getTranslation();
        const double slight = tolerance * std::max(is.length(), wanted.length());
        if ((is - wanted).length() > slight && !isShifted(other, node, slight))
        {
            return false;
        }
    }
    return true;
}

Clip copyClip(const Model& other, const Clip& source, const NodeMatch& match)
{
    Clip clip = source;
    clip.m_root = source.m_root.value_or(other.m_root);
    clip.m_vecChannels.clear();
    std::vector<bool> moved(match.m_vecTo.size(), false);
    for (const Channel& channel : source.m_vecChannels)
    {
        const auto node = static_cast<std::size_t>(channel.m_iNode);
        moved[node] = true;
        if (match.m_vecTo[node] >= 0)
        {
            clip.m_vecChannels.push_back(channel);
            clip.m_vecChannels.back().m_iNode = match.m_vecTo[node];
        }
    }
    for (std::size_t node = 0; node < match.m_vecTo.size(); ++node)
    {
        if (match.m_vecTo[node] >= 0 && !moved[node])
        {
            Channel still;
            still.m_iNode = match.m_vecTo[node];
            still.m_pMotion = std::make_shared<StandingStill>(other.getRestInFile(node));
            clip.m_vecChannels.push_back(std::move(still));
        }
    }
    return clip;
}

std::vector<std::string> findLost(const Model& other, const NodeMatch& match)
{
    std::set<int> lost;
    for (const Clip& clip : other.m_vecClips)
    {
        for (const Channel& channel : clip.m_vecChannels)
        {
            if (match.m_vecTo[static_cast<std::size_t>(channel.m_iNode)] < 0)
            {
                lost.insert(channel.m_iNode);
            }
        }
    }
    std::vector<std::string> names;
    for (const int node : lost)
    {
        names.push_back(other.m_vecNodes[static_cast<std::size_t>(node)].m_strName);
    }
    return names;
}
}  // namespace

std::vector<Clip> fitClips(const Model& body, const Model& other, const NodeMap& map, MotionSource& source)
{
    const NodeMatch match = matchNodes(body, other, map);
    source.m_strName = other.m_strName;
    source.m_counts = match.m_counts;
    source.m_vecLost = findLost(other, match);
    source.m_bFitted = !isSameSkeleton(body, other, match);
    std::vector<Clip> clips;
    if (!source.m_bFitted)
    {
        for (const Clip& clip : other.m_vecClips)
        {
            clips.push_back(copyClip(other, clip, match));
        }
        return clips;
    }
    const auto fitting = std::make_shared<const Fitting>(body, other, match);
    source.m_dRatio = fitting->getRatio();
    for (const Clip& clip : other.m_vecClips)
    {
        clips.push_back(makeFittedClip(fitting, clip));
        if (const auto slide = measureFootSlide(*fitting, clip, clips.back()))
        {
            source.m_slide = source.m_slide.value_or(MotionSource::FootSlide());
            source.m_slide->m_dDistance = std::max(source.m_slide->m_dDistance, slide->m_dDistance);
            source.m_slide->m_dBefore = std::max(source.m_slide->m_dBefore, slide->m_dBefore);
        }
    }
    return clips;
}
}  // namespace TW2::convert
