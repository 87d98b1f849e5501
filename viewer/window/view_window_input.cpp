/// What mouse and keyboard do outside of the panels.

#include "viewer/window/requests.h"
#include "viewer/window/view_window.h"

#include <GLFW/glfw3.h>
#include <imgui.h>

#include <array>
#include <cctype>
#include <cmath>
#include <string>

namespace TW2::viewer
{
void ViewWindow::handleInput()
{
    handleMouse();
    handleKeys();
}

void ViewWindow::handleMouse()
{
    const ImGuiIO& io = ImGui::GetIO();
    if (io.WantCaptureMouse)
    {
        return;
    }
    const float height = m_free.m_fHeight;
    OrbitCamera& camera = m_viewer.getCamera();
    const bool shift = io.KeyShift;
    if (ImGui::IsMouseClicked(ImGuiMouseButton_Left))
    {
        m_bDragged = false;
    }
    const bool reaches = io.KeyCtrl && m_viewer.getReaching().getKind() != Reaching::Kind::None;
    if (ImGui::IsMouseDragging(ImGuiMouseButton_Left) && reaches)
    {
        m_viewer.moveTarget(io.MouseDelta.x / height, -io.MouseDelta.y / height);
        m_bDragged = true;
    }
    else if (ImGui::IsMouseDragging(ImGuiMouseButton_Left) && !shift)
    {
        constexpr float degreesPerHeight = 250.0F;
        camera.orbit(-io.MouseDelta.x / height * degreesPerHeight, io.MouseDelta.y / height * degreesPerHeight);
        m_bDragged = true;
    }
    if (ImGui::IsMouseDragging(ImGuiMouseButton_Right) || ImGui::IsMouseDragging(ImGuiMouseButton_Middle) ||
        (shift && ImGui::IsMouseDragging(ImGuiMouseButton_Left)))
    {
        camera.pan(-io.MouseDelta.x / height, io.MouseDelta.y / height);
        m_bDragged = true;
    }
    if (io.MouseWheel != 0.0F)
    {
        camera.zoom(std::pow(0.88F, io.MouseWheel));
    }
    if (ImGui::IsMouseReleased(ImGuiMouseButton_Left) && !m_bDragged)
    {
        m_viewer.pick(2.0F * (io.MousePos.x - m_free.m_fLeft) / m_free.m_fWidth - 1.0F,
                      1.0F - 2.0F * (io.MousePos.y - m_free.m_fTop) / m_free.m_fHeight);
    }
}

void ViewWindow::handleKeys()
{
    const bool typing = ImGui::GetIO().WantTextInput;
    for (const GlfwWindow::KeyPress& press : m_window.takeKeys())
    {
        if (!typing)
        {
            handleKey(press);
        }
    }
    // Letters as they are typed, whatever the layout of the keyboard.
    for (const ImWchar letter : ImGui::GetIO().InputQueueCharacters)
    {
        if (typing || letter > 0x7F)
        {
            continue;
        }
        if (letter == 'h' || letter == 'H')
        {
            m_panels.toggle();
            continue;
        }
        executeKey(std::string(1, static_cast<char>(std::toupper(letter))));
    }
}

void ViewWindow::handleKey(const GlfwWindow::KeyPress& press)
{
    struct Named
    {
        int m_iKey;
        const char* m_szName;
    };
    constexpr std::array<Named, 4> repeated{Named{GLFW_KEY_SPACE, "Space"}, Named{GLFW_KEY_LEFT, "Left"},
                                            Named{GLFW_KEY_RIGHT, "Right"}, Named{GLFW_KEY_HOME, "Home"}};
    for (const Named& key : repeated)
    {
        if (key.m_iKey == press.m_iKey)
        {
            executeKey(key.m_szName);
        }
    }
    if (press.m_bRepeated)
    {
        return;
    }
    Requests requests;
    requests.m_bPicture = press.m_iKey == GLFW_KEY_F2;
    requests.m_bLoop = press.m_iKey == GLFW_KEY_F3;
    requests.m_bCopyRenderCommand = press.m_iKey == GLFW_KEY_F4;
    requests.m_bQuit = press.m_bControl && press.m_iKey == GLFW_KEY_Q;
    carryOut(requests);
    if (press.m_iKey == GLFW_KEY_F1)
    {
        m_panels.toggleHelp();
    }
    else if (press.m_iKey == GLFW_KEY_ESCAPE)
    {
        m_messages.m_strError.clear();
    }
}
}  // namespace TW2::viewer
