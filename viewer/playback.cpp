#include "viewer/playback.h"

#include "viewer/failure.h"
#include "viewer/find_by.h"

#include <tw2/object/bone_handle.h>
#include <tw2/object/virtual_object.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace TW2::viewer
{
namespace
{
bool isBelow(const P_BaseObject* object, const P_BaseObject* ancestor)
{
    while (object && object != ancestor)
    {
        object = object->getParent();
    }
    return object == ancestor;
}
}  // namespace

void Playback::reset(std::vector<Clip> clips)
{
    const bool playing = m_bPlaying;
    const bool looping = m_bLooping;
    const double speed = m_dSpeed;
    *this = Playback();
    m_bPlaying = playing;
    m_bLooping = looping;
    m_dSpeed = speed;
    m_vecClips = std::move(clips);
    const auto moving =
        std::find_if(m_vecClips.begin(), m_vecClips.end(), [](const Clip& clip) { return clip.m_uiFrames > 1; });
    if (!m_vecClips.empty())
    {
        setClip(moving != m_vecClips.end() ? moving->m_iIndex : m_vecClips.front().m_iIndex);
    }
}

const Clip* Playback::findClip(int animation) const noexcept
{
    const auto found = findBy(m_vecClips, animation, &Clip::m_iIndex);
    return found == m_vecClips.end() ? nullptr : &*found;
}

void Playback::setClip(int animation, bool keepTime)
{
    setSlot(0, animation, 1.0F);
    m_aSlots[1] = m_aSlots[2] = {};
    seek(keepTime ? m_dTime : 0.0);
}

void Playback::setSlot(int slot, int animation, float weight)
{
    if (slot < 0 || slot >= static_cast<int>(mostSlots))
    {
        throw Failure("a blend has slots 0 to 2, not " + std::to_string(slot));
    }
    if (animation != -1 && !findClip(animation))
    {
        throw Failure("there is no animation " + std::to_string(animation));
    }
    if (slot == 0 && animation == -1)
    {
        throw Failure("slot 0 sets the length of the loop and cannot be empty");
    }
    m_aSlots[static_cast<std::size_t>(slot)] = {animation, animation == -1 || !(weight > 0.0F) ? 0.0F : weight};
}

void Playback::setPlaying(bool playing) noexcept
{
    m_bPlaying = playing;
    const bool atEnd = m_dSpeed < 0.0 ? m_dTime <= 0.0 : m_dTime >= getPeriod();
    if (playing && !m_bLooping && atEnd)
    {
        m_dTime = m_dSpeed < 0.0 ? getPeriod() : 0.0;
    }
}

double Playback::wrap(double seconds) const noexcept
{
    const double period = getPeriod();
    if (!std::isfinite(seconds) || period <= 0.0)
    {
        return 0.0;
    }
    if (!m_bLooping)
    {
        return std::clamp(seconds, 0.0, period);
    }
    const double rest = std::fmod(seconds, period);
    return rest < 0.0 ? rest + period : rest;
}

void Playback::seek(double seconds) noexcept
{
    // The end itself can be asked for, which a loop alone never shows.
    m_dTime = seconds == getPeriod() ? seconds : wrap(seconds);
}

void Playback::step(int frames) noexcept
{
    m_bPlaying = false;
    const Clip* clip = findClip(getMainAnimation());
    if (!clip || clip->m_fFrameRate <= 0.0F || clip->m_uiFrames < 2)
    {
        return;
    }
    // A frame that is as good as reached counts as reached.
    constexpr double slack = 1e-3;
    const double frame = getFrame();
    const double whole = frames > 0 ? std::floor(frame + slack) : std::ceil(frame - slack);
    const double last = clip->m_uiFrames - 1;
    const double wanted = whole + frames;
    const double inside = m_bLooping ? std::fmod(std::fmod(wanted, last) + last, last) : std::clamp(wanted, 0.0, last);
    m_dTime = inside / static_cast<double>(clip->m_fFrameRate);
}

void Playback::setSpeed(double speed) noexcept
{
    constexpr double fastest = 10.0;
    m_dSpeed = std::isfinite(speed) ? std::clamp(speed, -fastest, fastest) : 1.0;
}

double Playback::getPeriod() const noexcept
{
    const Clip* clip = findClip(getMainAnimation());
    return clip ? clip->m_dPeriod : 0.0;
}

double Playback::getFrame() const noexcept
{
    const Clip* clip = findClip(getMainAnimation());
    return clip ? m_dTime * static_cast<double>(clip->m_fFrameRate) : 0.0;
}

void Playback::update(double seconds) noexcept
{
    if (m_bPlaying)
    {
        const double next = m_dTime + seconds * m_dSpeed;
        m_dTime = wrap(next);
        if (!m_bLooping && m_dTime != next)
        {
            m_bPlaying = false;
        }
    }
    if (m_dFadePerSecond > 0.0)
    {
        setFrozenWeight(m_fFrozenWeight - static_cast<float>(m_dFadePerSecond * seconds));
    }
}

void Playback::freeze(TW_VirtualObject& object)
{
    m_frozen.emplace(object.getTotalMeshes());
    object.freezeAnimationState(&*m_frozen, nullptr);
    m_fFrozenWeight = 1.0F;
    m_dFadePerSecond = 0.0;
}

void Playback::fadeOut(double seconds) noexcept
{
    if (!(seconds > 0.0))
    {
        setFrozenWeight(0.0F);
        return;
    }
    m_dFadePerSecond = static_cast<double>(m_fFrozenWeight) / seconds;
}

void Playback::setFrozenWeight(float weight) noexcept
{
    m_fFrozenWeight = std::clamp(weight, 0.0F, 1.0F);
    if (m_fFrozenWeight <= 0.0F)
    {
        m_frozen.reset();
        m_dFadePerSecond = 0.0;
    }
}

void Playback::setGroup(int bone, int animation)
{
    if (!findClip(animation))
    {
        throw Failure("there is no animation " + std::to_string(animation));
    }
    m_mapGroups.clear();
    m_iGroupBone = bone;
    m_iGroupAnimation = animation;
}

void Playback::clearGroup() noexcept
{
    m_mapGroups.clear();
    m_iGroupBone = -1;
}

void Playback::forgetExtras() noexcept
{
    m_aSlots[0].m_fWeight = 1.0F;
    m_aSlots[1] = m_aSlots[2] = {};
    setFrozenWeight(0.0F);
    clearGroup();
}

void Playback::apply(TW_VirtualObject& object, double offset)
{
    const auto time = static_cast<float>(getTime(offset));
    blend(object, time);
    if (m_frozen && m_fFrozenWeight > 0.0F)
    {
        if (!m_blended)
        {
            m_blended.emplace(object.getTotalMeshes());
        }
        object.freezeAnimationState(&*m_blended, nullptr);
        object.crossAnimateObject(&*m_frozen, m_fFrozenWeight, &*m_blended, nullptr);
    }
    if (m_iGroupBone >= 0)
    {
        poseGroup(object, time);
    }
}

void Playback::blend(TW_VirtualObject& object, float time)
{
    std::array<Slot, mostSlots> used;
    std::size_t count = 0;
    float sum = 0.0F;
    for (const Slot& slot : m_aSlots)
    {
        if (slot.m_iAnimation >= 0 && slot.m_fWeight > 0.0F)
        {
            used[count++] = slot;
            sum += slot.m_fWeight;
        }
    }
    if (count == 0)
    {
        object.animateObject(getMainAnimation(), time, nullptr);
    }
    else if (count == 1)
    {
        object.animateObject(used[0].m_iAnimation, time, nullptr);
    }
    else if (count == 2)
    {
        object.crossAnimateObject(used[0].m_iAnimation, time, used[0].m_fWeight / sum, used[1].m_iAnimation, time,
                                  nullptr);
    }
    else
    {
        object.crossAnimateObject(used[0].m_iAnimation, time, used[0].m_fWeight / sum, used[1].m_iAnimation, time,
                                  used[1].m_fWeight / sum, used[2].m_iAnimation, time, nullptr);
    }
}

void Playback::poseGroup(TW_VirtualObject& object, float time)
{
    auto group = m_mapGroups.find(&object);
    if (group == m_mapGroups.end())
    {
        group = m_mapGroups.emplace(&object, makeGroup(object)).first;
    }
    object.animateObject(m_iGroupAnimation, time, &group->second);
}

TW_BoneGroupHandle Playback::makeGroup(TW_VirtualObject& object) const
{
    std::vector<TW_BoneHandle> handles;
    const P_VirtualObject* top = object.getMesh(static_cast<unsigned int>(m_iGroupBone));
    for (unsigned int i = 0; top && i < object.getTotalMeshes(); ++i)
    {
        if (isBelow(object.getMesh(i), top))
        {
            handles.emplace_back(object.getMesh(i)->getName(), static_cast<int>(i));
        }
    }
    TW_BoneGroupHandle group(static_cast<int>(handles.size()), handles.data());
    group.attach(&object);
    return group;
}
}  // namespace TW2::viewer
