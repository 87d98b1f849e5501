#include "viewer/planting.h"

#include "viewer/failure.h"
#include "viewer/loaded_object.h"
#include "viewer/text.h"

#include <tw2/motion/foot_planter.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string_view>

namespace TW2::viewer
{
namespace
{
using Bones = std::vector<LoadedObject::Bone>;

int parentOf(const Bones& bones, int bone)
{
    return bone < 0 ? -1 : bones[static_cast<std::size_t>(bone)].m_iParent;
}

const std::string& nameOf(const Bones& bones, int bone)
{
    return bones[static_cast<std::size_t>(bone)].m_strName;
}

bool isCalled(const std::string& name, std::span<const std::string_view> words)
{
    const std::string small = toLower(name);
    return std::any_of(words.begin(), words.end(),
                       [&small](std::string_view word) { return small.find(word) != std::string::npos; });
}

bool isFoot(const std::string& name)
{
    constexpr std::array<std::string_view, 2> feet{"foot", "ankle"};
    // Handles that an animator pulls, beside the bones.
    constexpr std::array<std::string_view, 5> handles{"ik_", "_ik", "ctrl", "control", "target"};
    return isCalled(name, feet) && !isCalled(name, handles);
}

/// From the root down to the bone.
std::vector<int> findPath(const Bones& bones, int bone)
{
    std::vector<int> path;
    for (int i = bone; i >= 0; i = parentOf(bones, i))
    {
        path.push_back(i);
    }
    std::reverse(path.begin(), path.end());
    return path;
}

/// Why a leg cannot go from the one bone (-1: none) to the other; empty when it can.
std::string findFault(const Bones& bones, int thigh, int foot)
{
    const std::string& name = nameOf(bones, foot);
    const std::vector<int> above = findPath(bones, parentOf(bones, foot));
    if (thigh < 0)
    {
        return "\"" + name + "\" has no two bones above it, which a leg has";
    }
    if (std::find(above.begin(), above.end(), thigh) == above.end())
    {
        return "\"" + name + "\" does not hang under \"" + nameOf(bones, thigh) + "\"";
    }
    if (thigh == above.back())
    {
        return "a leg has a bone between \"" + nameOf(bones, thigh) + "\" and \"" + name + "\"";
    }
    return thigh == above.front()
               ? "\"" + nameOf(bones, thigh) + "\" hangs under no bone that could go down with its foot"
               : std::string();
}

/// The last bone that all thighs hang under.
int findPelvis(const LoadedObject& object, const std::vector<Planting::Leg>& legs)
{
    const Bones& bones = object.getBones();
    std::vector<int> common = findPath(bones, parentOf(bones, object.findBone(legs.front().m_strThigh)));
    for (const Planting::Leg& leg : legs)
    {
        const std::vector<int> path = findPath(bones, parentOf(bones, object.findBone(leg.m_strThigh)));
        common.erase(std::mismatch(common.begin(), common.end(), path.begin(), path.end()).first, common.end());
    }
    if (common.empty())
    {
        throw Failure("no bone carries all the legs, the last of them from \"" + legs.back().m_strThigh + "\" to \"" +
                      legs.back().m_strFoot + "\"");
    }
    return common.back();
}

/// How low above the object's own height each foot comes in its first animation.
std::vector<float> measureAnkles(LoadedObject& object, const std::vector<Planting::Leg>& legs)
{
    constexpr int steps = 32;
    std::vector<float> heights(legs.size(), std::numeric_limits<float>::max());
    const int animation = object.getScript().chooseAnimation();
    const unsigned int frames = animation >= 0 ? object.getSkeleton().getAnimationFrames(animation) : 1;
    for (int step = 0; step <= steps; ++step)
    {
        if (animation >= 0)
        {
            const auto frame = static_cast<float>(step) / steps * static_cast<float>(frames - 1);
            object.getObject().animateObjectFrame(animation, frame, nullptr);
        }
        const float level = object.getObject().getObjectToWorldMatrix().getTranslation().y;
        for (std::size_t leg = 0; leg < legs.size(); ++leg)
        {
            const auto foot = static_cast<unsigned int>(object.findBone(legs[leg].m_strFoot));
            const P_VirtualObject* mesh = object.getSkeleton().getMesh(foot);
            heights[leg] = std::min(heights[leg], mesh->getObjectToWorldMatrix().getTranslation().y - level);
        }
    }
    return heights;
}
}  // namespace

Planting::Planting() = default;
Planting::~Planting() = default;

std::vector<Planting::Leg> Planting::findLegs(const LoadedObject& object)
{
    static constexpr std::array<std::string_view, 6> thighs{"thigh",     "upleg",    "upperleg",
                                                            "upper_leg", "legupper", "femur"};
    const Bones& bones = object.getBones();
    std::vector<Leg> legs;
    for (std::size_t i = 0; i < bones.size(); ++i)
    {
        const std::vector<int> above = findPath(bones, bones[i].m_iParent);
        const auto isCalledFoot = [&bones](int bone) { return isFoot(nameOf(bones, bone)); };
        if (!isFoot(bones[i].m_strName) || std::any_of(above.begin(), above.end(), isCalledFoot))
        {
            continue;
        }
        const auto thigh = std::find_if(above.rbegin(), above.rend(),
                                        [&bones](int bone) { return isCalled(nameOf(bones, bone), thighs); });
        const int first = thigh == above.rend() ? parentOf(bones, bones[i].m_iParent) : *thigh;
        if (findFault(bones, first, static_cast<int>(i)).empty())
        {
            legs.push_back({nameOf(bones, first), bones[i].m_strName});
        }
    }
    return legs;
}

Planting::Leg Planting::makeLeg(const LoadedObject& object, int foot, int thigh)
{
    const Bones& bones = object.getBones();
    const int first = thigh >= 0 ? thigh : parentOf(bones, parentOf(bones, foot));
    const std::string fault = findFault(bones, first, foot);
    if (!fault.empty())
    {
        throw Failure(fault);
    }
    return {nameOf(bones, first), nameOf(bones, foot)};
}

void Planting::start(LoadedObject& object, const std::vector<Leg>& legs)
{
    if (legs.empty())
    {
        throw Failure("no bone is called foot or ankle: \"leg FOOT\" says which one stands on the ground");
    }
    const std::string pelvis = nameOf(object.getBones(), findPelvis(object, legs));
    const std::vector<float> ankles = measureAnkles(object, legs);
    std::vector<TW_Leg> given;
    for (std::size_t i = 0; i < legs.size(); ++i)
    {
        given.push_back({legs[i].m_strThigh.c_str(), legs[i].m_strFoot.c_str(), ankles[i]});
    }
    auto planter = std::make_unique<TW_FootPlanter>(object.getObject(), pelvis, given.data(), given.size());
    m_vecLegs = legs;
    m_strPelvis = pelvis;
    m_pPlanter = std::move(planter);
}

void Planting::stop() noexcept
{
    m_pPlanter.reset();
    m_vecLegs.clear();
    m_strPelvis.clear();
    m_fPelvisShift = 0.0F;
}

void Planting::setWeight(float weight) noexcept
{
    m_fWeight = std::clamp(weight, 0.0F, 1.0F);
}

void Planting::apply(const render::GroundPlane& ground)
{
    if (m_pPlanter)
    {
        m_fPelvisShift = m_pPlanter->plant(
            [&](const M_Vector3Template<float>& foot) {
                return TW_GroundPoint{ground.getHeight(foot), ground.getNormal()};
            },
            {.weight = m_fWeight});
    }
}

float Planting::getLeft(std::size_t leg) const noexcept
{
    return m_pPlanter ? m_pPlanter->getLeft(leg) : 0.0F;
}
}  // namespace TW2::viewer
