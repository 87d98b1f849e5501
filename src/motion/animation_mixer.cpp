#include "motion/mixer_parts.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/str.h>

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
// What a host gives as numbers; what is not a number is 0.
double takeWeight(float weight) noexcept
{
    return std::min(std::max(0.0, static_cast<double>(weight)), heaviestWeight);
}

double takeShare(float weight) noexcept
{
    return std::min(std::max(0.0, static_cast<double>(weight)), 1.0);
}

double takeSpeed(float speed) noexcept
{
    return std::isfinite(speed) ? static_cast<double>(speed) : 0.0;
}
}  // namespace

TW_AnimationMixer::TW_AnimationMixer(TW_VirtualObject& object, unsigned int places) : m_pObject(&object)
{
    m_vecPlays.reserve(std::max(places, 1U));
    m_vecLayers.emplace_back();
}

TW_AnimationMixer::~TW_AnimationMixer() = default;

// ---------------------------------------------------------------------------------------------------------------------
// Layers
// ---------------------------------------------------------------------------------------------------------------------

int TW_AnimationMixer::addMask(const TW_BoneMask& mask)
{
    mask.checkFits(*m_pObject);
    m_vecBelow.resize(std::max(countBones(), m_vecBelow.size()));
    m_vecMasks.emplace_back(*m_pObject, mask);
    return static_cast<int>(m_vecMasks.size()) - 1;
}

int TW_AnimationMixer::addLayer(const TW_LayerOptions& options)
{
    checkMask(options.mask);
    Layer layer;
    layer.m_bAdditive = options.additive;
    layer.m_dWeight = takeShare(options.weight);
    layer.m_iMask = options.mask;
    layer.m_dReferenceTime = static_cast<double>(options.referenceTime);
    if (options.reference)
    {
        layer.m_bOwnReference = false;
        layer.m_iReference = m_pObject->findAnimation(options.reference);
    }
    m_vecBelow.resize(std::max(countBones(), m_vecBelow.size()));
    m_vecAdded.resize(options.additive ? std::max(countBones(), m_vecAdded.size()) : m_vecAdded.size());
    m_vecLayers.push_back(layer);
    return static_cast<int>(m_vecLayers.size()) - 1;
}

// Of the part that has most.
std::size_t TW_AnimationMixer::countBones() const
{
    std::size_t bones = 0;
    for (unsigned int i = 0; const TW_ObjectAnimation* part = m_pObject->getPlayedObject(i); ++i)
    {
        bones = std::max<std::size_t>(bones, part->getTotalMeshes());
    }
    return bones;
}

bool TW_AnimationMixer::hasLayer(int layer) const noexcept
{
    return layer >= 0 && static_cast<std::size_t>(layer) < m_vecLayers.size();
}

void TW_AnimationMixer::setLayerWeight(int layer, float weight) noexcept
{
    if (hasLayer(layer) && layer > 0)
    {
        m_vecLayers[static_cast<std::size_t>(layer)].m_dWeight = takeShare(weight);
    }
}

float TW_AnimationMixer::getLayerWeight(int layer) const noexcept
{
    return hasLayer(layer) ? static_cast<float>(m_vecLayers[static_cast<std::size_t>(layer)].m_dWeight) : 0.0F;
}

