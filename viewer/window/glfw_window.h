#pragma once

#include <functional>
#include <string>
#include <vector>

struct GLFWwindow;

namespace TW2::viewer
{
/// A window with an OpenGL 3.3 core context, current on this thread, and Dear ImGui in it. One per process.
class GlfwWindow
{
public:
    /// Throws Failure, with the system's reason, when there is no display or no such context.
    /// `scale`: how much larger than on an ordinary screen things are drawn; 0: as the screen says.
    GlfwWindow(unsigned int width, unsigned int height, const char* title, float scale = 0.0F);
    ~GlfwWindow();
    GlfwWindow(const GlfwWindow&) = delete;
    GlfwWindow& operator=(const GlfwWindow&) = delete;

    [[nodiscard]] bool isClosing() const;
    void close();
    void setTitle(const std::string& title);
    /// Takes in what the user did; files that were dropped onto the window are collected.
    void poll();
    /// Files dropped since the last call.
    [[nodiscard]] std::vector<std::string> takeDroppedFiles();
    /// A key that went down, by GLFW's number; also again while it is held.
    struct KeyPress
    {
        int m_iKey;
        bool m_bControl;
        bool m_bRepeated;
    };
    /// Keys pressed since the last call, however short: pictures may take longer than a tap.
    [[nodiscard]] std::vector<KeyPress> takeKeys();
    void setClipboard(const std::string& text);

    /// Pixels of the picture.
    [[nodiscard]] unsigned int getWidth() const;
    [[nodiscard]] unsigned int getHeight() const;
    /// How much larger than on an ordinary screen things are to be drawn.
    [[nodiscard]] float getScale() const noexcept { return m_fScale; }
    /// Seconds since the window was made.
    [[nodiscard]] double getTime() const;

    /// Begins the widgets of a picture, and ends and shows it; between `finish` and `show` the picture can be read.
    void begin();
    void finish();
    void show();

private:
    /// Makes the window and its context current; when it cannot, GLFW is shut down and Failure thrown.
    void open(unsigned int width, unsigned int height, const char* title);

    GLFWwindow* m_pWindow = nullptr;
    float m_fScale = 1.0F;
    std::vector<std::string> m_vecDropped;
    std::vector<KeyPress> m_vecKeys;
};
}  // namespace TW2::viewer
