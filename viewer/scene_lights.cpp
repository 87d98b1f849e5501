#include "viewer/scene_lights.h"

#include <tw2/io/light_chunks.h>
#include <tw2/io/loader.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/light/directional_light_animation.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>
#include <tw2/light/spot_light_animation.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/directional_light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/scene.h>
#include <platform/scene/spot_light.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <utility>

namespace TW2::viewer
{
/// One light of the file.
struct SceneLights::Lamp
{
    virtual ~Lamp() = default;
    virtual P_Light& getLight() = 0;
    virtual void animate(float seconds) = 0;
    [[nodiscard]] virtual bool isAnimated() const = 0;

    S_String m_strParent;
};

namespace
{
void setRecord(P_Light& light, const NodeChunk& record, const G_FColor& color, float brightness)
{
    light.setName(record.name);
    light.setMatrix(record.transform);
    light.setColor(color * brightness);
}
}  // namespace

/// Collects lights and their animations while a file is walked.
class SceneLights::Reader : public TW_LightCallback
{
public:
    void operator()(const SpotLightAnimationChunk& animation) override { m_vecSpots.emplace_back(animation); }
    void operator()(const DirectionalLightAnimationChunk& animation) override { m_vecSuns.emplace_back(animation); }
    void operator()(const PointLightAnimationChunk& animation) override { m_vecPoints.emplace_back(animation); }
    void operator()(const SpotLightChunk& record) override
    {
        auto lamp = add<P_SpotLight, TW_SpotLightAnimation>(record);
        lamp->m_light.setFalloffRange(record.fallOff);
        lamp->m_light.setFalloffAngle(record.fallOffAngle, record.hotSpotAngle);
    }
    void operator()(const DirectionalLightChunk& record) override
    {
        add<P_DirectionalLight, TW_DirectionalLightAnimation>(record);
    }
    void operator()(const PointLightChunk& record) override
    {
        add<P_PointLight, TW_PointLightAnimation>(record)->m_light.setFalloffRange(record.fallOff);
    }

    /// The lights, each with the animation that names it: animations may stand before or behind their lights.
    std::vector<std::unique_ptr<Lamp>> finish()
    {
        for (const std::unique_ptr<Lamp>& lamp : m_vecLamps)
        {
            give(*lamp, m_vecSpots);
            give(*lamp, m_vecSuns);
            give(*lamp, m_vecPoints);
        }
        return std::move(m_vecLamps);
    }

private:
    template <typename Light, typename Animation>
    struct LampOf : Lamp
    {
        P_Light& getLight() override { return m_light; }
        [[nodiscard]] bool isAnimated() const override { return m_animation.isConstructed(); }
        void animate(float seconds) override
        {
            if (isAnimated())
            {
                m_animation.animate(&m_light, seconds);
            }
        }

        Light m_light;
        Animation m_animation;
    };
    template <typename Light, typename Animation>
    friend struct LampOf;

    template <typename Light, typename Animation, typename Record>
    LampOf<Light, Animation>* add(const Record& record)
    {
        auto lamp = std::make_unique<LampOf<Light, Animation>>();
        LampOf<Light, Animation>* const added = lamp.get();
        setRecord(added->m_light, record, record.color, record.brightness);
        added->m_strParent = record.hasParent ? record.parentName : S_String();
        m_vecLamps.push_back(std::move(lamp));
        return added;
    }

    template <typename Animation>
    static void give(Lamp& lamp, const std::vector<Animation>& animations)
    {
        const auto found = std::find_if(animations.begin(), animations.end(),
                                        [&lamp](const Animation& animation)
                                        { return animation.getAnimationTargetName() == lamp.getLight().getName(); });
        if (found == animations.end())
        {
            return;
        }
        const auto giveTo = [&found](auto* owner)
        {
            if (owner)
            {
                owner->m_animation = *found;
            }
        };
        if constexpr (std::is_same_v<Animation, TW_SpotLightAnimation>)
        {
            giveTo(dynamic_cast<LampOf<P_SpotLight, Animation>*>(&lamp));
        }
        else if constexpr (std::is_same_v<Animation, TW_PointLightAnimation>)
        {
            giveTo(dynamic_cast<LampOf<P_PointLight, Animation>*>(&lamp));
        }
        else
        {
            giveTo(dynamic_cast<LampOf<P_DirectionalLight, Animation>*>(&lamp));
        }
    }

    std::vector<std::unique_ptr<Lamp>> m_vecLamps;
    std::vector<TW_SpotLightAnimation> m_vecSpots;
    std::vector<TW_DirectionalLightAnimation> m_vecSuns;
    std::vector<TW_PointLightAnimation> m_vecPoints;
};

SceneLights::SceneLights() = default;
SceneLights::~SceneLights() = default;

void SceneLights::load(const std::vector<std::string>& geometryFiles, TW_ObjectAnimation& object, P_Scene& scene)
{
    clear();
    Reader reader;
    struct CallbackGuard
    {
        CallbackGuard() { TW_Loader::pushState(); }
        ~CallbackGuard() { TW_Loader::popState(); }
        CallbackGuard(const CallbackGuard&) = delete;
        CallbackGuard& operator=(const CallbackGuard&) = delete;
    };
    const CallbackGuard guard;
    TW_Loader::clearAll();
    TW_Loader::setLightCallback(&reader);
    for (const std::string& file : geometryFiles)
    {
        TW_Loader::load(file, true);
    }
    m_vecLamps = reader.finish();
    for (const std::unique_ptr<Lamp>& lamp : m_vecLamps)
    {
        P_VirtualObject* const parent =
            lamp->m_strParent.empty() ? nullptr : object.getMeshByNameCaseSensitive(lamp->m_strParent);
        lamp->getLight().addTo(parent ? static_cast<P_ObjectContainer*>(parent) : &scene);
    }
}

void SceneLights::clear() noexcept
{
    m_vecLamps.clear();
}

std::size_t SceneLights::getCount() const noexcept
{
    return m_vecLamps.size();
}

bool SceneLights::isAnimated() const noexcept
{
    return std::any_of(m_vecLamps.begin(), m_vecLamps.end(), [](const auto& lamp) { return lamp->isAnimated(); });
}

void SceneLights::enable(bool enabled)
{
    for (const std::unique_ptr<Lamp>& lamp : m_vecLamps)
    {
        lamp->getLight().enable(enabled);
    }
}

void SceneLights::animate(float seconds)
{
    for (const std::unique_ptr<Lamp>& lamp : m_vecLamps)
    {
        lamp->animate(seconds);
    }
}
}  // namespace TW2::viewer
