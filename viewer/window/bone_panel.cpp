#include "viewer/window/bone_panel.h"

#include "viewer/text.h"
#include "viewer/viewer.h"
#include "viewer/window/curve_plot.h"
#include "viewer/window/panels.h"
#include "viewer/window/widgets.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <imgui.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace TW2::viewer
{
void BonePanel::draw(Viewer& viewer, Requests& requests)
{
    drawTree(viewer, requests);
    drawPicked(viewer, requests);
}

void BonePanel::drawTree(Viewer& viewer, Requests& requests)
{
    const std::vector<LoadedObject::Bone>& bones = viewer.getObject()->getBones();
    if (!ImGui::CollapsingHeader(("Bones (" + std::to_string(bones.size()) + ")###bones").c_str()))
    {
        return;
    }
    ImGui::SetNextItemWidth(-1.0F);
    ImGui::InputTextWithHint("##filter", "part of a name", m_acFilter.data(), m_acFilter.size());
    ImGui::BeginChild("##tree", {0.0F, 12.0F * ImGui::GetTextLineHeightWithSpacing()}, true);
    const std::string part = toLower(m_acFilter.data());
    std::vector<int> depths(bones.size());
    for (std::size_t i = 0; i < bones.size(); ++i)
    {
        const auto parent = static_cast<std::size_t>(bones[i].m_iParent);
        depths[i] = bones[i].m_iParent < 0 || parent >= i ? 0 : depths[parent] + 1;
        if (toLower(bones[i].m_strName).find(part) == std::string::npos)
        {
            continue;
        }
        ImGui::PushID(static_cast<int>(i));
        const float indent = m_acFilter[0] ? 0.0F : 0.6F * unit() * static_cast<float>(depths[i]);
        ImGui::SetCursorPosX(ImGui::GetCursorPosX() + indent);
        const std::string& name = bones[i].m_strName;
        const bool picked = viewer.getPickedBone() == static_cast<int>(i);
        if (ImGui::Selectable(name.empty() ? "(without a name)" : name.c_str(), picked))
        {
            requests.ask("bone " + (picked ? std::string("none") : std::to_string(i)));
        }
        // What was picked in the picture comes into sight.
        if (picked && std::exchange(m_iSeenBone, viewer.getPickedBone()) != viewer.getPickedBone())
        {
            ImGui::SetScrollHereY();
        }
        ImGui::PopID();
    }
    ImGui::EndChild();
}

void BonePanel::drawPicked(Viewer& viewer, Requests& requests)
{
    const int bone = viewer.getPickedBone();
    if (bone < 0 || !ImGui::CollapsingHeader("Picked bone", ImGuiTreeNodeFlags_DefaultOpen))
    {
        return;
    }
    LoadedObject& object = *viewer.getObject();
    ImGui::TextWrapped("%d  %s", bone, object.getBones()[static_cast<std::size_t>(bone)].m_strName.c_str());
    ImGui::SameLine();
    if (ImGui::SmallButton("let go"))
    {
        requests.ask("bone none");
    }
    const P_VirtualObject* mesh = object.getSkeleton().getMesh(static_cast<unsigned int>(bone));
    const M_Vector3Template<float> place = mesh->getObjectToWorldMatrix().getTranslation();
    ImGui::Text("at %.3F %.3F %.3F", static_cast<double>(place.x), static_cast<double>(place.y),
                static_cast<double>(place.z));
    const int animation = viewer.getPlayback().getMainAnimation();
    if (m_iCurvesBone != bone || m_iCurvesAnimation != animation || m_uiCurvesLoad != viewer.getLoadCount())
    {
        m_curves = sampleCurves(object, bone, animation);
        m_iCurvesBone = bone;
        m_iCurvesAnimation = animation;
        m_uiCurvesLoad = viewer.getLoadCount();
    }
    if (m_curves.isEmpty())
    {
        ImGui::TextWrapped("%s does not move it.", getClipName(viewer, animation));
        return;
    }
    drawCurves(m_curves, viewer.getPlayback().getFrame());
}

void drawBoneNames(const Viewer& viewer, const Rectangle& place)
{
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    list.PushClipRect({place.m_fLeft, place.m_fTop}, {place.m_fLeft + place.m_fWidth, place.m_fTop + place.m_fHeight});
    const bool dark = viewer.getShow().m_bDark;
    const ImU32 ink = dark ? IM_COL32(230, 232, 236, 255) : IM_COL32(30, 34, 40, 255);
    const ImU32 paper = dark ? IM_COL32(0, 0, 0, 190) : IM_COL32(255, 255, 255, 190);
    std::vector<Viewer::Label> labels =
        viewer.getLabels(static_cast<unsigned int>(place.m_fWidth), static_cast<unsigned int>(place.m_fHeight));
    // The picked one first: names that would lie over others are left out.
    std::stable_partition(labels.begin(), labels.end(),
                          [&viewer](const Viewer::Label& label) { return label.m_iBone == viewer.getPickedBone(); });
    std::vector<ImVec4> written;
    for (const Viewer::Label& label : labels)
    {
        const std::string& name = viewer.getObject()->getBones()[static_cast<std::size_t>(label.m_iBone)].m_strName;
        const ImVec2 size = ImGui::CalcTextSize(name.c_str());
        const float x = std::round(place.m_fLeft + label.m_fX + 0.3F * unit());
        const float y = std::round(place.m_fTop + label.m_fY - 0.5F * size.y);
        const ImVec4 box{x, y, x + size.x, y + size.y};
        const bool covered =
            std::any_of(written.begin(), written.end(),
                        [&box](const ImVec4& other)
                        { return box.x < other.z && other.x < box.z && box.y < other.w && other.y < box.w; });
        if (covered)
        {
            continue;
        }
        written.push_back(box);
        // A rim, so that letters are read over dark and light surfaces.
        for (const ImVec2& shift : {ImVec2{-1.0F, 0.0F}, ImVec2{1.0F, 0.0F}, ImVec2{0.0F, -1.0F}, ImVec2{0.0F, 1.0F}})
        {
            list.AddText({x + shift.x, y + shift.y}, paper, name.c_str());
        }
        list.AddText({x, y}, label.m_iBone == viewer.getPickedBone() ? IM_COL32(215, 85, 0, 255) : ink, name.c_str());
    }
    list.PopClipRect();
}
}  // namespace TW2::viewer
