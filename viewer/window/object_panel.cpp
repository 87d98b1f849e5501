#include "viewer/window/object_panel.h"

#include "viewer/viewer.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace TW2::viewer
{
void drawShown(Viewer& viewer, Requests& requests)
{
    if (!ImGui::CollapsingHeader("Show", ImGuiTreeNodeFlags_DefaultOpen))
    {
        return;
    }
    const Show& shown = viewer.getShow();
    checkbox("mesh", "show mesh", shown.m_bMesh, requests);
    checkbox("skeleton (S)", "show skeleton", shown.m_bSkeleton, requests);
    checkbox("bone names", "show names", shown.m_bBoneNames, requests);
    checkbox("bone axes", "show axes", shown.m_bAxes, requests);
    checkbox("bounding volumes", "show bounds", shown.m_bBounds, requests);
    checkbox("grid", "show grid", shown.m_bGrid, requests);
    checkbox("shadow", "show shadow", shown.m_bShadow, requests);
    checkbox("dark", "show dark", shown.m_bDark, requests);
    checkbox("studio lights", "show studio-lights", shown.m_bStudioLights, requests);
    if (viewer.getFileLights().getCount() > 0)
    {
        checkbox("the file's lights", "show file-lights", shown.m_bFileLights, requests);
    }
    if (!viewer.getObject()->isSkinned())
    {
        checkbox("visibility tracks", "show visibility", shown.m_bVisibility, requests);
    }
    constexpr std::array<const char*, 4> surfaces{"materials", "unlit", "normals", "weights"};
    chooseWord("surface", "surface", surfaces, static_cast<std::size_t>(shown.m_eSurface), requests);
    if (shown.m_eSurface == render::View::Surface::BoneWeights)
    {
        ImGui::TextWrapped("%s", viewer.getPickedBone() < 0 ? "Pick a bone to see how much it moves."
                                                            : "red: the bone alone, green: half, blue: not at all");
    }
    constexpr std::array<const char*, 3> wireframes{"none", "over", "only"};
    chooseWord("wireframe (W)", "wireframe", wireframes, static_cast<std::size_t>(shown.m_eWireframe), requests);
}

void drawMaterials(Viewer& viewer)
{
    const std::vector<LoadedObject::Material> materials = viewer.getObject()->getMaterials();
    if (materials.empty() ||
        !ImGui::CollapsingHeader(("Materials (" + std::to_string(materials.size()) + ")###materials").c_str()))
    {
        return;
    }
    for (const LoadedObject::Material& material : materials)
    {
        ImGui::BulletText("%s", material.m_strName.c_str());
        ImGui::TextDisabled("   %s", material.m_szSetUp);
    }
}

void CrowdPanel::draw(Viewer& viewer, Requests& requests)
{
    if (!ImGui::CollapsingHeader("Crowd and costs", ImGuiTreeNodeFlags_DefaultOpen))
    {
        return;
    }
    if (!ImGui::IsAnyItemActive())
    {
        m_iCopies = static_cast<int>(viewer.getCrowd().getCount());
    }
    ImGui::SliderInt("copies", &m_iCopies, 0, 2000, "%d", ImGuiSliderFlags_Logarithmic);
    if (ImGui::IsItemDeactivatedAfterEdit())
    {
        requests.ask("crowd " + std::to_string(std::max(m_iCopies, 0)));
    }
    const Crowd::Cost& cost = viewer.getCrowd().getCost();
    ImGui::Text("playing %.1F ns per bone", cost.m_dPoseNanosecondsPerBone);
    ImGui::Text("scene %.1F ns per bone", cost.m_dFrameNanosecondsPerBone);
    ImGui::Text("together %.3F ms", cost.m_dMilliseconds);
    ImGui::Text("drawing %.2F ms", viewer.getTiming().m_dDraw);
    const double picture = viewer.getTiming().m_dPicture;
    ImGui::Text("picture %.1F ms, %.0F a second", picture, picture > 0.0 ? 1e3 / picture : 0.0);
    if (cost.m_uiBytesPerCopy > 0)
    {
        ImGui::Text("heap %.1F KB per copy", static_cast<double>(cost.m_uiBytesPerCopy) / 1024.0);
    }
}
}  // namespace TW2::viewer
