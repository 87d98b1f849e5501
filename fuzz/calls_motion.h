#pragma once

#include "fuzz/calls_pose.h"
#include "fuzz/calls_support.h"
#include "tests/support/double_matrix.h"

#include <tw2/tw2.h>

#include <platform/runtime/exception.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cmath>

namespace calls
{
/// What a host does with one object by the mixer: layers, masks, fades, states; bones that reach and look; clocks.
class MotionCalls
{
public:
    MotionCalls(TW_VirtualObject& object, Choices& choices) : m_object(object), m_choices(choices), m_mixer(object, 3)
    {
    }
    [[nodiscard]] const TW_VirtualObject& getObject() const { return m_object; }

    void step()
    {
        m_choices.callOneOf({
            [&] { m_iMasks = std::max(m_iMasks, m_mixer.addMask(makeMask()) + 1); },
            [&]
            {
                m_mixer.addLayer({m_choices.flip(), weight(), mask(), m_choices.flip() ? "moves" : nullptr, seconds()});
                ++m_iLayers;
            },
            [&] { m_mixer.setLayerWeight(layer(), weight()); },
            [&] { playOne(); },
            [&] { playOne(); },
            [&] { m_mixer.crossFade(m_object.getAnimationName(m_choices.below(3)), options()); },
            [&]
            {
                m_mixer.stop(m_uLast, seconds());
                m_mixer.stopLayer(layer(), seconds());
            },
            [&]
            {
                m_mixer.setWeight(m_uLast, weight(), seconds());
                m_mixer.setSpeed(m_uLast, m_choices.number());
                m_mixer.seek(m_uLast, seconds());
            },
            [&] { saveAndRestore(); },
            [&] { reach(); },
            [&] { runClock(); },
            [&] { update(); },
        });
    }

private:
    void playOne()
    {
        m_iLast = m_choices.below(4) - 1;
        m_last = options();
        m_uLast = m_mixer.play(m_iLast, m_last);
    }

    float weight() { return static_cast<float>(m_choices.below(5)) / 4.0F; }
    float seconds() { return m_choices.number() / 4.0F; }
    int layer() { return m_choices.below(m_iLayers + 2); }
    int mask() { return m_choices.below(m_iMasks + 2) - 1; }
    TW_PlayOptions options()
    {
        TW_PlayOptions result;
        result.fade = std::max(0.0F, seconds());
        result.speed = m_choices.number();
        result.start = seconds();
        result.loops = m_choices.below(3);
        result.layer = layer();
        result.mask = m_choices.flip() ? mask() : -1;
        result.sync = m_choices.below(3);
        result.fadeOut = seconds();
        result.weight = weight();
        result.keepOthers = m_choices.flip();
        return result;
    }
    TW_BoneMask makeMask()
    {
        switch (m_choices.below(4))
        {
            case 0:
                return TW_BoneMask::below(m_object, "bone1", static_cast<unsigned int>(m_choices.below(3)));
            case 1:
                return TW_BoneMask::matching(m_object, "*2|bone?").complement();
            case 2:
                return TW_BoneMask::movedBy(m_object, m_choices.below(3)) * TW_BoneMask(m_object, weight());
            default:
                return TW_BoneMask(m_object, weight());
        }
    }

    void update()
    {
        const long long allocations = S_Memory::sm_iNewCount;
        m_mixer.update(static_cast<double>(std::max(0.0F, seconds())));
        for (TW_MixerEvent event; m_mixer.nextEvent(event);)
        {
            require(event.weight >= 0.0F && event.weight <= 1.0001F, "an event has the weight of its animation");
        }
        require(S_Memory::sm_iNewCount == allocations, "playing allocates nothing");
        if (m_iLayers == 0 && m_last.mask == -1 && m_mixer.getPlayCount() == 1 && m_mixer.getWeight(m_uLast) == 1.0F)
        {
            comparePose(m_object, {{m_iLast, m_mixer.getFrame(m_uLast), 1.0F}});
        }
        requireFinitePose();
    }
    void requireFinitePose() const
    {
        for (unsigned int i = 0; const TW_ObjectAnimation* const part = m_object.getPlayedObject(i); ++i)
        {
            for (unsigned int mesh = 0; mesh < part->getTotalMeshes(); ++mesh)
            {
                require(support::isFinite(part->getMesh(mesh)->getMatrix()), "a pose is made of numbers");
            }
        }
    }

    void saveAndRestore()
    {
        S_Bytes first;
        m_mixer.saveState(first);
        if (m_choices.flip() && !first.empty())
        {
            S_Bytes damaged = first;
            damaged[static_cast<std::size_t>(m_choices.below(256)) % damaged.size()] ^= 0x81u;
            try
            {
                m_mixer.restoreState(damaged);
            }
            catch (const S_Exception&)
            {
            }
            update();
        }
        m_mixer.restoreState(first);
        S_Bytes second;
        m_mixer.saveState(second);
        require(first == second, "a state that is restored is the state that was saved");
    }

    void reach()
    {
        TW_BoneChain chain(m_object, "bone0", m_choices.flip() ? "bone3" : "bone1");
        const M_Vector3Template<float> target{m_choices.number(), m_choices.number(), m_choices.number()};
        m_choices.callOneOf({
            [&] { chain.reachTwoBones({.target = target, .weight = weight(), .softness = weight()}); },
            [&] { chain.aim({.target = target, .weight = weight()}); },
            [&] { chain.reach({.target = target, .weight = weight(), .iterations = 5}); },
        });
        requireFinitePose();
    }

    void runClock()
    {
        TW_AnimationClock clock(m_object, m_choices.below(3), static_cast<double>(seconds()), m_choices.below(3));
        for (int i = 0; i < 3; ++i)
        {
            clock.advance(static_cast<double>(seconds()));
            for (TW_EventIterator events = clock.getEvents(); events.next();)
            {
            }
            require(std::isfinite(clock.getFrame()), "a clock stands at a frame");
        }
        const TW_RootMotion motion(m_object, clock.getAnimation());
        require(std::isfinite(motion.getTravel(clock.getLastStep()).m_vTranslation.length()), "travel is a number");
    }

    TW_VirtualObject& m_object;
    Choices& m_choices;
    TW_AnimationMixer m_mixer;
    int m_iLayers = 0;
    int m_iMasks = 0;
    TW_AnimationMixer::PlayId m_uLast = 0;
    int m_iLast = 0;
    TW_PlayOptions m_last;
};
}  // namespace calls
