#include "viewer/command_words.h"
#include "viewer/viewer.h"

namespace TW2::viewer
{
namespace
{
using Vector = M_Vector3Template<float>;

float toFloat(const std::string& text)
{
    return static_cast<float>(toNumber(text));
}

void mix(Viewer& viewer, const Arguments& arguments)
{
    const int animation = needObject(viewer).findClip(arguments.at(0));
    const int layer = arguments.size() > 1 ? toWhole(arguments[1]) : 0;
    if (layer == 0 && viewer.getMixer().isOn())
    {
        viewer.playClip(animation);
        return;
    }
    viewer.getMixer().play(animation, layer);
}

void addLayer(Viewer& viewer, const Arguments& arguments)
{
    constexpr std::array<std::string_view, 2> kinds{"replace", "additive"};
    MixerPlayback::Layer layer;
    layer.m_bAdditive = choose(arguments.at(0), kinds) == 1;
    layer.m_iBone = arguments.size() > 1 ? needObject(viewer).findBone(arguments[1]) : -1;
    const int falloff = arguments.size() > 2 ? toWhole(arguments[2]) : 0;
    if (falloff < 0)
    {
        throw Failure("a falloff is 0 or more bones, not " + arguments[2]);
    }
    layer.m_uiFalloff = static_cast<unsigned int>(falloff);
    viewer.getMixer().addLayer(layer);
}

void reach(Viewer& viewer, const Arguments& arguments)
{
    constexpr std::array<std::string_view, 4> kinds{"none", "look", "two-bones", "chain"};
    const auto kind = static_cast<Reaching::Kind>(choose(arguments.at(0), kinds));
    if (kind == Reaching::Kind::None)
    {
        viewer.getReaching().stop();
        return;
    }
    LoadedObject& object = needObject(viewer);
    const int bone = arguments.size() > 1 ? object.findBone(arguments[1]) : viewer.getPickedBone();
    if (bone < 0)
    {
        throw Failure("pick the bone that is to look or reach, or name it");
    }
    viewer.getReaching().start(object, kind, bone, arguments.size() > 2 ? toWhole(arguments[2]) : 0);
}

void aimAt(Viewer& viewer, const Arguments& arguments)
{
    Reaching& reaching = viewer.getReaching();
    if (reaching.getKind() == Reaching::Kind::None)
    {
        throw Failure("no bone looks or reaches: \"reach look\" lets the picked one look");
    }
    if (arguments.at(0) == "eye")
    {
        reaching.setTarget(std::nullopt);
        return;
    }
    if (arguments.size() < 3)
    {
        throw Failure("it is: target X Y Z, or target eye");
    }
    reaching.setTarget(Vector{toFloat(arguments[0]), toFloat(arguments[1]), toFloat(arguments[2])});
}

void lookAlong(Viewer& viewer, const Arguments& arguments)
{
    constexpr std::array<std::string_view, 6> names{"x", "-x", "y", "-y", "z", "-z"};
    const std::size_t axis = choose(arguments.at(0), names);
    const float sign = axis % 2 == 0 ? 1.0F : -1.0F;
    viewer.getReaching().setForward(
        {axis / 2 == 0 ? sign : 0.0F, axis / 2 == 1 ? sign : 0.0F, axis / 2 == 2 ? sign : 0.0F});
}

void plant(Viewer& viewer, const Arguments& arguments)
{
    const Planting& planting = viewer.getPlanting();
    const LoadedObject& object = needObject(viewer);
    if (toSwitch(arguments, 0, planting.isOn()))
    {
        viewer.plant(planting.isOn() ? planting.getLegs() : Planting::findLegs(object));
        return;
    }
    viewer.getPlanting().stop();
}

void addLeg(Viewer& viewer, const Arguments& arguments)
{
    const LoadedObject& object = needObject(viewer);
    const int thigh = arguments.size() > 1 ? object.findBone(arguments[1]) : -1;
    const Planting::Leg leg = Planting::makeLeg(object, object.findBone(arguments.at(0)), thigh);
    std::vector<Planting::Leg> legs = viewer.getPlanting().getLegs();
    std::erase_if(legs, [&leg](const Planting::Leg& other) { return other.m_strFoot == leg.m_strFoot; });
    legs.push_back(leg);
    viewer.plant(legs);
}

const std::array s_commands{
    Command{"mixer", "[on|off]", "play by a mixer: fades, layers, events, travel", "M", "",
            [](Viewer& viewer, const Arguments& a)
            {
                static_cast<void>(needObject(viewer));
                viewer.setMixing(toSwitch(a, 0, viewer.getMixer().isOn()));
            }},
    Command{"mix", "NAME [LAYER]", "fade into an animation, in layer 0 or one above it", "", "", mix},
    Command{"unmix", "LAYER", "fade out what a layer plays", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.getMixer().fadeOut(toWhole(a.at(0))); }},
    Command{"mix-fade", "SECONDS", "how long the mixer fades, 0 to 10", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.getMixer().setFade(toFloat(a.at(0))); }},
    Command{"in-step", "[on|off]", "what is faded into keeps its steps together with what it fades from", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getMixer().setInStep(toSwitch(a, 0, viewer.getMixer().isInStep())); }},
    Command{"add-layer", "replace|additive [BONE [FALLOFF]]",
            "add a layer, for all bones or for one and what is below it", "", "", addLayer},
    Command{"layer-weight", "LAYER WEIGHT", "weight of a layer, 0 to 1", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getMixer().setLayerWeight(toWhole(a.at(0)), toFloat(a.at(1))); }},
    Command{"clear-layers", "", "take the layers away", "", "",
            [](Viewer& viewer, const Arguments&) { viewer.getMixer().clearLayers(); }},
    Command{"travel", "[on|off]", "let the mixer move the object as its animations say", "T", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getMixer().setTravelling(toSwitch(a, 0, viewer.getMixer().isTravelling())); }},
    Command{"home", "", "put the object back to where it began", "B", "",
            [](Viewer& viewer, const Arguments&)
            {
                viewer.getMixer().goHome();
                viewer.frameNext();
            }},

    Command{"reach", "none|look|two-bones|chain [BONE [BONES]]",
            "let the picked bone, or another one, look at a point or reach for it", "", "", reach},
    Command{"target", "eye|X [Y Z]", "what a bone looks at or reaches for", "", "", aimAt},
    Command{"move-target", "RIGHT UP", "move that point, in heights of the picture", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.moveTarget(toFloat(a.at(0)), toFloat(a.at(1))); }},
    Command{"forward", "x|-x|y|-y|z|-z", "the axis of a bone that it looks along", "", "", lookAlong},

    Command{"plant", "[on|off]", "put the feet on the ground: of the legs that the names of their bones tell", "G", "",
            plant},
    Command{"leg", "FOOT [THIGH]", "plant one leg more, from two bones above the foot or from another one", "", "",
            addLeg},
    Command{"plant-weight", "WEIGHT", "part of the way that feet go to the ground, 0 to 1", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.getPlanting().setWeight(toFloat(a.at(0))); }},
    Command{"slope", "DEGREES [TOWARDS]",
            "let the ground rise, -45 to 45 degrees, towards a direction: 0 to the front, 90 to +x", "", "",
            [](Viewer& viewer, const Arguments& a)
            {
                static_cast<void>(needObject(viewer));
                viewer.setSlope({toFloat(a.at(0)), a.size() > 1 ? toFloat(a[1]) : viewer.getSlope().m_fTowards});
            }},
};
}  // namespace

std::span<const Command> listMotionCommands() noexcept
{
    return s_commands;
}
}  // namespace TW2::viewer
