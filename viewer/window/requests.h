#pragma once

#include <string>
#include <vector>

namespace TW2::viewer
{
/// What the panels of the window ask for; the window carries it out after the picture's widgets.
struct Requests
{
    std::vector<std::string> m_vecLines;  ///< commands of the viewer
    bool m_bPicture = false;
    bool m_bLoop = false;
    bool m_bCopyRenderCommand = false;
    bool m_bReloadModel = false;
    bool m_bQuit = false;

    /// A command of the viewer.
    void ask(std::string line) { m_vecLines.push_back(std::move(line)); }
};
}  // namespace TW2::viewer
