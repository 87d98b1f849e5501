#include "viewer/window/panels.h"

#include "viewer/commands.h"
#include "viewer/viewer.h"
#include "viewer/window/animation_panel.h"
#include "viewer/window/clock_panel.h"
#include "viewer/window/requests.h"
#include "viewer/window/widgets.h"

#include <imgui.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace TW2::viewer
{
namespace
{
const ImVec4 s_warning{1.0F, 0.55F, 0.4F, 1.0F};

float getPanelWidth(float windowWidth)
{
    return std::min(17.0F * unit(), windowWidth * 0.27F);
}

float getClockHeight()
{
    return 2.0F * ImGui::GetFrameHeightWithSpacing() + 2.0F * ImGui::GetStyle().WindowPadding.y;
}
}  // namespace

void Panels::draw(Viewer& viewer, Messages& messages, Requests& requests)
{
    drawMenu(viewer, requests);
    const ImVec2 display = ImGui::GetIO().DisplaySize;
    const float top = ImGui::GetFrameHeight();
    const float bottom = getClockHeight();
    const float width = getPanelWidth(display.x);
    constexpr ImGuiWindowFlags fixed =
        ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse;
    if (m_bPanels && viewer.getObject())
    {
        ImGui::SetNextWindowPos({0.0F, top});
        ImGui::SetNextWindowSize({width, display.y - top - bottom});
        ImGui::Begin("Animation", nullptr, fixed);
        ImGui::PushItemWidth(-0.45F * width);
        drawAnimationPanel(viewer, requests);
        m_motion.draw(viewer, requests);
        ImGui::PopItemWidth();
        ImGui::End();

        ImGui::SetNextWindowPos({display.x - width, top});
        ImGui::SetNextWindowSize({width, display.y - top - bottom});
        ImGui::Begin("Object", nullptr, fixed);
        ImGui::PushItemWidth(-0.45F * width);
        drawShown(viewer, requests);
        m_bones.draw(viewer, requests);
        drawMaterials(viewer);
        m_crowd.draw(viewer, requests);
        ImGui::PopItemWidth();
        ImGui::End();
    }
    if (viewer.getObject())
    {
        ImGui::SetNextWindowPos({0.0F, display.y - bottom});
        ImGui::SetNextWindowSize({display.x, bottom});
        ImGui::Begin("Clock", nullptr, fixed | ImGuiWindowFlags_NoScrollbar);
        drawClock(viewer, requests);
        ImGui::End();
    }
    else
    {
        drawInvitation(display);
    }
    drawMessages(messages, getFree(viewer, display.x, display.y));
    if (m_bHelp)
    {
        drawHelp();
    }
    if (viewer.getShow().m_bBoneNames)
    {
        drawBoneNames(viewer, getFree(viewer, display.x, display.y));
    }
}

Rectangle Panels::getFree(const Viewer& viewer, float width, float height) const
{
    const bool loaded = viewer.getObject() != nullptr;
    const float side = m_bPanels && loaded ? getPanelWidth(width) : 0.0F;
    const float top = ImGui::GetFrameHeight();
    const float bottom = loaded ? getClockHeight() : 0.0F;
    return {side, top, std::max(width - 2.0F * side, 1.0F), std::max(height - top - bottom, 1.0F)};
}

void Panels::drawMenu(Viewer& viewer, Requests& requests)
{
    if (!ImGui::BeginMainMenuBar())
    {
        return;
    }
    if (ImGui::BeginMenu("File"))
    {
        ImGui::MenuItem("Drop a script or a model onto the window", nullptr, false, false);
        requests.m_bReloadModel |= ImGui::MenuItem("Load again", "R", false, viewer.getObject() != nullptr);
        ImGui::Separator();
        requests.m_bPicture |= ImGui::MenuItem("Write a picture", "F2", false, viewer.getObject() != nullptr);
        requests.m_bLoop |= ImGui::MenuItem("Write the loop as GIF", "F3", false, viewer.getObject() != nullptr);
        requests.m_bCopyRenderCommand |=
            ImGui::MenuItem("Copy the command for this picture", "F4", false, viewer.getObject() != nullptr);
        ImGui::Separator();
        requests.m_bQuit |= ImGui::MenuItem("Quit", "Ctrl+Q");
        ImGui::EndMenu();
    }
    if (ImGui::BeginMenu("Look"))
    {
        if (ImGui::MenuItem("Whole object", "F"))
        {
            requests.ask("frame");
        }
        for (const char* side : {"front", "back", "left", "right", "top", "corner"})
        {
            if (ImGui::MenuItem(side))
            {
                requests.ask(std::string("look ") + side);
            }
        }
        ImGui::Separator();
        if (ImGui::MenuItem("Panels", "H", m_bPanels))
        {
            toggle();
        }
        ImGui::EndMenu();
    }
    if (ImGui::BeginMenu("Help"))
    {
        if (ImGui::MenuItem("Keys and mouse", "F1"))
        {
            toggleHelp();
        }
        ImGui::EndMenu();
    }
    ImGui::EndMainMenuBar();
}

/// In the empty window: what to do with it.
void Panels::drawInvitation(const ImVec2& display)
{
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    constexpr const char* text = "Drop a script, a model, or a folder with a script onto the window.";
    const ImVec2 size = ImGui::CalcTextSize(text);
    list.AddText({0.5F * (display.x - size.x), 0.5F * (display.y - size.y)}, IM_COL32(60, 66, 76, 255), text);
}

void Panels::drawMessages(Messages& messages, const Rectangle& place)
{
    const bool any = !messages.m_strError.empty() || !messages.m_strNote.empty() || !messages.m_strProgress.empty();
    if (!any)
    {
        return;
    }
    ImGui::SetNextWindowPos({place.m_fLeft + 0.5F * place.m_fWidth, place.m_fTop + 0.5F * unit()}, ImGuiCond_Always,
                            {0.5F, 0.0F});
    const float width = place.m_fWidth - unit();
    ImGui::SetNextWindowSizeConstraints({0.0F, 0.0F}, {width, place.m_fHeight * 0.6F});
    ImGui::Begin("##messages", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_AlwaysAutoResize |
                     ImGuiWindowFlags_NoFocusOnAppearing);
    ImGui::PushTextWrapPos(width - unit());
    if (!messages.m_strProgress.empty())
    {
        ImGui::TextUnformatted(messages.m_strProgress.c_str());
        ImGui::ProgressBar(messages.m_fProgress, {std::min(20.0F * unit(), width - 2.0F * unit()), 0.0F});
    }
    if (!messages.m_strNote.empty())
    {
        ImGui::TextUnformatted(messages.m_strNote.c_str());
    }
    if (!messages.m_strError.empty())
    {
        ImGui::TextColored(s_warning, "%s", messages.m_strError.c_str());
        if (ImGui::Button("Close (Esc)"))
        {
            messages.m_strError.clear();
        }
    }
    ImGui::PopTextWrapPos();
    ImGui::End();
}

void Panels::drawHelp()
{
    const ImVec2 display = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({display.x * 0.5F, display.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::SetNextWindowSizeConstraints({0.0F, 0.0F}, {display.x * 0.9F, display.y * 0.8F});
    if (ImGui::Begin("Keys and mouse", &m_bHelp, ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoMove))
    {
        const auto row = [](std::string_view key, std::string_view text)
        {
            ImGui::TextUnformatted(key.data(), key.data() + key.size());
            ImGui::SameLine(9.0F * unit());
            ImGui::TextUnformatted(text.data(), text.data() + text.size());
        };
        row("drag", "circle around the object");
        row("right drag", "move sideways (also with Shift)");
        row("wheel", "come nearer, go away");
        row("click", "pick a bone");
        row("Ctrl and drag", "move what a bone reaches for");
        row("Ctrl+Q", "close the window");
        ImGui::Separator();
        for (const Command& command : listCommands())
        {
            if (!command.m_strKey.empty())
            {
                row(command.m_strKey, describeKey(command));
            }
        }
        row("H", "hide or show the panels");
        row("F1", "this help");
        row("F2, F3, F4", "picture, loop as GIF, command to the clipboard");
    }
    ImGui::End();
}
}  // namespace TW2::viewer
