#pragma once

#include "viewer/window/bone_panel.h"
#include "viewer/window/motion_panel.h"
#include "viewer/window/object_panel.h"

#include <string>

struct ImVec2;

namespace TW2::viewer
{
class Viewer;
struct Requests;

/// Part of the window, in pixels from its upper left corner.
struct Rectangle
{
    float m_fLeft = 0.0F;
    float m_fTop = 0.0F;
    float m_fWidth = 1.0F;
    float m_fHeight = 1.0F;
};

/// What the window says besides the panels.
struct Messages
{
    std::string m_strError;     ///< the last failure; empty: none
    std::string m_strNote;      ///< the last thing done
    std::string m_strProgress;  ///< what is under way; empty: nothing
    float m_fProgress = 0.0F;   ///< which part of it is done, 0 to 1
};

/// The panels around the picture: clips and blending on the left, what is shown and the bones on the right, the clock
/// at the bottom. Every control asks for a command, so that all of them fail and are tested alike.
class Panels
{
public:
    /// Draws one picture's widgets and collects what they ask for.
    void draw(Viewer& viewer, Messages& messages, Requests& requests);
    /// What the panels leave free for the picture, in a window of that size.
    [[nodiscard]] Rectangle getFree(const Viewer& viewer, float width, float height) const;
    void toggle() noexcept { m_bPanels = !m_bPanels; }
    void toggleHelp() noexcept { m_bHelp = !m_bHelp; }

private:
    void drawMenu(Viewer& viewer, Requests& requests);
    void drawMessages(Messages& messages, const Rectangle& place);
    void drawHelp();
    static void drawInvitation(const ImVec2& display);

    bool m_bPanels = true;
    bool m_bHelp = false;
    BonePanel m_bones;
    MotionPanel m_motion;
    CrowdPanel m_crowd;
};
}  // namespace TW2::viewer
