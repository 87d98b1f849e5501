#include "viewer/mixer_playback.h"

#include "viewer/failure.h"
#include "viewer/find_by.h"
#include "viewer/loaded_object.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <algorithm>
#include <cmath>

namespace TW2::viewer
{
struct MixerPlayback::Kept
{
    S_Bytes m_state;
    std::vector<Layer> m_vecLayers;
    std::vector<std::string> m_vecBones;  // of the layers; empty for all
    std::vector<Play> m_vecPlays;
    std::deque<PassedEvent> m_events;
    TW_Travel m_place;
    double m_dSeconds = 0.0;
    bool m_bBackward = false;
};

MixerPlayback::MixerPlayback() = default;
MixerPlayback::~MixerPlayback() = default;

void MixerPlayback::start(LoadedObject& object, int animation, double seconds)
{
    stop();
    m_pObject = &object;
    build(animation, seconds);
}

void MixerPlayback::build(int animation, double seconds)
{
    auto mixer = std::make_unique<TW_AnimationMixer>(m_pObject->getObject());
    const unsigned int play = mixer->play(animation, {.start = static_cast<float>(seconds), .sync = 1});
    m_pMixer = std::move(mixer);
    m_vecLayers.clear();
    m_vecPlays = {{play, animation, 0, 1}};
    m_bBackward = false;
}

void MixerPlayback::stop() noexcept
{
    m_pMixer.reset();
    m_pObject = nullptr;
    m_vecLayers.clear();
    m_vecPlays.clear();
    m_events.clear();
    m_place = {};
    m_dSeconds = 0.0;
}

std::shared_ptr<const MixerPlayback::Kept> MixerPlayback::interrupt()
{
    if (!m_pMixer)
    {
        return nullptr;
    }
    auto kept = std::make_shared<Kept>();
    m_pMixer->saveState(kept->m_state);
    for (const Layer& layer : m_vecLayers)
    {
        kept->m_vecBones.push_back(
            layer.m_iBone < 0 ? "" : m_pObject->getBones()[static_cast<std::size_t>(layer.m_iBone)].m_strName);
    }
    kept->m_vecLayers = m_vecLayers;
    kept->m_vecPlays = m_vecPlays;
    kept->m_events = m_events;
    kept->m_place = m_place;
    kept->m_dSeconds = m_dSeconds;
    kept->m_bBackward = m_bBackward;
    stop();
    return kept;
}

void MixerPlayback::resume(LoadedObject& object, const Kept& kept, int animation, double seconds)
{
    start(object, animation, seconds);
    m_events = kept.m_events;
    m_place = kept.m_place;
    m_dSeconds = kept.m_dSeconds;
    m_pObject->getObject().setMatrix(m_place.toMatrix());
    const auto& bones = m_pObject->getBones();
    std::vector<Layer> layers = kept.m_vecLayers;
    for (std::size_t i = 0; i < layers.size(); ++i)
    {
        if (layers[i].m_iBone >= 0)
        {
            const auto bone = findBy(bones, kept.m_vecBones[i], &LoadedObject::Bone::m_strName);
            if (bone == bones.end())
            {
                return;
            }
            layers[i].m_iBone = static_cast<int>(bone - bones.begin());
        }
    }
    try
    {
        for (const Layer& layer : layers)
        {
            addLayer(layer);
        }
        m_pMixer->restoreState(kept.m_state);
        m_vecPlays = kept.m_vecPlays;
        m_bBackward = kept.m_bBackward;
    }
    catch (const TW_Exception_InvalidMotion&)
    {
        build(animation, seconds);  // an animation has gone, or has become shorter
    }
}

TW_AnimationMixer& MixerPlayback::needMixer() const
{
    if (!m_pMixer)
    {
        throw Failure("the mixer is off: \"mixer on\" lets it play");
    }
    return *m_pMixer;
}

void MixerPlayback::checkLayer(int layer, int first) const
{
    const auto last = static_cast<int>(m_vecLayers.size());
    if (layer < first || layer > last)
    {
        throw Failure(last < first ? "there is no layer yet: \"add-layer replace\" adds one"
                                   : "there are layers " + std::to_string(first) + " to " + std::to_string(last) +
                                         ", not " + std::to_string(layer));
    }
}

void MixerPlayback::play(int animation, int layer)
{
    TW_AnimationMixer& mixer = needMixer();
    checkLayer(layer, 0);
    TW_PlayOptions options;
    options.fade = m_fFade;
    options.layer = layer;
    options.speed = m_bBackward ? -1.0F : 1.0F;
    options.sync = layer == 0 ? chooseStep() : 0;
    // What is done once in a layer gives way when it is over; layer 0 holds its last frame.
    options.fadeOut = layer > 0 ? m_fFade : -1.0F;
    m_vecPlays.push_back({mixer.play(animation, options), animation, layer, options.sync});
}

/// The number of what is faded from, or one that nothing has.
int MixerPlayback::chooseStep() const noexcept
{
    const Play* main = findMain();
    if (m_bInStep && main)
    {
        return main->m_iStep;
    }
    int last = 0;
    for (const Play& play : m_vecPlays)
    {
        last = std::max(last, play.m_iStep);
    }
    return last + 1;
}

void MixerPlayback::fadeOut(int layer)
{
    TW_AnimationMixer& mixer = needMixer();
    checkLayer(layer, 1);
    mixer.stopLayer(layer, m_fFade);
}

void MixerPlayback::addLayer(const Layer& layer)
{
    TW_AnimationMixer& mixer = needMixer();
    TW_LayerOptions options;
    options.additive = layer.m_bAdditive;
    options.weight = std::clamp(layer.m_fWeight, 0.0F, 1.0F);
    if (layer.m_iBone >= 0)
    {
        const std::string& bone = m_pObject->getBones()[static_cast<std::size_t>(layer.m_iBone)].m_strName;
        options.mask = mixer.addMask(TW_BoneMask::below(m_pObject->getObject(), bone.c_str(), layer.m_uiFalloff));
    }
    mixer.addLayer(options);
    m_vecLayers.push_back(layer);
    m_vecLayers.back().m_fWeight = options.weight;
}

void MixerPlayback::setLayerWeight(int layer, float weight)
{
    TW_AnimationMixer& mixer = needMixer();
    checkLayer(layer, 1);
    mixer.setLayerWeight(layer, weight);
    m_vecLayers[static_cast<std::size_t>(layer) - 1].m_fWeight = mixer.getLayerWeight(layer);
}

void MixerPlayback::clearLayers()
{
    static_cast<void>(needMixer());
    const Play* main = findMain();
    build(main ? main->m_iAnimation : 0, getTime());
}

void MixerPlayback::setFade(float seconds)
{
    constexpr float longest = 10.0F;
    m_fFade = std::clamp(seconds, 0.0F, longest);
}

void MixerPlayback::update(double seconds)
{
    TW_AnimationMixer& mixer = needMixer();
    if (seconds != 0.0 && (seconds < 0.0) != m_bBackward)
    {
        m_bBackward = seconds < 0.0;
        for (const Play& play : m_vecPlays)
        {
            mixer.setSpeed(play.m_uiId, m_bBackward ? -1.0F : 1.0F);
        }
    }
    mixer.update(std::abs(seconds));
    takeEvents();
    m_dSeconds += std::abs(seconds);
    std::erase_if(m_vecPlays, [&mixer](const Play& play) { return !mixer.isPlaying(play.m_uiId); });
    if (m_bTravelling)
    {
        m_place = mixer.getTravel() * m_place;
    }
    m_pObject->getObject().setMatrix(m_place.toMatrix());
}

void MixerPlayback::takeEvents()
{
    constexpr std::size_t kept = 8;
    for (TW_MixerEvent event; m_pMixer->nextEvent(event);)
    {
        const auto clip = findBy(m_pObject->getClips(), event.animation, &Clip::m_iIndex);
        m_events.push_front({std::string(event.event->m_strName.begin(), event.event->m_strName.end()),
                             clip == m_pObject->getClips().end() ? std::string() : clip->m_strName,
                             m_dSeconds + event.seconds});
    }
    m_events.resize(std::min(m_events.size(), kept));
}

void MixerPlayback::seek(double seconds)
{
    TW_AnimationMixer& mixer = needMixer();
    for (const Play& play : m_vecPlays)
    {
        if (play.m_iLayer == 0)
        {
            mixer.seek(play.m_uiId, static_cast<float>(seconds));
        }
    }
}

const MixerPlayback::Play* MixerPlayback::findMain() const noexcept
{
    const auto main =
        std::find_if(m_vecPlays.rbegin(), m_vecPlays.rend(), [](const Play& play) { return play.m_iLayer == 0; });
    return main == m_vecPlays.rend() ? nullptr : &*main;
}

double MixerPlayback::getTime() const
{
    const Play* main = findMain();
    const auto clip =
        main ? findBy(m_pObject->getClips(), main->m_iAnimation, &Clip::m_iIndex) : m_pObject->getClips().end();
    if (!main || clip == m_pObject->getClips().end() || clip->m_fFrameRate <= 0.0F)
    {
        return 0.0;
    }
    return static_cast<double>(m_pMixer->getFrame(main->m_uiId)) / static_cast<double>(clip->m_fFrameRate);
}

std::vector<MixerPlayback::Part> MixerPlayback::getParts() const
{
    std::vector<Part> parts;
    for (const Play& play : m_vecPlays)
    {
        parts.push_back(
            {play.m_iAnimation, play.m_iLayer, m_pMixer->getWeight(play.m_uiId), m_pMixer->getFrame(play.m_uiId)});
    }
    return parts;
}

void MixerPlayback::goHome()
{
    static_cast<void>(needMixer());
    m_place = {};
    m_pObject->getObject().setMatrix(m_place.toMatrix());
}
}  // namespace TW2::viewer
