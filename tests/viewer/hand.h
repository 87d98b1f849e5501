#pragma once

#include "viewer/viewer.h"
#include "viewer/window/animation_panel.h"
#include "viewer/window/clock_panel.h"
#include "viewer/window/panels.h"
#include "viewer/window/requests.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace support
{
inline constexpr float panelsWidth = 320.0F;
inline constexpr float panelsHeight = 1800.0F;

/// Somebody with a mouse before all panels, one below the other and with every part of them unfolded.
class Hand
{
public:
    /// `window`: with the menu and the panels where the window has them, instead of one below the other. `folded`: as
    /// they are by themselves.
    explicit Hand(TW2::viewer::Viewer& viewer, bool window = false, bool folded = false)
        : m_viewer(viewer), m_bWindow(window), m_bFolded(folded), m_pContext(ImGui::CreateContext(&getAtlas()))
    {
        ImGuiIO& io = ImGui::GetIO();
        io.IniFilename = nullptr;
        io.DisplaySize = {panelsWidth, panelsHeight};
        io.DeltaTime = 0.1F;
        io.ClipboardUserData = &m_strCopied;
        io.SetClipboardTextFn = [](void* text, const char* copied) { *static_cast<std::string*>(text) = copied; };
        show();
        show();
    }
    ~Hand() { ImGui::DestroyContext(m_pContext); }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;

    void click(float x, float y)
    {
        ImGui::GetIO().MousePos = {x, y};
        for (const bool down : {false, true, false})
        {
            ImGui::GetIO().MouseDown[0] = down;
            show();
        }
        show();
    }
    /// Clicks at a field and writes into it.
    void type(float x, float y, const char* text)
    {
        click(x, y);
        ImGui::GetIO().AddInputCharactersUTF8(text);
        show();
        show();
    }
    void turnWheel(float x, float y, float steps)
    {
        ImGui::GetIO().MousePos = {x, y};
        show();
        ImGui::GetIO().MouseWheel = steps;
        show();
        show();
    }
    /// How many letters of that colour are in the picture.
    static int countLetters(ImU32 color)
    {
        const std::vector<ImDrawVert> corners = getCorners();
        return static_cast<int>(std::count_if(corners.begin(), corners.end(),
                                              [color](const ImDrawVert& corner) { return corner.col == color; })) /
               6;
    }
    /// The boxes of that colour, without the soft edge around them.
    static std::vector<TW2::viewer::Rectangle> findBoxes(ImU32 color)
    {
        std::vector<TW2::viewer::Rectangle> boxes;
        bool within = false;
        for (const ImDrawVert& corner : getCorners())
        {
            const bool edge = corner.col == (color & ~IM_COL32_A_MASK);
            if (corner.col == color)
            {
                if (!within)
                {
                    boxes.push_back({corner.pos.x, corner.pos.y, 0.0F, 0.0F});
                }
                TW2::viewer::Rectangle& box = boxes.back();
                const float right = std::max(box.m_fLeft + box.m_fWidth, corner.pos.x);
                const float bottom = std::max(box.m_fTop + box.m_fHeight, corner.pos.y);
                box.m_fLeft = std::min(box.m_fLeft, corner.pos.x);
                box.m_fTop = std::min(box.m_fTop, corner.pos.y);
                box.m_fWidth = right - box.m_fLeft;
                box.m_fHeight = bottom - box.m_fTop;
            }
            within = corner.col == color || (within && edge);
        }
        return boxes;
    }
    /// Whether anything of that colour, or its soft edge, covers a place.
    static bool isPainted(float x, float y, ImU32 color)
    {
        const std::vector<ImDrawVert> corners = getCorners();
        for (std::size_t i = 0; i < corners.size(); i += 3)
        {
            const auto side = [&](std::size_t from, std::size_t to)
            {
                const ImVec2& a = corners[i + from].pos;
                const ImVec2& b = corners[i + to].pos;
                return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
            };
            const auto [one, two, three] = std::array{side(0, 1), side(1, 2), side(2, 0)};
            const bool inside = (one >= 0 && two >= 0 && three >= 0) || (one <= 0 && two <= 0 && three <= 0);
            if (inside && std::max({corners[i].col, corners[i + 1].col, corners[i + 2].col}) == color)
            {
                return true;
            }
        }
        return false;
    }
    /// Everything that is written.
    std::string read()
    {
        m_bReads = true;
        show();
        return m_strCopied;
    }
    [[nodiscard]] std::vector<std::string> getAsked() const
    {
        std::vector<std::string> asked = m_requests.m_vecLines;
        const std::pair<bool, const char*> others[] = {{m_requests.m_bPicture, "(picture)"},
                                                       {m_requests.m_bLoop, "(loop)"},
                                                       {m_requests.m_bCopyRenderCommand, "(command)"},
                                                       {m_requests.m_bReloadModel, "(load again)"},
                                                       {m_requests.m_bQuit, "(quit)"}};
        for (const auto& [is, what] : others)
        {
            if (is)
            {
                asked.emplace_back(what);
            }
        }
        return asked;
    }
    [[nodiscard]] TW2::viewer::Rectangle getFree() const
    {
        return m_panels.getFree(m_viewer, panelsWidth, panelsHeight);
    }
    [[nodiscard]] bool hasPopUp() const { return m_bPopUp; }

    TW2::viewer::Messages m_messages;
    TW2::viewer::Panels m_panels;

private:
    /// The corners of all triangles of the picture, three for each.
    static std::vector<ImDrawVert> getCorners()
    {
        std::vector<ImDrawVert> corners;
        const ImDrawData& drawn = *ImGui::GetDrawData();
        for (int i = 0; i < drawn.CmdListsCount; ++i)
        {
            for (const ImDrawIdx index : drawn.CmdLists[i]->IdxBuffer)
            {
                corners.push_back(drawn.CmdLists[i]->VtxBuffer[index]);
            }
        }
        return corners;
    }
    static ImFontAtlas& getAtlas()
    {
        static ImFontAtlas s_atlas;
        unsigned char* pixels = nullptr;
        int columns = 0;
        int rows = 0;
        s_atlas.GetTexDataAsAlpha8(&pixels, &columns, &rows);
        return s_atlas;
    }

    void show()
    {
        ImGui::NewFrame();
        if (m_bWindow)
        {
            m_panels.draw(m_viewer, m_messages, m_requests);
        }
        else
        {
            showAll();
        }
        m_bPopUp = ImGui::IsPopupOpen(nullptr, ImGuiPopupFlags_AnyPopup);
        ImGui::Render();
    }

    void showAll()
    {
        ImGui::SetNextWindowPos({0.0F, 0.0F});
        ImGui::SetNextWindowSize({panelsWidth, panelsHeight});
        ImGui::Begin("all", nullptr, ImGuiWindowFlags_NoDecoration);
        for (const char* part :
             {"Group of bones", "###bones", "###materials", "Mixer", "Look and reach", "Ground and feet"})
        {
            if (!m_bFolded)
            {
                ImGui::GetStateStorage()->SetInt(ImGui::GetID(part), 1);
            }
        }
        if (m_bReads)
        {
            ImGui::LogToClipboard();
        }
        ImGui::PushItemWidth(-0.45F * panelsWidth);
        TW2::viewer::drawAnimationPanel(m_viewer, m_requests);
        m_motion.draw(m_viewer, m_requests);
        TW2::viewer::drawShown(m_viewer, m_requests);
        m_bones.draw(m_viewer, m_requests);
        TW2::viewer::drawMaterials(m_viewer);
        m_crowd.draw(m_viewer, m_requests);
        TW2::viewer::drawClock(m_viewer, m_requests);
        ImGui::PopItemWidth();
        if (m_bReads)
        {
            ImGui::LogFinish();
        }
        ImGui::End();
    }

    TW2::viewer::Viewer& m_viewer;
    bool m_bWindow;
    bool m_bFolded;
    ImGuiContext* m_pContext;
    TW2::viewer::Requests m_requests;
    TW2::viewer::BonePanel m_bones;
    TW2::viewer::MotionPanel m_motion;
    TW2::viewer::CrowdPanel m_crowd;
    std::string m_strCopied;
    bool m_bReads = false;
    bool m_bPopUp = false;
};
}  // namespace support
