#include "viewer/window/animation_panel.h"

#include "viewer/viewer.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace TW2::viewer
{
namespace
{
void drawObject(Viewer& viewer, Requests& requests)
{
    LoadedObject& object = *viewer.getObject();
    if (object.getChoices().size() > 1 && beginChoice("object", object.getChoice().m_strName.c_str()))
    {
        for (const LoadedObject::Choice& choice : object.getChoices())
        {
            if (ImGui::Selectable(choice.m_strName.c_str(), &choice == &object.getChoice()))
            {
                requests.ask("object " + quote(choice.m_strName));
            }
        }
        ImGui::EndCombo();
    }
    if (object.getLevelCount() > 1)
    {
        int level = viewer.getLevel();
        if (ImGui::SliderInt("level", &level, -1, object.getLevelCount() - 1, level < 0 ? "by distance" : "%d"))
        {
            requests.ask("level " + (level < 0 ? std::string("auto") : std::to_string(level)));
        }
    }
}

void drawAnimations(Viewer& viewer, Requests& requests)
{
    ImGui::TextDisabled("Animations (N, P)");
    const std::vector<Clip>& clips = viewer.getPlayback().getClips();
    const float rows = std::clamp(static_cast<float>(clips.size()), 2.0F, 8.0F);
    if (ImGui::BeginListBox("##clips", {-1.0F, (rows + 0.5F) * ImGui::GetTextLineHeightWithSpacing()}))
    {
        for (const Clip& clip : clips)
        {
            ImGui::PushID(clip.m_iIndex);
            if (ImGui::Selectable(clip.m_strName.c_str(), clip.m_iIndex == viewer.getPlayback().getMainAnimation()))
            {
                requests.ask("clip " + std::to_string(clip.m_iIndex));
            }
            if (ImGui::IsItemHovered())
            {
                ImGui::SetTooltip("%d: %u frames at %g per second, repeats after %.3F s", clip.m_iIndex,
                                  clip.m_uiFrames, static_cast<double>(clip.m_fFrameRate), clip.m_dPeriod);
            }
            ImGui::PopID();
        }
        ImGui::EndListBox();
    }
    for (const LoadedObject::TextureSet& set : viewer.getObject()->getTextureSets())
    {
        bool on = viewer.isTextureAnimationOn(set.m_strName);
        if (ImGui::Checkbox(("texture " + set.m_strName).c_str(), &on))
        {
            requests.ask("texture " + quote(set.m_strName) + (on ? " on" : " off"));
        }
    }
}

void drawBlend(Viewer& viewer, Requests& requests)
{
    if (viewer.getPlayback().getClips().size() < 2 || !ImGui::CollapsingHeader("Blend", ImGuiTreeNodeFlags_DefaultOpen))
    {
        return;
    }
    const auto& slots = viewer.getPlayback().getSlots();
    for (std::size_t i = 0; i < Playback::mostSlots; ++i)
    {
        ImGui::PushID(static_cast<int>(i));
        // Names are longer than numbers.
        ImGui::SetNextItemWidth(0.6F * ImGui::GetContentRegionAvail().x);
        const int chosen = chooseClip("##clip", viewer, slots[i].m_iAnimation, i > 0);
        const std::string blend = "blend " + std::to_string(i) + " ";
        if (chosen != noChoice)
        {
            requests.ask(blend + (chosen < 0 ? std::string("none") : std::to_string(chosen)));
        }
        ImGui::SameLine();
        float weight = slots[i].m_fWeight;
        ImGui::SetNextItemWidth(-1.0F);
        if (ImGui::SliderFloat("##weight", &weight, 0.0F, 1.0F, "%.2F") && slots[i].m_iAnimation >= 0)
        {
            requests.ask(blend + std::to_string(slots[i].m_iAnimation) + " " + std::to_string(weight));
        }
        ImGui::PopID();
    }
    constexpr std::array<const char*, 3> modes{"linear", "normalized", "orthonormalized"};
    chooseWord("cross mode", "crossmode", modes, static_cast<std::size_t>(viewer.getCrossMode()), requests);
    if (ImGui::Button("Freeze (Z)"))
    {
        requests.ask("freeze");
    }
    float frozen = viewer.getPlayback().getFrozenWeight();
    if (frozen > 0.0F)
    {
        ImGui::SameLine();
        if (ImGui::Button("Fade out (X)"))
        {
            requests.ask("fade 0.5");
        }
        if (ImGui::SliderFloat("frozen", &frozen, 0.01F, 1.0F, "%.2F"))
        {
            requests.ask("frozen " + std::to_string(frozen));
        }
    }
}

void drawGroup(Viewer& viewer, Requests& requests)
{
    if (viewer.getPlayback().getClips().empty() || !ImGui::CollapsingHeader("Group of bones"))
    {
        return;
    }
    const int bone = viewer.getPickedBone() >= 0 ? viewer.getPickedBone() : viewer.getPlayback().getGroupBone();
    if (bone < 0)
    {
        ImGui::TextWrapped("Pick a bone, in the picture or in the tree: it and all below it can play something else.");
        return;
    }
    const std::string& name = viewer.getObject()->getBones()[static_cast<std::size_t>(bone)].m_strName;
    ImGui::TextWrapped("%s and below plays", name.c_str());
    const bool active = viewer.getPlayback().getGroupBone() == bone;
    ImGui::SetNextItemWidth(-1.0F);
    const int chosen = chooseClip("##group", viewer, active ? viewer.getPlayback().getGroupAnimation() : -1, active);
    if (chosen >= 0)
    {
        requests.ask("group " + std::to_string(bone) + " " + std::to_string(chosen));
    }
    else if (chosen == -1)
    {
        requests.ask("ungroup");
    }
}
}  // namespace

void drawAnimationPanel(Viewer& viewer, Requests& requests)
{
    drawObject(viewer, requests);
    drawAnimations(viewer, requests);
    if (!viewer.getMixer().isOn())
    {
        drawBlend(viewer, requests);
        drawGroup(viewer, requests);
    }
}
}  // namespace TW2::viewer
