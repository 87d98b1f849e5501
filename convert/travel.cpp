#include "convert/travel.h"

#include "convert/convert_exception.h"
#include "convert/node_match.h"
#include "convert/node_motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <sstream>

namespace TW2::convert
{
namespace
{
bool isNamed(const Model& model, const std::string& name)
{
    return std::any_of(model.m_vecNodes.begin(), model.m_vecNodes.end(),
                       [&name](const Node& node) { return node.m_strName == name; });
}

/// The topmost nodes that clips move: what people look for.
std::string listMoved(const Model& model)
{
    std::set<int> moved;
    for (const Clip& clip : model.m_vecClips)
    {
        for (const Channel& channel : clip.m_vecChannels)
        {
            moved.insert(channel.m_iNode);
        }
    }
    std::string names;
    constexpr int most = 5;
    int count = 0;
    for (const int node : moved)  // parents come before their children
    {
        const Node& place = model.m_vecNodes[static_cast<std::size_t>(node)];
        if (!moved.contains(place.m_iParent) && count++ < most)
        {
            names += (names.empty() ? "\"" : ", \"") + place.m_strName + "\"";
        }
    }
    return names.empty() ? "none" : names;
}

[[noreturn]] void fail(const std::string& fileName, const std::string& reason)
{
    throw ConvertException(fileName.c_str(), reason.c_str());
}

bool readParts(const std::string& text, TravelChoice& choice)
{
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');)
    {
        if (word == "yaw")
        {
            choice.m_bYaw = true;
            continue;
        }
        if (word.empty() || word.find_first_not_of("xyz") != std::string::npos)
        {
            return false;
        }
        choice.m_bX |= word.find('x') != std::string::npos;
        choice.m_bY |= word.find('y') != std::string::npos;
        choice.m_bZ |= word.find('z') != std::string::npos;
    }
    return choice.m_bX || choice.m_bY || choice.m_bZ || choice.m_bYaw;
}

/// The turn about y that brings the axes of `from` as near to those of `to` as such a turn can.
Matrixd makeYaw(const Matrixd& from, const Matrixd& to)
{
    double cosine = 0.0;
    double sine = 0.0;
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d a = from.getRow(row).normalized();
        const Vector3d b = to.getRow(row).normalized();
        cosine += a.x * b.x + a.z * b.z;
        sine += a.z * b.x - a.x * b.z;
    }
    const double length = std::hypot(cosine, sine);
    Matrixd yaw;
    if (length > 0.0)
    {
        yaw.setRow(0, {cosine / length, 0.0, -sine / length});
        yaw.setRow(2, {sine / length, 0.0, cosine / length});
    }
    return yaw;
}

/// A node of a clip, in the space of the object that travels.
class StandingNode : public NodeMotion
{
public:
    StandingNode(std::shared_ptr<const Travel> travel, std::size_t node) : m_pTravel(std::move(travel)), m_uiNode(node)
    {
        const Clip& clip = m_pTravel->getClip();
        for (const Channel& channel : clip.m_vecChannels)
        {
            const auto& path = m_pTravel->getPath();
            if (channel.m_iNode == static_cast<int>(node) ||
                std::find(path.begin(), path.end(), channel.m_iNode) != path.end())
            {
                addKeyTimes(channel, m_vecTimes);
                for (const double jump : m_pTravel->getSampler().findJumps(static_cast<std::size_t>(channel.m_iNode)))
                {
                    m_vecJumps.push_back(jump + clip.m_dStart);
                }
            }
        }
    }
    [[nodiscard]] Matrixd at(double time) const override
    {
        const double seconds = time - m_pTravel->getClip().m_dStart;
        const Model& model = m_pTravel->getModel();
        const int parent = model.m_vecNodes[m_uiNode].m_iParent;
        const Matrixd local = m_pTravel->getSampler().sample(m_uiNode, seconds);
        const Matrixd back = m_pTravel->at(seconds).inverse();
        if (parent < 0)
        {
            return local * back * m_pTravel->getClip().m_root.value_or(model.m_root).inverse();
        }
        const Matrixd above = m_pTravel->getWorld(parent, seconds);
        return local * above * back * above.inverse();
    }
    void addTimes(std::vector<double>& times) const override
    {
        times.insert(times.end(), m_vecTimes.begin(), m_vecTimes.end());
    }
    void addJumps(std::vector<double>& jumps) const override
    {
        jumps.insert(jumps.end(), m_vecJumps.begin(), m_vecJumps.end());
    }

private:
    std::shared_ptr<const Travel> m_pTravel;
    std::size_t m_uiNode;
    std::vector<double> m_vecTimes;
    std::vector<double> m_vecJumps;
};

/// Per node: whether it, or anything below it, is moved or shown.
std::vector<bool> findSeen(const Travel& travel)
{
    const Model& model = travel.getModel();
    std::vector<bool> seen(model.m_vecNodes.size(), false);
    for (std::size_t i = 0; i < seen.size(); ++i)
    {
        seen[i] = travel.getSampler().isMoved(i) || !model.m_vecNodes[i].m_vecMeshes.empty();
    }
    for (const Mesh& mesh : model.m_vecMeshes)
    {
        for (const Bone& bone : mesh.m_vecBones)
        {
            seen[static_cast<std::size_t>(bone.m_iNode)] = true;
        }
    }
    for (std::size_t i = seen.size(); i-- > 0;)
    {
        if (seen[i] && model.m_vecNodes[i].m_iParent >= 0)
        {
            seen[static_cast<std::size_t>(model.m_vecNodes[i].m_iParent)] = true;
        }
    }
    return seen;
}
}  // namespace

