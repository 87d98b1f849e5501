#include "viewer/window/motion_panel.h"

#include "viewer/viewer.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace TW2::viewer
{
namespace
{
const std::string& nameOf(const Viewer& viewer, int bone)
{
    return viewer.getObject()->getBones()[static_cast<std::size_t>(bone)].m_strName;
}

/// What plays, with its share of the pose as a bar.
void drawParts(const Viewer& viewer)
{
    for (const MixerPlayback::Part& part : viewer.getMixer().getParts())
    {
        std::array<char, 128> text{};
        std::snprintf(text.data(), text.size(), "%s  %.0f %%", getClipName(viewer, part.m_iAnimation),
                      100.0 * static_cast<double>(part.m_fWeight));
        ImGui::ProgressBar(part.m_fWeight, {-1.0F, 0.0F}, text.data());
    }
}

void drawEvents(const Viewer& viewer)
{
    for (const MixerPlayback::PassedEvent& event : viewer.getMixer().getEvents())
    {
        ImGui::Text("%7.2f s  %s", event.m_dSeconds, event.m_strName.c_str());
        if (ImGui::IsItemHovered())
        {
            ImGui::SetTooltip("of %s", event.m_strAnimation.c_str());
        }
    }
}

/// One of the six axes, as the command says it.
std::size_t findAxis(const M_Vector3Template<float>& forward)
{
    const std::array<float, 3> values{forward.x, forward.y, forward.z};
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        if (std::abs(values[i]) > 0.5F)
        {
            return 2 * i + (values[i] < 0.0F ? 1 : 0);
        }
    }
    return 4;
}

/// A part of the panel, which unfolds itself when a key or a command has turned on what it is about.
bool beginPart(const char* label, bool on, bool& wasOn)
{
    if (on && !std::exchange(wasOn, on))
    {
        ImGui::SetNextItemOpen(true);
    }
    wasOn = on;
    return ImGui::CollapsingHeader(label);
}

/// Feet on a slope, and the slope.
void drawGround(const Viewer& viewer, Requests& requests)
{
    const Planting& planting = viewer.getPlanting();
    checkbox("feet on the ground (G)", "plant", planting.isOn(), requests);
    float degrees = viewer.getSlope().m_fDegrees;
    if (ImGui::SliderFloat("ground rises", &degrees, -30.0F, 30.0F, "%.0f degrees"))
    {
        requests.ask("slope " + toWord(degrees));
    }
    float towards = viewer.getSlope().m_fTowards;
    if (ImGui::SliderFloat("towards", &towards, 0.0F, 360.0F, "%.0f degrees"))
    {
        requests.ask("slope " + toWord(degrees) + " " + toWord(towards));
    }
    if (planting.isOn())
    {
        float weight = planting.getWeight();
        if (ImGui::SliderFloat("weight", &weight, 0.0F, 1.0F, "%.2f"))
        {
            requests.ask("plant-weight " + toWord(weight));
        }
        for (std::size_t i = 0; i < planting.getLegs().size(); ++i)
        {
            const Planting::Leg& leg = planting.getLegs()[i];
            ImGui::TextWrapped("%s to %s: off by %.3f", leg.m_strThigh.c_str(), leg.m_strFoot.c_str(),
                               static_cast<double>(planting.getLeft(i)));
        }
        ImGui::TextWrapped("%s: moved by %.3f", planting.getPelvis().c_str(),
                           static_cast<double>(planting.getPelvisShift()));
    }
    const int bone = viewer.getPickedBone();
    if (bone >= 0)
    {
        button(("Plant " + nameOf(viewer, bone)).c_str(), "leg " + std::to_string(bone), requests);
    }
}
}  // namespace

void MotionPanel::draw(Viewer& viewer, Requests& requests)
{
    if (!viewer.getPlayback().getClips().empty() && beginPart("Mixer", viewer.getMixer().isOn(), m_bMixing))
    {
        drawMixer(viewer, requests);
    }
    if (beginPart("Look and reach", viewer.getReaching().getBone() >= 0, m_bReaching))
    {
        drawReach(viewer, requests);
    }
    if (beginPart("Ground and feet", viewer.getPlanting().isOn() || viewer.getSlope().m_fDegrees != 0.0F, m_bPlanting))
    {
        drawGround(viewer, requests);
    }
}