void TW_AnimationMixer::checkMask(int mask) const
{
    if (mask < -1 || mask >= static_cast<int>(m_vecMasks.size()))
    {
        throw TW_Exception_InvalidMotion(m_pObject->getName().c_str(),
                                         S_STR("expected a mask number from 0 to %d, or -1 for none, not %d",
                                               static_cast<int>(m_vecMasks.size()) - 1, mask));
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Playing
// ---------------------------------------------------------------------------------------------------------------------

const TW_AnimationMixer::Play* TW_AnimationMixer::find(PlayId play) const noexcept
{
    const auto found =
        std::find_if(m_vecPlays.begin(), m_vecPlays.end(), [play](const Play& p) { return p.m_uiId == play; });
    return found == m_vecPlays.end() ? nullptr : &*found;
}

TW_AnimationMixer::Play* TW_AnimationMixer::find(PlayId play) noexcept
{
    return const_cast<Play*>(static_cast<const TW_AnimationMixer&>(*this).find(play));
}

void TW_AnimationMixer::check(const TW_PlayOptions& options) const
{
    checkMask(options.mask);
    if (!hasLayer(options.layer))
    {
        throw TW_Exception_InvalidMotion(m_pObject->getName().c_str(),
                                         S_STR("expected a layer number from 0 to %d, not %d",
                                               static_cast<int>(m_vecLayers.size()) - 1, options.layer));
    }
}

TW_AnimationMixer::PlayId TW_AnimationMixer::play(const char* name, const TW_PlayOptions& options)
{
    return play(m_pObject->findAnimation(name), options);
}

TW_AnimationMixer::PlayId TW_AnimationMixer::play(int index, const TW_PlayOptions& options)
{
    check(options);
    const TW_ObjectAnimation* const first = m_pObject->getPlayedObject(0);
    if (!first || !first->getAnimation(index))
    {
        return 0;
    }
    Play play;
    play.m_uiId = m_uiNextId++;
    play.m_iAnimation = index;
    play.m_iLayer = options.layer;
    play.m_iMask = options.mask;
    play.m_iSync = options.sync;
    play.m_iLoops = std::max(options.loops, 0);
    play.m_dSpeed = takeSpeed(options.speed);
    play.m_dFadeOut = static_cast<double>(options.fadeOut);
    look(play);
    play.m_moment = findMoment(play.m_course,
                               static_cast<double>(options.start) * static_cast<double>(first->getAnimationFPS(index)),
                               play.m_iLoops);
    startInPhase(play);
    if (!options.keepOthers && !m_vecLayers[static_cast<std::size_t>(options.layer)].m_bAdditive)
    {
        fadeOthers(play, options.fade);
    }
    play.fadeTo(takeWeight(options.weight), static_cast<double>(options.fade));
    return (takePlace() = play).m_uiId;
}

// What follows from what is saved.
void TW_AnimationMixer::look(Play& play) const
{
    const TW_ObjectAnimation* const first = m_pObject->getPlayedObject(0);
    const TW_ObjectAnimation::ObjectAnimation* const record = first ? first->getAnimation(play.m_iAnimation) : nullptr;
    play.m_pDescription = record ? record->m_pDescription : nullptr;
    play.m_course = m_pObject->getAnimationCourse(play.m_iAnimation);
    play.m_rootMotion = TW_RootMotion(*m_pObject, play.m_iAnimation);
    play.m_step = {play.m_course, play.m_moment, 0.0, play.m_iLoops, false};
    play.m_events = TW_EventIterator();
    play.m_pEvent = nullptr;
}

void TW_AnimationMixer::startInPhase(Play& play) const noexcept
{
    const Play* leader = nullptr;
    for (const Play& other : m_vecPlays)
    {
        if (other.m_iSync == play.m_iSync && other.isSynchronized() && (!leader || other.m_dWeight > leader->m_dWeight))
        {
            leader = &other;
        }
    }
    if (leader && play.isSynchronized())
    {
        const double into = std::max(0.0, leader->m_moment.m_dFrame - leader->m_course.m_dLoopToFrame);
        play.m_moment = {play.m_course.m_dLoopToFrame + into / leader->getSpan() * play.getSpan(), 0};
    }
}

void TW_AnimationMixer::fadeOthers(const Play& play, float fade) noexcept
{
    for (Play& other : m_vecPlays)
    {
        if (other.m_uiId != play.m_uiId && other.isBlendedWith(play))
        {
            other.fadeTo(0.0, static_cast<double>(fade));
            other.m_bLeaving = true;
        }
    }
}

// The place of something new, at the end of the list.
TW_AnimationMixer::Play& TW_AnimationMixer::takePlace() noexcept
{
    if (m_vecPlays.size() == m_vecPlays.capacity())
    {
        const auto lightest =
            std::min_element(m_vecPlays.begin(), m_vecPlays.end(),
                             [](const Play& a, const Play& b)
                             { return a.m_bLeaving != b.m_bLeaving ? a.m_bLeaving : a.m_dWeight < b.m_dWeight; });
        m_vecPlays.erase(lightest);
    }
    return m_vecPlays.emplace_back();
}

TW_AnimationMixer::PlayId TW_AnimationMixer::crossFade(const char* name, const TW_PlayOptions& options)
{
    const int index = m_pObject->findAnimation(name);
    Play* known = nullptr;
    for (Play& play : m_vecPlays)
    {
        if (play.m_iAnimation == index && play.m_iLayer == options.layer && play.m_iMask == options.mask &&
            (!known || known->m_bLeaving || !play.m_bLeaving))
        {
            known = &play;
        }
    }
    if (!known)
    {
        return play(index, options);
    }
    const auto weight = takeWeight(options.weight);
    if (!known->m_bLeaving && known->m_dTarget == weight)
    {
        return known->m_uiId;
    }
    if (!options.keepOthers && !m_vecLayers[static_cast<std::size_t>(options.layer)].m_bAdditive)
    {
        fadeOthers(*known, options.fade);
    }
    known->m_bLeaving = false;
    known->fadeTo(weight, static_cast<double>(options.fade));
    return known->m_uiId;
}

void TW_AnimationMixer::stop(PlayId play, float fade) noexcept
{
    if (Play* const found = find(play))
    {
        found->fadeTo(0.0, static_cast<double>(fade));
        found->m_bLeaving = true;
    }
}

void TW_AnimationMixer::stopLayer(int layer, float fade) noexcept
{
    for (const Play& play : m_vecPlays)
    {
        if (play.m_iLayer == layer)
        {
            stop(play.m_uiId, fade);
        }
    }
}

void TW_AnimationMixer::setWeight(PlayId play, float weight, float fade) noexcept
{
    if (Play* const found = find(play))
    {
        const double target = takeWeight(weight);
        found->fadeTo(target, static_cast<double>(fade));
        found->m_bLeaving = found->m_bLeaving && target == 0.0;
    }
}

void TW_AnimationMixer::setSpeed(PlayId play, float speed) noexcept
{
    if (Play* const found = find(play))
    {
        found->m_dSpeed = takeSpeed(speed);
    }
}

void TW_AnimationMixer::seek(PlayId play, float seconds) noexcept
{
    if (Play* const found = find(play))
    {
        const double frames =
            static_cast<double>(seconds) * static_cast<double>(m_pObject->getAnimationFPS(found->m_iAnimation));
        found->m_moment = findMoment(found->m_course, frames, found->m_iLoops);
        found->m_bFresh = found->m_bFinished = false;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// A step
// ---------------------------------------------------------------------------------------------------------------------

void TW_AnimationMixer::update(double seconds)
{
    const double step = std::isfinite(seconds) && seconds > 0.0 ? seconds : 0.0;
    dropWhatIsOver();
    fadeAll(step);
    moveClocks(step);
    fadeOutAtEnds();
    share();
    findTravel();
    pose();
}

// Also what the object does not have any more; what it has exchanged is looked at again.
void TW_AnimationMixer::dropWhatIsOver()
{
    const TW_ObjectAnimation* const first = m_pObject->getPlayedObject(0);
    const auto findRecord = [first](const Play& play)
    { return first ? first->getAnimation(play.m_iAnimation) : nullptr; };
    bool isAnyOver = false;
    for (Play& play : m_vecPlays)
    {
        const TW_ObjectAnimation::ObjectAnimation* const record = findRecord(play);
        if (!record || play.isFadedOut())
        {
            isAnyOver = true;
        }
        else if (record->m_pDescription != play.m_pDescription)
        {
            look(play);
        }
    }
    if (isAnyOver)
    {
        m_vecPlays.erase(
            std::remove_if(m_vecPlays.begin(), m_vecPlays.end(),
                           [&findRecord](const Play& play) { return play.isFadedOut() || !findRecord(play); }),
            m_vecPlays.end());
    }
}

void TW_AnimationMixer::fadeAll(double seconds) noexcept
{
    for (Play& play : m_vecPlays)
    {
        if (play.m_dFadeLeft <= seconds)
        {
            play.m_dWeight = play.m_dTarget;
            play.m_dFadeLeft = 0.0;
            continue;
        }
        play.m_dWeight += (play.m_dTarget - play.m_dWeight) * (seconds / play.m_dFadeLeft);
        play.m_dFadeLeft -= seconds;
    }
}

// Frames per second; of what is in phase with others the rounds per second of all of them, by weight.
double TW_AnimationMixer::getRate(const Play& play) const noexcept
{
    const auto own = [this](const Play& p)
    { return p.m_dSpeed * static_cast<double>(m_pObject->getAnimationFPS(p.m_iAnimation)); };
    if (!play.isSynchronized())
    {
        return own(play);
    }
    double rounds = 0.0;
    double weights = 0.0;
    for (const Play& other : m_vecPlays)
    {
        if (other.m_iSync == play.m_iSync && other.isSynchronized())
        {
            rounds += other.m_dWeight * own(other) / other.getSpan();
            weights += other.m_dWeight;
        }
    }
    return weights > 0.0 ? rounds / weights * play.getSpan() : own(play);
}

void TW_AnimationMixer::moveClocks(double seconds) noexcept
{
    for (Play& play : m_vecPlays)
    {
        const double frames = getRate(play) * seconds;
        play.m_step = {play.m_course, play.m_moment, std::isfinite(frames) ? frames : 0.0, play.m_iLoops,
                       play.m_bFresh};
        play.m_dStepSeconds = seconds;
        play.m_bFresh = false;
        TW_ClockWalk walk(play.m_step);
        walk.finish();
        play.m_moment = walk.getMoment();
        play.m_bFinished = walk.isFinished() || (play.m_bFinished && frames == 0.0);
        play.findEvents(m_pObject->getAnimationEvents(play.m_iAnimation));
    }
}

void TW_AnimationMixer::fadeOutAtEnds() noexcept
{
    for (Play& play : m_vecPlays)
    {
        const bool ends = !play.m_course.m_bLooping || play.m_iLoops > 0;
        if (play.m_dFadeOut < 0.0 || play.m_bLeaving || !ends)
        {
            continue;
        }
        const bool backward = play.m_dSpeed < 0.0;
        const double begin = play.m_moment.m_iLoop > 0 ? play.m_course.m_dLoopToFrame : 0.0;
        double frames = backward ? play.m_moment.m_dFrame - begin : play.m_course.m_dEndFrame - play.m_moment.m_dFrame;
        if (play.m_course.m_bLooping)
        {
            const long long more =
                backward ? play.m_moment.m_iLoop + play.m_iLoops : play.m_iLoops - 1 - play.m_moment.m_iLoop;
            frames += static_cast<double>(std::max(more, 0LL)) * play.getSpan();
        }
        const double rate =
            std::abs(play.m_dSpeed) * static_cast<double>(m_pObject->getAnimationFPS(play.m_iAnimation));
        const double left = rate > 0.0 ? frames / rate : 0.0;
        if (play.m_bFinished || (rate > 0.0 && left <= play.m_dFadeOut))
        {
            play.fadeTo(0.0, left);
            play.m_bLeaving = true;
        }
    }
}

// Shares within what is blended together, and in the pose.
void TW_AnimationMixer::share() noexcept
{
    for (Play& play : m_vecPlays)
    {
        double sum = 0.0;
        for (const Play& other : m_vecPlays)
        {
            sum += other.isBlendedWith(play) ? other.m_dWeight : 0.0;
        }
        const Layer& layer = m_vecLayers[static_cast<std::size_t>(play.m_iLayer)];
        const bool base = play.m_iLayer == 0 && play.m_iMask < 0;
        play.m_dShare = layer.m_bAdditive ? play.m_dWeight : sum > 0.0 ? play.m_dWeight / sum : 0.0;
        const double whole = layer.m_bAdditive || base ? 1.0 : std::min(sum, 1.0);
        play.m_dPoseWeight = play.m_dShare * whole * layer.m_dWeight;
    }
}

void TW_AnimationMixer::findTravel()
{
    m_travel = {};
    TW_Rotation sum{0.0, {}};
    double standing = 1.0;
    for (const Play& play : m_vecPlays)
    {
        if (play.m_iLayer != 0 || play.m_iMask >= 0 || play.m_dShare <= 0.0 || !play.m_rootMotion.isMoving())
        {
            continue;
        }
        const TW_Travel travel = play.m_rootMotion.getTravel(play.m_step.m_from, play.m_moment);
        const double sign = travel.m_rotation.m_dW < 0.0 ? -play.m_dShare : play.m_dShare;
        sum.m_dW += travel.m_rotation.m_dW * sign;
        sum.m_vAxis += travel.m_rotation.m_vAxis * sign;
        m_travel.m_vTranslation += travel.m_vTranslation * play.m_dShare;
        standing -= play.m_dShare;
    }
    sum.m_dW += std::max(standing, 0.0);
    m_travel.m_rotation = sum.normalized();
}

bool TW_AnimationMixer::nextEvent(TW_MixerEvent& event) noexcept
{
    Play* first = nullptr;
    for (Play& play : m_vecPlays)
    {
        if (play.m_pEvent && (!first || play.m_dEventSeconds < first->m_dEventSeconds))
        {
            first = &play;
        }
    }
    if (!first)
    {
        return false;
    }
    event = {first->m_pEvent, first->m_iAnimation, first->m_uiId, static_cast<float>(first->m_dPoseWeight),
             first->m_dEventSeconds};
    first->fetchEvent();
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Asking
// ---------------------------------------------------------------------------------------------------------------------

bool TW_AnimationMixer::isFinished(PlayId play) const noexcept
{
    const Play* const found = find(play);
    return found && found->m_bFinished;
}

float TW_AnimationMixer::getWeight(PlayId play) const noexcept
{
    const Play* const found = find(play);
    return found ? static_cast<float>(found->m_dPoseWeight) : 0.0F;
}

float TW_AnimationMixer::getFrame(PlayId play) const noexcept
{
    const Play* const found = find(play);
    return found ? getPoseFrame(found->m_course, found->m_moment) : 0.0F;
}

TW_ClockMoment TW_AnimationMixer::getMoment(PlayId play) const noexcept
{
    const Play* const found = find(play);
    return found ? found->m_moment : TW_ClockMoment();
}

unsigned int TW_AnimationMixer::getPlayCount() const noexcept
{
    return static_cast<unsigned int>(m_vecPlays.size());
}

TW_AnimationMixer::PlayId TW_AnimationMixer::findPlay(const char* name, int layer) const
{
    const int index = m_pObject->findAnimation(name);
    PlayId newest = 0;
    for (const Play& play : m_vecPlays)
    {
        newest = play.m_iAnimation == index && play.m_iLayer == layer && !play.m_bLeaving ? play.m_uiId : newest;
    }
    return newest;
}
}  // namespace TW2