TravelChoice chooseTravel(const Model& model, const std::string& text, const std::string& fileName)
{
    TravelChoice choice;
    const std::size_t colon = text.rfind(':');
    const std::string before = text.substr(0, colon);
    const bool parts = colon != std::string::npos && !isNamed(model, text) && findNode(model, before) >= 0;
    if (!parts)
    {
        choice.m_bX = choice.m_bZ = choice.m_bYaw = true;
    }
    else if (!readParts(text.substr(colon + 1), choice))
    {
        fail(fileName, "root motion \"" + text + "\": expected parts such as \"xz,yaw\" behind the colon, not \"" +
                           text.substr(colon + 1) + "\"");
    }
    const int node = findNode(model, parts ? before : text);
    if (node < 0)
    {
        fail(fileName,
             "has no node \"" + before +
                 "\" whose motion could be travel; the topmost nodes that its clips move: " + listMoved(model));
    }
    choice.m_uiNode = static_cast<std::size_t>(node);
    return choice;
}

Travel::Travel(const Model& model, const Clip& clip, const TravelChoice& choice)
    : m_model(model), m_clip(clip), m_sampler(model, m_clip), m_choice(choice)
{
    for (int node = static_cast<int>(choice.m_uiNode); node >= 0;
         node = model.m_vecNodes[static_cast<std::size_t>(node)].m_iParent)
    {
        m_vecPath.push_back(node);
    }
    m_first = getWorld(m_vecPath.front(), 0.0);
}

Matrixd Travel::getWorld(int node, double seconds) const
{
    Matrixd world;
    for (; node >= 0; node = m_model.m_vecNodes[static_cast<std::size_t>(node)].m_iParent)
    {
        world = world * m_sampler.sample(static_cast<std::size_t>(node), seconds);
    }
    return world;
}

Matrixd Travel::at(double seconds) const
{
    const Matrixd now = getWorld(m_vecPath.front(), seconds);
    const Vector3d from = m_first.getTranslation();
    const Vector3d way = now.getTranslation() - from;
    Matrixd travel = m_choice.m_bYaw ? makeYaw(m_first, now) : Matrixd();
    const Vector3d taken(m_choice.m_bX ? way.x : 0.0, m_choice.m_bY ? way.y : 0.0, m_choice.m_bZ ? way.z : 0.0);
    travel.setTranslation(from - travel.transformPoint(from) + taken);
    return travel;
}

Matrixd Travel::at(double seconds, double step) const
{
    const double end = m_clip.m_dDuration;
    if (seconds <= end)
    {
        return at(seconds);
    }
    const double begin = std::max(end - step, 0.0);
    return at(begin + (seconds - end)) * at(begin).inverse() * at(end);
}

bool Travel::isFartherThan(double distance, double degrees) const
{
    constexpr int perSecond = 30;
    const int samples = std::clamp(static_cast<int>(m_clip.m_dDuration * perSecond), 1, 1 << 20);
    const double cosine = std::cos(degrees * std::numbers::pi / 180.0);
    for (int i = 1; i <= samples; ++i)
    {
        const double seconds = m_clip.m_dDuration * i / samples;
        const Matrixd place = at(seconds);
        const Vector3d way =
            getWorld(m_vecPath.front(), 0.0).getTranslation() - place.transformPoint(m_first.getTranslation());
        if (way.length() > distance || place.getRow(0).x < cosine)
        {
            return true;
        }
    }
    return false;
}

Clip makeStandingClip(const std::shared_ptr<const Travel>& travel)
{
    const Model& model = travel->getModel();
    const std::vector<int>& path = travel->getPath();
    const auto isAbove = [&path](int node) { return std::find(path.begin() + 1, path.end(), node) != path.end(); };
    const std::vector<bool> seen = findSeen(*travel);
    std::set<int> changed;
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        const auto node = static_cast<int>(i);
        const int parent = model.m_vecNodes[i].m_iParent;
        if (!isAbove(node) && (parent < 0 || isAbove(parent)) && (seen[i] || node == path.front()))
        {
            changed.insert(node);
        }
    }
    Clip clip = travel->getClip();
    std::erase_if(clip.m_vecChannels, [&changed](const Channel& channel) { return changed.contains(channel.m_iNode); });
    for (const int node : changed)
    {
        Channel channel;
        channel.m_iNode = node;
        channel.m_pMotion = std::make_shared<StandingNode>(travel, static_cast<std::size_t>(node));
        clip.m_vecChannels.push_back(std::move(channel));
    }
    return clip;
}
}  // namespace TW2::convert