void MotionPanel::drawMixer(Viewer& viewer, Requests& requests)
{
    const MixerPlayback& mixer = viewer.getMixer();
    checkbox("play by the mixer (M)", "mixer", mixer.isOn(), requests);
    if (!mixer.isOn())
    {
        ImGui::TextWrapped("Fades into what is chosen, plays layers, tells events, lets the object travel.");
        return;
    }
    float fade = mixer.getFade();
    if (ImGui::SliderFloat("fade (s)", &fade, 0.0F, 2.0F, "%.2f"))
    {
        requests.ask("mix-fade " + toWord(fade));
    }
    checkbox("in step", "in-step", mixer.isInStep(), requests);
    checkbox("travel (T)", "travel", mixer.isTravelling(), requests);
    ImGui::SameLine();
    button("Home (B)", "home", requests);
    drawParts(viewer);
    drawLayers(viewer, requests);
    drawEvents(viewer);
}

void MotionPanel::drawLayers(Viewer& viewer, Requests& requests)
{
    const std::vector<MixerPlayback::Layer>& layers = viewer.getMixer().getLayers();
    for (std::size_t i = 0; i < layers.size(); ++i)
    {
        const MixerPlayback::Layer& layer = layers[i];
        const std::string number = std::to_string(i + 1);
        ImGui::PushID(static_cast<int>(i));
        ImGui::TextWrapped("layer %s%s: %s", number.c_str(), layer.m_bAdditive ? ", added" : "",
                           layer.m_iBone < 0 ? "all bones" : nameOf(viewer, layer.m_iBone).c_str());
        int playing = -1;
        for (const MixerPlayback::Part& part : viewer.getMixer().getParts())
        {
            playing = part.m_iLayer == static_cast<int>(i) + 1 ? part.m_iAnimation : playing;
        }
        const int chosen = chooseClip("plays", viewer, playing, true);
        if (chosen >= 0)
        {
            requests.ask("mix " + std::to_string(chosen) + " " + number);
        }
        else if (chosen == -1)
        {
            requests.ask("unmix " + number);
        }
        float weight = layer.m_fWeight;
        if (ImGui::SliderFloat("weight", &weight, 0.0F, 1.0F, "%.2f"))
        {
            requests.ask("layer-weight " + number + " " + toWord(weight));
        }
        ImGui::PopID();
    }
    const int bone = viewer.getPickedBone();
    const std::string mask = bone < 0 ? std::string() : " " + std::to_string(bone) + " " + std::to_string(m_iFalloff);
    ImGui::TextWrapped("new layer for %s:", bone < 0 ? "all bones (pick one for it and below)"
                                                     : (nameOf(viewer, bone) + " and below").c_str());
    if (bone >= 0)
    {
        ImGui::SliderInt("falloff", &m_iFalloff, 0, 4, "%d bones");
    }
    button("Replace", "add-layer replace" + mask, requests);
    ImGui::SameLine();
    button("Add", "add-layer additive" + mask, requests);
    if (!layers.empty())
    {
        ImGui::SameLine();
        button("Clear", "clear-layers", requests);
    }
}

void MotionPanel::drawReach(Viewer& viewer, Requests& requests)
{
    const Reaching& reaching = viewer.getReaching();
    const int bone = reaching.getBone() >= 0 ? reaching.getBone() : viewer.getPickedBone();
    if (bone < 0)
    {
        ImGui::TextWrapped("Pick a bone, in the picture or in the tree: it can look at a point or reach for it.");
        return;
    }
    ImGui::TextWrapped("%s", nameOf(viewer, bone).c_str());
    constexpr std::array<const char*, 4> kinds{"none", "look", "two-bones", "chain"};
    const auto kind = static_cast<std::size_t>(reaching.getKind());
    if (beginChoice("does", kinds[kind]))
    {
        for (std::size_t i = 0; i < kinds.size(); ++i)
        {
            if (ImGui::Selectable(kinds[i], i == kind))
            {
                requests.ask("reach " + std::string(kinds[i]) + (i > 0 ? " " + std::to_string(bone) : std::string()));
            }
        }
        ImGui::EndCombo();
    }
    if (kind == 0)
    {
        return;
    }
    if (reaching.getKind() == Reaching::Kind::Look)
    {
        constexpr std::array<const char*, 6> axes{"x", "-x", "y", "-y", "z", "-z"};
        chooseWord("along its", "forward", axes, findAxis(reaching.getForward()), requests);
    }
    const M_Vector3Template<float> target = reaching.getTarget().value_or(viewer.getCamera().getEye());
    std::array<float, 3> place{target.x, target.y, target.z};
    ImGui::SetNextItemWidth(-1.0F);
    if (ImGui::DragFloat3("##target", place.data(), 0.002F * viewer.getCamera().m_fDistance, 0.0F, 0.0F, "%.2f"))
    {
        requests.ask("target " + toWord(place[0]) + " " + toWord(place[1]) + " " + toWord(place[2]));
    }
    button("At the eye", "target eye", requests);
    ImGui::SameLine();
    ImGui::TextDisabled("or Ctrl and drag");
}
}  // namespace TW2::viewer
